#pragma once

#include <QObject>
#include <QPointer>
#include <QString>

class OXMObject;
class OXWApplication;
class QAction;
class QMainWindow;
class QMenu;

// The scene document of the window (OXWSceneDocument): File ▸ Open scene..., Save scene and
// Save scene as..., the document's name and a modified marker in the window title (the
// application's undo stack away from the state last saved or opened), and the question
// whether to save unsaved changes before the scene is replaced or the window closes.
//
// Opening reads the document with status-bar progress and Cancel; a volume file that moved is
// asked for with a file dialog; a document that cannot be opened is reported by a message box
// naming it and the reason, and the scene stays as it was. An opened document replaces the
// application's scene (and the scene manager's), selects its first volume and starts a new
// undo history.
class OXWDocumentController : public QObject
{
    Q_OBJECT

public:
    OXWDocumentController(OXWApplication* application, QMainWindow* window);

    // Adds the three actions to the menu, before `before` (at the end when null).
    void addActions(QMenu* menu, QAction* before = nullptr);
    QString path() const { return mPath; }
    bool isModified() const;

    // With unsaved changes: asks whether to save them first. True when the caller may go on
    // (saved, discarded, or nothing to save); false when the user cancelled or saving failed.
    bool mayDiscardChanges();

public slots:
    bool open(const QString& path);
    void openWithDialog();
    bool save();
    bool saveAs();

private:
    bool saveTo(const QString& path);
    bool install(OXMObject* scene);
    QString locate(const QString& missing);
    void report(const QString& title, const QString& message);
    void updateTitle();

    OXWApplication* mApplication;
    QPointer<QMainWindow> mWindow;
    QString mPath;
};
