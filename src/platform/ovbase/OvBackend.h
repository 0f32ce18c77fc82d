#pragma once

#include <QtCore/QString>

#include <functional>
#include <map>
#include <memory>
#include <string>
#include <vector>

/// A call of a method on the backend.
struct OvBackendCall
{
    std::string className;  ///< UTF-8.
    std::string methodName; ///< UTF-8.
    /// Each argument as JSON text in UTF-8.
    std::vector<std::string> parameters;
};

/// The answer to one call, which its backend gives once: further ones are ignored. One that goes without an
/// answer is a failure. May be used from any thread; the function hears of it on the GUI thread, from the
/// event loop.
class OvBackendReply
{
public:
    struct Answer
    {
        bool isOk = false;
        bool noResult = false;
        QString text; ///< The result as JSON text, or the message of a failure.
    };
    using Function = std::function<void(const Answer&)>;

    explicit OvBackendReply(Function inFunction);
    ~OvBackendReply();
    OvBackendReply(const OvBackendReply&) = delete;
    OvBackendReply& operator=(const OvBackendReply&) = delete;

    /// The call has given \a inJson.
    void succeed(const QString& inJson);
    /// The call has given nothing.
    void succeed();
    /// The call has failed; \a inMessage is for people.
    void fail(const QString& inMessage);

private:
    struct State;

    void answer(Answer inAnswer);

    const std::unique_ptr<State> mState;
};

/// What runs the calls of OvBackendScriptExecutor (port).
///
/// Somebody's object: the host makes one. Construction makes it the one that instance() finds, in place of an
/// older one; destruction ends that, and ends its calls. GUI thread.
class OvBackend
{
public:
    using Reply = std::shared_ptr<OvBackendReply>;

    OvBackend();
    virtual ~OvBackend();
    OvBackend(const OvBackend&) = delete;
    OvBackend& operator=(const OvBackend&) = delete;

    /// Null when this client has no backend.
    static OvBackend* instance();

    /// Starts a call and returns at once. The answer may come at any time, also before this returns.
    virtual void start(const OvBackendCall& inCall, const Reply& inReply) = 0;
};

/// A backend in memory: its methods are functions of the process.
class OvMemoryBackend final : public OvBackend
{
public:
    using Method = std::function<void(const std::vector<std::string>& inParameters, const Reply& inReply)>;

    /// An older method of these names is replaced.
    void add(const std::string& inClassName, const std::string& inMethodName, Method inMethod);

    void start(const OvBackendCall& inCall, const Reply& inReply) override;

private:
    std::map<std::pair<std::string, std::string>, Method> mMethods;
};
