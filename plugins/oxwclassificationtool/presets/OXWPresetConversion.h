#pragma once

class OXMObject;

// The numeric side of OXWPresetClassificationHandler: a stored classification preset
// (OXMPresetClassificationProxyObject) is converted onto the grey-value range of the data it is
// applied to, before anything is written to that data. The conversions change the record only.
//
// Range: the first and last histogram bin index of the data (r0, r1). Borders and handle x
// values are grey-value bin indices; handle y values stay as they are.
//
// Relative presets are stretched: the first and last border (first and last handle) go to r0
// and r1, everything between follows linearly. Absolute presets keep their grey values: the
// intervals are cut to the range (an interval wholly outside it is dropped with its mode and
// name) and the curves are clipped to it, with interpolated end points.
//
// Non-finite borders or handle coordinates make a record unusable: the conversion fails, so
// that such a preset is never applied.
class OXWPresetConversion
{
public:
    struct Range
    {
        int first = 0;
        int last = -1;
    };

    // Borders: "IntervalFloatIndexList" when it has entries, else OXM::IntervalIndexList.
    // Relative: b becomes floor(b * s + t + 0.5) with s, t mapping the first and last border onto
    // the range (double precision); fails for fewer than two borders or when the last border
    // does not lie right of the first. Absolute: interval i covers [near(b(i-1)), near(b(i))],
    // near(x) = floor(x + 0.5), cut to the range; intervals are kept from the first one that
    // meets the range up to the last one that does (fails when modes or names do not number
    // one per interval). Writes OXM::IntervalIndexList, and for absolute presets the mode and
    // name lists; "IntervalFloatIndexList" is not changed.
    static bool convertIntervals(OXMObject* record, Range range, bool absolute);

    // The channel object's OXM::LookupTableHandleList (missing: fails; empty: nothing to do).
    // Relative: x becomes s * x + t in 32-bit floats, the first handle at r0 and the last at r1;
    // fails when the last handle does not lie right of the first. Absolute: clipped to the
    // range when the range starts right of the first handle and some handle lies right of r0;
    // otherwise the list stays. The result is that of writing the list back.
    static bool convertHandles(OXMObject* channel, Range range, bool absolute);
};
