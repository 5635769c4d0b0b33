#include "OXMScenePhantom.h"

#include "OXMSampleGrid.h"

#include <algorithm>
#include <cmath>

namespace {

// A deterministic pseudo-random value in [-1, 1) per voxel index.
float noise(std::uint64_t i)
{
    std::uint64_t z = i + 0x9e3779b97f4a7c15ull;
    z = (z ^ (z >> 30)) * 0xbf58476d1ce4e5b9ull;
    z = (z ^ (z >> 27)) * 0x94d049bb133111ebull;
    z ^= z >> 31;
    return float(z >> 40) / float(1 << 23) - 1.0f;
}

// The nominal value and noise amplitude at normalised coordinates (-1..1).
void tissueAt(float x, float y, float z, float& value, float& sigma)
{
    auto inEllipse = [](float u, float v, float a, float b) {
        return (u * u) / (a * a) + (v * v) / (b * b) <= 1.0f;
    };
    value = OXMScenePhantom::Air;
    sigma = 12.0f;
    if (std::fabs(z) > 0.9f || !inEllipse(x, y, 0.85f, 0.6f))
        return;
    value = OXMScenePhantom::Fat;
    sigma = 20.0f;
    if (!inEllipse(x, y, 0.78f, 0.53f))
        return;
    const bool ring = !inEllipse(x, y, 0.7f, 0.46f);
    const float spineX = x, spineY = y + 0.35f;
    if (ring || spineX * spineX + spineY * spineY < 0.012f) {
        value = OXMScenePhantom::Bone;
        sigma = 60.0f;
        return;
    }
    const float ix = x - 0.15f, iy = y + 0.1f, iz = z - 0.2f;
    if (ix * ix + iy * iy + iz * iz < 0.004f) {
        value = OXMScenePhantom::Insert;
        sigma = 25.0f;
        return;
    }
    if (inEllipse(x - 0.35f, y + 0.02f, 0.22f, 0.3f) ||
        inEllipse(x + 0.35f, y + 0.02f, 0.22f, 0.3f)) {
        value = OXMScenePhantom::Lung;
        sigma = 40.0f;
        return;
    }
    value = OXMScenePhantom::Tissue;
    sigma = 25.0f;
}

template <typename T>
std::vector<T> makeSamples(int size, float divisor, float maxValue)
{
    std::vector<T> out;
    if (size < 1)
        return out;
    const std::size_t n = std::size_t(size) * std::size_t(size) * std::size_t(size);
    out.resize(n);
    const float step = 2.0f / float(size);
    std::size_t i = 0;
    for (int z = 0; z < size; ++z)
        for (int y = 0; y < size; ++y)
            for (int x = 0; x < size; ++x, ++i) {
                float value = 0.0f, sigma = 0.0f;
                tissueAt(-1.0f + (float(x) + 0.5f) * step, -1.0f + (float(y) + 0.5f) * step,
                         -1.0f + (float(z) + 0.5f) * step, value, sigma);
                // Sum of two uniform values: a rough bell-shaped noise.
                const float v = (value + sigma * (noise(2 * i) + noise(2 * i + 1))) / divisor;
                out[i] = T(std::lround(std::min(std::max(v, 0.0f), maxValue)));
            }
    return out;
}

} // namespace

std::vector<std::uint16_t> OXMScenePhantom::samples16(int size)
{
    return makeSamples<std::uint16_t>(size, 1.0f, 65535.0f);
}

std::vector<std::uint8_t> OXMScenePhantom::samples8(int size)
{
    return makeSamples<std::uint8_t>(size, 16.0f, 255.0f);
}

OXMSampleGrid* OXMScenePhantom::createGrid16(int size)
{
    if (size < 1)
        return nullptr;
    auto* grid = new OXMSampleGrid;
    grid->setSamples({size, size, size}, OXM::UInt16, samples16(size));
    grid->setValue<const char*>(OXM::Name, "CT phantom 16 bit");
    return grid;
}

OXMSampleGrid* OXMScenePhantom::createGrid8(int size)
{
    if (size < 1)
        return nullptr;
    auto* grid = new OXMSampleGrid;
    grid->setSamples({size, size, size}, OXM::UInt8, samples8(size));
    grid->setValue<const char*>(OXM::Name, "CT phantom 8 bit");
    return grid;
}
