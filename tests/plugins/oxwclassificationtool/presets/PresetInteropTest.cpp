// Presets of other viewers on the 16-bit phantom: the hand-written ParaView and Slicer files
// imported and applied, handle by handle against their points; a classification exported to
// either format and imported again classifies every grey value as before; what a preset can't
// bring is one log line; a batch with a preset that can't be imported stores nothing.

#include <OXWClassificationTable.h>
#include <OXWPresetClassificationHandler.h>

#include <OXMError.h>
#include <OXMHistogram.h>
#include <OXMSampleGrid.h>
#include <OXMSampleMaterial.h>
#include <OXMSampleTransferSpec.h>
#include <OXMSceneNames.h>
#include <OXMScenePhantom.h>
#include <OXMVolumeRenderObject.h>

#include <QTemporaryDir>

#include <gtest/gtest.h>

#include <algorithm>

#include <memory>

namespace {

using Handle = OXMVector2<float>;
using Format = OXWTransferFunctionFile::Format;
using Point = OXWTransferFunction::ColourPoint;

class PresetInterop : public ::testing::Test
{
protected:
    void SetUp() override
    {
        OXMSceneNames::registerSceneClasses();
        volume = OXMVolumeRenderObject::create(OXMScenePhantom::createGrid16(24), "Phantom");
        handler = std::make_unique<OXWPresetClassificationHandler>(volume.get());
        handler->setHistogramObject(phantom()->getHistogram());
        handler->store().setDirectory(folder.path());
        ASSERT_TRUE(phantom()->getHistogram()->execute(OXM::Calculate));
        OXMValueArrayPropertyIF<float>::getInterface(
            phantom()->getHistogram()->getLinkedObject(OXM::Result)->getProperty(OXM::Histogram))
            ->getArrayIndexRange(r0, r1);
        errorHandler = OXMError::addHandler([this](const auto& m) { errors << m.getText(); });
    }
    void TearDown() override { OXMError::removeHandler(errorHandler); }

    OXMVolumeRenderObject* phantom() const
    {
        return static_cast<OXMVolumeRenderObject*>(volume.get());
    }
    OXMSampleTransferSpec* channel(OXMenum id) const
    {
        return phantom()->getMaterial()->getChannel(id);
    }
    std::vector<Handle> handles(OXMenum id) const
    {
        std::vector<Handle> list;
        channel(id)->getArray(OXM::LookupTableHandleList, list);
        return list;
    }
    std::vector<OXWTransferFunction> read(const QString& fileName) const
    {
        Format format;
        std::vector<OXWTransferFunction> presets;
        QString error;
        EXPECT_TRUE(OXWTransferFunctionFile::read(fileName, format, presets, error));
        return presets;
    }
    bool importAndApply(const OXWTransferFunction& preset, const QString& file)
    {
        return handler->importTransferFunctions({preset}, {preset.name}, file) &&
               handler->applyPresetToTarget(preset.name, OXM::UserPreset);
    }
    // Where a point's x lands on the phantom's bins.
    double mapped(double x, double x0, double x1, bool absolute) const
    {
        return absolute ? x : r0 + (x - x0) * (r1 - r0) / (x1 - x0);
    }
    // The curve's handles: the points, held flat out to the preset's covered range.
    template <typename P, typename Value>
    void expectCurve(OXMenum id, const OXWTransferFunction& tf, const std::vector<P>& points,
                     Value value) const
    {
        double low = 0.0, high = 0.0;
        tf.coveredRange(low, high);
        std::vector<std::pair<double, double>> expected;
        for (const P& p : points)
            expected.emplace_back(p.x, value(p));
        if (expected.front().first > low)
            expected.insert(expected.begin(), {low, expected.front().second});
        if (expected.back().first < high)
            expected.emplace_back(high, expected.back().second);
        const std::vector<Handle> list = handles(id);
        ASSERT_EQ(list.size(), expected.size()) << OXMenum(id).getName();
        for (std::size_t k = 0; k < list.size(); ++k) {
            // An absolute curve is cut at the data's range.
            const double x = std::clamp(mapped(expected[k].first, low, high, tf.absolute),
                                        double(r0), double(r1));
            EXPECT_NEAR(list[k].x, x, (r1 - r0) / 65536.0) << k;
            EXPECT_NEAR(list[k].y, expected[k].second, 1e-6) << k;
        }
    }

