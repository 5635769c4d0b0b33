// One interval: default curves, borders and refitting, the collision pass, handle and segment
// edits, hit tests and copies.

#include "ModelTestSupport.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <initializer_list>
#include <memory>

using namespace modeltest;

namespace {

constexpr int n256 = 256;

float c256(double k)
{
    return at(n256, k);
}

// Expects the fitted handles of a channel to be exactly the given (x, y) pairs.
void expectHandles(const OXWLUTIntervalInfo& interval, int channel, const HandleList& expected)
{
    EXPECT_EQ(interval.handles(channel), expected) << "channel " << channel;
}

// As expectHandles, comparing x and y in float precision (for x that are not exact binary
// fractions).
void expectHandlesNear(const OXWLUTIntervalInfo& interval, int channel, const HandleList& expected)
{
    const HandleList& handles = interval.handles(channel);
    ASSERT_EQ(handles.size(), expected.size()) << "channel " << channel;
    for (std::size_t k = 0; k < handles.size(); ++k) {
        EXPECT_FLOAT_EQ(handles[k].x, expected[k].x) << "handle " << k;
        EXPECT_FLOAT_EQ(handles[k].y, expected[k].y) << "handle " << k;
    }
}

// Expects the fitted handles to sit at the given global cells (centres k + 0.5 are passed as
// k + 0.5) with the given values; positions compared in float precision.
void expectCurveAtCells(const OXWLUTIntervalInfo& interval, int channel,
                        std::initializer_list<std::pair<double, float>> cellsAndValues)
{
    const HandleList& handles = interval.handles(channel);
    ASSERT_EQ(handles.size(), cellsAndValues.size()) << "channel " << channel;
    const std::vector<double> cells = handleCells(interval, channel);
    std::size_t k = 0;
    for (const auto& [cell, value] : cellsAndValues) {
        EXPECT_NEAR(cells[k], cell, 1e-3) << "handle " << k;
        EXPECT_FLOAT_EQ(handles[k].y, value) << "handle " << k;
        ++k;
    }
}

// An interval [0, 1] of a 256-cell object whose opacity handles sit at the centres of the
// given cells with the given values.
void shapeOpacity(OXWLUTIntervalInfo& interval,
                  std::initializer_list<std::pair<double, float>> cellsAndValues)
{
    HandleList reference;
    for (const auto& [cell, value] : cellsAndValues) {
        reference.push_back({c256(cell + 0.5), value});
    }
    ASSERT_TRUE(interval.setReferenceHandles(kOpacity, reference));
    ASSERT_EQ(interval.handles(kOpacity).size(), reference.size());
}

struct Snapshot
{
    const OXWLUTObjectInfo* object;
    std::string name;
    bool enabled;
    float from, to;
    HandleList fitted[4];
    HandleList reference[4];
};

Snapshot snapshot(const OXWLUTIntervalInfo& interval)
{
    Snapshot s{interval.objectInfo(),
               nameOf(&interval),
               interval.isEnabled(),
               interval.from(),
               interval.to(),
               {},
               {}};
    for (int c = 0; c < 4; ++c) {
        s.fitted[c] = interval.handles(kChannels[c]);
        s.reference[c] = interval.referenceHandles(kChannels[c]);
    }
    return s;
}

void expectSnapshot(const OXWLUTIntervalInfo& interval, const Snapshot& s)
{
    EXPECT_EQ(interval.objectInfo(), s.object);
    EXPECT_EQ(nameOf(&interval), s.name);
    EXPECT_EQ(interval.isEnabled(), s.enabled);
    EXPECT_EQ(interval.from(), s.from);
    EXPECT_EQ(interval.to(), s.to);
    for (int c = 0; c < 4; ++c) {
        EXPECT_EQ(interval.handles(kChannels[c]), s.fitted[c]) << "channel " << kChannels[c];
        EXPECT_EQ(interval.referenceHandles(kChannels[c]), s.reference[c])
            << "channel " << kChannels[c];
    }
}

class IntervalInfo : public testing::Test
{
protected:
    std::unique_ptr<OXWLUTObjectInfo> object = makeObject(n256);
    OXWLUTIntervalInfo interval{object.get()};
};

} // namespace

TEST_F(IntervalInfo, NewIntervalHasDefaultCurvesOnEveryChannel)
{
    EXPECT_EQ(interval.objectInfo(), object.get());
    EXPECT_EQ(nameOf(&interval), "");
    EXPECT_TRUE(interval.isEnabled());
    EXPECT_EQ(interval.from(), 0.0f);
    EXPECT_EQ(interval.to(), 1.0f);
    EXPECT_EQ(interval.width(), 1.0f);
    EXPECT_TRUE(interval.isWide());

    expectHandles(interval, kOpacity, {{c256(0.5), 0.0f}, {c256(255.5), 1.0f}});
    for (int channel : {kRed, kGreen, kBlue}) {
        expectHandles(interval, channel, {{c256(0.5), 255.5f}, {c256(255.5), 255.5f}});
    }
    for (int channel : kChannels) {
        EXPECT_EQ(interval.referenceHandles(channel), interval.handles(channel)) << channel;
    }
    // The object's own first interval carries the same curves.
    for (int channel : kChannels) {
        EXPECT_EQ(object->interval(0)->handles(channel), interval.handles(channel)) << channel;
    }
}

TEST(IntervalInfoWithoutObject, HasNoCurvesAndRefusesEverything)
{
    OXWLUTIntervalInfo orphan(nullptr);
    EXPECT_EQ(orphan.objectInfo(), nullptr);
    for (int channel : kChannels) {
        EXPECT_TRUE(orphan.handles(channel).empty()) << channel;
        EXPECT_TRUE(orphan.globalCurve(channel).empty()) << channel;
    }
    EXPECT_FALSE(orphan.isEnabled());
    EXPECT_FALSE(orphan.isWide());
    EXPECT_FALSE(orphan.setBorders(0.25f, 0.5f));
    EXPECT_EQ(orphan.from(), 0.0f);
    EXPECT_EQ(orphan.to(), 1.0f);
    EXPECT_FALSE(orphan.fitChannel(kOpacity));
    EXPECT_FALSE(orphan.resetChannel(kOpacity));
    EXPECT_FALSE(orphan.setColour(OXMRGB8(1, 2, 3)));
    EXPECT_EQ(orphan.findHandle(kOpacity, 0.5f, 0.5f, 1.0f, 1.0f), -1);
    EXPECT_EQ(orphan.findSegment(kOpacity, 0.5f, 0.5f, 1.0f, 1.0f), -1);
    EXPECT_EQ(orphan.findSegmentWide(kOpacity, 0.5f, 0.5f, 1.0f, 1.0f), -1);
    EXPECT_FALSE(orphan.moveHandle(kOpacity, 0, 0.5f, 0.5f));
    EXPECT_FALSE(orphan.moveSegment(kOpacity, 0, 0.5f, 0.5f));
    EXPECT_FALSE(orphan.insertHandle(kOpacity, 0.5f, 0.5f));
    EXPECT_FALSE(orphan.deleteHandle(kOpacity, 1));
    EXPECT_FALSE(orphan.isHandleMovable(kOpacity, 1));
    EXPECT_FALSE(orphan.isSegmentMovable(kOpacity, 1));
    EXPECT_FALSE(orphan.isSegmentLevel(kOpacity, 0));
    for (int channel : kChannels) {
        EXPECT_TRUE(orphan.handles(channel).empty()) << channel;
    }
}

