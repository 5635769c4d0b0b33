#include "OXWLUTIntervalInfo.h"

#include "OXWLUTObjectInfo.h"

#include <algorithm>
#include <cmath>

namespace {

const OXWLUTIntervalInfo::HandleList& emptyHandleList()
{
    static const OXWLUTIntervalInfo::HandleList empty;
    return empty;
}

float clamp01(float v)
{
    return std::min(std::max(v, 0.0f), 1.0f);
}

// Default values of the curves: opacity ramps from transparent to opaque, colours are white.
// 255.5 rather than 255 so that the value still reads as full intensity after rounding.
constexpr float DefaultColour = 255.5f;

} // namespace

OXWLUTIntervalInfo::OXWLUTIntervalInfo(OXWLUTObjectInfo* objectInfo) : mObjectInfo(objectInfo)
{
    if (mObjectInfo) {
        for (int channel = OpacityChannel; channel <= BlueChannel; ++channel) {
            resetOne(channel);
        }
    }
}

OXWLUTIntervalInfo::OXWLUTIntervalInfo(const OXWLUTIntervalInfo& other) = default;
OXWLUTIntervalInfo& OXWLUTIntervalInfo::operator=(const OXWLUTIntervalInfo& other) = default;
OXWLUTIntervalInfo::~OXWLUTIntervalInfo() = default;

const OXWLUTIntervalInfo::HandleList& OXWLUTIntervalInfo::handles(int channel) const
{
    return isUsable(channel) ? mHandles[channel - 1] : emptyHandleList();
}

const OXWLUTIntervalInfo::HandleList& OXWLUTIntervalInfo::referenceHandles(int channel) const
{
    return isValidChannel(channel) ? mReferenceHandles[channel - 1] : emptyHandleList();
}

bool OXWLUTIntervalInfo::setName(const QString& name)
{
    if (!mObjectInfo || mName == name) {
        return false;
    }
    mName = name;
    return true;
}

bool OXWLUTIntervalInfo::setEnabled(bool enabled)
{
    if (!mObjectInfo || mEnabled == enabled) {
        return false;
    }
    mEnabled = enabled;
    return true;
}

bool OXWLUTIntervalInfo::isEnabled() const
{
    return mObjectInfo && mEnabled;
}

bool OXWLUTIntervalInfo::isWide() const
{
    return mObjectInfo && mWidth > 1.5f * cellStep();
}

float OXWLUTIntervalInfo::cellStep() const
{
    return mObjectInfo->greyStep();
}

float OXWLUTIntervalInfo::snapToCellCentre(float x) const
{
    return mObjectInfo->snapToCellCentre(x);
}

float OXWLUTIntervalInfo::firstCentre() const
{
    return localFromGlobal(snapToCellCentre(mFrom + cellStep() / 2));
}

float OXWLUTIntervalInfo::lastCentre() const
{
    return localFromGlobal(snapToCellCentre(mTo - cellStep() / 2));
}

bool OXWLUTIntervalInfo::forChannels(int channel, bool (OXWLUTIntervalInfo::*operation)(int),
                                     bool stopAtFailure)
{
    if (channel != AllChannels || !mObjectInfo) {
        return (this->*operation)(channel);
    }
    for (int c = OpacityChannel; c <= BlueChannel; ++c) {
        if (!(this->*operation)(c) && stopAtFailure) {
            return false;
        }
    }
    return true;
}

bool OXWLUTIntervalInfo::setBorders(float from, float to)
{
    if (!mObjectInfo || from > to) {
        return false;
    }
    const float s = cellStep();
    from = clamp01(from);
    to = clamp01(to);
    // Nearest cell boundary, by way of the centre of the cell half a step inside.
    const float snappedFrom = snapToCellCentre(from + s / 2) - s / 2;
    const float snappedTo = snapToCellCentre(to - s / 2) + s / 2;
    mFrom = snappedFrom;
    mTo = snappedTo;
    mWidth = snappedTo - snappedFrom;
    mWidthInv = mWidth > 0.0f ? 1.0f / mWidth : 1.0f;
    return fitChannel(AllChannels);
}

