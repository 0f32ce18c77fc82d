#pragma once

#include <ovvolren/OvImageVolume.h>
#include <ovwebservice/DicomSeries.h>
#include <ovwebservice/InstanceFiles.h>

#include <QtCore/QFutureWatcher>
#include <QtCore/QObject>

#include <memory>

/// The volume of one series on its way into memory. Shared by all who show the series; the end of the last
/// share stops the reading. GUI thread only.
class KySeriesVolume : public QObject
{
    Q_OBJECT

public:
    enum class Reading
    {
        InBackground, ///< At once: the headers, then the pixels, in other threads.
        OnDemand,     ///< When the volume is asked for, on the GUI thread, and no pixels.
    };

    /// The volume of that series, the same one for the same files as long as it is shared.
    static std::shared_ptr<KySeriesVolume> of(const Ovg::DicomSeries& inSeries, Reading inReading);
    ~KySeriesVolume() override;

    /// Null until the headers are read; read on demand, never null.
    OvImageVolume* volume();
    /// The same, but never read on demand.
    OvImageVolume* present() const { return mVolume.get(); }

    /// Whether finished() is still to come.
    bool isLoading() const { return mIsLoading; }
    /// Images with pixels, and all; 0 until the headers are read.
    int done() const { return mDone; }
    int total() const { return mTotal; }

Q_SIGNALS:
    /// The volume is there.
    void headersRead();
    /// Further images have pixels.
    void progressed(int inDone, int inTotal);
    /// All that can be read is there.
    void finished();

private:
    using Content = std::shared_ptr<OvVolumeContent>;

    KySeriesVolume(const Ovg::DicomSeries& inSeries, Reading inReading);
    void take(const Content& inContent);

    QStringList mPaths;
    std::shared_ptr<Ovg::InstanceFiles> mFiles; ///< Brings the files of an archive; may be null.
    const Reading mReading;
    RnHandle<OvImageVolume> mVolume;
    QFutureWatcher<Content> mWatcher;
    bool mIsLoading = false;
    int mDone = 0;
    int mTotal = 0;
};
