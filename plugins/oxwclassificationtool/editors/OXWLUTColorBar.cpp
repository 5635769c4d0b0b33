#include "OXWLUTColorBar.h"

#include "OXWClassificationToolEnums.h"
#include "OXWLUTColorTableFile.h"
#include "OXWLUTObjectInfo.h"

#include <OXMError.h>
#include <OXMRegisteredEnum.h>
#include <OXMSingleton.h>
#include <OXWApplication.h>
#include <OXWFileDialog.h>
#include <OXWMainWindow.h>
#include <OXWPressUserAction.h>

#include <QAction>
#include <QBitmap>
#include <QBrush>
#include <QColorDialog>
#include <QContextMenuEvent>
#include <QCursor>
#include <QFontMetrics>
#include <QGuiApplication>
#include <QImage>
#include <QMenu>
#include <QMouseEvent>
#include <QPainter>
#include <QPointer>
#include <QScreen>
#include <QTimer>

#include <algorithm>
#include <cmath>
#include <utility>

namespace {
// The greys of the handle marks: light on dark colours, dark on light ones.
constexpr int LightMarkGrey = 204;
constexpr int DarkMarkGrey = 51;

constexpr int kRed = OXWLUTIntervalInfo::RedChannel;
constexpr int kGreen = OXWLUTIntervalInfo::GreenChannel;
constexpr int kBlue = OXWLUTIntervalInfo::BlueChannel;
constexpr int kColourChannels[3] = {kRed, kGreen, kBlue};

// The names of the colour table import and export, registered when the library is loaded.
// Both file dialogs have the export's identity, so they share the remembered directory.
const OXMRegisteredEnum ExportClassificationColor("ExportClassificationColor", false,
                                                  OXWClassificationToolEnums::Namespace);
const OXMRegisteredEnum ImportClassificationColor("ImportClassificationColor", false,
                                                  OXWClassificationToolEnums::Namespace);

// The colour clipboard, shared by all colour bars of the process.
OXWLUTIntervalInfo::HandleList (&clipboardLists())[3]
{
    static OXWLUTIntervalInfo::HandleList lists[3];
    return lists;
}

int& phase()
{
    static int value = 0;
    return value;
}

const QBrush& highlightBrush()
{
    // Built on first use (needs a GUI application) and kept for the process.
    static const QBrush* brush = [] {
        static const uchar rows[8] = {0xF0, 0x78, 0x3C, 0x1E, 0x0F, 0x87, 0xC3, 0xE1};
        const QBitmap pattern = QBitmap::fromData(QSize(8, 8), rows, QImage::Format_Mono);
        return new QBrush(Qt::white, pattern);
    }();
    return *brush;
}

OXWLUTColorBar::ColorDialogHook& dialogHook()
{
    static OXWLUTColorBar::ColorDialogHook hook;
    return hook;
}

QColor defaultColorDialog(const QColor& initial, QWidget* parent, const QString& name)
{
    QColorDialog dialog(initial, parent);
    dialog.setObjectName(name);
    if (dialog.exec() != QDialog::Accepted) {
        return QColor();
    }
    return dialog.selectedColor();
}

int toByte(float value)
{
    const int v = static_cast<int>(value);
    return std::min(std::max(v, 0), 255);
}

OXMRGB8 rgb8(const OXMRGBA<unsigned char>& c)
{
    return OXMRGB8(c.r, c.g, c.b);
}

// The eight named colours in menu order.
const OXMRGBA<unsigned char>& namedColour(int i)
{
    using C = OXMRGBA<unsigned char>;
    static const C colours[8] = {C::WHITE(),   C::BLACK(),   C::RED(1.0),     C::GREEN(1.0),
                                 C::BLUE(1.0), C::CYAN(1.0), C::MAGENTA(1.0), C::YELLOW(1.0)};
    return colours[i];
}

enum NamedColourIndex
{
    White,
    Black,
    Red,
    Green,
    Blue,
    Cyan,
    Magenta,
    Yellow
};

} // namespace

OXWLUTColorBar::OXWLUTColorBar(QWidget* parent, const char* name) : QFrame(parent)
{
    if (name) {
        setObjectName(QString::fromLatin1(name));
    }
    setMinimumSize(100, 20);
    setAttribute(Qt::WA_OpaquePaintEvent);
    setMouseTracking(true);
    setFrameStyle(QFrame::Panel | QFrame::Sunken);
    setLineWidth(2);

    const Qt::GlobalColor iconColours[8] = {Qt::white, Qt::black, Qt::red,     Qt::green,
                                            Qt::blue,  Qt::cyan,  Qt::magenta, Qt::yellow};
    for (int i = 0; i < 8; ++i) {
        mColorIcons[i] = QPixmap(14, 14);
        mColorIcons[i].fill(iconColours[i]);
    }
    buildMenu();

    setFont(QFont(tr("helvetica"), 8));

    // The tool panel sees the bar's events first.
    QObject* filter = parent;
    for (int level = 1; filter && level < 4; ++level) {
        filter = filter->parent();
    }
    if (filter) {
        installEventFilter(filter);
    }
}

OXWLUTColorBar::~OXWLUTColorBar()
{
    mUserAction.release();
}

