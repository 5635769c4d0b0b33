// The table of rendering methods: its rows, the lookups, the combo box and the search for the
// camera's render settings on a scene built from the viewer's scene objects.

#include <OXWRenderMethodTable.h>

#include <OXMCamera.h>
#include <OXMIOC.h>
#include <OXMObjectPtr.h>
#include <OXMObjectRefPtr.h>
#include <OXMOxm2RenderSettings.h>
#include <OXMRaytracingVolumeRenderPlugin.h>
#include <OXMScene.h>
#include <OXMSceneNames.h>
#include <OXMSingleton.h>
#include <OXMValueArrayPropertyIF.h>
#include <OXWApplication.h>
#include <OXWComboBox.h>

#include <QComboBox>
#include <QCoreApplication>
#include <QTranslator>

#include <gtest/gtest.h>

#include <map>
#include <vector>

namespace {

OXMenum toolEnum(const char* name)
{
    return OXMenum::find(name, "oxwclassificationtool");
}

// Counts the change messages per sending object.
class CountingListener : public OXMIOC
{
public:
    void iocCallback(Message& message) override
    {
        if (message.getType() == OXM::PropertyChanged) {
            ++counts[message.getInitialSender()];
        }
    }
    std::map<OXMObject*, int> counts;
};

// Gives two rows the same display name, so that lookups by name have to pick one.
class SameNameTranslator : public QTranslator
{
public:
    bool isEmpty() const override { return false; }
    QString translate(const char* context, const char* sourceText, const char* = nullptr,
                      int = -1) const override
    {
        if (qstrcmp(context, "OXWRenderMethodTable") != 0) {
            return QString();
        }
        const QString text = QString::fromUtf8(sourceText);
        if (text == QLatin1String("Volume renderer (Phong)") || text == QLatin1String("X-Ray")) {
            return QStringLiteral("Same");
        }
        return QStringLiteral("tr:") + text;
    }
};

bool setLinks(OXMObject* object, OXMenum id, const std::vector<OXMObject*>& objects)
{
    auto* array = OXMValueArrayPropertyIF<OXMObjectLink>::getInterface(object->getProperty(id));
    if (!array) {
        return false;
    }
    std::vector<OXMObjectLink> links;
    for (OXMObject* o : objects) {
        links.emplace_back(o);
    }
    return array->setArray(links);
}

QStringList itemsOf(const QComboBox& box)
{
    QStringList items;
    for (int i = 0; i < box.count(); ++i) {
        items << box.itemText(i);
    }
    return items;
}

} // namespace

// Each row is found again by its display name and by its renderer and shading, and names a
// renderer the host can create; what no row holds is found nowhere.
TEST(RenderMethodTable, EveryRowIsFoundByItsNameAndByItsRendererAndShading)
{
    const OXWRenderMethodTable table;
    for (int row = 0; row < OXWRenderMethodTable::RowCount; ++row) {
        SCOPED_TRACE(row);
        const QString name = table.displayName(row);
        EXPECT_EQ(table.classNameFor(name), table.className(row));
        EXPECT_EQ(table.shadingModelFor(name), table.shadingModel(row));
        EXPECT_EQ(table.displayNameFor(table.className(row), table.shadingModel(row)), name);
        const QByteArray className = table.className(row).toLatin1();
        OXMObjectRefPtr plugin(className.constData());
        ASSERT_NE(plugin.get(), nullptr);
        EXPECT_TRUE(plugin->isOfType(className.constData()));
    }
    EXPECT_EQ(table.displayNameFor(QStringLiteral("OXMOxm2RenderPlugin"), toolEnum("ScatterHQ")),
              QStringLiteral("Scatter HQ (v1.2)"));
    EXPECT_EQ(table.shadingModel(8), OXMSceneNames::scatterHQ());

    for (int row : {-1, int(OXWRenderMethodTable::RowCount)}) {
        EXPECT_TRUE(table.displayName(row).isNull());
        EXPECT_TRUE(table.className(row).isNull());
        EXPECT_EQ(table.shadingModel(row), OXM::Unknown);
    }
    for (const QString& name : {QStringLiteral("Ray caster"), QStringLiteral("x-ray"), QString()}) {
        EXPECT_TRUE(table.classNameFor(name).isEmpty());
        EXPECT_EQ(table.shadingModelFor(name), OXM::Unknown);
    }
    EXPECT_TRUE(table.displayNameFor(QStringLiteral("OXMOxm2RenderPlugin"), OXM::Phong).isNull());
    EXPECT_TRUE(table.displayNameFor(QString(), OXM::Phong).isNull());
}

