#pragma once

// A closed integer interval [from, to], e.g. of grey values or indices.
struct OXMInterval
{
    int from = 0;
    int to = -1;

    constexpr OXMInterval() = default;
    constexpr OXMInterval(int afrom, int ato) : from(afrom), to(ato) {}

    constexpr bool isEmpty() const { return to < from; }
    constexpr int size() const { return to < from ? 0 : to - from + 1; }
    constexpr bool contains(int v) const { return v >= from && v <= to; }

    constexpr bool operator==(const OXMInterval& o) const { return from == o.from && to == o.to; }
    constexpr bool operator!=(const OXMInterval& o) const { return !(*this == o); }
};
