#pragma once

#include <cstdint>

/// Base of the platform's ids: a number with an order. 0 is the empty id.
class RnIDBase
{
public:
    constexpr RnIDBase() = default;

    constexpr bool isEmpty() const { return mValue == 0; }
    constexpr std::uint64_t value() const { return mValue; }

    constexpr bool operator==(const RnIDBase& inOther) const { return mValue == inOther.mValue; }
    constexpr bool operator<(const RnIDBase& inOther) const { return mValue < inOther.mValue; }

protected:
    constexpr explicit RnIDBase(std::uint64_t inValue)
        : mValue(inValue)
    {}

private:
    std::uint64_t mValue = 0;
};

/// Id of a live platform object, never given twice in one process. Default-constructed it is empty and
/// belongs to nothing.
class RnUniqueID : public RnIDBase
{
public:
    constexpr RnUniqueID() = default;

    /// A new id. May be called from any thread.
    static RnUniqueID create();

private:
    explicit constexpr RnUniqueID(std::uint64_t inValue)
        : RnIDBase(inValue)
    {}
};
