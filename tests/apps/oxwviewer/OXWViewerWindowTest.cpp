#include "OXWViewerTestSupport.h"

#include <OXMObject.h>
#include <OXMSingleValueOP.h>
#include <OXWApplication.h>
#include <OXWLogPane.h>
#include <OXWMainWindow.h>
#include <OXWPluginLoader.h>
#include <OXWViewerWindow.h>

#include <QAction>
#include <QApplication>
#include <QFileInfo>
#include <QLabel>
#include <QPlainTextEdit>
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

// The Edit menu names the step to undo or redo (ampersands shown literally) and is enabled
// only when there is one; Ctrl+Z undoes, Ctrl+Shift+Z redoes; Quit closes the window.
TEST_F(OXWViewerWindowTest, TheEditMenuFollowsTheUndoStackAndItsKeys)
{
    window->show();
    QApplication::setActiveWindow(window.get());
    ASSERT_TRUE(QTest::qWaitForWindowActive(window.get()));
    const auto expectMenu = [this](const char* undo, const char* redo) {
        EXPECT_EQ(window->undoAction()->text(), QString(undo));
        EXPECT_EQ(window->undoAction()->isEnabled(), QString(undo) != "Undo");
        EXPECT_EQ(window->redoAction()->text(), QString(redo));
        EXPECT_EQ(window->redoAction()->isEnabled(), QString(redo) != "Redo");
    };
    expectMenu("Undo", "Redo");
    OXWViewerTestItem item;
    {
        OXWApplication::UserActionScope action(QStringLiteral("Cut & paste"));
        item.opacity.setValue(0.25f);
    }
    expectMenu("Undo Cut && paste", "Redo");
    EXPECT_EQ(window->undoAction()->iconText(), QStringLiteral("Undo Cut & paste"));
    QTest::keyClick(window.get(), Qt::Key_Z, Qt::ControlModifier);
    EXPECT_EQ(item.opacity.getValue(), 1.0f);
    expectMenu("Undo", "Redo Cut && paste");
    QTest::keyClick(window.get(), Qt::Key_Z, Qt::ControlModifier | Qt::ShiftModifier);
    EXPECT_EQ(item.opacity.getValue(), 0.25f);
    expectMenu("Undo Cut && paste", "Redo");
    window->quitAction()->trigger();
    EXPECT_FALSE(window->isVisible());
}

// The errors of the host's channel and the plug-in loader's messages, with a time stamp, until
// the window goes; the loader's plug-ins and the files it refused in the About text.
TEST_F(OXWViewerWindowTest, TheLogPaneShowsTheHostsErrorsAndTheLoadersMessages)
{
    EXPECT_EQ(OXWMainWindow::getInstance(), window.get());
    ASSERT_NE(window->emptyStateLabel(), nullptr);
    EXPECT_EQ(window->centralWidget(), window->emptyStateLabel());
    OXWLogPane* pane = window->logPane();
    EXPECT_NE(window->toolDock(pane), nullptr);
    const int before = pane->lineCount();
    OXMError::emitError(nullptr, OXM::InvalidValue, QStringLiteral("the value is out of range"));
    ASSERT_EQ(pane->lineCount(), before + 1);
    const QString line = pane->lines().back();
    EXPECT_TRUE(line.contains(StampedLine)) << line.toStdString();
    EXPECT_TRUE(line.contains(QStringLiteral("error")));
    EXPECT_TRUE(line.endsWith(QStringLiteral("OXM::InvalidValue: the value is out of range")))
        << line.toStdString();
    EXPECT_TRUE(pane->textView()->toPlainText().contains("the value is out of range"));

    OXWPluginLoader loader;
    loader.setDirectories({});
    window->attachPluginLoader(&loader);
    OXWPluginCallLog calls;
    ASSERT_TRUE(loader.loadFile(QStringLiteral(OXW_TEST_RECORDING_PLUGIN)));
    EXPECT_FALSE(loader.loadFile(QStringLiteral(OXW_TEST_NOT_A_PLUGIN)));
    loader.initializeAll();
    loader.terminateAll();
    const QString text = window->logPane()->lines().join('\n');
    for (const char* expected :
         {"Loaded plug-in 'oxwtestrecording' 1.2.3", "Initialized plug-in 'oxwtestrecording'",
          "Terminated plug-in 'oxwtestrecording'"})
        EXPECT_TRUE(text.contains(expected)) << text.toStdString();
    EXPECT_TRUE(text.contains(QFileInfo(OXW_TEST_NOT_A_PLUGIN).fileName()));
    for (const QString& line : window->logPane()->lines())
        EXPECT_TRUE(line.contains(StampedLine)) << line.toStdString();
    const QString about = window->aboutPluginsText();
    EXPECT_TRUE(about.contains("oxwtestrecording 1.2.3 (stopped)")) << about.toStdString();
    // A file that is not a plug-in is listed with the reason.
    EXPECT_TRUE(about.contains(QStringLiteral("Not loaded: Plug-in file '%1' is not a plug-in")
                                   .arg(OXW_TEST_NOT_A_PLUGIN)))
        << about.toStdString();

    OXWErrorCollector still; // keeps the channel from falling back to qWarning
    window.reset();
    OXMError::emitError(nullptr, OXM::GenericError, QStringLiteral("after the window"));
    EXPECT_EQ(still.messages.size(), 1);
}
