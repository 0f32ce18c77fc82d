#pragma once

#include "KyRenderServer.h"

#include <QtCore/QString>

/// The session log of a host: what users do on the dialogs of scripts, and what scripts trace. It is kept in
/// a file, which rotates as the log files of `--log` do.
///
/// Somebody's object: construction makes it the one that instance() finds, and has
/// the host's own render server, whose peer keeps it; destruction ends both. GUI thread only.
class KySessionLog
{
public:
    /// Appends to \a inFile. With an empty name the lines are in no file. The reason why a file can't be
    /// written goes to the log of the process.
    explicit KySessionLog(const QString& inFile);
    ~KySessionLog();
    KySessionLog(const KySessionLog&) = delete;
    KySessionLog& operator=(const KySessionLog&) = delete;

    /// Null when there is none.
    static KySessionLog* instance();

    /// For further sinks, such as a pane's.
    RnLogFile& log() { return mServer.peer().sessionLog(); }
    /// The absolute path of the file; empty when there is none.
    const QString& file() const { return mFile; }

private:
    KyRenderServer mServer;
    QString mFile;
};
