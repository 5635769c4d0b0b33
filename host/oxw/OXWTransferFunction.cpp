#include "OXWTransferFunction.h"

#include <QCoreApplication>

#include <algorithm>
#include <cmath>

namespace {

QString tr(const char* text)
{
    return QCoreApplication::translate("OXWTransferFunction", text);
}

template <typename Point>
QString checkPoints(const std::vector<Point>& points, const QString& what)
{
    for (std::size_t i = 0; i < points.size(); ++i) {
        if (!std::isfinite(points[i].x))
            return tr("the %1 points hold a number that is not finite").arg(what);
        if (i > 0 && !(points[i].x > points[i - 1].x))
            return tr("the %1 points are not in strictly ascending order of x (%2 follows %3)")
                .arg(what)
                .arg(points[i].x)
                .arg(points[i - 1].x);
    }
    return QString();
}

bool finiteColours(const std::vector<OXWTransferFunction::ColourPoint>& points)
{
    return std::all_of(points.begin(), points.end(), [](const auto& p) {
        return std::isfinite(p.r) && std::isfinite(p.g) && std::isfinite(p.b);
    });
}

} // namespace

bool OXWTransferFunction::coveredRange(double& low, double& high) const
{
    if (hasRange) {
        low = rangeLow;
        high = rangeHigh;
        return true;
    }
    if (opacity.empty() && colours.empty())
        return false;
    low = std::min(opacity.empty() ? colours.front().x : opacity.front().x,
                   colours.empty() ? opacity.front().x : colours.front().x);
    high = std::max(opacity.empty() ? colours.back().x : opacity.back().x,
                    colours.empty() ? opacity.back().x : colours.back().x);
    return true;
}

bool OXWTransferFunction::validate()
{
    if (!refused.isEmpty())
        return false;
    refused = checkPoints(colours, tr("colour"));
    if (refused.isEmpty())
        refused = checkPoints(opacity, tr("opacity"));
    const bool finiteOpacity = std::all_of(
        opacity.begin(), opacity.end(), [](const OpacityPoint& p) { return std::isfinite(p.a); });
    if (refused.isEmpty() && (!finiteOpacity || !finiteColours(colours)))
        refused = tr("a point holds a value that is not finite");
    if (refused.isEmpty() && opacity.empty() && colours.empty())
        refused = tr("it holds neither opacity nor colour points");
    if (refused.isEmpty() && hasRange &&
        !(std::isfinite(rangeLow) && std::isfinite(rangeHigh) && rangeHigh > rangeLow))
        refused = tr("its range is empty or not finite");
    for (double v : {gradientOpacity, ambient, diffuse, specular, specularPower}) {
        if (refused.isEmpty() && !std::isfinite(v))
            refused = tr("a material value is not finite");
    }
    return refused.isEmpty();
}
