#pragma once

#include "OXMProperty.h"

#include <vector>

// Typed access to an array property. Index ranges are inclusive: an array of n items has
// the range 0..n-1 (0..-1 when empty).
template <typename T>
class OXMValueArrayPropertyIF
{
public:
    virtual ~OXMValueArrayPropertyIF() = default;

    static OXMValueArrayPropertyIF* getInterface(OXMProperty* property)
    {
        return dynamic_cast<OXMValueArrayPropertyIF*>(property);
    }
    static const OXMValueArrayPropertyIF* getInterface(const OXMProperty* property)
    {
        return dynamic_cast<const OXMValueArrayPropertyIF*>(property);
    }

    virtual int getArraySize() const = 0;
    virtual bool getArrayIndexRange(int& first, int& last) const = 0;
    // Copies items first..last into items; false unless the range lies inside the array.
    virtual bool getArrayItems(int first, int last, T* items) const = 0;
    // Overwrites items first..last; the range may extend the array at its end
    // (0 <= first <= size). False for other ranges or a locked property.
    virtual bool setArrayItems(int first, int last, const T* items) = 0;
    // Replaces the whole array with the items 0..last (first must be 0; last -1 empties it).
    virtual bool initArray(int first, int last, const T* items) = 0;

    // The items from the first index to the last, whatever the first index is.
    std::vector<T> getArray() const
    {
        int first = 0;
        int last = -1;
        std::vector<T> items;
        if (getArrayIndexRange(first, last) && last >= first) {
            items.resize(static_cast<std::size_t>(last - first + 1));
            if (!getArrayItems(first, last, items.data()))
                items.clear();
        }
        return items;
    }
    bool setArray(const std::vector<T>& items)
    {
        return initArray(0, int(items.size()) - 1, items.data());
    }
};
