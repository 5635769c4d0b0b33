#include "OXWClassificationTable.h"
#include "OXWViewsTestSupport.h"

#include <OXMRegionOfInterest.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <vector>

using namespace oxwviewtest;

namespace {

// A volume whose voxels run through 100..149 (the default material covers exactly that).
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

} // namespace

TEST(OXWClassificationTable, EmptyAndMissingPartsGiveAStatusAndNoTable)
{
    OXWClassificationTable table;
    EXPECT_EQ(table.build(nullptr), OXWClassificationTable::Status::Empty);
    EXPECT_FALSE(table.isValid());
    EXPECT_EQ(table.entryForBin(0), 0u);

    OXMObjectPtr material(new OXMSampleMaterial);
    EXPECT_EQ(table.build(material.get()), OXWClassificationTable::Status::NoMaterial);
    EXPECT_TRUE(table.getTable().empty());

    OXMObjectPtr volume(new OXMVolumeRenderObject); // no grid, no material
    EXPECT_EQ(table.build(volume.get()), OXWClassificationTable::Status::NoMaterial);
    auto* v = static_cast<OXMVolumeRenderObject*>(volume.get());
    ASSERT_TRUE(v->setLinkedObject(OXM::ApplicationSampleMaterial, new OXMSampleMaterial));
    EXPECT_EQ(table.build(volume.get()), OXWClassificationTable::Status::NoGrid);
}

