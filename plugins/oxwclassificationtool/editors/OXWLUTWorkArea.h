#pragma once

#include "OXWLUTIntervalInfo.h"

#include <OXMObjectIOCPtr.h>
#include <OXMObjectPtr.h>
#include <OXMObjectWeakPtr.h>
#include <OXWPainter.h>

#include <OXWPressUserAction.h>

#include <QFrame>
#include <QPoint>
#include <QPolygon>

#include <memory>
#include <vector>

class OXMObject;
class OXMTulvoRights;
class OXWLUTObjectInfo;
class QAction;
class QLineEdit;
class QMenu;
class QPainter;
class QPixmap;
class QTimer;

// The opacity editor of the classification tool: draws the histogram of the selected volume or
// region interval by interval, the opacity curve of every interval with its handles, the
// interval borders and names and the isosurface marker, and edits them with the mouse and a
// context menu.
//
// The widget never owns the model: the tool panel hands it the classification
// (setObjectInfo), the render object and the histogram object, and answers its signals by
// writing to the host. Edits act on the model directly; drags that change the model only emit
// a signal, and the panel re-renders the editors through updateAll().
//
// Every picture is rendered into an off-screen buffer (render()); the paint handler only copies
// it (drawContents). The object two levels up the parent chain (the tool panel) is installed
// as event filter at construction, so it sees the widget's events first.
//
// Every mouse press opens one host user action named "Change color" and the following release
// closes it, so a press-drag-release is one undo step of the host. When the press opens the
// context menu, the popup takes the release: the action is closed when the menu pops up, and a
// press always closes an action that is still open before it opens its own.
//
// Rights: the message screen asks the rights object of the open file
// (OXMTulvoRights::getAllowClassificationEdit). The panel hands it over with setRights(); the
// widget holds it through a guarded pointer, and without one (none set, or gone) editing
// counts as allowed.
class OXWLUTWorkArea : public QFrame
{
    Q_OBJECT

public:
    // What is under the mouse (hover mode).
    enum HoverMode
    {
        HoverReset = 0,
        HoverInside = 1,
        HoverLeftBorder = 2,
        HoverRightBorder = 3,
        HoverNewRight = 4,
        HoverNewLeft = 5,
        HoverSegment = 6,
        HoverHandle = 7,
        HoverName = 8,
        HoverIsosurface = 9
    };
    // The drag in progress (press action).
    enum PressAction
    {
        PressNone = 0,
        PressBorder = 1,
        PressNewRight = 2,
        PressNewLeft = 3,
        PressSegment = 4,
        PressHandle = 5,
        PressName = 6,
        PressZoom = 8,
        PressIsosurface = 9
    };

    explicit OXWLUTWorkArea(QWidget* parent = nullptr, const char* name = nullptr);
    ~OXWLUTWorkArea() override;

    void setObjectInfo(OXWLUTObjectInfo* objectInfo);
    OXWLUTObjectInfo* objectInfo() const { return mObjectInfo; }
    void setRenderObject(OXMObject* renderObject);
    OXMObject* renderObject() const { return mRenderObject.get(); }
    // Asks a running calculation of the previous histogram object to stop; schedules a repaint
    // for a new one.
    void setHistogramObject(OXMObject* histogramObject);
    OXMObject* histogramObject() const { return mHistogramObject.get(); }
    // The rights of the open file; null (or a destroyed object) means editing is allowed.
    void setRights(OXMTulvoRights* rights);
    OXMTulvoRights* rights() const;
    // Starts the 30 ms repaint timer unless it runs.
    void scheduleUpdate();
    void setIsosurfaceShown(bool shown);
    void setIsosurfaceActive(bool active);
    bool isIsosurfaceShown() const { return mIsosurfaceShown; }
    bool isIsosurfaceActive() const { return mIsosurfaceActive; }
    bool isHistogramVisible() const { return mHistogramVisible; }

    QSize sizeHint() const override;

    // Draws the whole picture into the off-screen buffer.
    void render();
    const QPixmap& buffer() const { return *mBuffer; }

