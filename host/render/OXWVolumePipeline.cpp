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
#include <vtkFloatArray.h>
#include <vtkFlyingEdges3D.h>
#include <vtkGPUVolumeRayCastMapper.h>
#include <vtkImageData.h>
#include <vtkMatrix4x4.h>
#include <vtkNew.h>
#include <vtkOpenGLShaderProperty.h>
#include <vtkPiecewiseFunction.h>
#include <vtkPointData.h>
#include <vtkPolyDataMapper.h>
#include <vtkProperty.h>
#include <vtkRenderWindow.h>
#include <vtkRenderer.h>
#include <vtkUniforms.h>
#include <vtkVolume.h>
#include <vtkVolumeProperty.h>

#include <algorithm>
#include <cstring>
#include <string>

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

// The voxels to draw: those of the region (all without one) outside every excluded region.
// Empty when every voxel is drawn.
std::vector<std::uint8_t> drawnVoxels(const OXMRegionOfInterest* region,
                                      const std::vector<const OXMObject*>& excluded, long long n)
{
    std::vector<std::uint8_t> drawn;
    const auto maskOf = [n](const OXMObject* object) -> const std::uint8_t* {
        auto* r = dynamic_cast<const OXMRegionOfInterest*>(object);
        return r && (long long)r->getMask().size() == n ? r->getMask().data() : nullptr;
    };
    if (const std::uint8_t* own = maskOf(region))
        drawn.assign(own, own + n);
    for (const OXMObject* other : excluded) {
        const std::uint8_t* mask = maskOf(other);
        if (mask && drawn.empty())
            drawn.assign(std::size_t(n), 1);
        for (long long i = 0; mask && i < n; ++i)
            drawn[std::size_t(i)] &= std::uint8_t(mask[i] == 0);
    }
    return drawn;
}

// The GPU ray caster's exact lookup: the table is 1024 texels wide and holds blocks of 65 536
// entries: entry v of block 0 is the classification of grey value v, entry m of block 1 the
// gradient factor at magnitude m (in its alpha), entry v of blocks 2 and 3 the ambient and the
// diffuse colour of v. OXW_SCALE turns the normalised texture value (VTK's scale and bias
// undone) into the grey value. Lit (oxwLit), the colour is Ka·ambient + Kd·(N·L)·diffuse plus
// the highlight: VTK's lighting of the diffuse colour, its ambient term moved to the ambient
// colour.
constexpr int ExactTableWidth = 1024;
constexpr int ExactEntries = 65536;
enum ExactBlock
{
    Classification = 0,
    GradientFactor = 1,
    Ambient = 2,
    Diffuse = 3,
    ExactBlocks = 4,
};
const char* const ExactOpacityCode = R"(
vec4 oxwEntry(int k)
{
  return texelFetch(in_transfer2D_0[0], ivec2(k % 1024, k / 1024), 0);
}
vec4 oxwLookup(vec4 scalar, int block)
{
  float raw = (scalar.a - in_volume_bias[0].r) / in_volume_scale[0].r;
  int v = int(floor(raw * OXW_SCALE + 0.5));
  return v < 0 || v >= 65536 ? vec4(0.0) : oxwEntry(block * 65536 + v);
}
float computeOpacity(vec4 scalar)
{
  float range = in_scalarsRange[0][1] - in_scalarsRange[0][0];
  int m = int(floor(g_gradients_0[0].w * 0.25 * range + 0.5));
  float a = oxwLookup(scalar, 0).a * oxwEntry(65536 + clamp(m, 0, 65535)).a;
  return 1.0 - pow(max(1.0 - a, 0.0), oxwOpacityExponent);
}
)";
const char* const ExactColourCode = R"(
vec4 computeColor(vec4 scalar, float opacity)
{
  if (oxwLit < 0.5)
    return computeLighting(vec4(oxwLookup(scalar, 0).rgb, opacity), 0, 0.0);
  vec3 diffuse = oxwLookup(scalar, 3).rgb;
  vec4 lit = computeLighting(vec4(diffuse, opacity), 0, 0.0);
  lit.rgb += in_ambient[0] * (oxwLookup(scalar, 2).rgb - diffuse);
  return lit;
}
)";

} // namespace

