// Costs of the model operations that run on every mouse move of a drag.
//
// Baseline: copying the four handle lists of an interval, the least any refit has to do.
// The refit, the border drag and the split are reported against it; all scale with the
// number of handles per channel (the range argument), and the refit and the split must stay
// linear.

#include <OXWLUTIntervalInfo.h>
#include <OXWLUTObjectInfo.h>

#include <benchmark/benchmark.h>

#include <memory>
#include <random>

namespace {

constexpr float CellCount = 65536.0f;
constexpr int Channels = 4;

using HandleList = OXWLUTIntervalInfo::HandleList;

// A curve with `inner` handles spread evenly over the interval, random values.
HandleList makeCurve(int channel, int inner, std::mt19937& random)
{
    std::uniform_real_distribution<float> value(0.0f, channel == 1 ? 1.0f : 255.0f);
    HandleList curve;
    curve.reserve(size_t(inner) + 2);
    for (int i = 0; i < inner + 2; ++i) {
        curve.emplace_back(float(i) / float(inner + 1), value(random));
    }
    return curve;
}

void shapeInterval(OXWLUTIntervalInfo& interval, int inner, std::mt19937& random)
{
    for (int channel = 1; channel <= Channels; ++channel) {
        interval.setReferenceHandles(channel, makeCurve(channel, inner, random));
    }
}

std::unique_ptr<OXWLUTObjectInfo> makeObject()
{
    return std::make_unique<OXWLUTObjectInfo>(-0.5f, CellCount - 0.5f, 0.0f, 1.0f, CellCount, 0.0f,
                                              0.0f);
}

// Two intervals [0, 0.5] and [0.5, 1], each with `inner` handles per channel.
std::unique_ptr<OXWLUTObjectInfo> makeTwoIntervals(int inner)
{
    auto object = makeObject();
    object->newInterval(0.5f, true);
    std::mt19937 random(7);
    shapeInterval(*object->interval(0), inner, random);
    shapeInterval(*object->interval(1), inner, random);
    return object;
}

void BM_BaselineCopyHandles(benchmark::State& state)
{
    const int inner = int(state.range(0));
    std::mt19937 random(7);
    HandleList reference[Channels];
    HandleList fitted[Channels];
    for (int channel = 1; channel <= Channels; ++channel) {
        reference[channel - 1] = makeCurve(channel, inner, random);
    }
    for (auto _ : state) {
        for (int c = 0; c < Channels; ++c) {
            fitted[c] = reference[c];
        }
        benchmark::DoNotOptimize(fitted[0].data());
        benchmark::ClobberMemory();
    }
    state.SetComplexityN(inner);
}

void BM_SetBorders(benchmark::State& state)
{
    const int inner = int(state.range(0));
    auto object = makeObject();
    OXWLUTIntervalInfo* interval = object->interval(0);
    std::mt19937 random(7);
    shapeInterval(*interval, inner, random);
    // Alternate between two ranges so every call refits all four channels. The narrower one
    // squeezes the curve, so collisions are resolved too.
    const float ranges[2][2] = {{0.0f, 1.0f}, {0.25f, 0.2578125f}};
    int which = 0;
    for (auto _ : state) {
        benchmark::DoNotOptimize(interval->setBorders(ranges[which][0], ranges[which][1]));
        which ^= 1;
    }
    state.SetComplexityN(inner);
}

void BM_SetBordersNoCollisions(benchmark::State& state)
{
    const int inner = int(state.range(0));
    auto object = makeObject();
    OXWLUTIntervalInfo* interval = object->interval(0);
    std::mt19937 random(7);
    shapeInterval(*interval, inner, random);
    const float ranges[2][2] = {{0.0f, 1.0f}, {0.0f, 0.75f}};
    int which = 0;
    for (auto _ : state) {
        benchmark::DoNotOptimize(interval->setBorders(ranges[which][0], ranges[which][1]));
        which ^= 1;
    }
    state.SetComplexityN(inner);
}

// A drag of the border between two shaped intervals over 1 000 mouse moves, across a
// quarter of the axis and back, then the clean-up at release.
void BM_BorderDrag1000Steps(benchmark::State& state)
{
    const int inner = int(state.range(0));
    auto object = makeTwoIntervals(inner);
    for (auto _ : state) {
        for (int step = 0; step < 1000; ++step) {
            const float phase = float(step < 500 ? step : 1000 - step) / 500.0f;
            object->moveLeftBorder(1, 0.5f - 0.25f * phase);
        }
        object->moveLeftBorder(1, 0.5f);
        benchmark::DoNotOptimize(object->removeEmptyIntervals());
    }
    state.SetComplexityN(inner);
}

// Splitting a shaped interval in the middle; the object is rebuilt outside the timing. Both
// parts get their share of the handles of all four channels, so the split is linear in them.
void BM_NewInterval(benchmark::State& state)
{
    const int inner = int(state.range(0));
    for (auto _ : state) {
        state.PauseTiming();
        auto object = makeObject();
        std::mt19937 random(7);
        shapeInterval(*object->interval(0), inner, random);
        state.ResumeTiming();
        benchmark::DoNotOptimize(object->newInterval(0.5f, true));
        state.PauseTiming();
        object.reset();
        state.ResumeTiming();
    }
    state.SetComplexityN(inner);
}

} // namespace

BENCHMARK(BM_BaselineCopyHandles)->Arg(250)->Arg(1000)->Arg(4000)->Complexity();
BENCHMARK(BM_SetBorders)->Arg(250)->Arg(1000)->Arg(4000)->Complexity();
BENCHMARK(BM_SetBordersNoCollisions)->Arg(250)->Arg(1000)->Arg(4000)->Complexity();
BENCHMARK(BM_BorderDrag1000Steps)->Arg(1000)->Unit(benchmark::kMillisecond);
// From 250 to 4 000 handles, doubling: the fitted growth must stay linear (O(N)).
BENCHMARK(BM_NewInterval)
    ->Arg(250)
    ->Arg(500)
    ->Arg(1000)
    ->Arg(2000)
    ->Arg(4000)
    ->Unit(benchmark::kMicrosecond)
    ->Complexity();
