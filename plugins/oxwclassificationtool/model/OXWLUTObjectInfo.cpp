#include "OXWLUTObjectInfo.h"

#include "OXWLUTIntervalInfo.h"

#include <cmath>

namespace {

// Points of a channel's earlier curve re-applied onto one part of a split interval.
using HandleList = OXWLUTIntervalInfo::HandleList;

float valueOnLine(const OXWLUTIntervalInfo::Handle& p, const OXWLUTIntervalInfo::Handle& q, float x)
{
    if (q.x == p.x) {
        return q.y;
    }
    return float(double(p.y) + (double(q.y) - double(p.y)) * (double(x) - double(p.x)) /
                                   (double(q.x) - double(p.x)));
}

// Rebuilds the part [a, b] of a curve that was saved in positions before a split: each part
// keeps every saved handle inside it and ends with the curve's values at its outermost cell
// centres, so both parts together show the earlier curve. The handles arrive in ascending
// order, each found at once after the one before; one commit at the end keeps the whole
// rebuild linear in the saved handles.
void applyCurve(OXWLUTIntervalInfo& interval, int channel, const HandleList& saved, float s)
{
    const float a = interval.from();
    const float b = interval.to();
    bool inserted = false;
    const auto insert = [&](float x, float y) {
        inserted = interval.insertHandle(channel, x, y, false) || inserted;
    };
    for (size_t k = 0; k + 1 < saved.size(); ++k) {
        const auto& p = saved[k];
        const auto& q = saved[k + 1];
        if (p.x < a && a <= q.x) {
            insert(a + s / 2, valueOnLine(p, q, a + s / 2));
        }
        if (a <= p.x && p.x < b) {
            insert(p.x, p.y);
        }
        if (p.x < b && b <= q.x) {
            insert(b - s / 2, valueOnLine(p, q, b - s / 2));
        }
    }
    if (!saved.empty() && a <= saved.back().x && saved.back().x < b) {
        insert(saved.back().x, saved.back().y);
    }
    if (inserted) {
        interval.commitChannel(channel);
    }
}

// Moves the range [a, b] into [0, 1], keeping its extent where it fits: a range reaching below
// 0 moves up, one reaching above 1 moves down, and one larger than [0, 1] becomes [0, 1].
// False for an empty or inverted range.
bool moveIntoUnitRange(float& a, float& b)
{
    const float w = b - a;
    if (!(w > 0.0f)) {
        return false;
    }
    if (a < 0.0f) {
        a = 0.0f;
        b = w;
    }
    if (b > 1.0f) {
        b = 1.0f;
        a = 1.0f - w;
        if (a < 0.0f) {
            a = 0.0f;
        }
    }
    return true;
}

} // namespace

OXWLUTObjectInfo::OXWLUTObjectInfo(float greyMin, float greyMax, float opacityMin, float opacityMax,
                                   float greyCount, float calibratedMin, float calibratedMax)
    : mGreyMin(greyMin), mGreyMax(greyMax), mGreyRange(greyMax - greyMin),
      mGreyRangeInv(1.0f / mGreyRange), mGreyCount(greyCount), mGreyStep(1.0f / greyCount),
      mOpacityMin(opacityMin), mOpacityMax(opacityMax), mOpacityRange(opacityMax - opacityMin),
      mOpacityRangeInv(1.0f / mOpacityRange)
{
    // A NaN bound fails the comparison and also falls back to the grey range.
    if (calibratedMin < calibratedMax) {
        mCalibratedMin = calibratedMin;
        mCalibratedMax = calibratedMax;
    } else {
        mCalibratedMin = greyMin;
        mCalibratedMax = greyMax;
    }
    mCalibratedRange = mCalibratedMax - mCalibratedMin;
    mIntervals.push_back(createDefaultInterval());
}

OXWLUTObjectInfo::~OXWLUTObjectInfo() = default;

std::unique_ptr<OXWLUTIntervalInfo> OXWLUTObjectInfo::createDefaultInterval()
{
    auto interval = std::make_unique<OXWLUTIntervalInfo>(this);
    interval->setBorders(0.0f, 1.0f);
    interval->setName(tr("Interval 1"));
    return interval;
}

