#pragma once

#include <QList>
#include <QMap>
#include <QObject>
#include <QTcpServer>
#include <QTcpSocket>
#include <QUrl>

#include <functional>

/// An HTTP server on a port of the loopback interface that answers exactly the bytes it is told to.
///
/// Lives on the thread of the test and is served by its event loop. Connections are kept open for further
/// requests; a path without an answer never gets one.
class LoopbackHttpServer final : public QObject
{
    Q_OBJECT

public:
    struct Request
    {
        QByteArray method;
        QByteArray target;
        QList<std::pair<QByteArray, QByteArray>> headers;
        QByteArray body;

        /// The value of a header, whatever the case of its name; null when it is missing.
        QByteArray header(const QByteArray& inName) const;
        int count(const QByteArray& inName) const;
    };
    using Handler = std::function<void(const Request&, QTcpSocket&)>;

    LoopbackHttpServer();
    ~LoopbackHttpServer() override;

    QString url(const QString& inPath) const;
    quint16 port() const { return mServer.serverPort(); }

    /// What is sent for \a inPath, headers and all.
    void answer(const QByteArray& inPath, const QByteArray& inBytes);
    /// Answers a path by itself, or by nothing.
    void handle(const QByteArray& inPath, Handler inHandler);
    /// Closes the connections that are open.
    void dropConnections();

    /// An answer with its length, of the status line "HTTP/1.1 " and \a inStatus.
    static QByteArray reply(const QByteArray& inStatus, const QByteArray& inBody,
                            const QByteArray& inHeaders = QByteArray());

    /// All requests so far, the oldest first.
    QList<Request> requests;
    int connections = 0;

private:
    void accept();
    void read(QTcpSocket* inSocket);

    QTcpServer mServer;
    QMap<QByteArray, Handler> mHandlers;
    QMap<QTcpSocket*, QByteArray> mReceived;
};
