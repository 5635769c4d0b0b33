#pragma once

#include "OXMShadedRenderPlugin.h"

// The renderer object of the class "OXMDDTexture3DRenderPlugin": the hardware 3D-texture renderer.
class OXMDDTexture3DRenderPlugin : public OXMShadedRenderPlugin
{
    OXM_SCENE_CLASS(OXMDDTexture3DRenderPlugin)

public:
    OXMDDTexture3DRenderPlugin() = default;
    OXMDDTexture3DRenderPlugin(const OXMDDTexture3DRenderPlugin& other) = default;
    OXMDDTexture3DRenderPlugin& operator=(const OXMDDTexture3DRenderPlugin& other) = default;
};
