// The host's widgets and helpers: the spin box (with its undo steps), colour swatch, combo
// box, expand cursors, signal blocking.

#include "OXWApplication.h"
#include "OXWColorWidget.h"
#include "OXWSpinBox.h"
#include "OXWUndoStack.h"

#include <OXMObject.h>
#include <OXMSingleValueOP.h>

#include <QLineEdit>
#include <QLocale>
#include <QSignalSpy>
#include <QTest>
#include <QToolButton>

#include <gtest/gtest.h>

#include <functional>
#include <vector>

namespace {

class Material : public OXMObject
{
public:
    Material()
    {
        addProperty(OXM::Transparency, &transparency);
        addProperty(OXM::Opacity, &opacity);
    }
    OXMSingleValueOP<float> transparency{0.0f};
    OXMSingleValueOP<float> opacity{1.0f};
};

// A spin box configured like the tool panel's transparency box, whose slot writes two
// properties of a material.
class OXWSpinBoxUndoTest : public testing::Test
{
protected:
    void SetUp() override
    {
        box.setAutoMode(true);
        box.setMaxValue(100);
        box.setPrecision(0);
        box.setAutoUndoScope(QStringLiteral("Set transparency"));
        box.resize(120, 24);
        box.show();
        QObject::connect(&box, &OXWSpinBox::valueChanged, [this](double v) {
            actionOpenInSlot.push_back(app.isUserActionOpen());
            material.setValue(OXM::Transparency, float(v) / 100.0f);
            material.setValue(OXM::Opacity, 1.0f - float(v) / 100.0f);
        });
    }

    OXWApplication app;
    Material material;
    OXWSpinBox box{nullptr, "mTransparencySpinBox"};
    std::vector<bool> actionOpenInSlot;
};

// Installs a choice hook for the test's lifetime.
class ChooseColorHookScope
{
public:
    explicit ChooseColorHookScope(OXWColorWidget::ChooseColorHook hook)
        : mPrevious(OXWColorWidget::setChooseColorHook(std::move(hook)))
    {
    }
    ~ChooseColorHookScope() { OXWColorWidget::setChooseColorHook(std::move(mPrevious)); }

private:
    OXWColorWidget::ChooseColorHook mPrevious;
};

} // namespace

// The up and down buttons, keys, the wheel and typed text committed with Return: one step
// each, named after the scope, which takes both writes of the slot.
TEST_F(OXWSpinBoxUndoTest, EachUserChangeIsOneUndoStepNamedAfterTheScope)
{
    const auto wheel = [this] {
        QWheelEvent event(QPointF(5, 5), box.mapToGlobal(QPoint(5, 5)), QPoint(), QPoint(0, 120),
                          Qt::NoButton, Qt::NoModifier, Qt::NoScrollPhase, false);
        QApplication::sendEvent(&box, &event);
    };
    const std::pair<std::function<void()>, double> changes[] = {
        {[this] { QTest::mouseClick(box.upButton(), Qt::LeftButton); }, 1.0},
        {[this] { QTest::keyClick(box.lineEdit(), Qt::Key_Up); }, 2.0},
        {[this] { QTest::keyClick(box.lineEdit(), Qt::Key_PageUp); }, 12.0},
        {wheel, 13.0},
        {[this] { QTest::mouseClick(box.downButton(), Qt::LeftButton); }, 12.0}};
    for (const auto& [change, value] : changes) {
        change();
        EXPECT_EQ(box.value(), value);
    }
    QTest::keyClick(box.lineEdit(), Qt::Key_A, Qt::ControlModifier);
    QTest::keyClicks(box.lineEdit(), QStringLiteral("42"));
    EXPECT_EQ(actionOpenInSlot.size(), 5u) << "nothing until committed";
    QTest::keyClick(box.lineEdit(), Qt::Key_Return);
    EXPECT_EQ(box.value(), 42.0);
    EXPECT_EQ(actionOpenInSlot, (std::vector<bool>(6, true)));
    EXPECT_FALSE(app.isUserActionOpen());
    ASSERT_EQ(app.undoStack()->count(), 6);
    EXPECT_EQ(app.undoStack()->undoName(), QStringLiteral("Set transparency"));
    ASSERT_TRUE(app.undoStack()->undo());
    EXPECT_FLOAT_EQ(material.transparency.getValue(), 0.12f);
    EXPECT_FLOAT_EQ(material.opacity.getValue(), 1.0f - 0.12f);
    // Programmatic changes, and user changes without a scope name, open no action; a change to
    // the same value sends nothing.
    actionOpenInSlot.clear();
    QSignalSpy spy(&box, &OXWSpinBox::valueChanged);
    box.setValue(30);
    box.setValue(30);
    QTest::keyClick(box.lineEdit(), Qt::Key_Return);
    EXPECT_EQ(spy.count(), 1);
    box.setAutoUndoScope(QString());
    QTest::mouseClick(box.upButton(), Qt::LeftButton);
    EXPECT_EQ(actionOpenInSlot, (std::vector<bool>{false, false}));
    EXPECT_EQ(app.undoStack()->count(), 5);
}

