#include "OXWParaViewPresetFile.h"

#include "OXWJsonReader.h"
#include "OXWTransferFunctionSampling.h"

#include <QCoreApplication>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>

#include <algorithm>
#include <cmath>

namespace {

using Sampling = OXWTransferFunctionSampling;
using Json = OXWJsonReader;
using Type = OXWJsonReader::Type;

QString tr(const char* text)
{
    return QCoreApplication::translate("OXWParaViewPresetFile", text);
}

// A colour map: an object of the document.
struct Map
{
    const Json& json;
    int index;

    // The index of the member key's value; -1 when there is none.
    int value(const char* key) const { return json.member(index, QLatin1String(key)); }
    bool contains(const char* key) const { return value(key) >= 0; }
};

bool toNumber(const Json& json, int index, double& number)
{
    const Json::Value& value = json.at(index);
    bool ok = value.type == Type::Number;
    number = ok ? value.number : json.text(index).trimmed().toDouble(&ok);
    return ok && std::isfinite(number);
}

bool isTrue(const Json& json, int index)
{
    if (index < 0)
        return false;
    const Json::Value& value = json.at(index);
    if (value.type == Type::Boolean)
        return value.flag;
    return value.type == Type::Number ? value.number != 0.0
                                      : json.text(index) == QLatin1String("1");
}

void noteLeftOut(const Map& map, OXWTransferFunction& tf)
{
    if (map.contains("NanColor"))
        tf.leftOut << tr("NaN colour");
    if (isTrue(map.json, map.value("UseLogScale")))
        tf.leftOut << tr("log scale");
    if (map.contains("IndexedColors") || map.contains("Annotations"))
        tf.leftOut << tr("categorical colours");
}

Sampling::ColorSpace colorSpaceOf(const Map& map, OXWTransferFunction& tf)
{
    Sampling::ColorSpace space = Sampling::ColorSpace::Diverging;
    const int value = map.value("ColorSpace");
    const QString name = map.json.text(value);
    if (value >= 0 && !Sampling::colorSpaceFromName(name, space))
        tf.leftOut << tr("colour space \"%1\" (read as Diverging)").arg(name);
    return space;
}

// The size numbers of the list at index list (when some are given as text, all are converted
// into `converted`), and in bad the index of the first that is no finite number (-1: none).
const double* numbersOf(const Json& json, int list, int size, std::vector<double>& converted,
                        int& bad)
{
    const double* numbers = json.numbers(list); // null when not all are numbers
    const auto notFinite = [](double x) { return !std::isfinite(x); };
    if (numbers) {
        bad = int(std::find_if(numbers, numbers + size, notFinite) - numbers);
    } else {
        converted.resize(std::size_t(size));
        int item = list + 1;
        for (bad = 0; bad < size && toNumber(json, item, converted[std::size_t(bad)]); ++bad)
            item = json.next(item);
        numbers = converted.data();
    }
    bad = bad < size ? bad : -1;
    return numbers;
}

// The numbers of a list in fours, as nodes; false (with the reason) when it holds a non-number
// or an incomplete group.
template <typename Node>
bool readNodes(const Map& map, const char* key, std::vector<Node>& nodes, QString& refused)
{
    const int list = map.value(key);
    const int size = map.json.type(list) == Type::Array ? map.json.size(list) : 0;
    if (size % 4 != 0) {
        refused = tr("\"%1\" holds %2 numbers, not a multiple of %3")
                      .arg(QLatin1String(key))
                      .arg(size)
                      .arg(4);
        return false;
    }
    std::vector<double> converted;
    int bad = -1;
    const double* n = numbersOf(map.json, list, size, converted, bad);
    if (bad >= 0) {
        refused = tr("\"%1\" holds something other than a finite number at %2")
                      .arg(QLatin1String(key))
                      .arg(bad);
        return false;
    }
    nodes.reserve(std::size_t(size / 4));
    for (int i = 0; i < size; i += 4)
        nodes.push_back({n[i], n[i + 1], n[i + 2], n[i + 3]});
    return true;
}

bool readColours(const Map& map, OXWTransferFunction& tf)
{
    std::vector<OXWTransferFunction::ColourPoint> nodes;
    if (!readNodes(map, "RGBPoints", nodes, tf.refused))
        return false;
    tf.fileColourPoints = int(nodes.size());
    if (!Sampling::sampleColours(nodes, colorSpaceOf(map, tf), tf.colours))
        tf.refused = tr("the colour points make too many samples");
    return tf.refused.isEmpty();
}

bool readOpacity(const Map& map, OXWTransferFunction& tf)
{
    std::vector<Sampling::OpacityNode> nodes;
    if (!readNodes(map, "Points", nodes, tf.refused))
        return false;
    tf.fileOpacityPoints = int(nodes.size());
    if (nodes.empty() && !tf.colours.empty()) // ParaView's default: a ramp
        nodes = {{tf.colours.front().x, 0.0, 0.5, 0.0}, {tf.colours.back().x, 1.0, 0.5, 0.0}};
    if (!Sampling::sampleOpacity(nodes, tf.opacity))
        tf.refused = tr("the opacity points make too many samples");
    return tf.refused.isEmpty();
}

// The map at index (-1: an item that is no value of its own).
OXWTransferFunction readMap(const Json& json, int index, int ordinal)
{
    OXWTransferFunction tf;
    const Map map{json, index};
    tf.name = json.text(map.value("Name")).trimmed();
    if (tf.name.isEmpty())
        tf.name = tr("Colour map %1").arg(ordinal + 1);
    if (json.type(index) != Type::Object) {
        tf.refused = tr("it is no JSON object");
        return tf;
    }
    noteLeftOut(map, tf);
    if (readColours(map, tf) && readOpacity(map, tf))
        tf.validate();
    return tf;
}

QJsonArray flat(const std::vector<OXWTransferFunction::ColourPoint>& points)
{
    QJsonArray list;
    for (const auto& p : points)
        list << p.x << p.r << p.g << p.b;
    return list;
}

QJsonArray flat(const std::vector<OXWTransferFunction::OpacityPoint>& points)
{
    QJsonArray list;
    for (const auto& p : points)
        list << p.x << p.a << 0.5 << 0.0;
    return list;
}

} // namespace

bool OXWParaViewPresetFile::read(const QByteArray& bytes, std::vector<OXWTransferFunction>& presets,
                                 QString& error)
{
    presets.clear();
    Json json;
    QString reason;
    if (!json.read(bytes, reason)) {
        error = tr("no valid JSON (%1)").arg(reason);
        return false;
    }
    if (json.type(0) == Type::Object)
        presets.push_back(readMap(json, 0, 0));
    const bool numbers = json.numbers(0); // items without values of their own: no maps
    for (int i = 0, item = 1; json.type(0) == Type::Array && i < json.size(0); ++i) {
        presets.push_back(readMap(json, numbers ? -1 : item, i));
        item = numbers ? item : json.next(item);
    }
    if (presets.empty())
        error = tr("the file holds no colour map");
    return !presets.empty();
}

QByteArray OXWParaViewPresetFile::write(const std::vector<OXWTransferFunction>& presets)
{
    QJsonArray maps;
    for (const OXWTransferFunction& tf : presets) {
        maps << QJsonObject{
            {QStringLiteral("Name"), tf.name},
            {QStringLiteral("ColorSpace"), Sampling::colorSpaceName(Sampling::ColorSpace::RGB)},
            {QStringLiteral("RGBPoints"), flat(tf.colours)},
            {QStringLiteral("Points"), flat(tf.opacity)}};
    }
    return QJsonDocument(maps).toJson(QJsonDocument::Indented);
}
