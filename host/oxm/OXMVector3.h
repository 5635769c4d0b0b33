#pragma once

// Three values of one type: a point or a direction in space.
template <typename T>
struct OXMVector3
{
    T x{};
    T y{};
    T z{};

    constexpr OXMVector3() = default;
    constexpr OXMVector3(T ax, T ay, T az) : x(ax), y(ay), z(az) {}

    constexpr T& operator[](int i) { return i == 0 ? x : (i == 1 ? y : z); }
    constexpr const T& operator[](int i) const { return i == 0 ? x : (i == 1 ? y : z); }

    constexpr OXMVector3 operator+(const OXMVector3& o) const
    {
        return {x + o.x, y + o.y, z + o.z};
    }
    constexpr OXMVector3 operator-(const OXMVector3& o) const
    {
        return {x - o.x, y - o.y, z - o.z};
    }
    constexpr OXMVector3 operator*(T f) const { return {x * f, y * f, z * f}; }
    constexpr OXMVector3 operator/(T f) const { return {x / f, y / f, z / f}; }

    constexpr bool operator==(const OXMVector3& o) const
    {
        return x == o.x && y == o.y && z == o.z;
    }
    constexpr bool operator!=(const OXMVector3& o) const { return !(*this == o); }
};