    QTemporaryDir folder;
    OXMObjectPtr volume;
    std::unique_ptr<OXWPresetClassificationHandler> handler;
    int r0 = 0, r1 = -1;
    int errorHandler = 0;
    QStringList errors;
};

TEST_F(PresetInterop, ImportedPresetsAreAppliedHandleByHandle)
{
    ASSERT_LT(r0, 24); // the absolute points lie inside the phantom's range: nothing is clipped
    ASSERT_GT(r1, 3400);
    int applied = 0;
    for (const char* file : {"paraview.json", "slicer.xml"}) {
        const QString path = QStringLiteral(OXW_TEST_PRESET_FILES "/") + file;
        for (const OXWTransferFunction& tf : read(path)) {
            if (!tf.isUsable())
                continue;
            SCOPED_TRACE(tf.name.toStdString());
            ASSERT_TRUE(importAndApply(tf, path));
            ++applied;
            expectCurve(OXM::Opacity, tf, tf.opacity, [](const auto& p) { return p.a; });
            expectCurve(OXM::DiffuseRed, tf, tf.colours, [](const Point& p) { return p.r; });
            expectCurve(OXM::DiffuseGreen, tf, tf.colours, [](const Point& p) { return p.g; });
            expectCurve(OXM::DiffuseBlue, tf, tf.colours, [](const Point& p) { return p.b; });
            EXPECT_EQ(channel(OXM::AmbientBlue)->resolve(), channel(OXM::DiffuseBlue));
            const std::pair<OXMenum, double> constants[] = {
                {OXM::AmbientIntensity, tf.ambient},   {OXM::DiffuseIntensity, tf.diffuse},
                {OXM::SpecularIntensity, tf.specular}, {OXM::Shininess, tf.specularPower},
                {OXM::Gradient, tf.gradientOpacity},   {OXM::SpecularGreen, 1.0}};
            for (const auto& [id, value] : constants)
                EXPECT_FLOAT_EQ(channel(id)->evaluate(float(r0)), float(value));
            double low = 0.0, high = 0.0;
            tf.coveredRange(low, high);
            std::vector<int> borders;
            phantom()->getMaterial()->getArray(OXM::IntervalIndexList, borders);
            const std::vector<int> expected = {tf.absolute ? std::max(r0, int(low) - 1) : r0,
                                               tf.absolute ? int(high) : r1};
            EXPECT_EQ(borders, expected);
        }
    }
    EXPECT_EQ(applied, 8);
}

// Three intervals, the middle one switched off, curves of a few handles each.
void classify(OXMSampleMaterial& material, int r0, int r1)
{
    const int third = (r1 - r0) / 3;
    material.setArray(OXM::IntervalIndexList, std::vector<int>{r0 - 1, r0 + third, r1 - third, r1});
    material.setArray(OXM::IntervalModeList,
                      std::vector<OXMenum>{OXM::Enabled, OXM::Disabled, OXM::Enabled});
    material.setArray(OXM::IntervalNameList, std::vector<const char*>{"a", "b", "c"});
    const OXMenum diffuse[] = {OXM::DiffuseRed, OXM::DiffuseGreen, OXM::DiffuseBlue};
    const OXMenum ambient[] = {OXM::AmbientRed, OXM::AmbientGreen, OXM::AmbientBlue};
    for (int c = 0; c < 4; ++c) {
        std::vector<Handle> curve;
        for (int k = 0; k <= 6 + c; ++k)
            curve.emplace_back(float(r0 + (r1 - r0) * k / (6 + c)),
                               float((k * (3 + c)) % 7) / 6.0f);
        material.getChannel(c == 3 ? OXMenum(OXM::Opacity) : diffuse[c])->setCurve(curve);
        if (c < 3)
            material.getChannel(ambient[c])->setReference(material.getChannel(diffuse[c]));
    }
    material.getChannel(OXM::Transparency)->setConstant(0.8f);
}

TEST_F(PresetInterop, ExportedAndImportedAgainClassifiesAsBefore)
{
    for (const auto& [format, suffix] : {std::pair<Format, const char*>{Format::ParaView, ".json"},
                                         std::pair<Format, const char*>{Format::Slicer, ".xml"}}) {
        classify(*phantom()->getMaterial(), r0, r1);
        handler->setAbsolutePreset(format == Format::Slicer);
        ASSERT_TRUE(handler->saveTargetAsPreset("Ours", OXM::UserPreset));
        ASSERT_TRUE(handler->applyPresetToTarget("Ours", OXM::UserPreset));
        const std::vector<Handle> ours = handles(OXM::Opacity);
        OXWClassificationTable before;
        ASSERT_EQ(before.build(volume.get()), OXWClassificationTable::Status::Ok);

        const QString file = folder.filePath(QStringLiteral("export") + suffix);
        ASSERT_TRUE(handler->exportTransferFunction("Ours", file, format));
        const std::vector<OXWTransferFunction> presets = read(file);
        ASSERT_EQ(presets.size(), 1u);
        ASSERT_TRUE(importAndApply(presets.front(), file));
        OXWClassificationTable after;
        ASSERT_EQ(after.build(volume.get()), OXWClassificationTable::Status::Ok);
        ASSERT_EQ(after.getRGBA().size(), before.getRGBA().size());
        const std::vector<float>& a = before.getRGBA();
        for (std::size_t i = 0; i < a.size(); ++i) {
            const bool seen = a[i | 3] > 0.0f || i % 4 == 3; // not the colour of a clear bin
            ASSERT_NEAR(after.getRGBA()[i], seen ? a[i] : after.getRGBA()[i], 1.0 / 255.0) << i;
        }
        // Every handle of our curve in a shown interval is a handle of the imported one.
        const std::vector<Handle> theirs = handles(OXM::Opacity);
        for (const Handle& h : ours) {
            const bool shown = h.x <= r0 + (r1 - r0) / 3 || h.x > r1 - (r1 - r0) / 3;
            const bool found = std::any_of(theirs.begin(), theirs.end(), [&](const Handle& t) {
                return std::fabs(t.x - h.x) <= (r1 - r0) / 65536.0;
            });
            EXPECT_TRUE(found || !shown) << h.x;
        }
    }
}

TEST_F(PresetInterop, LeftOutIsOneLogLineAndABadBatchStoresNothing)
{
    const QString slicer = QStringLiteral(OXW_TEST_PRESET_FILES "/slicer.xml");
    const std::vector<OXWTransferFunction> presets = read(slicer);
    ASSERT_TRUE(handler->importTransferFunctions({presets[0], presets[1]}, {"A", "B"}, slicer));
    ASSERT_EQ(errors.size(), 1);
    EXPECT_TRUE(errors[0].contains("\"MR-Flat\" of " + slicer +
                                   " imported without: gradient "
                                   "opacity, nearest-neighbour interpolation, shading off."))
        << errors[0].toStdString();
    EXPECT_FALSE(handler->importTransferFunctions({presets[1], presets[2]}, {"C", "D"}, slicer));
    EXPECT_TRUE(handler->lastError().contains("\"Bad count\" can't be imported"));
    EXPECT_EQ(handler->store().list().size(), 2u);
}

} // namespace
