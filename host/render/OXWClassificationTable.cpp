#include "OXWClassificationTable.h"

#include <OXMHistogramCalculator.h>
#include <OXMObject.h>
#include <OXMObjectLink.h>
#include <OXMSampleGrid.h>
#include <OXMSceneNames.h>
#include <OXMTypeInfo.h>
#include <OXMVector2.h>

#include <algorithm>
#include <utility>

namespace {

template <typename T>
bool valueOf(const OXMObject* object, OXMenum id, T& value)
{
    auto* p = OXMSingleValuePropertyIF<T>::getInterface(object ? object->getProperty(id) : nullptr);
    if (!p)
        return false;
    value = p->getValue();
    return true;
}

float unit(float v)
{
    return v < 0.0f ? 0.0f : (v > 1.0f ? 1.0f : v);
}

// A resolved channel read once: a constant, or the handles of its piecewise-linear curve
// with their scale and bias (the same values as the channel object's own evaluate()).
struct Curve
{
    std::vector<OXMVector2<float>> handles;
    float constant = 0.0f;
    float scale = 1.0f;
    float bias = 0.0f;

    explicit Curve(const OXMObject* channel)
    {
        if (!channel)
            return; // no channel: 0 everywhere
        OXMenum mode;
        valueOf(channel, OXM::Scale, scale);
        valueOf(channel, OXM::Bias, bias);
        valueOf(channel, OXM::MapMode, mode);
        if (mode == OXM::Constant)
            constant = scale;
        else
            handles = OXMObject::arrayOf<OXMVector2<float>>(channel, OXM::LookupTableHandleList);
    }

    // The smallest and the largest value the curve takes.
    std::pair<float, float> range() const
    {
        if (handles.empty())
            return {constant, constant};
        float lo = handles.front().y, hi = lo;
        for (const OXMVector2<float>& h : handles) {
            lo = std::min(lo, h.y);
            hi = std::max(hi, h.y);
        }
        const float a = lo * scale + bias, b = hi * scale + bias;
        return {std::min(a, b), std::max(a, b)};
    }

    // As fill(), clamped to 0 .. 1 (a pass of its own only for a curve that leaves them).
    void fillUnit(float* out, float x0, int count) const
    {
        fill(out, x0, count);
        const std::pair<float, float> r = range();
        if (r.first >= 0.0f && r.second <= 1.0f)
            return;
        for (int i = 0; i < count; ++i)
            out[i] = unit(out[i]);
    }

    // The value at x (a single evaluation).
    float at(float x) const
    {
        float y = 0.0f;
        fill(&y, x, 1);
        return y;
    }

    // out[i] = the curve at x0 + i, i < count: flat before the first and after the last handle,
    // linear on (a.x, b.x] between neighbours a and b. One pass over handles and bins.
    void fill(float* out, float x0, int count) const
    {
        if (handles.empty()) {
            std::fill(out, out + count, constant);
            return;
        }
        // The first bin whose x lies right of x (bins at or left of x come before it).
        const auto firstRightOf = [x0, count](float x) {
            const double i = std::floor(double(x) - double(x0)) + 1.0;
            return int(std::min(double(count), std::max(0.0, i)));
        };
        const OXMVector2<float>& front = handles.front();
        int i = firstRightOf(front.x);
        std::fill(out, out + i, front.y * scale + bias);
        for (std::size_t j = 1; j < handles.size(); ++j) {
            const OXMVector2<float>& a = handles[j - 1];
            const OXMVector2<float>& b = handles[j];
            const int end = std::max(i, firstRightOf(b.x));
            const float dx = b.x - a.x;
            const float slope = dx > 0.0f ? (b.y - a.y) / dx : 0.0f;
            const float base = dx > 0.0f ? a.y : b.y;
            // value(i) = (base + (x0 + i - a.x) * slope) * scale + bias, as c + i * k.
            const float c = (base + (x0 - a.x) * slope) * scale + bias;
            const float k = slope * scale;
            for (int m = i; m < end; ++m)
                out[m] = c + float(m) * k;
            i = std::max(i, end);
        }
        std::fill(out + i, out + count, handles.back().y * scale + bias);
    }
};

int toByte(float v)
{
    return int(unit(v) * 255.0f + 0.5f);
}

} // namespace

