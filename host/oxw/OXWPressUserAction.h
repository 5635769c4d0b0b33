#pragma once

#include <QString>

// The user action of a mouse drag in an editor: opened at the press, closed at the release.
// A release that never arrives (a popup took it) is made up for at the next press, which
// closes the earlier action before it opens its own. Without an application nothing opens.
class OXWPressUserAction
{
public:
    OXWPressUserAction() = default;
    ~OXWPressUserAction() { release(); }
    OXWPressUserAction(const OXWPressUserAction&) = delete;
    OXWPressUserAction& operator=(const OXWPressUserAction&) = delete;

    void press(const QString& name);
    void release();
    // The open action's id; -1 when none is open.
    int id() const { return mId; }

private:
    int mId = -1;
};
