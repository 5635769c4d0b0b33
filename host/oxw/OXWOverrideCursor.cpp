#include "OXWOverrideCursor.h"

#include <QImage>
#include <QPainter>
#include <QPainterPath>
#include <QPixmap>

namespace {
constexpr int Size = 32;
constexpr int BarX = 15; // the bar covers the columns 15 and 16
constexpr int BarTop = 7;
constexpr int BarBottom = 24;

// Draws "|->" (right) or "<-|" (left) into a transparent image.
QImage expandImage(bool right)
{
    QImage image(Size, Size, QImage::Format_ARGB32_Premultiplied);
    image.fill(Qt::transparent);
    QPainter p(&image);
    const int dir = right ? 1 : -1;
    const int mid = (BarTop + BarBottom) / 2;
    const int barX = right ? BarX : BarX + 1; // the arrow starts on the bar's outer column
    const int tipX = barX + dir * 11;

    QPainterPath arrow;
    arrow.moveTo(barX, mid);
    arrow.lineTo(tipX, mid);
    arrow.moveTo(tipX - dir * 4, mid - 4);
    arrow.lineTo(tipX, mid);
    arrow.lineTo(tipX - dir * 4, mid + 4);

    // White outline first, then the black shape on top of it.
    p.setRenderHint(QPainter::Antialiasing, false);
    p.strokePath(arrow, QPen(Qt::white, 4, Qt::SolidLine, Qt::SquareCap, Qt::MiterJoin));
    p.fillRect(QRect(BarX - 1, BarTop - 1, 4, BarBottom - BarTop + 3), Qt::white);
    p.strokePath(arrow, QPen(Qt::black, 2, Qt::SolidLine, Qt::FlatCap, Qt::MiterJoin));
    p.fillRect(QRect(BarX, BarTop, 2, BarBottom - BarTop + 1), Qt::black);
    p.end();
    return image;
}
} // namespace

QPoint OXWOverrideCursor::expandCursorHotSpot()
{
    return QPoint(BarX, (BarTop + BarBottom) / 2);
}

QCursor OXWOverrideCursor::getCursor(OXMenum id)
{
    if (id != OXM::ExpandLeftCursor && id != OXM::ExpandRightCursor)
        return QCursor(Qt::ArrowCursor);
    const QPoint hot = expandCursorHotSpot();
    return QCursor(QPixmap::fromImage(expandImage(id == OXM::ExpandRightCursor)), hot.x(), hot.y());
}
