// What the colour bar shows: the colour table of its columns, the marks and borders in the
// pixmap, zoom, the value texts, the moving highlight border, and a disabled bar.

#include "ColorBarTestSupport.h"

#include <QImage>
#include <QPainter>

using namespace colorbartest;

namespace {

QRgb pixel(const TestBar& bar, int column, int row)
{
    return bar.pixmap().toImage().pixel(column, row);
}

} // namespace

TEST_F(ColorBarTest, ARampIntervalGoesFromBlackToWhiteOverItsFirstHalf)
{
    setColourCurves(interval(), {{0.0f, 0.0f}, {0.5f, 255.0f}, {1.0f, 255.0f}});
    bar->updateAll();
    const auto& table = bar->colorTable();
    ASSERT_EQ(table.size(), std::size_t(kColumns));
    // Column c shows cell c; the first handle sits on the centre of cell 0, the second at
    // local 0.5, so the ramp climbs by two per column.
    for (int c = 0; c < 128; ++c) {
        EXPECT_NEAR(table[c].r, 2 * c, 1) << "column " << c;
        EXPECT_EQ(table[c].g, table[c].r);
        EXPECT_EQ(table[c].b, table[c].r);
    }
    for (int c = 128; c < kColumns; ++c) {
        EXPECT_EQ(table[c].r, 255) << "column " << c;
        EXPECT_EQ(table[c].g, 255);
        EXPECT_EQ(table[c].b, 255);
    }
    EXPECT_EQ(table[0].r, 0);
    // The pixmap shows the table (top row, away from marks and borders).
    EXPECT_EQ(QColor(pixel(*bar, 200, 2)), QColor(255, 255, 255));
    EXPECT_EQ(QColor(pixel(*bar, 50, 2)), QColor(table[50].r, table[50].g, table[50].b));
}

TEST_F(ColorBarTest, ASingleHandleColoursTheWholeInterval)
{
    auto one = makeModel(1);
    OXWLUTIntervalInfo& only = *one->interval(0);
    only.setReferenceHandles(kRed, {{0.5f, 10.0f}});
    only.setReferenceHandles(kGreen, {{0.5f, 20.0f}});
    only.setReferenceHandles(kBlue, {{0.5f, 30.0f}});
    ASSERT_EQ(only.handles(kRed).size(), 1u);
    bar->setModel(one.get());
    bar->updateAll();
    ASSERT_TRUE(bar->isEnabled());
    for (const auto& entry : bar->colorTable()) {
        EXPECT_EQ(entry.r, 10);
        EXPECT_EQ(entry.g, 20);
        EXPECT_EQ(entry.b, 30);
    }
    bar->setModel(nullptr);
}

TEST_F(ColorBarTest, ZoomFollowsTheModelsVisibleRange)
{
    setColourCurves(interval(), {{0.0f, 0.0f}, {1.0f, 255.0f}});
    bar->updateAll();
    EXPECT_NEAR(bar->colorTable()[0].r, 0, 1);
    EXPECT_NEAR(bar->colorTable()[255].r, 255, 1);

    ASSERT_TRUE(model->setVisibleGreyRange(0.5f, 1.0f));
    bar->updateAll();
    // Column c now shows cell 128 + c / 2, whose value is about its index.
    const auto& table = bar->colorTable();
    for (int c = 0; c < kColumns; c += 17) {
        EXPECT_NEAR(table[c].r, 128 + c / 2, 1.5) << "column " << c;
    }
    EXPECT_NEAR(bar->positionFromColumn(0), 0.5f, 1e-6f);
    EXPECT_EQ(bar->columnFromPosition(0.75f), 128);
}

TEST_F(ColorBarTest, HandleMarksAndIntervalBordersContrastWithTheColour)
{
    // White interval: marks grey 51, borders black.
    ASSERT_TRUE(model->newInterval(0.5f, true));
    setColourCurves(interval(0), {{0.0f, 255.5f}, {1.0f, 255.5f}});
    setColourCurves(interval(1), {{0.0f, 0.0f}, {1.0f, 0.0f}});
    bar->updateAll();
    const int border = bar->columnFromPosition(interval(1).from());
    ASSERT_GT(border, 10);
    // The right interval is black: its left border is drawn white over the full height.
    for (int row = 0; row < 20; ++row) {
        EXPECT_EQ(QColor(pixel(*bar, border, row)), QColor(Qt::white)) << "row " << row;
    }
    // The first handle of the white interval: a 3 x 5 mark at rows height - 8 .. height - 4.
    EXPECT_EQ(QColor(pixel(*bar, 1, 20 - 8)), QColor(51, 51, 51));
    EXPECT_EQ(QColor(pixel(*bar, 1, 20 - 4)), QColor(51, 51, 51));
    EXPECT_EQ(QColor(pixel(*bar, 1, 20 - 3)), QColor(Qt::white));
    // The first handle of the black interval: grey 204.
    EXPECT_EQ(QColor(pixel(*bar, border + 1, 20 - 6)), QColor(204, 204, 204));
}

