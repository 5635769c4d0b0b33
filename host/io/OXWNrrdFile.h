#pragma once

#include "OXWVolumeHeader.h"

#include <QString>

#include <cstdint>
#include <vector>

class OXMTaskInfo;

// The voxels of a NRRD file, as its header (OXWVolumeHeader) describes them: raw, gzip or
// ASCII, in either byte order, after the header or in a detached file, read into one buffer in
// the machine's byte order, with progress and abort.
class OXWNrrdFile
{
public:
    // False with the reason in error (empty when the task was aborted).
    static bool readVoxels(const QString& headerPath, const OXWVolumeHeader& header,
                           std::vector<std::uint8_t>& bytes, QString& error,
                           OXMTaskInfo* task = nullptr);
};
