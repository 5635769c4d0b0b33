#pragma once

#include <cstdint>
#include <vector>

class OXMSampleGrid;

// Procedural CT-like test volumes: air around an elliptic body of soft tissue with a fat
// layer, two lungs, a bone ring with a spine, a small dense insert and deterministic noise.
// The same size always gives the same voxels, so the histogram has reproducible peaks.
class OXMScenePhantom
{
public:
    // Nominal grey values of the 16-bit phantom (CT numbers + 1024); the 8-bit phantom uses
    // these divided by 16.
    enum Value16 : int
    {
        Air = 24,
        Lung = 224,
        Fat = 924,
        Tissue = 1064,
        Bone = 1824,
        Insert = 3524,
    };

    // size³ voxels, x fastest.
    static std::vector<std::uint16_t> samples16(int size);
    static std::vector<std::uint8_t> samples8(int size);

    // New grids (auto-delete, no reference yet) with the phantom, named "CT phantom 16 bit" /
    // "CT phantom 8 bit"; null for size < 1.
    static OXMSampleGrid* createGrid16(int size);
    static OXMSampleGrid* createGrid8(int size);
};
