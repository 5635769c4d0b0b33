#pragma once

// The classification tool panel in the viewer's setting: the application, the viewer's sample
// scene with a small volume of our own (grey values 10 .. 25, two voxels each: 16 bins, 16
// model cells of width 1/16, the host's default classification), the preset handler (user
// presets in the test's own folder) and the panel bound to that volume through the selection.
// Teardown: the panel first (it listens to the host objects), then the handler, then the
// application with the scene and every volume.

#include <OXWClassificationToolGUI.h>
#include <OXWLUTColorBar.h>
#include <OXWLUTIntervalInfo.h>
#include <OXWLUTObjectInfo.h>
#include <OXWLUTWorkArea.h>
#include <OXWPresetClassificationHandler.h>

#include <OXMHistogram.h>
#include <OXMHistogramResult.h>
#include <OXMObjectPath.h>
#include <OXMObjectPtr.h>
#include <OXMSampleGrid.h>
#include <OXMSampleMaterial.h>
#include <OXMSampleTransferSpec.h>
#include <OXMScene.h>
#include <OXMTulvoRights.h>
#include <OXMVolumeRenderObject.h>
#include <OXWApplication.h>
#include <OXWFileDialog.h>
#include <OXWSampleScene.h>
#include <OXWUndoStack.h>

#include <gtest/gtest.h>

#include <QApplication>
#include <QByteArray>
#include <QElapsedTimer>
#include <QEvent>
#include <QMouseEvent>
#include <QSettings>
#include <QString>
#include <QTemporaryDir>
#include <QTimer>
#include <QWidget>
#include <QtTest/QTest>

#include <cstdint>
#include <functional>
#include <memory>
#include <vector>

namespace paneltest {

using Handle = OXMVector2<float>;
using HandleList = std::vector<Handle>;
using Info = OXWLUTIntervalInfo;

constexpr int Opacity = OXWLUTIntervalInfo::OpacityChannel;
constexpr int Red = OXWLUTIntervalInfo::RedChannel;
constexpr int Green = OXWLUTIntervalInfo::GreenChannel;
constexpr int Blue = OXWLUTIntervalInfo::BlueChannel;

template <typename T>
std::vector<T> array(const OXMObject* object, OXMenum id)
{
    auto* a = OXMValueArrayPropertyIF<T>::getInterface(object ? object->getProperty(id) : nullptr);
    return a ? a->getArray() : std::vector<T>();
}

template <typename T>
bool setArray(OXMObject* object, OXMenum id, const std::vector<T>& values)
{
    auto* a = OXMValueArrayPropertyIF<T>::getInterface(object ? object->getProperty(id) : nullptr);
    return a && a->setArray(values);
}

inline std::vector<QByteArray> intervalNames(const OXMObject* material)
{
    std::vector<QByteArray> names;
    for (const char* n : array<const char*>(material, OXM::IntervalNameList)) {
        names.emplace_back(n ? n : "");
    }
    return names;
}

inline HandleList handleList(const OXMObject* channel)
{
    return array<Handle>(channel, OXM::LookupTableHandleList);
}

// Processes events (timers, paints) until the condition holds; false when the time is up.
inline bool waitUntil(const std::function<bool()>& condition, int timeoutMs = 5000)
{
    QElapsedTimer timer;
    timer.start();
    while (!condition()) {
        if (timer.elapsed() > timeoutMs) {
            return false;
        }
        QTest::qWait(5);
    }
    return true;
}

// Grey values first .. last, `copies` voxels each, as 8-bit samples.
inline std::vector<std::uint8_t> greyRamp(int first, int last, int copies)
{
    std::vector<std::uint8_t> samples;
    for (int c = 0; c < copies; ++c) {
        for (int g = first; g <= last; ++g) {
            samples.push_back(std::uint8_t(g));
        }
    }
    return samples;
}

class PanelFixture : public ::testing::Test
{
public:
    // The grey values of the test volume.
    static constexpr int First = 10;
    static constexpr int Last = 25;
    static constexpr int Cells = Last - First + 1;

protected:
    void SetUp() override
    {
        ASSERT_TRUE(settingsDir.isValid());
        ASSERT_TRUE(files.isValid());
        // The file dialogs remember their directories in the user's settings: keep them here.
        QSettings::setPath(QSettings::IniFormat, QSettings::UserScope, settingsDir.path());
        OXWFileDialog::clearTestAnswers();
        presets = std::make_unique<OXWPresetClassificationHandler>(nullptr);
        presets->store().setDirectory(files.filePath(QStringLiteral("presets")));
        if (!mSceneBeforePanel) {
            createPanel();
        }
        ASSERT_TRUE(OXWSampleScene::build(&app, 4, sample));
        volume = addVolume("Test", greyRamp(First, Last, 2));
        ASSERT_NE(volume, nullptr);
        if (mSceneBeforePanel) {
            select({volume});
            createPanel();
            ASSERT_EQ(panel->selectedObject(), volume);
            ASSERT_NE(panel->objectInfo(), nullptr);
        }
    }

    void TearDown() override
    {
        panel.reset();
        presets.reset();
        OXWFileDialog::clearTestAnswers();
    }

    void createPanel()
    {
        panel = std::make_unique<OXWClassificationToolGUI>(nullptr, "OXWClassificationToolGUI");
    }

