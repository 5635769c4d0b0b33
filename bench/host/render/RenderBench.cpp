// The drawing of volumes, against VTK's own way in the same run:
//   - the classification table: 65 536 grey values, 1 000 handles per curve, against
//     vtkPiecewiseFunction::GetTable plus vtkColorTransferFunction::GetTable of the same
//     curves (the tables VTK's mappers make);
//   - a handle-drag step of the 3D view until its frame is finished, a 256³ 16-bit volume at
//     800 × 600, at interactive and at full quality, against VTK's stock path: transfer
//     functions with the handles as their points, one point moved, the same ray caster; on the
//     CPU ray caster and on the GPU ray caster (the exact table against VTK's textures);
//   - the same step with a region of interest over half the volume drawn with it.
// Needs an X display (make bench runs it on a private Xvfb when there is none).

#include <OXWClassificationTable.h>
#include <OXWVolumePipeline.h>
#include <OXWVolumeView.h>

#include <OXMHistogram.h>
#include <OXMObjectPtr.h>
#include <OXMRegionOfInterest.h>
#include <OXMSampleGrid.h>
#include <OXMSampleMaterial.h>
#include <OXMSampleTransferSpec.h>
#include <OXMScene.h>
#include <OXMScenePhantom.h>
#include <OXMVolumeRenderObject.h>
#include <OXWApplication.h>

#include <QApplication>
#include <QSurfaceFormat>
#include <QTest>

#include <vtkColorTransferFunction.h>
#include <vtkFixedPointVolumeRayCastMapper.h>
#include <vtkGenericOpenGLRenderWindow.h>
#include <vtkPiecewiseFunction.h>
#include <vtkRenderer.h>
#include <vtkShaderProperty.h>
#include <vtkVolume.h>
#include <vtkVolumeProperty.h>

#include <benchmark/benchmark.h>

#include <cmath>
#include <cstdint>
#include <memory>
#include <string>
#include <vector>

namespace {

using Handles = std::vector<OXMVector2<float>>;

// count handles over first .. last, a wave between 0 and 1 (phase shifts it).
Handles wave(int count, float first, float last, float phase)
{
    Handles h;
    for (int i = 0; i < count; ++i) {
        const float t = float(i) / float(count - 1);
        h.emplace_back(first + t * (last - first), 0.5f + 0.5f * std::sin(40.0f * t + phase));
    }
    return h;
}

const OXMenum CurveChannels[] = {OXM::Opacity,     OXM::AmbientRed, OXM::AmbientGreen,
                                 OXM::AmbientBlue, OXM::DiffuseRed, OXM::DiffuseGreen,
                                 OXM::DiffuseBlue};

// A volume whose voxels take every 16-bit value, its channels with 1 000 handles each.
struct FullRangeVolume
{
    OXMObjectPtr hold;
    OXMVolumeRenderObject* volume = nullptr;

    FullRangeVolume()
    {
        std::vector<std::uint16_t> values(65536);
        for (std::size_t i = 0; i < values.size(); ++i)
            values[i] = std::uint16_t(i);
        auto* grid = new OXMSampleGrid;
        grid->setSamples({64, 64, 16}, OXM::UInt16, values);
        volume = OXMVolumeRenderObject::create(grid, "Full range");
        hold = volume;
        volume->getHistogram()->execute(OXM::Calculate);
        float phase = 0.0f;
        for (OXMenum channel : CurveChannels)
            volume->getMaterial()->getChannel(channel)->setCurve(
                wave(1000, 0.0f, 65535.0f, phase += 1.0f));
    }
};

void BM_ClassificationTable(benchmark::State& state)
{
    FullRangeVolume f;
    OXWClassificationTable table;
    for (auto _ : state) {
        table.build(f.volume);
        benchmark::DoNotOptimize(table.getRGBA().data());
    }
    if (table.getBinCount() != 65536)
        state.SkipWithError("the table does not span 65 536 grey values");
}
BENCHMARK(BM_ClassificationTable)->Unit(benchmark::kMicrosecond);

void BM_VtkGetTablePair(benchmark::State& state)
{
    vtkNew<vtkPiecewiseFunction> opacity;
    vtkNew<vtkColorTransferFunction> colour;
    const Handles a = wave(1000, 0.0f, 65535.0f, 1.0f);
    const Handles r = wave(1000, 0.0f, 65535.0f, 2.0f);
    for (std::size_t i = 0; i < a.size(); ++i) {
        opacity->AddPoint(a[i].x, a[i].y);
        colour->AddRGBPoint(r[i].x, r[i].y, 1.0 - r[i].y, 0.5);
    }
    std::vector<float> alpha(65536), rgb(3 * 65536);
    for (auto _ : state) {
        // Each call samples anew, as a mapper does after a change of its functions.
        opacity->Modified();
        colour->Modified();
        opacity->GetTable(0.0, 65535.0, 65536, alpha.data());
        colour->GetTable(0.0, 65535.0, 65536, rgb.data());
        benchmark::DoNotOptimize(alpha.data());
        benchmark::DoNotOptimize(rgb.data());
    }
}
BENCHMARK(BM_VtkGetTablePair)->Unit(benchmark::kMicrosecond);

// The 256³ 16-bit phantom in a scene, shown in an 800 × 600 view.
struct DragFixture
{
    OXWApplication app;
    OXMObjectPtr sceneHold{new OXMScene};
    OXMVolumeRenderObject* volume = nullptr;
    std::unique_ptr<OXWVolumeView> view;
    Handles handles;
    bool exposed = false;

