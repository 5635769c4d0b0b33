// The drawing of volume slices: the dense classification table, and the slice views that show it
// and follow the objects it comes from.

#include "OXWSliceView.h"
#include "OXWClassificationTable.h"
#include "OXWViewsTestSupport.h"

#include <OXMRegionOfInterest.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <memory>
#include <utility>
#include <vector>

// The dense classification table: one premultiplied RGBA entry per bin, as the material's
// channels, intervals and intensities give it, over the bins of the volume's or region's data.

using namespace oxwviewtest;

namespace {

using Status = OXWClassificationTable::Status;

// A volume of 10 x 8 x 6 voxels of 100 .. 149 (its default material covers exactly that).
OXMVolumeRenderObject* rampVolume(bool calculate)
{
    std::vector<std::uint16_t> v(10 * 8 * 6);
    for (std::size_t i = 0; i < v.size(); ++i)
        v[i] = std::uint16_t(100 + i % 50);
    auto* grid = new OXMSampleGrid;
    grid->setSamples({10, 8, 6}, OXM::UInt16, v);
    auto* volume = OXMVolumeRenderObject::create(grid, "Ramp");
    if (calculate)
        volume->getHistogram()->execute(OXM::Calculate);
    return volume;
}

int byteOf(float v)
{
    return int(std::min(1.0f, std::max(0.0f, v)) * 255.0f + 0.5f);
}

bool holds(const std::vector<OXMObject*>& sources, const OXMObject* object)
{
    return std::find(sources.begin(), sources.end(), object) != sources.end();
}

class ClassificationTable : public ::testing::Test
{
protected:
    // The table rebuilt from the volume (or the object given).
    const OXWClassificationTable& built(OXMObject* object = nullptr)
    {
        EXPECT_EQ(table.build(object ? object : volume), Status::Ok);
        return table;
    }
    void setCurve(OXMenum channel, float from, float to)
    {
        ASSERT_TRUE(material->getChannel(channel)->setCurve({{100.0f, from}, {149.0f, to}}));
    }
    void setScale(OXMenum channel, float value)
    {
        ASSERT_TRUE(material->getChannel(channel)->setValue(OXM::Scale, value));
    }

    OXMObjectPtr hold{rampVolume(true)};
    OXMVolumeRenderObject* volume = static_cast<OXMVolumeRenderObject*>(hold.get());
    OXMSampleMaterial* material = volume->getMaterial();
    OXWClassificationTable table;
};

} // namespace

TEST(OXWClassificationTableStatus, EmptyAndMissingPartsGiveAStatusAndNoTable)
{
    OXWClassificationTable table;
    EXPECT_EQ(table.build(nullptr), Status::Empty);
    EXPECT_FALSE(table.isValid());
    EXPECT_EQ(table.entryForBin(0), 0u);
    OXMObjectPtr material(new OXMSampleMaterial);
    EXPECT_EQ(table.build(material.get()), Status::NoMaterial);
    EXPECT_TRUE(table.getTable().empty());
    OXMObjectPtr volume(new OXMVolumeRenderObject); // no grid, no material
    EXPECT_EQ(table.build(volume.get()), Status::NoMaterial);
    ASSERT_TRUE(static_cast<OXMVolumeRenderObject*>(volume.get())
                    ->setLinkedObject(OXM::ApplicationSampleMaterial, new OXMSampleMaterial));
    EXPECT_EQ(table.build(volume.get()), Status::NoGrid);
    // The bins come from the histogram, or from the data when it was not calculated.
    for (bool calculate : {true, false}) {
        OXMObjectPtr ramp(rampVolume(calculate));
        ASSERT_EQ(table.build(ramp.get()), Status::Ok) << calculate;
        EXPECT_EQ(table.getFirstBin(), 100);
        EXPECT_EQ(table.getLastBin(), 149);
        EXPECT_EQ(table.getTable().size(), 50u);
        EXPECT_FALSE(table.isFloatBinning());
        EXPECT_EQ(table.entryForBin(99), 0u);
        EXPECT_EQ(table.entryForBin(150), 0u);
        EXPECT_EQ(table.binForValue(124.4), 124);
        EXPECT_EQ(table.binForValue(1e300), 150);
    }
}

