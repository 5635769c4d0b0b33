#include "OXWLUTWorkArea.h"

#include "OXWLUTObjectInfo.h"

#include <OXMAction.h>
#include <OXMObject.h>
#include <OXMObjectLink.h>
#include <OXMSingleton.h>
#include <OXMTulvoRights.h>
#include <OXMValueArrayPropertyIF.h>
#include <OXWApplication.h>
#include <OXWOverrideCursor.h>
#include <OXWPainter.h>
#include <OXWPressUserAction.h>
#include <OXWTaskProgress.h>

#include <QAction>
#include <QContextMenuEvent>
#include <QCursor>
#include <QFontMetrics>
#include <QGuiApplication>
#include <QLineEdit>
#include <QMenu>
#include <QMouseEvent>
#include <QPainter>
#include <QPixmap>
#include <QScreen>
#include <QTimer>
#include <QTransform>

#include <algorithm>
#include <cmath>
#include <vector>

namespace {
// No handle to move after a reset.
constexpr int NoHandle = -1;

// How often the drawing looks again at a histogram that is being calculated, in ms.
constexpr int CalculationPollMs = 30;
// The smallest vertical zoom the histogram's scale is divided by.
constexpr float MinimumVerticalZoom = 1e-5f;
// The range of the vertical zoom a drag gives the visible opacity range.
constexpr float MinimumDragZoom = 0.0001f;
constexpr float MaximumVerticalZoom = 10000.0f;
// The height of the interval name editor, in pixels.
constexpr int NameEditHeight = 18;

constexpr int OpacityChannel = OXWLUTIntervalInfo::OpacityChannel;
// Pixel coordinates outside this range are not drawn.
constexpr int PixelLimit = 32767;

bool insidePixelLimit(int p)
{
    return p > -PixelLimit && p < PixelLimit;
}

float clamp01(float x)
{
    return std::min(1.0f, std::max(0.0f, x));
}

// A number as the editor prints it: with 0 decimals the value is first rounded half up.
QString numberText(double value, int decimals)
{
    if (decimals <= 0) {
        value = std::floor(value + 0.5);
    }
    QString text;
    text.setNum(value, 'f', std::max(0, decimals));
    return text;
}

// Moves rect back inside bounds where it sticks out.
QRect shiftInside(QRect rect, const QRect& bounds)
{
    if (rect.right() > bounds.right())
        rect.moveRight(bounds.right());
    if (rect.left() < bounds.left())
        rect.moveLeft(bounds.left());
    if (rect.bottom() > bounds.bottom())
        rect.moveBottom(bounds.bottom());
    if (rect.top() < bounds.top())
        rect.moveTop(bounds.top());
    return rect;
}

QFont sizedFont(const QFont& base, int points)
{
    QFont font(base);
    font.setPointSize(points);
    return font;
}

} // namespace

OXWLUTWorkArea::OXWLUTWorkArea(QWidget* parent, const char* name)
    : QFrame(parent), mBuffer(std::make_unique<QPixmap>())
{
    if (name) {
        setObjectName(QString::fromLatin1(name));
    }
    setAttribute(Qt::WA_OpaquePaintEvent);
    setMouseTracking(true);
    setFrameStyle(QFrame::Panel | QFrame::Sunken);
    setLineWidth(2);
    // Not a QStringLiteral: Qt's font cache keeps the family name after the plug-in's library,
    // where such a literal lives, has been unloaded.
    setFont(QFont(QString::fromLatin1("helvetica"), 10));

    buildMenus();

    mUpdateTimer = new QTimer(this);
    mUpdateTimer->setObjectName(QStringLiteral("OXWHistogramToolBaseGUI::mUpdateTimer"));
    mUpdateTimer->setSingleShot(true);
    connect(mUpdateTimer, &QTimer::timeout, this, QOverload<>::of(&QWidget::update));

    if (parent && parent->parent()) {
        installEventFilter(parent->parent());
    }
}

OXWLUTWorkArea::~OXWLUTWorkArea()
{
    mUserAction.release();
    mHistogramObject = nullptr;
    mRenderObject = nullptr;
}

void OXWLUTWorkArea::buildMenus()
{
    mMenu = new QMenu(this);
    mMenu->setObjectName(QStringLiteral("mMenu"));

    mInsertPointItem = mMenu->addAction(tr("Insert handle"), this, &OXWLUTWorkArea::insertPoint);
    mDeletePointItem = mMenu->addAction(tr("Delete handle"), this, &OXWLUTWorkArea::deletePoint);

    mResetMenu = new QMenu(tr("Reset opacity curve"), mMenu);
    mResetMenu->setObjectName(QStringLiteral("mResetMenu"));
    mResetMenu->addAction(tr("Default"), this, &OXWLUTWorkArea::resetIntervalDefault);
    mResetMenu->addAction(tr("Full transparent"), this, &OXWLUTWorkArea::resetIntervalZero);
    mResetMenu->addAction(tr("Full opaque"), this, &OXWLUTWorkArea::resetIntervalOne);
    mMenu->addMenu(mResetMenu);
    mMenu->addSeparator();

    mMenu->addAction(tr("Copy opacity curve"), this, &OXWLUTWorkArea::copyOpacity);
    mPasteOpacityItem =
        mMenu->addAction(tr("Paste opacity curve"), this, &OXWLUTWorkArea::pasteOpacity);
    mMenu->addSeparator();

    mNewIntervalMenu = new QMenu(tr("New interval"), mMenu);
    mNewIntervalMenu->setObjectName(QStringLiteral("mNewIntervalMenu"));
    mNewIntervalMenu->addAction(tr("At left side"), this, &OXWLUTWorkArea::newIntervalLeft);
    mNewIntervalMenu->addAction(tr("At right side"), this, &OXWLUTWorkArea::newIntervalRight);
    mMenu->addMenu(mNewIntervalMenu);

    mDeleteIntervalMenu = new QMenu(tr("Delete interval"), mMenu);
    mDeleteIntervalMenu->setObjectName(QStringLiteral("mDeleteIntervalMenu"));
    mDeleteIntervalLeftItem = mDeleteIntervalMenu->addAction(tr("Expand left neighbor"), this,
                                                             &OXWLUTWorkArea::deleteIntervalLeft);
    mDeleteIntervalRightItem = mDeleteIntervalMenu->addAction(tr("Expand right neighbor"), this,
                                                              &OXWLUTWorkArea::deleteIntervalRight);
    mDeleteIntervalItem = mMenu->addMenu(mDeleteIntervalMenu);
    mMenu->addSeparator();

    mIntervalVisibleItem =
        mMenu->addAction(tr("Disable interval"), this, &OXWLUTWorkArea::intervalVisible);
    // The interval's voxels as a new region of the selected object, or as a volume of their own.
    mMenu->addAction(tr("Create ROI from gray value interval"), this,
                     &OXWLUTWorkArea::createSegmentSlot);
    mMenu->addAction(tr("Extract gray value interval"), this,
                     &OXWLUTWorkArea::extractGreyvalueIntervalSlot);
    mMenu->addSeparator();

    mZoomMenu = new QMenu(tr("Zoom vertical"), mMenu);
    mZoomMenu->setObjectName(QStringLiteral("mZoomMenu"));
    mZoomMenu->addAction(tr("Zoom in"), this, &OXWLUTWorkArea::verticalZoomIn);
    mZoomMenu->addAction(tr("Zoom out"), this, &OXWLUTWorkArea::verticalZoomOut);
    mZoomMenu->addAction(tr("Zoom reset"), this, &OXWLUTWorkArea::verticalZoomReset);
    mMenu->addMenu(mZoomMenu);

    mHistogramMenu = new QMenu(tr("Histogram"), mMenu);
    mHistogramMenu->setObjectName(QStringLiteral("mHistogramMenu"));
    mHistogramVisibleItem =
        mHistogramMenu->addAction(tr("Disable histogram"), this, &OXWLUTWorkArea::histogramDisable);
    mHistogramMenu->addAction(tr("Save (*.csv)"), this, &OXWLUTWorkArea::histogramSaveActivated);
    mMenu->addMenu(mHistogramMenu);
}

