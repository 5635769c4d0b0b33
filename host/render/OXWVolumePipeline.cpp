#include "OXWVolumePipeline.h"

#include "OXWClassificationTable.h"

#include <OXMRegionOfInterest.h>
#include <OXMSampleGrid.h>
#include <OXMSampleLoops.h>
#include <OXMTypeInfo.h>

#include <vtkActor.h>
#include <vtkColorTransferFunction.h>
#include <vtkDataArray.h>
#include <vtkFixedPointVolumeRayCastMapper.h>
#include <vtkFlyingEdges3D.h>
#include <vtkGPUVolumeRayCastMapper.h>
#include <vtkImageData.h>
#include <vtkPiecewiseFunction.h>
#include <vtkPointData.h>
#include <vtkPolyDataMapper.h>
#include <vtkProperty.h>
#include <vtkRenderWindow.h>
#include <vtkRenderer.h>
#include <vtkVolume.h>
#include <vtkVolumeProperty.h>

#include <algorithm>
#include <cstring>

namespace {

int vtkTypeOf(OXMenum type)
{
    if (type == OXM::UInt8)
        return VTK_UNSIGNED_CHAR;
    if (type == OXM::Int8)
        return VTK_SIGNED_CHAR;
    if (type == OXM::UInt16)
        return VTK_UNSIGNED_SHORT;
    if (type == OXM::Int16)
        return VTK_SHORT;
    if (type == OXM::UInt32)
        return VTK_UNSIGNED_INT;
    if (type == OXM::Int32)
        return VTK_INT;
    if (type == OXM::Float32)
        return VTK_FLOAT;
    if (type == OXM::Float64)
        return VTK_DOUBLE;
    return -1;
}

// Interactive quality: the frame rate the ray casters aim at, by casting fewer rays (at most
// one per MaximumImageSampleDistance² pixels) with half the samples along each.
constexpr double InteractiveFramesPerSecond = 12.0;
constexpr double StillFramesPerSecond = 0.0001;
constexpr float MaximumImageSampleDistance = 8.0f;
constexpr double InteractiveSampleFactor = 2.0;

// Copies one component of the voxels, the voxels outside the mask set to `outside`.
template <typename T>
void copyComponent(T* out, const std::uint8_t* data, long long n, int components, int component,
                   const std::uint8_t* mask, double outside)
{
    const T* in = reinterpret_cast<const T*>(data);
    const T fill = T(outside);
    for (long long i = 0; i < n; ++i)
        out[i] = mask && !mask[i] ? fill : in[i * components + component];
}

} // namespace

bool OXWVolumePipeline::ImageKey::operator==(const ImageKey& o) const
{
    return grid == o.grid && data == o.data && dataVersion == o.dataVersion &&
           maskVersion == o.maskVersion && component == o.component && outside == o.outside;
}

OXWVolumePipeline::OXWVolumePipeline(vtkRenderer* renderer)
    : mRenderer(renderer), mImage(vtkSmartPointer<vtkImageData>::New()),
      mOpacity(vtkSmartPointer<vtkPiecewiseFunction>::New()),
      mGradient(vtkSmartPointer<vtkPiecewiseFunction>::New()),
      mColour(vtkSmartPointer<vtkColorTransferFunction>::New()),
      mProperty(vtkSmartPointer<vtkVolumeProperty>::New()),
      mSoftware(vtkSmartPointer<vtkFixedPointVolumeRayCastMapper>::New()),
      mGPU(vtkSmartPointer<vtkGPUVolumeRayCastMapper>::New()),
      mVolume(vtkSmartPointer<vtkVolume>::New()),
      mContour(vtkSmartPointer<vtkFlyingEdges3D>::New()),
      mSurfaceMapper(vtkSmartPointer<vtkPolyDataMapper>::New()),
      mSurface(vtkSmartPointer<vtkActor>::New())
{
    mProperty->SetColor(mColour);
    mProperty->SetScalarOpacity(mOpacity);
    mProperty->SetInterpolationTypeToLinear();
    for (vtkVolumeMapper* mapper :
         {static_cast<vtkVolumeMapper*>(mSoftware), static_cast<vtkVolumeMapper*>(mGPU)})
        mapper->SetInputData(mImage);
    mSoftware->SetAutoAdjustSampleDistances(0);
    mGPU->SetAutoAdjustSampleDistances(0);
    mVolume->SetProperty(mProperty);
    mVolume->SetMapper(mSoftware);
    mContour->SetInputData(mImage);
    mContour->ComputeNormalsOn();
    mContour->ComputeScalarsOff();
    mSurfaceMapper->SetInputConnection(mContour->GetOutputPort());
    mSurfaceMapper->ScalarVisibilityOff();
    mSurface->SetMapper(mSurfaceMapper);
}

