#include "OXWFileDialog.h"

#include <QApplication>
#include <QDir>
#include <QFile>
#include <QFileDialog>
#include <QSettings>
#include <QTemporaryDir>
#include <QTimer>

#include <gtest/gtest.h>

namespace {
const QString CsvFilter = QStringLiteral("CSV files (*.csv *.CSV)");
const QString TextFilter = QStringLiteral("Text files (*.txt)");

// The file dialog that is open now, or null.
QFileDialog* openFileDialog()
{
    for (QWidget* w : QApplication::topLevelWidgets()) {
        if (auto* dialog = qobject_cast<QFileDialog*>(w); dialog && dialog->isVisible())
            return dialog;
    }
    return nullptr;
}

// Points the user-scope INI settings to a temporary directory and clears the seam.
class OXWFileDialogTest : public testing::Test
{
protected:
    void SetUp() override
    {
        ASSERT_TRUE(settingsDir.isValid());
        ASSERT_TRUE(files.isValid());
        QSettings::setPath(QSettings::IniFormat, QSettings::UserScope, settingsDir.path());
        OXWFileDialog::clearTestAnswers();
        ASSERT_TRUE(QDir(files.path()).mkpath("one"));
        ASSERT_TRUE(QDir(files.path()).mkpath("two"));
    }
    void TearDown() override { OXWFileDialog::clearTestAnswers(); }

    QString path(const QString& relative) const { return files.filePath(relative); }

    QTemporaryDir settingsDir;
    QTemporaryDir files;
};
} // namespace

// Queued answers are taken one per call, in order: a file with its filter, with the filter's
// suffix added unless it has one or that is not wanted, or a cancel (an empty name; the filter
// and the remembered directory stay).
TEST_F(OXWFileDialogTest, AnswersAreTakenInOrderAndASaveNameGetsTheFiltersSuffix)
{
    const struct
    {
        const char* answer; // empty: cancel
        bool appendSuffix;
        const char* expected;
    } cases[] = {{"one/h.csv", true, "one/h.csv"},
                 {"one/plain", true, "one/plain.csv"},
                 {"one/plain", false, "one/plain"},
                 {"one/x.dat", true, "one/x.dat"},
                 {"", true, ""}};
    for (const auto& c : cases)
        OXWFileDialog::queueTestAnswer({*c.answer ? path(c.answer) : QString(), CsvFilter});
    EXPECT_EQ(OXWFileDialog::pendingTestAnswers(), 5);
    for (const auto& c : cases) {
        QString filter = QStringLiteral("unchanged");
        EXPECT_EQ(OXWFileDialog::getSaveFileName(OXM::Scene, path("two"), {TextFilter, CsvFilter},
                                                 nullptr, "saveDialog", "Save csv as...", &filter,
                                                 true, c.appendSuffix),
                  *c.expected ? path(c.expected) : QString())
            << c.answer;
        EXPECT_EQ(filter, *c.answer ? CsvFilter : QString("unchanged")) << c.answer;
    }
    EXPECT_EQ(OXWFileDialog::pendingTestAnswers(), 0);
    EXPECT_EQ(OXWFileDialog::lastDirectory(OXM::Scene), path("one"));
    const OXWFileDialog::Request r = OXWFileDialog::lastRequest();
    EXPECT_EQ(r.identity, OXM::Scene);
    EXPECT_TRUE(r.save);
    EXPECT_EQ(r.filters, (QStringList{TextFilter, CsvFilter}));
    EXPECT_EQ(r.caption, QStringLiteral("Save csv as..."));
    EXPECT_EQ(r.objectName, QStringLiteral("saveDialog"));
}

