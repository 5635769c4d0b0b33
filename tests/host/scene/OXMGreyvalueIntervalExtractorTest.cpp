// The action that turns a grey-value interval of a volume or region into a new region or volume,
// checked voxel by voxel against a brute-force count on the 16-bit phantom.

#include "OXMAction.h"
#include "OXMGreyvalueIntervalExtraction.h"
#include "OXMObjectPtr.h"
#include "OXMRegionOfInterest.h"
#include "OXMSampleGrid.h"
#include "OXMScene.h"
#include "OXMScenePhantom.h"
#include "OXMTaskInfo.h"
#include "OXMVolumeRenderObject.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstdint>
#include <limits>
#include <vector>

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
