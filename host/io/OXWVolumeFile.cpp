#include "OXWVolumeFile.h"

#include "OXWNrrdFile.h"
#include "OXWVolumeHeader.h"

#include <OXMObjectPtr.h>
#include <OXMSampleGrid.h>
#include <OXMSceneNames.h>
#include <OXMTaskInfo.h>
#include <OXMVolumeRenderObject.h>

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QObject>

#include <vtkCommand.h>
#include <vtkDICOMDirectory.h>
#include <vtkDICOMItem.h>
#include <vtkDICOMMetaData.h>
#include <vtkDICOMReader.h>
#include <vtkDataArray.h>
#include <vtkImageData.h>
#include <vtkInformation.h>
#include <vtkMatrix3x3.h>
#include <vtkMatrix4x4.h>
#include <vtkMetaImageReader.h>
#include <vtkNIFTIImageReader.h>
#include <vtkNew.h>
#include <vtkPointData.h>
#include <vtkStreamingDemandDrivenPipeline.h>
#include <vtkStringArray.h>
#include <vtkTIFFReader.h>
#include <vtkXMLImageDataReader.h>

#include <algorithm>
#include <cmath>

namespace {

using Result = OXWVolumeFile::Result;

enum class Format
{
    Nrrd,
    MetaImage,
    Nifti,
    Vti,
    Tiff,
    TiffSlices,
    Dicom,
    Unknown,
};

bool isTiff(const QString& fileName)
{
    const QString lower = fileName.toLower();
    return lower.endsWith(QLatin1String(".tif")) || lower.endsWith(QLatin1String(".tiff"));
}

// Natural order: runs of digits compare by their value (slice2 before slice10).
bool naturalLess(const QString& a, const QString& b)
{
    int i = 0, j = 0;
    while (i < a.size() && j < b.size()) {
        if (a[i].isDigit() && b[j].isDigit()) {
            int ei = i, ej = j;
            while (ei < a.size() && a[ei].isDigit())
                ++ei;
            while (ej < b.size() && b[ej].isDigit())
                ++ej;
            const qulonglong x = a.mid(i, ei - i).toULongLong();
            const qulonglong y = b.mid(j, ej - j).toULongLong();
            if (x != y)
                return x < y;
            i = ei;
            j = ej;
        } else if (a[i] != b[j]) {
            return a[i] < b[j];
        } else {
            ++i;
            ++j;
        }
    }
    return a.size() - i < b.size() - j;
}

// The TIFF files of a folder in their natural order.
QStringList tiffSlices(const QDir& folder)
{
    QStringList files;
    for (const QString& name : folder.entryList(QDir::Files, QDir::Name))
        if (isTiff(name))
            files << name;
    std::sort(files.begin(), files.end(), naturalLess);
    for (QString& name : files)
        name = folder.filePath(name);
    return files;
}

Format formatOf(const QFileInfo& info)
{
    if (info.isDir())
        return tiffSlices(QDir(info.filePath())).isEmpty() ? Format::Dicom : Format::TiffSlices;
    const QString name = info.fileName().toLower();
    const auto ends = [&name](const char* suffix) { return name.endsWith(QLatin1String(suffix)); };
    if (ends(".nrrd") || ends(".nhdr"))
        return Format::Nrrd;
    if (ends(".mha") || ends(".mhd"))
        return Format::MetaImage;
    if (ends(".nii") || ends(".nii.gz"))
        return Format::Nifti;
    if (ends(".vti"))
        return Format::Vti;
    if (isTiff(name))
        return Format::Tiff;
    return Format::Unknown;
}

// Follows a VTK reader: its progress to the task (an abort request stops it) and its error
// messages, which would otherwise go to the terminal.
class ReaderObserver : public vtkCommand
{
public:
    static ReaderObserver* New() { return new ReaderObserver; }
    void Execute(vtkObject* caller, unsigned long event, void* data) override
    {
        auto* algorithm = vtkAlgorithm::SafeDownCast(caller);
        if (event == vtkCommand::ErrorEvent && data) {
            if (error.isEmpty())
                error = QString::fromLocal8Bit(static_cast<const char*>(data)).trimmed();
        } else if (event == vtkCommand::ProgressEvent && task && algorithm) {
            task->setProgress(float(algorithm->GetProgress()));
            if (task->isAbortRequested())
                algorithm->SetAbortExecute(1);
        }
    }
    void watch(vtkAlgorithm* algorithm)
    {
        for (unsigned long event :
             {vtkCommand::ErrorEvent, vtkCommand::WarningEvent, vtkCommand::ProgressEvent})
            algorithm->AddObserver(event, this);
    }

