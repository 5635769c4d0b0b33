#pragma once

#include <OXMenum.h>

#include <QPainter>
#include <QPolygon>
#include <QRect>
#include <QRectF>

#include <vector>

class OXMObject;

// The host's painter: a QPainter with drawing helpers for host objects.
//
// Enumeration values used by the helpers (registered in the host namespace "OXM" when the
// library loads, so OXMenum::find("Average") finds them too):
//   reductions: "Average" (a pixel column shows the mean of its bins), OXM::Maximum (the
//   largest of its bins); styles: "Bar" (filled bars), "Line" (a polyline over the bars).
class OXWPainter : public QPainter
{
public:
    OXWPainter() = default;
    explicit OXWPainter(QPaintDevice* device) : QPainter(device) {}

    static OXMenum Average();
    static OXMenum Bar();
    static OXMenum Line();

    // Draws the float array property OXM::Histogram of the result object into rect.
    //
    // valueRange: x spans the bins (bin i covers [i, i + 1); a bin is drawn when its centre
    // i + 0.5 lies in [left, right), so the range (a, ...) to (b, ...) with integers a < b draws
    // the bins a .. b - 1); y spans the counts: top() is the count at the rect's bottom edge
    // and bottom() the count at its top edge, as a QRectF built from the points (a, 0) and
    // (b, maximum count) gives. Taller bars are clipped to rect.
    // gamma: heights follow (fraction of the count range)^gamma; gamma <= 0 (such as -1.0)
    // means linear (1).
    // reduction: when the bins are at least as dense as the pixel columns, each column of rect
    // shows the reduction (Average or OXM::Maximum) of the bins whose centres fall into it;
    // otherwise each bin covers its own pixel span.
    // style: Bar fills each bar from rect's bottom with the painter's brush (the pen's colour
    // when the brush is empty); Line draws a polyline through the bar tops with the pen.
    //
    // Cost: one pass over the bins in range plus one rectangle per run of equal columns.
    // False (nothing drawn) for a null object, a missing or non-float Histogram array or an
    // unknown reduction or style; true otherwise, also when nothing falls into the ranges.
    bool drawHistogram(const QRect& rect, const OXMObject* result, const QRectF& valueRange,
                       double gamma, OXMenum reduction, OXMenum style);
    // The same for bins in memory (bin 0 is bins[0]).
    bool drawHistogram(const QRect& rect, const float* bins, int binCount, const QRectF& valueRange,
                       double gamma, OXMenum reduction, OXMenum style);

    // Draws the polyline with the pen as drawPolyline does, pixel for pixel, for an aliased
    // pen one pixel wide without a transform: of each run of consecutive points on one pixel
    // column, the rows between its highest and its lowest point are filled at once, and only
    // the run's first and last point go into the line. A curve of many more points than
    // columns costs one pass over the points plus a few segments per column.
    void drawColumnPolyline(const QPolygon& line);

    // Fills rectangles of one colour, each the columns [left, right] and the rows [top, top +
    // height), as fillRect of each would (opaque colour: the order does not matter). Adjacent
    // marks with equal columns (as the handles of a curve give them, from left to right) are
    // merged into one rectangle per run of rows they cover: one pass over the marks.
    struct Mark
    {
        int left;
        int right;
        int top;
    };
    void fillMarks(const std::vector<Mark>& marks, int height, const QColor& colour);
};
