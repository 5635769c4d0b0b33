#pragma once

#include "OXMObjectWeakPtr.h"

// Holds one reference to an object. An object with auto-delete set is deleted when its
// last reference goes. If the object is destroyed otherwise, the pointer reads null.
class OXMObjectPtr : public OXMObjectWeakPtr
{
public:
    OXMObjectPtr() = default;
    OXMObjectPtr(OXMObject* object);
    OXMObjectPtr(const OXMObjectPtr& other);
    OXMObjectPtr& operator=(const OXMObjectPtr& other);
    OXMObjectPtr& operator=(OXMObject* object);
    ~OXMObjectPtr() override;

    // Drops the reference (the object may go).
    void reset() { *this = nullptr; }
    // Hands the object over: the pointer becomes empty and gives up its reference without
    // deleting the object, even when no reference is left.
    OXMObject* release();
};
