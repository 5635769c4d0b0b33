#include "OXWPainter.h"

#include <OXMObject.h>
#include <OXMRegisteredEnum.h>
#include <OXMValueArrayPropertyIF.h>

#include <QPolygon>
#include <QVector>

#include <algorithm>
#include <cmath>
#include <vector>

namespace {
const OXMRegisteredEnum& averageEnum()
{
    static const OXMRegisteredEnum e("Average");
    return e;
}
const OXMRegisteredEnum& barEnum()
{
    static const OXMRegisteredEnum e("Bar");
    return e;
}
const OXMRegisteredEnum& lineEnum()
{
    static const OXMRegisteredEnum e("Line");
    return e;
}
// Registers the values when the library loads.
[[maybe_unused]] const bool gRegistered = (averageEnum(), barEnum(), lineEnum(), true);

// The first bin whose centre is at or beyond x, clamped to [0, n].
int firstBinFrom(double x, int n)
{
    const double b = std::ceil(x - 0.5);
    if (!(b > 0.0))
        return 0;
    return b >= double(n) ? n : int(b);
}
// The sum of n floats with eight independent partial sums, so the additions need not wait for
// each other (and the compiler may use vector registers).
float sumOf(const float* v, int n)
{
    float p[8] = {};
    int k = 0;
    for (; k + 8 <= n; k += 8) {
        for (int j = 0; j < 8; ++j)
            p[j] += v[k + j];
    }
    float sum = ((p[0] + p[1]) + (p[2] + p[3])) + ((p[4] + p[5]) + (p[6] + p[7]));
    for (; k < n; ++k)
        sum += v[k];
    return sum;
}
} // namespace

OXMenum OXWPainter::Average()
{
    return averageEnum();
}

OXMenum OXWPainter::Bar()
{
    return barEnum();
}

OXMenum OXWPainter::Line()
{
    return lineEnum();
}

bool OXWPainter::drawHistogram(const QRect& rect, const OXMObject* result, const QRectF& valueRange,
                               double gamma, OXMenum reduction, OXMenum style)
{
    if (!result)
        return false;
    const auto* array =
        OXMValueArrayPropertyIF<float>::getInterface(result->getProperty(OXM::Histogram));
    if (!array)
        return false;
    const int n = array->getArraySize();
    // The value range counts bins from 0; the array may start at another index (a histogram
    // of data whose lowest value is not 0 starts at that value).
    int firstIndex = 0;
    int lastIndex = -1;
    if (n > 0 && !array->getArrayIndexRange(firstIndex, lastIndex))
        return false;
    // Only the bins in range are copied.
    const double x0 = std::min(valueRange.left(), valueRange.right());
    const double x1 = std::max(valueRange.left(), valueRange.right());
    const int first = firstBinFrom(x0, n);
    const int last = firstBinFrom(x1, n); // exclusive
    thread_local std::vector<float> buffer;
    buffer.resize(std::size_t(std::max(0, last - first)));
    if (last > first &&
        !array->getArrayItems(firstIndex + first, firstIndex + last - 1, buffer.data()))
        return false;
    // Shift the range so that buffer[0] is bin 0.
    const QRectF shifted = valueRange.translated(-first, 0.0);
    return drawHistogram(rect, buffer.data(), last - first, shifted, gamma, reduction, style);
}

