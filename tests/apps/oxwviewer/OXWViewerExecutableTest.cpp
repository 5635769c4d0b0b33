#include <QFile>
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

// The command line: help and preset listings without a display; bad values exit 2
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
        {{"--sample-size", "-4"}, noDisplay, 2, "--sample-size -4"},
        {{"--frobnicate"}, noDisplay, 2, "frobnicate"},
        {{"--list-presets", OXW_TEST_PRESET_FILES "/slicer.xml"}, noDisplay, 0, "MR-Flat: range"},
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
    EXPECT_EQ(image.size(), QSize(1280, 800));
}
