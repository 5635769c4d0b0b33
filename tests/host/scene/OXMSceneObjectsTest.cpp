// The scene's objects, their histograms and the grey-value extraction, checked against counts
// of their own.

#include "OXMAction.h"
#include "OXMCamera.h"
#include "OXMGreyvalueIntervalExtraction.h"
#include "OXMHistogram.h"
#include "OXMHistogramCalculator.h"
#include "OXMHistogramResult.h"
#include "OXMMetaClass.h"
#include "OXMObjectIOCPtr.h"
#include "OXMObjectPtr.h"
#include "OXMObjectRefPtr.h"
#include "OXMRegionOfInterest.h"
#include "OXMRegisteredEnum.h"
#include "OXMSampleGrid.h"
#include "OXMSampleMaterial.h"
#include "OXMSampleTransferSpec.h"
#include "OXMScene.h"
#include "OXMSceneNames.h"
#include "OXMScenePhantom.h"
#include "OXMTaskInfo.h"
#include "OXMTulvoRights.h"
#include "OXMVector2.h"
#include "OXMVolumeRenderObject.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <limits>
#include <map>
#include <random>
#include <vector>

// The scene's objects: what a grid, a volume, its material and its renderer derive from the voxels,
// and how they are linked, copied and created by class name.

namespace {

// 10 x 8 x 6 voxels of 100 .. 149, spaced 0.5 x 0.5 x 2.
OXMSampleGrid* rampGrid()
{
    std::vector<std::uint16_t> v(10 * 8 * 6);
    for (std::size_t i = 0; i < v.size(); ++i)
        v[i] = std::uint16_t(100 + i % 50);
    auto* grid = new OXMSampleGrid;
    grid->setSamples({10, 8, 6}, OXM::UInt16, v);
    grid->setSpacing({0.5f, 0.5f, 2.0f});
    return grid;
}

template <typename T>
std::vector<T> array(const OXMObject* o, OXMenum id)
{
    return OXMObject::arrayOf<T>(o, id);
}

} // namespace

TEST(OXMSceneObjects, AGridHoldsItsVoxelsAndRefusesMismatchedBuffers)
{
    OXMObjectPtr hold(rampGrid());
    auto* grid = static_cast<OXMSampleGrid*>(hold.get());
    EXPECT_EQ(grid->getVoxelCount(), 480);
    OXMTypeInfo type;
    ASSERT_TRUE(grid->getValue(OXM::SampleDataType, type));
    EXPECT_EQ(type.getID(), OXM::UInt16);
    EXPECT_EQ(grid->getNativeValue(51), 101.0);
    const int version = grid->getDataVersion();
    EXPECT_FALSE(grid->setData({2, 2, 2}, OXM::UInt16, std::vector<std::uint8_t>(15)));
    EXPECT_EQ(grid->getDataVersion(), version);
    // Dimensions and type change only with the buffer.
    EXPECT_FALSE(grid->setValue(OXMSceneNames::dimensions(), OXMVector3<int>(1, 1, 1)));
    EXPECT_EQ(grid->getDimensions(), OXMVector3<int>(10, 8, 6));
    int first = 0, last = 0;
    ASSERT_TRUE(grid->getIndexRange(OXM::Gray, first, last));
    EXPECT_EQ(std::make_pair(first, last), std::make_pair(100, 149));
}

// A new volume's box follows the spacing; its material classifies the data's range with one enabled
// interval and an opacity ramp over it; its histogram reads the grey values.
TEST(OXMSceneObjects, ANewVolumeIsClassifiedOverItsDataRange)
{
    OXMObjectPtr hold(OXMVolumeRenderObject::create(rampGrid(), "CT"));
    auto* v = static_cast<OXMVolumeRenderObject*>(hold.get());
    EXPECT_TRUE(v->isRoleActive(OXM::VolumeRenderObject));
    EXPECT_FALSE(v->isRoleActive(OXM::RegionOfInterest));
    const auto box = v->getBoundingBox();
    EXPECT_EQ(box.first, OXMVector3<float>(-0.25f, -0.25f, -1.0f));
    EXPECT_EQ(box.second, OXMVector3<float>(4.75f, 3.75f, 11.0f));

    const OXMSampleMaterial* material = v->getMaterial();
    ASSERT_NE(material, nullptr);
    EXPECT_EQ(array<int>(material, OXM::IntervalIndexList), (std::vector<int>{99, 149}));
    EXPECT_EQ(array<OXMenum>(material, OXM::IntervalModeList),
              (std::vector<OXMenum>{OXM::Enabled}));
    std::pair<float, float> range;
    ASSERT_TRUE(material->getValue(OXM::VisibleOpacityIndexRange, range));
    EXPECT_EQ(range, (std::pair<float, float>(100.0f, 149.0f)));
    EXPECT_EQ(
        array<OXMVector2<float>>(material->getChannel(OXM::Opacity), OXM::LookupTableHandleList),
        (std::vector<OXMVector2<float>>{{100.0f, 0.0f}, {149.0f, 1.0f}}));
    for (OXMenum id : OXMSampleMaterial::channelIDs()) {
        ASSERT_NE(material->getChannel(id), nullptr) << id;
        EXPECT_EQ(material->getChannel(id)->getParentLink().getOwner(), material) << id;
    }

    const auto histograms = array<OXMObjectLink>(v, OXM::HistogramList);
    ASSERT_EQ(histograms.size(), 1u);
    OXMObject* channel = OXMObject::linkedObject(histograms[0].getLink(), OXM::SampleTransferSpec);
    OXMenum input;
    ASSERT_TRUE(channel && channel->getValue(OXM::InputChannel, input));
    EXPECT_EQ(input, OXM::Gray);
    const OXMObjectLink parent = histograms[0].getLink()->getParentLink();
    EXPECT_EQ(parent.getOwner(), v);
    EXPECT_EQ(parent.getPropertyID(), OXM::HistogramList);
}

