#include "OXWPresetClassificationHandler.h"

#include "OXWClassificationToolEnums.h"
#include "OXWPresetSaveDialogExtensionWidget.h"
#include "OXWPresetTransferFunctionMapping.h"
#include "OXWRenderMethodTable.h"

#include <OXMMetaClass.h>
#include <OXMNoUndoScope.h>
#include <OXMObjectPath.h>
#include <OXMObjectRefPtr.h>
#include <OXMProperty.h>
#include <OXMRegisteredEnum.h>
#include <OXMVector2.h>

#include <QObject>

#include <cmath>
#include <new>

namespace {

const char* const Ns = OXWClassificationToolEnums::Namespace;
const OXMRegisteredEnum HandlerName("PresetClassificationHandler", false, Ns);
// Registered for the host's volume-render presets; the handler itself does not read it.
const OXMRegisteredEnum VolumeRenderHandlerName("PresetVolumeRenderHandler", false, Ns);
const OXMRegisteredEnum AbsoluteModeName("AbsoluteMode", false, Ns);
// The histogram result's values at its first and last bin; a name of the host.
const OXMRegisteredEnum DataRangeName("DataRange");
const OXMRegisteredEnum IntervalFloatIndexListName("IntervalFloatIndexList", false, Ns);
const OXMRegisteredEnum ShadingModelName("ShadingModel", false, Ns);
const OXMRegisteredEnum ShadingCountLimitName("ShadingCountLimit", false, Ns);
const OXMRegisteredEnum SceneCameraListName("SceneCameraList", false, Ns);
const OXMRegisteredEnum ScatterHQName("ScatterHQ", false, Ns);

const char* const Oxm2Plugin = "OXMOxm2RenderPlugin";
const char* const VolumePlugin = "OXMRaytracing::Volume::RenderPlugin";
const char* const IsosurfacePlugin = "OXMRaytracing::Isosurface::RenderPlugin";

// The built-in presets, in the order of their names.
enum DefaultPreset
{
    Ramp,
    InverseRamp,
    Components,
    IsosurfaceTransparent
};
// Translated once, when the library is loaded.
const QStringList DefaultPresetNames = {QObject::tr("Ramp"), QObject::tr("Inverse Ramp"),
                                        QObject::tr("Components"),
                                        QObject::tr("Isosurface Transparent")};

using Handle = OXMVector2<float>;
using Range = OXWPresetConversion::Range;

bool isOfClass(const OXMObject* object, const char* className)
{
    return object && object->isOfType(className);
}

// Takes the host's message lock on the objects for its lifetime (and holds them).
class MessageLock
{
public:
    explicit MessageLock(const std::vector<OXMObject*>& objects)
    {
        for (OXMObject* o : objects) {
            if (o && o->lock(OXM::PropertyMessage))
                mLocked.emplace_back(o);
        }
    }
    ~MessageLock()
    {
        for (OXMObjectPtr& o : mLocked)
            o->unlock(OXM::PropertyMessage);
    }
    MessageLock(const MessageLock&) = delete;
    MessageLock& operator=(const MessageLock&) = delete;

private:
    std::vector<OXMObjectPtr> mLocked;
};

} // namespace

OXWPresetClassificationHandler::OXWPresetClassificationHandler(OXMObject* target)
    : OXWPresetDefaultHandler(HandlerName, QString::fromLocal8Bit("Classification"))
{
    OXMPresetClassificationProxyObject::metaClass(); // the records' class is known from here on
    for (OXMObjectIOCPtr* ptr : {&mMaterial, &mVolume, &mRegion, &mRenderPlugin, &mSettingsHolder})
        ptr->setListener(this);
    for (OXMObjectIOCPtr& channel : mChannels)
        channel.setListener(this);
    setTargetObject(target);
}

OXWPresetClassificationHandler::~OXWPresetClassificationHandler()
{
    for (OXMObjectIOCPtr* ptr : {&mMaterial, &mVolume, &mRegion, &mRenderPlugin, &mSettingsHolder})
        *ptr = nullptr;
    for (OXMObjectIOCPtr& channel : mChannels)
        channel = nullptr;
}

