// One interval: borders and refitting, the collision pass, handle and segment edits, hit tests
// and the default curves. Curves are written "cell:value ..." on a 256-cell axis unless
// said otherwise.

#include "ModelTestSupport.h"

#include <gtest/gtest.h>

#include <memory>
#include <random>
#include <sstream>
#include <tuple>

using namespace modeltest;

namespace {

float c256(double k)
{
    return at(256, k);
}

// What an interval holds besides its name and flag, so that it compares with one expectation.
auto stateOf(const OXWLUTIntervalInfo& interval)
{
    return std::make_tuple(interval.from(), interval.to(), curvesOf(interval, Curves::Fitted),
                           curvesOf(interval, Curves::Reference));
}

// Every edit of a channel that cannot be edited is refused and changes nothing.
void expectRefused(OXWLUTIntervalInfo& interval, int channel)
{
    SCOPED_TRACE(testing::Message() << "channel " << channel);
    const auto before = stateOf(interval);
    EXPECT_TRUE(interval.handles(channel).empty());
    EXPECT_FALSE(interval.fitChannel(channel));
    EXPECT_FALSE(interval.commitChannel(channel));
    EXPECT_FALSE(interval.resetChannel(channel));
    EXPECT_FALSE(interval.setReferenceHandles(channel, handlesOf("0:.5 1:.5")));
    EXPECT_EQ(interval.findHandle(channel, c256(0.5), 0.0f, 1.0f, 300.0f), -1);
    EXPECT_EQ(interval.findSegment(channel, 0.5f, 0.5f, 1.0f, 300.0f), -1);
    EXPECT_FALSE(interval.isHandleIndexValid(channel, 0));
    EXPECT_FALSE(interval.moveHandle(channel, 0, 0.5f, 0.5f));
    EXPECT_FALSE(interval.moveSegment(channel, 0, 0.5f, 0.5f));
    EXPECT_FALSE(interval.insertHandle(channel, 0.5f, 0.5f));
    EXPECT_FALSE(interval.hasHandleAt(channel, c256(0.5)));
    EXPECT_FALSE(interval.deleteHandle(channel, 1));
    EXPECT_EQ(stateOf(interval), before);
}

class IntervalInfo : public testing::Test
{
protected:
    // Sets and commits the opacity curve "cell:value ..." with the handles on cell centres.
    void shapeOpacity(const std::string& curve)
    {
        HandleList handles = handlesOf(curve);
        for (Handle& h : handles) {
            h.x = c256(h.x + 0.5);
        }
        ASSERT_TRUE(interval.setReferenceHandles(kOpacity, handles));
        ASSERT_TRUE(interval.commitChannel(kOpacity));
    }

    std::unique_ptr<OXWLUTObjectInfo> object = makeObject(256);
    OXWLUTIntervalInfo interval{object.get()};
};

class IntervalInfoEdits : public IntervalInfo
{
protected:
    void SetUp() override { shapeOpacity(shaped); }

    const std::string shaped = "0:0 64:0.2 128:0.4 192:0.6 255:1";
};

} // namespace

TEST_F(IntervalInfo, InvalidChannelsAndIntervalsWithoutAnObjectRefuseEverything)
{
    for (int channel : {0, 5, -1, 7, 254, 256}) {
        expectRefused(interval, channel);
    }
    OXWLUTIntervalInfo orphan(nullptr);
    for (int channel : kChannels) {
        expectRefused(orphan, channel);
    }
    EXPECT_FALSE(orphan.isEnabled());
    EXPECT_FALSE(orphan.isWide());
    EXPECT_FALSE(orphan.setName(QStringLiteral("Bone")));
    EXPECT_FALSE(orphan.setBorders(0.25f, 0.5f));
    EXPECT_FALSE(orphan.setColour(OXMRGB8(1, 2, 3)));
    EXPECT_EQ(stateOf(orphan), stateOf(OXWLUTIntervalInfo(nullptr)));
    // AllChannels is only a channel for the whole-curve operations.
    EXPECT_FALSE(interval.insertHandle(kAll, 0.5f, 0.5f));
    const auto before = stateOf(interval);
    EXPECT_TRUE(interval.fitChannel(kAll));
    EXPECT_TRUE(interval.commitChannel(kAll));
    EXPECT_TRUE(interval.resetChannel(kAll)); // true even without change
    EXPECT_EQ(stateOf(interval), before);
}

