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
#include <sstream>
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

double cellsOf(const OXWLUTObjectInfo& object, double position)
{
    return position * object.greyCount();
}

bool onBoundary(const OXWLUTObjectInfo& object, float position)
{
    const double c = cellsOf(object, position);
    return c == std::nearbyint(c);
}

// Borders: contiguous, from 0 to 1, on cell boundaries; empty intervals only when allowed.
std::string tilingViolation(const OXWLUTObjectInfo& object, bool allowEmpty)
{
    std::ostringstream out;
    const int count = object.intervalCount();
    if (count < 1) {
        return "no intervals";
    }
    if (object.interval(0)->from() != 0.0f) {
        out << "first interval starts at " << object.interval(0)->from();
    } else if (object.interval(count - 1)->to() != 1.0f) {
        out << "last interval ends at " << object.interval(count - 1)->to();
    }
    for (int i = 0; i < count && out.str().empty(); ++i) {
        const OXWLUTIntervalInfo* iv = object.interval(i);
        if (!onBoundary(object, iv->from()) || !onBoundary(object, iv->to())) {
            out << "interval " << i << " [" << cellsOf(object, iv->from()) << ", "
                << cellsOf(object, iv->to()) << "] cells not on boundaries";
        } else if (iv->to() < iv->from() || (!allowEmpty && iv->to() == iv->from())) {
            out << "interval " << i << " [" << cellsOf(object, iv->from()) << ", "
                << cellsOf(object, iv->to()) << "] cells is inverted or empty";
        } else if (i + 1 < count && iv->to() != object.interval(i + 1)->from()) {
            out << "gap after interval " << i << ": " << iv->to() << " vs "
                << object.interval(i + 1)->from();
        }
    }
    return out.str();
}

// Fitted curves: on cell centres inside the interval, strictly increasing, pinned to the
// end cells, at least two handles unless the interval is one cell wide.
std::string curveViolation(const OXWLUTObjectInfo& object, int i)
{
    const OXWLUTIntervalInfo* iv = object.interval(i);
    const double first = std::nearbyint(cellsOf(object, iv->from()));
    const double last = std::nearbyint(cellsOf(object, iv->to()));
    const double width = last - first;
    std::ostringstream out;
    if (width < 1) {
        return {};
    }
    for (int channel : kChannels) {
        const HandleList& handles = iv->handles(channel);
        const std::vector<double> cells = handleCells(*iv, channel);
        out << "interval " << i << " [" << first << ", " << last << "] channel " << channel
            << ", handle cells:";
        for (std::size_t k = 0; k < cells.size() && k < 12; ++k) {
            out << ' ' << cells[k];
        }
        out << (cells.size() > 12 ? " ...: " : ": ");
        const std::size_t prefix = out.str().size();
        if (handles.empty()) {
            out << "no handles";
        } else if (width == 1) {
            for (double c : cells) {
                if (std::fabs(c - (first + 0.5)) > 0.05) {
                    out << "handle off the single cell centre";
                    break;
                }
            }
        } else if (handles.size() < 2) {
            out << "fewer than two handles";
        } else if (std::fabs(cells.front() - (first + 0.5)) > 0.05) {
            out << "first handle not on the first cell centre";
        } else if (std::fabs(cells.back() - (last - 0.5)) > 0.05) {
            out << "last handle not on the last cell centre";
        } else {
            for (std::size_t k = 0; k < cells.size(); ++k) {
                const double frac = cells[k] - std::floor(cells[k]);
                if (std::fabs(frac - 0.5) > 0.05) {
                    out << "handle " << k << " not on a cell centre";
                    break;
                }
                if (cells[k] < first || cells[k] > last) {
                    out << "handle " << k << " outside the interval";
                    break;
                }
                if (k > 0 && !(handles[k].x > handles[k - 1].x && cells[k] - cells[k - 1] > 0.9)) {
                    out << "handles " << k - 1 << " and " << k << " not increasing by a cell";
                    break;
                }
            }
        }
        if (out.str().size() == prefix && channel == kOpacity) {
            for (const Handle& h : handles) {
                if (!(h.y >= 0.0f && h.y <= 1.0f)) {
                    out << "opacity " << h.y << " outside [0, 1]";
                    break;
                }
            }
        }
        if (out.str().size() != prefix) {
            return out.str();
        }
        out.str({});
    }
    return {};
}

