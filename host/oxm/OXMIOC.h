#pragma once

#include "OXMMessage.h"

class OXMObject;

// Change notification ("inversion of control"): a listener receives the messages of the
// objects it listens to (through OXMObjectIOCPtr) and, after iocOpen, every message of the
// application channel. Delivery is synchronous, on the thread that changes the object.
class OXMIOC
{
public:
    static constexpr OXMenum Dying = OXM::Dying;
    static constexpr OXMenum PropertyChanged = OXM::PropertyChanged;

    class Message : public OXMMessage
    {
    public:
        Message(OXMenum type, OXMObject* initialSender, OXMenum propertyID = OXMenum(),
                OXMObject* sender = nullptr)
            : OXMMessage(type), mInitialSender(initialSender),
              mSender(sender ? sender : initialSender), mPropertyID(propertyID)
        {
        }
        // The object where the change happened.
        OXMObject* getInitialSender() const { return mInitialSender; }
        // The object that delivers the message now (differs when a message is passed on).
        OXMObject* getSender() const { return mSender; }
        void setSender(OXMObject* sender) { mSender = sender; }
        // The property that changed; invalid for messages about the whole object.
        OXMenum getPropertyID() const { return mPropertyID; }

    private:
        OXMObject* mInitialSender;
        OXMObject* mSender;
        OXMenum mPropertyID;
    };

    OXMIOC() = default;
    OXMIOC(const OXMIOC&) {}
    OXMIOC& operator=(const OXMIOC&) { return *this; }
    virtual ~OXMIOC();

    // Called for every message this listener receives. The base does nothing.
    virtual void iocCallback(Message& message);
    // Sends a message to this object's own listeners; a plain listener has none.
    virtual void iocBroadcast(Message& message);

    // Start / stop receiving the application channel (every message of every object).
    static bool iocOpen(OXMIOC* listener);
    static bool iocClose(OXMIOC* listener);
    static int getApplicationListenerCount();
    // Delivers a message to the application channel (objects do this for each message).
    static void deliverToApplication(Message& message);

private:
    bool mApplicationOpen = false;
};
