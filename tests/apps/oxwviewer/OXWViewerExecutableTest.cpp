#include "OXWViewerTestSupport.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QImage>
#include <QProcess>
#include <QProcessEnvironment>
#include <QTemporaryDir>

#include <gtest/gtest.h>

namespace {

const QString Viewer = QStringLiteral(OXW_VIEWER_EXECUTABLE);

struct RunResult
{
    bool finished = false;
    int exitCode = -1;
    QString output;
};

RunResult runViewer(const QStringList& arguments, const QProcessEnvironment& extra = {})
{
    QProcess p;
    // The display and platform of the test (an X server: the viewer draws with OpenGL).
    QProcessEnvironment env = QProcessEnvironment::systemEnvironment();
    env.remove(QStringLiteral("OXW_PLUGIN_PATH"));
    for (const QString& key : extra.keys())
        env.insert(key, extra.value(key));
    p.setProcessEnvironment(env);
    p.setProcessChannelMode(QProcess::MergedChannels);
    p.start(Viewer, arguments);
    RunResult r;
    r.finished = p.waitForStarted(30000) && p.waitForFinished(120000);
    if (!r.finished)
        p.kill();
    r.exitCode = p.exitStatus() == QProcess::NormalExit ? p.exitCode() : -1;
    r.output = QString::fromLocal8Bit(p.readAll());
    return r;
}

} // namespace

TEST(OXWViewerExecutable, ScreenshotWritesAPngAndQuits)
{
    QTemporaryDir dir;
    const QString shot = dir.filePath(QStringLiteral("viewer.png"));
    const RunResult r =
        runViewer({QStringLiteral("--no-plugins"), QStringLiteral("--screenshot"), shot});
    ASSERT_TRUE(r.finished) << r.output.toStdString();
    EXPECT_EQ(r.exitCode, 0) << r.output.toStdString();
    ASSERT_TRUE(QFileInfo::exists(shot));
    EXPECT_GT(QFileInfo(shot).size(), 0);
    QImage image;
    ASSERT_TRUE(image.load(shot, "PNG"));
    EXPECT_EQ(image.size(), QSize(1280, 800));
}

TEST(OXWViewerExecutable, StartsAndStopsThePluginsOfAnExtraFolder)
{
    QTemporaryDir plugins;
    const QString recording = QStringLiteral(OXW_TEST_RECORDING_PLUGIN);
    ASSERT_TRUE(QFile::copy(recording, plugins.filePath(QFileInfo(recording).fileName())));
    const QString notAPlugin = QStringLiteral(OXW_TEST_NOT_A_PLUGIN);
    ASSERT_TRUE(QFile::copy(notAPlugin, plugins.filePath(QFileInfo(notAPlugin).fileName())));
    QTemporaryDir out;
    const QString log = out.filePath(QStringLiteral("calls.log"));
    QProcessEnvironment env;
    env.insert(QStringLiteral("OXW_TEST_PLUGIN_LOG"), log);

    const RunResult r = runViewer({QStringLiteral("--plugin-dir"), plugins.path(),
                                   QStringLiteral("--screenshot"), out.filePath("shot.png")},
                                  env);
    ASSERT_TRUE(r.finished) << r.output.toStdString();
    EXPECT_EQ(r.exitCode, 0) << r.output.toStdString();
    // The library without entry point is reported on stderr, naming the file; the viewer runs on.
    EXPECT_TRUE(r.output.contains(QFileInfo(notAPlugin).fileName())) << r.output.toStdString();

    QFile f(log);
    ASSERT_TRUE(f.open(QIODevice::ReadOnly));
    QStringList mine;
    for (const QString& l : QString::fromUtf8(f.readAll()).split('\n', Qt::SkipEmptyParts)) {
        if (l.startsWith(QStringLiteral("oxwtestrecording ")))
            mine << l;
    }
    // The viewer creates its window first (its log shows the loading), then loads.
    EXPECT_EQ(mine, QStringList({"oxwtestrecording getinfo window=1",
                                 "oxwtestrecording initialize window=1",
                                 "oxwtestrecording terminate window=1"}));
}