    // Mapping between pixels of the contents rectangle and the model's coordinates; 0 without
    // a model or a buffer.
    int pixelFromPosition(float x) const;
    float positionFromPixel(int px) const;
    int pixelFromHeight(float h) const;
    float heightFromPixel(int py) const;

    // State of the interaction, for the panel and for tests.
    int hoverMode() const { return mHoverMode; }
    int pressAction() const { return mPressAction; }
    int currentIndex() const { return mCurrentIndex; }
    int currentHandle() const { return mCurrentHandle; }
    OXWLUTIntervalInfo* currentInterval() const { return mCurrentInterval; }
    int rubberBandX() const { return mRubberBandX; }
    const OXWLUTIntervalInfo::HandleList& opacityClipboard() const { return mOpacityClipboard; }
    QLineEdit* nameEdit() const { return mNameEdit; }
    QMenu* contextMenu() const { return mMenu; }

public slots:
    void updateAll();

protected slots:
    void insertPoint();
    void deletePoint();
    void deleteIntervalLeft();
    void deleteIntervalRight();
    void newIntervalLeft();
    void newIntervalRight();
    void newIntervalClipboard();
    void intervalVisible();
    void resetIntervalDefault();
    void resetIntervalZero();
    void resetIntervalOne();
    void extractGreyvalueIntervalSlot();
    void createSegmentSlot();
    void copyOpacity();
    void pasteOpacity();
    void verticalZoomIn();
    void verticalZoomOut();
    void verticalZoomReset();
    void histogramEnable();
    void histogramDisable();
    void updatePresetSlot();
    void removePresetSlot();
    void endEditIntervalName();

signals:
    void objectInfoChanged();
    void objectOpacityChanged();
    void updatePreset();
    void removePreset();
    void histogramSaveActivated();
    void extractGreyvalueInterval(int index);
    void createSegmentFromGreyvalueInterval(int index);
    void isosurfaceChanged();
    void verticalZoomChanged();

protected:
    void paintEvent(QPaintEvent* event) override;
    // Copies the off-screen buffer to the contents rectangle; nothing else is drawn here.
    void drawContents(QPainter* painter);
    void resizeEvent(QResizeEvent* event) override;
    void mousePressEvent(QMouseEvent* event) override;
    void mouseMoveEvent(QMouseEvent* event) override;
    void mouseReleaseEvent(QMouseEvent* event) override;
    void contextMenuEvent(QContextMenuEvent* event) override;

private:
    // The model's visible ranges and the buffer's size, read once: pixels of many positions.
    struct PixelMapping
    {
        float greyFrom = 0.0f;
        float greyTo = 1.0f;
        float opacityFrom = 0.0f;
        float opacityTo = 1.0f;
        int width = 0;
        int height = 0;
        int x(float position) const
        {
            return int(float(width) * (position - greyFrom) / (greyTo - greyFrom));
        }
        int y(float h) const
        {
            return height - int((h - opacityFrom) * float(height) / (opacityTo - opacityFrom)) - 1;
        }
    };
    // Needs a model and a buffer.
    PixelMapping pixelMapping() const;
    void buildMenus();
    void updateHover(const QPoint& pos);
    // What a left press does where the mouse hovers.
    static PressAction pressActionFor(int hover);
    // The drags of mouseMoveEvent().
    void dragBorder(int px);
    void dragHandleOrSegment(const QPoint& pos);
    void dragVerticalZoom(const QPoint& pos);
    // The current interval's opacity back to its default ramp, then one handle moved (none
    // for a negative handle).
    void resetCurrentOpacity(int handle, float x, float y);
    void setHoverCursor();
    void beginEditIntervalName();
    QRect nameEditGeometry(int height) const;
    void forgetCurrentInterval();
    void scaleVerticalZoom(float factor);
    void changeIntervalList(bool (OXWLUTObjectInfo::*operation)(float, bool), bool flag);
    void repaintAll();
    // The press position as a model position and height.
    float pressPosition() const;
    float pressHeight() const;
    // A pixel column of the contents rectangle clamped so that its position lies in [0, 1].
    int clampedPixel(int px) const;
    bool editAllowed() const;
    float histogramMean() const;
    OXMObject* histogramResult() const;
    void renderMessage(QPainter& painter, const QString& headline, const QString& text);
    // The steps of render().
    void renderMessageScreen(OXWPainter& painter);
    // Whether the histogram is ready; otherwise its state is drawn (and polled again).
    bool renderCalculationState(OXWPainter& painter, OXMObject* histogram);
    void renderIntervalBackgrounds(OXWPainter& painter, OXMObject* result);
    void renderAxisTitles(OXWPainter& painter);
    // Names, opacity curves with their handles, and left borders.
    void renderIntervals(OXWPainter& painter);
    void renderIntervalName(OXWPainter& painter, const OXWLUTIntervalInfo& interval,
                            const QRect& span);
    void renderOpacityCurve(OXWPainter& painter, const OXWLUTIntervalInfo& interval,
                            const PixelMapping& pixels);
    void renderIsosurfaceMarker(OXWPainter& painter);
    // The pixel columns of an interval in the drawing: from its left border's column through
    // its right border's, both included (the right one is also the next interval's left
    // border), clamped to the drawing and as high as it; empty when none is visible.
    QRect intervalSpan(const OXWLUTIntervalInfo& interval) const;
    QColor intervalBackground(const OXWLUTIntervalInfo& interval) const;
    void renderFeedback(QPainter& painter);
    // The labels of a drag: at the rubber band, at both borders of a border drag, of the
    // visible range and the vertical zoom.
    void renderRubberBandLabels(QPainter& painter);
    void renderBorderLabels(QPainter& painter);
    void renderZoomLabels(QPainter& painter);
    // A label in the painter's font, vertically centred, beginning or ending at x.
    QRect centredLabel(const QPainter& painter, const QString& text, int x, bool alignRight) const;
    void drawHandleLabel(QPainter& painter, const OXWLUTIntervalInfo& interval, int k);
    QString valueText(float position) const;
    QString opacityText(float height) const;