// --- panel interface

void OXWLUTWorkArea::setObjectInfo(OXWLUTObjectInfo* objectInfo)
{
    if (objectInfo != mObjectInfo) {
        // The intervals of the previous model may be gone: forget every pointer into it.
        forgetCurrentInterval();
        mEditedInterval = nullptr;
        if (mNameEdit && mNameEdit->isVisible()) {
            mNameEdit->hide();
            setFocusProxy(nullptr);
        }
    }
    mObjectInfo = objectInfo;
}

void OXWLUTWorkArea::setRenderObject(OXMObject* renderObject)
{
    mRenderObject = renderObject;
}

void OXWLUTWorkArea::setHistogramObject(OXMObject* histogramObject)
{
    OXMObject* previous = mHistogramObject.get();
    if (previous && previous != histogramObject) {
        OXMAction* calculate = previous->getAction(OXM::Calculate);
        if (calculate && calculate->isRunning()) {
            calculate->getTaskInfo()->requestAbort();
        }
    }
    mHistogramObject = histogramObject;
    if (histogramObject) {
        scheduleUpdate();
    }
}

void OXWLUTWorkArea::setRights(OXMTulvoRights* rights)
{
    mRights = rights;
}

OXMTulvoRights* OXWLUTWorkArea::rights() const
{
    return static_cast<OXMTulvoRights*>(mRights.get());
}

void OXWLUTWorkArea::scheduleUpdate()
{
    if (!mUpdateTimer->isActive()) {
        mUpdateTimer->start(30);
    }
}

void OXWLUTWorkArea::setIsosurfaceShown(bool shown)
{
    mIsosurfaceShown = shown;
}

void OXWLUTWorkArea::setIsosurfaceActive(bool active)
{
    mIsosurfaceActive = active;
}

QSize OXWLUTWorkArea::sizeHint() const
{
    return minimumSize();
}

void OXWLUTWorkArea::updateAll()
{
    if (mHoverMode == HoverHandle && mPressAction == PressNone) {
        mHoverMode = HoverReset;
    }
    repaintAll();
}

void OXWLUTWorkArea::repaintAll()
{
    render();
    update();
}

// --- coordinate mapping

OXWLUTWorkArea::PixelMapping OXWLUTWorkArea::pixelMapping() const
{
    PixelMapping mapping;
    mapping.greyFrom = mObjectInfo->visibleGreyFrom();
    mapping.greyTo = mObjectInfo->visibleGreyTo();
    mapping.opacityFrom = mObjectInfo->visibleOpacityFrom();
    mapping.opacityTo = mObjectInfo->visibleOpacityTo();
    mapping.width = mBuffer->width();
    mapping.height = mBuffer->height();
    return mapping;
}

int OXWLUTWorkArea::pixelFromPosition(float x) const
{
    return mObjectInfo && !mBuffer->isNull() ? pixelMapping().x(x) : 0;
}

float OXWLUTWorkArea::positionFromPixel(int px) const
{
    if (!mObjectInfo || mBuffer->isNull()) {
        return 0.0f;
    }
    const float from = mObjectInfo->visibleGreyFrom();
    const float to = mObjectInfo->visibleGreyTo();
    return from + (to - from) * mPositionPerPixel * float(px);
}

int OXWLUTWorkArea::pixelFromHeight(float h) const
{
    return mObjectInfo && !mBuffer->isNull() ? pixelMapping().y(h) : 0;
}

float OXWLUTWorkArea::heightFromPixel(int py) const
{
    if (!mObjectInfo || mBuffer->isNull()) {
        return 0.0f;
    }
    const int height = mBuffer->height();
    const float from = mObjectInfo->visibleOpacityFrom();
    const float to = mObjectInfo->visibleOpacityTo();
    return from + float(height - py - 1) * mHeightPerPixel * (to - from);
}

float OXWLUTWorkArea::pressPosition() const
{
    return positionFromPixel(mPressPos.x() - contentsRect().left());
}

float OXWLUTWorkArea::pressHeight() const
{
    return heightFromPixel(mPressPos.y() - contentsRect().top());
}

int OXWLUTWorkArea::clampedPixel(int px) const
{
    const float x = positionFromPixel(px);
    if (x < 0.0f) {
        return pixelFromPosition(0.0f);
    }
    if (x > 1.0f) {
        return pixelFromPosition(1.0f);
    }
    return px;
}

// --- Qt handlers of the view

void OXWLUTWorkArea::paintEvent(QPaintEvent* event)
{
    QFrame::paintEvent(event);
    QPainter painter(this);
    drawContents(&painter);
}

void OXWLUTWorkArea::drawContents(QPainter* painter)
{
    painter->drawPixmap(contentsRect().topLeft(), *mBuffer);
}

void OXWLUTWorkArea::resizeEvent(QResizeEvent* event)
{
    const QSize size = contentsRect().size();
    *mBuffer = QPixmap(size.expandedTo(QSize(0, 0)));
    mPositionPerPixel = size.width() > 0 ? 1.0f / float(size.width()) : 1.0f;
    mHeightPerPixel = size.height() > 0 ? 1.0f / float(size.height()) : 1.0f;
    mHoverMode = HoverReset;
    render();
    forgetCurrentInterval();
    if (mNameEdit && mNameEdit->isVisible()) {
        mNameEdit->setGeometry(nameEditGeometry(font().pointSize() + 6));
    }
    QFrame::resizeEvent(event);
}

