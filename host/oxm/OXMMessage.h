#pragma once

#include "OXMenum.h"

// A message of the host; its type says what happened (OXM::PropertyChanged, OXM::Dying, ...).
class OXMMessage
{
public:
    explicit OXMMessage(OXMenum type) : mType(type) {}
    virtual ~OXMMessage() = default;
    OXMMessage(const OXMMessage&) = default;
    OXMMessage& operator=(const OXMMessage&) = default;

    OXMenum getType() const { return mType; }

private:
    OXMenum mType;
};
