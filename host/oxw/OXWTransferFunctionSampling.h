#pragma once

#include "OXWTransferFunction.h"

#include <QString>

#include <vector>

// Turns the curves of VTK-based viewers into piecewise-linear RGB points (OXWTransferFunction):
// what VTK interpolates between two nodes (in a colour space, with a midpoint and a sharpness)
// is sampled into points until following them linearly stays within MaxError of the curve in
// every channel (at most 2^MaxDepth segments per node interval).
//
// Colours: the nodes' RGB (clamped to 0..1) interpolated as VTK's colour transfer function does in
// each colour space: RGB linearly; HSV linearly in hue, saturation and value without wrapping
// around (ParaView's default); Lab linearly in CIELAB (sRGB, D65); Diverging in Moreland's
// Msh space, through white between two distinct saturated colours; Lab/CIEDE2000 like Lab;
// Step holds a node's colour up to the next node (a step one thousandth of the interval wide).
//
// Opacity: VTK's piecewise function between node i and i + 1 with node i's midpoint (where the
// curve is halfway, 0..1 of the interval) and sharpness (0: linear, 1: a step at the midpoint,
// between: the Hermite ease VTK uses).
class OXWTransferFunctionSampling
{
public:
    enum class ColorSpace
    {
        RGB,
        HSV,
        Lab,
        Diverging,
        LabCIEDE2000,
        Step
    };
    struct OpacityNode
    {
        double x = 0.0;
        double a = 0.0;
        double midpoint = 0.5;
        double sharpness = 0.0;
    };

    static constexpr double MaxError = 1.0 / 1024.0;
    static constexpr int MaxDepth = 6;
    // The most points a sampled curve may have.
    static constexpr int MaxPoints = 1 << 20;

    // ParaView's names ("RGB", "HSV", "Lab", "Diverging", "Lab/CIEDE2000", "Step"), in any
    // case; false for another name.
    static bool colorSpaceFromName(const QString& name, ColorSpace& space);
    static QString colorSpaceName(ColorSpace space);

    // False when the result would have more than MaxPoints points.
    static bool sampleColours(const std::vector<OXWTransferFunction::ColourPoint>& nodes,
                              ColorSpace space,
                              std::vector<OXWTransferFunction::ColourPoint>& points);
    static bool sampleOpacity(const std::vector<OpacityNode>& nodes,
                              std::vector<OXWTransferFunction::OpacityPoint>& points);

    // The colour at t (0..1) between two RGB colours in the colour space (not Step).
    static void interpolate(ColorSpace space, const double a[3], const double b[3], double t,
                            double out[3]);
    // VTK's opacity between y0 and y1 at t (0..1) for a midpoint and a sharpness.
    static double easeOpacity(double y0, double y1, double t, double midpoint, double sharpness);
};
