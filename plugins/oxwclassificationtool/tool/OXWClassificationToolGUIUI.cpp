#include "OXWClassificationToolGUIUI.h"

#include "OXWLUTColorBar.h"
#include "OXWLUTWorkArea.h"

#include <OXWColorWidget.h>
#include <OXWPresetComboBox.h>
#include <OXWSpinBox.h>

#include <QCheckBox>
#include <QComboBox>
#include <QEvent>
#include <QGridLayout>
#include <QGroupBox>
#include <QHBoxLayout>
#include <QLabel>
#include <QScrollBar>
#include <QSpacerItem>
#include <QTabWidget>
#include <QToolButton>
#include <QVBoxLayout>

#include <iterator>

namespace {

// Sets the policy and stretch, keeping the widget's own height-for-width flag.
void setPolicy(QWidget* widget, QSizePolicy::Policy horizontal, QSizePolicy::Policy vertical,
               int horizontalStretch = 0)
{
    QSizePolicy policy(horizontal, vertical);
    policy.setHorizontalStretch(horizontalStretch);
    policy.setHeightForWidth(widget->sizePolicy().hasHeightForWidth());
    widget->setSizePolicy(policy);
}

template <typename Widget>
Widget* named(Widget* widget, const char* name)
{
    widget->setObjectName(QString::fromLatin1(name));
    return widget;
}

// The layout of a group box: a vertical column (margin 4, spacing 4) that holds a grid with
// the default spacing, aligned to the top.
QGridLayout* groupBoxLayout(QGroupBox* box, QVBoxLayout*& column)
{
    const QString name = box->objectName();
    column = new QVBoxLayout(box);
    column->setObjectName(name + QStringLiteral("Column"));
    column->setContentsMargins(4, 4, 4, 4);
    column->setSpacing(4);
    auto* grid = new QGridLayout;
    grid->setObjectName(name + QStringLiteral("Layout"));
    column->addLayout(grid);
    column->setAlignment(grid, Qt::AlignTop);
    return grid;
}

// The grid of a tab page: margin 4, spacing 4.
QGridLayout* pageLayout(QWidget* page, const char* name)
{
    auto* grid = named(new QGridLayout(page), name);
    grid->setContentsMargins(4, 4, 4, 4);
    grid->setSpacing(4);
    return grid;
}

QSpacerItem* spacer(int width, int height, QSizePolicy::Policy horizontal,
                    QSizePolicy::Policy vertical)
{
    return new QSpacerItem(width, height, horizontal, vertical);
}

QToolButton* smallButton(QWidget* parent, const char* name)
{
    auto* button = named(new QToolButton(parent), name);
    setPolicy(button, QSizePolicy::Fixed, QSizePolicy::Fixed);
    button->setFixedSize(16, 16);
    return button;
}

QLabel* fixedLabel(QWidget* parent, const char* name)
{
    auto* label = named(new QLabel(parent), name);
    setPolicy(label, QSizePolicy::Fixed, QSizePolicy::Fixed);
    return label;
}

void setUpColorBar(OXWLUTColorBar* bar, int maximumWidth)
{
    bar->setMaximumSize(maximumWidth, 20);
    bar->setMouseTracking(true);
    bar->setFocusPolicy(Qt::StrongFocus);
}

// Automatic steps, whole numbers, the given maximum.
void setUpSpinBox(OXWSpinBox* box, double maximum)
{
    box->setAutoMode(true);
    box->setMaxValue(maximum);
    box->setPrecision(0);
}

} // namespace

OXWClassificationToolGUIUI::OXWClassificationToolGUIUI(QWidget* parent, const char* name,
                                                       Qt::WindowFlags flags)
    : QWidget(parent, flags)
{
    setObjectName(name ? QString::fromLatin1(name) : QStringLiteral("OXWClassificationToolGUIUI"));
    setPolicy(this, QSizePolicy::Minimum, QSizePolicy::Minimum);
    OXWClassificationToolGUIUILayout =
        named(new QGridLayout(this), "OXWClassificationToolGUIUILayout");
    OXWClassificationToolGUIUILayout->setContentsMargins(0, 0, 0, 0);
    OXWClassificationToolGUIUILayout->setSpacing(4);

    buildAppearanceGroup();
    buildPresetGroup();
    buildOpacityGroup();
    buildRenderingGroup();
    languageChange();
    resize(QSize(283, 402).expandedTo(minimumSizeHint()));

    setKeyboardOrder();
}