TEST_F(IntervalInfo, SetBordersSnapToNearestBoundariesAndRefitTheEndHandles)
{
    // from and to requested, done, from and to, wide (all in cells); halfway between two
    // boundaries the left border goes up; empty intervals exist while a border is dragged
    // clang-format off
    const std::tuple<double, double, bool, double, double, bool> cases[] = {
        {51.2, 128, true, 51, 128, true},   {51.4, 127.6, true, 51, 128, true},
        {51.6, 127.4, true, 52, 127, true}, {51.5, 200, true, 52, 200, true},
        {128, 51.2, false, 52, 200, true},  {76.8, 76.79, false, 52, 200, true},
        {-76.8, 435.2, true, 0, 256, true}, {10, 12, true, 10, 12, true},
        {128, 128, true, 128, 128, false},  {10, 11, true, 10, 11, false},
    };
    // clang-format on
    EXPECT_EQ(cellCurve(interval, kOpacity) + " " + cellCurve(interval, kRed), // the defaults
              "0:0 255:1 0:255.5 255:255.5");
    for (const auto& [from, to, done, fromCell, toCell, wide] : cases) {
        SCOPED_TRACE(testing::Message() << from << " .. " << to);
        EXPECT_EQ(interval.setBorders(c256(from), c256(to)), done);
        EXPECT_EQ(interval.from(), c256(fromCell));
        EXPECT_EQ(interval.to(), c256(toCell));
        EXPECT_EQ(interval.width(), c256(toCell - fromCell));
        EXPECT_EQ(interval.isWide(), wide);
        if (toCell - fromCell > 1) { // the end handles on the end cells
            EXPECT_EQ(cellCurve(interval, kOpacity),
                      str(fromCell) + ":0 " + str(toCell - 1) + ":1");
        }
    }
    EXPECT_EQ(cellCurve(interval, kOpacity) + " " + cellCurve(interval, kBlue), "10:1 10:255.5");
    EXPECT_EQ(interval.referenceHandles(kOpacity).size(), 2u);
    EXPECT_EQ(interval.findSegment(kOpacity, c256(10.5), 1.0f, 1.0f, 1.0f), -1);
    EXPECT_EQ(interval.findSegmentWide(kOpacity, c256(10.5), 1.0f, 1.0f, 1.0f), -1);
    EXPECT_FALSE(interval.moveSegment(kOpacity, 0, c256(10.5), 0.5f));
    // End handles sit on the centres of the end cells in local coordinates too.
    ASSERT_TRUE(interval.setBorders(0.2f, 0.5f)); // cells 51 .. 127
    EXPECT_FLOAT_EQ(interval.handles(kOpacity)[0].x, 0.5f / 77);
    EXPECT_FLOAT_EQ(interval.handles(kOpacity)[1].x, 76.5f / 77);
    EXPECT_FLOAT_EQ(interval.globalCurve(kOpacity)[1].x, c256(127.5));
}

