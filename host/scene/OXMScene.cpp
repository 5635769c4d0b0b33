#include "OXMScene.h"

#include "OXMCamera.h"
#include "OXMObjectPath.h"
#include "OXMObjectPtr.h"
#include "OXMSceneNames.h"
#include "OXMTulvoRights.h"
#include "OXMVolumeRenderObject.h"
#include "OXMVolumeTransform.h"

OXM_SCENE_CLASS_IMPL(OXMScene, "OXMScene", OXMSceneObject)

OXMScene::OXMScene()
{
    addSingle<const char*>(OXM::Name, "");
    addLinkArray(OXM::VolumeRenderObjectList, true);
    addLinkArray(OXMSceneNames::sceneCameraList(), true);
    appendLink(OXMSceneNames::sceneCameraList(), OXMObjectLink(new OXMCamera));
    addLink(OXMSceneNames::tulvoRights(), true);
    setValue(OXMSceneNames::tulvoRights(), OXMObjectLink(new OXMTulvoRights));
}

OXMScene::OXMScene(const OXMScene& other) : OXMScene()
{
    copyValuesFrom(other);
}

OXMScene& OXMScene::operator=(const OXMScene& other)
{
    if (this != &other)
        copyValuesFrom(other);
    return *this;
}

bool OXMScene::addVolume(OXMVolumeRenderObject* volume, OXMVolumeTransform* transform)
{
    if (!volume)
        return false;
    OXMObjectPtr hold(transform);
    if (!transform) {
        transform = new OXMVolumeTransform;
        hold = transform;
        transform->keepInPlace(*volume);
    }
    if (!appendLink(OXM::VolumeRenderObjectList, OXMObjectLink(volume, transform)))
        return false;
    return volume->setValue(OXM::ScenePath, OXMObjectPath::fromObject(volume));
}

OXMCamera* OXMScene::getCamera(int index) const
{
    const std::vector<OXMObjectLink> cameras = getLinks(OXMSceneNames::sceneCameraList());
    if (index < 0 || index >= int(cameras.size()))
        return nullptr;
    return dynamic_cast<OXMCamera*>(cameras[std::size_t(index)].getLink());
}

OXMTulvoRights* OXMScene::getRights() const
{
    OXMObjectLink link;
    if (!getValue(OXMSceneNames::tulvoRights(), link))
        return nullptr;
    return dynamic_cast<OXMTulvoRights*>(link.getLink());
}
