#pragma once

// The one instance of T in the process, registered by whoever creates it (the application
// registers itself at start-up and unregisters when it goes). Null while none is registered.
template <typename T>
class OXMSingleton
{
public:
    static T* getInstance() { return slot(); }
    static void setInstance(T* instance) { slot() = instance; }
    // Clears the registration only if it still names instance.
    static void clearInstance(T* instance)
    {
        if (slot() == instance)
            slot() = nullptr;
    }

private:
    static T*& slot()
    {
        static T* instance = nullptr;
        return instance;
    }
};
