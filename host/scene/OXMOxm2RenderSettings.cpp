#include "OXMOxm2RenderSettings.h"

#include "OXMSceneNames.h"

OXM_SCENE_CLASS_IMPL(OXMOxm2RenderSettings, "OXMOxm2RenderSettings", OXMSceneObject)

OXMOxm2RenderSettings::OXMOxm2RenderSettings()
{
    addSingle(OXM::RenderingMode, OXMSceneNames::scatterHQ());
    addSingle(OXM::SamplingDistance, 1.0f);
    addSingle(OXMSceneNames::shadingCountLimit(), 0);
    addSingle(OXMSceneNames::surfaceInverted(), OXM::False);
    addSingle(OXM::GradientNormalization, OXM::False);
    markPresetProperties({OXM::RenderingMode, OXM::SamplingDistance,
                          OXMSceneNames::shadingCountLimit(), OXM::GradientNormalization});
}

OXMOxm2RenderSettings::OXMOxm2RenderSettings(const OXMOxm2RenderSettings& other)
    : OXMOxm2RenderSettings()
{
    copyValuesFrom(other);
}

OXMOxm2RenderSettings& OXMOxm2RenderSettings::operator=(const OXMOxm2RenderSettings& other)
{
    if (this != &other)
        copyValuesFrom(other);
    return *this;
}
