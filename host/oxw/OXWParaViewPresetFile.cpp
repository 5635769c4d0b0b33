#include "OXWParaViewPresetFile.h"

#include "OXWTransferFunctionSampling.h"

#include <QCoreApplication>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>

#include <cmath>

namespace {

using Sampling = OXWTransferFunctionSampling;

QString tr(const char* text)
{
    return QCoreApplication::translate("OXWParaViewPresetFile", text);
}

bool toNumber(const QJsonValue& value, double& number)
{
    bool ok = value.isDouble();
    number = ok ? value.toDouble() : value.toString().trimmed().toDouble(&ok);
    return ok && std::isfinite(number);
}

// The numbers of a list in groups of `group`; false (with the reason) when it holds a
// non-number or an incomplete group.
bool readNumbers(const QJsonObject& map, const char* key, int group, std::vector<double>& numbers,
                 QString& refused)
{
    const QJsonArray list = map.value(QLatin1String(key)).toArray();
    if (list.size() % group != 0) {
        refused = tr("\"%1\" holds %2 numbers, not a multiple of %3")
                      .arg(QLatin1String(key))
                      .arg(list.size())
                      .arg(group);
        return false;
    }
    numbers.resize(std::size_t(list.size()));
    for (int i = 0; i < list.size(); ++i) {
        if (!toNumber(list.at(i), numbers[std::size_t(i)])) {
            refused = tr("\"%1\" holds something other than a finite number at %2")
                          .arg(QLatin1String(key))
                          .arg(i);
            return false;
        }
    }
    return true;
}

bool isTrue(const QJsonValue& value)
{
    return value.isBool() ? value.toBool() : value.toDouble() != 0.0 || value.toString() == "1";
}

void noteLeftOut(const QJsonObject& map, OXWTransferFunction& tf)
{
    if (map.contains(QLatin1String("NanColor")))
        tf.leftOut << tr("NaN colour");
    if (isTrue(map.value(QLatin1String("UseLogScale"))))
        tf.leftOut << tr("log scale");
    if (map.contains(QLatin1String("IndexedColors")) || map.contains(QLatin1String("Annotations")))
        tf.leftOut << tr("categorical colours");
}

Sampling::ColorSpace colorSpaceOf(const QJsonObject& map, OXWTransferFunction& tf)
{
    Sampling::ColorSpace space = Sampling::ColorSpace::Diverging;
    const QJsonValue name = map.value(QLatin1String("ColorSpace"));
    if (!name.isUndefined() && !Sampling::colorSpaceFromName(name.toString(), space))
        tf.leftOut << tr("colour space \"%1\" (read as Diverging)").arg(name.toString());
    return space;
}

bool readColours(const QJsonObject& map, OXWTransferFunction& tf)
{
    std::vector<double> n;
    if (!readNumbers(map, "RGBPoints", 4, n, tf.refused))
        return false;
    std::vector<OXWTransferFunction::ColourPoint> nodes;
    for (std::size_t i = 0; i + 3 < n.size(); i += 4)
        nodes.push_back({n[i], n[i + 1], n[i + 2], n[i + 3]});
    tf.fileColourPoints = int(nodes.size());
    if (!Sampling::sampleColours(nodes, colorSpaceOf(map, tf), tf.colours))
        tf.refused = tr("the colour points make too many samples");
    return tf.refused.isEmpty();
}

bool readOpacity(const QJsonObject& map, OXWTransferFunction& tf)
{
    std::vector<double> n;
    if (!readNumbers(map, "Points", 4, n, tf.refused))
        return false;
    std::vector<Sampling::OpacityNode> nodes;
    for (std::size_t i = 0; i + 3 < n.size(); i += 4)
        nodes.push_back({n[i], n[i + 1], n[i + 2], n[i + 3]});
    if (nodes.empty() && !tf.colours.empty()) // ParaView's default: a ramp
        nodes = {{tf.colours.front().x, 0.0, 0.5, 0.0}, {tf.colours.back().x, 1.0, 0.5, 0.0}};
    tf.fileOpacityPoints = int(n.size() / 4);
    if (!Sampling::sampleOpacity(nodes, tf.opacity))
        tf.refused = tr("the opacity points make too many samples");
    return tf.refused.isEmpty();
}

OXWTransferFunction readMap(const QJsonValue& value, int index)
{
    OXWTransferFunction tf;
    const QJsonObject map = value.toObject();
    tf.name = map.value(QLatin1String("Name")).toString().trimmed();
    if (tf.name.isEmpty())
        tf.name = tr("Colour map %1").arg(index + 1);
    if (!value.isObject()) {
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
    QJsonParseError parse;
    const QJsonDocument document = QJsonDocument::fromJson(bytes, &parse);
    if (document.isNull()) {
        error = tr("no valid JSON (%1 at byte %2)").arg(parse.errorString()).arg(parse.offset);
        return false;
    }
    const QJsonArray maps =
        document.isArray() ? document.array() : QJsonArray{QJsonValue(document.object())};
    for (int i = 0; i < maps.size(); ++i)
        presets.push_back(readMap(maps.at(i), i));
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
