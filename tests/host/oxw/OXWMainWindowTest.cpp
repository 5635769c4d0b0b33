#include "OXWMainWindow.h"
#include "OXWDockWindow.h"

#include <QCoreApplication>
#include <QLabel>
#include <QPointer>
#include <QStatusBar>

#include <gtest/gtest.h>

#include <memory>

TEST(OXWMainWindow, TheFirstWindowIsTheInstanceForItsLifetime)
{
    EXPECT_EQ(OXWMainWindow::getInstance(), nullptr);
    {
        OXWMainWindow window;
        EXPECT_EQ(OXWMainWindow::getInstance(), &window);
        {
            OXWMainWindow second;
            EXPECT_EQ(OXWMainWindow::getInstance(), &window);
        }
        EXPECT_EQ(OXWMainWindow::getInstance(), &window);
        ASSERT_NE(window.statusBar(), nullptr);
    }
    EXPECT_EQ(OXWMainWindow::getInstance(), nullptr);
}

TEST(OXWMainWindow, CreateToolDocksTheWidgetOnTheEdgesItsOrientationAllows)
{
    OXWMainWindow window;
    auto tool = std::make_unique<QLabel>(QStringLiteral("tool"));
    tool->setObjectName(QStringLiteral("VolumeRenderingTool"));
    tool->setWindowTitle(QStringLiteral("Volume Rendering"));

    EXPECT_EQ(window.createTool(nullptr, OXWDockWindow::Vertical), nullptr);
    OXWDockWindow* dock = window.createTool(tool.get(), OXWDockWindow::AllowedOrientation(1));
    ASSERT_NE(dock, nullptr);
    EXPECT_EQ(dock->widget(), tool.get());
    EXPECT_EQ(dock->parent(), &window);
    EXPECT_EQ(dock->objectName(), QStringLiteral("VolumeRenderingToolDock"));
    EXPECT_EQ(dock->windowTitle(), QStringLiteral("Volume Rendering"));
    EXPECT_EQ(dock->allowedOrientation(), OXWDockWindow::Vertical);
    EXPECT_EQ(dock->allowedAreas(), Qt::LeftDockWidgetArea | Qt::RightDockWidgetArea);
    EXPECT_EQ(window.dockWidgetArea(dock), Qt::RightDockWidgetArea);
    EXPECT_EQ(window.toolDock(tool.get()), dock);
    EXPECT_EQ(window.toolCount(), 1);
    // Docking again keeps the dock.
    EXPECT_EQ(window.createTool(tool.get(), OXWDockWindow::Horizontal), dock);
    EXPECT_EQ(window.toolCount(), 1);

    QLabel wide(QStringLiteral("wide"));
    OXWDockWindow* bottom = window.createTool(&wide, OXWDockWindow::Horizontal);
    ASSERT_NE(bottom, nullptr);
    EXPECT_EQ(window.dockWidgetArea(bottom), Qt::BottomDockWidgetArea);
    EXPECT_EQ(bottom->allowedAreas(), Qt::TopDockWidgetArea | Qt::BottomDockWidgetArea);
    EXPECT_TRUE(window.destructTool(&wide));

    OXWDockWindow* any = window.createTool(new QLabel, OXWDockWindow::Both);
    ASSERT_NE(any, nullptr);
    EXPECT_EQ(any->allowedAreas(), Qt::AllDockWidgetAreas);
}

TEST(OXWMainWindow, DestructToolUndocksButLeavesTheWidgetToTheCaller)
{
    OXWMainWindow window;
    auto* tool = new QLabel(QStringLiteral("tool"));
    QPointer<QLabel> guard(tool);
    QPointer<OXWDockWindow> dock = window.createTool(tool, OXWDockWindow::Vertical);
    ASSERT_TRUE(dock);

    EXPECT_TRUE(window.destructTool(tool));
    EXPECT_TRUE(guard); // not deleted
    EXPECT_EQ(tool->parent(), nullptr);
    EXPECT_FALSE(tool->isVisible());
    EXPECT_FALSE(dock); // the dock is gone
    EXPECT_EQ(window.toolDock(tool), nullptr);
    EXPECT_EQ(window.toolCount(), 0);
    EXPECT_FALSE(window.destructTool(tool)); // not a tool any more
    EXPECT_FALSE(window.destructTool(nullptr));

    // It can be docked again, and the caller deletes it.
    EXPECT_NE(window.createTool(tool, OXWDockWindow::Vertical), nullptr);
    EXPECT_TRUE(window.destructTool(tool));
    delete tool;
}

TEST(OXWMainWindow, AToolDeletedWhileDockedTakesItsDockWithIt)
{
    OXWMainWindow window;
    auto* tool = new QLabel;
    QPointer<OXWDockWindow> dock = window.createTool(tool, OXWDockWindow::Vertical);
    ASSERT_TRUE(dock);
    delete tool;
    EXPECT_EQ(window.toolCount(), 0);
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    EXPECT_FALSE(dock);
}

TEST(OXWMainWindow, DockedToolsGoWithTheWindow)
{
    QPointer<QLabel> guard;
    {
        OXWMainWindow window;
        guard = new QLabel;
        window.createTool(guard, OXWDockWindow::Vertical);
    }
    EXPECT_FALSE(guard);
}
