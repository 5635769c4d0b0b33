#include "OXMOxm2RenderPlugin.h"

OXM_SCENE_CLASS_IMPL(OXMOxm2RenderPlugin, "OXMOxm2RenderPlugin", OXMRenderPlugin)
