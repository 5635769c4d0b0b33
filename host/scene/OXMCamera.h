#pragma once

#include "OXMSceneObject.h"

class OXMOxm2RenderSettings;

// A camera of the scene. Property OXM::RaytracingEngineList: parent-link array of the
// ray-tracing engines' settings; a new camera holds one OXMOxm2RenderSettings.
class OXMCamera : public OXMSceneObject
{
    OXM_SCENE_CLASS(OXMCamera)

public:
    OXMCamera();
    OXMCamera(const OXMCamera& other);
    OXMCamera& operator=(const OXMCamera& other);

    OXMOxm2RenderSettings* getRenderSettings() const;
};