OXMObject* OXWClassificationTable::findMaterial(const OXMObject* object)
{
    return OXMObject::linkedObject(object, OXM::ApplicationSampleMaterial);
}

OXMObject* OXWClassificationTable::findGrid(const OXMObject* object)
{
    if (!object)
        return nullptr;
    if (OXMObject* grid = OXMObject::linkedObject(object, OXM::SampleGrid))
        return grid;
    return OXMObject::linkedObject(object->getParentLink().getOwner(), OXM::SampleGrid);
}

OXMObject* OXWClassificationTable::resolveChannel(const OXMObject* material, OXMenum channelID,
                                                  std::vector<OXMObject*>* visited)
{
    OXMObject* channel = OXMObject::linkedObject(material, channelID);
    for (int step = 0; step < 16 && channel; ++step) {
        if (visited)
            visited->push_back(channel);
        OXMenum mode;
        if (!valueOf(channel, OXM::MapMode, mode) || mode != OXM::Reference)
            return channel;
        channel = OXMObject::linkedObject(channel, OXM::Reference);
    }
    return nullptr; // a reference cycle, or a reference to nothing
}

void OXWClassificationTable::clear()
{
    mStatus = Status::Empty;
    mFirst = 0;
    mLast = -1;
    mFloat = false;
    mLow = 0.0;
    mScale = 0.0;
    mComponent = 0;
    mGrid = nullptr;
    mLighting = Lighting();
    mTransparency = 1.0f;
    mRGBA.clear();
    mGradientOpacity.clear();
    mTable.clear();
    mPacked = true;
    mSources.clear();
}

void OXWClassificationTable::addSource(OXMObject* object)
{
    if (object && std::find(mSources.begin(), mSources.end(), object) == mSources.end())
        mSources.push_back(object);
}

bool OXWClassificationTable::findBinRange(const OXMObject* object, OXMenum inputChannel)
{
    auto* grid = dynamic_cast<const OXMSampleGrid*>(mGrid);
    if (!grid)
        return false;
    const OXMTypeInfo type = grid->getDataType();
    const OXMTypeInfo::Channel* channel = type.getChannel(inputChannel);
    if (!channel)
        return false;
    for (int i = 0; i < type.getChannelCount(); ++i)
        if (type.getChannel(i) == channel)
            mComponent = i;
    mFloat = !channel->isInteger();

    // The histogram whose channel reads the same input channel: the object's list, else the
    // list of its parent's owner (a region without its own histograms).
    std::vector<OXMObjectLink> histograms =
        OXMObject::arrayOf<OXMObjectLink>(object, OXM::HistogramList);
    if (histograms.empty())
        histograms = OXMObject::arrayOf<OXMObjectLink>(object->getParentLink().getOwner(),
                                                       OXM::HistogramList);
    for (const OXMObjectLink& link : histograms) {
        OXMObject* histogram = link.getLink();
        OXMenum histogramChannel;
        if (!valueOf(OXMObject::linkedObject(histogram, OXM::SampleTransferSpec), OXM::InputChannel,
                     histogramChannel) ||
            histogramChannel != inputChannel)
            continue;
        addSource(histogram);
        OXMObject* result = OXMObject::linkedObject(histogram, OXM::Result);
        addSource(result);
        auto* bins = OXMValueArrayPropertyIF<float>::getInterface(
            result ? result->getProperty(OXM::Histogram) : nullptr);
        int first = 0, last = -1;
        std::pair<float, float> range(0.0f, 0.0f);
        const bool ranged = valueOf(result, OXMSceneNames::dataRange(), range);
        if (bins && bins->getArrayIndexRange(first, last) && last >= first && (!mFloat || ranged)) {
            // Integer data too wide for one bin per value have bins over their range.
            if (ranged && !(range.first == float(first) && range.second == float(last)))
                mFloat = true;
            mFirst = first;
            mLast = last;
            mLow = range.first;
            mScale = range.second > range.first
                         ? double(last - first) / double(range.second - range.first)
                         : 0.0;
            return true;
        }
        break;
    }

    // No histogram values: the range the histogram would have, over the whole grid (one pass
    // over the voxels, remembered for the grid's data version and channel).
    RangeCache& c = mRangeCache;
    if (c.grid != grid || c.dataVersion != grid->getDataVersion() || c.channel != inputChannel) {
        OXMHistogramCalculator::Input in;
        OXMHistogramCalculator::Output out;
        if (!OXMHistogramCalculator::makeInput(*grid, inputChannel, in) ||
            OXMHistogramCalculator::calculate(in, out) != OXM::NoError || out.counts.empty())
            return false;
        c.grid = grid;
        c.dataVersion = grid->getDataVersion();
        c.channel = inputChannel;
        c.first = out.first;
        c.last = out.first + int(out.counts.size()) - 1;
        c.binned = !channel->isInteger() ||
                   !(out.dataLow == float(c.first) && out.dataHigh == float(c.last));
        c.low = out.dataLow;
        c.scale = out.dataHigh > out.dataLow
                      ? double(c.last - c.first) / double(out.dataHigh - out.dataLow)
                      : 0.0;
    }
    mFirst = c.first;
    mLast = c.last;
    mFloat = c.binned;
    mLow = c.low;
    mScale = c.scale;
    return true;
}

