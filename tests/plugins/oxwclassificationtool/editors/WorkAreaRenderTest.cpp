// The pictures of the work area, read from its off-screen buffer.

#include "WorkAreaFixture.h"

#include <OXMAction.h>

#include <QFontMetrics>
#include <QPainter>
#include <QTimer>

#include <gtest/gtest.h>

using workarea_test::WorkAreaFixture;

namespace {

const QRgb DarkGray = QColor(Qt::darkGray).rgb();

// The bounding box of the pixels of exactly this colour, optionally within rows [top, bottom].
QRect boxOf(const QImage& image, QRgb colour, int top = 0, int bottom = -1)
{
    if (bottom < 0) {
        bottom = image.height() - 1;
    }
    QRect box;
    for (int y = top; y <= bottom; ++y) {
        for (int x = 0; x < image.width(); ++x) {
            if (image.pixel(x, y) == colour) {
                box |= QRect(x, y, 1, 1);
            }
        }
    }
    return box;
}

// The run of pixels of the colour in row y that contains column x.
int runWidth(const QImage& image, int x, int y, QRgb colour)
{
    if (image.pixel(x, y) != colour) {
        return 0;
    }
    int left = x;
    while (left > 0 && image.pixel(left - 1, y) == colour) {
        --left;
    }
    int right = x;
    while (right < image.width() - 1 && image.pixel(right + 1, y) == colour) {
        ++right;
    }
    return right - left + 1;
}

// The box of the full-strength pixels of text drawn in the font into the rectangle of a
// picture of the buffer's size: where the widget, drawing with the same font, puts them.
QRect inkBox(const WorkAreaFixture& f, const QFont& font, const QRect& rect, const QString& text)
{
    QPixmap probe(f.workArea->buffer().size());
    probe.fill(f.workArea->palette().color(QPalette::Window));
    QPainter painter(&probe);
    painter.setFont(font);
    painter.setPen(QColor(255, 0, 0));
    painter.drawText(rect, Qt::AlignCenter | Qt::TextWordWrap, text);
    painter.end();
    return boxOf(probe.toImage(), qRgb(255, 0, 0));
}

// The red headline as the widget's message screen draws it: bold, centred half a line above
// the middle of the buffer.
QRect expectedHeadline(const WorkAreaFixture& f, const QString& text)
{
    const QFont base = f.workArea->font();
    QFont bold = base;
    bold.setWeight(75);
    const int half = QFontMetrics(base).height() / 2;
    return inkBox(f, bold, QRect(QPoint(0, -half), f.workArea->buffer().size()), text);
}

// The bounding box of the pixels that differ from the background within the rows and columns.
QRect boxNot(const QImage& image, QRgb background, const QRect& area)
{
    QRect box;
    for (int y = area.top(); y <= area.bottom(); ++y) {
        for (int x = area.left(); x <= area.right(); ++x) {
            if (image.pixel(x, y) != background) {
                box |= QRect(x, y, 1, 1);
            }
        }
    }
    return box;
}

bool isDark(QRgb c)
{
    return qRed(c) < 60 && qGreen(c) < 60 && qBlue(c) < 60;
}

QRect darkBox(const QImage& image)
{
    QRect box;
    for (int y = 0; y < image.height(); ++y) {
        for (int x = 0; x < image.width(); ++x) {
            if (isDark(image.pixel(x, y))) {
                box |= QRect(x, y, 1, 1);
            }
        }
    }
    return box;
}

} // namespace

// --- message screens

TEST(WorkAreaRender, NoModelNoRenderObject)
{
    WorkAreaFixture f(16, 400, 100);
    f.workArea->setRenderObject(nullptr);
    f.workArea->setObjectInfo(nullptr);
    f.workArea->updateAll();
    const QImage image = f.image();
    const QRect red = boxOf(image, qRgb(255, 0, 0));
    ASSERT_FALSE(red.isNull());
    EXPECT_LT(red.bottom(), image.height() / 2);
    EXPECT_EQ(red, expectedHeadline(f, QStringLiteral("No volume or ROI selected.")));
    // The explanation below the middle, in the text colour.
    const QRgb text = f.workArea->palette().color(QPalette::WindowText).rgb();
    const QRect below = boxOf(image, text, image.height() / 2, image.height() - 1);
    EXPECT_FALSE(below.isNull());
    // The rest is the background.
    EXPECT_EQ(image.pixel(1, 1), f.workArea->palette().color(QPalette::Window).rgb());
}

