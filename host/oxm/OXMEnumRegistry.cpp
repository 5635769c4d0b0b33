#include "OXMEnumRegistry.h"

#include "OXMRegisteredEnum.h"

#include <algorithm>
#include <cstring>

OXMEnumRegistry& OXMEnumRegistry::instance()
{
    static OXMEnumRegistry* registry = new OXMEnumRegistry; // intentionally never destroyed
    return *registry;
}

OXMEnumRegistry::OXMEnumRegistry()
{
    mValues.push_back(Value{}); // 0: no value
    static const char* const hostNames[] = {
#define OXM_HOST_ENUM_NAME(n) #n,
        OXM_HOST_ENUM_LIST(OXM_HOST_ENUM_NAME)
#undef OXM_HOST_ENUM_NAME
    };
    for (const char* n : hostNames) {
        mByKey.emplace(key(n, OXMenum::HostNamespace), int(mValues.size()));
        mValues.push_back(Value{n, OXMenum::HostNamespace, 1});
    }
}

std::string OXMEnumRegistry::key(const char* name, const char* nameSpace)
{
    std::string k(nameSpace ? nameSpace : OXMenum::HostNamespace);
    k.push_back('\0');
    k.append(name ? name : "");
    return k;
}

OXMenum OXMEnumRegistry::registerName(const char* name, const char* nameSpace,
                                      OXMRegisteredEnum* owner)
{
    if (!name || !*name)
        return OXMenum();
    if (!nameSpace || !*nameSpace)
        nameSpace = OXMenum::HostNamespace;
    std::lock_guard<std::mutex> lock(mMutex);
    const std::string k = key(name, nameSpace);
    auto it = mByKey.find(k);
    int value;
    if (it != mByKey.end()) {
        value = it->second;
    } else {
        value = int(mValues.size());
        mValues.push_back(Value{name, nameSpace, 0});
        mByKey.emplace(k, value);
    }
    ++mValues[std::size_t(value)].registrations;
    if (owner)
        mRegistrations.push_back(owner);
    return OXMenum(value);
}

void OXMEnumRegistry::withdraw(OXMRegisteredEnum* owner)
{
    std::lock_guard<std::mutex> lock(mMutex);
    auto it = std::find(mRegistrations.begin(), mRegistrations.end(), owner);
    if (it == mRegistrations.end())
        return;
    mRegistrations.erase(it);
    const int value = owner->getValue().toInt();
    if (value > 0 && value < int(mValues.size()))
        --mValues[std::size_t(value)].registrations;
}

OXMenum OXMEnumRegistry::find(const char* name, const char* nameSpace)
{
    if (!name)
        return OXMenum();
    std::lock_guard<std::mutex> lock(mMutex);
    if (nameSpace) {
        auto it = mByKey.find(key(name, nameSpace));
        if (it == mByKey.end() || mValues[std::size_t(it->second)].registrations <= 0)
            return OXMenum();
        return OXMenum(it->second);
    }
    auto it = mByKey.find(key(name, OXMenum::HostNamespace));
    if (it != mByKey.end())
        return OXMenum(it->second);
    for (std::size_t i = 1; i < mValues.size(); ++i) {
        if (mValues[i].registrations > 0 && mValues[i].name == name)
            return OXMenum(int(i));
    }
    return OXMenum();
}

const char* OXMEnumRegistry::name(int value)
{
    std::lock_guard<std::mutex> lock(mMutex);
    if (value <= 0 || value >= int(mValues.size()))
        return "";
    return mValues[std::size_t(value)].name.c_str();
}

const char* OXMEnumRegistry::nameSpace(int value)
{
    std::lock_guard<std::mutex> lock(mMutex);
    if (value <= 0 || value >= int(mValues.size()))
        return "";
    return mValues[std::size_t(value)].nameSpace.c_str();
}

int OXMEnumRegistry::registrationCount(const char* nameSpace)
{
    if (!nameSpace)
        nameSpace = OXMenum::HostNamespace;
    std::lock_guard<std::mutex> lock(mMutex);
    int n = 0;
    for (OXMRegisteredEnum* r : mRegistrations) {
        if (mValues[std::size_t(r->getValue().toInt())].nameSpace == nameSpace)
            ++n;
    }
    return n;
}

int OXMEnumRegistry::valueCount(const char* nameSpace)
{
    if (!nameSpace)
        nameSpace = OXMenum::HostNamespace;
    std::lock_guard<std::mutex> lock(mMutex);
    int n = 0;
    for (std::size_t i = 1; i < mValues.size(); ++i) {
        if (mValues[i].registrations > 0 && mValues[i].nameSpace == nameSpace)
            ++n;
    }
    return n;
}

int OXMEnumRegistry::findRegistrations(OXMRegisteredEnum** array, int count, const char* nameSpace)
{
    if (!array || count <= 0)
        return 0;
    if (!nameSpace)
        nameSpace = OXMenum::HostNamespace;
    std::lock_guard<std::mutex> lock(mMutex);
    int n = 0;
    for (OXMRegisteredEnum* r : mRegistrations) {
        if (n >= count)
            break;
        if (mValues[std::size_t(r->getValue().toInt())].nameSpace == nameSpace)
            array[n++] = r;
    }
    return n;
}
