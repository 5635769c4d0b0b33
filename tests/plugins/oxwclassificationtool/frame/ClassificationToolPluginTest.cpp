// The plug-in module as the host runs it: loaded without linking any of its code, its names
// registered at load and withdrawn at unload, started and stopped through its record's
// callbacks, its preference edited in the host's dialog.

#include <OXMClassManager.h>
#include <OXMPluginInfo.h>
#include <OXMRegisteredEnum.h>
#include <OXMSingleton.h>
#include <OXWApplication.h>
#include <OXWComboBox.h>
#include <OXWMainWindow.h>
#include <OXWPreferenceDialog.h>
#include <OXWPreferenceManager.h>

#include <QGroupBox>
#include <QLibrary>
#include <QStringList>
#include <QTemporaryDir>
#include <QTest>
#include <QTreeWidget>

#include <gtest/gtest.h>

#include <memory>
#include <set>
#include <string>
#include <vector>

// The host's handle of a plug-in; the plug-in only passes it on.
struct __OXMPlugin
{
    int unused = 0;
};

namespace {

const char* const Module = "oxwclassificationtool";

int objectsOf(const char* className, const char* module = nullptr)
{
    OXMClassManager::SearchPattern pattern;
    pattern.className = className;
    pattern.moduleName = module;
    return OXMClassManager::getObjectCount(pattern);
}

class ClassificationToolPlugin : public ::testing::Test
{
protected:
    void SetUp() override
    {
        ASSERT_TRUE(folder.isValid());
        ASSERT_TRUE(library.load()) << library.errorString().toStdString();
        auto entry =
            reinterpret_cast<OXMGetPluginInfoFunction>(library.resolve("oxmGetPluginInfo"));
        ASSERT_TRUE(entry);
        info = entry();
        ASSERT_TRUE(info && info->initialize && info->terminate);
        useManager(std::make_unique<OXWPreferenceManager>());
    }
    void TearDown() override
    {
        OXMSingleton<OXWPreferenceManager>::clearInstance(manager.get());
        window.reset();
        library.unload();
    }
    void useManager(std::unique_ptr<OXWPreferenceManager> next)
    {
        OXMSingleton<OXWPreferenceManager>::clearInstance(manager.get());
        manager = std::move(next);
        manager->setStorageDirectory(folder.path());
        OXMSingleton<OXWPreferenceManager>::setInstance(manager.get());
    }
    OXMenum start() { return info->initialize(&handle); }
    OXMenum stop() { return info->terminate(&handle); }
    OXMObject* preference() const
    {
        return manager->findPreference("Default3DRendererPreferences");
    }

