#pragma once

#include "OXMenum.h"

#include <cstddef>
#include <string>

class OXMClass;
class OXMClassFactory;

// Describes a class: name, base, factory and module. Registered with the class manager by
// name for its lifetime (a second meta-class of the same name is not registered).
class OXMMetaClass
{
public:
    enum Flag : unsigned
    {
        Singleton = 0x1, // at most one object of the class per scope
    };

    OXMMetaClass(const char* name, std::size_t size, const OXMMetaClass* base,
                 OXMClassFactory* factory, const char* moduleName, unsigned flags = 0,
                 unsigned defaultObjectFlags = 0);
    ~OXMMetaClass();
    OXMMetaClass(const OXMMetaClass&) = delete;
    OXMMetaClass& operator=(const OXMMetaClass&) = delete;

    const char* getClassName() const { return mName.c_str(); }
    const char* getModuleName() const { return mModule.c_str(); }
    const OXMMetaClass* getBase() const { return mBase; }
    OXMClassFactory* getFactory() const { return mFactory; }
    std::size_t getSize() const { return mSize; }
    unsigned getFlags() const { return mFlags; }
    bool isSingleton() const { return (mFlags & Singleton) != 0; }
    bool isRegistered() const { return mRegistered; }

    // This class or one of its bases has the name / is the meta-class.
    bool isOfType(const char* className) const;
    bool isOfType(const OXMMetaClass* other) const;

    // Flags that every new object of the class (and of its bases) carries.
    unsigned getDefaultObjectFlags() const { return mDefaultObjectFlags; }
    void applyDefaultFlags(OXMClass* object) const;

    // Factory operations of this class.
    OXMClass* create(void* storage = nullptr) const;
    bool assign(OXMClass* destination, const OXMClass* source) const;
    // A copy made by the factory of the object's own class; null on failure.
    static OXMClass* clone(const OXMClass* object, void* storage = nullptr);
    // Destroys the object through the factory of its own class (see OXMClassFactory).
    static bool destruct(OXMClass* object, bool freeMemory);

private:
    std::string mName;
    std::size_t mSize;
    const OXMMetaClass* mBase;
    OXMClassFactory* mFactory;
    std::string mModule;
    unsigned mFlags;
    unsigned mDefaultObjectFlags;
    bool mRegistered = false;
};
