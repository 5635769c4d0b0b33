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
        ASSERT_TRUE(QDir(files.path()).mkpath(QStringLiteral("one")));
        ASSERT_TRUE(QDir(files.path()).mkpath(QStringLiteral("two")));
    }
    void TearDown() override { OXWFileDialog::clearTestAnswers(); }

    QString path(const QString& relative) const { return files.filePath(relative); }

    QTemporaryDir settingsDir;
    QTemporaryDir files;
};
} // namespace

TEST_F(OXWFileDialogTest, ASaveAnswerGivesTheFileAndTheFilter)
{
    OXWFileDialog::queueTestAnswer({path(QStringLiteral("one/h.csv")), CsvFilter});
    QString filter;
    const QString name = OXWFileDialog::getSaveFileName(
        OXM::Scene, path(QStringLiteral("two")), {TextFilter, CsvFilter}, nullptr, "saveDialog",
        QStringLiteral("Save csv as..."), &filter, true, true);
    EXPECT_EQ(name, path(QStringLiteral("one/h.csv")));
    EXPECT_EQ(filter, CsvFilter);
    EXPECT_EQ(OXWFileDialog::pendingTestAnswers(), 0);
    const OXWFileDialog::Request r = OXWFileDialog::lastRequest();
    EXPECT_EQ(r.identity, OXM::Scene);
    EXPECT_TRUE(r.save);
    EXPECT_EQ(r.startDirectory, path(QStringLiteral("two"))); // nothing remembered yet
    EXPECT_EQ(r.filters, (QStringList{TextFilter, CsvFilter}));
    EXPECT_EQ(r.caption, QStringLiteral("Save csv as..."));
    EXPECT_EQ(r.objectName, QStringLiteral("saveDialog"));
}

TEST_F(OXWFileDialogTest, CancelGivesAnEmptyNameAndKeepsFilterAndDirectory)
{
    OXWFileDialog::queueTestAnswer({QString(), QString()});
    QString filter = QStringLiteral("unchanged");
    EXPECT_TRUE(OXWFileDialog::getSaveFileName(OXM::Scene, path(QStringLiteral("two")), {CsvFilter},
                                               nullptr, nullptr, QString(), &filter, true, true)
                    .isEmpty());
    EXPECT_EQ(filter, QStringLiteral("unchanged"));
    EXPECT_TRUE(OXWFileDialog::lastDirectory(OXM::Scene).isEmpty());
}

TEST_F(OXWFileDialogTest, TheLastDirectoryIsRememberedPerIdentityInTheSettings)
{
    OXWFileDialog::queueTestAnswer({path(QStringLiteral("one/a.csv")), QString()});
    OXWFileDialog::queueTestAnswer({path(QStringLiteral("one/b.csv")), QString()});
    OXWFileDialog::queueTestAnswer({path(QStringLiteral("two/c.txt")), QString()});
    const QString start = files.path();

    OXWFileDialog::getSaveFileName(OXM::Scene, start, {CsvFilter});
    EXPECT_EQ(OXWFileDialog::lastRequest().startDirectory, start);
    OXWFileDialog::getSaveFileName(OXM::Scene, start, {CsvFilter});
    EXPECT_EQ(OXWFileDialog::lastRequest().startDirectory, path(QStringLiteral("one")));
    // Another identity has its own memory.
    OXWFileDialog::getSaveFileName(OXM::Preset, start, {CsvFilter});
    EXPECT_EQ(OXWFileDialog::lastRequest().startDirectory, start);
    EXPECT_EQ(OXWFileDialog::lastDirectory(OXM::Scene), path(QStringLiteral("one")));
    EXPECT_EQ(OXWFileDialog::lastDirectory(OXM::Preset), path(QStringLiteral("two")));

    // Stored in the settings file, so a later run finds it.
    QSettings stored(QSettings::IniFormat, QSettings::UserScope, QStringLiteral("oxw"),
                     QStringLiteral("oxwfiledialogs"));
    EXPECT_TRUE(stored.fileName().startsWith(settingsDir.path()));
    EXPECT_EQ(stored.value(QStringLiteral("LastDirectory/OXM_Scene")).toString(),
              path(QStringLiteral("one")));

    // A remembered directory that no longer exists is ignored.
    ASSERT_TRUE(QDir(path(QStringLiteral("one"))).removeRecursively());
    OXWFileDialog::queueTestAnswer({QString(), QString()});
    OXWFileDialog::getOpenFileName(OXM::Scene, start, {CsvFilter});
    EXPECT_EQ(OXWFileDialog::lastRequest().startDirectory, start);
    EXPECT_FALSE(OXWFileDialog::lastRequest().save);
}

