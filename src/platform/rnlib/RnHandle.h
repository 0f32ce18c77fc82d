#pragma once

#include "RnContract.h"

#include <atomic>
#include <cstddef>
#include <functional>
#include <type_traits>
#include <utility>

/// Base of reference-counted platform objects that live on one thread.
///
/// The count starts at 0; the first handle makes it 1, and the object deletes itself when the count comes
/// back to 0. An object that no handle ever held may be deleted as any other.
class RnHandable
{
public:
    RnHandable();
    RnHandable(const RnHandable&) = delete;
    RnHandable& operator=(const RnHandable&) = delete;

    void ref() const { ++mCount; }
    /// Deletes the object when this was its last reference. Below 0 is a contract report "mCount > 0".
    void unref() const;
    int refCount() const { return mCount; }

    /// Number of objects of this kind, threaded ones not counted, that exist in the process.
    static std::size_t liveCount();

protected:
    virtual ~RnHandable();

private:
    mutable int mCount = 0;
};

/// The same for objects whose handles live on several threads: the count is atomic.
class RnHandableThreaded
{
public:
    RnHandableThreaded();
    RnHandableThreaded(const RnHandableThreaded&) = delete;
    RnHandableThreaded& operator=(const RnHandableThreaded&) = delete;

    void ref() const { mCount.fetch_add(1, std::memory_order_relaxed); }
    /// Deletes the object when this was its last reference. Below 0 is a contract report "mCount > 0".
    void unref() const;
    int refCount() const { return mCount.load(std::memory_order_relaxed); }

    /// Number of threaded objects that exist in the process.
    static std::size_t liveCount();

protected:
    virtual ~RnHandableThreaded();

private:
    mutable std::atomic<int> mCount{0};
};

/// Counted handle to an object derived from RnHandable or RnHandableThreaded.
///
/// A null handle is normal and tested with `if (handle)`. Dereferencing one is a contract report
/// "isNotNull()"; operator-> gives a null pointer then. operator* has no object to give and must not be used
/// on a null handle.
template <class T>
class RnHandle
{
public:
    RnHandle() = default;
    RnHandle(std::nullptr_t) {}
    RnHandle(T* inObject)
        : mObject(inObject)
    {
        if (mObject)
            mObject->ref();
    }
    RnHandle(const RnHandle& inOther)
        : RnHandle(inOther.mObject)
    {}
    RnHandle(RnHandle&& ioOther) noexcept
        : mObject(std::exchange(ioOther.mObject, nullptr))
    {}
    template <class U>
    requires std::is_convertible_v<U*, T*> RnHandle(const RnHandle<U>& inOther)
        : RnHandle(static_cast<T*>(inOther.get()))
    {}
    ~RnHandle() { reset(); }

    RnHandle& operator=(RnHandle inOther) noexcept
    {
        std::swap(mObject, inOther.mObject);
        return *this;
    }

    void reset()
    {
        if (T* object = std::exchange(mObject, nullptr))
            object->unref();
    }

    T* get() const { return mObject; }
    bool isNull() const { return mObject == nullptr; }
    bool isNotNull() const { return mObject != nullptr; }
    explicit operator bool() const { return isNotNull(); }

    T* operator->() const
    {
        dbc_holds(isNotNull());
        return mObject;
    }
    T& operator*() const
    {
        dbc_holds(isNotNull());
        return *mObject;
    }

    friend bool operator==(const RnHandle& inA, const RnHandle& inB) { return inA.mObject == inB.mObject; }
    friend bool operator<(const RnHandle& inA, const RnHandle& inB)
    {
        return std::less<const T*>()(inA.mObject, inB.mObject);
    }

private:
    T* mObject = nullptr;
};
