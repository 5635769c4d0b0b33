#pragma once

#include "OXMTaskInfo.h"
#include "OXMenum.h"

#include <functional>

class OXMObject;

// An action of an object (OXM::Calculate, OXM::Init, ...): runs synchronously, reports an
// error code and exposes its task information while it runs.
class OXMAction
{
public:
    // Does the work; returns OXM::NoError on success or an error code (OXM::Abort when it
    // stopped on request).
    using RunFunction =
        std::function<OXMenum(OXMObject& object, void* parameters, OXMTaskInfo& task)>;
    // Says whether the action would have to run and sets the code.
    using CheckFunction =
        std::function<bool(const OXMObject& object, void* parameters, OXMenum* errorCode)>;

    OXMAction(OXMenum id, RunFunction run, CheckFunction check = CheckFunction());
    OXMAction(const OXMAction&) = delete;
    OXMAction& operator=(const OXMAction&) = delete;

    OXMenum getID() const { return mID; }
    bool isRunning() const { return mRunning; }
    // The result of the last run (OXM::Running while running); OXM::NoError before any run.
    OXMenum getErrorCode() const { return mErrorCode; }
    OXMTaskInfo* getTaskInfo() { return &mTask; }
    const OXMTaskInfo* getTaskInfo() const { return &mTask; }

    // Runs the action on the object; a call while it runs is refused (false, code stays
    // OXM::Running). True when the result is OXM::NoError.
    bool run(OXMObject& object, void* parameters);
    // With a check function its answer; without one: true, and the code OXM::Running while
    // the action runs, else OXM::NoError.
    bool check(const OXMObject& object, void* parameters, OXMenum* errorCode) const;

private:
    OXMenum mID;
    RunFunction mRun;
    CheckFunction mCheck;
    OXMTaskInfo mTask;
    OXMenum mErrorCode = OXM::NoError;
    bool mRunning = false;
};
