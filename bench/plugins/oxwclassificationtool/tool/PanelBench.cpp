// The classification tool panel on real host objects.
//
// Drag step: one mouse move of an opacity-handle drag, the whole road: the move held back by
// the panel and delivered, the model's moveHandle, the panel's write of the opacity handle
// list to the material's opacity channel inside the open user action (undo recording), the
// change messages, and the event loop's turn in which the panel's repaint redraws the three
// editors. At 256 and 65 536 grey
// values; the curve has 1 000 handles (256 on the 256-value axis: one per cell).
// Baselines of the same run: the work area's render alone, and the host write alone.
//
// Import: a ParaView colour map of 2 000 colour and 2 000 opacity points (Diverging colour
// space) read from its file and made a classification preset record (second argument 0), and
// the whole import of the preset box on the GUI thread, which also hands the record over to
// the preset store's worker (1; the write of the previous iteration is waited for off the
// clock); compared with the drag step at 65 536 grey values of the same run. Beside them the
// background write itself: the record serialized and stored as a preset file by the worker.
//
// Re-read: updateObjectInfo() of a classification of 100 intervals with 1 000 handles per
// interval in each of the four channels (a 131 072-value axis), and with 250 handles to show
// how it scales; the repaint that follows is measured separately. Baseline: reading the four
// host handle lists.

#include <OXWClassificationToolGUI.h>
#include <OXWLUTIntervalInfo.h>
#include <OXWLUTObjectInfo.h>
#include <OXWLUTWorkArea.h>
#include <OXWPresetClassificationHandler.h>

#include <OXMHistogram.h>
#include <OXMObjectPath.h>
#include <OXMObjectPtr.h>
#include <OXMSampleGrid.h>
#include <OXMSampleMaterial.h>
#include <OXMSampleTransferSpec.h>
#include <OXMScene.h>
#include <OXMVolumeRenderObject.h>
#include <OXWApplication.h>
#include <OXWSampleScene.h>
#include <OXWTransferFunctionFile.h>

#include <benchmark/benchmark.h>

#include <QApplication>
#include <QElapsedTimer>
#include <QFile>
#include <QMouseEvent>
#include <QTemporaryDir>
#include <QThread>
#include <QTimer>

#include <cstdint>
#include <memory>
#include <random>
#include <vector>

namespace {
using Vector = OXMVector2<float>;

// An application with the sample scene and one more volume whose grey values run over
// 0 .. greyCount - 1, selected, and the panel bound to it.
struct PanelScene
{
    OXWApplication app;
    OXMVolumeRenderObject* volume = nullptr;
    std::unique_ptr<OXWClassificationToolGUI> panel;

    explicit PanelScene(int greyCount)
    {
        OXWSampleScene::Result sample;
        if (!OXWSampleScene::build(&app, 4, sample)) {
            return;
        }
        auto* grid = new OXMSampleGrid;
        OXMObjectPtr holdGrid(grid);
        // One voxel per grey value, so every value has a bin.
        const int side = 64;
        const int depth = (greyCount + side * side - 1) / (side * side);
        std::vector<std::uint32_t> samples(size_t(side * side * depth));
        for (size_t i = 0; i < samples.size(); ++i) {
            samples[i] = std::uint32_t(i % size_t(greyCount));
        }
        if (greyCount <= 65536) {
            std::vector<std::uint16_t> narrow(samples.begin(), samples.end());
            grid->setSamples(OXMVector3<int>(side, side, depth), OXM::UInt16, narrow);
        } else {
            grid->setSamples(OXMVector3<int>(side, side, depth), OXM::UInt32, samples);
        }
        OXMObjectPtr holdVolume(OXMVolumeRenderObject::create(grid, "Bench"));
        volume = static_cast<OXMVolumeRenderObject*>(holdVolume.get());
        if (!volume || !sample.scene->addVolume(volume) ||
            !volume->getHistogram()->execute(OXM::Calculate)) {
            volume = nullptr;
            return;
        }
        auto* selection = OXMValueArrayPropertyIF<OXMObjectPath>::getInterface(
            app.getProperty(OXM::RenderObjectSelectionList));
        const OXMObjectPath path = OXMObjectPath::fromObject(volume);
        selection->initArray(0, 0, &path);
        panel = std::make_unique<OXWClassificationToolGUI>(nullptr, "OXWClassificationToolGUI");
        panel->resize(1600, 700);
        panel->show();
        QApplication::processEvents();
    }

