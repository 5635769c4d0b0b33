// The classification object: construction, conversions, cell snapping, interval lookup and the
// visible ranges of the editor.

#include "ModelTestSupport.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>

using namespace modeltest;

namespace {

constexpr float kNaN = std::numeric_limits<float>::quiet_NaN();

// Splits the single interval of an n-cell object at the given cell boundaries (ascending).
void splitAtCells(OXWLUTObjectInfo& object, std::initializer_list<int> boundaries)
{
    const int n = static_cast<int>(object.greyCount());
    for (int b : boundaries) {
        ASSERT_TRUE(object.newInterval(at(n, b), false)) << "split at cell " << b;
    }
}

} // namespace

TEST(ObjectInfoConstruction, FieldsAndDerivedValues)
{
    OXWLUTObjectInfo object(-0.5f, 255.5f, 0.25f, 0.75f, 256.0f, 10.0f, 30.0f);
    EXPECT_EQ(object.greyMin(), -0.5f);
    EXPECT_EQ(object.greyMax(), 255.5f);
    EXPECT_EQ(object.greyRange(), 256.0f);
    EXPECT_EQ(object.greyCount(), 256.0f);
    EXPECT_EQ(object.greyStep(), 1.0f / 256.0f);
    EXPECT_EQ(object.opacityMin(), 0.25f);
    EXPECT_EQ(object.opacityMax(), 0.75f);
    EXPECT_EQ(object.opacityRange(), 0.5f);
    EXPECT_EQ(object.calibratedMin(), 10.0f);
    EXPECT_EQ(object.calibratedMax(), 30.0f);
    EXPECT_EQ(object.calibratedRange(), 20.0f);
}

TEST(ObjectInfoConstruction, FreshObjectHasOneDefaultIntervalAndFullVisibleRanges)
{
    auto object = makeObject(256);
    EXPECT_EQ(object->visibleGreyFrom(), 0.0f);
    EXPECT_EQ(object->visibleGreyTo(), 1.0f);
    EXPECT_EQ(object->visibleOpacityFrom(), 0.0f);
    EXPECT_EQ(object->visibleOpacityTo(), 1.0f);
    EXPECT_EQ(object->verticalZoom(), 1.0f);
    EXPECT_EQ(object->isosurface(), 0.0f);
    EXPECT_EQ(object->valueDecimals(), 0);
    EXPECT_EQ(object->opacityDecimals(), 4);

    ASSERT_EQ(object->intervalCount(), 1);
    const OXWLUTIntervalInfo* only = object->interval(0);
    ASSERT_NE(only, nullptr);
    EXPECT_EQ(only->objectInfo(), object.get());
    EXPECT_EQ(only->from(), 0.0f);
    EXPECT_EQ(only->to(), 1.0f);
    EXPECT_EQ(nameOf(only), "Interval 1");
    EXPECT_TRUE(only->isEnabled());
    EXPECT_EQ(object->interval(1), nullptr);
    EXPECT_EQ(object->interval(-1), nullptr);
}

TEST(ObjectInfoConstruction, EditorStateIsWritable)
{
    auto object = makeObject(16);
    object->setVerticalZoom(2.5f);
    object->setIsosurface(0.4f);
    object->setValueDecimals(2);
    object->setOpacityDecimals(0);
    EXPECT_EQ(object->verticalZoom(), 2.5f);
    EXPECT_EQ(object->isosurface(), 0.4f);
    EXPECT_EQ(object->valueDecimals(), 2);
    EXPECT_EQ(object->opacityDecimals(), 0);
}

TEST(ObjectInfoConstruction, CalibratedRangeFallsBackToGreyRangeUnlessAscending)
{
    struct Case
    {
        float calMin, calMax;
        bool kept;
    };
    const Case cases[] = {
        {100.0f, 612.0f, true}, {5.0f, 5.0f, false},  {612.0f, 100.0f, false},
        {kNaN, 10.0f, false},   {10.0f, kNaN, false}, {kNaN, kNaN, false},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(testing::Message() << "calibrated " << c.calMin << " .. " << c.calMax);
        OXWLUTObjectInfo object(-0.5f, 255.5f, 0.0f, 1.0f, 256.0f, c.calMin, c.calMax);
        const float expectedMin = c.kept ? c.calMin : -0.5f;
        const float expectedMax = c.kept ? c.calMax : 255.5f;
        EXPECT_EQ(object.calibratedMin(), expectedMin);
        EXPECT_EQ(object.calibratedMax(), expectedMax);
        EXPECT_EQ(object.calibratedRange(), expectedMax - expectedMin);
        EXPECT_FLOAT_EQ(object.calibratedFromPosition(0.5f), (expectedMin + expectedMax) / 2);
    }
}

