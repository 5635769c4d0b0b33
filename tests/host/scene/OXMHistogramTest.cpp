#include "OXMHistogram.h"
#include "OXMAction.h"
#include "OXMHistogramCalculator.h"
#include "OXMHistogramResult.h"
#include "OXMObjectPtr.h"
#include "OXMRegionOfInterest.h"
#include "OXMSampleGrid.h"
#include "OXMSampleTransferSpec.h"
#include "OXMSceneNames.h"
#include "OXMScenePhantom.h"
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

// The volume's first histogram after a successful Calculate.
OXMHistogramResult* calculate(OXMObject& owner)
{
    auto* volume = dynamic_cast<OXMVolumeRenderObject*>(&owner);
    auto* roi = dynamic_cast<OXMRegionOfInterest*>(&owner);
    OXMHistogram* h = volume ? volume->getHistogram() : roi->getHistogram();
    if (!h || !h->execute(OXM::Calculate))
        return nullptr;
    return h->getResult();
}

// Reads "Histogram" through the generic array interface, as a client does.
std::map<int, float> readHistogram(OXMObject* result, int& first, int& last)
{
    std::map<int, float> bins;
    auto* a = OXMValueArrayPropertyIF<float>::getInterface(
        result->getProperty(OXMenum::find("Histogram")));
    if (!a || !a->getArrayIndexRange(first, last))
        return bins;
    std::vector<float> v(std::size_t(last - first + 1));
    if (!a->getArrayItems(first, last, v.data()))
        return bins;
    for (int k = first; k <= last; ++k)
        bins[k] = v[std::size_t(k - first)];
    return bins;
}

template <typename T>
void expectIntegerHistogram(OXMenum type, int lo, int hi, int threads)
{
    const OXMVector3<int> dims(37, 29, 23);
    const auto samples = randomSamples<T>(std::size_t(dims.x * dims.y * dims.z), lo, hi, 7);
    auto* grid = new OXMSampleGrid;
    ASSERT_TRUE(grid->setSamples(dims, type, samples));
    OXMObjectPtr volume(OXMVolumeRenderObject::create(grid, "v"));
    static_cast<OXMVolumeRenderObject*>(volume.get())->getHistogram()->setThreadCount(threads);
    OXMHistogramResult* r = calculate(*volume);
    ASSERT_NE(r, nullptr);
    std::map<int, long long> brute;
    for (T s : samples)
        ++brute[int(s)];
    int first = 0, last = 0;
    const auto bins = readHistogram(r, first, last);
    EXPECT_EQ(first, brute.begin()->first);
    EXPECT_EQ(last, brute.rbegin()->first);
    for (int k = first; k <= last; ++k)
        EXPECT_EQ((long long)bins.at(k), brute.count(k) ? brute[k] : 0) << k;
    const auto range = r->getDataRange();
    EXPECT_EQ(range.first, float(first));
    EXPECT_EQ(range.second, float(last));
}

// The histogram of a row of voxels against a count of its own: every finite value in its
// bin (its own, or one of the evenly spread bins over the finite values) and nothing else;
// "DataRange" from the smallest to the largest finite value.
template <typename T>
void expectExactCounts(OXMenum type, const std::vector<T>& samples, bool binPerValue)
{
    auto* grid = new OXMSampleGrid;
    ASSERT_TRUE(grid->setSamples({int(samples.size()), 1, 1}, type, samples));
    OXMObjectPtr volume(OXMVolumeRenderObject::create(grid));
    OXMHistogramResult* r = calculate(*volume);
    ASSERT_NE(r, nullptr);
    std::vector<double> finite;
    for (T s : samples)
        if (std::isfinite(double(s)))
            finite.push_back(double(s));
    const double lo = *std::min_element(finite.begin(), finite.end());
    const double hi = *std::max_element(finite.begin(), finite.end());
    const double most = std::numeric_limits<float>::max(); // "DataRange" saturates
    const auto value = [most](double v) { return float(std::clamp(v, -most, most)); };
    EXPECT_EQ(r->getDataRange(), std::make_pair(value(lo), value(hi)));
    int first = 0, last = 0;
    const auto bins = readHistogram(r, first, last);
    EXPECT_EQ(last - first + 1, binPerValue ? int(hi - lo) + 1 : 256);
    using Wide = long double; // no overflow of hi - lo for any doubles
    const Wide scale = hi > lo ? Wide(last - first) / (Wide(hi) - lo) : 0.0L;
    std::map<int, long long> brute;
    for (double v : finite)
        ++brute[binPerValue ? int(v) : int(std::floor((Wide(v) - lo) * scale + 0.5L))];
    long long total = 0;
    for (const auto& [k, n] : bins) {
        EXPECT_EQ((long long)n, brute[k]) << k;
        total += (long long)n;
    }
    EXPECT_EQ(total, (long long)finite.size());
}

} // namespace

