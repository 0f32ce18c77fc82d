#pragma once

#include <ovwebservice/StudySource.h>

#include <QtCore/QFutureWatcher>
#include <QtCore/QObject>
#include <QtCore/QQueue>
#include <QtCore/QThreadPool>

#include <functional>

/// Reads folders of studies in a thread of its own, one after the other.
///
/// Made by the main window; its end cancels and waits for the folder that is being read. GUI thread only:
/// the signals come there.
class KyStudyLoader : public QObject
{
    Q_OBJECT

public:
    enum class Kind
    {
        Primary,
        Additional
    };

    /// Reads one folder, in the loader's thread; tells the files read, and stops when told so by false.
    using Reader = std::function<Ovg::StudySourceResult(const QString& inFolder,
                                                        const Ovg::StudySource::Progress& inProgress)>;

    explicit KyStudyLoader(QObject* inParent);
    ~KyStudyLoader() override;

    /// Reads \a inFolder when those asked for before are read.
    void load(const QString& inFolder, Kind inKind);

    /// Stops: what is being read and what waits is dropped.
    void cancel();

    bool isLoading() const { return mIsLoading; }

    /// Folders asked for from now on are read by \a inReader. Without one, as KyArchive::read() does.
    void setReader(const Reader& inReader);

Q_SIGNALS:
    void started(const QString& inFolder);
    /// Files read, of all files of the folder; the latter is 0 until it is known.
    void progressed(int inDone, int inTotal);
    /// A folder is read.
    void loaded(const QString& inFolder, KyStudyLoader::Kind inKind, const Ovg::StudySourceResult& inResult);
    /// Nothing is being read any more. \a inCancelled tells whether cancel() was the reason.
    void finished(bool inCancelled);

private:
    struct Job
    {
        QString folder;
        Kind kind = Kind::Primary;
    };

    void startNext();
    void jobFinished();

    Reader mReader;
    QThreadPool mThread;
    QQueue<Job> mJobs;
    Job mCurrent;
    QFutureWatcher<Ovg::StudySourceResult> mWatcher;
    bool mIsLoading = false;
    bool mIsCancelled = false;
};
