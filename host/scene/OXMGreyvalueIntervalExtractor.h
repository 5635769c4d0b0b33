#pragma once

#include "OXMenum.h"

class OXMAction;
class OXMObject;
class OXMTaskInfo;

// The work of the action OXM::ExtractGreyvalueInterval of volumes and regions of interest
// (parameters: OXMGreyvalueIntervalExtraction). It marks the voxels of the interval on every
// core, reporting progress and stopping on an abort request, and makes of them
// - a region: a mask over the source volume's grid (inside a region, only the region's voxels
//   count);
// - a volume: the voxels' bounding box cut out of the grid, the voxels outside the interval
//   set to the grey value of bin b0 (of bin b1 + 1 when b0 lies below the type's range, as
//   for the first interval of unsigned data), with the default material, histogram and
//   renderer.
// Integer channels have one bin per grey value (the pair (b0, b1) covers the grey values
// b0+1 .. b1); floating-point channels have the bins of the object's histogram over the data
// range.
class OXMGreyvalueIntervalExtractor
{
public:
    // The action, for an object's constructor.
    static OXMAction* createAction();

    // The action's work: OXM::NoError with the new object in the parameters; OXM::InvalidValue
    // without parameters or for an unknown channel, OXM::MissingAFObject when the object has
    // no data, OXM::Abort on request, OXM::GenericError for a volume of no voxels.
    static OXMenum run(OXMObject& source, void* parameters, OXMTaskInfo& task);
};
