#include "OXMPresetClassificationProxyObject.h"

#include "OXWClassificationToolEnums.h"

#include <OXMBooleanOP.h>
#include <OXMClassFactory.h>
#include <OXMError.h>
#include <OXMMetaClass.h>
#include <OXMObjectParentLinkOP.h>
#include <OXMObjectRefPtr.h>
#include <OXMRegisteredEnum.h>
#include <OXMSingleValueOP.h>
#include <OXMValueArrayOP.h>

#include <new>

namespace {

const OXMRegisteredEnum AbsoluteModeName("AbsoluteMode", false,
                                         OXWClassificationToolEnums::Namespace);
const OXMRegisteredEnum IntervalFloatIndexListName("IntervalFloatIndexList", false,
                                                   OXWClassificationToolEnums::Namespace);
const OXMRegisteredEnum ShadingModelName("ShadingModel", false,
                                         OXWClassificationToolEnums::Namespace);
const OXMRegisteredEnum ShadingCountLimitName("ShadingCountLimit", false,
                                              OXWClassificationToolEnums::Namespace);

// The host's flag values for the record's property objects; the host gives them meaning.
constexpr unsigned BuiltFlag = 0x10u;
constexpr unsigned PresetFlag = 0x20000000u; // OXMProperty::PresetFlag
constexpr unsigned FloatListFlags = 0x80000010u;
constexpr unsigned ListFlags = 0x20000010u;
constexpr unsigned RecordClearedFlags = 0x110100u;
constexpr unsigned RecordFlags = 0x20000000u;

// A channel: the parent link to a transfer channel object of the record's own, made anew
// whenever the property is reset.
class ChannelProperty : public OXMObjectParentLinkOP
{
public:
    bool reset() override
    {
        OXMObjectRefPtr channel("OXMSampleTransferSpec");
        if (!channel)
            return false;
        channel->prepareRoles();
        if (!setValue(OXMObjectLink(channel.get(), nullptr, OXMenum(), nullptr, OXM::Unknown)))
            return false;
        return channel->setScope(OXM::Local);
    }
    OXMProperty* clone() const override { return new ChannelProperty(*this); }
};

// Builds a single-value or channel property as the record's properties are built.
template <typename P, typename Default>
void build(P& property, const Default& value)
{
    property.setProtectedFlags(BuiltFlag, 0);
    property.setValue(value);
    property.setProtectedFlags(PresetFlag, 0);
}

} // namespace

struct OXMPresetClassificationProxyObject::Properties
{
    OXMBooleanOP absoluteMode;
    OXMValueArrayOP<float> intervalFloatIndexList;
    OXMValueArrayOP<int> intervalIndexList;
    OXMValueArrayOP<OXMenum> intervalModeList;
    OXMValueArrayOP<const char*> intervalNameList;
    ChannelProperty channels[ChannelCount];
    OXMSingleValueOP<const char*> renderPlugin;
    OXMSingleValueOP<OXMenum> shadingModel;
    OXMSingleValueOP<float> samplingDistance;
    OXMSingleValueOP<OXMenum> gradientNormalization;
    OXMSingleValueOP<int> shadingCountLimit;

    Properties()
    {
        absoluteMode.setProtectedFlags(BuiltFlag, 0);
        if (!absoluteMode.setValue(OXM::False) && !absoluteMode.setValue(OXM::Disabled))
            absoluteMode.reset();
        absoluteMode.setProtectedFlags(PresetFlag, 0);
        intervalFloatIndexList.setProtectedFlags(FloatListFlags, 0);
        for (OXMProperty* list : std::initializer_list<OXMProperty*>{
                 &intervalIndexList, &intervalModeList, &intervalNameList})
            list->setProtectedFlags(ListFlags, 0);
        for (ChannelProperty& channel : channels) {
            channel.setProtectedFlags(BuiltFlag, 0);
            channel.reset();
            channel.setProtectedFlags(PresetFlag, 0);
        }
        build(renderPlugin, static_cast<const char*>(nullptr));
        build(shadingModel, OXM::Phong);
        build(samplingDistance, 1.0f);
        build(gradientNormalization, OXM::Disabled);
        build(shadingCountLimit, 0);
    }

    // The properties with their keys, in the record's order.
    std::vector<std::pair<OXMenum, OXMProperty*>> all()
    {
        std::vector<std::pair<OXMenum, OXMProperty*>> list = {
            {AbsoluteModeName, &absoluteMode},
            {IntervalFloatIndexListName, &intervalFloatIndexList},
            {OXM::IntervalIndexList, &intervalIndexList},
            {OXM::IntervalModeList, &intervalModeList},
            {OXM::IntervalNameList, &intervalNameList}};
        for (int c = 0; c < ChannelCount; ++c)
            list.emplace_back(channelIDs()[std::size_t(c)], &channels[c]);
        list.insert(list.end(), {{OXM::RenderPlugin, &renderPlugin},
                                 {ShadingModelName, &shadingModel},
                                 {OXM::SamplingDistance, &samplingDistance},
                                 {OXM::GradientNormalization, &gradientNormalization},
                                 {ShadingCountLimitName, &shadingCountLimit}});
        return list;
    }
};

