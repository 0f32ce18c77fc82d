#pragma once

#include <memory>
#include <utility>

/// Owns an object of Qt whose signals lead to scripts.
///
/// A script may end the owner from inside such a signal, be it by destroy() or by a garbage collection in a
/// nested wait. Qt does not survive that the sender of a signal is deleted meanwhile, so the object then
/// lives on until the outermost signal is over, and is deleted by the event loop. Otherwise it goes with its
/// owner, at once.
template <class T>
class KyScriptSender
{
    struct State
    {
        std::unique_ptr<T> object;
    };

public:
    /// Stands in a handler of one of the object's signals, first of all.
    class Handling
    {
    public:
        explicit Handling(const KyScriptSender& inSender)
            : mState(inSender.mState)
        {}
        ~Handling()
        {
            if (mState && mState.use_count() == 1)
                mState->object.release()->deleteLater();
        }
        Handling(const Handling&) = delete;
        Handling& operator=(const Handling&) = delete;

    private:
        const std::shared_ptr<State> mState;
    };

    KyScriptSender() = default;
    explicit KyScriptSender(std::unique_ptr<T> inObject) { reset(std::move(inObject)); }
    KyScriptSender(const KyScriptSender&) = delete;
    KyScriptSender& operator=(const KyScriptSender&) = delete;

    /// Takes another object, or none. The one before is let go when the new one is in its place.
    void reset(std::unique_ptr<T> inObject = nullptr)
    {
        auto state = inObject ? std::make_shared<State>(State{std::move(inObject)}) : nullptr;
        mState.swap(state);
    }

    T* data() const { return mState ? mState->object.get() : nullptr; }
    T* operator->() const { return data(); }
    explicit operator bool() const { return mState != nullptr; }

private:
    std::shared_ptr<State> mState;
};