OXWVolumePipeline::~OXWVolumePipeline()
{
    clear();
}

void OXWVolumePipeline::clear()
{
    mRenderer->RemoveVolume(mVolume);
    mRenderer->RemoveActor(mSurface);
    mImage->Initialize();
    mImageKey = ImageKey();
    mData.reset();
    mStyle = OXWRenderStyle();
    mShowing = false;
}

bool OXWVolumePipeline::update(const OXMObject* object, const OXWClassificationTable& table,
                               const OXWRenderStyle& style)
{
    if (!object || !table.isValid() || !updateImage(object, table)) {
        clear();
        return false;
    }
    updateTransferFunctions(table);
    updateGradientOpacity(table);
    updateLighting(table, style);
    updateMethod(style, table);
    mShowing = true;
    return true;
}

bool OXWVolumePipeline::updateImage(const OXMObject* object, const OXWClassificationTable& table)
{
    auto* grid = dynamic_cast<const OXMSampleGrid*>(table.getGrid());
    const OXMTypeInfo type = grid ? grid->getDataType() : OXMTypeInfo();
    const OXMTypeInfo::Channel* channel = type.getChannel(table.getComponent());
    const int vtkType = channel ? vtkTypeOf(channel->getDataType()) : -1;
    if (!grid || vtkType < 0)
        return false;
    auto* region = dynamic_cast<const OXMRegionOfInterest*>(object);
    ImageKey key;
    key.grid = grid;
    key.data = grid->getData();
    key.dataVersion = grid->getDataVersion();
    key.maskVersion = region ? region->getMaskVersion() : -1;
    key.component = table.getComponent();
    // Outside a region: a value just beside the region's bins, transparent.
    const double below = table.valueForBin(table.getFirstBin() - 1);
    key.outside =
        below >= channel->getMinimum() ? below : table.valueForBin(table.getLastBin() + 1);
    if (key == mImageKey)
        return true;

    const OXMVector3<int> d = grid->getDimensions();
    const long long n = grid->getVoxelCount();
    const std::uint8_t* mask =
        region && (long long)region->getMask().size() == n ? region->getMask().data() : nullptr;
    const int components = type.getChannelCount();
    vtkSmartPointer<vtkDataArray> scalars;
    scalars.TakeReference(vtkDataArray::CreateDataArray(vtkType));
    if (!mask && components == 1) {
        mData = grid->getDataHandle();
        scalars->SetVoidArray(const_cast<std::uint8_t*>(mData.get()), n, 1);
    } else {
        mData.reset();
        scalars->SetNumberOfTuples(n);
        OXMSampleLoops::forComponentType(channel->getDataType(), [&](auto sample) {
            using T = decltype(sample);
            copyComponent<T>(static_cast<T*>(scalars->GetVoidPointer(0)), grid->getData(), n,
                             components, table.getComponent(), mask, key.outside);
        });
    }
    const OXMVector3<float> s = grid->getSpacing();
    const OXMVector3<float> o = grid->getGridOrigin();
    mImage->Initialize();
    mImage->SetDimensions(d.x, d.y, d.z);
    mImage->SetSpacing(s.x, s.y, s.z);
    mImage->SetOrigin(o.x, o.y, o.z);
    mImage->GetPointData()->SetScalars(scalars);
    mImage->Modified();
    mMinSpacing = std::max(1e-6, double(std::min({s.x, s.y, s.z})));
    mImageKey = key;
    return true;
}

