// Reading colour tables: the lenient text rules, the 768-byte palette, and input that must be
// survived without delivering a table: junk, long lines, non-finite numbers, short and huge
// palettes, paths that cannot be read.

#include "ColorTableTestSupport.h"

#include <QBuffer>
#include <QDir>
#include <QFile>
#include <QFileInfo>

#include <gtest/gtest.h>

#include <random>
#include <sys/stat.h>
#include <utility>

using namespace colortabletest;

namespace {

bool readTextFrom(const QByteArray& contents, Table& table)
{
    QByteArray copy = contents;
    QBuffer buffer(&copy);
    buffer.open(QIODevice::ReadOnly);
    return File::readText(buffer, table);
}

HandleList handles(std::initializer_list<std::pair<float, float>> pairs)
{
    HandleList list;
    for (const auto& [x, y] : pairs) {
        list.emplace_back(x, y);
    }
    return list;
}

QByteArray paletteBytes(int size, int seed)
{
    QByteArray bytes(size, '\0');
    for (int i = 0; i < size; ++i) {
        bytes[i] = char((i * 7 + seed) & 0xff);
    }
    return bytes;
}

} // namespace

// --- Text ----------------------------------------------------------------------------------

TEST(ColorTableTextRead, OnlyCompleteEntryLinesCount)
{
    Table table;
    ASSERT_TRUE(readTextFrom("; Color look up table\n"
                             "\n"
                             "   ; an indented comment 0.9 9 9 9\n"
                             ";0.8 8 8 8\n"
                             "0.1 1 2\n"
                             "0.2 10 20 30\n"
                             "\t0.3\t40  \t 50\t60 and words after them\n"
                             "words 0.4 1 2 3\n"
                             "0.5,1,2,3\n"
                             "0.6 1 2 x3\n"
                             "   \t  \n"
                             "0.7 70 80 90;\n",
                             table));
    EXPECT_EQ(table.red, handles({{0.2f, 10.0f}, {0.3f, 40.0f}, {0.7f, 70.0f}}));
    EXPECT_EQ(table.green, handles({{0.2f, 20.0f}, {0.3f, 50.0f}, {0.7f, 80.0f}}));
    EXPECT_EQ(table.blue, handles({{0.2f, 30.0f}, {0.3f, 60.0f}, {0.7f, 90.0f}}));
}

TEST(ColorTableTextRead, CrLfReadsLikeLf)
{
    const QByteArray lf = "; Color look up table\n\n0.1 1 2 3\n; c\n0.9 4 5 6\n0.5 7 8\n";
    QByteArray crlf = lf;
    crlf.replace("\n", "\r\n");
    Table a;
    Table b;
    ASSERT_TRUE(readTextFrom(lf, a));
    ASSERT_TRUE(readTextFrom(crlf, b));
    EXPECT_EQ(a.red, b.red);
    EXPECT_EQ(a.green, b.green);
    EXPECT_EQ(a.blue, b.blue);
    EXPECT_EQ(a.red.size(), 2u);
}

TEST(ColorTableTextRead, NumberForms)
{
    Table table;
    ASSERT_TRUE(readTextFrom("+0.5 1e2 2.5E+1 -0\n.25 5. 1e-1 007\n", table));
    EXPECT_EQ(table.red, handles({{0.5f, 100.0f}, {0.25f, 5.0f}}));
    EXPECT_EQ(table.green, handles({{0.5f, 25.0f}, {0.25f, 0.1f}}));
    EXPECT_EQ(table.blue, handles({{0.5f, -0.0f}, {0.25f, 7.0f}}));
    // Signs without digits, doubled signs and numbers glued together are no entries.
    EXPECT_FALSE(readTextFrom("+-1 2 3 4\n- 1 2 3\n1 2 3-4\n0x1 2 3 4\n", table));
    EXPECT_TRUE(table.isEmpty());
}

TEST(ColorTableTextRead, NonFiniteAndHugeNumbersMakeNoEntry)
{
    Table table;
    ASSERT_TRUE(readTextFrom("0.1 nan 2 3\n"
                             "0.2 1 inf 3\n"
                             "0.3 1 2 -infinity\n"
                             "0.4 1e999 2 3\n"
                             "0.5 1 -1e39 3\n"
                             "NaN 1 2 3\n"
                             "0.6 6 7 8\n"
                             "0.7 1 2 1e-999\n",
                             table));
    EXPECT_EQ(table.red, handles({{0.6f, 6.0f}}));
    // A file of nothing but such lines is no table.
    EXPECT_FALSE(readTextFrom("0.1 nan 2 3\n0.2 inf inf inf\n1e400 1 2 3\n", table));
    EXPECT_TRUE(table.isEmpty());
}

