#include "OXWTransferFunctionSampling.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <cstring>

namespace {

using ColourPoint = OXWTransferFunction::ColourPoint;
using OpacityPoint = OXWTransferFunction::OpacityPoint;
using Space = OXWTransferFunctionSampling::ColorSpace;

constexpr double Pi = 3.14159265358979323846;
// A step is this part of its interval wide.
constexpr double StepWidth = 1.0 / 1000.0;

const struct
{
    Space space;
    const char* name;
} SpaceNames[] = {{Space::RGB, "RGB"},
                  {Space::HSV, "HSV"},
                  {Space::Lab, "Lab"},
                  {Space::Diverging, "Diverging"},
                  {Space::LabCIEDE2000, "Lab/CIEDE2000"},
                  {Space::Step, "Step"}};

double clamp01(double v)
{
    return std::min(1.0, std::max(0.0, v));
}

// --- colour spaces (sRGB, D65, as VTK's vtkMath) ----------------------------------------------

void rgbToHsv(const double rgb[3], double hsv[3])
{
    const double high = std::max({rgb[0], rgb[1], rgb[2]});
    const double low = std::min({rgb[0], rgb[1], rgb[2]});
    const double span = high - low;
    hsv[2] = high;
    hsv[1] = high > 0.0 ? span / high : 0.0;
    hsv[0] = 0.0;
    if (hsv[1] <= 0.0 || span <= 0.0)
        return;
    if (rgb[0] == high)
        hsv[0] = (rgb[1] - rgb[2]) / span / 6.0;
    else if (rgb[1] == high)
        hsv[0] = 1.0 / 3.0 + (rgb[2] - rgb[0]) / span / 6.0;
    else
        hsv[0] = 2.0 / 3.0 + (rgb[0] - rgb[1]) / span / 6.0;
    if (hsv[0] < 0.0)
        hsv[0] += 1.0;
}

void hsvToRgb(const double hsv[3], double rgb[3])
{
    const double h = hsv[0] - std::floor(hsv[0]);
    const double sector = h * 6.0;
    const double f = sector - std::floor(sector);
    const double pure[6][3] = {{1, f, 0},     {1 - f, 1, 0}, {0, 1, f},
                               {0, 1 - f, 1}, {f, 0, 1},     {1, 0, 1 - f}};
    const int k = std::min(5, std::max(0, int(sector)));
    for (int c = 0; c < 3; ++c)
        rgb[c] = (hsv[1] * pure[k][c] + (1.0 - hsv[1])) * hsv[2];
}

// x^p from tables, for the powers of the colour conversions: the mantissa's power from a table
// of 256 steps over 1..2, interpolated quadratically (within 0.064 h^3 times the largest third
// derivative: 1.5e-9 of the value for p = 1/3 and 5/12, 5.1e-9 for 2.4, closer than a float
// resolves), times the exponent's power. A few times faster than pow() and cbrt() (which calls
// frexp and ldexp), and small enough to stay in the cache; x outside 2^Lowest .. 2^(Highest + 1)
// is left to pow().
class PowerTable
{
public:
    static constexpr int Bits = 8;
    static constexpr int Lowest = -10;
    static constexpr int Highest = 1;

    explicit PowerTable(double p) : mPower(p)
    {
        for (int i = 0; i < Steps + 2; ++i)
            mMantissa[i] = std::pow(1.0 + double(i) / Steps, p);
        for (int e = Lowest; e <= Highest; ++e)
            mExponent[e - Lowest] = std::pow(2.0, e * p);
    }
    double operator()(double x) const
    {
        if (!(x >= Low && x < High))
            return std::pow(x, mPower);
        std::uint64_t bits = 0;
        std::memcpy(&bits, &x, sizeof bits);
        const int exponent = int(bits >> 52) - 1023; // x is positive
        const std::uint64_t fraction = bits & ((std::uint64_t(1) << 52) - 1);
        const int i = int(fraction >> (52 - Bits));
        const double t = double(fraction & (Below - 1)) / double(Below);
        // Newton's form through the entries i, i + 1 and i + 2.
        const double* f = mMantissa + i;
        const double step = f[1] - f[0], bend = f[2] - 2.0 * f[1] + f[0];
        return (f[0] + t * (step + 0.5 * (t - 1.0) * bend)) * mExponent[exponent - Lowest];
    }

private:
    static constexpr int Steps = 1 << Bits;
    static constexpr std::uint64_t Below = std::uint64_t(1) << (52 - Bits);
    static constexpr double Low = 1.0 / double(1 << -Lowest);
    static constexpr double High = double(2 << Highest);

