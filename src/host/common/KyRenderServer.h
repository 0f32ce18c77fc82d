#pragma once

#include <ovvolren/OvServer.h>

/// The render server of a host: it is in the host's own process, and its peer keeps the session log.
///
/// It understands these commands of Orvane.exec() and Orvane.eval(), and answers any other one, as well as an
/// empty one, with "Unknown command NAME":
///
///     commands         the names of the commands, one a line
///     version          the version of the server
///     session          the id of the session
///     echo TEXT        TEXT
///     log TEXT         nothing; a line of the session log, with the context "Command"
///
/// Somebody's object: its life is the connection. GUI thread.
class KyRenderServer
{
public:
    KyRenderServer();

    OvServerPeer& peer() { return *mServer.peer(); }

    /// What a command answers, in Latin-1.
    std::string run(const std::string& inCommand, const std::string& inArguments);

private:
    OvServer mServer;
};
