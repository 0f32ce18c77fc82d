#pragma once

#include "OvDatabase.h"

#include <rnlib/RnHandle.h>

class OvMeta;

/// The application's calls to its database, which is the OvDatabase in force.
class OvWebServices : public RnHandable
{
public:
    /// \a inMeta is not used and may be null.
    explicit OvWebServices(OvMeta* inMeta);

    /// Runs the procedure \a name and waits for its end. \a rows and \a columnTypes get what OvDatabase
    /// tells, and are empty after a failure. Without a database, and when the call throws, it fails, too.
    RnResult execStoredProcedure(const std::string& name,
                                 const std::map<std::string, std::optional<std::string>>& parameters,
                                 std::vector<std::vector<std::optional<std::string>>>& rows,
                                 std::vector<std::string>& columnTypes);
};
