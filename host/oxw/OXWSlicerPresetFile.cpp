#include "OXWSlicerPresetFile.h"

#include <QCoreApplication>
#include <QVector>
#include <QXmlStreamReader>
#include <QXmlStreamWriter>

#include <cmath>

namespace {

QString tr(const char* text)
{
    return QCoreApplication::translate("OXWSlicerPresetFile", text);
}

using Attributes = QXmlStreamAttributes;

// A count N and N numbers in groups of `group`; false (with the reason) when they don't match.
bool readList(const Attributes& attributes, const char* key, int group,
              std::vector<double>& numbers, QString& refused)
{
    numbers.clear();
    const QVector<QStringRef> words =
        attributes.value(QLatin1String(key)).split(QLatin1Char(' '), Qt::SkipEmptyParts);
    if (words.isEmpty())
        return true;
    bool ok = false;
    const double count = words.front().toDouble(&ok);
    const bool whole = ok && count >= 0.0 && count == std::floor(count);
    if (!whole || count != double(words.size() - 1) || int(count) % group != 0) {
        refused = tr("\"%1\" announces %2 numbers, holds %3 (a multiple of %4 is needed)")
                      .arg(QLatin1String(key), words.front().toString())
                      .arg(words.size() - 1)
                      .arg(group);
        return false;
    }
    for (int i = 1; i < words.size(); ++i) {
        numbers.push_back(words[i].toDouble(&ok));
        if (!ok || !std::isfinite(numbers.back())) {
            refused = tr("\"%1\" holds \"%2\", no finite number")
                          .arg(QLatin1String(key), words[i].toString());
            return false;
        }
    }
    return true;
}

double number(const Attributes& attributes, const char* key, double fallback, QString& refused)
{
    const QStringRef text = attributes.value(QLatin1String(key));
    bool ok = false;
    const double value = text.trimmed().split(QLatin1Char(' ')).value(0).toDouble(&ok);
    if (text.isEmpty())
        return fallback;
    if (!ok || !std::isfinite(value))
        refused = tr("\"%1\" is no finite number").arg(QLatin1String(key));
    return value;
}

void readGradient(const std::vector<double>& n, OXWTransferFunction& tf)
{
    for (std::size_t i = 3; i < n.size(); i += 2) {
        if (n[i] != n[1]) {
            tf.leftOut << tr("gradient opacity");
            return;
        }
    }
    tf.gradientOpacity = n.size() >= 2 ? n[1] : 1.0;
}

void readMaterial(const Attributes& a, OXWTransferFunction& tf)
{
    QString& r = tf.refused;
    tf.ambient = number(a, "ambient", 0.0, r);
    tf.diffuse = number(a, "diffuse", 0.7, r);
    tf.specular = number(a, "specular", 0.2, r);
    tf.specularPower = number(a, "specularPower", 10.0, r);
    if (number(a, "interpolation", 0.0, r) == 0.0)
        tf.leftOut << tr("nearest-neighbour interpolation");
    if (number(a, "shade", 0.0, r) == 0.0)
        tf.leftOut << tr("shading off");
}

void readRange(const Attributes& a, OXWTransferFunction& tf)
{
    const QVector<QStringRef> words =
        a.value(QLatin1String("effectiveRange")).split(QLatin1Char(' '), Qt::SkipEmptyParts);
    bool low = false, high = false;
    if (words.size() == 2) {
        tf.rangeLow = words[0].toDouble(&low);
        tf.rangeHigh = words[1].toDouble(&high);
    }
    // Slicer writes "0 -1" and the like when the range is unset.
    tf.hasRange = low && high && tf.rangeHigh > tf.rangeLow;
}

OXWTransferFunction readProperty(const Attributes& a, int index)
{
    OXWTransferFunction tf;
    tf.absolute = true;
    tf.name = a.value(QLatin1String("name")).toString().trimmed();
    if (tf.name.isEmpty())
        tf.name = tr("Volume property %1").arg(index + 1);
    std::vector<double> opacity, colours, gradient;
    if (!readList(a, "scalarOpacity", 2, opacity, tf.refused) ||
        !readList(a, "colorTransfer", 4, colours, tf.refused) ||
        !readList(a, "gradientOpacity", 2, gradient, tf.refused))
        return tf;
    for (std::size_t i = 0; i + 1 < opacity.size(); i += 2)
        tf.opacity.push_back({opacity[i], opacity[i + 1]});
    for (std::size_t i = 0; i + 3 < colours.size(); i += 4)
        tf.colours.push_back({colours[i], colours[i + 1], colours[i + 2], colours[i + 3]});
    tf.fileOpacityPoints = int(tf.opacity.size());
    tf.fileColourPoints = int(tf.colours.size());
    readGradient(gradient, tf);
    readMaterial(a, tf);
    readRange(a, tf);
    tf.validate();
    return tf;
}

QString list(const std::vector<double>& numbers)
{
    QStringList words{QString::number(numbers.size())};
    for (double v : numbers)
        words << QString::number(v, 'g', 17);
    return words.join(QLatin1Char(' '));
}

void writeProperty(QXmlStreamWriter& xml, const OXWTransferFunction& tf, int index)
{
    std::vector<double> opacity, colours;
    for (const auto& p : tf.opacity)
        opacity.insert(opacity.end(), {p.x, p.a});
    for (const auto& p : tf.colours)
        colours.insert(colours.end(), {p.x, p.r, p.g, p.b});
    const auto n = [](double v) { return QString::number(v, 'g', 17); };
    double low = 0.0, high = -1.0;
    tf.coveredRange(low, high);
    xml.writeEmptyElement(QStringLiteral("VolumeProperty"));
    xml.writeAttribute(QStringLiteral("id"),
                       QStringLiteral("vtkMRMLVolumePropertyNode%1").arg(index + 1));
    xml.writeAttribute(QStringLiteral("name"), tf.name);
    xml.writeAttribute(QStringLiteral("interpolation"), QStringLiteral("1"));
    xml.writeAttribute(QStringLiteral("shade"), QStringLiteral("1"));
    xml.writeAttribute(QStringLiteral("ambient"), n(tf.ambient));
    xml.writeAttribute(QStringLiteral("diffuse"), n(tf.diffuse));
    xml.writeAttribute(QStringLiteral("specular"), n(tf.specular));
    xml.writeAttribute(QStringLiteral("specularPower"), n(tf.specularPower));
    xml.writeAttribute(QStringLiteral("scalarOpacity"), list(opacity));
    xml.writeAttribute(QStringLiteral("gradientOpacity"),
                       list({0.0, tf.gradientOpacity, 255.0, tf.gradientOpacity}));
    xml.writeAttribute(QStringLiteral("colorTransfer"), list(colours));
    xml.writeAttribute(QStringLiteral("effectiveRange"), n(low) + QLatin1Char(' ') + n(high));
}

} // namespace

