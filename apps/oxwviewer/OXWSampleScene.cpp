#include "OXWSampleScene.h"

#include "OXWImportRenderer.h"

#include <OXMHistogram.h>
#include <OXMObject.h>
#include <OXMObjectLink.h>
#include <OXMObjectPtr.h>
#include <OXMSampleGrid.h>
#include <OXMScene.h>
#include <OXMSceneNames.h>
#include <OXMScenePhantom.h>
#include <OXMVolumeRenderObject.h>
#include <OXWSceneManager.h>

namespace {

bool setLink(OXMObject* object, OXMenum id, OXMObject* target)
{
    auto* p = OXMSingleValuePropertyIF<OXMObjectLink>::getInterface(object->getProperty(id));
    return p && p->setValue(OXMObjectLink(target));
}

OXMVolumeRenderObject* addPhantom(OXMScene* scene, OXMSampleGrid* grid, const char* name)
{
    if (!grid)
        return nullptr;
    // create() takes the grid; the scene's list takes the volume.
    OXMObjectPtr hold(OXMVolumeRenderObject::create(grid, name));
    auto* volume = static_cast<OXMVolumeRenderObject*>(hold.get());
    if (!volume)
        return nullptr;
    OXWImportRenderer::apply(volume, scene);
    if (!scene->addVolume(volume))
        return nullptr;
    OXMHistogram* histogram = volume->getHistogram();
    if (!histogram || !histogram->execute(OXM::Calculate))
        return nullptr;
    return volume;
}

} // namespace

OXMVolumeRenderObject* OXWSampleScene::build(OXMObject* application, int size)
{
    Result result;
    return build(application, size, result) ? result.volume16 : nullptr;
}

bool OXWSampleScene::build(OXMObject* application, int size, Result& result)
{
    result = Result();
    if (!application || size < 1 || !application->getProperty(OXM::Scene))
        return false;
    OXMSceneNames::registerSceneClasses();

    auto* scene = dynamic_cast<OXMScene*>(OXMObject::linkedObject(application, OXM::Scene));
    if (!scene) {
        OXMObjectPtr hold(new OXMScene);
        scene = static_cast<OXMScene*>(hold.get());
        scene->setValue<const char*>(OXM::Name, "Sample");
        if (!setLink(application, OXM::Scene, scene))
            return false;
    }
    result.scene = scene;

    if (application->getProperty(OXM::SceneManager) &&
        !OXMObject::linkedObject(application, OXM::SceneManager)) {
        OXMObjectPtr hold(new OXWSceneManager);
        auto* manager = static_cast<OXWSceneManager*>(hold.get());
        if (!manager->setScene(scene) || !setLink(application, OXM::SceneManager, manager))
            return false;
    }

    result.volume8 = addPhantom(scene, OXMScenePhantom::createGrid8(size), volumeName8());
    if (!result.volume8)
        return false;
    result.volume16 = addPhantom(scene, OXMScenePhantom::createGrid16(size), volumeName16());
    return result.volume16 != nullptr;
}
