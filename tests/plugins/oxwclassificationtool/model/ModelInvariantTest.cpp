// Long random editing sessions (fixed seeds) on a small and a large axis: after every step the
// intervals must tile the axis on cell boundaries and every fitted curve must be well formed.
// Splits must keep the curve, deletions the survivor's reference handles, and a border drag
// that ends where it started must restore both curves exactly.

#include "ModelTestSupport.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <random>
#include <string>
#include <vector>

using namespace modeltest;

namespace {

// Portable random numbers: only the raw Mersenne Twister output is used.
class Random
{
public:
    explicit Random(std::uint32_t seed) : mEngine(seed) {}
    double uniform() { return mEngine() / 4294967296.0; }
    double uniform(double a, double b) { return a + (b - a) * uniform(); }
    int below(int count) { return std::min(count - 1, static_cast<int>(uniform() * count)); }
    bool chance(double p) { return uniform() < p; }

private:
    std::mt19937 mEngine;
};

// Borders: contiguous, from 0 to 1, on cell boundaries; empty intervals only when allowed.
std::string tilingViolation(const OXWLUTObjectInfo& object, bool allowEmpty)
{
    double end = 0;
    for (const auto& [from, to] : bordersInCells(object)) {
        if (from != end || to != std::nearbyint(to) || to < from || (!allowEmpty && to == from)) {
            return "interval [" + str(from) + ", " + str(to) + "] cells after " + str(end);
        }
        end = to;
    }
    return end == object.greyCount() ? "" : "the intervals end at cell " + str(end);
}

// Fitted curves: on cell centres, pinned to the end cells, at least a cell apart and two
// handles unless the interval is one cell wide (all on its centre then); opacity in [0, 1].
std::string curveViolation(const OXWLUTIntervalInfo& iv)
{
    const double n = iv.objectInfo()->greyCount();
    const double first = std::nearbyint(iv.from() * n) + 0.5;
    const double last = std::nearbyint(iv.to() * n) - 0.5;
    for (int channel : kChannels) {
        const std::vector<double> cells = handleCells(iv, channel);
        const HandleList& h = iv.handles(channel);
        bool ok = last < first || (h.size() >= (last > first ? 2u : 1u) &&
                                   std::fabs(cells.front() - first) < 0.05 &&
                                   std::fabs(cells.back() - last) < 0.05);
        for (std::size_t k = 0; k < h.size() && ok && last >= first; ++k) {
            ok = std::fabs(cells[k] - std::floor(cells[k]) - 0.5) < 0.05 &&
                 (k == 0 || last == first ||
                  (h[k].x > h[k - 1].x && cells[k] - cells[k - 1] > 0.9)) &&
                 (channel != kOpacity || (h[k].y >= 0.0f && h[k].y <= 1.0f));
        }
        if (!ok) {
            return "cells [" + str(first) + ", " + str(last) + "] channel " + str(channel) +
                   " has handles at " + cellCurve(iv, channel);
        }
    }
    return {};
}

std::string objectViolation(const OXWLUTObjectInfo& object)
{
    std::string v = tilingViolation(object, false);
    for (int i = 0; i < object.intervalCount() && v.empty(); ++i) {
        const OXWLUTIntervalInfo* iv = object.interval(i);
        v = curveViolation(*iv);
        if (v.empty() && object.intervalIndexAt((iv->from() + iv->to()) / 2) != i) {
            v = "interval " + str(i) + " not found at its centre";
        } else if (v.empty() && nameOf(iv) != "Interval " + str(i + 1)) {
            v = "interval " + str(i) + " named '" + nameOf(iv) + "'";
        }
    }
    return v;
}

struct Session
{
    Session(int cells, std::uint32_t seed) : object(makeObject(cells)), random(seed), n(cells) {}

    std::unique_ptr<OXWLUTObjectInfo> object;
    Random random;
    int n;
    std::string step;

    int count() const { return object->intervalCount(); }
    OXWLUTIntervalInfo& anyInterval() { return *object->interval(random.below(count())); }
    double cellsOf(float position) const { return position * double(n); }
    float valueFor(int channel)
    {
        return float(channel == kOpacity ? random.uniform(-0.2, 1.2) : random.uniform(-20, 280));
    }

    // A position in or around an interval: on a boundary, on a centre or anywhere.
    float positionIn(const OXWLUTIntervalInfo& iv)
    {
        const double cell = random.uniform(cellsOf(iv.from()) - 0.5, cellsOf(iv.to()) + 0.5);
        const int kind = random.below(4);
        return float(kind == 0   ? std::floor(cell) / n
                     : kind == 1 ? (std::floor(cell) + 0.5) / n
                     : kind == 2 ? random.uniform(-0.05, 1.05)
                                 : cell / n);
    }

