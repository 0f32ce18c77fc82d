#include "OrthancServer.h"

#include <QElapsedTimer>
#include <QEventLoop>
#include <QFile>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QNetworkAccessManager>
#include <QNetworkReply>
#include <QTcpServer>
#include <QThread>

#include <csignal>

namespace {

constexpr const char* Program = "/usr/sbin/Orthanc";
constexpr const char* Plugin = "/usr/share/orthanc/plugins/libOrthancDicomWeb.so";
constexpr int StartMilliseconds = 60000;

QByteArray read(const QString& inPath)
{
    QFile file(inPath);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

int freePort()
{
    QTcpServer server;
    server.listen(QHostAddress::LocalHost);
    return server.serverPort();
}

} // namespace

bool OrthancServer::isInstalled()
{
    return QFile::exists(Program) && QFile::exists(Plugin);
}

OrthancServer::OrthancServer()
    : mPort(freePort())
{
    const QJsonObject configuration{{"StorageDirectory", mFolder.filePath("storage")},
                                    {"IndexDirectory", mFolder.filePath("storage")},
                                    {"HttpPort", mPort},
                                    {"DicomServerEnabled", false},
                                    {"RemoteAccessAllowed", false},
                                    {"AuthenticationEnabled", false},
                                    {"Plugins", QJsonArray{Plugin}},
                                    {"DicomWeb", QJsonObject{{"Enable", true}}}};
    QFile file(mFolder.filePath("orthanc.json"));
    if (!file.open(QIODevice::WriteOnly))
        return;
    file.write(QJsonDocument(configuration).toJson());
    file.close();
    mProcess.setProcessChannelMode(QProcess::MergedChannels);
    mProcess.setStandardOutputFile(mFolder.filePath("log"));
    mProcess.start("setpriv", {"--pdeathsig", "KILL", Program, file.fileName()});
    QElapsedTimer clock;
    clock.start();
    while (mProcess.waitForStarted() && !isRunning() && clock.elapsed() < StartMilliseconds) {
        if (mProcess.waitForFinished(50))
            return;
    }
}

OrthancServer::~OrthancServer()
{
    if (mProcess.state() == QProcess::NotRunning)
        return;
    ::kill(pid_t(mProcess.processId()), SIGTERM);
    if (!mProcess.waitForFinished(20000))
        mProcess.kill();
    mProcess.waitForFinished(5000);
}

bool OrthancServer::isRunning() const
{
    return mProcess.state() == QProcess::Running && log().contains("Orthanc has started");
}

bool OrthancServer::upload(const QString& inFile) const
{
    QNetworkAccessManager network;
    QNetworkRequest request(QUrl(QStringLiteral("http://127.0.0.1:%1/instances").arg(mPort)));
    request.setHeader(QNetworkRequest::ContentTypeHeader, "application/dicom");
    const std::unique_ptr<QNetworkReply> reply(network.post(request, read(inFile)));
    QEventLoop loop;
    QObject::connect(reply.get(), &QNetworkReply::finished, &loop, &QEventLoop::quit);
    loop.exec();
    return reply->error() == QNetworkReply::NoError;
}

QByteArray OrthancServer::log() const
{
    return read(mFolder.filePath("log"));
}