const std::array<OXMenum, OXWPresetClassificationHandler::ChannelCount>&
OXWPresetClassificationHandler::channelTable()
{
    static const std::array<OXMenum, ChannelCount> table = {
        OXM::Opacity,       OXM::Transparency, OXM::Gradient,          OXM::AmbientRed,
        OXM::AmbientGreen,  OXM::AmbientBlue,  OXM::AmbientIntensity,  OXM::DiffuseRed,
        OXM::DiffuseGreen,  OXM::DiffuseBlue,  OXM::DiffuseIntensity,  OXM::SpecularRed,
        OXM::SpecularGreen, OXM::SpecularBlue, OXM::SpecularIntensity, OXM::Shininess};
    return table;
}

const QStringList& OXWPresetClassificationHandler::defaultPresetNames()
{
    return DefaultPresetNames;
}

bool OXWPresetClassificationHandler::getPresetList(QStringList& list, OXMenum type) const
{
    if (type != OXM::DefaultPreset)
        return OXWPresetDefaultHandler::getPresetList(list, type);
    list = DefaultPresetNames;
    return true;
}

QString OXWPresetClassificationHandler::presetCategoryText() const
{
    return QObject::tr("Material");
}

QWidget* OXWPresetClassificationHandler::createSaveDialogExtension()
{
    return new (std::nothrow) OXWPresetSaveDialogExtensionWidget(this, nullptr, nullptr);
}

// --- target and change listening -------------------------------------------------------------

bool OXWPresetClassificationHandler::setTargetObject(OXMObject* target)
{
    if (!OXWPresetDefaultHandler::setTargetObject(target))
        return false;
    if (!target) {
        mVolume = nullptr;
        mRegion = nullptr;
    } else if (target->isRoleActive(OXM::RegionOfInterest)) {
        OXMObjectPath path;
        target->getValue(OXM::ScenePath, path);
        mVolume = path.getLink(path.getPathDepth() - 2);
        mRegion = target;
    } else if (target->isRoleActive(OXM::VolumeRenderObject)) {
        mVolume = target;
        mRegion = nullptr;
    }
    mRenderPlugin = mVolume.get() ? mVolume->getLinkedObject(OXM::RenderPlugin) : nullptr;
    chooseSettingsHolder();
    readMaterial();
    return setCurrentPreset(QString());
}

void OXWPresetClassificationHandler::chooseSettingsHolder()
{
    if (!mVolume.get())
        mSettingsHolder = nullptr;
    else if (isOfClass(mRenderPlugin.get(), Oxm2Plugin))
        mSettingsHolder = findCameraRenderSettings();
    else
        mSettingsHolder = mRegion.get() ? mRegion.get() : mVolume.get();
}

OXMObject* OXWPresetClassificationHandler::findCameraRenderSettings() const
{
    return OXWRenderMethodTable::findRenderSettings();
}

void OXWPresetClassificationHandler::readMaterial()
{
    OXMObject* target = getTargetObject();
    mMaterial = target ? target->getLinkedObject(OXM::ApplicationSampleMaterial) : nullptr;
    for (std::size_t c = 0; c < mChannels.size(); ++c)
        mChannels[c] = mMaterial.get() ? mMaterial->getLinkedObject(channelTable()[c]) : nullptr;
}

bool OXWPresetClassificationHandler::isRelevant(OXMObject* sender, OXMenum property) const
{
    if (!sender)
        return false;
    const auto is = [sender](const OXMObjectIOCPtr& ptr) { return sender == ptr.get(); };
    if (is(mVolume) || is(mRegion) || is(mRenderPlugin) || is(mSettingsHolder)) {
        for (OXMenum p : {OXMenum(OXM::SamplingDistance), OXMenum(ShadingModelName),
                          OXMenum(OXM::GradientNormalization), OXMenum(ShadingCountLimitName),
                          OXMenum(OXM::RenderPlugin)}) {
            if (property == p)
                return true;
        }
    }
    if (is(mMaterial)) {
        const auto& channels = OXMPresetClassificationProxyObject::channelIDs();
        for (OXMenum p :
             {OXMenum(OXM::IntervalIndexList), OXMenum(OXM::IntervalModeList),
              OXMenum(OXM::IntervalNameList), OXMenum(IntervalFloatIndexListName),
              OXMenum(AbsoluteModeName), OXMenum(OXM::EmissionRed), OXMenum(OXM::EmissionGreen),
              OXMenum(OXM::EmissionBlue), OXMenum(OXM::EmissionIntensity)}) {
            if (property == p)
                return true;
        }
        if (std::find(channels.begin(), channels.end(), property) != channels.end())
            return true;
    }
    return std::any_of(mChannels.begin(), mChannels.end(), is);
}

