#include "OXWSceneManager.h"

#include "OXWApplication.h"

#include <OXMClassFactory.h>
#include <OXMMetaClass.h>
#include <OXMObjectPtr.h>
#include <OXMRegisteredEnum.h>
#include <OXMSingleton.h>
#include <OXMValueArrayPropertyIF.h>

#include <vector>

namespace {

using PathList = OXMValueArrayPropertyIF<OXMObjectPath>;

PathList* selectionList(OXMenum id)
{
    OXWApplication* app = OXMSingleton<OXWApplication>::getInstance();
    return app ? PathList::getInterface(app->getProperty(id)) : nullptr;
}

[[maybe_unused]] const OXMMetaClass* const RegisteredMeta = OXWSceneManager::metaClass();

} // namespace

OXWSceneManager::OXWSceneManager()
{
    addProperty(OXM::Scene, &mScene);
}

OXWSceneManager::OXWSceneManager(const OXWSceneManager& other) : OXWSceneManager()
{
    setValue(OXM::Scene, other.mScene.getValue());
}

OXWSceneManager& OXWSceneManager::operator=(const OXWSceneManager& other)
{
    if (this != &other)
        setValue(OXM::Scene, other.mScene.getValue());
    return *this;
}

OXWSceneManager::~OXWSceneManager() = default;

const OXMMetaClass* OXWSceneManager::metaClass()
{
    static auto* factory = new OXMDefaultClassFactory<OXWSceneManager>;
    static auto* meta = new OXMMetaClass("OXWSceneManager", sizeof(OXWSceneManager),
                                         OXMObject::metaClass(), factory, "oxw");
    return meta;
}

const OXMMetaClass* OXWSceneManager::getMetaClass() const
{
    return metaClass();
}

OXMenum OXWSceneManager::getObjectID(int index) const
{
    static auto* id = new OXMRegisteredEnum("OXWSceneManager");
    return index == 0 ? id->getValue() : OXMObject::getObjectID(index - 1);
}

OXMObject* OXWSceneManager::getScene() const
{
    return mScene.getValue().getLink();
}

bool OXWSceneManager::setScene(OXMObject* scene)
{
    return setValue(OXM::Scene, OXMObjectLink(scene));
}

bool OXWSceneManager::addAndSelectObject(const OXMObjectLink& link, const OXMObjectPath& parentPath)
{
    OXMObject* object = link.getLink();
    OXMObject* parent = parentPath.isEmpty() ? getScene() : parentPath.getLink(-1);
    auto* list = OXMValueArrayPropertyIF<OXMObjectLink>::getInterface(
        parent ? parent->getProperty(link.getPropertyID()) : nullptr);
    if (!object || !list)
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
    PathList* objects = selectionList(OXM::RenderObjectSelectionList);
    PathList* regions = selectionList(OXM::RegionOfInterestSelectionList);
    if (!objects || !regions)
        return false;
    OXMObject* object = path.getLink(-1);
    const bool region = object && object->isRoleActive(OXM::RegionOfInterest);
    const std::vector<OXMObjectPath> one = {path};
    const std::vector<OXMObjectPath> none;
    OXWApplication* app = OXMSingleton<OXWApplication>::getInstance();
    app->lock(OXM::PropertyMessage);
    bool ok = regions->setArray(region ? one : none);
    ok = objects->setArray(region ? none : one) && ok;
    app->unlock(OXM::PropertyMessage);
    return ok;
}

OXMObjectPath OXWSceneManager::getSelection()
{
    const PathList* regions = selectionList(OXM::RegionOfInterestSelectionList);
    const PathList* objects = selectionList(OXM::RenderObjectSelectionList);
    const int regionCount = regions ? regions->getArraySize() : 0;
    if (regionCount == 1)
        return regions->getArray().front();
    if (regionCount == 0 && objects && objects->getArraySize() == 1)
        return objects->getArray().front();
    return OXMObjectPath();
}
