// Editing the interval list: splitting, deleting with hand-over, moving borders, dropping empty
// intervals and keeping the default names numbered.

#include "ModelTestSupport.h"

#include <gtest/gtest.h>

#include <cmath>
#include <initializer_list>
#include <memory>
#include <string>
#include <utility>
#include <vector>

using namespace modeltest;

namespace {

using Borders = std::vector<std::pair<double, double>>;
using Names = std::vector<std::string>;

// An n-cell object split (new part on the right) at the given cell boundaries, ascending.
std::unique_ptr<OXWLUTObjectInfo> objectSplitAt(int n, std::initializer_list<int> boundaries)
{
    auto object = makeObject(n);
    for (int b : boundaries) {
        EXPECT_TRUE(object->newInterval(at(n, b), false)) << "split at cell " << b;
    }
    return object;
}

std::vector<const OXWLUTIntervalInfo*> pointersOf(const OXWLUTObjectInfo& object)
{
    std::vector<const OXWLUTIntervalInfo*> pointers;
    for (int i = 0; i < object.intervalCount(); ++i) {
        pointers.push_back(object.interval(i));
    }
    return pointers;
}

double toleranceFor(int channel)
{
    return channel == kOpacity ? 1e-5 : 1e-3;
}

// Gives the single interval of a 256-cell object curves with several handles on three
// channels.
void shapeCurves(OXWLUTIntervalInfo& interval)
{
    ASSERT_TRUE(interval.setReferenceHandles(
        kOpacity, {{0.0f, 0.1f}, {0.2f, 0.9f}, {0.45f, 0.3f}, {0.7f, 0.8f}, {1.0f, 0.2f}}));
    ASSERT_TRUE(interval.setReferenceHandles(kRed, {{0.0f, 0.0f}, {0.5f, 200.0f}, {1.0f, 40.0f}}));
    ASSERT_TRUE(
        interval.setReferenceHandles(kGreen, {{0.0f, 255.5f}, {0.3f, 0.0f}, {1.0f, 100.0f}}));
    ASSERT_TRUE(interval.commitChannel(kAll));
}

struct Classification
{
    std::vector<std::vector<double>> samples; // per channel, every cell centre
    std::vector<HandleList> handles;          // per channel, global handles of all intervals
};

Classification capture(const OXWLUTObjectInfo& object)
{
    const int n = static_cast<int>(object.greyCount());
    Classification c;
    for (int channel : kChannels) {
        c.samples.push_back(sampleCells(object, channel, 0, n - 1));
        HandleList all;
        for (int i = 0; i < object.intervalCount(); ++i) {
            const HandleList part = object.interval(i)->globalCurve(channel);
            all.insert(all.end(), part.begin(), part.end());
        }
        c.handles.push_back(all);
    }
    return c;
}

// The classification shows the same values at every cell centre as before.
void expectSameCurves(const Classification& before, const OXWLUTObjectInfo& object)
{
    const Classification after = capture(object);
    for (std::size_t c = 0; c < 4; ++c) {
        const int channel = kChannels[c];
        ASSERT_EQ(after.samples[c].size(), before.samples[c].size());
        int mismatches = 0;
        for (std::size_t k = 0; k < before.samples[c].size() && mismatches < 5; ++k) {
            if (!(std::fabs(after.samples[c][k] - before.samples[c][k]) <= toleranceFor(channel))) {
                ADD_FAILURE() << "channel " << channel << " cell " << k << ": before "
                              << before.samples[c][k] << ", after " << after.samples[c][k];
                ++mismatches;
            }
        }
    }
}

// Every handle of the earlier classification is still there, in the interval that holds it.
void expectHandlesKept(const Classification& before, const OXWLUTObjectInfo& object)
{
    const double s = object.greyStep();
    for (std::size_t c = 0; c < 4; ++c) {
        const int channel = kChannels[c];
        for (const Handle& p : before.handles[c]) {
            const OXWLUTIntervalInfo* holder = object.intervalAt(p.x);
            ASSERT_NE(holder, nullptr) << p.x;
            bool found = false;
            for (const Handle& h : holder->globalCurve(channel)) {
                if (std::fabs(h.x - p.x) < 0.01 * s &&
                    std::fabs(h.y - p.y) <= toleranceFor(channel)) {
                    found = true;
                }
            }
            EXPECT_TRUE(found) << "channel " << channel << ": handle at cell " << p.x / s
                               << " value " << p.y << " lost";
        }
    }
}

void expectBorders(const OXWLUTObjectInfo& object, const Borders& expected)
{
    EXPECT_EQ(bordersInCells(object), expected);
}

} // namespace

