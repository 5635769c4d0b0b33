#include "OXMRegisteredEnum.h"

#include "OXMEnumRegistry.h"

OXMRegisteredEnum::OXMRegisteredEnum(const char* name, bool owned, const char* nameSpace)
    : mOwned(owned)
{
    mValue = OXMEnumRegistry::instance().registerName(name, nameSpace, this);
}

OXMRegisteredEnum::~OXMRegisteredEnum()
{
    if (mValue.isValid())
        OXMEnumRegistry::instance().withdraw(this);
}

int OXMRegisteredEnum::getEnumCount(const char* nameSpace)
{
    return OXMEnumRegistry::instance().registrationCount(nameSpace);
}

int OXMRegisteredEnum::getValueCount(const char* nameSpace)
{
    return OXMEnumRegistry::instance().valueCount(nameSpace);
}

int OXMRegisteredEnum::findEnums(OXMRegisteredEnum** array, int count, const char* nameSpace)
{
    return OXMEnumRegistry::instance().findRegistrations(array, count, nameSpace);
}