    double mPower;
    double mMantissa[Steps + 2];
    double mExponent[Highest - Lowest + 1];
};

// Made when the library is loaded (a few microseconds), so that using them checks nothing.
const PowerTable SrgbDecoding(2.4);
const PowerTable SrgbEncoding(1.0 / 2.4);
const PowerTable CubeRoot(1.0 / 3.0);

double linearFromSrgb(double c)
{
    return c > 0.04045 ? SrgbDecoding((c + 0.055) * (1.0 / 1.055)) : c * (1.0 / 12.92);
}

double srgbFromLinear(double c)
{
    return c > 0.0031308 ? 1.055 * SrgbEncoding(c) - 0.055 : 12.92 * c;
}

const double White[3] = {0.9505, 1.0, 1.089};

double labF(double t)
{
    return t > 0.008856 ? CubeRoot(t) : 7.787 * t + 16.0 / 116.0;
}

double labInverse(double f)
{
    const double cube = f * f * f;
    return cube > 0.008856 ? cube : (f - 16.0 / 116.0) * (1.0 / 7.787);
}

void rgbToLab(const double rgb[3], double lab[3])
{
    const double r = linearFromSrgb(rgb[0]), g = linearFromSrgb(rgb[1]), b = linearFromSrgb(rgb[2]);
    const double xyz[3] = {r * 0.4124 + g * 0.3576 + b * 0.1805,
                           r * 0.2126 + g * 0.7152 + b * 0.0722,
                           r * 0.0193 + g * 0.1192 + b * 0.9505};
    const double fx = labF(xyz[0] * (1.0 / White[0])), fy = labF(xyz[1] * (1.0 / White[1])),
                 fz = labF(xyz[2] * (1.0 / White[2]));
    lab[0] = 116.0 * fy - 16.0;
    lab[1] = 500.0 * (fx - fy);
    lab[2] = 200.0 * (fy - fz);
}

void labToRgb(const double lab[3], double rgb[3])
{
    const double fy = (lab[0] + 16.0) * (1.0 / 116.0);
    const double x = White[0] * labInverse(lab[1] * (1.0 / 500.0) + fy);
    const double y = White[1] * labInverse(fy);
    const double z = White[2] * labInverse(fy - lab[2] * (1.0 / 200.0));
    rgb[0] = srgbFromLinear(x * 3.2406 + y * -1.5372 + z * -0.4986);
    rgb[1] = srgbFromLinear(x * -0.9689 + y * 1.8758 + z * 0.0415);
    rgb[2] = srgbFromLinear(x * 0.0557 + y * -0.2040 + z * 1.0570);
    // Out of gamut: scaled down into it, then clipped (as VTK does).
    const double high = std::max({rgb[0], rgb[1], rgb[2]});
    for (int c = 0; c < 3; ++c)
        rgb[c] = clamp01(high > 1.0 ? rgb[c] / high : rgb[c]);
}

void labToMsh(const double lab[3], double msh[3])
{
    msh[0] = std::sqrt(lab[0] * lab[0] + lab[1] * lab[1] + lab[2] * lab[2]);
    msh[1] = msh[0] > 0.001 ? std::acos(std::max(-1.0, std::min(1.0, lab[0] / msh[0]))) : 0.0;
    msh[2] = msh[1] > 0.001 ? std::atan2(lab[2], lab[1]) : 0.0;
}

void mshToLab(const double msh[3], double lab[3])
{
    lab[0] = msh[0] * std::cos(msh[1]);
    lab[1] = msh[0] * std::sin(msh[1]) * std::cos(msh[2]);
    lab[2] = msh[0] * std::sin(msh[1]) * std::sin(msh[2]);
}

double hueDistance(double a, double b)
{
    const double d = std::fabs(a - b);
    return d > Pi ? 2.0 * Pi - d : d;
}

// The hue that an unsaturated colour of magnitude m takes next to the saturated colour msh.
double spinHue(const double msh[3], double m)
{
    if (msh[0] >= m - 0.1)
        return msh[2];
    const double spin = msh[1] * std::sqrt(m * m - msh[0] * msh[0]) / (msh[0] * std::sin(msh[1]));
    return msh[2] > -0.3 * Pi ? msh[2] + spin : msh[2] - spin;
}

// Moreland's diverging interpolation between two colours given in Msh.
void diverging(const double a[3], const double b[3], double t, double out[3])
{
    double m1[3] = {a[0], a[1], a[2]}, m2[3] = {b[0], b[1], b[2]}, lab[3];
    if (m1[1] > 0.05 && m2[1] > 0.05 && hueDistance(m1[2], m2[2]) > Pi / 3.0) {
        const double middle = std::max({m1[0], m2[0], 88.0});
        double* side = t < 0.5 ? m2 : m1;
        side[0] = middle;
        side[1] = 0.0;
        side[2] = 0.0;
        t = t < 0.5 ? 2.0 * t : 2.0 * t - 1.0;
    }
    if (m1[1] < 0.05 && m2[1] > 0.05)
        m1[2] = spinHue(m2, m1[0]);
    else if (m2[1] < 0.05 && m1[1] > 0.05)
        m2[2] = spinHue(m1, m2[0]);
    double msh[3];
    for (int c = 0; c < 3; ++c)
        msh[c] = (1.0 - t) * m1[c] + t * m2[c];
    mshToLab(msh, lab);
    labToRgb(lab, out);
}

// labToMsh's limit of a hue and diverging()'s of a saturated colour, as cosines of the angles.
const double NoHue = std::cos(0.001);
const double Saturated = std::cos(0.05);

// Msh as labToMsh makes it, but with the cosines and sines of its angles instead of the angles.
struct MshVectors
{
    double m;
    double cs, ss; // of the saturation angle
    double ch, sh; // of the hue angle