void OXWLUTColorBar::buildMenu()
{
    mMenu = new QMenu(this);
    mMenu->setObjectName(QStringLiteral("mMenu"));

    const QString names[8] = {tr("white"), tr("black"), tr("red"),     tr("green"),
                              tr("blue"),  tr("cyan"),  tr("magenta"), tr("yellow")};
    using Slot = void (OXWLUTColorBar::*)();
    const Slot pointSlots[8] = {
        &OXWLUTColorBar::setPointColorWhite,   &OXWLUTColorBar::setPointColorBlack,
        &OXWLUTColorBar::setPointColorRed,     &OXWLUTColorBar::setPointColorGreen,
        &OXWLUTColorBar::setPointColorBlue,    &OXWLUTColorBar::setPointColorCyan,
        &OXWLUTColorBar::setPointColorMagenta, &OXWLUTColorBar::setPointColorYellow};
    const Slot lineSlots[8] = {
        &OXWLUTColorBar::setLineColorWhite,   &OXWLUTColorBar::setLineColorBlack,
        &OXWLUTColorBar::setLineColorRed,     &OXWLUTColorBar::setLineColorGreen,
        &OXWLUTColorBar::setLineColorBlue,    &OXWLUTColorBar::setLineColorCyan,
        &OXWLUTColorBar::setLineColorMagenta, &OXWLUTColorBar::setLineColorYellow};
    const Slot intervalSlots[8] = {
        &OXWLUTColorBar::setIntervalColorWhite,   &OXWLUTColorBar::setIntervalColorBlack,
        &OXWLUTColorBar::setIntervalColorRed,     &OXWLUTColorBar::setIntervalColorGreen,
        &OXWLUTColorBar::setIntervalColorBlue,    &OXWLUTColorBar::setIntervalColorCyan,
        &OXWLUTColorBar::setIntervalColorMagenta, &OXWLUTColorBar::setIntervalColorYellow};

    auto colourMenu = [&](const QString& objectName, Slot custom, const Slot(&items)[8]) {
        QMenu* menu = new QMenu(this);
        menu->setObjectName(objectName);
        menu->addAction(tr("Custom color..."), this, custom);
        menu->addSeparator();
        for (int i = 0; i < 8; ++i) {
            menu->addAction(QIcon(mColorIcons[i]), names[i], this, items[i]);
        }
        return menu;
    };
    QMenu* pointMenu =
        colourMenu(QStringLiteral("mPointColorMenu"), &OXWLUTColorBar::setPointColor, pointSlots);
    QMenu* lineMenu =
        colourMenu(QStringLiteral("mLineColorMenu"), &OXWLUTColorBar::setLineColor, lineSlots);
    QMenu* intervalMenu = colourMenu(QStringLiteral("mIntervalColorMenu"),
                                     &OXWLUTColorBar::setIntervalColor, intervalSlots);

    mInsertAction = mMenu->addAction(tr("Insert handle"), this, &OXWLUTColorBar::insertPoint);
    mDeleteAction = mMenu->addAction(tr("Delete handle"), this, &OXWLUTColorBar::deletePoint);
    mMenu->addSeparator();
    mPointColorAction = mMenu->addMenu(pointMenu);
    mPointColorAction->setText(tr("Set handle color"));
    mLineColorAction = mMenu->addMenu(lineMenu);
    mLineColorAction->setText(tr("Set color between handles"));
    mMenu->addMenu(intervalMenu)->setText(tr("Set interval color"));
    mMenu->addSeparator();
    mMenu->addAction(tr("Copy interval color"), this, &OXWLUTColorBar::copyIntervalColor);
    mPasteAction =
        mMenu->addAction(tr("Paste interval color"), this, &OXWLUTColorBar::pasteIntervalColor);
    mPasteAction->setEnabled(false);
    mMenu->addSeparator();
    mMenu->addAction(tr("Import interval color..."), this, &OXWLUTColorBar::importIntervalColor);
    mMenu->addAction(tr("Export interval color..."), this, &OXWLUTColorBar::exportIntervalColor);
    mMenu->addSeparator();
}

// --- Model, mappings ------------------------------------------------------------------------

void OXWLUTColorBar::setModel(OXWLUTObjectInfo* model)
{
    mModel = model;
    clearHitState();
    mDragMode = DragNone;
    mShowValues = false;
    rebuildPixmap();
    update();
}

float OXWLUTColorBar::positionFromColumn(int column) const
{
    if (!mModel || mPixmap.isNull()) {
        return 0.0f;
    }
    const float a = mModel->visibleGreyFrom();
    const float b = mModel->visibleGreyTo();
    return a + (b - a) * static_cast<float>(column) * mColumnScale;
}

int OXWLUTColorBar::columnFromPosition(float position) const
{
    if (!mModel || mPixmap.isNull()) {
        return 0;
    }
    const float a = mModel->visibleGreyFrom();
    const float b = mModel->visibleGreyTo();
    if (!(b > a)) {
        return 0;
    }
    const float column = (position - a) * static_cast<float>(mPixmap.width()) / (b - a);
    if (!std::isfinite(column) || std::fabs(column) > 1.0e8f) {
        return column < 0.0f ? -100000000 : 100000000;
    }
    return static_cast<int>(column);
}

int OXWLUTColorBar::luminanceClass(int r, int g, int b)
{
    return (11 * r + 16 * g + 5 * b) >> 10;
}

bool OXWLUTColorBar::isDark(const Colour& colour)
{
    return luminanceClass(colour.r, colour.g, colour.b) <= 2;
}

OXWLUTIntervalInfo* OXWLUTColorBar::currentInterval() const
{
    if (!mModel || !mCurrentInterval || mCurrentIntervalIndex < 0 ||
        mCurrentIntervalIndex >= mModel->intervalCount() ||
        mModel->interval(mCurrentIntervalIndex) != mCurrentInterval) {
        return nullptr;
    }
    return mCurrentInterval;
}

