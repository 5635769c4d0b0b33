#include "OXWPresetTransferFunctionMapping.h"

#include "OXWClassificationToolEnums.h"

#include <OXMObject.h>
#include <OXMObjectLink.h>
#include <OXMObjectRefPtr.h>
#include <OXMRegisteredEnum.h>
#include <OXMVector2.h>

#include <algorithm>
#include <cmath>
#include <set>
#include <vector>

namespace {

const char* const Ns = OXWClassificationToolEnums::Namespace;
const OXMRegisteredEnum AbsoluteModeName("AbsoluteMode", false, Ns);
const OXMRegisteredEnum IntervalFloatIndexListName("IntervalFloatIndexList", false, Ns);
const OXMRegisteredEnum ShadingModelName("ShadingModel", false, Ns);
const char* const VolumePlugin = "OXMRaytracing::Volume::RenderPlugin";

using Handle = OXMVector2<float>;
using Range = OXWPresetConversion::Range;
const OXMenum Diffuse[3] = {OXM::DiffuseRed, OXM::DiffuseGreen, OXM::DiffuseBlue};
const OXMenum Ambient[3] = {OXM::AmbientRed, OXM::AmbientGreen, OXM::AmbientBlue};
const OXMenum Specular[3] = {OXM::SpecularRed, OXM::SpecularGreen, OXM::SpecularBlue};

// --- to a record ----------------------------------------------------------------------------

bool setConstant(OXMObject* channel, double value)
{
    return channel && channel->setValue(OXM::MapMode, OXM::Constant) &&
           channel->setValue(OXM::Scale, float(value)) && channel->setValue(OXM::Bias, 0.0f);
}

bool setCurve(OXMObject* channel, const std::vector<Handle>& handles, double fallback)
{
    if (handles.size() < 2)
        return setConstant(channel, handles.empty() ? fallback : double(handles.front().y));
    return channel && channel->setValue(OXM::MapMode, OXM::LookupTable) &&
           channel->setValue(OXM::LookupTableHandleMode, OXM::Linear) &&
           channel->setValue(OXM::Scale, 1.0f) && channel->setValue(OXM::Bias, 0.0f) &&
           channel->setArray(OXM::LookupTableHandleList, handles);
}

// The points as handles, held flat out to the ends of the preset's interval [low, high] where
// they stop short of them: a curve covers its whole interval, so the editor and the renderer
// read the same values there.
template <typename Point, typename Value>
std::vector<Handle> handlesOf(const std::vector<Point>& points, Value value, double low,
                              double high)
{
    std::vector<Handle> handles;
    handles.reserve(points.size() + 2);
    for (const Point& p : points)
        handles.emplace_back(float(p.x), float(value(p)));
    if (handles.empty())
        return handles;
    if (double(handles.front().x) > low)
        handles.insert(handles.begin(), Handle(float(low), handles.front().y));
    if (double(handles.back().x) < high)
        handles.emplace_back(float(high), handles.back().y);
    return handles;
}

bool writeIntervals(OXMObject& record, const OXWTransferFunction& preset, const QByteArray& name)
{
    double low = 0.0, high = 0.0;
    preset.coveredRange(low, high);
    const double first = preset.absolute ? low - 1.0 : low;
    bool ok =
        record.setArray(IntervalFloatIndexListName, std::vector<float>{float(first), float(high)});
    ok = record.setArray(OXM::IntervalIndexList,
                         std::vector<int>{int(std::floor(first)), int(std::ceil(high))}) &&
         ok;
    ok = record.setArray(OXM::IntervalModeList, std::vector<OXMenum>{OXM::Enabled}) && ok;
    return record.setArray(OXM::IntervalNameList, std::vector<const char*>{name.constData()}) && ok;
}

bool writeColours(OXMObject& record, const OXWTransferFunction& preset, double low, double high)
{
    using Point = OXWTransferFunction::ColourPoint;
    double Point::*const parts[3] = {&Point::r, &Point::g, &Point::b};
    bool ok = true;
    for (int c = 0; c < 3; ++c) {
        OXMObject* diffuse = record.getLinkedObject(Diffuse[c]);
        ok = setCurve(diffuse,
                      handlesOf(
                          preset.colours, [&](const Point& p) { return p.*parts[c]; }, low, high),
                      1.0) &&
             ok;
        OXMObject* ambient = record.getLinkedObject(Ambient[c]);
        ok = ambient && ambient->setValue(OXM::MapMode, OXM::Reference) &&
             ambient->setValue(OXM::Reference, OXMObjectLink(diffuse)) && ok;
        ok = setConstant(record.getLinkedObject(Specular[c]), 1.0) && ok;
    }
    return ok;
}

bool writeMaterial(OXMObject& record, const OXWTransferFunction& preset)
{
    const std::pair<OXMenum, double> constants[] = {{OXM::AmbientIntensity, preset.ambient},
                                                    {OXM::DiffuseIntensity, preset.diffuse},
                                                    {OXM::SpecularIntensity, preset.specular},
                                                    {OXM::Shininess, preset.specularPower},
                                                    {OXM::Transparency, 1.0},
                                                    {OXM::Gradient, preset.gradientOpacity}};
    bool ok = true;
    for (const auto& [channel, value] : constants)
        ok = setConstant(record.getLinkedObject(channel), value) && ok;
    ok = record.setValue(OXM::RenderPlugin, VolumePlugin) && ok;
    ok = record.setValue(ShadingModelName, OXM::Phong) && ok;
    return record.setValue(OXM::SamplingDistance, 0.5f) && ok;
}

// --- from a material ------------------------------------------------------------------------

const OXMObject* resolve(const OXMObject& material, OXMenum id)
{
    const OXMObject* channel = material.getLinkedObject(id);
    for (int step = 0; step < 16 && channel; ++step) {
        OXMenum mode = OXM::Unknown;
        if (!channel->getValue(OXM::MapMode, mode) || mode != OXM::Reference)
            return channel;
        channel = channel->getLinkedObject(OXM::Reference);
    }
    return nullptr;
}

// A channel read once, evaluated as the classification table does.
struct Channel
{
    std::vector<Handle> handles;
    float constant = 0.0f;
    float scale = 1.0f;
    float bias = 0.0f;