void OXWLUTWorkArea::forgetCurrentInterval()
{
    mCurrentInterval = nullptr;
    mCurrentIndex = -1;
    mCurrentHandle = -1;
}

// --- vertical zoom

// Shows 1/factor of the current opacity range from its bottom and multiplies the zoom factor.
void OXWLUTWorkArea::scaleVerticalZoom(float factor)
{
    if (!mObjectInfo) {
        return;
    }
    const float from = mObjectInfo->visibleOpacityFrom();
    const float to = mObjectInfo->visibleOpacityTo();
    mObjectInfo->setVisibleOpacityRange(from, from + (to - from) / factor);
    mObjectInfo->setVerticalZoom(mObjectInfo->verticalZoom() * factor);
    emit verticalZoomChanged();
    repaintAll();
}

void OXWLUTWorkArea::verticalZoomIn()
{
    scaleVerticalZoom(2.0f);
}

void OXWLUTWorkArea::verticalZoomOut()
{
    scaleVerticalZoom(0.5f);
}

void OXWLUTWorkArea::verticalZoomReset()
{
    if (!mObjectInfo) {
        return;
    }
    mObjectInfo->setVisibleOpacityRange(0.0f, 1.0f);
    mObjectInfo->setVerticalZoom(1.0f);
    emit verticalZoomChanged();
    repaintAll();
}

// --- rendering

bool OXWLUTWorkArea::editAllowed() const
{
    const OXMTulvoRights* rights = this->rights();
    return !rights || rights->getAllowClassificationEdit();
}

OXMObject* OXWLUTWorkArea::histogramResult() const
{
    OXMObject* histogram = mHistogramObject.get();
    OXMObjectLink link;
    if (!histogram || !histogram->getValue(OXM::Result, link)) {
        return nullptr;
    }
    return link.getLink();
}

float OXWLUTWorkArea::histogramMean() const
{
    const OXMObject* result = histogramResult();
    if (!result) {
        return mHistogramMean;
    }
    const auto* bins =
        OXMValueArrayPropertyIF<float>::getInterface(result->getProperty(OXM::Histogram));
    int first = 0;
    int last = -1;
    if (!bins || !bins->getArrayIndexRange(first, last) || last < first) {
        return mHistogramMean;
    }
    std::vector<float> values(std::size_t(last - first + 1));
    if (!bins->getArrayItems(first, last, values.data())) {
        return mHistogramMean;
    }
    double sum = 0.0;
    for (float v : values) {
        sum += double(v);
    }
    return float(sum / double(values.size()));
}

void OXWLUTWorkArea::renderMessage(QPainter& painter, const QString& headline, const QString& text)
{
    const QRect all(0, 0, mBuffer->width(), mBuffer->height());
    const QFont base = font();
    const int lineHeight = QFontMetrics(base).height();
    const int half = lineHeight / 2;
    const int flags = Qt::AlignHCenter | Qt::AlignVCenter | Qt::TextWordWrap;

    QFont bold(base);
    bold.setWeight(75);
    painter.setFont(bold);
    painter.setPen(QColor(255, 0, 0));
    painter.drawText(all.translated(0, -half), flags, headline);

    painter.setFont(base);
    painter.setPen(palette().color(QPalette::WindowText));
    painter.drawText(all.translated(0, half), flags, text);
}

void OXWLUTWorkArea::render()
{
    if (mBuffer->isNull() || mBuffer->width() <= 0 || mBuffer->height() <= 0) {
        return;
    }
    OXWPainter painter(mBuffer.get());
    painter.setFont(font());
    if (!mObjectInfo || !isEnabled()) {
        renderMessageScreen(painter);
        return;
    }
    OXMObject* histogram = mHistogramObject.get();
    if (!histogram || !renderCalculationState(painter, histogram)) {
        return;
    }
    // The histogram does not change while the user drags in the editor: its scale is read
    // again when the drag ends.
    if (mPressAction == PressNone) {
        mHistogramMean = histogramMean();
    }
    renderIntervalBackgrounds(painter, histogramResult());
    renderAxisTitles(painter);
    renderIntervals(painter);
    renderFeedback(painter);
    if (mIsosurfaceShown) {
        renderIsosurfaceMarker(painter);
    }
}

QRect OXWLUTWorkArea::intervalSpan(const OXWLUTIntervalInfo& interval) const
{
    const int left = std::max(0, pixelFromPosition(interval.from()));
    const int right = std::min(contentsRect().width() - 1, pixelFromPosition(interval.to()));
    return right < left ? QRect() : QRect(left, 0, right - left + 1, contentsRect().height());
}

QColor OXWLUTWorkArea::intervalBackground(const OXWLUTIntervalInfo& interval) const
{
    const QColor white(Qt::white);
    return interval.isEnabled() && isEnabled() ? white : white.darker(125);
}

void OXWLUTWorkArea::renderMessageScreen(OXWPainter& painter)
{
    painter.fillRect(mBuffer->rect(), palette().color(QPalette::Window));
    if (!editAllowed()) {
        renderMessage(painter, tr("Rendering settings cannot be changed."),
                      tr("Privileges were not granted by the creator of the OXM file."));
    } else if (!mRenderObject) {
        renderMessage(painter, tr("No volume or ROI selected."),
                      tr("Please select volume or ROI in scene tree."));
    } else {
        renderMessage(painter, tr("ROI contains no render settings."),
                      tr("Please add render settings to ROI."));
    }
}

bool OXWLUTWorkArea::renderCalculationState(OXWPainter& painter, OXMObject* histogram)
{
    if (OXWTaskProgress::statusBarCallback(histogram, OXM::Calculate, nullptr)) {
        return true;
    }
    const OXMAction* calculate = histogram->getAction(OXM::Calculate);
    const OXMenum code = calculate ? calculate->getErrorCode() : OXMenum(OXM::NoError);
    if (code == OXM::Running) {
        const QRect all = mBuffer->rect();
        painter.fillRect(all, palette().color(QPalette::Window));
        painter.setPen(palette().color(QPalette::WindowText));
        painter.drawText(all, Qt::AlignHCenter | Qt::AlignVCenter | Qt::TextWordWrap,
                         tr("calculation in progress..."));
        mUpdateTimer->start(CalculationPollMs);
    } else if (code == OXM::Abort) {
        mUpdateTimer->start(CalculationPollMs);
    }
    return false;
}

