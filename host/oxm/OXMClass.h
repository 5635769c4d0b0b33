#pragma once

#include "OXMenum.h"

class OXMMetaClass;

// Root of every class of the framework: flags, scope, meta-class and object identifiers.
class OXMClass
{
public:
    OXMClass() = default;
    OXMClass(const OXMClass& other) = default;
    OXMClass& operator=(const OXMClass& other) = default;
    virtual ~OXMClass();

    static const OXMMetaClass* metaClass();
    virtual const OXMMetaClass* getMetaClass() const;
    // Whether the object's class is, or derives from, the named class.
    bool isOfType(const char* className) const;

    // Identifiers of the class and its bases: index 0 is the most derived class, index n the
    // base's answer for n - 1; past the root an invalid value.
    virtual OXMenum getObjectID(int index) const;

    unsigned getFlags() const { return mFlags; }
    // Sets the bits of set, then clears the bits of clear.
    bool setFlags(unsigned set, unsigned clear);
    // A second flag word for bits that only the class itself manages.
    unsigned getProtectedFlags() const { return mProtectedFlags; }
    bool setProtectedFlags(unsigned set, unsigned clear);

    // OXM::Local (the default) or OXM::Global (application-wide); other values are refused.
    OXMenum getScope() const { return mScope; }
    bool setScope(OXMenum scope);

private:
    unsigned mFlags = 0;
    unsigned mProtectedFlags = 0;
    OXMenum mScope = OXM::Local;
};