TEST(IntervalEditingSplit, SplitPointIsTheNearestBoundaryAndTheNewPartIsOnTheChosenSide)
{
    for (bool atLeft : {true, false}) {
        SCOPED_TRACE(atLeft ? "new part at left" : "new part at right");
        auto object = makeObject(256);
        OXWLUTIntervalInfo* original = object->interval(0);
        original->setName(QStringLiteral("Bone"));

        EXPECT_TRUE(object->newInterval(0.3f, atLeft)); // 76.8 cells
        expectBorders(*object, {{0, 77}, {77, 256}});
        if (atLeft) {
            EXPECT_EQ(object->interval(1), original);
            EXPECT_EQ(namesOf(*object), Names({"Interval 1", "Bone"}));
        } else {
            EXPECT_EQ(object->interval(0), original);
            EXPECT_EQ(namesOf(*object), Names({"Bone", "Interval 2"}));
        }
        EXPECT_TRUE(object->interval(0)->isEnabled());
        EXPECT_TRUE(object->interval(1)->isEnabled());
    }
}

TEST(IntervalEditingSplit, NewPartIsEnabledAndTheOldPartKeepsItsFlag)
{
    for (bool atLeft : {true, false}) {
        auto object = makeObject(256);
        OXWLUTIntervalInfo* original = object->interval(0);
        original->setEnabled(false);
        ASSERT_TRUE(object->newInterval(0.5f, atLeft));
        OXWLUTIntervalInfo* added = object->interval(atLeft ? 0 : 1);
        EXPECT_NE(added, original);
        EXPECT_TRUE(added->isEnabled()) << atLeft;
        EXPECT_FALSE(original->isEnabled()) << atLeft;
    }
}

TEST(IntervalEditingSplit, SplitOnABoundaryOrACellCentre)
{
    const int n = 256;
    auto left = makeObject(n);
    EXPECT_TRUE(left->newInterval(at(n, 100), true));
    expectBorders(*left, {{0, 100}, {100, 256}});
    auto right = makeObject(n);
    EXPECT_TRUE(right->newInterval(at(n, 100), false));
    expectBorders(*right, {{0, 100}, {100, 256}});

    // At a cell centre the cell goes to the old part.
    auto centreLeft = makeObject(n);
    EXPECT_TRUE(centreLeft->newInterval(at(n, 100.5), true));
    expectBorders(*centreLeft, {{0, 100}, {100, 256}});
    auto centreRight = makeObject(n);
    EXPECT_TRUE(centreRight->newInterval(at(n, 100.5), false));
    expectBorders(*centreRight, {{0, 101}, {101, 256}});
}

TEST(IntervalEditingSplit, SplitOfAMiddleIntervalStaysBetweenItsNeighbours)
{
    auto object = objectSplitAt(256, {64, 192});
    const auto before = pointersOf(*object);
    EXPECT_TRUE(object->newInterval(0.5f, true));
    expectBorders(*object, {{0, 64}, {64, 128}, {128, 192}, {192, 256}});
    EXPECT_EQ(object->interval(0), before[0]);
    EXPECT_EQ(object->interval(2), before[1]);
    EXPECT_EQ(object->interval(3), before[2]);

    EXPECT_TRUE(object->newInterval(0.6f, false)); // 153.6 cells, in [128, 192]
    expectBorders(*object, {{0, 64}, {64, 128}, {128, 154}, {154, 192}, {192, 256}});
    EXPECT_EQ(object->interval(2), before[1]);
    EXPECT_EQ(namesOf(*object),
              Names({"Interval 1", "Interval 2", "Interval 3", "Interval 4", "Interval 5"}));
}

