#pragma once

#include "OXMSceneObject.h"

#include <cstdint>
#include <memory>
#include <vector>

class OXMHistogram;
class OXMSampleGrid;
class OXMSampleMaterial;
class OXMVolumeRenderObject;

// A region of interest (role OXM::RegionOfInterest): a voxel mask over the grid of its volume
// (the owner of its parent link, through the volume's OXM::RegionOfInterestList), with its own
// classification. Properties: OXM::Name, OXM::ScenePath, OXM::SampleGrid (empty: the volume's
// grid is used), OXM::ApplicationSampleMaterial, OXM::HistogramList, OXM::GradientNormalization,
// "ShadingCountLimit", "SurfaceInverted", "MaskVersion" (int, a new unique number whenever the
// mask changes) and "VoxelCount" (int, voxels in the mask).
// Action OXM::Init adds a default material over the grey values of the region's voxels and a
// histogram, each only when missing. Action OXM::ExtractGreyvalueInterval makes a region or a
// volume of the region's voxels of a grey-value interval (OXMGreyvalueIntervalExtractor).
class OXMRegionOfInterest : public OXMSceneObject
{
    OXM_SCENE_CLASS(OXMRegionOfInterest)

public:
    OXMRegionOfInterest();
    OXMRegionOfInterest(const OXMRegionOfInterest& other);
    OXMRegionOfInterest& operator=(const OXMRegionOfInterest& other);

    OXMVolumeRenderObject* getVolume() const;
    // Own grid if linked, else the volume's.
    OXMSampleGrid* getSampleGrid() const;
    OXMSampleMaterial* getMaterial() const;
    OXMHistogram* getHistogram(OXMenum inputChannel = OXM::Gray) const;

    // One byte per voxel of the grid, non-zero inside the region.
    bool setMask(std::vector<std::uint8_t> mask);
    const std::vector<std::uint8_t>& getMask() const;
    int getMaskVersion() const;
    long long getMaskVoxelCount() const;

    bool initDefaults();

private:
    std::shared_ptr<const std::vector<std::uint8_t>> mMask;
};
