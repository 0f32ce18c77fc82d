#pragma once

#include "OvSerializer.h"

/// Keeps properties in the process's OvRegistry, under their ids and in the form of toQString(). Without a
/// registry nothing is stored and nothing is found.
class OvRegistrySerializer final : public OvSerializer
{
public:
    bool write(const OvVariant& inProperty, int inPriority) override;
    /// A text that the property can't read is logged at level 2.
    bool read(OvVariant& ioProperty) override;
};
