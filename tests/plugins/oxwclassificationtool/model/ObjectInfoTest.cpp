// The classification object: construction, conversions, cell snapping, interval lookup and the
// visible ranges of the editor.

#include "ModelTestSupport.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <tuple>

using namespace modeltest;

namespace {

constexpr float kNaN = std::numeric_limits<float>::quiet_NaN();

} // namespace

TEST(ObjectInfoConstruction, CalibratedRangeFallsBackToGreyRangeUnlessAscending)
{
    const std::tuple<float, float, bool> cases[] = {{100.0f, 612.0f, true},  {5.0f, 5.0f, false},
                                                    {612.0f, 100.0f, false}, {kNaN, 10.0f, false},
                                                    {10.0f, kNaN, false},    {kNaN, kNaN, false}};
    for (const auto& [calMin, calMax, kept] : cases) {
        OXWLUTObjectInfo object(-0.5f, 255.5f, 0.0f, 1.0f, 256.0f, calMin, calMax);
        const float min = kept ? calMin : -0.5f, max = kept ? calMax : 255.5f;
        EXPECT_EQ(std::make_pair(object.calibratedMin(), object.calibratedMax()),
                  std::make_pair(min, max))
            << calMin << " .. " << calMax;
        EXPECT_EQ(object.calibratedRange(), max - min);
        EXPECT_FLOAT_EQ(object.calibratedFromPosition(0.5f), (min + max) / 2);
    }
}

TEST(ObjectInfoConversions, GreyOpacityAndCalibratedRoundTrips)
{
    OXWLUTObjectInfo object(-0.5f, 255.5f, 0.2f, 0.6f, 256.0f, -1024.0f, 3072.0f);
    EXPECT_EQ(object.greyStep(), 1.0f / 256);
    // position, grey value, calibrated value; no clamping beyond the histogram
    const std::tuple<float, float, float> cases[] = {
        {0.0f, -0.5f, -1024}, {0.25f, 63.5f, 0}, {0.5f, 127.5f, 1024}, {1.5f, 383.5f, 5120}};
    for (const auto& [position, grey, calibrated] : cases) {
        EXPECT_EQ(object.greyFromPosition(position), grey);
        EXPECT_EQ(object.positionFromGrey(grey), position);
        EXPECT_EQ(object.calibratedFromPosition(position), calibrated);
        EXPECT_EQ(object.positionFromCalibrated(calibrated), position);
    }
    EXPECT_FLOAT_EQ(object.opacityFromPosition(0.5f), 0.4f);
    EXPECT_FLOAT_EQ(object.positionFromOpacity(0.6f), 1.0f);
    // An empty, inverted or undefined calibrated range passes calibrated values through.
    OXWLUTObjectInfo flat(3.0f, 3.0f, 0.0f, 1.0f, 1.0f, 3.0f, 3.0f);
    OXWLUTObjectInfo inverted(10.0f, 0.0f, 0.0f, 1.0f, 10.0f, 5.0f, 5.0f);
    OXWLUTObjectInfo undefined(kNaN, kNaN, 0.0f, 1.0f, 1.0f, kNaN, kNaN);
    for (const OXWLUTObjectInfo* other : {&flat, &inverted, &undefined}) {
        EXPECT_EQ(other->positionFromCalibrated(-2.5f), -2.5f);
    }
}

TEST(ObjectInfoSnapping, CellCentresAndBoundaries)
{
    auto object = makeObject(256);
    // cell position, the centre, the boundaries below and above; a boundary belongs to the
    // cell on its right
    const std::tuple<double, double, double, double> cases[] = {
        {0, 0.5, 0, 0},        {0.99, 0.5, 0, 1},      {1, 1.5, 1, 1},
        {25.6, 25.5, 25, 26},  {128, 128.5, 128, 128}, {255.9, 255.5, 255, 256},
        {256, 256.5, 256, 256}};
    for (const auto& [cell, centre, down, up] : cases) {
        EXPECT_EQ(object->snapToCellCentre(at(256, cell)), at(256, centre)) << cell;
        EXPECT_EQ(object->snapDownToCell(at(256, cell)), at(256, down)) << cell;
        EXPECT_EQ(object->snapUpToCell(at(256, cell)), at(256, up)) << cell;
    }
    // 0.7f lies just below the boundary 7/10 of a ten-cell axis; in single precision
    // 10 * 0.7f rounds up to exactly 7 and would pick the wrong cell.
    auto ten = makeObject(10);
    EXPECT_NEAR(ten->snapToCellCentre(0.7f), 0.65, 1e-6);
    EXPECT_NEAR(ten->snapDownToCell(0.7f), 0.6, 1e-6);
    EXPECT_NEAR(ten->snapUpToCell(0.7f), 0.7, 1e-6);
}