TEST(IntervalEditingSplit, TwoCellIntervalSplitsIntoTwoOneCellParts)
{
    for (bool atLeft : {true, false}) {
        for (float x : {0.0f, 0.2f, 0.5f, 0.7f, 1.0f}) {
            SCOPED_TRACE(testing::Message() << "x " << x << (atLeft ? " left" : " right"));
            auto object = makeObject(2);
            EXPECT_TRUE(object->newInterval(x, atLeft));
            expectBorders(*object, {{0, 1}, {1, 2}});
        }
    }
    // The same inside a larger axis: cells 100 and 101.
    for (bool atLeft : {true, false}) {
        for (double cell : {100.3, 100.5, 101.0, 101.7, 102.0}) {
            SCOPED_TRACE(testing::Message() << "cell " << cell << (atLeft ? " left" : " right"));
            auto object = objectSplitAt(256, {100, 102});
            EXPECT_TRUE(object->newInterval(at(256, cell), atLeft));
            expectBorders(*object, {{0, 100}, {100, 101}, {101, 102}, {102, 256}});
            for (int i : {1, 2}) {
                for (int channel : kChannels) {
                    for (const Handle& h : object->interval(i)->handles(channel)) {
                        EXPECT_FLOAT_EQ(h.x, 0.5f) << "interval " << i << " channel " << channel;
                    }
                }
            }
        }
    }
}

TEST(IntervalEditingSplit, OneCellIntervalCannotBeSplit)
{
    auto single = makeObject(1);
    EXPECT_FALSE(single->newInterval(0.5f, true));
    EXPECT_FALSE(single->newInterval(0.5f, false));
    EXPECT_EQ(single->intervalCount(), 1);

    auto object = objectSplitAt(256, {100, 101});
    object->interval(1)->setName(QStringLiteral("Thin"));
    const Classification before = capture(*object);
    for (double cell : {100.0, 100.5, 101.0}) {
        for (bool atLeft : {true, false}) {
            // A point on a shared border belongs to the interval on its left.
            const int target = object->intervalIndexAt(at(256, cell));
            if (target != 1) {
                continue;
            }
            EXPECT_FALSE(object->newInterval(at(256, cell), atLeft)) << cell;
        }
    }
    expectBorders(*object, {{0, 100}, {100, 101}, {101, 256}});
    EXPECT_EQ(namesOf(*object), Names({"Interval 1", "Thin", "Interval 3"}));
    const Classification after = capture(*object);
    EXPECT_EQ(after.handles, before.handles);
}

TEST(IntervalEditingSplit, SplitAtAnEndCellGivesAOneCellPart)
{
    const int n = 256;
    auto first = makeObject(n);
    EXPECT_TRUE(first->newInterval(at(n, 0.2), true));
    expectBorders(*first, {{0, 1}, {1, 256}});

    auto clampedLow = makeObject(n);
    EXPECT_TRUE(clampedLow->newInterval(-5.0f, false));
    expectBorders(*clampedLow, {{0, 1}, {1, 256}});

    auto last = makeObject(n);
    EXPECT_TRUE(last->newInterval(1.0f, false));
    expectBorders(*last, {{0, 255}, {255, 256}});

    auto clampedHigh = makeObject(n);
    EXPECT_TRUE(clampedHigh->newInterval(5.0f, true));
    expectBorders(*clampedHigh, {{0, 255}, {255, 256}});

    // The first cell of a later interval.
    auto later = objectSplitAt(n, {100});
    EXPECT_TRUE(later->newInterval(at(n, 100.3), true));
    expectBorders(*later, {{0, 100}, {100, 101}, {101, 256}});
}

TEST(IntervalEditingSplit, TheTwoPartsTogetherShowTheEarlierCurve)
{
    const int n = 256;
    struct Split
    {
        double cell;
        bool atLeft;
    };
    // Inside segments, on handles (cells 51, 115, 179), next to them, and at both ends.
    const Split splits[] = {{84.48, false}, {84.48, true},  {115.5, false}, {115.5, true},
                            {115.0, false}, {116.0, true},  {51.0, false},  {52.0, true},
                            {0.2, true},    {255.9, false}, {128.0, true},  {200.0, false}};
    for (const Split& split : splits) {
        SCOPED_TRACE(testing::Message()
                     << "split at cell " << split.cell << (split.atLeft ? " left" : " right"));
        auto object = makeObject(n);
        shapeCurves(*object->interval(0));
        const Classification before = capture(*object);

        ASSERT_TRUE(object->newInterval(at(n, split.cell), split.atLeft));
        ASSERT_EQ(object->intervalCount(), 2);
        expectSameCurves(before, *object);
        expectHandlesKept(before, *object);
    }
}

