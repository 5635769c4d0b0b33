#include "OXWTransferFunctionFile.h"

#include "OXWParaViewPresetFile.h"
#include "OXWPresetStore.h"
#include "OXWSlicerPresetFile.h"

#include <OXMObjectSerializer.h>

#include <QCoreApplication>
#include <QDir>
#include <QFileInfo>
#include <QJsonObject>

namespace {

QString tr(const char* text)
{
    return QCoreApplication::translate("OXWTransferFunctionFile", text);
}

char firstSignificant(const QByteArray& bytes)
{
    int i = bytes.startsWith("\xEF\xBB\xBF") ? 3 : 0; // a UTF-8 byte order mark
    while (i < bytes.size() && QChar::isSpace(uchar(bytes[i])))
        ++i;
    return i < bytes.size() ? bytes[i] : '\0';
}

} // namespace

OXWTransferFunctionFile::Format OXWTransferFunctionFile::detect(const QByteArray& bytes)
{
    switch (firstSignificant(bytes)) {
    case '<':
        return Format::Slicer;
    case '[':
        return Format::ParaView;
    case '{': {
        QJsonObject header;
        return OXMObjectSerializer::readHeader(bytes, header) ? Format::Native : Format::ParaView;
    }
    default:
        return Format::Unknown;
    }
}

OXWTransferFunctionFile::Format OXWTransferFunctionFile::formatOfName(const QString& fileName)
{
    const QString suffix = QFileInfo(fileName).suffix().toLower();
    return suffix == QLatin1String("json")  ? Format::ParaView
           : suffix == QLatin1String("xml") ? Format::Slicer
                                            : Format::Native;
}

bool OXWTransferFunctionFile::read(const QString& fileName, Format& format,
                                   std::vector<OXWTransferFunction>& presets, QString& error)
{
    presets.clear();
    format = Format::Unknown;
    QByteArray bytes;
    QString reason;
    if (OXWPresetStore::readBytes(fileName, bytes, reason)) {
        format = detect(bytes);
        if (readBytes(bytes, format, presets, reason))
            return true;
    }
    error = tr("%1 can't be imported: %2.").arg(QDir::toNativeSeparators(fileName), reason);
    return false;
}

bool OXWTransferFunctionFile::readBytes(const QByteArray& bytes, Format format,
                                        std::vector<OXWTransferFunction>& presets, QString& error)
{
    presets.clear();
    if (format == Format::ParaView)
        return OXWParaViewPresetFile::read(bytes, presets, error);
    if (format == Format::Slicer)
        return OXWSlicerPresetFile::read(bytes, presets, error);
    error = format == Format::Native ? tr("it is a preset of this application")
                                     : tr("it is neither a ParaView colour map (JSON) nor a 3D "
                                          "Slicer presets file (XML)");
    return false;
}

QByteArray OXWTransferFunctionFile::toBytes(Format format,
                                            const std::vector<OXWTransferFunction>& presets)
{
    return format == Format::Slicer ? OXWSlicerPresetFile::write(presets)
                                    : OXWParaViewPresetFile::write(presets);
}

bool OXWTransferFunctionFile::write(const QString& fileName, Format format,
                                    const std::vector<OXWTransferFunction>& presets, QString& error)
{
    return OXWPresetStore::writeFile(fileName, toBytes(format, presets), error);
}

QString OXWTransferFunctionFile::describe(const OXWTransferFunction& preset)
{
    if (!preset.isUsable())
        return tr("%1: refused: %2").arg(preset.name, preset.refused);
    double low = 0.0, high = 0.0;
    preset.coveredRange(low, high);
    QString line = tr("%1: range %2 .. %3 (%4), %5 opacity points, %6 colour points")
                       .arg(preset.name)
                       .arg(low)
                       .arg(high)
                       .arg(preset.absolute ? tr("absolute") : tr("relative"))
                       .arg(preset.fileOpacityPoints)
                       .arg(preset.fileColourPoints);
    if (!preset.leftOut.isEmpty())
        line += tr("; left out: %1").arg(preset.leftOut.join(QStringLiteral(", ")));
    return line;
}

QString OXWTransferFunctionFile::leftOutMessage(const OXWTransferFunction& preset,
                                                const QString& fileName)
{
    if (preset.leftOut.isEmpty())
        return QString();
    return tr("Preset \"%1\" of %2 imported without: %3.")
        .arg(preset.name, QDir::toNativeSeparators(fileName),
             preset.leftOut.join(QStringLiteral(", ")));
}
