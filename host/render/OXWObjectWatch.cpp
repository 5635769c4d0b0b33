#include "OXWObjectWatch.h"

#include <OXMIOC.h>

#include <algorithm>

class OXWObjectWatch::Listener : public OXMIOC
{
public:
    explicit Listener(std::function<void()> changed) : mChanged(std::move(changed)) {}
    void iocCallback(Message&) override { mChanged(); }

private:
    std::function<void()> mChanged;
};

OXWObjectWatch::OXWObjectWatch(std::function<void()> changed)
    : mListener(std::make_unique<Listener>(std::move(changed)))
{
}

OXWObjectWatch::~OXWObjectWatch()
{
    // Unregister from the objects before the listener goes.
    clear();
}

void OXWObjectWatch::watch(const std::vector<OXMObject*>& objects)
{
    std::vector<std::unique_ptr<OXMObjectIOCPtr>> next;
    next.reserve(objects.size());
    for (OXMObject* object : objects) {
        const auto holds = [object](const std::unique_ptr<OXMObjectIOCPtr>& p) {
            return p && p->get() == object;
        };
        if (!object || std::any_of(next.begin(), next.end(), holds))
            continue;
        auto kept = std::find_if(mPointers.begin(), mPointers.end(), holds);
        if (kept != mPointers.end())
            next.push_back(std::move(*kept));
        else
            next.push_back(std::make_unique<OXMObjectIOCPtr>(object, mListener.get()));
    }
    mPointers = std::move(next);
}

void OXWObjectWatch::clear()
{
    mPointers.clear();
}
