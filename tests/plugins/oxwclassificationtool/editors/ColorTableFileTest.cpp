// The colour table files: the two formats written and read (file names and extensions, the
// text lines, the palette sampling, the lenient text reader, the 768-byte palette), imports
// into an interval (the position fit, the value rule, round trips between intervals of
// different widths), and the input, paths and tables that must be survived without a table,
// a file or a change to the interval.

#include "../model/ModelTestSupport.h"
#include "OXWLUTColorTableFile.h"

#include <QBuffer>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QLocale>
#include <QTemporaryDir>

#include <gtest/gtest.h>

#include <array>
#include <clocale>
#include <cmath>
#include <limits>
#include <memory>
#include <ostream>
#include <string>
#include <sys/stat.h>
#include <tuple>
#include <vector>

static bool operator==(const OXWLUTColorTableFile::Table& a, const OXWLUTColorTableFile::Table& b)
{
    return a.red == b.red && a.green == b.green && a.blue == b.blue;
}

// A table as its entries (position: red green blue).
static void PrintTo(const OXWLUTColorTableFile::Table& table, std::ostream* os)
{
    for (std::size_t k = 0; k < table.red.size(); ++k) {
        *os << " (" << table.red[k].x << ": " << table.red[k].y;
        for (const auto* list : {&table.green, &table.blue}) {
            *os << " " << (k < list->size() ? (*list)[k].y : -1.0f);
        }
        *os << ")";
    }
}

using namespace modeltest;

namespace {

using File = OXWLUTColorTableFile;
using Format = OXWLUTColorTableFile::Format;
using Table = OXWLUTColorTableFile::Table;

constexpr int kColours[] = {kRed, kGreen, kBlue};
constexpr Format kFormats[] = {Format::Text, Format::Palette};

// The width of one column of a bar of the given number of columns showing the whole axis, in
// the interval's local units, as the bar computes it from its columns 0 and 1.
float barColumnWidth(const OXWLUTIntervalInfo& interval, int columns)
{
    return File::columnWidth(interval, 0.0f, 1.0f / float(columns));
}

// A table of three curves from entries {position, red, green, blue}.
Table makeTable(const std::vector<std::array<float, 4>>& entries)
{
    Table table;
    for (const auto& e : entries) {
        table.red.emplace_back(e[0], e[1]);
        table.green.emplace_back(e[0], e[2]);
        table.blue.emplace_back(e[0], e[3]);
    }
    return table;
}

bool readTextFrom(QByteArray contents, Table& table)
{
    QBuffer buffer(&contents);
    buffer.open(QIODevice::ReadOnly);
    return File::readText(buffer, table);
}

// A temporary directory for the files of one test.
struct TempFiles
{
    QString path(const QString& name) const { return dir.filePath(name); }
    QString write(const QString& name, const QByteArray& contents) const
    {
        QFile file(path(name));
        EXPECT_TRUE(file.open(QIODevice::WriteOnly) && file.write(contents) == contents.size());
        return file.fileName();
    }
    static QByteArray contentsOf(const QString& name)
    {
        QFile file(name);
        return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
    }
    QTemporaryDir dir;
};

QByteArray ramp768()
{
    QByteArray bytes(768, '\0');
    for (int i = 0; i < 256; ++i) {
        bytes[3 * i] = char(i);
        bytes[3 * i + 1] = char(255 - i);
        bytes[3 * i + 2] = char(128);
    }
    return bytes;
}

// Shapes the colours of an interval: a red peak, a green dip and a blue step up.
void shapeColours(OXWLUTIntervalInfo& interval)
{
    interval.setReferenceHandles(kRed, {{0.0f, 0.0f}, {0.5f, 255.0f}, {1.0f, 0.0f}});
    interval.setReferenceHandles(kGreen, {{0.0f, 255.0f}, {0.5f, 0.0f}, {1.0f, 255.0f}});
    interval.setReferenceHandles(kBlue, {{0.0f, 100.0f}, {0.5f, 100.0f}, {1.0f, 200.0f}});
}

} // namespace

