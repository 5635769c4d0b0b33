#pragma once

#include "OXMRenderPlugin.h"

// The renderer object of the class "OXMOxm2RenderPlugin": the camera ray tracer (its shading lives
// in the camera's OXMOxm2RenderSettings).
class OXMOxm2RenderPlugin : public OXMRenderPlugin
{
    OXM_SCENE_CLASS(OXMOxm2RenderPlugin)

public:
    OXMOxm2RenderPlugin() = default;
    OXMOxm2RenderPlugin(const OXMOxm2RenderPlugin& other) = default;
    OXMOxm2RenderPlugin& operator=(const OXMOxm2RenderPlugin& other) = default;
};