    OXMTaskInfo* task = nullptr;
    QString error;
};

// The dimensions and voxel type a reader announces before reading.
struct Header
{
    long long dims[3] = {0, 0, 0};
    int vtkType = -1;
    int components = 0;
};

bool readHeader(vtkAlgorithm* reader, Header& header)
{
    reader->UpdateInformation();
    vtkInformation* info = reader->GetOutputInformation(0);
    if (!info || !info->Has(vtkStreamingDemandDrivenPipeline::WHOLE_EXTENT()))
        return false;
    int e[6];
    info->Get(vtkStreamingDemandDrivenPipeline::WHOLE_EXTENT(), e);
    for (int a = 0; a < 3; ++a)
        header.dims[a] = (long long)e[2 * a + 1] - e[2 * a] + 1;
    header.vtkType = vtkImageData::GetScalarType(info);
    header.components = vtkImageData::GetNumberOfScalarComponents(info);
    return true;
}

OXMenum dataTypeOf(int vtkType, int components)
{
    if (components == 3 || components == 4) {
        const bool rgb = components == 3;
        if (vtkType == VTK_UNSIGNED_CHAR)
            return rgb ? OXM::Rgb8 : OXM::Rgba8;
        if (vtkType == VTK_UNSIGNED_SHORT)
            return rgb ? OXM::Rgb16 : OXM::Rgba16;
        return OXM::Unknown;
    }
    if (components != 1)
        return OXM::Unknown;
    switch (vtkType) {
    case VTK_UNSIGNED_CHAR:
        return OXM::UInt8;
    case VTK_SIGNED_CHAR:
    case VTK_CHAR:
        return OXM::Int8;
    case VTK_UNSIGNED_SHORT:
        return OXM::UInt16;
    case VTK_SHORT:
        return OXM::Int16;
    case VTK_UNSIGNED_INT:
        return OXM::UInt32;
    case VTK_INT:
        return OXM::Int32;
    case VTK_FLOAT:
        return OXM::Float32;
    case VTK_DOUBLE:
        return OXM::Float64;
    default:
        return OXM::Unknown;
    }
}

// Refuses, before anything is allocated, a header whose volume is empty, overflows or does
// not fit into memory.
QString checkHeader(const Header& h)
{
    const OXMenum type = dataTypeOf(h.vtkType, h.components);
    if (type == OXM::Unknown)
        return QObject::tr("voxels of a type the viewer does not read (%1, %2 components)")
            .arg(QString::fromLatin1(vtkImageScalarTypeNameMacro(h.vtkType)))
            .arg(h.components);
    for (long long d : h.dims)
        if (d < 1 || d > (1LL << 31) - 1)
            return QObject::tr("dimensions %1 × %2 × %3 that are not a volume")
                .arg(h.dims[0])
                .arg(h.dims[1])
                .arg(h.dims[2]);
    const double bytes = double(h.dims[0]) * double(h.dims[1]) * double(h.dims[2]) *
                         double(OXMTypeInfo(type).getSize());
    if (bytes > double(OXWVolumeFile::availableMemory()))
        return QObject::tr("%1 MB of voxels, more than the %2 MB of memory available")
            .arg(std::llround(bytes / 1e6))
            .arg(std::llround(double(OXWVolumeFile::availableMemory()) / 1e6));
    return QString();
}

// A new volume of the voxels, which its grid shares; their value range when the reader
// counted it spares the volume a pass over them.
OXMVolumeRenderObject* makeVolume(const long long dims[3], OXMenum type,
                                  std::shared_ptr<const std::uint8_t> data, std::size_t bytes,
                                  const double spacing[3], const double origin[3],
                                  const QString& name, const OXWNrrdFile::ValueRange& range = {})
{
    auto* grid = new OXMSampleGrid;
    OXMObjectPtr hold(grid);
    if (!grid->setData({int(dims[0]), int(dims[1]), int(dims[2])}, type, std::move(data), bytes))
        return nullptr;
    if (range.known && range.largest >= range.smallest)
        grid->setValueRange(range.smallest, range.largest);
    grid->setSpacing({float(spacing[0]), float(spacing[1]), float(spacing[2])});
    grid->setGridOrigin({float(origin[0]), float(origin[1]), float(origin[2])});
    const QByteArray local = name.toLocal8Bit();
    return OXMVolumeRenderObject::create(grid, local.constData());
}

// The grid shares the image's scalar array: it holds the array for as long as it needs it.
OXMVolumeRenderObject* volumeFrom(vtkImageData* image, const QString& name)
{
    vtkDataArray* scalars = image ? image->GetPointData()->GetScalars() : nullptr;
    const OXMenum type = scalars
                             ? dataTypeOf(scalars->GetDataType(), scalars->GetNumberOfComponents())
                             : OXM::Unknown;
    if (type == OXM::Unknown)
        return nullptr;
    int d[3];
    image->GetDimensions(d);
    const long long dims[3] = {d[0], d[1], d[2]};
    const std::size_t bytes =
        std::size_t(scalars->GetNumberOfValues()) * std::size_t(scalars->GetDataTypeSize());
    vtkSmartPointer<vtkDataArray> keep = scalars;
    std::shared_ptr<const std::uint8_t> data(
        static_cast<const std::uint8_t*>(scalars->GetVoidPointer(0)),
        [keep](const std::uint8_t*) mutable { keep = nullptr; });
    return makeVolume(dims, type, std::move(data), bytes, image->GetSpacing(), image->GetOrigin(),
                      name);
}

std::vector<float> identity()
{
    return {1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1};
}

// The rotation of a 4 × 4 matrix as a transform without translation (the grid keeps the
// origin).
std::vector<float> rotationOf(vtkMatrix4x4* m)
{
    std::vector<float> t = identity();
    if (!m)
        return t;
    for (int r = 0; r < 3; ++r)
        for (int c = 0; c < 3; ++c)
            t[std::size_t(r * 4 + c)] = float(m->GetElement(r, c));
    return t;
}

std::vector<float> orientationOf(vtkImageData* image)
{
    std::vector<float> t = identity();
    vtkMatrix3x3* d = image ? image->GetDirectionMatrix() : nullptr;
    for (int r = 0; d && r < 3; ++r)
        for (int c = 0; c < 3; ++c)
            t[std::size_t(r * 4 + c)] = float(d->GetElement(r, c));
    return t;
}

vtkSmartPointer<vtkAlgorithm> makeReader(Format format, const QString& path)
{
    const QByteArray file = QFile::encodeName(path);
    switch (format) {
    case Format::MetaImage: {
        auto r = vtkSmartPointer<vtkMetaImageReader>::New();
        r->SetFileName(file.constData());
        return r;
    }
    case Format::Nifti: {
        auto r = vtkSmartPointer<vtkNIFTIImageReader>::New();
        r->SetFileName(file.constData());
        return r;
    }
    case Format::Vti: {
        auto r = vtkSmartPointer<vtkXMLImageDataReader>::New();
        r->SetFileName(file.constData());
        return r;
    }
    case Format::Tiff: {
        auto r = vtkSmartPointer<vtkTIFFReader>::New();
        r->SetFileName(file.constData());
        return r;
    }
    case Format::TiffSlices: {
        auto r = vtkSmartPointer<vtkTIFFReader>::New();
        r->SetFileDimensionality(2);
        vtkNew<vtkStringArray> names;
        for (const QString& slice : tiffSlices(QDir(path)))
            names->InsertNextValue(QFile::encodeName(slice).constData());
        r->SetFileNames(names);
        return r;
    }
    case Format::Nrrd: // read here (VTK 9.1's reader takes the first axis for colour)
    case Format::Dicom:
    case Format::Unknown:
        break;
    }
    return nullptr;
}

// The orientation a format keeps beside the image: NIfTI's sform or qform.
std::vector<float> fileOrientation(vtkAlgorithm* reader, vtkImageData* image)
{
    if (auto* nifti = vtkNIFTIImageReader::SafeDownCast(reader)) {
        if (vtkMatrix4x4* sform = nifti->GetSFormMatrix())
            return rotationOf(sform);
        return rotationOf(nifti->GetQFormMatrix());
    }
    if (auto* dicom = vtkDICOMReader::SafeDownCast(reader))
        return rotationOf(dicom->GetPatientMatrix());
    return orientationOf(image);
}

QString baseName(const QString& path)
{
    QString name = QFileInfo(path).fileName();
    for (const char* suffix :
         {".gz", ".nrrd", ".nhdr", ".mha", ".mhd", ".nii", ".vti", ".tiff", ".tif"})
        if (name.endsWith(QLatin1String(suffix), Qt::CaseInsensitive))
            name.chop(int(std::strlen(suffix)));
    return name.isEmpty() ? QFileInfo(path).fileName() : name;
}

QString sizeText(double bytes)
{
    return QObject::tr("%1 MB").arg(bytes / 1e6, 0, 'f', bytes < 1e6 ? 3 : 0);
}

// NRRD and MetaImage headers are read here first: a size that overflows or does not fit into
// memory, and raw data shorter than the header announces, are refused before a reader
// allocates anything.
QString checkOwnHeader(Format format, const QString& path)
{
    if (format != Format::Nrrd && format != Format::MetaImage)
        return QString();
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly))
        return QObject::tr("not readable");
    constexpr qint64 MaxHeaderBytes = 1 << 16;
    const OXWVolumeHeader h = OXWVolumeHeader::parse(
        format == Format::Nrrd ? OXWVolumeHeader::Kind::Nrrd : OXWVolumeHeader::Kind::MetaImage,
        file.read(MaxHeaderBytes));
    if (!h.valid())
        return h.error;
    const long long bytes = h.dataBytes();
    if (bytes < 0 || (unsigned long long)bytes > OXWVolumeFile::availableMemory())
        return QObject::tr("%1 × %2 × %3 voxels, more than the memory available (%4)")
            .arg(h.dims[0])
            .arg(h.dims[1])
            .arg(h.dims[2])
            .arg(sizeText(double(OXWVolumeFile::availableMemory())));
    if (!h.raw())
        return QString();
    const QFileInfo data =
        h.dataFile.isEmpty() ? QFileInfo(path) : QFileInfo(QFileInfo(path).dir(), h.dataFile);
    if (!data.isFile())
        return QObject::tr("the data file %1 is missing").arg(data.fileName());
    const long long stored = data.size() - (h.dataFile.isEmpty() ? h.headerBytes : 0);
    if (stored < bytes)
        return QObject::tr("truncated: the header announces %1 of voxels, the file holds %2")
            .arg(sizeText(double(bytes)), sizeText(double(std::max(0LL, stored))));
    return QString();
}