TEST_F(IntervalInfo, InvalidChannelsAreRefusedAndChangeNothing)
{
    const HandleList some{{0.0f, 0.5f}, {1.0f, 0.5f}};
    const Snapshot before = snapshot(interval);
    for (int channel : {0, 5, -1, 7, 254, 256}) {
        SCOPED_TRACE(channel);
        EXPECT_TRUE(interval.handles(channel).empty());
        EXPECT_TRUE(interval.referenceHandles(channel).empty());
        EXPECT_TRUE(interval.globalCurve(channel).empty());
        EXPECT_FALSE(interval.fitChannel(channel));
        EXPECT_FALSE(interval.commitChannel(channel));
        EXPECT_FALSE(interval.resetChannel(channel));
        EXPECT_FALSE(interval.setReferenceHandles(channel, some));
        EXPECT_EQ(interval.findHandle(channel, c256(0.5), 0.0f, 1.0f, 300.0f), -1);
        EXPECT_EQ(interval.findSegment(channel, 0.5f, 0.5f, 1.0f, 300.0f), -1);
        EXPECT_EQ(interval.findSegmentWide(channel, 0.5f, 0.5f, 1.0f, 300.0f), -1);
        EXPECT_FALSE(interval.isHandleIndexValid(channel, 0));
        EXPECT_FALSE(interval.isHandleMovable(channel, 1));
        EXPECT_FALSE(interval.isSegmentMovable(channel, 1));
        EXPECT_FALSE(interval.isSegmentLevel(channel, 0));
        EXPECT_FALSE(interval.moveHandle(channel, 0, 0.5f, 0.5f));
        EXPECT_FALSE(interval.moveSegment(channel, 0, 0.5f, 0.5f));
        EXPECT_FALSE(interval.insertHandle(channel, 0.5f, 0.5f));
        EXPECT_FALSE(interval.deleteHandle(channel, 1));
    }
    // AllChannels is only a channel for the whole-curve operations.
    EXPECT_TRUE(interval.handles(kAll).empty());
    EXPECT_FALSE(interval.insertHandle(kAll, 0.5f, 0.5f));
    expectSnapshot(interval, before);

    EXPECT_TRUE(interval.fitChannel(kAll));
    EXPECT_TRUE(interval.commitChannel(kAll));
    EXPECT_TRUE(interval.resetChannel(kAll));
    expectSnapshot(interval, before);
}

TEST_F(IntervalInfo, SetBordersSnapsToNearestBoundaries)
{
    EXPECT_TRUE(interval.setBorders(0.2f, 0.5f));
    EXPECT_EQ(interval.from(), c256(51)); // 0.2 * 256 = 51.2
    EXPECT_EQ(interval.to(), c256(128));
    EXPECT_EQ(interval.width(), c256(77));

    EXPECT_TRUE(interval.setBorders(c256(51.4), c256(127.6)));
    EXPECT_EQ(interval.from(), c256(51));
    EXPECT_EQ(interval.to(), c256(128));
    EXPECT_TRUE(interval.setBorders(c256(51.6), c256(127.4)));
    EXPECT_EQ(interval.from(), c256(52));
    EXPECT_EQ(interval.to(), c256(127));
    // Halfway between two boundaries the left border goes up.
    EXPECT_TRUE(interval.setBorders(c256(51.5), c256(200)));
    EXPECT_EQ(interval.from(), c256(52));
    EXPECT_EQ(interval.to(), c256(200));

    EXPECT_TRUE(interval.setBorders(-0.3f, 1.7f));
    EXPECT_EQ(interval.from(), 0.0f);
    EXPECT_EQ(interval.to(), 1.0f);

    // An empty interval is allowed (it exists while a border is dragged).
    EXPECT_TRUE(interval.setBorders(0.5f, 0.5f));
    EXPECT_EQ(interval.from(), 0.5f);
    EXPECT_EQ(interval.to(), 0.5f);
}

TEST_F(IntervalInfo, SetBordersRefusesInvertedBorders)
{
    ASSERT_TRUE(interval.setBorders(0.25f, 0.5f));
    const Snapshot before = snapshot(interval);
    EXPECT_FALSE(interval.setBorders(0.5f, 0.2f));
    EXPECT_FALSE(interval.setBorders(0.3f, 0.2999f));
    expectSnapshot(interval, before);
}

TEST_F(IntervalInfo, BorderChangeRefitsEndHandlesToTheEndCells)
{
    ASSERT_TRUE(interval.setBorders(0.2f, 0.5f)); // cells 51 .. 127
    expectCurveAtCells(interval, kOpacity, {{51.5, 0.0f}, {127.5, 1.0f}});
    expectCurveAtCells(interval, kBlue, {{51.5, 255.5f}, {127.5, 255.5f}});
    const HandleList& fitted = interval.handles(kOpacity);
    EXPECT_FLOAT_EQ(fitted[0].x, 0.5f / 77);
    EXPECT_FLOAT_EQ(fitted[1].x, 76.5f / 77);

    const HandleList global = interval.globalCurve(kOpacity);
    ASSERT_EQ(global.size(), 2u);
    EXPECT_FLOAT_EQ(global[0].x, c256(51.5));
    EXPECT_FLOAT_EQ(global[1].x, c256(127.5));
    EXPECT_EQ(global[0].y, 0.0f);
    EXPECT_EQ(global[1].y, 1.0f);
}

TEST_F(IntervalInfo, BorderDraggedAwayAndBackRestoresTheCurveExactly)
{
    const HandleList reference{
        {0.0f, 0.1f}, {0.2f, 0.9f}, {0.45f, 0.3f}, {0.7f, 0.8f}, {1.0f, 0.2f}};
    ASSERT_TRUE(interval.setReferenceHandles(kOpacity, reference));
    ASSERT_TRUE(interval.setReferenceHandles(kRed, {{0.0f, 0.0f}, {0.5f, 200.0f}, {1.0f, 40.0f}}));
    const Snapshot original = snapshot(interval);
    expectCurveAtCells(interval, kOpacity,
                       {{0.5, 0.1f}, {51.5, 0.9f}, {115.5, 0.3f}, {179.5, 0.8f}, {255.5, 0.2f}});

    const std::pair<float, float> drags[] = {{0.3f, 0.31f}, {0.0f, 0.05f}, {0.9f, 1.0f},
                                             {0.4f, 0.6f},  {0.5f, 0.5f},  {0.0f, 0.9f}};
    for (const auto& [from, to] : drags) {
        ASSERT_TRUE(interval.setBorders(from, to));
        EXPECT_EQ(interval.referenceHandles(kOpacity), reference) << from << " .. " << to;
    }
    ASSERT_TRUE(interval.setBorders(0.0f, 1.0f));
    expectSnapshot(interval, original);
}