void OXWLUTColorBar::clearHitState()
{
    mHitKind = HitNone;
    mCurrentInterval = nullptr;
    mCurrentIntervalIndex = -1;
    mCurrentHandle = -1;
}

void OXWLUTColorBar::redraw()
{
    rebuildPixmap();
    update();
}

// --- Colour table and pixmap ----------------------------------------------------------------

void OXWLUTColorBar::computeColorTable()
{
    if (!mModel || mPixmap.isNull() || mModel->intervalCount() == 0) {
        return;
    }
    const int last = mModel->intervalCount() - 1;
    int i0 = mModel->intervalIndexAt(mModel->visibleGreyFrom());
    int i1 = mModel->intervalIndexAt(mModel->visibleGreyTo());
    if (i0 < 0) {
        i0 = 0;
    }
    if (i1 < 0 || i1 > last) {
        i1 = last;
    }
    const int size = static_cast<int>(mColorTable.size());
    int column = 0;
    for (int i = i0; i <= i1; ++i) {
        const OXWLUTIntervalInfo* interval = mModel->interval(i);
        if (!interval) {
            continue;
        }
        const HandleList& red = interval->handles(kRed);
        const HandleList& green = interval->handles(kGreen);
        const HandleList& blue = interval->handles(kBlue);
        const int n = static_cast<int>(std::min({red.size(), green.size(), blue.size()}));
        const int end = columnFromPosition(interval->to());
        if (n == 0) {
            column = std::max(column, std::min(end, size));
            continue;
        }
        int left = 0;
        int right = n >= 2 ? 1 : 0;
        auto factorOf = [&](int l, int r) {
            return red[r].x > red[l].x ? 1.0f / (red[r].x - red[l].x) : 1.0f;
        };
        float factor = factorOf(left, right);
        for (; column < end && column < size; ++column) {
            const float u =
                interval->localFromGlobal(mModel->snapToCellCentre(positionFromColumn(column)));
            while (u > red[right].x) {
                if (right + 1 < n) {
                    left = right;
                    ++right;
                    factor = factorOf(left, right);
                } else {
                    left = right;
                    factor = 1.0f;
                    break;
                }
            }
            const float t = (u - red[left].x) * factor;
            Colour& entry = mColorTable[column];
            entry.r =
                static_cast<unsigned char>(toByte((red[right].y - red[left].y) * t + red[left].y));
            entry.g = static_cast<unsigned char>(
                toByte((green[right].y - green[left].y) * t + green[left].y));
            entry.b = static_cast<unsigned char>(
                toByte((blue[right].y - blue[left].y) * t + blue[left].y));
        }
    }
}

void OXWLUTColorBar::rebuildPixmap()
{
    if (mPixmap.isNull() || mPixmap.rect().isEmpty()) {
        return;
    }
    // On a page that isn't shown (the window is, the bar isn't hidden itself) the picture is
    // drawn when the page comes into view.
    if (!isVisible() && !isHidden() && window() != this && window()->isVisible()) {
        mPixmapStale = true;
        return;
    }
    mPixmapStale = false;
    QPainter painter(&mPixmap);
    if (!mModel || !isEnabled()) {
        painter.fillRect(mPixmap.rect(), palette().color(backgroundRole()));
        return;
    }
    computeColorTable();
    drawColourRow(painter);
    drawHandleMarksAndBorders(painter);
    if (mHighlightStart < mHighlightEnd) {
        const int c0 = columnFromPosition(mHighlightStart);
        const int c1 = columnFromPosition(mHighlightEnd);
        const QRect rect =
            QRect(QPoint(c0, 0), QPoint(c1 - 1, mPixmap.height() - 1)) & mPixmap.rect();
        if (!rect.isEmpty()) {
            drawHighlightBorder(&painter, rect);
        }
    }
    const OXWLUTIntervalInfo* interval = currentInterval();
    if (mShowValues && interval && mCurrentHandle >= 0 &&
        (mHitKind == HitHandle || mHitKind == HitSegment)) {
        drawValue(painter, mCurrentHandle);
        if (mHitKind == HitSegment) {
            drawValue(painter, mCurrentHandle + 1);
        }
    }
}

void OXWLUTColorBar::drawColourRow(QPainter& painter)
{
    const int width = static_cast<int>(mColorTable.size());
    // One row of the table's colours, stretched over the bar's height (rows repeated).
    QImage row(width, 1, QImage::Format_RGB32);
    QRgb* rowPixels = reinterpret_cast<QRgb*>(row.scanLine(0));
    for (int i = 0; i < width; ++i) {
        const Colour& c = mColorTable[i];
        rowPixels[i] = qRgb(c.r, c.g, c.b);
    }
    painter.drawImage(QRect(0, 0, width, mPixmap.height()), row);
}

