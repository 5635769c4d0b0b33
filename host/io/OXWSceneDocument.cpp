#include "OXWSceneDocument.h"

#include "OXWVolumeFile.h"

#include <OXMObjectLink.h>
#include <OXMObjectSerializer.h>
#include <OXMRegionOfInterest.h>
#include <OXMSampleGrid.h>
#include <OXMScene.h>
#include <OXMSceneNames.h>
#include <OXMTaskInfo.h>
#include <OXMVolumeRenderObject.h>

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QJsonArray>
#include <QJsonObject>
#include <QObject>
#include <QSaveFile>

#include <vector>

namespace {

std::vector<OXMObject*> linkedList(const OXMObject& owner, OXMenum id)
{
    std::vector<OXMObjectLink> links;
    owner.getArray(id, links);
    std::vector<OXMObject*> objects;
    for (const OXMObjectLink& link : links)
        objects.push_back(link.getLink());
    return objects;
}

QString text(const OXMObject& object, OXMenum id)
{
    const char* value = nullptr;
    return object.getValue(id, value) && value ? QString::fromUtf8(value) : QString();
}

// --- writing -----------------------------------------------------------------------------

QString nrrdType(OXMenum scalar)
{
    static const std::pair<OXMenum, const char*> Types[] = {
        {OXM::UInt8, "uint8"},   {OXM::Int8, "int8"},     {OXM::UInt16, "uint16"},
        {OXM::Int16, "int16"},   {OXM::UInt32, "uint32"}, {OXM::Int32, "int32"},
        {OXM::Float32, "float"}, {OXM::Float64, "double"}};
    for (const auto& [id, name] : Types) {
        if (id == scalar)
            return QString::fromLatin1(name);
    }
    return QString();
}

bool writeAtomically(const QString& path, const QByteArray& head, const std::uint8_t* data,
                     std::size_t bytes, QString& error)
{
    QSaveFile file(path);
    bool ok = file.open(QIODevice::WriteOnly) && file.write(head) == head.size();
    constexpr std::size_t Chunk = std::size_t(1) << 26;
    for (std::size_t at = 0; ok && at < bytes; at += Chunk) {
        const qint64 n = qint64(std::min(Chunk, bytes - at));
        ok = file.write(reinterpret_cast<const char*>(data) + at, n) == n;
    }
    if (ok && file.commit())
        return true;
    error = QObject::tr("Could not write %1: %2").arg(path, file.errorString());
    file.cancelWriting();
    return false;
}

// A raw little-endian NRRD file of one scalar per voxel.
bool writeNrrd(const QString& path, const OXMSampleGrid& grid, OXMenum scalar,
               const std::uint8_t* data, std::size_t bytes, QString& error)
{
    const QString type = nrrdType(scalar);
    if (type.isEmpty() || QSysInfo::ByteOrder != QSysInfo::LittleEndian) {
        error = QObject::tr("Could not write %1: voxels of this type are not saved").arg(path);
        return false;
    }
    const OXMVector3<int> d = grid.getDimensions();
    const OXMVector3<float> s = grid.getSpacing();
    const OXMVector3<float> o = grid.getGridOrigin();
    const QString head = QStringLiteral("NRRD0004\ntype: %1\ndimension: 3\nsizes: %2 %3 %4\n"
                                        "spacings: %5 %6 %7\nspace origin: (%8,%9,%10)\n"
                                        "endian: little\nencoding: raw\n\n")
                             .arg(type)
                             .arg(d.x)
                             .arg(d.y)
                             .arg(d.z)
                             .arg(double(s.x), 0, 'g', 9)
                             .arg(double(s.y), 0, 'g', 9)
                             .arg(double(s.z), 0, 'g', 9)
                             .arg(double(o.x), 0, 'g', 9)
                             .arg(double(o.y), 0, 'g', 9)
                             .arg(double(o.z), 0, 'g', 9);
    return writeAtomically(path, head.toLatin1(), data, bytes, error);
}

struct SaveContext
{
    QDir folder;      // of the document
    QString dataName; // "<document name>.data"
    QString& error;
};

// The entry of one volume: its file, or its voxels and masks written beside the document.
bool describeVolume(const OXMVolumeRenderObject& volume, int index, SaveContext& context,
                    QJsonObject& entry)
{
    const OXMSampleGrid* grid = volume.getSampleGrid();
    if (!grid) {
        context.error = QObject::tr("The volume %1 has no voxels").arg(index + 1);
        return false;
    }
    const QString source = text(*grid, OXMSceneNames::dataSource());
    const auto dataPath = [&](const QString& name) {
        return context.dataName + QLatin1Char('/') + name;
    };
    if (!source.isEmpty() && QFileInfo::exists(source)) {
        entry[QStringLiteral("file")] = context.folder.relativeFilePath(source);
        entry[QStringLiteral("series")] = text(*grid, OXMSceneNames::dataSeries());
    } else {
        const OXMTypeInfo type = grid->getDataType();
        const QString name = dataPath(QStringLiteral("volume%1.nrrd").arg(index));
        if (type.getChannelCount() != 1 ||
            !writeNrrd(context.folder.filePath(name), *grid, type.getChannel(0)->getDataType(),
                       grid->getData(), grid->getByteCount(), context.error))
            return false;
        entry[QStringLiteral("data")] = name;
    }
    QJsonArray masks;
    int region = 0;
    for (OXMObject* object : linkedList(volume, OXM::RegionOfInterestList)) {
        const auto* roi = dynamic_cast<const OXMRegionOfInterest*>(object);
        const std::vector<std::uint8_t> empty;
        const std::vector<std::uint8_t>& mask = roi ? roi->getMask() : empty;
        const QString name =
            dataPath(QStringLiteral("volume%1-region%2.nrrd").arg(index).arg(region++));
        if (!mask.empty() && !writeNrrd(context.folder.filePath(name), *grid, OXM::UInt8,
                                        mask.data(), mask.size(), context.error))
            return false;
        masks.append(mask.empty() ? QString() : name);
    }
    entry[QStringLiteral("masks")] = masks;
    return true;
}

// --- reading -----------------------------------------------------------------------------

struct ReadContext
{
    QString documentPath;
    QDir folder;
    OXMTaskInfo* task;
    const OXWSceneDocument::LocateFile& locate;
    QString& error;
};

QString refusal(const ReadContext& context, const QString& why)
{
    return QObject::tr("%1 cannot be opened: %2").arg(context.documentPath, why);
}

// The voxels of a file the document refers to, as a new grid; null with the reason.
OXMObjectPtr readGrid(const QString& relative, const QString& series, bool mayLocate,
                      ReadContext& context)
{
    QString path = context.folder.filePath(relative);
    if (!QFileInfo::exists(path) && mayLocate && context.locate)
        path = context.locate(path);
    if (path.isEmpty() || !QFileInfo::exists(path)) {
        context.error = refusal(context, QObject::tr("the file %1 it refers to is missing")
                                             .arg(context.folder.filePath(relative)));
        return OXMObjectPtr();
    }
    const OXWVolumeFile::Result result = OXWVolumeFile::read(path, context.task, series);
    OXMObjectPtr volume(result.volume);
    if (!result.volume) {
        context.error = result.cancelled ? QString() : refusal(context, result.error);
        return OXMObjectPtr();
    }
    return OXMObjectPtr(result.volume->getSampleGrid());
}

bool sameLayout(const OXMSampleGrid& a, const OXMSampleGrid& b)
{
    return a.getDimensions() == b.getDimensions() && a.getDataType() == b.getDataType();
}

// Gives the volume of the document the voxels and the masks of its entry.
bool fillVolume(OXMVolumeRenderObject& volume, const QJsonObject& entry, ReadContext& context)
{
    OXMSampleGrid* grid = volume.getSampleGrid();
    const bool fromFile = entry.contains(QStringLiteral("file"));
    const QString relative =
        entry.value(fromFile ? QStringLiteral("file") : QStringLiteral("data")).toString();
    if (!grid || relative.isEmpty()) {
        context.error = refusal(context, QObject::tr("a volume without voxels"));
        return false;
    }
    const OXMObjectPtr read =
        readGrid(relative, entry.value(QStringLiteral("series")).toString(), fromFile, context);
    const auto* voxels = static_cast<const OXMSampleGrid*>(read.get());
    if (!voxels)
        return false;
    if (!sameLayout(*grid, *voxels)) {
        context.error = refusal(
            context, QObject::tr("the file %1 no longer holds the volume's voxels").arg(relative));
        return false;
    }
    const OXMVector3<int> dims = grid->getDimensions();
    grid->setData(dims, grid->getDataType().getID(), voxels->getDataHandle(),
                  voxels->getByteCount());
    if (fromFile) {
        const QByteArray source = text(*voxels, OXMSceneNames::dataSource()).toUtf8();
        grid->setValue<const char*>(OXMSceneNames::dataSource(), source.constData());
    }
    const QJsonArray masks = entry.value(QStringLiteral("masks")).toArray();
    const std::vector<OXMObject*> regions = linkedList(volume, OXM::RegionOfInterestList);
    if (masks.size() != int(regions.size())) {
        context.error = refusal(context, QObject::tr("its regions and their masks do not match"));
        return false;
    }
    for (std::size_t r = 0; r < regions.size(); ++r) {
        auto* roi = dynamic_cast<OXMRegionOfInterest*>(regions[r]);
        const QString name = masks[int(r)].toString();
        if (!roi || name.isEmpty())
            continue;
        const OXMObjectPtr mask = readGrid(name, QString(), false, context);
        const auto* maskGrid = static_cast<const OXMSampleGrid*>(mask.get());
        if (!maskGrid)
            return false;
        if (maskGrid->getDimensions() != dims || maskGrid->getDataType().getSize() != 1) {
            context.error =
                refusal(context, QObject::tr("the mask %1 does not fit its volume").arg(name));
            return false;
        }
        roi->setMask(std::vector<std::uint8_t>(maskGrid->getData(),
                                               maskGrid->getData() + maskGrid->getByteCount()));
    }
    return true;
}

} // namespace

