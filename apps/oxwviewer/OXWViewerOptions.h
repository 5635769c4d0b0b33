#pragma once

#include <QString>
#include <QStringList>

// The viewer's command line: oxwviewer [options] [FILE...]. Parsed before any window exists,
// so that --help and --version work without a display. A bad option or option value (an
// unknown option, a sample size that is not a number, below 1 or too large for the memory)
// prints a message and makes the viewer exit with code 2.
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
};
