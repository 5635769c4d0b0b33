// Turning an interval into a new region or volume from the panel, on a 16-bit phantom whose
// classification has three intervals: voxel counts against a brute-force count, names,
// placement, selection and undo.

#include "PanelFixture.h"

#include <OXMError.h>
#include <OXMProperty.h>
#include <OXMRegionOfInterest.h>
#include <OXMScenePhantom.h>
#include <OXMVolumeTransform.h>

#include <cstring>

using namespace paneltest;

namespace {

class PanelExtraction : public PanelFixture
{
protected:
    static constexpr int Size = 24;

    void SetUp() override
    {
        PanelFixture::SetUp();
        samples = OXMScenePhantom::samples16(Size);
        std::vector<std::uint8_t> bytes(samples.size() * sizeof(std::uint16_t));
        std::memcpy(bytes.data(), samples.data(), bytes.size());
        ct = addVolume("CT", bytes, OXM::UInt16, {Size, Size, Size});
        ASSERT_NE(ct, nullptr);
        select({ct});
        ASSERT_TRUE(settle());
        OXMObject* m = ct->getMaterial();
        const std::vector<int> full = array<int>(m, OXM::IntervalIndexList);
        ASSERT_EQ(full.size(), 2u);
        borders = {full.front(), 1000, 2500, full.back()};
        ASSERT_TRUE(setArray(m, OXM::IntervalIndexList, borders));
        ASSERT_TRUE(setArray(m, OXM::IntervalModeList, std::vector<OXMenum>(3, OXM::Enabled)));
        ASSERT_TRUE(
            setArray(m, OXM::IntervalNameList, std::vector<const char*>{"Air", "Tissue", "Bone"}));
        reread();
        ASSERT_EQ(model()->intervalCount(), 3);
        steps = app.undoStack()->count();
    }

    // Voxels of the phantom with b0 < g <= b1, inside the mask when given.
    long long count(int b0, int b1, const std::vector<std::uint8_t>* mask = nullptr) const
    {
        long long n = 0;
        for (std::size_t i = 0; i < samples.size(); ++i) {
            n += (!mask || (*mask)[i]) && samples[i] > b0 && samples[i] <= b1 ? 1 : 0;
        }
        return n;
    }
    // Voxels of a volume with b0 < g <= b1.
    static long long count(const OXMVolumeRenderObject* v, int b0, int b1)
    {
        const OXMSampleGrid* grid = v->getSampleGrid();
        long long n = 0;
        for (long long i = 0; i < grid->getVoxelCount(); ++i) {
            const double g = grid->getNativeValue(i);
            n += g > b0 && g <= b1 ? 1 : 0;
        }
        return n;
    }

    void run(const char* slot, int index)
    {
        ASSERT_TRUE(
            QMetaObject::invokeMethod(panel.get(), slot, Qt::DirectConnection, Q_ARG(int, index)));
    }
    std::vector<OXMObjectLink> volumes() const
    {
        return sample.scene->getLinks(OXM::VolumeRenderObjectList);
    }
    // One new step of that name, whose undo selects the source again.
    void expectOneStepThatUndoesTo(const char* name, OXMObject* source)
    {
        ASSERT_EQ(app.undoStack()->count(), steps + 1);
        EXPECT_EQ(app.undoStack()->undoName(), QString::fromLatin1(name));
        ASSERT_TRUE(app.undoStack()->undo());
        EXPECT_EQ(panel->selectedObject(), source);
        ASSERT_TRUE(settle());
    }

