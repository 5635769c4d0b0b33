#include "OXMError.h"

#include <QDebug>

#include <utility>
#include <vector>

namespace {

struct ErrorChannel
{
    std::vector<std::pair<int, OXMError::Handler>> handlers;
    int nextId = 1;
    int count = 0;
};

ErrorChannel& channel()
{
    static ErrorChannel* c = new ErrorChannel; // never destroyed
    return *c;
}

} // namespace

QString OXMError::Message::toString() const
{
    QString s = mCode.toString();
    if (!mText.isEmpty())
        s += QStringLiteral(": ") + mText;
    return s;
}

void OXMError::emitError(const Message& message)
{
    ErrorChannel& c = channel();
    ++c.count;
    if (c.handlers.empty()) {
        qWarning().noquote() << "OXM error:" << message.toString();
        return;
    }
    const auto handlers = c.handlers; // a handler may remove itself
    for (const auto& h : handlers)
        h.second(message);
}

void OXMError::emitError(const OXMClass* source, OXMenum code, const QString& text)
{
    emitError(Message(source, code, text));
}

int OXMError::addHandler(Handler handler)
{
    ErrorChannel& c = channel();
    const int id = c.nextId++;
    c.handlers.emplace_back(id, std::move(handler));
    return id;
}

bool OXMError::removeHandler(int id)
{
    auto& hs = channel().handlers;
    for (auto it = hs.begin(); it != hs.end(); ++it) {
        if (it->first == id) {
            hs.erase(it);
            return true;
        }
    }
    return false;
}

int OXMError::getErrorCount()
{
    return channel().count;
}
