#pragma once

#include <cmath>
#include <limits>
#include <type_traits>

// A colour with alpha. Integer component types run from 0 to their maximum (255 for
// unsigned char), floating-point ones from 0 to 1. Alpha of the named colours is opaque.
template <typename T>
struct OXMRGBA
{
    T r{};
    T g{};
    T b{};
    T a{};

    constexpr OXMRGBA() = default;
    constexpr OXMRGBA(T ar, T ag, T ab, T aa = full()) : r(ar), g(ag), b(ab), a(aa) {}

    // The largest component value: fully saturated, fully opaque.
    static constexpr T full()
    {
        if constexpr (std::is_floating_point<T>::value)
            return T(1);
        else
            return std::numeric_limits<T>::max();
    }
    // f (0..1) of the full component value, rounded for integer types and clamped.
    static T level(double f)
    {
        if (!(f > 0.0))
            return T(0);
        if (f >= 1.0)
            return full();
        if constexpr (std::is_floating_point<T>::value)
            return T(f);
        else
            return T(std::floor(f * double(full()) + 0.5));
    }

    static OXMRGBA WHITE() { return {full(), full(), full()}; }
    static OXMRGBA BLACK() { return {T(0), T(0), T(0)}; }
    static OXMRGBA RED(double f = 1.0) { return {level(f), T(0), T(0)}; }
    static OXMRGBA GREEN(double f = 1.0) { return {T(0), level(f), T(0)}; }
    static OXMRGBA BLUE(double f = 1.0) { return {T(0), T(0), level(f)}; }
    static OXMRGBA CYAN(double f = 1.0) { return {T(0), level(f), level(f)}; }
    static OXMRGBA MAGENTA(double f = 1.0) { return {level(f), T(0), level(f)}; }
    static OXMRGBA YELLOW(double f = 1.0) { return {level(f), level(f), T(0)}; }

    constexpr bool operator==(const OXMRGBA& o) const
    {
        return r == o.r && g == o.g && b == o.b && a == o.a;
    }
    constexpr bool operator!=(const OXMRGBA& o) const { return !(*this == o); }
};
