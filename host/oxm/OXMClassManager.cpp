#include "OXMClassManager.h"

#include "OXMMetaClass.h"
#include "OXMObject.h"

#include <cstring>
#include <string>
#include <unordered_map>

namespace {

struct ClassManagerData
{
    std::unordered_map<std::string, const OXMMetaClass*> classes;
    OXMObject* first = nullptr; // intrusive list through OXMObject::mPrevObject/mNextObject
    OXMObject* last = nullptr;
};

ClassManagerData& data()
{
    static ClassManagerData* d = new ClassManagerData; // never destroyed: outlives all statics
    return *d;
}

bool matches(const OXMObject* object, const OXMClassManager::SearchPattern& pattern)
{
    const OXMMetaClass* m = object->getMetaClass();
    if (!m)
        return false;
    if (pattern.moduleName && std::strcmp(m->getModuleName(), pattern.moduleName) != 0)
        return false;
    if (pattern.className) {
        if (pattern.includeDerived)
            return m->isOfType(pattern.className);
        return std::strcmp(m->getClassName(), pattern.className) == 0;
    }
    return true;
}

} // namespace

bool OXMClassManager::registerMetaClass(const OXMMetaClass* meta)
{
    if (!meta || !*meta->getClassName())
        return false;
    return data().classes.emplace(meta->getClassName(), meta).second;
}

void OXMClassManager::unregisterMetaClass(const OXMMetaClass* meta)
{
    auto& classes = data().classes;
    auto it = classes.find(meta->getClassName());
    if (it != classes.end() && it->second == meta)
        classes.erase(it);
}

const OXMMetaClass* OXMClassManager::findMetaClass(const char* className)
{
    if (!className)
        return nullptr;
    auto& classes = data().classes;
    auto it = classes.find(className);
    return it == classes.end() ? nullptr : it->second;
}

int OXMClassManager::getMetaClassCount()
{
    return int(data().classes.size());
}

OXMClass* OXMClassManager::createObject(const char* className)
{
    const OXMMetaClass* m = findMetaClass(className);
    return m ? m->create() : nullptr;
}

int OXMClassManager::getObjectCount(const SearchPattern& pattern)
{
    int n = 0;
    for (OXMObject* o = data().first; o; o = o->mNextObject) {
        if (matches(o, pattern))
            ++n;
    }
    return n;
}

int OXMClassManager::findObjects(OXMClass** array, int count, const SearchPattern& pattern)
{
    if (!array || count <= 0)
        return 0;
    int n = 0;
    for (OXMObject* o = data().first; o && n < count; o = o->mNextObject) {
        if (matches(o, pattern))
            array[n++] = o;
    }
    return n;
}

void OXMClassManager::objectCreated(OXMObject* object)
{
    ClassManagerData& d = data();
    object->mPrevObject = d.last;
    object->mNextObject = nullptr;
    if (d.last)
        d.last->mNextObject = object;
    else
        d.first = object;
    d.last = object;
}

void OXMClassManager::objectDestroyed(OXMObject* object)
{
    ClassManagerData& d = data();
    if (object->mPrevObject)
        object->mPrevObject->mNextObject = object->mNextObject;
    else if (d.first == object)
        d.first = object->mNextObject;
    if (object->mNextObject)
        object->mNextObject->mPrevObject = object->mPrevObject;
    else if (d.last == object)
        d.last = object->mPrevObject;
    object->mPrevObject = object->mNextObject = nullptr;
}
