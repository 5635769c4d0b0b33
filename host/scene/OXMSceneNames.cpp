#include "OXMSceneNames.h"

#include "OXMCamera.h"
#include "OXMDDTexture3DRenderPlugin.h"
#include "OXMDDTextureDefault3DRendererPlugin.h"
#include "OXMHistogram.h"
#include "OXMHistogramResult.h"
#include "OXMObject.h"
#include "OXMOxm2RenderPlugin.h"
#include "OXMOxm2RenderSettings.h"
#include "OXMRaytracingIsosurfaceRenderPlugin.h"
#include "OXMRaytracingVolumeRenderPlugin.h"
#include "OXMRegionOfInterest.h"
#include "OXMRegisteredEnum.h"
#include "OXMRenderPlugin.h"
#include "OXMSampleGrid.h"
#include "OXMSampleMaterial.h"
#include "OXMSampleTransferSpec.h"
#include "OXMScene.h"
#include "OXMSceneClass.h"
#include "OXMShadedRenderPlugin.h"
#include "OXMTulvoRights.h"
#include "OXMVolumeRenderObject.h"
#include "OXMVolumeTransform.h"

namespace {

OXMenum hostName(const char* name)
{
    return *new OXMRegisteredEnum(name);
}

OXMenum toolName(const char* name)
{
    return *new OXMRegisteredEnum(name, false, OXMClassificationNamespace);
}

} // namespace

// clang-format off
OXMenum OXMSceneNames::dimensions() { static const OXMenum e = hostName("Dimensions"); return e; }
OXMenum OXMSceneNames::spacing() { static const OXMenum e = hostName("Spacing"); return e; }
OXMenum OXMSceneNames::gridOrigin() { static const OXMenum e = hostName("GridOrigin"); return e; }
OXMenum OXMSceneNames::dataVersion() { static const OXMenum e = hostName("DataVersion"); return e; }
OXMenum OXMSceneNames::dataSource() { static const OXMenum e = hostName("DataSource"); return e; }
OXMenum OXMSceneNames::dataSeries() { static const OXMenum e = hostName("DataSeries"); return e; }
OXMenum OXMSceneNames::maskVersion() { static const OXMenum e = hostName("MaskVersion"); return e; }
OXMenum OXMSceneNames::voxelCount() { static const OXMenum e = hostName("VoxelCount"); return e; }
OXMenum OXMSceneNames::dataRange() { static const OXMenum e = hostName("DataRange"); return e; }
OXMenum OXMSceneNames::binCount() { static const OXMenum e = hostName("BinCount"); return e; }
OXMenum OXMSceneNames::cameraPosition() { static const OXMenum e = hostName("CameraPosition"); return e; }
OXMenum OXMSceneNames::cameraFocalPoint() { static const OXMenum e = hostName("CameraFocalPoint"); return e; }
OXMenum OXMSceneNames::cameraViewUp() { static const OXMenum e = hostName("CameraViewUp"); return e; }
OXMenum OXMSceneNames::cameraViewAngle() { static const OXMenum e = hostName("CameraViewAngle"); return e; }
OXMenum OXMSceneNames::shadingModel() { static const OXMenum e = toolName("ShadingModel"); return e; }
OXMenum OXMSceneNames::shadingCountLimit() { static const OXMenum e = toolName("ShadingCountLimit"); return e; }
OXMenum OXMSceneNames::surfaceInverted() { static const OXMenum e = toolName("SurfaceInverted"); return e; }
OXMenum OXMSceneNames::sceneCameraList() { static const OXMenum e = toolName("SceneCameraList"); return e; }
OXMenum OXMSceneNames::tulvoRights() { static const OXMenum e = toolName("TulvoRights"); return e; }
OXMenum OXMSceneNames::scatterHQ() { static const OXMenum e = toolName("ScatterHQ"); return e; }
OXMenum OXMSceneNames::scatter() { static const OXMenum e = toolName("Scatter"); return e; }
OXMenum OXMSceneNames::scatterGradient() { static const OXMenum e = toolName("ScatterGradient"); return e; }
OXMenum OXMSceneNames::xRay() { static const OXMenum e = toolName("XRay"); return e; }
OXMenum OXMSceneNames::sum() { static const OXMenum e = toolName("Sum"); return e; }
// clang-format on

bool OXMSceneNames::registerSceneClasses()
{
    static const bool done = [] {
        using RM = OXMObject::RoleManager;
        RM::addRole(OXM::VolumeRenderObject, OXM::Object);
        RM::addRole(OXM::RegionOfInterest, OXM::Object);
        RM::addDefaultRole(OXMVolumeRenderObject::metaClass(), OXM::VolumeRenderObject);
        RM::addDefaultRole(OXMRegionOfInterest::metaClass(), OXM::RegionOfInterest);
        const OXMMetaClass* metas[] = {
            OXMSceneObject::metaClass(),
            OXMSampleGrid::metaClass(),
            OXMSampleTransferSpec::metaClass(),
            OXMSampleMaterial::metaClass(),
            OXMHistogram::metaClass(),
            OXMHistogramResult::metaClass(),
            OXMVolumeRenderObject::metaClass(),
            OXMRegionOfInterest::metaClass(),
            OXMVolumeTransform::metaClass(),
            OXMScene::metaClass(),
            OXMCamera::metaClass(),
            OXMOxm2RenderSettings::metaClass(),
            OXMRenderPlugin::metaClass(),
            OXMShadedRenderPlugin::metaClass(),
            OXMRaytracingIsosurfaceRenderPlugin::metaClass(),
            OXMRaytracingVolumeRenderPlugin::metaClass(),
            OXMDDTexture3DRenderPlugin::metaClass(),
            OXMDDTextureDefault3DRendererPlugin::metaClass(),
            OXMOxm2RenderPlugin::metaClass(),
            OXMTulvoRights::metaClass(),
        };
        bool ok = true;
        for (const OXMMetaClass* m : metas)
            ok = ok && m && m->isRegistered();
        return ok;
    }();
    return done;
}

namespace {
[[maybe_unused]] const bool SceneClassesRegistered = OXMSceneNames::registerSceneClasses();
}