TEST(ObjectInfoConversions, GreyOpacityAndCalibratedRoundTrips)
{
    OXWLUTObjectInfo object(-0.5f, 255.5f, 0.2f, 0.6f, 256.0f, -1024.0f, 3072.0f);
    EXPECT_EQ(object.greyFromPosition(0.0f), -0.5f);
    EXPECT_EQ(object.greyFromPosition(1.0f), 255.5f);
    EXPECT_EQ(object.greyFromPosition(0.5f), 127.5f);
    EXPECT_EQ(object.positionFromGrey(127.5f), 0.5f);
    EXPECT_EQ(object.positionFromGrey(-0.5f), 0.0f);
    // No clamping: values beyond the histogram map outside [0, 1].
    EXPECT_EQ(object.greyFromPosition(1.5f), 383.5f);
    EXPECT_EQ(object.positionFromGrey(-128.5f), -0.5f);

    EXPECT_FLOAT_EQ(object.opacityFromPosition(0.5f), 0.4f);
    EXPECT_FLOAT_EQ(object.opacityFromPosition(0.0f), 0.2f);
    EXPECT_FLOAT_EQ(object.positionFromOpacity(0.4f), 0.5f);
    EXPECT_FLOAT_EQ(object.positionFromOpacity(0.6f), 1.0f);

    EXPECT_EQ(object.calibratedFromPosition(0.25f), 0.0f);
    EXPECT_EQ(object.calibratedFromPosition(1.0f), 3072.0f);
    EXPECT_EQ(object.positionFromCalibrated(0.0f), 0.25f);
    EXPECT_EQ(object.positionFromCalibrated(-2048.0f), -0.25f);
}

TEST(ObjectInfoConversions, PositionFromCalibratedPassesValueThroughForEmptyOrNaNRange)
{
    // Equal calibrated bounds fall back to the grey range, which is empty here too.
    OXWLUTObjectInfo flat(3.0f, 3.0f, 0.0f, 1.0f, 1.0f, 3.0f, 3.0f);
    EXPECT_EQ(flat.calibratedRange(), 0.0f);
    EXPECT_EQ(flat.positionFromCalibrated(7.0f), 7.0f);
    EXPECT_EQ(flat.positionFromCalibrated(-2.5f), -2.5f);

    // An inverted grey range falls through to a negative calibrated range.
    OXWLUTObjectInfo inverted(10.0f, 0.0f, 0.0f, 1.0f, 10.0f, 5.0f, 5.0f);
    EXPECT_EQ(inverted.calibratedRange(), -10.0f);
    EXPECT_EQ(inverted.positionFromCalibrated(7.0f), 7.0f);

    OXWLUTObjectInfo undefined(kNaN, kNaN, 0.0f, 1.0f, 1.0f, kNaN, kNaN);
    EXPECT_TRUE(std::isnan(undefined.calibratedRange()));
    EXPECT_EQ(undefined.positionFromCalibrated(7.0f), 7.0f);
}

TEST(ObjectInfoSnapping, CellCentresAndBoundaries)
{
    auto object = makeObject(256);
    const int n = 256;
    EXPECT_EQ(object->snapToCellCentre(0.0f), at(n, 0.5));
    EXPECT_EQ(object->snapToCellCentre(at(n, 0.99)), at(n, 0.5));
    EXPECT_EQ(object->snapToCellCentre(at(n, 25.6)), at(n, 25.5));
    // A boundary belongs to the cell on its right.
    EXPECT_EQ(object->snapToCellCentre(at(n, 1)), at(n, 1.5));
    EXPECT_EQ(object->snapToCellCentre(at(n, 128)), at(n, 128.5));
    EXPECT_EQ(object->snapToCellCentre(1.0f), 1.0f + at(n, 0.5));
    EXPECT_EQ(object->snapToCellCentre(at(n, 255.9)), at(n, 255.5));

    EXPECT_EQ(object->snapDownToCell(0.1f), at(n, 25));
    EXPECT_EQ(object->snapUpToCell(0.1f), at(n, 26));
    EXPECT_EQ(object->snapDownToCell(at(n, 25)), at(n, 25));
    EXPECT_EQ(object->snapUpToCell(at(n, 25)), at(n, 25));
    EXPECT_EQ(object->snapDownToCell(1.0f), 1.0f);
    EXPECT_EQ(object->snapUpToCell(0.0f), 0.0f);
}

TEST(ObjectInfoSnapping, ProductsAreFormedInDoublePrecision)
{
    // 0.7f lies just below the boundary 7/10 of a ten-cell axis; in single precision
    // 10 * 0.7f rounds up to exactly 7 and would pick the wrong cell.
    auto object = makeObject(10);
    EXPECT_NEAR(object->snapToCellCentre(0.7f), 0.65, 1e-6);
    EXPECT_NEAR(object->snapDownToCell(0.7f), 0.6, 1e-6);
    EXPECT_NEAR(object->snapUpToCell(0.7f), 0.7, 1e-6);
}