TEST(OXWClassificationTable, BinRangeComesFromTheHistogramOrTheData)
{
    for (bool calculate : {true, false}) {
        OXMObjectPtr volume(rampVolume(calculate));
        OXWClassificationTable table;
        ASSERT_EQ(table.build(volume.get()), OXWClassificationTable::Status::Ok) << calculate;
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

TEST(OXWClassificationTable, OpacityRampGivesPremultipliedGrey)
{
    OXMObjectPtr volume(rampVolume(true));
    auto* material = static_cast<OXMVolumeRenderObject*>(volume.get())->getMaterial();
    OXWClassificationTable table;
    ASSERT_EQ(table.build(volume.get()), OXWClassificationTable::Status::Ok);
    // Default: white diffuse colour, opacity from 0 at bin 100 to 1 at bin 149.
    EXPECT_EQ(table.entryForBin(100), qRgba(0, 0, 0, 0));
    EXPECT_EQ(table.entryForBin(149), qRgba(255, 255, 255, 255));
    const int grey = byteOf(24.0f / 49.0f); // bin 124
    EXPECT_EQ(table.entryForBin(124), qRgba(grey, grey, grey, grey));
    // Every bin as the channel's own evaluation gives it.
    const auto* opacity = material->getChannel(OXM::Opacity);
    for (int k = 100; k <= 149; ++k) {
        const int a = byteOf(opacity->evaluate(float(k)));
        EXPECT_EQ(table.entryForBin(k), qRgba(a, a, a, a)) << k;
    }

    // A curve with several handles, written through the array interface.
    ASSERT_TRUE(setArray<OXMVector2<float>>(
        material->getChannel(OXM::Opacity), OXM::LookupTableHandleList,
        {{100.0f, 0.0f}, {110.0f, 1.0f}, {120.0f, 0.25f}, {140.0f, 0.25f}, {145.0f, 0.5f}}));
    ASSERT_EQ(table.build(volume.get()), OXWClassificationTable::Status::Ok);
    for (int k = 100; k <= 149; ++k)
        EXPECT_NEAR(table.getRGBA()[std::size_t(k - 100) * 4 + 3], opacity->evaluate(float(k)),
                    1e-6f)
            << k;
    EXPECT_EQ(qAlpha(table.entryForBin(110)), 255);
    EXPECT_EQ(qAlpha(table.entryForBin(130)), byteOf(0.25f));
    EXPECT_EQ(qAlpha(table.entryForBin(149)), byteOf(0.5f));
}

TEST(OXWClassificationTable, DisabledIntervalIsTransparent)
{
    OXMObjectPtr volume(rampVolume(true));
    OXMObject* material = link(volume.get(), OXM::ApplicationSampleMaterial);
    // Two intervals: bins 100..124 and 125..149; the second switched off.
    ASSERT_TRUE(setArray<int>(material, OXM::IntervalIndexList, {99, 124, 149}));
    ASSERT_TRUE(setArray<OXMenum>(material, OXM::IntervalModeList, {OXM::Enabled, OXM::Disabled}));
    OXWClassificationTable table;
    ASSERT_EQ(table.build(volume.get()), OXWClassificationTable::Status::Ok);
    for (int k = 101; k <= 124; ++k)
        EXPECT_NE(table.entryForBin(k), 0u) << k;
    for (int k = 125; k <= 149; ++k)
        EXPECT_EQ(table.entryForBin(k), 0u) << k;

    // Switched on again: the ramp continues; bins outside every interval stay transparent.
    ASSERT_TRUE(setArray<OXMenum>(material, OXM::IntervalModeList, {OXM::Enabled, OXM::Enabled}));
    ASSERT_TRUE(setArray<int>(material, OXM::IntervalIndexList, {99, 124, 140}));
    ASSERT_EQ(table.build(volume.get()), OXWClassificationTable::Status::Ok);
    EXPECT_NE(table.entryForBin(140), 0u);
    EXPECT_EQ(table.entryForBin(141), 0u);
}

TEST(OXWClassificationTable, DiffuseChannelInReferenceModeResolvesToAmbient)
{
    OXMObjectPtr volume(rampVolume(true));
    auto* material = static_cast<OXMVolumeRenderObject*>(volume.get())->getMaterial();
    auto* ambientRed = material->getChannel(OXM::AmbientRed);
    auto* diffuseRed = material->getChannel(OXM::DiffuseRed);
    // Ambient red off; diffuse red takes it; diffuse green, blue stay white.
    ASSERT_TRUE(ambientRed->setCurve({{100.0f, 0.0f}, {149.0f, 0.0f}}));
    ASSERT_TRUE(diffuseRed->setReference(ambientRed));
    std::vector<OXMObject*> visited;
    EXPECT_EQ(OXWClassificationTable::resolveChannel(material, OXM::DiffuseRed, &visited),
              ambientRed);
    EXPECT_EQ(visited, (std::vector<OXMObject*>{diffuseRed, ambientRed}));

    OXWClassificationTable table;
    ASSERT_EQ(table.build(volume.get()), OXWClassificationTable::Status::Ok);
    const QRgb top = table.entryForBin(149);
    EXPECT_EQ(qRed(top), 0);
    EXPECT_EQ(qGreen(top), 255);
    EXPECT_EQ(qBlue(top), 255);
    EXPECT_EQ(qAlpha(top), 255);
    // Both objects of the chain are sources of the table.
    const auto& sources = table.getSources();
    EXPECT_NE(std::find(sources.begin(), sources.end(), diffuseRed), sources.end());
    EXPECT_NE(std::find(sources.begin(), sources.end(), ambientRed), sources.end());
    EXPECT_NE(std::find(sources.begin(), sources.end(), material), sources.end());

    // Ambient red half way: diffuse red follows.
    ASSERT_TRUE(ambientRed->setCurve({{100.0f, 0.5f}, {149.0f, 0.5f}}));
    ASSERT_EQ(table.build(volume.get()), OXWClassificationTable::Status::Ok);
    EXPECT_EQ(qRed(table.entryForBin(149)), byteOf(0.5f));

    // A reference cycle resolves to nothing: no red at all.
    ASSERT_TRUE(ambientRed->setReference(diffuseRed));
    EXPECT_EQ(OXWClassificationTable::resolveChannel(material, OXM::DiffuseRed), nullptr);
    ASSERT_EQ(table.build(volume.get()), OXWClassificationTable::Status::Ok);
    EXPECT_EQ(qRed(table.entryForBin(149)), 0);
    EXPECT_EQ(qGreen(table.entryForBin(149)), 255);
}

TEST(OXWClassificationTable, RegionUsesItsOwnMaterialAndItsVolumesGrid)
{
    OXMObjectPtr volume(rampVolume(true));
    auto* v = static_cast<OXMVolumeRenderObject*>(volume.get());
    std::vector<std::uint8_t> mask(480, 0);
    for (std::size_t i = 0; i < mask.size(); ++i)
        mask[i] = (i % 50) >= 20 ? 1 : 0; // values 120..149
    auto* roi = new OXMRegionOfInterest;
    ASSERT_TRUE(roi->setMask(mask));
    ASSERT_TRUE(v->appendLink(OXM::RegionOfInterestList, OXMObjectLink(roi)));
    ASSERT_TRUE(roi->execute(OXM::Init));
    ASSERT_TRUE(roi->getHistogram()->execute(OXM::Calculate));

    EXPECT_EQ(OXWClassificationTable::findGrid(roi), v->getSampleGrid());
    OXWClassificationTable table;
    ASSERT_EQ(table.build(roi), OXWClassificationTable::Status::Ok);
    EXPECT_EQ(table.getFirstBin(), 120);
    EXPECT_EQ(table.getLastBin(), 149);
    EXPECT_EQ(table.getGrid(), v->getSampleGrid());
    const auto& sources = table.getSources();
    EXPECT_NE(std::find(sources.begin(), sources.end(), roi->getMaterial()), sources.end());
    EXPECT_NE(std::find(sources.begin(), sources.end(), v), sources.end());
}

TEST(OXWClassificationTable, FloatDataUseTheHistogramsBins)
{
    std::vector<float> values(4 * 4 * 4);
    for (std::size_t i = 0; i < values.size(); ++i)
        values[i] = -2.0f + 0.125f * float(i);
    for (bool calculate : {false, true}) {
        auto* grid = new OXMSampleGrid;
        ASSERT_TRUE(grid->setSamples({4, 4, 4}, OXM::Float32, values));
        OXMObjectPtr volume(OXMVolumeRenderObject::create(grid, "Float"));
        if (calculate)
            static_cast<OXMVolumeRenderObject*>(volume.get())
                ->getHistogram()
                ->execute(OXM::Calculate);
        OXWClassificationTable table;
        ASSERT_EQ(table.build(volume.get()), OXWClassificationTable::Status::Ok);
        EXPECT_TRUE(table.isFloatBinning());
        EXPECT_EQ(table.getFirstBin(), 0);
        EXPECT_EQ(table.getLastBin(), 255);
        EXPECT_EQ(table.binForValue(values.front()), 0);
        EXPECT_EQ(table.binForValue(values.back()), 255);
        EXPECT_EQ(table.entryForValue(values.back()), qRgba(255, 255, 255, 255));
        EXPECT_EQ(table.entryForValue(values.front()), 0u);
        // Outside the data's range, or not a number: no bin, transparent.
        EXPECT_EQ(table.binForValue(1000.0), 256);
        EXPECT_EQ(table.binForValue(std::nan("")), 256);
        EXPECT_EQ(table.entryForValue(std::nan("")), 0u);
    }
}

// The colour is the material's under full light: ambient and diffuse colours weighted by
// their intensities; the transparency scale multiplies the opacity.
TEST(OXWClassificationTable, ColourWeighsAmbientAndDiffuseAndTransparencyScalesAlpha)
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
    OXMObjectPtr volume(rampVolume(true));
    auto* material = static_cast<OXMVolumeRenderObject*>(volume.get())->getMaterial();
    for (OXMenum id : {OXM::AmbientGreen, OXM::AmbientBlue})
        ASSERT_TRUE(material->getChannel(id)->setCurve({{100.0f, 0.0f}, {149.0f, 0.0f}}));
    OXWClassificationTable table;
    for (const Case& c : cases) {
        ASSERT_TRUE(material->getChannel(OXM::AmbientRed)
                        ->setCurve({{100.0f, c.ambientRed}, {149.0f, c.ambientRed}}));
        ASSERT_TRUE(material->getChannel(OXM::AmbientIntensity)->setValue(OXM::Scale, c.ka));
        ASSERT_TRUE(material->getChannel(OXM::DiffuseIntensity)->setValue(OXM::Scale, c.kd));
        ASSERT_TRUE(material->getChannel(OXM::Transparency)->setValue(OXM::Scale, c.transparency));
        ASSERT_EQ(table.build(volume.get()), OXWClassificationTable::Status::Ok);
        const float* top = &table.getRGBA()[std::size_t(149 - 100) * 4];
        EXPECT_NEAR(top[0], c.red, 1e-6f) << c.ka << " " << c.kd;
        EXPECT_NEAR(top[1], c.green, 1e-6f) << c.ka << " " << c.kd;
        EXPECT_NEAR(top[3], c.alpha, 1e-6f) << c.transparency;
        EXPECT_FLOAT_EQ(table.getLighting().ambient, c.ka);
        EXPECT_FLOAT_EQ(table.getLighting().diffuse, c.kd);
    }
}

// 32-bit data wider than one bin per value: bins over the data range, as for floats.
TEST(OXWClassificationTable, WideIntegerDataUseTheHistogramsBins)
{
    const std::vector<std::uint32_t> values = {0u, 1000000000u, 4000000000u, 4000000000u};
    auto* grid = new OXMSampleGrid;
    ASSERT_TRUE(grid->setSamples({4, 1, 1}, OXM::UInt32, values));
    OXMObjectPtr volume(OXMVolumeRenderObject::create(grid, "Wide"));
    static_cast<OXMVolumeRenderObject*>(volume.get())->getHistogram()->execute(OXM::Calculate);
    OXWClassificationTable table;
    ASSERT_EQ(table.build(volume.get()), OXWClassificationTable::Status::Ok);
    EXPECT_TRUE(table.isFloatBinning());
    EXPECT_EQ(table.binForValue(0.0), table.getFirstBin());
    EXPECT_EQ(table.binForValue(4000000000.0), table.getLastBin());
    EXPECT_LT(table.getBinCount(), 1 << 24);
}
