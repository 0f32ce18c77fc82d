#include "KyWorklistStore.h"

namespace {

KyWorklistStore* sInstance = nullptr;

} // namespace

KyWorklistStore::KyWorklistStore()
{
    sInstance = this;
}

KyWorklistStore::~KyWorklistStore()
{
    if (sInstance == this)
        sInstance = nullptr;
}

KyWorklistStore* KyWorklistStore::instance()
{
    return sInstance;
}