Result failure(const QString& path, const QString& why)
{
    Result r;
    r.error = QObject::tr("%1: %2").arg(QDir::toNativeSeparators(path), why);
    return r;
}

// Reads with the reader: the header first (checked), then the voxels.
Result readWith(vtkAlgorithm* reader, const QString& path, OXMTaskInfo* task)
{
    vtkNew<ReaderObserver> observer;
    observer->task = task;
    observer->watch(reader);
    Header header;
    if (!readHeader(reader, header) || !observer->error.isEmpty())
        return failure(path, observer->error.isEmpty() ? QObject::tr("not a volume file")
                                                       : observer->error);
    const QString refused = checkHeader(header);
    if (!refused.isEmpty())
        return failure(path, refused);
    reader->Update();
    Result r;
    if (task && task->isAbortRequested()) {
        r.cancelled = true;
        return r;
    }
    vtkImageData* image = vtkImageData::SafeDownCast(reader->GetOutputDataObject(0));
    if (!observer->error.isEmpty() || !image || !image->GetPointData()->GetScalars())
        return failure(path, observer->error.isEmpty() ? QObject::tr("the voxels cannot be read")
                                                       : observer->error);
    r.volume = volumeFrom(image, baseName(path));
    if (!r.volume)
        return failure(path, QObject::tr("the voxels cannot be read"));
    r.transform = fileOrientation(reader, image);
    return r;
}