    QTemporaryDir folder;
    OXWApplication app;
    std::unique_ptr<OXWMainWindow> window = std::make_unique<OXWMainWindow>();
    std::unique_ptr<OXWPreferenceManager> manager;
    QLibrary library{QString::fromUtf8(OXW_CLASSIFICATION_TOOL_LIBRARY)};
    OXMPluginInfo* info = nullptr;
    __OXMPlugin handle;
};

TEST_F(ClassificationToolPlugin, StartsAndStopsLeavingNoObjectAndNoPreference)
{
    ASSERT_EQ(start(), OXM::NoError);
    EXPECT_EQ(window->toolCount(), 1);
    ASSERT_NE(preference(), nullptr);
    EXPECT_EQ(manager->enumMappings().size(), 2u);
    // A second start keeps the handler and adds a panel; its preference is refused as taken.
    EXPECT_EQ(start(), OXM::OutOfMemory);
    EXPECT_EQ(objectsOf("OXWPresetHandler"), 1);
    EXPECT_EQ(window->toolCount(), 2);

    EXPECT_EQ(stop(), OXM::NoError);
    EXPECT_EQ(objectsOf(nullptr, Module), 0);
    EXPECT_EQ(objectsOf("OXWPresetHandler"), 0);
    EXPECT_EQ(manager->preferenceCount(), 0);
    EXPECT_TRUE(manager->enumMappings().empty());
    EXPECT_EQ(window->toolCount(), 1); // the first panel is the window's now
}

TEST_F(ClassificationToolPlugin, ThePreferencePageAppearsTwiceAndItsChoiceSurvivesARestart)
{
    ASSERT_EQ(start(), OXM::NoError);
    {
        OXWPreferenceDialog dialog(manager.get());
        QTreeWidgetItem* advanced = dialog.findItem("Advanced settings/Default 3D rendering");
        QTreeWidgetItem* general = dialog.findItem("General/General");
        ASSERT_TRUE(advanced && general);
        dialog.showItem(general);
        dialog.showItem(advanced);
        EXPECT_EQ(dialog.editorCount(), 2);
        const auto groups = dialog.findChildren<QGroupBox*>();
        ASSERT_EQ(groups.size(), 1);
        EXPECT_EQ(groups.front()->title(), "Rendering settings for imported data");

        dialog.show();
        auto* combo = dialog.findChildren<OXWComboBox*>("mDefault3DRendererComboBox").back();
        ASSERT_TRUE(QTest::qWaitForWindowExposed(&dialog));
        EXPECT_EQ(combo->currentText(), "Isosurface renderer");
        for (int down = 0; down < 3; ++down)
            QTest::keyClick(combo, Qt::Key_Down);
        EXPECT_EQ(combo->currentText(), "Hardware renderer (Scatter HQ)");
        const char* className = nullptr;
        ASSERT_TRUE(preference()->getValue(OXMenum::find("RenderPluginName", Module), className));
        EXPECT_STREQ(className, "OXMDDTextureDefault3DRendererPlugin");
    }
    ASSERT_EQ(stop(), OXM::NoError);

    useManager(std::make_unique<OXWPreferenceManager>());
    ASSERT_EQ(start(), OXM::NoError);
    const char* className = nullptr;
    OXMenum shading;
    ASSERT_TRUE(preference()->getValue(OXMenum::find("RenderPluginName", Module), className));
    ASSERT_TRUE(preference()->getValue(OXMenum::find("ShadingModel", Module), shading));
    EXPECT_STREQ(className, "OXMDDTextureDefault3DRendererPlugin");
    EXPECT_STREQ(shading.getName(), "ScatterHQ");
    EXPECT_EQ(stop(), OXM::NoError);
}

// The set of the plug-in's names registered in the namespace.
std::set<std::string> liveNames()
{
    const int count = OXMRegisteredEnum::getEnumCount(Module);
    std::vector<OXMRegisteredEnum*> found(std::size_t(count > 0 ? count : 0), nullptr);
    const int n = OXMRegisteredEnum::findEnums(found.data(), count, Module);
    std::set<std::string> names;
    for (int i = 0; i < n; ++i) {
        names.insert(found[std::size_t(i)]->getName());
    }
    return names;
}

// Loaded, started, stopped and unloaded again and again in one process. The names its
// components use exist as soon as the library is loaded, before any of its code runs (all but
// the three object identifiers, registered when first asked for); every round leaves no
// registration and no object behind (the sanitizer build checks the memory).
TEST(ClassificationToolModule, RegistersItsNamesAtLoadAndLeavesNothingInTwentyRounds)
{
    std::set<std::string> used;
    for (const QString& name :
         QStringLiteral("Default3DRendererPreferences PresetClassificationHandler "
                        "PresetVolumeRenderHandler AbsoluteMode IntervalFloatIndexList "
                        "ShadingModel ShadingCountLimit SurfaceInverted SceneCameraList "
                        "TulvoRights Scatter ScatterHQ ScatterGradient XRay Sum RenderPluginName "
                        "SecondLightShadow ExportClassificationColor ImportClassificationColor")
             .split(QLatin1Char(' '))) {
        used.insert(name.toStdString());
    }
    OXWApplication app;
    OXWMainWindow window;
    OXWPreferenceManager manager;
    OXMSingleton<OXWPreferenceManager>::setInstance(&manager);
    __OXMPlugin handle;
    for (int round = 0; round < 20; ++round) {
        SCOPED_TRACE(round);
        ASSERT_TRUE(liveNames().empty());
        QLibrary library(QString::fromUtf8(OXW_CLASSIFICATION_TOOL_LIBRARY));
        ASSERT_TRUE(library.load()) << library.errorString().toStdString();
        ASSERT_EQ(liveNames(), used);
        auto entry =
            reinterpret_cast<OXMGetPluginInfoFunction>(library.resolve("oxmGetPluginInfo"));
        OXMPluginInfo* info = entry();
        ASSERT_EQ(info->initialize(&handle), OXM::NoError);
        ASSERT_EQ(info->terminate(&handle), OXM::NoError);
        ASSERT_TRUE(library.unload());
        ASSERT_EQ(OXMRegisteredEnum::getEnumCount(Module), 0);
        ASSERT_EQ(objectsOf(nullptr, Module), 0);
        ASSERT_EQ(OXMClassManager::findMetaClass("OXMDefault3DRendererPreferences"), nullptr);
        ASSERT_EQ(manager.preferenceCount(), 0);
    }
    OXMSingleton<OXWPreferenceManager>::clearInstance(&manager);
}

} // namespace
