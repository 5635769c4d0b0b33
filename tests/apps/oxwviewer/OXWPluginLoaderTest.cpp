#include "OXWViewerTestSupport.h"

#include <OXWApplication.h>
#include <OXWPluginLoader.h>
#include <OXWViewerWindow.h>

#include <QCoreApplication>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QSignalSpy>
#include <QTemporaryDir>

#include <gtest/gtest.h>

#include <memory>

namespace {

const QString RecordingPlugin = QStringLiteral(OXW_TEST_RECORDING_PLUGIN);
const QString FailingPlugin = QStringLiteral(OXW_TEST_FAILING_PLUGIN);
const QString SecondPlugin = QStringLiteral(OXW_TEST_SECOND_PLUGIN);
const QString NotAPlugin = QStringLiteral(OXW_TEST_NOT_A_PLUGIN);

QString fileName(const QString& path)
{
    return QFileInfo(path).fileName();
}

// Copies the library into the folder under its own name; the copy's path.
QString copyInto(const QTemporaryDir& dir, const QString& library)
{
    const QString target = dir.filePath(fileName(library));
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

TEST_F(OXWPluginLoading, CallsEachCallbackOnceWhileTheWindowExists)
{
    QSignalSpy messages(&loader, &OXWPluginLoader::message);
    ASSERT_TRUE(loader.loadFile(RecordingPlugin));
    ASSERT_EQ(loader.pluginCount(), 1);
    const OXWPluginLoader::PluginDescription d = loader.plugins().front();
    EXPECT_EQ(d.name, QStringLiteral("oxwtestrecording"));
    EXPECT_EQ(d.description, QStringLiteral("Test plug-in 'oxwtestrecording'"));
    EXPECT_EQ(d.vendor, QStringLiteral("OXW tests"));
    EXPECT_EQ(d.version, QStringLiteral("1.2.3"));
    EXPECT_EQ(d.filePath, QFileInfo(RecordingPlugin).canonicalFilePath());
    EXPECT_EQ(d.state, OXWPluginLoader::State::Loaded);
    EXPECT_EQ(messages.count(), 1);

    auto window = std::make_unique<OXWViewerWindow>(&app);
    EXPECT_EQ(loader.initializeAll(), 0);
    EXPECT_EQ(loader.findPlugin(QStringLiteral("oxwtestrecording"))->state,
              OXWPluginLoader::State::Initialized);
    // A second call starts nothing again.
    EXPECT_EQ(loader.initializeAll(), 0);
    EXPECT_EQ(loader.terminateAll(), 0);
    EXPECT_EQ(loader.terminateAll(), 0);
    window.reset();

    EXPECT_EQ(calls.lines(), QStringList({"oxwtestrecording getinfo window=0",
                                          "oxwtestrecording initialize window=1",
                                          "oxwtestrecording terminate window=1"}));
    const OXWPluginLoader::PluginDescription* after =
        loader.findPlugin(QStringLiteral("oxwtestrecording"));
    ASSERT_NE(after, nullptr);
    EXPECT_EQ(after->state, OXWPluginLoader::State::Terminated);
    EXPECT_TRUE(after->unloaded);
    EXPECT_TRUE(errors.messages.isEmpty()) << errors.messages.join('\n').toStdString();
    EXPECT_EQ(loader.failureCount(), 0);
}

TEST_F(OXWPluginLoading, InitializesInLoadOrderAndTerminatesInReverse)
{
    ASSERT_TRUE(loader.loadFile(RecordingPlugin));
    ASSERT_TRUE(loader.loadFile(SecondPlugin));
    auto window = std::make_unique<OXWViewerWindow>(&app);
    EXPECT_EQ(loader.initializeAll(), 0);
    EXPECT_EQ(loader.terminateAll(), 0);
    window.reset();
    EXPECT_EQ(
        calls.lines(),
        QStringList({"oxwtestrecording getinfo window=0", "oxwtestsecond getinfo window=0",
                     "oxwtestrecording initialize window=1", "oxwtestsecond initialize window=1",
                     "oxwtestsecond terminate window=1", "oxwtestrecording terminate window=1"}));
}

TEST_F(OXWPluginLoading, RefusesALibraryWithoutEntryPointAndGoesOn)
{
    QTemporaryDir dir;
    const QString notAPlugin = copyInto(dir, NotAPlugin);
    copyInto(dir, RecordingPlugin);
    loader.setDirectories({dir.path()});

    EXPECT_EQ(loader.loadAll(), 1);
    ASSERT_EQ(loader.pluginCount(), 1);
    EXPECT_EQ(loader.plugins().front().name, QStringLiteral("oxwtestrecording"));
    const QStringList refused = errors.matching({notAPlugin, "oxmGetPluginInfo"});
    EXPECT_EQ(refused.size(), 1) << errors.messages.join('\n').toStdString();
    EXPECT_EQ(errors.messages.size(), 1);
    EXPECT_EQ(loader.failureCount(), 1);
}

TEST_F(OXWPluginLoading, ReportsAFileThatIsNotALibrary)
{
    QTemporaryDir dir;
    const QString bogus = dir.filePath(QStringLiteral("libbogus.so"));
    {
        QFile f(bogus);
        ASSERT_TRUE(f.open(QIODevice::WriteOnly));
        f.write("this is not a shared library\n");
    }
    // Files that do not look like libraries are ignored without a word.
    {
        QFile f(dir.filePath(QStringLiteral("README.txt")));
        ASSERT_TRUE(f.open(QIODevice::WriteOnly));
        f.write("notes\n");
    }
    EXPECT_EQ(loader.loadDirectory(dir.path()), 0);
    EXPECT_EQ(errors.matching({bogus, "could not be loaded"}).size(), 1)
        << errors.messages.join('\n').toStdString();
    EXPECT_EQ(errors.messages.size(), 1);
    EXPECT_FALSE(loader.loadFile(dir.filePath(QStringLiteral("libmissing.so"))));
    EXPECT_EQ(errors.matching({"libmissing.so", "does not exist"}).size(), 1);
}

TEST_F(OXWPluginLoading, ReportsAFailingInitializeAndDoesNotTerminateThatPlugin)
{
    ASSERT_TRUE(loader.loadFile(FailingPlugin));
    ASSERT_TRUE(loader.loadFile(RecordingPlugin));
    auto window = std::make_unique<OXWViewerWindow>(&app);
    EXPECT_EQ(loader.initializeAll(), 1);
    const QStringList failed = errors.matching(
        {"oxwtestfailing", fileName(FailingPlugin), "failed to initialize", "OXM::GenericError"});
    EXPECT_EQ(failed.size(), 1) << errors.messages.join('\n').toStdString();
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

TEST_F(OXWPluginLoading, MissingOrEmptyFoldersAreNoError)
{
    QTemporaryDir empty;
    loader.setDirectories({empty.path(), empty.filePath("does-not-exist"), QString()});
    EXPECT_EQ(loader.loadAll(), 0);
    EXPECT_EQ(loader.pluginCount(), 0);
    EXPECT_TRUE(errors.messages.isEmpty());
    EXPECT_EQ(loader.initializeAll(), 0);
    EXPECT_EQ(loader.terminateAll(), 0);
}

TEST_F(OXWPluginLoading, LoadsAFileReachedTwiceOnce)
{
    QTemporaryDir dir;
    const QString copy = copyInto(dir, RecordingPlugin);
    const QString link = dir.filePath(QStringLiteral("liboxwtestalias.so"));
    ASSERT_TRUE(QFile::link(copy, link));
    loader.setDirectories({dir.path(), dir.path()});
    EXPECT_EQ(loader.loadAll(), 1);
    EXPECT_EQ(loader.pluginCount(), 1);
    EXPECT_TRUE(errors.messages.isEmpty()) << errors.messages.join('\n').toStdString();
}

TEST_F(OXWPluginLoading, RefusesASecondPluginOfTheSameName)
{
    QTemporaryDir dir;
    const QString copy = copyInto(dir, RecordingPlugin);
    ASSERT_TRUE(loader.loadFile(RecordingPlugin));
    EXPECT_FALSE(loader.loadFile(copy));
    EXPECT_EQ(loader.pluginCount(), 1);
    EXPECT_EQ(errors.matching({copy, "oxwtestrecording", "loaded already"}).size(), 1)
        << errors.messages.join('\n').toStdString();
}

TEST(OXWPluginLoaderDirectories, PluginsNextToTheExecutableThenThePathVariable)
{
    qputenv("OXW_PLUGIN_PATH", "/tmp/oxw-a::/tmp/oxw-b");
    const QStringList dirs = OXWPluginLoader::defaultDirectories();
    qunsetenv("OXW_PLUGIN_PATH");
    EXPECT_EQ(dirs, QStringList({QCoreApplication::applicationDirPath() + "/plugins", "/tmp/oxw-a",
                                 "/tmp/oxw-b"}));
    OXWPluginLoader loader;
    EXPECT_EQ(loader.directories(),
              QStringList({QCoreApplication::applicationDirPath() + "/plugins"}));
    loader.addDirectory("/tmp/oxw-c");
    EXPECT_EQ(loader.directories().back(), QStringLiteral("/tmp/oxw-c"));
}
