#include "OXMClass.h"

#include "OXMMetaClass.h"
#include "OXMRegisteredEnum.h"

OXMClass::~OXMClass() = default;

const OXMMetaClass* OXMClass::metaClass()
{
    static OXMMetaClass* meta = new OXMMetaClass("OXMClass", sizeof(OXMClass), nullptr, nullptr,
                                                 "oxm"); // lives for the process
    return meta;
}

const OXMMetaClass* OXMClass::getMetaClass() const
{
    return metaClass();
}

bool OXMClass::isOfType(const char* className) const
{
    const OXMMetaClass* m = getMetaClass();
    return m && m->isOfType(className);
}

OXMenum OXMClass::getObjectID(int index) const
{
    static OXMRegisteredEnum* id = new OXMRegisteredEnum("OXMClass");
    return index == 0 ? id->getValue() : OXMenum();
}

bool OXMClass::setFlags(unsigned set, unsigned clear)
{
    mFlags = (mFlags | set) & ~clear;
    return true;
}

bool OXMClass::setProtectedFlags(unsigned set, unsigned clear)
{
    mProtectedFlags = (mProtectedFlags | set) & ~clear;
    return true;
}

bool OXMClass::setScope(OXMenum scope)
{
    if (scope != OXM::Global && scope != OXM::Local)
        return false;
    mScope = scope;
    return true;
}
