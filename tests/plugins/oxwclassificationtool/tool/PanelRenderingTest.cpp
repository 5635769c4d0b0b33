// The rendering controls of the panel on the viewer's volume: the combo box shows the renderer
// and shading of the bound volume, choosing an entry rewrites the render plug-in link and the
// shading model as one undo step, oversampling and the check boxes write their properties.

#include "PanelFixture.h"

#include <OXMObjectLink.h>
#include <OXWRenderMethodTable.h>
#include <OXWSpinBox.h>

#include <QCheckBox>
#include <QComboBox>
#include <QGroupBox>
#include <QToolButton>

namespace paneltest {
namespace {

class PanelRendering : public PanelFixture
{
protected:
    QComboBox* methods() const { return widget<QComboBox>("mRenderMethodComboBox"); }

    OXMObject* plugin() const
    {
        OXMObjectLink link;
        return volume->getValue(OXM::RenderPlugin, link) ? link.getLink() : nullptr;
    }

    void choose(const QString& text)
    {
        const int row = methods()->findText(text);
        ASSERT_GE(row, 0) << text.toStdString();
        methods()->setCurrentIndex(row);
        ASSERT_TRUE(
            QMetaObject::invokeMethod(panel.get(), "renderMethodSlot", Qt::DirectConnection));
    }

