#include "OXWImportRenderer.h"

#include <OXMCamera.h>
#include <OXMError.h>
#include <OXMObjectRefPtr.h>
#include <OXMOxm2RenderSettings.h>
#include <OXMScene.h>
#include <OXMSceneNames.h>
#include <OXMSingleton.h>
#include <OXMVolumeRenderObject.h>
#include <OXWPreferenceManager.h>

#include <cstring>

namespace {

constexpr const char* CameraRayTracer = "OXMOxm2RenderPlugin";

// The shading model where the renderer keeps it: its own property, else the camera's.
bool writeShadingModel(OXMObject* renderer, const char* className, OXMScene* scene,
                       OXMenum shadingModel)
{
    if (std::strcmp(className, CameraRayTracer) != 0)
        return renderer->setValue(OXMSceneNames::shadingModel(), shadingModel);
    OXMCamera* camera = scene ? scene->getCamera() : nullptr;
    OXMOxm2RenderSettings* settings = camera ? camera->getRenderSettings() : nullptr;
    return settings && settings->setValue(OXM::RenderingMode, shadingModel);
}

} // namespace

bool OXWImportRenderer::apply(OXMVolumeRenderObject* volume, OXMScene* scene)
{
    const OXWPreferenceManager* manager = OXMSingleton<OXWPreferenceManager>::getInstance();
    return apply(volume, scene,
                 manager ? manager->findPreference("Default3DRendererPreferences") : nullptr);
}

bool OXWImportRenderer::apply(OXMVolumeRenderObject* volume, OXMScene* scene,
                              const OXMObject* preference)
{
    if (!volume || !preference)
        return true;
    const char* className = nullptr;
    OXMenum shadingModel;
    if (!preference->getValue(OXMenum::find("RenderPluginName"), className) || !className ||
        !preference->getValue(OXMSceneNames::shadingModel(), shadingModel))
        return false;
    OXMObjectRefPtr renderer(className);
    if (!renderer) {
        OXMError::emitError(volume, OXM::InvalidValue,
                            QStringLiteral("The default 3D renderer '%1' is not available; the "
                                           "volume keeps its renderer")
                                .arg(QString::fromUtf8(className)));
        return false;
    }
    renderer->prepareRoles();
    // The sampling distance of the renderer the volume was made with.
    renderer->copyProperty(volume->getRenderPlugin(), OXM::SamplingDistance);
    const bool shaded = writeShadingModel(renderer.get(), className, scene, shadingModel);
    return volume->setLinkedObject(OXM::RenderPlugin, renderer.get()) && shaded;
}