bool OXWLUTIntervalInfo::fitChannel(int channel)
{
    return forChannels(channel, &OXWLUTIntervalInfo::fitOne, true);
}

bool OXWLUTIntervalInfo::fitOne(int channel)
{
    if (!isUsable(channel)) {
        return false;
    }
    const int c = channel - 1;
    const HandleList& reference = mReferenceHandles[c];
    HandleList& fitted = mHandles[c];
    const size_t m = reference.size();

    if (m < 2) {
        fitted.assign(2, Handle());
        fitted[0].y = mBaseValue[c];
        fitted[1].y = m == 1 ? reference[0].y : mBaseValue[c];
    } else {
        fitted.resize(m);
        mBaseValue[c] = reference[0].y;
        fitted[0].y = reference[0].y;
        fitted[m - 1].y = reference[m - 1].y;
        // In single precision a border is only nearly on its cell boundary, and on a long axis
        // a handle near a border can round onto the border itself; either would snap the
        // handle into the neighbour's cell. Inner handles stay between the centres of the
        // interval's first and last cells.
        const float firstCellCentre = mFrom + cellStep() / 2;
        const float lastCellCentre = mTo - cellStep() / 2;
        for (size_t i = 1; i + 1 < m; ++i) {
            const float global = std::min(
                std::max(globalFromLocal(reference[i].x), firstCellCentre), lastCellCentre);
            fitted[i].x = localFromGlobal(snapToCellCentre(global));
            fitted[i].y = reference[i].y;
        }
    }
    // The end handles sit on the centres of the first and last cells, whatever the
    // reference says about their x.
    fitted.front().x = firstCentre();
    fitted.back().x = lastCentre();

    resolveCollisions(fitted);
    return true;
}

// Separates or merges handles that snapped into the same cell. Walks the list once: the
// handles before the write index w are settled, those from the read index r on are not yet
// looked at, so "the handle before" is fitted[w - 1] and "the handle in question" fitted[r].
// When two handles share a cell, a neighbour that has room (more than one and a half cells)
// makes one of them step aside by one cell; otherwise the one whose removal leaves the
// smaller jump between its neighbours goes.
void OXWLUTIntervalInfo::resolveCollisions(HandleList& fitted) const
{
    const float s = cellStep();
    const float room = 1.5f * s;
    const size_t size = fitted.size();
    auto global = [this](const Handle& h) { return globalFromLocal(h.x); };

    size_t w = 1;
    size_t r = 1;
    while (r < size) {
        Handle& current = fitted[r];
        Handle& before = fitted[w - 1];
        if (current.x != before.x) {
            fitted[w++] = fitted[r++];
            continue;
        }
        const bool hasNext = r + 1 < size;
        if (w >= 2 && global(before) - global(fitted[w - 2]) > room) {
            before.x = localFromGlobal(snapToCellCentre(global(before) - s));
            fitted[w++] = fitted[r++];
            continue;
        }
        if (hasNext && global(fitted[r + 1]) - global(current) > room) {
            current.x = localFromGlobal(snapToCellCentre(global(current) + s));
            fitted[w++] = fitted[r++];
            continue;
        }
        const float a = w >= 2 ? std::fabs(current.y - fitted[w - 2].y) : 1e29f;
        const float b = hasNext ? std::fabs(fitted[r + 1].y - before.y) : 1e30f;
        if (a < b) {
            // The handle before goes; the current one takes its place.
            fitted[w - 1] = fitted[r++];
        } else {
            ++r;
        }
    }
    fitted.resize(w);
}

bool OXWLUTIntervalInfo::commitChannel(int channel)
{
    return forChannels(channel, &OXWLUTIntervalInfo::commitOne, false);
}

bool OXWLUTIntervalInfo::commitOne(int channel)
{
    if (!isUsable(channel)) {
        return false;
    }
    mReferenceHandles[channel - 1] = mHandles[channel - 1];
    return true;
}

bool OXWLUTIntervalInfo::resetChannel(int channel)
{
    return forChannels(channel, &OXWLUTIntervalInfo::resetOne, false);
}

