// Cost of a property write with change delivery. Baselines in the same run: the same write
// with no listener, and with 10 000 unrelated objects alive (the cost must not depend on it).
#include "OXMObject.h"
#include "OXMObjectIOCPtr.h"
#include "OXMSingleValueOP.h"
#include "OXMValueArrayOP.h"
#include "OXMVector2.h"

#include <benchmark/benchmark.h>

#include <memory>
#include <vector>

namespace {

class Counter : public OXMIOC
{
public:
    void iocCallback(Message& m) override { count += m.getPropertyID().toInt(); }
    long long count = 0;
};

class Channel : public OXMObject
{
public:
    Channel()
    {
        addProperty(OXM::Scale, &scale);
        addProperty(OXM::LookupTableHandleList, &handles);
    }
    OXMSingleValueOP<float> scale;
    OXMValueArrayOP<OXMVector2<float>> handles;
};

struct Fixture
{
    Fixture(int listenerCount, int unrelatedObjects)
        : listeners(std::size_t(listenerCount)), unrelated(std::size_t(unrelatedObjects))
    {
        for (auto& l : listeners)
            ptrs.emplace_back(std::make_unique<OXMObjectIOCPtr>(&channel, &l));
        for (auto& o : unrelated)
            o = std::make_unique<Channel>();
    }
    Channel channel;
    std::vector<Counter> listeners;
    std::vector<std::unique_ptr<OXMObjectIOCPtr>> ptrs;
    std::vector<std::unique_ptr<Channel>> unrelated;
};

void BM_FloatWrite(benchmark::State& state)
{
    Fixture f(int(state.range(0)), int(state.range(1)));
    float v = 0.0f;
    for (auto _ : state) {
        v += 1.0f;
        benchmark::DoNotOptimize(f.channel.scale.setValue(v));
    }
    state.counters["listeners"] = double(state.range(0));
    state.counters["objects"] = double(state.range(1));
}
BENCHMARK(BM_FloatWrite)->Args({0, 0})->Args({10, 0})->Args({10, 10000});

void BM_InitArray10k(benchmark::State& state)
{
    Fixture f(int(state.range(0)), int(state.range(1)));
    std::vector<OXMVector2<float>> a(10000), b(10000);
    for (int i = 0; i < 10000; ++i) {
        a[std::size_t(i)] = {float(i) / 10000.0f, 0.5f};
        b[std::size_t(i)] = {float(i) / 10000.0f, 0.25f};
    }
    bool flip = false;
    for (auto _ : state) {
        flip = !flip; // alternate, so that every write changes the value
        const auto& items = flip ? a : b;
        benchmark::DoNotOptimize(f.channel.handles.initArray(0, 9999, items.data()));
    }
    state.SetItemsProcessed(state.iterations() * 10000);
    state.counters["listeners"] = double(state.range(0));
    state.counters["objects"] = double(state.range(1));
}
BENCHMARK(BM_InitArray10k)->Args({0, 0})->Args({10, 0})->Args({10, 10000});

} // namespace