void OXWLUTWorkArea::renderIntervalBackgrounds(OXWPainter& painter, OXMObject* result)
{
    const OXWLUTObjectInfo& info = *mObjectInfo;
    const float s = info.greyStep();
    const float zoom =
        info.verticalZoom() >= MinimumVerticalZoom ? info.verticalZoom() : MinimumVerticalZoom;
    for (int i = 0; i < info.intervalCount(); ++i) {
        const OXWLUTIntervalInfo& interval = *info.interval(i);
        const QRect span = intervalSpan(interval);
        if (span.isEmpty()) {
            continue;
        }
        painter.setClipRect(span);
        const QColor background = intervalBackground(interval);
        painter.fillRect(span, background);
        if (!mHistogramVisible || !result) {
            continue;
        }
        const auto binOf = [&](float position) {
            return std::floor(double(info.greyFromPosition(position + s / 2.0f)) -
                              double(info.greyMin()));
        };
        const double a = binOf(std::max(interval.from(), info.visibleGreyFrom()));
        const double b = binOf(std::min(interval.to(), info.visibleGreyTo()));
        const QColor bars = background.darker(125);
        painter.setPen(bars);
        painter.setBrush(bars);
        painter.drawHistogram(span, result,
                              QRectF(QPointF(a, 0.0), QPointF(b, 2.0 * mHistogramMean / zoom)),
                              -1.0, OXWPainter::Average(), OXWPainter::Bar());
        painter.setBrush(Qt::NoBrush);
    }
    painter.setClipping(false);
}

void OXWLUTWorkArea::renderAxisTitles(OXWPainter& painter)
{
    const int W = mBuffer->width();
    const int H = mBuffer->height();
    QFont titleFont = sizedFont(font(), 9);
    titleFont = QFont(titleFont.family(), titleFont.pointSize() - 1);
    painter.setFont(titleFont);
    painter.setPen(QColor(Qt::darkGray));
    painter.drawText(QRect(0, 0, W - 10, H), Qt::AlignRight | Qt::AlignBottom, tr("Grayvalues"));
    painter.save();
    painter.setWorldTransform(QTransform(0, -1, 1, 0, 0, 0));
    painter.drawText(QRect(-15 - H, 0, H, W - 20), Qt::AlignRight | Qt::AlignTop, tr("Opacity"));
    painter.restore();
}

void OXWLUTWorkArea::renderIntervals(OXWPainter& painter)
{
    const OXWLUTObjectInfo& info = *mObjectInfo;
    const QFont nameFont = sizedFont(font(), 9);
    const PixelMapping pixels = pixelMapping();
    for (int i = 0; i < info.intervalCount(); ++i) {
        const OXWLUTIntervalInfo& interval = *info.interval(i);
        const QRect span = intervalSpan(interval);
        if (span.isEmpty()) {
            continue;
        }
        painter.setClipRect(span);
        if (!interval.name().isEmpty()) {
            painter.setFont(nameFont);
            renderIntervalName(painter, interval, span);
        }
        renderOpacityCurve(painter, interval, pixels);
        const int border = pixelFromPosition(interval.from());
        if (insidePixelLimit(border)) {
            painter.setPen(QColor(Qt::blue));
            painter.drawLine(border, 0, border, mBuffer->height() - 1);
        }
    }
    painter.setClipping(false);
}

void OXWLUTWorkArea::renderIntervalName(OXWPainter& painter, const OXWLUTIntervalInfo& interval,
                                        const QRect& span)
{
    painter.setPen(intervalBackground(interval).darker(200));
    QRect bounds;
    painter.drawText(span, Qt::AlignTop | Qt::AlignHCenter | Qt::TextWordWrap, interval.name(),
                     &bounds);
    if (!interval.isEnabled()) {
        const QRect below(span.left(), bounds.bottom() + 1, span.width(),
                          std::max(0, mBuffer->height() - bounds.bottom() - 1));
        painter.drawText(below, Qt::AlignTop | Qt::AlignHCenter, tr("(disabled)"));
    }
}

void OXWLUTWorkArea::renderOpacityCurve(OXWPainter& painter, const OXWLUTIntervalInfo& interval,
                                        const PixelMapping& pixels)
{
    const float s = mObjectInfo->greyStep();
    const OXWLUTIntervalInfo::HandleList& handles = interval.handles(OpacityChannel);
    QPolygon line;
    std::vector<OXWPainter::Mark> marks;
    for (const auto& handle : handles) {
        const float x = interval.globalFromLocal(handle.x);
        const int p = pixels.x(x);
        const int y = pixels.y(handle.y);
        line << QPoint(p, y);
        if (!insidePixelLimit(p) || !insidePixelLimit(y)) {
            continue;
        }
        // The cell of the handle's grey value, at least as wide as a handle mark.
        int l = pixels.x(x - s / 2.0f) + 1;
        int r = pixels.x(x + s / 2.0f) - 1;
        if (r - l + 2 < 9) {
            l = p - 3;
            r = p + 3;
        }
        marks.push_back({l, r, y - 4});
    }
    if (handles.size() >= 2) {
        painter.setPen(QColor(Qt::darkGray));
        painter.drawColumnPolyline(line);
    }
    painter.fillMarks(marks, 8, QColor(Qt::darkGray));
}

void OXWLUTWorkArea::renderIsosurfaceMarker(OXWPainter& painter)
{
    const OXWLUTObjectInfo& info = *mObjectInfo;
    const int p = pixelFromPosition(clamp01(info.isosurface()));
    painter.setPen(mIsosurfaceActive ? QColor(Qt::red) : QColor(255, 160, 160));
    painter.drawLine(p, 0, p, mBuffer->height() - 1);
    if (mPressAction != PressIsosurface && mPressAction != PressZoom) {
        return;
    }
    painter.setFont(sizedFont(font(), 9));
    const QString text = tr("Isosurface: %1")
                             .arg(numberText(info.calibratedFromPosition(positionFromPixel(p)),
                                             info.valueDecimals()));
    QRect rect = painter.fontMetrics().boundingRect(text);
    rect.moveTopLeft(QPoint(p + 3, 2));
    rect = shiftInside(rect, mBuffer->rect());
    painter.setPen(QColor(Qt::black));
    painter.drawText(rect, Qt::AlignLeft | Qt::AlignTop, text);
}

QString OXWLUTWorkArea::valueText(float position) const
{
    return numberText(mObjectInfo->calibratedFromPosition(position), mObjectInfo->valueDecimals());
}

QString OXWLUTWorkArea::opacityText(float height) const
{
    return numberText(mObjectInfo->opacityFromPosition(height), mObjectInfo->opacityDecimals());
}

