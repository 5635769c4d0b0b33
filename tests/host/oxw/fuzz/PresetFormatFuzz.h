#pragma once

// The body of the libFuzzer targets of the readers of other viewers' preset files: any byte
// string is read in one format; whatever is read must hold only usable presets with ascending,
// finite points, or carry the reason it is refused; the presets read are written back in the
// same format and must read again, as many and as usable, with the same names.

#include <OXWTransferFunctionFile.h>

#include <QByteArray>

#include <cmath>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <vector>

namespace presetfuzz {

inline void require(bool condition)
{
    if (!condition)
        std::abort();
}

inline void requireSound(const OXWTransferFunction& preset)
{
    if (!preset.isUsable())
        return;
    for (std::size_t i = 1; i < preset.opacity.size(); ++i)
        require(preset.opacity[i].x > preset.opacity[i - 1].x);
    for (std::size_t i = 1; i < preset.colours.size(); ++i)
        require(preset.colours[i].x > preset.colours[i - 1].x);
    for (const auto& p : preset.opacity)
        require(std::isfinite(p.x) && std::isfinite(p.a));
    for (const auto& p : preset.colours)
        require(std::isfinite(p.r) && std::isfinite(p.g) && std::isfinite(p.b));
}

inline int run(const uint8_t* data, size_t size, OXWTransferFunctionFile::Format format)
{
    const QByteArray bytes(reinterpret_cast<const char*>(data), int(size));
    std::vector<OXWTransferFunction> presets;
    QString error;
    const bool read = OXWTransferFunctionFile::readBytes(bytes, format, presets, error);
    require(read || !error.isEmpty());
    require(read || presets.empty());
    std::vector<OXWTransferFunction> usable;
    for (const OXWTransferFunction& preset : presets) {
        requireSound(preset);
        if (preset.isUsable())
            usable.push_back(preset);
    }
    if (usable.empty())
        return 0;
    std::vector<OXWTransferFunction> again;
    require(OXWTransferFunctionFile::readBytes(OXWTransferFunctionFile::toBytes(format, usable),
                                               format, again, error));
    require(again.size() == usable.size());
    for (std::size_t i = 0; i < again.size(); ++i) {
        requireSound(again[i]);
        require(again[i].isUsable() && again[i].name == usable[i].name);
    }
    return 0;
}

} // namespace presetfuzz
