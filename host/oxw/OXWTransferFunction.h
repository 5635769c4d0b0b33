#pragma once

#include <QString>
#include <QStringList>

#include <vector>

// A transfer function as the other open-source volume viewers keep it, independent of any file
// format: what one preset of a ParaView colour-map file or of a 3D Slicer presets file holds, and
// what the host writes back into such files.
//
// The curves are piecewise linear in RGB: the readers have already sampled what the file means
// (ParaView's midpoints and sharpness, colour spaces other than RGB, steps) into points, so that
// following the points linearly reproduces the curve. x is in data units when absolute, else in
// the units of a map that is stretched onto the data's range when applied.
//
// A preset that can't be used at all (counts that don't match their numbers, unsorted or
// repeated x, numbers that are not finite, nothing to draw) carries the reason in refused; what
// a classification can't hold is named in leftOut (one short phrase each) and the rest is kept.
struct OXWTransferFunction
{
    struct OpacityPoint
    {
        double x = 0.0;
        double a = 0.0;
    };
    struct ColourPoint
    {
        double x = 0.0;
        double r = 0.0;
        double g = 0.0;
        double b = 0.0;
    };

    QString name;
    std::vector<OpacityPoint> opacity;
    std::vector<ColourPoint> colours;
    // The points the file gave, before sampling (for listings).
    int fileOpacityPoints = 0;
    int fileColourPoints = 0;
    // The range the preset is meant for (Slicer's effective range); else that of the points.
    bool hasRange = false;
    double rangeLow = 0.0;
    double rangeHigh = 0.0;
    // A factor of the opacity independent of the gradient's magnitude.
    double gradientOpacity = 1.0;
    // The material (Slicer's volume property; ParaView maps have none and keep these).
    double ambient = 0.2;
    double diffuse = 0.7;
    double specular = 0.1;
    double specularPower = 10.0;
    bool absolute = false;
    QStringList leftOut;
    QString refused;

    bool isUsable() const { return refused.isEmpty(); }
    // The range the preset covers: its own range, else from the first to the last point of
    // both curves; false when there is no point.
    bool coveredRange(double& low, double& high) const;
    // Checks the sampled curves (ascending x, finite numbers) and sets refused when they
    // aren't; answers isUsable().
    bool validate();
};
