#include "OXWSpinBox.h"

#include <QCoreApplication>
#include <QHBoxLayout>
#include <QKeyEvent>
#include <QLineEdit>
#include <QLocale>
#include <QMouseEvent>
#include <QToolButton>
#include <QVBoxLayout>
#include <QWheelEvent>

#include <algorithm>
#include <cmath>
#include <memory>

OXWSpinBox::OXWSpinBox(QWidget* parent, const char* name, Qt::WindowFlags flags)
    : QWidget(parent, flags), mLineEdit(new QLineEdit(this)), mUpButton(new QToolButton(this)),
      mDownButton(new QToolButton(this)), mArrowBox(new QWidget(this))
{
    if (name)
        setObjectName(QString::fromLatin1(name));
    mLineEdit->setObjectName(QStringLiteral("lineEdit"));
    mUpButton->setObjectName(QStringLiteral("upButton"));
    mDownButton->setObjectName(QStringLiteral("downButton"));
    mLineEdit->setAlignment(Qt::AlignRight | Qt::AlignVCenter);
    for (QToolButton* b : {mUpButton, mDownButton}) {
        b->setAutoRepeat(true);
        b->setFocusPolicy(Qt::NoFocus);
        b->setSizePolicy(QSizePolicy::Fixed, QSizePolicy::Expanding);
    }
    auto* layout = new QHBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->setSpacing(0);
    layout->addWidget(mLineEdit, 1);
    layout->addWidget(mArrowBox);
    rebuildArrows();

    setFocusPolicy(Qt::WheelFocus);
    setFocusProxy(mLineEdit);
    setSizePolicy(QSizePolicy::Preferred, QSizePolicy::Fixed);
    mLineEdit->installEventFilter(this);
    mUpButton->installEventFilter(this);
    mDownButton->installEventFilter(this);
    connect(mUpButton, &QToolButton::clicked, this, [this] { stepBy(1); });
    connect(mDownButton, &QToolButton::clicked, this, [this] { stepBy(-1); });
    connect(mLineEdit, &QLineEdit::editingFinished, this, &OXWSpinBox::commitText);
    updateText();
}

OXWSpinBox::~OXWSpinBox()
{
    // The children outlive this part of the object: a focused line edit reports
    // editingFinished when it loses the focus during ~QWidget, and the buttons may still be
    // filtered. Nothing of that may reach this object any more.
    mLineEdit->disconnect(this);
    mLineEdit->removeEventFilter(this);
    mUpButton->removeEventFilter(this);
    mDownButton->removeEventFilter(this);
}

double OXWSpinBox::normalized(double value) const
{
    if (std::isnan(value))
        value = mMin;
    value = std::clamp(value, mMin, mMax);
    const double f = std::pow(10.0, mPrecision);
    const double rounded = std::round(value * f) / f;
    // Rounding must not leave the range.
    return std::clamp(rounded, mMin, mMax);
}

void OXWSpinBox::setValue(double value)
{
    const double v = normalized(value);
    if (v == mValue) {
        updateText();
        return;
    }
    mValue = v;
    updateText();
    emit valueChanged(mValue);
}

void OXWSpinBox::setUserValue(double value)
{
    const double v = normalized(value);
    if (v == mValue) {
        updateText();
        return;
    }
    std::unique_ptr<OXWApplication::UserActionScope> scope;
    if (!mUndoScope.isEmpty())
        scope = std::make_unique<OXWApplication::UserActionScope>(
            mUndoScope, OXWApplication::StepName::FromThisAction);
    mValue = v;
    updateText();
    emit valueChanged(mValue);
}

void OXWSpinBox::setMinValue(double value)
{
    setRange(value, std::max(value, mMax));
}

void OXWSpinBox::setMaxValue(double value)
{
    setRange(std::min(value, mMin), value);
}

void OXWSpinBox::setRange(double minimum, double maximum)
{
    if (std::isnan(minimum) || std::isnan(maximum))
        return;
    mMin = std::min(minimum, maximum);
    mMax = std::max(minimum, maximum);
    setValue(mValue);
}

void OXWSpinBox::setPrecision(int decimals)
{
    mPrecision = std::clamp(decimals, 0, 10);
    setValue(mValue);
    updateText();
}

void OXWSpinBox::setPrecisionReference(double reference)
{
    if (reference > 0.0)
        mPrecisionReference = reference;
}

void OXWSpinBox::setLineStep(double step)
{
    if (step > 0.0) {
        mLineStep = step;
        mStepsGiven = true;
    }
}

void OXWSpinBox::setPageStep(double step)
{
    if (step > 0.0) {
        mPageStep = step;
        mStepsGiven = true;
    }
}

double OXWSpinBox::effectiveLineStep() const
{
    if (!mAutoMode)
        return mLineStep;
    const double m = std::max(std::fabs(mValue), mPrecisionReference);
    const double step = std::pow(10.0, std::floor(std::log10(m)) - 1.0);
    const double smallest = std::max(std::pow(10.0, -mPrecision), mStepsGiven ? mLineStep : 0.0);
    return std::max(step, smallest);
}

