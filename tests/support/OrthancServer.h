#pragma once

#include <QProcess>
#include <QString>
#include <QTemporaryDir>

#include <memory>

/// A private Orthanc with its DICOMweb plugin on a port of the loopback interface. Started by the constructor
/// and ended by the destructor; it ends with the test, too, when that crashes.
class OrthancServer
{
public:
    OrthancServer();
    ~OrthancServer();

    static bool isInstalled();

    bool isRunning() const;
    int port() const { return mPort; }
    /// The root of DICOMweb.
    QString url() const { return QStringLiteral("http://127.0.0.1:%1/dicom-web").arg(mPort); }

    /// Stores a file; false when it is refused.
    bool upload(const QString& inFile) const;

    QByteArray log() const;

private:
    const QTemporaryDir mFolder;
    QProcess mProcess;
    int mPort = 0;
};
