// Importing colour tables into an interval: the position fit, the value rule, the hand-over
// to the model, round trips between intervals of different widths, and every failure that
// must leave the interval as it was.

#include "ColorTableTestSupport.h"

#include <QBuffer>
#include <QFile>

#include <gtest/gtest.h>

#include <cmath>
#include <limits>

using namespace colortabletest;

namespace {

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

void expectSameLayout(const OXWLUTIntervalInfo& a, const OXWLUTIntervalInfo& b, double tolerance)
{
    for (int channel : kColours) {
        for (double t = 0.05; t < 0.96; t += 0.05) {
            EXPECT_NEAR(valueAt(a.handles(channel), t), valueAt(b.handles(channel), t), tolerance)
                << "channel " << channel << " at " << t;
        }
    }
}

} // namespace

// --- Position fit ----------------------------------------------------------------------------

TEST(ColorTableFit, SpreadsWithHalfAColumnToSpare)
{
    Table table = makeTable({{0.2f, 0, 0, 0}, {0.4f, 0, 0, 0}, {0.6f, 0, 0, 0}});
    File::fitPositions(table, 0.1f);
    // range = 0.6 - 0.2 + 0.1 = 0.5, origin = 0.2 - 0.05
    ASSERT_EQ(table.red.size(), 3u);
    EXPECT_NEAR(table.red[0].x, 0.1, 1e-6);
    EXPECT_NEAR(table.red[1].x, 0.5, 1e-6);
    EXPECT_NEAR(table.red[2].x, 0.9, 1e-6);
    EXPECT_EQ(table.green[2].x, table.red[2].x);
    EXPECT_EQ(table.blue[0].x, table.red[0].x);
}

TEST(ColorTableFit, SingleEntryGoesToTheMiddle)
{
    Table table = makeTable({{0.3f, 1, 2, 3}});
    File::fitPositions(table, 0.01f);
    EXPECT_NEAR(table.red[0].x, 0.5, 1e-6);
}

TEST(ColorTableFit, WithoutRangePositionsStayAsReadInsideTheInterval)
{
    Table table = makeTable({{0.3f, 1, 2, 3}, {0.3f, 4, 5, 6}});
    File::fitPositions(table, 0.0f);
    EXPECT_EQ(table.red[0].x, 0.3f);
    EXPECT_EQ(table.red[1].x, 0.3f);

    for (float p :
         {std::numeric_limits<float>::quiet_NaN(), std::numeric_limits<float>::infinity(), -0.5f}) {
        Table same = makeTable({{7.0f, 1, 2, 3}});
        File::fitPositions(same, p);
        EXPECT_EQ(same.red[0].x, 1.0f) << p;
    }
}

TEST(ColorTableFit, ExtremePositionsStayFinite)
{
    Table table = makeTable({{-3.0e38f, 1, 2, 3}, {0.0f, 1, 2, 3}, {3.0e38f, 1, 2, 3}});
    File::fitPositions(table, 0.01f);
    EXPECT_EQ(table.red[0].x, 0.0f);
    EXPECT_NEAR(table.red[1].x, 0.5, 1e-6);
    EXPECT_EQ(table.red[2].x, 1.0f);
}

TEST(ColorTableFit, ColumnWidthIsMeasuredInTheIntervalsUnits)
{
    auto object = makeObject(256);
    ASSERT_TRUE(object->newInterval(0.25f, false));
    const OXWLUTIntervalInfo& narrow = *object->interval(0);
    ASSERT_FLOAT_EQ(narrow.to(), 0.25f);
    // A bar of 512 columns over the whole axis: a column is 1/512, that is 1/128 of a
    // quarter-wide interval.
    EXPECT_FLOAT_EQ(barColumnWidth(narrow, 512), 1.0f / 128);
    EXPECT_FLOAT_EQ(File::columnWidth(narrow, 0.1f, 0.1f + 1.0f / 512), 1.0f / 128);
}

// --- Values ----------------------------------------------------------------------------------

TEST(ColorTableValues, FractionsAreScaledToTheColourScale)
{
    Table table = makeTable({{0.0f, 0.0f, 0.5f, 1.0f}, {1.0f, 1.0f, 0.25f, 0.0f}});
    EXPECT_TRUE(File::applyFractionRule(table));
    EXPECT_EQ(table.red[0].y, 0.5f);
    EXPECT_EQ(table.red[1].y, 255.5f);
    EXPECT_EQ(table.green[0].y, 128.0f);
    EXPECT_EQ(table.green[1].y, 64.25f);
    EXPECT_EQ(table.blue[0].y, 255.5f);
    EXPECT_EQ(table.blue[1].y, 0.5f);
}

