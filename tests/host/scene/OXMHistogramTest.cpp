// Histograms of volumes and regions against counts of their own: every integer type with one bin
// per value, floating-point and wide data with bins spread over their finite values; the
// calculation's threads, progress, abort and check.

#include "OXMHistogram.h"
#include "OXMAction.h"
#include "OXMHistogramCalculator.h"
#include "OXMHistogramResult.h"
#include "OXMObjectPtr.h"
#include "OXMRegionOfInterest.h"
#include "OXMSampleGrid.h"
#include "OXMSceneNames.h"
#include "OXMVolumeRenderObject.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <limits>
#include <map>
#include <random>
#include <vector>

namespace {

using Counts = std::map<int, long long>;

template <typename T>
std::vector<T> randomSamples(std::size_t n, int lo, int hi, unsigned seed)
{
    std::mt19937 rng(seed);
    std::uniform_int_distribution<int> dist(lo, hi);
    std::vector<T> v(n);
    for (T& x : v)
        x = T(dist(rng));
    return v;
}

// A volume of one row of the samples (held by the caller).
template <typename T>
OXMVolumeRenderObject* row(OXMenum type, const std::vector<T>& samples, int channels = 1)
{
    auto* grid = new OXMSampleGrid;
    EXPECT_TRUE(grid->setSamples({int(samples.size()) / channels, 1, 1}, type, samples));
    return OXMVolumeRenderObject::create(grid);
}

// The histogram's bins read through the generic array interface, as a client does, without the
// empty ones; the first and last index in first and last.
Counts readHistogram(const OXMObject* result, int& first, int& last)
{
    Counts bins;
    auto* a = OXMValueArrayPropertyIF<float>::getInterface(
        result->getProperty(OXMenum::find("Histogram")));
    if (!a || !a->getArrayIndexRange(first, last))
        return bins;
    std::vector<float> v(std::size_t(last - first + 1));
    if (!a->getArrayItems(first, last, v.data()))
        return bins;
    for (int k = first; k <= last; ++k)
        if (v[std::size_t(k - first)] != 0.0f)
            bins[k] = (long long)v[std::size_t(k - first)];
    return bins;
}

// Calculates the histogram and compares it with the expected counts, which span it.
void expectCounts(OXMHistogram* h, const Counts& expected)
{
    ASSERT_TRUE(h && h->execute(OXM::Calculate));
    int first = 0, last = 0;
    EXPECT_EQ(readHistogram(h->getResult(), first, last), expected);
    EXPECT_EQ(first, expected.begin()->first);
    EXPECT_EQ(last, expected.rbegin()->first);
}

// The histogram of a row of voxels against a count of its own: every finite value in its bin (its
// own, or one of the evenly spread bins over the finite values: 256 or binCount) and nothing else;
// "DataRange" from the smallest to the largest finite value.
template <typename T>
void expectExactCounts(OXMenum type, const std::vector<T>& samples, bool binPerValue,
                       int threads = 2, int binCount = 0)
{
    OXMObjectPtr volume(row(type, samples));
    OXMHistogram* h = static_cast<OXMVolumeRenderObject*>(volume.get())->getHistogram();
    h->setThreadCount(threads);
    if (binCount) {
        ASSERT_TRUE(h->setValue(OXMSceneNames::binCount(), binCount));
    }
    std::vector<double> finite;
    for (T s : samples)
        if (std::isfinite(double(s)))
            finite.push_back(double(s));
    const double lo = *std::min_element(finite.begin(), finite.end());
    const double hi = *std::max_element(finite.begin(), finite.end());
    const int last = (binCount ? binCount : 256) - 1;
    using Wide = long double; // no overflow of hi - lo for any doubles
    const Wide scale = hi > lo ? Wide(last) / (Wide(hi) - lo) : 0.0L;
    Counts brute;
    for (double v : finite)
        ++brute[binPerValue ? int(v) : int(std::floor((Wide(v) - lo) * scale + 0.5L))];
    ASSERT_TRUE(h->execute(OXM::Calculate));
    int first = 0, end = 0;
    EXPECT_EQ(readHistogram(h->getResult(), first, end), brute);
    EXPECT_EQ(end - first, binPerValue ? int(hi - lo) : last);
    const double most = std::numeric_limits<float>::max(); // "DataRange" saturates
    const auto value = [most](double v) { return float(std::clamp(v, -most, most)); };
    EXPECT_EQ(h->getResult()->getDataRange(), std::make_pair(value(lo), value(hi)));
}

} // namespace

