#include "OXMDDTexture3DRenderPlugin.h"

OXM_SCENE_CLASS_IMPL(OXMDDTexture3DRenderPlugin, "OXMDDTexture3DRenderPlugin",
                     OXMShadedRenderPlugin)
