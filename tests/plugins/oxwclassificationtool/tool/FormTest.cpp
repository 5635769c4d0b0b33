// The classification tool's form (names, layout, texts, tab order, the event filter on the
// editors) and the table of rendering methods (lookups, combo box, listener, render settings).

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
#include <QTranslator>

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

// Translates the texts of one context with a function and leaves the others alone.
class Translator : public QTranslator
{
public:
    Translator(const char* context, std::function<QString(const QString&)> tr)
        : mContext(context), mTr(std::move(tr))
    {
    }
    bool isEmpty() const override { return false; }
    QString translate(const char* context, const char* sourceText, const char* = nullptr,
                      int = -1) const override
    {
        return qstrcmp(context, mContext) != 0 ? QString() : mTr(QString::fromUtf8(sourceText));
    }

private:
    const char* mContext;
    std::function<QString(const QString&)> mTr;
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

// Every text the user reads on the form, and the names of the spin boxes' undo steps.
QStringList textsOf(QWidget* form)
{
    QStringList texts{form->windowTitle()};
    for (QLabel* label : form->findChildren<QLabel*>()) {
        texts << label->text();
    }
    for (QAbstractButton* button : form->findChildren<QAbstractButton*>()) {
        texts << button->text();
    }
    for (QGroupBox* box : form->findChildren<QGroupBox*>()) {
        texts << box->title();
    }
    for (QTabWidget* tabs : form->findChildren<QTabWidget*>()) {
        for (int i = 0; i < tabs->count(); ++i) {
            texts << tabs->tabText(i);
        }
    }
    for (OXWSpinBox* box : form->findChildren<OXWSpinBox*>()) {
        texts << box->autoUndoScope();
    }
    texts.removeAll(QString());
    return texts;
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

// Every text comes through the translator of the form's context, also when one is installed
// later, and comes back when it is removed.
TEST_F(Form, EveryTextIsTranslatedAndTheFormIsRelabelledWhenATranslatorComesOrGoes)
{
    form->show();
    const QStringList english = textsOf(form.get());
    EXPECT_EQ(english.size(), 31);
    Translator german("OXWClassificationToolGUIUI", [](const QString& s) { return "de:" + s; });
    QCoreApplication::installTranslator(&german);
    QApplication::processEvents();
    QStringList expected;
    for (const QString& text : english) {
        expected << QStringLiteral("de:") + text;
    }
    EXPECT_EQ(textsOf(form.get()), expected);
    EXPECT_EQ(textsOf(std::make_unique<TestForm>().get()), expected);
    QCoreApplication::removeTranslator(&german);
    QApplication::processEvents();
    EXPECT_EQ(textsOf(form.get()), english);
}

TEST_F(Form, TabMovesThroughTheControlsInTheFormsOrder)
{
    const std::vector<QWidget*> order = {
        form->oXWPresetComboBox1,          form->mLUTWorkArea,
        form->mWorkAreaZoomPlusButton,     form->mWorkAreaZoomMinusButton,
        form->mColorManipulationTabWidget, form->mAmbientLUTColorBar,
        form->mAmbientIntensitySpinBox,    form->mDiffuseLUTColorBar,
        form->mDiffuseIntensitySpinBox,    form->mDiffuseSharedColortableCheckBox,
        form->mSpecularShininessSpinBox,   form->mSpecularIntensitySpinBox,
        form->mSpecularColorWidget,        form->mTransparencySpinBox};
    // A widget belongs to the nearest control or page that contains it.
    std::vector<QWidget*> owners = order;
    for (QWidget* page :
         {form->tab, form->tab_2, form->TabPage, form->TabPage_2, form->TabPage_3}) {
        owners.push_back(page);
    }
    auto ownerOf = [&owners](QWidget* w) {
        while (w && std::find(owners.begin(), owners.end(), w) == owners.end()) {
            w = w->parentWidget();
        }
        return w;
    };
    // From each control the focus chain reaches the next one passing only the control's own
    // parts (a spin box's field, the tab widget's bar) and widgets that Tab skips.
    for (std::size_t i = 0; i + 1 < order.size(); ++i) {
        QWidget* from = order[i];
        QWidget* to = order[i + 1];
        SCOPED_TRACE(from->objectName().toStdString() + " -> " + to->objectName().toStdString());
        QWidget* w = from->nextInFocusChain();
        int steps = 0;
        while (w != to && w != from && steps < 1000) {
            const bool ownPart = ownerOf(w) == from;
            const bool skipped = (w->focusPolicy() & Qt::TabFocus) == 0;
            EXPECT_TRUE(ownPart || skipped) << "Tab stops at " << w->objectName().toStdString()
                                            << " (" << w->metaObject()->className() << ")";
            w = w->nextInFocusChain();
            ++steps;
        }
        EXPECT_EQ(w, to);
    }
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

// Each row is found again by its display name and by its renderer and shading, and names a
// renderer the host can create; what no row holds is found nowhere. With two rows translated
// to one name, the first of them answers, in the lookups and in the combo box.
TEST(RenderMethodTable, EveryRowIsFoundByItsNameAndByItsRendererAndShading)
{
    const OXWRenderMethodTable table;
    QComboBox box;
    for (int row = 0; row < OXWRenderMethodTable::RowCount; ++row) {
        SCOPED_TRACE(row);
        const QString name = table.displayName(row);
        EXPECT_EQ(table.classNameFor(name), table.className(row));
        EXPECT_EQ(table.shadingModelFor(name), table.shadingModel(row));
        EXPECT_EQ(table.displayNameFor(table.className(row), table.shadingModel(row)), name);
        OXMObjectRefPtr plugin(table.className(row).toLatin1().constData());
        ASSERT_NE(plugin.get(), nullptr);
        table.fillComboBox(&box, name);
        EXPECT_EQ(box.count(), int(OXWRenderMethodTable::RowCount));
        EXPECT_EQ(box.currentIndex(), row);
        EXPECT_EQ(box.itemText(row), name);
    }
    for (int row : {-1, int(OXWRenderMethodTable::RowCount)}) {
        EXPECT_TRUE(table.displayName(row).isNull() && table.className(row).isNull());
        EXPECT_EQ(table.shadingModel(row), OXM::Unknown);
    }
    for (const QString& name : {QStringLiteral("x-ray"), QString()}) {
        EXPECT_TRUE(table.classNameFor(name).isEmpty());
        EXPECT_EQ(table.shadingModelFor(name), OXM::Unknown);
        table.fillComboBox(&box, name);
        EXPECT_EQ(box.currentIndex(), -1);
    }
    EXPECT_TRUE(table.displayNameFor(QStringLiteral("OXMOxm2RenderPlugin"), OXM::Phong).isNull());
    table.fillComboBox(nullptr, QStringLiteral("X-Ray"));

    // Rows 1 (volume renderer, Phong) and 4 (X-Ray) translated to one name: row 1 answers.
    Translator same("OXWRenderMethodTable", [](const QString& s) {
        return s == "Volume renderer (Phong)" || s == "X-Ray" ? QStringLiteral("Same") : "tr:" + s;
    });
    QCoreApplication::installTranslator(&same);
    const OXWRenderMethodTable translated;
    QCoreApplication::removeTranslator(&same);
    EXPECT_EQ(translated.displayName(0), QStringLiteral("tr:Isosurface renderer"));
    EXPECT_EQ(translated.displayName(4), QStringLiteral("Same"));
    EXPECT_EQ(translated.classNameFor("Same"), translated.className(1));
    EXPECT_EQ(translated.shadingModelFor("Same"), OXM::Phong);
    translated.fillComboBox(&box, QStringLiteral("Same"));
    EXPECT_EQ(box.currentIndex(), 1);
}

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
