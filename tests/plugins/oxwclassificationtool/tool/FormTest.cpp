// The classification tool's form (names, layout, the event filter on the editors) and the
// table of rendering methods (listener, render settings).

#include <OXWClassificationToolGUIUI.h>
#include <OXWLUTColorBar.h>
#include <OXWLUTWorkArea.h>
#include <OXWRenderMethodTable.h>

#include <OXMCamera.h>
#include <OXMIOC.h>
#include <OXMObjectIOCPtr.h>
#include <OXMObjectPtr.h>
#include <OXMObjectRefPtr.h>
#include <OXMOxm2RenderSettings.h>
#include <OXMRaytracingVolumeRenderPlugin.h>
#include <OXMScene.h>
#include <OXMSceneNames.h>
#include <OXMSingleton.h>
#include <OXWApplication.h>

#include <OXWColorWidget.h>
#include <OXWPresetComboBox.h>
#include <OXWSpinBox.h>

#include <QApplication>
#include <QCheckBox>
#include <QComboBox>
#include <QGroupBox>
#include <QLabel>
#include <QLayout>
#include <QMouseEvent>
#include <QTabWidget>
#include <QToolButton>
#include <gtest/gtest.h>

#include <algorithm>
#include <functional>
#include <map>
#include <memory>
#include <set>
#include <vector>

namespace {

// The form with an event filter that counts mouse moves per watched object (and swallows
// them, so the editors never see them).
class TestForm : public OXWClassificationToolGUIUI
{
public:
    using OXWClassificationToolGUIUI::OXWClassificationToolGUIUI;

    bool eventFilter(QObject* watched, QEvent* event) override
    {
        if (event->type() == QEvent::MouseMove) {
            ++moves[watched];
            return true;
        }
        return OXWClassificationToolGUIUI::eventFilter(watched, event);
    }

    std::map<QObject*, int> moves;
};

// The widgets a layout manages, at any depth of nested layouts.
void managedWidgets(QLayout* layout, std::vector<QWidget*>& widgets)
{
    for (int i = 0; layout && i < layout->count(); ++i) {
        QLayoutItem* item = layout->itemAt(i);
        if (item->widget()) {
            widgets.push_back(item->widget());
        }
        managedWidgets(item->layout(), widgets);
    }
}

// The containers the form builds itself: the form, its group boxes and the tab pages.
std::vector<QWidget*> containersOf(QWidget* form, QTabWidget* tabs)
{
    std::vector<QWidget*> containers = {form};
    for (QGroupBox* box : form->findChildren<QGroupBox*>()) {
        containers.push_back(box);
    }
    for (int i = 0; i < tabs->count(); ++i) {
        containers.push_back(tabs->widget(i));
    }
    return containers;
}

class Form : public ::testing::Test
{
protected:
    std::unique_ptr<TestForm> form = std::make_unique<TestForm>();
};

} // namespace

// Names are how the panel, style sheets and scripts find the form's parts. Whatever size the
// dock gives it, on every page: every widget of the form is laid out, no two visible ones
// overlap, and the colour bars keep their height of 20 pixels.
TEST_F(Form, EveryPartHasANameOfItsOwnAndIsLaidOutWithoutOverlap)
{
    EXPECT_EQ(form->objectName(), QStringLiteral("OXWClassificationToolGUIUI"));
    EXPECT_EQ(TestForm(nullptr, "panel").objectName(), QStringLiteral("panel"));
    QTabWidget* tabs = form->mColorManipulationTabWidget;
    const std::vector<QWidget*> containers = containersOf(form.get(), tabs);
    std::set<QObject*> parts;
    for (QLayout* layout : form->findChildren<QLayout*>()) {
        if (std::count(containers.begin(), containers.end(), layout->parentWidget()) != 0) {
            parts.insert(layout);
        }
    }
    form->show();
    for (QSize size : {form->size(), QSize(700, 1000)}) {
        form->resize(size);
        for (int page = 0; page < tabs->count(); ++page) {
            tabs->setCurrentIndex(page);
            QApplication::processEvents();
            for (QWidget* container : containers) {
                std::vector<QWidget*> laidOut;
                managedWidgets(container->layout(), laidOut);
                parts.insert(laidOut.begin(), laidOut.end());
                for (QObject* child : container->children()) {
                    auto* widget = qobject_cast<QWidget*>(child);
                    if (!widget || widget->isWindow()) {
                        continue;
                    }
                    const std::string name = widget->objectName().toStdString();
                    EXPECT_TRUE(std::find(laidOut.begin(), laidOut.end(), widget) != laidOut.end())
                        << name << " is in no layout";
                    for (QWidget* other : laidOut) {
                        EXPECT_TRUE(other == widget || !widget->isVisible() ||
                                    !other->isVisible() ||
                                    !widget->geometry().intersects(other->geometry()))
                            << name << " overlaps " << other->objectName().toStdString();
                    }
                }
            }
            if (page < 2) {
                OXWLUTColorBar* bar = page ? form->mDiffuseLUTColorBar : form->mAmbientLUTColorBar;
                EXPECT_EQ(bar->height(), 20);
                EXPECT_GT(bar->width(), 20);
            }
        }
    }
    EXPECT_EQ(parts.size(), 48u);
    for (QObject* part : parts) {
        EXPECT_EQ(form->findChildren<QObject*>(part->objectName()).size(), 1)
            << part->metaObject()->className() << " \"" << part->objectName().toStdString() << "\"";
    }
}