double OXWSpinBox::effectivePageStep() const
{
    if (!mAutoMode)
        return mPageStep;
    return std::max(10.0 * effectiveLineStep(), mStepsGiven ? mPageStep : 0.0);
}

void OXWSpinBox::stepBy(int lineSteps)
{
    if (lineSteps != 0)
        setUserValue(mValue + lineSteps * effectiveLineStep());
}

void OXWSpinBox::pageBy(int pageSteps)
{
    if (pageSteps != 0)
        setUserValue(mValue + pageSteps * effectivePageStep());
}

void OXWSpinBox::setArrowLayout(int layout)
{
    const int l = layout == ArrowsBeside ? ArrowsBeside : ArrowsStacked;
    if (l == mArrowLayout)
        return;
    mArrowLayout = l;
    rebuildArrows();
}

void OXWSpinBox::rebuildArrows()
{
    delete mArrowBox->layout();
    QBoxLayout* box;
    if (mArrowLayout == ArrowsBeside) {
        box = new QHBoxLayout(mArrowBox);
        mUpButton->setArrowType(Qt::RightArrow);
        mDownButton->setArrowType(Qt::LeftArrow);
        box->addWidget(mDownButton);
        box->addWidget(mUpButton);
    } else {
        box = new QVBoxLayout(mArrowBox);
        mUpButton->setArrowType(Qt::UpArrow);
        mDownButton->setArrowType(Qt::DownArrow);
        box->addWidget(mUpButton);
        box->addWidget(mDownButton);
    }
    box->setContentsMargins(0, 0, 0, 0);
    box->setSpacing(0);
}

void OXWSpinBox::setLineEditMode(bool on)
{
    mLineEditMode = on;
    mLineEdit->setReadOnly(!on);
    mLineEdit->setFocusPolicy(on ? Qt::StrongFocus : Qt::NoFocus);
    setFocusProxy(on ? mLineEdit : nullptr);
}

QString OXWSpinBox::text() const
{
    return QLocale().toString(mValue, 'f', mPrecision);
}

void OXWSpinBox::updateText()
{
    const QString t = text();
    if (mLineEdit->text() != t)
        mLineEdit->setText(t);
}

void OXWSpinBox::commitText()
{
    if (!mLineEditMode)
        return;
    const QString t = mLineEdit->text().trimmed();
    // The user's locale without group separators ("3.5" is not 35 in German), then C.
    QLocale locale;
    locale.setNumberOptions(locale.numberOptions() | QLocale::RejectGroupSeparator);
    bool ok = false;
    double v = locale.toDouble(t, &ok);
    if (!ok)
        v = QLocale::c().toDouble(t, &ok);
    if (ok)
        setUserValue(v);
    else
        updateText();
}

bool OXWSpinBox::handleKey(QKeyEvent* event)
{
    switch (event->key()) {
    case Qt::Key_Up:
        stepBy(1);
        return true;
    case Qt::Key_Down:
        stepBy(-1);
        return true;
    case Qt::Key_PageUp:
        pageBy(1);
        return true;
    case Qt::Key_PageDown:
        pageBy(-1);
        return true;
    default:
        return false;
    }
}

bool OXWSpinBox::eventFilter(QObject* watched, QEvent* event)
{
    if (watched == mLineEdit && event->type() == QEvent::KeyPress &&
        handleKey(static_cast<QKeyEvent*>(event)))
        return true;
    const bool isPress = event->type() == QEvent::MouseButtonPress;
    const bool isRelease = event->type() == QEvent::MouseButtonRelease;
    if ((watched == mUpButton || watched == mDownButton) && !mForwardingRelease &&
        (isPress || isRelease) && static_cast<QMouseEvent*>(event)->button() == Qt::LeftButton) {
        if (isPress && !mUndoScope.isEmpty() && !mHeldScope) {
            mHeldScope = std::make_unique<OXWApplication::UserActionScope>(
                mUndoScope, OXWApplication::StepName::FromThisAction);
        } else if (isRelease && mHeldScope) {
            // The button emits its last click while handling the release: let it do so
            // inside the held action, then close the action.
            mForwardingRelease = true;
            QCoreApplication::sendEvent(watched, event);
            mForwardingRelease = false;
            mHeldScope.reset();
            return true;
        }
    }
    return QWidget::eventFilter(watched, event);
}

void OXWSpinBox::keyPressEvent(QKeyEvent* event)
{
    if (handleKey(event))
        event->accept();
    else
        QWidget::keyPressEvent(event);
}

void OXWSpinBox::wheelEvent(QWheelEvent* event)
{
    mWheelRemainder += event->angleDelta().y();
    const int steps = mWheelRemainder / 120;
    mWheelRemainder -= steps * 120;
    if (steps != 0) {
        if (event->modifiers() & Qt::ControlModifier)
            pageBy(steps);
        else
            stepBy(steps);
    }
    event->accept();
}