TEST(WorkAreaRender, RenderObjectWithoutModel)
{
    WorkAreaFixture f(16, 400, 100);
    f.workArea->setObjectInfo(nullptr);
    f.workArea->updateAll();
    const QRect red = boxOf(f.image(), qRgb(255, 0, 0));
    ASSERT_FALSE(red.isNull());
    EXPECT_EQ(red, expectedHeadline(f, QStringLiteral("ROI contains no render settings.")));
}

TEST(WorkAreaRender, MissingRightsReplaceEitherMessage)
{
    WorkAreaFixture f(16, 400, 100);
    f.rights.setAllowClassificationEdit(false);
    f.workArea->setRights(&f.rights);
    f.workArea->setObjectInfo(nullptr);
    f.workArea->updateAll();
    const QRect expected =
        expectedHeadline(f, QStringLiteral("Rendering settings cannot be changed."));
    EXPECT_EQ(boxOf(f.image(), qRgb(255, 0, 0)), expected);
    f.workArea->setRenderObject(nullptr);
    f.workArea->updateAll();
    EXPECT_EQ(boxOf(f.image(), qRgb(255, 0, 0)), expected);
    // A disabled widget with a model shows the message screen too.
    f.workArea->setObjectInfo(f.model.get());
    f.workArea->setEnabled(false);
    f.workArea->updateAll();
    EXPECT_EQ(boxOf(f.image(), qRgb(255, 0, 0)), expected);
    // Rights granted again, enabled: the classification is drawn.
    f.rights.setAllowClassificationEdit(true);
    f.workArea->setEnabled(true);
    f.workArea->updateAll();
    EXPECT_TRUE(boxOf(f.image(), qRgb(255, 0, 0)).isNull());
}

TEST(WorkAreaRender, GoneRightsObjectMeansAllowed)
{
    WorkAreaFixture f(16, 400, 100);
    {
        OXMTulvoRights rights;
        rights.setAutoDelete(false);
        rights.setAllowClassificationEdit(false);
        f.workArea->setRights(&rights);
        EXPECT_EQ(f.workArea->rights(), &rights);
    }
    EXPECT_EQ(f.workArea->rights(), nullptr);
    f.workArea->setObjectInfo(nullptr);
    f.workArea->updateAll();
    EXPECT_EQ(boxOf(f.image(), qRgb(255, 0, 0)),
              expectedHeadline(f, QStringLiteral("ROI contains no render settings.")));
}

// --- intervals and handles

TEST(WorkAreaRender, HandleRectangleCoversItsCellLessTheFirstColumn)
{
    WorkAreaFixture f(16);
    f.setOpacityCurve(0, {{0, 0.5f}, {8, 0.5f}, {15, 0.5f}});
    const QImage image = f.image();
    // Cell 8 spans pixels 80..89; the handle's rows are 45..52 around row 49.
    EXPECT_EQ(runWidth(image, 85, 46, DarkGray), 9);
    EXPECT_EQ(image.pixel(80, 46) == DarkGray, false);
    EXPECT_EQ(image.pixel(81, 46), DarkGray);
    EXPECT_EQ(image.pixel(89, 46), DarkGray);
    EXPECT_EQ(image.pixel(85, 45), DarkGray);
    EXPECT_EQ(image.pixel(85, 52), DarkGray);
    EXPECT_NE(image.pixel(85, 44), DarkGray);
    EXPECT_NE(image.pixel(85, 53), DarkGray);
}