OXWClassificationTable::Status OXWClassificationTable::build(const OXMObject* object)
{
    clear();
    if (!object)
        return mStatus;
    addSource(const_cast<OXMObject*>(object));

    OXMObject* material = findMaterial(object);
    if (!material) {
        mStatus = Status::NoMaterial;
        return mStatus;
    }
    addSource(material);

    mGrid = findGrid(object);
    if (mGrid && !OXMObject::linkedObject(object, OXM::SampleGrid))
        addSource(object->getParentLink().getOwner()); // a region shows its volume's grid
    auto* grid = dynamic_cast<const OXMSampleGrid*>(mGrid);
    if (!grid || grid->getVoxelCount() <= 0 || !grid->getData()) {
        mGrid = nullptr;
        mStatus = Status::NoGrid;
        return mStatus;
    }
    addSource(mGrid);

    // The opacity channel is used as it is linked (the opacity is never a reference), but
    // resolving it costs nothing and covers materials written by other tools.
    std::vector<OXMObject*> visited;
    const OXMObject* opacity = resolveChannel(material, OXM::Opacity, &visited);
    if (!opacity) {
        for (OXMObject* o : visited)
            addSource(o);
        mStatus = Status::NoOpacity;
        return mStatus;
    }
    OXMenum inputChannel = grid->getDefaultChannel();
    valueOf(opacity, OXM::InputChannel, inputChannel);
    if (!findBinRange(object, inputChannel)) {
        mStatus = Status::NoRange;
        return mStatus;
    }
    readLighting(material, visited);
    fillEntries(material, opacity, visited);
    fillGradientOpacity(material, visited);
    for (OXMObject* o : visited)
        addSource(o);
    clearOutsideEnabledIntervals(material);
    mPacked = false;
    mStatus = Status::Ok;
    return mStatus;
}

void OXWClassificationTable::readLighting(const OXMObject* material,
                                          std::vector<OXMObject*>& visited)
{
    const float middle = float(mFirst + mLast) / 2.0f;
    const auto scalar = [&](OXMenum id) {
        return Curve(resolveChannel(material, id, &visited)).at(middle);
    };
    mLighting.ambient = std::max(0.0f, scalar(OXM::AmbientIntensity));
    mLighting.diffuse = std::max(0.0f, scalar(OXM::DiffuseIntensity));
    mLighting.specular = std::max(0.0f, scalar(OXM::SpecularIntensity));
    mLighting.shininess = std::max(0.0f, scalar(OXM::Shininess));
    mLighting.specularColour[0] = unit(scalar(OXM::SpecularRed));
    mLighting.specularColour[1] = unit(scalar(OXM::SpecularGreen));
    mLighting.specularColour[2] = unit(scalar(OXM::SpecularBlue));
    mTransparency = unit(scalar(OXM::Transparency));
}

