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
#include <QEvent>
#include <QImage>
#include <QMenu>
#include <QMouseEvent>
#include <QWidget>
#include <QtTest/QTest>

#include <memory>
#include <vector>

namespace workarea_test {

// The grandparent of the work area: its event filter, as the tool panel is.
class PanelStub : public QWidget
{
public:
    int mousePresses = 0;
    int mouseMoves = 0;
    int mouseReleases = 0;

protected:
    bool eventFilter(QObject* watched, QEvent* event) override
    {
        switch (event->type()) {
        case QEvent::MouseButtonPress:
            ++mousePresses;
            break;
        case QEvent::MouseMove:
            ++mouseMoves;
            break;
        case QEvent::MouseButtonRelease:
            ++mouseReleases;
            break;
        default:
            break;
        }
        return QWidget::eventFilter(watched, event);
    }
};

class WorkAreaFixture
{
public:
    // A model of `cells` grey values (one interval), a histogram of `cells` equal bins and a
    // widget whose contents rectangle is contentsWidth x contentsHeight pixels.
    explicit WorkAreaFixture(int cells = 16, int contentsWidth = 160, int contentsHeight = 100)
        : model(std::make_unique<OXWLUTObjectInfo>(-0.5f, float(cells) - 0.5f, 0.0f, 1.0f,
                                                   float(cells), 0.0f, 0.0f))
    {
        renderObject.setAutoDelete(false);
        rights.setAutoDelete(false);
        histogram = new OXMHistogram;
        setBins(std::vector<float>(std::size_t(cells), 100.0f));

        panel = std::make_unique<PanelStub>();
        auto* level = new QWidget(panel.get());
        workArea = new OXWLUTWorkArea(level, "mLUTWorkArea");
        QObject::connect(workArea, &OXWLUTWorkArea::objectInfoChanged, workArea,
                         &OXWLUTWorkArea::updateAll);
        QObject::connect(workArea, &OXWLUTWorkArea::objectOpacityChanged, workArea,
                         &OXWLUTWorkArea::updateAll);
        const int frame = 2;
        level->setGeometry(0, 0, contentsWidth + 2 * frame, contentsHeight + 2 * frame);
        workArea->setGeometry(0, 0, contentsWidth + 2 * frame, contentsHeight + 2 * frame);
        panel->resize(contentsWidth + 2 * frame, contentsHeight + 2 * frame);

        workArea->setRenderObject(&renderObject);
        workArea->setHistogramObject(histogram.get());
        workArea->setObjectInfo(model.get());
        panel->show();
        exposed = QTest::qWaitForWindowExposed(panel.get());
        workArea->updateAll();
    }

    ~WorkAreaFixture()
    {
        // The widgets go first: they hold pointers to the model and the host objects.
        panel.reset();
    }

    WorkAreaFixture(const WorkAreaFixture&) = delete;
    WorkAreaFixture& operator=(const WorkAreaFixture&) = delete;

    void setBins(const std::vector<float>& bins)
    {
        auto* h = static_cast<OXMHistogram*>(histogram.get());
        h->getResult()->setResult(0, bins, {0.0f, float(bins.size()) - 1.0f});
    }

    OXWLUTIntervalInfo* interval(int i) const { return model->interval(i); }

    // Handles at the centres of the given cells (local coordinates of interval i).
    void setOpacityCurve(int i, const std::vector<std::pair<int, float>>& cellValues)
    {
        OXWLUTIntervalInfo* target = model->interval(i);
        const float s = model->greyStep();
        OXWLUTIntervalInfo::HandleList handles;
        for (const auto& cv : cellValues) {
            const float x = (float(cv.first) + 0.5f) * s;
            handles.push_back({target->localFromGlobal(x), cv.second});
        }
        target->setReferenceHandles(OXWLUTIntervalInfo::OpacityChannel, handles);
        workArea->updateAll();
    }

    // Widget coordinates of a contents pixel.
    QPoint widgetPoint(int px, int py) const
    {
        return workArea->contentsRect().topLeft() + QPoint(px, py);
    }
    // Widget coordinates of a model position and height.
    QPoint pointAt(float x, float h) const
    {
        return widgetPoint(workArea->pixelFromPosition(x), workArea->pixelFromHeight(h));
    }
    // Widget coordinates of handle k of interval i.
    QPoint handlePoint(int i, int k) const
    {
        const OXWLUTIntervalInfo* target = model->interval(i);
        const auto& h = target->handles(OXWLUTIntervalInfo::OpacityChannel)[std::size_t(k)];
        return pointAt(target->globalFromLocal(h.x), h.y);
    }

    void send(QEvent::Type type, const QPoint& pos, Qt::MouseButton button,
              Qt::MouseButtons buttons, Qt::KeyboardModifiers modifiers)
    {
        QMouseEvent event(type, pos, workArea->mapToGlobal(pos), button, buttons, modifiers);
        QApplication::sendEvent(workArea, &event);
    }
    void press(const QPoint& pos, Qt::MouseButton button = Qt::LeftButton,
               Qt::KeyboardModifiers modifiers = Qt::NoModifier)
    {
        mButtons = button;
        send(QEvent::MouseButtonPress, pos, button, mButtons, modifiers);
    }
    void move(const QPoint& pos, Qt::KeyboardModifiers modifiers = Qt::NoModifier)
    {
        send(QEvent::MouseMove, pos, Qt::NoButton, mButtons, modifiers);
    }
    void release(const QPoint& pos, Qt::KeyboardModifiers modifiers = Qt::NoModifier)
    {
        const Qt::MouseButton button = Qt::MouseButton(int(mButtons));
        mButtons = Qt::NoButton;
        send(QEvent::MouseButtonRelease, pos, button, mButtons, modifiers);
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
            if (action->text() == text) {
                return action;
            }
            if (QMenu* sub = action->menu()) {
                if (QAction* found = findItem(sub, text)) {
                    return found;
                }
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
    std::unique_ptr<PanelStub> panel;
    OXWLUTWorkArea* workArea = nullptr;
    bool exposed = false;

private:
    Qt::MouseButtons mButtons = Qt::NoButton;
};

} // namespace workarea_test
