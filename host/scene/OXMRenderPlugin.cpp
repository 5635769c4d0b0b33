#include "OXMRenderPlugin.h"

OXM_SCENE_CLASS_IMPL(OXMRenderPlugin, "OXMRenderPlugin", OXMSceneObject)

OXMRenderPlugin::OXMRenderPlugin() = default;

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
