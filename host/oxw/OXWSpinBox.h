#pragma once

#include "OXWApplication.h"

#include <QString>
#include <QWidget>

#include <memory>

class QBoxLayout;
class QLineEdit;
class QToolButton;

// A spin box for floating-point values: a text field and two arrow buttons.
//
// Value: clamped to [minValue, maxValue] and rounded to precision() decimals (default 0..100,
// precision 0, line step 1, page step 10).
//
// User changes — typing (committed with Return or when the field loses focus), the arrow
// buttons, the Up / Down / PageUp / PageDown keys and the mouse wheel (PageUp / PageDown and
// Ctrl+wheel use the page step) — are clamped, rounded and, when the value changes, emitted
// by valueChanged. With an undo scope name set (setAutoUndoScope), each such emission runs
// inside an OXWApplication::UserActionScope of that name, so whatever the connected slots
// write becomes one undo step with that name. Holding an arrow button down (auto-repeat) is
// one user action from press to release, so the whole run is one step. setValue
// (programmatic) emits valueChanged too, but opens no user action.
//
// Modes:
// - arrow layout 0 (ArrowsStacked, default): an up arrow above a down arrow right of the field;
//   1 (ArrowsBeside): a left (decrease) and a right (increase) arrow side by side right of the
//   field. Other values are taken as 0.
// - automatic mode: the steps adapt to the magnitude of the value: the line step is
//   10^(floor(log10(m)) - 1) with m = max(|value|, precisionReference()), so one step changes
//   the second significant digit (1 at 50, 10 at 500), but never less than one unit of the
//   last shown decimal, nor less than a line step given with setLineStep (0.5 steps 2.0 to
//   2.5, and 20 to 21); the page step is ten line steps, at least a page step given with
//   setPageStep. Off: the fixed line / page steps.
// - line-edit mode (default on): the field can be typed into. Off: the field only shows the
//   value (read-only, no focus); the arrows, keys and wheel still change it.
class OXWSpinBox : public QWidget
{
    Q_OBJECT
public:
    enum ArrowLayout
    {
        ArrowsStacked = 0,
        ArrowsBeside = 1
    };

    explicit OXWSpinBox(QWidget* parent = nullptr, const char* name = nullptr,
                        Qt::WindowFlags flags = Qt::WindowFlags());
    ~OXWSpinBox() override;

    double value() const { return mValue; }
    // Programmatic change: clamped and rounded; emits valueChanged when the value changes.
    void setValue(double value);

    double minValue() const { return mMin; }
    double maxValue() const { return mMax; }
    // The other bound follows when the range would be empty; the value is clamped (silently
    // emitting valueChanged like setValue when it moves).
    void setMinValue(double value);
    void setMaxValue(double value);
    void setRange(double minimum, double maximum);

    int precision() const { return mPrecision; }
    // Decimals shown and kept, 0..10.
    void setPrecision(int decimals);
    double precisionReference() const { return mPrecisionReference; }
    // The smallest magnitude the automatic steps relate to (default 1).
    void setPrecisionReference(double reference);

    double lineStep() const { return mLineStep; }
    void setLineStep(double step);
    double pageStep() const { return mPageStep; }
    void setPageStep(double step);
    // The steps in effect (automatic mode included).
    double effectiveLineStep() const;
    double effectivePageStep() const;

    int arrowLayout() const { return mArrowLayout; }
    void setArrowLayout(int layout);
    bool autoMode() const { return mAutoMode; }
    void setAutoMode(bool on) { mAutoMode = on; }
    bool lineEditMode() const { return mLineEditMode; }
    void setLineEditMode(bool on);

    QString autoUndoScope() const { return mUndoScope; }
    // The name of the user action opened around user changes; empty: none.
    void setAutoUndoScope(const QString& name) { mUndoScope = name; }

    // User operations (as the arrows / keys do them).
    void stepUp() { stepBy(1); }
    void stepDown() { stepBy(-1); }
    void stepBy(int lineSteps);
    void pageBy(int pageSteps);

    QString text() const;
    QLineEdit* lineEdit() const { return mLineEdit; }
    QToolButton* upButton() const { return mUpButton; }
    QToolButton* downButton() const { return mDownButton; }

signals:
    void valueChanged(double value);

protected:
    bool eventFilter(QObject* watched, QEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;
    void wheelEvent(QWheelEvent* event) override;

private:
    double normalized(double value) const;
    void setUserValue(double value);
    void commitText();
    void updateText();
    void rebuildArrows();
    bool handleKey(QKeyEvent* event);

    QLineEdit* mLineEdit;
    QToolButton* mUpButton;
    QToolButton* mDownButton;
    QWidget* mArrowBox;
    double mValue = 0.0;
    double mMin = 0.0;
    double mMax = 100.0;
    int mPrecision = 0;
    double mPrecisionReference = 1.0;
    double mLineStep = 1.0;
    double mPageStep = 10.0;
    int mArrowLayout = ArrowsStacked;
    bool mAutoMode = false;
    // Whether setLineStep / setPageStep gave steps: automatic mode keeps them as smallest steps.
    bool mStepsGiven = false;
    bool mLineEditMode = true;
    QString mUndoScope;
    int mWheelRemainder = 0;
    // The user action open while an arrow button is held down.
    std::unique_ptr<OXWApplication::UserActionScope> mHeldScope;
    bool mForwardingRelease = false;
};
