#pragma once

#include <QObject>
#include <QPointer>

#include <algorithm>
#include <functional>
#include <memory>
#include <vector>

/// Writes "\a inWhat failed:" and the text of the exception that is being handled to the log, at level 3. For
/// use in a catch block.
void ovLogException(const char* inContext, const char* inWhat);

/// Functions that want to hear of something, in the order in which they were added.
///
/// A function added with a context object is heard as long as that object lives; one with a null context as
/// long as the list. A function may add and remove others, itself included: who is removed is not called any
/// more, who is added is called from the next time on. What a function throws ends in the log and stops
/// nothing. GUI thread.
template <class... Args>
class OvObservers
{
public:
    using Function = std::function<void(Args...)>;

    /// An empty \a inFunction is ignored.
    void add(const QObject* inContext, Function inFunction)
    {
        if (inFunction)
            mEntries.push_back(std::make_shared<Entry>(inContext, std::move(inFunction)));
    }

    /// Drops all functions of the context \a inContext.
    void remove(const QObject* inContext)
    {
        std::erase_if(mEntries, [&](const std::shared_ptr<Entry>& entry) {
            const bool gone = entry->context == inContext;
            entry->isActive = entry->isActive && !gone;
            return gone;
        });
    }

    bool isEmpty() const { return mEntries.empty(); }

    /// Calls the functions. The list itself may end meanwhile.
    void tell(Args... inArgs)
    {
        if (mEntries.empty())
            return;
        std::erase_if(mEntries, [](const std::shared_ptr<Entry>& entry) { return !entry->wants(); });
        const auto entries = mEntries;
        for (const std::shared_ptr<Entry>& entry : entries) {
            if (entry->wants())
                entry->call(inArgs...);
        }
    }

private:
    struct Entry
    {
        Entry(const QObject* inContext, Function inFunction)
            : context(inContext)
            , hasContext(inContext != nullptr)
            , function(std::move(inFunction))
        {}

        bool wants() const { return isActive && (!hasContext || context); }

        void call(Args... inArgs) const
        {
            try {
                function(inArgs...);
            } catch (...) {
                ovLogException("OvObservers", "an observer");
            }
        }

        QPointer<const QObject> context;
        bool hasContext;
        bool isActive = true;
        Function function;
    };

    std::vector<std::shared_ptr<Entry>> mEntries;
};
