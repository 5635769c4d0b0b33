#pragma once

#include <QWidget>

class OXWColorWidget;
class OXWLUTColorBar;
class OXWLUTWorkArea;
class OXWPresetComboBox;
class OXWSpinBox;
class QCheckBox;
class QComboBox;
class QGridLayout;
class QGroupBox;
class QHBoxLayout;
class QLabel;
class QScrollBar;
class QTabWidget;
class QToolButton;
class QVBoxLayout;

// The form of the classification tool panel: builds the panel's widget tree, lays it out and
// sets the user-visible texts (languageChange), nothing else. The tool panel derives from it,
// reaches the widgets through the members below, fills the render-method combo box and
// connects the signals; the slots are empty here and overridden by the panel.
//
// Every widget and layout is a child of the form, named (object name) like its member. The
// form's grid holds, from top to bottom, the group boxes "Preset selection", "Opacity
// manipulation area", "Appearance" and "Rendering settings". The appearance box holds the tab
// widget mColorManipulationTabWidget with the pages, in this order:
//   0 tab        "Ambient"       mAmbientLUTColorBar, mAmbientIntensitySpinBox
//   1 tab_2      "Diffuse"       mDiffuseLUTColorBar, mDiffuseIntensitySpinBox,
//                                mDiffuseSharedColortableCheckBox
//   2 TabPage    "Specular"      mSpecularShininessSpinBox, mSpecularIntensitySpinBox,
//                                mSpecularColorWidget
//   3 TabPage_2  "Transparency"  mTransparencySpinBox, mHiddenSurfaceRemovalCheckBox
//   4 TabPage_3  "Swap"          mSurfaceInvertedCheckBox
// The pages are inserted with empty labels; languageChange() labels them, at construction and
// whenever the application's translators change.
//
// The editors install the panel as their event filter when they are constructed: the work
// area the object two levels up its parent chain, a colour bar the object four levels up. The
// form therefore creates mLUTWorkArea as a child of mOpacityManipulationGroupBox and each
// colour bar as a child of its page while the page is still a direct child of the tab widget
// (before the page is added), so that both chains end at the form.
class OXWClassificationToolGUIUI : public QWidget
{
    Q_OBJECT

public:
    explicit OXWClassificationToolGUIUI(QWidget* parent = nullptr, const char* name = nullptr,
                                        Qt::WindowFlags flags = Qt::WindowFlags());
    ~OXWClassificationToolGUIUI() override;

    // Widgets, in the order of creation.
    QGroupBox* mColorManipulationGroupBox;
    QTabWidget* mColorManipulationTabWidget;
    QWidget* tab;
    OXWLUTColorBar* mAmbientLUTColorBar;
    QLabel* textLabel1;
    OXWSpinBox* mAmbientIntensitySpinBox;
    QWidget* tab_2;
    QLabel* textLabel1_2;
    OXWSpinBox* mDiffuseIntensitySpinBox;
    OXWLUTColorBar* mDiffuseLUTColorBar;
    QCheckBox* mDiffuseSharedColortableCheckBox;
    QWidget* TabPage;
    QLabel* textLabel2;
    QLabel* textLabel1_3;
    OXWSpinBox* mSpecularShininessSpinBox;
    OXWSpinBox* mSpecularIntensitySpinBox;
    OXWColorWidget* mSpecularColorWidget;
    QLabel* textLabel3;
    QWidget* TabPage_2;
    QLabel* textLabel1_3_2;
    OXWSpinBox* mTransparencySpinBox;
    QCheckBox* mHiddenSurfaceRemovalCheckBox;
    QWidget* TabPage_3;
    QCheckBox* mSurfaceInvertedCheckBox;
    QGroupBox* mPresetGroupBox;
    OXWPresetComboBox* oXWPresetComboBox1;
    QGroupBox* mOpacityManipulationGroupBox;
    OXWLUTWorkArea* mLUTWorkArea;
    QScrollBar* mWorkAreaScrollbar;
    QToolButton* mWorkAreaToggleRenderingSettingsButton;
    QToolButton* mWorkAreaUseCalibrationButton;
    QToolButton* mWorkAreaZoomPlusButton;
    QToolButton* mWorkAreaZoomMinusButton;
    QGroupBox* mRenderMethodGroupBox;
    OXWSpinBox* mOversamplingSpinBox;
    QLabel* textLabel1_4;
    QComboBox* mRenderMethodComboBox;
    QCheckBox* mGradientNormalizationCheckBox;

    // Layouts. Each group box has a vertical column layout ("<box>Column") holding its grid
    // ("<box>Layout"); each page has its own grid.
    QGridLayout* OXWClassificationToolGUIUILayout;
    QVBoxLayout* mColorManipulationGroupBoxColumn;
    QGridLayout* mColorManipulationGroupBoxLayout;
    QGridLayout* tabLayout;
    QGridLayout* tabLayout_2;
    QGridLayout* TabPageLayout;
    QGridLayout* TabPageLayout_2;
    QGridLayout* TabPageLayout_3;
    QVBoxLayout* mPresetGroupBoxColumn;
    QGridLayout* mPresetGroupBoxLayout;
    QVBoxLayout* mOpacityManipulationGroupBoxColumn;
    QGridLayout* mOpacityManipulationGroupBoxLayout;
    QHBoxLayout* layout2;
    QVBoxLayout* mRenderMethodGroupBoxColumn;
    QGridLayout* mRenderMethodGroupBoxLayout;

public slots:
    virtual void updateOpacity();
    virtual void updateVisibleOpacityArea();
    virtual void updateColor();
    virtual void updateIntervals();
    virtual void colorTabChanged();
    virtual void updateShininess();
    virtual void updateIntensity();
    virtual void updateTransparency();
    virtual void updateIsosurface();

protected:
    // A change of the application's translators (QEvent::LanguageChange) calls languageChange().
    void changeEvent(QEvent* event) override;

protected slots:
    // Sets every user-visible text and the page labels, translated in this class's context.
    virtual void languageChange();

private:
    // The steps of the constructor, in the order the widgets are made.
    void buildAppearanceGroup();
    void buildAmbientPage();
    void buildDiffusePage();
    void buildSpecularPage();
    void buildTransparencyPage();
    void buildSwapPage();
    void buildPresetGroup();
    void buildOpacityGroup();
    void buildRenderingGroup();
    void setKeyboardOrder();
};