// Collisions after snapping, on a 16-cell object (cell width 1/16).
class IntervalInfoCollisions : public testing::Test
{
protected:
    std::unique_ptr<OXWLUTObjectInfo> object = makeObject(16);
    OXWLUTIntervalInfo interval{object.get()};
};

TEST_F(IntervalInfoCollisions, TwoInnerHandlesInOneCellWithoutRoomKeepTheOneThatShapesMore)
{
    // Narrowed to three cells, both inner handles land in the middle cell; the neighbours
    // are adjacent, so one of the two must go: the one whose removal leaves the smaller jump.
    const HandleList rising{{0.0f, 0.0f}, {0.45f, 0.2f}, {0.55f, 1.0f}, {1.0f, 1.0f}};
    ASSERT_TRUE(interval.setReferenceHandles(kOpacity, rising));
    ASSERT_TRUE(interval.setBorders(0.0f, 3.0f / 16));
    expectHandlesNear(interval, kOpacity, {{1.0f / 6, 0.0f}, {0.5f, 0.2f}, {5.0f / 6, 1.0f}});
    EXPECT_EQ(interval.referenceHandles(kOpacity), rising);

    const HandleList falling{{0.0f, 1.0f}, {0.45f, 1.0f}, {0.55f, 0.2f}, {1.0f, 0.0f}};
    ASSERT_TRUE(interval.setReferenceHandles(kOpacity, falling));
    expectHandlesNear(interval, kOpacity, {{1.0f / 6, 1.0f}, {0.5f, 0.2f}, {5.0f / 6, 0.0f}});

    // Widening again brings both back from the untouched reference handles.
    ASSERT_TRUE(interval.setBorders(0.0f, 1.0f));
    expectCurveAtCells(interval, kOpacity, {{0.5, 1.0f}, {7.5, 1.0f}, {8.5, 0.2f}, {15.5, 0.0f}});
}

TEST_F(IntervalInfoCollisions, EqualJumpsRemoveTheLaterHandle)
{
    ASSERT_TRUE(interval.setReferenceHandles(
        kOpacity, {{0.0f, 0.0f}, {0.45f, 0.25f}, {0.55f, 0.75f}, {1.0f, 1.0f}}));
    ASSERT_TRUE(interval.setBorders(0.0f, 3.0f / 16));
    // Both removals leave a jump of 0.75: the second of the two goes.
    expectHandlesNear(interval, kOpacity, {{1.0f / 6, 0.0f}, {0.5f, 0.25f}, {5.0f / 6, 1.0f}});
}

TEST_F(IntervalInfoCollisions, EndHandlesSurviveCollisionsInTheEndCells)
{
    ASSERT_TRUE(interval.setBorders(0.0f, 2.0f / 16)); // two cells, no room anywhere
    ASSERT_TRUE(interval.setReferenceHandles(kOpacity, {{0.0f, 0.0f}, {0.1f, 0.5f}, {1.0f, 1.0f}}));
    expectHandles(interval, kOpacity, {{0.25f, 0.0f}, {0.75f, 1.0f}});
    ASSERT_TRUE(interval.setReferenceHandles(kOpacity, {{0.0f, 0.0f}, {0.9f, 0.5f}, {1.0f, 1.0f}}));
    expectHandles(interval, kOpacity, {{0.25f, 0.0f}, {0.75f, 1.0f}});
}

TEST_F(IntervalInfoCollisions, TwoCellsAreRoomEnoughToMoveAside)
{
    ASSERT_TRUE(interval.setBorders(0.0f, 4.0f / 16)); // cells 0 .. 3
    ASSERT_TRUE(interval.setReferenceHandles(
        kOpacity, {{0.0f, 0.0f}, {0.55f, 0.3f}, {0.6f, 0.6f}, {1.0f, 1.0f}}));
    expectCurveAtCells(interval, kOpacity, {{0.5, 0.0f}, {1.5, 0.3f}, {2.5, 0.6f}, {3.5, 1.0f}});
}

TEST_F(IntervalInfoCollisions, HandleMovesAsideWhenThereIsRoom)
{
    // Both inner handles in cell 8; room on the left: the first moves one cell left.
    ASSERT_TRUE(interval.setReferenceHandles(
        kOpacity, {{0.0f, 0.0f}, {0.51f, 0.3f}, {0.53f, 0.6f}, {1.0f, 1.0f}}));
    expectCurveAtCells(interval, kOpacity, {{0.5, 0.0f}, {7.5, 0.3f}, {8.5, 0.6f}, {15.5, 1.0f}});

    // Both in cell 1 next to the first handle; no room on the left, the second moves right.
    ASSERT_TRUE(interval.setReferenceHandles(
        kOpacity, {{0.0f, 0.0f}, {0.07f, 0.3f}, {0.09f, 0.6f}, {1.0f, 1.0f}}));
    expectCurveAtCells(interval, kOpacity, {{0.5, 0.0f}, {1.5, 0.3f}, {2.5, 0.6f}, {15.5, 1.0f}});

    // An inner handle in the first cell moves right, one in the last cell moves left.
    ASSERT_TRUE(
        interval.setReferenceHandles(kOpacity, {{0.0f, 0.0f}, {0.01f, 0.5f}, {1.0f, 1.0f}}));
    expectCurveAtCells(interval, kOpacity, {{0.5, 0.0f}, {1.5, 0.5f}, {15.5, 1.0f}});
    ASSERT_TRUE(
        interval.setReferenceHandles(kOpacity, {{0.0f, 0.0f}, {0.99f, 0.5f}, {1.0f, 1.0f}}));
    expectCurveAtCells(interval, kOpacity, {{0.5, 0.0f}, {14.5, 0.5f}, {15.5, 1.0f}});
}

TEST_F(IntervalInfoCollisions, OneCellIntervalKeepsOnlyTheLastHandle)
{
    ASSERT_TRUE(interval.setBorders(5.0f / 16, 6.0f / 16));
    expectHandles(interval, kOpacity, {{0.5f, 1.0f}});
    for (int channel : {kRed, kGreen, kBlue}) {
        expectHandles(interval, channel, {{0.5f, 255.5f}});
    }
    EXPECT_FALSE(interval.isWide());
    // The reference keeps both ends.
    EXPECT_EQ(interval.referenceHandles(kOpacity).size(), 2u);

    ASSERT_TRUE(interval.setReferenceHandles(kOpacity, {{0.0f, 0.0f}, {0.5f, 0.5f}, {1.0f, 0.8f}}));
    expectHandles(interval, kOpacity, {{0.5f, 0.8f}});

    ASSERT_TRUE(interval.setBorders(0.0f, 1.0f));
    expectCurveAtCells(interval, kOpacity, {{0.5, 0.0f}, {8.5, 0.5f}, {15.5, 0.8f}});
}