void OXWPresetClassificationHandler::iocCallback(OXMIOC::Message& message)
{
    OXMObject* sender = message.getInitialSender();
    const OXMenum property = message.getPropertyID();
    if (!isRelevant(sender, property)) {
        OXWPresetDefaultHandler::iocCallback(message);
        return;
    }
    const OXMProperty* changed = property != OXM::Unknown ? sender->getProperty(property) : nullptr;
    if (changed && (changed->getProtectedFlags() & OXMProperty::PresetFlag))
        setCurrentPresetModified(true);
    readMaterial(); // a channel object may have been replaced
    OXWPresetDefaultHandler::iocCallback(message);
}

// --- saving ----------------------------------------------------------------------------------

bool OXWPresetClassificationHandler::saveTargetAsPreset(const QString& name, OXMenum type)
{
    OXMObject* material = targetMaterial();
    if (!material)
        return false;
    const OXMNoUndoScope scratch; // the record is made, stored and thrown away
    OXMObjectRefPtr record("OXMPresetClassificationProxyObject", OXM::Local);
    if (!record)
        return false;
    bool ok = true;
    for (OXMenum list : {OXM::IntervalIndexList, OXM::IntervalModeList, OXM::IntervalNameList})
        ok = record->copyProperty(material, list) && ok;
    const auto& table = channelTable();
    for (auto c = table.rbegin(); c != table.rend(); ++c)
        ok = copyProperties(record->getLinkedObject(*c), material->getLinkedObject(*c)) && ok;
    ok = record->setValue(AbsoluteModeName, mAbsolute ? OXM::True : OXM::False) && ok;
    ok = (!mAbsolute || mapAbsolutePositions(record.get(), true)) && ok;
    ok = copyRenderSettingsInto(record.get()) && ok;
    using Record = OXMPresetClassificationProxyObject;
    Record::redirectChannelReferences(Record::channelsOf(record.get()),
                                      Record::channelsOf(material),
                                      Record::channelsOf(record.get()), true);
    return ok && savePreset(record.get(), name, type);
}

bool OXWPresetClassificationHandler::copyRenderSettingsInto(OXMObject* record) const
{
    OXMObject* plugin = mRenderPlugin.get();
    OXMObject* settings = mSettingsHolder.get();
    if (!plugin)
        return true; // no volume: the preset holds no rendering method
    bool ok = record->setValue(OXM::RenderPlugin, plugin->getMetaClass()->getClassName());
    if (!isOfClass(plugin, Oxm2Plugin)) {
        ok = record->copyProperty(plugin, ShadingModelName) && ok;
        ok = record->copyProperty(plugin, OXM::SamplingDistance) && ok;
        ok = record->copyProperty(settings, OXM::GradientNormalization) && ok;
        return record->copyProperty(settings, ShadingCountLimitName) && ok;
    }
    OXMenum mode = OXM::Unknown;
    ok = settings && settings->getValue(OXM::RenderingMode, mode) &&
         record->setValue(ShadingModelName, mode) && ok;
    ok = record->copyProperty(settings, OXM::SamplingDistance) && ok;
    ok = record->setValue(OXM::GradientNormalization, OXM::False) && ok;
    return record->setValue(ShadingCountLimitName, 0) && ok;
}

// --- presets of other viewers ----------------------------------------------------------------

OXMObjectPtr
OXWPresetClassificationHandler::recordFromTransferFunction(const OXWTransferFunction& preset) const
{
    const OXMNoUndoScope scratch; // the record is made, stored and thrown away
    return OXWPresetTransferFunctionMapping::toRecord(preset);
}

bool OXWPresetClassificationHandler::targetTransferFunction(OXWTransferFunction& preset) const
{
    const OXMObject* material = targetMaterial();
    Range range;
    return material && greyValueRange(range) &&
           OXWPresetTransferFunctionMapping::fromMaterial(*material, range, preset);
}

// --- applying a stored preset ----------------------------------------------------------------

bool OXWPresetClassificationHandler::applyPresetToTarget(const QString& name, OXMenum type)
{
    if (!targetMaterial())
        return false;
    if (type == OXM::DefaultPreset)
        return applyDefaultPreset(name);
    Range range;
    if (!greyValueRange(range))
        return false;
    const OXMObjectPtr record = loadPreset(name, type, 0);
    if (!record)
        return false;
    OXMenum mode = OXM::Unknown;
    record->getValue(AbsoluteModeName, mode);
    const bool absolute = mode == OXM::True;
    if ((absolute && !mapAbsolutePositions(record.get(), false)) ||
        !convertRecord(record.get(), range, absolute))
        return false; // nothing was written
    bool ok = writeRenderSettings(*record);
    ok = writeClassification(record.get()) && ok;
    mAbsolute = absolute;
    return ok;
}

