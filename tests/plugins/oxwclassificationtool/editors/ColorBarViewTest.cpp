// What the colour bar shows: the colour table of its columns, the marks and borders in the
// pixmap, zoom, the value texts, the moving highlight border, and a disabled bar.

#include "ColorBarTestSupport.h"

#include <QImage>
#include <QPainter>

#include <tuple>

using namespace colorbartest;

// Column c shows cell c: a curve black at cell 0 and white at local 0.5 climbs by two per
// column, then stays white; zoomed into the upper half, column c shows cell 128 + c / 2.
TEST_F(ColorBarTest, ColumnsShowTheCurvesAtTheirCells)
{
    setColourCurves(interval(), {{0.0f, 0.0f}, {0.5f, 255.0f}, {1.0f, 255.0f}});
    bar->updateAll();
    ASSERT_EQ(bar->colorTable().size(), std::size_t(kColumns));
    for (int c = 0; c < kColumns; ++c) {
        const int grey = bar->shown(c).red();
        EXPECT_NEAR(grey, std::min(2 * c, 255), 1) << "column " << c;
        EXPECT_EQ(bar->shown(c), QColor(grey, grey, grey));
    }
    EXPECT_EQ(bar->shown(0), QColor(0, 0, 0));
    EXPECT_EQ(bar->shown(128), QColor(255, 255, 255));
    // The pixmap shows the table (top row, away from marks and borders); painting copies it.
    EXPECT_EQ(bar->pixel(200, 2), QColor(255, 255, 255));
    EXPECT_EQ(bar->pixel(50, 2), bar->shown(50));
    const QImage pixmap = bar->pixmap().toImage();
    EXPECT_EQ(
        bar->grab().toImage().copy(kFrame, kFrame, kColumns, 20).convertToFormat(pixmap.format()),
        pixmap);

    setColourCurves(interval(), {{0.0f, 0.0f}, {1.0f, 255.0f}});
    ASSERT_TRUE(model->setVisibleGreyRange(0.5f, 1.0f));
    bar->updateAll();
    for (int c = 0; c < kColumns; c += 17) {
        EXPECT_NEAR(bar->shown(c).red(), 128 + c / 2, 1.5) << "column " << c;
    }
    EXPECT_NEAR(bar->positionFromColumn(0), 0.5f, 1e-6f);
    EXPECT_EQ(bar->columnFromPosition(0.75f), 128);
}

TEST_F(ColorBarTest, ASingleHandleColoursTheWholeInterval)
{
    auto one = makeModel(1);
    one->interval(0)->setReferenceHandles(kRed, {{0.5f, 10.0f}});
    one->interval(0)->setReferenceHandles(kGreen, {{0.5f, 20.0f}});
    one->interval(0)->setReferenceHandles(kBlue, {{0.5f, 30.0f}});
    bar->setModel(one.get());
    bar->updateAll();
    ASSERT_TRUE(bar->isEnabled());
    for (int c = 0; c < kColumns; ++c) {
        EXPECT_EQ(bar->shown(c), QColor(10, 20, 30)) << c;
    }
    bar->setModel(nullptr);
}

TEST_F(ColorBarTest, TheCurrentIntervalsColourIsShownAtOnceAndItsChildrenAreNamed)
{
    bar->hit(50);
    bar->setCurrentIntervalColor(OXMRGB8(10, 20, 30));
    EXPECT_EQ(bar->pixel(50, 2), QColor(10, 20, 30));
    for (const QWidget* child : bar->findChildren<QWidget*>())
        EXPECT_FALSE(child->objectName().isEmpty()) << child->metaObject()->className();
}

// Handle marks (3 x 5 pixels at rows height - 8 .. height - 4) are grey 51 on light colours
// and grey 204 on dark ones; an interval's left border is black on a light colour and white
// on a dark one. Dark is a luminance class of 0 .. 2: grey 95 and below.
TEST_F(ColorBarTest, HandleMarksAndIntervalBordersContrastWithTheColour)
{
    ASSERT_TRUE(model->newInterval(0.5f, true));
    const int border = bar->columnFromPosition(interval(1).from());
    ASSERT_GT(border, 10);
    const std::tuple<int, int, int, int, QColor> cases[] = {
        {255, 0, 51, 204, Qt::white}, {96, 95, 51, 204, Qt::white}, {95, 96, 204, 51, Qt::black}};
    for (const auto& [left, right, leftMark, rightMark, line] : cases) {
        setColourCurves(interval(0), {{0.0f, left + 0.5f}, {1.0f, left + 0.5f}});
        setColourCurves(interval(1), {{0.0f, right + 0.5f}, {1.0f, right + 0.5f}});
        bar->updateAll();
        for (int row = 0; row < 20; ++row) {
            EXPECT_EQ(bar->pixel(border, row), line) << left << " " << row;
        }
        for (int row : {20 - 8, 20 - 4}) {
            EXPECT_EQ(bar->pixel(1, row), QColor(leftMark, leftMark, leftMark)) << left;
        }
        EXPECT_EQ(bar->pixel(1, 20 - 3), QColor(left, left, left)) << left;
        EXPECT_EQ(bar->pixel(border + 1, 20 - 6), QColor(rightMark, rightMark, rightMark));
    }
}