void OXWLUTWorkArea::drawHandleLabel(QPainter& painter, const OXWLUTIntervalInfo& interval, int k)
{
    const OXWLUTIntervalInfo::HandleList& handles = interval.handles(OpacityChannel);
    if (k < 0 || k >= int(handles.size())) {
        return;
    }
    const float x = interval.globalFromLocal(handles[std::size_t(k)].x);
    const float y = handles[std::size_t(k)].y;
    const QString text = valueText(x) + QStringLiteral(" / ") + opacityText(y);
    painter.setFont(sizedFont(font(), 8));
    QRect rect = painter.fontMetrics().boundingRect(text);
    const int textHeight = rect.height();
    const int p = pixelFromPosition(x);
    const int row = pixelFromHeight(y);
    int centreY = row - textHeight;
    if (double(row) - 1.5 * double(textHeight) < 0.0) {
        centreY = row + textHeight;
    }
    rect.moveCenter(QPoint(p, centreY));
    rect = shiftInside(rect, QRect(0, 0, mBuffer->width(), mBuffer->height()));
    painter.setPen(QColor(Qt::black));
    painter.drawText(rect, Qt::AlignCenter, text);
}

void OXWLUTWorkArea::renderFeedback(QPainter& painter)
{
    if (!mCurrentInterval || mCurrentIndex < 0) {
        return;
    }
    const bool dragging = mPressAction != PressNone && mPressAction != PressName;
    if (!dragging && mHoverMode != HoverHandle) {
        return;
    }
    painter.setFont(sizedFont(font(), 9));
    painter.setPen(QColor(Qt::black));
    switch (mPressAction) {
    case PressNewRight:
    case PressNewLeft:
        renderRubberBandLabels(painter);
        break;
    case PressBorder:
        renderBorderLabels(painter);
        break;
    case PressSegment:
        drawHandleLabel(painter, *mCurrentInterval, mCurrentHandle);
        drawHandleLabel(painter, *mCurrentInterval, mCurrentHandle + 1);
        break;
    case PressZoom:
        renderZoomLabels(painter);
        break;
    default:
        if (mPressAction == PressHandle || mHoverMode == HoverHandle) {
            drawHandleLabel(painter, *mCurrentInterval, mCurrentHandle);
        }
        break;
    }
}

QRect OXWLUTWorkArea::centredLabel(const QPainter& painter, const QString& text, int x,
                                   bool alignRight) const
{
    QRect rect = painter.fontMetrics().boundingRect(text);
    rect.moveTop(mBuffer->height() / 2 - rect.height() / 2);
    if (alignRight) {
        rect.moveRight(x);
    } else {
        rect.moveLeft(x);
    }
    return rect;
}

void OXWLUTWorkArea::renderRubberBandLabels(QPainter& painter)
{
    const float s = mObjectInfo->greyStep();
    painter.setPen(QColor(Qt::gray));
    painter.drawLine(mRubberBandX, 0, mRubberBandX, mBuffer->height() - 1);
    painter.setPen(QColor(Qt::black));
    const float x = positionFromPixel(mRubberBandX);
    const QString leftText = valueText(x - s / 2.0f);
    const QString rightText = valueText(x + s / 2.0f);
    painter.drawText(centredLabel(painter, leftText, mRubberBandX, true), Qt::AlignCenter,
                     leftText);
    painter.drawText(centredLabel(painter, rightText, mRubberBandX, false), Qt::AlignCenter,
                     rightText);
}

void OXWLUTWorkArea::renderBorderLabels(QPainter& painter)
{
    const OXWLUTObjectInfo& info = *mObjectInfo;
    const float s = info.greyStep();
    const int first = mHoverMode == HoverLeftBorder ? mCurrentIndex - 1 : mCurrentIndex;
    const OXWLUTIntervalInfo* a = info.interval(first);
    const OXWLUTIntervalInfo* b = info.interval(first + 1);
    if (!a || !b) {
        return;
    }
    struct Label
    {
        QString text;
        QRect rect;
    };
    // The outer grey values of both intervals, each at its border.
    std::vector<Label> labels;
    for (const OXWLUTIntervalInfo* interval : {a, b}) {
        const QString low = valueText(interval->from() + s / 2.0f);
        const QString high = valueText(interval->to() - s / 2.0f);
        labels.push_back(
            {low, centredLabel(painter, low, pixelFromPosition(interval->from()), false)});
        labels.push_back(
            {high, centredLabel(painter, high, pixelFromPosition(interval->to()), true)});
    }
    // Labels that overlap move apart vertically.
    for (std::size_t i = 0; i < labels.size(); ++i) {
        for (std::size_t j = i + 1; j < labels.size(); ++j) {
            if (labels[i].rect.intersects(labels[j].rect)) {
                const int shift = labels[i].rect.height() / 2 + 1;
                labels[i].rect.translate(0, -shift);
                labels[j].rect.translate(0, shift);
            }
        }
    }
    for (const Label& label : labels) {
        painter.drawText(label.rect, Qt::AlignCenter, label.text);
    }
}

void OXWLUTWorkArea::renderZoomLabels(QPainter& painter)
{
    const OXWLUTObjectInfo& info = *mObjectInfo;
    const float s = info.greyStep();
    const int W = mBuffer->width();
    const QString low = valueText(info.visibleGreyFrom() + s / 2.0f);
    const QString high = valueText(info.visibleGreyTo() - s / 2.0f);
    painter.drawText(centredLabel(painter, low, 0, false), Qt::AlignCenter, low);
    painter.drawText(centredLabel(painter, high, W - 1, true), Qt::AlignCenter, high);
    painter.drawText(QRect(0, 0, W, mBuffer->height()), Qt::AlignCenter,
                     tr("Y-Zoom: %1 %").arg(int(info.verticalZoom() * 100.0f)));
}

// --- hit test

void OXWLUTWorkArea::setHoverCursor()
{
    switch (mHoverMode) {
    case HoverLeftBorder:
    case HoverRightBorder:
    case HoverIsosurface:
        setCursor(Qt::SizeHorCursor);
        break;
    case HoverNewRight:
        setCursor(OXWOverrideCursor::getCursor(OXM::ExpandLeftCursor));
        break;
    case HoverNewLeft:
        setCursor(OXWOverrideCursor::getCursor(OXM::ExpandRightCursor));
        break;
    case HoverSegment: {
        const bool level = mCurrentInterval->isSegmentLevel(OpacityChannel, mCurrentHandle);
        const bool movable = mCurrentInterval->isSegmentMovable(OpacityChannel, mCurrentHandle);
        if (level) {
            setCursor(movable ? Qt::SizeAllCursor : Qt::SizeVerCursor);
        } else {
            setCursor(movable ? Qt::SizeHorCursor : Qt::ArrowCursor);
        }
        break;
    }
    case HoverHandle:
        setCursor(mCurrentInterval->isHandleMovable(OpacityChannel, mCurrentHandle)
                      ? Qt::SizeAllCursor
                      : Qt::SizeVerCursor);
        break;
    case HoverName:
        setCursor(Qt::IBeamCursor);
        break;
    default:
        setCursor(Qt::ArrowCursor);
        break;
    }
}