    ~PanelScene()
    {
        panel.reset();
        QApplication::processEvents();
    }

    OXMSampleMaterial* material() const { return volume->getMaterial(); }
    OXMObject* channel(OXMenum id) const { return material()->getChannel(id); }

    void reread()
    {
        QMetaObject::invokeMethod(panel.get(), "updateObjectInfo", Qt::DirectConnection);
    }

    bool rereadPending() const
    {
        return panel->updateObjectInfoTimer()->isActive() ||
               panel->updateAnalyzerTimer()->isActive();
    }

    // Lets the re-read run that the panel schedules for every host change (30 ms later).
    // Re-reading directly instead would leave it pending, to replace the model, and with it
    // the handle a press has caught, in the middle of a measurement. False when no re-read
    // came within five seconds.
    bool awaitReread(int readsBefore)
    {
        QElapsedTimer clock;
        clock.start();
        while ((panel->objectInfoReadCount() == readsBefore || rereadPending()) &&
               clock.elapsed() < 5000) {
            QApplication::processEvents();
            QThread::msleep(1);
        }
        return panel->objectInfoReadCount() != readsBefore && !rereadPending();
    }
};

std::vector<Vector> rampWithHandles(int greyCount, int handles, float from, float to,
                                    std::mt19937& random, float scale)
{
    std::uniform_real_distribution<float> value(0.0f, scale);
    std::vector<Vector> list;
    const float step = (to - from) / float(handles - 1);
    for (int k = 0; k < handles; ++k) {
        list.emplace_back(from + step * float(k), value(random));
    }
    (void)greyCount;
    return list;
}

bool writeList(OXMObject* object, const std::vector<Vector>& list)
{
    auto* array = OXMValueArrayPropertyIF<Vector>::getInterface(
        object->getProperty(OXM::LookupTableHandleList));
    return array && array->initArray(0, int(list.size()) - 1, list.data());
}

// --- drag step ---------------------------------------------------------------------------

// Counts the paint events of a widget.
struct PaintCounter : QObject
{
    int count = 0;
    bool eventFilter(QObject*, QEvent* event) override
    {
        if (event->type() == QEvent::Paint) {
            ++count;
        }
        return false;
    }
};

void BM_DragStep(benchmark::State& state)
{
    const int greyCount = int(state.range(0));
    const int handles = greyCount >= 1000 ? 1000 : greyCount;
    PanelScene scene(greyCount);
    if (!scene.panel) {
        state.SkipWithError("the scene could not be built");
        return;
    }
    std::mt19937 random(5);
    // Centres of evenly spread cells.
    std::vector<Vector> curve;
    for (int k = 0; k < handles; ++k) {
        const int cell = int((long long)k * (greyCount - 1) / (handles - 1));
        curve.emplace_back(float(cell), std::uniform_real_distribution<float>(0.1f, 0.9f)(random));
    }
    OXWClassificationToolGUI& panel = *scene.panel;
    writeList(scene.channel(OXM::Opacity), curve);
    if (!scene.awaitReread(panel.objectInfoReadCount())) {
        state.SkipWithError("the panel did not re-read the curve");
        return;
    }
    OXWLUTObjectInfo* model = panel.objectInfo();
    if (!model ||
        model->interval(0)->handles(OXWLUTIntervalInfo::OpacityChannel).size() != size_t(handles)) {
        state.SkipWithError("the curve was not read");
        return;
    }
    OXWLUTWorkArea* area = panel.mLUTWorkArea;
    const int k = handles / 2;
    const auto& handle = model->interval(0)->handles(OXWLUTIntervalInfo::OpacityChannel)[size_t(k)];
    const QPoint start(area->pixelFromPosition(model->interval(0)->globalFromLocal(handle.x)),
                       area->pixelFromHeight(handle.y));
    QMouseEvent press(QEvent::MouseButtonPress, start, Qt::LeftButton, Qt::LeftButton,
                      Qt::NoModifier);
    QApplication::sendEvent(area, &press);
    if (area->pressAction() != OXWLUTWorkArea::PressHandle) {
        state.SkipWithError("the press did not catch the handle");
        return;
    }
    auto* hostList = OXMValueArrayPropertyIF<Vector>::getInterface(
        scene.channel(OXM::Opacity)->getProperty(OXM::LookupTableHandleList));
    const std::vector<Vector> before = hostList->getArray();
    PaintCounter paints;
    area->installEventFilter(&paints);
    QApplication::processEvents();
    paints.count = 0;
    const int reads = panel.objectInfoReadCount();
    int step = 0;
    for (auto _ : state) {
        const QPoint to = start + QPoint(0, (step++ % 2) ? 30 : -30);
        QMouseEvent move(QEvent::MouseMove, to, Qt::NoButton, Qt::LeftButton, Qt::NoModifier);
        QApplication::sendEvent(area, &move);
        QMetaObject::invokeMethod(&panel, "sendDelayedMouseMoveEvent", Qt::DirectConnection);
        // The event loop's turns until the editor has drawn the step.
        for (int turn = 0; turn < 10 && paints.count < step; ++turn) {
            QApplication::processEvents();
        }
    }
    area->removeEventFilter(&paints);
    if (panel.objectInfoReadCount() != reads) {
        state.SkipWithError("a re-read replaced the model during the drag");
    } else if (hostList->getArray() == before) {
        state.SkipWithError("the drag did not reach the host");
    } else if (paints.count < int(state.iterations())) {
        state.SkipWithError("the editor was not repainted at every step");
    }
    QMouseEvent release(QEvent::MouseButtonRelease, start, Qt::LeftButton, Qt::NoButton,
                        Qt::NoModifier);
    QApplication::sendEvent(area, &release);
}
BENCHMARK(BM_DragStep)->Arg(256)->Arg(65536)->Unit(benchmark::kMicrosecond);

// Baseline: the work area's picture alone, at the panel's size.
void BM_Baseline_WorkAreaRender(benchmark::State& state)
{
    PanelScene scene(int(state.range(0)));
    if (!scene.panel) {
        state.SkipWithError("the scene could not be built");
        return;
    }
    for (auto _ : state) {
        scene.panel->mLUTWorkArea->render();
        benchmark::DoNotOptimize(scene.panel->mLUTWorkArea->buffer().cacheKey());
    }
}
BENCHMARK(BM_Baseline_WorkAreaRender)->Arg(256)->Arg(65536)->Unit(benchmark::kMicrosecond);

// Baseline: writing a 1 000-handle list to the opacity channel inside a user action, with
// the panel listening.
void BM_Baseline_HostWrite(benchmark::State& state)
{
    PanelScene scene(65536);
    if (!scene.panel) {
        state.SkipWithError("the scene could not be built");
        return;
    }
    std::mt19937 random(7);
    const std::vector<Vector> a = rampWithHandles(65536, 1000, 0.0f, 65535.0f, random, 1.0f);
    const std::vector<Vector> b = rampWithHandles(65536, 1000, 0.0f, 65535.0f, random, 1.0f);
    OXWApplication::UserActionScope action(QStringLiteral("Bench"));
    int step = 0;
    for (auto _ : state) {
        writeList(scene.channel(OXM::Opacity), (step++ % 2) ? a : b);
    }
}
BENCHMARK(BM_Baseline_HostWrite)->Unit(benchmark::kMicrosecond);

// --- import ------------------------------------------------------------------------------

QByteArray colourMapOf(int points)
{
    QByteArray colours, opacity;
    for (int k = 0; k < points; ++k) {
        const double t = double(k) / (points - 1);
        colours += QByteArray::number(t) + ", " + QByteArray::number(t) + ", " +
                   QByteArray::number(1.0 - t) + ", " + QByteArray::number(0.5 * t) + ", ";
        opacity += QByteArray::number(t) + ", " + QByteArray::number(t * t) + ", 0.5, 0, ";
    }
    colours.chop(2);
    opacity.chop(2);
    return "[{\"Name\": \"Bench\", \"ColorSpace\": \"Diverging\", \"RGBPoints\": [" + colours +
           "], \"Points\": [" + opacity + "]}]";
}

// An import beside the panel's scene: the colour map's file and the preset handler with its
// folder.
struct ImportScene
{
    PanelScene scene{65536};
    QTemporaryDir folder;
    QString fileName = folder.filePath(QStringLiteral("bench.json"));
    OXWPresetClassificationHandler handler{scene.volume};

