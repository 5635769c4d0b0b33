// The classification object: construction, conversions, cell snapping, interval lookup, the
// visible ranges of the editor, and editing the interval list (splitting, deleting with
// hand-over, moving borders, dropping empty intervals, keeping the default names numbered).

#include "ModelTestSupport.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <limits>
#include <string>
#include <tuple>
#include <vector>

using namespace modeltest;

namespace {

constexpr float kNaN = std::numeric_limits<float>::quiet_NaN();

using Pointers = std::vector<const OXWLUTIntervalInfo*>;

Pointers pointersOf(const OXWLUTObjectInfo& object)
{
    Pointers pointers;
    for (int i = 0; i < object.intervalCount(); ++i) {
        pointers.push_back(object.interval(i));
    }
    return pointers;
}

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

TEST(IntervalEditingSplit, SplitIsAtTheNearestBoundaryInsideTheIntervalAtTheCursorIfWide)
{
    // clang-format off
    const std::tuple<std::vector<int>, double, bool, Borders> cases[] = {
        {{}, 76.8, true, {{0, 77}, {77, 256}}},      {{}, 76.8, false, {{0, 77}, {77, 256}}},
        {{}, 100, true, {{0, 100}, {100, 256}}},     {{}, 100, false, {{0, 100}, {100, 256}}},
        {{}, 100.5, true, {{0, 100}, {100, 256}}},   {{}, 100.5, false, {{0, 101}, {101, 256}}},
        {{}, 0.2, true, {{0, 1}, {1, 256}}},         {{}, -1280, false, {{0, 1}, {1, 256}}},
        {{}, 256, false, {{0, 255}, {255, 256}}},    {{}, 1280, true, {{0, 255}, {255, 256}}},
        {{100}, 100.3, true, {{0, 100}, {100, 101}, {101, 256}}},
        {{64, 192}, 128, true, {{0, 64}, {64, 128}, {128, 192}, {192, 256}}},
        {{64, 128, 192}, 153.6, false, {{0, 64}, {64, 128}, {128, 154}, {154, 192}, {192, 256}}},
        // Two cells split into one each, wherever the cursor is.
        {{100, 102}, 100.3, true, {{0, 100}, {100, 101}, {101, 102}, {102, 256}}},
        {{100, 102}, 101, false, {{0, 100}, {100, 101}, {101, 102}, {102, 256}}},
        {{100, 102}, 101.7, true, {{0, 100}, {100, 101}, {101, 102}, {102, 256}}},
        {{100, 102}, 102, false, {{0, 100}, {100, 101}, {101, 102}, {102, 256}}},
        // One cell cannot be split; a point on a shared border belongs to the interval on its left.
        {{100, 101}, 100.5, true, {{0, 100}, {100, 101}, {101, 256}}},
        {{100, 101}, 101, false, {{0, 100}, {100, 101}, {101, 256}}},
    };
    // clang-format on
    for (const auto& [splits, cell, atLeft, borders] : cases) {
        SCOPED_TRACE(testing::Message() << "at cell " << cell << (atLeft ? " left" : " right"));
        auto object = objectSplitAt(256, splits);
        const Pointers before = pointersOf(*object);
        const float x = at(256, cell);
        const int target = object->intervalIndexAt(std::clamp(x, 0.0f, 1.0f));
        const bool done = borders.size() > before.size();
        EXPECT_EQ(object->newInterval(x, atLeft), done);
        EXPECT_EQ(bordersInCells(*object), borders);
        // The split interval keeps its side of the cursor; the others keep their order.
        for (int i = 0; i < int(before.size()); ++i) {
            const bool shifted = done && (i > target || (i == target && atLeft));
            EXPECT_EQ(object->interval(shifted ? i + 1 : i), before[std::size_t(i)]) << i;
        }
    }
}

TEST(IntervalEditingSplit, TheTwoPartsTogetherShowTheEarlierCurveAndTheNewOneIsEnabledAndNamed)
{
    // Inside segments, on handles (cells 51, 115, 179), next to them, and at both ends. The
    // split interval keeps its name and flag; the new part is enabled and default named.
    const std::pair<double, bool> splits[] = {{84.48, false}, {84.48, true},  {115.5, false},
                                              {115.5, true},  {115.0, false}, {116.0, true},
                                              {51.0, false},  {52.0, true},   {0.2, true},
                                              {255.9, false}, {128.0, true},  {200.0, false}};
    for (const auto& [cell, atLeft] : splits) {
        auto object = makeObject(256);
        OXWLUTIntervalInfo& interval = *object->interval(0);
        interval.setName(QStringLiteral("Bone"));
        interval.setEnabled(false);
        ASSERT_TRUE(
            interval.setReferenceHandles(kOpacity, handlesOf("0:.1 .2:.9 .45:.3 .7:.8 1:.2")));
        ASSERT_TRUE(interval.setReferenceHandles(kRed, handlesOf("0:0 .5:200 1:40")));
        ASSERT_TRUE(interval.setReferenceHandles(kGreen, handlesOf("0:255.5 .3:0 1:100")));
        const std::vector<HandleList> before = curvesOf(interval, Curves::Global);
        ASSERT_TRUE(object->newInterval(at(256, cell), atLeft));
        SCOPED_TRACE(testing::Message() << cell << (atLeft ? " left" : " right"));
        EXPECT_EQ(splitViolation(before, *object, 0), "");
        EXPECT_EQ(namesOf(*object),
                  atLeft ? Names({"Interval 1", "Bone"}) : Names({"Bone", "Interval 2"}));
        EXPECT_EQ(object->interval(0)->isEnabled(), atLeft);
        EXPECT_EQ(object->interval(1)->isEnabled(), !atLeft);
    }
}

TEST(IntervalEditingDelete, NeighbourTakesOverTheRange)
{
    // x, expandLeft, the border left, the survivors' former places
    // clang-format off
    const std::tuple<float, bool, double, int, int> cases[] = {
        {0.5f, true, 192, 0, 2},   {0.5f, false, 64, 0, 2},
        // The first interval always hands over to the right, the last one to the left.
        {0.1f, true, 192, 1, 2},   {0.1f, false, 192, 1, 2},
        {0.9f, false, 64, 0, 1},   {0.9f, true, 64, 0, 1},
        // A shared border belongs to the interval on its left.
        {0.25f, false, 192, 1, 2}, {0.75f, true, 192, 0, 2},
    };
    // clang-format on
    for (const auto& [x, expandLeft, border, first, second] : cases) {
        SCOPED_TRACE(testing::Message() << "x " << x << (expandLeft ? " left" : " right"));
        auto object = objectSplitAt(256, {64, 192});
        const Pointers before = pointersOf(*object);
        EXPECT_TRUE(object->deleteInterval(x, expandLeft));
        EXPECT_EQ(bordersInCells(*object), Borders({{0, border}, {border, 256}}));
        EXPECT_EQ(pointersOf(*object), Pointers({before[first], before[second]}));
        EXPECT_EQ(namesOf(*object), Names({"Interval 1", "Interval 2"}));
    }
    EXPECT_FALSE(makeObject(256)->deleteInterval(0.5f, true)); // the last interval stays
    auto two = objectSplitAt(256, {128});
    EXPECT_FALSE(two->deleteInterval(-0.1f, false));
    EXPECT_FALSE(two->deleteInterval(1.1f, true));
    EXPECT_EQ(two->intervalCount(), 2);
}

TEST(IntervalEditingDelete, SurvivorsCurveIsStretchedOverTheCombinedRange)
{
    for (bool survivorOnLeft : {true, false}) {
        auto object = objectSplitAt(256, {128});
        OXWLUTIntervalInfo* survivor = object->interval(survivorOnLeft ? 0 : 1);
        ASSERT_TRUE(survivor->setReferenceHandles(kOpacity, handlesOf("0:.2 .5:.9 .75:.1 1:.4")));
        ASSERT_TRUE(survivor->commitChannel(kAll));
        const auto reference = curvesOf(*survivor, Curves::Reference);

        EXPECT_TRUE(object->deleteInterval(survivorOnLeft ? 0.75f : 0.25f, survivorOnLeft));
        ASSERT_EQ(pointersOf(*object), Pointers({survivor}));
        EXPECT_EQ(curvesOf(*survivor, Curves::Reference), reference);
        // The handle in the middle cell of the old half is in the middle of the axis.
        EXPECT_EQ(cellCurve(*survivor, kOpacity), "0:0.2 129:0.9 193:0.1 255:0.4");
    }
}

TEST(IntervalEditingBorders, BordersMoveToTheNearestBoundary)
{
    // moveLeftBorder or moveRightBorder, of interval i, to the cell, moved, border afterwards
    // clang-format off
    const std::tuple<bool, int, double, bool, double> steps[] = {
        {true, 0, 76.8, false, 128},  {true, 2, 76.8, false, 128},   {true, -1, 76.8, false, 128},
        {false, 1, 76.8, false, 128}, {false, -1, 76.8, false, 128}, {true, 1, 100.4, true, 100},
        {true, 1, 100.2, false, 100}, {true, 1, 100.5, true, 101}, // halfway goes up
        {true, 1, 180.7, true, 181},  {false, 0, 100.4, true, 100},  {false, 0, 99.8, false, 100},
        {false, 0, 100.6, true, 101}, {false, 0, 100.5, true, 100}, // halfway goes down
    };
    // clang-format on
    auto object = objectSplitAt(256, {128});
    for (const auto& [left, i, cell, moved, border] : steps) {
        const float x = at(256, cell);
        EXPECT_EQ(left ? object->moveLeftBorder(i, x) : object->moveRightBorder(i, x), moved)
            << (left ? "left" : "right") << " border of " << i << " to cell " << cell;
        EXPECT_EQ(bordersInCells(*object), Borders({{0, border}, {border, 256}}));
    }
}

TEST(IntervalEditingBorders, BorderStopsAtTheFarBorderLeavingAnEmptyIntervalToBeRemoved)
{
    auto object = objectSplitAt(256, {50, 100, 200});
    ASSERT_TRUE(object->interval(2)->insertHandle(kOpacity, 0.5f, 0.3f));
    const HandleList curve = object->interval(2)->referenceHandles(kOpacity);
    const Pointers before = pointersOf(*object);
    EXPECT_FALSE(object->removeEmptyIntervals());
    EXPECT_TRUE(object->moveLeftBorder(2, at(256, 10)));
    EXPECT_TRUE(object->moveRightBorder(2, 1.0f));
    EXPECT_EQ(bordersInCells(*object), Borders({{0, 50}, {50, 50}, {50, 256}, {256, 256}}));
    // Nor do the empty intervals' borders move past their neighbours' far borders.
    EXPECT_FALSE(object->moveLeftBorder(2, at(256, 3)));
    EXPECT_FALSE(object->moveRightBorder(1, 0.0f));
    EXPECT_FALSE(object->moveRightBorder(0, 1.0f));
    EXPECT_FALSE(object->moveLeftBorder(1, 1.0f));
    EXPECT_TRUE(object->removeEmptyIntervals());
    EXPECT_EQ(pointersOf(*object), Pointers({before[0], before[2]}));
    EXPECT_EQ(namesOf(*object), Names({"Interval 1", "Interval 2"}));
    EXPECT_EQ(object->interval(1)->referenceHandles(kOpacity), curve);
    EXPECT_FALSE(object->removeEmptyIntervals());

    auto right = objectSplitAt(256, {50, 100});
    EXPECT_TRUE(right->moveRightBorder(0, 0.9f));
    EXPECT_TRUE(right->moveLeftBorder(1, -3.0f));
    EXPECT_EQ(bordersInCells(*right), Borders({{0, 0}, {0, 100}, {100, 256}}));
}

TEST(IntervalEditingNames, RenameReplacesEmptyAndNeighbouringDefaultNamesOnly)
{
    const std::pair<std::vector<std::pair<int, const char*>>, Names> steps[] = {
        // "Interval 2" at place 1 is the next default; the others are the user's.
        {{{0, "Interval 2"}, {1, "Interval 7"}, {2, ""}, {3, "interval 3"}},
         {"Interval 1", "Interval 7", "Interval 3", "interval 3"}},
        // "Previous" is the default name of the place before, whatever that interval is called.
        {{{0, "Bone"}, {1, "Interval 1"}}, {"Bone", "Interval 2", "Interval 3", "interval 3"}},
        {{{0, "Interval 1"}, {3, "Interval 3"}, {1, "Interval 1"}},
         {"Interval 1", "Interval 2", "Interval 3", "Interval 4"}},
    };
    auto object = objectSplitAt(256, {64, 128, 192});
    for (const auto& [renames, after] : steps) {
        for (const auto& [i, name] : renames) {
            object->interval(i)->setName(QString::fromUtf8(name));
        }
        object->renameIntervals();
        EXPECT_EQ(namesOf(*object), after);
    }
}