float OXWLUTObjectInfo::positionFromCalibrated(float v) const
{
    if (!(mCalibratedRange > 0.0f)) {
        return v;
    }
    return (v - mCalibratedMin) / mCalibratedRange;
}

float OXWLUTObjectInfo::snapDownToCell(float x) const
{
    return float(std::floor(double(mGreyCount) * double(x)) * double(mGreyStep));
}

float OXWLUTObjectInfo::snapUpToCell(float x) const
{
    return float(std::ceil(double(mGreyCount) * double(x)) * double(mGreyStep));
}

OXWLUTIntervalInfo* OXWLUTObjectInfo::interval(int i) const
{
    if (i < 0 || i >= intervalCount()) {
        return nullptr;
    }
    return mIntervals[size_t(i)].get();
}

OXWLUTIntervalInfo* OXWLUTObjectInfo::intervalAt(float x) const
{
    for (const auto& interval : mIntervals) {
        if (interval->from() <= x && x <= interval->to()) {
            return interval.get();
        }
    }
    return nullptr;
}

int OXWLUTObjectInfo::intervalIndexAt(float x) const
{
    constexpr float Tolerance = 5e-7f;
    for (int i = 0; i < intervalCount(); ++i) {
        const OXWLUTIntervalInfo* interval = mIntervals[size_t(i)].get();
        if (x + Tolerance >= interval->from() && interval->to() >= x - Tolerance) {
            return i;
        }
    }
    return -1;
}

void OXWLUTObjectInfo::setAllIntervalsEnabled(bool enabled)
{
    for (const auto& interval : mIntervals) {
        interval->setEnabled(enabled);
    }
}

void OXWLUTObjectInfo::resetIntervals()
{
    mIntervals.clear();
    mIntervals.push_back(createDefaultInterval());
}

bool OXWLUTObjectInfo::newInterval(float x, bool atLeft)
{
    x = std::min(std::max(x, 0.0f), 1.0f);
    const int i = intervalIndexAt(x);
    if (i < 0) {
        return false;
    }
    const float s = mGreyStep;
    OXWLUTIntervalInfo* old = mIntervals[size_t(i)].get();
    if (old->to() - old->from() < 1.5f * s) {
        return false;
    }

    HandleList saved[4];
    for (int channel = OXWLUTIntervalInfo::OpacityChannel;
         channel <= OXWLUTIntervalInfo::BlueChannel; ++channel) {
        saved[channel - 1] = old->globalCurve(channel);
        old->resetChannel(channel);
    }

    const float oldFrom = old->from();
    const float oldTo = old->to();
    auto created = std::make_unique<OXWLUTIntervalInfo>(this);
    OXWLUTIntervalInfo* added = created.get();
    if (atLeft) {
        const float start = i > 0 ? mIntervals[size_t(i) - 1]->to() : 0.0f;
        float split = snapUpToCell(x - s / 2);
        if (split <= start) {
            split = start + s;
        }
        if (oldTo <= split) {
            split = oldTo - s;
        }
        mIntervals.insert(mIntervals.begin() + i, std::move(created));
        added->setBorders(start, split);
        old->setBorders(split, oldTo);
    } else {
        const float end = i + 1 < intervalCount() ? mIntervals[size_t(i) + 1]->from() : 1.0f;
        float split = snapDownToCell(x + s / 2);
        if (end <= split) {
            split = split - s;
        }
        if (split <= oldFrom) {
            split = oldFrom + s;
        }
        mIntervals.insert(mIntervals.begin() + i + 1, std::move(created));
        added->setBorders(split, end);
        old->setBorders(oldFrom, split);
    }

    for (int channel = OXWLUTIntervalInfo::OpacityChannel;
         channel <= OXWLUTIntervalInfo::BlueChannel; ++channel) {
        applyCurve(*mIntervals[size_t(i)], channel, saved[channel - 1], s);
        applyCurve(*mIntervals[size_t(i) + 1], channel, saved[channel - 1], s);
    }
    renameIntervals();
    return true;
}