bool OXWPresetClassificationHandler::greyValueRange(Range& range) const
{
    OXMObject* histogram = getHistogramObject();
    if (!histogram || !histogram->execute(OXM::Calculate))
        return false;
    OXMObject* result = histogram->getLinkedObject(OXM::Result);
    const auto* values = OXMValueArrayPropertyIF<float>::getInterface(
        result ? result->getProperty(OXM::Histogram) : nullptr);
    return values && values->getArrayIndexRange(range.first, range.last);
}

bool OXWPresetClassificationHandler::mapAbsolutePositions(OXMObject* record, bool toValues) const
{
    Range bins;
    if (!greyValueRange(bins) || bins.last < bins.first)
        return false;
    OXMObject* result = OXMObject::linkedObject(getHistogramObject(), OXM::Result);
    std::pair<float, float> values(float(bins.first), float(bins.last));
    if (result)
        result->getValue(OXMenum(DataRangeName), values);
    const double step = bins.last > bins.first ? (double(values.second) - double(values.first)) /
                                                     double(bins.last - bins.first)
                                               : 1.0;
    if (!(step > 0.0) || !std::isfinite(step))
        return false;
    const auto map = [&](double x) {
        return toValues ? double(values.first) + (x - bins.first) * step
                        : bins.first + (x - double(values.first)) / step;
    };
    const OXMNoUndoScope scratch;
    std::vector<float> borders;
    record->getArray(IntervalFloatIndexListName, borders);
    if (borders.empty()) {
        std::vector<int> integers;
        record->getArray(OXM::IntervalIndexList, integers);
        borders.assign(integers.begin(), integers.end());
    }
    for (float& b : borders)
        b = float(map(double(b)));
    bool ok = record->setArray(IntervalFloatIndexListName, borders);
    for (OXMenum id : channelTable()) {
        OXMObject* channel = record->getLinkedObject(id);
        std::vector<OXMVector2<float>> handles;
        if (!channel || !channel->getArray(OXM::LookupTableHandleList, handles) || handles.empty())
            continue;
        for (auto& h : handles)
            h.x = float(map(double(h.x)));
        ok = channel->setArray(OXM::LookupTableHandleList, handles) && ok;
    }
    return ok;
}

bool OXWPresetClassificationHandler::convertRecord(OXMObject* record, Range range,
                                                   bool absolute) const
{
    const OXMNoUndoScope scratch;
    if (!OXWPresetConversion::convertIntervals(record, range, absolute))
        return false;
    const auto& table = channelTable();
    for (auto c = table.rbegin(); c != table.rend(); ++c) {
        if (!OXWPresetConversion::convertHandles(record->getLinkedObject(*c), range, absolute))
            return false;
    }
    return true;
}

bool OXWPresetClassificationHandler::writeRenderSettings(const OXMObject& record)
{
    if (!mVolume.get())
        return true; // no volume: nothing to render with
    const MessageLock lock(
        {mVolume.get(), mRegion.get(), mRenderPlugin.get(), mSettingsHolder.get()});
    const char* className = nullptr;
    record.getValue(OXM::RenderPlugin, className);
    bool ok = setRenderPlugin(QString::fromLocal8Bit(className));
    OXMObject* plugin = mRenderPlugin.get();
    OXMObject* settings = mSettingsHolder.get();
    if (isOfClass(plugin, Oxm2Plugin)) {
        OXMenum mode = OXM::Unknown;
        ok = record.getValue(ShadingModelName, mode) && settings &&
             settings->setValue(OXM::RenderingMode, mode) && ok;
        return settings && settings->copyProperty(&record, OXM::SamplingDistance) && ok;
    }
    if (isOfClass(plugin, VolumePlugin))
        ok = plugin->copyProperty(&record, ShadingModelName) && ok;
    ok = plugin && plugin->copyProperty(&record, OXM::SamplingDistance) && ok;
    ok = settings && settings->copyProperty(&record, OXM::GradientNormalization) && ok;
    return settings && settings->copyProperty(&record, ShadingCountLimitName) && ok;
}

