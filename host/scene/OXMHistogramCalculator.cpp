#include "OXMHistogramCalculator.h"

#include "OXMSampleGrid.h"
#include "OXMTaskInfo.h"
#include "OXMTypeInfo.h"

#include <algorithm>
#include <atomic>
#include <chrono>
#include <cmath>
#include <limits>
#include <new>
#include <thread>

namespace {

constexpr long long ChunkVoxels = 1 << 20;

// Runs work(worker, begin, end) over [0, n) in chunks: worker 0 on the calling thread (which
// also reports progress from p0 to p1), the others on their own threads. False when aborted.
template <typename Work>
bool runParallel(long long n, int threads, OXMTaskInfo* task, float p0, float p1, Work&& work)
{
    threads = std::max(1, std::min<int>(threads, int((n + ChunkVoxels - 1) / ChunkVoxels)));
    std::atomic<long long> done{0};
    std::atomic<int> running{threads - 1};
    auto range = [&](int worker) {
        const long long begin = n * worker / threads;
        const long long end = n * (worker + 1) / threads;
        for (long long b = begin; b < end; b += ChunkVoxels) {
            if (task && task->isAbortRequested())
                return;
            const long long e = std::min(end, b + ChunkVoxels);
            work(worker, b, e);
            done.fetch_add(e - b, std::memory_order_relaxed);
            if (worker == 0 && task && n > 0)
                task->setProgress(p0 + (p1 - p0) * float(double(done.load()) / double(n)));
        }
    };
    std::vector<std::thread> others;
    for (int w = 1; w < threads; ++w)
        others.emplace_back([&, w] {
            range(w);
            running.fetch_sub(1);
        });
    range(0);
    while (running.load() > 0) {
        std::this_thread::sleep_for(std::chrono::milliseconds(2));
        if (task && n > 0)
            task->setProgress(p0 + (p1 - p0) * float(double(done.load()) / double(n)));
    }
    for (std::thread& t : others)
        t.join();
    return !(task && task->isAbortRequested());
}

template <typename T>
struct Sampler
{
    const T* data;
    int stride;
    int component;
    T at(long long i) const { return data[i * stride + component]; }
};

// Smallest and largest counted value (NaN skipped); false when nothing was counted.
template <typename T>
bool findRange(const OXMHistogramCalculator::Input& in, OXMTaskInfo* task, float p1, double& lo,
               double& hi, bool& aborted)
{
    const Sampler<T> s{static_cast<const T*>(in.data), in.componentsPerVoxel, in.component};
    const int threads = std::max(1, in.threadCount);
    std::vector<double> los(std::size_t(threads), std::numeric_limits<double>::infinity());
    std::vector<double> his(std::size_t(threads), -std::numeric_limits<double>::infinity());
    aborted =
        !runParallel(in.voxelCount, threads, task, 0.0f, p1, [&](int w, long long b, long long e) {
            double l = los[std::size_t(w)], h = his[std::size_t(w)];
            for (long long i = b; i < e; ++i) {
                if (in.mask && !in.mask[i])
                    continue;
                const double v = double(s.at(i));
                if (v < l)
                    l = v;
                if (v > h)
                    h = v;
            }
            los[std::size_t(w)] = l;
            his[std::size_t(w)] = h;
        });
    lo = *std::min_element(los.begin(), los.end());
    hi = *std::max_element(his.begin(), his.end());
    return lo <= hi;
}

// Integer data of a small type: one table over the type's whole range, then trimmed.
template <typename T>
OXMenum countSmall(const OXMHistogramCalculator::Input& in, OXMHistogramCalculator::Output& out,
                   OXMTaskInfo* task)
{
    constexpr int Offset =
        std::numeric_limits<T>::min() < 0 ? -int(std::numeric_limits<T>::min()) : 0;
    constexpr std::size_t Size = std::size_t(1) << (8 * sizeof(T));
    const int threads = std::max(1, in.threadCount);
    // Per worker: two interleaved 32-bit tables (they break the dependency between equal
    // neighbouring values) flushed into a 64-bit table before they could overflow.
    struct Tables
    {
        std::vector<std::uint32_t> a, b;
        std::vector<std::uint64_t> total;
        long long pending = 0;
        void flush()
        {
            for (std::size_t k = 0; k < a.size(); ++k) {
                total[k] += std::uint64_t(a[k]) + b[k];
                a[k] = b[k] = 0;
            }
            pending = 0;
        }
    };
    std::vector<Tables> tables(static_cast<std::size_t>(threads));
    try {
        for (Tables& t : tables) {
            t.a.assign(Size, 0);
            t.b.assign(Size, 0);
            t.total.assign(Size, 0);
        }
    } catch (const std::bad_alloc&) {
        return OXM::OutOfMemory;
    }
    const T* data = static_cast<const T*>(in.data);
    const int stride = in.componentsPerVoxel;
    const int comp = in.component;
    const bool ok =
        runParallel(in.voxelCount, threads, task, 0.0f, 1.0f, [&](int w, long long b, long long e) {
            Tables& t = tables[std::size_t(w)];
            if (t.pending + (e - b) > (1LL << 31))
                t.flush();
            t.pending += e - b;
            std::uint32_t* ta = t.a.data();
            std::uint32_t* tb = t.b.data();
            const std::uint8_t* m = in.mask;
            long long i = b;
            if (stride == 1 && !m) {
                for (; i + 1 < e; i += 2) {
                    ++ta[std::size_t(int(data[i]) + Offset)];
                    ++tb[std::size_t(int(data[i + 1]) + Offset)];
                }
                for (; i < e; ++i)
                    ++ta[std::size_t(int(data[i]) + Offset)];
            } else if (stride == 1) {
                for (; i + 1 < e; i += 2) {
                    ta[std::size_t(int(data[i]) + Offset)] += (m[i] != 0);
                    tb[std::size_t(int(data[i + 1]) + Offset)] += (m[i + 1] != 0);
                }
                for (; i < e; ++i)
                    ta[std::size_t(int(data[i]) + Offset)] += (m[i] != 0);
            } else {
                for (; i < e; ++i)
                    ta[std::size_t(int(data[i * stride + comp]) + Offset)] += m ? (m[i] != 0) : 1u;
            }
        });
    for (Tables& t : tables)
        t.flush();
    if (!ok)
        return OXM::Abort;
    std::vector<std::uint64_t>& total = tables[0].total;
    for (int w = 1; w < threads; ++w)
        for (std::size_t k = 0; k < Size; ++k)
            total[k] += tables[std::size_t(w)].total[k];
    std::size_t lo = 0, hi = Size;
    while (lo < Size && total[lo] == 0)
        ++lo;
    while (hi > lo && total[hi - 1] == 0)
        --hi;
    OXMHistogramCalculator::Output r;
    if (lo == Size) {
        r.first = 0;
        r.counts.assign(1, 0.0f);
    } else {
        r.first = int(lo) - Offset;
        r.counts.resize(hi - lo);
        for (std::size_t k = lo; k < hi; ++k) {
            r.counts[k - lo] = float(total[k]);
            r.counted += (long long)total[k];
        }
    }
    r.dataLow = float(r.first);
    r.dataHigh = float(r.first + int(r.counts.size()) - 1);
    out = std::move(r);
    return OXM::NoError;
}

// 32-bit integers and floating-point data: range first, then counting.
template <typename T>
OXMenum countTwoPass(const OXMHistogramCalculator::Input& in, OXMHistogramCalculator::Output& out,
                     OXMTaskInfo* task)
{
    constexpr bool IsFloat = std::is_floating_point<T>::value;
    double lo = 0.0, hi = 0.0;
    bool aborted = false;
    const bool any = findRange<T>(in, task, 0.5f, lo, hi, aborted);
    if (aborted)
        return OXM::Abort;
    OXMHistogramCalculator::Output r;
    if (!any) {
        r.counts.assign(IsFloat ? std::size_t(std::max(1, in.binCount)) : 1u, 0.0f);
        r.dataHigh = IsFloat ? 0.0f : 0.0f;
        out = std::move(r);
        return OXM::NoError;
    }
    long long bins = 0;
    double scale = 0.0;
    if constexpr (IsFloat) {
        if (in.binCount < 1)
            return OXM::InvalidValue;
        bins = in.binCount;
        scale = hi > lo ? double(bins - 1) / (hi - lo) : 0.0;
        r.first = 0;
        r.dataLow = float(lo);
        r.dataHigh = float(hi);
    } else {
        bins = (long long)(hi - lo) + 1;
        if (bins > OXMHistogramCalculator::MaxIntegerBins)
            return OXM::InvalidValue;
        r.first = int(lo);
        r.dataLow = float(lo);
        r.dataHigh = float(hi);
    }
    const int threads = std::max(1, in.threadCount);
    std::vector<std::vector<std::uint64_t>> tables;
    try {
        tables.assign(std::size_t(threads), std::vector<std::uint64_t>(std::size_t(bins), 0));
    } catch (const std::bad_alloc&) {
        return OXM::OutOfMemory;
    }
    const Sampler<T> s{static_cast<const T*>(in.data), in.componentsPerVoxel, in.component};
    const bool ok =
        runParallel(in.voxelCount, threads, task, 0.5f, 1.0f, [&](int w, long long b, long long e) {
            std::vector<std::uint64_t>& t = tables[std::size_t(w)];
            for (long long i = b; i < e; ++i) {
                if (in.mask && !in.mask[i])
                    continue;
                const T v = s.at(i);
                long long k;
                if constexpr (IsFloat) {
                    if (std::isnan(v))
                        continue;
                    k = (long long)std::floor((double(v) - lo) * scale + 0.5);
                    k = std::min(std::max(k, 0LL), bins - 1);
                } else {
                    k = (long long)v - (long long)lo;
                }
                ++t[std::size_t(k)];
            }
        });
    if (!ok)
        return OXM::Abort;
    r.counts.assign(std::size_t(bins), 0.0f);
    for (long long k = 0; k < bins; ++k) {
        std::uint64_t c = 0;
        for (const auto& t : tables)
            c += t[std::size_t(k)];
        r.counts[std::size_t(k)] = float(c);
        r.counted += (long long)c;
    }
    out = std::move(r);
    return OXM::NoError;
}

} // namespace