    explicit MshVectors(const double lab[3])
    {
        m = std::sqrt(lab[0] * lab[0] + lab[1] * lab[1] + lab[2] * lab[2]);
        const double chroma = std::sqrt(lab[1] * lab[1] + lab[2] * lab[2]);
        const double perM = 1.0 / m, perChroma = 1.0 / chroma; // divisions are slow
        cs = m > 0.001 ? std::max(-1.0, std::min(1.0, lab[0] * perM)) : 1.0;
        ss = m > 0.001 ? chroma * perM : 0.0;
        const bool hue = cs < NoHue;
        ch = hue ? lab[1] * perChroma : 1.0;
        sh = hue ? lab[2] * perChroma : 0.0;
    }
    // Saturation angle above or below 0.05, as diverging() tells them.
    bool saturated() const { return cs < Saturated; }
    bool unsaturated() const { return cs > Saturated; }
};

// diverging() halfway between two colours given in Lab, where every interval is checked first,
// without computing angles: the mean of two angles from their unit vectors (the hue angles, in
// -pi..pi as atan2 gives them, point against the mean direction when they are more than pi
// apart). False where a hue is spun next to an unsaturated colour, or the hues are opposite.
bool divergingHalfway(const double labA[3], const double labB[3], double lab[3])
{
    const MshVectors a(labA), b(labB);
    if (a.saturated() && b.saturated() && a.ch * b.ch + a.sh * b.sh < 0.5) {
        lab[0] = std::max({a.m, b.m, 88.0}); // through white: its middle
        lab[1] = lab[2] = 0.0;
        return true;
    }
    const double x = a.ch + b.ch, y = a.sh + b.sh;
    const double hue = std::sqrt(x * x + y * y);
    if ((a.unsaturated() && b.saturated()) || (b.unsaturated() && a.saturated()) || hue < 1e-6)
        return false;
    const double turn = std::signbit(a.sh) != std::signbit(b.sh) && x < 0.0 ? -1.0 : 1.0;
    const double c = a.cs + b.cs, s = a.ss + b.ss;
    const double m = 0.5 * (a.m + b.m) / std::sqrt(c * c + s * s);
    const double radial = m * s * turn / hue;
    lab[0] = m * c;
    lab[1] = radial * x;
    lab[2] = radial * y;
    return true;
}

// Diverging interpolation between colours given in Lab.
void divergingBetween(const double a[3], const double b[3], double t, double out[3])
{
    double m1[3], m2[3], lab[3];
    if (t == 0.5 && divergingHalfway(a, b, lab)) {
        labToRgb(lab, out);
        return;
    }
    labToMsh(a, m1);
    labToMsh(b, m2);
    diverging(m1, m2, t, out);
}

// A colour in the form its colour space interpolates in: HSV, Lab (also for Diverging, which
// makes Msh from it where it needs it), or RGB itself.
void toForm(Space space, const double rgb[3], double form[3])
{
    switch (space) {
    case Space::HSV:
        rgbToHsv(rgb, form);
        return;
    case Space::Lab:
    case Space::LabCIEDE2000:
    case Space::Diverging:
        rgbToLab(rgb, form);
        return;
    default:
        std::copy(rgb, rgb + 3, form);
    }
}

// The RGB colour at t between two colours in their space's form.
void betweenForms(Space space, const double a[3], const double b[3], double t, double out[3])
{
    if (space == Space::Diverging) {
        divergingBetween(a, b, t, out);
        return;
    }
    double m[3];
    for (int c = 0; c < 3; ++c)
        m[c] = (1.0 - t) * a[c] + t * b[c];
    if (space == Space::HSV)
        hsvToRgb(m, out);
    else if (space == Space::Lab || space == Space::LabCIEDE2000)
        labToRgb(m, out);
    else
        std::copy(m, m + 3, out);
}

// --- sampling ------------------------------------------------------------------------------

// The sampling depth at which the segment's samples, joined linearly, stay within MaxError;
// first and last are its values at t = 0 and 1. f(t, values) gives the segment's values (up to
// three channels) at t in 0..1.
template <typename Segment>
int depthFor(const Segment& f, int channels, const double* first, const double* last)
{
    for (int depth = 0; depth < OXWTransferFunctionSampling::MaxDepth; ++depth) {
        const int n = 1 << depth;
        double worst = 0.0;
        double left[3] = {}, right[3] = {}, middle[3] = {};
        std::copy(first, first + channels, left);
        for (int i = 0; i < n; ++i) {
            if (i + 1 == n)
                std::copy(last, last + channels, right);
            else
                f(double(i + 1) / n, right);
            f((i + 0.5) / n, middle);
            for (int c = 0; c < channels; ++c)
                worst = std::max(worst, std::fabs(middle[c] - 0.5 * (left[c] + right[c])));
            std::copy(right, right + channels, left);
        }
        if (worst <= OXWTransferFunctionSampling::MaxError)
            return depth;
    }
    return OXWTransferFunctionSampling::MaxDepth;
}

// The points inside (x0, x1) that carry the segment (the end points are the caller's).
template <typename Segment, typename Emit>
void sampleInside(double x0, double x1, const Segment& f, int channels, const double* first,
                  const double* last, Emit emit)
{
    if (!(x1 > x0))
        return; // out of order: left for the check of the points
    const int n = 1 << depthFor(f, channels, first, last);
    double values[3];
    for (int i = 1; i < n; ++i) {
        const double t = double(i) / n;
        f(t, values);
        emit(x0 + t * (x1 - x0), values);
    }
}

} // namespace

