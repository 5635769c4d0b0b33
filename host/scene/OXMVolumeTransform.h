#pragma once

#include "OXMSceneObject.h"
#include "OXMVector3.h"

#include <vector>

// The placement of a volume in its scene: the auxiliary object of the volume's scene link.
// Properties: OXM::Origin (OXMVector3<float>, where the volume's bounding-box centre lies)
// and OXM::TransformMatrix (16 floats, row-major, identity by default).
class OXMVolumeRenderObject;

class OXMVolumeTransform : public OXMSceneObject
{
    OXM_SCENE_CLASS(OXMVolumeTransform)

public:
    OXMVolumeTransform();
    OXMVolumeTransform(const OXMVolumeTransform& other);
    OXMVolumeTransform& operator=(const OXMVolumeTransform& other);

    static std::vector<float> identity();
    // Sets the origin to the volume's bounding-box centre: with the identity matrix the
    // volume then lies where its grid puts it.
    bool keepInPlace(const OXMVolumeRenderObject& volume);
};
