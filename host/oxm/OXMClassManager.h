#pragma once

#include "OXMenum.h"

class OXMClass;
class OXMMetaClass;
class OXMObject;

// The registry of meta-classes by name and of the objects alive, for creation by class name
// and for searches. Object bookkeeping is O(1) per object; only searches walk the objects.
class OXMClassManager
{
public:
    struct SearchPattern
    {
        const char* className = nullptr;  // null: any class
        const char* moduleName = nullptr; // null: any module
        bool includeDerived = true;       // classes derived from className match too
    };

    static bool registerMetaClass(const OXMMetaClass* meta);
    static void unregisterMetaClass(const OXMMetaClass* meta);
    static const OXMMetaClass* findMetaClass(const char* className);
    static int getMetaClassCount();

    // A new object of the named class through its factory; null for an unknown class.
    static OXMClass* createObject(const char* className);

    static int getObjectCount(const SearchPattern& pattern);
    // Writes up to count matching objects (oldest first); returns how many were written.
    static int findObjects(OXMClass** array, int count, const SearchPattern& pattern);

    // Bookkeeping of OXMObject (called by its constructors and destructor).
    static void objectCreated(OXMObject* object);
    static void objectDestroyed(OXMObject* object);
};