TEST(ObjectInfoIntervals, LookupOnSharedBordersPrefersTheLeftInterval)
{
    auto object = objectSplitAt(256, {128});
    EXPECT_EQ(object->interval(2), nullptr);
    EXPECT_EQ(object->interval(-1), nullptr);
    // x, intervalIndexAt (5e-7 of tolerance either side), intervalAt (none)
    const std::tuple<float, int, int> cases[] = {
        {0.5f, 0, 0},    {0.5f - 4e-7f, 0, 0},  {0.5f + 4e-7f, 0, 1}, {0.5f + 6e-7f, 1, 1},
        {0.25f, 0, 0},   {0.75f, 1, 1},         {0.0f, 0, 0},         {1.0f, 1, 1},
        {-4e-7f, 0, -1}, {1.0f + 4e-7f, 1, -1}, {-1e-6f, -1, -1},     {1.0f + 1e-6f, -1, -1}};
    for (const auto& [x, index, holder] : cases) {
        EXPECT_EQ(object->intervalIndexAt(x), index) << x;
        EXPECT_EQ(object->intervalAt(x), object->interval(holder)) << x;
    }
}

TEST(ObjectInfoIntervals, EnableAllAndResetToOneDefaultInterval)
{
    auto object = objectSplitAt(256, {64, 192});
    object->interval(1)->setName(QStringLiteral("Bone"));
    object->interval(0)->moveHandle(kOpacity, 0, 0.0f, 0.7f);
    for (bool enabled : {false, true, false}) {
        object->setAllIntervalsEnabled(enabled);
        for (int i = 0; i < object->intervalCount(); ++i) {
            EXPECT_EQ(object->interval(i)->isEnabled(), enabled) << i;
        }
    }
    object->resetIntervals();
    EXPECT_EQ(bordersInCells(*object), Borders({{0, 256}}));
    EXPECT_EQ(namesOf(*object), Names({"Interval 1"}));
    EXPECT_TRUE(object->interval(0)->isEnabled());
    EXPECT_EQ(object->interval(0)->objectInfo(), object.get());
    EXPECT_EQ(cellCurve(*object->interval(0), kOpacity), "0:0 255:1");
    EXPECT_EQ(curvesOf(*object->interval(0), Curves::Reference),
              curvesOf(*object->interval(0), Curves::Fitted));
}

TEST(ObjectInfoVisibleRange, OpacityRangeKeepsItsHeightWhenPushedInside)
{
    // requested range, changed, range afterwards
    // clang-format off
    const std::tuple<float, float, bool, double, double> steps[] = {
        {0.0f, 1.0f, false, 0, 1}, {-1.0f, 2.0f, false, 0, 1}, // unchanged, also when clamped
        {0.8f, 1.3f, true, 0.5, 1}, {-0.2f, 0.3f, true, 0, 0.5},  {-1.0f, 2.0f, true, 0, 1},
        {0.2f, 0.4f, true, 0.2, 0.4}, {0.5f, 0.5f, false, 0.2, 0.4}, {0.6f, 0.3f, false, 0.2, 0.4},
        {0.2f, 0.4f, false, 0.2, 0.4}};
    // clang-format on
    auto object = makeObject(256);
    EXPECT_EQ(std::make_pair(object->visibleOpacityFrom(), object->visibleOpacityTo()),
              std::make_pair(0.0f, 1.0f));
    for (const auto& [a, b, changed, from, to] : steps) {
        EXPECT_EQ(object->setVisibleOpacityRange(a, b), changed) << a << " .. " << b;
        EXPECT_NEAR(object->visibleOpacityFrom(), from, 1e-6) << a << " .. " << b;
        EXPECT_NEAR(object->visibleOpacityTo(), to, 1e-6) << a << " .. " << b;
    }
}

TEST(ObjectInfoVisibleRange, GreyRangeIsWidenedToWholeCellsAndPushedInside)
{
    const int n = 256;
    // requested range, changed, range afterwards in cells
    // clang-format off
    const std::tuple<float, float, bool, double, double> steps[] = {
        {0.0f, 1.0f, false, 0, n}, {0.3f, 0.3f, false, 0, n},   {0.6f, 0.2f, false, 0, n},
        {0.1f, 0.2f, true, 25, 52}, {0.1001f, 0.2001f, false, 25, 52}, // the same cells
        {-0.1f, 0.2f, true, 0, 77}, {0.9f, 1.2f, true, 179, n}, // 0.3 * n = 76.8, 0.7 * n = 179.2
        {-1.0f, 2.0f, true, 0, n},  {at(n, 3), at(n, 4), true, 3, 4}};
    // clang-format on
    auto object = makeObject(n);
    for (const auto& [a, b, changed, from, to] : steps) {
        EXPECT_EQ(object->setVisibleGreyRange(a, b), changed) << a << " .. " << b;
        EXPECT_EQ(std::make_pair(object->visibleGreyFrom(), object->visibleGreyTo()),
                  std::make_pair(at(n, from), at(n, to)));
    }
    // The opacity range is independent of the grey range.
    EXPECT_EQ(object->visibleOpacityFrom(), 0.0f);
    EXPECT_EQ(object->visibleOpacityTo(), 1.0f);
}
