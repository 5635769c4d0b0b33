#pragma once

#include "OXMenum.h"

#include <QString>

#include <functional>

class OXMClass;

// The host's error channel: errors are reported as values with a source and a code; the
// viewer shows them in its log, tests install a handler to observe them.
class OXMError
{
public:
    class Message
    {
    public:
        Message(const OXMClass* source, OXMenum code, const QString& text = QString())
            : mSource(source), mCode(code), mText(text)
        {
        }
        const OXMClass* getSource() const { return mSource; }
        OXMenum getCode() const { return mCode; }
        const QString& getText() const { return mText; }
        // "OXM::OutOfMemory: text" for logs.
        QString toString() const;

    private:
        const OXMClass* mSource;
        OXMenum mCode;
        QString mText;
    };

    using Handler = std::function<void(const Message&)>;

    // Delivers the message to every handler; without handlers it goes to qWarning.
    static void emitError(const Message& message);
    static void emitError(const OXMClass* source, OXMenum code, const QString& text = QString());

    // Returns an id for removeHandler.
    static int addHandler(Handler handler);
    static bool removeHandler(int id);
    // Number of errors emitted in this process (for quick checks).
    static int getErrorCount();
};
