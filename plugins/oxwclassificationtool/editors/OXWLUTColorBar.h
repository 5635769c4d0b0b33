#pragma once

#include "OXWLUTIntervalInfo.h"

#include <OXMRGB8.h>
#include <OXMRGBA.h>

#include <OXWPressUserAction.h>
#include <QColor>

#include <QFrame>
#include <QPixmap>
#include <QPoint>
#include <QString>

#include <array>
#include <functional>
#include <vector>

class OXWLUTObjectInfo;
class QAction;
class QMenu;
class QPainter;
class QRect;
class QTimer;

// The colour bar of the classification tool: shows, across the visible part of the grey-value
// axis of the classification model, the colour each grey value gets, and edits the red, green
// and blue curves of the intervals with the mouse and a context menu.
//
// One pixel column of the bar stands for one step along the visible axis
// [visibleGreyFrom, visibleGreyTo] of the model; each interval colours its columns by
// interpolating its fitted colour handles. Marks at the bottom show the handles (taken from
// the red curve; the three colour curves share their positions), a vertical line each
// interval's left border.
//
// The tool panel attaches the model with setModel (null detaches it), connects its
// updateLUTWidgets() to updateAll() and answers objectColorChanged() by writing the colours to
// the object. Everything is drawn into an off-screen pixmap after each change; the paint
// handler only copies it.
//
// Every mouse press opens a host user action "Change color" and the matching release closes
// it, so a whole drag is one undo step. A context menu takes the release away from the bar, so
// the bar closes the press's user action itself before the menu shows.
//
// Colour table files (OXWLUTColorTableFile): an import emits objectColorChanged() after every
// complete table read, even one equal to the interval's curves; a refused import or export
// reports one line naming the file and the reason through OXMError::emitError (the viewer's
// log), never a message box.
//
// Colour dialog seam: the three colour dialogs run through colorDialogHook(); by default a
// modal QColorDialog with the object name "Interval color". Tests install their own hook
// (setColorDialogHook) to answer without a dialog; an invalid colour means "cancelled".
class OXWLUTColorBar : public QFrame
{
    Q_OBJECT

public:
    using Handle = OXWLUTIntervalInfo::Handle;
    using HandleList = OXWLUTIntervalInfo::HandleList;
    using Colour = OXMRGBA<unsigned char>;

    enum HitKind
    {
        HitNone = 0,
        HitBar = 1,
        HitHandle = 2,
        HitSegment = 3
    };

    enum DragMode
    {
        DragNone = 0,
        DragHandle = 1,
        DragSegment = 2
    };

    // The colour dialog: initial colour, parent, object name; answers the chosen colour, or an
    // invalid colour when the user cancelled.
    using ColorDialogHook =
        std::function<QColor(const QColor& initial, QWidget* parent, const QString& name)>;

    explicit OXWLUTColorBar(QWidget* parent = nullptr, const char* name = nullptr);
    ~OXWLUTColorBar() override;

    // The classification model (not owned); null when nothing is selected. Setting it clears
    // the hit state and redraws.
    void setModel(OXWLUTObjectInfo* model);
    OXWLUTObjectInfo* model() const { return mModel; }

    // State, read by the tool panel and the tests.
    int hitKind() const { return mHitKind; }
    int dragMode() const { return mDragMode; }
    int currentIntervalIndex() const { return mCurrentIntervalIndex; }
    int currentHandle() const { return mCurrentHandle; }
    bool isShowingValues() const { return mShowValues; }
    int userAction() const { return mUserAction.id(); }
    float highlightStart() const { return mHighlightStart; }
    float highlightEnd() const { return mHighlightEnd; }
    const QPixmap& pixmap() const { return mPixmap; }
    // One entry per pixmap column; only red, green and blue are written.
    const std::vector<Colour>& colorTable() const { return mColorTable; }
    QMenu* contextMenu() const { return mMenu; }

    // Column <-> position on the visible axis; 0 without a model or pixmap.
    float positionFromColumn(int column) const;
    int columnFromPosition(float position) const;

    // The luminance class 0..7 of a colour, (11 r + 16 g + 5 b) >> 10; 0..2 count as dark.
    static int luminanceClass(int r, int g, int b);
    static bool isDark(const Colour& colour);

    // The moving highlight border: a black outline of rect with white dashes (the 8 x 8 stripe
    // pattern) that run along the edges, one step per call. The phase is shared by the process.
    static void drawHighlightBorder(QPainter* painter, const QRect& rect);
    static int highlightPhase();

    // The process-wide colour clipboard (red, green, blue), shared by all colour bars.
    static const HandleList& clipboard(int channel);
    static void clearClipboard();