bool OXWPresetClassificationHandler::writeClassification(OXMObject* record)
{
    OXMObject* material = targetMaterial();
    if (!material)
        return false;
    const MessageLock materialLock({material});
    bool ok = true;
    {
        const MessageLock lists({material});
        for (OXMenum list : {OXM::IntervalIndexList, OXM::IntervalModeList, OXM::IntervalNameList})
            ok = material->copyProperty(record, list) && ok;
    }
    const auto& table = channelTable();
    std::vector<OXMObject*> channels;
    for (OXMenum c : table)
        channels.push_back(material->getLinkedObject(c));
    const MessageLock channelLocks(channels);
    for (auto c = table.rbegin(); c != table.rend(); ++c)
        ok = copyProperties(material->getLinkedObject(*c), record->getLinkedObject(*c)) && ok;
    using Record = OXMPresetClassificationProxyObject;
    Record::redirectChannelReferences(Record::channelsOf(material), Record::channelsOf(record),
                                      Record::channelsOf(material), false);
    return ok;
}

bool OXWPresetClassificationHandler::setRenderPlugin(const QString& className)
{
    OXMObject* current = mRenderPlugin.get();
    if (current && QString::fromLocal8Bit(current->getMetaClass()->getClassName()) == className)
        return true;
    const QByteArray name = className.toLocal8Bit();
    OXMObjectRefPtr plugin(name.constData());
    // Only a render plug-in may become one (a preset file names the class).
    if (!mVolume.get() || !plugin || !plugin->isOfType("OXMRenderPlugin"))
        return false;
    plugin->prepareRoles();
    plugin->setScope(OXM::Global);
    if (!mVolume->setValue(OXM::RenderPlugin,
                           OXMObjectLink(plugin.get(), nullptr, OXMenum(), nullptr, OXM::Unknown)))
        return false;
    mRenderPlugin = plugin.get();
    chooseSettingsHolder();
    return true;
}

// --- built-in presets ------------------------------------------------------------------------

bool OXWPresetClassificationHandler::applyDefaultPreset(const QString& name)
{
    OXMObject* material = targetMaterial();
    const int preset = DefaultPresetNames.indexOf(name);
    Range range;
    if (!material || preset < 0 || !greyValueRange(range))
        return false;
    const MessageLock lock({material});
    bool ok = writeDefaultIntervals(*material, preset, range);
    ok = writeDefaultCurves(preset, range) && ok;
    const std::pair<OXMenum, float> constants[] = {
        {OXM::AmbientIntensity, 0.2f},  {OXM::DiffuseIntensity, 0.7f},
        {OXM::SpecularIntensity, 0.1f}, {OXM::EmissionIntensity, 0.0f},
        {OXM::Shininess, 10.0f},        {OXM::Transparency, 1.0f}};
    for (const auto& [channel, value] : constants)
        ok = setChannelConstant(channel, value) && ok;
    return writeDefaultRenderSettings(preset) && ok;
}

// Switched-on intervals are written as OXM::Enabled, the value the editor and the renderer read.
bool OXWPresetClassificationHandler::writeDefaultIntervals(OXMObject& material, int preset,
                                                           Range range)
{
    const bool components = preset == Components;
    const QByteArray names[2] = {
        (components ? QObject::tr("Background") : QObject::tr("Interval 1")).toLocal8Bit(),
        QObject::tr("Components").toLocal8Bit()};
    bool ok = material.setArray(OXM::IntervalIndexList,
                                components ? std::vector<int>{range.first, range.first, range.last}
                                           : std::vector<int>{range.first, range.last});
    ok = material.setArray(OXM::IntervalModeList,
                           components ? std::vector<OXMenum>{OXM::Disabled, OXM::Enabled}
                                      : std::vector<OXMenum>{OXM::Enabled}) &&
         ok;
    return material.setArray(OXM::IntervalNameList,
                             components ? std::vector<const char*>{names[0], names[1]}
                                        : std::vector<const char*>{names[0]}) &&
           ok;
}

