#pragma once

#include "OXMSceneObject.h"

class OXMOxm2RenderSettings;

// A camera of the scene. Properties: OXM::RaytracingEngineList, parent-link array of the
// ray-tracing engines' settings (a new camera holds one OXMOxm2RenderSettings); the view,
// "CameraPosition", "CameraFocalPoint" and "CameraViewUp" (OXMVector3<float>) and
// "CameraViewAngle" (float, degrees). A camera whose position equals its focal point has no
// view yet: the 3D view places it around what it shows.
class OXMCamera : public OXMSceneObject
{
    OXM_SCENE_CLASS(OXMCamera)

public:
    OXMCamera();
    OXMCamera(const OXMCamera& other);
    OXMCamera& operator=(const OXMCamera& other);

    OXMOxm2RenderSettings* getRenderSettings() const;
};
