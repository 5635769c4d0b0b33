#pragma once

// Helpers shared by the classification model tests: objects of a given cell count, curves
// written and read as text in cell units, and the oracle for splits, which evaluates the
// earlier curve independently of the model.

#include "OXWLUTIntervalInfo.h"
#include "OXWLUTObjectInfo.h"

#include <gtest/gtest.h>

#include <cmath>
#include <memory>
#include <ostream>
#include <sstream>
#include <string>
#include <utility>
#include <vector>

inline void PrintTo(const OXMVector2<float>& h, std::ostream* os)
{
    *os << "(" << h.x << ", " << h.y << ")";
}

namespace modeltest {

using Handle = OXWLUTIntervalInfo::Handle;
using HandleList = OXWLUTIntervalInfo::HandleList;
using Borders = std::vector<std::pair<double, double>>;
using Names = std::vector<std::string>;

constexpr int kOpacity = OXWLUTIntervalInfo::OpacityChannel;
constexpr int kRed = OXWLUTIntervalInfo::RedChannel;
constexpr int kGreen = OXWLUTIntervalInfo::GreenChannel;
constexpr int kBlue = OXWLUTIntervalInfo::BlueChannel;
constexpr int kAll = OXWLUTIntervalInfo::AllChannels;
constexpr int kChannels[] = {kOpacity, kRed, kGreen, kBlue};

// An object whose grey values are the histogram indices 0 .. cells-1, one cell per index, as
// the tool panel builds it. Opacity runs from 0 to 1; the calibrated range falls back to the
// grey range.
inline std::unique_ptr<OXWLUTObjectInfo> makeObject(int cells)
{
    return std::make_unique<OXWLUTObjectInfo>(-0.5f, static_cast<float>(cells) - 0.5f, 0.0f, 1.0f,
                                              static_cast<float>(cells), 0.0f, 0.0f);
}

// The position k cells from the left end of an axis of n cells (k may be fractional).
inline float at(int n, double k)
{
    return static_cast<float>(k / n);
}

// An n-cell object split (new part on the right) at the given cell boundaries, ascending.
inline std::unique_ptr<OXWLUTObjectInfo> objectSplitAt(int n, const std::vector<int>& cells)
{
    auto object = makeObject(n);
    for (int b : cells) {
        EXPECT_TRUE(object->newInterval(at(n, b), false)) << "split at cell " << b;
    }
    return object;
}

inline std::string str(double v)
{
    std::ostringstream out;
    out << v;
    return out.str();
}

inline std::string nameOf(const OXWLUTIntervalInfo* interval)
{
    return interval ? interval->name().toStdString() : std::string("<null>");
}

inline Names namesOf(const OXWLUTObjectInfo& object)
{
    Names names;
    for (int i = 0; i < object.intervalCount(); ++i) {
        names.push_back(nameOf(object.interval(i)));
    }
    return names;
}

// Borders of all intervals as cell indices (from, to).
inline Borders bordersInCells(const OXWLUTObjectInfo& object)
{
    const double n = object.greyCount();
    Borders borders;
    for (int i = 0; i < object.intervalCount(); ++i) {
        borders.emplace_back(object.interval(i)->from() * n, object.interval(i)->to() * n);
    }
    return borders;
}

enum class Curves
{
    Fitted,
    Reference,
    Global
};

// The curves of the four channels of an interval.
inline std::vector<HandleList> curvesOf(const OXWLUTIntervalInfo& interval, Curves which)
{
    std::vector<HandleList> curves;
    for (int channel : kChannels) {
        curves.push_back(which == Curves::Fitted      ? interval.handles(channel)
                         : which == Curves::Reference ? interval.referenceHandles(channel)
                                                      : interval.globalCurve(channel));
    }
    return curves;
}

// The global x of every handle of a channel, in cells of the object's axis.
inline std::vector<double> handleCells(const OXWLUTIntervalInfo& interval, int channel)
{
    const double n = interval.objectInfo()->greyCount();
    std::vector<double> cells;
    for (const Handle& h : interval.handles(channel)) {
        cells.push_back(static_cast<double>(interval.globalFromLocal(h.x)) * n);
    }
    return cells;
}

// Handles written as "x:y x:y ...", for example "0:0 .45:.2 1:1".
inline HandleList handlesOf(const std::string& text)
{
    std::istringstream in(text);
    HandleList handles;
    float x, y;
    char colon;
    while (in >> x >> colon >> y) {
        handles.push_back({x, y});
    }
    return handles;
}

// The handles of a channel as "cell:value ...", each named by the index of the cell it is in.
inline std::string cellCurve(const OXWLUTIntervalInfo& interval, int channel)
{
    const std::vector<double> cells = handleCells(interval, channel);
    std::string text;
    for (std::size_t k = 0; k < cells.size(); ++k) {
        text +=
            (k ? " " : "") + str(std::floor(cells[k])) + ":" + str(interval.handles(channel)[k].y);
    }
    return text;
}

// The value of a piecewise-linear curve (handles in increasing x) at x; constant beyond the
// end handles.
inline double valueAt(const HandleList& curve, double x)
{
    if (x <= curve.front().x) {
        return curve.front().y;
    }
    for (std::size_t k = 1; k < curve.size(); ++k) {
        const double x0 = curve[k - 1].x, x1 = curve[k].x;
        if (x <= x1) {
            const double f = x1 == x0 ? 1.0 : (x - x0) / (x1 - x0);
            return curve[k - 1].y + f * (curve[k].y - curve[k - 1].y);
        }
    }
    return curve.back().y;
}

// Whether the intervals i and i + 1, split from one whose global curves were before, go on with
// that curve: each part holds its values at the part's end cells and every earlier handle that
// lies strictly between them. The end values may differ by the change of the curve over a
// fiftieth of a cell (positions are held in single precision). Empty when they do.
inline std::string splitViolation(const std::vector<HandleList>& before,
                                  const OXWLUTObjectInfo& object, int i)
{
    const double n = object.greyCount();
    for (int part : {i, i + 1}) {
        const OXWLUTIntervalInfo& iv = *object.interval(part);
        const double first = std::nearbyint(iv.from() * n), last = std::nearbyint(iv.to() * n) - 1;
        for (std::size_t c = 0; c < 4; ++c) {
            const HandleList& curve = before[c];
            HandleList expected; // cell, value
            for (const Handle& h : curve) {
                const double cell = std::floor(h.x * n);
                if (cell > first && cell < last) {
                    expected.push_back({float(cell), h.y});
                }
            }
            expected.insert(expected.begin(), {float(first), 0.0f});
            expected.resize(expected.size() + (last > first ? 1 : 0), {float(last), 0.0f});
            const HandleList actual = iv.globalCurve(kChannels[c]);
            bool same = actual.size() == expected.size();
            for (std::size_t k = 0; k < actual.size() && same; ++k) {
                const double x = (expected[k].x + 0.5) / n, d = 0.01 / n;
                const bool end = k == 0 || k + 1 == actual.size();
                same = std::floor(actual[k].x * n) == expected[k].x &&
                       std::fabs(actual[k].y - (end ? valueAt(curve, x) : expected[k].y)) <=
                           (c == 0 ? 1e-5 : 1e-3) +
                               (end ? std::fabs(valueAt(curve, x + d) - valueAt(curve, x - d)) : 0);
            }
            if (!same) {
                return "part " + str(part) + " channel " + str(kChannels[c]) + " is " +
                       cellCurve(iv, kChannels[c]);
            }
        }
    }
    return {};
}

} // namespace modeltest
