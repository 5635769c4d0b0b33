#include "OXWSpinBox.h"
#include "OXWApplication.h"
#include "OXWUndoStack.h"

#include <OXMObject.h>
#include <OXMSingleValueOP.h>

#include <QLineEdit>
#include <QLocale>
#include <QSignalSpy>
#include <QTest>
#include <QToolButton>

#include <gtest/gtest.h>

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
} // namespace

TEST_F(OXWSpinBoxUndoTest, TypingIsOneUndoStepNamedAfterTheScope)
{
    QTest::keyClick(box.lineEdit(), Qt::Key_A, Qt::ControlModifier);
    QTest::keyClicks(box.lineEdit(), QStringLiteral("42"));
    EXPECT_TRUE(actionOpenInSlot.empty()); // nothing until committed
    QTest::keyClick(box.lineEdit(), Qt::Key_Return);
    EXPECT_EQ(box.value(), 42.0);
    EXPECT_EQ(actionOpenInSlot, (std::vector<bool>{true}));
    EXPECT_FALSE(app.isUserActionOpen());
    ASSERT_EQ(app.undoStack()->count(), 1);
    EXPECT_EQ(app.undoStack()->undoName(), QStringLiteral("Set transparency"));

    // Both writes of the slot are undone together.
    ASSERT_TRUE(app.undoStack()->undo());
    float t = -1.0f, o = -1.0f;
    material.getValue(OXM::Transparency, t);
    material.getValue(OXM::Opacity, o);
    EXPECT_EQ(t, 0.0f);
    EXPECT_EQ(o, 1.0f);
}

TEST_F(OXWSpinBoxUndoTest, ArrowsKeysAndWheelEachMakeOneStep)
{
    QTest::mouseClick(box.upButton(), Qt::LeftButton);
    EXPECT_EQ(box.value(), 1.0);
    QTest::keyClick(box.lineEdit(), Qt::Key_Up);
    EXPECT_EQ(box.value(), 2.0);
    QTest::keyClick(box.lineEdit(), Qt::Key_PageUp);
    EXPECT_EQ(box.value(), 12.0);
    QWheelEvent wheel(QPointF(5, 5), box.mapToGlobal(QPoint(5, 5)), QPoint(), QPoint(0, 120),
                      Qt::NoButton, Qt::NoModifier, Qt::NoScrollPhase, false);
    QApplication::sendEvent(&box, &wheel);
    EXPECT_EQ(box.value(), 13.0);
    QTest::mouseClick(box.downButton(), Qt::LeftButton);
    EXPECT_EQ(box.value(), 12.0);
    EXPECT_EQ(actionOpenInSlot, (std::vector<bool>(5, true)));
    EXPECT_EQ(app.undoStack()->count(), 5);
    EXPECT_EQ(app.undoStack()->undoName(), QStringLiteral("Set transparency"));
}

TEST_F(OXWSpinBoxUndoTest, HoldingAnArrowIsOneStep)
{
    box.upButton()->setAutoRepeatDelay(5);
    box.upButton()->setAutoRepeatInterval(5);
    QTest::mousePress(box.upButton(), Qt::LeftButton);
    EXPECT_TRUE(app.isUserActionOpen());
    QTest::qWait(100);
    QTest::mouseRelease(box.upButton(), Qt::LeftButton);
    EXPECT_FALSE(app.isUserActionOpen());
    EXPECT_GE(box.value(), 2.0);
    EXPECT_GE(actionOpenInSlot.size(), 2u);
    EXPECT_EQ(app.undoStack()->count(), 1);
    EXPECT_EQ(app.undoStack()->undoName(), QStringLiteral("Set transparency"));
    ASSERT_TRUE(app.undoStack()->undo());
    float t = -1.0f;
    material.getValue(OXM::Transparency, t);
    EXPECT_EQ(t, 0.0f);
}

TEST_F(OXWSpinBoxUndoTest, ProgrammaticChangesOpenNoAction)
{
    QSignalSpy spy(&box, &OXWSpinBox::valueChanged);
    box.setValue(30);
    EXPECT_EQ(spy.count(), 1);
    EXPECT_EQ(actionOpenInSlot, (std::vector<bool>{false}));
    EXPECT_EQ(app.undoStack()->count(), 0);
    // No change: no signal; and a user change to the same value neither.
    box.setValue(30);
    QTest::keyClick(box.lineEdit(), Qt::Key_Return);
    EXPECT_EQ(spy.count(), 1);
    EXPECT_EQ(app.undoStack()->count(), 0);
}

