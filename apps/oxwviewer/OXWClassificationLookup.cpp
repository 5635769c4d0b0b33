#include "OXWClassificationLookup.h"

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

OXMObject* linkedObject(const OXMObject* object, OXMenum id)
{
    if (!object)
        return nullptr;
    auto* p = OXMSingleValuePropertyIF<OXMObjectLink>::getInterface(object->getProperty(id));
    return p ? p->getValue().getLink() : nullptr;
}

template <typename T>
std::vector<T> arrayOf(const OXMObject* object, OXMenum id)
{
    auto* p = OXMValueArrayPropertyIF<T>::getInterface(object ? object->getProperty(id) : nullptr);
    return p ? p->getArray() : std::vector<T>();
}

template <typename T>
bool valueOf(const OXMObject* object, OXMenum id, T& value)
{
    auto* p = OXMSingleValuePropertyIF<T>::getInterface(object ? object->getProperty(id) : nullptr);
    if (!p)
        return false;
    value = p->getValue();
    return true;
}

// A resolved channel read once: a constant, or the handles of its piecewise-linear curve,
// evaluated at ascending x with a moving segment (the same values as the
// channel object's own evaluate()).
class CurveSampler
{
public:
    explicit CurveSampler(const OXMObject* channel)
    {
        if (!channel)
            return; // no channel: 0 everywhere
        float scale = 1.0f, bias = 0.0f;
        OXMenum mode;
        valueOf(channel, OXM::Scale, scale);
        valueOf(channel, OXM::Bias, bias);
        valueOf(channel, OXM::MapMode, mode);
        if (mode == OXM::Constant) {
            mConstant = scale;
            return;
        }
        mHandles = arrayOf<OXMVector2<float>>(channel, OXM::LookupTableHandleList);
        mScale = scale;
        mBias = bias;
    }

    // x must not decrease between calls.
    float next(float x)
    {
        if (mHandles.empty())
            return mConstant;
        const std::vector<OXMVector2<float>>& h = mHandles;
        float y = h.front().y;
        if (x >= h.back().x) {
            y = h.back().y;
        } else if (x > h.front().x) {
            while (mSegment < h.size() && x > h[mSegment].x)
                ++mSegment;
            if (mSegment < h.size()) {
                const auto& a = h[mSegment - 1];
                const auto& b = h[mSegment];
                const float dx = b.x - a.x;
                const float t = dx > 0.0f ? (x - a.x) / dx : 1.0f;
                y = a.y + t * (b.y - a.y);
            }
        }
        return y * mScale + mBias;
    }

private:
    std::vector<OXMVector2<float>> mHandles;
    std::size_t mSegment = 1;
    float mConstant = 0.0f;
    float mScale = 1.0f;
    float mBias = 0.0f;
};

float unit(float v)
{
    return std::min(1.0f, std::max(0.0f, v));
}

int toByte(float v)
{
    return int(unit(v) * 255.0f + 0.5f);
}

} // namespace

OXMObject* OXWClassificationLookup::findMaterial(const OXMObject* object)
{
    return linkedObject(object, OXM::ApplicationSampleMaterial);
}

OXMObject* OXWClassificationLookup::findGrid(const OXMObject* object)
{
    if (!object)
        return nullptr;
    if (OXMObject* grid = linkedObject(object, OXM::SampleGrid))
        return grid;
    return linkedObject(object->getParentLink().getOwner(), OXM::SampleGrid);
}

OXMObject* OXWClassificationLookup::resolveChannel(const OXMObject* material, OXMenum channelID,
                                                   std::vector<OXMObject*>* visited)
{
    OXMObject* channel = linkedObject(material, channelID);
    for (int step = 0; step < 16 && channel; ++step) {
        if (visited)
            visited->push_back(channel);
        OXMenum mode;
        if (!valueOf(channel, OXM::MapMode, mode) || mode != OXM::Reference)
            return channel;
        channel = linkedObject(channel, OXM::Reference);
    }
    return nullptr; // a reference cycle, or a reference to nothing
}

