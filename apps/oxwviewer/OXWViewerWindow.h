#pragma once

#include <OXWMainWindow.h>

#include <QLabel>
#include <QPointer>
#include <QStringList>

#include <functional>

class OXWApplication;
class OXWLogPane;
class OXWPluginLoader;
class OXWUndoStack;
class QAction;
class QCloseEvent;
class QDragEnterEvent;
class QDropEvent;
class QMenu;

// The viewer's main window: the host main window with the viewer's menus, log and status bar.
//
// Menus: File > Quit (Ctrl+Q, closes the window); Edit > Undo (Ctrl+Z) and Redo
// (Ctrl+Shift+Z), whose texts follow the application's undo stack ("Undo Change opacity";
// plain "Undo" and disabled when there is nothing to undo); View (filled by the views);
// Help > About plug-ins (lists the
// plug-ins of the attached loader).
//
// The log pane (OXWLogPane) is docked at the bottom as a tool of the window; it shows the
// host's error channel and the messages of an attached plug-in loader. Long work shows its
// progress in the status bar by bracketing itself with OXWTaskProgress's begin and end calls
// (the bar and its Cancel button are there only meanwhile).
//
// The central area shows an empty state ("No volume loaded") until the scene views replace
// it (setCentralWidget).
class OXWViewerWindow : public OXWMainWindow
{
    Q_OBJECT
public:
    // app: the application whose undo stack the Edit menu drives; null takes the registered
    // OXWApplication (the menu stays disabled without one).
    explicit OXWViewerWindow(OXWApplication* app = nullptr, QWidget* parent = nullptr);
    ~OXWViewerWindow() override;

    OXWLogPane* logPane() const { return mLogPane; }
    QMenu* fileMenu() const { return mFileMenu; }
    QMenu* editMenu() const { return mEditMenu; }
    QMenu* viewMenu() const { return mViewMenu; }
    QMenu* helpMenu() const { return mHelpMenu; }
    QAction* quitAction() const { return mQuitAction; }
    QAction* undoAction() const { return mUndoAction; }
    QAction* redoAction() const { return mRedoAction; }
    QAction* aboutPluginsAction() const { return mAboutPluginsAction; }
    // The empty-state label in the central area (null once replaced).
    QLabel* emptyStateLabel() const { return mEmptyState; }

    // Shows the loader's messages in the log and its plug-ins in Help > About plug-ins. The
    // loader must outlive the window or be detached (null).
    void attachPluginLoader(OXWPluginLoader* loader);

    // Asked before the window closes (File ▸ Quit, the window's close button): false keeps it
    // open.
    void setCloseGuard(std::function<bool()> guard) { mCloseGuard = std::move(guard); }

    // Text for Help > About plug-ins.
    QString aboutPluginsText() const;

signals:
    // Files or folders were dropped on the window.
    void filesDropped(const QStringList& paths);

public slots:
    // Brings the Edit menu up to date with the undo stack.
    void updateUndoActions();
    void undo();
    void redo();
    void showAboutPlugins();

protected:
    void closeEvent(QCloseEvent* event) override;
    void dragEnterEvent(QDragEnterEvent* event) override;
    void dropEvent(QDropEvent* event) override;

private:
    void createMenus();

    QPointer<OXWUndoStack> mUndoStack;
    std::function<bool()> mCloseGuard;
    QPointer<OXWPluginLoader> mLoader;
    OXWLogPane* mLogPane = nullptr;
    QPointer<QLabel> mEmptyState;
    QMenu* mFileMenu = nullptr;
    QMenu* mEditMenu = nullptr;
    QMenu* mViewMenu = nullptr;
    QMenu* mHelpMenu = nullptr;
    QAction* mQuitAction = nullptr;
    QAction* mUndoAction = nullptr;
    QAction* mRedoAction = nullptr;
    QAction* mAboutPluginsAction = nullptr;
};