std::string objectViolation(const OXWLUTObjectInfo& object)
{
    std::string v = tilingViolation(object, false);
    for (int i = 0; i < object.intervalCount() && v.empty(); ++i) {
        v = curveViolation(object, i);
        const OXWLUTIntervalInfo* iv = object.interval(i);
        if (v.empty() && object.intervalIndexAt((iv->from() + iv->to()) / 2) != i) {
            v = "interval " + std::to_string(i) + " not found at its centre";
        }
        const std::string expected = "Interval " + std::to_string(i + 1);
        if (v.empty() && nameOf(iv) != expected) {
            v = "interval " + std::to_string(i) + " named '" + nameOf(iv) + "'";
        }
    }
    return v;
}

// Value of a global curve at the centre of cell k, with the change of the segment used (for
// a tolerance that allows for positions held in single precision).
double curveAtCell(const HandleList& curve, int n, int k, double* segmentRise)
{
    const double x = (k + 0.5) / n;
    *segmentRise = 0.0;
    for (std::size_t j = 1; j < curve.size(); ++j) {
        if (x <= curve[j].x || j + 1 == curve.size()) {
            *segmentRise = std::fabs(curve[j].y - curve[j - 1].y);
            break;
        }
    }
    return valueAt(curve, x);
}

int cellOfCentre(double position, int n)
{
    return static_cast<int>(std::floor(position * n));
}

// After a split, each part holds the earlier curve's value at its end cells and every earlier
// handle that lies strictly between them.
std::string splitViolation(const std::vector<HandleList>& before, const OXWLUTObjectInfo& object,
                           int i)
{
    const int n = static_cast<int>(object.greyCount());
    for (int part : {i, i + 1}) {
        const OXWLUTIntervalInfo* iv = object.interval(part);
        const int first = static_cast<int>(std::nearbyint(cellsOf(object, iv->from())));
        const int last = static_cast<int>(std::nearbyint(cellsOf(object, iv->to()))) - 1;
        for (std::size_t c = 0; c < 4; ++c) {
            const int channel = kChannels[c];
            const double scale = channel == kOpacity ? 1.0 : 255.0;
            std::vector<std::pair<int, double>> expected; // cell, value
            std::vector<double> tolerance;
            double rise = 0.0;
            expected.emplace_back(first, curveAtCell(before[c], n, first, &rise));
            tolerance.push_back(1e-5 * scale + 0.02 * rise);
            for (const Handle& h : before[c]) {
                const int cell = cellOfCentre(h.x, n);
                if (cell > first && cell < last) {
                    expected.emplace_back(cell, h.y);
                    tolerance.push_back(1e-6 * scale);
                }
            }
            if (last > first) {
                expected.emplace_back(last, curveAtCell(before[c], n, last, &rise));
                tolerance.push_back(1e-5 * scale + 0.02 * rise);
            }
            const HandleList actual = iv->globalCurve(channel);
            std::ostringstream out;
            out << "part " << part << " [" << first << ", " << last + 1 << "] channel " << channel
                << ": ";
            if (actual.size() != expected.size()) {
                out << actual.size() << " handles, expected " << expected.size();
                return out.str();
            }
            for (std::size_t k = 0; k < actual.size(); ++k) {
                const int cell = cellOfCentre(actual[k].x, n);
                if (cell != expected[k].first ||
                    std::fabs(actual[k].y - expected[k].second) > tolerance[k]) {
                    out << "handle " << k << " at cell " << cell << " value " << actual[k].y
                        << ", expected cell " << expected[k].first << " value "
                        << expected[k].second;
                    return out.str();
                }
            }
        }
    }
    return {};
}

float valueFor(Random& random, int channel)
{
    return channel == kOpacity ? static_cast<float>(random.uniform(-0.2, 1.2))
                               : static_cast<float>(random.uniform(-20.0, 280.0));
}

// A position in or around an interval: on a boundary, on a centre or anywhere.
float positionIn(Random& random, const OXWLUTObjectInfo& object, const OXWLUTIntervalInfo& iv)
{
    const int n = static_cast<int>(object.greyCount());
    const double first = cellsOf(object, iv.from()) - 0.5;
    const double last = cellsOf(object, iv.to()) + 0.5;
    const double cell = random.uniform(first, last);
    switch (random.below(4)) {
    case 0:
        return static_cast<float>(std::floor(cell) / n);
    case 1:
        return static_cast<float>((std::floor(cell) + 0.5) / n);
    case 2:
        return static_cast<float>(random.uniform(-0.05, 1.05));
    default:
        return static_cast<float>(cell / n);
    }
}

struct Session
{
    Session(int cells, std::uint32_t seed) : object(makeObject(cells)), random(seed), n(cells) {}

