#include "OXWPainter.h"

#include <OXMIndexedFloatArrayOP.h>
#include <OXMObject.h>
#include <OXMValueArrayOP.h>

#include <QImage>

#include <gtest/gtest.h>

#include <cmath>
#include <random>
#include <vector>

namespace {

using Heights = std::vector<int>;

// A histogram result object as the host's calculation produces it.
class Result : public OXMObject
{
public:
    explicit Result(const std::vector<float>& bins)
    {
        addProperty(OXM::Histogram, &histogram);
        histogram.setArray(bins);
    }
    OXMValueArrayOP<float> histogram;
};

// Bar heights per column of the rectangle: the painted pixels counted from its bottom, -1 when
// the column has a gap below a painted pixel; -2 everywhere when a pixel outside it is painted.
Heights columnHeights(const QImage& image, const QRect& rect)
{
    Heights heights;
    for (int x = rect.left(); x <= rect.right(); ++x) {
        int h = 0;
        for (int y = rect.bottom(); y >= rect.top() && image.pixel(x, y) == qRgb(0, 0, 0); --y)
            ++h;
        for (int y = rect.bottom() - h; y >= rect.top(); --y) {
            if (image.pixel(x, y) != qRgb(255, 255, 255))
                h = -1;
        }
        heights.push_back(h);
    }
    for (int y = 0; y < image.height(); ++y)
        for (int x = 0; x < image.width(); ++x)
            if (!rect.contains(x, y) && image.pixel(x, y) != qRgb(255, 255, 255))
                return Heights(heights.size(), -2);
    return heights;
}

// The histogram drawn in black into rect of a white image of the given size.
QImage draw(QSize size, const QRect& rect, const OXMObject* result, const QRectF& range,
            OXMenum reduction, double gamma = -1.0, OXMenum style = OXWPainter::Bar())
{
    QImage image(size, QImage::Format_RGB32);
    image.fill(Qt::white);
    OXWPainter p(&image);
    p.setPen(Qt::black);
    p.setBrush(Qt::black);
    EXPECT_TRUE(p.drawHistogram(rect, result, range, gamma, reduction, style));
    return image;
}

// The bar heights of bins (the first at index first) drawn on columns x height pixels inside a
// white frame one pixel wide. Ranges are built as the work area does: from (bin a, 0) to
// (bin b, full-height count).
Heights bars(const std::vector<float>& bins, int columns, int height, const QRectF& range,
             OXMenum reduction = OXWPainter::Average(), double gamma = -1.0, int first = 0)
{
    OXMObject result;
    OXMIndexedFloatArrayOP histogram;
    result.addProperty(OXM::Histogram, &histogram);
    EXPECT_TRUE(histogram.initArray(first, first + int(bins.size()) - 1, bins.data()));
    const QRect rect(1, 1, columns, height);
    return columnHeights(draw(rect.size() + QSize(2, 2), rect, &result, range, reduction, gamma),
                         rect);
}

} // namespace

TEST(OXWPainter, HistogramBarsShowTheReductionOfTheBinsInTheValueRange)
{
    const std::vector<float> four = {2.0f, 4.0f, 6.0f, 10.0f};
    const std::vector<float> eight = {10.0f, 10.0f, 1.0f, 2.0f, 3.0f, 4.0f, 10.0f, 10.0f};
    EXPECT_EQ(bars(four, 2, 10, {0, 0, 4, 10}), (Heights{3, 8}));
    EXPECT_EQ(bars(four, 2, 10, {0, 0, 4, 10}, OXM::Maximum), (Heights{4, 10}));
    // Grey values 1000 .. 1003: the array's indices are the values, the range counts bins.
    EXPECT_EQ(bars(four, 2, 10, {0, 0, 4, 10}, OXWPainter::Average(), -1.0, 1000), (Heights{3, 8}));
    EXPECT_EQ(bars(eight, 4, 10, {2, 0, 4, 10}), (Heights{1, 2, 3, 4}));
    EXPECT_EQ(bars(eight, 4, 5, {0, 0, 4, 2}), (Heights{5, 5, 3, 5})) << "clipped";
    EXPECT_EQ(bars(eight, 4, 10, {6, 0, 4, 10}), (Heights{10, 10, 0, 0})) << "beyond the array";
    EXPECT_EQ(bars({5.0f, 10.0f}, 4, 10, {0, 0, 2, 10}), (Heights{5, 5, 10, 10}));
    EXPECT_EQ(bars({25.0f}, 1, 10, {0, 0, 1, 100}, OXWPainter::Average(), 0.5), Heights{5});
}

// Dense curves and handle marks, as an editor of many handles draws them: the merged drawing
// must give the same pixels as drawing every segment and every mark.
using OXWPainterMerged = ::testing::TestWithParam<int>;

TEST_P(OXWPainterMerged, DrawsTheSamePixelsAsEverySegmentAndEveryMark)
{
    std::mt19937 random{unsigned(GetParam())};
    std::uniform_int_distribution<int> row(-10, 100);
    // Runs of about 2, 12 or 22 points a column.
    std::bernoulli_distribution nextColumn(1.0 / (2 + 10 * (GetParam() % 3)));
    std::uniform_int_distribution<int> width(0, 9);
    QPolygon line;
    std::vector<OXWPainter::Mark> marks;
    for (int x = -5; x < 130; x += nextColumn(random) ? 1 : 0) {
        line << QPoint(x, row(random));
        const int l = x - width(random) / 2;
        marks.push_back({l, l + width(random), row(random)});
        if (line.size() > 3000)
            break;
    }
    const QRect clip(3, 2, 110, 80);
    QImage full(120, 90, QImage::Format_ARGB32_Premultiplied), merged = full;
    for (QImage* image : {&full, &merged}) {
        image->fill(Qt::white);
        OXWPainter p(image);
        p.setClipRect(clip);
        p.setPen(QColor(Qt::darkGray));
        if (image == &merged) {
            p.drawColumnPolyline(line);
            p.fillMarks(marks, 8, QColor(Qt::blue));
            continue;
        }
        p.drawPolyline(line);
        for (const OXWPainter::Mark& m : marks)
            p.fillRect(QRect(m.left, m.top, m.right - m.left + 1, 8), QColor(Qt::blue));
    }
    EXPECT_TRUE(full == merged) << "seed " << GetParam();
}

INSTANTIATE_TEST_SUITE_P(Seeds, OXWPainterMerged, ::testing::Range(1, 13));