class IntervalInfoEdits : public IntervalInfo
{
protected:
    void SetUp() override
    {
        // Handles at the centres of cells 0, 64, 128, 192 and 255.
        shapeOpacity(interval, {{0, 0.0f}, {64, 0.2f}, {128, 0.4f}, {192, 0.6f}, {255, 1.0f}});
    }
};

TEST_F(IntervalInfoEdits, MoveHandleChangesOnlyTheValueOfEndHandles)
{
    EXPECT_TRUE(interval.moveHandle(kOpacity, 0, 0.5f, 0.3f));
    EXPECT_EQ(interval.handles(kOpacity)[0], Handle(c256(0.5), 0.3f));
    EXPECT_TRUE(interval.moveHandle(kOpacity, 4, 0.1f, 0.6f));
    EXPECT_EQ(interval.handles(kOpacity)[4], Handle(c256(255.5), 0.6f));
    EXPECT_EQ(interval.referenceHandles(kOpacity), interval.handles(kOpacity));
    // Nothing changes: false.
    EXPECT_FALSE(interval.moveHandle(kOpacity, 4, 0.7f, 0.6f));
    EXPECT_FALSE(interval.moveHandle(kOpacity, 5, 0.5f, 0.5f));
}

TEST_F(IntervalInfoEdits, MoveHandleKeepsInnerHandlesACellAwayFromTheirNeighbours)
{
    EXPECT_TRUE(interval.moveHandle(kOpacity, 2, 0.3f, 0.45f));
    EXPECT_EQ(interval.handles(kOpacity)[2], Handle(c256(76.5), 0.45f));
    EXPECT_EQ(interval.referenceHandles(kOpacity), interval.handles(kOpacity));

    EXPECT_TRUE(interval.moveHandle(kOpacity, 2, 0.1f, 0.45f));
    EXPECT_EQ(interval.handles(kOpacity)[2], Handle(c256(65.5), 0.45f));

    EXPECT_TRUE(interval.moveHandle(kOpacity, 2, 7.0f, 0.45f));
    EXPECT_EQ(interval.handles(kOpacity)[2], Handle(c256(191.5), 0.45f));
    EXPECT_FALSE(interval.moveHandle(kOpacity, 2, 0.95f, 0.45f));

    EXPECT_TRUE(interval.moveHandle(kOpacity, 2, -2.0f, 0.45f));
    EXPECT_EQ(interval.handles(kOpacity)[2], Handle(c256(65.5), 0.45f));
    EXPECT_EQ(interval.handles(kOpacity).size(), 5u);
}

TEST_F(IntervalInfoEdits, MoveHandleClampsOpacityButNotColour)
{
    EXPECT_TRUE(interval.moveHandle(kOpacity, 0, 0.0f, 1.7f));
    EXPECT_EQ(interval.handles(kOpacity)[0].y, 1.0f);
    EXPECT_TRUE(interval.moveHandle(kOpacity, 2, c256(128.5), -0.4f));
    EXPECT_EQ(interval.handles(kOpacity)[2].y, 0.0f);

    EXPECT_TRUE(interval.moveHandle(kRed, 0, 0.0f, 1.7f));
    EXPECT_EQ(interval.handles(kRed)[0].y, 1.7f);
    EXPECT_TRUE(interval.moveHandle(kGreen, 1, 1.0f, -3.0f));
    EXPECT_EQ(interval.handles(kGreen)[1].y, -3.0f);
    EXPECT_EQ(interval.referenceHandles(kRed), interval.handles(kRed));
}

TEST_F(IntervalInfo, MoveHandleWorksInLocalCoordinates)
{
    ASSERT_TRUE(interval.setBorders(0.25f, 0.5f)); // cells 64 .. 127
    ASSERT_TRUE(interval.insertHandle(kOpacity, 0.375f, 0.5f));
    expectCurveAtCells(interval, kOpacity, {{64.5, 0.0f}, {96.5, 0.5f}, {127.5, 1.0f}});
    EXPECT_FLOAT_EQ(interval.handles(kOpacity)[1].x, 32.5f / 64);

    EXPECT_TRUE(interval.moveHandle(kOpacity, 1, 0.3f, 0.4f));
    expectCurveAtCells(interval, kOpacity, {{64.5, 0.0f}, {76.5, 0.4f}, {127.5, 1.0f}});
    EXPECT_FLOAT_EQ(interval.handles(kOpacity)[1].x, 12.5f / 64);
    // Left of the interval: stops a cell after the first handle.
    EXPECT_TRUE(interval.moveHandle(kOpacity, 1, 0.1f, 0.4f));
    expectCurveAtCells(interval, kOpacity, {{64.5, 0.0f}, {65.5, 0.4f}, {127.5, 1.0f}});
}

TEST_F(IntervalInfo, RampSegmentCannotMoveUpOrDown)
{
    const Snapshot before = snapshot(interval);
    EXPECT_FALSE(interval.moveSegment(kOpacity, 0, 0.5f, 0.4f));
    EXPECT_FALSE(interval.moveSegment(kOpacity, 0, 0.2f, 1.0f));
    EXPECT_FALSE(interval.moveSegment(kOpacity, 0, 0.2f, -0.5f));
    expectSnapshot(interval, before);
}

TEST_F(IntervalInfo, SegmentAtTheEndsChangesOnlyValuesKeepingItsRise)
{
    shapeOpacity(interval, {{0, 0.9f}, {128, 0.5f}, {255, 0.1f}});
    // Falling by 0.4; pushed below 0 it stops with its right end at 0.
    EXPECT_TRUE(interval.moveSegment(kOpacity, 0, 0.9f, 0.1f));
    expectCurveAtCells(interval, kOpacity, {{0.5, 0.4f}, {128.5, 0.0f}, {255.5, 0.1f}});

    EXPECT_TRUE(interval.moveSegment(kOpacity, 1, 0.1f, 0.3f));
    expectCurveAtCells(interval, kOpacity, {{0.5, 0.4f}, {128.5, 0.3f}, {255.5, 0.4f}});

    // Colour values are not clamped.
    ASSERT_TRUE(
        interval.setReferenceHandles(kRed, {{0.0f, 100.0f}, {c256(128.5), 200.0f}, {1.0f, 50.0f}}));
    EXPECT_TRUE(interval.moveSegment(kRed, 0, 0.0f, 300.0f));
    expectCurveAtCells(interval, kRed, {{0.5, 300.0f}, {128.5, 400.0f}, {255.5, 50.0f}});

    EXPECT_FALSE(interval.moveSegment(kOpacity, 2, 0.5f, 0.5f));
}

TEST_F(IntervalInfoEdits, InnerSegmentMovesWithinItsNeighbours)
{
    EXPECT_TRUE(interval.moveSegment(kOpacity, 1, 0.1f, 0.3f));
    expectCurveAtCells(interval, kOpacity,
                       {{0.5, 0.0f}, {25.5, 0.3f}, {89.5, 0.5f}, {192.5, 0.6f}, {255.5, 1.0f}});
    EXPECT_FALSE(interval.moveSegment(kOpacity, 1, c256(25.5), 0.3f));
}

