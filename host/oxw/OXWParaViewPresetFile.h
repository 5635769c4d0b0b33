#pragma once

#include "OXWTransferFunction.h"

#include <QByteArray>
#include <QString>

#include <vector>

// ParaView's colour-map presets: a JSON array of maps (a single map object is read too), each
// with "Name", "ColorSpace" ("RGB", "HSV", "Lab", "Diverging", "Lab/CIEDE2000", "Step"; the
// default is "Diverging"), "RGBPoints" [x, r, g, b, ...] (colours 0..1), optionally "Points"
// [x, opacity, midpoint, sharpness, ...], "NanColor", "UseLogScale", and categorical
// "IndexedColors" with "Annotations". Numbers may also be given as strings; other keys are
// ignored, as ParaView does. The JSON is read as leniently as ParaView reads it (OXWJsonReader:
// comments, a comma after the last item, anything after the document).
//
// Each map becomes a relative transfer function (ParaView stretches a preset onto the data's
// range when it applies it), its curves sampled by OXWTransferFunctionSampling; without
// "Points" the opacity is ParaView's default ramp from 0 to 1 over the colour points. What a
// classification can't hold is named in leftOut: "NaN colour", "log scale", "categorical
// colours". A map whose lists don't hold whole points (4 numbers each), hold non-numbers,
// unsorted or repeated x, or nothing to draw is refused (refused says why); the others are
// read.
//
// Writing: one map per transfer function with "Name", "ColorSpace": "RGB", "RGBPoints" and
// "Points" (midpoint 0.5, sharpness 0: linear, as the points are).
class OXWParaViewPresetFile
{
public:
    // False, with the reason in error, when the bytes are no JSON or hold no map at all.
    static bool read(const QByteArray& bytes, std::vector<OXWTransferFunction>& presets,
                     QString& error);
    static QByteArray write(const std::vector<OXWTransferFunction>& presets);
};
