#pragma once

#include "OXMenum.h"

#include <deque>
#include <mutex>
#include <string>
#include <unordered_map>
#include <vector>

class OXMRegisteredEnum;

// The process-wide table of enumeration values (internal to the framework).
// Never destroyed, so that static registrations of modules can be withdrawn at any time.
class OXMEnumRegistry
{
public:
    static OXMEnumRegistry& instance();

    OXMenum registerName(const char* name, const char* nameSpace, OXMRegisteredEnum* owner);
    void withdraw(OXMRegisteredEnum* owner);
    OXMenum find(const char* name, const char* nameSpace);
    const char* name(int value);
    const char* nameSpace(int value);
    int registrationCount(const char* nameSpace);
    int valueCount(const char* nameSpace);
    int findRegistrations(OXMRegisteredEnum** array, int count, const char* nameSpace);

private:
    OXMEnumRegistry();

    struct Value
    {
        std::string name;
        std::string nameSpace;
        int registrations = 0; // live registration objects; host values count as one
    };

    static std::string key(const char* name, const char* nameSpace);

    std::mutex mMutex;
    std::deque<Value> mValues; // index = value; stable addresses for the name strings
    std::unordered_map<std::string, int> mByKey;
    std::vector<OXMRegisteredEnum*> mRegistrations; // in registration order
};
