// The pictures of the work area, read from its off-screen buffer: contents pixels of a
// 160 x 100 view of 16 cells (cell c spans x = 10 c .. 10 c + 9, opacity h lies on row
// 99 - 100 h) unless a test says otherwise.

#include "WorkAreaFixture.h"

#include <OXMAction.h>

#include <QFontMetrics>
#include <QPainter>
#include <QSignalSpy>
#include <QTimer>

#include <gtest/gtest.h>

#include <array>
#include <functional>
#include <tuple>

using workarea_test::WorkAreaFixture;
using Hover = OXWLUTWorkArea::HoverMode;

namespace {

// The bounding box of the pixels in the area (all of the image by default) that pass the test.
QRect boxWhere(const QImage& image, const std::function<bool(QRgb)>& test, QRect area = QRect())
{
    area = area.isNull() ? image.rect() : area & image.rect();
    QRect box;
    for (int y = area.top(); y <= area.bottom(); ++y) {
        for (int x = area.left(); x <= area.right(); ++x) {
            box |= test(image.pixel(x, y)) ? QRect(x, y, 1, 1) : QRect();
        }
    }
    return box;
}

QRect boxOf(const QImage& image, QRgb colour, const QRect& area = QRect())
{
    return boxWhere(
        image, [colour](QRgb c) { return c == colour; }, area);
}

// Where the widget, drawing text in the font centred into the rectangle, puts its full-strength
// pixels.
QRect textBox(const WorkAreaFixture& f, const QFont& font, const QRect& rect, const QString& text)
{
    QImage probe(f.workArea->buffer().size(), QImage::Format_RGB32);
    probe.fill(Qt::white);
    QPainter painter(&probe);
    painter.setFont(font);
    painter.setPen(Qt::red);
    painter.drawText(rect, Qt::AlignCenter | Qt::TextWordWrap, text);
    painter.end();
    return boxOf(probe, qRgb(255, 0, 0));
}

} // namespace

// Without something to edit the widget says why: a red bold headline half a line above the
// middle, an explanation below it in the text colour, on the background.
TEST(WorkAreaRender, MessageScreens)
{
    const QString noRights = QStringLiteral("Rendering settings cannot be changed.");
    const QString noSettings = QStringLiteral("ROI contains no render settings.");
    const std::tuple<bool, bool, bool, bool, QString> cases[] = {
        {false, false, false, true, QStringLiteral("No volume or ROI selected.")},
        {false, true, false, true, noSettings},
        {true, true, false, true, noRights},
        {true, false, false, true, noRights},
        {true, true, true, false, noRights}};
    for (const auto& [denied, renderObject, model, enabled, headline] : cases) {
        WorkAreaFixture f(16, 400, 100);
        f.rights.setAllowClassificationEdit(!denied);
        f.workArea->setRights(&f.rights);
        f.workArea->setRenderObject(renderObject ? &f.renderObject : nullptr);
        f.workArea->setObjectInfo(model ? f.model.get() : nullptr);
        f.workArea->setEnabled(enabled);
        f.workArea->updateAll();
        const QImage image = f.image();
        QFont bold = f.workArea->font();
        bold.setWeight(75);
        const int half = QFontMetrics(f.workArea->font()).height() / 2;
        EXPECT_EQ(boxOf(image, qRgb(255, 0, 0)),
                  textBox(f, bold, QRect(QPoint(0, -half), image.size()), headline))
            << headline.toStdString();
        const QRgb text = f.workArea->palette().color(QPalette::WindowText).rgb();
        EXPECT_FALSE(boxOf(image, text, QRect(0, 50, 400, 50)).isNull());
        EXPECT_EQ(image.pixel(1, 1), f.workArea->palette().color(QPalette::Window).rgb());
    }
}

