#pragma once

#include "OXMSceneObject.h"
#include "OXMVector3.h"

#include <utility>

class OXMHistogram;
class OXMRenderPlugin;
class OXMSampleGrid;
class OXMSampleMaterial;

// A volume of the scene (role OXM::VolumeRenderObject). Properties:
//   OXM::Name (string), OXM::ScenePath (OXMObjectPath, set when placed in a scene),
//   OXM::SampleGrid (parent link to the OXMSampleGrid), OXM::ApplicationSampleMaterial
//   (parent link to an OXMSampleMaterial), OXM::HistogramList (parent-link array of
//   OXMHistogram), OXM::RenderPlugin (parent link to an OXMRenderPlugin),
//   OXM::RegionOfInterestList (parent-link array of OXMRegionOfInterest),
//   OXM::VolumeComponentList (parent-link array), OXM::VolumeComponentMode (enum, OXM::False),
//   OXM::GradientNormalization (enum, OXM::False), "ShadingCountLimit" (int, 0) and
//   "SurfaceInverted" (enum, OXM::False) of the plug-in's namespace, and OXM::BoundingBox
//   (pair of OXMVector3<float>: minimum and maximum corner, in object coordinates).
// Its place in a scene is a link whose auxiliary object is an OXMVolumeTransform.
// Action OXM::Init gives it what it lacks: material, histogram, render plug-in. Action
// OXM::ExtractGreyvalueInterval makes a region or a volume of the voxels of a grey-value
// interval (OXMGreyvalueIntervalExtractor).
class OXMVolumeRenderObject : public OXMSceneObject
{
    OXM_SCENE_CLASS(OXMVolumeRenderObject)

public:
    OXMVolumeRenderObject();
    OXMVolumeRenderObject(const OXMVolumeRenderObject& other);
    OXMVolumeRenderObject& operator=(const OXMVolumeRenderObject& other);

    // A new volume (auto-delete, no reference yet) with the grid, the name and the defaults
    // of initDefaults(); null when grid is null.
    static OXMVolumeRenderObject* create(OXMSampleGrid* grid, const char* name = "");

    OXMSampleGrid* getSampleGrid() const;
    // Links the grid and updates the bounding box.
    bool setSampleGrid(OXMSampleGrid* grid);
    OXMSampleMaterial* getMaterial() const;
    // The first histogram of the list whose channel reads the input channel.
    OXMHistogram* getHistogram(OXMenum inputChannel = OXM::Gray) const;
    OXMObject* getRenderPlugin() const;

    // The box of the grid's voxels (half a voxel around the voxel centres).
    bool updateBoundingBox();
    std::pair<OXMVector3<float>, OXMVector3<float>> getBoundingBox() const;

    // Adds a default material (over the grid's grey-value index range), a histogram of the
    // grey channel and a volume render plug-in, each only when missing.
    bool initDefaults();
};