bool OXWPainter::drawHistogram(const QRect& rectIn, const float* bins, int binCount,
                               const QRectF& valueRange, double gamma, OXMenum reduction,
                               OXMenum style)
{
    const bool byMaximum = reduction == OXM::Maximum;
    if (!byMaximum && reduction != Average())
        return false;
    const bool asLine = style == Line();
    if (!asLine && style != Bar())
        return false;
    if (binCount < 0 || (binCount > 0 && !bins))
        return false;

    const QRect rect = rectIn.normalized();
    const int width = rect.width();
    const int height = rect.height();
    const double x0 = std::min(valueRange.left(), valueRange.right());
    const double x1 = std::max(valueRange.left(), valueRange.right());
    const double vMin = valueRange.top();
    const double vSpan = valueRange.bottom() - valueRange.top();
    if (width <= 0 || height <= 0 || !(x1 > x0) || !(vSpan > 0.0) || binCount == 0)
        return true;
    const int first = firstBinFrom(x0, binCount);
    const int last = firstBinFrom(x1, binCount);
    if (last <= first)
        return true;

    const bool linear = !(gamma > 0.0) || gamma == 1.0;
    auto pixelHeight = [&](double v) {
        double t = (v - vMin) / vSpan;
        if (!(t > 0.0))
            return 0;
        if (t >= 1.0)
            return height;
        if (!linear)
            t = std::pow(t, gamma);
        return int(std::lround(t * height));
    };

    // Column heights of rect (-1: nothing in that column).
    thread_local std::vector<int> heights;
    heights.assign(std::size_t(width), -1);
    const double scale = double(width) / (x1 - x0); // pixels per bin
    if (scale <= 1.0) {
        // Dense: column c takes the bins whose centres lie in [x0 + c / scale, x0 + (c+1) / scale).
        const double binsPerColumn = 1.0 / scale;
        int i = first;
        for (int c = 0; c < width && i < last; ++c) {
            const int end = std::min(last, firstBinFrom(x0 + (c + 1) * binsPerColumn, binCount));
            if (end <= i)
                continue;
            double v;
            if (byMaximum) {
                float m = bins[i];
                for (int k = i + 1; k < end; ++k)
                    m = std::max(m, bins[k]);
                v = m;
            } else {
                v = double(sumOf(bins + i, end - i)) / double(end - i);
            }
            heights[std::size_t(c)] = pixelHeight(v);
            i = end;
        }
    } else {
        // Sparse: each bin covers its own pixel span.
        for (int i = first; i < last; ++i) {
            const int from = std::max(0, int(std::floor((i - x0) * scale + 0.5)));
            const int to = std::min(width, int(std::floor((i + 1 - x0) * scale + 0.5)));
            const int h = pixelHeight(bins[i]);
            for (int c = from; c < to; ++c)
                heights[std::size_t(c)] = h;
        }
    }

    if (asLine) {
        QPolygon line;
        line.reserve(width);
        for (int c = 0; c < width; ++c) {
            const int h = heights[std::size_t(c)];
            if (h >= 0)
                line << QPoint(rect.left() + c, rect.bottom() - std::max(0, h - 1));
        }
        drawPolyline(line);
        return true;
    }

    // Bars: the outline of the bars (a skyline) is cut into horizontal slabs, so the raster
    // engine fills long horizontal spans instead of one span per row of every column. A stack
    // holds the open slabs (left edge, height) in increasing height; a column lower than the
    // top closes the slabs above it. The slabs cover every bar pixel exactly once.
    QVector<QRect> rects;
    rects.reserve(2 * width);
    struct Open
    {
        int x;
        int height;
    };
    thread_local std::vector<Open> stack;
    stack.clear();
    for (int c = 0; c <= width; ++c) {
        const int h = c < width ? std::max(0, heights[std::size_t(c)]) : 0;
        int start = c;
        while (!stack.empty() && stack.back().height > h) {
            const Open top = stack.back();
            stack.pop_back();
            const int lower = std::max(h, stack.empty() ? 0 : stack.back().height);
            rects.append(QRect(rect.left() + top.x, rect.bottom() - top.height + 1, c - top.x,
                               top.height - lower));
            start = top.x;
        }
        if (h > (stack.empty() ? 0 : stack.back().height))
            stack.push_back({start, h});
    }
    if (rects.isEmpty())
        return true;
    save();
    if (brush().style() == Qt::NoBrush)
        setBrush(pen().color());
    setPen(Qt::NoPen);
    drawRects(rects);
    restore();
    return true;
}

void OXWPainter::drawColumnPolyline(const QPolygon& line)
{
    // Each run of points on one column covers the rows from its highest to its lowest point:
    // one rectangle a pixel wide. The polyline through the first and the last point of each
    // run draws the segments between runs as the whole line would.
    const QColor colour = pen().color();
    QPolygon ends;
    const int n = line.size();
    for (int i = 0; i < n;) {
        const int x = line[i].x();
        int low = line[i].y();
        int high = low;
        int j = i + 1;
        for (; j < n && line[j].x() == x; ++j) {
            low = std::min(low, line[j].y());
            high = std::max(high, line[j].y());
        }
        if (j - i > 2)
            fillRect(QRect(x, low, 1, high - low + 1), colour);
        ends << line[i];
        if (j - 1 > i)
            ends << line[j - 1];
        i = j;
    }
    drawPolyline(ends);
}

void OXWPainter::fillMarks(const std::vector<Mark>& marks, int height, const QColor& colour)
{
    constexpr int MaxMarkSpan = 1 << 16; // rows between the tops of one run's marks
    // Rows covered by the current run of marks, from its smallest top.
    std::vector<char> covered;
    for (std::size_t i = 0; i < marks.size();) {
        const Mark& first = marks[i];
        std::size_t j = i;
        int low = first.top;
        int high = first.top;
        for (; j < marks.size() && marks[j].left == first.left && marks[j].right == first.right;
             ++j) {
            low = std::min(low, marks[j].top);
            high = std::max(high, marks[j].top);
        }
        const int width = first.right - first.left + 1;
        if (double(high) - double(low) > double(MaxMarkSpan)) { // far apart: each on its own
            for (std::size_t k = i; k < j; ++k) {
                fillRect(QRect(first.left, marks[k].top, width, height), colour);
            }
            i = j;
            continue;
        }
        covered.assign(std::size_t(high - low + height), 0);
        for (std::size_t k = i; k < j; ++k) {
            std::fill_n(covered.begin() + (marks[k].top - low), height, char(1));
        }
        for (int row = 0; row < int(covered.size());) {
            if (!covered[std::size_t(row)]) {
                ++row;
                continue;
            }
            const int top = row;
            while (row < int(covered.size()) && covered[std::size_t(row)]) {
                ++row;
            }
            fillRect(QRect(first.left, low + top, width, row - top), colour);
        }
        i = j;
    }
}