void OXWClassificationToolGUIUI::buildAppearanceGroup()
{
    // Appearance.
    mColorManipulationGroupBox = named(new QGroupBox(this), "mColorManipulationGroupBox");
    setPolicy(mColorManipulationGroupBox, QSizePolicy::Minimum, QSizePolicy::Fixed);
    mColorManipulationGroupBoxLayout =
        groupBoxLayout(mColorManipulationGroupBox, mColorManipulationGroupBoxColumn);

    mColorManipulationTabWidget =
        named(new QTabWidget(mColorManipulationGroupBox), "mColorManipulationTabWidget");
    setPolicy(mColorManipulationTabWidget, QSizePolicy::Minimum, QSizePolicy::Fixed);

    buildAmbientPage();
    buildDiffusePage();
    buildSpecularPage();
    buildTransparencyPage();
    buildSwapPage();
    mColorManipulationGroupBoxLayout->addWidget(mColorManipulationTabWidget, 0, 0);
    OXWClassificationToolGUIUILayout->addWidget(mColorManipulationGroupBox, 2, 0);
}

void OXWClassificationToolGUIUI::buildAmbientPage()
{
    // Each page is a child of the tab widget while its colour bar is created (see the header).
    tab = named(new QWidget(mColorManipulationTabWidget), "tab");
    tabLayout = pageLayout(tab, "tabLayout");
    mAmbientLUTColorBar = new OXWLUTColorBar(tab, "mAmbientLUTColorBar");
    setPolicy(mAmbientLUTColorBar, QSizePolicy::Minimum, QSizePolicy::Fixed);
    setUpColorBar(mAmbientLUTColorBar, 32767);
    tabLayout->addWidget(mAmbientLUTColorBar, 0, 0, 1, 3);
    textLabel1 = fixedLabel(tab, "textLabel1");
    tabLayout->addWidget(textLabel1, 1, 0);
    mAmbientIntensitySpinBox = new OXWSpinBox(tab, "mAmbientIntensitySpinBox");
    mAmbientIntensitySpinBox->setArrowLayout(1);
    setUpSpinBox(mAmbientIntensitySpinBox, 10000);
    tabLayout->addWidget(mAmbientIntensitySpinBox, 1, 1);
    tabLayout->addItem(spacer(20, 10, QSizePolicy::Expanding, QSizePolicy::Minimum), 1, 2);
    mColorManipulationTabWidget->addTab(tab, QString());
}

void OXWClassificationToolGUIUI::buildDiffusePage()
{
    tab_2 = named(new QWidget(mColorManipulationTabWidget), "tab_2");
    tabLayout_2 = pageLayout(tab_2, "tabLayout_2");
    tabLayout_2->addItem(spacer(10, 16, QSizePolicy::Fixed, QSizePolicy::Minimum), 1, 2);
    textLabel1_2 = fixedLabel(tab_2, "textLabel1_2");
    tabLayout_2->addWidget(textLabel1_2, 1, 0);
    mDiffuseIntensitySpinBox = new OXWSpinBox(tab_2, "mDiffuseIntensitySpinBox");
    setUpSpinBox(mDiffuseIntensitySpinBox, 1000);
    tabLayout_2->addWidget(mDiffuseIntensitySpinBox, 1, 1);
    mDiffuseLUTColorBar = new OXWLUTColorBar(tab_2, "mDiffuseLUTColorBar");
    setUpColorBar(mDiffuseLUTColorBar, 30000);
    tabLayout_2->addWidget(mDiffuseLUTColorBar, 0, 0, 1, 5);
    tabLayout_2->addItem(spacer(41, 8, QSizePolicy::Expanding, QSizePolicy::Minimum), 1, 4);
    mDiffuseSharedColortableCheckBox =
        named(new QCheckBox(tab_2), "mDiffuseSharedColortableCheckBox");
    setPolicy(mDiffuseSharedColortableCheckBox, QSizePolicy::Minimum, QSizePolicy::Minimum);
    tabLayout_2->addWidget(mDiffuseSharedColortableCheckBox, 1, 3);
    mColorManipulationTabWidget->addTab(tab_2, QString());
}