// The chosen filter decides the format; its extension is appended unless exactly present.
TEST(ColorTableNames, FilterFormatAndExtension)
{
    EXPECT_EQ(File::formatFromFilter(File::filter(Format::Palette)), Format::Palette);
    EXPECT_EQ(File::formatFromFilter(QStringLiteral("*.ACT")), Format::Text);
    constexpr Format P = Format::Palette;
    constexpr Format T = Format::Text;
    const std::tuple<Format, const char*, const char*> cases[] = {
        {P, "c", "c.act"},         {P, "c.act", "c.act"},     {P, "c.ACT", "c.ACT"},
        {P, "c.Act", "c.Act.act"}, {P, "c.lut", "c.lut.act"}, {P, "act", "act.act"},
        {T, "c", "c.lut"},         {T, "c.lut", "c.lut"},     {T, "c.LUT", "c.LUT"},
        {T, "c.Lut", "c.Lut.lut"}, {T, "c.act", "c.act.lut"}};
    for (const auto& [format, name, expected] : cases) {
        const QString once = File::withExtension(QString::fromLatin1(name), format);
        EXPECT_EQ(once, QString::fromLatin1(expected));
        EXPECT_EQ(File::withExtension(once, format), once);
    }
}

// --- Text ----------------------------------------------------------------------------------

// A header, an empty line and one line per handle with six decimals, in handle order.
TEST(ColorTableText, LinesOfPositionRedGreenBlue)
{
    auto white = makeObject(256);
    ASSERT_TRUE(white->interval(0)->setColour(OXMRGB8(255, 255, 255)));
    const std::pair<Table, QByteArray> cases[] = {
        // The end handles sit on the centres of the first and last cell.
        {File::tableOf(*white->interval(0)), "0.001953 255.000000 255.000000 255.000000\n"
                                             "0.998047 255.000000 255.000000 255.000000\n"},
        {makeTable({{0, 0.5f, 12.3456789f, 9}, {0.25f, 1, 2, 3}, {1, 255.5f, 0, 100.25f}}),
         "0.000000 0.500000 12.345679 9.000000\n0.250000 1.000000 2.000000 3.000000\n"
         "1.000000 255.500000 0.000000 100.250000\n"}};
    for (const auto& [table, lines] : cases) {
        EXPECT_EQ(File::textContents(table), "; Color look up table\n\n" + lines);
    }
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
    const Table table = makeTable({{0.5f, 1.5f, 2.5f, 3.5f}, {1, 4, 5, 6}});
    const QByteArray text = File::textContents(table);
    Table read;
    const bool ok = readTextFrom(text, read);
    std::setlocale(LC_ALL, previous.c_str());
    QLocale::setDefault(previousQt);
    EXPECT_EQ(decimalPoint, ",");
    EXPECT_TRUE(text.contains("0.500000 1.500000 2.500000 3.500000\n")) << text.constData();
    EXPECT_TRUE(ok);
    EXPECT_EQ(read, table);
}

// Every line is judged on its own: an entry is a line that starts with four finite numbers.
// Long lines are judged in pieces of 4094 characters.
TEST(ColorTableText, OnlyCompleteEntryLinesAreRead)
{
    const std::tuple<const char*, QByteArray, Table> cases[] = {
        {"lenient lines",
         "; Color look up table\n\n   ; an indented comment 0.9 9 9 9\n;0.8 8 8 8\n0.1 1 2\n"
         "0.2 10 20 30\n\t0.3\t40  \t 50\t60 and words after them\nwords 0.4 1 2 3\n"
         "0.5,1,2,3\n0.6 1 2 x3\n   \t  \n0.7 70 80 90;\n",
         makeTable({{0.2f, 10, 20, 30}, {0.3f, 40, 50, 60}, {0.7f, 70, 80, 90}})},
        {"crlf", "; Color look up table\r\n\r\n0.1 1 2 3\r\n; c\r\n0.9 4 5 6\r\n0.5 7 8\r\n",
         makeTable({{0.1f, 1, 2, 3}, {0.9f, 4, 5, 6}})},
        {"number forms", "+0.5 1e2 2.5E+1 -0\n.25 5. 1e-1 007\n",
         makeTable({{0.5f, 100, 25, -0.0f}, {0.25f, 5, 0.1f, 7}})},
        {"signs and glued numbers", "+-1 2 3 4\n- 1 2 3\n1 2 3-4\n0x1 2 3 4\n", {}},
        {"non-finite and huge",
         "0.1 nan 2 3\n0.2 1 inf 3\n0.3 1 2 -infinity\n0.4 1e999 2 3\n0.5 1 -1e39 3\nNaN 1 2 3\n"
         "0.6 6 7 8\n0.7 1 2 1e-999\n",
         makeTable({{0.6f, 6, 7, 8}})},
        {"empty", QByteArray(), {}},
        {"header only", "; Color look up table\n\n", {}},
        {"no final line feed", "0.1 1 2 3", makeTable({{0.1f, 1, 2, 3}})},
        {"one full piece", QByteArray(4085, ' ') + "0.5 1 2 3\n", makeTable({{0.5f, 1, 2, 3}})},
        {"number in the next piece", QByteArray(4086, ' ') + "0.5 1 2 3\n", {}},
        {"second piece", QByteArray(4094, 'x') + "0.25 9 8 7\n", makeTable({{0.25f, 9, 8, 7}})},
        {"long tail", "0.5 1 2 3" + QByteArray(100000, 'y') + "\n0.75 4 5 6\n",
         makeTable({{0.5f, 1, 2, 3}, {0.75f, 4, 5, 6}})},
        {"thousands of digits", QByteArray(20000, '1') + " 1 2 3\n", {}},
        {"nul after the numbers", QByteArray("0.5 1 2 3\0tail\n", 15),
         makeTable({{0.5f, 1, 2, 3}})},
        {"nul among the numbers", QByteArray("0.5 1\0 2 3\n", 11), {}},
        {"binary", QByteArray(4096, '\x90') + "\n0.5 1 2 3\n" + QByteArray(4096, '\x07'),
         makeTable({{0.5f, 1, 2, 3}})}};
    for (const auto& [what, text, expected] : cases) {
        Table table = makeTable({{0.9f, 9, 9, 9}});
        EXPECT_EQ(readTextFrom(text, table), !expected.isEmpty()) << what;
        EXPECT_EQ(table, expected) << what;
    }
}