TEST(ColorTableValues, ByteValuesAreKept)
{
    Table table = makeTable({{0.0f, 10.0f, 20.0f, 200.0f}, {1.0f, 100.0f, 150.0f, 10.0f}});
    EXPECT_FALSE(File::applyFractionRule(table));
    EXPECT_EQ(table.red[0].y, 10.0f);
    EXPECT_EQ(table.blue[0].y, 200.0f);
    EXPECT_EQ(table.green[1].y, 150.0f);
}

TEST(ColorTableValues, TheSpanDecidesForTheWholeTable)
{
    Table narrow = makeTable({{0.0f, 0.2f, 0.2f, 0.2f}, {1.0f, 1.2f, 1.2f, 1.2f}});
    EXPECT_TRUE(File::applyFractionRule(narrow)); // span 1.0
    Table wide = makeTable({{0.0f, 0.0f, 0.0f, 0.0f}, {1.0f, 1.01f, 0.0f, 0.0f}});
    EXPECT_FALSE(File::applyFractionRule(wide)); // span 1.01
    EXPECT_EQ(wide.red[1].y, 1.01f);
}

TEST(ColorTableValues, ValuesOffTheScaleAreClamped)
{
    Table table = makeTable({{0.0f, -20.0f, 300.0f, 1.0e30f}, {1.0f, 10.0f, 255.5f, 0.0f}});
    EXPECT_FALSE(File::applyFractionRule(table));
    EXPECT_EQ(table.red[0].y, 0.0f);
    EXPECT_EQ(table.green[0].y, 255.5f);
    EXPECT_EQ(table.blue[0].y, 255.5f);
    EXPECT_EQ(table.red[1].y, 10.0f);
}

// --- Import into an interval --------------------------------------------------------------

TEST(ColorTableImport, TextFileInFractionsIsScaled)
{
    TempFiles files;
    auto object = makeObject(256);
    OXWLUTIntervalInfo& interval = *object->interval(0);
    const QString name =
        files.write("f.lut", "; Color look up table\n\n0.0 0 0.5 1\n1.0 1 0.5 0\n");
    ASSERT_TRUE(
        File::importIntoInterval(interval, name, Format::Text, barColumnWidth(interval, 256)));
    EXPECT_EQ(interval.referenceHandles(kRed).front().y, 0.5f);
    EXPECT_EQ(interval.referenceHandles(kRed).back().y, 255.5f);
    EXPECT_EQ(interval.handles(kGreen).front().y, 128.0f);
    EXPECT_EQ(interval.handles(kBlue).front().y, 255.5f);
}

TEST(ColorTableImport, TextFileInBytesIsKept)
{
    TempFiles files;
    auto object = makeObject(256);
    OXWLUTIntervalInfo& interval = *object->interval(0);
    const QString name = files.write("b.lut", "0.0 10 20 30\n0.5 200 100 50\n1.0 10 20 30\n");
    ASSERT_TRUE(
        File::importIntoInterval(interval, name, Format::Text, barColumnWidth(interval, 256)));
    const HandleList& red = interval.handles(kRed);
    ASSERT_EQ(red.size(), 3u);
    EXPECT_EQ(red[0].y, 10.0f);
    EXPECT_EQ(red[1].y, 200.0f);
    EXPECT_EQ(interval.handles(kGreen)[1].y, 100.0f);
    EXPECT_EQ(interval.handles(kBlue)[2].y, 30.0f);
}

TEST(ColorTableImport, OnlyCompleteEntryLinesReachTheModel)
{
    TempFiles files;
    auto object = makeObject(256);
    OXWLUTIntervalInfo& interval = *object->interval(0);
    const QString name = files.write("c.lut", "; Color look up table\r\n\r\n; comment\r\n"
                                              "0.0 10 20 30\r\n0.5 1 2\r\n\r\n0.4 nan 1 1\r\n"
                                              "1.0 50 60 70\r\n");
    ASSERT_TRUE(File::importIntoInterval(interval, name, Format::Text, 0.01f));
    ASSERT_EQ(interval.referenceHandles(kRed).size(), 2u);
    EXPECT_EQ(interval.referenceHandles(kRed)[1].y, 50.0f);
    EXPECT_EQ(interval.referenceHandles(kBlue)[0].y, 30.0f);
}

