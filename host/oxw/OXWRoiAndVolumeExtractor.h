#pragma once

#include <OXMInterval.h>
#include <OXMObjectPath.h>
#include <OXMenum.h>

class OXMObject;

// Segments a volume, or a region of it, by a grey-value interval: the last object of the path
// runs its action OXM::ExtractGreyvalueInterval (OXMGreyvalueIntervalExtraction) with the
// progress in the main window's status bar, where Cancel stops it. The interval is a border
// pair (b0, b1) of a material's OXM::IntervalIndexList: it covers the histogram bins b0+1 to
// b1 of the channel. The new object is not yet in the scene and no reference to it is held
// (auto-delete): hand it to OXWSceneManager::addAndSelectObject.
class OXWRoiAndVolumeExtractor
{
public:
    // A new region of interest over the source volume's grid holding the voxels of the
    // interval; null when the path names no volume or region with data, the channel is
    // unknown or the user cancelled.
    static OXMObject* createROIFromGreyvalueInterval(const OXMObjectPath& path, OXMenum channel,
                                                     const OXMInterval& interval);
    // A new volume render object holding only the voxels of the interval, cropped to them;
    // null on the failures above or when no voxel lies in the interval.
    static OXMObject* createVolumeRenderObjectFromGreyvalueInterval(const OXMObjectPath& path,
                                                                    OXMenum channel,
                                                                    const OXMInterval& interval);
};
