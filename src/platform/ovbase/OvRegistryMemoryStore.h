#pragma once

#include "OvRegistryStore.h"

/// Layers that last as long as this object. Handed from one registry to the next, it stands for a restart.
class OvRegistryMemoryStore final : public OvRegistryStore
{
public:
    const Content& content() override { return mContent; }
    /// Always true.
    bool apply(const Change& inChange) override;

private:
    Content mContent;
};
