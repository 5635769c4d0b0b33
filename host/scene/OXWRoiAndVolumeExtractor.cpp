#include "OXWRoiAndVolumeExtractor.h"

#include "OXMHistogramCalculator.h"
#include "OXMObjectPtr.h"
#include "OXMRegionOfInterest.h"
#include "OXMSampleGrid.h"
#include "OXMVolumeRenderObject.h"

#include <cmath>
#include <cstring>
#include <thread>

namespace {

struct Selection
{
    const OXMSampleGrid* grid = nullptr;
    std::vector<std::uint8_t> inside; // 1 for the voxels of the interval
    long long count = 0;
    double background = 0.0; // native value of bin b0
    int channelIndex = 0;
};

// Marks the voxels of the interval (inside the region when the path ends at one).
bool selectVoxels(const OXMObjectPath& path, OXMenum channel, const OXMInterval& interval,
                  Selection& sel)
{
    OXMObject* last = path.getLink(-1);
    const std::vector<std::uint8_t>* mask = nullptr;
    if (auto* roi = dynamic_cast<OXMRegionOfInterest*>(last)) {
        sel.grid = roi->getSampleGrid();
        mask = &roi->getMask();
    } else if (auto* volume = dynamic_cast<OXMVolumeRenderObject*>(last)) {
        sel.grid = volume->getSampleGrid();
    }
    if (!sel.grid)
        return false;
    OXMHistogramCalculator::Input in;
    if (!OXMHistogramCalculator::makeInput(*sel.grid, channel, in))
        return false;
    if (mask && (long long)mask->size() != in.voxelCount)
        return false;
    in.mask = mask ? mask->data() : nullptr;
    sel.channelIndex = in.component;
    const OXMTypeInfo::Channel* c = sel.grid->getDataType().getChannel(channel);
    const bool isFloat = c && !c->isInteger();
    // Floating-point data: the bins of the histogram over the data range.
    double lo = 0.0, scale = 1.0;
    if (isFloat) {
        OXMHistogramCalculator::Output out;
        if (OXMHistogramCalculator::calculate(in, out) != OXM::NoError)
            return false;
        lo = out.dataLow;
        scale = out.dataHigh > out.dataLow
                    ? double(out.counts.size() - 1) / (double(out.dataHigh) - out.dataLow)
                    : 0.0;
        sel.background = scale > 0.0 ? lo + interval.from / scale : lo;
    } else {
        sel.background = c ? c->intToNative(interval.from) : double(interval.from);
    }
    const long long n = in.voxelCount;
    sel.inside.assign(std::size_t(n), 0);
    long long counts[2] = {0, 0};
    auto mark = [&](auto sample) {
        using T = decltype(sample);
        const T* data = static_cast<const T*>(in.data);
        auto work = [&](int part) {
            const long long b = part == 0 ? 0 : n / 2;
            const long long e = part == 0 ? n / 2 : n;
            long long k = 0;
            for (long long i = b; i < e; ++i) {
                if (in.mask && !in.mask[i])
                    continue;
                const double v = double(data[i * in.componentsPerVoxel + in.component]);
                double bin = v;
                if (isFloat) {
                    if (std::isnan(v))
                        continue;
                    bin = std::floor((v - lo) * scale + 0.5);
                }
                if (bin > interval.from && bin <= interval.to) {
                    sel.inside[std::size_t(i)] = 1;
                    ++k;
                }
            }
            counts[part] = k;
        };
        std::thread other(work, 1);
        work(0);
        other.join();
    };
    const OXMenum t = in.componentType;
    if (t == OXM::UInt8)
        mark(std::uint8_t());
    else if (t == OXM::Int8)
        mark(std::int8_t());
    else if (t == OXM::UInt16)
        mark(std::uint16_t());
    else if (t == OXM::Int16)
        mark(std::int16_t());
    else if (t == OXM::UInt32)
        mark(std::uint32_t());
    else if (t == OXM::Int32)
        mark(std::int32_t());
    else if (t == OXM::Float32)
        mark(float());
    else if (t == OXM::Float64)
        mark(double());
    else
        return false;
    sel.count = counts[0] + counts[1];
    return true;
}

} // namespace