TEST_F(ColorBarTest, ValuesShownWhileDraggingGoLeftOfAHandleNearTheRightEdge)
{
    setColourCurves(interval(),
                    {{0.0f, 255.5f}, {0.5f, 255.5f}, {250.5f / 256, 255.5f}, {1.0f, 255.5f}});
    bar->updateAll();
    press(*bar, 128);
    ASSERT_EQ(bar->hitKind(), OXWLUTColorBar::HitHandle);
    ASSERT_TRUE(bar->isShowingValues());
    EXPECT_EQ(bar->valueText(interval().globalFromLocal(interval().handles(kRed)[1].x)),
              QStringLiteral("128"));
    // Far from the edge the box starts at the handle; near it, the box ends there.
    EXPECT_EQ(bar->valueBox(128, 20).left(), 128);
    EXPECT_EQ(bar->valueBox(250, 20).right(), 249);
    EXPECT_EQ(bar->valueBox(250, 20).top(), -1);
    release(*bar, 128);

    press(*bar, 250);
    ASSERT_EQ(bar->hitKind(), OXWLUTColorBar::HitHandle);
    ASSERT_EQ(bar->currentHandle(), 2);
    moveTo(*bar, 250, Qt::LeftButton);
    // Black text on white, written left of column 250, nothing right of it.
    const QImage image = bar->pixmap().toImage();
    int leftInk = 0;
    int rightInk = 0;
    for (int row = 0; row < 10; ++row) {
        for (int c = 200; c < 250; ++c) {
            leftInk += QColor(image.pixel(c, row)).lightness() < 128 ? 1 : 0;
        }
        for (int c = 251; c < kColumns; ++c) {
            rightInk += QColor(image.pixel(c, row)).lightness() < 128 ? 1 : 0;
        }
    }
    EXPECT_GT(leftInk, 0);
    EXPECT_EQ(rightInk, 0);
    release(*bar, 250);
    EXPECT_FALSE(bar->isShowingValues());
}

TEST_F(ColorBarTest, ValuesUseTheModelsDecimals)
{
    model->setValueDecimals(2);
    EXPECT_EQ(bar->valueText(model->snapToCellCentre(0.5f)), QStringLiteral("128.00"));
    model->setValueDecimals(0);
    EXPECT_EQ(bar->valueText(model->snapToCellCentre(0.5f)), QStringLiteral("128"));
}

TEST_F(ColorBarTest, InconsistentChannelCountsDisableTheBar)
{
    ASSERT_TRUE(bar->isEnabled());
    ASSERT_TRUE(interval().insertHandle(kGreen, 0.5f, 10.0f));
    ASSERT_NE(interval().handles(kGreen).size(), interval().handles(kRed).size());
    bar->updateAll();
    EXPECT_FALSE(bar->isEnabled());
    // A disabled bar shows only its background.
    const QColor background = bar->palette().color(bar->backgroundRole());
    EXPECT_EQ(QColor(pixel(*bar, 100, 5)), background);
    // It stays disabled until enabled from outside.
    interval().deleteHandle(kGreen, 1);
    bar->updateAll();
    EXPECT_FALSE(bar->isEnabled());
    bar->setEnabled(true);
    bar->updateAll();
    EXPECT_TRUE(bar->isEnabled());
}

TEST_F(ColorBarTest, WithoutAModelTheBarShowsItsBackground)
{
    bar->setModel(nullptr);
    const QColor background = bar->palette().color(bar->backgroundRole());
    EXPECT_EQ(QColor(pixel(*bar, 0, 0)), background);
    EXPECT_EQ(QColor(pixel(*bar, 255, 19)), background);
    EXPECT_EQ(bar->positionFromColumn(10), 0.0f);
    EXPECT_EQ(bar->columnFromPosition(0.5f), 0);
}

TEST_F(ColorBarTest, TheHighlightBorderRunsAlongTheEdges)
{
    QImage image(16, 8, QImage::Format_RGB32);
    auto draw = [&] {
        image.fill(Qt::red);
        QPainter painter(&image);
        OXWLUTColorBar::drawHighlightBorder(&painter, QRect(0, 0, 16, 8));
    };
    // Align the shared phase to 0.
    while (OXWLUTColorBar::highlightPhase() != 0) {
        draw();
    }
    draw();
    EXPECT_EQ(OXWLUTColorBar::highlightPhase(), 1);
    // Only the outline is drawn: the inside keeps its colour, the edges are black and white.
    EXPECT_EQ(QColor(image.pixel(5, 4)), QColor(Qt::red));
    // (The corner pixel x = 15 belongs to the right edge, which runs the other way.)
    QString top;
    for (int x = 0; x < 15; ++x) {
        const QColor c(image.pixel(x, 0));
        EXPECT_TRUE(c == QColor(Qt::white) || c == QColor(Qt::black)) << x;
        top += c == QColor(Qt::white) ? QLatin1Char('W') : QLatin1Char('B');
    }
    // Row 0 of the pattern is 0xF0: four white, four black.
    EXPECT_EQ(top, QStringLiteral("WWWWBBBBWWWWBBB"));
    draw();
    QString next;
    for (int x = 0; x < 15; ++x) {
        next +=
            QColor(image.pixel(x, 0)) == QColor(Qt::white) ? QLatin1Char('W') : QLatin1Char('B');
    }
    EXPECT_EQ(next, QStringLiteral("BWWWWBBBBWWWWBB"));
    for (int i = 0; i < 6; ++i) {
        draw();
    }
    EXPECT_EQ(OXWLUTColorBar::highlightPhase(), 0);
}

TEST_F(ColorBarTest, PaintingOnlyCopiesThePixmap)
{
    setColourCurves(interval(), {{0.0f, 0.0f}, {1.0f, 255.0f}});
    bar->updateAll();
    const QImage before = bar->pixmap().toImage();
    const QImage grabbed = bar->grab().toImage();
    EXPECT_EQ(grabbed.copy(kFrame, kFrame, kColumns, 20).convertToFormat(before.format()), before);
}