TEST(IntervalInfoCollisions, SnappedHandlesStepAsideOrGo)
{
    // borders in cells, the reference (in local x), the fitted curve
    // clang-format off
    const std::tuple<int, int, const char*, const char*> cases[] = {
        {0, 3, "0:0 .45:.2 .55:1 1:1", "0:0 1:0.2 2:1"}, // no room
        {0, 3, "0:1 .45:1 .55:.2 1:0", "0:1 1:0.2 2:0"},
        {0, 3, "0:0 .45:.25 .55:.75 1:1", "0:0 1:0.25 2:1"}, // a tie
        {0, 2, "0:0 .1:.5 1:1", "0:0 1:1"},
        {0, 2, "0:0 .9:.5 1:1", "0:0 1:1"},
        {0, 4, "0:0 .55:.3 .6:.6 1:1", "0:0 1:0.3 2:0.6 3:1"}, // two cells are room
        {0, 16, "0:0 .51:.3 .53:.6 1:1", "0:0 7:0.3 8:0.6 15:1"}, // room on the left
        {0, 16, "0:0 .07:.3 .09:.6 1:1", "0:0 1:0.3 2:0.6 15:1"}, // room on the right only
        {0, 16, "0:0 .01:.5 1:1", "0:0 1:0.5 15:1"},
        {0, 16, "0:0 .99:.5 1:1", "0:0 14:0.5 15:1"},
        {5, 6, "0:0 .5:.5 1:.8", "5:0.8"}, // one cell: the last handle
    };
    // clang-format on
    for (const auto& [fromCell, toCell, reference, fitted] : cases) {
        auto object = makeObject(16);
        OXWLUTIntervalInfo interval(object.get());
        ASSERT_TRUE(interval.setBorders(at(16, fromCell), at(16, toCell)));
        ASSERT_TRUE(interval.setReferenceHandles(kOpacity, handlesOf(reference)));
        EXPECT_EQ(cellCurve(interval, kOpacity), fitted) << reference;
        // Widening again brings every handle back from the untouched reference.
        ASSERT_TRUE(interval.setBorders(0.0f, 1.0f));
        EXPECT_EQ(interval.handles(kOpacity).size(), handlesOf(reference).size()) << reference;
    }
}

TEST_F(IntervalInfoEdits, HandleAndSegmentEditsStayACellFromTheNeighbours)
{
    // moveHandle ('h'), moveSegment ('s') or deleteHandle ('d'), channel, index, the cell it (or
    // its left handle) is dragged to, value, and the curve after (empty: refused or no change)
    // clang-format off
    const std::tuple<char, int, int, double, float, const char*> cases[] = {
        {'h', kOpacity, 0, 128, 0.3f, "0:0.3 64:0.2 128:0.4 192:0.6 255:1"}, // ends: value only
        {'h', kOpacity, 4, 25.6, 0.6f, "0:0 64:0.2 128:0.4 192:0.6 255:0.6"},
        {'h', kOpacity, 4, 179.2, 1.0f, ""},
        {'h', kOpacity, 5, 128, 0.5f, ""},
        {'h', kOpacity, -1, 128, 0.5f, ""},
        {'h', kOpacity, 2, 76.8, 0.45f, "0:0 64:0.2 76:0.45 192:0.6 255:1"},
        {'h', kOpacity, 2, 25.6, 0.45f, "0:0 64:0.2 65:0.45 192:0.6 255:1"},
        {'h', kOpacity, 2, 1792, 0.45f, "0:0 64:0.2 191:0.45 192:0.6 255:1"},
        {'h', kOpacity, 2, -512, 0.45f, "0:0 64:0.2 65:0.45 192:0.6 255:1"},
        {'h', kOpacity, 0, 0, 1.7f, "0:1 64:0.2 128:0.4 192:0.6 255:1"}, // opacity is clamped
        {'h', kOpacity, 2, 128.5, -0.4f, "0:0 64:0.2 128:0 192:0.6 255:1"},
        {'h', kRed, 0, 0, 1.7f, "0:1.7 255:255.5"}, // colour is not
        {'h', kGreen, 1, 256, -3.0f, "0:255.5 255:-3"},
        {'s', kOpacity, 1, 25.6, 0.3f, "0:0 25:0.3 89:0.5 192:0.6 255:1"}, // keeps its rise
        {'s', kOpacity, 1, 0, 0.2f, "0:0 1:0.2 65:0.4 192:0.6 255:1"},
        {'s', kOpacity, 1, 230.4, 0.2f, "0:0 127:0.2 191:0.4 192:0.6 255:1"},
        {'s', kOpacity, 1, 64.5, 0.2f, ""},
        {'s', kOpacity, 0, 128, 0.5f, "0:0.5 64:0.7 128:0.4 192:0.6 255:1"}, // at an end: values
        {'s', kOpacity, 0, 128, -0.3f, ""}, // stops where an end reaches 0 or 1
        {'s', kOpacity, 3, 25.6, 0.1f, "0:0 64:0.2 128:0.4 192:0.1 255:0.5"},
        {'s', kOpacity, 3, 25.6, 0.8f, ""},
        {'s', kOpacity, 4, 128, 0.5f, ""},
        {'s', kOpacity, -1, 128, 0.5f, ""},
        {'s', kRed, 0, 0, 300.0f, "0:300 255:300"},
        {'d', kOpacity, 2, 0, 0, "0:0 64:0.2 192:0.6 255:1"}, // inner handles only
        {'d', kOpacity, 0, 0, 0, ""}, {'d', kOpacity, 4, 0, 0, ""}, {'d', kOpacity, 5, 0, 0, ""},
        {'d', kOpacity, -1, 0, 0, ""},
    };
    // clang-format on
    for (const auto& [op, channel, k, cell, y, result] : cases) {
        SCOPED_TRACE(testing::Message()
                     << op << k << " of " << channel << " to " << cell << ", " << y);
        OXWLUTIntervalInfo edited(interval);
        const bool changed = *result != '\0';
        const bool segment = op == 's';
        EXPECT_EQ(segment     ? edited.moveSegment(channel, k, c256(cell), y)
                  : op == 'h' ? edited.moveHandle(channel, k, c256(cell), y)
                              : edited.deleteHandle(channel, k),
                  changed);
        EXPECT_EQ(cellCurve(edited, channel), changed ? result : cellCurve(interval, channel));
        EXPECT_EQ(edited.referenceHandles(channel), segment || !changed
                                                        ? interval.referenceHandles(channel)
                                                        : edited.handles(channel));
    }
}

