#include "OXWViewerTestSupport.h"

#include <OXMObject.h>
#include <OXMSingleValueOP.h>
#include <OXWApplication.h>
#include <OXWLogPane.h>
#include <OXWMainWindow.h>
#include <OXWPluginLoader.h>
#include <OXWTaskProgress.h>

#include <OXWUndoStack.h>
#include <OXWViewerWindow.h>
#include <QProgressBar>
#include <QStatusBar>

#include <QAction>
#include <QApplication>
#include <QLabel>
#include <QMenu>
#include <QPlainTextEdit>
#include <QRegularExpression>
#include <QTest>

#include <gtest/gtest.h>

#include <memory>

namespace {

class OXWViewerTestItem : public OXMObject
{
public:
    OXWViewerTestItem()
    {
        setAutoDelete(false);
        addProperty(OXM::Opacity, &opacity);
    }
    OXMSingleValueOP<float> opacity{1.0f};
};

class OXWViewerWindowTest : public ::testing::Test
{
protected:
    OXWApplication app;
    std::unique_ptr<OXWViewerWindow> window = std::make_unique<OXWViewerWindow>(&app);
};

const QRegularExpression StampedLine(QStringLiteral("^\\d\\d:\\d\\d:\\d\\d\\.\\d\\d\\d  "));

} // namespace

TEST_F(OXWViewerWindowTest, IsTheMainWindowWithAnHonestEmptyState)
{
    EXPECT_EQ(OXWMainWindow::getInstance(), window.get());
    ASSERT_NE(window->emptyStateLabel(), nullptr);
    EXPECT_EQ(window->centralWidget(), window->emptyStateLabel());
    EXPECT_EQ(window->emptyStateLabel()->text(), QStringLiteral("No volume loaded"));
    ASSERT_NE(window->logPane(), nullptr);
    EXPECT_NE(window->toolDock(window->logPane()), nullptr);
}

TEST_F(OXWViewerWindowTest, HasFileQuitAndEditUndoRedo)
{
    EXPECT_EQ(window->fileMenu()->actions().front(), window->quitAction());
    EXPECT_EQ(window->editMenu()->actions(),
              QList<QAction*>({window->undoAction(), window->redoAction()}));
    EXPECT_EQ(window->undoAction()->shortcut(), QKeySequence(QStringLiteral("Ctrl+Z")));
    EXPECT_EQ(window->redoAction()->shortcut(), QKeySequence(QStringLiteral("Ctrl+Shift+Z")));
    EXPECT_EQ(window->quitAction()->shortcut(), QKeySequence(QStringLiteral("Ctrl+Q")));
}

TEST_F(OXWViewerWindowTest, EditMenuFollowsTheUndoStack)
{
    EXPECT_EQ(window->undoAction()->text(), QStringLiteral("Undo"));
    EXPECT_FALSE(window->undoAction()->isEnabled());
    EXPECT_EQ(window->redoAction()->text(), QStringLiteral("Redo"));
    EXPECT_FALSE(window->redoAction()->isEnabled());

    OXWViewerTestItem item;
    {
        OXWApplication::UserActionScope action(QStringLiteral("Change opacity"));
        item.opacity.setValue(0.25f);
    }
    EXPECT_EQ(window->undoAction()->text(), QStringLiteral("Undo Change opacity"));
    EXPECT_TRUE(window->undoAction()->isEnabled());
    EXPECT_FALSE(window->redoAction()->isEnabled());

    window->undoAction()->trigger();
    EXPECT_EQ(item.opacity.getValue(), 1.0f);
    EXPECT_EQ(window->undoAction()->text(), QStringLiteral("Undo"));
    EXPECT_FALSE(window->undoAction()->isEnabled());
    EXPECT_EQ(window->redoAction()->text(), QStringLiteral("Redo Change opacity"));
    EXPECT_TRUE(window->redoAction()->isEnabled());

    window->redoAction()->trigger();
    EXPECT_EQ(item.opacity.getValue(), 0.25f);
    EXPECT_EQ(window->undoAction()->text(), QStringLiteral("Undo Change opacity"));
}

TEST_F(OXWViewerWindowTest, StepNamesWithAmpersandsShowLiterally)
{
    OXWViewerTestItem item;
    {
        OXWApplication::UserActionScope action(QStringLiteral("Cut & paste"));
        item.opacity.setValue(0.5f);
    }
    EXPECT_EQ(window->undoAction()->text(), QStringLiteral("Undo Cut && paste"));
    EXPECT_EQ(window->undoAction()->iconText(), QStringLiteral("Undo Cut & paste"));
}

