#include "OXWPresetConversion.h"

#include "OXWClassificationToolEnums.h"

#include <OXMObject.h>
#include <OXMRegisteredEnum.h>
#include <OXMVector2.h>

#include <algorithm>
#include <cmath>
#include <limits>
#include <vector>

namespace {

const OXMRegisteredEnum IntervalFloatIndexListName("IntervalFloatIndexList", false,
                                                   OXWClassificationToolEnums::Namespace);

using Handle = OXMVector2<float>;
using Range = OXWPresetConversion::Range;

bool allFinite(const std::vector<double>& values)
{
    return std::all_of(values.begin(), values.end(), [](double v) { return std::isfinite(v); });
}

// The borders of a record as doubles: the float list when it has entries, else the integers.
std::vector<double> recordBorders(const OXMObject& record)
{
    std::vector<float> floats;
    record.getArray(IntervalFloatIndexListName, floats);
    if (!floats.empty())
        return std::vector<double>(floats.begin(), floats.end());
    std::vector<int> ints;
    record.getArray(OXM::IntervalIndexList, ints);
    return std::vector<double>(ints.begin(), ints.end());
}

bool stretchBorders(OXMObject& record, const std::vector<double>& borders, Range range)
{
    const double f0 = borders.front();
    const double f1 = borders.back();
    if (!(f1 > f0))
        return false;
    const double s = double(range.last - range.first) / (f1 - f0);
    const double t = double(range.first) - s * f0;
    std::vector<int> stretched;
    for (double b : borders) {
        const double v = std::floor(b * s + t + 0.5);
        if (!(std::fabs(v) <= double(std::numeric_limits<int>::max())))
            return false; // a border far outside the first and last one
        stretched.push_back(int(v));
    }
    return record.setArray(OXM::IntervalIndexList, stretched);
}

bool cutBorders(OXMObject& record, const std::vector<double>& borders, Range range)
{
    std::vector<OXMenum> modes;
    std::vector<const char*> names;
    record.getArray(OXM::IntervalModeList, modes);
    record.getArray(OXM::IntervalNameList, names);
    const std::size_t intervals = borders.size() - 1;
    if (modes.size() != intervals || names.size() != intervals)
        return false;
    // Copies of the names: writing the name list invalidates the pointers read from it.
    std::vector<QByteArray> keptNames;
    std::vector<OXMenum> keptModes;
    std::vector<int> kept;
    const auto near = [](double x) { return std::floor(x + 0.5); };
    for (std::size_t i = 1; i <= intervals; ++i) {
        const double lo = std::max(near(borders[i - 1]), double(range.first));
        const double hi = std::min(near(borders[i]), double(range.last));
        if (lo > hi) {
            if (kept.empty())
                continue; // not yet inside the range
            break;
        }
        if (kept.empty())
            kept.push_back(int(lo));
        kept.push_back(int(hi));
        keptModes.push_back(modes[i - 1]);
        keptNames.emplace_back(names[i - 1] ? names[i - 1] : "");
    }
    std::vector<const char*> namePointers;
    for (const QByteArray& name : keptNames)
        namePointers.push_back(name.constData());
    bool ok = record.setArray(OXM::IntervalIndexList, kept);
    ok = record.setArray(OXM::IntervalModeList, keptModes) && ok;
    return record.setArray(OXM::IntervalNameList, namePointers) && ok;
}

bool finite(const std::vector<Handle>& handles)
{
    return std::all_of(handles.begin(), handles.end(),
                       [](const Handle& h) { return std::isfinite(h.x) && std::isfinite(h.y); });
}

// The point of the straight line through a and b at x; false when a and b don't bracket x
// from the left and the right.
bool crossing(const Handle& a, const Handle& b, float x, Handle& at)
{
    if (!(b.x > a.x))
        return false;
    at = Handle(x, a.y + (x - a.x) / (b.x - a.x) * (b.y - a.y));
    return true;
}

void stretchHandles(std::vector<Handle>& handles, Range range, bool& ok)
{
    const float x0 = handles.front().x;
    const float x1 = handles.back().x;
    ok = x1 > x0;
    if (!ok)
        return;
    const float r0 = float(range.first);
    const float r1 = float(range.last);
    const float s = (r1 - r0) / (x1 - x0);
    const float t = r0 - s * x0;
    for (Handle& h : handles)
        h.x = s * h.x + t;
}

// Clips the curve to [r0, r1]; leaves it as it is when that is not possible.
void clipHandles(std::vector<Handle>& handles, Range range)
{
    const float r0 = float(range.first);
    const float r1 = float(range.last);
    const auto k =
        std::find_if(handles.begin(), handles.end(), [r0](const Handle& h) { return h.x > r0; });
    if (!(r0 > handles.front().x) || k == handles.end())
        return;
    const bool cutEnd = r1 < handles.back().x;
    auto m = handles.end() - 1;
    if (cutEnd) {
        while (m != handles.begin() && !(m->x < r1))
            --m;
    }
    std::vector<Handle> clipped(1);
    Handle end;
    if (!crossing(*(k - 1), *k, r0, clipped.front()) ||
        (cutEnd && !crossing(*m, *(m + 1), r1, end)))
        return;
    if (k <= m)
        clipped.insert(clipped.end(), k, m + 1);
    if (cutEnd)
        clipped.push_back(end);
    handles = clipped;
}

} // namespace

bool OXWPresetConversion::convertIntervals(OXMObject* record, Range range, bool absolute)
{
    if (!record)
        return false;
    const std::vector<double> borders = recordBorders(*record);
    if (borders.size() < 2 || !allFinite(borders))
        return false;
    return absolute ? cutBorders(*record, borders, range) : stretchBorders(*record, borders, range);
}

bool OXWPresetConversion::convertHandles(OXMObject* channel, Range range, bool absolute)
{
    std::vector<Handle> handles;
    if (!channel || !channel->getArray(OXM::LookupTableHandleList, handles))
        return false;
    if (handles.empty())
        return true;
    bool ok = finite(handles);
    if (ok && absolute)
        clipHandles(handles, range);
    else if (ok)
        stretchHandles(handles, range, ok);
    return ok && finite(handles) && channel->setArray(OXM::LookupTableHandleList, handles);
}