    explicit ImportScene(int points)
    {
        QFile file(fileName);
        if (!scene.panel || !file.open(QIODevice::WriteOnly) ||
            file.write(colourMapOf(points)) < 0) {
            fileName.clear();
            return;
        }
        handler.setHistogramObject(scene.volume->getHistogram());
        handler.store().setDirectory(folder.filePath(QStringLiteral("presets")));
    }

    bool read(std::vector<OXWTransferFunction>& presets) const
    {
        OXWTransferFunctionFile::Format format;
        QString error;
        return OXWTransferFunctionFile::read(fileName, format, presets, error);
    }
};

void BM_ImportColorMap(benchmark::State& state)
{
    ImportScene import(int(state.range(0)));
    if (import.fileName.isEmpty()) {
        state.SkipWithError("the scene or the file could not be made");
        return;
    }
    OXWPresetClassificationHandler& handler = import.handler;
    const bool store = state.range(1) != 0;
    for (auto _ : state) {
        std::vector<OXWTransferFunction> presets;
        const bool imported = import.read(presets) &&
                              (store ? handler.importTransferFunctions(
                                           presets, {QStringLiteral("Bench")}, import.fileName)
                                     : bool(handler.recordFromTransferFunction(presets.front())));
        if (!imported) {
            state.SkipWithError("the colour map was not imported");
            return;
        }
        if (store) { // the previous write ends before the next import, off the clock
            state.PauseTiming();
            handler.store().waitForWrites();
            state.ResumeTiming();
        }
    }
}
BENCHMARK(BM_ImportColorMap)->Args({2000, 0})->Args({2000, 1})->Unit(benchmark::kMicrosecond);

// The background write of the imported record alone: handed to the store's worker and waited
// for (the record is made off the clock).
void BM_ImportColorMapBackgroundStore(benchmark::State& state)
{
    ImportScene import(int(state.range(0)));
    std::vector<OXWTransferFunction> presets;
    if (import.fileName.isEmpty() || !import.read(presets)) {
        state.SkipWithError("the scene or the file could not be made");
        return;
    }
    OXWPresetStore& store = import.handler.store();
    for (auto _ : state) {
        state.PauseTiming();
        std::vector<OXMObjectPtr> records{import.handler.recordFromTransferFunction(presets[0])};
        state.ResumeTiming();
        QString error;
        if (!store.saveInBackground({QStringLiteral("Bench")}, std::move(records), error)) {
            state.SkipWithError("the record was not handed over");
            return;
        }
        store.waitForWrites();
    }
}
BENCHMARK(BM_ImportColorMapBackgroundStore)->Arg(2000)->Unit(benchmark::kMicrosecond);

// --- re-read -----------------------------------------------------------------------------

constexpr int ReadGreyCount = 131072;
constexpr int ReadIntervals = 100;

void classify(PanelScene& scene, int handlesPerInterval)
{
    std::mt19937 random(3);
    OXMSampleMaterial* material = scene.material();
    std::vector<int> borders{-1};
    std::vector<OXMenum> modes;
    std::vector<QByteArray> names;
    const int width = ReadGreyCount / ReadIntervals;
    for (int i = 0; i < ReadIntervals; ++i) {
        borders.push_back(i + 1 == ReadIntervals ? ReadGreyCount - 1 : (i + 1) * width - 1);
        modes.push_back(OXM::Enabled);
        names.push_back(QByteArray("Interval ") + QByteArray::number(i + 1));
    }
    std::vector<const char*> namePointers;
    for (const QByteArray& n : names) {
        namePointers.push_back(n.constData());
    }
    OXMValueArrayPropertyIF<int>::getInterface(material->getProperty(OXM::IntervalIndexList))
        ->initArray(0, int(borders.size()) - 1, borders.data());
    OXMValueArrayPropertyIF<OXMenum>::getInterface(material->getProperty(OXM::IntervalModeList))
        ->initArray(0, int(modes.size()) - 1, modes.data());
    OXMValueArrayPropertyIF<const char*>::getInterface(material->getProperty(OXM::IntervalNameList))
        ->initArray(0, int(namePointers.size()) - 1, namePointers.data());
    for (OXMenum id : {OXM::Opacity, OXM::AmbientRed, OXM::AmbientGreen, OXM::AmbientBlue}) {
        std::vector<Vector> list;
        for (int i = 0; i < ReadIntervals; ++i) {
            const float from = float(borders[size_t(i)] + 1);
            const float to = float(borders[size_t(i) + 1]);
            const std::vector<Vector> part =
                rampWithHandles(ReadGreyCount, handlesPerInterval, from, to, random, 1.0f);
            list.insert(list.end(), part.begin(), part.end());
        }
        writeList(scene.channel(id), list);
    }
}

void BM_UpdateObjectInfo(benchmark::State& state)
{
    const int handles = int(state.range(0));
    PanelScene scene(ReadGreyCount);
    if (!scene.panel) {
        state.SkipWithError("the scene could not be built");
        return;
    }
    const int reads = scene.panel->objectInfoReadCount();
    classify(scene, handles);
    if (!scene.awaitReread(reads)) {
        state.SkipWithError("the panel did not re-read the classification");
        return;
    }
    const OXWLUTObjectInfo* model = scene.panel->objectInfo();
    if (!model || model->intervalCount() != ReadIntervals ||
        model->interval(1)->handles(OXWLUTIntervalInfo::GreenChannel).size() < size_t(handles)) {
        state.SkipWithError("the classification was not read");
        return;
    }
    const bool withRepaint = state.range(1) != 0;
    PaintCounter paints;
    scene.panel->mLUTWorkArea->installEventFilter(&paints);
    for (auto _ : state) {
        scene.reread();
        if (withRepaint) {
            // The event loop's turns until the opacity editor has drawn the new model.
            const int before = paints.count;
            for (int turn = 0; turn < 10 && paints.count == before; ++turn) {
                QApplication::processEvents();
            }
        } else {
            state.PauseTiming();
            QApplication::processEvents();
            state.ResumeTiming();
        }
    }
    scene.panel->mLUTWorkArea->removeEventFilter(&paints);
    if (withRepaint && paints.count < int(state.iterations())) {
        state.SkipWithError("the editor was not repainted after every re-read");
    }
    state.counters["handles"] = double(ReadIntervals) * handles * 4;
}
// Second argument 1: with the repaint that follows in the event loop.
BENCHMARK(BM_UpdateObjectInfo)
    ->Args({250, 0})
    ->Args({1000, 0})
    ->Args({1000, 1})
    ->Unit(benchmark::kMillisecond);

// Baseline: copying the four host handle lists out of the host.
void BM_Baseline_ReadHostLists(benchmark::State& state)
{
    const int handles = int(state.range(0));
    PanelScene scene(ReadGreyCount);
    if (!scene.panel) {
        state.SkipWithError("the scene could not be built");
        return;
    }
    classify(scene, handles);
    for (auto _ : state) {
        size_t total = 0;
        for (OXMenum id : {OXM::Opacity, OXM::AmbientRed, OXM::AmbientGreen, OXM::AmbientBlue}) {
            total += OXMValueArrayPropertyIF<Vector>::getInterface(
                         scene.channel(id)->getProperty(OXM::LookupTableHandleList))
                         ->getArray()
                         .size();
        }
        benchmark::DoNotOptimize(total);
    }
}
BENCHMARK(BM_Baseline_ReadHostLists)->Arg(250)->Arg(1000)->Unit(benchmark::kMillisecond);
} // namespace

int main(int argc, char** argv)
{
    if (qEnvironmentVariableIsEmpty("QT_QPA_PLATFORM")) {
        qputenv("QT_QPA_PLATFORM", "offscreen");
    }
    QApplication app(argc, argv);
    benchmark::Initialize(&argc, argv);
    if (benchmark::ReportUnrecognizedArguments(argc, argv)) {
        return 1;
    }
    benchmark::RunSpecifiedBenchmarks();
    benchmark::Shutdown();
    return 0;
}
