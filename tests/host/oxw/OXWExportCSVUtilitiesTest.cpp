#include "OXWExportCSVUtilities.h"

#include <QDir>
#include <QFile>
#include <QLocale>
#include <QTemporaryDir>

#include <gtest/gtest.h>

#include <clocale>
#include <vector>

namespace {
QByteArray readAll(const QString& name)
{
    QFile f(name);
    if (!f.open(QIODevice::ReadOnly))
        return QByteArray("<unreadable>");
    return f.readAll();
}

// Switches the Qt default locale and, when available, the C library's numeric locale to
// German for the scope.
class GermanLocale
{
public:
    GermanLocale() : mPrevious(QLocale())
    {
        QLocale::setDefault(QLocale(QLocale::German, QLocale::Germany));
        const char* old = std::setlocale(LC_NUMERIC, nullptr);
        mOldC = old ? old : "C";
        std::setlocale(LC_NUMERIC, "de_DE.UTF-8");
    }
    ~GermanLocale()
    {
        QLocale::setDefault(mPrevious);
        std::setlocale(LC_NUMERIC, mOldC.c_str());
    }

private:
    QLocale mPrevious;
    std::string mOldC;
};
} // namespace

TEST(OXWExportCSVUtilities, WritesAHeaderAndOneLinePerPointWithDecimalPoints)
{
    QTemporaryDir dir;
    ASSERT_TRUE(dir.isValid());
    const QString name = dir.filePath(QStringLiteral("histogram.csv"));
    const std::vector<OXMVector2<float>> points{
        {0.5f, 10.0f}, {-1.25f, 0.0f}, {1234567.0f, 0.1f}, {3.0f, 1e-7f}};
    GermanLocale german;
    EXPECT_EQ(QLocale().decimalPoint(), QLatin1Char(','));
    ASSERT_TRUE(OXWExportCSVUtilities::exportPointsAsCSV(name, points.data(), int(points.size())));
    EXPECT_EQ(readAll(name), QByteArray("x,y\n"
                                        "0.5,10\n"
                                        "-1.25,0\n"
                                        "1234567,0.100000001\n"
                                        "3,1.00000001e-07\n"));
}

TEST(OXWExportCSVUtilities, ReplacesAnExistingFileAndWritesTheHeaderForNoPoints)
{
    QTemporaryDir dir;
    const QString name = dir.filePath(QStringLiteral("a.csv"));
    const OXMVector2<float> p{1.0f, 2.0f};
    ASSERT_TRUE(OXWExportCSVUtilities::exportPointsAsCSV(name, &p, 1));
    ASSERT_TRUE(OXWExportCSVUtilities::exportPointsAsCSV(name, nullptr, 0));
    EXPECT_EQ(readAll(name), QByteArray("x,y\n"));
}

TEST(OXWExportCSVUtilities, FailsForAnEmptyNameBadArgumentsAndUnwritablePaths)
{
    QTemporaryDir dir;
    const OXMVector2<float> p{1.0f, 2.0f};
    EXPECT_FALSE(OXWExportCSVUtilities::exportPointsAsCSV(QString(), &p, 1));
    EXPECT_FALSE(OXWExportCSVUtilities::exportPointsAsCSV(dir.filePath(QStringLiteral("n.csv")),
                                                          nullptr, 1));
    EXPECT_FALSE(
        OXWExportCSVUtilities::exportPointsAsCSV(dir.filePath(QStringLiteral("n.csv")), &p, -1));
    EXPECT_FALSE(QFile::exists(dir.filePath(QStringLiteral("n.csv"))));
    // A directory that does not exist, and a directory in place of the file.
    EXPECT_FALSE(OXWExportCSVUtilities::exportPointsAsCSV(
        dir.filePath(QStringLiteral("missing/dir/a.csv")), &p, 1));
    EXPECT_FALSE(OXWExportCSVUtilities::exportPointsAsCSV(dir.path(), &p, 1));
    // Nothing is left behind.
    EXPECT_EQ(QDir(dir.path()).entryList(QDir::Files | QDir::NoDotAndDotDot).size(), 0);
}
