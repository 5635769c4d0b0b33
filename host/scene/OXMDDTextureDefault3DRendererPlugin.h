#pragma once

#include "OXMShadedRenderPlugin.h"

// The renderer object of the class "OXMDDTextureDefault3DRendererPlugin": the default hardware
// 3D-texture renderer.
class OXMDDTextureDefault3DRendererPlugin : public OXMShadedRenderPlugin
{
    OXM_SCENE_CLASS(OXMDDTextureDefault3DRendererPlugin)

public:
    OXMDDTextureDefault3DRendererPlugin() = default;
    OXMDDTextureDefault3DRendererPlugin(const OXMDDTextureDefault3DRendererPlugin& other) = default;
    OXMDDTextureDefault3DRendererPlugin&
    operator=(const OXMDDTextureDefault3DRendererPlugin& other) = default;
};
