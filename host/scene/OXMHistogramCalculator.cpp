#include "OXMHistogramCalculator.h"

#include "OXMSampleGrid.h"
#include "OXMSampleLoops.h"
#include "OXMTaskInfo.h"
#include "OXMTypeInfo.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <new>
#include <type_traits>

namespace {

using OXMSampleLoops::runParallel;

template <typename T>
struct Sampler
{
    const T* data;
    int stride;
    int component;
    T at(long long i) const { return data[i * stride + component]; }
};

// Whether a voxel's value is counted: every integer, and every finite floating-point value.
template <typename T>
bool isCounted(T v)
{
    if constexpr (std::is_floating_point<T>::value)
        return std::isfinite(v);
    else
        return true;
}

// Smallest and largest counted value; false when nothing was counted.
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
                if ((in.mask && !in.mask[i]) || !isCounted(s.at(i)))
                    continue;
                const double v = double(s.at(i));
                l = std::min(l, v);
                h = std::max(h, v);
            }
            los[std::size_t(w)] = l;
            his[std::size_t(w)] = h;
        });
    lo = *std::min_element(los.begin(), los.end());
    hi = *std::max_element(his.begin(), his.end());
    return lo <= hi;
}

// The per-worker tables of a small integer type: Lanes interleaved 32-bit sub-tables, entry
// (value + offset) * Lanes + lane. Voxel i counts in lane i % Lanes, so a run of equal values
// increments Lanes different counters in turn instead of waiting for its own last increment.
// Buffers of 2^31 voxels or more also get a 64-bit table, into which the lanes are emptied
// before they could overflow.
template <typename T>
struct LaneTables
{
    static constexpr int Lanes = 4;
    static constexpr int Offset =
        std::numeric_limits<T>::min() < 0 ? -int(std::numeric_limits<T>::min()) : 0;
    static constexpr std::size_t Size = std::size_t(1) << (8 * sizeof(T));
    static constexpr long long FlushAfter = 1LL << 31;

    std::vector<std::uint32_t> lanes;
    std::vector<std::uint64_t> total;
    long long pending = 0;

    static std::size_t entry(T v) { return std::size_t(int(v) + Offset) * Lanes; }

    std::uint64_t drain(std::size_t k)
    {
        std::uint64_t sum = 0;
        for (int l = 0; l < Lanes; ++l) {
            sum += lanes[k * Lanes + std::size_t(l)];
            lanes[k * Lanes + std::size_t(l)] = 0;
        }
        return sum;
    }

    // Makes room for `count` more voxels.
    void reserve(long long count)
    {
        if (pending + count > FlushAfter) {
            for (std::size_t k = 0; k < Size; ++k)
                total[k] += drain(k);
            pending = 0;
        }
        pending += count;
    }

    // Adds weight(i) for every voxel i of [b, e) whose value is at(i).
    template <typename At, typename Weight>
    void add(long long b, long long e, At at, Weight weight)
    {
        std::uint32_t* t = lanes.data();
        long long i = b;
        static_assert(Lanes == 4, "the loop is written out for four lanes");
        for (; i + Lanes <= e; i += Lanes) {
            t[entry(at(i))] += weight(i);
            t[entry(at(i + 1)) + 1] += weight(i + 1);
            t[entry(at(i + 2)) + 2] += weight(i + 2);
            t[entry(at(i + 3)) + 3] += weight(i + 3);
        }
        for (; i < e; ++i)
            t[entry(at(i))] += weight(i);
    }
};

// Counts [b, e) into the tables, every voxel or only those in the mask.
template <typename T, typename At>
void countWith(LaneTables<T>& tables, long long b, long long e, At at, const std::uint8_t* mask)
{
    if (mask)
        tables.add(b, e, at, [mask](long long i) { return std::uint32_t(mask[i] != 0); });
    else
        tables.add(b, e, at, [](long long) { return 1u; });
}

// Counts [b, e) into the tables, with a loop of its own for data of one component per voxel.
template <typename T>
void countChunk(const OXMHistogramCalculator::Input& in, long long b, long long e,
                LaneTables<T>& tables)
{
    tables.reserve(e - b);
    const T* data = static_cast<const T*>(in.data);
    if (in.componentsPerVoxel == 1) {
        countWith(
            tables, b, e, [data](long long i) { return data[i]; }, in.mask);
        return;
    }
    const Sampler<T> s{data, in.componentsPerVoxel, in.component};
    countWith(
        tables, b, e, [s](long long i) { return s.at(i); }, in.mask);
}

