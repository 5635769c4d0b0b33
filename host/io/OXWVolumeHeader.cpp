#include "OXWVolumeHeader.h"

#include <QList>
#include <QObject>
#include <QRegularExpression>

#include <cmath>
#include <map>

namespace {

using Fields = std::map<QByteArray, QByteArray>;

// "key<separator>value" lines until the header ends (a blank line, or the last key); the
// header's length in bytes, -1 when it goes on beyond the text.
long long readFields(const QByteArray& text, char separator, const QByteArray& lastKey,
                     Fields& fields)
{
    long long at = 0;
    while (at < text.size()) {
        const int end = text.indexOf('\n', int(at));
        if (end < 0)
            return -1;
        const QByteArray line = text.mid(int(at), end - int(at)).trimmed();
        at = end + 1;
        if (line.isEmpty() && lastKey.isEmpty())
            return at;
        const int split = line.indexOf(separator);
        if (line.startsWith('#') || split <= 0)
            continue;
        const QByteArray key = line.left(split).trimmed().toLower();
        fields[key] = line.mid(split + 1).trimmed();
        if (!lastKey.isEmpty() && key == lastKey)
            return at;
    }
    return -1;
}

QList<double> numbers(const QByteArray& value)
{
    QList<double> out;
    static const QRegularExpression separators(QStringLiteral("[\\s,()]+"));
    for (const QString& part : QString::fromLatin1(value).split(separators, Qt::SkipEmptyParts)) {
        bool ok = false;
        const double v = part.toDouble(&ok);
        out << (ok && std::isfinite(v) ? v : std::nan(""));
    }
    return out;
}

struct TypeName
{
    OXMenum type;
    int size;
};

TypeName nrrdType(const QByteArray& name)
{
    static const std::map<QByteArray, TypeName> types = {{"signed char", {OXM::Int8, 1}},
                                                         {"int8", {OXM::Int8, 1}},
                                                         {"int8_t", {OXM::Int8, 1}},
                                                         {"uchar", {OXM::UInt8, 1}},
                                                         {"unsigned char", {OXM::UInt8, 1}},
                                                         {"uint8", {OXM::UInt8, 1}},
                                                         {"uint8_t", {OXM::UInt8, 1}},
                                                         {"short", {OXM::Int16, 2}},
                                                         {"short int", {OXM::Int16, 2}},
                                                         {"signed short", {OXM::Int16, 2}},
                                                         {"signed short int", {OXM::Int16, 2}},
                                                         {"int16", {OXM::Int16, 2}},
                                                         {"int16_t", {OXM::Int16, 2}},
                                                         {"ushort", {OXM::UInt16, 2}},
                                                         {"unsigned short", {OXM::UInt16, 2}},
                                                         {"unsigned short int", {OXM::UInt16, 2}},
                                                         {"uint16", {OXM::UInt16, 2}},
                                                         {"uint16_t", {OXM::UInt16, 2}},
                                                         {"int", {OXM::Int32, 4}},
                                                         {"signed int", {OXM::Int32, 4}},
                                                         {"int32", {OXM::Int32, 4}},
                                                         {"int32_t", {OXM::Int32, 4}},
                                                         {"uint", {OXM::UInt32, 4}},
                                                         {"unsigned int", {OXM::UInt32, 4}},
                                                         {"uint32", {OXM::UInt32, 4}},
                                                         {"uint32_t", {OXM::UInt32, 4}},
                                                         {"longlong", {OXM::Unknown, 8}},
                                                         {"long long", {OXM::Unknown, 8}},
                                                         {"int64", {OXM::Unknown, 8}},
                                                         {"int64_t", {OXM::Unknown, 8}},
                                                         {"ulonglong", {OXM::Unknown, 8}},
                                                         {"unsigned long long", {OXM::Unknown, 8}},
                                                         {"uint64", {OXM::Unknown, 8}},
                                                         {"uint64_t", {OXM::Unknown, 8}},
                                                         {"float", {OXM::Float32, 4}},
                                                         {"double", {OXM::Float64, 8}}};
    const auto it = types.find(name.simplified().toLower());
    return it == types.end() ? TypeName{OXM::Unknown, 0} : it->second;
}

TypeName metaType(const QByteArray& name)
{
    static const std::map<QByteArray, TypeName> types = {
        {"MET_CHAR", {OXM::Int8, 1}},         {"MET_UCHAR", {OXM::UInt8, 1}},
        {"MET_SHORT", {OXM::Int16, 2}},       {"MET_USHORT", {OXM::UInt16, 2}},
        {"MET_INT", {OXM::Int32, 4}},         {"MET_UINT", {OXM::UInt32, 4}},
        {"MET_LONG", {OXM::Int32, 4}},        {"MET_ULONG", {OXM::UInt32, 4}},
        {"MET_LONG_LONG", {OXM::Unknown, 8}}, {"MET_ULONG_LONG", {OXM::Unknown, 8}},
        {"MET_FLOAT", {OXM::Float32, 4}},     {"MET_DOUBLE", {OXM::Float64, 8}}};
    const auto it = types.find(name.trimmed());
    return it == types.end() ? TypeName{OXM::Unknown, 0} : it->second;
}

// The last three sizes are the volume; a fourth, first one is the values of a voxel.
bool takeSizes(const QList<double>& sizes, OXWVolumeHeader& h)
{
    if (sizes.isEmpty() || sizes.size() > 4)
        return false;
    for (double s : sizes)
        if (!(s >= 1.0 && s < 9e18 && s == std::floor(s)))
            return false;
    const int first = sizes.size() == 4 ? 1 : 0;
    if (first == 1) {
        if (sizes[0] > 4)
            return false;
        h.components = int(sizes[0]);
    }
    for (int a = 0; a < 3; ++a)
        h.dims[a] = first + a < sizes.size() ? (long long)sizes[first + a] : 1;
    return true;
}

// "space directions: none (0.5,0,0) (0,0.5,0) (0,0,2)": spacing and unit directions.
void takeDirections(const QByteArray& value, OXWVolumeHeader& h)
{
    QByteArray text = value;
    text.replace("none", "");
    const QList<double> v = numbers(text);
    if (v.size() < 9)
        return;
    const int first = int(v.size()) - 9;
    for (int a = 0; a < 3; ++a) {
        const double* d = &v[first + 3 * a];
        const double length = std::sqrt(d[0] * d[0] + d[1] * d[1] + d[2] * d[2]);
        if (!(length > 0.0))
            continue;
        h.spacing[a] = length;
        for (int c = 0; c < 3; ++c)
            h.directions[3 * a + c] = d[c] / length;
    }
}

void takeEncoding(const QByteArray& value, OXWVolumeHeader& h)
{
    const QByteArray e = value.toLower();
    if (e == "raw")
        h.encoding = OXWVolumeHeader::Encoding::Raw;
    else if (e == "gzip" || e == "gz")
        h.encoding = OXWVolumeHeader::Encoding::Gzip;
    else if (e == "ascii" || e == "text" || e == "txt")
        h.encoding = OXWVolumeHeader::Encoding::Ascii;
}

void parseNrrd(const QByteArray& text, OXWVolumeHeader& h)
{
    const int firstLine = text.indexOf('\n');
    if (!text.startsWith("NRRD") || firstLine < 0) {
        h.error = QObject::tr("not a NRRD file");
        return;
    }
    Fields f;
    const long long rest = readFields(text.mid(firstLine + 1), ':', QByteArray(), f);
    h.headerBytes = rest < 0 ? -1 : rest + firstLine + 1;
    const TypeName type = nrrdType(f["type"]);
    h.valueType = type.type;
    h.bytesPerValue = type.size;
    takeEncoding(f["encoding"], h);
    h.bigEndian = f["endian"].toLower() == "big";
    h.dataFile = QString::fromLocal8Bit(f.count("data file") ? f["data file"] : f["datafile"]);
    const QList<double> spacings = numbers(f["spacings"]);
    for (int a = 0; a < 3 && a < spacings.size(); ++a)
        if (spacings[spacings.size() - 3 + a] > 0.0)
            h.spacing[a] = spacings[spacings.size() - 3 + a];
    takeDirections(f["space directions"], h);
    const QList<double> origin = numbers(f["space origin"]);
    for (int a = 0; a < 3 && origin.size() == 3; ++a)
        h.origin[a] = std::isnan(origin[a]) ? 0.0 : origin[a];
    if (h.bytesPerValue == 0)
        h.error = QObject::tr("a voxel type the viewer does not read");
    else if (!takeSizes(numbers(f["sizes"]), h))
        h.error = QObject::tr("no valid sizes");
    else if (h.encoding == OXWVolumeHeader::Encoding::Other)
        h.error = QObject::tr("an encoding the viewer does not read");
}

void parseMetaImage(const QByteArray& text, OXWVolumeHeader& h)
{
    Fields f;
    h.headerBytes = readFields(text, '=', "elementdatafile", f);
    if (!f.count("ndims") || !f.count("elementdatafile")) {
        h.error = QObject::tr("not a MetaImage header");
        return;
    }
    const TypeName type = metaType(f["elementtype"]);
    h.valueType = type.type;
    h.bytesPerValue = type.size;
    const double channels = f.count("elementnumberofchannels")
                                ? numbers(f["elementnumberofchannels"]).value(0, 1.0)
                                : 1.0;
    h.components = channels >= 1.0 && channels <= 4.0 ? int(channels) : 0;
    h.encoding = f["compresseddata"].toLower() == "true" ? OXWVolumeHeader::Encoding::Gzip
                                                         : OXWVolumeHeader::Encoding::Raw;
    const QByteArray file = f["elementdatafile"];
    if (file.toLower() != "local")
        h.dataFile = QString::fromLocal8Bit(file);
    if (h.dataFile.startsWith(QLatin1String("LIST")) || h.dataFile.contains(QLatin1Char('%')))
        h.encoding = OXWVolumeHeader::Encoding::Other; // several files: sizes not checked
    if (h.bytesPerValue <= 0 || h.components <= 0)
        h.error = QObject::tr("a voxel type the viewer does not read");
    else if (!takeSizes(numbers(f["dimsize"]), h))
        h.error = QObject::tr("no valid DimSize");
}

} // namespace

long long OXWVolumeHeader::dataBytes() const
{
    long long total = bytesPerVoxel();
    for (long long d : dims) {
        if (d <= 0 || total <= 0 || total > (1LL << 62) / d)
            return -1;
        total *= d;
    }
    return total;
}

OXWVolumeHeader OXWVolumeHeader::parse(Kind kind, const QByteArray& text)
{
    OXWVolumeHeader h;
    if (kind == Kind::Nrrd)
        parseNrrd(text, h);
    else
        parseMetaImage(text, h);
    if (h.valid() && h.headerBytes < 0 && h.dataFile.isEmpty())
        h.error = QObject::tr("a header without end");
    return h;
}
