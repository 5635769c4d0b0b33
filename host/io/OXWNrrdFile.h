#pragma once

#include "OXWVolumeHeader.h"

#include <QString>

#include <cstdint>
#include <memory>

class OXMTaskInfo;

// The voxels of a NRRD file, as its header (OXWVolumeHeader) describes them: raw, gzip or
// ASCII, in either byte order, after the header or in a detached file, read into one buffer in
// the machine's byte order, with progress and abort.
class OXWNrrdFile
{
public:
    // The smallest and largest value of scalar integer voxels, counted while reading.
    struct ValueRange
    {
        bool known = false;
        long long smallest = 0;
        long long largest = -1;
    };

    // The voxels (header.dataBytes() bytes, not otherwise initialised); null with the reason
    // in error (empty when the task was aborted).
    static std::shared_ptr<std::uint8_t> readVoxels(const QString& headerPath,
                                                    const OXWVolumeHeader& header, QString& error,
                                                    ValueRange* range = nullptr,
                                                    OXMTaskInfo* task = nullptr);
};
