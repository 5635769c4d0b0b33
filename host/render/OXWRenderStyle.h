#pragma once

#include <OXMenum.h>

#include <vector>

class OXMObject;

// How the 3D view draws a volume or region, read from the scene: the render plug-in object
// of the volume (OXM::RenderPlugin) and the settings that go with it. The class of the
// plug-in and its shading model choose the method:
//   "OXMRaytracing::Isosurface::RenderPlugin"   isosurface at the material's iso value
//   shading OXM::Phong                          composite, lit
//   OXM::Maximum                                maximum intensity projection
//   "Sum", "XRay"                               additive (X-Ray in grey)
//   anything else (the scatter models)          composite, unlit
// The shading model is the plug-in's "ShadingModel"; for the camera ray tracer
// ("OXMOxm2RenderPlugin") it is OXM::RenderingMode of the camera's OXMOxm2RenderSettings,
// which also hold its sampling distance. The other settings live on the region when one is
// drawn, else on the volume ("ShadingCountLimit", "SurfaceInverted"), and on the volume
// (OXM::GradientNormalization).
struct OXWRenderStyle
{
    enum class Method
    {
        Composite,
        Isosurface,
        MaximumIntensity,
        Additive,
    };

    Method method = Method::Composite;
    bool shaded = true;
    bool grey = false; // X-Ray: the additive projection in grey
    // Between samples along a ray, in voxels (1 / oversampling).
    float samplingDistance = 1.0f;
    bool gradientNormalization = false;
    // Isosurface: only the surface nearest to the eye, and the inside shown as outside.
    bool innerSurfacesRemoved = false;
    bool surfaceInverted = false;
    // Isosurface values in the data's native units.
    std::vector<float> isoValues;

    bool operator==(const OXWRenderStyle& other) const;
    bool operator!=(const OXWRenderStyle& other) const { return !(*this == other); }

    // The style of a volume or region; the objects read are appended to sources (a change
    // message of any of them can change the style).
    static OXWRenderStyle read(const OXMObject* object, std::vector<OXMObject*>* sources);
    // The settings of the camera ray tracer: the first OXMOxm2RenderSettings of the first
    // camera of the object's scene; null when there is none.
    static OXMObject* cameraRenderSettings(const OXMObject* object);
};
