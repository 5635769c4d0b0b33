#include "OXMAction.h"
#include "OXMObject.h"

#include <gtest/gtest.h>

#include <vector>

TEST(OXMAction, ExecuteRunsSynchronouslyAndKeepsTheErrorCode)
{
    OXMObject o;
    int runs = 0;
    bool wasRunning = false;
    OXMAction* action = nullptr;
    EXPECT_TRUE(
        o.addAction(new OXMAction(OXM::Calculate, [&](OXMObject& self, void* params, OXMTaskInfo&) {
            ++runs;
            wasRunning = action->isRunning();
            EXPECT_EQ(&self, &o);
            EXPECT_EQ(action->getErrorCode(), OXM::Running);
            // A nested call while running is refused.
            EXPECT_FALSE(self.execute(OXM::Calculate));
            return params ? OXM::InvalidValue : OXM::NoError;
        })));
    EXPECT_FALSE(o.addAction(new OXMAction(OXM::Calculate, nullptr))); // duplicate id
    action = o.getAction(OXM::Calculate);
    ASSERT_NE(action, nullptr);
    EXPECT_EQ(o.getAction(OXM::Init), nullptr);

    EXPECT_TRUE(o.execute(OXM::Calculate));
    EXPECT_TRUE(wasRunning);
    EXPECT_FALSE(action->isRunning());
    EXPECT_EQ(action->getErrorCode(), OXM::NoError);
    int p = 1;
    EXPECT_FALSE(o.execute(OXM::Calculate, &p));
    EXPECT_EQ(action->getErrorCode(), OXM::InvalidValue);
    EXPECT_EQ(runs, 2);
    EXPECT_FALSE(o.execute(OXM::Init));
}

TEST(OXMAction, AbortRequestsAndProgressReachTheWorkerAndTheHandler)
{
    OXMObject o;
    std::vector<float> progress;
    auto previous = OXMTaskInfo::setProgressHandler(
        [&](const OXMTaskInfo&, float p) { progress.push_back(p); });
    o.addAction(new OXMAction(OXM::Calculate, [&](OXMObject& self, void*, OXMTaskInfo& task) {
        for (int i = 1; i <= 10; ++i) {
            if (task.isAbortRequested())
                return OXM::Abort;
            task.setProgress(i / 4.0f);
            if (i == 3)
                self.getAction(OXM::Calculate)->getTaskInfo()->requestAbort();
        }
        return OXM::NoError;
    }));
    EXPECT_FALSE(o.execute(OXM::Calculate));
    EXPECT_EQ(o.getAction(OXM::Calculate)->getErrorCode(), OXM::Abort);
    EXPECT_EQ(progress, (std::vector<float>{0.25f, 0.5f, 0.75f}));
    progress.clear();
    OXMTaskInfo::setProgressHandler(previous);
    // A new run starts without an earlier abort request.
    o.addAction(new OXMAction(OXM::Init, [](OXMObject&, void*, OXMTaskInfo& task) {
        return task.isAbortRequested() ? OXM::Abort : OXM::NoError;
    }));
    o.getAction(OXM::Init)->getTaskInfo()->requestAbort();
    EXPECT_TRUE(o.execute(OXM::Init));
}

TEST(OXMAction, CheckExecuteAsksWithoutRunning)
{
    OXMObject o;
    int runs = 0;
    bool upToDate = false;
    o.addAction(new OXMAction(
        OXM::Calculate,
        [&](OXMObject&, void*, OXMTaskInfo&) {
            ++runs;
            return OXM::NoError;
        },
        [&](const OXMObject&, void*, OXMenum* code) {
            *code = upToDate ? OXM::NoError : OXM::Running;
            return !upToDate;
        }));
    OXMenum code(-1);
    EXPECT_TRUE(o.checkExecute(OXM::Calculate, nullptr, &code));
    EXPECT_EQ(code, OXM::Running);
    upToDate = true;
    EXPECT_FALSE(o.checkExecute(OXM::Calculate, nullptr, &code));
    EXPECT_EQ(code, OXM::NoError);
    EXPECT_EQ(runs, 0);
    EXPECT_FALSE(o.checkExecute(OXM::Init, nullptr, &code));
    EXPECT_EQ(code, OXM::InvalidOperation);

    o.addAction(
        new OXMAction(OXM::Init, [](OXMObject&, void*, OXMTaskInfo&) { return OXM::NoError; }));
    code = OXMenum(-1);
    EXPECT_TRUE(o.checkExecute(OXM::Init, nullptr, &code)); // default check
    EXPECT_EQ(code, OXM::NoError);
}
