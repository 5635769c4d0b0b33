// Scene documents saved and read back: every property equal, the voxels and masks equal, the
// files they refer to found, moved, missing or changed, and documents that are refused.

#include "OXWSceneDocument.h"
#include "OXWVolumeFile.h"

#include <OXMObjectLink.h>
#include <OXMObjectSerializer.h>
#include <OXMRegionOfInterest.h>
#include <OXMSampleGrid.h>
#include <OXMSampleMaterial.h>
#include <OXMScene.h>
#include <OXMSceneNames.h>
#include <OXMScenePhantom.h>
#include <OXMVolumeRenderObject.h>

#include <QDir>
#include <QFile>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QProcess>
#include <QTemporaryDir>
#include <QThread>

#include <gtest/gtest.h>

#include <csignal>
#include <cstring>

namespace {

constexpr int Size = 24;

// The JSON of every property of the scene, without the numbers that count changes in this
// process (they are new after reading).
QJsonObject withoutVersions(QJsonObject node)
{
    for (const QString& key : node.keys()) {
        if (key.endsWith(QLatin1String("DataVersion")) ||
            key.endsWith(QLatin1String("MaskVersion")))
            node.remove(key);
        else if (node.value(key).isObject())
            node[key] = withoutVersions(node.value(key).toObject());
        else if (node.value(key).isArray()) {
            QJsonArray items = node.value(key).toArray();
            for (int i = 0; i < items.size(); ++i) {
                if (items[i].isObject())
                    items[i] = withoutVersions(items[i].toObject());
            }
            node[key] = items;
        }
    }
    return node;
}

QJsonObject propertiesOf(const OXMObject& scene)
{
    QByteArray json;
    EXPECT_TRUE(OXMObjectSerializer::write(scene, QJsonObject(), json));
    return withoutVersions(QJsonDocument::fromJson(json).object());
}

class SceneDocument : public ::testing::Test
{
protected:
    void SetUp() override
    {
        OXMSceneNames::registerSceneClasses();
        ASSERT_TRUE(dir.isValid());
        ASSERT_TRUE(QDir().mkpath(dir.filePath("volumes")) && QDir().mkpath(dir.filePath("work")));
        // A volume of a file: the phantom's voxels saved as NRRD by a first document.
        OXMObjectPtr seed(new OXMScene);
        static_cast<OXMScene*>(seed.get())
            ->addVolume(OXMVolumeRenderObject::create(OXMScenePhantom::createGrid16(Size)));
        QString error;
        ASSERT_TRUE(OXWSceneDocument::save(*static_cast<OXMScene*>(seed.get()),
                                           dir.filePath("seed.oxwscene"), error))
            << error.toStdString();
        ASSERT_TRUE(QFile::rename(dir.filePath("seed.data/volume0.nrrd"), filePath()));
        const OXWVolumeFile::Result read = OXWVolumeFile::read(filePath());
        ASSERT_NE(read.volume, nullptr) << read.error.toStdString();
        fromFile = read.volume;
        fromFile->setValue<const char*>(OXM::Name, "From a file");
        ASSERT_TRUE(theScene().addVolume(fromFile));
        // A volume made in memory, with a region of its voxels above 100.
        inMemory = OXMVolumeRenderObject::create(OXMScenePhantom::createGrid8(Size), "In memory");
        ASSERT_TRUE(theScene().addVolume(inMemory));
        region = new OXMRegionOfInterest;
        ASSERT_TRUE(inMemory->appendLink(OXM::RegionOfInterestList, OXMObjectLink(region)));
        const OXMSampleGrid* grid = inMemory->getSampleGrid();
        std::vector<std::uint8_t> mask(grid->getData(), grid->getData() + grid->getByteCount());
        for (std::uint8_t& m : mask)
            m = m > 100;
        ASSERT_TRUE(region->setMask(mask));
        ASSERT_TRUE(region->initDefaults());
        // A classification of its own.
        inMemory->getMaterial()->setArray(OXM::IntervalIndexList, std::vector<int>{10, 90, 200});
    }

    OXMScene& theScene() { return *static_cast<OXMScene*>(scene.get()); }
    QString filePath() const { return dir.filePath("volumes/ct.nrrd"); }
    QString documentPath() const { return dir.filePath("work/scene.oxwscene"); }
    static OXMVolumeRenderObject* volumeOf(const OXMObject& scene, int i)
    {
        const auto links = OXMObject::arrayOf<OXMObjectLink>(&scene, OXM::VolumeRenderObjectList);
        return dynamic_cast<OXMVolumeRenderObject*>(links.at(std::size_t(i)).getLink());
    }
    bool save(QString& error) { return OXWSceneDocument::save(theScene(), documentPath(), error); }
    static QByteArray contents(const QString& path)
    {
        QFile file(path);
        return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
    }

    QTemporaryDir dir;
    OXMObjectPtr scene{new OXMScene};
    OXMVolumeRenderObject* fromFile = nullptr;
    OXMVolumeRenderObject* inMemory = nullptr;
    OXMRegionOfInterest* region = nullptr;
};

} // namespace

