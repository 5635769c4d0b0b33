#pragma once

#include "OXMSceneObject.h"

// The ray-tracing settings of a camera, used by the "OXMOxm2RenderPlugin" renderer.
// Properties: OXM::RenderingMode (enum, default "ScatterHQ" of the plug-in's namespace),
// OXM::SamplingDistance (float, 1.0), "ShadingCountLimit" (int, 0), "SurfaceInverted" (enum,
// OXM::False), OXM::GradientNormalization (enum, OXM::False).
class OXMOxm2RenderSettings : public OXMSceneObject
{
    OXM_SCENE_CLASS(OXMOxm2RenderSettings)

public:
    OXMOxm2RenderSettings();
    OXMOxm2RenderSettings(const OXMOxm2RenderSettings& other);
    OXMOxm2RenderSettings& operator=(const OXMOxm2RenderSettings& other);
};
