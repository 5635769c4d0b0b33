#pragma once

#include "OXMIOC.h"
#include "OXMObject.h"

#include <functional>
#include <vector>

// Records the messages it receives; an optional hook runs inside the callback.
class OXMTestListener : public OXMIOC
{
public:
    struct Entry
    {
        OXMenum type;
        OXMObject* initialSender;
        OXMenum property;
    };

    void iocCallback(Message& m) override
    {
        entries.push_back({m.getType(), m.getInitialSender(), m.getPropertyID()});
        if (hook)
            hook(m);
    }
    int count(OXMenum type) const
    {
        int n = 0;
        for (const Entry& e : entries)
            n += e.type == type ? 1 : 0;
        return n;
    }

    std::vector<Entry> entries;
    std::function<void(Message&)> hook;
};
