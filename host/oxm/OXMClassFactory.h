#pragma once

#include "OXMError.h"

#include <new>

class OXMClass;

// The four operations through which the host makes and destroys objects of a class by name.
class OXMClassFactory
{
public:
    virtual ~OXMClassFactory() = default;
    // A new object, constructed in storage when given (of the meta-class's size), else
    // allocated; null on failure.
    virtual OXMClass* create(void* storage = nullptr) = 0;
    // A copy of source (which must be of this class), in storage or allocated; null on failure.
    virtual OXMClass* createCopy(const OXMClass* source, void* storage = nullptr) = 0;
    // Assigns source to destination; both must be of this class.
    virtual bool assign(OXMClass* destination, const OXMClass* source) = 0;
    // With freeMemory: deletes the object. Without: runs its destructor in place, the storage
    // staying with the caller (the object must be of this class).
    virtual bool destroy(OXMClass* object, bool freeMemory) = 0;

    // destroy() for objects of class T: with freeMemory a delete, else T's destructor in place
    // after a class check (another class is reported as OXM::InvalidOperation).
    template <typename T>
    static bool destroyAs(OXMClass* object, bool freeMemory)
    {
        if (!object)
            return false;
        if (freeMemory) {
            delete object;
            return true;
        }
        T* t = dynamic_cast<T*>(object);
        if (!t) {
            OXMError::emitError(object, OXM::InvalidOperation, "destroy: wrong class");
            return false;
        }
        t->~T();
        return true;
    }
};

// The factory of a class T with default and copy constructors and assignment. Arguments
// of another class are reported as OXM::InvalidOperation.
template <typename T>
class OXMDefaultClassFactory : public OXMClassFactory
{
public:
    OXMClass* create(void* storage = nullptr) override
    {
        return storage ? new (storage) T : new (std::nothrow) T;
    }
    OXMClass* createCopy(const OXMClass* source, void* storage = nullptr) override
    {
        const T* s = dynamic_cast<const T*>(source);
        if (!s) {
            OXMError::emitError(source, OXM::InvalidOperation, "create copy: wrong class");
            return nullptr;
        }
        return storage ? new (storage) T(*s) : new (std::nothrow) T(*s);
    }
    bool assign(OXMClass* destination, const OXMClass* source) override
    {
        T* d = dynamic_cast<T*>(destination);
        const T* s = dynamic_cast<const T*>(source);
        if (!d || !s) {
            OXMError::emitError(d ? source : destination, OXM::InvalidOperation,
                                "assign: wrong class");
            return false;
        }
        *d = *s;
        return true;
    }
    bool destroy(OXMClass* object, bool freeMemory) override
    {
        return destroyAs<T>(object, freeMemory);
    }
};
