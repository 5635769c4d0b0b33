#pragma once

#include <QDockWidget>

// The dock that holds one tool of the main window (OXWMainWindow::createTool). The tool's
// allowed orientation decides which edges of the main window the dock may occupy:
//   Horizontal (0): top and bottom edges (a wide, low tool; starts at the bottom),
//   Vertical (1):   left and right edges (a tall, narrow tool such as a tool panel; starts on
//                   the right),
//   Both (2):       every edge (starts on the right).
// Values outside the enumeration are treated as Both.
class OXWDockWindow : public QDockWidget
{
    Q_OBJECT
public:
    enum AllowedOrientation
    {
        Horizontal = 0,
        Vertical = 1,
        Both = 2
    };

    explicit OXWDockWindow(AllowedOrientation orientation, QWidget* parent = nullptr);

    AllowedOrientation allowedOrientation() const { return mOrientation; }

    // The dock areas an orientation allows and the one a new dock starts in.
    static Qt::DockWidgetAreas allowedAreasFor(AllowedOrientation orientation);
    static Qt::DockWidgetArea initialAreaFor(AllowedOrientation orientation);

private:
    AllowedOrientation mOrientation;
};
