#include "OXWTaskProgress.h"
#include "OXWMainWindow.h"

#include <OXMAction.h>
#include <OXMObject.h>

#include <QProgressBar>
#include <QStatusBar>
#include <QTest>
#include <QToolButton>

#include <gtest/gtest.h>

TEST(OXWTaskProgress, BeginAndEndNestAndRestoreTheHandler)
{
    int outside = 0;
    auto previous = OXMTaskInfo::setProgressHandler([&](const OXMTaskInfo&, float) { ++outside; });
    EXPECT_EQ(OXWTaskProgress::callbackDepth(), 0);
    OXWTaskProgress::beginStatusBarCallback();
    OXWTaskProgress::beginStatusBarCallback();
    EXPECT_EQ(OXWTaskProgress::callbackDepth(), 2);
    EXPECT_EQ(OXWTaskProgress::progressBar(), nullptr); // no main window
    OXMTaskInfo task;
    task.setProgress(0.25f);
    EXPECT_EQ(outside, 0);
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
                QToolButton* cancel = OXWTaskProgress::cancelButton();
                if (cancel)
                    QTest::mouseClick(cancel, Qt::LeftButton);
            }
        }
        return OXM::NoError;
    }));

    OXWTaskProgress::beginStatusBarCallback();
    ASSERT_NE(OXWTaskProgress::progressBar(), nullptr);
    EXPECT_FALSE(histogram.execute(OXM::Calculate));
    EXPECT_TRUE(OXWTaskProgress::isCancelRequested());
    EXPECT_EQ(histogram.getAction(OXM::Calculate)->getErrorCode(), OXM::Abort);
    EXPECT_EQ(barValue, 500);
    EXPECT_TRUE(barInStatusBar);
    EXPECT_FLOAT_EQ(OXWTaskProgress::lastProgress(), 0.6f); // the report after the click
    OXWTaskProgress::endStatusBarCallback();
    EXPECT_EQ(OXWTaskProgress::progressBar(), nullptr);
    EXPECT_EQ(OXWTaskProgress::cancelButton(), nullptr);

    // A new begin starts without the cancel request.
    OXWTaskProgress::beginStatusBarCallback();
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
            if (abort)
                return OXM::Abort;
            upToDate = true;
            return OXM::NoError;
        },
        [&](const OXMObject&, void*, OXMenum* code) {
            *code = upToDate ? OXM::NoError : OXM::Running;
            return !upToDate;
        }));
    histogram.addAction(
        new OXMAction(OXM::Init, [](OXMObject&, void*, OXMTaskInfo&) { return OXM::NoError; }));

    EXPECT_FALSE(OXWTaskProgress::statusBarCallback(nullptr, OXM::Calculate, nullptr));
    EXPECT_FALSE(OXWTaskProgress::statusBarCallback(&histogram, OXM::Opacity, nullptr));
    EXPECT_FALSE(OXWTaskProgress::statusBarCallback(&histogram, OXM::Calculate, nullptr));
    EXPECT_TRUE(histogram.execute(OXM::Calculate));
    EXPECT_FALSE(availableWhileRunning);
    EXPECT_TRUE(OXWTaskProgress::statusBarCallback(&histogram, OXM::Calculate, nullptr));

    // An aborted run leaves no result.
    upToDate = false;
    abort = true;
    EXPECT_FALSE(histogram.execute(OXM::Calculate));
    EXPECT_FALSE(OXWTaskProgress::statusBarCallback(&histogram, OXM::Calculate, nullptr));

    // Default check: available unless running or failed.
    EXPECT_TRUE(OXWTaskProgress::statusBarCallback(&histogram, OXM::Init, nullptr));
}
