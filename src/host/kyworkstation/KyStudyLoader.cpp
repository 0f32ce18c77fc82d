#include "KyStudyLoader.h"

#include <kysite/KyArchive.h>

#include <QtConcurrent/QtConcurrentRun>
#include <QtCore/QPromise>

#include <utility>

namespace {

void readFolder(QPromise<Ovg::StudySourceResult>& ioPromise, const KyStudyLoader::Reader& inReader,
                const QString& inFolder)
{
    const auto progress = [&](int done, int total) {
        ioPromise.setProgressRange(0, total);
        ioPromise.setProgressValue(done);
        return !ioPromise.isCanceled();
    };
    ioPromise.addResult(inReader(inFolder, progress));
}

} // namespace

KyStudyLoader::KyStudyLoader(QObject* inParent)
    : QObject(inParent)
    , mReader(KyArchive::read)
{
    mThread.setMaxThreadCount(1);
    using Watcher = QFutureWatcherBase;
    connect(&mWatcher, &Watcher::progressValueChanged, this,
            [this](int done) { Q_EMIT progressed(done, mWatcher.progressMaximum()); });
    connect(&mWatcher, &Watcher::finished, this, &KyStudyLoader::jobFinished);
}

KyStudyLoader::~KyStudyLoader()
{
    mWatcher.disconnect(this);
    mWatcher.cancel();
    mWatcher.waitForFinished();
}

void KyStudyLoader::load(const QString& inFolder, Kind inKind)
{
    mJobs.enqueue({inFolder, inKind});
    if (!mIsLoading)
        startNext();
}

void KyStudyLoader::cancel()
{
    mJobs.clear();
    mIsCancelled = mIsLoading;
    mWatcher.cancel();
}

void KyStudyLoader::setReader(const Reader& inReader)
{
    mReader = inReader;
}

void KyStudyLoader::startNext()
{
    mIsLoading = true;
    mCurrent = mJobs.dequeue();
    Q_EMIT started(mCurrent.folder);
    mWatcher.setFuture(QtConcurrent::run(&mThread, readFolder, mReader, mCurrent.folder));
}

void KyStudyLoader::jobFinished()
{
    const QFuture<Ovg::StudySourceResult> future = mWatcher.future();
    const bool isCancelled = std::exchange(mIsCancelled, false);
    if (!isCancelled && future.resultCount() > 0)
        Q_EMIT loaded(mCurrent.folder, mCurrent.kind, future.result());
    if (!mJobs.isEmpty()) {
        startNext();
        return;
    }
    mIsLoading = false;
    Q_EMIT finished(isCancelled);
}
