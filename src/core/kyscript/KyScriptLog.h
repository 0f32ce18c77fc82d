#pragma once

#include <rnlib/RnLogFile.h>

class QString;

/// How the module writes to the logs: the text as Latin-1, under "Script Interface" where no context is
/// given.
class KyScriptLog
{
public:
    static constexpr const char* Context = "Script Interface";

    /// A line of the process's log.
    static void line(RnLogLevel inLevel, const QString& inText, const char* inContext = Context);

    /// A line of level 1 of the server's session log; lost when no server peer is there.
    static void sessionLine(const QString& inText, const char* inContext = Context);
};
