#include "OvRegistryStore.h"

OvRegistryStore::~OvRegistryStore() = default;

void OvRegistryStore::merge(const Change& inChange, Content& ioContent)
{
    if (inChange.value) {
        ioContent[inChange.id][inChange.priority] = *inChange.value;
        return;
    }
    const auto found = ioContent.find(inChange.id);
    if (found == ioContent.end())
        return;
    found->erase(inChange.priority);
    if (found->empty())
        ioContent.erase(found);
}