void OXWClassificationToolGUIUI::buildSpecularPage()
{
    TabPage = named(new QWidget(mColorManipulationTabWidget), "TabPage");
    TabPageLayout = pageLayout(TabPage, "TabPageLayout");
    textLabel2 = named(new QLabel(TabPage), "textLabel2");
    setPolicy(textLabel2, QSizePolicy::Minimum, QSizePolicy::Fixed);
    TabPageLayout->addWidget(textLabel2, 0, 0);
    textLabel1_3 = named(new QLabel(TabPage), "textLabel1_3");
    setPolicy(textLabel1_3, QSizePolicy::Minimum, QSizePolicy::Fixed);
    TabPageLayout->addWidget(textLabel1_3, 1, 0);
    mSpecularShininessSpinBox = new OXWSpinBox(TabPage, "mSpecularShininessSpinBox");
    setUpSpinBox(mSpecularShininessSpinBox, 100);
    TabPageLayout->addWidget(mSpecularShininessSpinBox, 0, 1);
    mSpecularIntensitySpinBox = new OXWSpinBox(TabPage, "mSpecularIntensitySpinBox");
    setUpSpinBox(mSpecularIntensitySpinBox, 1000);
    TabPageLayout->addWidget(mSpecularIntensitySpinBox, 1, 1);
    TabPageLayout->addItem(spacer(16, 16, QSizePolicy::Fixed, QSizePolicy::Minimum), 0, 2);
    TabPageLayout->addItem(spacer(48, 16, QSizePolicy::Expanding, QSizePolicy::Minimum), 0, 5);
    mSpecularColorWidget = new OXWColorWidget(TabPage, "mSpecularColorWidget");
    mSpecularColorWidget->setMinimumSize(20, 8);
    mSpecularColorWidget->setFrameShape(QFrame::Panel);
    mSpecularColorWidget->setFrameShadow(QFrame::Sunken);
    mSpecularColorWidget->setColor(QColor(255, 255, 255));
    mSpecularColorWidget->setAlpha(255);
    mSpecularColorWidget->setAlphaEditable(false);
    TabPageLayout->addWidget(mSpecularColorWidget, 0, 4);
    textLabel3 = fixedLabel(TabPage, "textLabel3");
    TabPageLayout->addWidget(textLabel3, 0, 3);
    mColorManipulationTabWidget->addTab(TabPage, QString());
}

void OXWClassificationToolGUIUI::buildTransparencyPage()
{
    TabPage_2 = named(new QWidget(mColorManipulationTabWidget), "TabPage_2");
    TabPageLayout_2 = pageLayout(TabPage_2, "TabPageLayout_2");
    textLabel1_3_2 = fixedLabel(TabPage_2, "textLabel1_3_2");
    TabPageLayout_2->addWidget(textLabel1_3_2, 0, 0);
    mTransparencySpinBox = new OXWSpinBox(TabPage_2, "mTransparencySpinBox");
    setUpSpinBox(mTransparencySpinBox, 100);
    TabPageLayout_2->addWidget(mTransparencySpinBox, 0, 1);
    TabPageLayout_2->addItem(spacer(100, 16, QSizePolicy::Expanding, QSizePolicy::Minimum), 0, 2);
    mHiddenSurfaceRemovalCheckBox =
        named(new QCheckBox(TabPage_2), "mHiddenSurfaceRemovalCheckBox");
    TabPageLayout_2->addWidget(mHiddenSurfaceRemovalCheckBox, 1, 0, 1, 3);
    mColorManipulationTabWidget->addTab(TabPage_2, QString());
}

