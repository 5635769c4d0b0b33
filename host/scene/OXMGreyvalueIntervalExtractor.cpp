#include "OXMGreyvalueIntervalExtractor.h"

#include "OXMAction.h"
#include "OXMGreyvalueIntervalExtraction.h"
#include "OXMHistogram.h"
#include "OXMHistogramCalculator.h"
#include "OXMHistogramResult.h"
#include "OXMObjectPtr.h"
#include "OXMRegionOfInterest.h"
#include "OXMSampleGrid.h"
#include "OXMSampleLoops.h"
#include "OXMVolumeRenderObject.h"

#include <cmath>
#include <cstring>
#include <thread>

namespace {

using Parameters = OXMGreyvalueIntervalExtraction;

// The voxels the extraction reads: a volume's grid, or a region's grid and mask.
struct Source
{
    const OXMSampleGrid* grid = nullptr;
    const std::vector<std::uint8_t>* mask = nullptr;
    const OXMSceneObject* histogramOwner = nullptr;
};

bool findSource(OXMObject& object, Source& source)
{
    if (auto* roi = dynamic_cast<OXMRegionOfInterest*>(&object)) {
        source = {roi->getSampleGrid(), &roi->getMask(), roi};
    } else if (auto* volume = dynamic_cast<OXMVolumeRenderObject*>(&object)) {
        source = {volume->getSampleGrid(), nullptr, volume};
    }
    return source.grid != nullptr;
}

// Which histogram bin a value falls into: integers are their own bins; floating-point values
// fall into the bins of the histogram over the data range.
struct Binning
{
    bool floating = false;
    double low = 0.0;
    double scale = 0.0; // bins per unit of value