    Channel(const OXMObject& material, OXMenum id)
    {
        const OXMObject* channel = resolve(material, id);
        OXMenum mode = OXM::Unknown;
        if (!channel)
            return;
        channel->getValue(OXM::Scale, scale);
        channel->getValue(OXM::Bias, bias);
        channel->getValue(OXM::MapMode, mode);
        if (mode == OXM::Constant)
            constant = scale;
        else
            channel->getArray(OXM::LookupTableHandleList, handles);
    }
    double at(double x) const
    {
        if (handles.empty())
            return constant;
        const auto right = std::upper_bound(handles.begin(), handles.end(), x,
                                            [](double v, const Handle& h) { return v < h.x; });
        if (right == handles.begin())
            return handles.front().y * scale + bias;
        if (right == handles.end())
            return handles.back().y * scale + bias;
        const Handle& a = *(right - 1);
        const Handle& b = *right;
        const double t = b.x > a.x ? (x - a.x) / (b.x - a.x) : 1.0;
        return (a.y + t * (b.y - a.y)) * scale + bias;
    }
};

double unit(double v)
{
    return std::min(1.0, std::max(0.0, v));
}

struct Run
{
    int low;
    int high;
    bool shown;
};

// The runs of bins over the range that the intervals show or hide.
std::vector<Run> runsOf(const OXMObject& material, Range range)
{
    std::vector<int> borders;
    std::vector<OXMenum> modes;
    material.getArray(OXM::IntervalIndexList, borders);
    material.getArray(OXM::IntervalModeList, modes);
    std::vector<Run> runs;
    const auto add = [&runs](int low, int high, bool shown) {
        if (!runs.empty() && runs.back().shown == shown && runs.back().high + 1 == low)
            runs.back().high = high;
        else
            runs.push_back({low, high, shown});
    };
    int next = range.first;
    for (std::size_t i = 0; i + 1 < borders.size(); ++i) {
        const int low = std::max(borders[i] + 1, next);
        const int high = std::min(borders[i + 1], range.last);
        if (high < low)
            continue;
        if (low > next)
            add(next, low - 1, false);
        add(low, high, i >= modes.size() || modes[i] != OXM::Disabled);
        next = high + 1;
    }
    if (next <= range.last)
        add(next, range.last, false);
    return runs;
}

void flattenOpacity(const OXMObject& material, Range range, OXWTransferFunction& preset)
{
    const Channel opacity(material, OXM::Opacity);
    const double transparency = Channel(material, OXM::Transparency).at(range.first);
    const auto alpha = [&](double x) { return unit(unit(opacity.at(x)) * transparency); };
    for (const Run& run : runsOf(material, range)) {
        preset.opacity.push_back({double(run.low), run.shown ? alpha(run.low) : 0.0});
        for (const Handle& h : opacity.handles) {
            if (run.shown && h.x > run.low && h.x < run.high)
                preset.opacity.push_back({double(h.x), alpha(h.x)});
        }
        if (run.high > run.low)
            preset.opacity.push_back({double(run.high), run.shown ? alpha(run.high) : 0.0});
    }
}

void flattenColours(const OXMObject& material, Range range, OXWTransferFunction& preset)
{
    const Channel colours[3] = {
        {material, Diffuse[0]}, {material, Diffuse[1]}, {material, Diffuse[2]}};
    std::set<double> xs = {double(range.first), double(range.last)};
    for (const Channel& channel : colours) {
        for (const Handle& h : channel.handles) {
            if (h.x > range.first && h.x < range.last)
                xs.insert(h.x);
        }
    }
    for (double x : xs)
        preset.colours.push_back(
            {x, unit(colours[0].at(x)), unit(colours[1].at(x)), unit(colours[2].at(x))});
}

} // namespace