TEST_F(IntervalInfoEdits, InnerSegmentStopsACellAfterItsLeftNeighbour)
{
    EXPECT_TRUE(interval.moveSegment(kOpacity, 1, 0.0f, 0.2f));
    expectCurveAtCells(interval, kOpacity,
                       {{0.5, 0.0f}, {1.5, 0.2f}, {65.5, 0.4f}, {192.5, 0.6f}, {255.5, 1.0f}});
}

TEST_F(IntervalInfoEdits, InnerSegmentStopsACellBeforeItsRightNeighbour)
{
    EXPECT_TRUE(interval.moveSegment(kOpacity, 1, 0.9f, 0.2f));
    expectCurveAtCells(interval, kOpacity,
                       {{0.5, 0.0f}, {127.5, 0.2f}, {191.5, 0.4f}, {192.5, 0.6f}, {255.5, 1.0f}});
}

TEST_F(IntervalInfoEdits, SegmentMoveIsNotCommittedUntilALaterCommit)
{
    const HandleList reference = interval.referenceHandles(kOpacity);
    ASSERT_TRUE(interval.moveSegment(kOpacity, 1, 0.1f, 0.3f));
    const HandleList moved = interval.handles(kOpacity);
    EXPECT_EQ(interval.referenceHandles(kOpacity), reference);

    // A refit brings back the committed curve.
    ASSERT_TRUE(interval.setBorders(0.0f, 1.0f));
    EXPECT_EQ(interval.handles(kOpacity), reference);

    // A later handle edit commits the moved segment together with the edit.
    ASSERT_TRUE(interval.moveSegment(kOpacity, 1, 0.1f, 0.3f));
    ASSERT_TRUE(interval.moveHandle(kOpacity, 4, 1.0f, 0.9f));
    HandleList expected = moved;
    expected[4].y = 0.9f;
    EXPECT_EQ(interval.handles(kOpacity), expected);
    EXPECT_EQ(interval.referenceHandles(kOpacity), expected);

    // So does an explicit commit.
    ASSERT_TRUE(interval.moveSegment(kOpacity, 2, 0.5f, 0.8f));
    EXPECT_NE(interval.referenceHandles(kOpacity), interval.handles(kOpacity));
    EXPECT_TRUE(interval.commitChannel(kOpacity));
    EXPECT_EQ(interval.referenceHandles(kOpacity), interval.handles(kOpacity));
}

TEST_F(IntervalInfo, InsertHandleAddsOrReplacesInTheSameCell)
{
    EXPECT_TRUE(interval.insertHandle(kOpacity, 0.5f, 0.3f));
    expectHandles(interval, kOpacity,
                  {{c256(0.5), 0.0f}, {c256(128.5), 0.3f}, {c256(255.5), 1.0f}});
    EXPECT_EQ(interval.referenceHandles(kOpacity), interval.handles(kOpacity));

    // Same cell: the existing handle takes the value.
    EXPECT_TRUE(interval.insertHandle(kOpacity, c256(128.9), 0.9f));
    expectHandles(interval, kOpacity,
                  {{c256(0.5), 0.0f}, {c256(128.5), 0.9f}, {c256(255.5), 1.0f}});

    // The neighbouring cell gets its own handle.
    EXPECT_TRUE(interval.insertHandle(kOpacity, c256(127.2), 0.1f));
    expectHandles(
        interval, kOpacity,
        {{c256(0.5), 0.0f}, {c256(127.5), 0.1f}, {c256(128.5), 0.9f}, {c256(255.5), 1.0f}});

    // End cells and positions outside set the end values.
    EXPECT_TRUE(interval.insertHandle(kOpacity, c256(0.2), 0.7f));
    EXPECT_TRUE(interval.insertHandle(kOpacity, 1.0f, 0.2f));
    expectHandles(
        interval, kOpacity,
        {{c256(0.5), 0.7f}, {c256(127.5), 0.1f}, {c256(128.5), 0.9f}, {c256(255.5), 0.2f}});
    EXPECT_TRUE(interval.insertHandle(kOpacity, -3.0f, 0.05f));
    EXPECT_TRUE(interval.insertHandle(kOpacity, 4.0f, 0.15f));
    EXPECT_EQ(interval.handles(kOpacity).front().y, 0.05f);
    EXPECT_EQ(interval.handles(kOpacity).back().y, 0.15f);
    EXPECT_EQ(interval.handles(kOpacity).size(), 4u);
    EXPECT_EQ(interval.referenceHandles(kOpacity), interval.handles(kOpacity));
}

TEST_F(IntervalInfo, InsertHandleClampsOpacityButNotColour)
{
    EXPECT_TRUE(interval.insertHandle(kOpacity, 0.25f, 2.0f));
    EXPECT_EQ(interval.handles(kOpacity)[1], Handle(c256(64.5), 1.0f));
    EXPECT_TRUE(interval.insertHandle(kOpacity, 0.75f, -1.0f));
    EXPECT_EQ(interval.handles(kOpacity)[2], Handle(c256(192.5), 0.0f));
    EXPECT_TRUE(interval.insertHandle(kBlue, 0.25f, 300.0f));
    EXPECT_EQ(interval.handles(kBlue)[1], Handle(c256(64.5), 300.0f));
}

TEST_F(IntervalInfo, InsertHandleOnANarrowInterval)
{
    ASSERT_TRUE(interval.setBorders(0.25f, 0.5f)); // cells 64 .. 127
    EXPECT_TRUE(interval.insertHandle(kOpacity, 0.3f, 0.5f));
    expectCurveAtCells(interval, kOpacity, {{64.5, 0.0f}, {76.5, 0.5f}, {127.5, 1.0f}});
    // Outside the interval: the nearer end handle takes the value.
    EXPECT_TRUE(interval.insertHandle(kOpacity, 0.9f, 0.4f));
    EXPECT_TRUE(interval.insertHandle(kOpacity, 0.1f, 0.6f));
    expectCurveAtCells(interval, kOpacity, {{64.5, 0.6f}, {76.5, 0.5f}, {127.5, 0.4f}});
}

TEST_F(IntervalInfo, UncommittedInsertionsEndLikeCommittedOnes)
{
    // A series without commits, then one commit, gives the curve of the committed series: in
    // random order, with repeats in one cell and positions outside the interval.
    OXWLUTIntervalInfo batch(interval);
    std::uint32_t seed = 12345u;
    const auto next = [&seed]() {
        seed = seed * 1664525u + 1013904223u;
        return float(seed >> 8) / float(1u << 24);
    };
    for (int i = 0; i < 400; ++i) {
        const float x = next() * 1.2f - 0.1f;
        const float y = next();
        ASSERT_TRUE(interval.insertHandle(kRed, x, y * 255.0f));
        ASSERT_TRUE(batch.insertHandle(kRed, x, y * 255.0f, false));
    }
    EXPECT_EQ(batch.handles(kRed), interval.handles(kRed));
    EXPECT_NE(batch.referenceHandles(kRed), batch.handles(kRed));
    ASSERT_TRUE(batch.commitChannel(kRed));
    EXPECT_EQ(batch.referenceHandles(kRed), interval.referenceHandles(kRed));
}