// --- Palette -------------------------------------------------------------------------------

// 256 entries of red, green and blue: entry j is the floored line at j / 256. The handle at
// 1.0 falls on index 256, outside the table, so the last entry of a rise to 255 is 254.
TEST(ColorTablePalette, EntryJIsTheFlooredLineAtJOver256)
{
    const QByteArray palette =
        File::paletteContents(makeTable({{0, 0, 255, 0.5f}, {1, 255, 0, 0.5f}}));
    ASSERT_EQ(palette.size(), 768);
    for (int j = 0; j < 256; ++j) {
        EXPECT_EQ(uchar(palette[3 * j]), (255 * j) / 256) << j;
        EXPECT_EQ(uchar(palette[3 * j + 1]), int(std::floor(255.0 - 255.0 * j / 256))) << j;
        EXPECT_EQ(uchar(palette[3 * j + 2]), 0) << j;
    }
    EXPECT_EQ(uchar(palette[3 * 255]), 254);
}

// A later segment wins an entry it shares with the one before (which would overshoot to 200
// there); a segment inside one entry writes its start value; the ends extend; values clamp.
TEST(ColorTablePalette, SegmentsEndsAndRange)
{
    const std::pair<Table, std::vector<std::array<int, 4>>> cases[] = {
        {makeTable({{0.9f / 256, 0, 0, 0}, {2.1f / 256, 100, 100, 100}, {1, 100, 100, 100}}),
         {{0, 0, 0, 0}, {1, 100, 100, 100}, {2, 100, 100, 100}, {3, 100, 100, 100}}},
        {makeTable({{0, 0, 0, 0}, {200.5f / 256, 100, 100, 100}, {200.9f / 256, 180, 180, 180}}),
         {{199, 99, 99, 99}, {200, 100, 100, 100}, {201, 180, 180, 180}, {255, 180, 180, 180}}},
        {makeTable({{0.25f, 10, 20, 30}, {0.75f, 110, 120, 130}}),
         {{0, 10, 20, 30}, {64, 10, 20, 30}, {128, 60, 70, 80}, {255, 110, 120, 130}}},
        {makeTable({{0, -5, 300, 255.5f}, {1, -5, 300, 255.5f}}), {{100, 0, 255, 255}}}};
    std::vector<QByteArray> palettes;
    for (const auto& [table, entries] : cases) {
        palettes.push_back(File::paletteContents(table));
        ASSERT_EQ(palettes.back().size(), 768);
        for (const auto& e : entries) {
            for (int colour = 0; colour < 3; ++colour) {
                EXPECT_EQ(uchar(palettes.back()[3 * e[0] + colour]), e[1 + colour])
                    << "case " << palettes.size() << ", entry " << e[0] << ", colour " << colour;
            }
        }
    }
    // No palette depends on the ones written before it.
    EXPECT_EQ(File::paletteContents(cases[0].first), palettes[0]);
}

