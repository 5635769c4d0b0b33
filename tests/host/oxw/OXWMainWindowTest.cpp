// The main window: the instance, the docked tools, and the progress of running actions in its
// status bar.

#include "OXWMainWindow.h"
#include "OXWDockWindow.h"
#include "OXWTaskProgress.h"

#include <OXMAction.h>
#include <OXMObject.h>

#include <QCoreApplication>
#include <QLabel>
#include <QPointer>
#include <QProgressBar>
#include <QStatusBar>
#include <QTest>
#include <QToolButton>

#include <gtest/gtest.h>

TEST(OXWMainWindow, CreateToolDocksTheWidgetOnTheEdgesItsOrientationAllows)
{
    OXWMainWindow window;
    EXPECT_EQ(window.createTool(nullptr, OXWDockWindow::Vertical), nullptr);
    const struct
    {
        const char* title; // empty: the dock takes the object name
        OXWDockWindow::AllowedOrientation orientation;
        Qt::DockWidgetAreas allowed;
        Qt::DockWidgetArea area;
    } cases[] = {
        {"Volume Rendering", OXWDockWindow::AllowedOrientation(1),
         Qt::LeftDockWidgetArea | Qt::RightDockWidgetArea, Qt::RightDockWidgetArea},
        {"", OXWDockWindow::Horizontal, Qt::TopDockWidgetArea | Qt::BottomDockWidgetArea,
         Qt::BottomDockWidgetArea},
        {"Any", OXWDockWindow::Both, Qt::AllDockWidgetAreas, Qt::RightDockWidgetArea},
    };
    int count = 0;
    for (const auto& c : cases) {
        auto* tool = new QLabel(&window);
        tool->setObjectName(QStringLiteral("Tool%1").arg(count));
        tool->setWindowTitle(QString::fromLatin1(c.title));
        OXWDockWindow* dock = window.createTool(tool, c.orientation);
        ASSERT_NE(dock, nullptr);
        EXPECT_EQ(dock->widget(), tool);
        EXPECT_EQ(dock->objectName(), tool->objectName() + "Dock");
        EXPECT_EQ(dock->windowTitle(), *c.title ? QString(c.title) : tool->objectName());
        EXPECT_EQ(dock->allowedOrientation(), c.orientation);
        EXPECT_EQ(dock->allowedAreas(), c.allowed);
        EXPECT_EQ(window.dockWidgetArea(dock), c.area);
        EXPECT_EQ(window.toolDock(tool), dock);
        EXPECT_EQ(window.toolCount(), ++count);
        // Docking again keeps the dock.
        EXPECT_EQ(window.createTool(tool, OXWDockWindow::Horizontal), dock);
        EXPECT_EQ(window.toolCount(), count);
    }
}

// The first window is the instance for its lifetime. A tool undocked is left to the caller and
// can be docked again; one deleted while docked takes its dock along; docked tools go with the
// window.
TEST(OXWMainWindow, TheFirstWindowIsTheInstanceAndItsToolsGoWithIt)
{
    EXPECT_EQ(OXWMainWindow::getInstance(), nullptr);
    QPointer<QLabel> kept;
    {
        OXWMainWindow window;
        {
            OXWMainWindow second;
            EXPECT_EQ(OXWMainWindow::getInstance(), &window);
        }
        EXPECT_EQ(OXWMainWindow::getInstance(), &window);
        QPointer<QLabel> tool = new QLabel;
        QPointer<OXWDockWindow> dock = window.createTool(tool, OXWDockWindow::Vertical);
        ASSERT_TRUE(dock);
        EXPECT_TRUE(window.destructTool(tool));
        ASSERT_TRUE(tool);
        EXPECT_EQ(tool->parent(), nullptr);
        EXPECT_FALSE(dock);
        EXPECT_EQ(window.toolDock(tool), nullptr);
        EXPECT_FALSE(window.destructTool(tool)); // not a tool any more
        EXPECT_FALSE(window.destructTool(nullptr));
        dock = window.createTool(tool, OXWDockWindow::Vertical);
        ASSERT_TRUE(dock);
        delete tool.data();
        EXPECT_EQ(window.toolCount(), 0);
        QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
        EXPECT_FALSE(dock);
        kept = new QLabel;
        window.createTool(kept, OXWDockWindow::Vertical);
    }
    EXPECT_FALSE(kept);
    EXPECT_EQ(OXWMainWindow::getInstance(), nullptr);
}