    explicit DragFixture(bool hardware = false, bool region = false)
    {
        volume = OXMVolumeRenderObject::create(OXMScenePhantom::createGrid16(256), "Phantom");
        static_cast<OXMScene*>(sceneHold.get())->addVolume(volume);
        volume->getHistogram()->execute(OXM::Calculate);
        handles = wave(1000, 0.0f, 4000.0f, 0.0f);
        if (region)
            addRegion();
        view = std::make_unique<OXWVolumeView>();
        view->resize(800, 600);
        view->show();
        exposed = QTest::qWaitForWindowExposed(view.get());
        view->pipeline().useHardware(hardware);
        view->setObject(volume);
    }
    // A region of the lower half of the voxels, with a classification of its own whose
    // opacity is the volume's in the drag.
    void addRegion()
    {
        const long long n = volume->getSampleGrid()->getVoxelCount();
        std::vector<std::uint8_t> mask(std::size_t(n), 0);
        std::fill(mask.begin(), mask.begin() + n / 2, 1);
        auto* roi = new OXMRegionOfInterest;
        roi->setMask(mask);
        volume->appendLink(OXM::RegionOfInterestList, OXMObjectLink(roi));
        roi->execute(OXM::Init);
        roi->getHistogram()->execute(OXM::Calculate);
        roi->getMaterial()->getChannel(OXM::Opacity)->setCurve(handles);
    }
    // One step of a drag: one handle moved, written, the view updated and its frame finished.
    void step(int i)
    {
        handles[500].y = 0.02f * float(i % 2);
        volume->getMaterial()->getChannel(OXM::Opacity)->setCurve(handles);
        view->updateNow();
        view->renderWindow()->WaitForCompletion();
    }
};

// Args: interactive, GPU ray caster, a region.
void BM_DragStep(benchmark::State& state)
{
    const bool interactive = state.range(0) != 0;
    DragFixture f(state.range(1) != 0, state.range(2) != 0);
    if (!f.exposed || !f.view->isShowing()) {
        state.SkipWithError("the view shows nothing");
        return;
    }
    const int action = interactive ? f.app.userActionBegin(QStringLiteral("Change opacity")) : 0;
    int i = 0;
    for (auto _ : state)
        f.step(++i);
    if (interactive)
        f.app.userActionEnd(action);
    state.SetLabel(std::string(interactive ? "interactive" : "full quality") +
                   (state.range(1) ? ", GPU exact table" : "") +
                   (state.range(2) ? ", with a region" : ""));
}
BENCHMARK(BM_DragStep)
    ->Args({1, 0, 0})
    ->Args({0, 0, 0})
    ->Args({0, 0, 1})
    ->Args({0, 1, 0})
    ->Unit(benchmark::kMillisecond)
    ->UseRealTime();

// VTK's stock path: the handles as points of VTK's functions, one moved per step, through
// VTK's own transfer-function textures. Arg: the GPU ray caster.
void BM_DragStepVtkStock(benchmark::State& state)
{
    DragFixture f(state.range(0) != 0);
    vtkNew<vtkPiecewiseFunction> opacity;
    vtkNew<vtkColorTransferFunction> colour;
    for (const OXMVector2<float>& h : f.handles) {
        opacity->AddPoint(h.x, h.y);
        colour->AddRGBPoint(h.x, 1.0, 1.0, 1.0);
    }
    vtkVolumeProperty* property = f.view->pipeline().volume()->GetProperty();
    property->SetScalarOpacity(opacity);
    property->SetColor(colour);
    property->SetTransferFunctionMode(vtkVolumeProperty::TF_1D);
    f.view->pipeline().volume()->GetShaderProperty()->ClearAllFragmentShaderReplacements();
    int i = 0;
    for (auto _ : state) {
        opacity->AddPoint(f.handles[500].x, 0.02 * double(++i % 2));
        f.view->renderWindow()->Render();
        f.view->renderWindow()->WaitForCompletion();
    }
}
BENCHMARK(BM_DragStepVtkStock)->Arg(0)->Arg(1)->Unit(benchmark::kMillisecond)->UseRealTime();

} // namespace

int main(int argc, char** argv)
{
    QSurfaceFormat::setDefaultFormat(QVTKOpenGLNativeWidget::defaultFormat());
    QApplication app(argc, argv);
    benchmark::Initialize(&argc, argv);
    benchmark::RunSpecifiedBenchmarks();
    benchmark::Shutdown();
    return 0;
}
