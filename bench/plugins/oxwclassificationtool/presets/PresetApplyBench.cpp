// Applying a stored classification preset of 100 intervals with 1 000 handles per interval in
// each of the four curve channels the tool edits (opacity and the ambient red, green and blue:
// 100 000 handles per channel) to a 16-bit volume whose grey values run over 0 .. 65 535.
//
// Baseline of the same run: writing the same lists (the interval lists and the four handle
// lists as the preset yields them) directly into the material. Between them: reading the preset
// file (26 MB of JSON) into its record, the part of an apply before any conversion or write.
// Every iteration starts from the volume's default classification (not timed).

#include <OXWPresetClassificationHandler.h>

#include <OXMHistogram.h>
#include <OXMSampleGrid.h>
#include <OXMSampleMaterial.h>
#include <OXMSampleTransferSpec.h>
#include <OXMSceneNames.h>
#include <OXMVolumeRenderObject.h>

#include <benchmark/benchmark.h>

#include <QTemporaryDir>

#include <random>
#include <vector>

namespace {

constexpr int GreyCount = 65536;
constexpr int Intervals = 100;
constexpr int HandlesPerInterval = 1000;
const OXMenum Curves[] = {OXM::Opacity, OXM::AmbientRed, OXM::AmbientGreen, OXM::AmbientBlue};

using Handles = std::vector<OXMVector2<float>>;

struct Setting
{
    QTemporaryDir folder;
    OXMObjectPtr volumeObject;
    OXMVolumeRenderObject* volume = nullptr;
    std::unique_ptr<OXWPresetClassificationHandler> handler;
    // What applying the preset writes, for the baseline.
    std::vector<int> borders;
    std::vector<OXMenum> modes;
    std::vector<QByteArray> names;
    Handles curves[4];

    Setting()
    {
        OXMSceneNames::registerSceneClasses();
        auto* grid = new OXMSampleGrid;
        OXMObjectPtr hold(grid);
        std::vector<std::uint16_t> samples(GreyCount);
        for (int i = 0; i < GreyCount; ++i)
            samples[std::size_t(i)] = std::uint16_t(i);
        grid->setSamples(OXMVector3<int>(64, 64, GreyCount / 4096), OXM::UInt16, samples);
        volumeObject = OXMVolumeRenderObject::create(grid, "Bench");
        volume = static_cast<OXMVolumeRenderObject*>(volumeObject.get());
        handler = std::make_unique<OXWPresetClassificationHandler>(volume);
        handler->setHistogramObject(volume->getHistogram());
        handler->store().setDirectory(folder.path());
        shapeMaterial();
        handler->saveTargetAsPreset(QStringLiteral("Large"), OXM::UserPreset);
        handler->applyPresetToTarget(QStringLiteral("Large"), OXM::UserPreset);
        takeResult();
    }

    void shapeMaterial()
    {
        std::mt19937 random(7);
        std::uniform_real_distribution<float> value(0.0f, 1.0f);
        OXMSampleMaterial* m = volume->getMaterial();
        const float step = float(GreyCount) / float(Intervals * HandlesPerInterval);
        for (OXMenum id : Curves) {
            Handles curve;
            for (int k = 0; k < Intervals * HandlesPerInterval; ++k)
                curve.emplace_back(float(k) * step, value(random));
            m->getChannel(id)->setCurve(curve);
        }
        std::vector<int> b = {-1};
        std::vector<OXMenum> md;
        std::vector<const char*> nm;
        for (int i = 1; i <= Intervals; ++i) {
            b.push_back(i * GreyCount / Intervals - 1);
            md.push_back(i % 3 ? OXM::Enabled : OXM::Disabled);
            nm.push_back("Interval");
        }
        m->setArray(OXM::IntervalIndexList, b);
        m->setArray(OXM::IntervalModeList, md);
        m->setArray(OXM::IntervalNameList, nm);
    }

    void takeResult()
    {
        OXMSampleMaterial* m = volume->getMaterial();
        m->getArray(OXM::IntervalIndexList, borders);
        m->getArray(OXM::IntervalModeList, modes);
        std::vector<const char*> nm;
        m->getArray(OXM::IntervalNameList, nm);
        names.assign(nm.begin(), nm.end());
        for (int c = 0; c < 4; ++c)
            m->getChannel(Curves[c])->getArray(OXM::LookupTableHandleList, curves[c]);
    }

    void reset() { volume->getMaterial()->setDefaultClassification(0, GreyCount - 1); }
};

Setting& setting()
{
    static Setting s;
    return s;
}

void BM_Baseline_WriteListsDirectly(benchmark::State& state)
{
    Setting& s = setting();
    std::vector<const char*> names;
    for (const QByteArray& n : s.names)
        names.push_back(n.constData());
    for (auto _ : state) {
        state.PauseTiming();
        s.reset();
        state.ResumeTiming();
        OXMSampleMaterial* m = s.volume->getMaterial();
        m->setArray(OXM::IntervalIndexList, s.borders);
        m->setArray(OXM::IntervalModeList, s.modes);
        m->setArray(OXM::IntervalNameList, names);
        for (int c = 0; c < 4; ++c)
            m->getChannel(Curves[c])->setArray(OXM::LookupTableHandleList, s.curves[c]);
    }
}
BENCHMARK(BM_Baseline_WriteListsDirectly)->Unit(benchmark::kMillisecond);

void BM_ReadPresetFile(benchmark::State& state)
{
    Setting& s = setting();
    for (auto _ : state)
        benchmark::DoNotOptimize(
            s.handler->loadPreset(QStringLiteral("Large"), OXM::UserPreset, 0));
}
BENCHMARK(BM_ReadPresetFile)->Unit(benchmark::kMillisecond);

void BM_ApplyPreset(benchmark::State& state)
{
    Setting& s = setting();
    for (auto _ : state) {
        state.PauseTiming();
        s.reset();
        state.ResumeTiming();
        if (!s.handler->applyPresetToTarget(QStringLiteral("Large"), OXM::UserPreset))
            state.SkipWithError("the preset was not applied");
    }
}
BENCHMARK(BM_ApplyPreset)->Unit(benchmark::kMillisecond);

} // namespace
