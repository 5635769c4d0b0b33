#include "OXWSceneManager.h"

#include "OXMObjectPtr.h"
#include "OXMScene.h"

OXM_SCENE_CLASS_IMPL(OXWSceneManager, "OXWSceneManager", OXMSceneObject)

OXWSceneManager::OXWSceneManager()
{
    addLink(OXM::Scene, false);
    addArray<OXMObjectPath>(OXM::RenderObjectSelectionList);
    addArray<OXMObjectPath>(OXM::RegionOfInterestSelectionList);
}

OXWSceneManager::OXWSceneManager(const OXWSceneManager& other) : OXWSceneManager()
{
    copyValuesFrom(other);
    mHook = other.mHook;
}

OXWSceneManager& OXWSceneManager::operator=(const OXWSceneManager& other)
{
    if (this != &other) {
        copyValuesFrom(other);
        mHook = other.mHook;
    }
    return *this;
}

OXMScene* OXWSceneManager::getScene() const
{
    return dynamic_cast<OXMScene*>(getLinkedObject(OXM::Scene));
}

bool OXWSceneManager::setScene(OXMScene* scene)
{
    return setLinkedObject(OXM::Scene, scene);
}

bool OXWSceneManager::addAndSelectObject(const OXMObjectLink& link, const OXMObjectPath& parentPath)
{
    OXMObject* object = link.getLink();
    OXMObject* parent = parentPath.isEmpty() ? getScene() : parentPath.getLink(-1);
    if (!object || !parent)
        return false;
    auto* list = OXMValueArrayPropertyIF<OXMObjectLink>::getInterface(
        parent->getProperty(link.getPropertyID()));
    if (!list)
        return false;
    OXMObjectPtr hold(object);
    const OXMObjectLink entry(object, link.getAuxLink());
    const int n = list->getArraySize();
    if (!list->setArrayItems(n, n, &entry))
        return false;
    const OXMObjectPath path = OXMObjectPath::fromObject(object);
    object->setValue(OXM::ScenePath, path);
    return select(path);
}

bool OXWSceneManager::select(const OXMObjectPath& path)
{
    OXMObject* object = path.getLink(-1);
    const bool region = object && object->isRoleActive(OXM::RegionOfInterest);
    const std::vector<OXMObjectPath> one = {path};
    const std::vector<OXMObjectPath> none;
    auto* objects = OXMValueArrayPropertyIF<OXMObjectPath>::getInterface(
        getProperty(OXM::RenderObjectSelectionList));
    auto* regions = OXMValueArrayPropertyIF<OXMObjectPath>::getInterface(
        getProperty(OXM::RegionOfInterestSelectionList));
    lock(OXM::PropertyMessage);
    bool ok = regions->setArray(region ? one : none);
    ok = objects->setArray(region ? none : one) && ok;
    unlock(OXM::PropertyMessage);
    if (ok && mHook)
        mHook(path);
    return ok;
}

OXMObjectPath OXWSceneManager::getSelection() const
{
    for (OXMenum id : {OXM::RegionOfInterestSelectionList, OXM::RenderObjectSelectionList}) {
        auto* l = OXMValueArrayPropertyIF<OXMObjectPath>::getInterface(getProperty(id));
        if (l && l->getArraySize() == 1)
            return l->getArray().front();
    }
    return OXMObjectPath();
}