TEST_F(OXWViewerWindowTest, CtrlZUndoesAndCtrlShiftZRedoes)
{
    window->show();
    QApplication::setActiveWindow(window.get());
    ASSERT_TRUE(QTest::qWaitForWindowActive(window.get()));
    OXWViewerTestItem item;
    {
        OXWApplication::UserActionScope action(QStringLiteral("Change opacity"));
        item.opacity.setValue(0.25f);
    }
    QTest::keyClick(window.get(), Qt::Key_Z, Qt::ControlModifier);
    EXPECT_EQ(item.opacity.getValue(), 1.0f);
    QTest::keyClick(window.get(), Qt::Key_Z, Qt::ControlModifier | Qt::ShiftModifier);
    EXPECT_EQ(item.opacity.getValue(), 0.25f);
}

TEST_F(OXWViewerWindowTest, LogPaneShowsErrorsOfTheHostChannelWithTimeStamps)
{
    OXWLogPane* pane = window->logPane();
    const int before = pane->lineCount();
    OXMError::emitError(nullptr, OXM::InvalidValue, QStringLiteral("the value is out of range"));
    ASSERT_EQ(pane->lineCount(), before + 1);
    const QString line = pane->lines().back();
    EXPECT_TRUE(line.contains(StampedLine)) << line.toStdString();
    EXPECT_TRUE(line.contains(QStringLiteral("error")));
    EXPECT_TRUE(line.endsWith(QStringLiteral("OXM::InvalidValue: the value is out of range")))
        << line.toStdString();
    EXPECT_TRUE(pane->textView()->toPlainText().contains("the value is out of range"));
}

TEST_F(OXWViewerWindowTest, LogPaneStopsListeningWhenDestroyed)
{
    OXWErrorCollector still; // keeps the channel from falling back to qWarning
    window.reset();
    OXMError::emitError(nullptr, OXM::GenericError, QStringLiteral("after the window"));
    EXPECT_EQ(still.messages.size(), 1);
}

TEST_F(OXWViewerWindowTest, LogPaneShowsTheLoadersMessagesAndErrors)
{
    OXWPluginLoader loader;
    loader.setDirectories({});
    window->attachPluginLoader(&loader);
    OXWPluginCallLog calls;
    ASSERT_TRUE(loader.loadFile(QStringLiteral(OXW_TEST_RECORDING_PLUGIN)));
    EXPECT_FALSE(loader.loadFile(QStringLiteral(OXW_TEST_NOT_A_PLUGIN)));
    loader.initializeAll();
    loader.terminateAll();
    const QString text = window->logPane()->lines().join('\n');
    EXPECT_TRUE(text.contains("Loaded plug-in 'oxwtestrecording' 1.2.3")) << text.toStdString();
    EXPECT_TRUE(text.contains("Initialized plug-in 'oxwtestrecording'"));
    EXPECT_TRUE(text.contains("Terminated plug-in 'oxwtestrecording'"));
    EXPECT_TRUE(text.contains(QFileInfo(OXW_TEST_NOT_A_PLUGIN).fileName()));
    for (const QString& line : window->logPane()->lines())
        EXPECT_TRUE(line.contains(StampedLine)) << line.toStdString();
    const QString about = window->aboutPluginsText();
    EXPECT_TRUE(about.contains("oxwtestrecording 1.2.3 (stopped)")) << about.toStdString();
    // A file that is not a plug-in is listed with the reason.
    EXPECT_TRUE(about.contains(QStringLiteral("Not loaded: Plug-in file '%1' is not a plug-in")
                                   .arg(OXW_TEST_NOT_A_PLUGIN)))
        << about.toStdString();
}

TEST_F(OXWViewerWindowTest, StatusBarShowsNoProgressWhileNothingRuns)
{
    EXPECT_EQ(OXWTaskProgress::callbackDepth(), 0);
    EXPECT_EQ(OXWTaskProgress::progressBar(), nullptr);
    // Work that brackets itself gets the bar in this window's status bar, and only meanwhile.
    OXWTaskProgress::beginStatusBarCallback();
    ASSERT_NE(OXWTaskProgress::progressBar(), nullptr);
    EXPECT_TRUE(window->statusBar()->isAncestorOf(OXWTaskProgress::progressBar()));
    OXWTaskProgress::endStatusBarCallback();
    EXPECT_EQ(OXWTaskProgress::progressBar(), nullptr);
}

TEST_F(OXWViewerWindowTest, QuitClosesTheWindow)
{
    window->show();
    ASSERT_TRUE(window->isVisible());
    window->quitAction()->trigger();
    EXPECT_FALSE(window->isVisible());
}