TEST_F(IntervalInfoEdits, SegmentMoveIsDroppedByARefitAndCommittedByTheNextEditOrCommit)
{
    const HandleList reference = interval.referenceHandles(kOpacity);
    ASSERT_TRUE(interval.moveSegment(kOpacity, 1, 0.1f, 0.3f));
    ASSERT_TRUE(interval.setBorders(0.0f, 1.0f));
    EXPECT_EQ(interval.handles(kOpacity), reference);
    ASSERT_TRUE(interval.moveSegment(kOpacity, 1, 0.1f, 0.3f));
    ASSERT_TRUE(interval.moveHandle(kOpacity, 4, 1.0f, 0.9f));
    EXPECT_EQ(cellCurve(interval, kOpacity), "0:0 25:0.3 89:0.5 192:0.6 255:0.9");
    EXPECT_EQ(interval.referenceHandles(kOpacity), interval.handles(kOpacity));
    ASSERT_TRUE(interval.moveSegment(kOpacity, 2, 0.5f, 0.8f));
    EXPECT_TRUE(interval.commitChannel(kOpacity));
    EXPECT_EQ(interval.referenceHandles(kOpacity), interval.handles(kOpacity));
}

TEST_F(IntervalInfo, InsertHandleAddsOrReplacesInTheSameCell)
{
    const std::tuple<double, float, const char*> steps[] = {
        {128, 0.3f, "0:0 128:0.3 255:1"},
        {128.9, 0.9f, "0:0 128:0.9 255:1"}, // same cell: new value
        {127.2, 0.1f, "0:0 127:0.1 128:0.9 255:1"},
        {0.2, 0.7f, "0:0.7 127:0.1 128:0.9 255:1"},
        {256, 0.2f, "0:0.7 127:0.1 128:0.9 255:0.2"},
        {-768, 0.05f, "0:0.05 127:0.1 128:0.9 255:0.2"},
        {1024, 0.15f, "0:0.05 127:0.1 128:0.9 255:0.15"},
        {64.5, 2.0f, "0:0.05 64:1 127:0.1 128:0.9 255:0.15"}, // opacity is clamped
        {192.5, -1.0f, "0:0.05 64:1 127:0.1 128:0.9 192:0 255:0.15"},
    };
    for (const auto& [cell, y, result] : steps) {
        EXPECT_TRUE(interval.insertHandle(kOpacity, c256(cell), y));
        EXPECT_EQ(cellCurve(interval, kOpacity), result) << cell;
        EXPECT_EQ(interval.referenceHandles(kOpacity), interval.handles(kOpacity));
    }
    EXPECT_TRUE(interval.insertHandle(kBlue, 0.25f, 300.0f)); // colour is not
    EXPECT_EQ(cellCurve(interval, kBlue), "0:255.5 64:300 255:255.5");
}