void OXWLUTWorkArea::updateHover(const QPoint& pos)
{
    if (!mObjectInfo) {
        return;
    }
    const OXWLUTObjectInfo& info = *mObjectInfo;
    const int before = mHoverMode;
    const QRect contents = contentsRect();
    const int px = pos.x() - contents.left();
    const float x = positionFromPixel(px);
    const float h = heightFromPixel(pos.y() - contents.top());
    const float rx = 4.0f * (info.visibleGreyTo() - info.visibleGreyFrom()) * mPositionPerPixel;
    const float ry = 4.0f * (info.visibleOpacityTo() - info.visibleOpacityFrom()) * mHeightPerPixel;

    mHoverMode = HoverInside;
    mCurrentIndex = info.intervalIndexAt(x);
    mCurrentInterval = info.interval(mCurrentIndex);
    mCurrentHandle = -1;
    OXWLUTIntervalInfo* interval = mCurrentInterval;

    if (interval) {
        mCurrentHandle = interval->findHandle(OpacityChannel, info.snapToCellCentre(x), h, rx, ry);
        if (mCurrentHandle >= 0) {
            mHoverMode = HoverHandle;
        }
    }
    if (mHoverMode == HoverInside && mIsosurfaceShown && mIsosurfaceActive) {
        if (std::abs(pixelFromPosition(clamp01(info.isosurface())) - px) < 2) {
            mHoverMode = HoverIsosurface;
        }
    }
    if (interval && mHoverMode == HoverInside) {
        mCurrentHandle = interval->findSegment(OpacityChannel, x, h, 0.7f * rx, 0.7f * ry);
        if (mCurrentHandle >= 0) {
            mHoverMode = HoverSegment;
        }
    }
    if (interval && mHoverMode == HoverInside) {
        const int d = px - pixelFromPosition(interval->from());
        if (d < 2 && info.hasLeftNeighbour(mCurrentIndex)) {
            mHoverMode = HoverLeftBorder;
        } else if ((d < 6 && interval->isWide()) ||
                   px - pixelFromPosition(info.visibleGreyFrom()) < 6) {
            mHoverMode = HoverNewLeft;
        }
    }
    if (interval && mHoverMode == HoverInside) {
        const int d = pixelFromPosition(interval->to()) - px;
        if (d < 2 && info.hasRightNeighbour(mCurrentIndex)) {
            mHoverMode = HoverRightBorder;
        } else if ((d < 6 && interval->isWide()) ||
                   pixelFromPosition(info.visibleGreyTo()) - px < 6) {
            mHoverMode = HoverNewRight;
        }
    }
    if (interval && mHoverMode == HoverInside && !(mNameEdit && mNameEdit->isVisible())) {
        const QRect span = intervalSpan(*interval).translated(contents.topLeft());
        const QRect name = QFontMetrics(font()).boundingRect(
            span, Qt::TextWordWrap | Qt::AlignTop | Qt::AlignHCenter, interval->name());
        if (!interval->name().isEmpty() && name.contains(pos)) {
            mHoverMode = HoverName;
        }
    }

    setHoverCursor();
    if (mHoverMode != before) {
        repaintAll();
    }
}

// --- mouse

OXWLUTWorkArea::PressAction OXWLUTWorkArea::pressActionFor(int hover)
{
    switch (hover) {
    case HoverInside:
        return PressZoom;
    case HoverLeftBorder:
    case HoverRightBorder:
        return PressBorder;
    case HoverNewRight:
        return PressNewRight;
    case HoverNewLeft:
        return PressNewLeft;
    case HoverSegment:
        return PressSegment;
    case HoverHandle:
        return PressHandle;
    case HoverName:
        return PressName;
    case HoverIsosurface:
        return PressIsosurface;
    default:
        return PressNone;
    }
}

void OXWLUTWorkArea::mousePressEvent(QMouseEvent* event)
{
    // A release that never arrived (it went to a popup) must not leave its action open.
    mUserAction.press(tr("Change color"));
    mPressPos = event->pos();
    updateHover(mPressPos);

    if (mNameEdit && mNameEdit->isVisible()) {
        endEditIntervalName();
    }
    mAxisLock = (event->modifiers() & Qt::ShiftModifier) != 0;
    if (!mObjectInfo) {
        return;
    }

    const Qt::KeyboardModifiers modifiers = event->modifiers();
    const bool left = event->button() == Qt::LeftButton;
    const bool gesture =
        event->button() == Qt::MiddleButton || (left && (modifiers & Qt::AltModifier)) ||
        (left && (modifiers & Qt::ControlModifier) && (modifiers & Qt::ShiftModifier));
    if (gesture) {
        if (mHoverMode != HoverHandle) {
            insertPoint();
            mPressAction = PressHandle;
        } else {
            deletePoint();
        }
    }

    if (left) {
        mPressAction = pressActionFor(mHoverMode);
        if (mPressAction == PressZoom) {
            mLastPos = event->pos();
        }
    }

    if (mCurrentInterval && mCurrentInterval->isHandleIndexValid(OpacityChannel, mCurrentHandle) &&
        mCurrentHandle >= 0) {
        const auto& handle = mCurrentInterval->handles(OpacityChannel)[std::size_t(mCurrentHandle)];
        mPressHandlePos[0] = mCurrentInterval->globalFromLocal(handle.x);
        mPressHandlePos[1] = handle.y;
    }

    if (mPressAction == PressBorder && mCurrentInterval) {
        const int other = mHoverMode == HoverLeftBorder ? mCurrentIndex - 1 : mCurrentIndex + 1;
        mCurrentInterval->commitChannel(OpacityChannel);
        if (OXWLUTIntervalInfo* neighbour = mObjectInfo->interval(other)) {
            neighbour->commitChannel(OpacityChannel);
        }
    }

    if (mPressAction == PressName) {
        beginEditIntervalName();
    } else if (mPressAction == PressNewRight || mPressAction == PressNewLeft) {
        mRubberBandX = clampedPixel(event->pos().x() - contentsRect().left());
    }
    if (mPressAction != PressNone && mPressAction != PressName) {
        updateAll();
    }
}

void OXWLUTWorkArea::mouseMoveEvent(QMouseEvent* event)
{
    mAxisLock = (event->modifiers() & Qt::ShiftModifier) != 0;
    const QPoint pos = event->pos();
    const int px = pos.x() - contentsRect().left();
    switch (mPressAction) {
    case PressNone:
        updateHover(pos);
        break;
    case PressBorder:
        dragBorder(px);
        break;
    case PressNewRight:
    case PressNewLeft:
        mRubberBandX = clampedPixel(px);
        repaintAll();
        break;
    case PressSegment:
    case PressHandle:
        dragHandleOrSegment(pos);
        break;
    case PressZoom:
        dragVerticalZoom(pos);
        break;
    case PressIsosurface:
        if (mObjectInfo) {
            mObjectInfo->setIsosurface(positionFromPixel(clampedPixel(px)));
            emit isosurfaceChanged();
            repaintAll();
        }
        break;
    default:
        break;
    }
}

