#pragma once

#include "OXMSceneObject.h"
#include "OXMVector2.h"

#include <utility>
#include <vector>

class OXMSampleTransferSpec;

// The classification of a volume or region: interval lists, view ranges and one transfer
// channel object (OXMSampleTransferSpec, a child through a parent link) per channel.
//
// Properties: OXM::IntervalIndexList (int array, n + 1 borders: interval i covers the bins
// b(i)+1 .. b(i+1)), OXM::IntervalModeList (enum array, OXM::Enabled / OXM::Disabled),
// OXM::IntervalNameList (string array), OXM::IsosurfaceValueList (float array),
// OXM::VisibleOpacityIndexRange and OXM::VisibleOpacityValueRange (pairs of floats), and the
// channel links OXM::Opacity, OXM::Gradient, OXM::Transparency, OXM::Shininess and the red,
// green, blue and intensity links of ambient, diffuse, specular and emission. The interval
// lists and the channel links are what a classification preset holds (OXMProperty::PresetFlag).
class OXMSampleMaterial : public OXMSceneObject
{
    OXM_SCENE_CLASS(OXMSampleMaterial)

public:
    OXMSampleMaterial();
    // Copies values and channels; references between the channels are redirected to the
    // copied channels.
    OXMSampleMaterial(const OXMSampleMaterial& other);
    OXMSampleMaterial& operator=(const OXMSampleMaterial& other);

    // The channel keys in a fixed order (opacity, gradient, transparency, shininess, then
    // ambient, diffuse, specular and emission red, green, blue, intensity).
    static const std::vector<OXMenum>& channelIDs();
    OXMSampleTransferSpec* getChannel(OXMenum id) const;

    // Writes the default classification for the grey-value index range first..last: one
    // enabled interval "Interval 1" over the whole range, an opacity ramp, constant gradient,
    // white colours, intensities ambient 0.2 / diffuse 0.7 / specular 0.1 / emission 0,
    // shininess 10, transparency 1, iso value in the middle, the whole range visible. Every
    // channel reads inputChannel.
    bool setDefaultClassification(int first, int last, OXMenum inputChannel = OXM::Gray);

private:
    void redirectReferences(const OXMSampleMaterial& source);
};
