// Writing colour tables: file names and extensions, the text format, the palette sampling and
// the failures that must leave no file behind.

#include "ColorTableTestSupport.h"

#include <QBuffer>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QLocale>

#include <gtest/gtest.h>

#include <clocale>
#include <cmath>
#include <string>

using namespace colortabletest;

namespace {

// The byte of one colour (0 red, 1 green, 2 blue) of palette entry j.
int paletteByte(const QByteArray& palette, int j, int colour)
{
    return static_cast<unsigned char>(palette.at(3 * j + colour));
}

} // namespace

// --- Names ---------------------------------------------------------------------------------

TEST(ColorTableNames, FiltersAndTheFormatTheyChoose)
{
    EXPECT_EQ(File::filter(Format::Text), QStringLiteral("*.lut"));
    EXPECT_EQ(File::filter(Format::Palette), QStringLiteral("*.act"));
    EXPECT_EQ(File::formatFromFilter(QStringLiteral("*.act")), Format::Palette);
    EXPECT_EQ(File::formatFromFilter(QStringLiteral("*.lut")), Format::Text);
    EXPECT_EQ(File::formatFromFilter(QString()), Format::Text);
    // The filter decides, compared exactly.
    EXPECT_EQ(File::formatFromFilter(QStringLiteral("*.ACT")), Format::Text);
}

TEST(ColorTableNames, PaletteExtensionIsAppendedUnlessExactlyPresent)
{
    EXPECT_EQ(File::withExtension(QStringLiteral("colours"), Format::Palette),
              QStringLiteral("colours.act"));
    EXPECT_EQ(File::withExtension(QStringLiteral("colours.act"), Format::Palette),
              QStringLiteral("colours.act"));
    EXPECT_EQ(File::withExtension(QStringLiteral("colours.ACT"), Format::Palette),
              QStringLiteral("colours.ACT"));
    EXPECT_EQ(File::withExtension(QStringLiteral("colours.Act"), Format::Palette),
              QStringLiteral("colours.Act.act"));
    EXPECT_EQ(File::withExtension(QStringLiteral("colours.lut"), Format::Palette),
              QStringLiteral("colours.lut.act"));
    EXPECT_EQ(File::withExtension(QStringLiteral("act"), Format::Palette),
              QStringLiteral("act.act"));
}

TEST(ColorTableNames, TextExtensionIsAppendedUnlessExactlyPresent)
{
    EXPECT_EQ(File::withExtension(QStringLiteral("c"), Format::Text), QStringLiteral("c.lut"));
    EXPECT_EQ(File::withExtension(QStringLiteral("c.lut"), Format::Text), QStringLiteral("c.lut"));
    EXPECT_EQ(File::withExtension(QStringLiteral("c.LUT"), Format::Text), QStringLiteral("c.LUT"));
    EXPECT_EQ(File::withExtension(QStringLiteral("c.Lut"), Format::Text),
              QStringLiteral("c.Lut.lut"));
    EXPECT_EQ(File::withExtension(QStringLiteral("c.act"), Format::Text),
              QStringLiteral("c.act.lut"));
    // Applying the rule twice changes nothing more.
    const QString once = File::withExtension(QStringLiteral("c.Lut"), Format::Text);
    EXPECT_EQ(File::withExtension(once, Format::Text), once);
}

TEST(ColorTableNames, ExportWritesUnderTheExtendedName)
{
    TempFiles files;
    auto object = makeObject(256);
    const OXWLUTIntervalInfo& interval = *object->interval(0);

    ASSERT_TRUE(File::exportInterval(interval, files.path("plain"), Format::Palette));
    EXPECT_TRUE(QFile::exists(files.path("plain.act")));
    EXPECT_FALSE(QFile::exists(files.path("plain")));

    ASSERT_TRUE(File::exportInterval(interval, files.path("upper.ACT"), Format::Palette));
    EXPECT_TRUE(QFile::exists(files.path("upper.ACT")));
    EXPECT_FALSE(QFile::exists(files.path("upper.ACT.act")));

    ASSERT_TRUE(File::exportInterval(interval, files.path("mixed.Act"), Format::Palette));
    EXPECT_TRUE(QFile::exists(files.path("mixed.Act.act")));

    ASSERT_TRUE(File::exportInterval(interval, files.path("text"), Format::Text));
    EXPECT_TRUE(QFile::exists(files.path("text.lut")));
}

