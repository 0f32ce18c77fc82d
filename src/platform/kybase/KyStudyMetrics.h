#pragma once

#include <QHash>
#include <QString>

/// How long the user has been reading each study in this run of the client.
///
/// Somebody's object: construction makes it the one that instance() finds, destruction ends that. The host
/// adds the time while a study is on the screen. GUI thread only.
class KyStudyMetrics
{
public:
    KyStudyMetrics();
    ~KyStudyMetrics();
    KyStudyMetrics(const KyStudyMetrics&) = delete;
    KyStudyMetrics& operator=(const KyStudyMetrics&) = delete;

    /// Null when nobody keeps metrics.
    static KyStudyMetrics* instance();

    /// Seconds spent on the study so far; 0 for an unknown study.
    float getTimeSpent(const QString& inStudyInstanceUid) const;

    /// Adds \a inSeconds to the time of the study. Nothing happens for an empty id, and for a time that is
    /// not above 0.
    void addTimeSpent(const QString& inStudyInstanceUid, float inSeconds);

private:
    QHash<QString, double> mSeconds; ///< Summed up in double: many small floats would stop counting.
};