TEST_F(OXWSpinBoxUndoTest, WithoutScopeNameUserChangesOpenNoAction)
{
    box.setAutoUndoScope(QString());
    QTest::mouseClick(box.upButton(), Qt::LeftButton);
    EXPECT_EQ(actionOpenInSlot, (std::vector<bool>{false}));
}

TEST(OXWSpinBox, ClampsRoundsAndShowsThePrecision)
{
    OXWSpinBox box(nullptr, "box");
    EXPECT_EQ(box.objectName(), QStringLiteral("box"));
    box.setMinValue(-5);
    box.setMaxValue(10);
    box.setPrecision(2);
    box.setValue(3.14159);
    EXPECT_DOUBLE_EQ(box.value(), 3.14);
    EXPECT_EQ(box.lineEdit()->text(), QLocale().toString(3.14, 'f', 2));
    box.setValue(20);
    EXPECT_EQ(box.value(), 10.0);
    box.setValue(-20);
    EXPECT_EQ(box.value(), -5.0);
    box.setMaxValue(-8); // the minimum follows
    EXPECT_EQ(box.minValue(), -8.0);
    EXPECT_EQ(box.value(), -8.0);
}

TEST(OXWSpinBox, AutomaticModeAdaptsTheStepToTheValue)
{
    OXWSpinBox box;
    box.setMaxValue(10000);
    box.setAutoMode(true);
    box.setValue(0);
    EXPECT_EQ(box.effectiveLineStep(), 1.0); // never below one shown unit
    box.setValue(50);
    EXPECT_EQ(box.effectiveLineStep(), 1.0);
    box.setValue(500);
    EXPECT_EQ(box.effectiveLineStep(), 10.0);
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
}

// Automatic mode keeps the steps it was given as its smallest steps: the oversampling box
// (one decimal, steps of 0.5) steps by 0.5 where the magnitude alone would give 0.1.
TEST(OXWSpinBox, AutomaticModeNeverStepsBelowTheGivenSteps)
{
    OXWSpinBox box;
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

TEST(OXWSpinBox, ArrowLayoutAndLineEditMode)
{
    OXWSpinBox box;
    EXPECT_EQ(box.arrowLayout(), OXWSpinBox::ArrowsStacked);
    EXPECT_EQ(box.upButton()->arrowType(), Qt::UpArrow);
    box.setArrowLayout(1);
    EXPECT_EQ(box.arrowLayout(), OXWSpinBox::ArrowsBeside);
    EXPECT_EQ(box.upButton()->arrowType(), Qt::RightArrow);
    EXPECT_EQ(box.downButton()->arrowType(), Qt::LeftArrow);
    box.setArrowLayout(7);
    EXPECT_EQ(box.arrowLayout(), OXWSpinBox::ArrowsStacked);

    box.setLineEditMode(false);
    box.resize(100, 24);
    box.show();
    EXPECT_TRUE(box.lineEdit()->isReadOnly());
    QTest::keyClicks(box.lineEdit(), QStringLiteral("9"));
    QTest::keyClick(box.lineEdit(), Qt::Key_Return);
    EXPECT_EQ(box.value(), 0.0);
    QTest::keyClick(&box, Qt::Key_Up); // keys still step
    EXPECT_EQ(box.value(), 1.0);
}

TEST(OXWSpinBox, TypedTextInTheCLocaleOrTheUsersLocale)
{
    const QLocale previous;
    QLocale::setDefault(QLocale(QLocale::German, QLocale::Germany));
    {
        OXWSpinBox box;
        box.setPrecision(1);
        box.lineEdit()->setText(QStringLiteral("2,5"));
        QTest::keyClick(box.lineEdit(), Qt::Key_Return);
        EXPECT_DOUBLE_EQ(box.value(), 2.5);
        box.lineEdit()->setText(QStringLiteral("3.5"));
        QTest::keyClick(box.lineEdit(), Qt::Key_Return);
        EXPECT_DOUBLE_EQ(box.value(), 3.5);
        EXPECT_EQ(box.lineEdit()->text(), QStringLiteral("3,5"));
        box.lineEdit()->setText(QStringLiteral("abc"));
        QTest::keyClick(box.lineEdit(), Qt::Key_Return);
        EXPECT_DOUBLE_EQ(box.value(), 3.5);
        EXPECT_EQ(box.lineEdit()->text(), QStringLiteral("3,5"));
    }
    QLocale::setDefault(previous);
}
