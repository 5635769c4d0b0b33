#pragma once

#include <OXMenum.h>

#include <QCursor>
#include <QPoint>

// The host's own mouse cursors, looked up by enumeration value.
//
// OXM::ExpandLeftCursor: a vertical bar with an arrow pointing left out of it ("<-|");
// OXM::ExpandRightCursor: the mirror image ("|->"). Both are 32 x 32 pixels, black with a white
// outline, and their hot spot is on the middle of the bar, so the bar marks the border that is
// being moved. Every other value gives Qt's arrow cursor. Needs a QGuiApplication.
class OXWOverrideCursor
{
public:
    static QCursor getCursor(OXMenum id);

    // The hot spot of the two expand cursors (the middle of the bar).
    static QPoint expandCursorHotSpot();
};