void OXWClassificationLookup::clear()
{
    mStatus = Status::Empty;
    mFirst = 0;
    mLast = -1;
    mFloat = false;
    mLow = 0.0;
    mScale = 0.0;
    mComponent = 0;
    mGrid = nullptr;
    mTable.clear();
    mSources.clear();
}

void OXWClassificationLookup::addSource(OXMObject* object)
{
    if (object && std::find(mSources.begin(), mSources.end(), object) == mSources.end())
        mSources.push_back(object);
}

bool OXWClassificationLookup::findBinRange(const OXMObject* object, OXMenum inputChannel)
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
    std::vector<OXMObjectLink> histograms = arrayOf<OXMObjectLink>(object, OXM::HistogramList);
    if (histograms.empty())
        histograms = arrayOf<OXMObjectLink>(object->getParentLink().getOwner(), OXM::HistogramList);
    for (const OXMObjectLink& link : histograms) {
        OXMObject* histogram = link.getLink();
        OXMenum histogramChannel;
        if (!valueOf(linkedObject(histogram, OXM::SampleTransferSpec), OXM::InputChannel,
                     histogramChannel) ||
            histogramChannel != inputChannel)
            continue;
        addSource(histogram);
        OXMObject* result = linkedObject(histogram, OXM::Result);
        addSource(result);
        auto* bins = OXMValueArrayPropertyIF<float>::getInterface(
            result ? result->getProperty(OXM::Histogram) : nullptr);
        int first = 0, last = -1;
        std::pair<float, float> range(0.0f, 0.0f);
        if (bins && bins->getArrayIndexRange(first, last) && last >= first &&
            (!mFloat || valueOf(result, OXMSceneNames::dataRange(), range))) {
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
        c.low = out.dataLow;
        c.scale = out.dataHigh > out.dataLow
                      ? double(c.last - c.first) / double(out.dataHigh - out.dataLow)
                      : 0.0;
    }
    mFirst = c.first;
    mLast = c.last;
    mLow = c.low;
    mScale = c.scale;
    return true;
}

OXWClassificationLookup::Status OXWClassificationLookup::build(const OXMObject* object)
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
    if (mGrid && !linkedObject(object, OXM::SampleGrid))
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
    const OXMObject* red = resolveChannel(material, OXM::DiffuseRed, &visited);
    const OXMObject* green = resolveChannel(material, OXM::DiffuseGreen, &visited);
    const OXMObject* blue = resolveChannel(material, OXM::DiffuseBlue, &visited);
    for (OXMObject* o : visited)
        addSource(o);
    if (!opacity) {
        mStatus = Status::NoOpacity;
        return mStatus;
    }

    OXMenum inputChannel = grid->getDefaultChannel();
    valueOf(opacity, OXM::InputChannel, inputChannel);
    if (!findBinRange(object, inputChannel)) {
        mStatus = Status::NoRange;
        return mStatus;
    }

    const std::vector<int> borders = arrayOf<int>(material, OXM::IntervalIndexList);
    const std::vector<OXMenum> modes = arrayOf<OXMenum>(material, OXM::IntervalModeList);

    CurveSampler a(opacity), r(red), g(green), b(blue);
    mTable.assign(std::size_t(mLast - mFirst + 1), 0u);
    // Interval i covers the bins borders[i] + 1 .. borders[i + 1].
    std::size_t interval = 0;
    for (int k = mFirst; k <= mLast; ++k) {
        while (interval + 1 < borders.size() && k > borders[interval + 1])
            ++interval;
        const bool inside =
            interval + 1 < borders.size() && k > borders[interval] && k <= borders[interval + 1];
        if (!inside || (interval < modes.size() && modes[interval] == OXM::Disabled))
            continue;
        const float x = float(k);
        const float alpha = unit(a.next(x));
        const float cr = unit(r.next(x)), cg = unit(g.next(x)), cb = unit(b.next(x));
        mTable[std::size_t(k - mFirst)] =
            qRgba(toByte(cr * alpha), toByte(cg * alpha), toByte(cb * alpha), toByte(alpha));
    }
    mStatus = Status::Ok;
    return mStatus;
}
