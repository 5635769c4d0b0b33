// The readers and writers of other viewers' preset files on files written by hand from the
// formats' descriptions (presetfiles/): what each preset becomes, the curves kept through the
// sampling of colour spaces, midpoints and steps, and what is refused.

#include <OXWJsonReader.h>
#include <OXWTransferFunctionFile.h>
#include <OXWTransferFunctionSampling.h>

#include <QFile>
#include <QTemporaryDir>

#include <gtest/gtest.h>

#include <array>
#include <random>

namespace {

using Format = OXWTransferFunctionFile::Format;

std::vector<OXWTransferFunction> readFile(const char* name)
{
    Format format;
    std::vector<OXWTransferFunction> presets;
    QString error;
    EXPECT_TRUE(OXWTransferFunctionFile::read(QStringLiteral(OXW_TEST_PRESET_FILES "/") + name,
                                              format, presets, error))
        << error.toStdString();
    return presets;
}

// The piecewise-linear curve through points at x (clamped at the ends).
template <typename Point, typename Value>
double at(const std::vector<Point>& points, double x, Value value)
{
    std::size_t i = 1;
    while (i + 1 < points.size() && points[i].x < x)
        ++i;
    const Point& a = points[i - 1];
    const Point& b = points[i];
    const double t = std::min(1.0, std::max(0.0, (x - a.x) / (b.x - a.x)));
    return value(a) + t * (value(b) - value(a));
}

// Every preset of the hand-written files, as a listing shows it.
TEST(OXWTransferFunctionFile, ReadsEveryPresetOfTheHandWrittenFiles)
{
    const std::pair<const char*, const char*> paraview[] = {
        {"Warm linear", "range 0 .. 1 (relative), 3 opacity points, 3 colour points"},
        {"Cool to Warm", "2 opacity points, 2 colour points; left out: NaN colour"},
        {"Hue", "range 0 .. 10 (relative), 0 opacity points, 2 colour points; left out: log"},
        {"Steps", "range 0 .. 2 (relative), 2 opacity points, 3 colour points"},
        {"Categories", "left out: categorical colours"},
        {"Perceptual", "range 0 .. 100"},
        {"Broken", "refused: \"RGBPoints\" holds 3 numbers, not a multiple of 4"},
        {"Unsorted", "refused: the colour points are not in strictly ascending order"},
        {"Text", "refused: \"RGBPoints\" holds something other than a finite number at 1"}};
    const std::pair<const char*, const char*> slicer[] = {
        {"CT-Bone", "range 0 .. 3400 (absolute), 4 opacity points, 4 colour points"},
        {"MR-Flat", "left out: gradient opacity, nearest-neighbour interpolation, shading off"},
        {"Bad count", "refused: \"scalarOpacity\" announces 6 numbers, holds 4"},
        {"Not finite", "refused: \"scalarOpacity\" holds \"nan\", no finite number"},
        {"Repeated x", "refused: the opacity points are not in strictly ascending order"}};
    for (const auto& [file, expected] :
         {std::pair("paraview.json", std::vector(std::begin(paraview), std::end(paraview))),
          std::pair("slicer.xml", std::vector(std::begin(slicer), std::end(slicer)))}) {
        const std::vector<OXWTransferFunction> presets = readFile(file);
        ASSERT_EQ(presets.size(), expected.size()) << file;
        for (std::size_t i = 0; i < presets.size(); ++i) {
            const QString line = OXWTransferFunctionFile::describe(presets[i]);
            EXPECT_EQ(presets[i].name, QLatin1String(expected[i].first));
            EXPECT_TRUE(line.contains(QLatin1String(expected[i].second))) << line.toStdString();
        }
    }
}

// Values of the sampled curves against what the source viewers show there.
TEST(OXWTransferFunctionFile, SampledCurvesKeepTheViewersCurves)
{
    const std::vector<OXWTransferFunction> p = readFile("paraview.json");
    const auto r = [](const auto& c) { return c.r; };
    const auto g = [](const auto& c) { return c.g; };
    const auto b = [](const auto& c) { return c.b; };
    const auto a = [](const auto& o) { return o.a; };
    const struct
    {
        const char* what;
        double value;
        double expected;
    } rows[] = {// Moreland's cool-to-warm map is grey 0.865 in its middle.
                {"diverging red", at(p[1].colours, 0.0, r), 0.865},
                {"diverging blue", at(p[1].colours, 0.0, b), 0.865},
                // Midpoint 0.25: halfway at a quarter of the interval, eased by sharpness 0.5.
                {"midpoint", at(p[1].opacity, -0.5, a), 0.5},
                // HSV from red to blue passes through green.
                {"hsv green", at(p[2].colours, 5.0, g), 1.0},
                {"hsv red", at(p[2].colours, 5.0, r), 0.0},
                {"default opacity ramp", at(p[2].opacity, 2.5, a), 0.25},
                // Step: a node's colour up to the next node.
                {"step held", at(p[3].colours, 0.99, r), 1.0},
                {"step next", at(p[3].colours, 1.0, g), 1.0},
                // Sharpness 1: a step at the midpoint (0.75 of 0 .. 2).
                {"opacity step before", at(p[3].opacity, 1.49, a), 0.2},
                {"opacity step after", at(p[3].opacity, 1.51, a), 0.8},
                {"lab grey", at(p[5].colours, 50.0, r), 0.4663},
                {"linear kept", double(p[0].colours.size() + p[0].opacity.size()), 6.0}};
    for (const auto& row : rows)
        EXPECT_NEAR(row.value, row.expected, 1.5 / 255.0) << row.what;
    const OXWTransferFunction bone = readFile("slicer.xml")[0]; // a copy: the list is a temporary
    EXPECT_EQ(bone.opacity[2].x, 1300.0);
    EXPECT_EQ(bone.colours[1].g, 0.5);
    const double material[] = {bone.ambient, bone.diffuse, bone.specular, bone.specularPower,
                               bone.gradientOpacity};
    EXPECT_EQ(std::vector<double>(std::begin(material), std::end(material)),
              (std::vector<double>{0.1, 0.9, 0.2, 10.0, 1.0}));
}

// Files refused as a whole name the file and the reason; nothing of them is returned.
TEST(OXWTransferFunctionFile, RefusesBadFilesWithAReason)
{
    QTemporaryDir dir;
    const struct
    {
        QByteArray bytes;
        qint64 size; // > 0: a file of this size instead
        const char* reason;
    } rows[] = {
        {"[{\"Name\": \"a\", \"RGBPoints\": [0, 1", 0, "no valid JSON"},
        {"<MRML><VolumeProperty name=\"a\"></MRML>", 0, "no well-formed XML"},
        {"<MRML></MRML>", 0, "holds no VolumeProperty element"},
        {"[]", 0, "holds no colour map"},
        {"NRRD0004", 0, "neither a ParaView colour map (JSON) nor a 3D Slicer presets file"},
        {"", 100 * 1024 * 1024, "larger than 64 MiB"}};
    for (const auto& row : rows) {
        QFile file(dir.filePath(QStringLiteral("presets")));
        ASSERT_TRUE(file.open(QIODevice::WriteOnly | QIODevice::Truncate));
        file.write(row.bytes);
        ASSERT_TRUE(file.resize(std::max(row.size, qint64(row.bytes.size()))));
        file.close();
        Format format;
        std::vector<OXWTransferFunction> presets;
        QString error;
        EXPECT_FALSE(OXWTransferFunctionFile::read(file.fileName(), format, presets, error));
        EXPECT_TRUE(presets.empty());
        EXPECT_TRUE(error.contains(file.fileName()) && error.contains(row.reason))
            << error.toStdString();
    }
}

// ParaView reads its presets with JsonCpp: comments, a comma after the last item, a byte order
// mark and anything after the document are fine; a member named twice counts with its last
// value; numbers are read exactly, those beyond double's range as infinite or zero.
TEST(OXWTransferFunctionFile, ReadsJsonAsLenientlyAsParaView)
{
    const struct
    {
        QByteArray document;
        QString name;
        const char* line;
    } rows[] = {
        {"// c\n[/* c */{\"Name\": \"a\", \"RGBPoints\": [0, 1, 0, 0, 1, 0, 0, 1,],},] tail", "a",
         "range 0 .. 1 (relative), 0 opacity points, 2 colour points"},
        {"\xEF\xBB\xBF{\"Name\": \"b\", \"Name\": \"c\", \"RGBPoints\": [0, 0, 0, 0, 2, 1, 1, 1]}",
         "c", "range 0 .. 2"},
        {"[{\"Name\": \"\\u00e9t\\u00e9 \\ud83d\\ude00 \\ud800\\n\", \"RGBPoints\": [0, 0, 0, 0, "
         "1, 1, 1, 1]}]",
         QString::fromUtf8("\u00e9t\u00e9 \U0001F600 \uFFFD"), "0 opacity points, 2 colour points"},
        {"[{\"Name\": \"d\", \"RGBPoints\": [1e-400, 0, 0, 0, 1e400, 1, 1, 1]}]", "d",
         "holds something other than a finite number at 4"},
        {"[1, 2] ]", "Colour map 1", "refused: it is no JSON object"}};
    for (const auto& row : rows) {
        std::vector<OXWTransferFunction> presets;
        QString error;
        ASSERT_TRUE(
            OXWTransferFunctionFile::readBytes(row.document, Format::ParaView, presets, error))
            << error.toStdString();
        EXPECT_EQ(presets[0].name, row.name);
        EXPECT_TRUE(OXWTransferFunctionFile::describe(presets[0]).contains(row.line))
            << OXWTransferFunctionFile::describe(presets[0]).toStdString();
    }
    std::vector<OXWTransferFunction> presets;
    QString error;
    ASSERT_TRUE(OXWTransferFunctionFile::readBytes(
        "[{\"ColorSpace\": \"RGB\", \"RGBPoints\": [-0.1, 0, 0, 0, 0.12345678901234567890123, 0, "
        "0, 0, 123456789012345678901, 0, 0, 0]}]",
        Format::ParaView, presets, error));
    ASSERT_EQ(presets[0].colours.size(), 3u);
    EXPECT_EQ(presets[0].colours[0].x, -0.1);
    EXPECT_EQ(presets[0].colours[1].x, 0.12345678901234567890123);
    EXPECT_EQ(presets[0].colours[2].x, 123456789012345678901.0);
}

// What JsonCpp refuses is refused, with the reason and where it was met.
TEST(OXWTransferFunctionFile, RefusesBadJsonNamingLineAndColumn)
{
    const std::pair<QByteArray, const char*> rows[] = {
        {"[{\"Name\": \"a\" /* open", "a comment is not closed at line 1, column 15"},
        {"[{\"Name\": \"a", "a string is not closed at line 1, column 11"},
        {"[1 2]", "',' or ']' was expected at line 1, column 4"},
        {"[\n {\"a\" 1}]", "':' was expected after a member name at line 2, column 7"},
        {"[\"\\x\"]", "a backslash starts no known escape at line 1, column 3"},
        {"[1e]", "a number's exponent has no digits at line 1, column 4"},
        {"\n\n  [tru]", "a value was expected at line 3, column 4"},
        {QByteArray(OXWJsonReader::MaxDepth + 1, '['),
         "the values are nested too deeply at line 1, column 1001"}};
    for (const auto& [document, reason] : rows) {
        std::vector<OXWTransferFunction> presets;
        QString error;
        EXPECT_FALSE(
            OXWTransferFunctionFile::readBytes(document, Format::ParaView, presets, error));
        EXPECT_TRUE(error.contains(QStringLiteral("no valid JSON (") + reason))
            << error.toStdString();
    }
}

// The diverging interpolation halfway between two colours, where the sampling checks every
// interval first, is computed without the angles of Msh: it meets the curve on both sides, across
// the hue angle's seam, through white, next to grey and for any two colours.
TEST(OXWTransferFunctionFile, DivergingHalfwayMeetsTheCurveAroundIt)
{
    std::vector<std::array<double, 6>> pairs = {{0.2, 0.5, 0.45, 0.2, 0.49, 0.44},  // seam
                                                {0.23, 0.3, 0.75, 0.7, 0.02, 0.15}, // white
                                                {0.5, 0.5, 0.5, 0.9, 0.1, 0.1},     // grey
                                                {0.5, 0.5, 0.5, 0.51, 0.5, 0.5}};
    std::mt19937 random(5);
    std::uniform_real_distribution<double> unit(0.0, 1.0);
    for (int k = 0; k < 1000; ++k)
        pairs.push_back(
            {unit(random), unit(random), unit(random), unit(random), unit(random), unit(random)});
    for (const auto& p : pairs) {
        double at[3], before[3], after[3];
        const auto space = OXWTransferFunctionSampling::ColorSpace::Diverging;
        OXWTransferFunctionSampling::interpolate(space, &p[0], &p[3], 0.5, at);
        OXWTransferFunctionSampling::interpolate(space, &p[0], &p[3], 0.5 - 1e-7, before);
        OXWTransferFunctionSampling::interpolate(space, &p[0], &p[3], 0.5 + 1e-7, after);
        for (int c = 0; c < 3; ++c)
            ASSERT_NEAR(at[c], 0.5 * (before[c] + after[c]), 1e-6) << p[0] << " " << p[3];
    }
}

} // namespace
