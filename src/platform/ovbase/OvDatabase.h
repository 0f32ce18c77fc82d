#pragma once

#include <rnlib/RnResult.h>

#include <functional>
#include <map>
#include <optional>
#include <string>
#include <vector>

/// The database behind OvWebServices (port).
///
/// Somebody's object: the host makes one. Construction makes it the one that instance() finds, in place of an
/// older one; destruction ends that. GUI thread.
class OvDatabase
{
public:
    /// By name, in Latin-1; an absent value is NULL.
    using Parameters = std::map<std::string, std::optional<std::string>>;
    using Row = std::vector<std::optional<std::string>>;
    using Rows = std::vector<Row>;

    OvDatabase();
    virtual ~OvDatabase();
    OvDatabase(const OvDatabase&) = delete;
    OvDatabase& operator=(const OvDatabase&) = delete;

    /// Null when this client has no database.
    static OvDatabase* instance();

    /// Runs the procedure \a inName. Values are text in Latin-1, an absent one is NULL; \a outColumnTypes
    /// gets one type word for each column, in lower case: "bit" ("True" or "False"), "smallint", "int",
    /// "tinyint", "bigint", "float", "real", "datetime", "smalldatetime", "datetime2", "datetimeoffset" (ISO
    /// 8601, with milliseconds where there are any, and with the offset where the database has one), or any
    /// other word for text. Both outputs are empty at the call. A failure carries the message of the
    /// database.
    virtual RnResult execStoredProcedure(const std::string& inName, const Parameters& inParameters,
                                         Rows& outRows, std::vector<std::string>& outColumnTypes) = 0;
};

/// A database in memory: its procedures are functions of the process.
class OvMemoryDatabase final : public OvDatabase
{
public:
    using Procedure = std::function<RnResult(const Parameters&, Rows&, std::vector<std::string>&)>;

    /// An older procedure of that name is replaced.
    void add(const std::string& inName, Procedure inProcedure);

    RnResult execStoredProcedure(const std::string& inName, const Parameters& inParameters, Rows& outRows,
                                 std::vector<std::string>& outColumnTypes) override;

private:
    std::map<std::string, Procedure> mProcedures;
};