TEST(ColorTableImport, EntriesInAnyOrderGiveAnOrderedCurve)
{
    TempFiles files;
    auto object = makeObject(256);
    OXWLUTIntervalInfo& interval = *object->interval(0);
    const QString name = files.write("u.lut", "0.9 90 9 0\n0.1 10 1 0\n0.5 50 5 0\n");
    ASSERT_TRUE(File::importIntoInterval(interval, name, Format::Text, 0.0f));
    const HandleList& red = interval.referenceHandles(kRed);
    ASSERT_EQ(red.size(), 3u);
    EXPECT_EQ(red[0].y, 10.0f);
    EXPECT_EQ(red[1].y, 50.0f);
    EXPECT_EQ(red[2].y, 90.0f);
    EXPECT_LT(red[0].x, red[1].x);
    EXPECT_LT(red[1].x, red[2].x);
    EXPECT_EQ(interval.referenceHandles(kGreen)[2].y, 9.0f);
}

TEST(ColorTableImport, PaletteGives256HandlesOnTheCellCentres)
{
    TempFiles files;
    auto object = makeObject(256);
    OXWLUTIntervalInfo& interval = *object->interval(0);
    const QString name = files.write("ramp.act", ramp768());
    ASSERT_TRUE(
        File::importIntoInterval(interval, name, Format::Palette, barColumnWidth(interval, 256)));
    for (int channel : kColours) {
        const HandleList& reference = interval.referenceHandles(channel);
        ASSERT_EQ(reference.size(), 256u);
        // Half a column to spare at both ends: the entries sit on (i + 0.5) / 256.
        for (int i = 0; i < 256; ++i) {
            EXPECT_NEAR(reference[size_t(i)].x, (i + 0.5) / 256, 1e-6) << i;
        }
        EXPECT_EQ(interval.handles(channel).size(), 256u);
    }
    EXPECT_EQ(interval.referenceHandles(kRed)[17].y, 17.0f);
    EXPECT_EQ(interval.referenceHandles(kGreen)[17].y, 238.0f);
    EXPECT_EQ(interval.referenceHandles(kBlue)[17].y, 128.0f);
}

TEST(ColorTableImport, NarrowIntervalKeepsFewerHandles)
{
    TempFiles files;
    auto object = makeObject(256);
    ASSERT_TRUE(object->newInterval(0.25f, false));
    OXWLUTIntervalInfo& narrow = *object->interval(0);
    const QString name = files.write("ramp.act", ramp768());
    ASSERT_TRUE(
        File::importIntoInterval(narrow, name, Format::Palette, barColumnWidth(narrow, 256)));
    EXPECT_EQ(narrow.referenceHandles(kRed).size(), 256u);
    const HandleList& fitted = narrow.handles(kRed);
    EXPECT_GE(fitted.size(), 2u);
    EXPECT_LE(fitted.size(), 64u); // at most one handle per cell
    // The ramp is still a ramp.
    EXPECT_LT(fitted.front().y, 8.0f);
    EXPECT_GT(fitted.back().y, 247.0f);
}

TEST(ColorTableImport, PaletteOfTwoNeighbouringBytesIsScaled)
{
    TempFiles files;
    auto object = makeObject(256);
    OXWLUTIntervalInfo& interval = *object->interval(0);
    QByteArray bytes(768, '\0');
    for (int i = 0; i < 768; i += 3) {
        bytes[i] = char(i < 384 ? 0 : 1);
    }
    ASSERT_TRUE(File::importIntoInterval(interval, files.write("b.act", bytes), Format::Palette,
                                         barColumnWidth(interval, 256)));
    EXPECT_EQ(interval.handles(kRed).front().y, 0.5f);
    EXPECT_EQ(interval.handles(kRed).back().y, 255.5f);
    EXPECT_EQ(interval.handles(kGreen).front().y, 0.5f);
}

TEST(ColorTableImport, HugePaletteImportsItsHead)
{
    TempFiles files;
    auto object = makeObject(256);
    OXWLUTIntervalInfo& interval = *object->interval(0);
    const QString name = files.write("big.act", ramp768() + QByteArray(10 * 1024 * 1024, '\xff'));
    ASSERT_TRUE(
        File::importIntoInterval(interval, name, Format::Palette, barColumnWidth(interval, 256)));
    EXPECT_EQ(interval.handles(kRed).front().y, 0.0f);
    EXPECT_EQ(interval.handles(kRed).back().y, 255.0f);
}

