#pragma once

#include "OXMInterval.h"
#include "OXMenum.h"

class OXMObject;

// The parameters of the action OXM::ExtractGreyvalueInterval of volumes and regions of
// interest: the voxels of the object whose grey value in the channel lies in the interval of
// the object's histogram (the border pair (b0, b1) covers the bins b0+1 .. b1), made into a
// new region or a new volume. On success the action leaves the new object in `created`: not
// yet in any scene, with no reference held (auto-delete), so the caller holds or places it.
struct OXMGreyvalueIntervalExtraction
{
    enum class Result
    {
        Region,
        Volume
    };

    OXMenum channel = OXM::Gray;
    OXMInterval interval;
    Result result = Result::Region;
    OXMObject* created = nullptr;
};
