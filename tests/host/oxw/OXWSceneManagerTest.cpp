// The scene manager places new objects and selects them through the application's selection.

#include "OXWSceneManager.h"
#include "OXWApplication.h"
#include "OXWRoiAndVolumeExtractor.h"
#include "OXWUndoStack.h"

#include <OXMObjectPath.h>
#include <OXMObjectPtr.h>
#include <OXMRegionOfInterest.h>
#include <OXMSampleGrid.h>
#include <OXMScene.h>
#include <OXMScenePhantom.h>
#include <OXMVolumeRenderObject.h>
#include <OXMVolumeTransform.h>

#include <gtest/gtest.h>

#include <vector>

namespace {

std::vector<OXMObjectPath> selection(const OXWApplication& app, OXMenum list)
{
    return OXMObject::arrayOf<OXMObjectPath>(&app, list);
}

class OXWSceneManagerTest : public ::testing::Test
{
protected:
    OXWSceneManagerTest()
    {
        manager->setScene(scene);
        auto* grid = OXMScenePhantom::createGrid16(size);
        volume = OXMVolumeRenderObject::create(grid, "CT");
        OXMObjectLink link(volume, new OXMVolumeTransform);
        link.setPropertyID(OXM::VolumeRenderObjectList);
        manager->addAndSelectObject(link, OXMObjectPath());
        volumePath = OXWSceneManager::getSelection();
    }

    int size = 24;
    OXWApplication app;
    OXMObjectPtr sceneHold{new OXMScene};
    OXMScene* scene = static_cast<OXMScene*>(sceneHold.get());
    OXMObjectPtr managerHold{new OXWSceneManager};
    OXWSceneManager* manager = static_cast<OXWSceneManager*>(managerHold.get());
    OXMVolumeRenderObject* volume = nullptr;
    OXMObjectPath volumePath;
};

} // namespace

TEST_F(OXWSceneManagerTest, PlacesAtTheTopAndSelectsInTheApplication)
{
    ASSERT_EQ(volumePath.getPathDepth(), 2);
    EXPECT_EQ(volumePath.getLink(0), scene);
    EXPECT_EQ(volumePath.getLink(-1), volume);
    EXPECT_NE(volumePath.getAuxLink(-1), nullptr); // the transform
    EXPECT_EQ(volume->getRefCount(), 1);
    OXMObjectPath stored;
    ASSERT_TRUE(volume->getValue(OXM::ScenePath, stored));
    EXPECT_EQ(stored, volumePath);
    EXPECT_EQ(selection(app, OXM::RenderObjectSelectionList),
              std::vector<OXMObjectPath>{volumePath});
    EXPECT_TRUE(selection(app, OXM::RegionOfInterestSelectionList).empty());
    // A list property the parent lacks, or an empty link, is refused and changes nothing.
    OXMObjectLink bad(new OXMVolumeRenderObject);
    const OXMObjectPtr badHold(bad.getLink());
    bad.setPropertyID(OXM::Preset);
    EXPECT_FALSE(manager->addAndSelectObject(bad, volumePath));
    EXPECT_FALSE(manager->addAndSelectObject(OXMObjectLink(), volumePath));
    EXPECT_EQ(OXWSceneManager::getSelection(), volumePath);
}

// Inside a user action the insertion and the selection are one step: its undo takes the new
// region out and selects the volume again, its redo brings both back.
TEST_F(OXWSceneManagerTest, UndoOfAPlacementRemovesTheObjectAndRestoresTheSelection)
{
    OXMObject* roi = nullptr;
    {
        OXWApplication::UserActionScope action(QStringLiteral("Add region"));
        roi = OXWRoiAndVolumeExtractor::createROIFromGreyvalueInterval(volumePath, OXM::Gray,
                                                                       OXMInterval(1500, 2500));
        ASSERT_NE(roi, nullptr);
        OXMObjectLink link(roi);
        link.setPropertyID(OXM::RegionOfInterestList);
        ASSERT_TRUE(manager->addAndSelectObject(link, volumePath));
    }
    const OXMObjectPath roiPath = OXWSceneManager::getSelection();
    EXPECT_EQ(roiPath.getLink(-1), roi);
    EXPECT_EQ(roiPath.getPathDepth(), 3);
    EXPECT_TRUE(selection(app, OXM::RenderObjectSelectionList).empty());
    EXPECT_GT(static_cast<OXMRegionOfInterest*>(roi)->getMaskVoxelCount(), 0);

    ASSERT_EQ(app.undoStack()->count(), 1);
    ASSERT_TRUE(app.undoStack()->undo());
    EXPECT_TRUE(volume->getLinks(OXM::RegionOfInterestList).empty());
    EXPECT_EQ(OXWSceneManager::getSelection(), volumePath);
    ASSERT_TRUE(app.undoStack()->redo());
    EXPECT_EQ(OXWSceneManager::getSelection(), roiPath);
    EXPECT_EQ(static_cast<OXMRegionOfInterest*>(roi)->getVolume(), volume);
}