bool OXWVolumePipeline::ImageKey::operator==(const ImageKey& o) const
{
    return grid == o.grid && data == o.data && dataVersion == o.dataVersion &&
           maskVersion == o.maskVersion && excludedVersions == o.excludedVersions &&
           component == o.component && outside == o.outside;
}

OXWVolumePipeline::OXWVolumePipeline(vtkRenderer* renderer)
    : mRenderer(renderer), mImage(vtkSmartPointer<vtkImageData>::New()),
      mOpacity(vtkSmartPointer<vtkPiecewiseFunction>::New()),
      mGradient(vtkSmartPointer<vtkPiecewiseFunction>::New()),
      mColour(vtkSmartPointer<vtkColorTransferFunction>::New()),
      mProperty(vtkSmartPointer<vtkVolumeProperty>::New()),
      mExactTable(vtkSmartPointer<vtkImageData>::New()),
      mPlacement(vtkSmartPointer<vtkMatrix4x4>::New()),
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
    mVolume->SetUserMatrix(mPlacement);
    mSurface->SetUserMatrix(mPlacement);
    vtkNew<vtkFloatArray> entries;
    entries->SetNumberOfComponents(4);
    entries->SetNumberOfTuples(ExactTableWidth * ExactTableWidth);
    entries->FillValue(0.0f);
    mExactTable->SetDimensions(ExactTableWidth, ExactTableWidth, 1);
    mExactTable->GetPointData()->SetScalars(entries);
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
                               const OXWRenderStyle& style,
                               const std::vector<const OXMObject*>& excluded)
{
    if (!object || !table.isValid() || !updateImage(object, table, excluded)) {
        clear();
        return false;
    }
    mStyle = style;
    updateTransferFunctions(table);
    updateExactTable(table);
    updateGradientOpacity(table);
    updateLighting(table, style);
    updateMethod(style, table);
    mShowing = true;
    return true;
}

void OXWVolumePipeline::setPlacement(const OXWVolumePlacement::Matrix& placement)
{
    mPlacement->DeepCopy(placement.data());
}

bool OXWVolumePipeline::updateImage(const OXMObject* object, const OXWClassificationTable& table,
                                    const std::vector<const OXMObject*>& excluded)
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
    for (const OXMObject* other : excluded)
        if (auto* r = dynamic_cast<const OXMRegionOfInterest*>(other))
            key.excludedVersions.push_back(r->getMaskVersion());
    key.component = table.getComponent();
    // Outside a region: a value just beside the region's bins, transparent.
    const double below = table.valueForBin(table.getFirstBin() - 1);
    key.outside =
        below >= channel->getMinimum() ? below : table.valueForBin(table.getLastBin() + 1);
    if (key == mImageKey)
        return true;

    const OXMVector3<int> d = grid->getDimensions();
    const long long n = grid->getVoxelCount();
    const std::vector<std::uint8_t> drawn = drawnVoxels(region, excluded, n);
    const std::uint8_t* mask = drawn.empty() ? nullptr : drawn.data();
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
    cropTo(mask);
    mDataType = vtkType;
    mImageKey = key;
    return true;
}

