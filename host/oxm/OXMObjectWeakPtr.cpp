#include "OXMObjectWeakPtr.h"

#include "OXMObject.h"

void OXMObjectWeakPtr::attach(OXMObject* object)
{
    mObject = object;
    if (!object)
        return;
    mPrev = nullptr;
    mNext = object->mGuards;
    if (mNext)
        mNext->mPrev = this;
    object->mGuards = this;
}

void OXMObjectWeakPtr::detach()
{
    if (!mObject)
        return;
    if (mPrev)
        mPrev->mNext = mNext;
    else
        mObject->mGuards = mNext;
    if (mNext)
        mNext->mPrev = mPrev;
    mPrev = mNext = nullptr;
    mObject = nullptr;
}
