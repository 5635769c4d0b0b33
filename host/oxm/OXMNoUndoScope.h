#pragma once

#include "OXMObject.h"

// Switches the framework's undo recorder off for the lifetime of the scope and restores the
// previous one: for writes that no undo step may remember, such as the objects a document
// reader builds or a scratch record that is converted and thrown away. Scopes nest.
class OXMNoUndoScope
{
public:
    OXMNoUndoScope() : mPrevious(OXMObject::setUndoRecorder(nullptr)) {}
    ~OXMNoUndoScope() { OXMObject::setUndoRecorder(mPrevious); }
    OXMNoUndoScope(const OXMNoUndoScope&) = delete;
    OXMNoUndoScope& operator=(const OXMNoUndoScope&) = delete;

private:
    OXMUndoRecorder* mPrevious;
};
