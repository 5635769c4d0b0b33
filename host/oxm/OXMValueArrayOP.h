#pragma once

#include "OXMObjectLink.h"
#include "OXMPropertyValue.h"
#include "OXMValueArrayPropertyIF.h"
#include "OXMValueTraits.h"

#include <type_traits>
#include <utility>
#include <vector>

// An array property of items of type T (not bool). initArray replaces the whole array,
// setArrayItems a range of it. With isParentLink() an array of links makes its object the
// parent of every linked object.
template <typename T>
class OXMValueArrayOP : public OXMProperty, public OXMValueArrayPropertyIF<T>
{
public:
    using Traits = OXMValueTraits<T>;
    using Storage = typename Traits::Storage;
    using Array = std::vector<Storage>;
    static constexpr bool IsLink = std::is_same<Storage, OXMObjectLink>::value;

    OXMValueArrayOP() = default;
    OXMValueArrayOP(const OXMValueArrayOP& other)
        : OXMProperty(other), OXMValueArrayPropertyIF<T>(), mDefault(other.mDefault)
    {
        const bool wasLocked = isLocked();
        lock(false);
        storeArray(Array(other.mValues));
        lock(wasLocked);
    }
    OXMValueArrayOP& operator=(const OXMValueArrayOP& other)
    {
        if (this != &other)
            storeArray(Array(other.mValues));
        return *this;
    }
    ~OXMValueArrayOP() override
    {
        if constexpr (IsLink) {
            for (const OXMObjectLink& l : mValues) {
                detachParent(l, getOwner());
                releaseLink(l);
            }
        }
    }

    int getArraySize() const override { return int(mValues.size()); }
    bool getArrayIndexRange(int& first, int& last) const override
    {
        first = 0;
        last = int(mValues.size()) - 1;
        return true;
    }
    bool getArrayItems(int first, int last, T* items) const override
    {
        if (first < 0 || last < first || last >= int(mValues.size()) || !items)
            return false;
        for (int i = first; i <= last; ++i)
            items[i - first] = item(i);
        return true;
    }
    bool setArrayItems(int first, int last, const T* items) override
    {
        const int n = int(mValues.size());
        if (first < 0 || first > n || last < first || !items || isLocked())
            return false;
        if (last < n) {
            bool same = true;
            for (int i = first; i <= last && same; ++i)
                same = canonical(Traits::toStorage(items[i - first])) == mValues[std::size_t(i)];
            if (same)
                return true;
        }
        Array values = mValues;
        if (last >= n)
            values.resize(std::size_t(last) + 1);
        for (int i = first; i <= last; ++i)
            values[std::size_t(i)] = canonical(Traits::toStorage(items[i - first]));
        return storeArray(std::move(values));
    }
    bool initArray(int first, int last, const T* items) override
    {
        if (first != 0 || last < -1 || (last >= 0 && !items))
            return false;
        Array values;
        values.reserve(std::size_t(last + 1));
        for (int i = 0; i <= last; ++i)
            values.push_back(canonical(Traits::toStorage(items[i])));
        return storeArray(std::move(values));
    }

    const Array& getStoredArray() const { return mValues; }
    void setDefaultArray(const std::vector<T>& values)
    {
        mDefault.clear();
        for (const T& v : values)
            mDefault.push_back(canonical(Traits::toStorage(v)));
    }
    // Rules for a whole new array; the base accepts every array.
    virtual bool checkArray(const Array&) const { return true; }

    bool reset() override { return storeArray(Array(mDefault)); }
    bool assignFrom(const OXMProperty& source) override
    {
        auto* s = dynamic_cast<const OXMValueArrayOP*>(&source);
        return s && storeArray(Array(s->mValues));
    }
    OXMProperty* clone() const override { return new OXMValueArrayOP(*this); }
    std::unique_ptr<OXMPropertyValue> saveValue() const override
    {
        return std::make_unique<OXMTypedPropertyValue<Array>>(mValues);
    }
    bool restoreValue(const OXMPropertyValue& value) override
    {
        const Array* a = value.get<Array>();
        return a && storeArray(Array(*a));
    }

protected:
    bool storeArray(Array values)
    {
        if (isLocked() || !checkArray(values))
            return false;
        if (values == mValues)
            return true;
        if constexpr (IsLink) {
            const Array old = mValues;
            for (const OXMObjectLink& l : values)
                acquireLink(l);
            for (const OXMObjectLink& l : old)
                detachParent(l, getOwner());
            for (const OXMObjectLink& l : values)
                attachParent(l, getOwner());
            commit(std::move(values));
            for (const OXMObjectLink& l : old)
                releaseLink(l); // last: may delete old objects
        } else {
            commit(std::move(values));
        }
        return true;
    }

    void ownerChanged(OXMObject* oldOwner) override
    {
        if constexpr (IsLink) {
            for (const OXMObjectLink& l : mValues) {
                detachParent(l, oldOwner);
                attachParent(l, getOwner());
            }
        }
    }

private:
    static Storage canonical(Storage s)
    {
        if constexpr (IsLink) {
            s.setOwner(nullptr);
            s.setPropertyID(OXMenum());
        }
        return s;
    }
    T item(int i) const
    {
        if constexpr (IsLink) {
            OXMObjectLink l = mValues[std::size_t(i)];
            l.setOwner(getOwner());
            l.setPropertyID(getID());
            return l;
        } else {
            return Traits::fromStorage(mValues[std::size_t(i)]);
        }
    }
    void commit(Array&& values)
    {
        if (isRecording()) {
            const OXMTypedPropertyValue<Array> oldValue(mValues);
            mValues = std::move(values);
            const OXMTypedPropertyValue<Array> newValue(mValues);
            valueChanged(&oldValue, &newValue);
        } else {
            mValues = std::move(values);
            valueChanged(nullptr, nullptr);
        }
    }

    Array mDefault;
    Array mValues;
};
