#include "OvInterface.h"

#include <map>

namespace {

/// Never destroyed, so that objects which outlive the static ones can still leave it.
std::map<RnUniqueID, OvInterface*>& liveObjects()
{
    static auto* const objects = new std::map<RnUniqueID, OvInterface*>;
    return *objects;
}

} // namespace

OvInterface::OvInterface()
    : mUniqueID(RnUniqueID::create())
{
    liveObjects().emplace(mUniqueID, this);
}

OvInterface::~OvInterface()
{
    liveObjects().erase(mUniqueID);
}

OvInterface* OvInterface::instanceWithUID(RnUniqueID inId)
{
    const auto found = liveObjects().find(inId);
    return found == liveObjects().end() ? nullptr : found->second;
}

std::size_t OvInterface::numInstances()
{
    return liveObjects().size();
}