TEST(OXMHistogram, IntegerTypesMatchBruteForceCounts)
{
    expectIntegerHistogram<std::uint8_t>(OXM::UInt8, 3, 250, 2);
    expectIntegerHistogram<std::int8_t>(OXM::Int8, -100, 90, 2);
    expectIntegerHistogram<std::uint16_t>(OXM::UInt16, 1000, 4000, 2);
    expectIntegerHistogram<std::int16_t>(OXM::Int16, -1024, 3071, 1);
    expectIntegerHistogram<std::int32_t>(OXM::Int32, -5000, 70000, 2);
    expectIntegerHistogram<std::uint32_t>(OXM::UInt32, 100000, 100500, 2);
}

TEST(OXMHistogram, LargeBufferUsesBothWorkersAndMatches)
{
    // More than one chunk per worker.
    const OXMVector3<int> dims(128, 128, 160);
    const auto samples =
        randomSamples<std::uint16_t>(std::size_t(dims.x) * dims.y * dims.z, 0, 4095, 3);
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

    // With a mask, against brute force.
    std::vector<std::uint8_t> mask(samples.size());
    std::vector<long long> brute(4096, 0);
    for (std::size_t i = 0; i < mask.size(); ++i) {
        mask[i] = std::uint8_t((i * 7919) % 5 == 0 ? 3 : 0);
        if (mask[i])
            ++brute[samples[i]];
    }
    in.mask = mask.data();
    ASSERT_EQ(OXMHistogramCalculator::calculate(in, two), OXM::NoError);
    for (int k = two.first; k < two.first + int(two.counts.size()); ++k)
        EXPECT_EQ((long long)two.counts[std::size_t(k - two.first)], brute[std::size_t(k)]);
}

TEST(OXMHistogram, FloatDataGetsFixedBinsOverTheValueRange)
{
    const OXMVector3<int> dims(20, 20, 20);
    std::vector<float> samples(8000);
    std::mt19937 rng(5);
    std::uniform_real_distribution<float> dist(-2.5f, 7.5f);
    for (float& f : samples)
        f = dist(rng);
    samples[0] = -2.5f;
    samples[1] = 7.5f;
    samples[2] = std::nanf("");
    auto* grid = new OXMSampleGrid;
    ASSERT_TRUE(grid->setSamples(dims, OXM::Float32, samples));
    OXMObjectPtr volume(OXMVolumeRenderObject::create(grid));
    auto* v = static_cast<OXMVolumeRenderObject*>(volume.get());
    ASSERT_TRUE(v->getHistogram()->setValue(OXMSceneNames::binCount(), 100));
    OXMHistogramResult* r = calculate(*v);
    ASSERT_NE(r, nullptr);
    int first = -1, last = -1;
    const auto bins = readHistogram(r, first, last);
    EXPECT_EQ(first, 0);
    EXPECT_EQ(last, 99);
    EXPECT_EQ(r->getDataRange(), (std::pair<float, float>(-2.5f, 7.5f)));
    std::vector<long long> brute(100, 0);
    const double scale = 99.0 / 10.0;
    for (float f : samples)
        if (!std::isnan(f))
            ++brute[std::size_t(std::floor((double(f) + 2.5) * scale + 0.5))];
    for (int k = 0; k < 100; ++k)
        EXPECT_EQ((long long)bins.at(k), brute[std::size_t(k)]) << k;
}

TEST(OXMHistogram, NonFiniteValuesAreLeftOutOfBinsAndRange)
{
    const float inf = std::numeric_limits<float>::infinity();
    const float nan = std::numeric_limits<float>::quiet_NaN();
    expectExactCounts<float>(OXM::Float32, {-1.5f, inf, 0.25f, 3.0f, 2.0f}, false);
    expectExactCounts<float>(OXM::Float32, {-inf, 7.0f, nan, -2.0f, inf, 7.0f}, false);
    expectExactCounts<double>(OXM::Float64, {double(nan), -1e300, double(-inf), 1e300}, false);
    const double max = std::numeric_limits<double>::max();
    expectExactCounts<double>(OXM::Float64, {-max, max / 3, max, -1.0}, false);
}