TEST(OXMHistogram, IntegerTypesMatchBruteForceCounts)
{
    const std::size_t n = 37 * 29 * 23;
    expectExactCounts(OXM::UInt8, randomSamples<std::uint8_t>(n, 3, 250, 7), true);
    expectExactCounts(OXM::Int8, randomSamples<std::int8_t>(n, -100, 90, 7), true);
    expectExactCounts(OXM::UInt16, randomSamples<std::uint16_t>(n, 1000, 4000, 7), true);
    expectExactCounts(OXM::Int16, randomSamples<std::int16_t>(n, -1024, 3071, 7), true, 1);
    expectExactCounts(OXM::Int32, randomSamples<std::int32_t>(n, -5000, 70000, 7), true);
    expectExactCounts(OXM::UInt32, randomSamples<std::uint32_t>(n, 100000, 100500, 7), true);
    // 32-bit data wider than the bins keep their full range.
    const std::int32_t min = std::numeric_limits<std::int32_t>::min();
    const std::int32_t max = std::numeric_limits<std::int32_t>::max();
    expectExactCounts<std::uint32_t>(OXM::UInt32, {0u, 7u, 2147483648u, 4294967295u}, false);
    expectExactCounts<std::uint32_t>(OXM::UInt32, {2147483645u, 2147483650u, 2147483647u}, false);
    expectExactCounts<std::int32_t>(OXM::Int32, {min, -1, 0, max, 5}, false);
    expectExactCounts<std::int32_t>(OXM::Int32, {min + 4, min, min + 1}, false);
    expectExactCounts<std::int32_t>(OXM::Int32, {min + 3, min + 1}, true);
    expectExactCounts<std::int32_t>(OXM::Int32, {max - 4, max - 1, max - 1}, true);
}

TEST(OXMHistogram, FloatingPointDataGetBinsOverTheirFiniteValues)
{
    const float inf = std::numeric_limits<float>::infinity();
    const float nan = std::numeric_limits<float>::quiet_NaN();
    std::vector<float> samples(8000);
    std::mt19937 rng(5);
    std::uniform_real_distribution<float> dist(-2.5f, 7.5f);
    for (float& f : samples)
        f = dist(rng);
    samples[0] = -2.5f;
    samples[1] = 7.5f;
    samples[2] = nan;
    expectExactCounts(OXM::Float32, samples, false, 2, 100);
    expectExactCounts<float>(OXM::Float32, {-1.5f, inf, 0.25f, 3.0f, 2.0f}, false);
    expectExactCounts<float>(OXM::Float32, {-inf, 7.0f, nan, -2.0f, inf, 7.0f}, false);
    expectExactCounts<double>(OXM::Float64, {double(nan), -1e300, double(-inf), 1e300}, false);
    const double max = std::numeric_limits<double>::max();
    expectExactCounts<double>(OXM::Float64, {-max, max / 3, max, -1.0}, false);
}

TEST(OXMHistogram, TwoWorkersCountAsOneAndAMaskCountsOnlyItsVoxels)
{
    // More than one chunk per worker.
    const auto samples = randomSamples<std::uint16_t>(128 * 128 * 160, 0, 4095, 3);
    OXMHistogramCalculator::Input in;
    in.data = samples.data();
    in.componentType = OXM::UInt16;
    in.voxelCount = (long long)samples.size();
    OXMHistogramCalculator::Output one, two;
    in.threadCount = 1;
    ASSERT_EQ(OXMHistogramCalculator::calculate(in, one), OXM::NoError);
    in.threadCount = 2;
    ASSERT_EQ(OXMHistogramCalculator::calculate(in, two), OXM::NoError);
    EXPECT_EQ(one.first, two.first);
    EXPECT_EQ(one.counts, two.counts);
    EXPECT_EQ(two.counted, (long long)samples.size());

    std::vector<std::uint8_t> mask(samples.size());
    std::vector<float> brute(4096, 0.0f);
    for (std::size_t i = 0; i < mask.size(); ++i) {
        mask[i] = std::uint8_t((i * 7919) % 5 == 0 ? 3 : 0);
        brute[samples[i]] += mask[i] ? 1.0f : 0.0f;
    }
    in.mask = mask.data();
    ASSERT_EQ(OXMHistogramCalculator::calculate(in, two), OXM::NoError);
    EXPECT_TRUE(std::equal(two.counts.begin(), two.counts.end(), brute.begin() + two.first));
}

