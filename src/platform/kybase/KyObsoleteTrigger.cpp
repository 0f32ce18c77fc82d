#include "KyObsoleteTrigger.h"

KyObsoleteTrigger::KyObsoleteTrigger(const char* inDecorationKey)
    : UnDeletable(inDecorationKey)
{}

void KyObsoleteTrigger::setActivatable(bool inActivatable)
{
    mIsActivatable = inActivatable;
    setActive(isActive());
    refreshUIs();
}