TEST(WorkAreaRender, NarrowCellsGiveSevenPixelHandles)
{
    WorkAreaFixture f(256);
    f.setOpacityCurve(0, {{0, 0.5f}, {128, 0.5f}, {255, 0.5f}});
    const QImage image = f.image();
    const int p = f.workArea->pixelFromPosition(128.5f / 256.0f);
    EXPECT_EQ(runWidth(image, p, 46, DarkGray), 7);
    EXPECT_EQ(image.pixel(p - 3, 46), DarkGray);
    EXPECT_EQ(image.pixel(p + 3, 46), DarkGray);
}

TEST(WorkAreaRender, DisabledIntervalIsGreyedWithALabel)
{
    WorkAreaFixture f;
    // Curve at full opacity (above the view) so that only background and bars are below.
    f.setOpacityCurve(0, {{0, 1.0f}, {15, 1.0f}});
    const QImage enabled = f.image();
    const QRect enabledName = boxOf(enabled, QColor(Qt::white).darker(200).rgb());
    f.interval(0)->setEnabled(false);
    f.workArea->updateAll();
    const QImage image = f.image();
    // Equal bins: the bars fill half the height (twice the mean is the full height).
    EXPECT_EQ(image.pixel(40, 30), qRgb(204, 204, 204));
    EXPECT_EQ(image.pixel(40, 90), qRgb(163, 163, 163));
    EXPECT_EQ(enabled.pixel(40, 30), qRgb(255, 255, 255));
    EXPECT_EQ(enabled.pixel(40, 90), qRgb(204, 204, 204));
    // The name in (102, 102, 102) on its line of the 9-point font, and "(disabled)" on the
    // line below (the columns of the rotated axis title at the left edge are left out).
    QFont nameFont = f.workArea->font();
    nameFont.setPointSize(9);
    const QFontMetrics metrics(nameFont);
    const int lineHeight = metrics.height();
    const QRect name = boxOf(image, qRgb(102, 102, 102));
    ASSERT_FALSE(name.isNull());
    ASSERT_FALSE(enabledName.isNull());
    EXPECT_EQ(name.top(), enabledName.top());
    EXPECT_LT(enabledName.bottom(), lineHeight);
    EXPECT_GE(name.bottom(), lineHeight);
    EXPECT_LT(name.bottom(), 2 * lineHeight);
    const QRect secondLine(20, lineHeight, 120, lineHeight);
    const QRect label = boxNot(image, qRgb(204, 204, 204), secondLine);
    ASSERT_FALSE(label.isNull());
    EXPECT_NEAR(label.width(), metrics.boundingRect(QStringLiteral("(disabled)")).width(), 3);
    EXPECT_NEAR(label.center().x(), 80, 3);
    EXPECT_TRUE(boxNot(enabled, qRgb(255, 255, 255), secondLine).isNull());
}

TEST(WorkAreaRender, BlueLeftBorders)
{
    WorkAreaFixture f;
    ASSERT_TRUE(f.model->newInterval(0.5f, false));
    f.workArea->updateAll();
    const QImage image = f.image();
    for (int y = 20; y < 95; ++y) {
        EXPECT_EQ(image.pixel(80, y), qRgb(0, 0, 255)) << y;
        EXPECT_EQ(image.pixel(0, y), qRgb(0, 0, 255)) << y;
    }
    EXPECT_NE(image.pixel(79, 60), qRgb(0, 0, 255));
    EXPECT_NE(image.pixel(81, 60), qRgb(0, 0, 255));
}

TEST(WorkAreaRender, IsosurfaceMarkerColours)
{
    WorkAreaFixture f;
    f.model->setIsosurface(0.25f);
    f.workArea->updateAll();
    EXPECT_NE(f.image().pixel(40, 80), qRgb(255, 160, 160));
    f.workArea->setIsosurfaceShown(true);
    f.workArea->updateAll();
    QImage image = f.image();
    for (int y = 20; y < 95; ++y) {
        EXPECT_EQ(image.pixel(40, y), qRgb(255, 160, 160)) << y;
    }
    f.workArea->setIsosurfaceActive(true);
    f.workArea->updateAll();
    image = f.image();
    for (int y = 20; y < 95; ++y) {
        EXPECT_EQ(image.pixel(40, y), qRgb(255, 0, 0)) << y;
    }
    // Clamped into the axis.
    f.model->setIsosurface(-3.0f);
    f.workArea->updateAll();
    EXPECT_EQ(f.image().pixel(0, 60), qRgb(255, 0, 0));
}

