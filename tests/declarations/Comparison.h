#pragma once

#include "HostClass.h"

#include <QJsonObject>
#include <QJsonValue>
#include <QStringList>

/// Compares what an engine has with what is declared, and says in words what to do about a difference.
class Comparison
{
public:
    /// \a inHostTypes are the declared types that stand for objects of the application, and \a inExceptions
    /// are names that need no declaration, as "Class.member".
    Comparison(QStringList inHostTypes, QStringList inExceptions);

    /// The differences between a class and the declaration of the type of that name, an object of
    /// declared.js.
    QStringList ofClass(const HostClass& inClass, const QString& inType, const QJsonObject& inDeclared) const;

    /// Those between the ways to call something and the declared ones.
    QStringList ofSignatures(const QString& inName, const QList<HostSignature>& inSignatures,
                             const QJsonValue& inDeclared) const;

    /// Whether a type of the meta-object and the kinds of a declared type go together: the table of types.
    bool fits(const QString& inQtType, const QStringList& inKinds) const;

    /// The line that declares a member.
    static QString suggestion(const QString& inName, const HostMember& inMember);

private:
    QString ofMember(const HostMember& inMember, const QString& inName, const QJsonObject& inDeclared) const;
    QString ofProperty(const HostMember& inMember, const QString& inName,
                       const QJsonObject& inDeclared) const;
    bool matches(const HostSignature& inSignature, const QJsonArray& inArguments,
                 const QStringList& inResult) const;
    bool mayBeMissing(const HostClass& inClass, const QString& inName) const;

    const QStringList mHostTypes;
    const QStringList mExceptions;
};