TEST(OXMSceneObjects, ChannelsResolveReferencesAndMaterialCopiesRedirectThem)
{
    OXMObjectPtr hold(new OXMSampleMaterial);
    auto* m = static_cast<OXMSampleMaterial*>(hold.get());
    m->setDefaultClassification(0, 255);
    ASSERT_TRUE(m->getChannel(OXM::DiffuseRed)->setReference(m->getChannel(OXM::AmbientRed)));
    EXPECT_EQ(m->getChannel(OXM::DiffuseRed)->resolve(), m->getChannel(OXM::AmbientRed));
    m->getChannel(OXM::AmbientRed)->setCurve({{0.0f, 0.0f}, {255.0f, 1.0f}});
    EXPECT_FLOAT_EQ(m->getChannel(OXM::DiffuseRed)->evaluate(127.5f), 0.5f);
    EXPECT_FLOAT_EQ(m->getChannel(OXM::AmbientIntensity)->evaluate(3.0f), 0.2f);

    OXMObjectPtr copyHold(dynamic_cast<OXMObject*>(OXMMetaClass::clone(m)));
    auto* copy = dynamic_cast<OXMSampleMaterial*>(copyHold.get());
    ASSERT_NE(copy, nullptr);
    EXPECT_NE(copy->getChannel(OXM::AmbientRed), m->getChannel(OXM::AmbientRed));
    EXPECT_EQ(copy->getChannel(OXM::DiffuseRed)->resolve(), copy->getChannel(OXM::AmbientRed));
    EXPECT_EQ(array<int>(copy, OXM::IntervalIndexList), (std::vector<int>{-1, 255}));
    EXPECT_EQ(copy->getChannel(OXM::Opacity)->getParentLink().getOwner(), copy);
}

// Each renderer carries the settings of its class and no more: the camera ray tracer keeps its
// shading and sampling distance in the camera's settings, the others on themselves.
TEST(OXMSceneObjects, RenderPluginsAreCreatedByClassNameWithTheirOwnSettings)
{
    OXMSceneNames::registerSceneClasses();
    const std::pair<const char*, bool> renderers[] = {
        {"OXMRaytracing::Isosurface::RenderPlugin", true}, {"OXMOxm2RenderPlugin", false}};
    for (const auto& [name, shaded] : renderers) {
        OXMObjectRefPtr p(name);
        ASSERT_TRUE(p) << name;
        EXPECT_TRUE(p->prepareRoles());
        EXPECT_STREQ(p->getMetaClass()->getClassName(), name);
        EXPECT_TRUE(p->isOfType("OXMRenderPlugin")) << name;
        EXPECT_TRUE(p->isOfType(OXMRegisteredEnum(name))) << name;
        EXPECT_FALSE(p->isOfType(OXMRegisteredEnum("OXMScene"))) << name;
        EXPECT_EQ(p->getProperty(OXMSceneNames::shadingModel()) != nullptr, shaded) << name;
        EXPECT_EQ(p->setValue(OXM::SamplingDistance, 0.25f), shaded) << name;
        OXMObjectRefPtr other(name);
        EXPECT_EQ(other->copyProperty(p.get(), OXM::SamplingDistance), shaded) << name;
        float d = 0.0f;
        other->getValue(OXM::SamplingDistance, d);
        EXPECT_EQ(d, shaded ? 0.25f : 0.0f) << name;
    }
    EXPECT_EQ(OXMSceneNames::shadingModel(),
              OXMenum::find("ShadingModel", "oxwclassificationtool"));
    // The camera ray tracer's settings are the scene camera's engine.
    OXMObjectPtr scene(new OXMScene);
    const auto engines = OXMObject::arrayOf<OXMObjectLink>(
        static_cast<OXMScene*>(scene.get())->getCamera(), OXM::RaytracingEngineList);
    ASSERT_EQ(engines.size(), 1u);
    EXPECT_TRUE(engines[0].linkIsOfType("OXMOxm2RenderSettings"));
    EXPECT_FALSE(engines[0].linkIsOfType("OXMScene"));
}