bool OXWLUTObjectInfo::deleteInterval(float x, bool expandLeft)
{
    const int count = intervalCount();
    const int i = intervalIndexAt(x);
    if (count < 2 || i < 0) {
        return false;
    }
    // The first interval always hands over to the right, the last one to the left.
    const bool toRight = i == 0 || (i < count - 1 && !expandLeft);
    if (toRight) {
        const float a = mIntervals[size_t(i)]->from();
        const float b = mIntervals[size_t(i) + 1]->to();
        mIntervals.erase(mIntervals.begin() + i);
        mIntervals[size_t(i)]->setBorders(a, b);
    } else {
        const float a = mIntervals[size_t(i) - 1]->from();
        const float b = mIntervals[size_t(i)]->to();
        mIntervals.erase(mIntervals.begin() + i);
        mIntervals[size_t(i) - 1]->setBorders(a, b);
    }
    renameIntervals();
    return true;
}

bool OXWLUTObjectInfo::moveLeftBorder(int i, float x)
{
    if (!hasLeftNeighbour(i)) {
        return false;
    }
    OXWLUTIntervalInfo* left = mIntervals[size_t(i) - 1].get();
    OXWLUTIntervalInfo* right = mIntervals[size_t(i)].get();
    x = std::min(std::max(x, 0.0f), 1.0f);
    float b = float(std::floor(double(mGreyCount) * double(x) + 0.5) * double(mGreyStep));
    if (b < left->from()) {
        b = left->from();
    }
    if (b > right->to()) {
        b = right->to();
    }
    if (b == right->from()) {
        return false;
    }
    left->setBorders(left->from(), b);
    right->setBorders(b, right->to());
    return true;
}

bool OXWLUTObjectInfo::moveRightBorder(int i, float x)
{
    if (!hasRightNeighbour(i)) {
        return false;
    }
    OXWLUTIntervalInfo* left = mIntervals[size_t(i)].get();
    OXWLUTIntervalInfo* right = mIntervals[size_t(i) + 1].get();
    x = std::min(std::max(x, 0.0f), 1.0f);
    float b = float(std::ceil(double(mGreyCount) * double(x) - 0.5) * double(mGreyStep));
    if (b > right->to()) {
        b = right->to();
    }
    if (b < left->from()) {
        b = left->from();
    }
    if (b == left->to()) {
        return false;
    }
    left->setBorders(left->from(), b);
    right->setBorders(b, right->to());
    return true;
}

bool OXWLUTObjectInfo::removeEmptyIntervals()
{
    bool removed = false;
    const float half = mGreyStep / 2;
    for (int i = intervalCount() - 1; i >= 0; --i) {
        const OXWLUTIntervalInfo* interval = mIntervals[size_t(i)].get();
        if (interval->to() - interval->from() < half) {
            mIntervals.erase(mIntervals.begin() + i);
            removed = true;
        }
    }
    renameIntervals();
    return removed;
}

QString OXWLUTObjectInfo::defaultName(int place) const
{
    if (place == 1) {
        return tr("Interval 1");
    }
    return tr("Interval %1").arg(place);
}

void OXWLUTObjectInfo::renameIntervals()
{
    QString previous;
    for (int i = 0; i < intervalCount(); ++i) {
        const QString expected = defaultName(i + 1);
        const QString next = defaultName(i + 2);
        OXWLUTIntervalInfo* interval = mIntervals[size_t(i)].get();
        const QString& name = interval->name();
        if (name.isEmpty() || name == previous || name == next) {
            interval->setName(expected);
        }
        previous = expected;
    }
}

bool OXWLUTObjectInfo::setVisibleOpacityRange(float a, float b)
{
    if (!moveIntoUnitRange(a, b)) {
        return false;
    }
    if (!(a < b) || (a == mVisibleOpacityFrom && b == mVisibleOpacityTo)) {
        return false;
    }
    mVisibleOpacityFrom = a;
    mVisibleOpacityTo = b;
    return true;
}

bool OXWLUTObjectInfo::setVisibleGreyRange(float a, float b)
{
    if (!moveIntoUnitRange(a, b)) {
        return false;
    }
    // Whole cells only.
    const double n = mGreyCount;
    const double s = mGreyStep;
    const float from = a < 0.0f ? 0.0f : float(s * std::floor(double(a) * n));
    const float to = float(s * std::ceil(double(b) * n));
    if (!(from < to) || (from == mVisibleGreyFrom && to == mVisibleGreyTo)) {
        return false;
    }
    mVisibleGreyFrom = from;
    mVisibleGreyTo = to;
    return true;
}
