// Histogram of a 512³ 16-bit CT-like volume (OXM::Calculate of a histogram object, two
// workers) against two baselines in the same run, each one thread reading the same buffer:
// a plain summing read (one accumulator, a scalar loop) and a memory-bandwidth read (eight
// independent accumulators, a loop the compiler vectorises). The calculation should cost at
// most 1.5 times the plain read.
#include "OXMHistogram.h"
#include "OXMHistogramCalculator.h"
#include "OXMObjectPtr.h"
#include "OXMSampleGrid.h"
#include "OXMScenePhantom.h"
#include "OXMVolumeRenderObject.h"

#include <benchmark/benchmark.h>

#include <cstdint>
#include <numeric>
#include <vector>

namespace {

constexpr int Size = 512;

// The phantom of 128³ tiled 4 × 4 × 4 times: CT-like value distribution at 512³ without the
// cost of generating it voxel by voxel.
const std::vector<std::uint16_t>& volume()
{
    static const std::vector<std::uint16_t> samples = [] {
        const int s = 128;
        const std::vector<std::uint16_t> tile = OXMScenePhantom::samples16(s);
        std::vector<std::uint16_t> v(std::size_t(Size) * Size * Size);
        for (int z = 0; z < Size; ++z)
            for (int y = 0; y < Size; ++y) {
                const std::uint16_t* src =
                    tile.data() + (std::size_t(z % s) * s + std::size_t(y % s)) * s;
                std::uint16_t* dst = v.data() + (std::size_t(z) * Size + std::size_t(y)) * Size;
                for (int x = 0; x < Size; x += s)
                    std::copy(src, src + s, dst + x);
            }
        return v;
    }();
    return samples;
}

void BM_PlainSummingRead(benchmark::State& state)
{
    const std::vector<std::uint16_t>& v = volume();
    for (auto _ : state) {
        std::uint64_t sum = 0;
        for (std::uint16_t x : v)
            sum += x;
        benchmark::DoNotOptimize(sum);
    }
    state.SetBytesProcessed(std::int64_t(state.iterations()) * std::int64_t(v.size() * 2));
}
BENCHMARK(BM_PlainSummingRead)->Unit(benchmark::kMillisecond)->UseRealTime();

// Sums the buffer in eight interleaved lanes: no lane waits for another, so the compiler
// turns the loop into vector additions and the read runs at the memory's pace.
std::uint64_t laneSum(const std::vector<std::uint16_t>& v)
{
    constexpr std::size_t Lanes = 8;
    std::uint64_t lane[Lanes] = {};
    const std::size_t whole = v.size() / Lanes * Lanes;
    for (std::size_t i = 0; i < whole; i += Lanes)
        for (std::size_t k = 0; k < Lanes; ++k)
            lane[k] += v[i + k];
    std::uint64_t sum = std::accumulate(v.begin() + std::ptrdiff_t(whole), v.end(), 0ULL);
    for (std::uint64_t l : lane)
        sum += l;
    return sum;
}

void BM_BandwidthRead(benchmark::State& state)
{
    const std::vector<std::uint16_t>& v = volume();
    for (auto _ : state) {
        std::uint64_t sum = laneSum(v);
        benchmark::DoNotOptimize(sum);
    }
    state.SetBytesProcessed(std::int64_t(state.iterations()) * std::int64_t(v.size() * 2));
}
BENCHMARK(BM_BandwidthRead)->Unit(benchmark::kMillisecond)->UseRealTime();

void BM_HistogramCalculate(benchmark::State& state)
{
    auto* grid = new OXMSampleGrid;
    grid->setSamples({Size, Size, Size}, OXM::UInt16, volume());
    OXMObjectPtr hold(new OXMVolumeRenderObject);
    auto* object = static_cast<OXMVolumeRenderObject*>(hold.get());
    object->setSampleGrid(grid);
    auto* histograms = OXMValueArrayPropertyIF<OXMObjectLink>::getInterface(
        object->getProperty(OXM::HistogramList));
    for (auto _ : state) {
        // A histogram that has never counted, so that Calculate counts every voxel rather
        // than finding its result up to date.
        state.PauseTiming();
        const OXMObjectLink fresh(new OXMHistogram);
        OXMHistogram* histogram = nullptr;
        if (histograms && histograms->initArray(0, 0, &fresh))
            histogram = object->getHistogram();
        const bool due = histogram && histogram->checkExecute(OXM::Calculate, nullptr, nullptr);
        state.ResumeTiming();
        if (!due) {
            state.SkipWithError("no histogram due for calculation");
            break;
        }
        if (!histogram->execute(OXM::Calculate)) {
            state.SkipWithError("Calculate failed");
            break;
        }
    }
    state.SetBytesProcessed(std::int64_t(state.iterations()) * std::int64_t(volume().size() * 2));
}
BENCHMARK(BM_HistogramCalculate)->Unit(benchmark::kMillisecond)->UseRealTime();

} // namespace
