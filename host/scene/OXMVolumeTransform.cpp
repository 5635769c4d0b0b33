#include "OXMVolumeTransform.h"

#include "OXMVolumeRenderObject.h"

OXM_SCENE_CLASS_IMPL(OXMVolumeTransform, "OXMVolumeTransform", OXMSceneObject)

OXMVolumeTransform::OXMVolumeTransform()
{
    addSingle(OXM::Origin, OXMVector3<float>(0.0f, 0.0f, 0.0f));
    addSingle(OXM::TransformMatrix, identity());
}

OXMVolumeTransform::OXMVolumeTransform(const OXMVolumeTransform& other) : OXMVolumeTransform()
{
    copyValuesFrom(other);
}

OXMVolumeTransform& OXMVolumeTransform::operator=(const OXMVolumeTransform& other)
{
    if (this != &other)
        copyValuesFrom(other);
    return *this;
}

std::vector<float> OXMVolumeTransform::identity()
{
    std::vector<float> m(16, 0.0f);
    m[0] = m[5] = m[10] = m[15] = 1.0f;
    return m;
}

bool OXMVolumeTransform::keepInPlace(const OXMVolumeRenderObject& volume)
{
    const std::pair<OXMVector3<float>, OXMVector3<float>> box = volume.getBoundingBox();
    return setValue(OXM::Origin, (box.first + box.second) / 2.0f);
}
