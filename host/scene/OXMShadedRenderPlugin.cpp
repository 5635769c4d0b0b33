#include "OXMShadedRenderPlugin.h"

#include "OXMSceneNames.h"

OXM_SCENE_CLASS_IMPL(OXMShadedRenderPlugin, "OXMShadedRenderPlugin", OXMRenderPlugin)

OXMShadedRenderPlugin::OXMShadedRenderPlugin()
{
    addSingle(OXMSceneNames::shadingModel(), OXM::Phong);
    addSingle(OXM::SamplingDistance, 1.0f);
    markPresetProperties({OXMSceneNames::shadingModel(), OXM::SamplingDistance});
}

OXMShadedRenderPlugin::OXMShadedRenderPlugin(const OXMShadedRenderPlugin& other)
    : OXMShadedRenderPlugin()
{
    copyValuesFrom(other);
}

OXMShadedRenderPlugin& OXMShadedRenderPlugin::operator=(const OXMShadedRenderPlugin& other)
{
    if (this != &other)
        copyValuesFrom(other);
    return *this;
}
