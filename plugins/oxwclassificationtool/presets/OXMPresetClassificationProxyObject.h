#pragma once

#include <OXMObject.h>

#include <array>
#include <functional>
#include <memory>

// A classification preset as the host's preset system keeps it: a plain record object whose
// 26 properties hold the interval layout of a classification, the sixteen transfer channels of
// a material, the rendering method and three render settings, and whether the preset is
// absolute. OXWPresetClassificationHandler fills it from a render object when a preset is
// saved and reads it when one is applied; the host stores it through its properties.
//
// The properties, in this order (the keys in quotes are the plug-in's own):
//   "AbsoluteMode"            OXM::True / OXM::False, default OXM::False: applied at the stored
//                             grey values (absolute) or stretched onto the data's range
//   "IntervalFloatIndexList"  float array, empty: borders as floats; when not empty they take
//                             the place of OXM::IntervalIndexList whenever a preset is applied
//   OXM::IntervalIndexList    int array: n + 1 borders of n intervals (as on a material)
//   OXM::IntervalModeList     enum array: one mode per interval
//   OXM::IntervalNameList     string array: one name per interval
//   OXM::Opacity ... OXM::SpecularIntensity   sixteen channel links (channelIDs()), each the
//                             parent of its own "OXMSampleTransferSpec" object of local scope
//   OXM::RenderPlugin         string: class name of the render plug-in, null by default
//   "ShadingModel"            enum, OXM::Phong
//   OXM::SamplingDistance     float, 1.0
//   OXM::GradientNormalization  enum, OXM::Disabled
//   "ShadingCountLimit"       int, 0
// The emission channels are not part of a preset. Every property but "IntervalFloatIndexList"
// carries the host's OXMProperty::PresetFlag (its flags are 0x80000010).
//
// A channel property that is reset makes a new transfer channel object; a record that can't
// make one keeps that channel without a link. Copies (copy construction, assignment, the
// class factory's clone and assign) get their own channel objects, copies of the source's,
// and a channel that takes its values from another channel of the source takes them from the
// corresponding channel of the copy.
//
// The class is registered with the class manager by the name
// "OXMPresetClassificationProxyObject" in the module "oxwclassificationtool" when the library
// is loaded, and withdrawn when it is unloaded.
class OXMPresetClassificationProxyObject : public OXMObject
{
public:
    OXMPresetClassificationProxyObject();
    OXMPresetClassificationProxyObject(const OXMPresetClassificationProxyObject& other);
    OXMPresetClassificationProxyObject& operator=(const OXMPresetClassificationProxyObject& other);
    ~OXMPresetClassificationProxyObject() override;

    static const OXMMetaClass* metaClass();
    const OXMMetaClass* getMetaClass() const override;
    // Index 0: "OXMPresetClassificationProxyObject" of the namespace "oxwclassificationtool"
    // (registered on first use); index n: OXMObject's index n - 1.
    OXMenum getObjectID(int index) const override;

    static constexpr int ChannelCount = 16;
    // The keys of the channel properties, in the order of the properties.
    static const std::array<OXMenum, ChannelCount>& channelIDs();

    // The channel objects of a record or a material, by channel key (null when missing).
    using ChannelLookup = std::function<OXMObject*(OXMenum)>;
    // The objects that owner's channel links name.
    static ChannelLookup channelsOf(const OXMObject* owner);
    // Carries references between channels over from one set of channels to another: for every
    // channel whose object in holders takes its values from another channel object
    // (OXM::MapMode OXM::Reference), when that object is channel k of from (searched from the
    // last channel to the first), the reference becomes channel k of to. With resetOthers, the
    // OXM::Reference of a holder in another map mode is reset.
    static void redirectChannelReferences(const ChannelLookup& holders, const ChannelLookup& from,
                                          const ChannelLookup& to, bool resetOthers);

private:
    struct Properties;
    void addProperties();
    void assignProperties(const OXMPresetClassificationProxyObject& other);
    std::unique_ptr<Properties> mProperties;
};
