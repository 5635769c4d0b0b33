#include "OXMRaytracingVolumeRenderPlugin.h"

OXM_SCENE_CLASS_IMPL(OXMRaytracingVolumeRenderPlugin, "OXMRaytracing::Volume::RenderPlugin",
                     OXMShadedRenderPlugin)
