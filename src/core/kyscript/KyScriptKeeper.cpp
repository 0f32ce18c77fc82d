#include "KyScriptKeeper.h"

#include <QtCore/QEvent>

KyScriptKeeper::KyScriptKeeper(QObject* inKept)
    : QObject(inKept)
{
    inKept->installEventFilter(this);
}

bool KyScriptKeeper::eventFilter(QObject*, QEvent* inEvent)
{
    if (inEvent->type() != QEvent::DeferredDelete || mDepth == 0)
        return false;
    mIsDue = true;
    return true;
}

KyScriptKeeper::Scope::Scope(KyScriptKeeper* inKeeper)
    : mKeeper(inKeeper)
{
    ++mKeeper->mDepth;
}

KyScriptKeeper::Scope::~Scope()
{
    if (mKeeper && --mKeeper->mDepth == 0 && mKeeper->mIsDue)
        mKeeper->parent()->deleteLater();
}