const std::array<OXMenum, OXMPresetClassificationProxyObject::ChannelCount>&
OXMPresetClassificationProxyObject::channelIDs()
{
    static const std::array<OXMenum, ChannelCount> ids = {
        OXM::Opacity,     OXM::Gradient,      OXM::Shininess,    OXM::Transparency,
        OXM::AmbientRed,  OXM::AmbientGreen,  OXM::AmbientBlue,  OXM::AmbientIntensity,
        OXM::DiffuseRed,  OXM::DiffuseGreen,  OXM::DiffuseBlue,  OXM::DiffuseIntensity,
        OXM::SpecularRed, OXM::SpecularGreen, OXM::SpecularBlue, OXM::SpecularIntensity};
    return ids;
}

OXMPresetClassificationProxyObject::OXMPresetClassificationProxyObject()
{
    setProtectedFlags(0, RecordClearedFlags);
    addProperties();
    metaClass()->applyDefaultFlags(this);
}

OXMPresetClassificationProxyObject::OXMPresetClassificationProxyObject(
    const OXMPresetClassificationProxyObject& other)
    : OXMObject(other)
{
    addProperties();
    assignProperties(other);
    metaClass()->applyDefaultFlags(this);
}

OXMPresetClassificationProxyObject&
OXMPresetClassificationProxyObject::operator=(const OXMPresetClassificationProxyObject& other)
{
    if (this != &other) {
        OXMObject::operator=(other);
        assignProperties(other);
    }
    return *this;
}

OXMPresetClassificationProxyObject::~OXMPresetClassificationProxyObject() = default;

void OXMPresetClassificationProxyObject::addProperties()
{
    mProperties.reset(new (std::nothrow) Properties);
    if (!mProperties) {
        OXMError::emitError(this, OXM::OutOfMemory);
        return;
    }
    bool ok = true;
    for (const auto& [id, property] : mProperties->all())
        ok = addProperty(id, property) && ok;
    ok = setFlags(RecordFlags, 0) && ok;
    if (!ok)
        OXMError::emitError(this, OXM::GenericError);
}

void OXMPresetClassificationProxyObject::assignProperties(
    const OXMPresetClassificationProxyObject& other)
{
    if (!mProperties)
        return;
    for (const auto& [id, property] : mProperties->all()) {
        const OXMProperty* theirs = other.getProperty(id);
        if (!theirs) {
            continue;
        }
        if (!property->isParentLink()) {
            property->assignFrom(*theirs);
            continue;
        }
        OXMObject* source = other.getLinkedObject(id);
        OXMObjectPtr copy(dynamic_cast<OXMObject*>(source ? OXMMetaClass::clone(source) : nullptr));
        setValue(id, OXMObjectLink(copy.get()));
    }
    // References between the source's channels become references between the copies.
    redirectChannelReferences(channelsOf(this), channelsOf(&other), channelsOf(this), false);
}

OXMPresetClassificationProxyObject::ChannelLookup
OXMPresetClassificationProxyObject::channelsOf(const OXMObject* owner)
{
    return [owner](OXMenum id) { return owner ? owner->getLinkedObject(id) : nullptr; };
}

void OXMPresetClassificationProxyObject::redirectChannelReferences(const ChannelLookup& holders,
                                                                   const ChannelLookup& from,
                                                                   const ChannelLookup& to,
                                                                   bool resetOthers)
{
    for (OXMenum id : channelIDs()) {
        OXMObject* holder = holders(id);
        OXMenum mode = OXM::Unknown;
        if (!holder || !holder->getValue(OXM::MapMode, mode))
            continue;
        if (mode != OXM::Reference) {
            if (OXMProperty* reference =
                    resetOthers ? holder->getProperty(OXM::Reference) : nullptr)
                reference->reset();
            continue;
        }
        const OXMObject* referenced = holder->getLinkedObject(OXM::Reference);
        const auto& ids = channelIDs();
        for (auto k = ids.rbegin(); referenced && k != ids.rend(); ++k) {
            if (from(*k) == referenced) {
                holder->setValue(OXM::Reference, OXMObjectLink(to(*k)));
                break;
            }
        }
    }
}

const OXMMetaClass* OXMPresetClassificationProxyObject::metaClass()
{
    static OXMDefaultClassFactory<OXMPresetClassificationProxyObject> factory;
    static OXMMetaClass meta(
        "OXMPresetClassificationProxyObject", sizeof(OXMPresetClassificationProxyObject),
        OXMObject::metaClass(), &factory, OXWClassificationToolEnums::Namespace,
        OXMObject::metaClass()->isSingleton() ? unsigned(OXMMetaClass::Singleton) : 0u);
    return &meta;
}

const OXMMetaClass* OXMPresetClassificationProxyObject::getMetaClass() const
{
    return metaClass();
}

OXMenum OXMPresetClassificationProxyObject::getObjectID(int index) const
{
    static const OXMRegisteredEnum id("OXMPresetClassificationProxyObject", false,
                                      OXWClassificationToolEnums::Namespace);
    return index == 0 ? id.getValue() : OXMObject::getObjectID(index - 1);
}

namespace {
// The class is known to the host as soon as the library is loaded.
[[maybe_unused]] const OXMMetaClass* const RegisteredMeta =
    OXMPresetClassificationProxyObject::metaClass();
} // namespace
