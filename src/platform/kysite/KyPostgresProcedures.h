#pragma once

#include "KySqlConnection.h"

#include <ovbase/OvDatabase.h>

/// Stored procedures over PostgreSQL: a procedure is a function of the database, called with named
/// parameters.
///
/// Names are those of SQL without quotes: the case of their letters does not matter, and a schema may stand
/// in front of a procedure's, with a dot. Values are bound and never pasted into the text; the database makes
/// them into the types of the parameters. The rows and columns are those of "select * from" the function;
/// one that returns void gives none.
class KyPostgresProcedures final : public OvDatabase
{
public:
    explicit KyPostgresProcedures(KyDatabaseSettings inSettings);

    /// Connects at the first call, and again when the connection has been lost. A call during which it is
    /// lost fails, since nobody can tell what has become of it.
    RnResult execStoredProcedure(const std::string& inName, const Parameters& inParameters, Rows& outRows,
                                 std::vector<std::string>& outColumnTypes) override;

private:
    KySqlConnection mConnection;
};
