#include "OXWViewerTestSupport.h"

#include <OXWApplication.h>
#include <OXWPluginLoader.h>
#include <OXWViewerWindow.h>

#include <QCoreApplication>
#include <QDir>
#include <QFileInfo>
#include <QSignalSpy>

#include <gtest/gtest.h>

#include <memory>

namespace {

const QString RecordingPlugin = QStringLiteral(OXW_TEST_RECORDING_PLUGIN);
const QString FailingPlugin = QStringLiteral(OXW_TEST_FAILING_PLUGIN);
const QString SecondPlugin = QStringLiteral(OXW_TEST_SECOND_PLUGIN);
const QString NotAPlugin = QStringLiteral(OXW_TEST_NOT_A_PLUGIN);

// Copies the library into the folder under its own name; the copy's path.
QString copyInto(const QTemporaryDir& dir, const QString& library)
{
    const QString target = dir.filePath(QFileInfo(library).fileName());
    EXPECT_TRUE(QFile::copy(library, target)) << target.toStdString();
    return target;
}

class OXWPluginLoading : public ::testing::Test
{
protected:
    OXWPluginLoading() { loader.setDirectories({}); }

    OXWPluginCallLog calls;
    OXWErrorCollector errors;
    OXWApplication app;
    OXWPluginLoader loader;
};

} // namespace

// Each callback is called once, while the window exists: initialize in load order, terminate
// in reverse; a second call of either starts nothing again.
TEST_F(OXWPluginLoading, CallsEachCallbackOnceWhileTheWindowExists)
{
    QSignalSpy messages(&loader, &OXWPluginLoader::message);
    ASSERT_TRUE(loader.loadFile(RecordingPlugin));
    ASSERT_TRUE(loader.loadFile(SecondPlugin));
    EXPECT_EQ(messages.count(), 2);
    const OXWPluginLoader::PluginDescription d = loader.plugins().front();
    EXPECT_EQ(d.name, QStringLiteral("oxwtestrecording"));
    EXPECT_EQ(d.version, QStringLiteral("1.2.3"));
    EXPECT_EQ(d.filePath, QFileInfo(RecordingPlugin).canonicalFilePath());
    EXPECT_EQ(d.state, OXWPluginLoader::State::Loaded);

    auto window = std::make_unique<OXWViewerWindow>(&app);
    EXPECT_EQ(loader.initializeAll(), 0);
    EXPECT_EQ(loader.findPlugin("oxwtestrecording")->state, OXWPluginLoader::State::Initialized);
    EXPECT_EQ(loader.initializeAll(), 0);
    EXPECT_EQ(loader.terminateAll(), 0);
    EXPECT_EQ(loader.terminateAll(), 0);
    window.reset();
    EXPECT_EQ(
        calls.lines(),
        QStringList({"oxwtestrecording getinfo window=0", "oxwtestsecond getinfo window=0",
                     "oxwtestrecording initialize window=1", "oxwtestsecond initialize window=1",
                     "oxwtestsecond terminate window=1", "oxwtestrecording terminate window=1"}));
    EXPECT_EQ(loader.findPlugin("oxwtestrecording")->state, OXWPluginLoader::State::Terminated);
    EXPECT_TRUE(loader.findPlugin("oxwtestrecording")->unloaded);
    EXPECT_TRUE(errors.messages.isEmpty()) << errors.messages.join('\n').toStdString();
    EXPECT_EQ(loader.failureCount(), 0);
}

