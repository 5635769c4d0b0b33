#pragma once

#include "OXWRenderStyle.h"
#include "OXWVolumePlacement.h"

#include <vtkSmartPointer.h>

#include <cstdint>
#include <memory>
#include <vector>

class OXMObject;
class OXWClassificationTable;
class vtkActor;
class vtkColorTransferFunction;
class vtkFixedPointVolumeRayCastMapper;
class vtkFlyingEdges3D;
class vtkGPUVolumeRayCastMapper;
class vtkImageData;
class vtkMatrix4x4;
class vtkPiecewiseFunction;
class vtkPolyDataMapper;
class vtkRenderer;
class vtkVolume;
class vtkVolumeMapper;
class vtkVolumeProperty;

// The VTK side of drawing one volume or region in a renderer: the voxels as an image (the
// grid's buffer itself when it can be shared; a region gets a copy in which the voxels outside
// it hold a value its classification leaves transparent), the classification table as VTK
// transfer functions with one node per grey-value bin, and the method of the render style:
// ray casting (composite, lit or unlit; maximum intensity; additive) or an isosurface mesh.
//
// Two ray casters: the fixed-point CPU ray caster, fast on a software OpenGL, and the GPU ray
// caster for graphics hardware (and the additive projections, which only it has). The view
// chooses; useHardware() switches. While interactive() is set, the ray casters adapt the
// number of rays to reach about 12 frames per second, with half the samples along each;
// otherwise they cast one ray per pixel at the full sampling distance.
//
// Exact per grey value: the CPU ray caster's tables span the data's range (one entry per grey
// value while it holds at most 32 768 of them, every second one beyond). The GPU ray caster
// reads unsigned 8- and 16-bit data through a 1024 × 1024 table of RGBA floats, entry v for
// grey value v (and the gradient factor, the ambient and the diffuse colour in blocks of their
// own), fetched texel by texel (the interpolated voxel value rounded to a grey value) by shader
// code of our own in place of VTK's lookup; lit, it lights the ambient and the diffuse colour
// apart, as the material says. Other data go through VTK's own transfer-function textures,
// and VTK's own lighting of the table's one colour (exact where the light falls straight on).
//
// A volume with regions of interest is drawn by one pipeline per object: the volume's leaves
// out the voxels of its regions (excluded), each region's shows only its own voxels. All of
// them take the volume's placement (setPlacement).
//
// update() rebuilds only what changed: the image when the grid, its data or the masks changed,
// the transfer functions when the table changed, the method when the style changed.
class OXWVolumePipeline
{
public:
    explicit OXWVolumePipeline(vtkRenderer* renderer);
    ~OXWVolumePipeline();
    OXWVolumePipeline(const OXWVolumePipeline&) = delete;
    OXWVolumePipeline& operator=(const OXWVolumePipeline&) = delete;

    // Shows the object as the table and the style say; false, and nothing is shown, when the
    // table is not valid or the voxels cannot be imported.
    bool update(const OXMObject* object, const OXWClassificationTable& table,
                const OXWRenderStyle& style, const std::vector<const OXMObject*>& excluded = {});
    void setPlacement(const OXWVolumePlacement::Matrix& placement);
    void clear();
    bool isShowing() const { return mShowing; }

    void useHardware(bool hardware);
    bool usesHardware() const { return mHardware; }
    void setInteractive(bool interactive);
    bool isInteractive() const { return mInteractive; }
    // Whether the GPU ray caster reads the table exactly per grey value (see above).
    bool isExactOnHardware() const { return mExactScale > 0.0; }

    // The world bounds of what is shown; false when nothing is.
    bool getBounds(double bounds[6]) const;

    // For tests and measurements.
    vtkImageData* image() const;
    vtkVolume* volume() const;
    vtkActor* surface() const;
    vtkPiecewiseFunction* opacityFunction() const;
    vtkColorTransferFunction* colourFunction() const;

private:
    struct ImageKey
    {
        const void* grid = nullptr;
        const void* data = nullptr;
        int dataVersion = -1;
        int maskVersion = -1;
        std::vector<int> excludedVersions;
        int component = 0;
        double outside = 0.0;
        bool operator==(const ImageKey& o) const;
    };

    bool updateImage(const OXMObject* object, const OXWClassificationTable& table,
                     const std::vector<const OXMObject*>& excluded);
    // Casts rays only through the box of the drawn voxels (all without a mask).
    void cropTo(const std::uint8_t* drawn);
    void updateTransferFunctions(const OXWClassificationTable& table);
    void updateExactTable(const OXWClassificationTable& table);
    void setExactScale(double scale);
    void updateGradientOpacity(const OXWClassificationTable& table);
    void updateLighting(const OXWClassificationTable& table, const OXWRenderStyle& style);
    void updateMethod(const OXWRenderStyle& style, const OXWClassificationTable& table);
    void updateSurface(const OXWRenderStyle& style, const OXWClassificationTable& table);
    void applyQuality();
    vtkVolumeMapper* rayCaster() const;

    vtkRenderer* mRenderer;
    vtkSmartPointer<vtkImageData> mImage;
    vtkSmartPointer<vtkPiecewiseFunction> mOpacity;
    vtkSmartPointer<vtkPiecewiseFunction> mGradient;
    vtkSmartPointer<vtkColorTransferFunction> mColour;
    vtkSmartPointer<vtkVolumeProperty> mProperty;
    vtkSmartPointer<vtkImageData> mExactTable;
    vtkSmartPointer<vtkMatrix4x4> mPlacement;
    vtkSmartPointer<vtkFixedPointVolumeRayCastMapper> mSoftware;
    vtkSmartPointer<vtkGPUVolumeRayCastMapper> mGPU;
    vtkSmartPointer<vtkVolume> mVolume;
    vtkSmartPointer<vtkFlyingEdges3D> mContour;
    vtkSmartPointer<vtkPolyDataMapper> mSurfaceMapper;
    vtkSmartPointer<vtkActor> mSurface;
    ImageKey mImageKey;
    // The voxel buffer the image shares, held while it does.
    std::shared_ptr<const std::uint8_t> mData;
    OXWRenderStyle mStyle;
    std::vector<double> mScratch;
    double mMinSpacing = 1.0;
    // The factor from the GPU's normalised voxel value to the grey value (65535 for unsigned
    // 16-bit data, 255 for 8-bit) while the exact table is in use, else 0.
    double mExactScale = 0.0;
    int mDataType = -1;
    bool mShowing = false;
    bool mHardware = false;
    bool mInteractive = false;
};