OXMRegionOfInterest*
OXWRoiAndVolumeExtractor::createROIFromGreyvalueInterval(const OXMObjectPath& path, OXMenum channel,
                                                         const OXMInterval& interval)
{
    Selection sel;
    if (!selectVoxels(path, channel, interval, sel))
        return nullptr;
    auto* roi = new OXMRegionOfInterest;
    roi->setMask(std::move(sel.inside));
    return roi;
}

OXMVolumeRenderObject* OXWRoiAndVolumeExtractor::createVolumeRenderObjectFromGreyvalueInterval(
    const OXMObjectPath& path, OXMenum channel, const OXMInterval& interval)
{
    Selection sel;
    if (!selectVoxels(path, channel, interval, sel) || sel.count == 0)
        return nullptr;
    const OXMSampleGrid& src = *sel.grid;
    const OXMVector3<int> d = src.getDimensions();
    OXMVector3<int> lo(d.x, d.y, d.z), hi(-1, -1, -1);
    long long i = 0;
    for (int z = 0; z < d.z; ++z)
        for (int y = 0; y < d.y; ++y)
            for (int x = 0; x < d.x; ++x, ++i) {
                if (!sel.inside[std::size_t(i)])
                    continue;
                lo = {std::min(lo.x, x), std::min(lo.y, y), std::min(lo.z, z)};
                hi = {std::max(hi.x, x), std::max(hi.y, y), std::max(hi.z, z)};
            }
    const OXMVector3<int> nd(hi.x - lo.x + 1, hi.y - lo.y + 1, hi.z - lo.z + 1);
    const OXMTypeInfo type = src.getDataType();
    const std::size_t voxelSize = std::size_t(type.getSize());
    const OXMTypeInfo::Channel* c = type.getChannel(channel);
    if (!c)
        return nullptr;
    const std::size_t compSize = std::size_t(c->getSize());
    // The background voxel: the source's first voxel with the channel set to bin b0.
    std::vector<std::uint8_t> background(voxelSize, 0);
    {
        auto put = [&](auto v) {
            v = decltype(v)(c->floatToNative(sel.background));
            std::memcpy(background.data() + std::size_t(sel.channelIndex) * compSize, &v, sizeof v);
        };
        const OXMenum t = c->getDataType();
        if (t == OXM::UInt8)
            put(std::uint8_t());
        else if (t == OXM::Int8)
            put(std::int8_t());
        else if (t == OXM::UInt16)
            put(std::uint16_t());
        else if (t == OXM::Int16)
            put(std::int16_t());
        else if (t == OXM::UInt32)
            put(std::uint32_t());
        else if (t == OXM::Int32)
            put(std::int32_t());
        else if (t == OXM::Float32)
            put(float());
        else if (t == OXM::Float64)
            put(double());
    }
    std::vector<std::uint8_t> bytes(std::size_t(nd.x) * std::size_t(nd.y) * std::size_t(nd.z) *
                                    voxelSize);
    const std::uint8_t* in = src.getData();
    std::size_t out = 0;
    for (int z = lo.z; z <= hi.z; ++z)
        for (int y = lo.y; y <= hi.y; ++y)
            for (int x = lo.x; x <= hi.x; ++x, out += voxelSize) {
                const std::size_t index =
                    (std::size_t(z) * std::size_t(d.y) + std::size_t(y)) * std::size_t(d.x) +
                    std::size_t(x);
                std::memcpy(bytes.data() + out,
                            sel.inside[index] ? in + index * voxelSize : background.data(),
                            voxelSize);
            }
    auto* grid = new OXMSampleGrid;
    OXMObjectPtr holdGrid(grid);
    if (!grid->setData(nd, type.getID(), std::move(bytes)))
        return nullptr;
    const OXMVector3<float> s = src.getSpacing();
    const OXMVector3<float> o = src.getGridOrigin();
    grid->setSpacing(s);
    grid->setGridOrigin(
        {o.x + float(lo.x) * s.x, o.y + float(lo.y) * s.y, o.z + float(lo.z) * s.z});
    return OXMVolumeRenderObject::create(grid, "");
}
