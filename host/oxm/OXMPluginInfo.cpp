#include "OXMPluginInfo.h"

#include <cstring>

OXMPluginInfo::OXMPluginInfo(const char* aname) : recordSize(std::int32_t(sizeof(OXMPluginInfo)))
{
    const char* n = aname ? aname : "";
    const std::size_t len = std::strlen(n);
    name = new char[len + 1];
    std::memcpy(name, n, len + 1);
}

OXMPluginInfo::~OXMPluginInfo()
{
    delete[] name;
}