// Default: white diffuse colour, opacity from 0 at bin 100 to 1 at bin 149; every bin as the
// channel's own evaluation gives it, also for a curve of several handles written through the
// array interface.
TEST_F(ClassificationTable, TheOpacityCurveGivesPremultipliedGrey)
{
    EXPECT_EQ(built().entryForBin(100), qRgba(0, 0, 0, 0));
    EXPECT_EQ(table.entryForBin(149), qRgba(255, 255, 255, 255));
    const auto* opacity = material->getChannel(OXM::Opacity);
    for (int k = 100; k <= 149; ++k) {
        const int a = byteOf(opacity->evaluate(float(k)));
        EXPECT_EQ(table.entryForBin(k), qRgba(a, a, a, a)) << k;
    }
    ASSERT_TRUE(setArray<OXMVector2<float>>(
        material->getChannel(OXM::Opacity), OXM::LookupTableHandleList,
        {{100.0f, 0.0f}, {110.0f, 1.0f}, {120.0f, 0.25f}, {140.0f, 0.25f}, {145.0f, 0.5f}}));
    built();
    for (int k = 100; k <= 149; ++k)
        EXPECT_NEAR(table.getRGBA()[std::size_t(k - 100) * 4 + 3], opacity->evaluate(float(k)),
                    1e-6f)
            << k;
    EXPECT_EQ(qAlpha(table.entryForBin(110)), 255);
    EXPECT_EQ(qAlpha(table.entryForBin(149)), byteOf(0.5f));
}

// Two intervals, 100 .. 124 and 125 .. 149, the second off: its bins are transparent; on
// again, the bins outside every interval stay transparent.
TEST_F(ClassificationTable, ADisabledIntervalIsTransparent)
{
    ASSERT_TRUE(setArray<int>(material, OXM::IntervalIndexList, {99, 124, 149}));
    ASSERT_TRUE(setArray<OXMenum>(material, OXM::IntervalModeList, {OXM::Enabled, OXM::Disabled}));
    built();
    for (int k = 101; k <= 149; ++k)
        EXPECT_EQ(table.entryForBin(k) != 0u, k <= 124) << k;
    ASSERT_TRUE(setArray<OXMenum>(material, OXM::IntervalModeList, {OXM::Enabled, OXM::Enabled}));
    ASSERT_TRUE(setArray<int>(material, OXM::IntervalIndexList, {99, 124, 140}));
    EXPECT_NE(built().entryForBin(140), 0u);
    EXPECT_EQ(table.entryForBin(141), 0u);
}

// Diffuse red referring to ambient red takes its curve; both objects of the chain are sources
// of the table; a reference cycle resolves to nothing: no red at all.
TEST_F(ClassificationTable, AChannelInReferenceModeResolvesToItsReference)
{
    auto* ambientRed = material->getChannel(OXM::AmbientRed);
    auto* diffuseRed = material->getChannel(OXM::DiffuseRed);
    setCurve(OXM::AmbientRed, 0.0f, 0.0f);
    ASSERT_TRUE(diffuseRed->setReference(ambientRed));
    std::vector<OXMObject*> visited;
    EXPECT_EQ(OXWClassificationTable::resolveChannel(material, OXM::DiffuseRed, &visited),
              ambientRed);
    EXPECT_EQ(visited, (std::vector<OXMObject*>{diffuseRed, ambientRed}));
    EXPECT_EQ(built().entryForBin(149), qRgba(0, 255, 255, 255));
    for (const OXMObject* source :
         {static_cast<OXMObject*>(diffuseRed), static_cast<OXMObject*>(ambientRed),
          static_cast<OXMObject*>(material)})
        EXPECT_TRUE(holds(table.getSources(), source));
    setCurve(OXM::AmbientRed, 0.5f, 0.5f);
    EXPECT_EQ(qRed(built().entryForBin(149)), byteOf(0.5f));
    ASSERT_TRUE(ambientRed->setReference(diffuseRed));
    EXPECT_EQ(OXWClassificationTable::resolveChannel(material, OXM::DiffuseRed), nullptr);
    EXPECT_EQ(built().entryForBin(149), qRgba(0, 255, 255, 255));
}

TEST_F(ClassificationTable, ARegionUsesItsOwnMaterialAndItsVolumesGrid)
{
    std::vector<std::uint8_t> mask(480, 0);
    for (std::size_t i = 0; i < mask.size(); ++i)
        mask[i] = (i % 50) >= 20 ? 1 : 0; // values 120..149
    auto* roi = new OXMRegionOfInterest;
    ASSERT_TRUE(roi->setMask(mask));
    ASSERT_TRUE(volume->appendLink(OXM::RegionOfInterestList, OXMObjectLink(roi)));
    ASSERT_TRUE(roi->execute(OXM::Init));
    ASSERT_TRUE(roi->getHistogram()->execute(OXM::Calculate));
    EXPECT_EQ(OXWClassificationTable::findGrid(roi), volume->getSampleGrid());
    EXPECT_EQ(built(roi).getFirstBin(), 120);
    EXPECT_EQ(table.getLastBin(), 149);
    EXPECT_EQ(table.getGrid(), volume->getSampleGrid());
    EXPECT_TRUE(holds(table.getSources(), roi->getMaterial()));
    EXPECT_TRUE(holds(table.getSources(), volume));
}

