#pragma once

#include "OXMShadedRenderPlugin.h"

// The renderer object of the class "OXMRaytracing::Volume::RenderPlugin": the volume ray tracer.
class OXMRaytracingVolumeRenderPlugin : public OXMShadedRenderPlugin
{
    OXM_SCENE_CLASS(OXMRaytracingVolumeRenderPlugin)

public:
    OXMRaytracingVolumeRenderPlugin() = default;
    OXMRaytracingVolumeRenderPlugin(const OXMRaytracingVolumeRenderPlugin& other) = default;
    OXMRaytracingVolumeRenderPlugin&
    operator=(const OXMRaytracingVolumeRenderPlugin& other) = default;
};
