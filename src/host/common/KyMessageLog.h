#pragma once

/// Sends Qt's own messages to the log of the process while it lives, so that none is lost. Among them are the
/// uncaught errors of script handlers, which Qt tells in no other way.
///
/// Debug and information become level 1, warnings level 2, what is critical or fatal level 3; the context is
/// "Qt", or "Script Interface" for an error of a script handler, which then has level 3.
class KyMessageLog
{
public:
    KyMessageLog();
    ~KyMessageLog();
    KyMessageLog(const KyMessageLog&) = delete;
    KyMessageLog& operator=(const KyMessageLog&) = delete;
};
