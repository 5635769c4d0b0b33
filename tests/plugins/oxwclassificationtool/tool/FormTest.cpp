// The classification tool's form: its widget tree, layout, texts, tab order and the event
// filter that the editors install on it.

#include <OXWClassificationToolGUIUI.h>
#include <OXWLUTColorBar.h>
#include <OXWLUTWorkArea.h>

#include <OXWColorWidget.h>
#include <OXWPresetComboBox.h>
#include <OXWSpinBox.h>

#include <QApplication>
#include <QCheckBox>
#include <QComboBox>
#include <QGridLayout>
#include <QGroupBox>
#include <QHBoxLayout>
#include <QLabel>
#include <QMouseEvent>
#include <QScrollBar>
#include <QTabWidget>
#include <QToolButton>
#include <QTranslator>

#include <gtest/gtest.h>

#include <algorithm>
#include <map>
#include <memory>
#include <vector>

namespace {

// The form with languageChange opened up and an event filter that counts mouse moves per
// watched object (and swallows them, so the editors never see them).
class TestForm : public OXWClassificationToolGUIUI
{
public:
    using OXWClassificationToolGUIUI::languageChange;
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

// Translates every text of one context to "<prefix><text>" and leaves the others alone.
class PrefixTranslator : public QTranslator
{
public:
    PrefixTranslator(const char* context, const QString& prefix)
        : mContext(context), mPrefix(prefix)
    {
    }
    bool isEmpty() const override { return false; }
    QString translate(const char* context, const char* sourceText, const char* = nullptr,
                      int = -1) const override
    {
        if (qstrcmp(context, mContext) != 0) {
            return QString();
        }
        return mPrefix + QString::fromUtf8(sourceText);
    }

private:
    const char* mContext;
    QString mPrefix;
};

// Row, column, row span and column span of an item of a grid; all -1 when not in it.
struct Cell
{
    int row = -1;
    int column = -1;
    int rowSpan = -1;
    int columnSpan = -1;
    bool operator==(const Cell& o) const
    {
        return row == o.row && column == o.column && rowSpan == o.rowSpan &&
               columnSpan == o.columnSpan;
    }
};

std::ostream& operator<<(std::ostream& os, const Cell& c)
{
    return os << "(" << c.row << "," << c.column << " span " << c.rowSpan << "x" << c.columnSpan
              << ")";
}

Cell cellOf(QGridLayout* grid, QWidget* widget)
{
    Cell c;
    const int index = grid ? grid->indexOf(widget) : -1;
    if (index >= 0) {
        grid->getItemPosition(index, &c.row, &c.column, &c.rowSpan, &c.columnSpan);
    }
    return c;
}

Cell cellOfLayout(QGridLayout* grid, QLayout* layout)
{
    for (int i = 0; i < grid->count(); ++i) {
        if (grid->itemAt(i)->layout() == layout) {
            Cell c;
            grid->getItemPosition(i, &c.row, &c.column, &c.rowSpan, &c.columnSpan);
            return c;
        }
    }
    return Cell();
}

// The spacers of a grid: cell and size hint with policies.
struct SpacerCell
{
    Cell cell;
    QSize size;
    QSizePolicy::Policy horizontal;
    QSizePolicy::Policy vertical;
};

std::vector<SpacerCell> spacersOf(QGridLayout* grid)
{
    std::vector<SpacerCell> spacers;
    for (int i = 0; i < grid->count(); ++i) {
        if (QSpacerItem* s = grid->itemAt(i)->spacerItem()) {
            SpacerCell sc;
            grid->getItemPosition(i, &sc.cell.row, &sc.cell.column, &sc.cell.rowSpan,
                                  &sc.cell.columnSpan);
            sc.size = s->sizeHint();
            sc.horizontal = s->sizePolicy().horizontalPolicy();
            sc.vertical = s->sizePolicy().verticalPolicy();
            spacers.push_back(sc);
        }
    }
    return spacers;
}

// The grid inside a group box: the box's layout is a column whose only item is the grid.
QGridLayout* innerGrid(QGroupBox* box)
{
    auto* column = qobject_cast<QVBoxLayout*>(box->layout());
    if (!column || column->count() != 1) {
        return nullptr;
    }
    return qobject_cast<QGridLayout*>(column->itemAt(0)->layout());
}

void sendMove(QWidget* widget)
{
    QMouseEvent move(QEvent::MouseMove, QPointF(5, 5), Qt::NoButton, Qt::NoButton, Qt::NoModifier);
    QApplication::sendEvent(widget, &move);
}

class Form : public ::testing::Test
{
protected:
    std::unique_ptr<TestForm> form = std::make_unique<TestForm>();
};

} // namespace

TEST_F(Form, NamesItselfAndEveryWidgetLikeItsMember)
{
    EXPECT_EQ(form->objectName(), QStringLiteral("OXWClassificationToolGUIUI"));
    TestForm named(nullptr, "panel");
    EXPECT_EQ(named.objectName(), QStringLiteral("panel"));

    const std::vector<std::pair<QObject*, const char*>> members = {
        {form->mColorManipulationGroupBox, "mColorManipulationGroupBox"},
        {form->mColorManipulationTabWidget, "mColorManipulationTabWidget"},
        {form->tab, "tab"},
        {form->mAmbientLUTColorBar, "mAmbientLUTColorBar"},
        {form->textLabel1, "textLabel1"},
        {form->mAmbientIntensitySpinBox, "mAmbientIntensitySpinBox"},
        {form->tab_2, "tab_2"},
        {form->textLabel1_2, "textLabel1_2"},
        {form->mDiffuseIntensitySpinBox, "mDiffuseIntensitySpinBox"},
        {form->mDiffuseLUTColorBar, "mDiffuseLUTColorBar"},
        {form->mDiffuseSharedColortableCheckBox, "mDiffuseSharedColortableCheckBox"},
        {form->TabPage, "TabPage"},
        {form->textLabel2, "textLabel2"},
        {form->textLabel1_3, "textLabel1_3"},
        {form->mSpecularShininessSpinBox, "mSpecularShininessSpinBox"},
        {form->mSpecularIntensitySpinBox, "mSpecularIntensitySpinBox"},
        {form->mSpecularColorWidget, "mSpecularColorWidget"},
        {form->textLabel3, "textLabel3"},
        {form->TabPage_2, "TabPage_2"},
        {form->textLabel1_3_2, "textLabel1_3_2"},
        {form->mTransparencySpinBox, "mTransparencySpinBox"},
        {form->mHiddenSurfaceRemovalCheckBox, "mHiddenSurfaceRemovalCheckBox"},
        {form->TabPage_3, "TabPage_3"},
        {form->mSurfaceInvertedCheckBox, "mSurfaceInvertedCheckBox"},
        {form->mPresetGroupBox, "mPresetGroupBox"},
        {form->oXWPresetComboBox1, "oXWPresetComboBox1"},
        {form->mOpacityManipulationGroupBox, "mOpacityManipulationGroupBox"},
        {form->mLUTWorkArea, "mLUTWorkArea"},
        {form->mWorkAreaScrollbar, "mWorkAreaScrollbar"},
        {form->mWorkAreaToggleRenderingSettingsButton, "mWorkAreaToggleRenderingSettingsButton"},
        {form->mWorkAreaUseCalibrationButton, "mWorkAreaUseCalibrationButton"},
        {form->mWorkAreaZoomPlusButton, "mWorkAreaZoomPlusButton"},
        {form->mWorkAreaZoomMinusButton, "mWorkAreaZoomMinusButton"},
        {form->mRenderMethodGroupBox, "mRenderMethodGroupBox"},
        {form->mOversamplingSpinBox, "mOversamplingSpinBox"},
        {form->textLabel1_4, "textLabel1_4"},
        {form->mRenderMethodComboBox, "mRenderMethodComboBox"},
        {form->mGradientNormalizationCheckBox, "mGradientNormalizationCheckBox"},
        {form->OXWClassificationToolGUIUILayout, "OXWClassificationToolGUIUILayout"},
        {form->tabLayout, "tabLayout"},
        {form->tabLayout_2, "tabLayout_2"},
        {form->TabPageLayout, "TabPageLayout"},
        {form->TabPageLayout_2, "TabPageLayout_2"},
        {form->TabPageLayout_3, "TabPageLayout_3"},
        {form->layout2, "layout2"},
    };
    for (const auto& [object, name] : members) {
        SCOPED_TRACE(name);
        ASSERT_NE(object, nullptr);
        EXPECT_EQ(object->objectName(), QString::fromLatin1(name));
        // Everything belongs to the form, and the name finds exactly this object.
        auto* widget = qobject_cast<QWidget*>(object);
        EXPECT_TRUE(widget ? form->isAncestorOf(widget) : object->parent() != nullptr);
        EXPECT_EQ(form->findChildren<QObject*>(QString::fromLatin1(name)).size(), 1);
    }
}

TEST_F(Form, TheGroupBoxesAreCreatedAppearanceFirstButStackTopToBottom)
{
    std::vector<QGroupBox*> created;
    for (QObject* child : form->children()) {
        if (auto* box = qobject_cast<QGroupBox*>(child)) {
            created.push_back(box);
        }
    }
    const std::vector<QGroupBox*> expected = {
        form->mColorManipulationGroupBox, form->mPresetGroupBox, form->mOpacityManipulationGroupBox,
        form->mRenderMethodGroupBox};
    EXPECT_EQ(created, expected);

    QGridLayout* top = form->OXWClassificationToolGUIUILayout;
    ASSERT_EQ(form->layout(), top);
    EXPECT_EQ(top->contentsMargins(), QMargins(0, 0, 0, 0));
    EXPECT_EQ(top->spacing(), 4);
    EXPECT_EQ(cellOf(top, form->mPresetGroupBox), (Cell{0, 0, 1, 1}));
    EXPECT_EQ(cellOf(top, form->mOpacityManipulationGroupBox), (Cell{1, 0, 1, 1}));
    EXPECT_EQ(cellOf(top, form->mColorManipulationGroupBox), (Cell{2, 0, 1, 1}));
    EXPECT_EQ(cellOf(top, form->mRenderMethodGroupBox), (Cell{3, 0, 1, 1}));

    for (QGroupBox* box : expected) {
        SCOPED_TRACE(box->objectName().toStdString());
        auto* column = qobject_cast<QVBoxLayout*>(box->layout());
        ASSERT_NE(column, nullptr);
        EXPECT_EQ(column->contentsMargins(), QMargins(4, 4, 4, 4));
        EXPECT_EQ(column->spacing(), 4);
        QGridLayout* grid = innerGrid(box);
        ASSERT_NE(grid, nullptr);
        EXPECT_EQ(column->itemAt(0)->alignment(), Qt::AlignTop);
    }
}

TEST_F(Form, TheEditorsHangWhereTheyFindTheFormAsTheirFilterSource)
{
    // Work area: two levels up is the form.
    EXPECT_EQ(form->mLUTWorkArea->parent(), form->mOpacityManipulationGroupBox);
    EXPECT_EQ(form->mOpacityManipulationGroupBox->parent(), form.get());

    // Pages: in the tab widget, in order; each colour bar on its page.
    QTabWidget* tabs = form->mColorManipulationTabWidget;
    EXPECT_EQ(tabs->parent(), form->mColorManipulationGroupBox);
    EXPECT_EQ(form->mColorManipulationGroupBox->parent(), form.get());
    ASSERT_EQ(tabs->count(), 5);
    EXPECT_EQ(tabs->widget(0), form->tab);
    EXPECT_EQ(tabs->widget(1), form->tab_2);
    EXPECT_EQ(tabs->widget(2), form->TabPage);
    EXPECT_EQ(tabs->widget(3), form->TabPage_2);
    EXPECT_EQ(tabs->widget(4), form->TabPage_3);
    EXPECT_EQ(form->mAmbientLUTColorBar->parent(), form->tab);
    EXPECT_EQ(form->mDiffuseLUTColorBar->parent(), form->tab_2);
    EXPECT_EQ(form->mSpecularColorWidget->parent(), form->TabPage);
    EXPECT_EQ(form->mTransparencySpinBox->parent(), form->TabPage_2);
    EXPECT_EQ(form->mSurfaceInvertedCheckBox->parent(), form->TabPage_3);
    EXPECT_EQ(form->oXWPresetComboBox1->parent(), form->mPresetGroupBox);
    EXPECT_EQ(form->mRenderMethodComboBox->parent(), form->mRenderMethodGroupBox);
    EXPECT_EQ(form->mWorkAreaScrollbar->parent(), form->mOpacityManipulationGroupBox);
}

TEST_F(Form, TheFormFiltersTheEditorsEvents)
{
    sendMove(form->mLUTWorkArea);
    sendMove(form->mAmbientLUTColorBar);
    sendMove(form->mDiffuseLUTColorBar);
    sendMove(form->mDiffuseLUTColorBar);
    EXPECT_EQ(form->moves[form->mLUTWorkArea], 1);
    EXPECT_EQ(form->moves[form->mAmbientLUTColorBar], 1);
    EXPECT_EQ(form->moves[form->mDiffuseLUTColorBar], 2);
    // The form watches the editors only.
    sendMove(form->mSpecularColorWidget);
    sendMove(form->mColorManipulationTabWidget);
    EXPECT_EQ(form->moves.size(), 3u);
}

TEST_F(Form, TheGridsPlaceEveryWidgetAndSpacer)
{
    QGridLayout* tab = form->tabLayout;
    QGridLayout* diffuse = form->tabLayout_2;
    QGridLayout* specular = form->TabPageLayout;
    QGridLayout* transparency = form->TabPageLayout_2;
    QGridLayout* swap = form->TabPageLayout_3;
    for (QGridLayout* page : {tab, diffuse, specular, transparency, swap}) {
        SCOPED_TRACE(page->objectName().toStdString());
        EXPECT_EQ(page->contentsMargins(), QMargins(4, 4, 4, 4));
        EXPECT_EQ(page->spacing(), 4);
    }
    EXPECT_EQ(form->tab->layout(), tab);
    EXPECT_EQ(form->TabPage_3->layout(), swap);

    EXPECT_EQ(cellOf(tab, form->mAmbientLUTColorBar), (Cell{0, 0, 1, 3}));
    EXPECT_EQ(cellOf(tab, form->textLabel1), (Cell{1, 0, 1, 1}));
    EXPECT_EQ(cellOf(tab, form->mAmbientIntensitySpinBox), (Cell{1, 1, 1, 1}));
    EXPECT_EQ(cellOf(diffuse, form->mDiffuseLUTColorBar), (Cell{0, 0, 1, 5}));
    EXPECT_EQ(cellOf(diffuse, form->textLabel1_2), (Cell{1, 0, 1, 1}));
    EXPECT_EQ(cellOf(diffuse, form->mDiffuseIntensitySpinBox), (Cell{1, 1, 1, 1}));
    EXPECT_EQ(cellOf(diffuse, form->mDiffuseSharedColortableCheckBox), (Cell{1, 3, 1, 1}));
    EXPECT_EQ(cellOf(specular, form->textLabel2), (Cell{0, 0, 1, 1}));
    EXPECT_EQ(cellOf(specular, form->mSpecularShininessSpinBox), (Cell{0, 1, 1, 1}));
    EXPECT_EQ(cellOf(specular, form->textLabel3), (Cell{0, 3, 1, 1}));
    EXPECT_EQ(cellOf(specular, form->mSpecularColorWidget), (Cell{0, 4, 1, 1}));
    EXPECT_EQ(cellOf(specular, form->textLabel1_3), (Cell{1, 0, 1, 1}));
    EXPECT_EQ(cellOf(specular, form->mSpecularIntensitySpinBox), (Cell{1, 1, 1, 1}));
    EXPECT_EQ(cellOf(transparency, form->textLabel1_3_2), (Cell{0, 0, 1, 1}));
    EXPECT_EQ(cellOf(transparency, form->mTransparencySpinBox), (Cell{0, 1, 1, 1}));
    EXPECT_EQ(cellOf(transparency, form->mHiddenSurfaceRemovalCheckBox), (Cell{1, 0, 1, 3}));
    EXPECT_EQ(cellOf(swap, form->mSurfaceInvertedCheckBox), (Cell{0, 0, 1, 1}));

    QGridLayout* appearance = innerGrid(form->mColorManipulationGroupBox);
    EXPECT_EQ(cellOf(appearance, form->mColorManipulationTabWidget), (Cell{0, 0, 1, 1}));
    QGridLayout* preset = innerGrid(form->mPresetGroupBox);
    EXPECT_EQ(cellOf(preset, form->oXWPresetComboBox1), (Cell{1, 0, 1, 1}));
    QGridLayout* opacity = innerGrid(form->mOpacityManipulationGroupBox);
    EXPECT_EQ(cellOf(opacity, form->mLUTWorkArea), (Cell{0, 0, 1, 1}));
    EXPECT_EQ(cellOfLayout(opacity, form->layout2), (Cell{1, 0, 1, 1}));
    QGridLayout* rendering = innerGrid(form->mRenderMethodGroupBox);
    EXPECT_EQ(cellOf(rendering, form->mRenderMethodComboBox), (Cell{0, 0, 1, 5}));
    EXPECT_EQ(cellOf(rendering, form->textLabel1_4), (Cell{1, 0, 1, 1}));
    EXPECT_EQ(cellOf(rendering, form->mOversamplingSpinBox), (Cell{1, 1, 1, 1}));
    EXPECT_EQ(cellOf(rendering, form->mGradientNormalizationCheckBox), (Cell{1, 3, 1, 1}));

    // The row of the work area's controls, left to right, without stretch.
    QHBoxLayout* row = form->layout2;
    EXPECT_EQ(row->contentsMargins(), QMargins(0, 0, 0, 0));
    EXPECT_EQ(row->spacing(), 4);
    const std::vector<QWidget*> controls = {
        form->mWorkAreaScrollbar, form->mWorkAreaToggleRenderingSettingsButton,
        form->mWorkAreaUseCalibrationButton, form->mWorkAreaZoomPlusButton,
        form->mWorkAreaZoomMinusButton};
    ASSERT_EQ(row->count(), int(controls.size()));
    for (int i = 0; i < row->count(); ++i) {
        EXPECT_EQ(row->itemAt(i)->widget(), controls[std::size_t(i)]);
        EXPECT_EQ(row->stretch(i), 0);
    }

    using P = QSizePolicy;
    auto expectSpacers = [](QGridLayout* grid, const std::vector<SpacerCell>& expected) {
        SCOPED_TRACE(grid->objectName().toStdString());
        const std::vector<SpacerCell> found = spacersOf(grid);
        ASSERT_EQ(found.size(), expected.size());
        for (const SpacerCell& e : expected) {
            bool matched = false;
            for (const SpacerCell& f : found) {
                matched = matched || (f.cell == e.cell && f.size == e.size &&
                                      f.horizontal == e.horizontal && f.vertical == e.vertical);
            }
            EXPECT_TRUE(matched) << "spacer " << e.size.width() << "x" << e.size.height() << " at "
                                 << e.cell;
        }
    };
    expectSpacers(tab, {{{1, 2, 1, 1}, {20, 10}, P::Expanding, P::Minimum}});
    expectSpacers(diffuse, {{{1, 2, 1, 1}, {10, 16}, P::Fixed, P::Minimum},
                            {{1, 4, 1, 1}, {41, 8}, P::Expanding, P::Minimum}});
    expectSpacers(specular, {{{0, 2, 1, 1}, {16, 16}, P::Fixed, P::Minimum},
                             {{0, 5, 1, 1}, {48, 16}, P::Expanding, P::Minimum}});
    expectSpacers(transparency, {{{0, 2, 1, 1}, {100, 16}, P::Expanding, P::Minimum}});
    expectSpacers(swap, {{{1, 0, 1, 1}, {7, 12}, P::Minimum, P::Expanding}});
    expectSpacers(rendering, {{{1, 4, 1, 1}, {135, 16}, P::Expanding, P::Minimum},
                              {{1, 2, 1, 1}, {16, 16}, P::Fixed, P::Minimum}});
}

TEST_F(Form, SizePoliciesFollowTheForm)
{
    using P = QSizePolicy;
    struct Expected
    {
        QWidget* widget;
        P::Policy horizontal;
        P::Policy vertical;
        int horizontalStretch;
    };
    const std::vector<Expected> expected = {
        {form.get(), P::Minimum, P::Minimum, 0},
        {form->mDiffuseSharedColortableCheckBox, P::Minimum, P::Minimum, 0},
        {form->mOpacityManipulationGroupBox, P::Minimum, P::Minimum, 0},
        {form->mColorManipulationGroupBox, P::Minimum, P::Fixed, 0},
        {form->mColorManipulationTabWidget, P::Minimum, P::Fixed, 0},
        {form->mAmbientLUTColorBar, P::Minimum, P::Fixed, 0},
        {form->textLabel2, P::Minimum, P::Fixed, 0},
        {form->textLabel1_3, P::Minimum, P::Fixed, 0},
        {form->mPresetGroupBox, P::Minimum, P::Fixed, 0},
        {form->mWorkAreaScrollbar, P::Minimum, P::Fixed, 1},
        {form->mLUTWorkArea, P::MinimumExpanding, P::MinimumExpanding, 0},
        {form->mRenderMethodGroupBox, P::Preferred, P::Fixed, 0},
        {form->mOversamplingSpinBox, P::Preferred, P::Fixed, 0},
        {form->textLabel1, P::Fixed, P::Fixed, 0},
        {form->textLabel1_2, P::Fixed, P::Fixed, 0},
        {form->textLabel3, P::Fixed, P::Fixed, 0},
        {form->textLabel1_3_2, P::Fixed, P::Fixed, 0},
        {form->textLabel1_4, P::Fixed, P::Fixed, 0},
        {form->mWorkAreaToggleRenderingSettingsButton, P::Fixed, P::Fixed, 0},
        {form->mWorkAreaUseCalibrationButton, P::Fixed, P::Fixed, 0},
        {form->mWorkAreaZoomPlusButton, P::Fixed, P::Fixed, 0},
        {form->mWorkAreaZoomMinusButton, P::Fixed, P::Fixed, 0},
    };
    for (const Expected& e : expected) {
        SCOPED_TRACE(e.widget->objectName().toStdString());
        const QSizePolicy policy = e.widget->sizePolicy();
        EXPECT_EQ(policy.horizontalPolicy(), e.horizontal);
        EXPECT_EQ(policy.verticalPolicy(), e.vertical);
        EXPECT_EQ(policy.horizontalStretch(), e.horizontalStretch);
        EXPECT_EQ(policy.verticalStretch(), 0);
    }
}

TEST_F(Form, WidgetSettings)
{
    EXPECT_EQ(form->mAmbientLUTColorBar->maximumSize(), QSize(32767, 20));
    EXPECT_EQ(form->mDiffuseLUTColorBar->maximumSize(), QSize(30000, 20));
    for (QWidget* editor : {static_cast<QWidget*>(form->mAmbientLUTColorBar),
                            static_cast<QWidget*>(form->mDiffuseLUTColorBar),
                            static_cast<QWidget*>(form->mLUTWorkArea)}) {
        SCOPED_TRACE(editor->objectName().toStdString());
        EXPECT_TRUE(editor->hasMouseTracking());
        EXPECT_EQ(editor->focusPolicy(), Qt::StrongFocus);
        EXPECT_TRUE(editor->isEnabled());
    }
    EXPECT_EQ(form->mLUTWorkArea->minimumSize(), QSize(0, 120));

    struct Spin
    {
        OXWSpinBox* box;
        double maximum;
        int arrowLayout;
    };
    for (const Spin& s : {Spin{form->mAmbientIntensitySpinBox, 10000, 1},
                          Spin{form->mDiffuseIntensitySpinBox, 1000, 0},
                          Spin{form->mSpecularShininessSpinBox, 100, 0},
                          Spin{form->mSpecularIntensitySpinBox, 1000, 0},
                          Spin{form->mTransparencySpinBox, 100, 0}}) {
        SCOPED_TRACE(s.box->objectName().toStdString());
        EXPECT_TRUE(s.box->autoMode());
        EXPECT_EQ(s.box->maxValue(), s.maximum);
        EXPECT_EQ(s.box->precision(), 0);
        EXPECT_EQ(s.box->arrowLayout(), s.arrowLayout);
        EXPECT_TRUE(s.box->lineEditMode());
        EXPECT_TRUE(s.box->toolTip().isEmpty());
    }
    EXPECT_TRUE(form->mOversamplingSpinBox->autoMode());
    EXPECT_FALSE(form->mOversamplingSpinBox->lineEditMode());

    OXWColorWidget* colour = form->mSpecularColorWidget;
    EXPECT_EQ(colour->minimumSize(), QSize(20, 8));
    EXPECT_EQ(colour->frameShape(), QFrame::Panel);
    EXPECT_EQ(colour->frameShadow(), QFrame::Sunken);
    EXPECT_EQ(colour->color(), QColor(255, 255, 255, 255));
    EXPECT_FALSE(colour->isAlphaEditable());

    OXWPresetComboBox* presets = form->oXWPresetComboBox1;
    EXPECT_TRUE(presets->presetType().isNull());
    EXPECT_EQ(presets->property("handlerID"),
              QVariant(QStringLiteral("PresetClassificationHandler")));
    for (const char* flag :
         {"saveAction", "removeAction", "importAction", "exportAction", "groupIcons"}) {
        EXPECT_EQ(presets->property(flag), QVariant(true)) << flag;
    }
    EXPECT_FALSE(presets->usesMainWindowIconSize());

    for (QToolButton* button :
         {form->mWorkAreaToggleRenderingSettingsButton, form->mWorkAreaUseCalibrationButton,
          form->mWorkAreaZoomPlusButton, form->mWorkAreaZoomMinusButton}) {
        SCOPED_TRACE(button->objectName().toStdString());
        EXPECT_EQ(button->minimumSize(), QSize(16, 16));
        EXPECT_EQ(button->maximumSize(), QSize(16, 16));
        EXPECT_EQ(button->isCheckable(), button == form->mWorkAreaUseCalibrationButton);
    }
    EXPECT_EQ(form->mWorkAreaScrollbar->orientation(), Qt::Horizontal);
    EXPECT_FALSE(form->mRenderMethodComboBox->isEditable());
    EXPECT_EQ(form->mRenderMethodComboBox->count(), 0);
}

TEST_F(Form, BothColourBarsAreExactlyTwentyPixelsHigh)
{
    form->show();
    QTabWidget* tabs = form->mColorManipulationTabWidget;
    for (QSize size : {form->size(), QSize(700, 1000)}) {
        form->resize(size);
        for (int page : {0, 1}) {
            tabs->setCurrentIndex(page);
            QApplication::processEvents();
            OXWLUTColorBar* bar = page == 0 ? form->mAmbientLUTColorBar : form->mDiffuseLUTColorBar;
            SCOPED_TRACE(bar->objectName().toStdString());
            ASSERT_TRUE(bar->isVisible());
            EXPECT_EQ(bar->height(), 20);
            EXPECT_GT(bar->width(), 20);
        }
    }
}

TEST_F(Form, StartsAtItsDesignSizeUnlessItNeedsMore)
{
    EXPECT_EQ(form->size(), QSize(283, 402).expandedTo(form->minimumSizeHint()));
    EXPECT_GE(form->width(), 283);
    EXPECT_GE(form->height(), 402);
}

TEST_F(Form, LanguageChangeSetsEveryText)
{
    QTabWidget* tabs = form->mColorManipulationTabWidget;
    const QStringList labels = {QStringLiteral("Ambient"), QStringLiteral("Diffuse"),
                                QStringLiteral("Specular"), QStringLiteral("Transparency"),
                                QStringLiteral("Swap")};
    for (int i = 0; i < tabs->count(); ++i) {
        EXPECT_EQ(tabs->tabText(i), labels[i]);
        tabs->setTabText(i, QString());
    }
    form->textLabel1->clear();
    form->mPresetGroupBox->setTitle(QString());
    form->mAmbientIntensitySpinBox->setAutoUndoScope(QString());
    form->setWindowTitle(QString());

    form->languageChange();
    for (int i = 0; i < tabs->count(); ++i) {
        EXPECT_EQ(tabs->tabText(i), labels[i]);
    }
    EXPECT_EQ(form->windowTitle(), QStringLiteral("Volume Rendering"));
    EXPECT_EQ(form->mPresetGroupBox->title(), QStringLiteral("Preset selection"));
    EXPECT_EQ(form->mOpacityManipulationGroupBox->title(),
              QStringLiteral("Opacity manipulation area"));
    EXPECT_EQ(form->mColorManipulationGroupBox->title(), QStringLiteral("Appearance"));
    EXPECT_EQ(form->mRenderMethodGroupBox->title(), QStringLiteral("Rendering settings"));
    EXPECT_EQ(form->textLabel1->text(), QStringLiteral("Intensity:"));
    EXPECT_EQ(form->textLabel1_2->text(), QStringLiteral("Intensity:"));
    EXPECT_EQ(form->textLabel2->text(), QStringLiteral("Shininess"));
    EXPECT_EQ(form->textLabel1_3->text(), QStringLiteral("Intensity:"));
    EXPECT_EQ(form->textLabel3->text(), QStringLiteral("Color:"));
    EXPECT_EQ(form->textLabel1_3_2->text(), QStringLiteral("Transparency:"));
    EXPECT_EQ(form->textLabel1_4->text(), QStringLiteral("Oversampling:"));
    EXPECT_EQ(form->mDiffuseSharedColortableCheckBox->text(), QStringLiteral("shared color"));
    EXPECT_EQ(form->mHiddenSurfaceRemovalCheckBox->text(),
              QStringLiteral("Remove hidden surfaces"));
    EXPECT_EQ(form->mSurfaceInvertedCheckBox->text(), QStringLiteral("Swap inner/outer areas"));
    EXPECT_EQ(form->mGradientNormalizationCheckBox->text(), QStringLiteral("Normalize gradients"));
    EXPECT_EQ(form->mWorkAreaToggleRenderingSettingsButton->text(), QStringLiteral("R"));
    EXPECT_EQ(form->mWorkAreaUseCalibrationButton->text(), QStringLiteral("C"));
    EXPECT_EQ(form->mWorkAreaZoomPlusButton->text(), QStringLiteral("+"));
    EXPECT_EQ(form->mWorkAreaZoomMinusButton->text(), QStringLiteral("-"));
    EXPECT_EQ(form->mAmbientIntensitySpinBox->autoUndoScope(),
              QStringLiteral("Set ambient intensity"));
    EXPECT_EQ(form->mDiffuseIntensitySpinBox->autoUndoScope(),
              QStringLiteral("Set diffuse intensity"));
    EXPECT_EQ(form->mSpecularShininessSpinBox->autoUndoScope(),
              QStringLiteral("Set specular shininess"));
    EXPECT_EQ(form->mSpecularIntensitySpinBox->autoUndoScope(),
              QStringLiteral("Set specular intensity"));
    EXPECT_EQ(form->mTransparencySpinBox->autoUndoScope(), QStringLiteral("Set transparency"));
    EXPECT_EQ(form->mOversamplingSpinBox->autoUndoScope(), QStringLiteral("Set oversampling"));
}

TEST(FormConstruction, PagesAreInsertedUnlabelledAndLabelledByLanguageChange)
{
    // Looks at the form from inside its first translation, i.e. from inside languageChange()
    // during construction.
    class Probe : public QTranslator
    {
    public:
        bool isEmpty() const override { return false; }
        QString translate(const char* context, const char*, const char* = nullptr,
                          int = -1) const override
        {
            if (seen || qstrcmp(context, "OXWClassificationToolGUIUI") != 0) {
                return QString();
            }
            for (QWidget* w : QApplication::allWidgets()) {
                if (w->objectName() == QLatin1String("probedForm")) {
                    auto* tabs =
                        w->findChild<QTabWidget*>(QStringLiteral("mColorManipulationTabWidget"));
                    seen = true;
                    pageCount = tabs ? tabs->count() : -1;
                    for (int i = 0; tabs && i < tabs->count(); ++i) {
                        labels << tabs->tabText(i);
                    }
                }
            }
            return QString();
        }
        mutable bool seen = false;
        mutable int pageCount = 0;
        mutable QStringList labels;
    };
    Probe probe;
    QCoreApplication::installTranslator(&probe);
    {
        TestForm form(nullptr, "probedForm");
        EXPECT_EQ(form.mColorManipulationTabWidget->tabText(0), QStringLiteral("Ambient"));
        EXPECT_EQ(form.mColorManipulationTabWidget->tabText(4), QStringLiteral("Swap"));
    }
    QCoreApplication::removeTranslator(&probe);
    ASSERT_TRUE(probe.seen);
    EXPECT_EQ(probe.pageCount, 5);
    EXPECT_EQ(probe.labels, (QStringList{QString(), QString(), QString(), QString(), QString()}));
}

TEST_F(Form, InstallingATranslatorRelabelsTheForm)
{
    form->show();
    PrefixTranslator german("OXWClassificationToolGUIUI", QStringLiteral("de:"));
    PrefixTranslator other("OXWSomethingElse", QStringLiteral("xx:"));
    QCoreApplication::installTranslator(&other);
    QCoreApplication::installTranslator(&german);
    QApplication::processEvents();

    QTabWidget* tabs = form->mColorManipulationTabWidget;
    EXPECT_EQ(tabs->tabText(0), QStringLiteral("de:Ambient"));
    EXPECT_EQ(tabs->tabText(1), QStringLiteral("de:Diffuse"));
    EXPECT_EQ(tabs->tabText(2), QStringLiteral("de:Specular"));
    EXPECT_EQ(tabs->tabText(3), QStringLiteral("de:Transparency"));
    EXPECT_EQ(tabs->tabText(4), QStringLiteral("de:Swap"));
    EXPECT_EQ(form->windowTitle(), QStringLiteral("de:Volume Rendering"));
    EXPECT_EQ(form->mRenderMethodGroupBox->title(), QStringLiteral("de:Rendering settings"));
    EXPECT_EQ(form->textLabel1_4->text(), QStringLiteral("de:Oversampling:"));
    EXPECT_EQ(form->mSurfaceInvertedCheckBox->text(), QStringLiteral("de:Swap inner/outer areas"));
    EXPECT_EQ(form->mTransparencySpinBox->autoUndoScope(), QStringLiteral("de:Set transparency"));

    QCoreApplication::removeTranslator(&german);
    QCoreApplication::removeTranslator(&other);
    QApplication::processEvents();
    EXPECT_EQ(tabs->tabText(0), QStringLiteral("Ambient"));
    EXPECT_EQ(form->mTransparencySpinBox->autoUndoScope(), QStringLiteral("Set transparency"));
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
