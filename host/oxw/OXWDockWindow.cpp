#include "OXWDockWindow.h"

OXWDockWindow::OXWDockWindow(AllowedOrientation orientation, QWidget* parent)
    : QDockWidget(parent), mOrientation(orientation)
{
    setAllowedAreas(allowedAreasFor(orientation));
}

Qt::DockWidgetAreas OXWDockWindow::allowedAreasFor(AllowedOrientation orientation)
{
    switch (orientation) {
    case Horizontal:
        return Qt::TopDockWidgetArea | Qt::BottomDockWidgetArea;
    case Vertical:
        return Qt::LeftDockWidgetArea | Qt::RightDockWidgetArea;
    case Both:
        break;
    }
    return Qt::AllDockWidgetAreas;
}

Qt::DockWidgetArea OXWDockWindow::initialAreaFor(AllowedOrientation orientation)
{
    return orientation == Horizontal ? Qt::BottomDockWidgetArea : Qt::RightDockWidgetArea;
}