TEST(IntervalEditingSplit, RepeatedSplitsKeepTheCurveAndLeaveNeighboursAlone)
{
    const int n = 256;
    auto object = makeObject(n);
    shapeCurves(*object->interval(0));
    const Classification original = capture(*object);

    const std::pair<double, bool> splits[] = {{100.2, false}, {30.7, true},  {180.0, false},
                                              {101.5, true},  {240.1, true}, {5.5, false}};
    for (const auto& [cell, atLeft] : splits) {
        SCOPED_TRACE(testing::Message() << "split at cell " << cell);
        const int target = object->intervalIndexAt(at(n, cell));
        std::vector<HandleList> others;
        for (int i = 0; i < object->intervalCount(); ++i) {
            if (i != target) {
                others.push_back(object->interval(i)->handles(kOpacity));
            }
        }
        ASSERT_TRUE(object->newInterval(at(n, cell), atLeft));
        // Intervals other than the two parts are untouched.
        std::size_t k = 0;
        for (int i = 0; i < object->intervalCount(); ++i) {
            if (i != target && i != target + 1) {
                EXPECT_EQ(object->interval(i)->handles(kOpacity), others[k++]) << i;
            }
        }
        expectSameCurves(original, *object);
    }
    EXPECT_EQ(object->intervalCount(), 7);
}

TEST(IntervalEditingDelete, NeighbourTakesOverTheRange)
{
    struct Case
    {
        float x;
        bool expandLeft;
        Borders borders;
        std::vector<int> survivors; // former indices
    };
    const Case cases[] = {
        {0.5f, true, {{0, 192}, {192, 256}}, {0, 2}},
        {0.5f, false, {{0, 64}, {64, 256}}, {0, 2}},
        // The first interval always hands over to the right, the last one to the left.
        {0.1f, true, {{0, 192}, {192, 256}}, {1, 2}},
        {0.1f, false, {{0, 192}, {192, 256}}, {1, 2}},
        {0.9f, false, {{0, 64}, {64, 256}}, {0, 1}},
        {0.9f, true, {{0, 64}, {64, 256}}, {0, 1}},
        // A shared border belongs to the interval on its left.
        {0.25f, false, {{0, 192}, {192, 256}}, {1, 2}},
        {0.75f, true, {{0, 192}, {192, 256}}, {0, 2}},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(testing::Message() << "x " << c.x << (c.expandLeft ? " left" : " right"));
        auto object = objectSplitAt(256, {64, 192});
        const auto before = pointersOf(*object);
        EXPECT_TRUE(object->deleteInterval(c.x, c.expandLeft));
        expectBorders(*object, c.borders);
        ASSERT_EQ(object->intervalCount(), 2);
        EXPECT_EQ(object->interval(0), before[c.survivors[0]]);
        EXPECT_EQ(object->interval(1), before[c.survivors[1]]);
        EXPECT_EQ(namesOf(*object), Names({"Interval 1", "Interval 2"}));
    }
}

TEST(IntervalEditingDelete, RefusedForTheLastIntervalOrAPointOutside)
{
    auto single = makeObject(256);
    EXPECT_FALSE(single->deleteInterval(0.5f, true));
    EXPECT_FALSE(single->deleteInterval(0.5f, false));
    EXPECT_EQ(single->intervalCount(), 1);

    auto object = objectSplitAt(256, {128});
    EXPECT_FALSE(object->deleteInterval(-0.1f, false));
    EXPECT_FALSE(object->deleteInterval(1.1f, true));
    expectBorders(*object, {{0, 128}, {128, 256}});
}

