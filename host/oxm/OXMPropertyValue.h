#pragma once

#include "OXMObjectLink.h"
#include "OXMObjectPtr.h"

#include <memory>
#include <type_traits>
#include <vector>

template <typename S>
class OXMTypedPropertyValue;

// A property value detached from its property: what the undo recorder receives and what
// saveValue / restoreValue exchange. Single values are kept in the property's storage type
// (QByteArray for strings), arrays as std::vector of it.
class OXMPropertyValue
{
public:
    virtual ~OXMPropertyValue() = default;
    virtual std::unique_ptr<OXMPropertyValue> clone() const = 0;
    virtual bool equals(const OXMPropertyValue& other) const = 0;

    // The value if it is kept as S, else null.
    template <typename S>
    const S* get() const
    {
        auto* t = dynamic_cast<const OXMTypedPropertyValue<S>*>(this);
        return t ? &t->value() : nullptr;
    }
};

template <typename S>
class OXMTypedPropertyValue : public OXMPropertyValue
{
public:
    explicit OXMTypedPropertyValue(const S& value) : mValue(value) { holdObjects(); }
    OXMTypedPropertyValue(const OXMTypedPropertyValue& other)
        : OXMPropertyValue(), mValue(other.mValue)
    {
        holdObjects();
    }
    OXMTypedPropertyValue& operator=(const OXMTypedPropertyValue&) = delete;

    const S& value() const { return mValue; }
    std::unique_ptr<OXMPropertyValue> clone() const override
    {
        return std::make_unique<OXMTypedPropertyValue>(*this);
    }
    bool equals(const OXMPropertyValue& other) const override
    {
        const S* o = other.get<S>();
        return o && *o == mValue;
    }

private:
    void hold(const OXMObjectLink& link)
    {
        if (link.getLink())
            mHeld.emplace_back(link.getLink());
        if (link.getAuxLink())
            mHeld.emplace_back(link.getAuxLink());
    }
    void holdObjects()
    {
        if constexpr (std::is_same<S, OXMObjectLink>::value) {
            hold(mValue);
        } else if constexpr (std::is_same<S, std::vector<OXMObjectLink>>::value) {
            for (const OXMObjectLink& l : mValue)
                hold(l);
        }
    }

    S mValue;
    std::vector<OXMObjectPtr> mHeld; // links keep their objects alive
};
