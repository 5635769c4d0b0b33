// drawHistogram of 65 536 bins into a 2 000 x 300 image, against two baselines of the same
// run: a plain fill of the image and one pass summing the bins.

#include "OXWPainter.h"

#include <OXMObject.h>
#include <OXMValueArrayOP.h>

#include <QImage>

#include <benchmark/benchmark.h>

#include <cmath>
#include <vector>

namespace {
constexpr int BinCount = 65536;
constexpr int Width = 2000;
constexpr int Height = 300;

std::vector<float> makeBins()
{
    std::vector<float> bins(BinCount);
    for (int i = 0; i < BinCount; ++i)
        bins[std::size_t(i)] = 1000.0f * (1.0f + std::sin(float(i) * 0.001f)) + float(i % 7);
    return bins;
}

class Result : public OXMObject
{
public:
    Result()
    {
        addProperty(OXM::Histogram, &histogram);
        histogram.setArray(makeBins());
    }
    OXMValueArrayOP<float> histogram;
};

const QRectF Range(QPointF(0, 0), QPointF(BinCount, 2500));

void BM_DrawHistogramFromObject(benchmark::State& state)
{
    Result result;
    QImage image(Width, Height, QImage::Format_RGB32);
    image.fill(Qt::white);
    for (auto _ : state) {
        OXWPainter p(&image);
        p.setPen(QColor(163, 163, 163));
        p.setBrush(QColor(163, 163, 163));
        benchmark::DoNotOptimize(p.drawHistogram(image.rect(), &result, Range, -1.0,
                                                 OXWPainter::Average(), OXWPainter::Bar()));
    }
    state.SetItemsProcessed(state.iterations() * BinCount);
}
BENCHMARK(BM_DrawHistogramFromObject)->Unit(benchmark::kMicrosecond);

void BM_DrawHistogramFromArray(benchmark::State& state)
{
    const std::vector<float> bins = makeBins();
    QImage image(Width, Height, QImage::Format_RGB32);
    image.fill(Qt::white);
    for (auto _ : state) {
        OXWPainter p(&image);
        p.setPen(QColor(163, 163, 163));
        p.setBrush(QColor(163, 163, 163));
        benchmark::DoNotOptimize(p.drawHistogram(image.rect(), bins.data(), BinCount, Range, -1.0,
                                                 OXWPainter::Average(), OXWPainter::Bar()));
    }
    state.SetItemsProcessed(state.iterations() * BinCount);
}
BENCHMARK(BM_DrawHistogramFromArray)->Unit(benchmark::kMicrosecond);

// Baseline: filling the same image once.
void BM_BaselineFillImage(benchmark::State& state)
{
    QImage image(Width, Height, QImage::Format_RGB32);
    for (auto _ : state) {
        image.fill(Qt::white);
        benchmark::ClobberMemory();
    }
}
BENCHMARK(BM_BaselineFillImage)->Unit(benchmark::kMicrosecond);

// Baseline: one pass summing the bins.
void BM_BaselineSumBins(benchmark::State& state)
{
    const std::vector<float> bins = makeBins();
    for (auto _ : state) {
        float sum = 0.0f;
        for (float v : bins)
            sum += v;
        benchmark::DoNotOptimize(sum);
    }
    state.SetItemsProcessed(state.iterations() * BinCount);
}
BENCHMARK(BM_BaselineSumBins)->Unit(benchmark::kMicrosecond);
} // namespace