TEST(ColorTableTextRead, EmptyHeaderOnlyAndBlankFilesAreNoTable)
{
    Table table;
    EXPECT_FALSE(readTextFrom(QByteArray(), table));
    EXPECT_FALSE(readTextFrom("; Color look up table\n\n", table));
    EXPECT_FALSE(readTextFrom("\n\n\n   \n", table));
    // A last line without a line feed is still read.
    ASSERT_TRUE(readTextFrom("0.1 1 2 3", table));
    EXPECT_EQ(table.red.size(), 1u);
}

TEST(ColorTableTextRead, LongLinesAreJudgedInPiecesOf4094)
{
    Table table;
    // 4085 blanks and the 9 characters "0.5 1 2 3" fill exactly one piece: an entry.
    ASSERT_TRUE(readTextFrom(QByteArray(4085, ' ') + "0.5 1 2 3\n", table));
    EXPECT_EQ(table.red, handles({{0.5f, 1.0f}}));
    // One blank more pushes the last number into the next piece: no entry at all.
    EXPECT_FALSE(readTextFrom(QByteArray(4086, ' ') + "0.5 1 2 3\n", table));
    // The second piece of a long line is a line of its own.
    ASSERT_TRUE(readTextFrom(QByteArray(4094, 'x') + "0.25 9 8 7\n", table));
    EXPECT_EQ(table.red, handles({{0.25f, 9.0f}}));
    // An entry followed by a very long tail counts once.
    ASSERT_TRUE(readTextFrom("0.5 1 2 3" + QByteArray(100000, 'y') + "\n0.75 4 5 6\n", table));
    EXPECT_EQ(table.red, handles({{0.5f, 1.0f}, {0.75f, 4.0f}}));
    // A single number thousands of digits long is no number of a float.
    EXPECT_FALSE(readTextFrom(QByteArray(20000, '1') + " 1 2 3\n", table));
}

TEST(ColorTableTextRead, BinaryJunkIsSurvivedAndIgnored)
{
    std::mt19937 random(1234);
    QByteArray junk(1 << 16, '\0');
    for (char& c : junk) {
        // Bytes that form no number: NUL, control characters and the upper half.
        const int v = int(random() % 160);
        c = char(v < 32 ? v : v + 96);
    }
    Table table;
    EXPECT_FALSE(readTextFrom(junk, table));
    EXPECT_TRUE(table.isEmpty());
    ASSERT_TRUE(readTextFrom(junk + "\n0.5 1 2 3\n" + junk, table));
    EXPECT_EQ(table.red, handles({{0.5f, 1.0f}}));
}

TEST(ColorTableTextRead, NulEndsTheNumbersOfALine)
{
    Table table;
    ASSERT_TRUE(readTextFrom(QByteArray("0.5 1 2 3\0tail\n", 15), table));
    EXPECT_EQ(table.red.size(), 1u);
    EXPECT_FALSE(readTextFrom(QByteArray("0.5 1\0 2 3\n", 11), table));
}

TEST(ColorTableTextRead, ClosedDeviceReadsNothing)
{
    QBuffer closed;
    Table table;
    EXPECT_FALSE(File::readText(closed, table));
    EXPECT_FALSE(File::readPalette(closed, table));
}

// --- Palette ---------------------------------------------------------------------------------

TEST(ColorTablePaletteRead, EntriesBecomeHandlesAtIndexOver256)
{
    TempFiles files;
    const QByteArray bytes = paletteBytes(768, 3);
    const QString name = files.write("p.act", bytes);
    Table table;
    ASSERT_TRUE(File::readPalette(name, table));
    ASSERT_EQ(table.red.size(), 256u);
    ASSERT_EQ(table.green.size(), 256u);
    ASSERT_EQ(table.blue.size(), 256u);
    for (int i = 0; i < 256; ++i) {
        EXPECT_EQ(table.red[size_t(i)], Handle(i / 256.0f, float(uchar(bytes[3 * i])))) << i;
        EXPECT_EQ(table.green[size_t(i)], Handle(i / 256.0f, float(uchar(bytes[3 * i + 1]))));
        EXPECT_EQ(table.blue[size_t(i)], Handle(i / 256.0f, float(uchar(bytes[3 * i + 2]))));
    }
}

