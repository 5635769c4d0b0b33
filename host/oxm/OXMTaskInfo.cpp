#include "OXMTaskInfo.h"

#include <utility>

namespace {
OXMTaskInfo::ProgressHandler& handler()
{
    static auto* h = new OXMTaskInfo::ProgressHandler; // never destroyed
    return *h;
}
} // namespace

void OXMTaskInfo::setProgress(float progress)
{
    if (!(progress > 0.0f))
        progress = 0.0f;
    else if (progress > 1.0f)
        progress = 1.0f;
    mProgress.store(progress, std::memory_order_relaxed);
    if (handler())
        handler()(*this, progress);
}

void OXMTaskInfo::reset()
{
    mAbort.store(false, std::memory_order_relaxed);
    mProgress.store(0.0f, std::memory_order_relaxed);
}

OXMTaskInfo::ProgressHandler OXMTaskInfo::setProgressHandler(ProgressHandler h)
{
    ProgressHandler previous = std::move(handler());
    handler() = std::move(h);
    return previous;
}
