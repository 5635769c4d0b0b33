#pragma once

#include <QString>
#include <QStringList>

#include <vector>

class OXMTaskInfo;
class OXMVolumeRenderObject;

// Volume files and folders read into new scene volumes:
//   NRRD (.nrrd, .nhdr: raw, ASCII or gzip, detached data), MetaImage (.mha, .mhd: raw or
//   compressed, detached data), NIfTI (.nii, .nii.gz), VTK image (.vti), TIFF (one multi-page
//   file), and folders: a DICOM series (compressed and multi-frame included, the rescale slope
//   and intercept applied) or a stack of numbered TIFF slices.
// Voxel types: 8-, 16- and 32-bit integers, signed and unsigned, 32- and 64-bit floats, and
// RGB / RGBA colour of 8 or 16 bits. Spacing and origin are kept; the orientation of the voxel
// axes (a file's direction cosines) comes as a transform for the volume's placement.
//
// Before any voxel is read, the header's dimensions and type are checked: a volume whose size
// overflows or exceeds the memory available is refused with a message. The voxels are read
// once, into the buffer that the volume's grid then shares (no second copy). Progress goes to
// the task; an abort request stops the reading and leaves nothing.
class OXWVolumeFile
{
public:
    struct Series
    {
        QString uid;
        QString description;
        int files = 0;
    };

    struct Result
    {
        // The new volume (default material, histogram and renderer; not in a scene; no
        // reference held); null when nothing was read.
        OXMVolumeRenderObject* volume = nullptr;
        // 16 floats, row-major: the orientation of the voxel axes (identity when the file has
        // none).
        std::vector<float> transform;
        // Why nothing was read, naming the file; empty on success or cancel.
        QString error;
        bool cancelled = false;
        // A folder with several DICOM series: read again with one of their uids.
        std::vector<Series> series;
    };

    // Reads the file or folder; seriesUID chooses one series of a DICOM folder.
    static Result read(const QString& path, OXMTaskInfo* task = nullptr,
                       const QString& seriesUID = QString());

    // Filters for a file dialog ("Volume files (*.nrrd *.nhdr ...)", "All files (*)").
    static QStringList nameFilters();
    // Whether the path names a file of a known format or a folder.
    static bool isReadable(const QString& path);
    // Bytes of memory a new volume may take (what the system has available).
    static unsigned long long availableMemory();
};