void OXWLUTColorBar::drawHandleMarksAndBorders(QPainter& painter)
{
    const int width = static_cast<int>(mColorTable.size());
    const int height = mPixmap.height();
    // Marks that fall on the column of the mark drawn just before them would paint the same
    // pixels again; with thousands of handles most of them do.
    int lastColumn = -1;
    int lastGrey = -1;
    // columnFromPosition with the axis read once.
    const float from = mModel->visibleGreyFrom();
    const float span = mModel->visibleGreyTo() - from;
    const float pixels = static_cast<float>(mPixmap.width());
    const auto columnOf = [&](float position) {
        if (!(span > 0.0f)) {
            return 0;
        }
        const float column = (position - from) * pixels / span;
        if (!std::isfinite(column) || std::fabs(column) > 1.0e8f) {
            return column < 0.0f ? -100000000 : 100000000;
        }
        return static_cast<int>(column);
    };
    for (int i = 0; i < mModel->intervalCount(); ++i) {
        const OXWLUTIntervalInfo* interval = mModel->interval(i);
        if (!interval) {
            continue;
        }
        const HandleList& red = interval->handles(kRed);
        for (int k = static_cast<int>(red.size()) - 1; k >= 0; --k) {
            const int column = columnOf(interval->globalFromLocal(red[k].x));
            if (column >= 0 && column < width) {
                const int grey = isDark(mColorTable[column]) ? LightMarkGrey : DarkMarkGrey;
                if (column != lastColumn || grey != lastGrey) {
                    painter.fillRect(column - 1, height - 8, 3, 5, QColor(grey, grey, grey));
                    lastColumn = column;
                    lastGrey = grey;
                }
            }
        }
        const int border = columnFromPosition(interval->from());
        if (border >= 0 && border < width) {
            painter.setPen(isDark(mColorTable[border]) ? Qt::white : Qt::black);
            painter.drawLine(border, 0, border, height - 1);
            lastColumn = -1; // the line may cover the last mark
        }
    }
}

QString OXWLUTColorBar::valueText(float position) const
{
    if (!mModel) {
        return QString();
    }
    const float value = mModel->calibratedFromPosition(position);
    if (mModel->valueDecimals() == 0) {
        return QString::number(std::floor(value + 0.5f), 'f', 0);
    }
    return QString::number(value, 'f', mModel->valueDecimals());
}

QRect OXWLUTColorBar::valueBox(int column, int textWidth) const
{
    const int fontHeight = QFontMetrics(font()).height();
    const int left = column + textWidth >= mPixmap.width() ? column - textWidth : column;
    return QRect(left, -1, textWidth, fontHeight);
}

void OXWLUTColorBar::drawValue(QPainter& painter, int handle)
{
    const OXWLUTIntervalInfo* interval = currentInterval();
    if (!interval || !interval->isHandleIndexValid(kRed, handle)) {
        return;
    }
    const float position = interval->globalFromLocal(interval->handles(kRed)[handle].x);
    const QString text = valueText(position);
    const int column = columnFromPosition(position);
    bool dark = true;
    if (column >= 0 && column < static_cast<int>(mColorTable.size())) {
        dark = isDark(mColorTable[column]);
    }
    painter.setFont(font());
    painter.setPen(dark ? Qt::white : Qt::black);
    const QFontMetrics metrics(font());
    painter.drawText(valueBox(column, metrics.horizontalAdvance(text)),
                     Qt::AlignHCenter | Qt::AlignTop, text);
}

void OXWLUTColorBar::drawHighlightBorder(QPainter* painter, const QRect& rect)
{
    const QBrush& brush = highlightBrush();
    painter->save();
    painter->setPen(QPen(Qt::black, 1));
    painter->setBrush(Qt::NoBrush);
    painter->drawRect(rect.adjusted(0, 0, -1, -1));
    painter->setPen(Qt::NoPen);
    const int p = phase();
    painter->setBrushOrigin(p, 0);
    painter->fillRect(QRect(rect.left(), rect.top(), rect.width(), 1), brush);
    painter->fillRect(QRect(rect.left(), rect.top(), 1, rect.height()), brush);
    painter->setBrushOrigin(7 - p, 0);
    painter->fillRect(QRect(rect.right(), rect.top(), 1, rect.height()), brush);
    painter->fillRect(QRect(rect.left(), rect.bottom(), rect.width(), 1), brush);
    painter->restore();
    phase() = (p + 1) % 8;
}

int OXWLUTColorBar::highlightPhase()
{
    return phase();
}

void OXWLUTColorBar::paintEvent(QPaintEvent* event)
{
    QFrame::paintEvent(event);
    QPainter painter(this);
    drawContents(&painter);
}

void OXWLUTColorBar::drawContents(QPainter* painter)
{
    if (!mPixmap.isNull()) {
        painter->drawPixmap(contentsRect().topLeft(), mPixmap);
    }
}

void OXWLUTColorBar::updateAll()
{
    if (mModel) {
        for (int i = 0; i < mModel->intervalCount(); ++i) {
            const OXWLUTIntervalInfo* interval = mModel->interval(i);
            if (!interval) {
                continue;
            }
            const std::size_t n = interval->handles(kRed).size();
            if (interval->handles(kGreen).size() != n || interval->handles(kBlue).size() != n) {
                setEnabled(false);
                break;
            }
        }
    }
    redraw();
}

void OXWLUTColorBar::showEvent(QShowEvent* event)
{
    if (mPixmapStale) {
        rebuildPixmap();
    }
    QFrame::showEvent(event);
}

void OXWLUTColorBar::resizeEvent(QResizeEvent* event)
{
    const QSize size = contentsRect().size();
    mPixmap = size.isEmpty() ? QPixmap() : QPixmap(size);
    const std::size_t columns = mPixmap.isNull() ? 0 : static_cast<std::size_t>(size.width());
    const std::size_t capacity = (columns + 15) / 16 * 16;
    if (mColorTable.capacity() > capacity + 16) {
        mColorTable.shrink_to_fit();
    }
    mColorTable.reserve(capacity);
    mColorTable.resize(columns);
    mColumnScale = columns > 0 ? 1.0f / static_cast<float>(columns) : 1.0f;
    rebuildPixmap();
    clearHitState();
    QFrame::resizeEvent(event);
}

// --- Hit test and drags -----------------------------------------------------------------------

