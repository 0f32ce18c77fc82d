#include "OvBackendPeer.h"

namespace {

const OvUserRights* sRights = nullptr;

} // namespace

OvUserRights::OvUserRights()
{
    sRights = this;
}

OvUserRights::~OvUserRights()
{
    if (sRights == this)
        sRights = nullptr;
}

bool OvBackendPeer::userLevel(int& id, std::string& name, const char*)
{
    id = sRights ? sRights->level : 0;
    name = sRights ? sRights->levelName : std::string();
    return sRights != nullptr;
}

std::vector<Ovg::GroupInfo> OvBackendPeer::orvaneLocalGroups()
{
    return sRights ? sRights->groups : std::vector<Ovg::GroupInfo>();
}
