#include "OXMIndexedFloatArrayOP.h"

OXMIndexedFloatArrayOP::OXMIndexedFloatArrayOP(const OXMIndexedFloatArrayOP& other)
    : OXMValueArrayOP<float>(other), mFirst(other.mFirst)
{
}

OXMIndexedFloatArrayOP& OXMIndexedFloatArrayOP::operator=(const OXMIndexedFloatArrayOP& other)
{
    if (this != &other) {
        mFirst = other.mFirst;
        OXMValueArrayOP<float>::operator=(other);
    }
    return *this;
}

bool OXMIndexedFloatArrayOP::getArrayIndexRange(int& first, int& last) const
{
    first = mFirst;
    last = mFirst + getArraySize() - 1;
    return true;
}

bool OXMIndexedFloatArrayOP::getArrayItems(int first, int last, float* items) const
{
    return OXMValueArrayOP<float>::getArrayItems(first - mFirst, last - mFirst, items);
}

bool OXMIndexedFloatArrayOP::setArrayItems(int first, int last, const float* items)
{
    return OXMValueArrayOP<float>::setArrayItems(first - mFirst, last - mFirst, items);
}

bool OXMIndexedFloatArrayOP::initArray(int first, int last, const float* items)
{
    if (last < first - 1 || (last >= first && !items) || isLocked())
        return false;
    const int n = last - first + 1;
    if (first == mFirst)
        return OXMValueArrayOP<float>::initArray(0, n - 1, items);
    // A new first index is a change even when the values stay.
    const bool sameValues =
        n == getArraySize() &&
        std::equal(items, items + n, getStoredArray().begin(), getStoredArray().end());
    mFirst = first;
    if (sameValues) {
        valueChanged(nullptr, nullptr);
        return true;
    }
    return OXMValueArrayOP<float>::initArray(0, n - 1, items);
}

bool OXMIndexedFloatArrayOP::assignFrom(const OXMProperty& source)
{
    auto* s = dynamic_cast<const OXMIndexedFloatArrayOP*>(&source);
    if (!s)
        return OXMValueArrayOP<float>::assignFrom(source);
    const std::vector<float>& v = s->getStoredArray();
    return initArray(s->mFirst, s->mFirst + int(v.size()) - 1, v.data());
}
