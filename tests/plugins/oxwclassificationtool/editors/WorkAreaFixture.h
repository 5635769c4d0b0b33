#pragma once

// A work area in the setting the tool panel gives it, for tests and for trying the widget by
// hand: a model, a histogram object with a result, a render object, the application (user
// actions), and the widget two levels below a panel that is installed as its event filter.
// The panel lets every event through and counts what it saw; like the real panel it answers
// the widget's change signals by re-rendering it (updateAll).

#include "OXWLUTIntervalInfo.h"
#include "OXWLUTObjectInfo.h"
#include "OXWLUTWorkArea.h"

#include <OXMHistogram.h>
#include <OXMHistogramResult.h>
#include <OXMObject.h>
#include <OXMObjectPtr.h>
#include <OXMTulvoRights.h>
#include <OXWApplication.h>

#include <QApplication>
#include <QContextMenuEvent>
#include <QMenu>
#include <QMouseEvent>
#include <QtTest/QTest>

#include <map>
#include <memory>
#include <vector>

namespace workarea_test {

class PanelStub : public QWidget
{
public:
    std::map<QEvent::Type, int> seen;

protected:
    bool eventFilter(QObject* watched, QEvent* event) override
    {
        ++seen[event->type()];
        return QWidget::eventFilter(watched, event);
    }
};

class WorkAreaFixture
{
public:
    // A model of `cells` grey values (one interval), a histogram of `cells` equal bins and a
    // widget whose contents rectangle (inside a frame of 2 pixels) is width x height pixels.
    explicit WorkAreaFixture(int cells = 16, int width = 160, int height = 100)
        : model(std::make_unique<OXWLUTObjectInfo>(-0.5f, float(cells) - 0.5f, 0.0f, 1.0f,
                                                   float(cells), 0.0f, 0.0f))
    {
        renderObject.setAutoDelete(false);
        rights.setAutoDelete(false);
        histogram = new OXMHistogram;
        setBins(std::vector<float>(std::size_t(cells), 100.0f));
        auto* level = new QWidget(panel.get());
        workArea = new OXWLUTWorkArea(level, "mLUTWorkArea");
        for (auto changed :
             {&OXWLUTWorkArea::objectInfoChanged, &OXWLUTWorkArea::objectOpacityChanged}) {
            QObject::connect(workArea, changed, workArea, &OXWLUTWorkArea::updateAll);
        }
        for (QWidget* widget :
             {static_cast<QWidget*>(panel.get()), level, static_cast<QWidget*>(workArea)}) {
            widget->resize(width + 4, height + 4);
        }
        workArea->setRenderObject(&renderObject);
        workArea->setHistogramObject(histogram.get());
        workArea->setObjectInfo(model.get());
        panel->show();
        exposed = QTest::qWaitForWindowExposed(panel.get());
        workArea->updateAll();
    }

    // The widgets go first: they hold pointers to the model and the host objects.
    ~WorkAreaFixture() { panel.reset(); }

    void setBins(const std::vector<float>& bins)
    {
        auto* h = static_cast<OXMHistogram*>(histogram.get());
        h->getResult()->setResult(0, bins, {0.0f, float(bins.size()) - 1.0f});
    }

    OXWLUTIntervalInfo* interval(int i) const { return model->interval(i); }

    // Handles at the centres of the given cells (local coordinates of interval i).
    void setOpacityCurve(int i, const std::vector<std::pair<int, float>>& cellValues)
    {
        OXWLUTIntervalInfo::HandleList handles;
        for (const auto& [cell, value] : cellValues) {
            const float x = (float(cell) + 0.5f) * model->greyStep();
            handles.push_back({interval(i)->localFromGlobal(x), value});
        }
        interval(i)->setReferenceHandles(OXWLUTIntervalInfo::OpacityChannel, handles);
        workArea->updateAll();
    }

    // Widget coordinates of a contents pixel, and of handle k of interval i.
    QPoint widgetPoint(int px, int py) const
    {
        return workArea->contentsRect().topLeft() + QPoint(px, py);
    }
    QPoint handlePoint(int i, int k) const
    {
        const auto& h = interval(i)->handles(OXWLUTIntervalInfo::OpacityChannel)[std::size_t(k)];
        return widgetPoint(workArea->pixelFromPosition(interval(i)->globalFromLocal(h.x)),
                           workArea->pixelFromHeight(h.y));
    }

    void send(QEvent::Type type, const QPoint& pos, Qt::MouseButton button,
              Qt::KeyboardModifiers modifiers)
    {
        QMouseEvent event(type, pos, workArea->mapToGlobal(pos), button, mButtons, modifiers);
        QApplication::sendEvent(workArea, &event);
    }
    void press(const QPoint& pos, Qt::MouseButton button = Qt::LeftButton,
               Qt::KeyboardModifiers modifiers = Qt::NoModifier)
    {
        mButtons = button;
        send(QEvent::MouseButtonPress, pos, button, modifiers);
    }
    void move(const QPoint& pos, Qt::KeyboardModifiers modifiers = Qt::NoModifier)
    {
        send(QEvent::MouseMove, pos, Qt::NoButton, modifiers);
    }
    void release(const QPoint& pos, Qt::KeyboardModifiers modifiers = Qt::NoModifier)
    {
        const Qt::MouseButton button = Qt::MouseButton(int(mButtons));
        mButtons = Qt::NoButton;
        send(QEvent::MouseButtonRelease, pos, button, modifiers);
    }
    void click(const QPoint& pos, Qt::MouseButton button = Qt::LeftButton,
               Qt::KeyboardModifiers modifiers = Qt::NoModifier)
    {
        move(pos);
        press(pos, button, modifiers);
        release(pos, modifiers);
    }
    // A right click as X11 delivers it: the press, the context menu request, and the release,
    // which goes to the menu when one popped up.
    void contextMenu(const QPoint& pos)
    {
        press(pos, Qt::RightButton);
        QContextMenuEvent event(QContextMenuEvent::Mouse, pos, workArea->mapToGlobal(pos));
        QApplication::sendEvent(workArea, &event);
        if (workArea->contextMenu()->isVisible()) {
            mButtons = Qt::NoButton;
        } else {
            release(pos);
        }
    }

    // The menu item with the given text, searched through the submenus; null if none.
    static QAction* findItem(QMenu* menu, const QString& text)
    {
        for (QAction* action : menu->actions()) {
            QAction* found = action->text() == text ? action
                             : action->menu()       ? findItem(action->menu(), text)
                                                    : nullptr;
            if (found) {
                return found;
            }
        }
        return nullptr;
    }
    QAction* item(const QString& text) const { return findItem(workArea->contextMenu(), text); }

    QImage image() const { return workArea->buffer().toImage(); }

    OXWApplication application;
    std::unique_ptr<OXWLUTObjectInfo> model;
    OXMObject renderObject;
    OXMTulvoRights rights;
    OXMObjectPtr histogram;
    std::unique_ptr<PanelStub> panel = std::make_unique<PanelStub>();
    OXWLUTWorkArea* workArea = nullptr;
    bool exposed = false;

private:
    Qt::MouseButtons mButtons = Qt::NoButton;
};

} // namespace workarea_test
