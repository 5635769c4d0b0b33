#pragma once

#include "OXMSceneObject.h"

// Base of the renderer objects linked by a volume's OXM::RenderPlugin. Properties:
// "ShadingModel" (enum of the plug-in's namespace, default OXM::Phong) and
// OXM::SamplingDistance (float, default 1.0).
class OXMRenderPlugin : public OXMSceneObject
{
    OXM_SCENE_CLASS(OXMRenderPlugin)

public:
    OXMRenderPlugin();
    OXMRenderPlugin(const OXMRenderPlugin& other);
    OXMRenderPlugin& operator=(const OXMRenderPlugin& other);
};