OXMObjectPtr OXWPresetTransferFunctionMapping::toRecord(const OXWTransferFunction& preset)
{
    double low = 0.0, high = 0.0;
    OXMObjectRefPtr record("OXMPresetClassificationProxyObject", OXM::Local);
    if (!record || !preset.isUsable() || !preset.coveredRange(low, high))
        return OXMObjectPtr();
    const QByteArray name = preset.name.toLocal8Bit();
    bool ok = writeIntervals(*record, preset, name);
    ok = setCurve(record->getLinkedObject(OXM::Opacity),
                  handlesOf(
                      preset.opacity, [](const auto& p) { return p.a; }, low, high),
                  1.0) &&
         ok;
    ok = writeColours(*record, preset, low, high) && ok;
    ok = writeMaterial(*record, preset) && ok;
    ok = record->setValue(AbsoluteModeName, preset.absolute ? OXM::True : OXM::False) && ok;
    return ok ? OXMObjectPtr(record.get()) : OXMObjectPtr();
}

bool OXWPresetTransferFunctionMapping::fromMaterial(const OXMObject& material, Range range,
                                                    OXWTransferFunction& preset)
{
    if (range.last < range.first)
        return false;
    preset = OXWTransferFunction();
    preset.absolute = true;
    preset.hasRange = true;
    preset.rangeLow = range.first;
    preset.rangeHigh = range.last;
    flattenOpacity(material, range, preset);
    flattenColours(material, range, preset);
    preset.fileOpacityPoints = int(preset.opacity.size());
    preset.fileColourPoints = int(preset.colours.size());
    const double x = range.first;
    preset.ambient = Channel(material, OXM::AmbientIntensity).at(x);
    preset.diffuse = Channel(material, OXM::DiffuseIntensity).at(x);
    preset.specular = Channel(material, OXM::SpecularIntensity).at(x);
    preset.specularPower = Channel(material, OXM::Shininess).at(x);
    preset.gradientOpacity = Channel(material, OXM::Gradient).at(x);
    return true;
}
