#pragma once

// A colour of three 8-bit components.
struct OXMRGB8
{
    unsigned char r = 0;
    unsigned char g = 0;
    unsigned char b = 0;

    constexpr OXMRGB8() = default;
    constexpr OXMRGB8(unsigned char ar, unsigned char ag, unsigned char ab) : r(ar), g(ag), b(ab) {}

    constexpr bool operator==(const OXMRGB8& o) const { return r == o.r && g == o.g && b == o.b; }
    constexpr bool operator!=(const OXMRGB8& o) const { return !(*this == o); }
};
