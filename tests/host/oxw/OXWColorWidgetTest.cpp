#include "OXWColorWidget.h"

#include <QSignalSpy>
#include <QTest>

#include <gtest/gtest.h>

#include <vector>

namespace {
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

TEST(OXWColorWidget, AClickReportsTheChosenColour)
{
    OXWColorWidget widget(nullptr, "mSpecularColorWidget");
    widget.setColor(QColor(255, 255, 255));
    widget.setAlpha(255);
    widget.setAlphaEditable(false);
    widget.resize(20, 8);
    widget.show();

    QColor offered;
    bool alphaOffered = true;
    ChooseColorHookScope hook([&](const QColor& current, bool alphaEditable) {
        offered = current;
        alphaOffered = alphaEditable;
        return QColor(51, 102, 255, 10);
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
    // The alpha is not editable: the choice keeps the widget's alpha.
    EXPECT_EQ(widget.color(), QColor(51, 102, 255, 255));

    widget.setAlphaEditable(true);
    QTest::mouseClick(&widget, Qt::LeftButton);
    EXPECT_TRUE(alphaOffered);
    EXPECT_EQ(widget.alpha(), 10);
    EXPECT_EQ(reported.size(), 2u);

    // The right button does nothing.
    QTest::mouseClick(&widget, Qt::RightButton);
    EXPECT_EQ(reported.size(), 2u);
}

TEST(OXWColorWidget, CancelAndProgrammaticChangesEmitNothing)
{
    OXWColorWidget widget;
    int emitted = 0;
    QObject::connect(&widget, &OXWColorWidget::rgbChanged, [&] { ++emitted; });
    widget.setColor(QColor(1, 2, 3));
    widget.setAlpha(300);
    EXPECT_EQ(widget.alpha(), 255);
    widget.setColor(QColor()); // invalid: ignored
    EXPECT_EQ(widget.color(), QColor(1, 2, 3));

    ChooseColorHookScope hook([](const QColor&, bool) { return QColor(); });
    widget.resize(20, 8);
    widget.show();
    QTest::mouseClick(&widget, Qt::LeftButton);
    QTest::keyClick(&widget, Qt::Key_Space);
    EXPECT_EQ(emitted, 0);
    EXPECT_EQ(widget.color(), QColor(1, 2, 3));
}

TEST(OXWColorWidget, TheSwatchShowsTheColour)
{
    OXWColorWidget widget;
    widget.setFrameStyle(QFrame::Panel | QFrame::Sunken);
    widget.setColor(QColor(10, 200, 30));
    widget.resize(20, 10);
    const QImage image = widget.grab().toImage();
    EXPECT_EQ(QColor(image.pixel(10, 5)), QColor(10, 200, 30));
}

class ChoosingWidget : public OXWColorWidget
{
protected:
    QColor chooseColor() override { return QColor(0, 255, 0); }
};

TEST(OXWColorWidget, ASubclassCanAnswerTheChoice)
{
    ChoosingWidget widget;
    std::vector<OXMRGBf> reported;
    QObject::connect(&widget, &OXWColorWidget::rgbChanged,
                     [&](const OXMRGBf& rgb) { reported.push_back(rgb); });
    EXPECT_TRUE(widget.chooseAndApply());
    ASSERT_EQ(reported.size(), 1u);
    EXPECT_EQ(reported[0], OXMRGBf(0.0f, 1.0f, 0.0f));
}
