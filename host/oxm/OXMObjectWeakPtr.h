#pragma once

class OXMObject;

// A pointer to an object that reads as null once the object is destroyed. It holds no
// reference. Registration with the object is O(1); GUI thread only.
class OXMObjectWeakPtr
{
public:
    OXMObjectWeakPtr() = default;
    OXMObjectWeakPtr(OXMObject* object) { attach(object); }
    OXMObjectWeakPtr(const OXMObjectWeakPtr& other) { attach(other.mObject); }
    OXMObjectWeakPtr& operator=(const OXMObjectWeakPtr& other)
    {
        if (other.mObject != mObject) {
            detach();
            attach(other.mObject);
        }
        return *this;
    }
    OXMObjectWeakPtr& operator=(OXMObject* object)
    {
        if (object != mObject) {
            detach();
            attach(object);
        }
        return *this;
    }
    virtual ~OXMObjectWeakPtr() { detach(); }

    OXMObject* get() const { return mObject; }
    OXMObject* operator->() const { return mObject; }
    OXMObject& operator*() const { return *mObject; }
    operator OXMObject*() const { return mObject; }
    explicit operator bool() const { return mObject != nullptr; }

protected:
    // Called when the object is destroyed, after the pointer reads null.
    virtual void objectDestroyed() {}

    void attach(OXMObject* object);
    void detach();

private:
    friend class OXMObject;
    OXMObject* mObject = nullptr;
    OXMObjectWeakPtr* mPrev = nullptr;
    OXMObjectWeakPtr* mNext = nullptr;
};
