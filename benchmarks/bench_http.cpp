// Web requests of scripts, against the bare network manager and, for orientation, curl. The server runs on
// the loopback interface, in a thread of its own.

#include "RatioReport.h"

#include <kyscript/KyScriptEngine.h>

#include <benchmark/benchmark.h>

#include <QtCore/QEventLoop>
#include <QtCore/QProcess>
#include <QtCore/QStandardPaths>
#include <QtCore/QThread>
#include <QtNetwork/QNetworkAccessManager>
#include <QtNetwork/QNetworkReply>
#include <QtNetwork/QTcpServer>
#include <QtNetwork/QTcpSocket>
#include <QtWidgets/QApplication>

#include <atomic>
#include <functional>

namespace {

constexpr int PageSize = 1000;
constexpr int Batch = 100;
constexpr int CurlBatch = 1000;

/// Answers whatever is asked with the same page, as long as the connection is kept.
class PageServer
{
public:
    PageServer()
    {
        QObject::connect(&mThread, &QThread::started, &mServer, [this] {
            mServer.listen(QHostAddress::LocalHost);
            mPort = mServer.serverPort();
        });
        QObject::connect(&mServer, &QTcpServer::newConnection, &mServer, [this] {
            while (QTcpSocket* socket = mServer.nextPendingConnection())
                serve(socket);
        });
        mServer.moveToThread(&mThread);
        mThread.start();
        while (mPort == 0)
            QThread::yieldCurrentThread();
    }

    ~PageServer()
    {
        QMetaObject::invokeMethod(&mServer, &QTcpServer::close, Qt::BlockingQueuedConnection);
        mThread.quit();
        mThread.wait();
    }

    QString url() const { return QStringLiteral("http://127.0.0.1:%1/page").arg(mPort.load()); }

private:
    static QByteArray answer()
    {
        return "HTTP/1.1 200 OK\r\nContent-Type: text/plain\r\nContent-Length: " +
               QByteArray::number(PageSize) + "\r\n\r\n" + QByteArray(PageSize, 'x');
    }

    static void serve(QTcpSocket* inSocket)
    {
        static const QByteArray page = answer();
        inSocket->setSocketOption(QAbstractSocket::LowDelayOption, 1);
        QObject::connect(inSocket, &QTcpSocket::disconnected, inSocket, &QObject::deleteLater);
        QObject::connect(inSocket, &QTcpSocket::readyRead, inSocket, [inSocket] {
            for (auto left = inSocket->readAll().count("\r\n\r\n"); left > 0; --left)
                inSocket->write(page);
        });
    }

    QThread mThread;
    QTcpServer mServer;
    std::atomic<int> mPort = 0;
};

void add(const std::string& inName, std::function<void(benchmark::State&)> inBody)
{
    benchmark::RegisterBenchmark(inName.c_str(), [=](benchmark::State& state) { inBody(state); });
}

/// So many requests at a time through HttpRequest, their answers read in a handler of the script.
void measureScript(benchmark::State& state, const QString& inUrl, int inCount)
{
    KyScriptEngine engine(nullptr, ScriptHttpRequest);
    const QJSValue ask = engine.evaluate(
        QStringLiteral(
            "var request = new HttpRequest(), answers = 0;"
            "request.response.connect(function(message, header, status) {"
            "    if (status === 200 && message.byteLength === %1 && header['Content-Type']) ++answers;"
            "});"
            "(function(url, count) {"
            "    answers = 0;"
            "    for (var i = 0; i < count; ++i) request.get(url);"
            "    request.waitForFinished(60000);"
            "    return answers;"
            "})")
            .arg(PageSize));
    const QJSValue url(inUrl), count(inCount);
    for (auto _ : state) {
        if (ask.call({url, count}).toInt() != inCount)
            state.SkipWithError("answers are missing");
    }
}

/// The same in C++ with the bare manager, and no more than the script does with the answers.
void measureBare(benchmark::State& state, const QString& inUrl, int inCount)
{
    QNetworkAccessManager manager;
    QEventLoop loop;
    int answers = 0, finished = 0;
    QObject::connect(&manager, &QNetworkAccessManager::finished, [&](QNetworkReply* inReply) {
        const QByteArray body = inReply->readAll();
        if (inReply->attribute(QNetworkRequest::HttpStatusCodeAttribute).toInt() == 200 &&
            body.size() == PageSize && inReply->hasRawHeader("Content-Type"))
            ++answers;
        inReply->deleteLater();
        if (++finished == inCount)
            loop.quit();
    });
    for (auto _ : state) {
        answers = finished = 0;
        for (int i = 0; i < inCount; ++i)
            manager.get(QNetworkRequest(QUrl(inUrl)));
        loop.exec();
        if (answers != inCount)
            state.SkipWithError("answers are missing");
    }
}

void measureOneByOne(benchmark::State& state, const QString& inUrl)
{
    KyScriptEngine engine(nullptr, ScriptHttpRequest);
    const QJSValue ask = engine.evaluate(QStringLiteral(
        "var request = new HttpRequest(), answers = 0;"
        "request.response.connect(function(message, header, status) {"
        "    if (status === 200) ++answers;"
        "});"
        "(function(url, count) {"
        "    answers = 0;"
        "    for (var i = 0; i < count; ++i) { request.get(url); request.waitForFinished(60000); }"
        "    return answers;"
        "})"));
    for (auto _ : state) {
        if (ask.call({QJSValue(inUrl), QJSValue(CurlBatch)}).toInt() != CurlBatch)
            state.SkipWithError("answers are missing");
    }
}

/// One process that fetches them one after the other over one connection.
void measureCurl(benchmark::State& state, const QString& inCurl, const QString& inUrl)
{
    const QStringList arguments{QStringLiteral("-s"), QStringLiteral("-o"), QStringLiteral("/dev/null"),
                                QStringLiteral("%1?[1-%2]").arg(inUrl).arg(CurlBatch)};
    for (auto _ : state) {
        if (QProcess::execute(inCurl, arguments) != 0)
            state.SkipWithError("curl fails");
    }
}

} // namespace

int main(int argc, char** argv)
{
    QApplication application(argc, argv);
    const PageServer server;
    const QString url = server.url();

    add("GET, one after the other<=1.1", [=](benchmark::State& state) { measureScript(state, url, 1); });
    add("GET, one after the other/yardstick", [=](benchmark::State& state) { measureBare(state, url, 1); });
    add("100 GETs at once<=1.1", [=](benchmark::State& state) { measureScript(state, url, Batch); });
    add("100 GETs at once/yardstick", [=](benchmark::State& state) { measureBare(state, url, Batch); });

    const QString curl = QStandardPaths::findExecutable(QStringLiteral("curl"));
    if (!curl.isEmpty()) {
        add("1000 GETs, against curl", [=](benchmark::State& state) { measureOneByOne(state, url); });
        add("1000 GETs, against curl/yardstick",
            [=](benchmark::State& state) { measureCurl(state, curl, url); });
    }
    return runWithRatios(argc, argv);
}
