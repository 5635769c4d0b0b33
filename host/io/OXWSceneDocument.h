#pragma once

#include <OXMObjectPtr.h>

#include <QString>

#include <functional>

class OXMScene;
class OXMTaskInfo;

// Scene documents: the whole scene (volumes with their materials, channels, interval lists,
// render plug-ins and settings, regions of interest, the camera) in one versioned JSON file
// of the host's object documents (OXMObjectSerializer), header field "kind": "scene".
//
// Voxels are not in the document. A volume read from a file or folder refers to it (header
// field "volumes", one entry per volume of the scene's list, in order: {"file": path relative
// to the document's folder where possible, "series": DICOM series uid}); a volume made in
// memory (the built-in sample, an extracted volume) is written beside the document as a raw
// NRRD file ("data": path), and so is every region's mask ("masks": one path per region of
// the volume). These files go into the folder "<document name>.data" next to the document.
//
// Every file is written atomically (QSaveFile): the document last, so that a save that fails
// or is killed leaves the previous document and the files it refers to readable.
class OXWSceneDocument
{
public:
    static constexpr const char* Kind = "scene";
    static constexpr const char* Suffix = "oxwscene";
    // The largest document read (the voxels are beside it).
    static constexpr long long MaxDocumentSize = 256LL << 20;

    // Answers where a volume file of the document is now, given where it was (the user
    // locates it); an empty answer gives up.
    using LocateFile = std::function<QString(const QString& missing)>;

    // Writes the scene's document; false with the reason (naming the file) in error.
    static bool save(const OXMScene& scene, const QString& path, QString& error);
    // Reads the document and the voxels it refers to into a new scene (in no application);
    // null with the reason (naming the file) in error, or with an empty error when the task
    // was aborted. Nothing is left of a refused document.
    static OXMObjectPtr read(const QString& path, QString& error, OXMTaskInfo* task = nullptr,
                             const LocateFile& locate = LocateFile());
};