void OXWLUTWorkArea::dragBorder(int px)
{
    if (!mObjectInfo) {
        return;
    }
    const float x = positionFromPixel(px);
    bool moved = false;
    if (mHoverMode == HoverLeftBorder) {
        moved = mObjectInfo->moveLeftBorder(mCurrentIndex, x);
    } else if (mHoverMode == HoverRightBorder) {
        moved = mObjectInfo->moveRightBorder(mCurrentIndex, x);
    }
    if (moved) {
        emit objectInfoChanged();
    }
}

void OXWLUTWorkArea::dragHandleOrSegment(const QPoint& pos)
{
    if (!mCurrentInterval || mCurrentHandle < 0) {
        return;
    }
    float dx = positionFromPixel(pos.x()) - positionFromPixel(mPressPos.x());
    float dh = heightFromPixel(pos.y()) - heightFromPixel(mPressPos.y());
    if (mAxisLock) { // Shift: along the axis the mouse moved most on
        if (std::abs(pos.x() - mPressPos.x()) <= std::abs(pos.y() - mPressPos.y())) {
            dx = 0.0f;
        } else {
            dh = 0.0f;
        }
    }
    const float x = mPressHandlePos[0] + dx;
    const float y = mPressHandlePos[1] + dh;
    const bool changed = mPressAction == PressSegment
                             ? mCurrentInterval->moveSegment(OpacityChannel, mCurrentHandle, x, y)
                             : mCurrentInterval->moveHandle(OpacityChannel, mCurrentHandle, x, y);
    if (changed) {
        emit objectOpacityChanged();
    }
}

void OXWLUTWorkArea::dragVerticalZoom(const QPoint& pos)
{
    if (!mObjectInfo) {
        return;
    }
    const float r = float(mLastPos.y() - pos.y()) / float(std::max(1, height()));
    mLastPos = pos;
    const float zoom = mObjectInfo->verticalZoom();
    const float factor = r > 0.0f ? zoom * (1.0f + r) : zoom / (1.0f - r);
    const float f = std::min(MaximumVerticalZoom, std::max(MinimumDragZoom, factor));
    const float from = mObjectInfo->visibleOpacityFrom();
    mObjectInfo->setVisibleOpacityRange(from, from + 1.0f / f);
    mObjectInfo->setVerticalZoom(factor);
    emit verticalZoomChanged();
    repaintAll();
}

void OXWLUTWorkArea::mouseReleaseEvent(QMouseEvent* event)
{
    mUserAction.release();

    const int action = mPressAction;
    if (action == PressBorder && mCurrentInterval && mObjectInfo) {
        const int other = mHoverMode == HoverLeftBorder ? mCurrentIndex - 1 : mCurrentIndex + 1;
        mCurrentInterval->fitChannel(OpacityChannel);
        if (OXWLUTIntervalInfo* neighbour = mObjectInfo->interval(other)) {
            neighbour->fitChannel(OpacityChannel);
        }
        mObjectInfo->removeEmptyIntervals();
        forgetCurrentInterval();
        emit objectInfoChanged();
    }

    if ((action == PressNewRight || action == PressNewLeft) && mCurrentInterval && mObjectInfo) {
        const float x = positionFromPixel(event->pos().x() - contentsRect().left());
        const bool atLeft = action == PressNewLeft;
        const int index = mCurrentIndex;
        if (mObjectInfo->newInterval(x, atLeft)) {
            mCurrentIndex = atLeft ? index + 1 : index;
            mCurrentInterval = mObjectInfo->interval(mCurrentIndex);
            if (mCurrentInterval) {
                const float border = atLeft ? mCurrentInterval->from() : mCurrentInterval->to();
                mPressPos.setX(pixelFromPosition(border) + contentsRect().left());
            }
            mHoverMode = atLeft ? HoverLeftBorder : HoverRightBorder;
            setCursor(Qt::SizeHorCursor);
            emit objectInfoChanged();
        }
    }

    mPressAction = PressNone;
    if (action != PressName) {
        if (mHoverMode == HoverHandle) {
            mHoverMode = HoverReset;
        }
        repaintAll();
    }
}

void OXWLUTWorkArea::contextMenuEvent(QContextMenuEvent* event)
{
    if (mCurrentInterval && mObjectInfo) {
        const int count = mObjectInfo->intervalCount();
        mInsertPointItem->setEnabled(mHoverMode != HoverHandle);
        mDeletePointItem->setEnabled(mHoverMode == HoverHandle);
        mPasteOpacityItem->setEnabled(!mOpacityClipboard.empty());
        mDeleteIntervalItem->setEnabled(count >= 2);
        mDeleteIntervalLeftItem->setEnabled(mCurrentIndex != 0);
        mDeleteIntervalRightItem->setEnabled(mCurrentIndex != count - 1);
        mIntervalVisibleItem->setText(mCurrentInterval->isEnabled() ? tr("Disable interval")
                                                                    : tr("Enable interval"));

        // Keep the menu on the screen under the cursor.
        QPoint pos = event->globalPos();
        const QSize size = mMenu->sizeHint();
        if (const QScreen* screen = QGuiApplication::screenAt(pos)) {
            const QRect desktop = screen->availableGeometry();
            if (pos.x() + size.width() > desktop.x() + desktop.width()) {
                pos.setX(desktop.x() + desktop.width() - size.width());
            }
            if (pos.y() + size.height() > desktop.y() + desktop.height()) {
                pos.setY(desktop.y() + desktop.height() - size.height());
            }
        }
        // The popup takes the mouse: the release of the press that opened the menu goes to
        // it, so the press's user action ends here. The commands of the menu change the model
        // after the popup closes, and the panel wraps its writes in their own actions.
        mUserAction.release();
        mPressAction = PressNone;
        mMenu->popup(pos);
    }
    QFrame::contextMenuEvent(event);
}

// --- commands

void OXWLUTWorkArea::insertPoint()
{
    if (!mCurrentInterval || !mObjectInfo) {
        return;
    }
    if (!mCurrentInterval->insertHandle(OpacityChannel, pressPosition(), pressHeight())) {
        return;
    }
    updateHover(mPressPos);
    if (mCurrentInterval && mCurrentHandle >= 0 &&
        mCurrentInterval->isHandleIndexValid(OpacityChannel, mCurrentHandle)) {
        const auto& handle = mCurrentInterval->handles(OpacityChannel)[std::size_t(mCurrentHandle)];
        mPressHandlePos[0] = mCurrentInterval->globalFromLocal(handle.x);
        mPressHandlePos[1] = handle.y;
    }
    emit objectOpacityChanged();
}