TEST(OXMHistogram, ThirtyTwoBitIntegersKeepTheirFullRange)
{
    const std::int32_t min = std::numeric_limits<std::int32_t>::min();
    const std::int32_t max = std::numeric_limits<std::int32_t>::max();
    expectExactCounts<std::uint32_t>(OXM::UInt32, {0u, 7u, 2147483648u, 4294967295u}, false);
    expectExactCounts<std::uint32_t>(OXM::UInt32, {2147483645u, 2147483650u, 2147483647u}, false);
    expectExactCounts<std::int32_t>(OXM::Int32, {min, -1, 0, max, 5}, false);
    expectExactCounts<std::int32_t>(OXM::Int32, {min + 4, min, min + 1}, false);
    expectExactCounts<std::int32_t>(OXM::Int32, {min + 3, min + 1}, true);
    expectExactCounts<std::int32_t>(OXM::Int32, {max - 4, max - 1, max - 1}, true);
}

TEST(OXMHistogram, RegionCountsOnlyItsVoxels)
{
    const OXMVector3<int> dims(16, 16, 16);
    const auto samples = randomSamples<std::uint16_t>(4096, 0, 999, 11);
    auto* grid = new OXMSampleGrid;
    ASSERT_TRUE(grid->setSamples(dims, OXM::UInt16, samples));
    OXMObjectPtr volume(OXMVolumeRenderObject::create(grid));
    auto* v = static_cast<OXMVolumeRenderObject*>(volume.get());
    std::vector<std::uint8_t> mask(4096, 0);
    std::map<int, long long> brute;
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
    OXMHistogramResult* r = calculate(*roi);
    ASSERT_NE(r, nullptr);
    int first = 0, last = 0;
    const auto bins = readHistogram(r, first, last);
    EXPECT_EQ(first, brute.begin()->first);
    EXPECT_EQ(last, brute.rbegin()->first);
    for (int k = first; k <= last; ++k)
        EXPECT_EQ((long long)bins.at(k), brute.count(k) ? brute[k] : 0);
}

TEST(OXMHistogram, CheckExecuteAnswersWhetherTheDataChanged)
{
    auto* grid = new OXMSampleGrid;
    ASSERT_TRUE(grid->setSamples({4, 4, 4}, OXM::UInt8, randomSamples<std::uint8_t>(64, 0, 9, 1)));
    OXMObjectPtr volume(OXMVolumeRenderObject::create(grid));
    OXMHistogram* h = static_cast<OXMVolumeRenderObject*>(volume.get())->getHistogram();
    OXMenum code(-1);
    EXPECT_TRUE(h->checkExecute(OXM::Calculate, nullptr, &code));
    EXPECT_EQ(code, OXM::NoError);
    ASSERT_TRUE(h->execute(OXM::Calculate));
    code = OXMenum(-1);
    EXPECT_FALSE(h->checkExecute(OXM::Calculate, nullptr, &code));
    EXPECT_EQ(code, OXM::NoError);
    ASSERT_TRUE(grid->setSamples({4, 4, 4}, OXM::UInt8, randomSamples<std::uint8_t>(64, 0, 9, 2)));
    EXPECT_TRUE(h->checkExecute(OXM::Calculate, nullptr, &code));
    ASSERT_TRUE(h->execute(OXM::Calculate));
    EXPECT_FALSE(h->checkExecute(OXM::Calculate, nullptr, &code));

    // While running: true with OXM::Running.
    bool sawRunning = false;
    auto previous = OXMTaskInfo::setProgressHandler([&](const OXMTaskInfo&, float) {
        OXMenum c(-1);
        if (h->checkExecute(OXM::Calculate, nullptr, &c) && c == OXM::Running)
            sawRunning = true;
    });
    ASSERT_TRUE(grid->setSamples({4, 4, 4}, OXM::UInt8, randomSamples<std::uint8_t>(64, 0, 9, 3)));
    ASSERT_TRUE(h->execute(OXM::Calculate));
    OXMTaskInfo::setProgressHandler(previous);
    EXPECT_TRUE(sawRunning);
}

