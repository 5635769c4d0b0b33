#pragma once

#include <QObject>
#include <QPointer>

// Blocks the signals of a QObject for the lifetime of the scope and then restores the state
// the object had before (a scope inside another one keeps the signals blocked). A null
// object, or one destroyed during the scope, is ignored.
class OXWBlockSignalsScope
{
public:
    explicit OXWBlockSignalsScope(QObject* object);
    ~OXWBlockSignalsScope();
    OXWBlockSignalsScope(const OXWBlockSignalsScope&) = delete;
    OXWBlockSignalsScope& operator=(const OXWBlockSignalsScope&) = delete;

    // The state that the destructor restores.
    bool previousState() const { return mPrevious; }

private:
    QPointer<QObject> mObject;
    bool mPrevious = false;
};