void OXWLUTColorBar::hitTest(const QPoint& point)
{
    if (!mModel) {
        return;
    }
    const int previous = mHitKind;
    mHitKind = HitBar;
    const float a = mModel->visibleGreyFrom();
    const float b = mModel->visibleGreyTo();
    const float x = positionFromColumn(point.x() - contentsRect().left());
    const float r = (b - a) * mColumnScale * 4.0f;

    mCurrentInterval = nullptr;
    mCurrentHandle = -1;
    mCurrentIntervalIndex = mModel->intervalIndexAt(x);
    mCurrentInterval = mModel->interval(mCurrentIntervalIndex);
    if (!mCurrentInterval) {
        mCurrentIntervalIndex = -1;
    }

    bool resize = false;
    if (mCurrentInterval) {
        mCurrentHandle = mCurrentInterval->findHandle(kRed, x, 0.0f, r, 1000.0f);
        if (mCurrentHandle >= 0) {
            mHitKind = HitHandle;
            resize = mCurrentInterval->isHandleMovable(kRed, mCurrentHandle);
        }
    }
    if (mHitKind == HitBar && mCurrentInterval) {
        mCurrentHandle = mCurrentInterval->findSegmentWide(kRed, x, 0.0f, 0.0f, 1000.0f);
        if (mCurrentHandle >= 0) {
            mHitKind = HitSegment;
            resize = mCurrentInterval->isSegmentMovable(kRed, mCurrentHandle);
        }
    }
    setCursor(resize ? Qt::SizeHorCursor : Qt::ArrowCursor);
    if (mHitKind != previous) {
        redraw();
    }
}

// Moves the current handle (or segment) of all three colour channels to the mouse position,
// each keeping its own value; stops at the first channel that does not change.
void OXWLUTColorBar::dragAcrossChannels(const QPoint& point, Move move)
{
    OXWLUTIntervalInfo* interval = currentInterval();
    if (!interval || mCurrentHandle < 0) {
        return;
    }
    const float position =
        positionFromColumn(point.x()) - positionFromColumn(mPressPosition.x()) + mDragReference;
    for (int channel : kColourChannels) {
        if (!interval->isHandleIndexValid(channel, mCurrentHandle)) {
            return;
        }
        const float value = interval->handles(channel)[mCurrentHandle].y;
        if (!(interval->*move)(channel, mCurrentHandle, position, value)) {
            return;
        }
    }
    emit objectColorChanged();
    redraw();
}

void OXWLUTColorBar::dragHandle(const QPoint& point)
{
    dragAcrossChannels(point, &OXWLUTIntervalInfo::moveHandle);
}

void OXWLUTColorBar::dragSegment(const QPoint& point)
{
    dragAcrossChannels(point, &OXWLUTIntervalInfo::moveSegment);
}

// --- Mouse ------------------------------------------------------------------------------------

void OXWLUTColorBar::mousePressEvent(QMouseEvent* event)
{
    // A press without its release (the context menu took it) leaves no action open.
    mUserAction.press(tr("Change color"));
    if (!mModel) {
        return;
    }
    mShowValues = true;
    mPressPosition = event->pos();
    hitTest(mPressPosition);

    const Qt::MouseButton button = event->button();
    const Qt::KeyboardModifiers modifiers = event->modifiers();
    const bool left = button == Qt::LeftButton;
    const bool editClick =
        button == Qt::MiddleButton || (left && (modifiers & Qt::AltModifier)) ||
        (left && (modifiers & Qt::ControlModifier) && (modifiers & Qt::ShiftModifier));
    if (editClick) {
        if (mHitKind == HitHandle) {
            mDragMode = DragNone;
            deletePoint();
        } else {
            insertPoint();
            mDragMode = DragHandle;
        }
    } else if (left) {
        mDragMode = DragNone;
        OXWLUTIntervalInfo* interval = currentInterval();
        if (interval && mHitKind == HitHandle && interval->isHandleMovable(kRed, mCurrentHandle)) {
            mDragMode = DragHandle;
        } else if (interval && mHitKind == HitSegment &&
                   interval->isSegmentMovable(kRed, mCurrentHandle)) {
            mDragMode = DragSegment;
        }
        if (interval && interval->isHandleIndexValid(kRed, mCurrentHandle)) {
            mDragReference = interval->globalFromLocal(interval->handles(kRed)[mCurrentHandle].x);
        }
    }
    if (mDragMode != DragNone) {
        updateAll();
    }
}

void OXWLUTColorBar::mouseReleaseEvent(QMouseEvent*)
{
    mUserAction.release();
    if (!mModel) {
        return;
    }
    mShowValues = false;
    mDragMode = DragNone;
    updateAll();
}

void OXWLUTColorBar::mouseDoubleClickEvent(QMouseEvent* event)
{
    if (!mModel) {
        return;
    }
    hitTest(event->pos());
    switch (mHitKind) {
    case HitBar:
        setIntervalColor();
        break;
    case HitHandle:
        setPointColor();
        break;
    case HitSegment:
        setLineColor();
        break;
    default:
        break;
    }
}

void OXWLUTColorBar::mouseMoveEvent(QMouseEvent* event)
{
    if (!mModel) {
        return;
    }
    switch (mDragMode) {
    case DragHandle:
        dragHandle(event->pos());
        break;
    case DragSegment:
        dragSegment(event->pos());
        break;
    default:
        hitTest(event->pos());
        break;
    }
    redraw();
}

// --- Context menu -----------------------------------------------------------------------------