    float mPositionPerPixel = 1.0f;
    float mHeightPerPixel = 1.0f;
    std::unique_ptr<QPixmap> mBuffer;
    QMenu* mMenu = nullptr;
    QMenu* mNewIntervalMenu = nullptr;
    QMenu* mDeleteIntervalMenu = nullptr;
    QMenu* mResetMenu = nullptr;
    QMenu* mHistogramMenu = nullptr;
    QMenu* mZoomMenu = nullptr;
    QAction* mInsertPointItem = nullptr;
    QAction* mDeletePointItem = nullptr;
    QAction* mPasteOpacityItem = nullptr;
    QAction* mDeleteIntervalItem = nullptr;
    QAction* mDeleteIntervalLeftItem = nullptr;
    QAction* mDeleteIntervalRightItem = nullptr;
    QAction* mIntervalVisibleItem = nullptr;
    QAction* mHistogramVisibleItem = nullptr;
    float mHistogramMean = 1.0f;
    QPoint mPressPos;
    QPoint mLastPos;
    bool mAxisLock = false;
    bool mHistogramVisible = true;
    QTimer* mUpdateTimer = nullptr;
    OXWPressUserAction mUserAction;
    int mHoverMode = HoverReset;
    OXWLUTIntervalInfo* mCurrentInterval = nullptr;
    OXWLUTObjectInfo* mObjectInfo = nullptr;
    OXMObjectIOCPtr mHistogramObject;
    int mCurrentIndex = -1;
    int mCurrentHandle = -1;
    float mPressHandlePos[2] = {0.0f, 0.0f};
    OXWLUTIntervalInfo* mEditedInterval = nullptr;
    QLineEdit* mNameEdit = nullptr;
    int mNameEditLeft = 0;
    int mRubberBandX = 0;
    OXWLUTIntervalInfo::HandleList mOpacityClipboard;
    OXMObjectPtr mRenderObject;
    bool mIsosurfaceShown = false;
    bool mIsosurfaceActive = false;
    int mPressAction = PressNone;
    OXMObjectWeakPtr mRights;
};
