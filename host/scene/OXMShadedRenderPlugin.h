#pragma once

#include "OXMRenderPlugin.h"

// Base of the renderers that keep their own shading: "ShadingModel" (enum of the plug-in's
// namespace, default OXM::Phong) and OXM::SamplingDistance (float, default 1.0). The camera
// ray tracer (OXMOxm2RenderPlugin) has neither: its shading lives in the camera's settings.
class OXMShadedRenderPlugin : public OXMRenderPlugin
{
    OXM_SCENE_CLASS(OXMShadedRenderPlugin)

public:
    OXMShadedRenderPlugin();
    OXMShadedRenderPlugin(const OXMShadedRenderPlugin& other);
    OXMShadedRenderPlugin& operator=(const OXMShadedRenderPlugin& other);
};