TEST(WorkAreaRender, HistogramScalesWithTheZoomAndCanBeHidden)
{
    WorkAreaFixture f;
    f.setOpacityCurve(0, {{0, 1.0f}, {15, 1.0f}});
    const QRgb bar = qRgb(204, 204, 204);
    EXPECT_EQ(f.image().pixel(40, 60), bar);
    EXPECT_NE(f.image().pixel(40, 40), bar);
    f.model->setVerticalZoom(2.0f);
    f.workArea->updateAll();
    EXPECT_EQ(f.image().pixel(40, 40), bar);
    f.workArea->setIsosurfaceShown(false);
    QMetaObject::invokeMethod(f.workArea, "histogramDisable");
    EXPECT_EQ(f.image().pixel(40, 90), qRgb(255, 255, 255));
}

TEST(WorkAreaRender, NoHistogramObjectDrawsNothing)
{
    WorkAreaFixture f;
    f.workArea->setHistogramObject(nullptr);
    // Without a histogram object nothing is drawn: the last picture stays.
    const QImage before = f.image();
    f.workArea->updateAll();
    EXPECT_EQ(f.image(), before);
}

TEST(WorkAreaRender, CalculationInProgressAndAborted)
{
    WorkAreaFixture f;
    auto* timer =
        f.workArea->findChild<QTimer*>(QStringLiteral("OXWHistogramToolBaseGUI::mUpdateTimer"));
    ASSERT_NE(timer, nullptr);
    OXMObject histogram;
    histogram.setAutoDelete(false);
    QImage during;
    OXMenum outcome = OXM::NoError;
    histogram.addAction(new OXMAction(OXM::Calculate, [&](OXMObject&, void*, OXMTaskInfo&) {
        // The widget renders while the calculation runs.
        f.workArea->updateAll();
        during = f.image();
        return outcome;
    }));
    f.workArea->setHistogramObject(&histogram);
    timer->stop();
    ASSERT_TRUE(histogram.execute(OXM::Calculate));
    const QRgb background = f.workArea->palette().color(QPalette::Window).rgb();
    EXPECT_EQ(during.pixel(1, 1), background);
    const QRgb text = f.workArea->palette().color(QPalette::WindowText).rgb();
    const QRect written = boxOf(during, text);
    ASSERT_FALSE(written.isNull());
    EXPECT_EQ(written, inkBox(f, f.workArea->font(), QRect(QPoint(), during.size()),
                              QStringLiteral("calculation in progress...")));
    EXPECT_TRUE(timer->isActive());

    // An aborted calculation only restarts the timer.
    timer->stop();
    outcome = OXM::Abort;
    EXPECT_FALSE(histogram.execute(OXM::Calculate));
    const QImage before = f.image();
    f.workArea->updateAll();
    EXPECT_EQ(f.image(), before);
    EXPECT_TRUE(timer->isActive());
    f.workArea->setHistogramObject(nullptr);
}

TEST(WorkAreaRender, HandleLabelWhileHovering)
{
    WorkAreaFixture f;
    f.setOpacityCurve(0, {{0, 0.0f}, {8, 0.5f}, {15, 1.0f}});
    EXPECT_TRUE(darkBox(f.image()).isNull());
    f.move(f.handlePoint(0, 1));
    ASSERT_EQ(f.workArea->hoverMode(), OXWLUTWorkArea::HoverHandle);
    const QRect label = darkBox(f.image());
    ASSERT_FALSE(label.isNull());
    // Above the handle (row 49), centred on it (column 85).
    EXPECT_LT(label.bottom(), 49);
    EXPECT_NEAR(label.center().x(), 85, 3);
    // "8 / 0.5000" in the 8-point font.
    QFont font = f.workArea->font();
    font.setPointSize(8);
    EXPECT_NEAR(label.width(),
                QFontMetrics(font).boundingRect(QStringLiteral("8 / 0.5000")).width(), 6);
}
