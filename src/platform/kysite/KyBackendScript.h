#pragma once

#include <ovbase/OvBackend.h>

#include <QtCore/QDateTime>
#include <QtCore/QHash>
#include <QtQml/QJSEngine>

/// The classes of a folder and the engine in which they run, for one thread, which is the one that makes it.
///
/// A class is a file "CLASS.js" in UTF-8 that declares the class or an object of that name. One instance of
/// it is made when it is first called, and kept until the file changes. Only its own methods can be called,
/// and none whose name begins with "_".
class KyBackendScript
{
public:
    explicit KyBackendScript(QString inFolder);

    /// Calls a method and gives what comes of it.
    OvBackendReply::Answer call(const OvBackendCall& inCall);

    /// The one thing for other threads: ends what is running, or lets the next call run.
    void setInterrupted(bool inIsInterrupted) { mEngine.setInterrupted(inIsInterrupted); }

private:
    struct Instance
    {
        QDateTime modified;
        qint64 size = -1;
        QJSValue object;
    };

    QJSValue instance(const QString& inClass, QString& outError);
    QJSValue load(const QString& inClass, const QString& inFile, QString& outError);
    QJSValue method(const QJSValue& inObject, const QString& inName) const;

    const QString mFolder;
    QJSEngine mEngine;
    const QJSValue mParse;
    const QJSValue mStringify;
    QHash<QString, Instance> mInstances;
};