TEST(RenderMethodTable, DisplayNamesAreTranslatedAndTheFirstRowOfANameWins)
{
    SameNameTranslator translator;
    QCoreApplication::installTranslator(&translator);
    const OXWRenderMethodTable table;
    QCoreApplication::removeTranslator(&translator);

    EXPECT_EQ(table.displayName(0), QStringLiteral("tr:Isosurface renderer"));
    EXPECT_EQ(table.displayName(1), QStringLiteral("Same"));
    EXPECT_EQ(table.displayName(4), QStringLiteral("Same"));
    // Rows 1 (volume renderer, Phong) and 4 (X-Ray) share the name; row 1 answers.
    EXPECT_EQ(table.classNameFor(QStringLiteral("Same")),
              QStringLiteral("OXMRaytracing::Volume::RenderPlugin"));
    EXPECT_EQ(table.shadingModelFor(QStringLiteral("Same")), OXM::Phong);
    QComboBox box;
    table.fillComboBox(&box, QStringLiteral("Same"));
    EXPECT_EQ(box.currentIndex(), 1);
    // Class names are not translated.
    EXPECT_EQ(table.displayNameFor(QStringLiteral("OXMOxm2RenderPlugin"), toolEnum("XRay")),
              QStringLiteral("Same"));
}

TEST(RenderMethodTable, FillsTheComboBoxAndSelectsTheNamedRow)
{
    const OXWRenderMethodTable table;
    OXWComboBox box(nullptr, "mRenderMethodComboBox");
    box.addItem(QStringLiteral("--"));
    box.setCurrentIndex(0);

    table.fillComboBox(&box, QStringLiteral("X-Ray"));
    QStringList expected;
    for (int row = 0; row < OXWRenderMethodTable::RowCount; ++row) {
        expected << table.displayName(row);
    }
    EXPECT_EQ(itemsOf(box), expected);
    EXPECT_EQ(box.currentIndex(), 4);
    EXPECT_EQ(box.currentText(), QStringLiteral("X-Ray"));

    table.fillComboBox(&box, QStringLiteral("Scatter Gradient (v1.2)"));
    EXPECT_EQ(itemsOf(box), expected);
    EXPECT_EQ(box.currentIndex(), 9);

    // A method the table doesn't have: no current row.
    table.fillComboBox(&box, QStringLiteral("Ray caster"));
    EXPECT_EQ(itemsOf(box), expected);
    EXPECT_EQ(box.currentIndex(), -1);
    table.fillComboBox(&box, QString());
    EXPECT_EQ(box.currentIndex(), -1);

    table.fillComboBox(nullptr, QStringLiteral("X-Ray"));
}

