#pragma once

#include "OXMSceneObject.h"

class OXMCamera;
class OXMTulvoRights;
class OXMVolumeRenderObject;
class OXMVolumeTransform;

// The root of a scene. Properties: OXM::Name, OXM::VolumeRenderObjectList (parent-link array:
// each link names a volume and, as auxiliary object, its OXMVolumeTransform) and
// "SceneCameraList" of the plug-in's namespace (parent-link array of OXMCamera; a new scene
// holds one camera) and "TulvoRights" of the same namespace (link to the OXMTulvoRights of
// the open file; a new scene grants every right).
class OXMScene : public OXMSceneObject
{
    OXM_SCENE_CLASS(OXMScene)

public:
    OXMScene();
    OXMScene(const OXMScene& other);
    OXMScene& operator=(const OXMScene& other);

    // Appends the volume with its transform (when null, a new identity transform that keeps the
    // volume where its grid puts it) and sets the volume's OXM::ScenePath.
    bool addVolume(OXMVolumeRenderObject* volume, OXMVolumeTransform* transform = nullptr);
    OXMCamera* getCamera(int index = 0) const;
    OXMTulvoRights* getRights() const;
};
