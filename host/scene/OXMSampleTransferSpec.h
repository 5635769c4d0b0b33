#pragma once

#include "OXMSceneObject.h"
#include "OXMVector2.h"

#include <vector>

// One transfer channel of a material (opacity, a colour component, an intensity, ...), or the
// channel selection of a histogram. Properties: OXM::MapMode (enum: OXM::LookupTable,
// OXM::Reference or OXM::Constant), OXM::Reference (link to the channel used in reference
// mode), OXM::LookupTableHandleList (array of OXMVector2<float>: x in grey-value index units,
// y 0..1), OXM::LookupTableHandleMode (enum, OXM::Linear), OXM::Scale (float),
// OXM::Bias (float), OXM::InputChannel (enum, OXM::Gray for scalar data). All but the input
// channel are what a classification preset holds (OXMProperty::PresetFlag).
class OXMSampleTransferSpec : public OXMSceneObject
{
    OXM_SCENE_CLASS(OXMSampleTransferSpec)

public:
    OXMSampleTransferSpec();
    OXMSampleTransferSpec(const OXMSampleTransferSpec& other);
    OXMSampleTransferSpec& operator=(const OXMSampleTransferSpec& other);

    // Lookup-table mode with the handles, linear joins, scale 1 and bias 0.
    bool setCurve(const std::vector<OXMVector2<float>>& handles);
    // Constant mode with the value as scale and bias 0.
    bool setConstant(float value);
    // Reference mode, taking the values of channel.
    bool setReference(OXMSampleTransferSpec* channel);

    // Follows reference links from this channel (at most a few steps; cycles end it).
    const OXMSampleTransferSpec* resolve() const;
    // The channel's value at grey index x: the constant, or the linear interpolation of the
    // handles (clamped at both ends), times scale plus bias; 0 without handles.
    float evaluate(float x) const;
};
