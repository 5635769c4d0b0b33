#include "OXWMainWindow.h"

#include <QStatusBar>

namespace {
OXWMainWindow* gInstance = nullptr;
}

OXWMainWindow::OXWMainWindow(QWidget* parent, Qt::WindowFlags flags) : QMainWindow(parent, flags)
{
    setObjectName(QStringLiteral("OXWMainWindow"));
    statusBar()->setObjectName(QStringLiteral("OXWMainWindowStatusBar"));
    if (!gInstance)
        gInstance = this;
}

OXWMainWindow::~OXWMainWindow()
{
    if (gInstance == this)
        gInstance = nullptr;
    // The tools' docks are children and go with the window; stop watching their widgets.
    for (auto it = mTools.begin(); it != mTools.end(); ++it)
        disconnect(it.key(), nullptr, this, nullptr);
    mTools.clear();
}

OXWMainWindow* OXWMainWindow::getInstance()
{
    return gInstance;
}

OXWDockWindow* OXWMainWindow::createTool(QWidget* widget,
                                         OXWDockWindow::AllowedOrientation orientation)
{
    if (!widget)
        return nullptr;
    if (OXWDockWindow* existing = toolDock(widget))
        return existing;
    auto* dock = new OXWDockWindow(orientation, this);
    dock->setObjectName(widget->objectName() + QStringLiteral("Dock"));
    dock->setWindowTitle(widget->windowTitle().isEmpty() ? widget->objectName()
                                                         : widget->windowTitle());
    dock->setWidget(widget);
    widget->show();
    addDockWidget(OXWDockWindow::initialAreaFor(orientation), dock);
    dock->show();
    mTools.insert(widget, dock);
    connect(widget, &QObject::destroyed, this, &OXWMainWindow::toolDestroyed);
    return dock;
}

bool OXWMainWindow::destructTool(QWidget* widget)
{
    auto it = mTools.find(widget);
    if (it == mTools.end())
        return false;
    QPointer<OXWDockWindow> dock = it.value();
    mTools.erase(it);
    disconnect(widget, &QObject::destroyed, this, &OXWMainWindow::toolDestroyed);
    widget->hide();
    widget->setParent(nullptr);
    if (dock) {
        removeDockWidget(dock);
        delete dock.data();
    }
    return true;
}

OXWDockWindow* OXWMainWindow::toolDock(QWidget* widget) const
{
    auto it = mTools.constFind(widget);
    return it == mTools.constEnd() ? nullptr : it.value().data();
}

void OXWMainWindow::toolDestroyed(QObject* widget)
{
    auto it = mTools.find(widget);
    if (it == mTools.end())
        return;
    QPointer<OXWDockWindow> dock = it.value();
    mTools.erase(it);
    if (dock) {
        removeDockWidget(dock);
        dock->deleteLater();
    }
}
