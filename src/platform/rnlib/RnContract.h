#pragma once

#include <string>

/// What a contract check was about.
enum class RnContractType
{
    Precondition,
    Postcondition,
    Invariant,
    Check
};

/// One contract report.
struct RnContractReport
{
    RnContractType type = RnContractType::Check;
    std::string condition; ///< Source text of the check, or "0" or "false" for a branch never to be reached.
    std::string file;
    int line = 0;
    std::string function;
    std::string message; ///< Optional further text.
};

/// Somebody who hears of contract reports: the host's log, a test that counts them.
///
/// Construction begins the observation and destruction ends it; the owner is whoever made the object.
/// contractBroken() comes on the thread that reports, one call at a time. A report made from inside it is
/// dropped. An observer may end itself or another one from inside it.
///
/// Observers are made and ended while no other thread reports: at start-up and at shutdown.
class RnContractObserver
{
public:
    RnContractObserver();
    virtual ~RnContractObserver();
    RnContractObserver(const RnContractObserver&) = delete;
    RnContractObserver& operator=(const RnContractObserver&) = delete;

    /// Hears of one report. It may log.
    virtual void contractBroken(const RnContractReport& inReport) = 0;
};

/// Reports a broken contract to all observers and returns; the code behind it goes on with a defined result.
/// Without an observer the report becomes a log line of level 3 with the context "Contract". Null texts count
/// as empty. May be called from any thread; a report made while the thread is inside a sink of the log only
/// becomes the log line.
void dbc_event(RnContractType inType, const char* inCondition, const char* inFile, int inLine,
               const char* inFunction, const char* inMessage = nullptr);

/// Text of a report for a log: `Contract broken: CONDITION (MESSAGE) in FUNCTION, FILE:LINE`.
std::string toString(const RnContractReport& inReport);

/// Reports a contract whose condition is \a condition when it does not hold; the value is whether it holds.
#define dbc_holds(condition)                                                                                 \
    ((condition)                                                                                             \
         ? true                                                                                              \
         : (dbc_event(RnContractType::Check, #condition, __FILE__, __LINE__, __func__, nullptr), false))

/// Reports a contract with the condition text and the message given, unconditionally.
#define dbc_report(condition, message)                                                                       \
    dbc_event(RnContractType::Check, condition, __FILE__, __LINE__, __func__, message)