bool OXWLUTIntervalInfo::resetOne(int channel)
{
    if (!isUsable(channel)) {
        return false;
    }
    const int c = channel - 1;
    HandleList& fitted = mHandles[c];
    bool resized = false;
    if (fitted.size() != 2) {
        fitted.resize(2);
        resized = true;
    }
    const float y0 = channel == OpacityChannel ? 0.0f : DefaultColour;
    const float y1 = channel == OpacityChannel ? 1.0f : DefaultColour;
    const Handle first(firstCentre(), y0);
    const Handle last(lastCentre(), y1);
    if (!resized && fitted[0] == first && fitted[1] == last) {
        return false;
    }
    fitted[0] = first;
    fitted[1] = last;
    mBaseValue[c] = y0;
    commitChannel(AllChannels);
    return true;
}

bool OXWLUTIntervalInfo::setColour(const OXMRGB8& colour)
{
    if (!mObjectInfo) {
        return false;
    }
    const float x0 = firstCentre();
    const float x1 = lastCentre();
    const float values[3] = {float(colour.r), float(colour.g), float(colour.b)};
    for (int channel = RedChannel; channel <= BlueChannel; ++channel) {
        const float y = values[channel - RedChannel];
        mHandles[channel - 1] = {Handle(x0, y), Handle(x1, y)};
        commitOne(channel);
    }
    return true;
}

bool OXWLUTIntervalInfo::setReferenceHandles(int channel, const HandleList& handles)
{
    if (!isUsable(channel)) {
        return false;
    }
    mReferenceHandles[channel - 1] = handles;
    return fitOne(channel);
}

OXWLUTIntervalInfo::HandleList OXWLUTIntervalInfo::globalCurve(int channel) const
{
    HandleList curve = handles(channel);
    for (Handle& h : curve) {
        h.x = globalFromLocal(h.x);
    }
    return curve;
}

int OXWLUTIntervalInfo::findHandle(int channel, float x, float y, float rx, float ry) const
{
    if (!isUsable(channel)) {
        return -1;
    }
    const float t = localFromGlobal(clamp01(x));
    const float rxl = std::max(rx, 0.0f) * mWidthInv;
    ry = std::max(ry, 0.0f);
    const HandleList& fitted = mHandles[channel - 1];
    int best = -1;
    float bestDistance = 0.0f;
    for (size_t i = 0; i < fitted.size(); ++i) {
        const float dx = fitted[i].x - t;
        const float dy = fitted[i].y - y;
        if (std::fabs(dx) > rxl || std::fabs(dy) > ry) {
            continue;
        }
        const float d = dx * dx + dy * dy;
        if (best < 0 || d <= bestDistance) {
            best = int(i);
            bestDistance = d;
        }
    }
    if (best >= 0 && bestDistance > rxl * rxl + ry * ry) {
        return -1;
    }
    return best;
}

int OXWLUTIntervalInfo::findSegment(int channel, float x, float y, float rx, float ry) const
{
    return findSegmentWithin(channel, x, y, rx, ry, false);
}

int OXWLUTIntervalInfo::findSegmentWide(int channel, float x, float y, float rx, float ry) const
{
    return findSegmentWithin(channel, x, y, rx, ry, true);
}

int OXWLUTIntervalInfo::findSegmentWithin(int channel, float x, float y, float rx, float ry,
                                          bool wide) const
{
    if (!isUsable(channel) || mHandles[channel - 1].size() < 2) {
        return -1;
    }
    const HandleList& fitted = mHandles[channel - 1];
    const float t = localFromGlobal(x);
    const float rxl = std::max(rx, 0.0f) * mWidthInv;
    ry = std::max(ry, 0.0f);
    int best = -1;
    float bestDistance = 0.0f;
    for (size_t k = 0; k + 1 < fitted.size(); ++k) {
        const Handle& p = fitted[k];
        const Handle& q = fitted[k + 1];
        if (t < p.x - rxl || t > q.x + rxl) {
            continue;
        }
        const float dx = q.x - p.x;
        const float dy = q.y - p.y;
        const float lengthSquared = dx * dx + dy * dy;
        if (!(lengthSquared > 0.0f)) {
            continue; // two handles on one point span no line
        }
        const float cross = (q.y * p.x - p.y * q.x) + dx * y - dy * t;
        const float d = cross * cross / lengthSquared;
        if (best < 0 || d <= bestDistance) {
            best = int(k);
            bestDistance = d;
        }
    }
    const float limit = wide ? rxl * rxl + ry * ry : std::pow(std::min(rxl, ry), 2.0f);
    if (best >= 0 && bestDistance > limit) {
        return -1;
    }
    return best;
}