void OXWClassificationToolGUIUI::buildSwapPage()
{
    TabPage_3 = named(new QWidget(mColorManipulationTabWidget), "TabPage_3");
    TabPageLayout_3 = pageLayout(TabPage_3, "TabPageLayout_3");
    mSurfaceInvertedCheckBox = named(new QCheckBox(TabPage_3), "mSurfaceInvertedCheckBox");
    TabPageLayout_3->addWidget(mSurfaceInvertedCheckBox, 0, 0);
    TabPageLayout_3->addItem(spacer(7, 12, QSizePolicy::Minimum, QSizePolicy::Expanding), 1, 0);
    mColorManipulationTabWidget->addTab(TabPage_3, QString());
}

void OXWClassificationToolGUIUI::buildPresetGroup()
{
    // Preset selection.
    mPresetGroupBox = named(new QGroupBox(this), "mPresetGroupBox");
    setPolicy(mPresetGroupBox, QSizePolicy::Minimum, QSizePolicy::Fixed);
    mPresetGroupBoxLayout = groupBoxLayout(mPresetGroupBox, mPresetGroupBoxColumn);
    oXWPresetComboBox1 = new OXWPresetComboBox(mPresetGroupBox, "oXWPresetComboBox1", nullptr);
    oXWPresetComboBox1->setProperty("handlerID", QStringLiteral("PresetClassificationHandler"));
    oXWPresetComboBox1->setProperty("saveAction", true);
    oXWPresetComboBox1->setProperty("removeAction", true);
    oXWPresetComboBox1->setProperty("importAction", true);
    oXWPresetComboBox1->setProperty("exportAction", true);
    oXWPresetComboBox1->setProperty("groupIcons", true);
    oXWPresetComboBox1->setUsesMainWindowIconSize(false);
    mPresetGroupBoxLayout->addWidget(oXWPresetComboBox1, 1, 0);
    OXWClassificationToolGUIUILayout->addWidget(mPresetGroupBox, 0, 0);
}

void OXWClassificationToolGUIUI::buildOpacityGroup()
{
    // Opacity manipulation area. The work area's grandparent is the form (see the header).
    mOpacityManipulationGroupBox = named(new QGroupBox(this), "mOpacityManipulationGroupBox");
    setPolicy(mOpacityManipulationGroupBox, QSizePolicy::Minimum, QSizePolicy::Minimum);
    mOpacityManipulationGroupBoxLayout =
        groupBoxLayout(mOpacityManipulationGroupBox, mOpacityManipulationGroupBoxColumn);
    mLUTWorkArea = new OXWLUTWorkArea(mOpacityManipulationGroupBox, "mLUTWorkArea");
    mLUTWorkArea->setEnabled(true);
    setPolicy(mLUTWorkArea, QSizePolicy::MinimumExpanding, QSizePolicy::MinimumExpanding);
    mLUTWorkArea->setMinimumSize(0, 120);
    mLUTWorkArea->setMouseTracking(true);
    mLUTWorkArea->setFocusPolicy(Qt::StrongFocus);
    mOpacityManipulationGroupBoxLayout->addWidget(mLUTWorkArea, 0, 0);

    layout2 = named(new QHBoxLayout, "layout2");
    layout2->setContentsMargins(0, 0, 0, 0);
    layout2->setSpacing(4);
    mOpacityManipulationGroupBoxLayout->addLayout(layout2, 1, 0);
    mWorkAreaScrollbar =
        named(new QScrollBar(Qt::Horizontal, mOpacityManipulationGroupBox), "mWorkAreaScrollbar");
    setPolicy(mWorkAreaScrollbar, QSizePolicy::Minimum, QSizePolicy::Fixed, 1);
    layout2->addWidget(mWorkAreaScrollbar);
    mWorkAreaToggleRenderingSettingsButton =
        smallButton(mOpacityManipulationGroupBox, "mWorkAreaToggleRenderingSettingsButton");
    layout2->addWidget(mWorkAreaToggleRenderingSettingsButton);
    mWorkAreaUseCalibrationButton =
        smallButton(mOpacityManipulationGroupBox, "mWorkAreaUseCalibrationButton");
    mWorkAreaUseCalibrationButton->setCheckable(true);
    layout2->addWidget(mWorkAreaUseCalibrationButton);
    mWorkAreaZoomPlusButton = smallButton(mOpacityManipulationGroupBox, "mWorkAreaZoomPlusButton");
    layout2->addWidget(mWorkAreaZoomPlusButton);
    mWorkAreaZoomMinusButton =
        smallButton(mOpacityManipulationGroupBox, "mWorkAreaZoomMinusButton");
    layout2->addWidget(mWorkAreaZoomMinusButton);
    OXWClassificationToolGUIUILayout->addWidget(mOpacityManipulationGroupBox, 1, 0);
}

