#include "KySeriesVolume.h"

#include <QtConcurrent/QtConcurrentRun>
#include <QtCore/QPromise>

#include <map>

namespace {

using Content = std::shared_ptr<OvVolumeContent>;

/// Those that are shared, by their files.
std::map<QStringList, std::weak_ptr<KySeriesVolume>>& shared()
{
    static std::map<QStringList, std::weak_ptr<KySeriesVolume>> volumes;
    return volumes;
}

void readVolume(QPromise<Content>& ioPromise, const QStringList& inPaths,
                const std::shared_ptr<Ovg::InstanceFiles>& inFiles)
{
    if (inFiles)
        inFiles->provide(inPaths, [&](int, int) { return !ioPromise.isCanceled(); });
    const Content content = OvVolumeContent::read(inPaths);
    ioPromise.addResult(content);
    ioPromise.setProgressRange(0, content->count());
    content->loadPixels([&](int done, int) {
        ioPromise.setProgressValue(done);
        return !ioPromise.isCanceled();
    });
}

} // namespace

std::shared_ptr<KySeriesVolume> KySeriesVolume::of(const Ovg::DicomSeries& inSeries, Reading inReading)
{
    QStringList paths;
    for (const Ovg::DicomInstance& instance : inSeries.instances)
        paths.append(instance.path);
    std::erase_if(shared(), [](const auto& row) { return row.second.expired(); });
    std::weak_ptr<KySeriesVolume>& known = shared()[paths];
    auto volume = known.lock();
    if (!volume || volume->mReading != inReading) {
        volume.reset(new KySeriesVolume(inSeries, inReading));
        known = volume;
    }
    return volume;
}

KySeriesVolume::KySeriesVolume(const Ovg::DicomSeries& inSeries, Reading inReading)
    : mFiles(Ovg::InstanceFiles::instance())
    , mReading(inReading)
{
    for (const Ovg::DicomInstance& instance : inSeries.instances)
        mPaths.append(instance.path);
    if (mReading == Reading::OnDemand)
        return;
    using Watcher = QFutureWatcherBase;
    connect(&mWatcher, &Watcher::resultReadyAt, this, [this](int index) { take(mWatcher.resultAt(index)); });
    connect(&mWatcher, &Watcher::progressValueChanged, this, [this](int done) {
        mDone = done;
        Q_EMIT progressed(mDone, mTotal);
    });
    connect(&mWatcher, &Watcher::finished, this, [this] {
        mDone = mTotal;
        mIsLoading = false;
        Q_EMIT finished();
    });
    mIsLoading = true;
    mWatcher.setFuture(QtConcurrent::run(readVolume, mPaths, mFiles));
}

/// The thread keeps what it works on and ends by itself, soon.
KySeriesVolume::~KySeriesVolume()
{
    mWatcher.disconnect(this);
    mWatcher.cancel();
}

void KySeriesVolume::take(const Content& inContent)
{
    mVolume = new OvImageVolume(inContent);
    mTotal = inContent->count();
    Q_EMIT headersRead();
}

OvImageVolume* KySeriesVolume::volume()
{
    if (!mVolume && mReading == Reading::OnDemand && mFiles)
        mFiles->provide(mPaths);
    if (!mVolume && mReading == Reading::OnDemand)
        take(OvVolumeContent::read(mPaths));
    return mVolume.get();
}