TEST(ObjectInfoIntervals, LookupOnSharedBordersPrefersTheLeftInterval)
{
    auto object = makeObject(256);
    splitAtCells(*object, {128});
    ASSERT_EQ(object->intervalCount(), 2);
    const float border = 0.5f;
    ASSERT_EQ(object->interval(0)->to(), border);
    ASSERT_EQ(object->interval(1)->from(), border);

    EXPECT_EQ(object->intervalIndexAt(border), 0);
    EXPECT_EQ(object->intervalIndexAt(border - 4e-7f), 0);
    // Within the tolerance of the left interval's end: still the left one.
    EXPECT_EQ(object->intervalIndexAt(border + 4e-7f), 0);
    EXPECT_EQ(object->intervalIndexAt(border + 6e-7f), 1);
    EXPECT_EQ(object->intervalIndexAt(0.25f), 0);
    EXPECT_EQ(object->intervalIndexAt(0.75f), 1);

    // Tolerance at the outer ends.
    EXPECT_EQ(object->intervalIndexAt(-4e-7f), 0);
    EXPECT_EQ(object->intervalIndexAt(1.0f + 4e-7f), 1);
    EXPECT_EQ(object->intervalIndexAt(-1e-6f), -1);
    EXPECT_EQ(object->intervalIndexAt(1.0f + 1e-6f), -1);

    // intervalAt has no tolerance but the same left preference.
    EXPECT_EQ(object->intervalAt(border), object->interval(0));
    EXPECT_EQ(object->intervalAt(border + 4e-7f), object->interval(1));
    EXPECT_EQ(object->intervalAt(0.0f), object->interval(0));
    EXPECT_EQ(object->intervalAt(1.0f), object->interval(1));
    EXPECT_EQ(object->intervalAt(-1e-7f), nullptr);
    EXPECT_EQ(object->intervalAt(1.0f + 2e-7f), nullptr);
}

TEST(ObjectInfoIntervals, NeighbourPredicates)
{
    auto object = makeObject(256);
    splitAtCells(*object, {64, 192});
    ASSERT_EQ(object->intervalCount(), 3);
    EXPECT_FALSE(object->hasLeftNeighbour(-1));
    EXPECT_FALSE(object->hasLeftNeighbour(0));
    EXPECT_TRUE(object->hasLeftNeighbour(1));
    EXPECT_TRUE(object->hasLeftNeighbour(2));
    EXPECT_FALSE(object->hasLeftNeighbour(3));
    EXPECT_FALSE(object->hasRightNeighbour(-1));
    EXPECT_TRUE(object->hasRightNeighbour(0));
    EXPECT_TRUE(object->hasRightNeighbour(1));
    EXPECT_FALSE(object->hasRightNeighbour(2));
    EXPECT_FALSE(object->hasRightNeighbour(3));

    auto single = makeObject(256);
    EXPECT_FALSE(single->hasLeftNeighbour(0));
    EXPECT_FALSE(single->hasRightNeighbour(0));
}

TEST(ObjectInfoIntervals, EnableAllAndResetToOneDefaultInterval)
{
    auto object = makeObject(256);
    splitAtCells(*object, {64, 192});
    object->interval(1)->setName(QStringLiteral("Bone"));
    object->interval(0)->moveHandle(kOpacity, 0, 0.0f, 0.7f);

    object->setAllIntervalsEnabled(false);
    for (int i = 0; i < object->intervalCount(); ++i) {
        EXPECT_FALSE(object->interval(i)->isEnabled()) << i;
    }
    object->setAllIntervalsEnabled(true);
    for (int i = 0; i < object->intervalCount(); ++i) {
        EXPECT_TRUE(object->interval(i)->isEnabled()) << i;
    }

    object->setAllIntervalsEnabled(false);
    object->resetIntervals();
    ASSERT_EQ(object->intervalCount(), 1);
    const OXWLUTIntervalInfo* only = object->interval(0);
    EXPECT_EQ(only->from(), 0.0f);
    EXPECT_EQ(only->to(), 1.0f);
    EXPECT_EQ(nameOf(only), "Interval 1");
    EXPECT_TRUE(only->isEnabled());
    const HandleList ramp{{at(256, 0.5), 0.0f}, {at(256, 255.5), 1.0f}};
    EXPECT_EQ(only->handles(kOpacity), ramp);
    EXPECT_EQ(only->referenceHandles(kOpacity), ramp);
}

