#pragma once

#include <ovbase/OvBackend.h>

#include <QtCore/QObject>
#include <QtCore/QThread>

#include <memory>

class KyBackendScript;

/// The embedded backend: classes of JavaScript from a folder, in a thread of their own. See KyBackendScript
/// for what a class is.
///
/// Calls run one after the other, in the order in which they came. One that takes too long is ended and
/// fails; the next one runs. What classes print by console.log goes to the log of Qt. GUI thread.
class KyWorkerBackend final : public QObject, public OvBackend
{
    Q_OBJECT

public:
    explicit KyWorkerBackend(QString inFolder, int inTimeoutSeconds = 60);
    /// Ends the call that is running; it and those that wait fail.
    ~KyWorkerBackend() override;

    void start(const OvBackendCall& inCall, const Reply& inReply) override;

private:
    struct Worker;

    /// Ends the call of that number, if it still runs.
    void end(quint64 inNumber);

    const int mTimeoutSeconds;
    QThread mThread;
    const std::shared_ptr<Worker> mWorker;
    quint64 mLastNumber = 0;
};
