#pragma once

#include <QString>
#include <QStringList>

class QTextStream;

// The viewer's command line: oxwviewer [options] [FILE...]. Parsed before any window exists,
// so that --help and --version work without a display. A bad option or option value (an
// unknown option, a sample size that is not a number, below 1 or too large for the memory)
// prints a message and makes the viewer exit with code 2.
//
// --list-presets FILE lists the presets of a ParaView colour-map or 3D Slicer presets file (or
// names the preset of one of the viewer's own preset files) without a display, one line each
// (OXWTransferFunctionFile::describe), and exits: 0 when the file holds a preset that can be
// imported, 1 when it is refused (the reason on stderr) or none of its presets can be.
struct OXWViewerOptions
{
    QString screenshot;
    int sampleSize = 256;
    QStringList pluginDirectories;
    bool noPlugins = false;
    // Volume files or folders to open.
    QStringList files;
    // -1: go on; otherwise exit with this code (0 after --help or --version).
    int exitCode = -1;

    static OXWViewerOptions parse(int argc, char** argv);
    // The listing of --list-presets; answers the exit code.
    static int listPresets(const QString& fileName, QTextStream& out, QTextStream& err);
};
