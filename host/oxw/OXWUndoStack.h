#pragma once

#include <OXMObjectWeakPtr.h>
#include <OXMUndoRecorder.h>
#include <OXMenum.h>

#include <QObject>
#include <QString>

#include <cstddef>
#include <cstdint>
#include <map>
#include <memory>
#include <utility>
#include <vector>

// The undo history of the user's actions. The application opens and closes its steps around
// the outermost user action and installs it as the framework's undo recorder
// (OXMObject::setUndoRecorder) meanwhile; a change reported while no step is open (view
// state, loading, undo and redo themselves) is not recorded.
//
// A step keeps one entry per (object, property): the first old value and the last new value
// (cloned), in the order of the first change. A drag of many writes to one property therefore
// costs one entry. When the step closes, entries whose first old value equals their last new
// value are dropped; a step left without entries is discarded.
//
// Objects: an entry points to its object through a guarded weak pointer, so a step does not
// keep the objects it changed alive. Link values stored in a step hold references to the
// objects they name (OXMPropertyValue does), which keeps e.g. an object removed from a scene
// list alive for as long as its removal can be undone. Entries whose object has died, or whose
// property was removed, are skipped by undo and redo.
//
// Memory: at most stepLimit() steps are kept (default 1000); the oldest step goes first. The
// redo list is cleared whenever a new step is stored.
class OXWUndoStack : public QObject, public OXMUndoRecorder
{
    Q_OBJECT
public:
    static constexpr int DefaultStepLimit = 1000;

    explicit OXWUndoStack(QObject* parent = nullptr);
    ~OXWUndoStack() override;
    OXWUndoStack(const OXWUndoStack&) = delete;
    OXWUndoStack& operator=(const OXWUndoStack&) = delete;

    // OXMUndoRecorder: records the change into the open step; ignored when none is open.
    void recordChange(OXMObject* object, OXMenum propertyID, const OXMPropertyValue& oldValue,
                      const OXMPropertyValue& newValue) override;

    // Opens a step with that name. False (and nothing changes) when a step is already open or
    // undo / redo is running.
    bool beginStep(const QString& name);
    // Closes the open step. A non-null text renames it. Returns whether a step was stored.
    bool endStep(const QString& text = QString());
    // The name of the innermost open user action: the open step takes it when it records its
    // first change.
    void setActionName(const QString& name) { mActionName = name; }
    bool isStepOpen() const { return mOpen != nullptr; }

    bool canUndo() const;
    bool canRedo() const;
    // "Undo <name>" / "Redo <name>"; empty when there is nothing to undo / redo.
    QString undoText() const;
    QString redoText() const;
    // The name of the next step to undo / redo; empty when there is none.
    QString undoName() const;
    QString redoName() const;
    // Writes the old values of the last step back (reverse order) through the normal write
    // path with recording switched off. False when there is nothing to undo, a step is open
    // or undo / redo is already running.
    bool undo();
    // Writes the new values of the next undone step again (forward order).
    bool redo();

    // Number of steps that can be undone.
    int count() const { return int(mUndo.size()); }
    int redoCount() const { return int(mRedo.size()); }
    // Drops every step (the open one keeps going).
    void clear();
    // The state the user last saved: clean until a step is stored, undone or redone away from
    // it, and clean again when undo or redo comes back to it. A new stack is clean.
    void setClean();
    bool isClean() const;

    int stepLimit() const { return mStepLimit; }
    // Keeps at most limit steps (at least 1); drops the oldest ones beyond it.
    void setStepLimit(int limit);

    // Entries in the open step, in the undo list and in the redo list (memory accounting).
    int openEntryCount() const;
    int entryCount() const;

signals:
    // The undo or redo list changed (the Edit menu updates its texts).
    void changed();

private:
    struct Entry
    {
        OXMObjectWeakPtr object;
        OXMenum propertyID;
        std::unique_ptr<OXMPropertyValue> oldValue;
        std::unique_ptr<OXMPropertyValue> newValue;
    };
    struct Step
    {
        QString name;
        std::uint64_t serial = 0; // unique in this stack
        std::vector<Entry> entries;
        // Where each (object, property) sits in entries; only while the step is open.
        std::map<std::pair<const OXMObject*, int>, std::size_t> index;
    };

    void apply(Step& step, bool undoing);
    // Drops the oldest steps beyond the limit; whether any went.
    bool trim();

    std::vector<std::unique_ptr<Step>> mUndo; // oldest first
    std::vector<std::unique_ptr<Step>> mRedo; // next to redo last
    std::unique_ptr<Step> mOpen;
    int mStepLimit = DefaultStepLimit;
    bool mBusy = false;
    // The serial number of the step on top of the undo list (0: empty), last given and saved.
    std::uint64_t topSerial() const;
    std::uint64_t mLastSerial = 0;
    std::uint64_t mCleanSerial = 0;
    QString mActionName;
};