TEST_F(IntervalInfo, UncommittedInsertionsEndLikeCommittedOnes)
{
    // A series without commits, then one commit, gives the curve of the committed series: in
    // random order, with repeats in one cell and positions outside the interval.
    OXWLUTIntervalInfo batch(interval);
    std::minstd_rand random(12345u); // portable: only its raw output is used
    const auto next = [&random] { return float(random()) / float(std::minstd_rand::max()); };
    for (int i = 0; i < 400; ++i) {
        const float x = next() * 1.2f - 0.1f;
        const float y = next() * 255.0f;
        ASSERT_TRUE(interval.insertHandle(kRed, x, y));
        ASSERT_TRUE(batch.insertHandle(kRed, x, y, false));
    }
    EXPECT_EQ(batch.handles(kRed), interval.handles(kRed));
    EXPECT_NE(batch.referenceHandles(kRed), batch.handles(kRed));
    ASSERT_TRUE(batch.commitChannel(kRed));
    EXPECT_EQ(batch.referenceHandles(kRed), interval.referenceHandles(kRed));
}

TEST_F(IntervalInfo, FindHandleIsTheNearestWithinBothRadiiAndHasHandleAtTheExactOne)
{
    shapeOpacity("0:0 64:.5 66:.5 255:1");
    // channel, x (in cells, clamped into the axis), y, rx, ry, the handle found
    // clang-format off
    const std::tuple<int, double, float, float, float, int> cases[] = {
        {kOpacity, 65.5, 0.5f, 0.01f, 0.1f, 2}, // a tie: the later one
        {kOpacity, 65.2, 0.5f, 0.01f, 0.1f, 1},    {kOpacity, 64.5, 0.59f, 0.01f, 0.1f, 1},
        {kOpacity, 64.5, 0.7f, 0.01f, 0.1f, -1},   {kOpacity, 76.8, 0.5f, 0.01f, 0.1f, -1},
        {kOpacity, -128, 0.0f, 0.01f, 0.05f, 0},   {kOpacity, 384, 1.0f, 0.01f, 0.05f, 3},
        {kOpacity, 64.5, 0.5f, -1.0f, -1.0f, 1},   {kOpacity, 64.5, 0.5f, 0.0f, 0.0f, 1},
        {kOpacity, 64.5, 0.51f, -1.0f, -1.0f, -1}, // no radius: exact hits only
        {kRed, 0.5, 250.0f, 0.01f, 10.0f, 0},      {kRed, 0.5, 250.0f, 0.01f, 5.0f, -1},
    };
    // clang-format on
    for (const auto& [channel, cell, y, rx, ry, found] : cases) {
        EXPECT_EQ(interval.findHandle(channel, c256(cell), y, rx, ry), found)
            << channel << " at cell " << cell << ", " << y << " within " << rx << ", " << ry;
    }
    // hasHandleAt finds exact positions only: a search with no horizontal tolerance, any value.
    for (double cell : {0.5, 64.5, 64.6, 65.5, 66.5, 255.5}) {
        const bool found = interval.findHandle(kOpacity, c256(cell), 5e-7f, 0.0f, 1000.0f) >= 0;
        EXPECT_EQ(interval.hasHandleAt(kOpacity, c256(cell)), found) << cell;
        EXPECT_EQ(found, cell != 64.6 && cell != 65.5) << cell;
    }
    EXPECT_FALSE(interval.hasHandleAt(kRed, c256(64.5)));
    // The radius is converted to local units: twice the global ones on half the axis.
    ASSERT_TRUE(interval.setBorders(0.0f, 0.5f));
    EXPECT_EQ(interval.findHandle(kOpacity, c256(0.5) + 0.003f, 0.0f, 0.004f, 0.1f), 0);
    EXPECT_EQ(interval.findHandle(kOpacity, c256(0.5) + 0.003f, 0.0f, 0.002f, 0.1f), -1);
}