TEST(OXMHistogram, ARegionCountsOnlyItsVoxelsAndColourDataTheirFirstChannel)
{
    const auto samples = randomSamples<std::uint16_t>(4096, 0, 999, 11);
    auto* grid = new OXMSampleGrid;
    ASSERT_TRUE(grid->setSamples({16, 16, 16}, OXM::UInt16, samples));
    OXMObjectPtr volume(OXMVolumeRenderObject::create(grid));
    auto* v = static_cast<OXMVolumeRenderObject*>(volume.get());
    std::vector<std::uint8_t> mask(4096, 0);
    Counts brute;
    for (std::size_t i = 0; i < mask.size(); ++i)
        if (i % 3 == 0 || samples[i] > 900) {
            mask[i] = 1;
            ++brute[samples[i]];
        }
    auto* roi = new OXMRegionOfInterest;
    roi->setMask(mask);
    ASSERT_TRUE(v->appendLink(OXM::RegionOfInterestList, OXMObjectLink(roi)));
    EXPECT_EQ(roi->getVolume(), v);
    ASSERT_TRUE(roi->execute(OXM::Init));
    expectCounts(roi->getHistogram(), brute);
    // Colour data use their first channel.
    std::vector<std::uint8_t> rgb(6 * 6 * 6 * 3);
    brute.clear();
    for (std::size_t i = 0; i < rgb.size(); ++i) {
        rgb[i] = std::uint8_t((i * 37) % 200);
        if (i % 3 == 0)
            ++brute[rgb[i]];
    }
    OXMObjectPtr colour(row(OXM::Rgb8, rgb, 3));
    v = static_cast<OXMVolumeRenderObject*>(colour.get());
    EXPECT_EQ(v->getSampleGrid()->getDefaultChannel(), OXM::Red);
    EXPECT_EQ(v->getHistogram(OXM::Gray), nullptr);
    expectCounts(v->getHistogram(OXM::Red), brute);
}

// The check answers whether the data changed since the last result (OXM::Running while it runs);
// the progress rises to 1; an abort keeps the previous result.
TEST(OXMHistogram, TheCheckFollowsTheDataAndAnAbortKeepsThePreviousResult)
{
    const OXMVector3<int> dims(128, 128, 128); // two chunks per worker
    const auto samples = [](int lo, unsigned seed) {
        return randomSamples<std::uint16_t>(128 * 128 * 128, lo, lo + 99, seed);
    };
    auto* grid = new OXMSampleGrid;
    ASSERT_TRUE(grid->setSamples(dims, OXM::UInt16, samples(0, 4)));
    OXMObjectPtr volume(OXMVolumeRenderObject::create(grid));
    OXMHistogram* h = static_cast<OXMVolumeRenderObject*>(volume.get())->getHistogram();
    const auto needed = [h](OXMenum expectedCode) {
        OXMenum code(-1);
        return h->checkExecute(OXM::Calculate, nullptr, &code) && code == expectedCode;
    };
    EXPECT_TRUE(needed(OXM::NoError));
    std::vector<float> progress;
    bool sawRunning = false;
    auto previous = OXMTaskInfo::setProgressHandler([&](const OXMTaskInfo&, float p) {
        progress.push_back(p);
        sawRunning = sawRunning || needed(OXM::Running);
    });
    ASSERT_TRUE(h->execute(OXM::Calculate));
    EXPECT_TRUE(sawRunning);
    ASSERT_FALSE(progress.empty());
    EXPECT_FLOAT_EQ(progress.back(), 1.0f);
    EXPECT_TRUE(std::is_sorted(progress.begin(), progress.end()));
    OXMenum code(-1);
    EXPECT_FALSE(h->checkExecute(OXM::Calculate, nullptr, &code));
    EXPECT_EQ(code, OXM::NoError);
    const std::vector<float> before = h->getResult()->getCounts();

    ASSERT_TRUE(grid->setSamples(dims, OXM::UInt16, samples(500, 5)));
    EXPECT_TRUE(needed(OXM::NoError));
    OXMTaskInfo::setProgressHandler([&](const OXMTaskInfo&, float p) {
        if (p > 0.0f)
            h->getAction(OXM::Calculate)->getTaskInfo()->requestAbort();
    });
    EXPECT_FALSE(h->execute(OXM::Calculate));
    EXPECT_EQ(h->getAction(OXM::Calculate)->getErrorCode(), OXM::Abort);
    EXPECT_EQ(h->getResult()->getCounts(), before);
    EXPECT_EQ(h->getResult()->getFirstIndex(), 0);
    EXPECT_TRUE(h->checkExecute(OXM::Calculate, nullptr, &code));
    OXMTaskInfo::setProgressHandler(previous);
    ASSERT_TRUE(h->execute(OXM::Calculate));
    EXPECT_EQ(h->getResult()->getFirstIndex(), 500);
}