bool OXWLUTIntervalInfo::isHandleIndexValid(int channel, int k) const
{
    return k >= 0 && size_t(k) < handles(channel).size();
}

bool OXWLUTIntervalInfo::isHandleMovable(int channel, int k) const
{
    const HandleList& fitted = handles(channel);
    const int count = int(fitted.size());
    if (k <= 0 || k >= count - 1) {
        return false;
    }
    return globalFromLocal(fitted[k + 1].x) - globalFromLocal(fitted[k - 1].x) >= 2.5f * cellStep();
}

bool OXWLUTIntervalInfo::isSegmentMovable(int channel, int k) const
{
    const HandleList& fitted = handles(channel);
    const int count = int(fitted.size());
    if (k < 1 || k >= count - 2) {
        return false;
    }
    const float room = 1.5f * cellStep();
    if (globalFromLocal(fitted[k].x) > globalFromLocal(fitted[k - 1].x) + room) {
        return true;
    }
    return globalFromLocal(fitted[k + 1].x) < globalFromLocal(fitted[k + 2].x) - room;
}

bool OXWLUTIntervalInfo::isSegmentLevel(int channel, int k) const
{
    const HandleList& fitted = handles(channel);
    if (k < 0 || k >= int(fitted.size()) - 1) {
        return false;
    }
    return std::fabs(fitted[k].y - fitted[k + 1].y) < 1.0f;
}

bool OXWLUTIntervalInfo::moveHandle(int channel, int k, float x, float y)
{
    if (!isUsable(channel) || k < 0) {
        return false;
    }
    HandleList& fitted = mHandles[channel - 1];
    const int count = int(fitted.size());
    if (k >= count) {
        return false;
    }
    x = clamp01(x);
    if (channel == OpacityChannel) {
        y = clamp01(y);
    }
    x = snapToCellCentre(x);

    const Handle before = fitted[k];
    if (k == 0 || k == count - 1) {
        fitted[k].y = y; // end handles never move sideways
    } else {
        const float s = cellStep();
        const float lo = globalFromLocal(fitted[k - 1].x) + s;
        const float hi = globalFromLocal(fitted[k + 1].x) - s;
        if (x < lo) {
            x = snapToCellCentre(lo);
        }
        if (x > hi) {
            x = snapToCellCentre(hi);
        }
        fitted[k] = Handle(localFromGlobal(x), y);
    }
    commitOne(channel);
    return fitted[k] != before;
}

bool OXWLUTIntervalInfo::moveSegment(int channel, int k, float x, float y)
{
    if (!isUsable(channel) || k < 0) {
        return false;
    }
    HandleList& fitted = mHandles[channel - 1];
    const int count = int(fitted.size());
    if (count < 2 || k >= count - 1) {
        return false;
    }
    const float rise = fitted[k + 1].y - fitted[k].y;
    float p = snapToCellCentre(clamp01(x));
    float rightValue = y + rise;
    if (channel == OpacityChannel) {
        y = clamp01(y);
        rightValue = y + rise;
        if (rightValue < 0.0f) {
            rightValue = 0.0f;
            y = -rise;
        }
        if (rightValue > 1.0f) {
            rightValue = 1.0f;
            y = 1.0f - rise;
        }
    }

    const Handle left = fitted[k];
    const Handle right = fitted[k + 1];
    if (k < 1 || k >= count - 2) {
        // Touching an end handle: the segment cannot move sideways.
        fitted[k].y = y;
        fitted[k + 1].y = rightValue;
    } else {
        const float s = cellStep();
        const float w = globalFromLocal(right.x) - globalFromLocal(left.x);
        const float lo = globalFromLocal(fitted[k - 1].x) + s;
        const float hi = globalFromLocal(fitted[k + 2].x) - s;
        float q = snapToCellCentre(p + w);
        if (p < lo) {
            p = snapToCellCentre(lo);
            q = snapToCellCentre(w + lo);
        }
        if (p > hi) {
            p = snapToCellCentre(hi);
            q = snapToCellCentre(w + hi);
        }
        if (q < lo) {
            q = snapToCellCentre(lo);
            p = snapToCellCentre(lo - w);
        }
        if (q > hi) {
            q = snapToCellCentre(hi);
            p = snapToCellCentre(hi - w);
        }
        fitted[k] = Handle(localFromGlobal(p), y);
        fitted[k + 1] = Handle(localFromGlobal(q), rightValue);
    }
    // Not committed: the reference keeps the earlier curve until the next commit.
    return fitted[k] != left || fitted[k + 1] != right;
}

