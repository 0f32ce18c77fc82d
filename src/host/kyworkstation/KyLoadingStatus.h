#pragma once

#include "KyStudyLoader.h"

class QLabel;
class QProgressBar;
class QStatusBar;
class QToolButton;

/// What the status bar tells of loading: its progress with a button that cancels it, what the last load gave,
/// and how many studies are open. Made by the main window; a child of the bar.
class KyLoadingStatus : public QObject
{
    Q_OBJECT

public:
    KyLoadingStatus(KyStudyLoader& inLoader, QStatusBar& ioBar);

    void showTotals(int inStudies, int inImages);

    /// Forgets what the last load gave.
    void clearResult();

private:
    /// What the folders of one load gave together.
    struct Results
    {
        QStringList failures; ///< One line for each folder without studies.
        QStringList opened;   ///< Folders.
        int images = 0;
        int skippedFiles = 0;
    };

    void makeWidgets(KyStudyLoader& inLoader, QStatusBar& ioBar);
    void showStart(const QString& inFolder);
    void showProgress(int inDone, int inTotal);
    void addResult(const QString& inFolder, const Ovg::StudySourceResult& inResult);
    void finish(bool inCancelled);
    QString resultText() const;

    QLabel* const mResult;
    QProgressBar* const mProgress;
    QToolButton* const mCancel;
    QLabel* const mTotals;
    Results mResults;
};