// Per identity, in the settings file (so a later run finds it); a remembered directory that
// no longer exists is ignored.
TEST_F(OXWFileDialogTest, TheLastDirectoryIsRememberedPerIdentityInTheSettings)
{
    const QString start = files.path();
    const auto startOf = [&](OXMenum identity, const QString& answer) {
        OXWFileDialog::queueTestAnswer({answer, QString()});
        OXWFileDialog::getSaveFileName(identity, start, {CsvFilter});
        return OXWFileDialog::lastRequest().startDirectory;
    };
    EXPECT_EQ(startOf(OXM::Scene, path("one/a.csv")), start);
    EXPECT_EQ(startOf(OXM::Scene, path("one/b.csv")), path("one"));
    EXPECT_EQ(startOf(OXM::Preset, path("two/c.txt")), start);
    EXPECT_EQ(OXWFileDialog::lastDirectory(OXM::Scene), path("one"));
    EXPECT_EQ(OXWFileDialog::lastDirectory(OXM::Preset), path("two"));
    QSettings stored(QSettings::IniFormat, QSettings::UserScope, "oxw", "oxwfiledialogs");
    EXPECT_TRUE(stored.fileName().startsWith(settingsDir.path()));
    EXPECT_EQ(stored.value("LastDirectory/OXM_Scene").toString(), path("one"));
    ASSERT_TRUE(QDir(path("one")).removeRecursively());
    EXPECT_EQ(startOf(OXM::Scene, QString()), start);
}

// An open answer without a filter keeps the preselected one; a preselection that is none of
// the filters gives the first.
TEST_F(OXWFileDialogTest, OpenAnswersAndThePreselectedFilter)
{
    QFile f(path("two/colors.txt"));
    ASSERT_TRUE(f.open(QIODevice::WriteOnly));
    f.close();
    for (const QString& preselected : {TextFilter, QStringLiteral("not one of them")}) {
        OXWFileDialog::queueTestAnswer({f.fileName(), QString()});
        QString filter = preselected;
        EXPECT_EQ(OXWFileDialog::getOpenFileName(OXM::Preset, files.path(), {CsvFilter, TextFilter},
                                                 nullptr, nullptr, "Import", &filter, true),
                  f.fileName());
        EXPECT_EQ(filter, preselected == TextFilter ? TextFilter : CsvFilter);
        EXPECT_FALSE(OXWFileDialog::lastRequest().save);
    }
    EXPECT_EQ(OXWFileDialog::lastDirectory(OXM::Preset), path("two"));
}

TEST_F(OXWFileDialogTest, WithoutAnswersARealDialogIsShownInTheRememberedDirectory)
{
    OXWFileDialog::setLastDirectory(OXM::Scene, path("one"));
    struct Seen
    {
        QString objectName, directory, caption, filter;
        QStringList filters;
        bool save = false;
    } seen;
    int shown = 0;
    // Looks at the dialog once it is open, then cancels it.
    QTimer poll;
    poll.setInterval(10);
    QObject::connect(&poll, &QTimer::timeout, [&] {
        if (QFileDialog* dialog = openFileDialog()) {
            ++shown;
            seen = {dialog->objectName(),  dialog->directory().absolutePath(),
                    dialog->windowTitle(), dialog->selectedNameFilter(),
                    dialog->nameFilters(), dialog->acceptMode() == QFileDialog::AcceptSave};
            dialog->reject();
        }
    });
    poll.start();
    QString filter = TextFilter;
    EXPECT_TRUE(OXWFileDialog::getSaveFileName(OXM::Scene, files.path(), {CsvFilter, TextFilter},
                                               nullptr, "exportDialog", "Save csv as...", &filter,
                                               true, true)
                    .isEmpty());
    EXPECT_EQ(shown, 1);
    EXPECT_EQ(seen.objectName, QStringLiteral("exportDialog"));
    EXPECT_EQ(seen.directory, path("one"));
    EXPECT_EQ(seen.filters, (QStringList{CsvFilter, TextFilter}));
    EXPECT_EQ(seen.filter, TextFilter); // preselected
    EXPECT_EQ(seen.caption, QStringLiteral("Save csv as..."));
    EXPECT_TRUE(seen.save);
    EXPECT_EQ(filter, TextFilter);
    EXPECT_EQ(OXWFileDialog::lastDirectory(OXM::Scene), path("one"));

    EXPECT_TRUE(OXWFileDialog::getOpenFileName(OXM::Preset, files.path(), {CsvFilter}).isEmpty());
    EXPECT_EQ(shown, 2);
    EXPECT_FALSE(seen.save);
    EXPECT_EQ(seen.directory, files.path());
}
