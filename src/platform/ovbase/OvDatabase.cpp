#include "OvDatabase.h"

namespace {

OvDatabase* sInstance = nullptr;

} // namespace

OvDatabase::OvDatabase()
{
    sInstance = this;
}

OvDatabase::~OvDatabase()
{
    if (sInstance == this)
        sInstance = nullptr;
}

OvDatabase* OvDatabase::instance()
{
    return sInstance;
}

void OvMemoryDatabase::add(const std::string& inName, Procedure inProcedure)
{
    mProcedures[inName] = std::move(inProcedure);
}

RnResult OvMemoryDatabase::execStoredProcedure(const std::string& inName, const Parameters& inParameters,
                                               Rows& outRows, std::vector<std::string>& outColumnTypes)
{
    const auto procedure = mProcedures.find(inName);
    if (procedure == mProcedures.end() || !procedure->second)
        return RnResult::failure("There is no procedure " + inName);
    return procedure->second(inParameters, outRows, outColumnTypes);
}
