#pragma once

#include <OXMObject.h>

#include <memory>
#include <vector>

// The user's choice of the 3D renderer for newly imported data, kept by the host's preference
// manager under "Default3DRendererPreferences". Properties, in this order (keys of the
// namespace "oxwclassificationtool"):
//   "RenderPluginName"   string, "OXMRaytracing::Isosurface::RenderPlugin": the class name
//                        of the render plug-in object
//   "ShadingModel"       enum, OXM::Phong; one of shadingModels(), any other value refused
//   "SecondLightShadow"  OXM::True / OXM::False, the host boolean's default: whether the side
//                        light casts a shadow
//
// The class "OXMDefault3DRendererPreferences" (module "oxwclassificationtool") is registered
// with the class manager, and the role "Default3DRendererPreferences" (parent OXM::Object) made
// its default role, while the library is loaded.
class OXMDefault3DRendererPreferences : public OXMObject
{
public:
    OXMDefault3DRendererPreferences();
    OXMDefault3DRendererPreferences(const OXMDefault3DRendererPreferences& other);
    OXMDefault3DRendererPreferences& operator=(const OXMDefault3DRendererPreferences& other);
    ~OXMDefault3DRendererPreferences() override;

    static const OXMMetaClass* metaClass();
    const OXMMetaClass* getMetaClass() const override;
    // Index 0: "OXMDefault3DRendererPreferences" of the plug-in's namespace (registered on
    // first use); index n: OXMObject's index n - 1.
    OXMenum getObjectID(int index) const override;

    // The allowed shading models, in order: Phong, Scatter, ScatterHQ, ScatterGradient, XRay,
    // Sum, Maximum.
    static const std::vector<OXMenum>& shadingModels();
    static const char* defaultRenderPluginName();

    // Passes a received message on to the object's own listeners as OXM::PropertyChanged of
    // the same property (not again while a pass is running), then to the base.
    void iocCallback(Message& message) override;

private:
    struct Attributes;
    void addAttributes();
    std::unique_ptr<Attributes> mAttributes;
};
