// The viewer's views on the sample scene: the scene it builds, the tree that lists and selects
// its objects, and the document it is saved to and opened from.

#include "OXWSampleScene.h"
#include "OXWDocumentController.h"
#include "OXWSceneTreeView.h"
#include "OXWViewsTestSupport.h"

#include <OXMCamera.h>
#include <OXMHistogramResult.h>
#include <OXMMetaClass.h>
#include <OXMOxm2RenderSettings.h>
#include <OXMRegionOfInterest.h>
#include <OXMSampleMaterial.h>
#include <OXMScene.h>
#include <OXMSceneNames.h>
#include <OXMVolumeRenderObject.h>
#include <OXWApplication.h>
#include <OXWFileDialog.h>
#include <OXWModalAnswers.h>
#include <OXWSceneManager.h>
#include <OXWUndoStack.h>
#include <OXWViewerWindow.h>

#include <QFile>
#include <QItemSelectionModel>
#include <QTemporaryDir>
#include <QTest>

#include <gtest/gtest.h>

#include <cstdint>
#include <cstring>
#include <numeric>
#include <vector>

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

// The window's scene document: saved and opened again as the user does it, the modified mark
// in the title, and the question before unsaved changes are lost.

namespace {

class DocumentController : public ::testing::Test
{
protected:
    void SetUp() override
    {
        ASSERT_TRUE(dir.isValid());
        ASSERT_TRUE(OXWSampleScene::build(&app, 16, sample));
        controller = new OXWDocumentController(&app, &window);
        window.setCloseGuard([this] { return controller->mayDiscardChanges(); });
        window.show();
    }
    void TearDown() override { OXWFileDialog::clearTestAnswers(); }
    // An edit of the 16-bit volume's classification, as the tool makes it.
    void edit(std::vector<int> borders)
    {
        OXWApplication::UserActionScope action(QStringLiteral("Change interval settings"));
        sample.volume16->getMaterial()->setArray(OXM::IntervalIndexList, borders);
    }
    static void answerFileDialog(const QString& path)
    {
        OXWFileDialog::queueTestAnswer({path, {}});
    }

    QTemporaryDir dir;
    OXWApplication app;
    OXWSampleScene::Result sample;
    OXWViewerWindow window{&app};
    OXWDocumentController* controller = nullptr;
};

} // namespace

TEST_F(DocumentController, SavedAndOpenedAgainTheSceneComesBackUnmodified)
{
    EXPECT_FALSE(window.isWindowModified());
    edit({100, 2000, 40000});
    EXPECT_TRUE(window.isWindowModified());
    const QString path = dir.filePath("work.oxwscene");
    answerFileDialog(path);
    ASSERT_TRUE(controller->save()); // no name yet: asks for one
    EXPECT_FALSE(window.isWindowModified());
    EXPECT_TRUE(window.windowTitle().startsWith("work[*]")) << window.windowTitle().toStdString();

    edit({100, 40000});
    ASSERT_TRUE(app.undoStack()->undo()); // back to the saved state
    EXPECT_FALSE(window.isWindowModified());
    edit({5, 6});
    OXWModalAnswers answers{OXWModalAnswers::button(QMessageBox::Discard)};
    ASSERT_TRUE(controller->open(path));
    EXPECT_EQ(answers.pending(), 1u) << "open(path) itself does not ask; the menu's command does";

    OXMObject* opened = link(&app, OXM::Scene);
    ASSERT_NE(opened, nullptr);
    EXPECT_NE(opened, sample.scene);
    const auto volumes = array<OXMObjectLink>(opened, OXM::VolumeRenderObjectList);
    EXPECT_EQ(array<int>(link(volumes.at(1).getLink(), OXM::ApplicationSampleMaterial),
                         OXM::IntervalIndexList),
              (std::vector<int>{100, 2000, 40000}));
    EXPECT_EQ(array<OXMObjectPath>(&app, OXM::RenderObjectSelectionList).size(), 1u);
    EXPECT_EQ(app.undoStack()->count(), 0);
    EXPECT_FALSE(window.isWindowModified());
}

// A document that cannot be opened leaves the scene and says why; closing with unsaved changes
// asks: Cancel keeps the window, Save saves before it closes.
TEST_F(DocumentController, UnsavedChangesAreKeptThroughAFailedOpenAndAskedForOnClosing)
{
    const QString path = dir.filePath("broken.oxwscene");
    QFile file(path);
    ASSERT_TRUE(file.open(QIODevice::WriteOnly));
    file.write("{\"format\": \"oxm-objects\"");
    file.close();
    edit({100, 40000});
    {
        OXWModalAnswers answers{OXWModalAnswers::button(QMessageBox::Ok)};
        EXPECT_FALSE(controller->open(path));
        ASSERT_EQ(answers.texts.size(), 1);
        EXPECT_TRUE(answers.texts[0].contains(path)) << answers.texts[0].toStdString();
    }
    EXPECT_EQ(link(&app, OXM::Scene), sample.scene);
    EXPECT_TRUE(window.isWindowModified());
    {
        OXWModalAnswers answers{OXWModalAnswers::button(QMessageBox::Cancel)};
        EXPECT_FALSE(window.close());
        EXPECT_TRUE(window.isVisible());
        EXPECT_EQ(answers.pending(), 0u);
    }
    answerFileDialog(dir.filePath("kept.oxwscene"));
    OXWModalAnswers answers{OXWModalAnswers::button(QMessageBox::Save)};
    EXPECT_TRUE(window.close());
    EXPECT_TRUE(QFile::exists(dir.filePath("kept.oxwscene")));
}