TEST(ObjectInfoVisibleRange, OpacityRangeKeepsItsHeightWhenPushedInside)
{
    auto object = makeObject(256);

    EXPECT_TRUE(object->setVisibleOpacityRange(0.8f, 1.3f));
    EXPECT_NEAR(object->visibleOpacityFrom(), 0.5f, 1e-6);
    EXPECT_EQ(object->visibleOpacityTo(), 1.0f);

    EXPECT_TRUE(object->setVisibleOpacityRange(-0.2f, 0.3f));
    EXPECT_EQ(object->visibleOpacityFrom(), 0.0f);
    EXPECT_NEAR(object->visibleOpacityTo(), 0.5f, 1e-6);

    // Higher than the whole axis: becomes [0, 1].
    EXPECT_TRUE(object->setVisibleOpacityRange(-1.0f, 2.0f));
    EXPECT_EQ(object->visibleOpacityFrom(), 0.0f);
    EXPECT_EQ(object->visibleOpacityTo(), 1.0f);

    EXPECT_TRUE(object->setVisibleOpacityRange(0.2f, 0.4f));
    EXPECT_EQ(object->visibleOpacityFrom(), 0.2f);
    EXPECT_EQ(object->visibleOpacityTo(), 0.4f);
}

TEST(ObjectInfoVisibleRange, OpacityRangeRefusesEmptyInvertedAndUnchanged)
{
    auto object = makeObject(256);
    // Unchanged: the initial range again, also when reached through the clamping.
    EXPECT_FALSE(object->setVisibleOpacityRange(0.0f, 1.0f));
    EXPECT_FALSE(object->setVisibleOpacityRange(-1.0f, 2.0f));

    ASSERT_TRUE(object->setVisibleOpacityRange(0.2f, 0.4f));
    EXPECT_FALSE(object->setVisibleOpacityRange(0.5f, 0.5f));
    EXPECT_FALSE(object->setVisibleOpacityRange(0.6f, 0.3f));
    EXPECT_FALSE(object->setVisibleOpacityRange(0.2f, 0.4f));
    EXPECT_EQ(object->visibleOpacityFrom(), 0.2f);
    EXPECT_EQ(object->visibleOpacityTo(), 0.4f);
}

TEST(ObjectInfoVisibleRange, GreyRangeIsWidenedToWholeCells)
{
    auto object = makeObject(256);
    const int n = 256;

    EXPECT_TRUE(object->setVisibleGreyRange(0.1f, 0.2f));
    EXPECT_EQ(object->visibleGreyFrom(), at(n, 25));
    EXPECT_EQ(object->visibleGreyTo(), at(n, 52));

    // A request that widens to the same cells is no change.
    EXPECT_FALSE(object->setVisibleGreyRange(0.1001f, 0.2001f));
    EXPECT_EQ(object->visibleGreyFrom(), at(n, 25));
    EXPECT_EQ(object->visibleGreyTo(), at(n, 52));

    // Pushed in from the left, then from the right, keeping the requested width.
    EXPECT_TRUE(object->setVisibleGreyRange(-0.1f, 0.2f));
    EXPECT_EQ(object->visibleGreyFrom(), 0.0f);
    EXPECT_EQ(object->visibleGreyTo(), at(n, 77)); // 0.3 * 256 = 76.8

    EXPECT_TRUE(object->setVisibleGreyRange(0.9f, 1.2f));
    EXPECT_EQ(object->visibleGreyFrom(), at(n, 179)); // 0.7 * 256 = 179.2
    EXPECT_EQ(object->visibleGreyTo(), 1.0f);

    EXPECT_TRUE(object->setVisibleGreyRange(-1.0f, 2.0f));
    EXPECT_EQ(object->visibleGreyFrom(), 0.0f);
    EXPECT_EQ(object->visibleGreyTo(), 1.0f);

    // Already on boundaries: stored as given.
    EXPECT_TRUE(object->setVisibleGreyRange(at(n, 3), at(n, 4)));
    EXPECT_EQ(object->visibleGreyFrom(), at(n, 3));
    EXPECT_EQ(object->visibleGreyTo(), at(n, 4));
}

TEST(ObjectInfoVisibleRange, GreyRangeRefusesEmptyInvertedAndUnchanged)
{
    auto object = makeObject(256);
    EXPECT_FALSE(object->setVisibleGreyRange(0.0f, 1.0f));
    EXPECT_FALSE(object->setVisibleGreyRange(0.3f, 0.3f));
    EXPECT_FALSE(object->setVisibleGreyRange(0.6f, 0.2f));
    EXPECT_EQ(object->visibleGreyFrom(), 0.0f);
    EXPECT_EQ(object->visibleGreyTo(), 1.0f);
    // The opacity range is independent of the grey range.
    EXPECT_TRUE(object->setVisibleGreyRange(0.25f, 0.5f));
    EXPECT_EQ(object->visibleOpacityFrom(), 0.0f);
    EXPECT_EQ(object->visibleOpacityTo(), 1.0f);
}