TEST(OXWSpinBox, ClampsRoundsShowsThePrecisionAndStepsWithoutLineEditing)
{
    OXWSpinBox box;
    box.setMinValue(-5);
    box.setMaxValue(10);
    box.setPrecision(2);
    box.setValue(3.14159);
    EXPECT_DOUBLE_EQ(box.value(), 3.14);
    EXPECT_EQ(box.lineEdit()->text(), QLocale().toString(3.14, 'f', 2));
    for (const auto& [set, kept] : {std::pair(20.0, 10.0), std::pair(-20.0, -5.0)}) {
        box.setValue(set);
        EXPECT_EQ(box.value(), kept);
    }
    box.setMaxValue(-8); // the minimum follows
    EXPECT_EQ(box.minValue(), -8.0);
    EXPECT_EQ(box.value(), -8.0);
    // Without line editing the text is read-only; keys still step.
    box.setRange(0, 10);
    box.setLineEditMode(false);
    box.show();
    EXPECT_TRUE(box.lineEdit()->isReadOnly());
    QTest::keyClicks(box.lineEdit(), QStringLiteral("9"));
    QTest::keyClick(box.lineEdit(), Qt::Key_Return);
    EXPECT_EQ(box.value(), 0.0);
    QTest::keyClick(&box, Qt::Key_Up);
    EXPECT_EQ(box.value(), 1.0);
}

// Automatic mode steps by the value's magnitude, but never below one shown unit nor the steps
// it was given: the oversampling box (one decimal, steps of 0.5) steps by 0.5 where the
// magnitude alone would give 0.1.
TEST(OXWSpinBox, AutomaticModeStepsByTheMagnitudeButNeverBelowTheGivenSteps)
{
    OXWSpinBox box;
    box.setMaxValue(10000);
    box.setAutoMode(true);
    for (const auto& [value, line] :
         {std::pair(0.0, 1.0), std::pair(50.0, 1.0), std::pair(500.0, 10.0)}) {
        box.setValue(value);
        EXPECT_EQ(box.effectiveLineStep(), line) << value;
    }
    EXPECT_EQ(box.effectivePageStep(), 100.0);
    box.stepUp();
    EXPECT_EQ(box.value(), 510.0);
    box.setPrecision(2);
    box.setValue(0.5);
    box.setPrecisionReference(0.01);
    EXPECT_DOUBLE_EQ(box.effectiveLineStep(), 0.01);
    box.setAutoMode(false);
    box.setLineStep(7);
    EXPECT_EQ(box.effectiveLineStep(), 7.0);

    box.setAutoMode(true);
    box.setPrecision(1);
    box.setPrecisionReference(0.5);
    box.setRange(0.5, 50.0);
    box.setLineStep(0.5);
    box.setPageStep(0.5);
    struct Step
    {
        double from;
        int lines;
        int pages;
        double to;
    };
    for (const Step& s : {Step{2.0, 1, 0, 2.5}, Step{2.0, -1, 0, 1.5}, Step{0.5, 1, 0, 1.0},
                          Step{20.0, 1, 0, 21.0}, Step{2.0, 0, 1, 7.0}, Step{50.0, 1, 0, 50.0}}) {
        box.setValue(s.from);
        box.stepBy(s.lines);
        box.pageBy(s.pages);
        EXPECT_DOUBLE_EQ(box.value(), s.to) << s.from << " +" << s.lines << " lines +" << s.pages;
    }
}

