#pragma once

#include "OXMSceneObject.h"

// Base of the renderer objects linked by a volume's OXM::RenderPlugin. It has no properties of
// its own: each renderer class carries exactly the settings it has (OXMShadedRenderPlugin).
class OXMRenderPlugin : public OXMSceneObject
{
    OXM_SCENE_CLASS(OXMRenderPlugin)

public:
    OXMRenderPlugin();
    OXMRenderPlugin(const OXMRenderPlugin& other);
    OXMRenderPlugin& operator=(const OXMRenderPlugin& other);
};
