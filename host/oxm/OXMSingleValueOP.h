#pragma once

#include "OXMObjectLink.h"
#include "OXMPropertyValue.h"
#include "OXMSingleValuePropertyIF.h"
#include "OXMValueTraits.h"

#include <algorithm>
#include <type_traits>
#include <utility>
#include <vector>

// A single-value property of type T (bool, int, float, double, OXMenum, const char*,
// OXMObjectLink, vectors, pairs, OXMObjectPath, OXMTypeInfo, ...: any copyable type with ==).
// Optional allowed values and a default; checkValue can be overridden for other rules.
template <typename T>
class OXMSingleValueOP : public OXMProperty, public OXMSingleValuePropertyIF<T>
{
public:
    using Traits = OXMValueTraits<T>;
    using Storage = typename Traits::Storage;
    static constexpr bool IsLink = std::is_same<Storage, OXMObjectLink>::value;

    OXMSingleValueOP() = default;
    explicit OXMSingleValueOP(const T& defaultValue) : mDefault(Traits::toStorage(defaultValue))
    {
        storeValue(mDefault);
    }
    OXMSingleValueOP(const OXMSingleValueOP& other)
        : OXMProperty(other), OXMSingleValuePropertyIF<T>(), mDefault(other.mDefault),
          mAllowed(other.mAllowed)
    {
        const bool wasLocked = isLocked();
        lock(false);
        storeValue(other.mValue);
        lock(wasLocked);
    }
    // Assigns the value (through the write path); owner and key stay.
    OXMSingleValueOP& operator=(const OXMSingleValueOP& other)
    {
        if (this != &other)
            storeValue(other.mValue);
        return *this;
    }
    ~OXMSingleValueOP() override
    {
        if constexpr (IsLink) {
            detachParent(mValue, getOwner());
            releaseLink(mValue);
        }
    }

    T getValue() const override
    {
        if constexpr (IsLink) {
            OXMObjectLink l = mValue;
            l.setOwner(getOwner());
            l.setPropertyID(getID());
            return l;
        } else {
            return Traits::fromStorage(mValue);
        }
    }
    bool setValue(const T& value) override { return storeValue(Traits::toStorage(value)); }
    const Storage& getStoredValue() const { return mValue; }

    T getDefaultValue() const { return Traits::fromStorage(mDefault); }
    void setDefaultValue(const T& value) { mDefault = Traits::toStorage(value); }

    // An empty list allows every value.
    void setAllowedValues(const std::vector<T>& values)
    {
        mAllowed.clear();
        for (const T& v : values)
            mAllowed.push_back(Traits::toStorage(v));
    }
    const std::vector<Storage>& getAllowedValues() const { return mAllowed; }
    virtual bool checkValue(const Storage& value) const
    {
        return mAllowed.empty() ||
               std::find(mAllowed.begin(), mAllowed.end(), value) != mAllowed.end();
    }

    bool reset() override { return storeValue(mDefault); }
    bool assignFrom(const OXMProperty& source) override
    {
        auto* s = dynamic_cast<const OXMSingleValueOP*>(&source);
        return s && storeValue(s->mValue);
    }
    OXMProperty* clone() const override { return new OXMSingleValueOP(*this); }
    std::unique_ptr<OXMPropertyValue> saveValue() const override
    {
        return std::make_unique<OXMTypedPropertyValue<Storage>>(mValue);
    }
    bool restoreValue(const OXMPropertyValue& value) override
    {
        const Storage* s = value.get<Storage>();
        return s && storeValue(*s);
    }

protected:
    bool storeValue(Storage value)
    {
        if (isLocked() || !checkValue(value))
            return false;
        if constexpr (IsLink) {
            value.setOwner(nullptr);
            value.setPropertyID(OXMenum());
        }
        if (value == mValue)
            return true;
        if constexpr (IsLink) {
            const OXMObjectLink old = mValue;
            acquireLink(value);
            detachParent(old, getOwner());
            attachParent(value, getOwner());
            commit(std::move(value));
            releaseLink(old); // last: may delete the old object
        } else {
            commit(std::move(value));
        }
        return true;
    }

    void ownerChanged(OXMObject* oldOwner) override
    {
        if constexpr (IsLink) {
            detachParent(mValue, oldOwner);
            attachParent(mValue, getOwner());
        }
    }

private:
    void commit(Storage&& value)
    {
        if (isRecording()) {
            const OXMTypedPropertyValue<Storage> oldValue(mValue);
            mValue = std::move(value);
            const OXMTypedPropertyValue<Storage> newValue(mValue);
            valueChanged(&oldValue, &newValue);
        } else {
            mValue = std::move(value);
            valueChanged(nullptr, nullptr);
        }
    }

    Storage mDefault{};
    Storage mValue{};
    std::vector<Storage> mAllowed;
};
