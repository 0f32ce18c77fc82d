#pragma once

#include <rnlib/RnContract.h>

#include <QList>
#include <QString>

#include <mutex>

/// Fails a test on any contract report that was not expected, and on an expected one that did not come.
///
/// Made in a test's init() or at the start of its function, and ended before the test ends. The destructor
/// verifies too, so that a test can't forget it.
class ContractWatch final : public RnContractObserver
{
public:
    ContractWatch() = default;
    ~ContractWatch() override;

    /// The next report expected, after those expected before, has this condition and this message. Without a
    /// message the report must have none.
    void expect(const QString& inCondition, const QString& inMessage = QString());

    /// Empty when exactly the expected reports came, in their order; else what was expected and what came.
    /// Forgets both.
    [[nodiscard]] QString verify();

    /// What came since the start or the last verify().
    QList<RnContractReport> reports() const;

    void contractBroken(const RnContractReport& inReport) override;

private:
    mutable std::mutex mMutex;
    QList<RnContractReport> mExpected;
    QList<RnContractReport> mReports;
};