    std::unique_ptr<OXWLUTObjectInfo> object;
    Random random;
    int n;
    std::string lastStep;

    OXWLUTIntervalInfo& anyInterval() { return *object->interval(random.below(count())); }
    int count() const { return object->intervalCount(); }

    void split()
    {
        OXWLUTIntervalInfo& target = anyInterval();
        const float x = positionIn(random, *object, target);
        const bool atLeft = random.chance(0.5);
        const int i = object->intervalIndexAt(std::clamp(x, 0.0f, 1.0f));
        ASSERT_GE(i, 0);
        const OXWLUTIntervalInfo* iv = object->interval(i);
        const double width = cellsOf(*object, iv->to()) - cellsOf(*object, iv->from());
        std::vector<HandleList> before;
        for (int channel : kChannels) {
            before.push_back(iv->globalCurve(channel));
        }
        std::ostringstream step;
        step << "split at cell " << cellsOf(*object, x) << (atLeft ? " left" : " right")
             << " of interval " << i << " (" << width << " cells)";
        lastStep = step.str();
        const bool done = object->newInterval(x, atLeft);
        ASSERT_EQ(done, width >= 1.5) << lastStep;
        if (done) {
            const std::string v = splitViolation(before, *object, i);
            ASSERT_TRUE(v.empty()) << lastStep << ": " << v;
        }
    }

    void remove()
    {
        const float x = static_cast<float>(random.uniform(-0.02, 1.02));
        const bool expandLeft = random.chance(0.5);
        const int i = object->intervalIndexAt(x);
        std::ostringstream step;
        step << "delete at cell " << cellsOf(*object, x) << " (interval " << i << ")"
             << (expandLeft ? " expanding left" : " expanding right");
        lastStep = step.str();
        const int before = count();
        int heir = -1;
        if (i >= 0 && before > 1) {
            heir = (i == 0 || (i < before - 1 && !expandLeft)) ? i + 1 : i - 1;
        }
        std::vector<HandleList> heirReference;
        const OXWLUTIntervalInfo* heirPointer = heir >= 0 ? object->interval(heir) : nullptr;
        if (heirPointer) {
            for (int channel : kChannels) {
                heirReference.push_back(heirPointer->referenceHandles(channel));
            }
        }
        const bool done = object->deleteInterval(x, expandLeft);
        ASSERT_EQ(done, heir >= 0) << lastStep;
        if (done) {
            ASSERT_EQ(count(), before - 1) << lastStep;
            const int survivor = heir > i ? heir - 1 : heir;
            ASSERT_EQ(object->interval(survivor), heirPointer) << lastStep;
            for (std::size_t c = 0; c < 4; ++c) {
                ASSERT_EQ(heirPointer->referenceHandles(kChannels[c]), heirReference[c])
                    << lastStep;
            }
        }
    }