TEST(IntervalEditingDelete, SurvivorsCurveIsStretchedOverTheCombinedRange)
{
    const int n = 256;
    for (bool survivorOnLeft : {true, false}) {
        SCOPED_TRACE(survivorOnLeft ? "left survives" : "right survives");
        auto object = objectSplitAt(n, {128});
        OXWLUTIntervalInfo* survivor = object->interval(survivorOnLeft ? 0 : 1);
        ASSERT_TRUE(survivor->setReferenceHandles(
            kOpacity, {{0.0f, 0.2f}, {0.5f, 0.9f}, {0.75f, 0.1f}, {1.0f, 0.4f}}));
        ASSERT_TRUE(survivor->commitChannel(kAll));
        const HandleList reference = survivor->referenceHandles(kOpacity);
        const HandleList red = survivor->referenceHandles(kRed);

        EXPECT_TRUE(object->deleteInterval(survivorOnLeft ? 0.75f : 0.25f, survivorOnLeft));
        ASSERT_EQ(object->intervalCount(), 1);
        ASSERT_EQ(object->interval(0), survivor);
        expectBorders(*object, {{0, 256}});
        EXPECT_EQ(survivor->referenceHandles(kOpacity), reference);
        EXPECT_EQ(survivor->referenceHandles(kRed), red);

        // Same handles and values; local positions kept to within one cell of the new width.
        const HandleList& fitted = survivor->handles(kOpacity);
        ASSERT_EQ(fitted.size(), reference.size());
        for (std::size_t k = 0; k < fitted.size(); ++k) {
            EXPECT_EQ(fitted[k].y, reference[k].y) << k;
            EXPECT_NEAR(fitted[k].x, reference[k].x, 1.0 / n) << k;
        }
        EXPECT_EQ(fitted.front().x, at(n, 0.5));
        EXPECT_EQ(fitted.back().x, at(n, 255.5));
        // The handle at the middle of the old half is now in the middle of the axis.
        EXPECT_NEAR(survivor->globalFromLocal(fitted[1].x) * n, 128.5, 1.01);
    }
}

TEST(IntervalEditingBorders, MoveLeftBorderSnapsToTheNearestBoundary)
{
    const int n = 256;
    auto object = objectSplitAt(n, {128});
    EXPECT_FALSE(object->moveLeftBorder(0, 0.3f));
    EXPECT_FALSE(object->moveLeftBorder(2, 0.3f));
    EXPECT_FALSE(object->moveLeftBorder(-1, 0.3f));
    expectBorders(*object, {{0, 128}, {128, 256}});

    EXPECT_TRUE(object->moveLeftBorder(1, at(n, 100.4)));
    expectBorders(*object, {{0, 100}, {100, 256}});
    EXPECT_FALSE(object->moveLeftBorder(1, at(n, 100.2)));
    EXPECT_TRUE(object->moveLeftBorder(1, at(n, 100.5))); // halfway goes up
    expectBorders(*object, {{0, 101}, {101, 256}});
    EXPECT_TRUE(object->moveLeftBorder(1, at(n, 180.7)));
    expectBorders(*object, {{0, 181}, {181, 256}});
}

TEST(IntervalEditingBorders, MoveRightBorderSnapsToTheNearestBoundary)
{
    const int n = 256;
    auto object = objectSplitAt(n, {128});
    EXPECT_FALSE(object->moveRightBorder(1, 0.3f));
    EXPECT_FALSE(object->moveRightBorder(-1, 0.3f));
    expectBorders(*object, {{0, 128}, {128, 256}});

    EXPECT_TRUE(object->moveRightBorder(0, at(n, 100.4)));
    expectBorders(*object, {{0, 100}, {100, 256}});
    EXPECT_FALSE(object->moveRightBorder(0, at(n, 99.8)));
    EXPECT_TRUE(object->moveRightBorder(0, at(n, 100.6)));
    expectBorders(*object, {{0, 101}, {101, 256}});
    EXPECT_TRUE(object->moveRightBorder(0, at(n, 100.5))); // halfway goes down
    expectBorders(*object, {{0, 100}, {100, 256}});
}