// Equal bins: the bars fill half the height (twice the mean is the full height). A disabled
// interval is greyed and says so on the line below its name.
TEST(WorkAreaRender, HistogramBarsAndDisabledIntervals)
{
    WorkAreaFixture f;
    f.setOpacityCurve(0, {{0, 1.0f}, {15, 1.0f}}); // the curve above the view
    const QImage enabled = f.image();
    f.interval(0)->setEnabled(false);
    f.workArea->updateAll();
    const QImage image = f.image();
    EXPECT_EQ(enabled.pixel(40, 30), qRgb(255, 255, 255));
    EXPECT_EQ(enabled.pixel(40, 90), qRgb(204, 204, 204));
    EXPECT_EQ(image.pixel(40, 30), qRgb(204, 204, 204));
    EXPECT_EQ(image.pixel(40, 90), qRgb(163, 163, 163));
    QFont nameFont = f.workArea->font();
    nameFont.setPointSize(9);
    const QFontMetrics metrics(nameFont);
    const QRect secondLine(20, metrics.height(), 120, metrics.height());
    const QRect label = boxWhere(
        image, [](QRgb c) { return c != qRgb(204, 204, 204); }, secondLine);
    EXPECT_NEAR(label.width(), metrics.boundingRect(QStringLiteral("(disabled)")).width(), 3);
    EXPECT_NEAR(label.center().x(), 80, 3);
    EXPECT_TRUE(boxWhere(
                    enabled, [](QRgb c) { return c != qRgb(255, 255, 255); }, secondLine)
                    .isNull());
    // The bars scale with the zoom and can be hidden; without a histogram object nothing is
    // drawn, the last picture stays.
    f.interval(0)->setEnabled(true);
    f.model->setVerticalZoom(2.0f);
    f.workArea->updateAll();
    EXPECT_EQ(f.image().pixel(40, 40), qRgb(204, 204, 204));
    QMetaObject::invokeMethod(f.workArea, "histogramDisable");
    EXPECT_EQ(f.image().pixel(40, 90), qRgb(255, 255, 255));
    f.workArea->setHistogramObject(nullptr);
    const QImage before = f.image();
    f.model->setVerticalZoom(1.0f);
    f.workArea->updateAll();
    EXPECT_EQ(f.image(), before);
}

// Blue lines mark the left borders of the intervals. The axis titles: the vertical one rotated
// along the left edge, below the names; the horizontal one at the bottom, ending ten pixels
// from the right.
TEST(WorkAreaRender, BordersAndAxisTitles)
{
    WorkAreaFixture f;
    ASSERT_TRUE(f.model->newInterval(0.5f, false));
    f.workArea->updateAll();
    const QImage image = f.image();
    EXPECT_EQ(boxOf(image, qRgb(0, 0, 255), QRect(0, 20, 1, 75)), QRect(0, 20, 1, 75));
    EXPECT_EQ(boxOf(image, qRgb(0, 0, 255), QRect(1, 20, 159, 75)), QRect(80, 20, 1, 75));
    auto dark = [](QRgb c) { return qGray(c) < 180; };
    const QRect vertical = boxWhere(image, dark, QRect(1, 14, 10, 36));
    EXPECT_GT(vertical.height(), 3 * vertical.width());
    const QRect horizontal = boxWhere(image, dark, QRect(80, 85, 80, 15));
    EXPECT_GT(horizontal.width(), 3 * horizontal.height());
    EXPECT_NEAR(horizontal.right(), 150, 3);
}

// The isosurface marker is a full-height line, light red while inactive, red while active,
// clamped into the axis. Active, it wins over a segment within a pixel, a handle wins over it,
// and a drag moves it within the axis.
TEST(WorkAreaRender, TheIsosurfaceMarker)
{
    WorkAreaFixture f;
    f.model->setIsosurface(0.25f);
    f.workArea->updateAll();
    EXPECT_TRUE(boxOf(f.image(), qRgb(255, 160, 160)).isNull());
    const std::tuple<bool, float, int, QRgb> cases[] = {{false, 0.25f, 40, qRgb(255, 160, 160)},
                                                        {true, -3.0f, 0, qRgb(255, 0, 0)},
                                                        {true, 0.5f, 80, qRgb(255, 0, 0)}};
    for (const auto& [active, position, column, colour] : cases) {
        f.model->setIsosurface(position);
        f.workArea->setIsosurfaceShown(true);
        f.workArea->setIsosurfaceActive(active);
        f.workArea->updateAll();
        const QRect line(column, 20, 1, 75);
        EXPECT_EQ(boxOf(f.image(), colour, line), line) << active << " " << position;
    }
    const std::tuple<bool, int, int> probes[] = {{false, 81, Hover::HoverSegment},
                                                 {true, 82, Hover::HoverSegment},
                                                 {true, 81, Hover::HoverIsosurface}};
    for (const auto& [active, x, hover] : probes) {
        f.workArea->setIsosurfaceActive(active);
        f.move(f.widgetPoint(x, 49));
        EXPECT_EQ(f.workArea->hoverMode(), hover) << active << " " << x;
    }
    EXPECT_EQ(f.workArea->cursor().shape(), Qt::SizeHorCursor);
    QSignalSpy iso(f.workArea, &OXWLUTWorkArea::isosurfaceChanged);
    f.press(f.widgetPoint(80, 49));
    EXPECT_EQ(f.workArea->pressAction(), OXWLUTWorkArea::PressIsosurface);
    f.move(f.widgetPoint(120, 49));
    EXPECT_FLOAT_EQ(f.model->isosurface(), 0.75f);
    f.move(f.widgetPoint(400, 49));
    EXPECT_FLOAT_EQ(f.model->isosurface(), 1.0f);
    EXPECT_EQ(iso.count(), 2);
    f.release(f.widgetPoint(400, 49));
    f.model->setIsosurface(15.5f / 16);
    f.move(f.handlePoint(0, 1) + QPoint(0, 2));
    EXPECT_EQ(f.workArea->hoverMode(), OXWLUTWorkArea::HoverHandle);
}

