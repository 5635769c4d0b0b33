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