    OXMenum shadingOf(OXMObject* object) const
    {
        OXMenum value;
        object->getValue(OXMenum::find("ShadingModel", "oxwclassificationtool"), value);
        return value;
    }
};

TEST_F(PanelRendering, TheComboBoxShowsTheVolumesRendererAndShading)
{
    ASSERT_NE(methods(), nullptr);
    EXPECT_EQ(methods()->count(), 10);
    ASSERT_NE(plugin(), nullptr);
    EXPECT_TRUE(plugin()->isOfType("OXMRaytracing::Volume::RenderPlugin"));
    EXPECT_EQ(methods()->currentText(), QStringLiteral("Volume renderer (Phong)"));
}

TEST_F(PanelRendering, AnotherShadingOfTheSameRendererKeepsTheRendererObject)
{
    OXMObject* before = plugin();
    const int steps = app.undoStack()->count();
    choose(QStringLiteral("Volume renderer (Scatter HQ)"));
    EXPECT_EQ(plugin(), before);
    EXPECT_EQ(shadingOf(before), OXMenum::find("ScatterHQ", "oxwclassificationtool"));
    ASSERT_EQ(app.undoStack()->count(), steps + 1);
    // Only the shading changed, and the step says so.
    EXPECT_EQ(app.undoStack()->undoName(), QStringLiteral("Change shading model"));

    app.undoStack()->undo();
    EXPECT_EQ(shadingOf(before), OXM::Phong);
}

TEST_F(PanelRendering, AnotherRendererIsCreatedWithTheOldShadingAndDistance)
{
    OXMObject* before = plugin();
    ASSERT_TRUE(before->setValue(OXM::SamplingDistance, 0.25f));
    choose(QStringLiteral("Isosurface renderer"));
    OXMObject* after = plugin();
    ASSERT_NE(after, nullptr);
    EXPECT_NE(after, before);
    EXPECT_TRUE(after->isOfType("OXMRaytracing::Isosurface::RenderPlugin"));
    float distance = 0.0f;
    ASSERT_TRUE(after->getValue(OXM::SamplingDistance, distance));
    EXPECT_FLOAT_EQ(distance, 0.25f);
    EXPECT_EQ(shadingOf(after), OXM::Phong);
    EXPECT_EQ(panel->renderMethodTable()->mRenderPlugin.get(), after);

    // The change message re-reads the controls: the isosurface renderer's check boxes open up
    // and the work area shows the iso value.
    EXPECT_FALSE(workArea()->isIsosurfaceShown());
    ASSERT_TRUE(waitForReread(panel->objectInfoReadCount()));
    EXPECT_EQ(methods()->currentText(), QStringLiteral("Isosurface renderer"));
    EXPECT_TRUE(widget<QCheckBox>("mSurfaceInvertedCheckBox")->isEnabled());
    EXPECT_TRUE(workArea()->isIsosurfaceShown());

    // Its settings live on the volume: swapping the areas and removing inner surfaces.
    widget<QCheckBox>("mSurfaceInvertedCheckBox")->click();
    widget<QCheckBox>("mHiddenSurfaceRemovalCheckBox")->click();
    OXMenum inverted;
    int limit = 0;
    ASSERT_TRUE(
        volume->getValue(OXMenum::find("SurfaceInverted", "oxwclassificationtool"), inverted));
    ASSERT_TRUE(
        volume->getValue(OXMenum::find("ShadingCountLimit", "oxwclassificationtool"), limit));
    EXPECT_EQ(inverted, OXM::True);
    EXPECT_EQ(limit, 1);
    EXPECT_EQ(app.undoStack()->undoName(), QStringLiteral("Remove inner surfaces"));
    app.undoStack()->undo();
    app.undoStack()->undo();

    // One undo brings the old renderer back.
    app.undoStack()->undo();
    EXPECT_EQ(plugin(), before);
}

// Each renderer object carries only the settings of its class, so the re-read finds the
// shading where the row put it: every row reads back as itself.
TEST_F(PanelRendering, EveryMethodReadsBackAsTheRowChosen)
{
    const QStringList rows = [this] {
        QStringList texts;
        for (int i = 0; i < methods()->count(); ++i) {
            texts << methods()->itemText(i);
        }
        return texts;
    }();
    ASSERT_EQ(rows.size(), 10);
    for (const QString& text : rows) {
        choose(text);
        reread();
        EXPECT_EQ(methods()->currentText(), text);
    }
}

// An undo of a shading change comes back as a change message and refills the combo box, for
// a renderer with its own shading and for the camera ray tracer's settings.
TEST_F(PanelRendering, UndoOfAShadingChangeShowsInTheComboBox)
{
    for (const auto& [from, to] :
         {std::pair<const char*, const char*>{"Volume renderer (Phong)",
                                              "Volume renderer (Scatter HQ)"},
          std::pair<const char*, const char*>{"X-Ray", "Maximum Projection"}}) {
        choose(QString::fromLatin1(from));
        choose(QString::fromLatin1(to));
        ASSERT_TRUE(settle());
        const int reads = panel->objectInfoReadCount();
        ASSERT_TRUE(app.undoStack()->undo());
        ASSERT_TRUE(waitForReread(reads)) << to;
        EXPECT_EQ(methods()->currentText(), QString::fromLatin1(from));
    }
}

TEST_F(PanelRendering, OversamplingWritesTheInverseDistance)
{
    auto* spin = widget<OXWSpinBox>("mOversamplingSpinBox");
    ASSERT_NE(spin, nullptr);
    spin->setValue(0.5);
    float distance = 0.0f;
    ASSERT_TRUE(plugin()->getValue(OXM::SamplingDistance, distance));
    EXPECT_FLOAT_EQ(distance, 2.0f);
    spin->setValue(50.0);
    ASSERT_TRUE(plugin()->getValue(OXM::SamplingDistance, distance));
    EXPECT_FLOAT_EQ(distance, 0.02f);
}

// The gradient normalization box and the calibration button (open for calibrated isosurfaces)
// write their switch to the volume.
TEST_F(PanelRendering, VolumeSwitchesAreWrittenToTheVolume)
{
    const struct
    {
        QAbstractButton* button;
        OXMenum id;
        const char* step;
    } switches[] = {
        {widget<QCheckBox>("mGradientNormalizationCheckBox"), OXM::GradientNormalization,
         "Normalize gradients"},
        {widget<QToolButton>("mWorkAreaUseCalibrationButton"), OXM::VolumeComponentMode,
         "Use calibration"},
    };
    for (const auto& s : switches) {
        SCOPED_TRACE(s.step);
        ASSERT_NE(s.button, nullptr);
        if (s.button->isEnabled()) {
            s.button->click();
        } else {
            s.button->setChecked(true);
        }
        OXMenum value;
        ASSERT_TRUE(volume->getValue(s.id, value));
        EXPECT_EQ(value, OXM::True);
        EXPECT_EQ(app.undoStack()->undoName(), QString::fromLatin1(s.step));
    }
}

} // namespace
} // namespace paneltest