    void drag()
    {
        if (count() < 2) {
            return;
        }
        const int j = 1 + random.below(count() - 1); // border between j-1 and j
        OXWLUTIntervalInfo* left = object->interval(j - 1);
        OXWLUTIntervalInfo* right = object->interval(j);
        const float start = right->from();
        const bool returns = random.chance(0.3);
        std::ostringstream step;
        step << "drag of border " << j << " from cell " << cellsOf(*object, start) << ":";

        // As the work area does: commit at the start of the drag.
        ASSERT_TRUE(left->commitChannel(kAll));
        ASSERT_TRUE(right->commitChannel(kAll));
        ASSERT_TRUE(left->fitChannel(kAll));
        ASSERT_TRUE(right->fitChannel(kAll));
        std::vector<HandleList> fittedBefore, referenceBefore;
        for (const OXWLUTIntervalInfo* iv : {left, right}) {
            for (int channel : kChannels) {
                fittedBefore.push_back(iv->handles(channel));
                referenceBefore.push_back(iv->referenceHandles(channel));
            }
        }

        const int moves = 1 + random.below(6);
        for (int m = 0; m <= moves; ++m) {
            float x;
            if (m == moves) {
                if (!returns) {
                    break;
                }
                x = start;
            } else if (random.chance(0.5)) {
                const double from = cellsOf(*object, left->from());
                const double to = cellsOf(*object, right->to());
                x = static_cast<float>(random.uniform(from - 3, to + 3) / n);
            } else if (random.chance(0.6)) {
                // Close to one of the outer borders: squeezes a curve into a few cells.
                const double edge =
                    cellsOf(*object, random.chance(0.5) ? left->from() : right->to());
                x = static_cast<float>((edge + random.uniform(-4.0, 4.0)) / n);
            } else {
                x = static_cast<float>(random.uniform(-0.1, 1.1));
            }
            const bool viaLeft = random.chance(0.5);
            step << ' ' << (viaLeft ? "L" : "R") << cellsOf(*object, x);
            lastStep = step.str();
            if (viaLeft) {
                object->moveLeftBorder(j, x);
            } else {
                object->moveRightBorder(j - 1, x);
            }
            ASSERT_EQ(object->interval(j - 1), left) << lastStep;
            ASSERT_EQ(object->interval(j), right) << lastStep;
            const std::string v = tilingViolation(*object, true);
            ASSERT_TRUE(v.empty()) << lastStep << ": " << v;
            std::size_t r = 0;
            for (const OXWLUTIntervalInfo* iv : {left, right}) {
                for (int channel : kChannels) {
                    ASSERT_EQ(iv->referenceHandles(channel), referenceBefore[r++])
                        << lastStep << " channel " << channel;
                }
            }
        }
        if (returns) {
            ASSERT_EQ(right->from(), start) << lastStep;
            std::size_t r = 0;
            for (const OXWLUTIntervalInfo* iv : {left, right}) {
                for (int channel : kChannels) {
                    ASSERT_EQ(iv->handles(channel), fittedBefore[r++])
                        << lastStep << ": curve not restored, channel " << channel;
                }
            }
        }
        // As the work area does at the end of the drag.
        ASSERT_TRUE(left->fitChannel(kAll));
        ASSERT_TRUE(right->fitChannel(kAll));
        const bool emptied = left->to() == left->from() || right->to() == right->from();
        ASSERT_EQ(object->removeEmptyIntervals(), emptied) << lastStep;
        lastStep = step.str() + " and end of drag";
    }

    void editHandles()
    {
        OXWLUTIntervalInfo& iv = anyInterval();
        const int channel = kChannels[random.below(4)];
        const int handles = static_cast<int>(iv.handles(channel).size());
        std::ostringstream step;
        step << "on interval [" << cellsOf(*object, iv.from()) << ", " << cellsOf(*object, iv.to())
             << "] channel " << channel << ": ";
        switch (random.below(7)) {
        case 0:
        case 1: {
            const int k = random.below(handles);
            const float x = positionIn(random, *object, iv);
            step << "move handle " << k << " to cell " << cellsOf(*object, x);
            iv.moveHandle(channel, k, x, valueFor(random, channel));
            break;
        }
        case 2:
        case 3: {
            // A burst of inserts, so that curves get dense enough to collide when narrowed.
            for (int burst = 1 + random.below(8); burst > 0; --burst) {
                const float x = positionIn(random, *object, iv);
                step << "insert handle at cell " << cellsOf(*object, x) << "; ";
                ASSERT_TRUE(iv.insertHandle(channel, x, valueFor(random, channel))) << step.str();
            }
            break;
        }
        case 4: {
            const int k = random.below(handles + 2) - 1;
            step << "delete handle " << k;
            ASSERT_EQ(iv.deleteHandle(channel, k), k >= 1 && k < handles - 1);
            break;
        }
        case 5: {
            const int k = random.below(std::max(1, handles - 1));
            const float x = positionIn(random, *object, iv);
            step << "move segment " << k << " to cell " << cellsOf(*object, x);
            iv.moveSegment(channel, k, x, valueFor(random, channel));
            if (random.chance(0.5)) {
                iv.commitChannel(channel);
            }
            break;
        }
        default: {
            const OXWLUTIntervalInfo& source = anyInterval();
            switch (random.below(3)) {
            case 0: {
                step << "paste the curve of [" << cellsOf(*object, source.from()) << ", "
                     << cellsOf(*object, source.to()) << "]";
                const HandleList clipboard = source.handles(channel);
                ASSERT_TRUE(iv.setReferenceHandles(channel, clipboard));
                break;
            }
            case 1:
                step << "reset";
                iv.resetChannel(channel);
                break;
            default:
                step << "set colour";
                ASSERT_TRUE(iv.setColour(OXMRGB8(static_cast<unsigned char>(random.below(256)),
                                                 static_cast<unsigned char>(random.below(256)),
                                                 static_cast<unsigned char>(random.below(256)))));
                break;
            }
        }
        }
        lastStep = step.str();
    }

