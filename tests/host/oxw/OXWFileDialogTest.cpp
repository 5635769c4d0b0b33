// Files the host asks for and writes: the file dialog's answers, filters and remembered
// directories, and points exported as CSV.

#include "OXWFileDialog.h"
#include "OXWExportCSVUtilities.h"

#include <QDir>
#include <QFile>
#include <QLocale>
#include <QSettings>
#include <QTemporaryDir>

#include <gtest/gtest.h>

#include <clocale>
#include <vector>

namespace {
const QString CsvFilter = QStringLiteral("CSV files (*.csv *.CSV)");
const QString TextFilter = QStringLiteral("Text files (*.txt)");

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

namespace {

QByteArray readAll(const QString& name)
{
    QFile f(name);
    return f.open(QIODevice::ReadOnly) ? f.readAll() : QByteArray("<unreadable>");
}

bool exportPoints(const QString& name, const std::vector<OXMVector2<float>>& points, int count)
{
    return OXWExportCSVUtilities::exportPointsAsCSV(name, points.empty() ? nullptr : points.data(),
                                                    count);
}

} // namespace

// In a German locale (Qt's and, where there is one, the C library's) the numbers keep their
// decimal points; an existing file is replaced, and no points still give the header.
TEST(OXWExportCSVUtilities, WritesAHeaderAndOneLinePerPointWithDecimalPoints)
{
    QTemporaryDir dir;
    const QString name = dir.filePath(QStringLiteral("histogram.csv"));
    const std::vector<OXMVector2<float>> points{
        {0.5f, 10.0f}, {-1.25f, 0.0f}, {1234567.0f, 0.1f}, {3.0f, 1e-7f}};
    const QLocale previous;
    const std::string previousC = std::setlocale(LC_NUMERIC, nullptr);
    QLocale::setDefault(QLocale(QLocale::German, QLocale::Germany));
    std::setlocale(LC_NUMERIC, "de_DE.UTF-8");
    ASSERT_TRUE(exportPoints(name, points, 1));
    ASSERT_TRUE(exportPoints(name, points, int(points.size())));
    QLocale::setDefault(previous);
    std::setlocale(LC_NUMERIC, previousC.c_str());
    EXPECT_EQ(readAll(name), QByteArray("x,y\n"
                                        "0.5,10\n"
                                        "-1.25,0\n"
                                        "1234567,0.100000001\n"
                                        "3,1.00000001e-07\n"));
    ASSERT_TRUE(exportPoints(name, {}, 0));
    EXPECT_EQ(readAll(name), QByteArray("x,y\n"));
}

// An empty name, missing points, a negative count, a folder that does not exist and a folder
// in place of the file: false, and nothing is left behind.
TEST(OXWExportCSVUtilities, FailsForAnEmptyNameBadArgumentsAndUnwritablePaths)
{
    QTemporaryDir dir;
    const std::vector<OXMVector2<float>> point{{1.0f, 2.0f}};
    EXPECT_FALSE(exportPoints(QString(), point, 1));
    EXPECT_FALSE(exportPoints(dir.filePath(QStringLiteral("n.csv")), {}, 1));
    EXPECT_FALSE(exportPoints(dir.filePath(QStringLiteral("n.csv")), point, -1));
    EXPECT_FALSE(exportPoints(dir.filePath(QStringLiteral("missing/dir/a.csv")), point, 1));
    EXPECT_FALSE(exportPoints(dir.path(), point, 1));
    EXPECT_TRUE(QDir(dir.path()).entryList(QDir::Files | QDir::NoDotAndDotDot).isEmpty());
}
