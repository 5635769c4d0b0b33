#pragma once

#include <OXMObjectIOCPtr.h>

#include <functional>
#include <memory>
#include <vector>

class OXMObject;

// Follows the change messages of a set of host objects for a view: any message of any of them
// (a changed property, a dying object) calls the callback. Nothing is read from the sender,
// which may be half destroyed; the callback typically starts a coalescing timer.
class OXWObjectWatch
{
public:
    explicit OXWObjectWatch(std::function<void()> changed);
    ~OXWObjectWatch();
    OXWObjectWatch(const OXWObjectWatch&) = delete;
    OXWObjectWatch& operator=(const OXWObjectWatch&) = delete;

    // Listens to exactly these objects from now on (null entries and repeats are skipped);
    // the registrations of objects that stay are kept.
    void watch(const std::vector<OXMObject*>& objects);
    void clear();
    int count() const { return int(mPointers.size()); }

private:
    class Listener;
    std::unique_ptr<Listener> mListener;
    std::vector<std::unique_ptr<OXMObjectIOCPtr>> mPointers;
};
