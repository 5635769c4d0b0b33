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

struct Fixture
{
    OXWApplication app;
    OXWSampleScene::Result sample;
    OXMRegionOfInterest* roi = nullptr;

    Fixture()
    {
        OXWSampleScene::build(&app, Size, sample);
        // A region of the 16-bit volume.
        roi = new OXMRegionOfInterest;
        roi->setValue<const char*>(OXM::Name, "Bone");
        std::vector<std::uint8_t> mask(std::size_t(Size) * Size * Size, 0);
        for (std::size_t i = 0; i < mask.size(); i += 2)
            mask[i] = 1;
        roi->setMask(mask);
        sample.volume16->appendLink(OXM::RegionOfInterestList, OXMObjectLink(roi));
        roi->execute(OXM::Init);
    }

    std::vector<OXMObjectPath> volumes() const
    {
        return array<OXMObjectPath>(&app, OXM::RenderObjectSelectionList);
    }
    std::vector<OXMObjectPath> regions() const
    {
        return array<OXMObjectPath>(&app, OXM::RegionOfInterestSelectionList);
    }
};

// Records currentObjectChanged (OXMObject* is no registered meta type; a direct connection
// needs none).
struct CurrentSpy
{
    std::vector<OXMObject*> objects;
    explicit CurrentSpy(OXWSceneTreeView& tree)
    {
        QObject::connect(&tree, &OXWSceneTreeView::currentObjectChanged,
                         [this](OXMObject* o) { objects.push_back(o); });
    }
    int count() const { return int(objects.size()); }
};

} // namespace

TEST(OXWSceneTreeView, ListsVolumesAndTheirRegions)
{
    Fixture f;
    OXWSceneTreeView tree;
    tree.setApplication(&f.app);
    EXPECT_EQ(tree.getScene(), f.sample.scene);
    EXPECT_EQ(tree.selectionMode(), QAbstractItemView::ExtendedSelection);
    ASSERT_EQ(tree.topLevelItemCount(), 2);
    EXPECT_EQ(tree.topLevelItem(0)->text(0), QStringLiteral("Phantom 8-bit"));
    EXPECT_EQ(tree.topLevelItem(1)->text(0), QStringLiteral("Phantom 16-bit"));
    EXPECT_EQ(tree.topLevelItem(0)->childCount(), 0);
    ASSERT_EQ(tree.topLevelItem(1)->childCount(), 1);
    EXPECT_EQ(tree.topLevelItem(1)->child(0)->text(0), QStringLiteral("Bone"));
    EXPECT_EQ(tree.objectForItem(tree.topLevelItem(1)->child(0)), f.roi);
    EXPECT_EQ(tree.itemForObject(f.sample.volume8), tree.topLevelItem(0));
    // Building the tree selects nothing.
    EXPECT_TRUE(f.volumes().empty());
    EXPECT_TRUE(f.regions().empty());
}

TEST(OXWSceneTreeView, SelectingTwoItemsWritesBothListsWithoutUndoStep)
{
    Fixture f;
    OXWSceneTreeView tree;
    tree.setApplication(&f.app);
    CurrentSpy current(tree);

    // Click the 8-bit volume, ctrl-click the region.
    tree.show();
    ASSERT_TRUE(QTest::qWaitForWindowExposed(&tree));
    QTreeWidgetItem* volumeItem = tree.itemForObject(f.sample.volume8);
    QTreeWidgetItem* regionItem = tree.itemForObject(f.roi);
    ASSERT_NE(volumeItem, nullptr);
    ASSERT_NE(regionItem, nullptr);
    QTest::mouseClick(tree.viewport(), Qt::LeftButton, Qt::NoModifier,
                      tree.visualItemRect(volumeItem).center());
    QTest::mouseClick(tree.viewport(), Qt::LeftButton, Qt::ControlModifier,
                      tree.visualItemRect(regionItem).center());

    EXPECT_EQ(tree.getSelectedObjects(), (std::vector<OXMObject*>{f.sample.volume8, f.roi}));
    const std::vector<OXMObjectPath> volumes = f.volumes();
    const std::vector<OXMObjectPath> regions = f.regions();
    ASSERT_EQ(volumes.size(), 1u);
    ASSERT_EQ(regions.size(), 1u);
    EXPECT_EQ(volumes[0], OXMObjectPath::fromObject(f.sample.volume8));
    EXPECT_EQ(volumes[0].getLink(0), f.sample.scene);
    EXPECT_EQ(volumes[0].getLink(-1), f.sample.volume8);
    EXPECT_EQ(regions[0], OXMObjectPath::fromObject(f.roi));
    EXPECT_EQ(regions[0].getPathDepth(), 3);
    EXPECT_EQ(regions[0].getLink(1), f.sample.volume16);
    EXPECT_EQ(regions[0].getLink(-1), f.roi);
    EXPECT_EQ(regions[0].getPathElement(-1).getPropertyID(), OXM::RegionOfInterestList);

    // Selection is view state: no undo step.
    EXPECT_EQ(f.app.undoStack()->count(), 0);
    EXPECT_FALSE(f.app.isUserActionOpen());
    // The first selected object is the one to show.
    ASSERT_EQ(current.count(), 1);
    EXPECT_EQ(current.objects.at(0), f.sample.volume8);
    EXPECT_EQ(tree.getCurrentObject(), f.sample.volume8);

    // Ctrl-click the volume again: only the region stays, and it becomes the current object.
    QTest::mouseClick(tree.viewport(), Qt::LeftButton, Qt::ControlModifier,
                      tree.visualItemRect(volumeItem).center());
    EXPECT_TRUE(f.volumes().empty());
    EXPECT_EQ(f.regions().size(), 1u);
    ASSERT_EQ(current.count(), 2);
    EXPECT_EQ(tree.getCurrentObject(), f.roi);
    EXPECT_EQ(f.app.undoStack()->count(), 0);
}