    std::vector<std::uint16_t> samples;
    std::vector<int> borders;
    OXMVolumeRenderObject* ct = nullptr;
    int steps = 0;
};

TEST_F(PanelExtraction, ARegionOfEachIntervalHoldsItsVoxelsAndIsSelected)
{
    for (int i = 0; i < 3; ++i) {
        run("createSegmentFromGreyvalueIntervalSlot", i);
        const std::vector<OXMObjectLink> regions = ct->getLinks(OXM::RegionOfInterestList);
        ASSERT_EQ(regions.size(), 1u) << i;
        auto* roi = dynamic_cast<OXMRegionOfInterest*>(regions[0].getLink());
        ASSERT_NE(roi, nullptr);
        EXPECT_EQ(roi->getMaskVoxelCount(), count(borders[i], borders[i + 1])) << i;
        EXPECT_NE(roi->getMaterial(), nullptr); // initialised after it was placed
        EXPECT_EQ(panel->selectedObject(), roi);
        expectOneStepThatUndoesTo("create ROI from gray value interval", ct);
        EXPECT_TRUE(ct->getLinks(OXM::RegionOfInterestList).empty());
    }
}

TEST_F(PanelExtraction, AVolumeOfTheFirstOrLastIntervalIsPlacedBesideItsSourceAndSelected)
{
    OXMObject* placement = OXMObjectPath::fromObject(ct).getAuxLink(-1);
    ASSERT_NE(placement, nullptr);
    placement->getProperty(OXM::TransformMatrix)->lock();
    const std::size_t before = volumes().size();
    for (int i : {0, 2}) {
        run("extractGreyvalueIntervalSlot", i);
        ASSERT_EQ(volumes().size(), before + 1) << i;
        const OXMObjectLink placed = volumes().back();
        auto* v = dynamic_cast<OXMVolumeRenderObject*>(placed.getLink());
        ASSERT_NE(v, nullptr);
        EXPECT_EQ(count(v, borders[i], borders[i + 1]), count(borders[i], borders[i + 1])) << i;
        const char* name = "";
        v->getValue(OXM::Name, name);
        EXPECT_STREQ(name, i == 0 ? "Air of CT" : "Bone of CT");
        EXPECT_EQ(panel->selectedObject(), v);
        // Its placement: a copy of the source's, centred on the new box, transform locked.
        OXMObject* copy = placed.getAuxLink();
        ASSERT_NE(copy, nullptr);
        EXPECT_NE(copy, placement);
        OXMVector3<float> origin;
        ASSERT_TRUE(copy->getValue(OXM::Origin, origin));
        const auto box = v->getBoundingBox();
        EXPECT_EQ(origin, (box.first + box.second) / 2.0f);
        EXPECT_TRUE(copy->getProperty(OXM::TransformMatrix)->isLocked());
        expectOneStepThatUndoesTo("extract gray value interval", ct);
        EXPECT_EQ(volumes().size(), before);
    }
}

// From a region, the volume holds the region's voxels of the interval and sits beside the
// volume; the names of region and volume follow the interval's, each only when it has one.
TEST_F(PanelExtraction, AVolumeFromARegionIsNamedAfterBothAndPlacedBesideTheVolume)
{
    run("createSegmentFromGreyvalueIntervalSlot", 2);
    auto* roi = dynamic_cast<OXMRegionOfInterest*>(panel->selectedObject());
    ASSERT_NE(roi, nullptr);
    ASSERT_TRUE(settle());
    ASSERT_TRUE(roi->setValue<const char*>(OXM::Name, "Skull"));
    const std::size_t before = volumes().size();
    for (const char* volumeName : {"CT", ""}) {
        ASSERT_TRUE(ct->setValue(OXM::Name, volumeName));
        steps = app.undoStack()->count();
        run("extractGreyvalueIntervalSlot", 0); // the region's one interval, "Interval 1"
        ASSERT_EQ(volumes().size(), before + 1);
        auto* v = dynamic_cast<OXMVolumeRenderObject*>(volumes().back().getLink());
        ASSERT_NE(v, nullptr);
        const char* name = "";
        v->getValue(OXM::Name, name);
        EXPECT_STREQ(name, *volumeName ? "Interval 1 of Skull of CT" : "Interval 1 of Skull");
        EXPECT_EQ(count(v, borders[2], borders[3]), count(borders[2], borders[3]));
        EXPECT_TRUE(roi->getLinks(OXM::VolumeRenderObjectList).empty());
        expectOneStepThatUndoesTo("extract gray value interval", roi);
    }
}

// An index past the last interval, or before the first, and a scene manager that is not one
// change nothing and leave no step; the wrong manager is reported.
TEST_F(PanelExtraction, RefusalsChangeNothing)
{
    std::vector<OXMError::Message> errors;
    const int handler =
        OXMError::addHandler([&errors](const OXMError::Message& m) { errors.push_back(m); });
    const std::size_t before = volumes().size();
    for (const char* slot :
         {"createSegmentFromGreyvalueIntervalSlot", "extractGreyvalueIntervalSlot"}) {
        run(slot, 3);
        run(slot, -1);
    }
    EXPECT_TRUE(errors.empty());
    ASSERT_TRUE(app.setValue(OXM::SceneManager, OXMObjectLink(sample.scene)));
    run("createSegmentFromGreyvalueIntervalSlot", 1);
    run("extractGreyvalueIntervalSlot", 1);
    OXMError::removeHandler(handler);
    ASSERT_EQ(errors.size(), 2u);
    EXPECT_EQ(errors[0].getCode(), OXM::InvalidOperation);
    EXPECT_EQ(volumes().size(), before);
    EXPECT_TRUE(ct->getLinks(OXM::RegionOfInterestList).empty());
    EXPECT_EQ(app.undoStack()->count(), steps) << app.undoStack()->undoName().toStdString();
    EXPECT_EQ(panel->selectedObject(), ct);
}

} // namespace
