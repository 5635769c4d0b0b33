#include "OXMCamera.h"

#include "OXMOxm2RenderSettings.h"
#include "OXMSceneNames.h"
#include "OXMVector3.h"

OXM_SCENE_CLASS_IMPL(OXMCamera, "OXMCamera", OXMSceneObject)

OXMCamera::OXMCamera()
{
    addLinkArray(OXM::RaytracingEngineList, true);
    appendLink(OXM::RaytracingEngineList, OXMObjectLink(new OXMOxm2RenderSettings));
    addSingle(OXMSceneNames::cameraPosition(), OXMVector3<float>(0.0f, 0.0f, 0.0f));
    addSingle(OXMSceneNames::cameraFocalPoint(), OXMVector3<float>(0.0f, 0.0f, 0.0f));
    addSingle(OXMSceneNames::cameraViewUp(), OXMVector3<float>(0.0f, 1.0f, 0.0f));
    addSingle(OXMSceneNames::cameraViewAngle(), 30.0f);
}

OXMCamera::OXMCamera(const OXMCamera& other) : OXMCamera()
{
    copyValuesFrom(other);
}

OXMCamera& OXMCamera::operator=(const OXMCamera& other)
{
    if (this != &other)
        copyValuesFrom(other);
    return *this;
}

OXMOxm2RenderSettings* OXMCamera::getRenderSettings() const
{
    for (const OXMObjectLink& l : getLinks(OXM::RaytracingEngineList))
        if (auto* s = dynamic_cast<OXMOxm2RenderSettings*>(l.getLink()))
            return s;
    return nullptr;
}