TEST(ColorTableImport, ReportsAChangeOnlyWhenTheCurvesChanged)
{
    TempFiles files;
    auto object = makeObject(256);
    OXWLUTIntervalInfo& interval = *object->interval(0);
    const QString name = files.write("ramp.act", ramp768());
    const float p = barColumnWidth(interval, 256);
    EXPECT_TRUE(File::importIntoInterval(interval, name, Format::Palette, p));
    EXPECT_FALSE(File::importIntoInterval(interval, name, Format::Palette, p));
}

TEST(ColorTableImport, ImportThroughADevice)
{
    auto object = makeObject(64);
    OXWLUTIntervalInfo& interval = *object->interval(0);
    QByteArray text = "0 1 2 3\n1 4 5 6\n";
    QBuffer buffer(&text);
    ASSERT_TRUE(buffer.open(QIODevice::ReadOnly));
    EXPECT_TRUE(File::importIntoInterval(interval, buffer, Format::Text, 0.0f));
    EXPECT_EQ(interval.handles(kBlue).back().y, 6.0f);
}

// --- Round trips -----------------------------------------------------------------------------

TEST(ColorTableRoundTrip, TextKeepsTheRelativeLayoutInAnotherWidth)
{
    TempFiles files;
    auto narrowObject = makeObject(128);
    auto wideObject = makeObject(384);
    OXWLUTIntervalInfo& from = *narrowObject->interval(0);
    OXWLUTIntervalInfo& to = *wideObject->interval(0);
    shapeColours(from);
    ASSERT_TRUE(File::exportInterval(from, files.path("shape"), Format::Text));
    ASSERT_TRUE(File::importIntoInterval(to, files.path("shape.lut"), Format::Text,
                                         barColumnWidth(to, 384)));
    ASSERT_EQ(to.handles(kRed).size(), from.handles(kRed).size());
    expectSameLayout(from, to, 6.0);
}

TEST(ColorTableRoundTrip, TextExportOfAnImportReadsBackTheSameCurves)
{
    TempFiles files;
    auto object = makeObject(256);
    OXWLUTIntervalInfo& interval = *object->interval(0);
    shapeColours(interval);
    ASSERT_TRUE(File::exportInterval(interval, files.path("a.lut"), Format::Text));
    auto other = makeObject(256);
    OXWLUTIntervalInfo& copy = *other->interval(0);
    ASSERT_TRUE(File::importIntoInterval(copy, files.path("a.lut"), Format::Text,
                                         barColumnWidth(copy, 256)));
    // Same cell count and one column per cell: the handles land on the same cells.
    EXPECT_EQ(copy.handles(kRed), interval.handles(kRed));
    EXPECT_EQ(copy.handles(kGreen), interval.handles(kGreen));
    EXPECT_EQ(copy.handles(kBlue), interval.handles(kBlue));
}

TEST(ColorTableRoundTrip, PaletteKeepsTheRelativeLayoutInAnotherWidth)
{
    TempFiles files;
    auto narrowObject = makeObject(128);
    auto wideObject = makeObject(640);
    OXWLUTIntervalInfo& from = *narrowObject->interval(0);
    OXWLUTIntervalInfo& to = *wideObject->interval(0);
    shapeColours(from);
    ASSERT_TRUE(File::exportInterval(from, files.path("shape"), Format::Palette));
    ASSERT_TRUE(File::importIntoInterval(to, files.path("shape.act"), Format::Palette,
                                         barColumnWidth(to, 640)));
    EXPECT_EQ(to.referenceHandles(kRed).size(), 256u);
    expectSameLayout(from, to, 8.0);
}

// --- Nothing changes ------------------------------------------------------------------------

class ColorTableImportFailure : public ::testing::Test
{
protected:
    ColorTableImportFailure() : mObject(makeObject(256)), mInterval(*mObject->interval(0))
    {
        shapeColours(mInterval);
    }

    void expectUnchanged(const QString& name, Format format)
    {
        const ColourState before(mInterval);
        EXPECT_FALSE(File::importIntoInterval(mInterval, name, format, 1.0f / 256));
        EXPECT_TRUE(before == ColourState(mInterval)) << name.toStdString();
    }

    TempFiles mFiles;
    std::unique_ptr<OXWLUTObjectInfo> mObject;
    OXWLUTIntervalInfo& mInterval;
};

TEST_F(ColorTableImportFailure, PaletteOf767Bytes)
{
    expectUnchanged(mFiles.write("short.act", ramp768().left(767)), Format::Palette);
}