void OXWLUTColorBar::enableMenuItems()
{
    mInsertAction->setEnabled(mHitKind != HitHandle);
    mDeleteAction->setEnabled(mHitKind == HitHandle);
    mPointColorAction->setEnabled(mHitKind == HitHandle);
    mLineColorAction->setEnabled(mHitKind == HitSegment);
    const auto& lists = clipboardLists();
    mPasteAction->setEnabled(!lists[0].empty() || !lists[1].empty() || !lists[2].empty());
}

void OXWLUTColorBar::contextMenuEvent(QContextMenuEvent* event)
{
    if (mModel) {
        // The menu takes the mouse; the release of the press that opened it never comes here.
        mUserAction.release();
        enableMenuItems();
        QPoint position = QCursor::pos();
        const QSize size = mMenu->sizeHint();
        QScreen* screen = QGuiApplication::screenAt(position);
        if (!screen) {
            screen = QGuiApplication::primaryScreen();
        }
        if (screen) {
            const QRect desktop = screen->availableGeometry();
            if (position.x() + size.width() > desktop.right() + 1) {
                position.setX(desktop.right() + 1 - size.width());
            }
            if (position.y() + size.height() > desktop.bottom() + 1) {
                position.setY(desktop.bottom() + 1 - size.height());
            }
        }
        mShowValues = false;
        mMenu->popup(position);
    }
    QFrame::contextMenuEvent(event);
}

// --- Handles ----------------------------------------------------------------------------------

void OXWLUTColorBar::insertPoint()
{
    OXWLUTIntervalInfo* interval = currentInterval();
    if (!interval) {
        return;
    }
    const int column = mPressPosition.x() - contentsRect().left();
    if (column < 0 || column >= static_cast<int>(mColorTable.size())) {
        return;
    }
    const float x = positionFromColumn(column);
    const Colour colour = mColorTable[column];
    const float values[3] = {colour.r + 0.5f, colour.g + 0.5f, colour.b + 0.5f};
    for (int c = 0; c < 3; ++c) {
        if (!interval->insertHandle(kColourChannels[c], x, values[c])) {
            return;
        }
    }
    hitTest(mPressPosition);
    OXWLUTIntervalInfo* current = currentInterval();
    if (current && current->isHandleIndexValid(kRed, mCurrentHandle)) {
        mDragReference = current->globalFromLocal(current->handles(kRed)[mCurrentHandle].x);
    }
    emit objectColorChanged();
    redraw();
}

void OXWLUTColorBar::deletePoint()
{
    OXWLUTIntervalInfo* interval = currentInterval();
    if (mHitKind != HitHandle || !interval) {
        return;
    }
    for (int channel : kColourChannels) {
        if (!interval->deleteHandle(channel, mCurrentHandle)) {
            return;
        }
    }
    hitTest(mPressPosition);
    mDragReference = 0.0f;
    emit objectColorChanged();
    redraw();
}

// --- Colours ----------------------------------------------------------------------------------

void OXWLUTColorBar::setCurrentPointColor(const OXMRGB8& color)
{
    OXWLUTIntervalInfo* interval = currentInterval();
    if (!interval || !interval->isHandleIndexValid(kRed, mCurrentHandle)) {
        return;
    }
    const float values[3] = {color.r + 0.5f, color.g + 0.5f, color.b + 0.5f};
    for (int c = 0; c < 3; ++c) {
        const int channel = kColourChannels[c];
        if (interval->isHandleIndexValid(channel, mCurrentHandle)) {
            const float x = interval->globalFromLocal(interval->handles(channel)[mCurrentHandle].x);
            interval->moveHandle(channel, mCurrentHandle, x, values[c]);
        }
    }
    emit objectColorChanged();
    redraw();
}

void OXWLUTColorBar::setCurrentLineColor(const OXMRGB8& color)
{
    OXWLUTIntervalInfo* interval = currentInterval();
    if (!interval || !interval->isHandleIndexValid(kRed, mCurrentHandle) ||
        !interval->isHandleIndexValid(kRed, mCurrentHandle + 1)) {
        return;
    }
    const float values[3] = {color.r + 0.5f, color.g + 0.5f, color.b + 0.5f};
    for (int k = mCurrentHandle; k <= mCurrentHandle + 1; ++k) {
        for (int c = 0; c < 3; ++c) {
            const int channel = kColourChannels[c];
            if (interval->isHandleIndexValid(channel, k)) {
                const float x = interval->globalFromLocal(interval->handles(channel)[k].x);
                interval->moveHandle(channel, k, x, values[c]);
            }
        }
    }
    emit objectColorChanged();
    redraw();
}

void OXWLUTColorBar::setCurrentIntervalColor(const OXMRGB8& color)
{
    OXWLUTIntervalInfo* interval = currentInterval();
    if (!interval) {
        return;
    }
    interval->setColour(color);
    emit objectColorChanged();
    redraw();
}

void OXWLUTColorBar::setAllIntervalColor(const OXMRGB8& color)
{
    // The named interval colours leave the redraw to the tool panel's next updateAll().
    OXWLUTIntervalInfo* interval = currentInterval();
    if (!interval) {
        return;
    }
    interval->setColour(color);
    emit objectColorChanged();
}

