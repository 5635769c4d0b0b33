// The window's scene document: saved and opened again as the user does it, the modified mark
// in the title, and the question before unsaved changes are lost.

#include "OXWDocumentController.h"
#include "OXWSampleScene.h"
#include "OXWViewsTestSupport.h"

#include <OXMSampleMaterial.h>
#include <OXMScene.h>
#include <OXMVolumeRenderObject.h>
#include <OXWApplication.h>
#include <OXWFileDialog.h>
#include <OXWModalAnswers.h>
#include <OXWUndoStack.h>
#include <OXWViewerWindow.h>

#include <QFile>
#include <QTemporaryDir>
#include <QTest>

#include <gtest/gtest.h>

using namespace oxwviewtest;

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