// The host's type of a NRRD voxel: a scalar, or colour of 8 or 16 bits.
OXMenum nrrdVoxelType(const OXWVolumeHeader& h)
{
    if (h.components == 1)
        return h.valueType;
    const bool rgb = h.components == 3;
    if ((h.components == 3 || h.components == 4) && h.valueType == OXM::UInt8)
        return rgb ? OXM::Rgb8 : OXM::Rgba8;
    if ((h.components == 3 || h.components == 4) && h.valueType == OXM::UInt16)
        return rgb ? OXM::Rgb16 : OXM::Rgba16;
    return OXM::Unknown;
}

// NRRD is read here: its header was checked already.
Result readNrrd(const QString& path, OXMTaskInfo* task)
{
    QFile file(path);
    file.open(QIODevice::ReadOnly);
    const OXWVolumeHeader h =
        OXWVolumeHeader::parse(OXWVolumeHeader::Kind::Nrrd, file.read(1 << 16));
    file.close();
    const OXMenum type = nrrdVoxelType(h);
    if (type == OXM::Unknown)
        return failure(path, QObject::tr("voxels of a type the viewer does not read"));
    QString why;
    Result r;
    OXWNrrdFile::ValueRange range;
    std::shared_ptr<std::uint8_t> data = OXWNrrdFile::readVoxels(path, h, why, &range, task);
    if (!data) {
        if (why.isEmpty()) {
            r.cancelled = true;
            return r;
        }
        return failure(path, why);
    }
    r.volume = makeVolume(h.dims, type, std::move(data), std::size_t(h.dataBytes()), h.spacing,
                          h.origin, baseName(path), range);
    r.transform = identity();
    for (int a = 0; a < 3; ++a)
        for (int c = 0; c < 3; ++c)
            r.transform[std::size_t(c * 4 + a)] = float(h.directions[3 * a + c]);
    return r;
}