void OXWLUTColorBar::setPointColorWhite()
{
    setCurrentPointColor(rgb8(namedColour(White)));
}
void OXWLUTColorBar::setPointColorBlack()
{
    setCurrentPointColor(rgb8(namedColour(Black)));
}
void OXWLUTColorBar::setPointColorRed()
{
    setCurrentPointColor(rgb8(namedColour(Red)));
}
void OXWLUTColorBar::setPointColorGreen()
{
    setCurrentPointColor(rgb8(namedColour(Green)));
}
void OXWLUTColorBar::setPointColorBlue()
{
    setCurrentPointColor(rgb8(namedColour(Blue)));
}
void OXWLUTColorBar::setPointColorCyan()
{
    setCurrentPointColor(rgb8(namedColour(Cyan)));
}
void OXWLUTColorBar::setPointColorMagenta()
{
    setCurrentPointColor(rgb8(namedColour(Magenta)));
}
void OXWLUTColorBar::setPointColorYellow()
{
    setCurrentPointColor(rgb8(namedColour(Yellow)));
}

void OXWLUTColorBar::setLineColorWhite()
{
    setCurrentLineColor(rgb8(namedColour(White)));
}
void OXWLUTColorBar::setLineColorBlack()
{
    setCurrentLineColor(rgb8(namedColour(Black)));
}
void OXWLUTColorBar::setLineColorRed()
{
    setCurrentLineColor(rgb8(namedColour(Red)));
}
void OXWLUTColorBar::setLineColorGreen()
{
    setCurrentLineColor(rgb8(namedColour(Green)));
}
void OXWLUTColorBar::setLineColorBlue()
{
    setCurrentLineColor(rgb8(namedColour(Blue)));
}
void OXWLUTColorBar::setLineColorCyan()
{
    setCurrentLineColor(rgb8(namedColour(Cyan)));
}
void OXWLUTColorBar::setLineColorMagenta()
{
    setCurrentLineColor(rgb8(namedColour(Magenta)));
}
void OXWLUTColorBar::setLineColorYellow()
{
    setCurrentLineColor(rgb8(namedColour(Yellow)));
}

void OXWLUTColorBar::setIntervalColorWhite()
{
    setAllIntervalColor(rgb8(namedColour(White)));
}
void OXWLUTColorBar::setIntervalColorBlack()
{
    setAllIntervalColor(rgb8(namedColour(Black)));
}
void OXWLUTColorBar::setIntervalColorRed()
{
    setAllIntervalColor(rgb8(namedColour(Red)));
}
void OXWLUTColorBar::setIntervalColorGreen()
{
    setAllIntervalColor(rgb8(namedColour(Green)));
}
void OXWLUTColorBar::setIntervalColorBlue()
{
    setAllIntervalColor(rgb8(namedColour(Blue)));
}
void OXWLUTColorBar::setIntervalColorCyan()
{
    setAllIntervalColor(rgb8(namedColour(Cyan)));
}
void OXWLUTColorBar::setIntervalColorMagenta()
{
    setAllIntervalColor(rgb8(namedColour(Magenta)));
}
void OXWLUTColorBar::setIntervalColorYellow()
{
    setAllIntervalColor(rgb8(namedColour(Yellow)));
}

// --- Colour dialogs ---------------------------------------------------------------------------

void OXWLUTColorBar::setColorDialogHook(ColorDialogHook hook)
{
    dialogHook() = std::move(hook);
}

void OXWLUTColorBar::setIntervalColor()
{
    colorDialog(ColorDialogKind::Interval);
}

void OXWLUTColorBar::setPointColor()
{
    colorDialog(ColorDialogKind::Handle);
}

void OXWLUTColorBar::setLineColor()
{
    colorDialog(ColorDialogKind::Segment);
}

void OXWLUTColorBar::colorDialog(ColorDialogKind kind)
{
    if (!currentInterval()) {
        return;
    }
    if (kind != ColorDialogKind::Interval) {
        if (!mModel || !currentInterval()->isHandleIndexValid(kRed, mCurrentHandle) ||
            (kind == ColorDialogKind::Segment &&
             !currentInterval()->isHandleIndexValid(kRed, mCurrentHandle + 1))) {
            return;
        }
        updateAll();
    }
    OXWLUTIntervalInfo* interval = currentInterval();
    if (!interval) {
        return;
    }
    const int k = mCurrentHandle;
    const OXWLUTIntervalInfo backup(*interval);
    int rgb[3] = {255, 255, 255};
    for (int c = 0; c < 3; ++c) {
        const HandleList& curve = interval->handles(kColourChannels[c]);
        if (kind == ColorDialogKind::Handle && k < static_cast<int>(curve.size())) {
            rgb[c] = toByte(curve[k].y);
        } else if (kind == ColorDialogKind::Segment && k + 1 < static_cast<int>(curve.size())) {
            rgb[c] = toByte((curve[k].y + curve[k + 1].y) / 2.0f);
        }
    }
    if (kind == ColorDialogKind::Interval) {
        bool uniform = true;
        for (int channel : kColourChannels) {
            const HandleList& curve = interval->handles(channel);
            uniform = uniform && curve.size() == 2 && curve[0].y == curve[1].y;
        }
        if (uniform) {
            for (int c = 0; c < 3; ++c) {
                rgb[c] = toByte(interval->handles(kColourChannels[c])[0].y);
            }
        }
    }
    float from = interval->from();
    float to = interval->to();
    if (kind != ColorDialogKind::Interval) {
        const HandleList& red = interval->handles(kRed);
        from = mModel->snapDownToCell(interval->globalFromLocal(red[k].x));
        to = mModel->snapUpToCell(
            interval->globalFromLocal(red[kind == ColorDialogKind::Segment ? k + 1 : k].x));
    }

    QPointer<OXWLUTColorBar> alive(this);
    const QColor chosen = runColorDialog(QColor(rgb[0], rgb[1], rgb[2]), from, to);
    if (!alive) {
        return;
    }
    // The model may have been rebuilt while the dialog was open.
    interval = currentInterval();
    if (interval) {
        if (chosen.isValid()) {
            const OXMRGB8 colour(static_cast<unsigned char>(chosen.red()),
                                 static_cast<unsigned char>(chosen.green()),
                                 static_cast<unsigned char>(chosen.blue()));
            if (kind == ColorDialogKind::Interval) {
                interval->setColour(colour);
            } else if (kind == ColorDialogKind::Handle) {
                setCurrentPointColor(colour);
            } else {
                setCurrentLineColor(colour);
            }
        } else {
            *interval = backup;
        }
    }
    mHighlightStart = 1.0f;
    mHighlightEnd = -1.0f;
    emit objectColorChanged();
    redraw();
}

