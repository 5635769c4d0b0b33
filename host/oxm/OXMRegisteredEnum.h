#pragma once

#include "OXMenum.h"

// One registration of a name in a namespace. Registrations of the same name in the same
// namespace yield the same value; destroying the object withdraws this registration (the
// value keeps its number and name, so values still print after withdrawal).
class OXMRegisteredEnum
{
public:
    OXMRegisteredEnum(const char* name, bool owned = false,
                      const char* nameSpace = OXMenum::HostNamespace);
    ~OXMRegisteredEnum();

    OXMRegisteredEnum(const OXMRegisteredEnum&) = delete;
    OXMRegisteredEnum& operator=(const OXMRegisteredEnum&) = delete;

    operator OXMenum() const { return mValue; }
    OXMenum getValue() const { return mValue; }
    // Whether whoever created the registration has handed it to the module's termination,
    // which destroys owned registrations of its namespace.
    bool isOwned() const { return mOwned; }
    const char* getName() const { return mValue.getName(); }
    const char* getNamespace() const { return mValue.getNamespace(); }

    // Number of live registration objects in the namespace.
    static int getEnumCount(const char* nameSpace);
    // Number of distinct values with at least one live registration in the namespace.
    static int getValueCount(const char* nameSpace);
    // Fills the array with up to count registration objects of the namespace, in the order of
    // registration; returns how many were written.
    static int findEnums(OXMRegisteredEnum** array, int count, const char* nameSpace);

private:
    OXMenum mValue;
    bool mOwned;
};