void OXWClassificationToolGUIUI::buildRenderingGroup()
{
    // Rendering settings.
    mRenderMethodGroupBox = named(new QGroupBox(this), "mRenderMethodGroupBox");
    setPolicy(mRenderMethodGroupBox, QSizePolicy::Preferred, QSizePolicy::Fixed);
    mRenderMethodGroupBoxLayout =
        groupBoxLayout(mRenderMethodGroupBox, mRenderMethodGroupBoxColumn);
    mOversamplingSpinBox = new OXWSpinBox(mRenderMethodGroupBox, "mOversamplingSpinBox");
    setPolicy(mOversamplingSpinBox, QSizePolicy::Preferred, QSizePolicy::Fixed);
    mOversamplingSpinBox->setAutoMode(true);
    mOversamplingSpinBox->setLineEditMode(false);
    mRenderMethodGroupBoxLayout->addWidget(mOversamplingSpinBox, 1, 1);
    textLabel1_4 = fixedLabel(mRenderMethodGroupBox, "textLabel1_4");
    textLabel1_4->setEnabled(true);
    mRenderMethodGroupBoxLayout->addWidget(textLabel1_4, 1, 0);
    mRenderMethodComboBox = named(new QComboBox(mRenderMethodGroupBox), "mRenderMethodComboBox");
    mRenderMethodComboBox->setEditable(false);
    mRenderMethodGroupBoxLayout->addWidget(mRenderMethodComboBox, 0, 0, 1, 5);
    mRenderMethodGroupBoxLayout->addItem(
        spacer(135, 16, QSizePolicy::Expanding, QSizePolicy::Minimum), 1, 4);
    mGradientNormalizationCheckBox =
        named(new QCheckBox(mRenderMethodGroupBox), "mGradientNormalizationCheckBox");
    mRenderMethodGroupBoxLayout->addWidget(mGradientNormalizationCheckBox, 1, 3);
    mRenderMethodGroupBoxLayout->addItem(spacer(16, 16, QSizePolicy::Fixed, QSizePolicy::Minimum),
                                         1, 2);
    OXWClassificationToolGUIUILayout->addWidget(mRenderMethodGroupBox, 3, 0);
}

void OXWClassificationToolGUIUI::setKeyboardOrder()
{
    // Keyboard order. A control inside the previous one (the ambient colour bar inside the tab
    // widget) already follows it in the focus chain; relinking it would move it behind all of
    // the container's other children.
    QWidget* const tabOrder[] = {oXWPresetComboBox1,          mLUTWorkArea,
                                 mWorkAreaZoomPlusButton,     mWorkAreaZoomMinusButton,
                                 mColorManipulationTabWidget, mAmbientLUTColorBar,
                                 mAmbientIntensitySpinBox,    mDiffuseLUTColorBar,
                                 mDiffuseIntensitySpinBox,    mDiffuseSharedColortableCheckBox,
                                 mSpecularShininessSpinBox,   mSpecularIntensitySpinBox,
                                 mSpecularColorWidget,        mTransparencySpinBox};
    for (std::size_t i = 0; i + 1 < std::size(tabOrder); ++i) {
        if (!tabOrder[i]->isAncestorOf(tabOrder[i + 1])) {
            setTabOrder(tabOrder[i], tabOrder[i + 1]);
        }
    }
}