TEST_F(IntervalInfo, HasHandleAtFindsExactPositionsOnly)
{
    ASSERT_TRUE(interval.insertHandle(kGreen, c256(100.5), 10.0f));
    EXPECT_TRUE(interval.hasHandleAt(kGreen, c256(100.5)));
    EXPECT_TRUE(interval.hasHandleAt(kGreen, c256(0.5)));
    EXPECT_TRUE(interval.hasHandleAt(kGreen, c256(255.5)));
    EXPECT_FALSE(interval.hasHandleAt(kGreen, c256(100.6)));
    EXPECT_FALSE(interval.hasHandleAt(kBlue, c256(100.5)));
    // The same answer as a search with no horizontal tolerance and any value.
    for (double cell : {0.5, 99.5, 100.5, 101.5, 255.5}) {
        EXPECT_EQ(interval.hasHandleAt(kGreen, c256(cell)),
                  interval.findHandle(kGreen, c256(cell), 5e-7f, 0.0f, 1000.0f) >= 0)
            << cell;
    }
}

TEST_F(IntervalInfoEdits, DeleteHandleRemovesOnlyInnerHandles)
{
    EXPECT_FALSE(interval.deleteHandle(kOpacity, 0));
    EXPECT_FALSE(interval.deleteHandle(kOpacity, 4));
    EXPECT_FALSE(interval.deleteHandle(kOpacity, 5));
    EXPECT_FALSE(interval.deleteHandle(kOpacity, -1));
    EXPECT_EQ(interval.handles(kOpacity).size(), 5u);

    EXPECT_TRUE(interval.deleteHandle(kOpacity, 2));
    expectCurveAtCells(interval, kOpacity,
                       {{0.5, 0.0f}, {64.5, 0.2f}, {192.5, 0.6f}, {255.5, 1.0f}});
    EXPECT_EQ(interval.referenceHandles(kOpacity), interval.handles(kOpacity));
    EXPECT_TRUE(interval.deleteHandle(kOpacity, 1));
    EXPECT_TRUE(interval.deleteHandle(kOpacity, 1));
    EXPECT_FALSE(interval.deleteHandle(kOpacity, 1));
    expectCurveAtCells(interval, kOpacity, {{0.5, 0.0f}, {255.5, 1.0f}});
}

TEST_F(IntervalInfo, FindHandleNearestWithinBothRadii)
{
    ASSERT_TRUE(interval.insertHandle(kOpacity, c256(64.5), 0.5f));
    ASSERT_TRUE(interval.insertHandle(kOpacity, c256(66.5), 0.5f));
    // handles: 0 (cell 0, 0.0), 1 (cell 64, 0.5), 2 (cell 66, 0.5), 3 (cell 255, 1.0)

    EXPECT_EQ(interval.findHandle(kOpacity, c256(65.5), 0.5f, 0.01f, 0.1f), 2); // tie: later
    EXPECT_EQ(interval.findHandle(kOpacity, c256(65.2), 0.5f, 0.01f, 0.1f), 1);
    EXPECT_EQ(interval.findHandle(kOpacity, c256(64.5), 0.59f, 0.01f, 0.1f), 1);
    EXPECT_EQ(interval.findHandle(kOpacity, c256(64.5), 0.7f, 0.01f, 0.1f), -1);
    EXPECT_EQ(interval.findHandle(kOpacity, 0.3f, 0.5f, 0.01f, 0.1f), -1);
    EXPECT_EQ(interval.findHandle(kOpacity, c256(0.5), 0.0f, 0.01f, 0.05f), 0);
    // x is clamped into the axis.
    EXPECT_EQ(interval.findHandle(kOpacity, -0.5f, 0.0f, 0.01f, 0.05f), 0);
    EXPECT_EQ(interval.findHandle(kOpacity, 1.5f, 1.0f, 0.01f, 0.05f), 3);
    // Negative radii count as zero: only an exact hit.
    EXPECT_EQ(interval.findHandle(kOpacity, c256(64.5), 0.5f, -1.0f, -1.0f), 1);
    EXPECT_EQ(interval.findHandle(kOpacity, c256(64.5), 0.51f, -1.0f, -1.0f), -1);
    // Colour channels measure y in colour units.
    EXPECT_EQ(interval.findHandle(kRed, c256(0.5), 250.0f, 0.01f, 10.0f), 0);
    EXPECT_EQ(interval.findHandle(kRed, c256(0.5), 250.0f, 0.01f, 5.0f), -1);
}

TEST_F(IntervalInfo, FindHandleConvertsTheRadiusToLocalUnits)
{
    ASSERT_TRUE(interval.setBorders(0.0f, 0.5f)); // local units are twice the global ones
    EXPECT_EQ(interval.findHandle(kOpacity, c256(0.5) + 0.003f, 0.0f, 0.004f, 0.1f), 0);
    EXPECT_EQ(interval.findHandle(kOpacity, c256(0.5) + 0.003f, 0.0f, 0.002f, 0.1f), -1);
}

TEST_F(IntervalInfo, FindSegmentByPerpendicularDistance)
{
    // The default ramp runs from (0.5/256, 0) to (255.5/256, 1) and passes (0.5, 0.5);
    // (0.5, 0.6) lies about 0.0706 away from it (squared 0.00498).
    EXPECT_EQ(interval.findSegment(kOpacity, 0.5f, 0.5f, 0.01f, 0.01f), 0);
    EXPECT_EQ(interval.findSegment(kOpacity, 0.5f, 0.6f, 0.06f, 0.06f), -1);
    EXPECT_EQ(interval.findSegmentWide(kOpacity, 0.5f, 0.6f, 0.06f, 0.06f), 0);
    EXPECT_EQ(interval.findSegment(kOpacity, 0.5f, 0.6f, 0.5f, 0.06f), -1); // min of both radii
    EXPECT_EQ(interval.findSegmentWide(kOpacity, 0.5f, 0.6f, 0.5f, 0.06f), 0);
    EXPECT_EQ(interval.findSegment(kOpacity, 0.5f, 0.6f, 0.08f, 0.075f), 0);
    EXPECT_EQ(interval.findSegmentWide(kOpacity, 0.5f, 0.6f, 0.04f, 0.05f), -1);
    // Beyond the segment's ends by more than rx: no hit, even on the line's extension.
    EXPECT_EQ(interval.findSegment(kOpacity, 1.2f, 1.2f, 0.05f, 0.05f), -1);
    EXPECT_EQ(interval.findSegmentWide(kOpacity, -0.2f, -0.2f, 0.05f, 0.05f), -1);
}

