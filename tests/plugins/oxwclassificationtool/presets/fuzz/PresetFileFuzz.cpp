// libFuzzer target of the classification preset file reader: any byte string is read as an
// object document, then stored as a preset file, listed and applied by the classification preset
// handler to a small volume (16-bit grey values 100 .. 400). Nothing may crash, leak or run into
// undefined behaviour; whatever is applied leaves finite curves.
//
// OXW_PRESET_FUZZ_SEED=<folder>: the target first saves the volume's classification there, once
// relative and once absolute with shared diffuse colours, as seeds of a corpus.

#include <OXWPresetClassificationHandler.h>

#include <OXMError.h>
#include <OXMHistogram.h>
#include <OXMObjectSerializer.h>
#include <OXMSampleGrid.h>
#include <OXMSampleMaterial.h>
#include <OXMSampleTransferSpec.h>
#include <OXMSceneNames.h>
#include <OXMVolumeRenderObject.h>

#include <QByteArray>
#include <QDir>
#include <QFile>
#include <QTemporaryDir>

#include <cmath>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <memory>
#include <vector>

// Qt 5.15's JSON parser (QJsonDocument::fromJson) leaks the containers it was building when it
// meets an error inside nested arrays (a control character in a string, for instance). The leak
// is Qt's; it is suppressed by name, which takes full stacks of the allocations
// (ASAN_OPTIONS=fast_unwind_on_malloc=0: Qt is built without frame pointers). Fuzzing runs fast
// with -detect_leaks=0; the corpus it finds is then replayed with full stacks and leak checks.
extern "C" const char* __lsan_default_suppressions()
{
    return "leak:QJsonDocument::fromJson\n";
}

namespace {

void require(bool condition)
{
    if (!condition)
        std::abort();
}

struct Setting
{
    QTemporaryDir folder;
    OXMObjectPtr volume;
    std::unique_ptr<OXWPresetClassificationHandler> handler;

    Setting()
    {
        OXMSceneNames::registerSceneClasses();
        OXMError::addHandler([](const OXMError::Message&) {}); // skipped files are expected
        auto* grid = new OXMSampleGrid;
        OXMObjectPtr hold(grid);
        std::vector<std::uint16_t> samples;
        for (int i = 0; i < 8 * 8 * 8; ++i)
            samples.push_back(std::uint16_t(100 + (i * 37) % 301));
        grid->setSamples(OXMVector3<int>(8, 8, 8), OXM::UInt16, samples);
        volume = OXMVolumeRenderObject::create(grid, "Fuzz");
        handler = std::make_unique<OXWPresetClassificationHandler>(volume.get());
        handler->setHistogramObject(
            static_cast<OXMVolumeRenderObject*>(volume.get())->getHistogram());
        handler->store().setDirectory(folder.path());
    }
    OXMSampleMaterial* material() const
    {
        return static_cast<OXMVolumeRenderObject*>(volume.get())->getMaterial();
    }
    void writeSeeds(const QString& seeds)
    {
        QDir().mkpath(seeds);
        handler->saveTargetAsPreset(QStringLiteral("relative"), OXM::UserPreset);
        material()
            ->getChannel(OXM::DiffuseRed)
            ->setReference(material()->getChannel(OXM::AmbientRed));
        handler->setAbsolutePreset(true);
        handler->saveTargetAsPreset(QStringLiteral("absolute"), OXM::UserPreset);
        for (const QString& name : {QStringLiteral("relative"), QStringLiteral("absolute")}) {
            handler->exportPreset(name, seeds + QLatin1Char('/') + name +
                                            QLatin1String(OXWPresetStore::Suffix));
            handler->deletePreset(name, OXM::UserPreset);
        }
    }
};

Setting& setting()
{
    static Setting s;
    return s;
}

void requireFiniteCurves(const OXMSampleMaterial& material)
{
    for (OXMenum id : OXWPresetClassificationHandler::channelTable()) {
        std::vector<OXMVector2<float>> handles;
        material.getChannel(id)->getArray(OXM::LookupTableHandleList, handles);
        for (const OXMVector2<float>& h : handles)
            require(std::isfinite(h.x) && std::isfinite(h.y));
    }
}

} // namespace

extern "C" int LLVMFuzzerInitialize(int*, char***)
{
    const QByteArray seeds = qgetenv("OXW_PRESET_FUZZ_SEED");
    if (!seeds.isEmpty())
        setting().writeSeeds(QString::fromLocal8Bit(seeds));
    return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    Setting& s = setting();
    const QByteArray bytes(reinterpret_cast<const char*>(data), int(size));
    OXMObjectSerializer::Document document;
    require(OXMObjectSerializer::read(bytes, document) == bool(document.root));

    QFile file(s.folder.filePath(QStringLiteral("input.oxwpreset")));
    require(file.open(QIODevice::WriteOnly | QIODevice::Truncate));
    file.write(bytes);
    file.close();
    QStringList names;
    s.handler->getPresetList(names, OXM::UserPreset);
    require(names.size() <= 1);
    for (const QString& name : names) {
        s.handler->applyPresetToTarget(name, OXM::UserPreset);
        requireFiniteCurves(*s.material());
        s.material()->setDefaultClassification(100, 400);
    }
    return 0;
}
