#include "OXWUndoStack.h"

#include <OXMObject.h>
#include <OXMProperty.h>
#include <OXMPropertyValue.h>

#include <algorithm>

OXWUndoStack::OXWUndoStack(QObject* parent) : QObject(parent) {}

OXWUndoStack::~OXWUndoStack()
{
    if (OXMObject::getUndoRecorder() == this)
        OXMObject::setUndoRecorder(nullptr);
}

void OXWUndoStack::recordChange(OXMObject* object, OXMenum propertyID,
                                const OXMPropertyValue& oldValue, const OXMPropertyValue& newValue)
{
    if (!mOpen || mBusy || !object)
        return;
    Step& step = *mOpen;
    const auto key = std::make_pair(static_cast<const OXMObject*>(object), propertyID.toInt());
    auto it = step.index.find(key);
    // An entry whose object died belongs to another object that lived at the same address.
    if (it != step.index.end() && step.entries[it->second].object.get() == object) {
        step.entries[it->second].newValue = newValue.clone();
        return;
    }
    if (step.entries.empty() && !mActionName.isEmpty())
        step.name = mActionName; // named after what made the first change
    Entry entry;
    entry.object = object;
    entry.propertyID = propertyID;
    entry.oldValue = oldValue.clone();
    entry.newValue = newValue.clone();
    step.entries.push_back(std::move(entry));
    step.index[key] = step.entries.size() - 1;
}

bool OXWUndoStack::beginStep(const QString& name)
{
    if (mOpen || mBusy)
        return false;
    mOpen = std::make_unique<Step>();
    mOpen->name = name;
    mOpen->serial = ++mLastSerial;
    return true;
}

void OXWUndoStack::setClean()
{
    mCleanSerial = topSerial();
    emit changed();
}

bool OXWUndoStack::isClean() const
{
    return topSerial() == mCleanSerial;
}

std::uint64_t OXWUndoStack::topSerial() const
{
    return mUndo.empty() ? 0 : mUndo.back()->serial;
}

bool OXWUndoStack::endStep(const QString& text)
{
    if (!mOpen)
        return false;
    std::unique_ptr<Step> step = std::move(mOpen);
    if (!text.isNull())
        step->name = text;
    step->index.clear();
    // Entries that end where they started, or whose object is gone, change nothing.
    auto unchanged = [](const Entry& e) {
        return !e.object.get() || e.oldValue->equals(*e.newValue);
    };
    step->entries.erase(std::remove_if(step->entries.begin(), step->entries.end(), unchanged),
                        step->entries.end());
    if (step->entries.empty())
        return false;
    step->entries.shrink_to_fit();
    mRedo.clear();
    mUndo.push_back(std::move(step));
    trim();
    emit changed();
    return true;
}

bool OXWUndoStack::canUndo() const
{
    return !mUndo.empty() && !mOpen && !mBusy;
}

bool OXWUndoStack::canRedo() const
{
    return !mRedo.empty() && !mOpen && !mBusy;
}

QString OXWUndoStack::undoName() const
{
    return mUndo.empty() ? QString() : mUndo.back()->name;
}

QString OXWUndoStack::redoName() const
{
    return mRedo.empty() ? QString() : mRedo.back()->name;
}

QString OXWUndoStack::undoText() const
{
    return mUndo.empty() ? QString() : tr("Undo %1").arg(mUndo.back()->name);
}

QString OXWUndoStack::redoText() const
{
    return mRedo.empty() ? QString() : tr("Redo %1").arg(mRedo.back()->name);
}

void OXWUndoStack::apply(Step& step, bool undoing)
{
    // Recording is off while the values are written back: nothing reaches a recorder.
    mBusy = true;
    OXMUndoRecorder* previous = OXMObject::setUndoRecorder(nullptr);
    const int n = int(step.entries.size());
    for (int k = 0; k < n; ++k) {
        Entry& e = step.entries[std::size_t(undoing ? n - 1 - k : k)];
        // Read the pointer anew for every entry: a write may destroy other objects.
        OXMObject* object = e.object.get();
        if (!object)
            continue;
        OXMProperty* property = object->getProperty(e.propertyID);
        if (!property)
            continue;
        property->restoreValue(undoing ? *e.oldValue : *e.newValue);
    }
    OXMObject::setUndoRecorder(previous);
    mBusy = false;
}

bool OXWUndoStack::undo()
{
    if (!canUndo())
        return false;
    std::unique_ptr<Step> step = std::move(mUndo.back());
    mUndo.pop_back();
    apply(*step, true);
    mRedo.push_back(std::move(step));
    emit changed();
    return true;
}

bool OXWUndoStack::redo()
{
    if (!canRedo())
        return false;
    std::unique_ptr<Step> step = std::move(mRedo.back());
    mRedo.pop_back();
    apply(*step, false);
    mUndo.push_back(std::move(step));
    trim();
    emit changed();
    return true;
}

void OXWUndoStack::clear()
{
    if (mUndo.empty() && mRedo.empty())
        return;
    // Move the steps out first: releasing their link values may destroy objects whose
    // listeners look at this stack.
    std::vector<std::unique_ptr<Step>> undoSteps = std::move(mUndo);
    std::vector<std::unique_ptr<Step>> redoSteps = std::move(mRedo);
    mUndo.clear();
    mRedo.clear();
    undoSteps.clear();
    redoSteps.clear();
    emit changed();
}

void OXWUndoStack::setStepLimit(int limit)
{
    mStepLimit = std::max(1, limit);
    if (trim())
        emit changed();
}

bool OXWUndoStack::trim()
{
    const std::size_t limit = std::size_t(mStepLimit);
    bool trimmed = false;
    while (mUndo.size() + mRedo.size() > limit && !mUndo.empty()) {
        mUndo.erase(mUndo.begin());
        trimmed = true;
    }
    while (mRedo.size() > limit) {
        mRedo.erase(mRedo.begin());
        trimmed = true;
    }
    return trimmed;
}

int OXWUndoStack::openEntryCount() const
{
    return mOpen ? int(mOpen->entries.size()) : 0;
}

int OXWUndoStack::entryCount() const
{
    int n = 0;
    for (const auto& s : mUndo)
        n += int(s->entries.size());
    for (const auto& s : mRedo)
        n += int(s->entries.size());
    return n;
}
