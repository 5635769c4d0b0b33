#pragma once

// Helpers shared by the colour bar tests: a bar with its protected operations opened up, a
// model of 256 cells shown on 256 columns (column c shows cell c), mouse events sent straight
// to the bar, and a colour dialog hook that answers without a dialog.

#include "OXWLUTColorBar.h"
#include "OXWLUTIntervalInfo.h"
#include "OXWLUTObjectInfo.h"

#include <OXWApplication.h>
#include <OXWFileDialog.h>

#include <QAction>
#include <QApplication>
#include <QContextMenuEvent>
#include <QMenu>
#include <QMouseEvent>
#include <QSettings>
#include <QSignalSpy>
#include <QTemporaryDir>
#include <QTest>
#include <QTimer>

#include <gtest/gtest.h>

#include <functional>
#include <memory>
#include <ostream>
#include <vector>

inline void PrintTo(const OXMVector2<float>& h, std::ostream* os)
{
    *os << "(" << h.x << ", " << h.y << ")";
}

namespace colorbartest {

using Handle = OXWLUTIntervalInfo::Handle;
using HandleList = OXWLUTIntervalInfo::HandleList;

constexpr int kRed = OXWLUTIntervalInfo::RedChannel;
constexpr int kGreen = OXWLUTIntervalInfo::GreenChannel;
constexpr int kBlue = OXWLUTIntervalInfo::BlueChannel;
constexpr int kColours[] = {kRed, kGreen, kBlue};

// The frame's line width: the contents (and column 0) start this many pixels in.
constexpr int kFrame = 2;
constexpr int kColumns = 256;
constexpr int kCells = 256;

class TestBar : public OXWLUTColorBar
{
public:
    using OXWLUTColorBar::computeColorTable;
    using OXWLUTColorBar::copyIntervalColor;
    using OXWLUTColorBar::deletePoint;
    using OXWLUTColorBar::exportIntervalColor;
    using OXWLUTColorBar::hitTest;
    using OXWLUTColorBar::importIntervalColor;
    using OXWLUTColorBar::insertPoint;
    using OXWLUTColorBar::OXWLUTColorBar;
    using OXWLUTColorBar::paintHighlightBorder;
    using OXWLUTColorBar::pasteIntervalColor;
    using OXWLUTColorBar::rebuildPixmap;
    using OXWLUTColorBar::setCurrentIntervalColor;
    using OXWLUTColorBar::setCurrentLineColor;
    using OXWLUTColorBar::setCurrentPointColor;
    using OXWLUTColorBar::setIntervalColor;
    using OXWLUTColorBar::setIntervalColorWhite;
    using OXWLUTColorBar::setLineColor;
    using OXWLUTColorBar::setLineColorRed;
    using OXWLUTColorBar::setPointColor;
    using OXWLUTColorBar::valueBox;
    using OXWLUTColorBar::valueText;
};

// A model of kCells grey values 0 .. 255 (calibrated alike) with one interval over the axis.
inline std::unique_ptr<OXWLUTObjectInfo> makeModel(int cells = kCells)
{
    return std::make_unique<OXWLUTObjectInfo>(-0.5f, float(cells) - 0.5f, 0.0f, 1.0f, float(cells),
                                              0.0f, float(cells) - 1.0f);
}

// Gives all three colour curves of an interval the same reference handles.
inline void setColourCurves(OXWLUTIntervalInfo& interval, const HandleList& handles)
{
    for (int channel : kColours) {
        interval.setReferenceHandles(channel, handles);
    }
}

// Widget x of a column.
inline int xOf(int column)
{
    return column + kFrame;
}

inline void sendMouse(QWidget& w, QEvent::Type type, Qt::MouseButton button, int column,
                      Qt::KeyboardModifiers modifiers = Qt::NoModifier)
{
    const QPoint pos(xOf(column), 10);
    const Qt::MouseButtons buttons = type == QEvent::MouseButtonRelease ? Qt::NoButton : button;
    QMouseEvent event(type, pos, w.mapToGlobal(pos), button, buttons, modifiers);
    QApplication::sendEvent(&w, &event);
}

inline void press(QWidget& w, int column, Qt::MouseButton button = Qt::LeftButton,
                  Qt::KeyboardModifiers modifiers = Qt::NoModifier)
{
    sendMouse(w, QEvent::MouseButtonPress, button, column, modifiers);
}

inline void release(QWidget& w, int column, Qt::MouseButton button = Qt::LeftButton)
{
    sendMouse(w, QEvent::MouseButtonRelease, button, column);
}

inline void moveTo(QWidget& w, int column, Qt::MouseButton held = Qt::NoButton)
{
    const QPoint pos(xOf(column), 10);
    QMouseEvent event(QEvent::MouseMove, pos, w.mapToGlobal(pos), Qt::NoButton, held,
                      Qt::NoModifier);
    QApplication::sendEvent(&w, &event);
}

inline void doubleClick(QWidget& w, int column)
{
    sendMouse(w, QEvent::MouseButtonDblClick, Qt::LeftButton, column);
}

// The context menu as a right click at a column opens it: press, then the menu event.
inline void rightClickMenu(QWidget& w, int column)
{
    press(w, column, Qt::RightButton);
    const QPoint pos(xOf(column), 10);
    QContextMenuEvent event(QContextMenuEvent::Mouse, pos, w.mapToGlobal(pos));
    QApplication::sendEvent(&w, &event);
}

// A menu item by its text (submenus included by their title), or null.
inline QAction* menuItem(const OXWLUTColorBar& bar, const QString& text)
{
    for (QAction* action : bar.contextMenu()->actions()) {
        if (action->text() == text) {
            return action;
        }
    }
    return nullptr;
}

// What the colour dialog hook saw, and what it answers.
struct DialogScript
{
    int calls = 0;
    QColor initial;
    QString name;
    QWidget* parent = nullptr;
    float highlightStart = 0.0f;
    float highlightEnd = 0.0f;
    QColor answer; // invalid: cancel
    std::function<void()> whileOpen;
};

// A bar of 256 columns with a model of 256 cells, an application for user actions, settings
// and files in temporary directories, and a scripted colour dialog.
class ColorBarTest : public testing::Test
{
protected:
    void SetUp() override
    {
        ASSERT_TRUE(settingsDir.isValid());
        ASSERT_TRUE(files.isValid());
        QSettings::setPath(QSettings::IniFormat, QSettings::UserScope, settingsDir.path());
        OXWFileDialog::clearTestAnswers();
        OXWLUTColorBar::clearClipboard();
        OXWLUTColorBar::setColorDialogHook(
            [this](const QColor& initial, QWidget* parent, const QString& name) {
                ++dialog.calls;
                dialog.initial = initial;
                dialog.name = name;
                dialog.parent = parent;
                dialog.highlightStart = bar->highlightStart();
                dialog.highlightEnd = bar->highlightEnd();
                if (dialog.whileOpen) {
                    dialog.whileOpen();
                }
                return dialog.answer;
            });
        model = makeModel();
        bar = std::make_unique<TestBar>(nullptr, "mAmbientLUTColorBar");
        bar->resize(kColumns + 2 * kFrame, 24);
        bar->show();
        bar->setModel(model.get());
        bar->updateAll();
    }

    void TearDown() override
    {
        bar.reset();
        OXWLUTColorBar::setColorDialogHook({});
        OXWLUTColorBar::clearClipboard();
        OXWFileDialog::clearTestAnswers();
    }

    OXWLUTIntervalInfo& interval(int i = 0) { return *model->interval(i); }
    QString path(const QString& name) const { return files.filePath(name); }

    QTemporaryDir settingsDir;
    QTemporaryDir files;
    OXWApplication app;
    DialogScript dialog;
    std::unique_ptr<OXWLUTObjectInfo> model;
    std::unique_ptr<TestBar> bar;
};

} // namespace colorbartest
