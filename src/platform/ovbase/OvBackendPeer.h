#pragma once

#include "OvGroupInfo.h"

#include <vector>

/// The record behind OvBackendPeer: what the user of this client may do.
///
/// Somebody's object: the host makes one, and fills and changes its fields at will. Construction makes it the
/// record that OvBackendPeer reads, in place of an older one; destruction ends that.
class OvUserRights
{
public:
    OvUserRights();
    ~OvUserRights();
    OvUserRights(const OvUserRights&) = delete;
    OvUserRights& operator=(const OvUserRights&) = delete;

    int level = 0;
    std::string levelName; ///< Latin-1.
    std::vector<Ovg::GroupInfo> groups;
};

/// What the backend tells of the user, from the host's OvUserRights.
class OvBackendPeer
{
public:
    OvBackendPeer() = delete;

    /// The level of the user: its number, and its name in Latin-1. The third argument is not used and may be
    /// null. False, with 0 and an empty name, when there is no such record.
    static bool userLevel(int& id, std::string& name, const char* inUser);

    /// The groups of the user that this client knows, in their order; empty without the record.
    static std::vector<Ovg::GroupInfo> orvaneLocalGroups();
};