// A folder of a library without entry point, a file that is no library, notes and a link to
// a plug-in that is there already; a missing and an empty folder: the plug-in is loaded once,
// each unusable library is one line naming it, the rest is passed over.
TEST_F(OXWPluginLoading, LoadsEachPluginOnceAndReportsEachUnusableLibrary)
{
    QTemporaryDir dir, empty;
    const QString notAPlugin = copyInto(dir, NotAPlugin);
    const QString copy = copyInto(dir, RecordingPlugin);
    ASSERT_TRUE(QFile::link(copy, dir.filePath(QStringLiteral("liboxwtestalias.so"))));
    for (const char* file : {"libbogus.so", "README.txt"}) {
        QFile f(dir.filePath(QString::fromLatin1(file)));
        ASSERT_TRUE(f.open(QIODevice::WriteOnly));
        f.write("this is not a shared library\n");
    }
    loader.setDirectories({dir.path(), dir.filePath("missing"), QString(), empty.path()});
    EXPECT_EQ(loader.loadAll(), 1);
    ASSERT_EQ(loader.pluginCount(), 1);
    EXPECT_EQ(loader.plugins().front().filePath, QFileInfo(copy).canonicalFilePath());
    EXPECT_EQ(errors.matching({notAPlugin, "oxmGetPluginInfo"}), 1);
    EXPECT_EQ(errors.matching({dir.filePath("libbogus.so"), "could not be loaded"}), 1);
    EXPECT_EQ(errors.messages.size(), 2) << errors.messages.join('\n').toStdString();

    EXPECT_FALSE(loader.loadFile(RecordingPlugin)); // another file of the same name
    EXPECT_EQ(errors.matching({RecordingPlugin, "oxwtestrecording", "loaded already"}), 1);
    EXPECT_FALSE(loader.loadFile(dir.filePath(QStringLiteral("libmissing.so"))));
    EXPECT_EQ(errors.matching({"libmissing.so", "does not exist"}), 1);
    EXPECT_EQ(loader.pluginCount(), 1);
}

TEST_F(OXWPluginLoading, ReportsAFailingInitializeAndDoesNotTerminateThatPlugin)
{
    ASSERT_TRUE(loader.loadFile(FailingPlugin));
    ASSERT_TRUE(loader.loadFile(RecordingPlugin));
    auto window = std::make_unique<OXWViewerWindow>(&app);
    EXPECT_EQ(loader.initializeAll(), 1);
    EXPECT_EQ(errors.matching({"oxwtestfailing", QFileInfo(FailingPlugin).fileName(),
                               "failed to initialize", "OXM::GenericError"}),
              1)
        << errors.messages.join('\n').toStdString();
    EXPECT_EQ(loader.findPlugin("oxwtestfailing")->state, OXWPluginLoader::State::InitializeFailed);
    EXPECT_EQ(loader.findPlugin("oxwtestrecording")->state, OXWPluginLoader::State::Initialized);
    EXPECT_TRUE(loader.summary().contains("(failed to initialize: OXM::GenericError)"))
        << loader.summary().toStdString();
    EXPECT_EQ(loader.terminateAll(), 0);
    window.reset();
    EXPECT_EQ(calls.lines("oxwtestfailing"), QStringList({"oxwtestfailing getinfo window=0",
                                                          "oxwtestfailing initialize window=1"}));
    EXPECT_EQ(calls.lines("oxwtestrecording").size(), 3);
    // The failed plug-in stays mapped (objects it left behind may still run its code).
    EXPECT_FALSE(loader.findPlugin("oxwtestfailing")->unloaded);
    EXPECT_TRUE(loader.findPlugin("oxwtestrecording")->unloaded);
    EXPECT_EQ(loader.failureCount(), 1);
}

TEST(OXWPluginLoaderDirectories, PluginsNextToTheExecutableThenThePathVariable)
{
    const QString plugins = QCoreApplication::applicationDirPath() + "/plugins";
    qputenv("OXW_PLUGIN_PATH", "/tmp/oxw-a::/tmp/oxw-b");
    EXPECT_EQ(OXWPluginLoader::defaultDirectories(),
              QStringList({plugins, "/tmp/oxw-a", "/tmp/oxw-b"}));
    qunsetenv("OXW_PLUGIN_PATH");
    OXWPluginLoader loader;
    EXPECT_EQ(loader.directories(), QStringList({plugins}));
    loader.addDirectory("/tmp/oxw-c");
    EXPECT_EQ(loader.directories().back(), QStringLiteral("/tmp/oxw-c"));
}