// The colour is the material's under full light: ambient and diffuse colours weighted by
// their intensities; the transparency scale multiplies the opacity.
TEST_F(ClassificationTable, TheColourWeighsAmbientAndDiffuseAndTransparencyScalesAlpha)
{
    struct Case
    {
        float ambientRed, ka, kd, transparency;
        float red, green, alpha; // expected at the top bin (opacity 1, diffuse white)
    };
    const Case cases[] = {
        {1.0f, 0.2f, 0.7f, 1.0f, 1.0f, 0.7f / 0.9f, 1.0f},
        {0.0f, 0.2f, 0.7f, 0.5f, 0.7f / 0.9f, 0.7f / 0.9f, 0.5f},
        {0.0f, 0.0f, 0.0f, 1.0f, 0.5f, 0.5f, 1.0f},
        {1.0f, 1.0f, 0.0f, 0.25f, 1.0f, 0.0f, 0.25f},
    };
    setCurve(OXM::AmbientGreen, 0.0f, 0.0f);
    setCurve(OXM::AmbientBlue, 0.0f, 0.0f);
    for (const Case& c : cases) {
        setCurve(OXM::AmbientRed, c.ambientRed, c.ambientRed);
        setScale(OXM::AmbientIntensity, c.ka);
        setScale(OXM::DiffuseIntensity, c.kd);
        setScale(OXM::Transparency, c.transparency);
        const float* top = &built().getRGBA()[std::size_t(149 - 100) * 4];
        EXPECT_NEAR(top[0], c.red, 1e-6f) << c.ka << " " << c.kd;
        EXPECT_NEAR(top[1], c.green, 1e-6f) << c.ka << " " << c.kd;
        EXPECT_NEAR(top[3], c.alpha, 1e-6f) << c.transparency;
        EXPECT_FLOAT_EQ(table.getLighting().ambient, c.ka);
        EXPECT_FLOAT_EQ(table.getLighting().diffuse, c.kd);
    }
}

// Floating-point data, and 32-bit data wider than one bin per value, use the histogram's bins
// over the data's range, whether it was calculated or not; values outside it, or not a
// number, have no bin and are transparent.
TEST(OXWClassificationTableBins, FloatAndWideIntegerDataUseTheHistogramsBins)
{
    std::vector<float> values(4 * 4 * 4);
    for (std::size_t i = 0; i < values.size(); ++i)
        values[i] = -2.0f + 0.125f * float(i);
    const std::vector<std::uint32_t> wide = {0u, 1000000000u, 4000000000u, 4000000000u};
    for (int kind = 0; kind < 3; ++kind) {
        auto* grid = new OXMSampleGrid;
        ASSERT_TRUE(kind < 2 ? grid->setSamples({4, 4, 4}, OXM::Float32, values)
                             : grid->setSamples({4, 1, 1}, OXM::UInt32, wide));
        OXMObjectPtr volume(OXMVolumeRenderObject::create(grid));
        if (kind > 0)
            static_cast<OXMVolumeRenderObject*>(volume.get())
                ->getHistogram()
                ->execute(OXM::Calculate);
        OXWClassificationTable table;
        ASSERT_EQ(table.build(volume.get()), Status::Ok);
        EXPECT_TRUE(table.isFloatBinning());
        if (kind == 2) {
            EXPECT_EQ(table.binForValue(0.0), table.getFirstBin());
            EXPECT_EQ(table.binForValue(4000000000.0), table.getLastBin());
            EXPECT_LT(table.getBinCount(), 1 << 24);
            continue;
        }
        EXPECT_EQ(table.getFirstBin(), 0);
        EXPECT_EQ(table.getLastBin(), 255);
        EXPECT_EQ(table.binForValue(values.front()), 0);
        EXPECT_EQ(table.entryForValue(values.back()), qRgba(255, 255, 255, 255));
        EXPECT_EQ(table.entryForValue(values.front()), 0u);
        EXPECT_EQ(table.binForValue(1000.0), 256);
        EXPECT_EQ(table.binForValue(std::nan("")), 256);
        EXPECT_EQ(table.entryForValue(std::nan("")), 0u);
    }
}

