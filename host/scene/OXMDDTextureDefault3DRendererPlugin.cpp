#include "OXMDDTextureDefault3DRendererPlugin.h"

OXM_SCENE_CLASS_IMPL(OXMDDTextureDefault3DRendererPlugin, "OXMDDTextureDefault3DRendererPlugin",
                     OXMShadedRenderPlugin)
