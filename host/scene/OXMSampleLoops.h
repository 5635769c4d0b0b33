#pragma once

#include "OXMTaskInfo.h"
#include "OXMenum.h"

#include <algorithm>
#include <atomic>
#include <cstdint>
#include <thread>
#include <vector>

// The loops over voxel buffers that the heavy actions share: a parallel loop with progress and
// abort, and the dispatch from a component type to its C++ type.
namespace OXMSampleLoops {

constexpr long long ChunkVoxels = 1 << 20;

// Runs work(worker, begin, end) over [0, n) in chunks of ChunkVoxels: worker 0 on the calling
// thread, the others on their own threads. Each worker takes the next chunk nobody has taken
// yet, so a worker that gets less of the processor than the others (the machine is shared)
// holds nobody up; which chunks a worker gets differs from run to run. The calling thread
// reports the progress from p0 to p1 to the task after each of its chunks and once more at the
// end. Every worker stops at its next chunk when the task is asked to abort. False when
// aborted.
template <typename Work>
bool runParallel(long long n, int threads, OXMTaskInfo* task, float p0, float p1, Work&& work)
{
    const long long chunks = (n + ChunkVoxels - 1) / ChunkVoxels;
    threads = int(std::max(1LL, std::min<long long>(threads, chunks)));
    std::atomic<long long> next{0};
    std::atomic<long long> done{0};
    const auto report = [&] {
        if (task && n > 0)
            task->setProgress(p0 + (p1 - p0) * float(double(done.load()) / double(n)));
    };
    auto take = [&](int worker) {
        for (;;) {
            if (task && task->isAbortRequested())
                return;
            const long long b = next.fetch_add(1) * ChunkVoxels;
            if (b >= n)
                return;
            const long long e = std::min(n, b + ChunkVoxels);
            work(worker, b, e);
            done.fetch_add(e - b, std::memory_order_relaxed);
            if (worker == 0)
                report();
        }
    };
    std::vector<std::thread> others;
    for (int w = 1; w < threads; ++w)
        others.emplace_back(take, w);
    take(0);
    // Once worker 0 finds no chunk left, the others finish at most the one they hold.
    for (std::thread& t : others)
        t.join();
    report();
    return !(task && task->isAbortRequested());
}

// Calls f(T()) with the C++ type of a component type (OXM::UInt8 ... OXM::Float64); false, and
// f is not called, for any other type.
template <typename F>
bool forComponentType(OXMenum type, F&& f)
{
    if (type == OXM::UInt8)
        f(std::uint8_t());
    else if (type == OXM::Int8)
        f(std::int8_t());
    else if (type == OXM::UInt16)
        f(std::uint16_t());
    else if (type == OXM::Int16)
        f(std::int16_t());
    else if (type == OXM::UInt32)
        f(std::uint32_t());
    else if (type == OXM::Int32)
        f(std::int32_t());
    else if (type == OXM::Float32)
        f(float());
    else if (type == OXM::Float64)
        f(double());
    else
        return false;
    return true;
}

} // namespace OXMSampleLoops