// Entry i is read as a handle at i / 256; a longer file gives its first 768 bytes, a shorter
// one no table.
TEST(ColorTablePalette, TheFirst768BytesAreReadAsHandlesAtIndexOver256)
{
    TempFiles files;
    for (int size : {0, 1, 767, 768, 769, 768 + 10 * 1024 * 1024}) {
        QByteArray bytes(size, '\0');
        for (int i = 0; i < size; ++i) {
            bytes[i] = char((i * 7 + size) & 0xff);
        }
        Table table;
        Table expected;
        for (int i = 0; i < 256 && size >= 768; ++i) {
            expected.red.emplace_back(i / 256.0f, float(uchar(bytes[3 * i])));
            expected.green.emplace_back(i / 256.0f, float(uchar(bytes[3 * i + 1])));
            expected.blue.emplace_back(i / 256.0f, float(uchar(bytes[3 * i + 2])));
        }
        EXPECT_EQ(File::readPalette(files.write("p.act", bytes), table), size >= 768) << size;
        EXPECT_EQ(table, expected) << size;
    }
}

// --- Files -----------------------------------------------------------------------------------

// An existing file is replaced; incomplete tables and unwritable paths leave no file. Names
// outside ASCII are written and read as they are.
TEST(ColorTableFile, WritesReplaceOrLeaveNoFile)
{
    TempFiles files;
    auto object = makeObject(4);
    const OXWLUTIntervalInfo& interval = *object->interval(0);
    const Table table = File::tableOf(interval);
    const QString name = QString::fromUtf8(u8"F\u00e4rbung \u65e5\u672c");
    for (Format format : kFormats) {
        const QString written = files.write(File::withExtension(name, format), "old contents");
        ASSERT_TRUE(File::exportInterval(interval, files.path(name), format));
        EXPECT_EQ(TempFiles::contentsOf(written), format == Format::Text
                                                      ? File::textContents(table)
                                                      : File::paletteContents(table));
        Table read;
        EXPECT_TRUE(File::read(written, format, read));
        QFile::remove(written);
    }
    ASSERT_TRUE(QDir(files.path(QString())).mkdir(QStringLiteral("taken.lut")));
    OXWLUTIntervalInfo detached(nullptr); // no object: no curves
    Table uneven = makeTable({{0, 1, 2, 3}, {1, 1, 2, 3}});
    uneven.green.pop_back();
    const Table single = makeTable({{0.5f, 1, 2, 3}});
    EXPECT_TRUE(File::paletteContents(single).isEmpty());
    for (Format format : kFormats) {
        EXPECT_FALSE(File::exportInterval(detached, files.path("detached"), format));
        EXPECT_FALSE(File::write(files.path("single"), single, format));
        EXPECT_FALSE(File::write(files.path("uneven"), uneven, format));
        EXPECT_FALSE(File::exportInterval(interval, files.path("missing/dir/c"), format));
        EXPECT_FALSE(File::exportInterval(interval, QString(), format));
    }
    EXPECT_FALSE(File::exportInterval(interval, files.path("taken.lut"), Format::Text));
    EXPECT_TRUE(QFileInfo(files.path("taken.lut")).isDir());
    EXPECT_EQ(QDir(files.path(QString())).entryList(QDir::Files), QStringList());
}

// Refused before they are opened, as root too, and at once: a pipe would block the open until
// a writer comes (here: until ctest's timeout), /dev/zero would feed the text reader up to
// its size limit and the palette reader a table of zeros. A missing file says less.
TEST(ColorTableFile, UnreadableFilesReadNothingAndSayWhy)
{
    TempFiles files;
    const QString fifo = files.path("pipe.lut");
    ASSERT_EQ(::mkfifo(QFile::encodeName(fifo).constData(), 0600), 0);
    QFile huge(files.write("huge.act", QByteArray()));
    ASSERT_TRUE(huge.resize(File::MaxFileSize + 1)); // sparse
    const std::pair<QString, QString> cases[] = {
        {fifo, "not a regular file"},
        {"/dev/zero", "not a regular file"},
        {files.path(QString()), "not a regular file"},
        {huge.fileName(), QString("larger than %1 bytes").arg(File::MaxFileSize)},
        {files.path("missing.lut"), QString()}};
    for (const auto& [name, reason] : cases) {
        for (Format format : kFormats) {
            Table table = makeTable({{0.5f, 1, 2, 3}});
            QString refusal;
            EXPECT_FALSE(File::read(name, format, table, &refusal));
            EXPECT_TRUE(table.isEmpty());
            if (!reason.isEmpty()) {
                EXPECT_EQ(refusal, QDir::toNativeSeparators(name) + ": " + reason);
            }
        }
    }
}