bool OXWTransferFunctionSampling::colorSpaceFromName(const QString& name, ColorSpace& space)
{
    for (const auto& entry : SpaceNames) {
        if (name.compare(QLatin1String(entry.name), Qt::CaseInsensitive) == 0) {
            space = entry.space;
            return true;
        }
    }
    return false;
}

QString OXWTransferFunctionSampling::colorSpaceName(ColorSpace space)
{
    for (const auto& entry : SpaceNames) {
        if (entry.space == space)
            return QLatin1String(entry.name);
    }
    return QString();
}

void OXWTransferFunctionSampling::interpolate(ColorSpace space, const double a[3],
                                              const double b[3], double t, double out[3])
{
    double p[3], q[3];
    toForm(space, a, p);
    toForm(space, b, q);
    betweenForms(space, p, q, t, out);
}

double OXWTransferFunctionSampling::easeOpacity(double y0, double y1, double t, double midpoint,
                                                double sharpness)
{
    const double m = std::min(0.99999, std::max(0.00001, midpoint));
    const double s = clamp01(sharpness);
    t = t < m ? 0.5 * t / m : 0.5 + 0.5 * (t - m) / (1.0 - m);
    if (s > 0.99)
        return t < 0.5 ? y0 : y1;
    if (s < 0.01)
        return (1.0 - t) * y0 + t * y1;
    if (t < 0.5)
        t = 0.5 * std::pow(t * 2.0, 1.0 + 10.0 * s);
    else if (t > 0.5)
        t = 1.0 - 0.5 * std::pow((1.0 - t) * 2.0, 1.0 + 10.0 * s);
    const double t2 = t * t, t3 = t2 * t;
    const double h1 = 2.0 * t3 - 3.0 * t2 + 1.0;
    const double h2 = -2.0 * t3 + 3.0 * t2;
    const double h3 = t3 - 2.0 * t2 + t;
    const double h4 = t3 - t2;
    const double slope = (1.0 - s) * (y1 - y0);
    return h1 * y0 + h2 * y1 + h3 * slope + h4 * slope;
}