// Found the way the classification tool finds it: the link named in the tool's namespace.
TEST(OXMSceneObjects, TheSceneLinksTheRightsOfTheOpenFileAndTheirChangesAreHeard)
{
    OXMObjectPtr hold(new OXMScene);
    auto* scene = static_cast<OXMScene*>(hold.get());
    auto* rights = dynamic_cast<OXMTulvoRights*>(
        scene->getLinkedObject(OXMRegisteredEnum("TulvoRights", false, "oxwclassificationtool")));
    ASSERT_NE(rights, nullptr);
    EXPECT_EQ(rights, scene->getRights());
    EXPECT_TRUE(rights->getAllowClassificationEdit());
    struct Counter : OXMIOC
    {
        int changes = 0;
        void iocCallback(Message& message) override
        {
            changes += message.getType() == OXM::PropertyChanged ? 1 : 0;
        }
    } counter;
    OXMObjectIOCPtr listening(rights, &counter);
    EXPECT_TRUE(rights->setAllowClassificationEdit(false));
    EXPECT_FALSE(rights->getAllowClassificationEdit());
    EXPECT_EQ(counter.changes, 1);
}

// Histograms of volumes and regions against counts of their own: every integer type with one bin
// per value, floating-point and wide data with bins spread over their finite values; the
// calculation's threads, progress, abort and check.

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

// The action that turns a grey-value interval of a volume or region into a new region or volume,
// checked voxel by voxel against a brute-force count on the 16-bit phantom.

namespace {

using Extraction = OXMGreyvalueIntervalExtraction;

struct Phantom
{
    OXMObjectPtr sceneHold{new OXMScene};
    OXMScene* scene = static_cast<OXMScene*>(sceneHold.get());
    std::vector<std::uint16_t> samples;
    OXMVolumeRenderObject* volume = nullptr;

    explicit Phantom(int size = 24) : samples(OXMScenePhantom::samples16(size))
    {
        auto* grid = new OXMSampleGrid;
        grid->setSamples({size, size, size}, OXM::UInt16, samples);
        volume = OXMVolumeRenderObject::create(grid, "CT");
        scene->addVolume(volume);
    }
    // Voxels whose grey value g has b0 < g <= b1 (inside the mask when given).
    long long count(int b0, int b1, const std::vector<std::uint8_t>* mask = nullptr) const
    {
        long long n = 0;
        for (std::size_t i = 0; i < samples.size(); ++i)
            n += (!mask || (*mask)[i]) && samples[i] > b0 && samples[i] <= b1 ? 1 : 0;
        return n;
    }
};

// Runs the action; the new object (held) or null.
OXMObjectPtr extract(OXMObject* source, int b0, int b1, Extraction::Result result)
{
    Extraction p;
    p.interval = OXMInterval(b0, b1);
    p.result = result;
    return source->execute(OXM::ExtractGreyvalueInterval, &p) ? OXMObjectPtr(p.created)
                                                              : OXMObjectPtr();
}

long long maskCount(const OXMObject* roi)
{
    return static_cast<const OXMRegionOfInterest*>(roi)->getMaskVoxelCount();
}

} // namespace

// The phantom's air, soft tissue and the top of its range: the first, a middle and the last
// interval of a classification over it. Inside a region only its voxels count.
TEST(OXMGreyvalueIntervalExtractor, ARegionHoldsExactlyTheVoxelsOfTheInterval)
{
    Phantom f;
    for (const OXMInterval& i :
         {OXMInterval(-1, 200), OXMInterval(1500, 2500), OXMInterval(3000, 65535)}) {
        const OXMObjectPtr roi = extract(f.volume, i.from, i.to, Extraction::Result::Region);
        ASSERT_TRUE(roi) << i.from;
        const auto& mask = static_cast<OXMRegionOfInterest*>(roi.get())->getMask();
        ASSERT_EQ(mask.size(), f.samples.size());
        long long exact = 0;
        for (std::size_t v = 0; v < mask.size(); ++v)
            exact += (mask[v] != 0) == (f.samples[v] > i.from && f.samples[v] <= i.to) ? 1 : 0;
        EXPECT_EQ(exact, (long long)mask.size()) << i.from;
        EXPECT_EQ(maskCount(roi.get()), f.count(i.from, i.to));
    }
    OXMObjectPtr outer = extract(f.volume, 1500, 2500, Extraction::Result::Region);
    ASSERT_TRUE(f.volume->appendLink(OXM::RegionOfInterestList, OXMObjectLink(outer.get())));
    const OXMObjectPtr inner = extract(outer.get(), 1800, 5000, Extraction::Result::Region);
    ASSERT_TRUE(inner);
    EXPECT_EQ(maskCount(inner.get()), f.count(1800, 2500));
}