QColor OXWLUTColorBar::runColorDialog(const QColor& initial, float from, float to)
{
    mHighlightStart = from;
    mHighlightEnd = to;
    QTimer* timer = new QTimer(this);
    connect(timer, &QTimer::timeout, this, &OXWLUTColorBar::paintHighlightBorder);
    timer->start(100);

    QPointer<QTimer> guard(timer);
    const ColorDialogHook& hook = dialogHook();
    const QString name = QStringLiteral("Interval color");
    const QColor chosen =
        hook ? hook(initial, this, name) : defaultColorDialog(initial, this, name);
    if (guard) {
        guard->stop();
        guard->disconnect();
        delete guard.data();
    }
    return chosen;
}

void OXWLUTColorBar::paintHighlightBorder()
{
    // Drawn over the bar's picture in the pixmap, which the next paint copies to the widget.
    if (mPixmap.isNull()) {
        return;
    }
    const int c0 = columnFromPosition(mHighlightStart);
    const int c1 = columnFromPosition(mHighlightEnd);
    if (!(c0 < c1)) {
        return;
    }
    const QRect rect = QRect(QPoint(c0, 0), QPoint(c1 - 1, mPixmap.height() - 1)) & mPixmap.rect();
    if (rect.isEmpty()) {
        return;
    }
    QPainter painter(&mPixmap);
    drawHighlightBorder(&painter, rect);
    painter.end();
    update();
}

// --- Clipboard --------------------------------------------------------------------------------

const OXWLUTColorBar::HandleList& OXWLUTColorBar::clipboard(int channel)
{
    static const HandleList empty;
    if (channel < kRed || channel > kBlue) {
        return empty;
    }
    return clipboardLists()[channel - kRed];
}

void OXWLUTColorBar::clearClipboard()
{
    for (HandleList& list : clipboardLists()) {
        list.clear();
    }
}

void OXWLUTColorBar::copyIntervalColor()
{
    const OXWLUTIntervalInfo* interval = currentInterval();
    if (!interval) {
        return;
    }
    for (int c = 0; c < 3; ++c) {
        clipboardLists()[c] = interval->handles(kColourChannels[c]);
    }
}

void OXWLUTColorBar::pasteIntervalColor()
{
    OXWLUTIntervalInfo* interval = currentInterval();
    const auto& lists = clipboardLists();
    if (!interval || (lists[0].empty() && lists[1].empty() && lists[2].empty())) {
        return;
    }
    for (int c = 0; c < 3; ++c) {
        interval->setReferenceHandles(kColourChannels[c], lists[c]);
    }
    emit objectColorChanged();
    redraw();
}

// --- Colour table files -----------------------------------------------------------------------

void OXWLUTColorBar::exportIntervalColor()
{
    using File = OXWLUTColorTableFile;
    const OXWLUTIntervalInfo* interval = currentInterval();
    if (!interval) {
        return;
    }
    const QStringList filters{File::filter(File::Format::Text),
                              File::filter(File::Format::Palette)};
    QString selected;
    const QString fileName = OXWFileDialog::getSaveFileName(
        ExportClassificationColor, OXWApplication::parsePath(QStringLiteral("${USER_DOCUMENTS}")),
        filters, OXWMainWindow::getInstance(), nullptr, tr("Save color settings to..."), &selected,
        true, true);
    QString refusal;
    if (!fileName.isEmpty() &&
        !File::exportInterval(*interval, fileName, File::formatFromFilter(selected), &refusal)) {
        OXMError::emitError(nullptr, OXM::GenericError, refusal);
    }
}

void OXWLUTColorBar::importIntervalColor()
{
    using File = OXWLUTColorTableFile;
    if (!mModel || !currentInterval()) {
        return;
    }
    const QStringList filters{File::filter(File::Format::Text),
                              File::filter(File::Format::Palette)};
    QString selected;
    const QString fileName = OXWFileDialog::getOpenFileName(
        ExportClassificationColor, OXWApplication::parsePath(QStringLiteral("${USER_DOCUMENTS}")),
        filters, OXWMainWindow::getInstance(), nullptr, tr("Open project..."), &selected, true);
    OXWLUTIntervalInfo* interval = currentInterval();
    if (fileName.isEmpty() || !interval) {
        return;
    }
    File::Table table;
    QString refusal;
    if (!File::read(fileName, File::formatFromFilter(selected), table, &refusal)) {
        OXMError::emitError(nullptr, OXM::GenericError, refusal);
        return;
    }
    // Every table read is reported, also one equal to the curves the interval has.
    File::importTable(*interval, std::move(table),
                      File::columnWidth(*interval, positionFromColumn(0), positionFromColumn(1)));
    emit objectColorChanged();
    redraw();
}

// --- Presets ----------------------------------------------------------------------------------

void OXWLUTColorBar::updatePresetSlot()
{
    emit updatePreset();
}

void OXWLUTColorBar::removePresetSlot()
{
    emit removePreset();
}