OXWClassificationToolGUIUI::~OXWClassificationToolGUIUI() = default;

void OXWClassificationToolGUIUI::changeEvent(QEvent* event)
{
    if (event->type() == QEvent::LanguageChange) {
        languageChange();
    }
    QWidget::changeEvent(event);
}

void OXWClassificationToolGUIUI::languageChange()
{
    setWindowTitle(tr("Volume Rendering"));
    mColorManipulationGroupBox->setTitle(tr("Appearance"));
    mAmbientIntensitySpinBox->setAutoUndoScope(tr("Set ambient intensity"));
    textLabel1->setText(tr("Intensity:"));
    mColorManipulationTabWidget->setTabText(mColorManipulationTabWidget->indexOf(tab),
                                            tr("Ambient"));
    textLabel1_2->setText(tr("Intensity:"));
    mDiffuseIntensitySpinBox->setAutoUndoScope(tr("Set diffuse intensity"));
    mDiffuseSharedColortableCheckBox->setText(tr("shared color"));
    mColorManipulationTabWidget->setTabText(mColorManipulationTabWidget->indexOf(tab_2),
                                            tr("Diffuse"));
    textLabel2->setText(tr("Shininess"));
    textLabel1_3->setText(tr("Intensity:"));
    mSpecularShininessSpinBox->setAutoUndoScope(tr("Set specular shininess"));
    mSpecularIntensitySpinBox->setAutoUndoScope(tr("Set specular intensity"));
    textLabel3->setText(tr("Color:"));
    mColorManipulationTabWidget->setTabText(mColorManipulationTabWidget->indexOf(TabPage),
                                            tr("Specular"));
    textLabel1_3_2->setText(tr("Transparency:"));
    mTransparencySpinBox->setAutoUndoScope(tr("Set transparency"));
    mHiddenSurfaceRemovalCheckBox->setText(tr("Remove hidden surfaces"));
    mColorManipulationTabWidget->setTabText(mColorManipulationTabWidget->indexOf(TabPage_2),
                                            tr("Transparency"));
    mSurfaceInvertedCheckBox->setText(tr("Swap inner/outer areas"));
    mColorManipulationTabWidget->setTabText(mColorManipulationTabWidget->indexOf(TabPage_3),
                                            tr("Swap"));
    mPresetGroupBox->setTitle(tr("Preset selection"));
    mOpacityManipulationGroupBox->setTitle(tr("Opacity manipulation area"));
    mWorkAreaToggleRenderingSettingsButton->setText(tr("R"));
    mWorkAreaUseCalibrationButton->setText(tr("C"));
    mWorkAreaZoomPlusButton->setText(tr("+"));
    mWorkAreaZoomMinusButton->setText(tr("-"));
    mRenderMethodGroupBox->setTitle(tr("Rendering settings"));
    mOversamplingSpinBox->setAutoUndoScope(tr("Set oversampling"));
    textLabel1_4->setText(tr("Oversampling:"));
    mGradientNormalizationCheckBox->setText(tr("Normalize gradients"));
}

void OXWClassificationToolGUIUI::updateOpacity() {}

void OXWClassificationToolGUIUI::updateVisibleOpacityArea() {}

void OXWClassificationToolGUIUI::updateColor() {}

void OXWClassificationToolGUIUI::updateIntervals() {}

void OXWClassificationToolGUIUI::colorTabChanged() {}

void OXWClassificationToolGUIUI::updateShininess() {}

void OXWClassificationToolGUIUI::updateIntensity() {}

void OXWClassificationToolGUIUI::updateTransparency() {}

void OXWClassificationToolGUIUI::updateIsosurface() {}
