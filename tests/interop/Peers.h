#pragma once

#include <QString>
#include <QStringList>
#include <QTemporaryDir>

/// Where the programs are that nobody here wrote.
class Peers
{
public:
    Peers() = delete;

    /// The path of a program, also of one for administrators; empty when it is not installed.
    static QString program(const QString& inName);
    /// The path of a file beside these tests.
    static QString file(const QString& inName);

    /// Debian's Python, which is not the first in every path.
    static QString python();
    static bool hasPython(const QString& inModule);

    static QString node();
    static bool hasNode(const QString& inModule);
    /// The path of a file of such a module.
    static QString fileOfModule(const QString& inName);
    /// The environment in which node finds its modules.
    static QStringList nodeEnvironment();

    /// A port of the loopback interface that is free at this moment.
    static int freePort();
};

/// A certificate of its own making for "localhost" and 127.0.0.1, and its key, in files.
class SelfSignedCertificate
{
public:
    SelfSignedCertificate();

    bool isValid() const { return mIsValid; }
    QString certificate() const { return mFolder.filePath("certificate.pem"); }
    QString key() const { return mFolder.filePath("key.pem"); }

private:
    const QTemporaryDir mFolder;
    bool mIsValid = false;
};

/// Leaves out a test whose peer is missing.
#define KY_NEEDS(present, what)                                                                              \
    do {                                                                                                     \
        if (!(present))                                                                                      \
            QSKIP(what " is not installed; scripts/setup --tests does that");                                \
    } while (false)