TEST(OXWSceneTreeView, SelectObjectSelectsExactlyOneItem)
{
    Fixture f;
    OXWSceneTreeView tree;
    tree.setApplication(&f.app);
    CurrentSpy current(tree);
    ASSERT_TRUE(tree.selectObject(f.sample.volume16));
    EXPECT_EQ(f.volumes(),
              (std::vector<OXMObjectPath>{OXMObjectPath::fromObject(f.sample.volume16)}));
    EXPECT_TRUE(f.regions().empty());
    ASSERT_EQ(current.count(), 1);
    EXPECT_EQ(tree.getCurrentObject(), f.sample.volume16);

    ASSERT_TRUE(tree.selectObject(f.roi));
    EXPECT_TRUE(f.volumes().empty());
    EXPECT_EQ(f.regions(), (std::vector<OXMObjectPath>{OXMObjectPath::fromObject(f.roi)}));
    EXPECT_EQ(tree.getSelectedObjects(), (std::vector<OXMObject*>{f.roi}));

    OXMObjectPtr stranger(new OXMRegionOfInterest);
    EXPECT_FALSE(tree.selectObject(stranger.get()));
    EXPECT_EQ(tree.getSelectedObjects(), (std::vector<OXMObject*>{f.roi}));

    ASSERT_TRUE(tree.selectObject(nullptr));
    EXPECT_TRUE(f.regions().empty());
    EXPECT_EQ(tree.getCurrentObject(), nullptr);
    EXPECT_EQ(f.app.undoStack()->count(), 0);
}

TEST(OXWSceneTreeView, FollowsNamesNewVolumesAndRemovedObjects)
{
    Fixture f;
    OXWSceneTreeView tree;
    tree.setApplication(&f.app);
    ASSERT_TRUE(tree.selectObject(f.roi));

    ASSERT_TRUE(f.roi->setValue<const char*>(OXM::Name, "Insert"));
    ASSERT_TRUE(waitFor([&] {
        return tree.itemForObject(f.roi) && tree.itemForObject(f.roi)->text(0) == "Insert";
    }));
    // The selection survives the rebuild.
    EXPECT_EQ(tree.getSelectedObjects(), (std::vector<OXMObject*>{f.roi}));

    ASSERT_NE(OXWSampleScene::build(&f.app, 4), nullptr);
    ASSERT_TRUE(waitFor([&] { return tree.topLevelItemCount() == 4; }));

    // The region goes: its item and its selection entry go.
    CurrentSpy current(tree);
    ASSERT_TRUE(setArray<OXMObjectLink>(f.sample.volume16, OXM::RegionOfInterestList, {}));
    ASSERT_TRUE(waitFor([&] { return tree.topLevelItem(1)->childCount() == 0; }));
    EXPECT_TRUE(f.regions().empty());
    EXPECT_EQ(current.count(), 1);
    EXPECT_EQ(tree.getCurrentObject(), nullptr);
    EXPECT_EQ(f.app.undoStack()->count(), 0);
}

// A tool that selects what it made, or an undo, writes the lists: the tree shows it.
TEST(OXWSceneTreeView, FollowsTheSelectionListsWrittenElsewhere)
{
    Fixture f;
    OXWSceneTreeView tree;
    tree.setApplication(&f.app);
    ASSERT_TRUE(tree.selectObject(f.sample.volume16));
    CurrentSpy current(tree);
    ASSERT_TRUE(setArray<OXMObjectPath>(&f.app, OXM::RenderObjectSelectionList, {}));
    ASSERT_TRUE(setArray(&f.app, OXM::RegionOfInterestSelectionList,
                         std::vector<OXMObjectPath>{OXMObjectPath::fromObject(f.roi)}));
    ASSERT_TRUE(waitFor([&] { return tree.getCurrentObject() == f.roi; }));
    EXPECT_EQ(tree.getSelectedObjects(), (std::vector<OXMObject*>{f.roi}));
    EXPECT_EQ(tree.currentItem(), tree.itemForObject(f.roi));
    EXPECT_EQ(current.objects, (std::vector<OXMObject*>{f.roi}));
    EXPECT_EQ(f.regions(), (std::vector<OXMObjectPath>{OXMObjectPath::fromObject(f.roi)}));
}