TEST(RenderMethodTable, ItsPointersReportToOneListenerUntilCleared)
{
    OXWRenderMethodTable table;
    EXPECT_EQ(table.mVolume.get(), nullptr);
    EXPECT_EQ(table.mROI.get(), nullptr);
    EXPECT_EQ(table.mRenderPlugin.get(), nullptr);
    EXPECT_EQ(table.mRenderSettings.get(), nullptr);

    std::vector<OXMObjectPtr> objects;
    for (int i = 0; i < 4; ++i) {
        objects.emplace_back(new OXMRaytracingVolumeRenderPlugin);
    }
    auto touch = [&objects](float value) {
        for (OXMObjectPtr& o : objects) {
            ASSERT_TRUE(o->setValue(OXM::SamplingDistance, value));
        }
    };

    CountingListener first;
    table.setListener(&first);
    table.mVolume = objects[0].get();
    table.mROI = objects[1].get();
    table.mRenderPlugin = objects[2].get();
    table.mRenderSettings = objects[3].get();
    touch(2.0f);
    for (OXMObjectPtr& o : objects) {
        EXPECT_EQ(first.counts[o.get()], 1);
    }

    // Changing the listener moves the registrations with the objects kept.
    CountingListener second;
    table.setListener(&second);
    touch(3.0f);
    for (OXMObjectPtr& o : objects) {
        EXPECT_EQ(first.counts[o.get()], 1);
        EXPECT_EQ(second.counts[o.get()], 1);
    }

    table.clear();
    EXPECT_EQ(table.mVolume.get(), nullptr);
    EXPECT_EQ(table.mROI.get(), nullptr);
    EXPECT_EQ(table.mRenderPlugin.get(), nullptr);
    EXPECT_EQ(table.mRenderSettings.get(), nullptr);
    touch(4.0f);
    for (OXMObjectPtr& o : objects) {
        EXPECT_EQ(second.counts[o.get()], 1);
        EXPECT_EQ(o->getListenerCount(), 0);
    }
    // The listener stays for the next objects.
    table.mRenderPlugin = objects[2].get();
    touch(5.0f);
    EXPECT_EQ(second.counts[objects[2].get()], 2);
    table.clear(); // the listeners go before the objects
}

// The render settings are the first ones in the engine list of the scene's first camera.
TEST(RenderMethodTableSettings, AreTheFirstOfTheFirstCamerasEngineList)
{
    ASSERT_EQ(OXMSingleton<OXWApplication>::getInstance(), nullptr);
    EXPECT_EQ(OXWRenderMethodTable::findRenderSettings(), nullptr);
    OXWApplication app;
    EXPECT_EQ(OXWRenderMethodTable::findRenderSettings(), nullptr);
    OXMObjectPtr notAScene(new OXMRenderPlugin);
    ASSERT_TRUE(app.setValue(OXM::Scene, OXMObjectLink(notAScene.get())));
    EXPECT_EQ(OXWRenderMethodTable::findRenderSettings(), nullptr);

    auto* scene = new OXMScene;
    OXMObjectPtr holdScene(scene);
    ASSERT_TRUE(app.setValue(OXM::Scene, OXMObjectLink(scene)));
    OXMCamera* camera = scene->getCamera(0);
    ASSERT_NE(camera, nullptr);
    ASSERT_NE(camera->getRenderSettings(), nullptr);
    EXPECT_EQ(OXWRenderMethodTable::findRenderSettings(), camera->getRenderSettings());

    auto* first = new OXMOxm2RenderSettings;
    ASSERT_TRUE(setLinks(camera, OXM::RaytracingEngineList,
                         {new OXMRenderPlugin, first, new OXMOxm2RenderSettings}));
    EXPECT_EQ(OXWRenderMethodTable::findRenderSettings(), first);
    ASSERT_TRUE(setLinks(camera, OXM::RaytracingEngineList, {new OXMRenderPlugin}));
    EXPECT_EQ(OXWRenderMethodTable::findRenderSettings(), nullptr);

    // Only the first camera counts.
    const OXMenum cameras = OXMSceneNames::sceneCameraList();
    ASSERT_TRUE(setLinks(scene, cameras, {}));
    EXPECT_EQ(OXWRenderMethodTable::findRenderSettings(), nullptr);
    auto* bare = new OXMCamera;
    ASSERT_TRUE(setLinks(bare, OXM::RaytracingEngineList, {}));
    auto* equipped = new OXMCamera;
    ASSERT_TRUE(setLinks(scene, cameras, {bare, equipped}));
    ASSERT_NE(equipped->getRenderSettings(), nullptr);
    EXPECT_EQ(OXWRenderMethodTable::findRenderSettings(), nullptr);
}