TEST_F(IntervalInfo, FindSegmentByPerpendicularDistance)
{
    const char* shapes[] = {"0:0 255:1", "0:.5 128:.5 255:.5", "0:0 128:1 255:0"};
    // shape, x, y, rx, ry, the segment found by the narrow search (which takes the smaller
    // radius) and by the wide one (both). (0.5, 0.6) lies about 0.0706 from the ramp.
    // clang-format off
    const std::tuple<int, float, float, float, float, int, int> cases[] = {
        {0, 0.5f, 0.5f, 0.01f, 0.01f, 0, 0},      {0, 0.5f, 0.6f, 0.06f, 0.06f, -1, 0},
        {0, 0.5f, 0.6f, 0.5f, 0.06f, -1, 0},      {0, 0.5f, 0.6f, 0.08f, 0.075f, 0, 0},
        {0, 0.5f, 0.6f, 0.04f, 0.05f, -1, -1},    {0, 1.2f, 1.2f, 0.05f, 0.05f, -1, -1},
        {0, -0.2f, -0.2f, 0.05f, 0.05f, -1, -1}, // beyond the ends, on the line's extension
        {1, c256(128.5), 0.5f, 0.01f, 0.01f, 1, 1}, // a tie: the later one
        {1, 0.25f, 0.5f, 0.01f, 0.01f, 0, 0},     {1, 0.75f, 0.5f, 0.01f, 0.01f, 1, 1},
        {1, 0.25f, 0.5f, -1.0f, -1.0f, 0, 0},     {1, 0.25f, 0.52f, -1.0f, -1.0f, -1, -1},
        {2, 0.2f, 0.45f, 0.4f, 0.05f, 0, 0},      {2, 0.8f, 0.45f, 0.4f, 0.05f, 1, 1},
    };
    // clang-format on
    for (const auto& [shape, x, y, rx, ry, found, foundWide] : cases) {
        SCOPED_TRACE(testing::Message() << x << ", " << y << " within " << rx << ", " << ry
                                        << " of " << shapes[shape]);
        shapeOpacity(shapes[shape]);
        EXPECT_EQ(interval.findSegment(kOpacity, x, y, rx, ry), found);
        EXPECT_EQ(interval.findSegmentWide(kOpacity, x, y, rx, ry), foundWide);
    }
}

TEST_F(IntervalInfo, MovableHandlesAndSegmentsNeedRoomAndLevelSegmentsLessThanOneStep)
{
    // A handle needs three cells between its neighbours, a segment a cell and a half on one
    // side; neither the end handles nor the segments touching them move sideways.
    shapeOpacity("0:0 10:.1 11:.2 12:.3 14:.4 255:1");
    const bool handles[] = {false, true, false, true, true, false, false};
    for (int k = -1; k <= 6; ++k) {
        EXPECT_EQ(interval.isHandleMovable(kOpacity, k), k >= 0 && handles[k]) << k;
        EXPECT_EQ(interval.isHandleIndexValid(kOpacity, k), k >= 0 && k < 6) << k;
    }
    shapeOpacity("0:0 10:.1 11:.2 12:.3 13:.4 20:.5 255:1");
    const bool segments[] = {false, true, false, true, true, false, false, false};
    for (int k = -1; k <= 7; ++k) {
        EXPECT_EQ(interval.isSegmentMovable(kOpacity, k), k >= 0 && segments[k]) << k;
    }
    // Level: values less than one apart, which for opacity is every segment but a full step.
    shapeOpacity("0:0 128:.999 200:.2 255:1");
    for (int k = -1; k <= 3; ++k) {
        EXPECT_EQ(interval.isSegmentLevel(kOpacity, k), k >= 0 && k < 3) << k;
    }
    const std::pair<const char*, bool> curves[] = {
        {"0:0 1:1", false}, {"0:1 1:0", false}, {"0:100 1:100.5", true}, {"0:0 1:255", false}};
    for (const auto& [curve, level] : curves) {
        ASSERT_TRUE(interval.setReferenceHandles(kRed, handlesOf(curve)));
        EXPECT_EQ(interval.isSegmentLevel(kRed, 0), level) << curve;
    }
}

