#include "OXMObjectIOCPtr.h"

#include "OXMObject.h"

OXMObjectIOCPtr::OXMObjectIOCPtr(OXMObject* object, OXMIOC* listener) : mListener(listener)
{
    setObject(object);
}

OXMObjectIOCPtr::OXMObjectIOCPtr(const OXMObjectIOCPtr& other)
    : OXMObjectWeakPtr(), mListener(other.mListener)
{
    setObject(other.get());
}

OXMObjectIOCPtr& OXMObjectIOCPtr::operator=(const OXMObjectIOCPtr& other)
{
    mListener = other.mListener;
    setObject(other.get());
    return *this;
}

OXMObjectIOCPtr& OXMObjectIOCPtr::operator=(OXMObject* object)
{
    setObject(object);
    return *this;
}

OXMObjectIOCPtr::~OXMObjectIOCPtr()
{
    setObject(nullptr);
}

void OXMObjectIOCPtr::setObject(OXMObject* object)
{
    OXMObject* old = get();
    if (old == object)
        return;
    if (old)
        old->removeListener(this);
    OXMObjectWeakPtr::operator=(object);
    if (object)
        object->addListener(this);
}