void OXWVolumePipeline::updateTransferFunctions(const OXWClassificationTable& table)
{
    const int n = table.getBinCount();
    const double x0 = table.valueForBin(table.getFirstBin());
    const double x1 = table.valueForBin(table.getLastBin());
    const std::vector<float>& rgba = table.getRGBA();
    mScratch.resize(std::size_t(n) * 3);
    for (int i = 0; i < n; ++i)
        mScratch[std::size_t(i)] = rgba[std::size_t(i) * 4 + 3];
    mOpacity->BuildFunctionFromTable(x0, std::max(x1, x0 + 1.0), n, mScratch.data());
    // Beyond the bins (a region's outside value, values between a region's bins and it):
    // transparent.
    const double step = n > 1 ? (x1 - x0) / (n - 1) : 1.0;
    mOpacity->AddPoint(x0 - step, 0.0);
    mOpacity->AddPoint(x1 + step, 0.0);
    for (int i = 0; i < n; ++i)
        for (int c = 0; c < 3; ++c)
            mScratch[std::size_t(i) * 3 + std::size_t(c)] =
                rgba[std::size_t(i) * 4 + std::size_t(c)];
    mColour->BuildFunctionFromTable(x0, std::max(x1, x0 + 1.0), n, mScratch.data());
}

void OXWVolumePipeline::updateGradientOpacity(const OXWClassificationTable& table)
{
    const std::vector<float>& g = table.getGradientOpacity();
    if (g.empty()) {
        mProperty->DisableGradientOpacityOn();
        return;
    }
    // The channel read at first + magnitude, the magnitude in grey values per voxel.
    mScratch.assign(g.begin(), g.end());
    const double span =
        table.valueForBin(table.getLastBin()) - table.valueForBin(table.getFirstBin());
    mGradient->BuildFunctionFromTable(0.0, std::max(span, 1.0), int(g.size()), mScratch.data());
    mProperty->SetGradientOpacity(mGradient);
    mProperty->DisableGradientOpacityOff();
}

void OXWVolumePipeline::updateLighting(const OXWClassificationTable& table,
                                       const OXWRenderStyle& style)
{
    const OXWClassificationTable::Lighting& l = table.getLighting();
    const float* c = l.specularColour;
    mProperty->SetShade(style.shaded ? 1 : 0);
    mProperty->SetAmbient(l.ambient);
    mProperty->SetDiffuse(l.diffuse);
    // A coloured highlight is drawn white, as bright as the colour is on average.
    mProperty->SetSpecular(l.specular * (c[0] + c[1] + c[2]) / 3.0);
    mProperty->SetSpecularPower(std::max(1.0f, l.shininess));
    vtkProperty* surface = mSurface->GetProperty();
    surface->SetAmbient(l.ambient);
    surface->SetDiffuse(l.diffuse);
    surface->SetSpecular(l.specular);
    surface->SetSpecularColor(c[0], c[1], c[2]);
    surface->SetSpecularPower(std::max(1.0f, l.shininess));
}

void OXWVolumePipeline::updateMethod(const OXWRenderStyle& style,
                                     const OXWClassificationTable& table)
{
    using Method = OXWRenderStyle::Method;
    mStyle = style;
    if (style.method == Method::Isosurface) {
        mRenderer->RemoveVolume(mVolume);
        updateSurface(style, table);
        if (!mRenderer->HasViewProp(mSurface))
            mRenderer->AddActor(mSurface);
        return;
    }
    mRenderer->RemoveActor(mSurface);
    const bool hardware = mHardware || style.method == Method::Additive;
    vtkVolumeMapper* mapper =
        hardware ? static_cast<vtkVolumeMapper*>(mGPU) : static_cast<vtkVolumeMapper*>(mSoftware);
    if (style.method == Method::MaximumIntensity)
        mapper->SetBlendModeToMaximumIntensity();
    else if (style.method == Method::Additive)
        mapper->SetBlendModeToAdditive();
    else
        mapper->SetBlendModeToComposite();
    if (style.grey)
        mColour->BuildFunctionFromTable(0.0, 1.0, 1, std::vector<double>{1.0, 1.0, 1.0}.data());
    if (mVolume->GetMapper() != mapper)
        mVolume->SetMapper(mapper);
    applyQuality();
    if (!mRenderer->HasViewProp(mVolume))
        mRenderer->AddVolume(mVolume);
}