bool OXWPresetClassificationHandler::writeDefaultCurves(int preset, Range range)
{
    const float r0 = float(range.first);
    const float r1 = float(range.last);
    const auto q = [&](float f) { return (r0 + 1.0f) + (r1 - r0 - 1.0f) * f; };
    const std::vector<Handle> opacity[] = {{{r0, 0.0f}, {r1, 1.0f}},
                                           {{r0, 1.0f}, {r1, 0.0f}},
                                           {{r0, 0.0f}, {r0 + 1.0f, 1.0f}, {r1, 1.0f}}};
    const std::vector<Handle> one = {{r0, 1.0f}, {r1, 1.0f}};
    const std::vector<Handle> rainbow[3] = {
        {{r0, 0}, {q(0), 0}, {q(0.25f), 0}, {q(0.5f), 0}, {q(0.75f), 1}, {r1, 1}},
        {{r0, 0}, {q(0), 0}, {q(0.25f), 1}, {q(0.5f), 1}, {q(0.75f), 1}, {r1, 0}},
        {{r0, 0}, {q(0), 1}, {q(0.25f), 1}, {q(0.5f), 0}, {q(0.75f), 0}, {r1, 0}}};
    const OXMenum colours[4][3] = {{OXM::AmbientRed, OXM::AmbientGreen, OXM::AmbientBlue},
                                   {OXM::DiffuseRed, OXM::DiffuseGreen, OXM::DiffuseBlue},
                                   {OXM::SpecularRed, OXM::SpecularGreen, OXM::SpecularBlue},
                                   {OXM::EmissionRed, OXM::EmissionGreen, OXM::EmissionBlue}};
    bool ok = preset == IsosurfaceTransparent || setChannelCurve(OXM::Opacity, opacity[preset]);
    ok = setChannelCurve(OXM::Gradient, one) && ok;
    for (int set = 0; set < 4; ++set) {
        for (int c = 0; c < 3; ++c) {
            const bool rainbowColour = preset == Components && set == 0;
            ok = setChannelCurve(colours[set][c], rainbowColour ? rainbow[c] : one) && ok;
        }
    }
    return ok;
}

bool OXWPresetClassificationHandler::writeDefaultRenderSettings(int preset)
{
    if (!mVolume.get())
        return true; // no volume: nothing to render with
    bool ok = true;
    if (preset == IsosurfaceTransparent) {
        ok = setRenderPlugin(QString::fromLatin1(IsosurfacePlugin));
        ok = setChannelConstant(OXM::Transparency, 0.5f) && ok;
    } else if (isOfClass(mRenderPlugin.get(), IsosurfacePlugin)) {
        ok = setRenderPlugin(QString::fromLatin1(VolumePlugin));
        ok = mRenderPlugin.get() && mRenderPlugin->setValue(ShadingModelName, OXM::Phong) && ok;
    }
    OXMObject* plugin = mRenderPlugin.get();
    OXMObject* settings = mSettingsHolder.get();
    const float distance = preset == IsosurfaceTransparent ? 1.0f : 0.5f;
    ok = ((plugin && plugin->setValue(OXM::SamplingDistance, distance)) ||
          (settings && settings->setValue(OXM::SamplingDistance, distance))) &&
         ok;
    if (isOfClass(plugin, Oxm2Plugin))
        return ok;
    ok = settings && settings->setValue(OXM::GradientNormalization, OXM::False) && ok;
    return settings && settings->setValue(ShadingCountLimitName, 0) && ok;
}

OXMObject* OXWPresetClassificationHandler::targetMaterial() const
{
    OXMObject* target = getTargetObject();
    return target ? target->getLinkedObject(OXM::ApplicationSampleMaterial) : nullptr;
}

bool OXWPresetClassificationHandler::setChannelCurve(OXMenum channel,
                                                     const std::vector<Handle>& handles)
{
    OXMObject* material = targetMaterial();
    OXMObject* object = material ? material->getLinkedObject(channel) : nullptr;
    if (!object)
        return false;
    const MessageLock lock({object});
    bool ok = object->setValue(OXM::Scale, 1.0f);
    ok = object->setValue(OXM::Bias, 0.0f) && ok;
    ok = object->setValue(OXM::MapMode, OXM::LookupTable) && ok;
    ok = object->setValue(OXM::LookupTableHandleMode, OXM::Linear) && ok;
    return object->setArray(OXM::LookupTableHandleList, handles) && ok;
}

bool OXWPresetClassificationHandler::setChannelConstant(OXMenum channel, float value)
{
    OXMObject* material = targetMaterial();
    OXMObject* object = material ? material->getLinkedObject(channel) : nullptr;
    if (!object)
        return false;
    const MessageLock lock({object});
    bool ok = object->setValue(OXM::Scale, value);
    ok = object->setValue(OXM::Bias, 0.0f) && ok;
    return object->setValue(OXM::MapMode, OXM::Constant) && ok;
}