bool OXWSceneDocument::save(const OXMScene& scene, const QString& path, QString& error)
{
    const QFileInfo info(path);
    SaveContext context{info.absoluteDir(), info.completeBaseName() + QStringLiteral(".data"),
                        error};
    if (!context.folder.mkpath(context.dataName)) {
        error = QObject::tr("Could not write %1: the folder %2 cannot be made")
                    .arg(path, context.folder.filePath(context.dataName));
        return false;
    }
    QJsonArray volumes;
    int index = 0;
    for (OXMObject* object : linkedList(scene, OXM::VolumeRenderObjectList)) {
        const auto* volume = dynamic_cast<const OXMVolumeRenderObject*>(object);
        QJsonObject entry;
        if (!volume || !describeVolume(*volume, index++, context, entry))
            return false;
        volumes.append(entry);
    }
    QJsonObject header;
    header[QStringLiteral("kind")] = QLatin1String(Kind);
    header[QStringLiteral("volumes")] = volumes;
    QByteArray json;
    QString why;
    if (!OXMObjectSerializer::write(scene, header, json, &why)) {
        error = QObject::tr("Could not write %1: %2").arg(path, why);
        return false;
    }
    return writeAtomically(path, json, nullptr, 0, error);
}

OXMObjectPtr OXWSceneDocument::read(const QString& path, QString& error, OXMTaskInfo* task,
                                    const LocateFile& locate)
{
    error.clear();
    ReadContext context{path, QFileInfo(path).absoluteDir(), task, locate, error};
    QFile file(path);
    if (!QFileInfo(path).isFile() || !file.open(QIODevice::ReadOnly)) {
        error = refusal(context, QObject::tr("it is not a readable file"));
        return OXMObjectPtr();
    }
    if (file.size() > MaxDocumentSize) {
        error = refusal(context, QObject::tr("it is larger than a scene document can be"));
        return OXMObjectPtr();
    }
    OXMObjectSerializer::Document document;
    QString why;
    if (!OXMObjectSerializer::read(file.readAll(), document, &why)) {
        error = refusal(context, why);
        return OXMObjectPtr();
    }
    auto* scene = dynamic_cast<OXMScene*>(document.root.get());
    const QJsonArray volumes = document.header.value(QStringLiteral("volumes")).toArray();
    const std::vector<OXMObject*> list =
        scene ? linkedList(*scene, OXM::VolumeRenderObjectList) : std::vector<OXMObject*>();
    if (!scene || document.header.value(QStringLiteral("kind")).toString() != QLatin1String(Kind) ||
        volumes.size() != int(list.size())) {
        error = refusal(context, QObject::tr("it is not a scene document"));
        return OXMObjectPtr();
    }
    for (std::size_t i = 0; i < list.size(); ++i) {
        auto* volume = dynamic_cast<OXMVolumeRenderObject*>(list[i]);
        if (!volume) {
            error = refusal(context, QObject::tr("it is not a scene document"));
            return OXMObjectPtr();
        }
        if (!fillVolume(*volume, volumes[int(i)].toObject(), context))
            return OXMObjectPtr();
    }
    return document.root;
}
