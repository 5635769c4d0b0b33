#include "OXWSceneTreeView.h"
#include "OXWSampleScene.h"
#include "OXWViewsTestSupport.h"

#include <OXMRegionOfInterest.h>
#include <OXMScene.h>
#include <OXWApplication.h>
#include <OXWUndoStack.h>

#include <gtest/gtest.h>

#include <QItemSelectionModel>

#include <cstdint>
#include <vector>

using namespace oxwviewtest;

namespace {

constexpr int Size = 16;

// A sample scene with a region "Bone" of every second voxel of the 16-bit volume, in a tree;
// objects records currentObjectChanged (OXMObject* is no registered meta type; a direct
// connection needs none).
class SceneTree : public ::testing::Test
{
protected:
    SceneTree()
    {
        OXWSampleScene::build(&app, Size, sample);
        roi->setValue<const char*>(OXM::Name, "Bone");
        std::vector<std::uint8_t> mask(std::size_t(Size) * Size * Size, 0);
        for (std::size_t i = 0; i < mask.size(); i += 2)
            mask[i] = 1;
        roi->setMask(mask);
        sample.volume16->appendLink(OXM::RegionOfInterestList, OXMObjectLink(roi));
        roi->execute(OXM::Init);
        tree.setApplication(&app);
        QObject::connect(&tree, &OXWSceneTreeView::currentObjectChanged,
                         [this](OXMObject* o) { objects.push_back(o); });
    }
    std::vector<OXMObjectPath> volumes() const
    {
        return array<OXMObjectPath>(&app, OXM::RenderObjectSelectionList);
    }
    std::vector<OXMObjectPath> regions() const
    {
        return array<OXMObjectPath>(&app, OXM::RegionOfInterestSelectionList);
    }

    OXWApplication app;
    OXWSampleScene::Result sample;
    OXMRegionOfInterest* roi = new OXMRegionOfInterest;
    OXWSceneTreeView tree;
    std::vector<OXMObject*> objects;
};

} // namespace

// The tree lists the volumes and their regions and selects nothing; a click on the 8-bit
// volume and a ctrl-click on the region write both selection lists, as view state (no step).
TEST_F(SceneTree, ListsTheSceneAndClicksWriteBothSelectionLists)
{
    EXPECT_EQ(tree.getScene(), sample.scene);
    ASSERT_EQ(tree.topLevelItemCount(), 2);
    EXPECT_EQ(tree.topLevelItem(1)->text(0), QStringLiteral("Phantom 16-bit"));
    EXPECT_EQ(tree.topLevelItem(0)->childCount(), 0);
    ASSERT_EQ(tree.topLevelItem(1)->childCount(), 1);
    EXPECT_EQ(tree.topLevelItem(1)->child(0)->text(0), QStringLiteral("Bone"));
    QTreeWidgetItem* volumeItem = tree.itemForObject(sample.volume8);
    QTreeWidgetItem* regionItem = tree.itemForObject(roi);
    EXPECT_EQ(volumeItem, tree.topLevelItem(0));
    EXPECT_EQ(tree.objectForItem(regionItem), roi);
    EXPECT_TRUE(volumes().empty());
    EXPECT_TRUE(regions().empty());

    tree.show();
    ASSERT_TRUE(QTest::qWaitForWindowExposed(&tree));
    QTest::mouseClick(tree.viewport(), Qt::LeftButton, Qt::NoModifier,
                      tree.visualItemRect(volumeItem).center());
    QTest::mouseClick(tree.viewport(), Qt::LeftButton, Qt::ControlModifier,
                      tree.visualItemRect(regionItem).center());
    EXPECT_EQ(tree.getSelectedObjects(), (std::vector<OXMObject*>{sample.volume8, roi}));
    const std::vector<OXMObjectPath> volume = volumes();
    const std::vector<OXMObjectPath> region = regions();
    ASSERT_EQ(volume.size(), 1u);
    ASSERT_EQ(region.size(), 1u);
    EXPECT_EQ(volume[0], OXMObjectPath::fromObject(sample.volume8));
    EXPECT_EQ(region[0], OXMObjectPath::fromObject(roi));
    // Selection is view state: no undo step.
    EXPECT_EQ(app.undoStack()->count(), 0);
    EXPECT_FALSE(app.isUserActionOpen());
    // The first selected object is the one to show.
    ASSERT_EQ(int(objects.size()), 1);
    EXPECT_EQ(objects.at(0), sample.volume8);
    EXPECT_EQ(tree.getCurrentObject(), sample.volume8);
    // Ctrl-click the volume again: only the region stays, and it becomes the current object.
    QTest::mouseClick(tree.viewport(), Qt::LeftButton, Qt::ControlModifier,
                      tree.visualItemRect(volumeItem).center());
    EXPECT_TRUE(volumes().empty());
    EXPECT_EQ(regions().size(), 1u);
    ASSERT_EQ(int(objects.size()), 2);
    EXPECT_EQ(tree.getCurrentObject(), roi);
    EXPECT_EQ(app.undoStack()->count(), 0);
}