TEST_F(IntervalInfo, ResetAndColourRestoreDefaultCurvesAndCommitAllChannels)
{
    EXPECT_FALSE(interval.resetChannel(kOpacity));
    ASSERT_TRUE(interval.setBorders(0.25f, 0.5f)); // cells 64 .. 127
    EXPECT_FALSE(interval.resetChannel(kOpacity)); // the refitted ramp is the default
    ASSERT_TRUE(interval.insertHandle(kOpacity, 0.3f, 0.5f));
    ASSERT_TRUE(interval.insertHandle(kGreen, 0.3f, 10.0f));
    ASSERT_TRUE(interval.moveSegment(kRed, 0, 0.3f, 25.0f));
    const HandleList movedRed = interval.handles(kRed);
    for (int channel : {kOpacity, kGreen}) {
        EXPECT_TRUE(interval.resetChannel(channel));
        EXPECT_FALSE(interval.resetChannel(channel));
    }
    EXPECT_EQ(cellCurve(interval, kOpacity) + " " + cellCurve(interval, kGreen),
              "64:0 127:1 64:255.5 127:255.5");
    EXPECT_EQ(curvesOf(interval, Curves::Reference), curvesOf(interval, Curves::Fitted));
    EXPECT_EQ(interval.handles(kRed), movedRed);
    // A colour gives two committed handles per colour channel and leaves the opacity alone.
    ASSERT_TRUE(interval.insertHandle(kRed, 0.3f, 7.0f));
    ASSERT_TRUE(interval.insertHandle(kOpacity, 0.3f, 0.5f));
    ASSERT_TRUE(interval.moveSegment(kBlue, 0, 0.3f, 25.0f));
    const std::string opacity = cellCurve(interval, kOpacity);
    EXPECT_TRUE(interval.setColour(OXMRGB8(10, 20, 30)));
    EXPECT_EQ(cellCurve(interval, kRed) + " " + cellCurve(interval, kGreen) + " " +
                  cellCurve(interval, kBlue) + " " + cellCurve(interval, kOpacity),
              "64:10 127:10 64:20 127:20 64:30 127:30 " + opacity);
    EXPECT_EQ(curvesOf(interval, Curves::Reference), curvesOf(interval, Curves::Fitted));
}

TEST_F(IntervalInfo, ShortReferenceListsStartFromTheLastFirstValue)
{
    // The fit of a full list remembers its first value (a copy too); a list of one handle gives
    // the last value, an empty list the first value throughout. A reset sets the default.
    ASSERT_TRUE(interval.setReferenceHandles(kOpacity, handlesOf(".3:.2 .6:.8")));
    EXPECT_EQ(interval.referenceHandles(kOpacity), handlesOf(".3:.2 .6:.8")); // x kept
    OXWLUTIntervalInfo copy(interval);
    const std::tuple<OXWLUTIntervalInfo*, int, const char*, const char*> steps[] = {
        {&interval, kOpacity, ".4:.6", "0:0.2 255:0.6"},
        {&interval, kOpacity, "", "0:0.2 255:0.2"},
        {&copy, kOpacity, ".5:.8", "0:0.2 255:0.8"},
        {&interval, kRed, "", "0:255.5 255:255.5"}};
    for (const auto& [target, channel, reference, fitted] : steps) {
        ASSERT_TRUE(target->setReferenceHandles(channel, handlesOf(reference)));
        EXPECT_EQ(cellCurve(*target, channel), fitted) << reference;
    }
    ASSERT_TRUE(interval.resetChannel(kOpacity));
    ASSERT_TRUE(interval.setReferenceHandles(kOpacity, handlesOf(".5:.8")));
    EXPECT_EQ(cellCurve(interval, kOpacity), "0:0 255:0.8");
}