bool OXWLUTIntervalInfo::insertHandle(int channel, float x, float y)
{
    return insertHandle(channel, x, y, true);
}

bool OXWLUTIntervalInfo::insertHandle(int channel, float x, float y, bool commit)
{
    if (!isUsable(channel)) {
        return false;
    }
    HandleList& fitted = mHandles[channel - 1];
    if (fitted.empty()) {
        return false;
    }
    x = clamp01(x);
    if (channel == OpacityChannel) {
        y = clamp01(y);
    }
    const float t = localFromGlobal(snapToCellCentre(x));
    const float halfCell = cellStep() * mWidthInv / 2;

    if (t <= fitted.front().x) {
        fitted.front().y = y;
    } else {
        // The segment [k - 1, k] that holds t; the handles ascend, so the first handle right
        // of t closes it. None: t is at or right of the last handle.
        const size_t n = fitted.size();
        const auto closes = [&fitted, t](size_t i) {
            return fitted[i - 1].x <= t && t < fitted[i].x;
        };
        size_t k = mSearchHint[channel - 1];
        if (!(k >= 1 && k < n && closes(k))) {
            if (k >= 1 && k + 1 < n && closes(k + 1)) {
                ++k;
            } else {
                const auto right =
                    std::upper_bound(fitted.begin() + 1, fitted.end(), t,
                                     [](float v, const Handle& h) { return v < h.x; });
                k = right == fitted.end() ? 0 : size_t(right - fitted.begin());
            }
        }
        // The next of a series of ascending positions closes the segment after this one.
        mSearchHint[channel - 1] = k + 1;
        if (k == 0) {
            fitted.back().y = y; // at or right of the last handle
        } else if (t < fitted[k - 1].x + halfCell) {
            fitted[k - 1].y = y; // same cell as the handle on the left
        } else if (t <= fitted[k].x - halfCell) {
            fitted.insert(fitted.begin() + std::ptrdiff_t(k), Handle(t, y));
        } else {
            fitted[k].y = y;
        }
    }
    if (commit) {
        commitOne(channel);
    }
    return true;
}

bool OXWLUTIntervalInfo::hasHandleAt(int channel, float x) const
{
    if (!isUsable(channel)) {
        return false;
    }
    const float t = localFromGlobal(clamp01(x));
    const HandleList& fitted = mHandles[channel - 1];
    size_t& hint = mSearchHint[channel - 1];
    for (size_t i = hint; i < hint + 2 && i < fitted.size(); ++i) {
        if (fitted[i].x == t) {
            hint = i + 1;
            return true;
        }
    }
    const auto it = std::lower_bound(fitted.begin(), fitted.end(), t,
                                     [](const Handle& h, float v) { return h.x < v; });
    const bool found = it != fitted.end() && it->x == t;
    hint = size_t(it - fitted.begin()) + (found ? 1 : 0);
    return found;
}

bool OXWLUTIntervalInfo::deleteHandle(int channel, int k)
{
    if (!isUsable(channel)) {
        return false;
    }
    HandleList& fitted = mHandles[channel - 1];
    if (k < 1 || k >= int(fitted.size()) - 1) {
        return false;
    }
    fitted.erase(fitted.begin() + k);
    commitOne(channel);
    return true;
}
