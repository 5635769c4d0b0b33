#include "OXMObjectPtr.h"

#include "OXMObject.h"

OXMObjectPtr::OXMObjectPtr(OXMObject* object) : OXMObjectWeakPtr(object)
{
    if (object)
        object->addRef();
}

OXMObjectPtr::OXMObjectPtr(const OXMObjectPtr& other) : OXMObjectPtr(other.get()) {}

OXMObjectPtr& OXMObjectPtr::operator=(const OXMObjectPtr& other)
{
    return *this = other.get();
}

OXMObjectPtr& OXMObjectPtr::operator=(OXMObject* object)
{
    OXMObject* old = get();
    if (object == old)
        return *this;
    if (object)
        object->addRef();
    OXMObjectWeakPtr::operator=(object);
    if (old)
        old->unref();
    return *this;
}

OXMObjectPtr::~OXMObjectPtr()
{
    OXMObject* old = get();
    detach();
    if (old)
        old->unref();
}

OXMObject* OXMObjectPtr::release()
{
    OXMObject* old = get();
    detach();
    if (old)
        old->unref(false);
    return old;
}
