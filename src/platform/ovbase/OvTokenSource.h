#pragma once

#include <QtCore/QString>

#include <functional>

/// Makes the tokens of OvAuthTokenGenerator (port).
///
/// Somebody's object: the host makes one. Construction makes it the one that instance() finds, in place of an
/// older one; destruction ends that, and with it all requests. GUI thread.
class OvTokenSource
{
public:
    /// Takes the token, from any thread; an empty one when none could be made, which the source logs. To be
    /// called once.
    using Answer = std::function<void(const QString& inToken)>;

    OvTokenSource();
    virtual ~OvTokenSource();
    OvTokenSource(const OvTokenSource&) = delete;
    OvTokenSource& operator=(const OvTokenSource&) = delete;

    /// Null when this client has none.
    static OvTokenSource* instance();

    /// A token of that type, signed with that key, which carries \a inUserData. Returns at once.
    virtual void request(int inType, int inKey, const QString& inUserData, const Answer& inAnswer) = 0;
    /// A JSON Web Token of the configuration of that name. Returns at once.
    virtual void requestJwt(const QString& inName, const Answer& inAnswer) = 0;
};

/// Tokens in memory: a function of the process makes them, at once.
class OvMemoryTokenSource final : public OvTokenSource
{
public:
    std::function<QString(int inType, int inKey, const QString& inUserData)> token;
    std::function<QString(const QString& inName)> jwt;

    void request(int inType, int inKey, const QString& inUserData, const Answer& inAnswer) override;
    void requestJwt(const QString& inName, const Answer& inAnswer) override;
};