// In a German locale, "2,5" and "3.5" are read and "3,5" shown; text that is no number
// leaves the value.
TEST(OXWSpinBox, TypedTextInTheCLocaleOrTheUsersLocale)
{
    const QLocale previous;
    QLocale::setDefault(QLocale(QLocale::German, QLocale::Germany));
    {
        OXWSpinBox box;
        box.setPrecision(1);
        for (const auto& [typed, value] :
             {std::pair("2,5", 2.5), std::pair("3.5", 3.5), std::pair("abc", 3.5)}) {
            box.lineEdit()->setText(QString::fromLatin1(typed));
            QTest::keyClick(box.lineEdit(), Qt::Key_Return);
            EXPECT_DOUBLE_EQ(box.value(), value) << typed;
        }
        EXPECT_EQ(box.lineEdit()->text(), QStringLiteral("3,5"));
    }
    QLocale::setDefault(previous);
}

// A click asks for a colour and reports it; a cancelled choice, a right click and programmatic
// changes report nothing.
TEST(OXWColorWidget, AClickReportsTheChosenColourAndNothingElseDoes)
{
    OXWColorWidget widget(nullptr, "mSpecularColorWidget");
    widget.setColor(QColor(255, 255, 255));
    widget.setAlpha(255);
    widget.resize(20, 8);
    widget.show();
    QColor offered, answer(51, 102, 255, 10);
    bool alphaOffered = true;
    ChooseColorHookScope hook([&](const QColor& current, bool alphaEditable) {
        offered = current;
        alphaOffered = alphaEditable;
        return answer;
    });
    std::vector<OXMRGBf> reported;
    QObject::connect(&widget, &OXWColorWidget::rgbChanged,
                     [&](const OXMRGBf& rgb) { reported.push_back(rgb); });
    QSignalSpy colorSpy(&widget, &OXWColorWidget::colorChanged);

    QTest::mouseClick(&widget, Qt::LeftButton);
    EXPECT_EQ(offered, QColor(255, 255, 255));
    EXPECT_FALSE(alphaOffered);
    ASSERT_EQ(reported.size(), 1u);
    EXPECT_FLOAT_EQ(reported[0].r, 0.2f);
    EXPECT_FLOAT_EQ(reported[0].g, 0.4f);
    EXPECT_FLOAT_EQ(reported[0].b, 1.0f);
    EXPECT_EQ(colorSpy.count(), 1);
    EXPECT_EQ(widget.color(), QColor(51, 102, 255, 255)) << "the alpha is not editable: kept";

    widget.setAlphaEditable(true);
    QTest::mouseClick(&widget, Qt::LeftButton);
    EXPECT_TRUE(alphaOffered);
    EXPECT_EQ(widget.alpha(), 10);
    QTest::mouseClick(&widget, Qt::RightButton); // does nothing
    answer = QColor();                           // the user cancels
    QTest::mouseClick(&widget, Qt::LeftButton);
    QTest::keyClick(&widget, Qt::Key_Space);
    EXPECT_EQ(reported.size(), 2u);
    EXPECT_EQ(widget.color(), QColor(51, 102, 255, 10));
    // Programmatic changes report nothing; the swatch shows the colour.
    widget.setColor(QColor(10, 200, 30));
    widget.setAlpha(300);
    EXPECT_EQ(widget.alpha(), 255);
    widget.setColor(QColor()); // invalid: ignored
    EXPECT_EQ(reported.size(), 2u);
    EXPECT_EQ(QColor(widget.grab().toImage().pixel(10, 4)), QColor(10, 200, 30));
}