    // The colour dialog seam; an empty hook restores the default dialog.
    static void setColorDialogHook(ColorDialogHook hook);

public slots:
    void updateAll();

protected slots:
    void insertPoint();
    void deletePoint();
    void setPointColorWhite();
    void setPointColorBlack();
    void setPointColorRed();
    void setPointColorGreen();
    void setPointColorBlue();
    void setPointColorCyan();
    void setPointColorMagenta();
    void setPointColorYellow();
    void setLineColorWhite();
    void setLineColorBlack();
    void setLineColorRed();
    void setLineColorGreen();
    void setLineColorBlue();
    void setLineColorCyan();
    void setLineColorMagenta();
    void setLineColorYellow();
    void setIntervalColorWhite();
    void setIntervalColorBlack();
    void setIntervalColorRed();
    void setIntervalColorGreen();
    void setIntervalColorBlue();
    void setIntervalColorCyan();
    void setIntervalColorMagenta();
    void setIntervalColorYellow();
    void setIntervalColor();
    void setCurrentIntervalColor(const OXMRGB8& color);
    void setPointColor();
    void setCurrentPointColor(const OXMRGB8& color);
    void setLineColor();
    void setCurrentLineColor(const OXMRGB8& color);
    void importIntervalColor();
    void exportIntervalColor();
    void updatePresetSlot();
    void removePresetSlot();
    void paintHighlightBorder();
    void copyIntervalColor();
    void pasteIntervalColor();

signals:
    void objectColorChanged();
    void updatePreset();
    void removePreset();

protected:
    void mousePressEvent(QMouseEvent* event) override;
    void mouseReleaseEvent(QMouseEvent* event) override;
    void mouseDoubleClickEvent(QMouseEvent* event) override;
    void mouseMoveEvent(QMouseEvent* event) override;
    void resizeEvent(QResizeEvent* event) override;
    void showEvent(QShowEvent* event) override;
    void contextMenuEvent(QContextMenuEvent* event) override;
    void paintEvent(QPaintEvent* event) override;
    // Copies the pixmap to the top-left corner of the contents rectangle; nothing else.
    virtual void drawContents(QPainter* painter);

    void computeColorTable();
    // Recomputes the colour table and draws the pixmap.
    void rebuildPixmap();
    // The steps of rebuildPixmap(): the colours, then the handle marks and interval borders.
    void drawColourRow(QPainter& painter);
    void drawHandleMarksAndBorders(QPainter& painter);
    void hitTest(const QPoint& point);
    void dragHandle(const QPoint& point);
    void dragSegment(const QPoint& point);
    using Move = bool (OXWLUTIntervalInfo::*)(int channel, int k, float x, float y);
    void dragAcrossChannels(const QPoint& point, Move move);

    // The box of a value text written at a handle column: starts at the column, or ends there
    // when the text would reach the right edge of the pixmap.
    QRect valueBox(int column, int textWidth) const;
    // The text of a value: the calibrated value of the position, with the model's decimals.
    QString valueText(float position) const;

    // The current interval, or null when there is none or it is no longer in the model.
    OXWLUTIntervalInfo* currentInterval() const;

private:
    void buildMenu();
    void clearHitState();
    void redraw();
    void enableMenuItems();
    void drawValue(QPainter& painter, int handle);
    // Opens a colour dialog for the current interval with a highlight of [from, to].
    QColor runColorDialog(const QColor& initial, float from, float to);
    void setAllIntervalColor(const OXMRGB8& color);
    // What a colour dialog colours: the whole interval, the current handle, or both handles of
    // the current segment.
    enum class ColorDialogKind
    {
        Interval,
        Handle,
        Segment
    };
    void colorDialog(ColorDialogKind kind);

    float mColumnScale = 1.0f;
    float mHighlightStart = 1.0f;
    float mHighlightEnd = -1.0f;
    QPixmap mPixmap;
    QMenu* mMenu = nullptr;
    QAction* mInsertAction = nullptr;
    QAction* mDeleteAction = nullptr;
    QAction* mPasteAction = nullptr;
    QAction* mPointColorAction = nullptr;
    QAction* mLineColorAction = nullptr;
    OXWPressUserAction mUserAction;
    std::array<QPixmap, 8> mColorIcons;
    OXWLUTIntervalInfo* mCurrentInterval = nullptr;
    int mCurrentIntervalIndex = -1;
    int mCurrentHandle = -1;
    float mDragReference = 0.0f;
    QPoint mPressPosition;
    int mHitKind = HitNone;
    int mDragMode = DragNone;
    bool mShowValues = false;
    OXWLUTObjectInfo* mModel = nullptr;
    // The picture was not drawn while a hidden page (an ancestor) kept the bar out of view.
    bool mPixmapStale = false;
    std::vector<Colour> mColorTable;
};
