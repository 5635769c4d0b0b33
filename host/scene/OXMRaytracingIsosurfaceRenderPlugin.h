#pragma once

#include "OXMShadedRenderPlugin.h"

// The renderer object of the class "OXMRaytracing::Isosurface::RenderPlugin": the isosurface ray
// tracer.
class OXMRaytracingIsosurfaceRenderPlugin : public OXMShadedRenderPlugin
{
    OXM_SCENE_CLASS(OXMRaytracingIsosurfaceRenderPlugin)

public:
    OXMRaytracingIsosurfaceRenderPlugin() = default;
    OXMRaytracingIsosurfaceRenderPlugin(const OXMRaytracingIsosurfaceRenderPlugin& other) = default;
    OXMRaytracingIsosurfaceRenderPlugin&
    operator=(const OXMRaytracingIsosurfaceRenderPlugin& other) = default;
};
