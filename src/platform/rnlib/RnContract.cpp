#include "RnContract.h"

#include "RnLogFile.h"

#include <algorithm>
#include <mutex>
#include <vector>

namespace {

struct Observers
{
    /// Recursive, since an observer may end observers from inside its call.
    std::recursive_mutex mutex;
    std::vector<RnContractObserver*> list;
};

/// Never destroyed: reports and observers may come while the process ends.
Observers& observers()
{
    static Observers* const theObservers = new Observers;
    return *theObservers;
}

thread_local bool tReporting = false;

class ReportingScope
{
public:
    ReportingScope() { tReporting = true; }
    ~ReportingScope() { tReporting = false; }
    ReportingScope(const ReportingScope&) = delete;
    ReportingScope& operator=(const ReportingScope&) = delete;
};

std::string textOrEmpty(const char* inText)
{
    return inText ? inText : "";
}

/// False when there was nobody to tell.
bool tellObservers(const RnContractReport& inReport)
{
    Observers& known = observers();
    const std::lock_guard lock(known.mutex);
    const std::vector<RnContractObserver*> told = known.list;
    for (RnContractObserver* observer : told)
        if (std::find(known.list.begin(), known.list.end(), observer) != known.list.end())
            observer->contractBroken(inReport);
    return !told.empty();
}

} // namespace

RnContractObserver::RnContractObserver()
{
    const std::lock_guard lock(observers().mutex);
    observers().list.push_back(this);
}

RnContractObserver::~RnContractObserver()
{
    const std::lock_guard lock(observers().mutex);
    std::erase(observers().list, this);
}

void dbc_event(RnContractType inType, const char* inCondition, const char* inFile, int inLine,
               const char* inFunction, const char* inMessage)
{
    if (tReporting)
        return;
    const ReportingScope scope;
    const RnContractReport report{inType, textOrEmpty(inCondition), textOrEmpty(inFile),
                                  inLine, textOrEmpty(inFunction),  textOrEmpty(inMessage)};
    // Inside a sink the observers' lock must not be waited for: its holder may be waiting for that sink.
    const bool told = !RnLogFile::isWriting() && tellObservers(report);
    if (!told)
        getTheLogInstance().error("Contract", toString(report).c_str());
}

std::string toString(const RnContractReport& inReport)
{
    std::string text = "Contract broken: " + inReport.condition;
    if (!inReport.message.empty())
        text += " (" + inReport.message + ")";
    return text + " in " + inReport.function + ", " + inReport.file + ":" + std::to_string(inReport.line);
}
