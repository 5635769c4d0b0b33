// libFuzzer target of the NRRD and MetaImage header parsing: any byte string is parsed as
// both. Nothing may crash, and a header found valid describes a volume: positive dimensions,
// a known voxel size, and a data size that is either exact or reported as overflowing.

#include "OXWVolumeHeader.h"

#include <QByteArray>

#include <cmath>
#include <cstddef>
#include <cstdint>
#include <cstdlib>

namespace {

void require(bool condition)
{
    if (!condition)
        std::abort();
}

void check(const OXWVolumeHeader& h)
{
    if (!h.valid())
        return;
    require(h.bytesPerValue > 0 && h.components >= 1 && h.components <= 4);
    for (long long d : h.dims)
        require(d >= 1);
    const long long bytes = h.dataBytes();
    const double expected = double(h.bytesPerVoxel()) * double(h.dims[0]) * double(h.dims[1]) *
                            double(h.dims[2]);
    require(bytes == -1 ? expected > 1e18 : std::abs(double(bytes) - expected) <= expected * 1e-9);
    for (double s : h.spacing)
        require(std::isfinite(s) && s > 0.0);
    for (double o : h.origin)
        require(std::isfinite(o));
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    const QByteArray text(reinterpret_cast<const char*>(data), int(size));
    check(OXWVolumeHeader::parse(OXWVolumeHeader::Kind::Nrrd, text));
    check(OXWVolumeHeader::parse(OXWVolumeHeader::Kind::MetaImage, text));
    return 0;
}