TEST(OXMHistogram, AbortKeepsThePreviousResultAndProgressIsReported)
{
    const OXMVector3<int> dims(128, 128, 128); // two chunks per worker
    auto* grid = new OXMSampleGrid;
    ASSERT_TRUE(grid->setSamples(dims, OXM::UInt16,
                                 randomSamples<std::uint16_t>(128 * 128 * 128, 0, 99, 4)));
    OXMObjectPtr volume(OXMVolumeRenderObject::create(grid));
    OXMHistogram* h = static_cast<OXMVolumeRenderObject*>(volume.get())->getHistogram();
    std::vector<float> progress;
    auto previous = OXMTaskInfo::setProgressHandler(
        [&](const OXMTaskInfo&, float p) { progress.push_back(p); });
    ASSERT_TRUE(h->execute(OXM::Calculate));
    ASSERT_FALSE(progress.empty());
    EXPECT_FLOAT_EQ(progress.back(), 1.0f);
    for (std::size_t i = 1; i < progress.size(); ++i)
        EXPECT_GE(progress[i], progress[i - 1]);
    const std::vector<float> before = h->getResult()->getCounts();

    ASSERT_TRUE(grid->setSamples(dims, OXM::UInt16,
                                 randomSamples<std::uint16_t>(128 * 128 * 128, 500, 599, 5)));
    OXMTaskInfo::setProgressHandler([&](const OXMTaskInfo&, float p) {
        if (p > 0.0f)
            h->getAction(OXM::Calculate)->getTaskInfo()->requestAbort();
    });
    EXPECT_FALSE(h->execute(OXM::Calculate));
    EXPECT_EQ(h->getAction(OXM::Calculate)->getErrorCode(), OXM::Abort);
    EXPECT_EQ(h->getResult()->getCounts(), before);
    EXPECT_EQ(h->getResult()->getFirstIndex(), 0);
    OXMenum code(-1);
    EXPECT_TRUE(h->checkExecute(OXM::Calculate, nullptr, &code));
    OXMTaskInfo::setProgressHandler(previous);
    ASSERT_TRUE(h->execute(OXM::Calculate));
    EXPECT_EQ(h->getResult()->getFirstIndex(), 500);
}

TEST(OXMHistogram, PhantomHasPeaksAtItsTissues)
{
    const auto s16 = OXMScenePhantom::samples16(48);
    const auto s16b = OXMScenePhantom::samples16(48);
    EXPECT_EQ(s16, s16b);
    OXMHistogramCalculator::Input in;
    in.data = s16.data();
    in.componentType = OXM::UInt16;
    in.voxelCount = (long long)s16.size();
    OXMHistogramCalculator::Output out;
    ASSERT_EQ(OXMHistogramCalculator::calculate(in, out), OXM::NoError);
    auto around = [&](int centre) {
        double sum = 0.0;
        for (int k = centre - 30; k <= centre + 30; ++k)
            if (k >= out.first && k < out.first + int(out.counts.size()))
                sum += out.counts[std::size_t(k - out.first)];
        return sum;
    };
    EXPECT_GT(around(OXMScenePhantom::Air), 1000.0);
    EXPECT_GT(around(OXMScenePhantom::Tissue), 1000.0);
    EXPECT_GT(around(OXMScenePhantom::Bone), 100.0);
    EXPECT_GT(around(OXMScenePhantom::Lung), 100.0);
    EXPECT_GT(around(OXMScenePhantom::Insert), 10.0);
    EXPECT_LT(around(2500), 1.0); // nothing between bone and insert
    const auto s8 = OXMScenePhantom::samples8(32);
    EXPECT_EQ(s8.size(), std::size_t(32 * 32 * 32));
    OXMObjectPtr g8(OXMScenePhantom::createGrid8(16));
    EXPECT_EQ(static_cast<OXMSampleGrid*>(g8.get())->getDataType().getID(), OXM::UInt8);
}

TEST(OXMHistogram, ColourDataUseTheirFirstChannel)
{
    std::vector<std::uint8_t> rgb(6 * 6 * 6 * 3);
    std::map<int, long long> brute;
    for (std::size_t i = 0; i < rgb.size(); ++i) {
        rgb[i] = std::uint8_t((i * 37) % 200);
        if (i % 3 == 0)
            ++brute[rgb[i]];
    }
    auto* grid = new OXMSampleGrid;
    ASSERT_TRUE(grid->setSamples({6, 6, 6}, OXM::Rgb8, rgb));
    EXPECT_EQ(grid->getDefaultChannel(), OXM::Red);
    OXMObjectPtr volume(OXMVolumeRenderObject::create(grid));
    auto* v = static_cast<OXMVolumeRenderObject*>(volume.get());
    ASSERT_EQ(v->getHistogram(OXM::Gray), nullptr);
    OXMHistogram* h = v->getHistogram(OXM::Red);
    ASSERT_NE(h, nullptr);
    ASSERT_TRUE(h->execute(OXM::Calculate));
    const OXMHistogramResult* r = h->getResult();
    EXPECT_EQ(r->getFirstIndex(), brute.begin()->first);
    const auto counts = r->getCounts();
    ASSERT_EQ(int(counts.size()), brute.rbegin()->first - brute.begin()->first + 1);
    for (const auto& [value, n] : brute)
        EXPECT_EQ((long long)counts[std::size_t(value - r->getFirstIndex())], n);
}