TEST_F(IntervalInfo, FindSegmentPrefersTheNearerAndOnTiesTheLaterSegment)
{
    shapeOpacity(interval, {{0, 0.5f}, {128, 0.5f}, {255, 0.5f}});
    EXPECT_EQ(interval.findSegment(kOpacity, c256(128.5), 0.5f, 0.01f, 0.01f), 1);
    EXPECT_EQ(interval.findSegmentWide(kOpacity, c256(128.5), 0.5f, 0.01f, 0.01f), 1);
    EXPECT_EQ(interval.findSegment(kOpacity, 0.25f, 0.5f, 0.01f, 0.01f), 0);
    EXPECT_EQ(interval.findSegment(kOpacity, 0.75f, 0.5f, 0.01f, 0.01f), 1);
    EXPECT_EQ(interval.findSegment(kOpacity, 0.25f, 0.5f, -1.0f, -1.0f), 0);
    EXPECT_EQ(interval.findSegment(kOpacity, 0.25f, 0.52f, -1.0f, -1.0f), -1);

    // A peak: near the rising flank, the falling one is within reach in x but farther.
    shapeOpacity(interval, {{0, 0.0f}, {128, 1.0f}, {255, 0.0f}});
    EXPECT_EQ(interval.findSegment(kOpacity, 0.2f, 0.45f, 0.4f, 0.05f), 0);
    EXPECT_EQ(interval.findSegment(kOpacity, 0.8f, 0.45f, 0.4f, 0.05f), 1);
}

TEST_F(IntervalInfo, FindSegmentNeedsTwoHandles)
{
    ASSERT_TRUE(interval.setBorders(c256(10), c256(11)));
    ASSERT_EQ(interval.handles(kOpacity).size(), 1u);
    EXPECT_EQ(interval.findSegment(kOpacity, c256(10.5), 1.0f, 1.0f, 1.0f), -1);
    EXPECT_EQ(interval.findSegmentWide(kOpacity, c256(10.5), 1.0f, 1.0f, 1.0f), -1);
    EXPECT_FALSE(interval.moveSegment(kOpacity, 0, c256(10.5), 0.5f));
}

TEST_F(IntervalInfo, HandleMovableNeedsThreeCellsBetweenNeighbours)
{
    shapeOpacity(interval,
                 {{0, 0.0f}, {10, 0.1f}, {11, 0.2f}, {12, 0.3f}, {14, 0.4f}, {255, 1.0f}});
    EXPECT_FALSE(interval.isHandleMovable(kOpacity, 0));
    EXPECT_TRUE(interval.isHandleMovable(kOpacity, 1));  // neighbours 0 and 11
    EXPECT_FALSE(interval.isHandleMovable(kOpacity, 2)); // neighbours 10 and 12
    EXPECT_TRUE(interval.isHandleMovable(kOpacity, 3));  // neighbours 11 and 14
    EXPECT_TRUE(interval.isHandleMovable(kOpacity, 4));
    EXPECT_FALSE(interval.isHandleMovable(kOpacity, 5));
    EXPECT_FALSE(interval.isHandleMovable(kOpacity, 6));

    EXPECT_TRUE(interval.isHandleIndexValid(kOpacity, 5));
    EXPECT_FALSE(interval.isHandleIndexValid(kOpacity, 6));
}

TEST_F(IntervalInfo, SegmentMovableNeedsRoomOnOneSide)
{
    shapeOpacity(interval,
                 {{0, 0.0f}, {10, 0.1f}, {11, 0.2f}, {12, 0.3f}, {13, 0.4f}, {255, 1.0f}});
    EXPECT_FALSE(interval.isSegmentMovable(kOpacity, 0));
    EXPECT_TRUE(interval.isSegmentMovable(kOpacity, 1));  // room on the left
    EXPECT_FALSE(interval.isSegmentMovable(kOpacity, 2)); // boxed in
    EXPECT_TRUE(interval.isSegmentMovable(kOpacity, 3));  // room on the right
    EXPECT_FALSE(interval.isSegmentMovable(kOpacity, 4));
    EXPECT_FALSE(interval.isSegmentMovable(kOpacity, 5));
}

TEST_F(IntervalInfo, SegmentLevelUnlessItSpansTheFullOpacityRange)
{
    EXPECT_FALSE(interval.isSegmentLevel(kOpacity, 0)); // the default ramp
    shapeOpacity(interval, {{0, 0.0f}, {128, 0.999f}, {200, 0.2f}, {255, 1.0f}});
    EXPECT_TRUE(interval.isSegmentLevel(kOpacity, 0));
    EXPECT_TRUE(interval.isSegmentLevel(kOpacity, 1));
    EXPECT_TRUE(interval.isSegmentLevel(kOpacity, 2));
    EXPECT_FALSE(interval.isSegmentLevel(kOpacity, 3));
    EXPECT_FALSE(interval.isSegmentLevel(kOpacity, -1));
    shapeOpacity(interval, {{0, 1.0f}, {255, 0.0f}});
    EXPECT_FALSE(interval.isSegmentLevel(kOpacity, 0));

    EXPECT_TRUE(interval.isSegmentLevel(kRed, 0)); // white to white
    ASSERT_TRUE(interval.setReferenceHandles(kRed, {{0.0f, 100.0f}, {1.0f, 100.5f}}));
    EXPECT_TRUE(interval.isSegmentLevel(kRed, 0));
    ASSERT_TRUE(interval.setReferenceHandles(kRed, {{0.0f, 0.0f}, {1.0f, 255.0f}}));
    EXPECT_FALSE(interval.isSegmentLevel(kRed, 0));
}

TEST_F(IntervalInfo, ResetRestoresTheDefaultCurveAndReportsChange)
{
    EXPECT_FALSE(interval.resetChannel(kOpacity));
    ASSERT_TRUE(interval.setBorders(0.25f, 0.5f));
    EXPECT_FALSE(interval.resetChannel(kOpacity)); // the refitted ramp is the default

    ASSERT_TRUE(interval.insertHandle(kOpacity, 0.3f, 0.5f));
    ASSERT_TRUE(interval.insertHandle(kOpacity, 0.4f, 0.2f));
    ASSERT_TRUE(interval.moveHandle(kOpacity, 0, 0.0f, 0.6f));
    EXPECT_TRUE(interval.resetChannel(kOpacity));
    expectCurveAtCells(interval, kOpacity, {{64.5, 0.0f}, {127.5, 1.0f}});
    EXPECT_EQ(interval.referenceHandles(kOpacity), interval.handles(kOpacity));
    EXPECT_FALSE(interval.resetChannel(kOpacity));

    ASSERT_TRUE(interval.insertHandle(kGreen, 0.3f, 10.0f));
    EXPECT_TRUE(interval.resetChannel(kGreen));
    expectCurveAtCells(interval, kGreen, {{64.5, 255.5f}, {127.5, 255.5f}});

    EXPECT_TRUE(interval.resetChannel(kAll)); // true even without change
}

