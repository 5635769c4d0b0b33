#pragma once

// Helpers shared by the colour bar tests: a bar with its protected operations opened up, a
// model of 256 cells shown on 256 columns (column c shows cell c), mouse events sent straight
// to the bar, and a colour dialog hook that answers without a dialog.

#include "OXWLUTColorBar.h"
#include "OXWLUTIntervalInfo.h"
#include "OXWLUTObjectInfo.h"

#include <OXMError.h>
#include <OXWApplication.h>
#include <OXWFileDialog.h>

#include <QApplication>
#include <QContextMenuEvent>
#include <QMenu>
#include <QMouseEvent>
#include <QSettings>
#include <QSignalSpy>
#include <QTemporaryDir>

#include <gtest/gtest.h>

#include <functional>
#include <memory>
#include <ostream>

inline void PrintTo(const OXMVector2<float>& h, std::ostream* os)
{
    *os << "(" << h.x << ", " << h.y << ")";
}

namespace colorbartest {

constexpr int kRed = OXWLUTIntervalInfo::RedChannel;
constexpr int kGreen = OXWLUTIntervalInfo::GreenChannel;
constexpr int kBlue = OXWLUTIntervalInfo::BlueChannel;
constexpr int kColours[] = {kRed, kGreen, kBlue};
constexpr int kFrame = 2; // the frame's line width: column 0 is this many pixels in
constexpr int kColumns = 256;

class TestBar : public OXWLUTColorBar
{
public:
    using OXWLUTColorBar::copyIntervalColor;
    using OXWLUTColorBar::deletePoint;
    using OXWLUTColorBar::exportIntervalColor;
    using OXWLUTColorBar::importIntervalColor;
    using OXWLUTColorBar::insertPoint;
    using OXWLUTColorBar::OXWLUTColorBar;
    using OXWLUTColorBar::pasteIntervalColor;
    using OXWLUTColorBar::setCurrentIntervalColor;
    using OXWLUTColorBar::setIntervalColor;
    using OXWLUTColorBar::setIntervalColorWhite;
    using OXWLUTColorBar::setLineColor;
    using OXWLUTColorBar::setLineColorRed;
    using OXWLUTColorBar::setPointColor;
    using OXWLUTColorBar::valueBox;
    using OXWLUTColorBar::valueText;

    void hit(int column) { hitTest(QPoint(column + kFrame, 10)); }
    // The colour of a column, in the table and in the pixmap.
    QColor shown(int column) const
    {
        const Colour& c = colorTable()[std::size_t(column)];
        return QColor(c.r, c.g, c.b);
    }
    QColor pixel(int column, int row) const
    {
        return QColor(pixmap().toImage().pixel(column, row));
    }
};

// A model of `cells` grey values 0 .. cells-1 (calibrated alike) with one interval.
inline std::unique_ptr<OXWLUTObjectInfo> makeModel(int cells = kColumns)
{
    return std::make_unique<OXWLUTObjectInfo>(-0.5f, float(cells) - 0.5f, 0.0f, 1.0f, float(cells),
                                              0.0f, float(cells) - 1.0f);
}

// Gives all three colour curves of an interval the same reference handles.
inline void setColourCurves(OXWLUTIntervalInfo& interval, const OXWLUTIntervalInfo::HandleList& h)
{
    for (int channel : kColours) {
        interval.setReferenceHandles(channel, h);
    }
}

// A mouse event at a column of the bar (row 10); a release holds no button.
inline void sendMouse(QWidget& w, QEvent::Type type, int column,
                      Qt::MouseButton button = Qt::LeftButton,
                      Qt::KeyboardModifiers modifiers = Qt::NoModifier)
{
    const QPoint pos(column + kFrame, 10);
    const bool move = type == QEvent::MouseMove;
    QMouseEvent event(type, pos, w.mapToGlobal(pos), move ? Qt::NoButton : button,
                      type == QEvent::MouseButtonRelease ? Qt::NoButton : button, modifiers);
    QApplication::sendEvent(&w, &event);
}

inline void press(QWidget& w, int column, Qt::MouseButton button = Qt::LeftButton,
                  Qt::KeyboardModifiers modifiers = Qt::NoModifier)
{
    sendMouse(w, QEvent::MouseButtonPress, column, button, modifiers);
}

inline void release(QWidget& w, int column, Qt::MouseButton button = Qt::LeftButton)
{
    sendMouse(w, QEvent::MouseButtonRelease, column, button);
}

inline void moveTo(QWidget& w, int column, Qt::MouseButton held = Qt::NoButton)
{
    sendMouse(w, QEvent::MouseMove, column, held);
}

// The context menu as a right click at a column opens it: press, then the menu event.
inline void rightClickMenu(QWidget& w, int column)
{
    press(w, column, Qt::RightButton);
    const QPoint pos(column + kFrame, 10);
    QContextMenuEvent event(QContextMenuEvent::Mouse, pos, w.mapToGlobal(pos));
    QApplication::sendEvent(&w, &event);
}

// A bar of 256 columns with a model of 256 cells, an application for user actions, settings
// and files in temporary directories, the lines of the host's error channel, and a colour
// dialog hook that records what it saw and answers `answer` (invalid: cancel).
class ColorBarTest : public testing::Test
{
protected:
    void SetUp() override
    {
        ASSERT_TRUE(settingsDir.isValid() && files.isValid());
        QSettings::setPath(QSettings::IniFormat, QSettings::UserScope, settingsDir.path());
        OXWFileDialog::clearTestAnswers();
        OXWLUTColorBar::clearClipboard();
        OXWLUTColorBar::setColorDialogHook([this](const QColor& initial, QWidget*, const QString&) {
            dialog = {dialog.calls + 1, initial, bar->highlightStart(), bar->highlightEnd()};
            if (whileOpen) {
                whileOpen();
            }
            return answer;
        });
        bar = makeBar(model.get(), "mAmbientLUTColorBar");
        errorHandler =
            OXMError::addHandler([this](const OXMError::Message& m) { errors << m.getText(); });
    }

    void TearDown() override
    {
        OXMError::removeHandler(errorHandler);
        bar.reset();
        OXWLUTColorBar::setColorDialogHook({});
        OXWLUTColorBar::clearClipboard();
        OXWFileDialog::clearTestAnswers();
    }

    static std::unique_ptr<TestBar> makeBar(OXWLUTObjectInfo* model, const char* name)
    {
        auto bar = std::make_unique<TestBar>(nullptr, name);
        bar->resize(kColumns + 2 * kFrame, 24);
        bar->show();
        bar->setModel(model);
        bar->updateAll();
        return bar;
    }

    OXWLUTIntervalInfo& interval(int i = 0) { return *model->interval(i); }
    QString path(const QString& name) const { return files.filePath(name); }
    // A menu item by its text (submenus by their title).
    QAction* menuItem(const QString& text) const
    {
        for (QAction* action : bar->contextMenu()->actions()) {
            if (action->text() == text) {
                return action;
            }
        }
        return nullptr;
    }

    struct
    {
        int calls = 0;
        QColor initial;
        float highlightStart = 0.0f;
        float highlightEnd = 0.0f;
    } dialog;
    QColor answer;
    std::function<void()> whileOpen;
    QStringList errors;
    int errorHandler = 0;

    QTemporaryDir settingsDir;
    QTemporaryDir files;
    OXWApplication app;
    std::unique_ptr<OXWLUTObjectInfo> model = makeModel();
    std::unique_ptr<TestBar> bar;
};

} // namespace colorbartest
