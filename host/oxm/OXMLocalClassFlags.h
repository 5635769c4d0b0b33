#pragma once

#include "OXMClass.h"

// Sets and clears flags of an object for the lifetime of the scope, then restores them.
class OXMLocalClassFlags
{
public:
    OXMLocalClassFlags(OXMClass* object, unsigned set, unsigned clear) : mObject(object)
    {
        if (mObject) {
            mSaved = mObject->getFlags();
            mObject->setFlags(set, clear);
        }
    }
    ~OXMLocalClassFlags()
    {
        if (mObject)
            mObject->setFlags(mSaved, ~mSaved);
    }
    OXMLocalClassFlags(const OXMLocalClassFlags&) = delete;
    OXMLocalClassFlags& operator=(const OXMLocalClassFlags&) = delete;

private:
    OXMClass* mObject;
    unsigned mSaved = 0;
};