void OXWClassificationTable::fillEntries(const OXMObject* material, const OXMObject* opacity,
                                         std::vector<OXMObject*>& visited)
{
    static const OXMenum Colours[6] = {OXM::AmbientRed, OXM::AmbientGreen, OXM::AmbientBlue,
                                       OXM::DiffuseRed, OXM::DiffuseGreen, OXM::DiffuseBlue};
    const int n = getBinCount();
    const float x0 = float(mFirst);
    for (std::vector<float>& curve : mCurves)
        curve.resize(std::size_t(n));
    Curve(opacity).fillUnit(mCurves[0].data(), x0, n);
    for (int c = 0; c < 6; ++c)
        Curve(resolveChannel(material, Colours[c], &visited))
            .fillUnit(mCurves[c + 1].data(), x0, n);

    // Colour: ambient and diffuse weighted by their intensities (their mean without any).
    const float sum = mLighting.ambient + mLighting.diffuse;
    const float wa = sum > 0.0f ? mLighting.ambient / sum : 0.5f;
    const float wd = sum > 0.0f ? mLighting.diffuse / sum : 0.5f;
    const float t = mTransparency;
    mRGBA.resize(std::size_t(n) * 4);
    float* __restrict out = mRGBA.data();
    const float* __restrict a = mCurves[0].data();
    const float* __restrict ar = mCurves[1].data();
    const float* __restrict ag = mCurves[2].data();
    const float* __restrict ab = mCurves[3].data();
    const float* __restrict dr = mCurves[4].data();
    const float* __restrict dg = mCurves[5].data();
    const float* __restrict db = mCurves[6].data();
    // Every curve is within 0 .. 1 and wa + wd = 1: so is every entry.
    for (int i = 0; i < n; ++i) {
        out[4 * i] = wa * ar[i] + wd * dr[i];
        out[4 * i + 1] = wa * ag[i] + wd * dg[i];
        out[4 * i + 2] = wa * ab[i] + wd * db[i];
        out[4 * i + 3] = a[i] * t;
    }
}

void OXWClassificationTable::fillGradientOpacity(const OXMObject* material,
                                                 std::vector<OXMObject*>& visited)
{
    const OXMObject* channel = resolveChannel(material, OXM::Gradient, &visited);
    mGradientOpacity.clear();
    const Curve curve(channel);
    if (!channel || curve.range().first >= 1.0f)
        return;
    mGradientOpacity.resize(std::size_t(getBinCount()));
    curve.fill(mGradientOpacity.data(), float(mFirst), getBinCount());
}

void OXWClassificationTable::clearOutsideEnabledIntervals(const OXMObject* material)
{
    const std::vector<int> borders = OXMObject::arrayOf<int>(material, OXM::IntervalIndexList);
    const std::vector<OXMenum> modes = OXMObject::arrayOf<OXMenum>(material, OXM::IntervalModeList);
    // Bins shown: b(i) + 1 .. b(i+1) of each enabled interval i; the bins from `hidden` up to
    // the next shown one are cleared.
    long long hidden = mFirst;
    const auto clearUpTo = [this, &hidden](long long end) {
        const long long from = std::max<long long>(hidden, mFirst);
        const long long to = std::min<long long>(end, mLast + 1LL);
        if (from < to)
            std::fill(mRGBA.begin() + std::ptrdiff_t((from - mFirst) * 4),
                      mRGBA.begin() + std::ptrdiff_t((to - mFirst) * 4), 0.0f);
    };
    for (std::size_t i = 0; i + 1 < borders.size(); ++i) {
        if (i < modes.size() && modes[i] == OXM::Disabled)
            continue;
        const long long from = borders[i] + 1LL;
        clearUpTo(from);
        hidden = std::max(hidden, borders[i + 1] + 1LL);
    }
    clearUpTo(mLast + 1LL);
}

const std::vector<QRgb>& OXWClassificationTable::getTable() const
{
    if (!mPacked)
        pack();
    return mTable;
}

void OXWClassificationTable::pack() const
{
    mPacked = true;
    const std::size_t n = mStatus == Status::Ok ? std::size_t(getBinCount()) : 0;
    mTable.resize(n);
    const float* e = mRGBA.data();
    for (std::size_t i = 0; i < n; ++i, e += 4) {
        const float alpha = e[3];
        mTable[i] =
            qRgba(toByte(e[0] * alpha), toByte(e[1] * alpha), toByte(e[2] * alpha), toByte(alpha));
    }
}