    // A volume of the scene with these voxels (dims.x * dims.y * dims.z of the data type;
    // by default one row of 8-bit samples); null when the host refuses it.
    OXMVolumeRenderObject* addVolume(const char* name, const std::vector<std::uint8_t>& bytes,
                                     OXMenum dataType = OXM::UInt8,
                                     OXMVector3<int> dims = OXMVector3<int>())
    {
        if (dims.x == 0) {
            dims = OXMVector3<int>(int(bytes.size()), 1, 1);
        }
        auto* grid = new OXMSampleGrid;
        OXMObjectPtr holdGrid(grid);
        if (!grid->setData(dims, dataType, bytes)) {
            return nullptr;
        }
        OXMObjectPtr holdVolume(OXMVolumeRenderObject::create(grid, name));
        auto* created = static_cast<OXMVolumeRenderObject*>(holdVolume.get());
        if (!created || !sample.scene->addVolume(created)) {
            return nullptr;
        }
        return created;
    }

    // The scene tree's selection: these render objects (none for an empty list).
    void select(const std::vector<OXMObject*>& objects)
    {
        std::vector<OXMObjectPath> paths;
        for (OXMObject* o : objects) {
            paths.push_back(OXMObjectPath::fromObject(o));
        }
        ASSERT_TRUE(setArray(&app, OXM::RenderObjectSelectionList, paths));
    }

    void showPanel()
    {
        panel->resize(460, 720);
        panel->show();
        ASSERT_TRUE(QTest::qWaitForWindowExposed(panel.get()));
        QApplication::processEvents();
    }

    template <typename T>
    T* widget(const char* name) const
    {
        return panel ? panel->findChild<T*>(QString::fromLatin1(name)) : nullptr;
    }
    OXWLUTWorkArea* workArea() const { return widget<OXWLUTWorkArea>("mLUTWorkArea"); }
    OXWLUTColorBar* ambientBar() const { return widget<OXWLUTColorBar>("mAmbientLUTColorBar"); }
    OXWLUTColorBar* diffuseBar() const { return widget<OXWLUTColorBar>("mDiffuseLUTColorBar"); }

    OXWLUTObjectInfo* model() const { return panel->objectInfo(); }
    OXMSampleMaterial* material() const { return volume->getMaterial(); }
    OXMSampleTransferSpec* channel(OXMenum id) const { return material()->getChannel(id); }

    // Runs the re-read now, as the panel's timer does.
    void reread()
    {
        ASSERT_TRUE(
            QMetaObject::invokeMethod(panel.get(), "updateObjectInfo", Qt::DirectConnection));
    }
    // Waits until the re-read timer has run and no re-read is pending.
    bool settle()
    {
        return waitUntil([this] {
            return !panel->updateObjectInfoTimer()->isActive() &&
                   !panel->updateAnalyzerTimer()->isActive();
        });
    }
    // Waits for the re-read that follows a change made elsewhere.
    bool waitForReread(int readsBefore)
    {
        return waitUntil([this, readsBefore] {
            return panel->objectInfoReadCount() > readsBefore &&
                   !panel->updateObjectInfoTimer()->isActive();
        });
    }

    // The fitted handles of every interval in host units, as the panel writes them: x in
    // grey-value index units, y the opacity or the colour value / 256.
    HandleList expectedHostHandles(int channelOfModel) const
    {
        HandleList out;
        const OXWLUTObjectInfo* m = model();
        for (int i = 0; i < m->intervalCount(); ++i) {
            const Info* interval = m->interval(i);
            for (const Handle& h : interval->handles(channelOfModel)) {
                const float y = m->opacityFromPosition(h.y);
                out.emplace_back(m->greyFromPosition(interval->globalFromLocal(h.x)),
                                 channelOfModel == Opacity ? y : y * 0.00390625f);
            }
        }
        return out;
    }

    // Widget coordinates in the work area of a model position and height.
    QPoint pointAt(float x, float h) const
    {
        OXWLUTWorkArea* w = workArea();
        return w->contentsRect().topLeft() + QPoint(w->pixelFromPosition(x), w->pixelFromHeight(h));
    }
    // Widget coordinates of handle k of interval i's opacity curve.
    QPoint handlePoint(int i, int k) const
    {
        const Info* interval = model()->interval(i);
        const Handle& h = interval->handles(Opacity)[std::size_t(k)];
        return pointAt(interval->globalFromLocal(h.x), h.y);
    }

    // Mouse events on a widget, through the application (event filters included).
    void press(QWidget* target, const QPoint& pos, Qt::MouseButton button = Qt::LeftButton)
    {
        mButtons = button;
        QTest::mousePress(target, button, Qt::NoModifier, pos);
    }
    void move(QWidget* target, const QPoint& pos)
    {
        QMouseEvent event(QEvent::MouseMove, pos, target->mapToGlobal(pos), Qt::NoButton, mButtons,
                          Qt::NoModifier);
        QApplication::sendEvent(target, &event);
    }
    // The buttons are up without a release reaching the widget (a popup took it).
    void forgetButtons() { mButtons = Qt::NoButton; }
    void release(QWidget* target, const QPoint& pos)
    {
        const Qt::MouseButton button = Qt::MouseButton(int(mButtons));
        mButtons = Qt::NoButton;
        QTest::mouseRelease(target, button, Qt::NoModifier, pos);
    }

    QTemporaryDir settingsDir;
    QTemporaryDir files;
    OXWApplication app;
    OXWSampleScene::Result sample;
    OXMVolumeRenderObject* volume = nullptr;
    std::unique_ptr<OXWPresetClassificationHandler> presets;
    std::unique_ptr<OXWClassificationToolGUI> panel;
    // False: the panel is built before the scene exists and nothing is selected.
    bool mSceneBeforePanel = true;

private:
    Qt::MouseButtons mButtons = Qt::NoButton;
};

} // namespace paneltest
