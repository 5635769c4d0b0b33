#pragma once

#include "OXWTransferFunction.h"

#include <QByteArray>
#include <QString>

#include <vector>

// 3D Slicer's volume-rendering presets (presets.xml): an <MRML> root with one <VolumeProperty>
// element per preset, whose attributes are read as Slicer reads them: "name", "interpolation"
// (0 nearest, 1 linear), "shade", "ambient", "diffuse", "specular", "specularPower",
// "scalarOpacity" and "gradientOpacity" (a count N, then N numbers: (x, a) pairs),
// "colorTransfer" (a count N, then N numbers: (x, r, g, b) quadruples), optionally
// "effectiveRange" ("low high"). Missing attributes take VTK's defaults; elements and
// attributes Slicer ignores are ignored.
//
// Each volume property becomes an absolute transfer function (x is in data units). What a
// classification can't hold is named in leftOut: "nearest-neighbour interpolation",
// "shading off", "gradient opacity" (one that is not the same for every gradient). A volume
// property whose counts don't match the numbers that follow, or whose numbers are not finite,
// unsorted or repeated, is refused (refused says why); the others are read.
//
// Writing: an <MRML> document with one <VolumeProperty> per transfer function, linear and
// shaded, its material, both lists and its range as effectiveRange.
class OXWSlicerPresetFile
{
public:
    // False, with the reason in error, when the bytes are no well-formed XML or hold no
    // volume property.
    static bool read(const QByteArray& bytes, std::vector<OXWTransferFunction>& presets,
                     QString& error);
    static QByteArray write(const std::vector<OXWTransferFunction>& presets);
};
