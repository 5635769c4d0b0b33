#pragma once

#include "OXMObjectWeakPtr.h"

class OXMIOC;

// A pointer to an object that registers a listener with it: the listener receives the
// object's messages while the pointer points to it. Assigning another object moves the
// registration; when the object dies the listener receives OXMIOC::Dying and the pointer
// reads null afterwards. Holds no reference.
class OXMObjectIOCPtr : public OXMObjectWeakPtr
{
public:
    OXMObjectIOCPtr() = default;
    OXMObjectIOCPtr(OXMObject* object, OXMIOC* listener = nullptr);
    OXMObjectIOCPtr(const OXMObjectIOCPtr& other);
    OXMObjectIOCPtr& operator=(const OXMObjectIOCPtr& other);
    OXMObjectIOCPtr& operator=(OXMObject* object);
    ~OXMObjectIOCPtr() override;

    OXMIOC* getListener() const { return mListener; }
    void setListener(OXMIOC* listener) { mListener = listener; }

protected:
    void objectDestroyed() override {}

private:
    void setObject(OXMObject* object);

    friend class OXMObject;
    OXMIOC* mListener = nullptr;
};