void OXWVolumePipeline::cropTo(const std::uint8_t* drawn)
{
    int dims[3];
    mImage->GetDimensions(dims);
    int lo[3] = {dims[0], dims[1], dims[2]}, hi[3] = {-1, -1, -1};
    long long i = 0;
    for (int z = 0; drawn && z < dims[2]; ++z)
        for (int y = 0; y < dims[1]; ++y)
            for (int x = 0; x < dims[0]; ++x, ++i)
                if (drawn[i]) {
                    const int at[3] = {x, y, z};
                    for (int a = 0; a < 3; ++a) {
                        lo[a] = std::min(lo[a], at[a]);
                        hi[a] = std::max(hi[a], at[a]);
                    }
                }
    // The box of the drawn voxels and one voxel around it, which the interpolation reaches.
    double planes[6];
    for (int a = 0; a < 3; ++a) {
        const bool none = hi[a] < lo[a];
        planes[2 * a] =
            mImage->GetOrigin()[a] + mImage->GetSpacing()[a] * (none ? 0 : std::max(lo[a] - 1, 0));
        planes[2 * a + 1] = mImage->GetOrigin()[a] +
                            mImage->GetSpacing()[a] * (none ? 0 : std::min(hi[a] + 1, dims[a] - 1));
    }
    for (vtkVolumeMapper* mapper :
         {static_cast<vtkVolumeMapper*>(mSoftware), static_cast<vtkVolumeMapper*>(mGPU)}) {
        mapper->SetCropping(drawn ? 1 : 0);
        mapper->SetCroppingRegionPlanes(planes);
        mapper->SetCroppingRegionFlagsToSubVolume();
    }
}

void OXWVolumePipeline::updateTransferFunctions(const OXWClassificationTable& table)
{
    const int n = table.getBinCount();
    // A single bin: two nodes a quarter of a grey value either side of its value.
    const int nodes = std::max(n, 2);
    const double half = n > 1 ? 0.0 : 0.25;
    const double x0 = table.valueForBin(table.getFirstBin()) - half;
    const double x1 = table.valueForBin(table.getLastBin()) + half;
    const std::vector<float>& rgba = table.getRGBA();
    const auto entry = [&](int i, int c) {
        return rgba[std::size_t(std::min(i, n - 1)) * 4 + std::size_t(c)];
    };
    mScratch.resize(std::size_t(nodes) * 3);
    for (int i = 0; i < nodes; ++i)
        mScratch[std::size_t(i)] = entry(i, 3);
    mOpacity->BuildFunctionFromTable(x0, x1, nodes, mScratch.data());
    // Beyond the bins (a region's outside value, values between a region's bins and it):
    // transparent.
    const double step = n > 1 ? (x1 - x0) / (n - 1) : 0.75;
    mOpacity->AddPoint(x0 - step, 0.0);
    mOpacity->AddPoint(x1 + step, 0.0);
    for (int i = 0; i < nodes; ++i)
        for (int c = 0; c < 3; ++c)
            mScratch[std::size_t(i) * 3 + std::size_t(c)] = entry(i, c);
    mColour->BuildFunctionFromTable(x0, x1, nodes, mScratch.data());
}

void OXWVolumePipeline::updateExactTable(const OXWClassificationTable& table)
{
    const bool exact = rayCaster() == mGPU && !table.isFloatBinning() &&
                       (mDataType == VTK_UNSIGNED_SHORT || mDataType == VTK_UNSIGNED_CHAR);
    setExactScale(exact ? (mDataType == VTK_UNSIGNED_SHORT ? 65535.0 : 255.0) : 0.0);
    if (!exact)
        return;
    auto* entries =
        static_cast<float*>(mExactTable->GetPointData()->GetScalars()->GetVoidPointer(0));
    const auto block = [entries](int b) { return entries + std::size_t(b) * ExactEntries * 4; };
    std::fill(entries, block(ExactBlocks), 0.0f);
    const std::size_t first = std::size_t(std::max(0, table.getFirstBin()));
    const std::size_t count =
        std::min(std::size_t(table.getBinCount()), std::size_t(ExactEntries) - first);
    const std::vector<float>& rgba = table.getRGBA();
    std::copy(rgba.begin(), rgba.begin() + std::ptrdiff_t(count * 4),
              block(Classification) + first * 4);
    for (std::size_t i = 0; mStyle.grey && i < count; ++i)
        std::fill(block(Classification) + (first + i) * 4,
                  block(Classification) + (first + i) * 4 + 3, 1.0f);
    for (int c = 0; c < 6; ++c) {
        const std::vector<float>& channel = table.getColourChannel(c);
        float* out = block(c < 3 ? Ambient : Diffuse) + first * 4 + c % 3;
        for (std::size_t i = 0; i < count; ++i)
            out[i * 4] = channel[i];
    }
    // The gradient factor, 1 beyond the channel's entries.
    const std::vector<float>& g = table.getGradientOpacity();
    float* factor = block(GradientFactor) + 3;
    for (std::size_t m = 0; m < std::size_t(ExactEntries); ++m)
        factor[m * 4] = g.empty() ? 1.0f : g[std::min(m, g.size() - 1)];
    mExactTable->Modified();
}

