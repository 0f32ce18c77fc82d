#pragma once

#include <QtCore/QObject>
#include <QtCore/QStringList>

/// The global `Orvane`: a script's handle on the running application. Owned by the engine.
///
/// Every operation is a synchronous translation between script values and the platform. What is asked for and
/// isn't there raises no script error and writes no log line: each operation has a neutral result, named with
/// it. Keys, ids and commands go to the platform in Latin-1. GUI thread only.
///
/// Its subjects have a source each: KyScriptOrvane.cpp for tools, viewers, session and server, and
/// KyScriptOrvaneProperties.cpp and so on for the others.
class KyScriptOrvane : public QObject
{
    Q_OBJECT
    /// Accession numbers, or what the session counts as such, that the load helper compares with what is
    /// loaded. One list for all engines of the process, empty at first.
    Q_PROPERTY(QStringList extAcc READ extAcc WRITE setExtAcc NOTIFY extAccChanged)

public:
    explicit KyScriptOrvane(QObject* parent);
    ~KyScriptOrvane() override;

    QStringList extAcc() const { return mExtAcc; }
    /// An equal list changes nothing.
    void setExtAcc(const QStringList& inExtAcc);

Q_SIGNALS:
    /// The list has been changed through this object. Others that share it do not signal.
    void extAccChanged();

private:
    static QStringList mExtAcc;
};
