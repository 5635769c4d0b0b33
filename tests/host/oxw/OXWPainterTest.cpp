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

// Bar heights per column: the number of painted pixels counted from the bottom, -1 when the
// column has a gap below a painted pixel.
std::vector<int> columnHeights(const QImage& image)
{
    std::vector<int> heights;
    for (int x = 0; x < image.width(); ++x) {
        int h = 0;
        for (int y = image.height() - 1; y >= 0 && image.pixel(x, y) == qRgb(0, 0, 0); --y)
            ++h;
        for (int y = image.height() - 1 - h; y >= 0; --y) {
            if (image.pixel(x, y) != qRgb(255, 255, 255))
                h = -1;
        }
        heights.push_back(h);
    }
    return heights;
}

QImage draw(QSize size, const QRect& rect, const OXMObject* result, const QRectF& range,
            OXMenum reduction, bool* ok = nullptr, double gamma = -1.0)
{
    QImage image(size, QImage::Format_RGB32);
    image.fill(Qt::white);
    OXWPainter p(&image);
    p.setPen(Qt::black);
    p.setBrush(Qt::black);
    const bool drawn = p.drawHistogram(rect, result, range, gamma, reduction, OXWPainter::Bar());
    if (ok)
        *ok = drawn;
    return image;
}
} // namespace

TEST(OXWPainter, TheEnumerationValuesAreRegisteredInTheHostNamespace)
{
    EXPECT_TRUE(OXWPainter::Average().isValid());
    EXPECT_EQ(OXMenum::find("Average"), OXWPainter::Average());
    EXPECT_EQ(OXMenum::find("Bar", "OXM"), OXWPainter::Bar());
    EXPECT_STREQ(OXWPainter::Bar().getNamespace(), "OXM");
    EXPECT_EQ(OXMenum::find("Line"), OXWPainter::Line());
}

TEST(OXWPainter, MoreBinsThanColumnsShowTheAverageOfEachColumn)
{
    Result r({2.0f, 4.0f, 6.0f, 10.0f});
    bool ok = false;
    // Range built as the work area does: from (bin a, 0) to (bin b, full-height count).
    const QImage image = draw(QSize(2, 10), QRect(0, 0, 2, 10), &r,
                              QRectF(QPointF(0, 0), QPointF(4, 10)), OXWPainter::Average(), &ok);
    EXPECT_TRUE(ok);
    EXPECT_EQ(columnHeights(image), (std::vector<int>{3, 8}));

    const QImage maxima = draw(QSize(2, 10), QRect(0, 0, 2, 10), &r,
                               QRectF(QPointF(0, 0), QPointF(4, 10)), OXM::Maximum);
    EXPECT_EQ(columnHeights(maxima), (std::vector<int>{4, 10}));
}

TEST(OXWPainter, AHistogramStartingAtAnotherIndexIsReadFromItsFirstBin)
{
    // A histogram of data whose values run from 1000 to 1003: the array's indices are the grey
    // values, the value range counts bins from 0.
    OXMObject result;
    OXMIndexedFloatArrayOP histogram;
    result.addProperty(OXM::Histogram, &histogram);
    const float bins[] = {2.0f, 4.0f, 6.0f, 10.0f};
    ASSERT_TRUE(histogram.initArray(1000, 1003, bins));
    bool ok = false;
    const QImage image = draw(QSize(2, 10), QRect(0, 0, 2, 10), &result,
                              QRectF(QPointF(0, 0), QPointF(4, 10)), OXWPainter::Average(), &ok);
    EXPECT_TRUE(ok);
    EXPECT_EQ(columnHeights(image), (std::vector<int>{3, 8}));
}

TEST(OXWPainter, BinsOutsideTheValueRangeAreNotDrawn)
{
    Result r({10.0f, 10.0f, 1.0f, 2.0f, 3.0f, 4.0f, 10.0f, 10.0f});
    // Bins 2..5 on the 4 columns 1..4 of a 6-pixel image.
    const QImage image = draw(QSize(6, 10), QRect(1, 0, 4, 10), &r,
                              QRectF(QPointF(2, 0), QPointF(6, 10)), OXWPainter::Average());
    EXPECT_EQ(columnHeights(image), (std::vector<int>{0, 1, 2, 3, 4, 0}));
    // Heights beyond the count range are clipped to the rectangle.
    const QImage tall = draw(QSize(4, 10), QRect(0, 0, 4, 5), &r,
                             QRectF(QPointF(0, 0), QPointF(4, 2)), OXWPainter::Average());
    EXPECT_EQ(columnHeights(tall), (std::vector<int>{-1, -1, -1, -1}));
    EXPECT_EQ(tall.pixel(0, 4), qRgb(0, 0, 0));
    EXPECT_EQ(tall.pixel(0, 5), qRgb(255, 255, 255));
    // A range beyond the array draws only the bins that exist.
    const QImage beyond = draw(QSize(4, 10), QRect(0, 0, 4, 10), &r,
                               QRectF(QPointF(6, 0), QPointF(10, 10)), OXWPainter::Average());
    EXPECT_EQ(columnHeights(beyond), (std::vector<int>{10, 10, 0, 0}));
}

