#include "OvWebServices.h"

#include "OvObservers.h"

namespace {

RnResult call(const std::string& inName, const OvDatabase::Parameters& inParameters,
              OvDatabase::Rows& outRows, std::vector<std::string>& outColumnTypes)
{
    OvDatabase* database = OvDatabase::instance();
    if (!database)
        return RnResult::failure("This client has no database");
    try {
        return database->execStoredProcedure(inName, inParameters, outRows, outColumnTypes);
    } catch (const std::exception& error) {
        ovLogException("OvWebServices", "a procedure");
        return RnResult::failure(error.what());
    } catch (...) {
        ovLogException("OvWebServices", "a procedure");
        return RnResult::failure("The procedure failed");
    }
}

} // namespace

OvWebServices::OvWebServices(OvMeta*) {}

RnResult OvWebServices::execStoredProcedure(
    const std::string& name, const std::map<std::string, std::optional<std::string>>& parameters,
    std::vector<std::vector<std::optional<std::string>>>& rows, std::vector<std::string>& columnTypes)
{
    rows.clear();
    columnTypes.clear();
    RnResult result = call(name, parameters, rows, columnTypes);
    if (!result.isOk()) {
        rows.clear();
        columnTypes.clear();
    }
    return result;
}
