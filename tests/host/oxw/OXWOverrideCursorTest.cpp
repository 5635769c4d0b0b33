#include "OXWOverrideCursor.h"

#include <QImage>
#include <QPixmap>

#include <gtest/gtest.h>

namespace {
bool isBlack(const QImage& image, QPoint p)
{
    const QColor c = image.pixelColor(p);
    return c.alpha() == 255 && c.red() == 0 && c.green() == 0 && c.blue() == 0;
}
} // namespace

TEST(OXWOverrideCursor, ExpandCursorsAreOwnBitmapsWithTheHotSpotOnTheBar)
{
    const QCursor left = OXWOverrideCursor::getCursor(OXM::ExpandLeftCursor);
    const QCursor right = OXWOverrideCursor::getCursor(OXM::ExpandRightCursor);
    for (const QCursor& c : {left, right}) {
        EXPECT_EQ(c.shape(), Qt::BitmapCursor);
        EXPECT_EQ(c.hotSpot(), OXWOverrideCursor::expandCursorHotSpot());
        const QImage image = c.pixmap().toImage().convertToFormat(QImage::Format_ARGB32);
        ASSERT_EQ(image.size(), QSize(32, 32));
        const QPoint hot = c.hotSpot();
        // The bar is vertical through the hot spot.
        for (int dy = -6; dy <= 6; ++dy)
            EXPECT_TRUE(isBlack(image, hot + QPoint(0, dy))) << dy;
        // A corner is transparent.
        EXPECT_EQ(image.pixelColor(0, 0).alpha(), 0);
    }
    const QImage li = left.pixmap().toImage().convertToFormat(QImage::Format_ARGB32);
    const QImage ri = right.pixmap().toImage().convertToFormat(QImage::Format_ARGB32);
    EXPECT_NE(li, ri);
    // The arrow points away from the bar: right of it for the right cursor, left for the left.
    const QPoint hot = OXWOverrideCursor::expandCursorHotSpot();
    EXPECT_TRUE(isBlack(ri, hot + QPoint(8, 0)));
    EXPECT_FALSE(isBlack(ri, hot + QPoint(-8, 0)));
    EXPECT_TRUE(isBlack(li, hot + QPoint(-7, 0)));
    EXPECT_FALSE(isBlack(li, hot + QPoint(9, 0)));
}

TEST(OXWOverrideCursor, OtherValuesGiveTheArrow)
{
    EXPECT_EQ(OXWOverrideCursor::getCursor(OXM::Opacity).shape(), Qt::ArrowCursor);
    EXPECT_EQ(OXWOverrideCursor::getCursor(OXMenum()).shape(), Qt::ArrowCursor);
}