    double binOf(double value) const
    {
        return floating ? std::floor((value - low) * scale + 0.5) : value;
    }
    double valueOf(int bin) const
    {
        if (!floating)
            return bin;
        return scale > 0.0 ? low + bin / scale : low;
    }
};

// The binning of the object's histogram of the channel; calculated when it has none.
OXMenum findBinning(const Source& source, OXMenum channel, const OXMHistogramCalculator::Input& in,
                    Binning& binning)
{
    const OXMTypeInfo::Channel* c = source.grid->getDataType().getChannel(channel);
    std::pair<float, float> range(0.0f, 0.0f);
    std::size_t bins = 0;
    int first = 0;
    const OXMHistogram* histogram = OXMHistogram::findInList(*source.histogramOwner, channel);
    if (const OXMHistogramResult* result = histogram ? histogram->getResult() : nullptr) {
        range = result->getDataRange();
        bins = result->getCounts().size();
        first = result->getFirstIndex();
    }
    if (bins == 0) {
        OXMHistogramCalculator::Output out;
        const OXMenum code = OXMHistogramCalculator::calculate(in, out);
        if (code != OXM::NoError)
            return code;
        range = {out.dataLow, out.dataHigh};
        bins = out.counts.size();
        first = out.first;
    }
    // Integer data have a bin per value unless they are too wide for it: then their histogram,
    // like that of floating-point data, has bins over the data range.
    const int last = first + int(bins) - 1;
    binning.floating =
        !(c && c->isInteger() && range.first == float(first) && range.second == float(last));
    if (!binning.floating)
        return OXM::NoError;
    binning.low = range.first;
    binning.scale = range.second > range.first && bins > 1
                        ? double(bins - 1) / (double(range.second) - range.first)
                        : 0.0;
    return OXM::NoError;
}

// One byte per voxel, 1 for the voxels of the interval, and their number.
struct Marked
{
    std::vector<std::uint8_t> inside;
    long long count = 0;
};

template <typename T>
bool markVoxels(const OXMHistogramCalculator::Input& in, const Binning& binning,
                const OXMInterval& interval, Marked& marked, OXMTaskInfo& task)
{
    const T* data = static_cast<const T*>(in.data);
    const int threads = int(std::max(1u, std::thread::hardware_concurrency()));
    std::vector<long long> counts(std::size_t(threads), 0);
    marked.inside.assign(std::size_t(in.voxelCount), 0);
    const bool done = OXMSampleLoops::runParallel(
        in.voxelCount, threads, &task, 0.0f, 0.9f, [&](int worker, long long b, long long e) {
            long long k = 0;
            for (long long i = b; i < e; ++i) {
                if (in.mask && !in.mask[i])
                    continue;
                const double v = double(data[i * in.componentsPerVoxel + in.component]);
                if (!std::isfinite(v))
                    continue;
                const double bin = binning.binOf(v);
                if (bin > interval.from && bin <= interval.to) {
                    marked.inside[std::size_t(i)] = 1;
                    ++k;
                }
            }
            counts[std::size_t(worker)] += k;
        });
    for (long long k : counts)
        marked.count += k;
    return done;
}

OXMenum markInterval(const Source& source, const Parameters& p, Binning& binning, Marked& marked,
                     OXMTaskInfo& task)
{
    OXMHistogramCalculator::Input in;
    if (!source.grid->getData())
        return OXM::MissingAFObject;
    if (!OXMHistogramCalculator::makeInput(*source.grid, p.channel, in))
        return OXM::InvalidValue;
    if (source.mask && (long long)source.mask->size() != in.voxelCount)
        return OXM::InvalidValue;
    in.mask = source.mask ? source.mask->data() : nullptr;
    const OXMenum code = findBinning(source, p.channel, in, binning);
    if (code != OXM::NoError)
        return code;
    bool done = false;
    if (!OXMSampleLoops::forComponentType(in.componentType, [&](auto sample) {
            done = markVoxels<decltype(sample)>(in, binning, p.interval, marked, task);
        }))
        return OXM::InvalidValue;
    return done ? OXM::NoError : OXM::Abort;
}

// The smallest box around the marked voxels; empty (hi < lo) when there are none.
void boundingBox(const Marked& marked, const OXMVector3<int>& d, OXMVector3<int>& lo,
                 OXMVector3<int>& hi)
{
    lo = {d.x, d.y, d.z};
    hi = {-1, -1, -1};
    std::size_t i = 0;
    for (int z = 0; z < d.z; ++z)
        for (int y = 0; y < d.y; ++y)
            for (int x = 0; x < d.x; ++x, ++i) {
                if (!marked.inside[i])
                    continue;
                lo = {std::min(lo.x, x), std::min(lo.y, y), std::min(lo.z, z)};
                hi = {std::max(hi.x, x), std::max(hi.y, y), std::max(hi.z, z)};
            }
}

// A voxel of the grid's type whose channel holds the value and whose other channels are 0.
std::vector<std::uint8_t> voxelWith(const OXMSampleGrid& grid, OXMenum channel, double value)
{
    const OXMTypeInfo type = grid.getDataType();
    std::vector<std::uint8_t> voxel(std::size_t(type.getSize()), 0);
    const OXMTypeInfo::Channel* c = type.getChannel(channel);
    int index = 0;
    while (index < type.getChannelCount() && type.getChannel(index) != c)
        ++index;
    OXMSampleLoops::forComponentType(c->getDataType(), [&](auto sample) {
        sample = decltype(sample)(c->floatToNative(value));
        std::memcpy(voxel.data() + std::size_t(index) * sizeof sample, &sample, sizeof sample);
    });
    return voxel;
}

// The grey value of the voxels of a cut-out volume outside the interval: that of bin b0 just
// below the interval, or, when b0 lies below the type's range, that of bin b1 + 1 above it.
double backgroundValue(const Binning& binning, const OXMTypeInfo::Channel& channel,
                       const OXMInterval& interval)
{
    const double below = binning.valueOf(interval.from);
    if (below >= channel.getMinimum())
        return below;
    const double above = binning.valueOf(interval.to + 1);
    return above <= channel.getMaximum() ? above : below;
}

OXMVolumeRenderObject* makeVolume(const Source& source, OXMenum channel, const Marked& marked,
                                  double background)
{
    const OXMSampleGrid& src = *source.grid;
    const OXMVector3<int> d = src.getDimensions();
    OXMVector3<int> lo, hi;
    boundingBox(marked, d, lo, hi);
    const OXMVector3<int> nd(hi.x - lo.x + 1, hi.y - lo.y + 1, hi.z - lo.z + 1);
    const std::size_t voxelSize = std::size_t(src.getDataType().getSize());
    const std::vector<std::uint8_t> outside = voxelWith(src, channel, background);
    std::vector<std::uint8_t> bytes(std::size_t(nd.x) * std::size_t(nd.y) * std::size_t(nd.z) *
                                    voxelSize);
    const std::uint8_t* in = src.getData();
    std::uint8_t* out = bytes.data();
    for (int z = lo.z; z <= hi.z; ++z)
        for (int y = lo.y; y <= hi.y; ++y)
            for (int x = lo.x; x <= hi.x; ++x, out += voxelSize) {
                const std::size_t i =
                    (std::size_t(z) * std::size_t(d.y) + std::size_t(y)) * std::size_t(d.x) +
                    std::size_t(x);
                std::memcpy(out, marked.inside[i] ? in + i * voxelSize : outside.data(), voxelSize);
            }
    auto* grid = new OXMSampleGrid;
    OXMObjectPtr holdGrid(grid);
    if (!grid->setData(nd, src.getDataType().getID(), std::move(bytes)))
        return nullptr;
    const OXMVector3<float> s = src.getSpacing();
    const OXMVector3<float> o = src.getGridOrigin();
    grid->setSpacing(s);
    grid->setGridOrigin(
        {o.x + float(lo.x) * s.x, o.y + float(lo.y) * s.y, o.z + float(lo.z) * s.z});
    return OXMVolumeRenderObject::create(grid, "");
}

} // namespace

OXMAction* OXMGreyvalueIntervalExtractor::createAction()
{
    return new OXMAction(OXM::ExtractGreyvalueInterval, &OXMGreyvalueIntervalExtractor::run);
}

OXMenum OXMGreyvalueIntervalExtractor::run(OXMObject& object, void* parameters, OXMTaskInfo& task)
{
    auto* p = static_cast<Parameters*>(parameters);
    Source source;
    if (!p)
        return OXM::InvalidValue;
    p->created = nullptr;
    if (!findSource(object, source))
        return OXM::MissingAFObject;
    Binning binning;
    Marked marked;
    const OXMenum code = markInterval(source, *p, binning, marked, task);
    if (code != OXM::NoError)
        return code;
    if (p->result == Parameters::Result::Region) {
        auto* roi = new OXMRegionOfInterest;
        if (!roi->setMask(std::move(marked.inside))) {
            OXMObjectPtr discard(roi);
            return OXM::GenericError;
        }
        p->created = roi;
    } else {
        if (marked.count == 0)
            return OXM::GenericError;
        const OXMTypeInfo::Channel* channel = source.grid->getDataType().getChannel(p->channel);
        p->created =
            makeVolume(source, p->channel, marked, backgroundValue(binning, *channel, p->interval));
    }
    task.setProgress(1.0f);
    return p->created ? OXM::NoError : OXM::GenericError;
}