void OXWLUTWorkArea::deletePoint()
{
    if (!mCurrentInterval || mHoverMode != HoverHandle || mCurrentHandle < 0) {
        return;
    }
    if (!mCurrentInterval->deleteHandle(OpacityChannel, mCurrentHandle)) {
        return;
    }
    updateHover(mPressPos);
    mPressHandlePos[0] = 0.0f;
    mPressHandlePos[1] = 0.0f;
    emit objectOpacityChanged();
}

// Splits or deletes the current interval at the press position; the list changes whatever
// the model answered, so the signal goes out in every case.
void OXWLUTWorkArea::changeIntervalList(bool (OXWLUTObjectInfo::*operation)(float, bool), bool flag)
{
    if (!mCurrentInterval || !mObjectInfo) {
        return;
    }
    (mObjectInfo->*operation)(pressPosition(), flag);
    forgetCurrentInterval();
    emit objectInfoChanged();
}

void OXWLUTWorkArea::deleteIntervalLeft()
{
    changeIntervalList(&OXWLUTObjectInfo::deleteInterval, true);
}

void OXWLUTWorkArea::deleteIntervalRight()
{
    changeIntervalList(&OXWLUTObjectInfo::deleteInterval, false);
}

void OXWLUTWorkArea::newIntervalLeft()
{
    changeIntervalList(&OXWLUTObjectInfo::newInterval, true);
}

void OXWLUTWorkArea::newIntervalRight()
{
    changeIntervalList(&OXWLUTObjectInfo::newInterval, false);
}

void OXWLUTWorkArea::newIntervalClipboard() {}

void OXWLUTWorkArea::intervalVisible()
{
    if (!mCurrentInterval) {
        return;
    }
    mCurrentInterval->setEnabled(!mCurrentInterval->isEnabled());
    emit objectInfoChanged();
}

void OXWLUTWorkArea::resetIntervalDefault()
{
    resetCurrentOpacity(NoHandle, 0.0f, 0.0f);
}

void OXWLUTWorkArea::resetIntervalZero()
{
    resetCurrentOpacity(1, 1.0f, 0.0f); // the ramp's top handle down
}

void OXWLUTWorkArea::resetIntervalOne()
{
    resetCurrentOpacity(0, 0.0f, 1.0f); // the ramp's bottom handle up
}

void OXWLUTWorkArea::resetCurrentOpacity(int handle, float x, float y)
{
    if (!mCurrentInterval) {
        return;
    }
    mCurrentInterval->resetChannel(OpacityChannel);
    if (handle != NoHandle) {
        mCurrentInterval->moveHandle(OpacityChannel, handle, x, y);
    }
    emit objectInfoChanged();
}

void OXWLUTWorkArea::extractGreyvalueIntervalSlot()
{
    emit extractGreyvalueInterval(mCurrentIndex);
}

void OXWLUTWorkArea::createSegmentSlot()
{
    emit createSegmentFromGreyvalueInterval(mCurrentIndex);
}

void OXWLUTWorkArea::copyOpacity()
{
    if (!mCurrentInterval) {
        return;
    }
    mOpacityClipboard = mCurrentInterval->handles(OpacityChannel);
}

void OXWLUTWorkArea::pasteOpacity()
{
    if (!mCurrentInterval) {
        return;
    }
    mCurrentInterval->setReferenceHandles(OpacityChannel, mOpacityClipboard);
    emit objectInfoChanged();
}

void OXWLUTWorkArea::histogramEnable()
{
    mHistogramVisible = true;
    mHistogramVisibleItem->setText(tr("Disable histogram"));
    disconnect(mHistogramVisibleItem, &QAction::triggered, this, &OXWLUTWorkArea::histogramEnable);
    connect(mHistogramVisibleItem, &QAction::triggered, this, &OXWLUTWorkArea::histogramDisable,
            Qt::UniqueConnection);
    repaintAll();
}

void OXWLUTWorkArea::histogramDisable()
{
    mHistogramVisible = false;
    mHistogramVisibleItem->setText(tr("Enable histogram"));
    disconnect(mHistogramVisibleItem, &QAction::triggered, this, &OXWLUTWorkArea::histogramDisable);
    connect(mHistogramVisibleItem, &QAction::triggered, this, &OXWLUTWorkArea::histogramEnable,
            Qt::UniqueConnection);
    repaintAll();
}

void OXWLUTWorkArea::updatePresetSlot()
{
    emit updatePreset();
}

void OXWLUTWorkArea::removePresetSlot()
{
    emit removePreset();
}

// --- name editing

QRect OXWLUTWorkArea::nameEditGeometry(int height) const
{
    const QRect contents = contentsRect();
    const OXWLUTIntervalInfo* interval = mEditedInterval ? mEditedInterval : mCurrentInterval;
    if (!interval) {
        return QRect(contents.left() + mNameEditLeft, contents.top(), 0, height);
    }
    const QRect span = intervalSpan(*interval);
    return QRect(contents.left() + span.left(), contents.top(), span.width(), height);
}

void OXWLUTWorkArea::beginEditIntervalName()
{
    if (!mCurrentInterval || (mNameEdit && mNameEdit->isVisible())) {
        return;
    }
    OXWLUTIntervalInfo* interval = mCurrentInterval;
    const QString name = interval->name();
    interval->setName(QString());
    repaintAll();
    interval->setName(name);

    if (!mNameEdit) {
        mNameEdit = new QLineEdit(this);
        mNameEdit->setObjectName(QStringLiteral("mNameEdit"));
        mNameEdit->hide();
        // editingFinished covers both Return and the loss of the focus.
        connect(mNameEdit, &QLineEdit::editingFinished, this, &OXWLUTWorkArea::endEditIntervalName);
    }
    mNameEdit->setFont(sizedFont(font(), 9));
    mEditedInterval = nullptr;
    const QRect geometry = nameEditGeometry(NameEditHeight);
    mNameEdit->setGeometry(geometry);
    mNameEdit->setText(name);
    mNameEdit->show();
    mEditedInterval = interval;
    mNameEditLeft = geometry.left() - contentsRect().left();
    setFocusProxy(mNameEdit);
    mNameEdit->setFocus();
}

void OXWLUTWorkArea::endEditIntervalName()
{
    if (mNameEdit && mNameEdit->isVisible() && mEditedInterval) {
        OXWLUTIntervalInfo* interval = mEditedInterval;
        mEditedInterval = nullptr;
        const QString text = mNameEdit->text();
        mNameEdit->hide();
        if (!text.isEmpty()) {
            interval->setName(text);
            emit objectInfoChanged();
        }
    }
    setFocusProxy(nullptr);
    repaintAll();
}