bool OXWSlicerPresetFile::read(const QByteArray& bytes, std::vector<OXWTransferFunction>& presets,
                               QString& error)
{
    presets.clear();
    std::vector<OXWTransferFunction> found;
    QXmlStreamReader xml(bytes);
    while (!xml.atEnd()) {
        if (xml.readNext() == QXmlStreamReader::StartElement &&
            xml.name() == QLatin1String("VolumeProperty"))
            found.push_back(readProperty(xml.attributes(), int(found.size())));
    }
    if (xml.hasError()) {
        error = tr("no well-formed XML (%1 in line %2, column %3)")
                    .arg(xml.errorString())
                    .arg(xml.lineNumber())
                    .arg(xml.columnNumber());
        return false;
    }
    if (found.empty()) {
        error = tr("the file holds no VolumeProperty element");
        return false;
    }
    presets = std::move(found);
    return true;
}

QByteArray OXWSlicerPresetFile::write(const std::vector<OXWTransferFunction>& presets)
{
    QByteArray bytes;
    QXmlStreamWriter xml(&bytes);
    xml.setAutoFormatting(true);
    xml.writeStartDocument();
    xml.writeStartElement(QStringLiteral("MRML"));
    xml.writeAttribute(QStringLiteral("version"), QStringLiteral("Slicer4.4.0"));
    for (std::size_t i = 0; i < presets.size(); ++i)
        writeProperty(xml, presets[i], int(i));
    xml.writeEndElement();
    xml.writeEndDocument();
    return bytes;
}
