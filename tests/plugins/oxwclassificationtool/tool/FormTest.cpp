// The classification tool's form: names, layout, texts, tab order and the event filter that the
// editors install on it.

#include <OXWClassificationToolGUIUI.h>
#include <OXWLUTColorBar.h>
#include <OXWLUTWorkArea.h>

#include <OXWColorWidget.h>
#include <OXWPresetComboBox.h>
#include <OXWSpinBox.h>

#include <QApplication>
#include <QCheckBox>
#include <QGroupBox>
#include <QLabel>
#include <QLayout>
#include <QMouseEvent>
#include <QTabWidget>
#include <QToolButton>
#include <QTranslator>

#include <gtest/gtest.h>

#include <algorithm>
#include <map>
#include <memory>
#include <set>
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

// Names are how the panel, style sheets and scripts find the form's parts.
TEST_F(Form, EveryWidgetAndLayoutHasANameOfItsOwn)
{
    EXPECT_EQ(form->objectName(), QStringLiteral("OXWClassificationToolGUIUI"));
    EXPECT_EQ(TestForm(nullptr, "panel").objectName(), QStringLiteral("panel"));
    const std::vector<QWidget*> containers =
        containersOf(form.get(), form->mColorManipulationTabWidget);
    std::set<QObject*> parts;
    for (QWidget* container : containers) {
        std::vector<QWidget*> widgets;
        managedWidgets(container->layout(), widgets);
        parts.insert(widgets.begin(), widgets.end());
    }
    for (QLayout* layout : form->findChildren<QLayout*>()) {
        if (std::count(containers.begin(), containers.end(), layout->parentWidget()) != 0) {
            parts.insert(layout);
        }
    }
    EXPECT_EQ(parts.size(), 48u);
    for (QObject* part : parts) {
        const QString name = part->objectName();
        EXPECT_EQ(form->findChildren<QObject*>(name).size(), 1)
            << part->metaObject()->className() << " \"" << name.toStdString() << "\"";
    }
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

// Whatever size the dock gives it, on every page: every widget of the form is laid out, no two
// visible ones overlap, and the colour bars keep their height of 20 pixels.
TEST_F(Form, EveryWidgetIsLaidOutWithoutOverlapAndTheColourBarsAreTwentyPixelsHigh)
{
    form->show();
    QTabWidget* tabs = form->mColorManipulationTabWidget;
    for (QSize size : {form->size(), QSize(700, 1000)}) {
        form->resize(size);
        for (int page = 0; page < tabs->count(); ++page) {
            tabs->setCurrentIndex(page);
            QApplication::processEvents();
            for (QWidget* container : containersOf(form.get(), tabs)) {
                std::vector<QWidget*> laidOut;
                managedWidgets(container->layout(), laidOut);
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
            OXWLUTColorBar* bar = page == 0 ? form->mAmbientLUTColorBar : form->mDiffuseLUTColorBar;
            if (page < 2) {
                EXPECT_EQ(bar->height(), 20);
                EXPECT_GT(bar->width(), 20);
            }
        }
    }
}

// Every text comes through the translator of the form's context, also when one is installed
// later, and comes back when it is removed.
TEST_F(Form, EveryTextIsTranslatedAndTheFormIsRelabelledWhenATranslatorComesOrGoes)
{
    form->show();
    const QStringList english = textsOf(form.get());
    EXPECT_EQ(english.size(), 31);
    EXPECT_TRUE(english.contains(QStringLiteral("Volume Rendering")));
    EXPECT_TRUE(english.contains(QStringLiteral("Set transparency")));

    PrefixTranslator german("OXWClassificationToolGUIUI", QStringLiteral("de:"));
    PrefixTranslator other("OXWSomethingElse", QStringLiteral("xx:"));
    QCoreApplication::installTranslator(&other);
    QCoreApplication::installTranslator(&german);
    QApplication::processEvents();
    QStringList expected;
    for (const QString& text : english) {
        expected << QStringLiteral("de:") + text;
    }
    EXPECT_EQ(textsOf(form.get()), expected);
    {
        TestForm later;
        EXPECT_EQ(textsOf(&later), expected);
    }

    QCoreApplication::removeTranslator(&german);
    QCoreApplication::removeTranslator(&other);
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
