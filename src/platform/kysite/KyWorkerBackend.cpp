#include "KyWorkerBackend.h"

#include "KyBackendScript.h"

#include <rnlib/RnLogFile.h>

#include <QtCore/QMutex>
#include <QtCore/QTimer>

namespace {

constexpr int StackSize =
    16 << 20; // endless recursion is a RangeError only with as much as the main thread has
constexpr int EndMilliseconds = 10000;

} // namespace

/// Lives on the thread of the calls, but for what the mutex guards.
struct KyWorkerBackend::Worker
{
    /// Takes the events of the thread; the script is made and ended there.
    QObject* const context = new QObject;
    const QString folder;

    QMutex mutex;
    std::unique_ptr<KyBackendScript> script;
    quint64 running = 0; ///< Number of the call; 0 for none.
    bool isClosing = false;
    bool isTooLong = false;

    explicit Worker(QString inFolder)
        : folder(std::move(inFolder))
    {}

    bool begin(quint64 inNumber)
    {
        const QMutexLocker lock(&mutex);
        if (isClosing)
            return false;
        if (!script)
            script = std::make_unique<KyBackendScript>(folder);
        script->setInterrupted(false);
        running = inNumber;
        isTooLong = false;
        return true;
    }

    /// Whether it was ended for its time.
    bool finish()
    {
        const QMutexLocker lock(&mutex);
        running = 0;
        return isTooLong;
    }
};

KyWorkerBackend::KyWorkerBackend(QString inFolder, int inTimeoutSeconds)
    : mTimeoutSeconds(inTimeoutSeconds)
    , mWorker(std::make_shared<Worker>(std::move(inFolder)))
{
    mThread.setObjectName(QStringLiteral("Backend"));
    mThread.setStackSize(StackSize);
    mWorker->context->moveToThread(&mThread);
    connect(&mThread, &QThread::finished, mWorker->context, [worker = mWorker.get()] {
        worker->script.reset();
        worker->context->deleteLater();
    });
    mThread.start();
}

KyWorkerBackend::~KyWorkerBackend()
{
    {
        const QMutexLocker lock(&mWorker->mutex);
        mWorker->isClosing = true;
        if (mWorker->script)
            mWorker->script->setInterrupted(true);
    }
    mThread.quit();
    if (mThread.wait(EndMilliseconds))
        return;
    getTheLogInstance().trace(3, "Backend", "A backend script does not end; its thread is ended by force");
    mThread.terminate();
    mThread.wait();
}

void KyWorkerBackend::start(const OvBackendCall& inCall, const Reply& inReply)
{
    const quint64 number = ++mLastNumber;
    QMetaObject::invokeMethod(
        mWorker->context,
        [this, worker = mWorker, number, call = inCall, reply = inReply] {
            if (!worker->begin(number)) {
                reply->fail(QStringLiteral("The backend has ended"));
                return;
            }
            QMetaObject::invokeMethod(this, [this, number] {
                QTimer::singleShot(mTimeoutSeconds * 1000, this, [this, number] { end(number); });
            });
            const OvBackendReply::Answer answer = worker->script->call(call);
            if (worker->finish())
                reply->fail(QStringLiteral("%1.%2 took longer than %3 seconds")
                                .arg(QString::fromStdString(call.className),
                                     QString::fromStdString(call.methodName),
                                     QString::number(mTimeoutSeconds)));
            else if (!answer.isOk)
                reply->fail(answer.text);
            else if (answer.noResult)
                reply->succeed();
            else
                reply->succeed(answer.text);
        },
        Qt::QueuedConnection);
}

void KyWorkerBackend::end(quint64 inNumber)
{
    const QMutexLocker lock(&mWorker->mutex);
    if (mWorker->running != inNumber)
        return;
    mWorker->isTooLong = true;
    mWorker->script->setInterrupted(true);
}