TEST(IntervalEditingBorders, BorderStopsAtTheNeighboursFarBorderLeavingAnEmptyInterval)
{
    const int n = 256;
    auto object = objectSplitAt(n, {50, 100});
    const auto before = pointersOf(*object);

    EXPECT_TRUE(object->moveLeftBorder(2, at(n, 10)));
    expectBorders(*object, {{0, 50}, {50, 50}, {50, 256}});
    EXPECT_FALSE(object->moveLeftBorder(2, at(n, 3)));

    EXPECT_TRUE(object->removeEmptyIntervals());
    expectBorders(*object, {{0, 50}, {50, 256}});
    EXPECT_EQ(object->interval(0), before[0]);
    EXPECT_EQ(object->interval(1), before[2]);
    EXPECT_EQ(namesOf(*object), Names({"Interval 1", "Interval 2"}));
    EXPECT_FALSE(object->removeEmptyIntervals());

    // The mirror image: the left border of the right interval passes its own right border.
    auto mirror = objectSplitAt(n, {50, 100});
    EXPECT_TRUE(mirror->moveLeftBorder(1, 0.9f));
    expectBorders(*mirror, {{0, 100}, {100, 100}, {100, 256}});
    // The empty interval's own borders do not move any more.
    EXPECT_FALSE(mirror->moveRightBorder(1, 0.0f));
    EXPECT_FALSE(mirror->moveRightBorder(0, 2.0f));
    expectBorders(*mirror, {{0, 100}, {100, 100}, {100, 256}});

    auto right = objectSplitAt(n, {50, 100});
    EXPECT_TRUE(right->moveRightBorder(0, 0.9f));
    expectBorders(*right, {{0, 100}, {100, 100}, {100, 256}});
    EXPECT_FALSE(right->moveRightBorder(1, 0.0f)); // stops at its own left border, 100
    expectBorders(*right, {{0, 100}, {100, 100}, {100, 256}});

    auto low = objectSplitAt(n, {50});
    EXPECT_TRUE(low->moveLeftBorder(1, -3.0f));
    expectBorders(*low, {{0, 0}, {0, 256}});
    EXPECT_TRUE(low->removeEmptyIntervals());
    expectBorders(*low, {{0, 256}});
    EXPECT_EQ(namesOf(*low), Names({"Interval 1"}));
}

TEST(IntervalEditingBorders, BorderDraggedAwayAndBackRestoresBothCurves)
{
    const int n = 256;
    auto object = objectSplitAt(n, {128});
    OXWLUTIntervalInfo* left = object->interval(0);
    OXWLUTIntervalInfo* right = object->interval(1);
    ASSERT_TRUE(left->setReferenceHandles(
        kOpacity, {{0.0f, 0.0f}, {0.3f, 0.8f}, {0.5f, 0.2f}, {0.9f, 0.7f}, {1.0f, 0.3f}}));
    ASSERT_TRUE(right->setReferenceHandles(
        kOpacity, {{0.0f, 0.5f}, {0.1f, 1.0f}, {0.2f, 0.1f}, {0.6f, 0.6f}, {1.0f, 0.0f}}));
    ASSERT_TRUE(right->setReferenceHandles(kBlue, {{0.0f, 3.0f}, {0.05f, 90.0f}, {1.0f, 7.0f}}));
    // As at the start of a drag: the curves are committed.
    ASSERT_TRUE(left->commitChannel(kAll));
    ASSERT_TRUE(right->commitChannel(kAll));
    ASSERT_TRUE(left->fitChannel(kAll));
    ASSERT_TRUE(right->fitChannel(kAll));
    const Classification before = capture(*object);
    const HandleList leftReference = left->referenceHandles(kOpacity);
    const HandleList rightReference = right->referenceHandles(kOpacity);

    const double path[] = {140.2, 170.0, 200.6, 254.9, 255.5, 300.0, 210.0,
                           90.0,  20.3,  1.0,   0.0,   -4.0,  60.0,  127.7};
    for (double cell : path) {
        SCOPED_TRACE(cell);
        object->moveLeftBorder(1, at(n, cell));
        EXPECT_EQ(left->referenceHandles(kOpacity), leftReference);
        EXPECT_EQ(right->referenceHandles(kOpacity), rightReference);
        EXPECT_EQ(left->to(), right->from());
    }
    expectBorders(*object, {{0, 128}, {128, 256}});
    const Classification after = capture(*object);
    EXPECT_EQ(after.handles, before.handles);
    EXPECT_FALSE(object->removeEmptyIntervals());
}

TEST(IntervalEditingBorders, RemoveEmptyIntervalsLeavesTheOthersAlone)
{
    const int n = 256;
    auto object = objectSplitAt(n, {64, 128, 192});
    ASSERT_TRUE(object->interval(1)->insertHandle(kOpacity, 0.4f, 0.3f));
    EXPECT_FALSE(object->removeEmptyIntervals());
    EXPECT_EQ(object->intervalCount(), 4);

    EXPECT_TRUE(object->moveLeftBorder(1, 0.0f));
    EXPECT_TRUE(object->moveRightBorder(2, 1.0f));
    expectBorders(*object, {{0, 0}, {0, 128}, {128, 256}, {256, 256}});
    const auto pointers = pointersOf(*object);
    const HandleList middle = object->interval(1)->handles(kOpacity);
    const HandleList last = object->interval(2)->handles(kOpacity);

    EXPECT_TRUE(object->removeEmptyIntervals());
    expectBorders(*object, {{0, 128}, {128, 256}});
    EXPECT_EQ(object->interval(0), pointers[1]);
    EXPECT_EQ(object->interval(1), pointers[2]);
    EXPECT_EQ(object->interval(0)->handles(kOpacity), middle);
    EXPECT_EQ(object->interval(1)->handles(kOpacity), last);
    EXPECT_EQ(namesOf(*object), Names({"Interval 1", "Interval 2"}));
}

