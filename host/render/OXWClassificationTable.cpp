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
            handles = arrayOf<OXMVector2<float>>(channel, OXM::LookupTableHandleList);
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
            for (; i < end; ++i)
                out[i] = (base + (x0 + float(i) - a.x) * slope) * scale + bias;
        }
        std::fill(out + i, out + count, handles.back().y * scale + bias);
    }
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

OXMObject* OXWClassificationTable::findMaterial(const OXMObject* object)
{
    return linkedObject(object, OXM::ApplicationSampleMaterial);
}

OXMObject* OXWClassificationTable::findGrid(const OXMObject* object)
{
    if (!object)
        return nullptr;
    if (OXMObject* grid = linkedObject(object, OXM::SampleGrid))
        return grid;
    return linkedObject(object->getParentLink().getOwner(), OXM::SampleGrid);
}

OXMObject* OXWClassificationTable::resolveChannel(const OXMObject* material, OXMenum channelID,
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
    pack();
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
    Curve(opacity).fill(mCurves[0].data(), x0, n);
    for (int c = 0; c < 6; ++c)
        Curve(resolveChannel(material, Colours[c], &visited)).fill(mCurves[c + 1].data(), x0, n);

    // Colour: ambient and diffuse weighted by their intensities (their mean without any).
    const float sum = mLighting.ambient + mLighting.diffuse;
    const float wa = sum > 0.0f ? mLighting.ambient / sum : 0.5f;
    const float wd = sum > 0.0f ? mLighting.diffuse / sum : 0.5f;
    const float t = mTransparency;
    mRGBA.resize(std::size_t(n) * 4);
    float* out = mRGBA.data();
    const float* a = mCurves[0].data();
    const float* colour[6];
    for (int c = 0; c < 6; ++c)
        colour[c] = mCurves[c + 1].data();
    for (int i = 0; i < n; ++i, out += 4) {
        out[0] = unit(wa * unit(colour[0][i]) + wd * unit(colour[3][i]));
        out[1] = unit(wa * unit(colour[1][i]) + wd * unit(colour[4][i]));
        out[2] = unit(wa * unit(colour[2][i]) + wd * unit(colour[5][i]));
        out[3] = unit(a[i]) * t;
    }
}

void OXWClassificationTable::fillGradientOpacity(const OXMObject* material,
                                                 std::vector<OXMObject*>& visited)
{
    const OXMObject* channel = resolveChannel(material, OXM::Gradient, &visited);
    mGradientOpacity.clear();
    if (!channel)
        return;
    mGradientOpacity.resize(std::size_t(getBinCount()));
    Curve(channel).fill(mGradientOpacity.data(), float(mFirst), getBinCount());
    if (std::all_of(mGradientOpacity.begin(), mGradientOpacity.end(),
                    [](float g) { return g >= 1.0f; }))
        mGradientOpacity.clear();
}

void OXWClassificationTable::clearOutsideEnabledIntervals(const OXMObject* material)
{
    const std::vector<int> borders = arrayOf<int>(material, OXM::IntervalIndexList);
    const std::vector<OXMenum> modes = arrayOf<OXMenum>(material, OXM::IntervalModeList);
    // Bins shown: b(i) + 1 .. b(i+1) of each enabled interval i.
    std::vector<char> shown(std::size_t(getBinCount()), 0);
    for (std::size_t i = 0; i + 1 < borders.size(); ++i) {
        if (i < modes.size() && modes[i] == OXM::Disabled)
            continue;
        const long long from = std::max<long long>(borders[i] + 1LL, mFirst);
        const long long to = std::min<long long>(borders[i + 1], mLast);
        for (long long k = from; k <= to; ++k)
            shown[std::size_t(k - mFirst)] = 1;
    }
    for (std::size_t i = 0; i < shown.size(); ++i)
        if (!shown[i])
            std::fill_n(mRGBA.begin() + std::ptrdiff_t(i * 4), 4, 0.0f);
}

void OXWClassificationTable::pack()
{
    const std::size_t n = std::size_t(getBinCount());
    mTable.resize(n);
    const float* e = mRGBA.data();
    for (std::size_t i = 0; i < n; ++i, e += 4) {
        const float alpha = e[3];
        mTable[i] =
            qRgba(toByte(e[0] * alpha), toByte(e[1] * alpha), toByte(e[2] * alpha), toByte(alpha));
    }
}