// --- Import ---------------------------------------------------------------------------------

// The entries are spread over the interval with half a column to spare at both ends; without
// a usable column width they keep their positions, inside the interval.
TEST(ColorTableFit, SpreadsWithHalfAColumnToSpare)
{
    const std::tuple<std::vector<float>, float, std::vector<float>> cases[] = {
        {{0.2f, 0.4f, 0.6f}, 0.1f, {0.1f, 0.5f, 0.9f}}, // range 0.5, origin 0.15
        {{0.3f}, 0.01f, {0.5f}},
        {{0.3f, 0.3f}, 0.0f, {0.3f, 0.3f}},
        {{7.0f}, std::numeric_limits<float>::quiet_NaN(), {1.0f}},
        {{-3.0e38f, 0.0f, 3.0e38f}, 0.01f, {0.0f, 0.5f, 1.0f}}};
    for (const auto& [read, columnWidth, fitted] : cases) {
        Table table;
        for (float x : read) {
            table.red.emplace_back(x, 1.0f);
            table.green.emplace_back(x, 2.0f);
            table.blue.emplace_back(x, 3.0f);
        }
        File::fitPositions(table, columnWidth);
        ASSERT_EQ(table.red.size(), fitted.size());
        for (std::size_t k = 0; k < fitted.size(); ++k) {
            EXPECT_NEAR(table.red[k].x, fitted[k], 1e-6) << read[k] << " " << columnWidth;
            EXPECT_EQ(table.green[k].x, table.red[k].x);
            EXPECT_EQ(table.blue[k].x, table.red[k].x);
        }
    }
    // A bar of 512 columns over the whole axis: a column is 1/128 of a quarter-wide interval.
    auto object = makeObject(256);
    ASSERT_TRUE(object->newInterval(0.25f, false));
    EXPECT_FLOAT_EQ(barColumnWidth(*object->interval(0), 512), 1.0f / 128);
}

// Values that span at most 1.001 are fractions of the colour scale; all values are clamped
// to 0 .. 255.5.
TEST(ColorTableValues, TheSpanOfAllValuesDecidesBetweenFractionsAndBytes)
{
    const std::tuple<Table, bool, Table> cases[] = {
        {makeTable({{0, 0, 0.5f, 1}, {1, 1, 0.25f, 0}}), true,
         makeTable({{0, 0.5f, 128, 255.5f}, {1, 255.5f, 64.25f, 0.5f}})},
        {makeTable({{0, 0.2f, 0.2f, 0.2f}, {1, 1.2f, 1.2f, 1.2f}}), true,
         makeTable({{0, 51.5f, 51.5f, 51.5f}, {1, 255.5f, 255.5f, 255.5f}})},
        {makeTable({{0, 0, 0, 0}, {1, 1.01f, 0, 0}}), false,
         makeTable({{0, 0, 0, 0}, {1, 1.01f, 0, 0}})},
        {makeTable({{0, -20, 300, 1.0e30f}, {1, 10, 255.5f, 0}}), false,
         makeTable({{0, 0, 255.5f, 255.5f}, {1, 10, 255.5f, 0}})}};
    for (auto [table, fractions, expected] : cases) {
        EXPECT_EQ(File::applyFractionRule(table), fractions);
        EXPECT_EQ(table, expected);
    }
}

TEST(ColorTableImport, EntriesAreSortedFittedAndScaled)
{
    TempFiles files;
    auto object = makeObject(256);
    OXWLUTIntervalInfo& interval = *object->interval(0);
    const QString name = files.write("i.lut", "0.9 1 0.5 0\n0.1 0 0.5 1\n0.5 0.5 0 0\n");
    ASSERT_TRUE(
        File::importIntoInterval(interval, name, Format::Text, barColumnWidth(interval, 256)));
    const HandleList& red = interval.referenceHandles(kRed);
    ASSERT_EQ(red.size(), 3u);
    EXPECT_EQ(red[0].y, 0.5f);
    EXPECT_EQ(red[1].y, 128.0f);
    EXPECT_EQ(red[2].y, 255.5f);
    EXPECT_LT(red[0].x, red[1].x);
    EXPECT_LT(red[1].x, red[2].x);
    EXPECT_EQ(interval.handles(kGreen)[1].y, 0.5f);
    EXPECT_EQ(interval.handles(kBlue).front().y, 255.5f);
}