TEST(OXMGreyvalueIntervalExtractor, AVolumeIsCroppedToItsVoxelsWithTheBackgroundElsewhere)
{
    Phantom f(32);
    const OXMObjectPtr held = extract(f.volume, 3000, 4000, Extraction::Result::Volume);
    ASSERT_TRUE(held);
    auto* v = static_cast<OXMVolumeRenderObject*>(held.get());
    const OXMSampleGrid* grid = v->getSampleGrid();
    ASSERT_NE(grid, nullptr);
    const OXMVector3<int> d = grid->getDimensions();
    EXPECT_LT(d.x * d.y * d.z, 32 * 32 * 32);
    long long inside = 0;
    for (long long i = 0; i < grid->getVoxelCount(); ++i) {
        const double g = grid->getNativeValue(i);
        if (g > 3000 && g <= 4000)
            ++inside;
        else
            EXPECT_EQ(g, 3000.0);
    }
    EXPECT_EQ(inside, f.count(3000, 4000));
    const auto box = v->getBoundingBox();
    EXPECT_LT(box.first.x, box.second.x);
    EXPECT_NE(v->getMaterial(), nullptr);
    EXPECT_NE(v->getRenderPlugin(), nullptr);
}

// Nothing to extract, no parameters, another channel, no grid, or an abort request: no object.
TEST(OXMGreyvalueIntervalExtractor, RefusesWhatItCannotExtractAndStopsOnAnAbortRequest)
{
    Phantom small;
    Extraction p;
    p.interval = OXMInterval(60000, 65000);
    p.result = Extraction::Result::Volume;
    EXPECT_FALSE(small.volume->execute(OXM::ExtractGreyvalueInterval, &p)); // no voxel in it
    EXPECT_EQ(p.created, nullptr);
    EXPECT_FALSE(small.volume->execute(OXM::ExtractGreyvalueInterval, nullptr));
    p.channel = OXM::Red;
    EXPECT_FALSE(small.volume->execute(OXM::ExtractGreyvalueInterval, &p));
    OXMObjectPtr empty(new OXMVolumeRenderObject);
    p.channel = OXM::Gray;
    EXPECT_FALSE(empty->execute(OXM::ExtractGreyvalueInterval, &p));
    Phantom f(128); // more than one chunk of voxels
    const auto previous = OXMTaskInfo::setProgressHandler(
        [](const OXMTaskInfo& task, float) { const_cast<OXMTaskInfo&>(task).requestAbort(); });
    Extraction all;
    all.interval = OXMInterval(0, 65535);
    EXPECT_FALSE(f.volume->execute(OXM::ExtractGreyvalueInterval, &all));
    OXMTaskInfo::setProgressHandler(previous);
    EXPECT_EQ(f.volume->getAction(OXM::ExtractGreyvalueInterval)->getErrorCode(), OXM::Abort);
    EXPECT_EQ(all.created, nullptr);
}

// Floating-point data are cut by the bins of their histogram; non-finite voxels are in none.
TEST(OXMGreyvalueIntervalExtractor, FloatVoxelsAreCutByTheirHistogramBins)
{
    const float nan = std::numeric_limits<float>::quiet_NaN();
    const float inf = std::numeric_limits<float>::infinity();
    const std::vector<float> samples = {0.0f, 0.25f, 0.5f, 0.75f, 1.0f, nan, inf, -inf};
    auto* grid = new OXMSampleGrid;
    grid->setSamples({8, 1, 1}, OXM::Float32, samples);
    OXMObjectPtr volume(OXMVolumeRenderObject::create(grid, "F"));
    // With 256 bins over 0 .. 1, the bins of 0.25 .. 0.75 are 64 .. 191.
    const OXMObjectPtr roi = extract(volume.get(), 63, 191, Extraction::Result::Region);
    ASSERT_TRUE(roi);
    const auto& mask = static_cast<OXMRegionOfInterest*>(roi.get())->getMask();
    EXPECT_EQ(mask, (std::vector<std::uint8_t>{0, 1, 1, 1, 0, 0, 0, 0}));
}
