#include "JxProcess.h"

#include "JxEventLoop.h"

#include <QDeadlineTimer>
#include <QList>
#include <QPointer>

#include <algorithm>
#include <limits>

namespace {

/// Processes without an owner, whose programs run. Never destroyed: at the end of the client they stay as
/// they are, since their destruction would end the programs.
QList<JxProcess*>& leftProcesses()
{
    static auto& list = *new QList<JxProcess*>;
    return list;
}

int toMSecs(const QDeadlineTimer& inDeadline)
{
    return int(std::min<qint64>(inDeadline.remainingTime(), std::numeric_limits<int>::max()));
}

} // namespace

JxProcess::JxProcess(QObject* inParent, bool inKeepsOutput)
    : QProcess(inParent)
{
    if (inKeepsOutput)
        return;
    setStandardOutputFile(nullDevice());
    setStandardErrorFile(nullDevice());
}

JxProcess::~JxProcess()
{
    leftProcesses().removeAll(this);
}

bool JxProcess::stableWaitForFinished(int inMSecs)
{
    const QPointer<JxProcess> self(this);
    const QDeadlineTimer deadline(inMSecs < 0 ? QDeadlineTimer(QDeadlineTimer::Forever)
                                              : QDeadlineTimer(inMSecs, Qt::PreciseTimer));
    JxEventLoop loop;
    connect(this, &QProcess::stateChanged, &loop, &QEventLoop::quit);
    connect(this, &QObject::destroyed, &loop, &QEventLoop::quit);
    while (self && state() != NotRunning && !deadline.hasExpired()) {
        // Another value than 0 comes at once from every further loop: the application ends.
        if (loop.exec(toMSecs(deadline)) != 0)
            break;
    }
    // An end that no event has told of yet.
    if (self && state() != NotRunning)
        waitForFinished(0);
    return self && state() == NotRunning;
}

void JxProcess::leave()
{
    if (state() == NotRunning) {
        delete this;
        return;
    }
    setParent(nullptr);
    leftProcesses().append(this);
    connect(this, &QProcess::stateChanged, this, [this](ProcessState inState) {
        if (inState == NotRunning)
            deleteLater();
    });
}
