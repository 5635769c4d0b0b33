// Cost of recording an undo step for a drag: 1 000 moves, each writing a 1 000-handle
// OXMVector2<float> array, inside one user action; against the same writes with no action
// open (the recorder installed but idle) and with no recorder at all.
//
// Counters: per_move = time per write; step_entries = entries the step keeps; step_bytes =
// heap bytes the stored step holds (measured by counting allocations).

#include <OXMObject.h>
#include <OXMValueArrayOP.h>
#include <OXMVector2.h>
#include <OXWApplication.h>
#include <OXWUndoStack.h>

#include <benchmark/benchmark.h>

#include <atomic>
#include <cstdlib>
#include <malloc.h>
#include <new>
#include <vector>

namespace {

std::atomic<long long> gLiveBytes{0};

void* allocate(std::size_t size)
{
    void* p = std::malloc(size ? size : 1);
    if (!p)
        std::abort();
    gLiveBytes.fetch_add(static_cast<long long>(malloc_usable_size(p)), std::memory_order_relaxed);
    return p;
}

void release(void* p)
{
    if (!p)
        return;
    gLiveBytes.fetch_sub(static_cast<long long>(malloc_usable_size(p)), std::memory_order_relaxed);
    std::free(p);
}

} // namespace

void* operator new(std::size_t size)
{
    return allocate(size);
}
void* operator new[](std::size_t size)
{
    return allocate(size);
}
void operator delete(void* p) noexcept
{
    release(p);
}
void operator delete[](void* p) noexcept
{
    release(p);
}
void operator delete(void* p, std::size_t) noexcept
{
    release(p);
}
void operator delete[](void* p, std::size_t) noexcept
{
    release(p);
}

namespace {

constexpr int Moves = 1000;
constexpr int Handles = 1000;

class Curve : public OXMObject
{
public:
    Curve()
    {
        setAutoDelete(false);
        addProperty(OXM::LookupTableHandleList, &handles);
    }
    OXMValueArrayOP<OXMVector2<float>> handles;
};

// One drag: every move shifts all handles.
void drag(Curve& curve, std::vector<OXMVector2<float>>& buffer, int base)
{
    for (int move = 0; move < Moves; ++move) {
        const float y = float(base + move) * 1e-3f;
        for (int i = 0; i < Handles; ++i)
            buffer[std::size_t(i)] = {float(i), y};
        curve.handles.initArray(0, Handles - 1, buffer.data());
    }
}

void setPerMove(benchmark::State& state)
{
    state.counters["per_move"] =
        benchmark::Counter(double(state.iterations()) * Moves,
                           benchmark::Counter::kIsRate | benchmark::Counter::kInvert);
}

void BM_DragInUserAction(benchmark::State& state)
{
    OXWApplication app;
    OXWUndoStack& stack = *app.undoStack();
    Curve curve;
    std::vector<OXMVector2<float>> buffer(Handles);
    int base = 0;
    long long stepBytes = 0;
    int entries = 0;
    for (auto _ : state) {
        const long long before = gLiveBytes.load();
        const int id = app.userActionBegin("Move handles");
        drag(curve, buffer, base);
        app.userActionEnd(id);
        base += Moves;
        state.PauseTiming();
        stepBytes = gLiveBytes.load() - before;
        entries = stack.entryCount();
        stack.clear();
        state.ResumeTiming();
    }
    setPerMove(state);
    state.counters["step_entries"] = entries;
    state.counters["step_bytes"] = double(stepBytes);
}
BENCHMARK(BM_DragInUserAction)->Unit(benchmark::kMillisecond);

void BM_DragOutsideUserAction(benchmark::State& state)
{
    OXWApplication app;
    Curve curve;
    std::vector<OXMVector2<float>> buffer(Handles);
    int base = 0;
    for (auto _ : state) {
        drag(curve, buffer, base);
        base += Moves;
    }
    setPerMove(state);
    state.counters["step_entries"] = app.undoStack()->entryCount();
}
BENCHMARK(BM_DragOutsideUserAction)->Unit(benchmark::kMillisecond);

void BM_DragWithoutRecorder(benchmark::State& state)
{
    Curve curve;
    std::vector<OXMVector2<float>> buffer(Handles);
    int base = 0;
    for (auto _ : state) {
        drag(curve, buffer, base);
        base += Moves;
    }
    setPerMove(state);
}
BENCHMARK(BM_DragWithoutRecorder)->Unit(benchmark::kMillisecond);

} // namespace
