#include "OvRegistry.h"

#include "OvRegistryMemoryStore.h"

#include <rnlib/RnContract.h>

#include <QCoreApplication>

namespace {

OvRegistry* sInstance = nullptr;

/// The value that \a inStore has for \a inId in the layer, or in its highest one; null when there is none.
const OvRegistry::Value* find(OvRegistryStore& inStore, const QString& inId, OvRegistry::Priority inPriority)
{
    const OvRegistryStore::Content& content = inStore.content();
    const auto id = content.constFind(inId);
    if (id == content.constEnd())
        return nullptr;
    if (inPriority == OvRegistry::EffectivePriority)
        return &id->rbegin()->second;
    const auto layer = id->find(inPriority);
    return layer == id->end() ? nullptr : &layer->second;
}

} // namespace

OvRegistry::OvRegistry(std::shared_ptr<OvRegistryStore> inStore)
    : mStore(inStore ? std::move(inStore) : std::make_shared<OvRegistryMemoryStore>())
    , mSession(std::make_unique<OvRegistryMemoryStore>())
{
    sInstance = this;
}

OvRegistry::~OvRegistry()
{
    if (sInstance == this)
        sInstance = nullptr;
}

OvRegistry* OvRegistry::getInstance()
{
    return sInstance;
}

OvRegistryStore& OvRegistry::storeOf(Priority inPriority) const
{
    return inPriority >= SessionPriority ? *mSession : *mStore;
}

bool OvRegistry::getProperty(const QString& inId, Value& outValue, Priority inPriority) const
{
    const Value* found = inPriority == EffectivePriority ? find(*mSession, inId, EffectivePriority) : nullptr;
    if (!found)
        found = find(storeOf(inPriority), inId, inPriority);
    if (found)
        outValue = *found;
    return found != nullptr;
}

bool OvRegistry::setProperty(const QString& inId, const QString& inValue, Priority inPriority)
{
    if (!dbc_holds(inPriority > EffectivePriority))
        return false;
    OvRegistryStore& store = storeOf(inPriority);
    const Value* present = find(store, inId, inPriority);
    if (present && present->value == inValue)
        return true;
    return store.apply({inId, inPriority, Value{inValue, QCoreApplication::applicationName()}});
}

bool OvRegistry::removeProperty(const QString& inId, Priority inPriority)
{
    if (!dbc_holds(inPriority > EffectivePriority))
        return false;
    OvRegistryStore& store = storeOf(inPriority);
    return find(store, inId, inPriority) && store.apply({inId, inPriority, std::nullopt});
}

std::vector<OvRegistry::Priority> OvRegistry::layers(const QString& inId) const
{
    std::vector<Priority> all;
    for (OvRegistryStore* store : {mStore.get(), mSession.get()}) {
        for (const auto& layer : store->content().value(inId))
            all.push_back(layer.first);
    }
    return all;
}