    void split()
    {
        const float x = positionIn(anyInterval());
        const bool atLeft = random.chance(0.5);
        const int i = object->intervalIndexAt(std::clamp(x, 0.0f, 1.0f));
        const OXWLUTIntervalInfo& iv = *object->interval(i);
        const bool wide = cellsOf(iv.to()) - cellsOf(iv.from()) >= 1.5;
        const std::vector<HandleList> before = curvesOf(iv, Curves::Global);
        const auto others = [this](int first, int last) { // the intervals outside [first, last]
            std::vector<std::vector<HandleList>> curves;
            for (int k = 0; k < count(); ++k) {
                if (k < first || k > last) {
                    curves.push_back(curvesOf(*object->interval(k), Curves::Fitted));
                }
            }
            return curves;
        };
        const auto untouched = others(i, i);
        step = "split at cell " + str(cellsOf(x)) + (atLeft ? " left" : " right");
        ASSERT_EQ(object->newInterval(x, atLeft), wide) << step;
        ASSERT_EQ(wide ? splitViolation(before, *object, i) : "", "") << step;
        ASSERT_EQ(others(i, wide ? i + 1 : i), untouched) << step;
    }

    void remove()
    {
        const float x = float(random.uniform(-0.02, 1.02));
        const bool expandLeft = random.chance(0.5);
        const int i = object->intervalIndexAt(x), before = count();
        step = "delete at cell " + str(cellsOf(x)) + (expandLeft ? " expanding left" : " right");
        // The first interval hands over to the right, the last one to the left.
        const bool toRight = i == 0 || (i < before - 1 && !expandLeft);
        const int heir = i < 0 || before < 2 ? -1 : (toRight ? i + 1 : i - 1);
        const OXWLUTIntervalInfo* survivor = object->interval(heir);
        const auto reference =
            survivor ? curvesOf(*survivor, Curves::Reference) : std::vector<HandleList>();
        ASSERT_EQ(object->deleteInterval(x, expandLeft), heir >= 0) << step;
        if (survivor) {
            ASSERT_EQ(object->interval(toRight ? i : i - 1), survivor) << step;
            ASSERT_EQ(curvesOf(*survivor, Curves::Reference), reference) << step;
        }
    }

    float dragTarget(const OXWLUTIntervalInfo& left, const OXWLUTIntervalInfo& right)
    {
        if (random.chance(0.5)) {
            return float(random.uniform(cellsOf(left.from()) - 3, cellsOf(right.to()) + 3) / n);
        }
        if (random.chance(0.6)) { // close to an outer border: squeezes a curve into a few cells
            const double edge = cellsOf(random.chance(0.5) ? left.from() : right.to());
            return float((edge + random.uniform(-4.0, 4.0)) / n);
        }
        return float(random.uniform(-0.1, 1.1));
    }

    void drag()
    {
        if (count() < 2) {
            return;
        }
        const int j = 1 + random.below(count() - 1); // the border between j - 1 and j
        OXWLUTIntervalInfo* left = object->interval(j - 1);
        OXWLUTIntervalInfo* right = object->interval(j);
        const float start = right->from();
        const bool returns = random.chance(0.3);
        step = "drag of border " + str(j) + " from cell " + str(cellsOf(start)) + ":";
        for (OXWLUTIntervalInfo* iv : {left, right}) { // as the work area does at its start
            ASSERT_TRUE(iv->commitChannel(kAll));
            ASSERT_TRUE(iv->fitChannel(kAll));
        }
        const auto both = [left, right](Curves which) {
            return std::make_pair(curvesOf(*left, which), curvesOf(*right, which));
        };
        const auto fitted = both(Curves::Fitted), reference = both(Curves::Reference);
        const int moves = 1 + random.below(6);
        for (int m = 0; m < moves || (m == moves && returns); ++m) {
            const float x = m == moves ? start : dragTarget(*left, *right);
            const bool viaLeft = random.chance(0.5);
            step += (viaLeft ? " L" : " R") + str(cellsOf(x));
            viaLeft ? object->moveLeftBorder(j, x) : object->moveRightBorder(j - 1, x);
            ASSERT_EQ(object->interval(j - 1), left) << step;
            ASSERT_EQ(object->interval(j), right) << step;
            ASSERT_EQ(tilingViolation(*object, true), "") << step;
            ASSERT_EQ(both(Curves::Reference), reference) << step;
        }
        if (returns) {
            ASSERT_EQ(both(Curves::Fitted), fitted) << step << ": curves not restored";
        }
        ASSERT_TRUE(left->fitChannel(kAll)); // as the work area does at the end
        ASSERT_TRUE(right->fitChannel(kAll));
        const bool emptied = left->to() == left->from() || right->to() == right->from();
        ASSERT_EQ(object->removeEmptyIntervals(), emptied) << step;
    }