TEST(OXWTaskProgress, BeginAndEndNestAndRestoreTheHandler)
{
    int outside = 0;
    auto previous = OXMTaskInfo::setProgressHandler([&](const OXMTaskInfo&, float) { ++outside; });
    OXWTaskProgress::beginStatusBarCallback();
    OXWTaskProgress::beginStatusBarCallback();
    EXPECT_EQ(OXWTaskProgress::callbackDepth(), 2);
    EXPECT_EQ(OXWTaskProgress::progressBar(), nullptr); // no main window
    OXMTaskInfo task;
    task.setProgress(0.25f);
    EXPECT_FLOAT_EQ(OXWTaskProgress::lastProgress(), 0.25f);
    OXWTaskProgress::endStatusBarCallback();
    task.setProgress(0.5f);
    EXPECT_EQ(outside, 0);
    OXWTaskProgress::endStatusBarCallback();
    OXWTaskProgress::endStatusBarCallback(); // unmatched: ignored
    EXPECT_EQ(OXWTaskProgress::callbackDepth(), 0);
    task.setProgress(0.75f);
    EXPECT_EQ(outside, 1);
    OXMTaskInfo::setProgressHandler(previous);
}

TEST(OXWTaskProgress, TheStatusBarShowsProgressAndCancelAbortsTheAction)
{
    OXWMainWindow window;
    window.resize(400, 300);
    window.show();
    OXMObject histogram;
    int barValue = -1;
    bool barInStatusBar = false;
    histogram.addAction(new OXMAction(OXM::Calculate, [&](OXMObject&, void*, OXMTaskInfo& task) {
        for (int i = 1; i <= 10; ++i) {
            if (task.isAbortRequested())
                return OXM::Abort;
            task.setProgress(i / 10.0f);
            if (i == 5) {
                QProgressBar* bar = OXWTaskProgress::progressBar();
                barValue = bar ? bar->value() : -1;
                barInStatusBar = bar && window.statusBar()->isAncestorOf(bar);
                if (QToolButton* cancel = OXWTaskProgress::cancelButton())
                    QTest::mouseClick(cancel, Qt::LeftButton);
            }
        }
        return OXM::NoError;
    }));

    OXWTaskProgress::beginStatusBarCallback();
    EXPECT_FALSE(histogram.execute(OXM::Calculate));
    EXPECT_TRUE(OXWTaskProgress::isCancelRequested());
    EXPECT_EQ(histogram.getAction(OXM::Calculate)->getErrorCode(), OXM::Abort);
    EXPECT_EQ(barValue, 500);
    EXPECT_TRUE(barInStatusBar);
    EXPECT_FLOAT_EQ(OXWTaskProgress::lastProgress(), 0.6f); // the report after the click
    OXWTaskProgress::endStatusBarCallback();
    EXPECT_EQ(OXWTaskProgress::progressBar(), nullptr);
    EXPECT_EQ(OXWTaskProgress::cancelButton(), nullptr);
    OXWTaskProgress::beginStatusBarCallback(); // a new begin starts without the request
    EXPECT_FALSE(OXWTaskProgress::isCancelRequested());
    OXWTaskProgress::endStatusBarCallback();
}

TEST(OXWTaskProgress, StatusBarCallbackReportsWhetherTheResultIsAvailable)
{
    OXMObject histogram;
    bool upToDate = false;
    bool availableWhileRunning = true;
    bool abort = false;
    histogram.addAction(new OXMAction(
        OXM::Calculate,
        [&](OXMObject& self, void*, OXMTaskInfo&) {
            availableWhileRunning =
                OXWTaskProgress::statusBarCallback(&self, OXM::Calculate, nullptr);
            upToDate = !abort;
            return abort ? OXM::Abort : OXM::NoError;
        },
        [&](const OXMObject&, void*, OXMenum* code) {
            *code = upToDate ? OXM::NoError : OXM::Running;
            return !upToDate;
        }));
    histogram.addAction(
        new OXMAction(OXM::Init, [](OXMObject&, void*, OXMTaskInfo&) { return OXM::NoError; }));
    const auto available = [&](OXMObject* object, OXMenum action) {
        return OXWTaskProgress::statusBarCallback(object, action, nullptr);
    };
    EXPECT_FALSE(available(nullptr, OXM::Calculate));
    EXPECT_FALSE(available(&histogram, OXM::Opacity));
    EXPECT_FALSE(available(&histogram, OXM::Calculate));
    EXPECT_TRUE(histogram.execute(OXM::Calculate));
    EXPECT_FALSE(availableWhileRunning);
    EXPECT_TRUE(available(&histogram, OXM::Calculate));
    // An aborted run leaves no result.
    upToDate = false;
    abort = true;
    EXPECT_FALSE(histogram.execute(OXM::Calculate));
    EXPECT_FALSE(available(&histogram, OXM::Calculate));
    // Default check: available unless running or failed.
    EXPECT_TRUE(available(&histogram, OXM::Init));
}
