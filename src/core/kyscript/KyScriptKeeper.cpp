#include "KyScriptKeeper.h"

#include <QtCore/QEvent>

#include <utility>

/// A deletion that comes when the event loop is next free to delete. An object of its own for each, since an
/// object is given only one: Qt passes over a second deleteLater().
class KyScriptKeeper::Deletion final : public QObject
{
public:
    explicit Deletion(KyScriptKeeper* inKeeper)
        : QObject(inKeeper)
        , mKeeper(inKeeper)
    {
        deleteLater();
    }

    bool event(QEvent* inEvent) override
    {
        if (inEvent->type() != QEvent::DeferredDelete)
            return QObject::event(inEvent);
        mKeeper->isToWait() ? delete this : delete mKeeper->parent();
        return true;
    }

private:
    KyScriptKeeper* const mKeeper;
};

KyScriptKeeper::KyScriptKeeper(QObject* inKept)
    : QObject(inKept)
{
    inKept->installEventFilter(this);
}

bool KyScriptKeeper::eventFilter(QObject*, QEvent* inEvent)
{
    return inEvent->type() == QEvent::DeferredDelete && isToWait();
}

bool KyScriptKeeper::isToWait()
{
    mIsDue = mDepth > 0;
    return mIsDue;
}

KyScriptKeeper::Scope::Scope(KyScriptKeeper* inKeeper)
    : mKeeper(inKeeper)
{
    ++mKeeper->mDepth;
}

KyScriptKeeper::Scope::~Scope()
{
    if (mKeeper && --mKeeper->mDepth == 0 && std::exchange(mKeeper->mIsDue, false))
        new Deletion(mKeeper);
}