// --- Text format ---------------------------------------------------------------------------

TEST(ColorTableText, WhiteIntervalGivesHeaderEmptyLineAndTwoWhiteLines)
{
    TempFiles files;
    auto object = makeObject(256);
    OXWLUTIntervalInfo& interval = *object->interval(0);
    ASSERT_TRUE(interval.setColour(OXMRGB8(255, 255, 255)));

    ASSERT_TRUE(File::exportInterval(interval, files.path("white.lut"), Format::Text));
    // The end handles sit on the centres of the first and last of 256 cells.
    EXPECT_EQ(TempFiles::contentsOf(files.path("white.lut")),
              QByteArray("; Color look up table\n"
                         "\n"
                         "0.001953 255.000000 255.000000 255.000000\n"
                         "0.998047 255.000000 255.000000 255.000000\n"));
}

TEST(ColorTableText, DefaultColoursCarryTheHalf)
{
    auto object = makeObject(4);
    const QByteArray text = File::textContents(File::tableOf(*object->interval(0)));
    EXPECT_EQ(text, QByteArray("; Color look up table\n\n"
                               "0.125000 255.500000 255.500000 255.500000\n"
                               "0.875000 255.500000 255.500000 255.500000\n"));
}

TEST(ColorTableText, OneLinePerHandleWithSixDecimalsInHandleOrder)
{
    const Table table = makeTable({{0.0f, 0.5f, 12.3456789f, 9.0f},
                                   {0.25f, 1.0f, 2.0f, 3.0f},
                                   {1.0f, 255.5f, 0.0f, 100.25f}});
    EXPECT_EQ(File::textContents(table), QByteArray("; Color look up table\n\n"
                                                    "0.000000 0.500000 12.345679 9.000000\n"
                                                    "0.250000 1.000000 2.000000 3.000000\n"
                                                    "1.000000 255.500000 0.000000 100.250000\n"));
}

TEST(ColorTableText, NumbersDoNotFollowTheUserLocale)
{
    // German numbers have a decimal comma, in C (scripts/install-deps.sh generates the locale)
    // and in Qt.
    const std::string previous = std::setlocale(LC_ALL, nullptr);
    const QLocale previousQt;
    ASSERT_NE(std::setlocale(LC_ALL, "de_DE.UTF-8"), nullptr) << "run scripts/install-deps.sh";
    QLocale::setDefault(QLocale(QLocale::German, QLocale::Germany));
    const std::string decimalPoint = std::localeconv()->decimal_point;
    const Table table = makeTable({{0.5f, 1.5f, 2.5f, 3.5f}, {1.0f, 4.0f, 5.0f, 6.0f}});
    const QByteArray text = File::textContents(table);
    Table read;
    QByteArray copy = text;
    QBuffer buffer(&copy);
    buffer.open(QIODevice::ReadOnly);
    const bool ok = File::readText(buffer, read);
    std::setlocale(LC_ALL, previous.c_str());
    QLocale::setDefault(previousQt);
    EXPECT_EQ(decimalPoint, ",");
    EXPECT_TRUE(text.contains("0.500000 1.500000 2.500000 3.500000\n")) << text.constData();
    ASSERT_TRUE(ok);
    EXPECT_EQ(read.red, table.red);
}

// --- Palette format -------------------------------------------------------------------------

TEST(ColorTablePalette, IsExactly768BytesRedGreenBluePerEntry)
{
    const Table table = makeTable({{0.0f, 10.0f, 20.0f, 30.0f}, {1.0f, 10.0f, 20.0f, 30.0f}});
    const QByteArray palette = File::paletteContents(table);
    ASSERT_EQ(palette.size(), 768);
    for (int j = 0; j < 256; ++j) {
        EXPECT_EQ(paletteByte(palette, j, 0), 10) << j;
        EXPECT_EQ(paletteByte(palette, j, 1), 20) << j;
        EXPECT_EQ(paletteByte(palette, j, 2), 30) << j;
    }
}

