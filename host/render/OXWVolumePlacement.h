#pragma once

#include <array>
#include <vector>

class OXMObject;

// Where a volume (and its regions of interest) lies in its scene: the OXMVolumeTransform that
// is the auxiliary object of the volume's link in its scene path. The volume's bounding-box
// centre c goes to the transform's OXM::Origin, and the matrix M (OXM::TransformMatrix,
// row-major, its last column a translation) turns the volume about it: a point p of the
// volume lies at M·(p − c) + Origin. A volume outside a scene, or without a transform, lies
// where its grid puts it.
class OXWVolumePlacement
{
public:
    // Row-major 4 × 4, as vtkMatrix4x4::DeepCopy takes it.
    using Matrix = std::array<double, 16>;

    static Matrix identity();
    // The placement of the object (a volume, or a region: its volume's); the transform read is
    // appended to sources.
    static Matrix read(const OXMObject* object, std::vector<OXMObject*>* sources = nullptr);
    // The volume of a region (the owner of its parent link), else the object itself.
    static OXMObject* volumeOf(const OXMObject* object);
    // The transform object of the object's volume, null when there is none.
    static OXMObject* findTransform(const OXMObject* object);
    // The direction d (a vector of the volume's axes) as it points in the scene.
    static std::array<double, 3> direction(const Matrix& m, const std::array<double, 3>& d);
};