TEST(OXWViewerExecutable, NoPluginsLoadsNothing)
{
    QTemporaryDir plugins;
    const QString recording = QStringLiteral(OXW_TEST_RECORDING_PLUGIN);
    ASSERT_TRUE(QFile::copy(recording, plugins.filePath(QFileInfo(recording).fileName())));
    QTemporaryDir out;
    const QString log = out.filePath(QStringLiteral("calls.log"));
    QProcessEnvironment env;
    env.insert(QStringLiteral("OXW_TEST_PLUGIN_LOG"), log);
    env.insert(QStringLiteral("OXW_PLUGIN_PATH"), plugins.path());
    const RunResult r =
        runViewer({QStringLiteral("--no-plugins"), QStringLiteral("--plugin-dir"), plugins.path(),
                   QStringLiteral("--screenshot"), out.filePath("shot.png")},
                  env);
    ASSERT_TRUE(r.finished) << r.output.toStdString();
    EXPECT_EQ(r.exitCode, 0) << r.output.toStdString();
    EXPECT_FALSE(QFileInfo::exists(log));
}

// The command line: help, version and preset listings without a display; bad values exit 2
// with a message; a file is opened before the screenshot, one that cannot be opened exits 1
// naming it.
TEST(OXWViewerExecutable, CommandLineAnswersAndExitCodes)
{
    QTemporaryDir dir;
    const QString volume = dir.filePath(QStringLiteral("ramp.nrrd"));
    QFile file(volume);
    ASSERT_TRUE(file.open(QIODevice::WriteOnly));
    file.write("NRRD0004\ntype: uchar\ndimension: 3\nsizes: 4 4 4\nencoding: raw\n\n");
    for (int i = 0; i < 64; ++i)
        file.putChar(char(i * 3));
    file.close();
    const QString shot = dir.filePath(QStringLiteral("shot.png"));
    QProcessEnvironment noDisplay;
    noDisplay.insert(QStringLiteral("DISPLAY"), QString());
    struct Call
    {
        QStringList arguments;
        QProcessEnvironment environment;
        int exitCode;
        const char* output;
    };
    const Call calls[] = {
        {{"--help"}, noDisplay, 0, "[FILE...]"},
        {{"--version"}, noDisplay, 0, "oxwviewer 0.1"},
        {{"--sample-size", "abc"}, noDisplay, 2, "--sample-size abc"},
        {{"--sample-size", "-4"}, noDisplay, 2, "--sample-size -4"},
        {{"--frobnicate"}, noDisplay, 2, "frobnicate"},
        {{"--list-presets", OXW_TEST_PRESET_FILES "/slicer.xml"},
         noDisplay,
         0,
         "MR-Flat: range 100 .. 2000 (absolute), 2 opacity points, 2 colour points; left out: "
         "gradient opacity"},
        {{"--list-presets", volume}, noDisplay, 1, "ramp.nrrd can't be imported: it is neither"},
        {{"--sample-size", "8", "--no-plugins", "--screenshot", shot, volume}, {}, 0, ""},
        {{"--sample-size", "8", "--no-plugins", "--screenshot", shot, volume + "x"},
         {},
         1,
         "ramp.nrrdx: no such file"},
    };
    for (const Call& c : calls) {
        const RunResult r = runViewer(c.arguments, c.environment);
        ASSERT_TRUE(r.finished) << c.arguments.join(' ').toStdString();
        EXPECT_EQ(r.exitCode, c.exitCode)
            << c.arguments.join(' ').toStdString() << r.output.toStdString();
        EXPECT_TRUE(r.output.contains(QString::fromLatin1(c.output))) << r.output.toStdString();
    }
    QImage image;
    ASSERT_TRUE(image.load(shot, "PNG"));
}