Result readDicom(const QString& folder, OXMTaskInfo* task, const QString& seriesUID)
{
    vtkNew<vtkDICOMDirectory> directory;
    directory->SetDirectoryName(QFile::encodeName(folder).constData());
    directory->RequirePixelDataOn();
    directory->Update();
    const int count = directory->GetNumberOfSeries();
    if (count == 0)
        return failure(folder, QObject::tr("a folder without volume files"));
    int chosen = count == 1 ? 0 : -1;
    for (int i = 0; i < count && chosen < 0; ++i)
        if (QString::fromLatin1(
                directory->GetSeriesRecord(i).Get(DC::SeriesInstanceUID).AsString().c_str()) ==
            seriesUID)
            chosen = i;
    if (chosen < 0) {
        Result r;
        for (int i = 0; i < count; ++i) {
            const vtkDICOMItem& record = directory->GetSeriesRecord(i);
            r.series.push_back(
                {QString::fromLatin1(record.Get(DC::SeriesInstanceUID).AsString().c_str()),
                 QString::fromLocal8Bit(record.Get(DC::SeriesDescription).AsString().c_str()),
                 int(directory->GetFileNamesForSeries(i)->GetNumberOfValues())});
        }
        return r;
    }
    vtkNew<vtkDICOMReader> reader;
    reader->SetFileNames(directory->GetFileNamesForSeries(chosen));
    reader->AutoRescaleOn();
    reader->SetMemoryRowOrderToFileNative();
    return readWith(reader, folder, task);
}

Result readFormat(const QString& path, OXMTaskInfo* task, const QString& seriesUID)
{
    const QFileInfo info(path);
    if (!info.exists())
        return failure(path, QObject::tr("no such file or folder"));
    if (!info.isDir() && !info.isFile())
        return failure(path, QObject::tr("not a regular file"));
    if (!info.isReadable())
        return failure(path, QObject::tr("not readable"));
    const Format format = formatOf(info);
    if (format == Format::Unknown)
        return failure(path, QObject::tr("not a volume file of a known format"));
    if (format == Format::Dicom)
        return readDicom(path, task, seriesUID);
    const QString refused = checkOwnHeader(format, path);
    if (!refused.isEmpty())
        return failure(path, refused);
    if (format == Format::Nrrd)
        return readNrrd(path, task);
    const vtkSmartPointer<vtkAlgorithm> reader = makeReader(format, path);
    return readWith(reader, path, task);
}

} // namespace

OXWVolumeFile::Result OXWVolumeFile::read(const QString& path, OXMTaskInfo* task,
                                          const QString& seriesUID)
{
    Result result = readFormat(path, task, seriesUID);
    OXMSampleGrid* grid = result.volume ? result.volume->getSampleGrid() : nullptr;
    if (grid) {
        const QByteArray source = QFileInfo(path).absoluteFilePath().toUtf8();
        const QByteArray series = seriesUID.toUtf8();
        grid->setValue<const char*>(OXMSceneNames::dataSource(), source.constData());
        grid->setValue<const char*>(OXMSceneNames::dataSeries(), series.constData());
    }
    return result;
}

QStringList OXWVolumeFile::nameFilters()
{
    return {QObject::tr("Volume files (*.nrrd *.nhdr *.mha *.mhd *.nii *.nii.gz *.vti *.tif "
                        "*.tiff)"),
            QObject::tr("All files (*)")};
}

bool OXWVolumeFile::isReadable(const QString& path)
{
    const QFileInfo info(path);
    return info.exists() && formatOf(info) != Format::Unknown;
}

unsigned long long OXWVolumeFile::availableMemory()
{
    QFile meminfo(QStringLiteral("/proc/meminfo"));
    if (meminfo.open(QIODevice::ReadOnly)) {
        for (const QByteArray& line : meminfo.readAll().split('\n')) {
            if (line.startsWith("MemAvailable:"))
                return line.mid(13).trimmed().split(' ').front().toULongLong() * 1024ULL;
        }
    }
    return 1ULL << 34; // 16 GiB when the system does not say
}
