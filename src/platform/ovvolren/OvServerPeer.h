#pragma once

#include <rnlib/RnLogFile.h>
#include <rnlib/RnString.h>

#include <functional>
#include <string>

/// The client's end of its connection to the render server.
///
/// Somebody's object: its life is the connection. Construction makes it the one that instance() finds;
/// destruction ends that.
class OvServerPeer
{
public:
    /// \a inRenderServerVersion is what the server told of itself, Latin-1.
    explicit OvServerPeer(RnString inRenderServerVersion = RnString());
    ~OvServerPeer();
    OvServerPeer(const OvServerPeer&) = delete;
    OvServerPeer& operator=(const OvServerPeer&) = delete;

    /// Null when there is no connection.
    static OvServerPeer* instance();

    /// Writes a line to the session log. Context and text are Latin-1, null counts as empty; the level is
    /// handed to the sinks as it is.
    void printSessionLog(const char* inContext, const char* inText, int inLevel);

    /// What runs a command on the server, for the owner to set: it gets the command and its arguments and
    /// gives the answer, all in Latin-1.
    using CommandFunction =
        std::function<std::string(const std::string& inCommand, const std::string& inArguments)>;
    void setCommandFunction(CommandFunction inFunction) { mCommandFunction = std::move(inFunction); }

    /// Runs a command on the server and gives its answer. All is Latin-1, null counts as empty. Empty without
    /// a function that runs it, and when that throws, which is logged.
    std::string evalOnServer(const char* inCommand, const char* inArguments);
    /// The same, without an answer.
    void execOnServer(const char* inCommand, const char* inArguments);

    /// The log of the session, apart from that of the process. The owner adds its sinks; without one the
    /// lines are lost.
    RnLogFile& sessionLog() { return mSessionLog; }

    /// As the server told it, white space included; never null.
    const char* renderServerVersion() const { return mRenderServerVersion; }

private:
    const RnString mRenderServerVersion;
    RnLogFile mSessionLog;
    CommandFunction mCommandFunction;
};