    void run(int steps)
    {
        for (int step = 0; step < steps; ++step) {
            const int c = count();
            const double r = random.uniform();
            // Keep the number of intervals moving around a few dozen.
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
            if (testing::Test::HasFatalFailure()) {
                ADD_FAILURE() << "at step " << step;
                return;
            }
            const std::string v = objectViolation(*object);
            ASSERT_TRUE(v.empty()) << "step " << step << ", after " << lastStep << ": " << v;
        }
    }
};

} // namespace

TEST(ModelInvariant, RandomEditingOf256Cells)
{
    for (std::uint32_t seed : {1u, 2u, 3u}) {
        SCOPED_TRACE(testing::Message() << "seed " << seed);
        Session session(256, seed);
        session.run(3000);
        if (HasFatalFailure()) {
            return;
        }
    }
}

TEST(ModelInvariant, RandomEditingOf65536Cells)
{
    for (std::uint32_t seed : {11u, 12u, 13u}) {
        SCOPED_TRACE(testing::Message() << "seed " << seed);
        Session session(65536, seed);
        session.run(3000);
        if (HasFatalFailure()) {
            return;
        }
    }
}

TEST(ModelInvariant, OneCellIntervalsCollapseToTheirSingleCellCentre)
{
    // Split a small axis into one-cell intervals everywhere and drag borders across them.
    auto object = makeObject(32);
    for (int cell = 1; cell < 32; ++cell) {
        ASSERT_TRUE(object->newInterval(at(32, cell), false)) << cell;
    }
    ASSERT_EQ(object->intervalCount(), 32);
    for (int i = 0; i < 32; ++i) {
        const std::string v = curveViolation(*object, i);
        EXPECT_TRUE(v.empty()) << v;
        for (int channel : kChannels) {
            const HandleList& handles = object->interval(i)->handles(channel);
            ASSERT_FALSE(handles.empty());
            for (const Handle& h : handles) {
                EXPECT_FLOAT_EQ(h.x, 0.5f) << "interval " << i << " channel " << channel;
            }
        }
    }
    // Widening a one-cell interval again gives it two handles on its end cells.
    ASSERT_TRUE(object->moveRightBorder(5, at(32, 9))); // stops at the next border, 7
    ASSERT_TRUE(object->removeEmptyIntervals());
    EXPECT_EQ(object->intervalCount(), 31);
    EXPECT_TRUE(objectViolation(*object).empty()) << objectViolation(*object);
    EXPECT_EQ(object->interval(5)->handles(kOpacity).size(), 2u);
}

TEST(ModelInvariant, NarrowingAWideIntervalOnALargeAxisKeepsInnerHandlesInside)
{
    // A handle on the second-to-last cell of a 65535-cell interval; its border is then
    // dragged to a few cells before the far end. Whatever single-precision rounding does to
    // the handle's position, it must stay inside the interval and before the last handle.
    const int n = 65536;
    for (int keep : {2, 3, 4, 5}) {
        for (double inner : {n - 1.5, n - 2.5}) {
            SCOPED_TRACE(testing::Message() << keep << " cells kept, handle at cell " << inner);
            auto object = makeObject(n);
            ASSERT_TRUE(object->newInterval(at(n, 1), false));
            OXWLUTIntervalInfo* wide = object->interval(1);
            ASSERT_TRUE(wide->insertHandle(kOpacity, at(n, inner), 0.5f));
            ASSERT_EQ(wide->handles(kOpacity).size(), 3u);
            const float firstValue = wide->handles(kOpacity).front().y; // the split ramp's
            const float lastValue = wide->handles(kOpacity).back().y;

            ASSERT_TRUE(object->moveLeftBorder(1, at(n, n - keep)));
            ASSERT_EQ(wide->from(), at(n, n - keep));
            const std::string v = curveViolation(*object, 1);
            EXPECT_TRUE(v.empty()) << v;
            // The handle falls into the last cell and is resolved like any collision: with no
            // room it goes, otherwise it moves one cell to the left.
            std::vector<std::pair<double, float>> expected{{n - keep + 0.5, firstValue}};
            if (keep > 2) {
                expected.emplace_back(n - 1.5, 0.5f);
            }
            expected.emplace_back(n - 0.5, lastValue);
            const std::vector<double> cells = handleCells(*wide, kOpacity);
            std::vector<std::pair<double, float>> actual;
            for (std::size_t k = 0; k < cells.size(); ++k) {
                actual.emplace_back(std::floor(cells[k]) + 0.5, wide->handles(kOpacity)[k].y);
            }
            EXPECT_EQ(actual, expected);
        }
    }
}