// While a handle is dragged its value is written next to it with the model's decimals, left
// of the handle near the right edge.
TEST_F(ColorBarTest, ValuesShownWhileDraggingGoLeftOfAHandleNearTheRightEdge)
{
    setColourCurves(interval(),
                    {{0.0f, 255.5f}, {0.5f, 255.5f}, {250.5f / 256, 255.5f}, {1.0f, 255.5f}});
    bar->updateAll();
    model->setValueDecimals(2);
    EXPECT_EQ(bar->valueText(interval().globalFromLocal(interval().handles(kRed)[1].x)),
              QStringLiteral("128.00"));
    EXPECT_EQ(bar->valueBox(128, 20).left(), 128);
    EXPECT_EQ(bar->valueBox(250, 20).right(), 249);
    EXPECT_EQ(bar->valueBox(250, 20).top(), -1);

    press(*bar, 250);
    ASSERT_EQ(bar->currentHandle(), 2);
    ASSERT_TRUE(bar->isShowingValues());
    moveTo(*bar, 250, Qt::LeftButton);
    // Black text on white, written left of column 250, nothing right of it.
    const QImage image = bar->pixmap().toImage();
    int ink[2] = {0, 0};
    for (int row = 0; row < 10; ++row) {
        for (int c = 200; c < kColumns; ++c) {
            if (c != 250 && QColor(image.pixel(c, row)).lightness() < 128) {
                ++ink[c > 250 ? 1 : 0];
            }
        }
    }
    EXPECT_GT(ink[0], 0);
    EXPECT_EQ(ink[1], 0);
    release(*bar, 250);
    EXPECT_FALSE(bar->isShowingValues());
}

// Without a model, or disabled by channels of different handle counts, the bar shows its
// background; it stays disabled until enabled from outside.
TEST_F(ColorBarTest, ADisabledBarOrOneWithoutModelShowsItsBackground)
{
    const QColor background = bar->palette().color(bar->backgroundRole());
    ASSERT_TRUE(interval().insertHandle(kGreen, 0.5f, 10.0f));
    bar->updateAll();
    EXPECT_FALSE(bar->isEnabled());
    EXPECT_EQ(bar->pixel(100, 5), background);
    interval().deleteHandle(kGreen, 1);
    bar->updateAll();
    EXPECT_FALSE(bar->isEnabled());
    bar->setEnabled(true);
    bar->updateAll();
    EXPECT_NE(bar->pixel(100, 5), background);

    bar->setModel(nullptr);
    EXPECT_EQ(bar->pixel(255, 19), background);
    EXPECT_EQ(bar->positionFromColumn(10), 0.0f);
}

// The outline is black with the white dashes of the 8 x 8 stripe pattern (row 0: 0xF0), which
// move one step along the edges per call (the phase is shared by the process); the inside and
// the caller's painter are left as they were.
TEST_F(ColorBarTest, TheHighlightBorderRunsAlongTheEdges)
{
    while (OXWLUTColorBar::highlightPhase() != 0) {
        QImage scratch(8, 8, QImage::Format_RGB32);
        QPainter painter(&scratch);
        OXWLUTColorBar::drawHighlightBorder(&painter, scratch.rect());
    }
    QImage image(16, 8, QImage::Format_RGB32);
    for (const char* top : {"WWWWBBBBWWWWBBB", "BWWWWBBBBWWWWBB"}) {
        image.fill(Qt::red);
        QPainter painter(&image);
        painter.setPen(Qt::green);
        OXWLUTColorBar::drawHighlightBorder(&painter, image.rect());
        EXPECT_EQ(painter.pen().color(), QColor(Qt::green));
        for (int x = 0; x < 15; ++x) { // the corner x = 15 belongs to the right edge
            EXPECT_EQ(QColor(image.pixel(x, 0)), top[x] == 'W' ? Qt::white : Qt::black) << x;
        }
        EXPECT_EQ(QColor(image.pixel(5, 4)), QColor(Qt::red));
    }
}
