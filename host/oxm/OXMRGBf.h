#pragma once

// A colour of three float components, 0 to 1 each.
struct OXMRGBf
{
    float r = 0.0f;
    float g = 0.0f;
    float b = 0.0f;

    constexpr OXMRGBf() = default;
    constexpr OXMRGBf(float ar, float ag, float ab) : r(ar), g(ag), b(ab) {}

    constexpr bool operator==(const OXMRGBf& o) const { return r == o.r && g == o.g && b == o.b; }
    constexpr bool operator!=(const OXMRGBf& o) const { return !(*this == o); }
};
