#pragma once

#include "OXMInterval.h"
#include "OXMObjectPath.h"
#include "OXMenum.h"

class OXMRegionOfInterest;
class OXMVolumeRenderObject;

// Segments a volume (or a region of it) by a grey-value interval. The interval is a border
// pair (b0, b1) of a material's OXM::IntervalIndexList: it covers the histogram bins b0+1 to
// b1 (for integer data the grey values b0+1 .. b1; for floating-point data the bins of the
// histogram over the data range). The path's last object is the volume or a region of it;
// for a region only its voxels are considered. The new objects are not yet in the scene
// (auto-delete, no reference): hand them to OXWSceneManager::addAndSelectObject.
class OXWRoiAndVolumeExtractor
{
public:
    // A region over the source volume's grid holding the voxels of the interval; null when
    // the path names no volume or region with data, or the channel is unknown.
    static OXMRegionOfInterest* createROIFromGreyvalueInterval(const OXMObjectPath& path,
                                                               OXMenum channel,
                                                               const OXMInterval& interval);
    // A new volume (with default material, histogram and renderer) holding only the voxels of
    // the interval, cropped to their bounding box; the other voxels of the box get the grey
    // value of bin b0. Null on the failures above or when no voxel lies in the interval.
    static OXMVolumeRenderObject*
    createVolumeRenderObjectFromGreyvalueInterval(const OXMObjectPath& path, OXMenum channel,
                                                  const OXMInterval& interval);
};
