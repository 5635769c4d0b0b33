#include "OXMIOC.h"

#include <algorithm>
#include <vector>

namespace {

struct ApplicationChannel
{
    std::vector<OXMIOC*> listeners; // null entries are removed after delivery
    int delivering = 0;
    bool dirty = false;
};

ApplicationChannel& channel()
{
    static ApplicationChannel* c = new ApplicationChannel; // never destroyed
    return *c;
}

} // namespace

OXMIOC::~OXMIOC()
{
    if (mApplicationOpen)
        iocClose(this);
}

void OXMIOC::iocCallback(Message&) {}

void OXMIOC::iocBroadcast(Message&) {}

bool OXMIOC::iocOpen(OXMIOC* listener)
{
    if (!listener || listener->mApplicationOpen)
        return false;
    channel().listeners.push_back(listener);
    listener->mApplicationOpen = true;
    return true;
}

bool OXMIOC::iocClose(OXMIOC* listener)
{
    if (!listener || !listener->mApplicationOpen)
        return false;
    ApplicationChannel& c = channel();
    auto it = std::find(c.listeners.begin(), c.listeners.end(), listener);
    if (it != c.listeners.end()) {
        if (c.delivering > 0) {
            *it = nullptr;
            c.dirty = true;
        } else {
            c.listeners.erase(it);
        }
    }
    listener->mApplicationOpen = false;
    return true;
}

int OXMIOC::getApplicationListenerCount()
{
    const auto& l = channel().listeners;
    return int(l.size() - std::size_t(std::count(l.begin(), l.end(), nullptr)));
}

void OXMIOC::deliverToApplication(Message& message)
{
    ApplicationChannel& c = channel();
    if (c.listeners.empty())
        return;
    ++c.delivering;
    const std::size_t n = c.listeners.size(); // listeners opened meanwhile wait for the next
    for (std::size_t i = 0; i < n; ++i) {
        if (OXMIOC* l = c.listeners[i])
            l->iocCallback(message);
    }
    if (--c.delivering == 0 && c.dirty) {
        c.listeners.erase(std::remove(c.listeners.begin(), c.listeners.end(), nullptr),
                          c.listeners.end());
        c.dirty = false;
    }
}