bool OXWTransferFunctionSampling::sampleColours(const std::vector<ColourPoint>& nodes,
                                                ColorSpace space, std::vector<ColourPoint>& points)
{
    points.clear();
    points.reserve(nodes.size());
    double form[3], previousForm[3];
    for (std::size_t i = 0; i < nodes.size(); ++i) {
        if (points.size() >= std::size_t(MaxPoints))
            return false;
        // Colours are 0..1; VTK clamps what lies outside when it draws.
        const ColourPoint p = {nodes[i].x, clamp01(nodes[i].r), clamp01(nodes[i].g),
                               clamp01(nodes[i].b)};
        const double rgb[3] = {p.r, p.g, p.b};
        toForm(space, rgb, form);
        if (i > 0 && space == ColorSpace::Step && p.x > points.back().x) {
            const ColourPoint& q = points.back();
            points.push_back({p.x - StepWidth * (p.x - q.x), q.r, q.g, q.b});
        } else if (i > 0 && space != ColorSpace::RGB && space != ColorSpace::Step) {
            const ColourPoint q = points.back();
            const double first[3] = {q.r, q.g, q.b};
            const auto f = [&](double t, double* v) {
                betweenForms(space, previousForm, form, t, v);
            };
            sampleInside(q.x, p.x, f, 3, first, rgb, [&](double x, const double* v) {
                points.push_back({x, v[0], v[1], v[2]});
            });
        }
        points.push_back(p);
        std::copy(form, form + 3, previousForm);
    }
    return points.size() <= std::size_t(MaxPoints);
}

bool OXWTransferFunctionSampling::sampleOpacity(const std::vector<OpacityNode>& nodes,
                                                std::vector<OpacityPoint>& points)
{
    points.clear();
    points.reserve(nodes.size());
    for (std::size_t i = 0; i < nodes.size(); ++i) {
        if (points.size() >= std::size_t(MaxPoints))
            return false;
        const OpacityNode& p = nodes[i];
        const OpacityNode* q = i > 0 ? &nodes[i - 1] : nullptr;
        if (q && q->sharpness > 0.99 && p.x > q->x) {
            const double dx = p.x - q->x;
            const double at = q->x + std::min(0.999, std::max(0.001, q->midpoint)) * dx;
            points.push_back({at - 0.5 * StepWidth * dx, q->a});
            points.push_back({at + 0.5 * StepWidth * dx, p.a});
        } else if (q && (q->sharpness >= 0.01 || std::fabs(q->midpoint - 0.5) > 1e-9)) {
            const auto f = [&](double t, double* v) {
                v[0] = easeOpacity(q->a, p.a, t, q->midpoint, q->sharpness);
            };
            sampleInside(q->x, p.x, f, 1, &q->a, &p.a, [&](double x, const double* v) {
                points.push_back({x, v[0]});
            });
        }
        points.push_back({p.x, p.a});
    }
    return points.size() <= std::size_t(MaxPoints);
}
