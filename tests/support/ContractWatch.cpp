#include "ContractWatch.h"

#include <QStringList>
#include <QTest>

#include <algorithm>
#include <utility>

namespace {

bool matches(const RnContractReport& inExpected, const RnContractReport& inCame)
{
    return inExpected.condition == inCame.condition && inExpected.message == inCame.message;
}

QString expectedText(const RnContractReport& inReport)
{
    const QString condition = QString::fromStdString(inReport.condition);
    const QString message = QString::fromStdString(inReport.message);
    return message.isEmpty() ? condition : QStringLiteral("%1 (%2)").arg(condition, message);
}

QString cameText(const RnContractReport& inReport)
{
    return QStringLiteral("%1 in %2, %3:%4")
        .arg(expectedText(inReport), QString::fromStdString(inReport.function),
             QString::fromStdString(inReport.file), QString::number(inReport.line));
}

template <class ToText>
QString listText(const QList<RnContractReport>& inReports, ToText inToText)
{
    QStringList texts;
    for (const RnContractReport& report : inReports)
        texts.append(inToText(report));
    return texts.isEmpty() ? QStringLiteral("none") : texts.join(QStringLiteral("; "));
}

} // namespace

ContractWatch::~ContractWatch()
{
    const QByteArray difference = verify().toUtf8();
    if (difference.isEmpty())
        return;
    // Outside a test function nothing but the end of the process makes the failure seen.
    if (!QTest::currentTestFunction())
        qFatal("%s", difference.constData());
    QTest::qFail(difference.constData(), __FILE__, __LINE__);
}

void ContractWatch::expect(const QString& inCondition, const QString& inMessage)
{
    RnContractReport report;
    report.condition = inCondition.toStdString();
    report.message = inMessage.toStdString();
    const std::lock_guard lock(mMutex);
    mExpected.append(report);
}

QString ContractWatch::verify()
{
    const std::lock_guard lock(mMutex);
    const QList<RnContractReport> expected = std::exchange(mExpected, {});
    const QList<RnContractReport> came = std::exchange(mReports, {});
    if (std::equal(expected.begin(), expected.end(), came.begin(), came.end(), matches))
        return {};
    return QStringLiteral("Contract reports expected: %1. Came: %2.")
        .arg(listText(expected, expectedText), listText(came, cameText));
}

QList<RnContractReport> ContractWatch::reports() const
{
    const std::lock_guard lock(mMutex);
    return mReports;
}

void ContractWatch::contractBroken(const RnContractReport& inReport)
{
    const std::lock_guard lock(mMutex);
    mReports.append(inReport);
}
