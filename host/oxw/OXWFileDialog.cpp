#include "OXWFileDialog.h"

#include <QDir>
#include <QFileDialog>
#include <QFileInfo>
#include <QQueue>
#include <QRegularExpression>
#include <QSettings>

namespace {
struct SeamState
{
    QQueue<OXWFileDialog::TestAnswer> answers;
    OXWFileDialog::Request last;
};

SeamState& seam()
{
    static SeamState state;
    return state;
}

QSettings settings()
{
    return QSettings(QSettings::IniFormat, QSettings::UserScope, QStringLiteral("oxw"),
                     QStringLiteral("oxwfiledialogs"));
}

QString settingsKey(OXMenum identity)
{
    // "OXM::Scene" -> "LastDirectory/OXM_Scene" (no separators inside a key).
    QString name = identity.toString();
    name.replace(QLatin1String("::"), QLatin1String("_"));
    name.replace(QLatin1Char('/'), QLatin1Char('_'));
    return QStringLiteral("LastDirectory/") + name;
}

// The first plain suffix of a name filter: "CSV files (*.csv *.CSV)" -> "csv".
QString firstSuffix(const QString& filter)
{
    static const QRegularExpression re(QStringLiteral("\\*\\.([A-Za-z0-9_]+)"));
    const QRegularExpressionMatch m = re.match(filter);
    return m.hasMatch() ? m.captured(1) : QString();
}
} // namespace

QString OXWFileDialog::lastDirectory(OXMenum identity)
{
    return settings().value(settingsKey(identity)).toString();
}

void OXWFileDialog::setLastDirectory(OXMenum identity, const QString& directory)
{
    QSettings s = settings();
    if (directory.isEmpty())
        s.remove(settingsKey(identity));
    else
        s.setValue(settingsKey(identity), directory);
    s.sync();
}

void OXWFileDialog::queueTestAnswer(const TestAnswer& answer)
{
    seam().answers.enqueue(answer);
}

void OXWFileDialog::clearTestAnswers()
{
    seam().answers.clear();
}

int OXWFileDialog::pendingTestAnswers()
{
    return seam().answers.size();
}

OXWFileDialog::Request OXWFileDialog::lastRequest()
{
    return seam().last;
}

QString OXWFileDialog::getSaveFileName(OXMenum identity, const QString& directory,
                                       const QStringList& filters, QWidget* parent,
                                       const char* name, const QString& caption,
                                       QString* selectedFilter, bool confirmOverwrite,
                                       bool appendSuffix)
{
    return run(true, identity, directory, filters, parent, name, caption, selectedFilter,
               confirmOverwrite, appendSuffix);
}

QString OXWFileDialog::getOpenFileName(OXMenum identity, const QString& directory,
                                       const QStringList& filters, QWidget* parent,
                                       const char* name, const QString& caption,
                                       QString* selectedFilter, bool resolveSymlinks)
{
    return run(false, identity, directory, filters, parent, name, caption, selectedFilter,
               resolveSymlinks, false);
}

QString OXWFileDialog::run(bool save, OXMenum identity, const QString& directory,
                           const QStringList& filters, QWidget* parent, const char* name,
                           const QString& caption, QString* selectedFilter, bool flag1, bool flag2)
{
    // Start directory: the remembered one if it still exists, else the one passed.
    QString start = directory;
    const QString remembered = lastDirectory(identity);
    if (!remembered.isEmpty() && QFileInfo(remembered).isDir())
        start = remembered;

    Request& request = seam().last;
    request.identity = identity;
    request.save = save;
    request.startDirectory = start;
    request.filters = filters;
    request.caption = caption;
    request.objectName = name ? QString::fromLatin1(name) : QString();

    const QString preselected =
        selectedFilter && filters.contains(*selectedFilter) ? *selectedFilter : QString();
    QString chosenFile;
    QString chosenFilter;
    if (!seam().answers.isEmpty()) {
        const TestAnswer answer = seam().answers.dequeue();
        chosenFile = answer.fileName;
        chosenFilter = answer.filter;
        if (chosenFilter.isEmpty())
            chosenFilter = !preselected.isEmpty() ? preselected : filters.value(0);
    } else {
        QFileDialog dialog(parent, caption, start);
        if (name)
            dialog.setObjectName(QString::fromLatin1(name));
        if (!filters.isEmpty())
            dialog.setNameFilters(filters);
        if (!preselected.isEmpty())
            dialog.selectNameFilter(preselected);
        QFileDialog::Options options;
        if (save) {
            dialog.setAcceptMode(QFileDialog::AcceptSave);
            dialog.setFileMode(QFileDialog::AnyFile);
            if (!flag1)
                options |= QFileDialog::DontConfirmOverwrite;
        } else {
            dialog.setAcceptMode(QFileDialog::AcceptOpen);
            dialog.setFileMode(QFileDialog::ExistingFile);
            if (!flag1)
                options |= QFileDialog::DontResolveSymlinks;
        }
        dialog.setOptions(options);
        if (dialog.exec() == QDialog::Accepted && !dialog.selectedFiles().isEmpty()) {
            chosenFile = dialog.selectedFiles().constFirst();
            chosenFilter = dialog.selectedNameFilter();
        }
    }
    if (chosenFile.isEmpty())
        return QString();

    QFileInfo info(chosenFile);
    if (save && flag2 && info.suffix().isEmpty()) {
        const QString suffix = firstSuffix(chosenFilter);
        if (!suffix.isEmpty())
            info.setFile(chosenFile + QLatin1Char('.') + suffix);
    }
    const QString result = info.absoluteFilePath();
    setLastDirectory(identity, info.absolutePath());
    if (selectedFilter)
        *selectedFilter = chosenFilter;
    return result;
}
