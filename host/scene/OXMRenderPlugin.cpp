#include "OXMRenderPlugin.h"

#include "OXMSceneNames.h"

OXM_SCENE_CLASS_IMPL(OXMRenderPlugin, "OXMRenderPlugin", OXMSceneObject)

OXMRenderPlugin::OXMRenderPlugin()
{
    addSingle(OXMSceneNames::shadingModel(), OXM::Phong);
    addSingle(OXM::SamplingDistance, 1.0f);
}

OXMRenderPlugin::OXMRenderPlugin(const OXMRenderPlugin& other) : OXMRenderPlugin()
{
    copyValuesFrom(other);
}

OXMRenderPlugin& OXMRenderPlugin::operator=(const OXMRenderPlugin& other)
{
    if (this != &other)
        copyValuesFrom(other);
    return *this;
}
