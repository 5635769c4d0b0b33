#pragma once

#include <OXMenum.h>

#include <QString>
#include <QStringList>

class QWidget;

// The host's file dialogs: a QFileDialog that starts in the directory last used by the dialog
// of the same identity.
//
// Identity: an enumeration value naming the purpose of the dialog ("Scene",
// "ExportClassificationColor"); its full name (OXMenum::toString) keys the remembered directory
// in the settings file "oxw/oxwfiledialogs" (QSettings, INI format, user scope), so it survives
// restarts. A dialog starts in the remembered directory when it still exists, otherwise in the
// directory passed (a file path there selects that file). An accepted dialog stores the chosen
// file's directory.
//
// Filters are Qt name filters ("CSV files (*.csv *.CSV)"). selectedFilter, when not null,
// preselects a filter on entry (if it is one of them) and receives the chosen one on accept.
//
// Test seam: answers queued with queueTestAnswer are taken one per call, first in first out,
// instead of showing a dialog; the remembering works as for a real dialog. lastRequest() tells
// what the last call asked for (also with a real dialog).
class OXWFileDialog
{
public:
    // confirmOverwrite: ask before replacing an existing file. appendSuffix: a name without a
    // suffix gets the first suffix of the chosen filter ("*.csv" gives ".csv").
    // Returns the chosen absolute file name, empty when cancelled.
    static QString getSaveFileName(OXMenum identity, const QString& directory,
                                   const QStringList& filters, QWidget* parent = nullptr,
                                   const char* name = nullptr, const QString& caption = QString(),
                                   QString* selectedFilter = nullptr, bool confirmOverwrite = true,
                                   bool appendSuffix = true);
    // resolveSymlinks: answer the target of a symbolic link rather than the link.
    // Returns the chosen existing file, empty when cancelled.
    static QString getOpenFileName(OXMenum identity, const QString& directory,
                                   const QStringList& filters, QWidget* parent = nullptr,
                                   const char* name = nullptr, const QString& caption = QString(),
                                   QString* selectedFilter = nullptr, bool resolveSymlinks = true);

    // The remembered directory of an identity, empty if none; and setting / forgetting it.
    static QString lastDirectory(OXMenum identity);
    static void setLastDirectory(OXMenum identity, const QString& directory);

    // --- test seam
    struct TestAnswer
    {
        QString fileName; // empty: the user cancels
        QString filter;   // the filter the user chose; empty: the preselected or first one
    };
    static void queueTestAnswer(const TestAnswer& answer);
    static void clearTestAnswers();
    static int pendingTestAnswers();

    struct Request
    {
        OXMenum identity;
        bool save = false;
        QString startDirectory; // where the dialog started
        QStringList filters;
        QString caption;
        QString objectName;
    };
    static Request lastRequest();

private:
    static QString run(bool save, OXMenum identity, const QString& directory,
                       const QStringList& filters, QWidget* parent, const char* name,
                       const QString& caption, QString* selectedFilter, bool flag1, bool flag2);
};
