#include "OXWRenderStyle.h"

#include <OXMMetaClass.h>
#include <OXMObject.h>
#include <OXMObjectLink.h>
#include <OXMObjectPath.h>
#include <OXMSceneNames.h>
#include <OXMSingleValuePropertyIF.h>
#include <OXMValueArrayPropertyIF.h>

#include <cstring>

namespace {

bool isClass(const OXMObject* object, const char* name)
{
    const OXMMetaClass* meta = object ? object->getMetaClass() : nullptr;
    return meta && std::strcmp(meta->getClassName(), name) == 0;
}

// The scene that holds the object: the first element of its scene path.
OXMObject* sceneOf(const OXMObject* object)
{
    OXMObjectPath path;
    if (!object || !object->getValue(OXM::ScenePath, path) || path.isEmpty())
        return nullptr;
    return path.getLink(0);
}

OXWRenderStyle::Method methodFor(const OXMObject* plugin, OXMenum shading, bool& shaded, bool& grey)
{
    using Method = OXWRenderStyle::Method;
    shaded = shading == OXM::Phong;
    grey = shading == OXMSceneNames::xRay();
    if (isClass(plugin, "OXMRaytracing::Isosurface::RenderPlugin")) {
        shaded = true;
        return Method::Isosurface;
    }
    if (shading == OXM::Maximum)
        return Method::MaximumIntensity;
    if (shading == OXMSceneNames::xRay() || shading == OXMSceneNames::sum())
        return Method::Additive;
    return Method::Composite;
}

} // namespace

bool OXWRenderStyle::operator==(const OXWRenderStyle& o) const
{
    return method == o.method && shaded == o.shaded && grey == o.grey &&
           samplingDistance == o.samplingDistance &&
           gradientNormalization == o.gradientNormalization &&
           innerSurfacesRemoved == o.innerSurfacesRemoved && surfaceInverted == o.surfaceInverted &&
           isoValues == o.isoValues;
}

OXMObject* OXWRenderStyle::cameraRenderSettings(const OXMObject* object)
{
    const std::vector<OXMObjectLink> cameras =
        OXMObject::arrayOf<OXMObjectLink>(sceneOf(object), OXMSceneNames::sceneCameraList());
    if (cameras.empty())
        return nullptr;
    for (const OXMObjectLink& link :
         OXMObject::arrayOf<OXMObjectLink>(cameras.front().getLink(), OXM::RaytracingEngineList))
        if (isClass(link.getLink(), "OXMOxm2RenderSettings"))
            return link.getLink();
    return nullptr;
}

OXWRenderStyle OXWRenderStyle::read(const OXMObject* object, std::vector<OXMObject*>* sources)
{
    OXWRenderStyle style;
    if (!object)
        return style;
    const bool region = object->isRoleActive(OXM::RegionOfInterest);
    const OXMObject* volume = region ? object->getParentLink().getOwner() : object;
    OXMObject* plugin = OXMObject::linkedObject(volume, OXM::RenderPlugin);
    const bool cameraTracer = isClass(plugin, "OXMOxm2RenderPlugin");
    OXMObject* cameraSettings = cameraTracer ? cameraRenderSettings(object) : nullptr;
    const OXMObject* settings = cameraTracer ? cameraSettings : object;
    if (sources) {
        for (const OXMObject* o : {volume, static_cast<const OXMObject*>(plugin),
                                   static_cast<const OXMObject*>(cameraSettings), object})
            if (o)
                sources->push_back(const_cast<OXMObject*>(o));
    }

    OXMenum shading = OXM::Phong;
    if (cameraTracer) {
        if (settings)
            settings->getValue(OXM::RenderingMode, shading);
    } else if (plugin) {
        plugin->getValue(OXMSceneNames::shadingModel(), shading);
    }
    style.method = methodFor(plugin, shading, style.shaded, style.grey);
    float distance = 1.0f;
    if ((cameraTracer ? settings : plugin) &&
        (cameraTracer ? settings : plugin)->getValue(OXM::SamplingDistance, distance) &&
        distance > 0.0f)
        style.samplingDistance = distance;

    OXMenum flag = OXM::False;
    int limit = 0;
    if (settings && settings->getValue(OXMSceneNames::surfaceInverted(), flag))
        style.surfaceInverted = flag == OXM::True;
    if (settings && settings->getValue(OXMSceneNames::shadingCountLimit(), limit))
        style.innerSurfacesRemoved = limit == 1;
    flag = OXM::False;
    if (volume && volume->getValue(OXM::GradientNormalization, flag))
        style.gradientNormalization = flag == OXM::True;

    OXMObject* material = OXMObject::linkedObject(object, OXM::ApplicationSampleMaterial);
    auto* iso = OXMValueArrayPropertyIF<float>::getInterface(
        material ? material->getProperty(OXM::IsosurfaceValueList) : nullptr);
    if (iso)
        style.isoValues = iso->getArray();
    return style;
}
