#include "OXWSampleScene.h"
#include "OXWViewsTestSupport.h"

#include <OXMCamera.h>
#include <OXMError.h>
#include <OXMHistogramResult.h>
#include <OXMMetaClass.h>
#include <OXMOxm2RenderSettings.h>
#include <OXMRegisteredEnum.h>
#include <OXMScene.h>
#include <OXMSceneNames.h>
#include <OXMSingleValueOP.h>
#include <OXMSingleton.h>
#include <OXMVolumeRenderObject.h>
#include <OXWApplication.h>
#include <OXWPreferenceManager.h>
#include <OXWSceneManager.h>
#include <OXWUndoStack.h>

#include <gtest/gtest.h>

#include <cstring>
#include <numeric>

using namespace oxwviewtest;

// The sample becomes the application's scene: an 8-bit and a 16-bit phantom with their
// histograms calculated, placed but not selected, and no undoable edit. Another build adds to
// the same scene; bad input builds nothing.
TEST(OXWSampleScene, BuildsTwoPhantomsWithCalculatedHistogramsIntoTheScene)
{
    OXWApplication app;
    EXPECT_EQ(OXWSampleScene::build(nullptr, 32), nullptr);
    EXPECT_EQ(OXWSampleScene::build(&app, 0), nullptr);
    EXPECT_EQ(link(&app, OXM::Scene), nullptr);
    OXMObjectPtr notAnApplication(new OXMSampleMaterial);
    EXPECT_EQ(OXWSampleScene::build(notAnApplication.get(), 8), nullptr);
    OXWSampleScene::Result result;
    ASSERT_TRUE(OXWSampleScene::build(&app, 32, result));
    EXPECT_EQ(link(&app, OXM::Scene), result.scene);
    auto* manager = dynamic_cast<OXWSceneManager*>(link(&app, OXM::SceneManager));
    ASSERT_NE(manager, nullptr);
    EXPECT_EQ(manager->getScene(), result.scene);
    const auto volumes = array<OXMObjectLink>(result.scene, OXM::VolumeRenderObjectList);
    ASSERT_EQ(volumes.size(), 2u);
    for (const auto& [volume, type] :
         {std::pair(result.volume8, OXM::UInt8), std::pair(result.volume16, OXM::UInt16)}) {
        EXPECT_EQ(volume, volumes[type == OXM::UInt8 ? 0 : 1].getLink());
        EXPECT_EQ(volume->getSampleGrid()->getDataType().getID(), type);
        OXMObjectPath path;
        ASSERT_TRUE(volume->getValue(OXM::ScenePath, path));
        EXPECT_EQ(path, OXMObjectPath::fromObject(volume));
        EXPECT_FALSE(volume->getHistogram()->needsCalculation());
        const std::vector<float> counts = volume->getHistogram()->getResult()->getCounts();
        EXPECT_GT(counts.size(), 1u);
        EXPECT_EQ(std::accumulate(counts.begin(), counts.end(), 0.0), 32.0 * 32.0 * 32.0);
    }
    EXPECT_EQ(app.undoStack()->count(), 0);
    EXPECT_TRUE(array<OXMObjectPath>(&app, OXM::RenderObjectSelectionList).empty());

    OXMVolumeRenderObject* shown = OXWSampleScene::build(&app, 8);
    ASSERT_NE(shown, nullptr);
    EXPECT_EQ(array<OXMObjectLink>(result.scene, OXM::VolumeRenderObjectList).size(), 4u);
    EXPECT_EQ(shown->getSampleGrid()->getDataType().getID(), OXM::UInt16);
}

// A volume added while the renderer preference is registered gets the chosen renderer; the
// camera ray tracer's shading goes to the camera.
TEST(OXWSampleScene, NewVolumesGetTheRendererOfThePreference)
{
    const OXMRegisteredEnum classKey("RenderPluginName", false, "oxwclassificationtool");
    const OXMenum shadingKey = OXMSceneNames::shadingModel();
    OXMObject preference;
    preference.setAutoDelete(false);
    OXMSingleValueOP<const char*> className;
    OXMSingleValueOP<OXMenum> shading;
    preference.addProperty(classKey, &className);
    preference.addProperty(shadingKey, &shading);
    OXWPreferenceManager manager;
    OXMSingleton<OXWPreferenceManager>::setInstance(&manager);
    ASSERT_TRUE(manager.addPreference(
        OXMRegisteredEnum("Default3DRendererPreferences", false, "oxwclassificationtool"),
        &preference));

    const struct
    {
        const char* className;
        OXMenum shading;
        bool applied;
        bool onCamera;
    } cases[] = {{"OXMDDTextureDefault3DRendererPlugin", OXMSceneNames::scatterHQ(), true, false},
                 {"OXMOxm2RenderPlugin", OXMSceneNames::xRay(), true, true},
                 {"NoSuchRenderer", OXM::Phong, false, false}};
    for (const auto& c : cases) {
        className.setValue(c.className);
        shading.setValue(c.shading);
        OXWApplication app;
        OXWSampleScene::Result result;
        QStringList errors;
        const int handler =
            OXMError::addHandler([&errors](const OXMError::Message& m) { errors << m.getText(); });
        ASSERT_TRUE(OXWSampleScene::build(&app, 8, result));
        OXMError::removeHandler(handler);
        const OXMObject* renderer = result.volume16->getRenderPlugin();
        EXPECT_EQ(std::strcmp(renderer->getMetaClass()->getClassName(), c.className) == 0,
                  c.applied);
        EXPECT_EQ(errors.isEmpty(), c.applied) << c.className;
        const OXMObject* holder =
            c.onCamera ? result.scene->getCamera()->getRenderSettings() : renderer;
        OXMenum written;
        EXPECT_TRUE(!c.applied ||
                    (holder->getValue(c.onCamera ? OXM::RenderingMode : shadingKey, written) &&
                     written == c.shading))
            << c.className;
    }
    OXMSingleton<OXWPreferenceManager>::clearInstance(&manager);
}