// While the histogram is calculated the widget says so and polls; an aborted calculation only
// restarts the poll.
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
        f.workArea->updateAll();
        during = f.image();
        return outcome;
    }));
    f.workArea->setHistogramObject(&histogram);
    for (OXMenum result : {OXM::NoError, OXM::Abort}) {
        timer->stop();
        outcome = result;
        EXPECT_EQ(histogram.execute(OXM::Calculate), result == OXM::NoError);
        EXPECT_TRUE(timer->isActive());
    }
    EXPECT_EQ(during.pixel(1, 1), f.workArea->palette().color(QPalette::Window).rgb());
    EXPECT_EQ(boxOf(during, f.workArea->palette().color(QPalette::WindowText).rgb()),
              textBox(f, f.workArea->font(), QRect(QPoint(), during.size()),
                      QStringLiteral("calculation in progress...")));
    const QImage before = f.image();
    f.workArea->updateAll();
    EXPECT_EQ(f.image(), before);
    f.workArea->setHistogramObject(nullptr);
}

// While the mouse is on a handle or drags, black labels tell the values: the grey value and
// opacity of the handles above them; the grey values on both sides of a rubber band or a
// border, at half height; the visible grey range at the edges and the zoom in the middle.
TEST(WorkAreaRender, LabelsWhileHoveringAndDragging)
{
    const QRect left(0, 30, 20, 40);
    const QRect right(140, 30, 20, 40);
    const QRect beforeX(70, 30, 30, 40); // x = 100 for the band, the border after the drag
    const QRect afterX(101, 30, 30, 40);
    const std::tuple<const char*, std::vector<std::pair<int, float>>, bool, QPoint, QPoint,
                     std::vector<QRect>>
        cases[] = {
            {"handle", {{0, 0}, {8, 0.5f}, {15, 1}}, false, {}, {85, 49}, {{55, 25, 60, 24}}},
            {"segment",
             {{0, 0}, {4, 0.5f}, {11, 0.5f}, {15, 1}},
             false,
             {80, 49},
             {80, 59},
             {{10, 30, 70, 25}, {80, 30, 75, 25}}},
            {"rubber band", {}, false, {157, 50}, {100, 50}, {beforeX, afterX}},
            {"border", {}, true, {81, 50}, {101, 50}, {left, beforeX, afterX, right}},
            {"zoom", {}, false, {120, 90}, {120, 38}, {left, {50, 30, 60, 40}, right}}};
    auto ink = [](QRgb c) { return qRed(c) < 60 && qGreen(c) < 60 && qBlue(c) < 60; };
    for (const auto& [what, curve, split, pressAt, moveTo, labels] : cases) {
        WorkAreaFixture f;
        if (!curve.empty()) {
            f.setOpacityCurve(0, curve);
        }
        if (split) {
            ASSERT_TRUE(f.model->newInterval(0.5f, false));
            f.workArea->updateAll();
        }
        EXPECT_TRUE(boxWhere(f.image(), ink).isNull()) << what;
        if (!pressAt.isNull()) {
            f.move(f.widgetPoint(pressAt.x(), pressAt.y()));
            f.press(f.widgetPoint(pressAt.x(), pressAt.y()));
        }
        f.move(f.widgetPoint(moveTo.x(), moveTo.y()));
        QRect all;
        for (const QRect& label : labels) {
            EXPECT_FALSE(boxWhere(f.image(), ink, label).isNull()) << what << " " << label.x();
            all |= label;
        }
        EXPECT_TRUE(all.contains(boxWhere(f.image(), ink))) << what;
    }
}