    void editHandles()
    {
        OXWLUTIntervalInfo& iv = anyInterval();
        const int channel = kChannels[random.below(4)];
        const int handles = static_cast<int>(iv.handles(channel).size());
        step = "on cells [" + str(cellsOf(iv.from())) + ", " + str(cellsOf(iv.to())) +
               "] channel " + str(channel) + ":";
        const int action = random.below(7);
        if (action < 2) {
            const int k = random.below(handles);
            const float x = positionIn(iv);
            step += " move handle " + str(k) + " to cell " + str(cellsOf(x));
            iv.moveHandle(channel, k, x, valueFor(channel));
        } else if (action < 4) {
            // A burst of inserts, so that curves get dense enough to collide when narrowed.
            for (int burst = 1 + random.below(8); burst > 0; --burst) {
                const float x = positionIn(iv);
                step += " insert at cell " + str(cellsOf(x));
                ASSERT_TRUE(iv.insertHandle(channel, x, valueFor(channel))) << step;
            }
        } else if (action == 4) {
            const int k = random.below(handles + 2) - 1;
            step += " delete handle " + str(k);
            ASSERT_EQ(iv.deleteHandle(channel, k), k >= 1 && k < handles - 1) << step;
        } else if (action == 5) {
            const int k = random.below(std::max(1, handles - 1));
            const float x = positionIn(iv);
            step += " move segment " + str(k) + " to cell " + str(cellsOf(x));
            iv.moveSegment(channel, k, x, valueFor(channel));
            if (random.chance(0.5)) {
                iv.commitChannel(channel);
            }
        } else if (const int other = random.below(3); other == 0) {
            const OXWLUTIntervalInfo& source = anyInterval();
            step += " paste the curve of cells from " + str(cellsOf(source.from()));
            ASSERT_TRUE(iv.setReferenceHandles(channel, HandleList(source.handles(channel))));
        } else if (other == 1) {
            step += " reset";
            iv.resetChannel(channel);
        } else {
            step += " set colour";
            const auto byte = [this] { return static_cast<unsigned char>(random.below(256)); };
            ASSERT_TRUE(iv.setColour(OXMRGB8(byte(), byte(), byte())));
        }
    }

    void run(int steps)
    {
        for (int s = 0; s < steps && !testing::Test::HasFatalFailure(); ++s) {
            // Keep the number of intervals moving around a few dozen.
            const int c = count();
            const double r = random.uniform();
            const double splitShare = c < 4 ? 0.35 : (c > 40 ? 0.05 : 0.15);
            const double deleteShare = c > 40 ? 0.3 : 0.1;
            if (r < splitShare) {
                split();
            } else if (r < splitShare + deleteShare) {
                remove();
            } else if (r < splitShare + deleteShare + 0.2) {
                drag();
            } else {
                editHandles();
            }
            ASSERT_EQ(objectViolation(*object), "") << "step " << s << ", after " << step;
        }
    }
};

} // namespace

TEST(ModelInvariant, RandomEditingOf256And65536Cells)
{
    const std::pair<int, std::uint32_t> sessions[] = {{256, 1u},   {256, 2u},   {256, 3u},
                                                      {65536, 11}, {65536, 12}, {65536, 13}};
    for (const auto& [cells, seed] : sessions) {
        SCOPED_TRACE(testing::Message() << cells << " cells, seed " << seed);
        Session(cells, seed).run(3000);
        if (HasFatalFailure()) {
            return;
        }
    }
}

TEST(ModelInvariant, NarrowingAWideIntervalOnALargeAxisKeepsInnerHandlesInside)
{
    // A handle near the far end of a 65535-cell interval, whose border is then dragged to a few
    // cells before that end. Whatever single-precision rounding does to the handle's position,
    // it falls into the last cell and is resolved like any collision: with no room it goes,
    // otherwise it moves one cell to the left.
    const int n = 65536;
    for (int keep : {2, 3, 4, 5}) {
        for (double inner : {n - 1.5, n - 2.5}) {
            SCOPED_TRACE(testing::Message() << keep << " cells kept, handle at cell " << inner);
            auto object = objectSplitAt(n, {1});
            OXWLUTIntervalInfo* wide = object->interval(1);
            ASSERT_TRUE(wide->insertHandle(kOpacity, at(n, inner), 0.5f));
            const float firstValue = wide->handles(kOpacity).front().y; // the split ramp's
            const float lastValue = wide->handles(kOpacity).back().y;
            ASSERT_TRUE(object->moveLeftBorder(1, at(n, n - keep)));
            EXPECT_EQ(curveViolation(*wide), "");
            std::string expected = str(n - keep) + ":" + str(firstValue);
            expected += keep > 2 ? " " + str(n - 2) + ":0.5" : "";
            EXPECT_EQ(cellCurve(*wide, kOpacity),
                      expected + " " + str(n - 1) + ":" + str(lastValue));
        }
    }
}