TEST(ColorTablePalette, SegmentBytesAreTheFlooredLineAndIndex256IsNotWritten)
{
    // One segment from 0 to 1: entries j = floor(255 j / 256); the handle at 1.0 falls on
    // index 256, outside the table, so entry 255 is 254, not 255.
    const Table table = makeTable({{0.0f, 0.0f, 255.0f, 0.5f}, {1.0f, 255.0f, 0.0f, 0.5f}});
    const QByteArray palette = File::paletteContents(table);
    ASSERT_EQ(palette.size(), 768);
    for (int j = 0; j < 256; ++j) {
        EXPECT_EQ(paletteByte(palette, j, 0), (255 * j) / 256) << j;
        EXPECT_EQ(paletteByte(palette, j, 1), int(std::floor(255.0 - 255.0 * j / 256))) << j;
        EXPECT_EQ(paletteByte(palette, j, 2), 0) << j; // 0.5 is floored
    }
    EXPECT_EQ(paletteByte(palette, 255, 0), 254);
}

TEST(ColorTablePalette, LaterSegmentWinsOnSharedIndex)
{
    // Segment 0 runs from index 0 to 2 over a single step (x1 - x0 = 1.2 / 256), so on its
    // last index it would overshoot to 200; segment 1 starts on that index with 100.
    const Table table = makeTable({{0.9f / 256, 0.0f, 0.0f, 0.0f},
                                   {2.1f / 256, 100.0f, 100.0f, 100.0f},
                                   {1.0f, 100.0f, 100.0f, 100.0f}});
    const QByteArray palette = File::paletteContents(table);
    EXPECT_EQ(paletteByte(palette, 0, 0), 0);
    EXPECT_EQ(paletteByte(palette, 1, 0), 100);
    EXPECT_EQ(paletteByte(palette, 2, 0), 100);
    EXPECT_EQ(paletteByte(palette, 3, 0), 100);
}

TEST(ColorTablePalette, SegmentNarrowerThanAnEntryWritesItsStartValue)
{
    // Segment 1 lies inside entry 200 (steps = 0): it writes y0 = 100 there, not 180; the
    // entries after the last handle continue its value.
    const Table table = makeTable({{0.0f, 0.0f, 0.0f, 0.0f},
                                   {200.5f / 256, 100.0f, 100.0f, 100.0f},
                                   {200.9f / 256, 180.0f, 180.0f, 180.0f}});
    const QByteArray palette = File::paletteContents(table);
    ASSERT_EQ(palette.size(), 768);
    EXPECT_EQ(paletteByte(palette, 199, 0), int(std::floor(100.0 * 199 / 200)));
    EXPECT_EQ(paletteByte(palette, 200, 0), 100);
    EXPECT_EQ(paletteByte(palette, 201, 0), 180);
    EXPECT_EQ(paletteByte(palette, 255, 0), 180);
}

TEST(ColorTablePalette, EntriesOutsideTheHandlesExtendTheEndValues)
{
    const Table table = makeTable({{0.25f, 10.0f, 20.0f, 30.0f}, {0.75f, 110.0f, 120.0f, 130.0f}});
    const QByteArray palette = File::paletteContents(table);
    for (int j = 0; j <= 64; ++j) {
        EXPECT_EQ(paletteByte(palette, j, 0), 10) << j;
        EXPECT_EQ(paletteByte(palette, j, 1), 20) << j;
        EXPECT_EQ(paletteByte(palette, j, 2), 30) << j;
    }
    EXPECT_EQ(paletteByte(palette, 128, 0), 60);
    for (int j = 192; j < 256; ++j) {
        EXPECT_EQ(paletteByte(palette, j, 0), 110) << j;
        EXPECT_EQ(paletteByte(palette, j, 1), 120) << j;
        EXPECT_EQ(paletteByte(palette, j, 2), 130) << j;
    }
}

TEST(ColorTablePalette, DoesNotDependOnEarlierExports)
{
    const Table narrow = makeTable({{0.25f, 10.0f, 20.0f, 30.0f}, {0.75f, 40.0f, 50.0f, 60.0f}});
    const QByteArray before = File::paletteContents(narrow);
    const Table white = makeTable({{0.0f, 255.0f, 255.0f, 255.0f}, {1.0f, 255.0f, 255.0f, 255.0f}});
    EXPECT_EQ(paletteByte(File::paletteContents(white), 0, 0), 255);
    EXPECT_EQ(File::paletteContents(narrow), before);
    EXPECT_EQ(paletteByte(before, 0, 0), 10);
    EXPECT_EQ(paletteByte(before, 255, 2), 60);
}

