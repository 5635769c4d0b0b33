#pragma once

#include "OXWPresetConversion.h"

#include <OXMObjectPtr.h>
#include <OXWTransferFunction.h>

class OXMObject;

// Classification presets to and from the transfer functions of other viewers
// (OXWTransferFunction), for OXWPresetClassificationHandler.
//
// To a record (OXMPresetClassificationProxyObject): one enabled interval named after the preset
// over the preset's range (absolute: the bins low .. high; relative: the borders low and high,
// stretched when applied); the opacity curve from the opacity points; the diffuse colour from
// the colour points, the ambient colour a reference to it (the colour shows under any light);
// white specular colour; the intensities, the shininess and the gradient factor from the
// material; transparency 1; the volume renderer with Phong shading. A curve of a single point
// becomes its constant; no opacity points give opacity 1, no colour points white. The record
// is absolute when the preset is.
//
// From a material over the bin range: the intervals flattened into one curve over the range,
// as the classification table shows it, bin for bin: in enabled intervals the opacity curve
// (at its handles and at the ends of each run of bins) times the transparency, 0 in disabled
// intervals and outside every interval; the colours from the diffuse channels at their handles
// and the ends of the range; the material's intensities, shininess and gradient factor (their
// values at the range's first bin). Channels are followed through their references. The result
// is absolute, its range the bin range.
class OXWPresetTransferFunctionMapping
{
public:
    static OXMObjectPtr toRecord(const OXWTransferFunction& preset);
    static bool fromMaterial(const OXMObject& material, OXWPresetConversion::Range range,
                             OXWTransferFunction& preset);
};
