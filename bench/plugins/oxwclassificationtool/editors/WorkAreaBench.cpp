// The opacity editor on a large classification: a 1 600 x 300 picture of a 65 536-bin
// histogram with 20 intervals and 1 000 opacity handles. Baseline: filling the same buffer.

#include "WorkAreaFixture.h"

#include <benchmark/benchmark.h>

#include <QApplication>
#include <QPixmap>

#include <memory>
#include <random>

namespace {

constexpr int Cells = 65536;
constexpr int Width = 1600;
constexpr int Height = 300;
constexpr int Intervals = 20;
constexpr int HandlesPerInterval = 50;

std::unique_ptr<workarea_test::WorkAreaFixture> makeFixture()
{
    auto f = std::make_unique<workarea_test::WorkAreaFixture>(Cells, Width, Height);
    std::mt19937 random(11);
    std::uniform_real_distribution<float> counts(0.0f, 5000.0f);
    std::vector<float> bins(Cells);
    for (float& b : bins)
        b = counts(random);
    f->setBins(bins);
    for (int i = 1; i < Intervals; ++i)
        f->model->newInterval(float(i) / Intervals, false);
    std::uniform_real_distribution<float> opacity(0.0f, 1.0f);
    for (int i = 0; i < f->model->intervalCount(); ++i) {
        OXWLUTIntervalInfo::HandleList handles;
        for (int k = 0; k < HandlesPerInterval; ++k)
            handles.emplace_back(float(k) / (HandlesPerInterval - 1), opacity(random));
        f->interval(i)->setReferenceHandles(OXWLUTIntervalInfo::OpacityChannel, handles);
    }
    f->workArea->updateAll();
    return f;
}

void BM_BaselineFillBuffer(benchmark::State& state)
{
    QPixmap buffer(Width, Height);
    for (auto _ : state) {
        buffer.fill(Qt::white);
        benchmark::DoNotOptimize(buffer.cacheKey());
    }
}

void BM_Render(benchmark::State& state)
{
    auto f = makeFixture();
    for (auto _ : state) {
        f->workArea->render();
        benchmark::DoNotOptimize(f->workArea->buffer().cacheKey());
    }
}

// One mouse move of a handle drag: the model's moveHandle, the change signal and the render
// it causes, alternating between two heights so every step changes the curve.
void BM_HandleDragStep(benchmark::State& state)
{
    auto f = makeFixture();
    const int target = Intervals / 2;
    const int handle = HandlesPerInterval / 2;
    const QPoint start = f->handlePoint(target, handle);
    const auto heightOf = [&] {
        return f->interval(target)->handles(OXWLUTIntervalInfo::OpacityChannel)[handle].y;
    };
    const float before = heightOf();
    f->press(start);
    f->move(start + QPoint(0, 40));
    if (heightOf() == before) {
        state.SkipWithError("the drag did not move the handle");
        return;
    }
    int step = 0;
    for (auto _ : state) {
        f->move(start + QPoint(0, (step++ & 1) ? 40 : -40));
    }
    f->release(start);
}

} // namespace

BENCHMARK(BM_BaselineFillBuffer)->Unit(benchmark::kMicrosecond);
BENCHMARK(BM_Render)->Unit(benchmark::kMicrosecond);
BENCHMARK(BM_HandleDragStep)->Unit(benchmark::kMicrosecond);

int main(int argc, char** argv)
{
    if (qEnvironmentVariableIsEmpty("QT_QPA_PLATFORM"))
        qputenv("QT_QPA_PLATFORM", "offscreen");
    QApplication app(argc, argv);
    benchmark::Initialize(&argc, argv);
    if (benchmark::ReportUnrecognizedArguments(argc, argv))
        return 1;
    benchmark::RunSpecifiedBenchmarks();
    benchmark::Shutdown();
    return 0;
}
