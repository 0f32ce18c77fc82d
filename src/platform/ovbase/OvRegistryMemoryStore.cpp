#include "OvRegistryMemoryStore.h"

bool OvRegistryMemoryStore::apply(const Change& inChange)
{
    merge(inChange, mContent);
    return true;
}