void OXWVolumePipeline::setExactScale(double scale)
{
    if (scale == mExactScale)
        return;
    mExactScale = scale;
    auto* shaders = vtkOpenGLShaderProperty::SafeDownCast(mVolume->GetShaderProperty());
    shaders->ClearAllFragmentShaderReplacements();
    if (scale <= 0.0) {
        mProperty->SetTransferFunctionMode(vtkVolumeProperty::TF_1D);
        return;
    }
    std::string opacity = ExactOpacityCode;
    opacity.replace(opacity.find("OXW_SCALE"), 9, std::to_string(scale));
    shaders->AddFragmentShaderReplacement("//VTK::ComputeOpacity::Dec", true, opacity, false);
    shaders->AddFragmentShaderReplacement("//VTK::ComputeColor::Dec", true, ExactColourCode, false);
    mProperty->SetTransferFunction2D(mExactTable);
    mProperty->SetTransferFunctionMode(vtkVolumeProperty::TF_2D);
    applyQuality();
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
    mVolume->GetShaderProperty()->GetFragmentCustomUniforms()->SetUniformf(
        "oxwLit", style.shaded ? 1.0f : 0.0f);
    mProperty->SetAmbient(l.ambient);
    mProperty->SetDiffuse(l.diffuse);
    // The highlight's colour is the light's (the view's headlight takes the material's).
    mProperty->SetSpecular(l.specular);
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
    if (style.method == Method::Isosurface) {
        mRenderer->RemoveVolume(mVolume);
        updateSurface(style, table);
        if (!mRenderer->HasViewProp(mSurface))
            mRenderer->AddActor(mSurface);
        return;
    }
    mRenderer->RemoveActor(mSurface);
    vtkVolumeMapper* mapper = rayCaster();
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
        mVolume->SetMapper(rayCaster());
    // The exact table is filled by the next update.
    if (rayCaster() != mGPU)
        setExactScale(0.0);
    applyQuality();
}

vtkVolumeMapper* OXWVolumePipeline::rayCaster() const
{
    if (mHardware || mStyle.method == OXWRenderStyle::Method::Additive)
        return mGPU;
    return mSoftware;
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
    const double gpuDistance = distance * (mInteractive ? InteractiveSampleFactor : 1.0);
    mGPU->SetSampleDistance(float(gpuDistance));
    // The exact table's opacities hold for a unit step; VTK's own tables are corrected alike.
    const bool additive = mStyle.method == OXWRenderStyle::Method::Additive;
    mVolume->GetShaderProperty()->GetFragmentCustomUniforms()->SetUniformf(
        "oxwOpacityExponent",
        float(additive ? 1.0 : gpuDistance / mProperty->GetScalarOpacityUnitDistance()));
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
    double box[6];
    mImage->GetBounds(box);
    for (int i = 0; i < 3; ++i) {
        bounds[2 * i] = VTK_DOUBLE_MAX;
        bounds[2 * i + 1] = -VTK_DOUBLE_MAX;
    }
    // The box's corners as placed.
    for (int corner = 0; corner < 8; ++corner) {
        const double p[4] = {box[corner & 1], box[2 + ((corner >> 1) & 1)],
                             box[4 + ((corner >> 2) & 1)], 1.0};
        double q[4];
        mPlacement->MultiplyPoint(p, q);
        for (int i = 0; i < 3; ++i) {
            bounds[2 * i] = std::min(bounds[2 * i], q[i]);
            bounds[2 * i + 1] = std::max(bounds[2 * i + 1], q[i]);
        }
    }
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
