#pragma once

class OXMObject;
class OXMScene;
class OXMVolumeRenderObject;

// The renderer that newly imported volumes get: the choice of the preference
// "Default3DRendererPreferences" (a plug-in's, registered with the preference manager), whose
// "RenderPluginName" names the class of the render plug-in object and whose "ShadingModel" is
// written into that object, or, for the camera ray tracer ("OXMOxm2RenderPlugin", whose
// shading belongs to the camera), into the scene camera's render settings.
//
// Without that preference the volume keeps the renderer it was made with. A class name that
// no class has is reported (OXMError, naming the class) and changes nothing.
class OXWImportRenderer
{
public:
    // False when the preference exists but could not be applied.
    static bool apply(OXMVolumeRenderObject* volume, OXMScene* scene);
    // The same with the preference object given (null: nothing to apply).
    static bool apply(OXMVolumeRenderObject* volume, OXMScene* scene, const OXMObject* preference);
};