void OXWVolumePipeline::updateSurface(const OXWRenderStyle& style,
                                      const OXWClassificationTable& table)
{
    std::vector<float> values = style.isoValues;
    if (values.empty())
        values.push_back(
            float(table.valueForBin((table.getFirstBin() + table.getLastBin()) / 2.0)));
    mContour->SetNumberOfContours(int(values.size()));
    for (std::size_t i = 0; i < values.size(); ++i)
        mContour->SetValue(int(i), values[i]);
    const long long bin = table.binForValue(values.front());
    const std::size_t at =
        std::size_t(std::clamp<long long>(bin - table.getFirstBin(), 0, table.getBinCount() - 1));
    const float* rgba = &table.getRGBA()[at * 4];
    vtkProperty* p = mSurface->GetProperty();
    p->SetColor(rgba[0], rgba[1], rgba[2]);
    p->SetOpacity(style.innerSurfacesRemoved ? 1.0 : table.getTransparency());
    p->SetBackfaceCulling(style.innerSurfacesRemoved && !style.surfaceInverted);
    p->SetFrontfaceCulling(style.surfaceInverted);
}

void OXWVolumePipeline::useHardware(bool hardware)
{
    mHardware = hardware;
    if (mShowing && mStyle.method != OXWRenderStyle::Method::Isosurface)
        mVolume->SetMapper(hardware || mStyle.method == OXWRenderStyle::Method::Additive
                               ? static_cast<vtkVolumeMapper*>(mGPU)
                               : static_cast<vtkVolumeMapper*>(mSoftware));
    applyQuality();
}

void OXWVolumePipeline::setInteractive(bool interactive)
{
    if (interactive == mInteractive)
        return;
    mInteractive = interactive;
    applyQuality();
}

void OXWVolumePipeline::applyQuality()
{
    const double distance = mMinSpacing * double(mStyle.samplingDistance);
    mSoftware->SetSampleDistance(float(distance));
    mSoftware->SetInteractiveSampleDistance(float(distance * InteractiveSampleFactor));
    mSoftware->SetAutoAdjustSampleDistances(mInteractive ? 1 : 0);
    mSoftware->SetMaximumImageSampleDistance(MaximumImageSampleDistance);
    mGPU->SetSampleDistance(float(distance * (mInteractive ? InteractiveSampleFactor : 1.0)));
    mGPU->SetAutoAdjustSampleDistances(mInteractive ? 1 : 0);
    mGPU->SetMaximumImageSampleDistance(MaximumImageSampleDistance);
    if (!mInteractive) {
        mSoftware->SetImageSampleDistance(1.0f);
        mGPU->SetImageSampleDistance(1.0f);
    }
    // The ray casters share out the time of a frame that the window allows.
    if (vtkRenderWindow* window = mRenderer->GetRenderWindow())
        window->SetDesiredUpdateRate(mInteractive ? InteractiveFramesPerSecond
                                                  : StillFramesPerSecond);
}

bool OXWVolumePipeline::getBounds(double bounds[6]) const
{
    if (!mShowing)
        return false;
    mImage->GetBounds(bounds);
    return true;
}

vtkImageData* OXWVolumePipeline::image() const
{
    return mImage;
}

vtkVolume* OXWVolumePipeline::volume() const
{
    return mVolume;
}

vtkActor* OXWVolumePipeline::surface() const
{
    return mSurface;
}

vtkPiecewiseFunction* OXWVolumePipeline::opacityFunction() const
{
    return mOpacity;
}

vtkColorTransferFunction* OXWVolumePipeline::colourFunction() const
{
    return mColour;
}
