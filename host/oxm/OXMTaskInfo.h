#pragma once

#include <atomic>
#include <functional>

// The state of a running action: abort requests and progress. Workers poll
// isAbortRequested(); progress goes to the installed progress handler (the viewer routes it
// to its status bar).
class OXMTaskInfo
{
public:
    using ProgressHandler = std::function<void(const OXMTaskInfo& task, float progress)>;

    OXMTaskInfo() = default;
    OXMTaskInfo(const OXMTaskInfo&) = delete;
    OXMTaskInfo& operator=(const OXMTaskInfo&) = delete;

    // Asks the running task to stop; safe from any thread.
    void requestAbort() { mAbort.store(true, std::memory_order_relaxed); }
    bool isAbortRequested() const { return mAbort.load(std::memory_order_relaxed); }

    // Progress 0..1 (clamped); calls the progress handler. Call it from the running thread.
    void setProgress(float progress);
    float getProgress() const { return mProgress.load(std::memory_order_relaxed); }

    // Clears abort request and progress (done when an action starts).
    void reset();

    // Installs the process-wide progress handler; returns the previous one.
    static ProgressHandler setProgressHandler(ProgressHandler handler);

private:
    std::atomic<bool> mAbort{false};
    std::atomic<float> mProgress{0.0f};
};