TEST_F(SceneTree, FollowsNamesNewVolumesAndRemovedObjects)
{
    ASSERT_TRUE(tree.selectObject(roi));

    ASSERT_TRUE(roi->setValue<const char*>(OXM::Name, "Insert"));
    ASSERT_TRUE(waitFor(
        [&] { return tree.itemForObject(roi) && tree.itemForObject(roi)->text(0) == "Insert"; }));
    // The selection survives the rebuild.
    EXPECT_EQ(tree.getSelectedObjects(), (std::vector<OXMObject*>{roi}));

    ASSERT_NE(OXWSampleScene::build(&app, 4), nullptr);
    ASSERT_TRUE(waitFor([&] { return tree.topLevelItemCount() == 4; }));
    // The region goes: its item and its selection entry go.
    objects.clear();
    ASSERT_TRUE(setArray<OXMObjectLink>(sample.volume16, OXM::RegionOfInterestList, {}));
    ASSERT_TRUE(waitFor([&] { return tree.topLevelItem(1)->childCount() == 0; }));
    EXPECT_TRUE(regions().empty());
    EXPECT_EQ(int(objects.size()), 1);
    EXPECT_EQ(tree.getCurrentObject(), nullptr);
    EXPECT_EQ(app.undoStack()->count(), 0);
}

// selectObject selects exactly one item (a stranger none, null clears); a tool that selects
// what it made, or an undo, writes the lists: the tree shows it. None of it is an undo step.
TEST_F(SceneTree, SelectsOneObjectAndFollowsTheListsWrittenElsewhere)
{
    ASSERT_TRUE(tree.selectObject(sample.volume16));
    EXPECT_EQ(volumes(), (std::vector<OXMObjectPath>{OXMObjectPath::fromObject(sample.volume16)}));
    EXPECT_TRUE(regions().empty());
    EXPECT_EQ(objects, (std::vector<OXMObject*>{sample.volume16}));
    OXMObjectPtr stranger(new OXMRegionOfInterest);
    EXPECT_FALSE(tree.selectObject(stranger.get()));
    EXPECT_EQ(tree.getSelectedObjects(), (std::vector<OXMObject*>{sample.volume16}));

    ASSERT_TRUE(setArray<OXMObjectPath>(&app, OXM::RenderObjectSelectionList, {}));
    ASSERT_TRUE(setArray(&app, OXM::RegionOfInterestSelectionList,
                         std::vector<OXMObjectPath>{OXMObjectPath::fromObject(roi)}));
    ASSERT_TRUE(waitFor([&] { return tree.getCurrentObject() == roi; }));
    EXPECT_EQ(tree.getSelectedObjects(), (std::vector<OXMObject*>{roi}));
    EXPECT_EQ(tree.currentItem(), tree.itemForObject(roi));
    EXPECT_EQ(int(objects.size()), 2);

    ASSERT_TRUE(tree.selectObject(nullptr));
    EXPECT_TRUE(regions().empty());
    EXPECT_EQ(tree.getCurrentObject(), nullptr);
    EXPECT_EQ(app.undoStack()->count(), 0);
}