// Read back, every property, voxel and mask is equal; the file is referred to relative to the
// document, the voxels made here lie beside it. A save that fails (a folder stands where the
// in-memory volume's file goes) leaves the previous document as it was.
TEST_F(SceneDocument, ReadBackEveryPropertyVoxelAndMaskIsEqual)
{
    QString error;
    ASSERT_TRUE(save(error)) << error.toStdString();
    const OXMObjectPtr read = OXWSceneDocument::read(documentPath(), error);
    ASSERT_NE(read.get(), nullptr) << error.toStdString();
    EXPECT_EQ(propertiesOf(*read), propertiesOf(*scene));
    for (int i : {0, 1}) {
        const OXMSampleGrid* a = volumeOf(*scene, i)->getSampleGrid();
        const OXMSampleGrid* b = volumeOf(*read, i)->getSampleGrid();
        ASSERT_EQ(a->getByteCount(), b->getByteCount());
        EXPECT_EQ(std::memcmp(a->getData(), b->getData(), a->getByteCount()), 0) << "volume " << i;
    }
    const auto regions =
        OXMObject::arrayOf<OXMObjectLink>(volumeOf(*read, 1), OXM::RegionOfInterestList);
    ASSERT_EQ(regions.size(), 1u);
    EXPECT_EQ(static_cast<OXMRegionOfInterest*>(regions[0].getLink())->getMask(),
              region->getMask());
    const QByteArray before = contents(documentPath());
    const QJsonArray volumes = QJsonDocument::fromJson(before).object()["volumes"].toArray();
    EXPECT_EQ(volumes[0].toObject()["file"].toString(), "../volumes/ct.nrrd");
    EXPECT_EQ(volumes[1].toObject()["data"].toString(), "scene.data/volume1.nrrd");

    ASSERT_TRUE(QFile::remove(dir.filePath("work/scene.data/volume1.nrrd")));
    ASSERT_TRUE(QDir().mkpath(dir.filePath("work/scene.data/volume1.nrrd")));
    inMemory->getMaterial()->setArray(OXM::IntervalIndexList, std::vector<int>{10, 200});
    EXPECT_FALSE(save(error));
    EXPECT_TRUE(error.contains("volume1.nrrd")) << error.toStdString();
    EXPECT_EQ(contents(documentPath()), before);
}

TEST_F(SceneDocument, AMovedFileIsAskedForAndAMissingOrChangedOneRefusesTheDocument)
{
    QString error;
    ASSERT_TRUE(save(error)) << error.toStdString();
    ASSERT_TRUE(QFile::rename(filePath(), dir.filePath("moved.nrrd")));
    EXPECT_EQ(OXWSceneDocument::read(documentPath(), error).get(), nullptr);
    EXPECT_TRUE(error.contains(documentPath()) && error.contains("ct.nrrd") &&
                error.contains("missing"))
        << error.toStdString();
    QString asked;
    const auto locate = [&](const QString& missing) {
        asked = missing;
        return dir.filePath("moved.nrrd");
    };
    EXPECT_NE(OXWSceneDocument::read(documentPath(), error, nullptr, locate).get(), nullptr)
        << error.toStdString();
    EXPECT_EQ(QFileInfo(asked).fileName(), "ct.nrrd");
    // A file of other voxels where the volume was.
    QFile::rename(dir.filePath("work/scene.data/volume1.nrrd"), filePath());
    EXPECT_EQ(OXWSceneDocument::read(documentPath(), error).get(), nullptr);
    EXPECT_TRUE(error.contains("no longer holds")) << error.toStdString();
}

TEST_F(SceneDocument, DocumentsThatAreNoScenesAreRefusedNamingTheFile)
{
    const std::pair<const char*, QByteArray> cases[] = {
        {"not JSON", "{\"format\": \"oxm-objects\", \"version\": 1, "},
        {"another kind", R"({"format": "oxm-objects", "version": 1, "kind": "preset",
                             "root": {"class": "OXMScene", "properties": {}}})"},
        {"volumes missing", R"({"format": "oxm-objects", "version": 1, "kind": "scene",
                                "volumes": [{"data": "x.nrrd"}],
                                "root": {"class": "OXMScene", "properties": {}}})"},
    };
    for (const auto& [name, bytes] : cases) {
        QFile file(documentPath());
        ASSERT_TRUE(file.open(QIODevice::WriteOnly | QIODevice::Truncate));
        file.write(bytes);
        file.close();
        QString error;
        EXPECT_EQ(OXWSceneDocument::read(documentPath(), error).get(), nullptr) << name;
        EXPECT_TRUE(error.contains(documentPath())) << name << ": " << error.toStdString();
    }
}

// A save killed at any moment leaves a document that reads: every file is replaced whole.
TEST(SceneDocumentKilled, DuringASaveLeavesAReadableDocument)
{
    QTemporaryDir dir;
    const QString document = dir.filePath("scene.oxwscene");
    for (int delayMs : {0, 3, 7, 13, 21, 34}) {
        QProcess saver;
        saver.start(QStringLiteral(OXW_SCENE_SAVE_LOOP), {document, QStringLiteral("96")});
        ASSERT_TRUE(saver.waitForStarted());
        // The first save completes; the kill then falls somewhere into a later one.
        while (!saver.canReadLine())
            ASSERT_TRUE(saver.waitForReadyRead(30000)) << saver.readAllStandardError().data();
        QThread::msleep(static_cast<unsigned long>(delayMs));
        ::kill(static_cast<pid_t>(saver.processId()), SIGKILL);
        saver.waitForFinished();
        QString error;
        EXPECT_NE(OXWSceneDocument::read(document, error).get(), nullptr)
            << "killed " << delayMs << " ms after a save: " << error.toStdString();
    }
}