TEST_F(OXWFileDialogTest, SaveAppendsTheFilterSuffixToANameWithout)
{
    OXWFileDialog::queueTestAnswer({path(QStringLiteral("one/plain")), CsvFilter});
    OXWFileDialog::queueTestAnswer({path(QStringLiteral("one/plain")), CsvFilter});
    OXWFileDialog::queueTestAnswer({path(QStringLiteral("one/x.dat")), CsvFilter});
    EXPECT_EQ(OXWFileDialog::getSaveFileName(OXM::Scene, files.path(), {CsvFilter}, nullptr,
                                             nullptr, QString(), nullptr, true, true),
              path(QStringLiteral("one/plain.csv")));
    EXPECT_EQ(OXWFileDialog::getSaveFileName(OXM::Scene, files.path(), {CsvFilter}, nullptr,
                                             nullptr, QString(), nullptr, true, false),
              path(QStringLiteral("one/plain")));
    EXPECT_EQ(OXWFileDialog::getSaveFileName(OXM::Scene, files.path(), {CsvFilter}),
              path(QStringLiteral("one/x.dat")));
}

TEST_F(OXWFileDialogTest, OpenAnswersAndThePreselectedFilter)
{
    QFile f(path(QStringLiteral("two/colors.txt")));
    ASSERT_TRUE(f.open(QIODevice::WriteOnly));
    f.close();
    OXWFileDialog::queueTestAnswer({f.fileName(), QString()}); // no filter chosen
    QString filter = TextFilter;                               // preselected
    EXPECT_EQ(OXWFileDialog::getOpenFileName(OXM::Preset, files.path(), {CsvFilter, TextFilter},
                                             nullptr, nullptr, QStringLiteral("Import"), &filter,
                                             true),
              f.fileName());
    EXPECT_EQ(filter, TextFilter);
    EXPECT_EQ(OXWFileDialog::lastDirectory(OXM::Preset), path(QStringLiteral("two")));

    OXWFileDialog::queueTestAnswer({f.fileName(), QString()});
    filter = QStringLiteral("not one of them");
    OXWFileDialog::getOpenFileName(OXM::Preset, files.path(), {CsvFilter, TextFilter}, nullptr,
                                   nullptr, QString(), &filter);
    EXPECT_EQ(filter, CsvFilter); // the first one
}

TEST_F(OXWFileDialogTest, AnswersAreTakenInOrder)
{
    OXWFileDialog::queueTestAnswer({path(QStringLiteral("one/1.csv")), QString()});
    OXWFileDialog::queueTestAnswer({QString(), QString()});
    OXWFileDialog::queueTestAnswer({path(QStringLiteral("one/3.csv")), QString()});
    EXPECT_EQ(OXWFileDialog::pendingTestAnswers(), 3);
    EXPECT_EQ(OXWFileDialog::getSaveFileName(OXM::Scene, files.path(), {CsvFilter}),
              path(QStringLiteral("one/1.csv")));
    EXPECT_EQ(OXWFileDialog::getSaveFileName(OXM::Scene, files.path(), {CsvFilter}), QString());
    EXPECT_EQ(OXWFileDialog::getSaveFileName(OXM::Scene, files.path(), {CsvFilter}),
              path(QStringLiteral("one/3.csv")));
    EXPECT_EQ(OXWFileDialog::pendingTestAnswers(), 0);
}

TEST_F(OXWFileDialogTest, WithoutAnswersARealDialogIsShownInTheRememberedDirectory)
{
    OXWFileDialog::setLastDirectory(OXM::Scene, path(QStringLiteral("one")));
    QString seenObjectName;
    QString seenDirectory;
    QStringList seenFilters;
    QString seenCaption;
    QString seenFilter;
    bool seenSaveMode = false;
    int shown = 0;
    // Looks at the dialog once it is open, then cancels it.
    QTimer poll;
    poll.setInterval(10);
    QObject::connect(&poll, &QTimer::timeout, [&] {
        QFileDialog* dialog = openFileDialog();
        if (!dialog)
            return;
        ++shown;
        seenObjectName = dialog->objectName();
        seenDirectory = dialog->directory().absolutePath();
        seenFilters = dialog->nameFilters();
        seenFilter = dialog->selectedNameFilter();
        seenCaption = dialog->windowTitle();
        seenSaveMode = dialog->acceptMode() == QFileDialog::AcceptSave;
        dialog->reject();
    });
    poll.start();
    QString filter = TextFilter;
    const QString name = OXWFileDialog::getSaveFileName(
        OXM::Scene, files.path(), {CsvFilter, TextFilter}, nullptr, "exportDialog",
        QStringLiteral("Save csv as..."), &filter, true, true);
    EXPECT_TRUE(name.isEmpty());
    EXPECT_EQ(shown, 1);
    EXPECT_EQ(seenObjectName, QStringLiteral("exportDialog"));
    EXPECT_EQ(seenDirectory, path(QStringLiteral("one")));
    EXPECT_EQ(seenFilters, (QStringList{CsvFilter, TextFilter}));
    EXPECT_EQ(seenFilter, TextFilter); // preselected
    EXPECT_EQ(seenCaption, QStringLiteral("Save csv as..."));
    EXPECT_TRUE(seenSaveMode);
    EXPECT_EQ(filter, TextFilter);
    EXPECT_EQ(OXWFileDialog::lastDirectory(OXM::Scene), path(QStringLiteral("one")));

    EXPECT_TRUE(OXWFileDialog::getOpenFileName(OXM::Preset, files.path(), {CsvFilter}).isEmpty());
    EXPECT_EQ(shown, 2);
    EXPECT_FALSE(seenSaveMode);
    EXPECT_EQ(seenDirectory, files.path());
}