TEST_F(Form, TheFormFiltersTheEditorsEventsOnly)
{
    for (QWidget* w : std::initializer_list<QWidget*>{
             form->mLUTWorkArea, form->mAmbientLUTColorBar, form->mDiffuseLUTColorBar,
             form->mDiffuseLUTColorBar, form->mSpecularColorWidget,
             form->mColorManipulationTabWidget}) {
        QMouseEvent move(QEvent::MouseMove, QPointF(5, 5), Qt::NoButton, Qt::NoButton,
                         Qt::NoModifier);
        QApplication::sendEvent(w, &move);
    }
    EXPECT_EQ(form->moves, (std::map<QObject*, int>{{form->mLUTWorkArea, 1},
                                                    {form->mAmbientLUTColorBar, 1},
                                                    {form->mDiffuseLUTColorBar, 2}}));
}

namespace {

bool setLinks(OXMObject* object, OXMenum id, const std::vector<OXMObject*>& objects)
{
    return object->setArray(id, std::vector<OXMObjectLink>(objects.begin(), objects.end()));
}

// Counts the change messages per sending object.
class CountingListener : public OXMIOC
{
public:
    void iocCallback(Message& message) override
    {
        counts[message.getInitialSender()] += message.getType() == OXM::PropertyChanged;
    }
    std::map<OXMObject*, int> counts;
};

} // namespace

// The four pointers report to the table's listener, which can change; clear() lets go of the
// objects and keeps the listener.
TEST(RenderMethodTable, ItsPointersReportToOneListenerUntilCleared)
{
    OXWRenderMethodTable table;
    OXMObjectIOCPtr* pointers[] = {&table.mVolume, &table.mROI, &table.mRenderPlugin,
                                   &table.mRenderSettings};
    std::vector<OXMObjectPtr> objects;
    CountingListener first;
    CountingListener second;
    table.setListener(&first);
    for (OXMObjectIOCPtr* p : pointers) {
        objects.emplace_back(new OXMRaytracingVolumeRenderPlugin);
        *p = objects.back().get();
    }
    const auto touch = [&objects](float value) {
        for (OXMObjectPtr& o : objects) {
            ASSERT_TRUE(o->setValue(OXM::SamplingDistance, value));
        }
    };
    touch(2.0f);
    table.setListener(&second);
    touch(3.0f);
    table.clear();
    touch(4.0f);
    for (std::size_t i = 0; i < objects.size(); ++i) {
        EXPECT_EQ(first.counts[objects[i].get()], 1) << i;
        EXPECT_EQ(second.counts[objects[i].get()], 1) << i;
        EXPECT_EQ(objects[i]->getListenerCount(), 0) << i;
        EXPECT_EQ(pointers[i]->get(), nullptr) << i;
    }
    table.mRenderPlugin = objects[2].get();
    touch(5.0f);
    EXPECT_EQ(second.counts[objects[2].get()], 2);
    table.clear(); // the listeners go before the objects
}

// The render settings are the first ones in the engine list of the scene's first camera.
TEST(RenderMethodTable, TheRenderSettingsAreTheFirstOfTheFirstCamerasEngineList)
{
    ASSERT_EQ(OXMSingleton<OXWApplication>::getInstance(), nullptr);
    EXPECT_EQ(OXWRenderMethodTable::findRenderSettings(), nullptr);
    OXWApplication app;
    OXMObjectPtr notAScene(new OXMRenderPlugin);
    ASSERT_TRUE(app.setValue(OXM::Scene, OXMObjectLink(notAScene.get())));
    EXPECT_EQ(OXWRenderMethodTable::findRenderSettings(), nullptr);

    auto* scene = new OXMScene;
    OXMObjectPtr holdScene(scene);
    ASSERT_TRUE(app.setValue(OXM::Scene, OXMObjectLink(scene)));
    OXMCamera* camera = scene->getCamera(0);
    ASSERT_NE(camera->getRenderSettings(), nullptr);
    EXPECT_EQ(OXWRenderMethodTable::findRenderSettings(), camera->getRenderSettings());
    auto* first = new OXMOxm2RenderSettings;
    ASSERT_TRUE(setLinks(camera, OXM::RaytracingEngineList,
                         {new OXMRenderPlugin, first, new OXMOxm2RenderSettings}));
    EXPECT_EQ(OXWRenderMethodTable::findRenderSettings(), first);

    // Only the first camera counts.
    auto* bare = new OXMCamera;
    ASSERT_TRUE(setLinks(bare, OXM::RaytracingEngineList, {}));
    ASSERT_TRUE(setLinks(scene, OXMSceneNames::sceneCameraList(), {bare, new OXMCamera}));
    EXPECT_EQ(OXWRenderMethodTable::findRenderSettings(), nullptr);
}
