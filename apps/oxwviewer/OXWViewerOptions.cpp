#include "OXWViewerOptions.h"

#include <OXMObjectSerializer.h>
#include <OXWPresetStore.h>
#include <OXWTransferFunctionFile.h>
#include <OXWVolumeFile.h>

#include <QCommandLineParser>
#include <QCoreApplication>
#include <QJsonObject>
#include <QTextStream>

#include <cstdio>

namespace {

// Both sample phantoms, 8 and 16 bits per voxel, must fit into memory.
bool sampleSizeFits(long long size)
{
    return size >= 1 && size <= 4096 &&
           (unsigned long long)(size * size * size * 3) <= OXWVolumeFile::availableMemory();
}

// The name in the header of one of the viewer's own preset files.
int listNativePreset(const QString& fileName, QTextStream& out, QTextStream& err)
{
    QByteArray bytes;
    QJsonObject header;
    QString error;
    if (!OXWPresetStore::readBytes(fileName, bytes, error) ||
        !OXMObjectSerializer::readHeader(bytes, header, &error)) {
        err << "oxwviewer: " << fileName << ": " << error << "\n";
        return 1;
    }
    out << header.value(QStringLiteral("name")).toString() << ": a preset of this viewer ("
        << header.value(QStringLiteral("handler")).toString() << ")\n";
    return 0;
}

} // namespace

int OXWViewerOptions::listPresets(const QString& fileName, QTextStream& out, QTextStream& err)
{
    OXWTransferFunctionFile::Format format;
    std::vector<OXWTransferFunction> presets;
    QString error;
    const bool read = OXWTransferFunctionFile::read(fileName, format, presets, error);
    if (format == OXWTransferFunctionFile::Format::Native)
        return listNativePreset(fileName, out, err);
    if (!read) {
        err << "oxwviewer: " << error << "\n";
        return 1;
    }
    bool usable = false;
    for (const OXWTransferFunction& preset : presets) {
        out << OXWTransferFunctionFile::describe(preset) << "\n";
        usable = usable || preset.isUsable();
    }
    return usable ? 0 : 1;
}

OXWViewerOptions OXWViewerOptions::parse(int argc, char** argv)
{
    QCoreApplication app(argc, argv);
    QCoreApplication::setApplicationName(QStringLiteral("oxwviewer"));
    QCoreApplication::setApplicationVersion(QStringLiteral("0.1"));
    QCommandLineParser parser;
    parser.setApplicationDescription(QStringLiteral("OXW volume viewer"));
    const QCommandLineOption help = parser.addHelpOption();
    const QCommandLineOption version = parser.addVersionOption();
    const QCommandLineOption screenshot(
        QStringLiteral("screenshot"),
        QStringLiteral("Start up, open the files, save the window as a PNG image to <file> and "
                       "quit (exit code 1 when a file cannot be opened)."),
        QStringLiteral("file"));
    const QCommandLineOption sampleSize(
        QStringLiteral("sample-size"),
        QStringLiteral("Edge length in voxels of the built-in sample volumes (default 256)."),
        QStringLiteral("voxels"), QStringLiteral("256"));
    const QCommandLineOption pluginDir(
        QStringLiteral("plugin-dir"),
        QStringLiteral("Also load the plug-ins of <directory> (may be given several times)."),
        QStringLiteral("directory"));
    const QCommandLineOption noPlugins(QStringLiteral("no-plugins"),
                                       QStringLiteral("Do not load any plug-in."));
    const QCommandLineOption listPresets(
        QStringLiteral("list-presets"),
        QStringLiteral("List the presets of a ParaView colour-map or 3D Slicer presets <file> "
                       "(name, range, opacity and colour points, what is left out) and quit "
                       "(exit code 1 when the file is refused)."),
        QStringLiteral("file"));
    parser.addOptions({screenshot, sampleSize, pluginDir, noPlugins, listPresets});
    parser.addPositionalArgument(QStringLiteral("files"),
                                 QStringLiteral("Volume files or folders to open."),
                                 QStringLiteral("[FILE...]"));

    OXWViewerOptions o;
    QTextStream err(stderr);
    if (!parser.parse(QCoreApplication::arguments())) {
        err << "oxwviewer: " << parser.errorText() << "\n";
        o.exitCode = 2;
        return o;
    }
    if (parser.isSet(help) || parser.isSet(version)) {
        QTextStream(stdout) << (parser.isSet(help) ? parser.helpText()
                                                   : QStringLiteral("oxwviewer 0.1\n"));
        o.exitCode = 0;
        return o;
    }
    if (parser.isSet(listPresets)) {
        QTextStream out(stdout);
        o.exitCode = OXWViewerOptions::listPresets(parser.value(listPresets), out, err);
        return o;
    }
    bool ok = false;
    const long long size = parser.value(sampleSize).toLongLong(&ok);
    if (!ok || !sampleSizeFits(size)) {
        err << "oxwviewer: --sample-size " << parser.value(sampleSize)
            << ": not a size of sample volumes that fit into memory\n";
        o.exitCode = 2;
        return o;
    }
    o.sampleSize = int(size);
    o.screenshot = parser.value(screenshot);
    o.pluginDirectories = parser.values(pluginDir);
    o.noPlugins = parser.isSet(noPlugins);
    o.files = parser.positionalArguments();
    return o;
}
