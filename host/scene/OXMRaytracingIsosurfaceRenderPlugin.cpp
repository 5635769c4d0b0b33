#include "OXMRaytracingIsosurfaceRenderPlugin.h"

OXM_SCENE_CLASS_IMPL(OXMRaytracingIsosurfaceRenderPlugin, "OXMRaytracing::Isosurface::RenderPlugin",
                     OXMShadedRenderPlugin)
