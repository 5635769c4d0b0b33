#pragma once

#include "OXWDockWindow.h"

#include <QHash>
#include <QMainWindow>
#include <QPointer>

class QStatusBar;

// The viewer's main window: a QMainWindow with a status bar and dockable tools.
//
// There is one main window per process: the first one constructed registers itself as the
// instance (getInstance) and unregisters in its destructor; further windows are ordinary
// windows that are not registered.
//
// Tools: createTool puts a widget into a new OXWDockWindow on the edge its orientation allows.
// Ownership: while docked the widget is a Qt child of its dock (so it goes with the main
// window if the window is destroyed first), but it stays the caller's widget: destructTool
// takes it out of the dock, gives it no parent, hides it and deletes only the dock — the
// caller deletes the widget. A tool widget deleted while docked takes its dock with it.
class OXWMainWindow : public QMainWindow
{
    Q_OBJECT
public:
    explicit OXWMainWindow(QWidget* parent = nullptr, Qt::WindowFlags flags = Qt::WindowFlags());
    ~OXWMainWindow() override;

    // The registered main window, or null.
    static OXWMainWindow* getInstance();

    // Docks the widget as a tool: a new dock titled with the widget's window title (its object
    // name when the title is empty), object name "<widget object name>Dock", shown. A widget
    // that is docked already keeps its dock, which is returned. Null for a null widget.
    OXWDockWindow* createTool(QWidget* widget, OXWDockWindow::AllowedOrientation orientation);
    // Undocks the widget (see ownership above). False when it is not a tool of this window.
    bool destructTool(QWidget* widget);

    // The dock of a tool widget, or null.
    OXWDockWindow* toolDock(QWidget* widget) const;
    int toolCount() const { return int(mTools.size()); }

private:
    void toolDestroyed(QObject* widget);

    QHash<QObject*, QPointer<OXWDockWindow>> mTools;
};