TEST(ColorTablePalette, ValuesOutsideTheByteRangeAreClamped)
{
    const Table table = makeTable({{0.0f, -5.0f, 300.0f, 255.5f}, {1.0f, -5.0f, 300.0f, 255.5f}});
    const QByteArray palette = File::paletteContents(table);
    EXPECT_EQ(paletteByte(palette, 100, 0), 0);
    EXPECT_EQ(paletteByte(palette, 100, 1), 255);
    EXPECT_EQ(paletteByte(palette, 100, 2), 255);
}

TEST(ColorTablePalette, ExportOfAnIntervalSamplesItsFittedCurves)
{
    TempFiles files;
    auto object = makeObject(256);
    OXWLUTIntervalInfo& interval = *object->interval(0);
    ASSERT_TRUE(interval.setColour(OXMRGB8(12, 34, 56)));
    ASSERT_TRUE(File::exportInterval(interval, files.path("c.act"), Format::Palette));
    const QByteArray palette = TempFiles::contentsOf(files.path("c.act"));
    ASSERT_EQ(palette.size(), 768);
    for (int j = 0; j < 256; ++j) {
        EXPECT_EQ(paletteByte(palette, j, 0), 12) << j;
        EXPECT_EQ(paletteByte(palette, j, 1), 34) << j;
        EXPECT_EQ(paletteByte(palette, j, 2), 56) << j;
    }
}

// --- Failures ------------------------------------------------------------------------------

TEST(ColorTableWriteFailure, FewerThanTwoRedHandlesWritesNothing)
{
    TempFiles files;
    OXWLUTIntervalInfo detached(nullptr); // no object: no curves
    EXPECT_FALSE(File::exportInterval(detached, files.path("none.lut"), Format::Text));
    EXPECT_FALSE(File::exportInterval(detached, files.path("none.act"), Format::Palette));
    EXPECT_FALSE(QFile::exists(files.path("none.lut")));
    EXPECT_FALSE(QFile::exists(files.path("none.act")));

    const Table single = makeTable({{0.5f, 1.0f, 2.0f, 3.0f}});
    EXPECT_FALSE(File::write(files.path("single.lut"), single, Format::Text));
    EXPECT_FALSE(QFile::exists(files.path("single.lut")));
    EXPECT_TRUE(File::paletteContents(single).isEmpty());
}

TEST(ColorTableWriteFailure, ChannelsWithDifferentCountsWriteNothing)
{
    TempFiles files;
    Table table = makeTable({{0.0f, 1.0f, 2.0f, 3.0f}, {1.0f, 1.0f, 2.0f, 3.0f}});
    table.green.pop_back();
    EXPECT_FALSE(File::write(files.path("bad.act"), table, Format::Palette));
    EXPECT_FALSE(File::write(files.path("bad.lut"), table, Format::Text));
    EXPECT_FALSE(QFile::exists(files.path("bad.act")));
    EXPECT_FALSE(QFile::exists(files.path("bad.lut")));
}

TEST(ColorTableWriteFailure, UnwritablePathsAndEmptyNamesFail)
{
    TempFiles files;
    auto object = makeObject(16);
    const OXWLUTIntervalInfo& interval = *object->interval(0);
    EXPECT_FALSE(File::exportInterval(interval, files.path("missing/dir/c"), Format::Text));
    EXPECT_FALSE(File::exportInterval(interval, QString(), Format::Palette));
    // A directory of the chosen name cannot be replaced by a file.
    ASSERT_TRUE(QDir(files.path(QString())).mkdir(QStringLiteral("taken.lut")));
    EXPECT_FALSE(File::exportInterval(interval, files.path("taken.lut"), Format::Text));
    EXPECT_TRUE(QFileInfo(files.path("taken.lut")).isDir());
}

TEST(ColorTableWriteFailure, ExistingFileIsTruncated)
{
    TempFiles files;
    const QString name = files.write("old.lut", QByteArray(10000, 'x'));
    auto object = makeObject(4);
    ASSERT_TRUE(File::exportInterval(*object->interval(0), name, Format::Text));
    EXPECT_EQ(TempFiles::contentsOf(name), File::textContents(File::tableOf(*object->interval(0))));
}
