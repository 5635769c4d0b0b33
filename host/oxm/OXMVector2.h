#pragma once

// A pair of values of one type: a point, a handle of a curve, a size.
template <typename T>
struct OXMVector2
{
    T x{};
    T y{};

    constexpr OXMVector2() = default;
    constexpr OXMVector2(T ax, T ay) : x(ax), y(ay) {}

    constexpr T& operator[](int i) { return i == 0 ? x : y; }
    constexpr const T& operator[](int i) const { return i == 0 ? x : y; }

    constexpr OXMVector2 operator+(const OXMVector2& o) const { return {x + o.x, y + o.y}; }
    constexpr OXMVector2 operator-(const OXMVector2& o) const { return {x - o.x, y - o.y}; }
    constexpr OXMVector2 operator*(T f) const { return {x * f, y * f}; }

    constexpr bool operator==(const OXMVector2& o) const { return x == o.x && y == o.y; }
    constexpr bool operator!=(const OXMVector2& o) const { return !(*this == o); }
};
