#include "OXWColorWidget.h"

#include <QColorDialog>
#include <QKeyEvent>
#include <QMouseEvent>
#include <QPainter>

#include <utility>

namespace {
OXWColorWidget::ChooseColorHook& hook()
{
    static OXWColorWidget::ChooseColorHook h;
    return h;
}
} // namespace

OXWColorWidget::OXWColorWidget(QWidget* parent, const char* name, Qt::WindowFlags flags)
    : QFrame(parent, flags)
{
    qRegisterMetaType<OXMRGBf>("OXMRGBf");
    if (name)
        setObjectName(QString::fromLatin1(name));
    setFocusPolicy(Qt::StrongFocus);
}

void OXWColorWidget::setColor(const QColor& color)
{
    if (!color.isValid())
        return;
    mColor = color.toRgb();
    update();
}

void OXWColorWidget::setAlpha(int alpha)
{
    mColor.setAlpha(qBound(0, alpha, 255));
    update();
}

OXMRGBf OXWColorWidget::rgb() const
{
    return OXMRGBf(float(mColor.redF()), float(mColor.greenF()), float(mColor.blueF()));
}

OXWColorWidget::ChooseColorHook OXWColorWidget::setChooseColorHook(ChooseColorHook h)
{
    ChooseColorHook previous = std::move(hook());
    hook() = std::move(h);
    return previous;
}

QColor OXWColorWidget::chooseColor()
{
    if (hook())
        return hook()(mColor, mAlphaEditable);
    QColorDialog::ColorDialogOptions options;
    if (mAlphaEditable)
        options |= QColorDialog::ShowAlphaChannel;
    return QColorDialog::getColor(mColor, this, QString(), options);
}

bool OXWColorWidget::chooseAndApply()
{
    QColor chosen = chooseColor();
    if (!chosen.isValid())
        return false;
    chosen = chosen.toRgb();
    if (!mAlphaEditable)
        chosen.setAlpha(mColor.alpha());
    mColor = chosen;
    update();
    emit rgbChanged(rgb());
    emit colorChanged(mColor);
    return true;
}

QSize OXWColorWidget::sizeHint() const
{
    return QSize(40, 20);
}

void OXWColorWidget::paintEvent(QPaintEvent* event)
{
    QFrame::paintEvent(event);
    QPainter painter(this);
    drawContents(&painter);
}

void OXWColorWidget::drawContents(QPainter* painter)
{
    const QRect r = contentsRect();
    if (r.isEmpty())
        return;
    if (mColor.alpha() < 255) {
        const int cell = 4;
        for (int y = r.top(); y <= r.bottom(); y += cell) {
            for (int x = r.left(); x <= r.right(); x += cell) {
                const bool dark = ((x - r.left()) / cell + (y - r.top()) / cell) % 2 != 0;
                painter->fillRect(QRect(x, y, cell, cell).intersected(r),
                                  dark ? QColor(153, 153, 153) : QColor(255, 255, 255));
            }
        }
    }
    painter->fillRect(r, mColor);
    if (!isEnabled())
        painter->fillRect(r, QColor(128, 128, 128, 128));
}

void OXWColorWidget::mousePressEvent(QMouseEvent* event)
{
    if (event->button() == Qt::LeftButton && isEnabled()) {
        event->accept();
        chooseAndApply();
        return;
    }
    QFrame::mousePressEvent(event);
}

void OXWColorWidget::keyPressEvent(QKeyEvent* event)
{
    if (event->key() == Qt::Key_Space || event->key() == Qt::Key_Return ||
        event->key() == Qt::Key_Enter) {
        event->accept();
        chooseAndApply();
        return;
    }
    QFrame::keyPressEvent(event);
}