// A palette gives 256 handles on the cell centres of an interval as wide as the bar. The same
// table again changes nothing.
TEST(ColorTableImport, PaletteEntriesGoOnTheCellCentres)
{
    TempFiles files;
    const QString name = files.write("ramp.act", ramp768());
    auto object = makeObject(256);
    OXWLUTIntervalInfo& interval = *object->interval(0);
    const float column = barColumnWidth(interval, 256);
    ASSERT_TRUE(File::importIntoInterval(interval, name, Format::Palette, column));
    for (int channel : kColours) {
        ASSERT_EQ(interval.handles(channel).size(), 256u);
        for (int i = 0; i < 256; ++i) {
            EXPECT_NEAR(interval.referenceHandles(channel)[size_t(i)].x, (i + 0.5) / 256, 1e-6);
        }
    }
    EXPECT_EQ(interval.handles(kRed)[17].y, 17.0f);
    EXPECT_EQ(interval.handles(kGreen)[17].y, 238.0f);
    EXPECT_EQ(interval.handles(kBlue)[17].y, 128.0f);
    EXPECT_FALSE(File::importIntoInterval(interval, name, Format::Palette, column));
}

// An exported interval imported into an interval of another width keeps the relative layout
// of its colours; into one of the same width the very same handles.
TEST(ColorTableImport, AnImportOfAnExportKeepsTheLayout)
{
    const std::tuple<Format, int, double> cases[] = {
        {Format::Text, 384, 6.0}, {Format::Palette, 640, 8.0}, {Format::Text, 128, 0.0}};
    for (const auto& [format, cells, tolerance] : cases) {
        TempFiles files;
        auto fromObject = makeObject(128);
        auto toObject = makeObject(cells);
        OXWLUTIntervalInfo& from = *fromObject->interval(0);
        OXWLUTIntervalInfo& to = *toObject->interval(0);
        shapeColours(from);
        const QString name = File::withExtension(files.path("shape"), format);
        ASSERT_TRUE(File::exportInterval(from, name, format));
        ASSERT_TRUE(File::importIntoInterval(to, name, format, barColumnWidth(to, cells)));
        for (int channel : kColours) {
            if (tolerance == 0.0) {
                EXPECT_EQ(to.handles(channel), from.handles(channel));
            }
            for (double t = 0.05; t < 0.96; t += 0.05) {
                EXPECT_NEAR(valueAt(from.handles(channel), t), valueAt(to.handles(channel), t),
                            tolerance)
                    << "channel " << channel << " at " << t << " into " << cells;
            }
        }
    }
}

// Refused files and tables leave the interval as it was.
TEST(ColorTableImport, FailuresLeaveTheIntervalAsItWas)
{
    TempFiles files;
    auto object = makeObject(256);
    OXWLUTIntervalInfo& interval = *object->interval(0);
    shapeColours(interval);
    const OXWLUTIntervalInfo before(interval);
    EXPECT_FALSE(File::importIntoInterval(interval, files.write("f.act", ramp768().left(767)),
                                          Format::Palette, 1.0f / 256));
    Table uneven = makeTable({{0, 1, 2, 3}, {1, 4, 5, 6}});
    uneven.blue.pop_back();
    EXPECT_FALSE(File::importTable(interval, uneven, 0.01f));
    EXPECT_FALSE(
        File::importTable(interval, makeTable({{0, 1, 2, 3}, {std::nanf(""), 4, 5, 6}}), 0.01f));
    EXPECT_FALSE(File::importTable(interval, Table(), 0.01f));
    for (int channel : kColours) {
        EXPECT_EQ(interval.referenceHandles(channel), before.referenceHandles(channel));
        EXPECT_EQ(interval.handles(channel), before.handles(channel));
    }
    // An interval without an object takes nothing.
    OXWLUTIntervalInfo detached(nullptr);
    EXPECT_FALSE(File::importIntoInterval(detached, files.write("ok.lut", "0 1 2 3\n1 4 5 6\n"),
                                          Format::Text, 0.01f));
    EXPECT_TRUE(detached.referenceHandles(kRed).empty());
}
