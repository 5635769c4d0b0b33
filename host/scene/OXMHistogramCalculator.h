#pragma once

#include "OXMenum.h"

#include <cstdint>
#include <vector>

class OXMSampleGrid;
class OXMTaskInfo;

// Counts the grey values of a sample buffer (optionally only the voxels of a mask) in
// parallel: each worker fills its own partial histogram over a contiguous part of the buffer,
// the parts are merged at the end. Integer data get one bin per value between the smallest
// and the largest value counted, indexed by the value, while the values lie strictly inside
// the int range and span at most MaxIntegerBins. Other integer data (up to the whole range of
// a 32-bit type) and floating-point data get binCount bins from index 0 whose centres run
// evenly from the smallest to the largest value. NaN and infinite values are not counted.
class OXMHistogramCalculator
{
public:
    struct Input
    {
        const void* data = nullptr;
        OXMenum componentType;      // OXM::UInt8 ... OXM::Float64
        int componentsPerVoxel = 1; // 3 or 4 for colour data
        int component = 0;          // which component is counted
        long long voxelCount = 0;
        const std::uint8_t* mask = nullptr; // voxelCount bytes; a voxel counts when non-zero
        int binCount = 256; // bins for floating-point data and for integers too wide for one
                            // bin per value
        int threadCount = 2;
    };

    struct Output
    {
        int first = 0;             // index of the first bin
        std::vector<float> counts; // bins first .. first + size - 1
        float dataLow = 0.0f;      // the value of the first and of the last bin (doubles
                                   // beyond the float range saturate at its limits)
        float dataHigh = 0.0f;
        long long counted = 0; // voxels counted
    };

    // OXM::NoError, OXM::Abort (on request: output unchanged), OXM::InvalidValue (bad input,
    // or a binCount below 1 for data that need it) or OXM::OutOfMemory.
    static OXMenum calculate(const Input& input, Output& output, OXMTaskInfo* task = nullptr);

    // The input for a channel (OXM::Gray, OXM::Red, ...) of a grid; false when the grid has
    // no data or no such channel.
    static bool makeInput(const OXMSampleGrid& grid, OXMenum channel, Input& input);

    // The largest number of bins of an integer histogram with one bin per value.
    static constexpr long long MaxIntegerBins = 1 << 24;
};
