#include "OXMAction.h"

#include "OXMObject.h"

#include <utility>

OXMAction::OXMAction(OXMenum id, RunFunction run, CheckFunction check)
    : mID(id), mRun(std::move(run)), mCheck(std::move(check))
{
}

bool OXMAction::run(OXMObject& object, void* parameters)
{
    if (mRunning)
        return false;
    if (!mRun) {
        mErrorCode = OXM::InvalidOperation;
        return false;
    }
    mTask.reset();
    mRunning = true;
    mErrorCode = OXM::Running;
    OXMenum result = mRun(object, parameters, mTask);
    if (!result.isValid())
        result = OXM::GenericError;
    mRunning = false;
    mErrorCode = result;
    return result == OXM::NoError;
}

bool OXMAction::check(const OXMObject& object, void* parameters, OXMenum* errorCode) const
{
    if (mCheck)
        return mCheck(object, parameters, errorCode);
    if (errorCode)
        *errorCode = mRunning ? OXM::Running : OXM::NoError;
    return true;
}
