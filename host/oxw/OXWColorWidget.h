#pragma once

#include <OXMRGBf.h>

#include <QColor>
#include <QFrame>
#include <QMetaType>

#include <functional>

// A colour swatch. A left click (or Space / Return while focused) lets the user choose a new
// colour with QColorDialog; a chosen colour (even the same one) becomes the widget's colour
// and is reported by rgbChanged (components 0..1) and colorChanged. setColor and setAlpha
// change the swatch without signals.
//
// The alpha: shown over a checkerboard; editable in the dialog only with setAlphaEditable(true)
// (otherwise a choice keeps the current alpha).
//
// Seam: the dialog is asked in the virtual chooseColor(); without overriding, a hook installed
// with setChooseColorHook answers instead of the dialog (tests). Both answer an invalid colour
// for "cancelled".
class OXWColorWidget : public QFrame
{
    Q_OBJECT
public:
    using ChooseColorHook = std::function<QColor(const QColor& current, bool alphaEditable)>;

    explicit OXWColorWidget(QWidget* parent = nullptr, const char* name = nullptr,
                            Qt::WindowFlags flags = Qt::WindowFlags());

    QColor color() const { return mColor; }
    void setColor(const QColor& color);
    int alpha() const { return mColor.alpha(); }
    void setAlpha(int alpha);
    bool isAlphaEditable() const { return mAlphaEditable; }
    void setAlphaEditable(bool editable) { mAlphaEditable = editable; }
    OXMRGBf rgb() const;

    // Opens the choice as if the user had clicked; true when a colour was chosen.
    bool chooseAndApply();

    // Installs the process-wide hook used instead of the dialog; returns the previous one.
    static ChooseColorHook setChooseColorHook(ChooseColorHook hook);

    QSize sizeHint() const override;

signals:
    void rgbChanged(const OXMRGBf& rgb);
    void colorChanged(const QColor& color);

protected:
    virtual QColor chooseColor();
    void paintEvent(QPaintEvent* event) override;
    virtual void drawContents(QPainter* painter);
    void mousePressEvent(QMouseEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;

private:
    QColor mColor{255, 255, 255};
    bool mAlphaEditable = false;
};

Q_DECLARE_METATYPE(OXMRGBf)
