#pragma once

// Helpers shared by the classification model tests: building objects of a given cell count,
// reading curves back in cell units and evaluating piecewise-linear curves.

#include "OXWLUTIntervalInfo.h"
#include "OXWLUTObjectInfo.h"

#include <gtest/gtest.h>

#include <cmath>
#include <memory>
#include <ostream>
#include <string>
#include <vector>

inline void PrintTo(const OXMVector2<float>& h, std::ostream* os)
{
    *os << "(" << h.x << ", " << h.y << ")";
}

namespace modeltest {

using Handle = OXWLUTIntervalInfo::Handle;
using HandleList = OXWLUTIntervalInfo::HandleList;

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

inline std::string nameOf(const OXWLUTIntervalInfo* interval)
{
    return interval ? interval->name().toStdString() : std::string("<null>");
}

inline std::vector<std::string> namesOf(const OXWLUTObjectInfo& object)
{
    std::vector<std::string> names;
    for (int i = 0; i < object.intervalCount(); ++i) {
        names.push_back(nameOf(object.interval(i)));
    }
    return names;
}

// Borders of all intervals as cell indices (from, to) of an n-cell axis.
inline std::vector<std::pair<double, double>> bordersInCells(const OXWLUTObjectInfo& object)
{
    const double n = object.greyCount();
    std::vector<std::pair<double, double>> borders;
    for (int i = 0; i < object.intervalCount(); ++i) {
        borders.emplace_back(object.interval(i)->from() * n, object.interval(i)->to() * n);
    }
    return borders;
}

// The value of a piecewise-linear curve (handles in increasing x) at x; constant beyond the
// end handles.
inline double valueAt(const HandleList& curve, double x)
{
    if (curve.empty()) {
        return std::nan("");
    }
    if (x <= curve.front().x) {
        return curve.front().y;
    }
    if (x >= curve.back().x) {
        return curve.back().y;
    }
    for (std::size_t k = 1; k < curve.size(); ++k) {
        const double x0 = curve[k - 1].x, x1 = curve[k].x;
        if (x <= x1) {
            if (x1 == x0) {
                return curve[k].y;
            }
            const double f = (x - x0) / (x1 - x0);
            return curve[k - 1].y + f * (curve[k].y - curve[k - 1].y);
        }
    }
    return curve.back().y;
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

// The values of the whole classification of one channel at every cell centre of cells
// [firstCell, lastCell]: each centre is evaluated on the curve of the interval that holds it.
inline std::vector<double> sampleCells(const OXWLUTObjectInfo& object, int channel, int firstCell,
                                       int lastCell)
{
    const int n = static_cast<int>(object.greyCount());
    std::vector<double> values;
    for (int k = firstCell; k <= lastCell; ++k) {
        const double centre = (k + 0.5) / n;
        const OXWLUTIntervalInfo* holder = nullptr;
        for (int i = 0; i < object.intervalCount() && !holder; ++i) {
            const OXWLUTIntervalInfo* iv = object.interval(i);
            if (iv->from() <= centre && centre <= iv->to()) {
                holder = iv;
            }
        }
        values.push_back(holder ? valueAt(holder->globalCurve(channel), centre) : std::nan(""));
    }
    return values;
}

} // namespace modeltest
