#pragma once

#include "OXMenum.h"

#include <cstdint>

// The host's handle of a loaded plug-in (opaque to plug-ins).
struct __OXMPlugin;

// A plug-in's start-up or shut-down routine; answers a result code (OXM::NoError, ...).
using OXMPluginCallback = OXMenum (*)(__OXMPlugin* plugin);

// The record a plug-in hands to the host from its exported entry point
// `extern "C" OXMPluginInfo* oxmGetPluginInfo()`. The members keep the host's order; on a
// 32-bit build vendor, copyright and description lie at bytes 16, 20, 24, the five numbers
// at 28..44 and the callbacks at 64 and 68.
class OXMPluginInfo
{
public:
    explicit OXMPluginInfo(const char* name);
    ~OXMPluginInfo();
    OXMPluginInfo(const OXMPluginInfo&) = delete;
    OXMPluginInfo& operator=(const OXMPluginInfo&) = delete;

    // Set by the constructor.
    char* name = nullptr;           // a copy of the constructor's argument
    std::int32_t recordVersion = 1; // layout version of this record
    std::int32_t recordSize = 0;    // sizeof(OXMPluginInfo)
    void* hostData = nullptr;       // the host's own use
    // Set by the plug-in.
    const char* vendor = nullptr;
    const char* copyright = nullptr;
    const char* description = nullptr;
    std::int32_t versionMajor = 0;
    std::int32_t versionMinor = 0;
    std::int32_t versionPatch = 0;
    std::int32_t hostVersionMajor = 0; // host interface the plug-in was built for
    std::int32_t hostVersionMinor = 0;
    // Set by the constructor, reserved for the host.
    void* reserved[4] = {nullptr, nullptr, nullptr, nullptr};
    // Set by the plug-in.
    OXMPluginCallback initialize = nullptr;
    OXMPluginCallback terminate = nullptr;
};

// The signature of the exported entry point.
using OXMGetPluginInfoFunction = OXMPluginInfo* (*)();