TEST(OXWPainter, FewerBinsThanColumnsGiveEachBinItsSpan)
{
    Result r({5.0f, 10.0f});
    const QImage image = draw(QSize(4, 10), QRect(0, 0, 4, 10), &r,
                              QRectF(QPointF(0, 0), QPointF(2, 10)), OXWPainter::Average());
    EXPECT_EQ(columnHeights(image), (std::vector<int>{5, 5, 10, 10}));
}

TEST(OXWPainter, ManyBinsAveragePerColumn)
{
    // 65 536 bins on 256 columns: column c averages the 256 bins c * 256 .. c * 256 + 255,
    // alternating 0 and 2 * c / 255 * 100, so its average is c / 255 * 100.
    std::vector<float> bins(65536);
    for (int i = 0; i < 65536; ++i)
        bins[std::size_t(i)] = (i % 2) ? 2.0f * float(i / 256) / 255.0f * 100.0f : 0.0f;
    Result r(bins);
    const QImage image = draw(QSize(256, 100), QRect(0, 0, 256, 100), &r,
                              QRectF(QPointF(0, 0), QPointF(65536, 100)), OXWPainter::Average());
    const std::vector<int> heights = columnHeights(image);
    for (int c = 0; c < 256; ++c)
        EXPECT_EQ(heights[std::size_t(c)], int(std::lround(c / 255.0 * 100.0))) << c;
}

TEST(OXWPainter, GammaShapesTheHeightsAndLineStyleDraws)
{
    Result r({25.0f});
    const QImage image =
        draw(QSize(1, 10), QRect(0, 0, 1, 10), &r, QRectF(QPointF(0, 0), QPointF(1, 100)),
             OXWPainter::Average(), nullptr, 0.5);
    EXPECT_EQ(columnHeights(image), (std::vector<int>{5}));

    QImage line(QSize(4, 10), QImage::Format_RGB32);
    line.fill(Qt::white);
    OXWPainter p(&line);
    p.setPen(Qt::black);
    Result r2({5.0f, 5.0f, 5.0f, 5.0f});
    EXPECT_TRUE(p.drawHistogram(QRect(0, 0, 4, 10), &r2, QRectF(QPointF(0, 0), QPointF(4, 10)),
                                -1.0, OXWPainter::Average(), OXWPainter::Line()));
    p.end();
    for (int x = 0; x < 4; ++x)
        EXPECT_EQ(line.pixel(x, 5), qRgb(0, 0, 0)) << x;
    EXPECT_EQ(line.pixel(0, 9), qRgb(255, 255, 255));
}

TEST(OXWPainter, RefusesMissingDataAndUnknownModes)
{
    QImage image(4, 4, QImage::Format_RGB32);
    image.fill(Qt::white);
    OXWPainter p(&image);
    p.setBrush(Qt::black);
    const QRectF range(QPointF(0, 0), QPointF(1, 1));
    OXMObject empty;
    Result r({1.0f});
    EXPECT_FALSE(p.drawHistogram(image.rect(), nullptr, range, -1.0, OXWPainter::Average(),
                                 OXWPainter::Bar()));
    EXPECT_FALSE(p.drawHistogram(image.rect(), &empty, range, -1.0, OXWPainter::Average(),
                                 OXWPainter::Bar()));
    EXPECT_FALSE(p.drawHistogram(image.rect(), &r, range, -1.0, OXM::Opacity, OXWPainter::Bar()));
    EXPECT_FALSE(
        p.drawHistogram(image.rect(), &r, range, -1.0, OXWPainter::Average(), OXM::Opacity));
    // Empty ranges draw nothing but are fine.
    EXPECT_TRUE(p.drawHistogram(image.rect(), &r, QRectF(), -1.0, OXWPainter::Average(),
                                OXWPainter::Bar()));
    p.end();
    for (int y = 0; y < 4; ++y)
        for (int x = 0; x < 4; ++x)
            EXPECT_EQ(image.pixel(x, y), qRgb(255, 255, 255));
}

// Dense curves and handle marks, as an editor of many handles draws them: the merged drawing
// must give the same pixels as drawing every segment and every mark.
class OXWPainterMerged : public ::testing::TestWithParam<int>
{
protected:
    static QImage canvas()
    {
        QImage image(120, 90, QImage::Format_ARGB32_Premultiplied);
        image.fill(Qt::white);
        return image;
    }
};

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
    QImage full = canvas();
    {
        OXWPainter p(&full);
        p.setClipRect(clip);
        p.setPen(QColor(Qt::darkGray));
        p.drawPolyline(line);
        for (const OXWPainter::Mark& m : marks)
            p.fillRect(QRect(m.left, m.top, m.right - m.left + 1, 8), QColor(Qt::blue));
    }
    QImage merged = canvas();
    {
        OXWPainter p(&merged);
        p.setClipRect(clip);
        p.setPen(QColor(Qt::darkGray));
        p.drawColumnPolyline(line);
        p.fillMarks(marks, 8, QColor(Qt::blue));
    }
    EXPECT_TRUE(full == merged) << "seed " << GetParam();
}

INSTANTIATE_TEST_SUITE_P(Seeds, OXWPainterMerged, ::testing::Range(1, 13));