TEST(ColorTablePaletteRead, ShortPalettesAreNoTable)
{
    TempFiles files;
    Table table;
    EXPECT_FALSE(File::readPalette(files.write("767.act", paletteBytes(767, 1)), table));
    EXPECT_TRUE(table.isEmpty());
    EXPECT_FALSE(File::readPalette(files.write("0.act", QByteArray()), table));
    EXPECT_FALSE(File::readPalette(files.write("1.act", QByteArray(1, 'x')), table));
}

TEST(ColorTablePaletteRead, LongerFilesGiveTheirFirst768Bytes)
{
    TempFiles files;
    QByteArray big = paletteBytes(768, 5) + QByteArray(10 * 1024 * 1024, char(0xab));
    Table table;
    ASSERT_TRUE(File::readPalette(files.write("big.act", big), table));
    ASSERT_EQ(table.red.size(), 256u);
    for (int i = 0; i < 256; ++i) {
        EXPECT_EQ(table.red[size_t(i)].y, float(uchar(big[3 * i]))) << i;
        EXPECT_EQ(table.blue[size_t(i)].y, float(uchar(big[3 * i + 2]))) << i;
    }
    ASSERT_TRUE(File::readPalette(files.write("769.act", paletteBytes(769, 0)), table));
    EXPECT_EQ(table.red.size(), 256u);
}

TEST(ColorTablePaletteRead, TextReadAsPaletteAndPaletteReadAsText)
{
    // The chosen filter decides the format, not the contents.
    TempFiles files;
    Table table;
    EXPECT_FALSE(File::read(files.write("t.lut", "; Color look up table\n\n0.5 1 2 3\n"),
                            Format::Palette, table));
    EXPECT_FALSE(File::read(files.write("p.act", QByteArray(768, char(200))), Format::Text, table));
}

// --- Paths -----------------------------------------------------------------------------------

TEST(ColorTableReadPath, MissingDirectoriesAndEmptyNamesReadNothing)
{
    TempFiles files;
    Table table;
    for (Format format : {Format::Text, Format::Palette}) {
        EXPECT_FALSE(File::read(files.path("missing.lut"), format, table));
        EXPECT_FALSE(File::read(files.path(QString()), format, table)); // the directory itself
        EXPECT_FALSE(File::read(QString(), format, table));
        EXPECT_TRUE(table.isEmpty());
    }
}

// Refused before they are opened, as root too, and at once: a pipe would block the open until
// a writer comes (here: until ctest's timeout), /dev/zero would feed the text reader up to
// its size limit and the palette reader a table of zeros.
TEST(ColorTableReadPath, UnreadableFileReadsNothing)
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
        {huge.fileName(), QString("larger than %1 bytes").arg(File::MaxFileSize)}};
    for (const auto& [name, reason] : cases) {
        for (Format format : {Format::Text, Format::Palette}) {
            Table table = makeTable({{0.5f, 1, 2, 3}});
            QString refusal;
            EXPECT_FALSE(File::read(name, format, table, &refusal));
            EXPECT_TRUE(table.isEmpty());
            EXPECT_EQ(refusal, QDir::toNativeSeparators(name) + ": " + reason);
        }
    }
}

TEST(ColorTableReadPath, NonAsciiNamesWriteAndRead)
{
    TempFiles files;
    auto object = makeObject(16);
    ASSERT_TRUE(object->interval(0)->setColour(OXMRGB8(1, 2, 3)));
    for (Format format : {Format::Text, Format::Palette}) {
        const QString name =
            files.path(QString::fromUtf8(u8"Farbtabelle \u00e4\u00f6\u00fc \u65e5\u672c \u0416"));
        ASSERT_TRUE(File::exportInterval(*object->interval(0), name, format));
        const QString written = File::withExtension(name, format);
        EXPECT_TRUE(QFile::exists(written));
        EXPECT_TRUE(
            QDir(files.path(QString())).entryList().contains(QFileInfo(written).fileName()));
        Table table;
        ASSERT_TRUE(File::read(written, format, table));
        EXPECT_EQ(table.red.front().y, 1.0f);
        EXPECT_EQ(table.blue.back().y, 3.0f);
    }
}
