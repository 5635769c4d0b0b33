#pragma once

#include <OXMenum.h>

#include <QByteArray>
#include <QString>

// The header of a NRRD (.nrrd, .nhdr) or MetaImage (.mha, .mhd) file: what the viewer checks
// before anything is allocated (dimensions, bytes per voxel, whether and where the data are
// stored raw) and, for NRRD, which the viewer reads itself, everything needed to read the
// voxels. Parsing never fails hard: what it cannot read makes valid() false with a reason.
struct OXWVolumeHeader
{
    enum class Kind
    {
        Nrrd,
        MetaImage
    };
    enum class Encoding
    {
        Raw,
        Gzip,
        Ascii,
        Other
    };

    long long dims[3] = {0, 0, 0};
    // Values per voxel (3 or 4 for colour) and bytes per value.
    int components = 1;
    int bytesPerValue = 0;
    // The host's type of a value (OXM::UInt8 ... OXM::Float64; OXM::Unknown when it has none).
    OXMenum valueType = OXM::Unknown;
    Encoding encoding = Encoding::Other;
    bool bigEndian = false;
    double spacing[3] = {1.0, 1.0, 1.0};
    double origin[3] = {0.0, 0.0, 0.0};
    // The directions of the voxel axes, unit vectors, row i for axis i.
    double directions[9] = {1, 0, 0, 0, 1, 0, 0, 0, 1};
    // A detached data file, relative to the header's folder; empty: after the header.
    QString dataFile;
    // Where the voxels start in the header's own file.
    long long headerBytes = 0;
    QString error;

    bool valid() const { return error.isEmpty(); }
    bool raw() const { return encoding == Encoding::Raw; }
    int bytesPerVoxel() const { return components * bytesPerValue; }
    // Voxels times bytes per voxel; -1 when that overflows 2^62.
    long long dataBytes() const;

    // text: the first bytes of the file (the header, a few kilobytes at most).
    static OXWVolumeHeader parse(Kind kind, const QByteArray& text);
};