TEST_F(ColorTableImportFailure, EmptyFiles)
{
    const QString name = mFiles.write("empty", QByteArray());
    expectUnchanged(name, Format::Text);
    expectUnchanged(name, Format::Palette);
}

TEST_F(ColorTableImportFailure, TextWithoutEntries)
{
    expectUnchanged(mFiles.write("h.lut", "; Color look up table\n\n; nothing\n0.5 1 2\n"),
                    Format::Text);
    expectUnchanged(mFiles.write("n.lut", "0.1 nan 1 1\n0.2 1 inf 1\n0.3 1 1 1e99999\n"),
                    Format::Text);
}

TEST_F(ColorTableImportFailure, BinaryJunkAsText)
{
    QByteArray junk(4096, '\0');
    for (int i = 0; i < junk.size(); ++i) {
        junk[i] = char(0x80 | (i * 37));
    }
    expectUnchanged(mFiles.write("junk.lut", junk), Format::Text);
}

TEST_F(ColorTableImportFailure, PathsThatCannotBeRead)
{
    for (Format format : {Format::Text, Format::Palette}) {
        expectUnchanged(mFiles.path("missing.lut"), format);
        expectUnchanged(mFiles.path(QString()), format); // a directory
        expectUnchanged(QString(), format);
    }
}

TEST(ColorTableImportDetached, IntervalWithoutObjectTakesNothing)
{
    TempFiles files;
    OXWLUTIntervalInfo detached(nullptr);
    EXPECT_FALSE(File::importIntoInterval(detached, files.write("ok.lut", "0 1 2 3\n1 4 5 6\n"),
                                          Format::Text, 0.01f));
    EXPECT_TRUE(detached.referenceHandles(kRed).empty());
}

TEST(ColorTableImportDetached, InconsistentOrNonFiniteTablesAreRefused)
{
    auto object = makeObject(64);
    OXWLUTIntervalInfo& interval = *object->interval(0);
    const ColourState before(interval);
    Table uneven = makeTable({{0.0f, 1, 2, 3}, {1.0f, 4, 5, 6}});
    uneven.blue.pop_back();
    EXPECT_FALSE(File::importTable(interval, uneven, 0.01f));
    Table nan = makeTable({{0.0f, 1, 2, 3}, {std::nanf(""), 4, 5, 6}});
    EXPECT_FALSE(File::importTable(interval, nan, 0.01f));
    EXPECT_FALSE(File::importTable(interval, Table(), 0.01f));
    EXPECT_TRUE(before == ColourState(interval));
}

// A table whose entries pile up in the first cell of a narrow interval and then jump to its
// far end. The model's collision pass currently moves one of the piled handles a cell to the
// left of the interval and leaves the curve out of order (fitted x: c, c - 1 cell, c, ...).
// Found by the colour table fuzzer; enable when the interval fitting handles piles of more
// than two handles per cell.
TEST(ColorTableImportModel, PileBeforeAGapStaysOrderedInsideTheInterval)
{
    auto object = makeObject(251);
    ASSERT_TRUE(object->newInterval(0.8965f, false));
    OXWLUTIntervalInfo& interval = *object->interval(1);
    const float piled[] = {0,   0,   16,  16,  32,  32,  32,  32,  48,  48,  48,  48,  64,
                           64,  64,  64,  80,  80,  96,  96,  96,  96,  112, 112, 112, 112,
                           128, 128, 128, 144, 144, 144, 144, 160, 160, 160, 160, 176, 176,
                           176, 176, 192, 192, 192, 192, 208, 208, 224, 224, 240, 240, 255};
    Table table;
    for (int i = 0; i < 52; ++i) {
        const float x = 3.2e-8f + 1.25e-7f * float(i / 2);
        table.red.emplace_back(x, piled[i]);
        table.green.emplace_back(x, 0.0f);
        table.blue.emplace_back(x, 0.0f);
    }
    table.red.emplace_back(1.0f, 128.0f);
    table.green.emplace_back(1.0f, 0.0f);
    table.blue.emplace_back(1.0f, 0.0f);
    ASSERT_TRUE(File::importTable(interval, table, 0.0f));
    const HandleList& fitted = interval.handles(kRed);
    for (std::size_t k = 0; k < fitted.size(); ++k) {
        EXPECT_GE(fitted[k].x, 0.0f) << k;
        EXPECT_LE(fitted[k].x, 1.0f) << k;
        if (k > 0) {
            EXPECT_LT(fitted[k - 1].x, fitted[k].x) << k;
        }
    }
}