// Integer data of a small type: one table over the type's whole range, then trimmed.
template <typename T>
OXMenum countSmall(const OXMHistogramCalculator::Input& in, OXMHistogramCalculator::Output& out,
                   OXMTaskInfo* task)
{
    using Tables = LaneTables<T>;
    constexpr std::size_t Size = Tables::Size;
    const int threads = std::max(1, in.threadCount);
    std::vector<Tables> tables(static_cast<std::size_t>(threads));
    try {
        for (Tables& t : tables) {
            t.lanes.assign(Size * Tables::Lanes, 0);
            if (in.voxelCount > Tables::FlushAfter)
                t.total.assign(Size, 0);
        }
    } catch (const std::bad_alloc&) {
        return OXM::OutOfMemory;
    }
    const bool ok =
        runParallel(in.voxelCount, threads, task, 0.0f, 1.0f, [&](int w, long long b, long long e) {
            countChunk(in, b, e, tables[std::size_t(w)]);
        });
    if (!ok)
        return OXM::Abort;
    std::vector<std::uint64_t> total(Size, 0);
    for (Tables& t : tables)
        for (std::size_t k = 0; k < Size; ++k)
            total[k] += t.drain(k) + (t.total.empty() ? 0 : t.total[k]);
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
        r.first = int(lo) - Tables::Offset;
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

// A value of the data as "DataRange" holds it: doubles beyond the float range saturate.
float rangeValue(double v)
{
    const double m = double(std::numeric_limits<float>::max());
    return float(std::min(std::max(v, -m), m));
}

// Where the counted values [lo, hi] go: one bin per integer value, indexed by the value, when
// they lie strictly inside the int range (so the interval border below the first bin and a
// loop up to the last bin are ints too) and span at most MaxIntegerBins; otherwise `count`
// bins from index 0 whose centres run evenly from lo to hi. Halving keeps every difference of
// finite doubles finite and is exact, so a value v goes to floor((v - lo) * (count - 1) /
// (hi - lo) + 0.5) even when hi - lo overflows.
struct Bins
{
    bool perValue = false;
    long long count = 0;
    double lo = 0.0;
    double halfLo = 0.0;
    double scale = 0.0; // bins per half unit

    Bins(bool integer, double low, double high, int binCount) : lo(low), halfLo(low * 0.5)
    {
        perValue = integer && low > double(std::numeric_limits<int>::min()) &&
                   high < double(std::numeric_limits<int>::max()) &&
                   high - low < double(OXMHistogramCalculator::MaxIntegerBins);
        count = perValue ? (long long)(high - low) + 1 : binCount;
        if (!perValue && high > low)
            scale = double(count - 1) / (high * 0.5 - halfLo);
    }

    std::size_t of(double v) const
    {
        if (perValue)
            return std::size_t(v - lo);
        const double t = (v * 0.5 - halfLo) * scale + 0.5;
        return std::size_t(std::min(std::max(t, 0.0), double(count - 1))); // t >= 0: floor
    }
};

// Counts every counted voxel into its bin, one table per worker, and adds the tables up.
template <typename T>
OXMenum countInto(const Bins& bins, const OXMHistogramCalculator::Input& in, OXMTaskInfo* task,
                  std::vector<float>& counts, long long& counted)
{
    const int threads = std::max(1, in.threadCount);
    std::vector<std::vector<std::uint64_t>> tables;
    try {
        tables.assign(std::size_t(threads), std::vector<std::uint64_t>(std::size_t(bins.count)));
    } catch (const std::bad_alloc&) {
        return OXM::OutOfMemory;
    }
    const Sampler<T> s{static_cast<const T*>(in.data), in.componentsPerVoxel, in.component};
    const bool ok =
        runParallel(in.voxelCount, threads, task, 0.5f, 1.0f, [&](int w, long long b, long long e) {
            std::vector<std::uint64_t>& t = tables[std::size_t(w)];
            for (long long i = b; i < e; ++i) {
                const T v = s.at(i);
                if ((!in.mask || in.mask[i]) && isCounted(v))
                    ++t[bins.of(double(v))];
            }
        });
    if (!ok)
        return OXM::Abort;
    counts.assign(std::size_t(bins.count), 0.0f);
    for (std::size_t k = 0; k < counts.size(); ++k) {
        std::uint64_t c = 0;
        for (const auto& t : tables)
            c += t[k];
        counts[k] = float(c);
        counted += (long long)c;
    }
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
        out = std::move(r);
        return OXM::NoError;
    }
    const Bins bins(!IsFloat, lo, hi, in.binCount);
    if (bins.count < 1)
        return OXM::InvalidValue;
    r.first = bins.perValue ? int(lo) : 0;
    r.dataLow = rangeValue(lo);
    r.dataHigh = rangeValue(hi);
    const OXMenum code = countInto<T>(bins, in, task, r.counts, r.counted);
    if (code == OXM::NoError)
        out = std::move(r);
    return code;
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