namespace {

constexpr int Size = 32;

long long nonBlack(const QImage& image)
{
    long long n = 0;
    for (int y = 0; y < image.height(); ++y)
        for (int x = 0; x < image.width(); ++x)
            if ((image.pixel(x, y) & 0x00ffffffu) != 0)
                ++n;
    return n;
}

// Waits for the pending recompute and a little longer, so that a second one would show.
void settle(OXWSliceView& view)
{
    ASSERT_TRUE(waitFor([&] { return !view.isRecomputePending(); }));
    QTest::qWait(3 * OXWSliceView::RecomputeDelay);
}

class SliceView : public ::testing::Test
{
protected:
    SliceView()
    {
        volume->getSampleGrid()->getIndexRange(OXM::Gray, first, last);
        view.resize(600, 240);
        view.setObject(volume);
    }

    // The voxel shown at pixel (x, y) of axial slice z.
    std::uint16_t axial(int x, int y, int z = Size / 2) const
    {
        return samples[z * Size * Size + y * Size + x];
    }
    QImage axialImage() const { return view.getSliceImage(OXWSliceView::Axial); }

    std::unique_ptr<OXMObjectPtr> hold = std::make_unique<OXMObjectPtr>(phantom16(Size));
    OXMVolumeRenderObject* volume = static_cast<OXMVolumeRenderObject*>(hold->get());
    OXMSampleMaterial* material = volume->getMaterial();
    const std::uint16_t* samples = volume->getSampleGrid()->getSamples<std::uint16_t>();
    int first = 0;
    int last = 0;
    OXWSliceView view;
};

} // namespace

// With the phantom each plane shows its slice, each pixel the table entry of its voxel
// (premultiplied colour over black); when the object dies the view clears and says so.
TEST_F(SliceView, ShowsThePhantomWithTheDefaultMaterialUntilItDies)
{
    ASSERT_TRUE(view.hasSlices());
    EXPECT_EQ(view.getRecomputeCount(), 1);
    for (auto plane : {OXWSliceView::Axial, OXWSliceView::Coronal, OXWSliceView::Sagittal}) {
        const QImage slice = view.getSliceImage(plane);
        EXPECT_EQ(slice.size(), QSize(Size, Size));
        EXPECT_GT(nonBlack(slice), Size * Size / 4) << plane;
    }
    const QImage image = axialImage();
    for (int y = 0; y < Size; ++y)
        for (int x = 0; x < Size; ++x)
            ASSERT_EQ(image.pixel(x, y) & 0xffffffu,
                      view.getClassification().entryForBin(axial(x, y)) & 0xffffffu);
    EXPECT_EQ(view.getRenderedImage().size(), QSize(600, 240));
    view.show();
    ASSERT_TRUE(QTest::qWaitForWindowExposed(&view));
    EXPECT_GT(nonBlack(view.grab().toImage()), 1000);

    hold.reset(); // the volume, its material and grid go
    settle(view);
    EXPECT_FALSE(view.hasSlices());
    EXPECT_TRUE(view.getSliceImage(OXWSliceView::Axial).isNull());
    EXPECT_EQ(view.getObject(), nullptr);
    EXPECT_EQ(view.getEmptyText(), QStringLiteral("No volume selected"));
}

// A new material whose only interval is off shows all black, and its intervals are followed;
// the old material's channels no longer are.
TEST_F(SliceView, FollowsAReplacedMaterial)
{
    const QImage white = axialImage();
    OXMObjectPtr oldMaterial(material); // kept alive to write to its channels below
    auto* replacement = new OXMSampleMaterial;
    ASSERT_TRUE(replacement->setDefaultClassification(first, last));
    ASSERT_TRUE(setArray<OXMenum>(replacement, OXM::IntervalModeList, {OXM::Disabled}));
    ASSERT_TRUE(volume->setLinkedObject(OXM::ApplicationSampleMaterial, replacement));
    settle(view);
    EXPECT_EQ(nonBlack(axialImage()), 0);
    const int count = view.getRecomputeCount();
    ASSERT_TRUE(setArray<OXMenum>(replacement, OXM::IntervalModeList, {OXM::Enabled}));
    settle(view);
    EXPECT_EQ(view.getRecomputeCount(), count + 1);
    EXPECT_EQ(axialImage(), white);
    ASSERT_TRUE(material->getChannel(OXM::AmbientRed)
                    ->setCurve({{float(first), 0.5f}, {float(last), 0.5f}}));
    settle(view);
    EXPECT_EQ(view.getRecomputeCount(), count + 1);
}
