#include "OXMMetaClass.h"

#include "OXMClass.h"
#include "OXMClassFactory.h"
#include "OXMClassManager.h"

#include <cstring>

OXMMetaClass::OXMMetaClass(const char* name, std::size_t size, const OXMMetaClass* base,
                           OXMClassFactory* factory, const char* moduleName, unsigned flags,
                           unsigned defaultObjectFlags)
    : mName(name ? name : ""), mSize(size), mBase(base), mFactory(factory),
      mModule(moduleName ? moduleName : ""), mFlags(flags), mDefaultObjectFlags(defaultObjectFlags)
{
    mRegistered = OXMClassManager::registerMetaClass(this);
}

OXMMetaClass::~OXMMetaClass()
{
    if (mRegistered)
        OXMClassManager::unregisterMetaClass(this);
}

bool OXMMetaClass::isOfType(const char* className) const
{
    if (!className)
        return false;
    for (const OXMMetaClass* m = this; m; m = m->mBase) {
        if (m->mName == className)
            return true;
    }
    return false;
}

bool OXMMetaClass::isOfType(const OXMMetaClass* other) const
{
    for (const OXMMetaClass* m = this; m; m = m->mBase) {
        if (m == other)
            return true;
    }
    return false;
}

void OXMMetaClass::applyDefaultFlags(OXMClass* object) const
{
    if (!object)
        return;
    unsigned flags = 0;
    for (const OXMMetaClass* m = this; m; m = m->mBase)
        flags |= m->mDefaultObjectFlags;
    object->setFlags(flags, 0);
}

OXMClass* OXMMetaClass::create(void* storage) const
{
    return mFactory ? mFactory->create(storage) : nullptr;
}

bool OXMMetaClass::assign(OXMClass* destination, const OXMClass* source) const
{
    return mFactory && destination && source && mFactory->assign(destination, source);
}

OXMClass* OXMMetaClass::clone(const OXMClass* object, void* storage)
{
    if (!object)
        return nullptr;
    const OXMMetaClass* m = object->getMetaClass();
    if (!m || !m->mFactory) {
        OXMError::emitError(object, OXM::InvalidOperation, "clone: class without factory");
        return nullptr;
    }
    return m->mFactory->createCopy(object, storage);
}

bool OXMMetaClass::destruct(OXMClass* object, bool freeMemory)
{
    if (!object)
        return false;
    const OXMMetaClass* m = object->getMetaClass();
    if (m && m->mFactory)
        return m->mFactory->destroy(object, freeMemory);
    if (!freeMemory)
        return false;
    delete object;
    return true;
}