TEST(IntervalEditingNames, DeletingTheMiddleOfThreeRenumbersTheDefaults)
{
    for (bool expandLeft : {true, false}) {
        SCOPED_TRACE(expandLeft ? "expand left" : "expand right");
        auto object = objectSplitAt(256, {64, 192});
        ASSERT_EQ(namesOf(*object), Names({"Interval 1", "Interval 2", "Interval 3"}));
        object->interval(1)->setName(QStringLiteral("Liver"));
        EXPECT_TRUE(object->deleteInterval(0.5f, expandLeft));
        EXPECT_EQ(namesOf(*object), Names({"Interval 1", "Interval 2"}));
    }
}

TEST(IntervalEditingNames, DefaultNamesFollowTheirPlaces)
{
    auto object = objectSplitAt(256, {64, 128, 192});
    ASSERT_EQ(namesOf(*object), Names({"Interval 1", "Interval 2", "Interval 3", "Interval 4"}));
    EXPECT_TRUE(object->deleteInterval(0.4f, true));
    EXPECT_EQ(namesOf(*object), Names({"Interval 1", "Interval 2", "Interval 3"}));
    EXPECT_TRUE(object->deleteInterval(0.1f, true));
    EXPECT_EQ(namesOf(*object), Names({"Interval 1", "Interval 2"}));
    EXPECT_TRUE(object->newInterval(0.1f, true));
    EXPECT_EQ(namesOf(*object), Names({"Interval 1", "Interval 2", "Interval 3"}));
}

TEST(IntervalEditingNames, UserNamesSurviveSplitsAndDeletions)
{
    auto object = objectSplitAt(256, {128});
    object->interval(0)->setName(QStringLiteral("Bone"));
    object->interval(1)->setName(QStringLiteral("Skin"));

    EXPECT_TRUE(object->newInterval(0.75f, true));
    EXPECT_EQ(namesOf(*object), Names({"Bone", "Interval 2", "Skin"}));
    EXPECT_TRUE(object->newInterval(0.1f, true));
    EXPECT_EQ(namesOf(*object), Names({"Interval 1", "Bone", "Interval 3", "Skin"}));
    EXPECT_TRUE(object->deleteInterval(0.6f, false));
    EXPECT_EQ(namesOf(*object), Names({"Interval 1", "Bone", "Skin"}));
    EXPECT_TRUE(object->deleteInterval(0.01f, false));
    EXPECT_EQ(namesOf(*object), Names({"Bone", "Skin"}));
}

TEST(IntervalEditingNames, RenameReplacesEmptyAndNeighbouringDefaultNamesOnly)
{
    auto object = objectSplitAt(256, {64, 128, 192});
    object->interval(0)->setName(QStringLiteral("Interval 2")); // next default at place 1
    object->interval(1)->setName(QStringLiteral("Interval 7"));
    object->interval(2)->setName(QString());
    object->interval(3)->setName(QStringLiteral("interval 3"));
    object->renameIntervals();
    EXPECT_EQ(namesOf(*object), Names({"Interval 1", "Interval 7", "Interval 3", "interval 3"}));

    // "Previous" is the default name of the place before, whatever that interval is called.
    object->interval(0)->setName(QStringLiteral("Bone"));
    object->interval(1)->setName(QStringLiteral("Interval 1"));
    object->renameIntervals();
    EXPECT_EQ(namesOf(*object), Names({"Bone", "Interval 2", "Interval 3", "interval 3"}));

    object->interval(0)->setName(QStringLiteral("Interval 1"));
    object->interval(3)->setName(QStringLiteral("Interval 3")); // previous default at place 4
    object->interval(1)->setName(QStringLiteral("Interval 1")); // previous default at place 2
    object->renameIntervals();
    EXPECT_EQ(namesOf(*object), Names({"Interval 1", "Interval 2", "Interval 3", "Interval 4"}));
}