OXMenum OXMHistogramCalculator::calculate(const Input& in, Output& out, OXMTaskInfo* task)
{
    if ((!in.data && in.voxelCount > 0) || in.voxelCount < 0 || in.componentsPerVoxel < 1 ||
        in.component < 0 || in.component >= in.componentsPerVoxel)
        return OXM::InvalidValue;
    const OXMenum t = in.componentType;
    if (t == OXM::UInt8)
        return countSmall<std::uint8_t>(in, out, task);
    if (t == OXM::Int8)
        return countSmall<std::int8_t>(in, out, task);
    if (t == OXM::UInt16)
        return countSmall<std::uint16_t>(in, out, task);
    if (t == OXM::Int16)
        return countSmall<std::int16_t>(in, out, task);
    if (t == OXM::UInt32)
        return countTwoPass<std::uint32_t>(in, out, task);
    if (t == OXM::Int32)
        return countTwoPass<std::int32_t>(in, out, task);
    if (t == OXM::Float32)
        return countTwoPass<float>(in, out, task);
    if (t == OXM::Float64)
        return countTwoPass<double>(in, out, task);
    return OXM::InvalidValue;
}

bool OXMHistogramCalculator::makeInput(const OXMSampleGrid& grid, OXMenum channel, Input& input)
{
    const OXMTypeInfo type = grid.getDataType();
    const OXMTypeInfo::Channel* c = type.getChannel(channel);
    if (!c || !grid.getData())
        return false;
    int index = 0;
    for (; index < type.getChannelCount(); ++index)
        if (type.getChannel(index) == c)
            break;
    input.data = grid.getData();
    input.componentType = c->getDataType();
    input.componentsPerVoxel = type.getChannelCount();
    input.component = index;
    input.voxelCount = grid.getVoxelCount();
    return true;
}
