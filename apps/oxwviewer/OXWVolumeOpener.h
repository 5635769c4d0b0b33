#pragma once

#include <QObject>
#include <QPointer>
#include <QString>
#include <QStringList>

class QMenu;
class QWidget;

// Opens volume files and folders into the application's scene (OXWVolumeFile): from File ▸
// Open volume..., File ▸ Open Recent, the command line and files dropped on the window. The
// reading shows its progress in the status bar, where Cancel stops it and leaves the scene as
// it was. A volume read goes into the scene through the scene manager and becomes the
// selection; its placement takes the file's orientation. A DICOM folder with several series
// asks which one to open. A file that cannot be opened is reported by a message box naming it
// and the reason (and in the log); with interactive off (batch use) by error() only.
//
// Recent files: the last MaximumRecent paths opened, newest first, in the user's settings.
class OXWVolumeOpener : public QObject
{
    Q_OBJECT

public:
    static constexpr int MaximumRecent = 10;

    // parent: the window that dialogs and message boxes belong to.
    explicit OXWVolumeOpener(QWidget* parent);

    void setInteractive(bool interactive) { mInteractive = interactive; }
    // Fills the menu with the recent files (kept up to date).
    void setRecentMenu(QMenu* menu);
    static QStringList recentFiles();

public slots:
    // Opens each path; false when any could not be opened (or was cancelled).
    bool open(const QStringList& paths);
    // Asks for files with the file dialog and opens them.
    void openWithDialog();

signals:
    // A path could not be opened: the message names it and says why.
    void error(const QString& message);

private:
    bool openOne(const QString& path);
    QString chooseSeries(const QString& path, const QStringList& descriptions,
                         const QStringList& uids);
    void remember(const QString& path);
    void fillRecentMenu();

    QWidget* mParent;
    QPointer<QMenu> mRecentMenu;
    bool mInteractive = true;
};