TEST_F(IntervalInfoEdits, ResetOfOneChannelCommitsAllChannels)
{
    ASSERT_TRUE(interval.setReferenceHandles(
        kRed, {{0.0f, 10.0f}, {c256(64.5), 20.0f}, {c256(128.5), 30.0f}, {1.0f, 40.0f}}));
    ASSERT_TRUE(interval.moveSegment(kRed, 1, 0.3f, 25.0f));
    ASSERT_NE(interval.referenceHandles(kRed), interval.handles(kRed));
    const HandleList movedRed = interval.handles(kRed);

    EXPECT_TRUE(interval.resetChannel(kOpacity));
    EXPECT_EQ(interval.handles(kRed), movedRed);
    EXPECT_EQ(interval.referenceHandles(kRed), movedRed);
}

TEST_F(IntervalInfo, BaseValueServesShortReferenceLists)
{
    // A fit of a full list remembers the first value ...
    ASSERT_TRUE(interval.setReferenceHandles(kOpacity, {{0.3f, 0.2f}, {0.6f, 0.8f}}));
    expectHandles(interval, kOpacity, {{c256(0.5), 0.2f}, {c256(255.5), 0.8f}});
    // ... and the reference keeps its own x values: fitting never changes it.
    EXPECT_EQ(interval.referenceHandles(kOpacity), HandleList({{0.3f, 0.2f}, {0.6f, 0.8f}}));

    // ... which a list of one handle uses for the first handle.
    ASSERT_TRUE(interval.setReferenceHandles(kOpacity, {{0.4f, 0.6f}}));
    expectHandles(interval, kOpacity, {{c256(0.5), 0.2f}, {c256(255.5), 0.6f}});
    EXPECT_EQ(interval.referenceHandles(kOpacity).size(), 1u);

    ASSERT_TRUE(interval.setReferenceHandles(kOpacity, {}));
    expectHandles(interval, kOpacity, {{c256(0.5), 0.2f}, {c256(255.5), 0.2f}});

    EXPECT_TRUE(interval.commitChannel(kOpacity));
    EXPECT_EQ(interval.referenceHandles(kOpacity), interval.handles(kOpacity));

    // A reset sets the base value to the default first value.
    ASSERT_TRUE(interval.resetChannel(kOpacity));
    ASSERT_TRUE(interval.setReferenceHandles(kOpacity, {{0.5f, 0.8f}}));
    expectHandles(interval, kOpacity, {{c256(0.5), 0.0f}, {c256(255.5), 0.8f}});
    ASSERT_TRUE(interval.setReferenceHandles(kRed, {}));
    expectHandles(interval, kRed, {{c256(0.5), 255.5f}, {c256(255.5), 255.5f}});
}

TEST_F(IntervalInfo, SetColourGivesTwoHandlesPerColourChannel)
{
    ASSERT_TRUE(interval.setBorders(0.25f, 0.5f));
    ASSERT_TRUE(interval.insertHandle(kRed, 0.3f, 7.0f));
    ASSERT_TRUE(interval.insertHandle(kOpacity, 0.3f, 0.5f));
    const HandleList opacity = interval.handles(kOpacity);

    EXPECT_TRUE(interval.setColour(OXMRGB8(10, 20, 30)));
    expectCurveAtCells(interval, kRed, {{64.5, 10.0f}, {127.5, 10.0f}});
    expectCurveAtCells(interval, kGreen, {{64.5, 20.0f}, {127.5, 20.0f}});
    expectCurveAtCells(interval, kBlue, {{64.5, 30.0f}, {127.5, 30.0f}});
    for (int channel : {kRed, kGreen, kBlue}) {
        EXPECT_EQ(interval.referenceHandles(channel), interval.handles(channel)) << channel;
    }
    EXPECT_EQ(interval.handles(kOpacity), opacity);
}

TEST_F(IntervalInfo, WideMeansMoreThanOneAndAHalfCells)
{
    ASSERT_TRUE(interval.setBorders(c256(10), c256(12)));
    EXPECT_TRUE(interval.isWide());
    ASSERT_TRUE(interval.setBorders(c256(10), c256(11)));
    EXPECT_FALSE(interval.isWide());
}

TEST_F(IntervalInfo, NameAndEnabledFlag)
{
    interval.setName(QStringLiteral("Soft tissue"));
    EXPECT_EQ(nameOf(&interval), "Soft tissue");
    interval.setEnabled(false);
    EXPECT_FALSE(interval.isEnabled());
    interval.setEnabled(true);
    EXPECT_TRUE(interval.isEnabled());
}

class IntervalInfoCopies : public IntervalInfo
{
protected:
    void SetUp() override
    {
        ASSERT_TRUE(interval.setBorders(0.25f, 0.5f));
        ASSERT_TRUE(
            interval.setReferenceHandles(kOpacity, {{0.0f, 0.25f}, {0.5f, 0.9f}, {1.0f, 0.75f}}));
        ASSERT_TRUE(interval.setReferenceHandles(
            kRed, {{0.0f, 10.0f}, {0.3f, 20.0f}, {0.6f, 30.0f}, {1.0f, 40.0f}}));
        ASSERT_TRUE(interval.moveSegment(kRed, 1, 0.33f, 50.0f)); // fitted differs from reference
        ASSERT_NE(interval.handles(kRed), interval.referenceHandles(kRed));
        interval.setName(QStringLiteral("Soft tissue"));
        interval.setEnabled(false);
    }

    // Edits that change every part of an interval.
    static void scramble(OXWLUTIntervalInfo& target)
    {
        target.setName(QStringLiteral("Other"));
        target.setEnabled(true);
        ASSERT_TRUE(target.moveHandle(kOpacity, 1, 0.45f, 0.1f));
        ASSERT_TRUE(target.setColour(OXMRGB8(1, 2, 3)));
        ASSERT_TRUE(target.setBorders(0.0f, 1.0f));
    }
};

TEST_F(IntervalInfoCopies, CopyConstructorCopiesEverythingAndIsIndependent)
{
    const Snapshot original = snapshot(interval);
    OXWLUTIntervalInfo copy(interval);
    expectSnapshot(copy, original);

    scramble(copy);
    expectSnapshot(interval, original);

    OXWLUTIntervalInfo third(interval);
    EXPECT_EQ(third.localFromGlobal(0.375f), 0.5f);
    EXPECT_EQ(third.globalFromLocal(0.5f), 0.375f);

    // The copy keeps the base value: a one-handle reference starts at the first value.
    OXWLUTIntervalInfo second(interval);
    ASSERT_TRUE(second.setReferenceHandles(kOpacity, {{0.5f, 0.1f}}));
    EXPECT_EQ(second.handles(kOpacity).front().y, 0.25f);
}

TEST_F(IntervalInfoCopies, AssignmentCopiesEverythingAndIsIndependent)
{
    const Snapshot original = snapshot(interval);
    OXWLUTIntervalInfo target(nullptr);
    target = interval;
    expectSnapshot(target, original);
    scramble(target);
    expectSnapshot(interval, original);

    auto otherObject = makeObject(16);
    OXWLUTIntervalInfo other(otherObject.get());
    other = interval;
    expectSnapshot(other, original);
    ASSERT_TRUE(other.setReferenceHandles(kOpacity, {{0.5f, 0.1f}}));
    EXPECT_EQ(other.handles(kOpacity).front().y, 0.25f);
    expectSnapshot(interval, original);
}
