#include "BackendAnswer.h"

#include <support/KyTest.h>
#include <support/LoopbackHttpServer.h>

#include <kysite/KyHttpBackend.h>

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>

class tst_KyHttpBackend : public QObject
{
    Q_OBJECT

private slots:
    void init();
    void cleanup();

    void requestHasItsForm();
    void answersAreRead_data();
    void answersAreRead();
    void answersInAnyOrder();
    void manyCallsInFlight();
    void aBackendThatHangs();
    void aBackendThatDrips();
    void aBackendThatDies();
    void aBackendThatIsNotThere();
    void aBackendThatComesBack();
    void theEndEndsWhatIsUnderWay();
    void aServerWithoutTls();

private:
    void backend(int inTimeoutSeconds = 60)
    {
        mBackend.reset();
        mBackend = std::make_unique<KyHttpBackend>(QUrl(mServer->url("/call")), QString(), inTimeoutSeconds);
    }
    QString failure(const QString& inText) const
    {
        return QStringLiteral("failed: The backend %1%2").arg(mServer->url("/call"), inText);
    }

    std::unique_ptr<LoopbackHttpServer> mServer;
    std::unique_ptr<KyHttpBackend> mBackend;
};

void tst_KyHttpBackend::init()
{
    mServer = std::make_unique<LoopbackHttpServer>();
    backend();
}

void tst_KyHttpBackend::cleanup()
{
    mBackend.reset();
    mServer.reset();
}

void tst_KyHttpBackend::requestHasItsForm()
{
    mServer->answer("/call", LoopbackHttpServer::reply("200 OK", "{\"result\":1}"));
    const BackendAnswer answer("R\xc3\xa9ports\"", "count", {"1", "\"a\"", "{\"b\":[null]}"});
    QTRY_COMPARE(answer.text, QStringLiteral("ok 1"));
    const auto& request = mServer->requests.first();
    QCOMPARE(request.method, QByteArray("POST"));
    QCOMPARE(request.header("Content-Type"), QByteArray("application/json"));
    const QJsonObject body = QJsonDocument::fromJson(request.body).object();
    QCOMPARE(body.keys(), (QStringList{"class", "method", "parameters"}));
    QCOMPARE(body.value("class").toString(), QString::fromUtf8("Réports\""));
    QCOMPARE(body.value("method").toString(), QStringLiteral("count"));
    QCOMPARE(QJsonDocument(body.value("parameters").toArray()).toJson(QJsonDocument::Compact),
             QByteArray("[1,\"a\",{\"b\":[null]}]"));
}

void tst_KyHttpBackend::answersAreRead_data()
{
    QTest::addColumn<QByteArray>("bytes");
    QTest::addColumn<QString>("expected");
    const auto row = [](const char* inName, const char* inStatus, const char* inBody,
                        const char* inExpected) {
        QTest::newRow(inName) << LoopbackHttpServer::reply(inStatus, inBody) << QString::fromUtf8(inExpected);
    };
    row("number", "200 OK", "{\"result\":1.5}", "ok 1.5");
    row("text", "200 OK", "{\"result\":\"\xe4\xb8\xad\"}", "ok \"中\"");
    row("null", "200 OK", "{\"result\":null}", "ok null");
    row("object", "200 OK", " {\"result\": {\"a\": [1]}} ", "ok {\"a\":[1]}");
    row("nothing", "200 OK", "{}", "ok");
    row("other things", "200 OK", "{\"time\":5}", "ok");
    row("failure", "200 OK", "{\"error\":\"no such study\"}", "failed: no such study");
    row("failure and result", "200 OK", "{\"result\":1,\"error\":\"no\"}", "failed: no");
    row("failure with a status", "500 Internal Server Error", "{\"error\":\"broken\"}", "failed: broken");
    row("failure as an object", "400 Bad Request", "{\"error\":{\"code\":5}}", "failed: {\"code\":5}");
    row("status alone", "500 Internal Server Error", "oops", "* answered with the status 500");
    row("not found", "404 Not Found", "{}", "* answered with the status 404");
    row("unauthorized", "401 Unauthorized", "", "* answered with the status 401");
    row("no content", "204 No Content", "", "* answered with the status 204");
    row("garbage", "200 OK", "<html>", "* answered with something else than a JSON object");
    row("empty", "200 OK", "", "* answered with something else than a JSON object");
    row("list", "200 OK", "[1]", "* answered with something else than a JSON object");
    row("cut JSON", "200 OK", "{\"result\":", "* answered with something else than a JSON object");
    QTest::newRow("redirect") << LoopbackHttpServer::reply("302 Found", "",
                                                           "Location: http://example.invalid/\r\n")
                              << "* answered with the status 302";
    QTest::newRow("no HTTP") << QByteArray("hello\r\n\r\n") << "*";
    QTest::newRow("closed in the body")
        << QByteArray("HTTP/1.1 200 OK\r\nContent-Length: 100\r\n\r\n{\"result\":1}") << "*";
}

void tst_KyHttpBackend::answersAreRead()
{
    QFETCH(QByteArray, bytes);
    QFETCH(QString, expected);
    mServer->handle("/call", [bytes](const LoopbackHttpServer::Request&, QTcpSocket& ioSocket) {
        ioSocket.write(bytes);
        ioSocket.disconnectFromHost();
    });
    const BackendAnswer answer("C", "m");
    QTRY_COMPARE_WITH_TIMEOUT(answer.count, 1, 30000);
    if (expected == "*")
        QVERIFY2(answer.text.startsWith(failure(": ")), qPrintable(answer.text));
    else
        QCOMPARE(answer.text, expected.startsWith('*') ? failure(expected.mid(1)) : expected);
}

void tst_KyHttpBackend::answersInAnyOrder()
{
    QList<QTcpSocket*> sockets;
    mServer->handle("/call", [&](const LoopbackHttpServer::Request&, QTcpSocket& ioSocket) {
        sockets.append(&ioSocket);
    });
    const BackendAnswer a("C", "a"), b("C", "b"), c("C", "c");
    QTRY_COMPARE(sockets.size(), 3);
    QMap<QString, QTcpSocket*> byMethod;
    for (int i = 0; i < 3; ++i)
        byMethod.insert(
            QJsonDocument::fromJson(mServer->requests.at(i).body).object().value("method").toString(),
            sockets.at(i));
    byMethod.value("c")->write(LoopbackHttpServer::reply("200 OK", "{\"result\":3}"));
    QTRY_COMPARE(c.text, QStringLiteral("ok 3"));
    QCOMPARE(a.count + b.count, 0);
    byMethod.value("a")->write(LoopbackHttpServer::reply("200 OK", "{\"error\":\"first\"}"));
    QTRY_COMPARE(a.text, QStringLiteral("failed: first"));
    QCOMPARE(b.count, 0);
    byMethod.value("b")->write(LoopbackHttpServer::reply("200 OK", "{\"result\":2}"));
    QTRY_COMPARE(b.text, QStringLiteral("ok 2"));
}

void tst_KyHttpBackend::manyCallsInFlight()
{
    mServer->handle("/call", [](const LoopbackHttpServer::Request& inRequest, QTcpSocket& ioSocket) {
        const QJsonArray parameters =
            QJsonDocument::fromJson(inRequest.body).object().value("parameters").toArray();
        ioSocket.write(LoopbackHttpServer::reply(
            "200 OK", "{\"result\":" + QByteArray::number(parameters.at(0).toInt()) + "}"));
    });
    std::vector<std::unique_ptr<BackendAnswer>> answers;
    for (int i = 0; i < 1000; ++i)
        answers.push_back(std::make_unique<BackendAnswer>("C", "m", std::vector{std::to_string(i)}));
    for (int i = 0; i < 1000; ++i) {
        QTRY_COMPARE_WITH_TIMEOUT(answers[std::size_t(i)]->count, 1, 60000);
        QCOMPARE(answers[std::size_t(i)]->text, QStringLiteral("ok %1").arg(i));
    }
}

void tst_KyHttpBackend::aBackendThatHangs()
{
    backend(1);
    mServer->handle("/call", [](const LoopbackHttpServer::Request&, QTcpSocket&) {});
    const BackendAnswer answer("C", "m");
    QTRY_COMPARE_WITH_TIMEOUT(answer.text, failure(" gave no answer within 1 seconds"), 30000);
}

void tst_KyHttpBackend::aBackendThatDrips()
{
    backend(1);
    QTimer drip;
    mServer->handle("/call", [&drip](const LoopbackHttpServer::Request&, QTcpSocket& ioSocket) {
        ioSocket.write("HTTP/1.1 200 OK\r\nContent-Length: 1000000\r\n\r\n{\"result\":\"");
        connect(&drip, &QTimer::timeout, &ioSocket, [&ioSocket] { ioSocket.write("x"); });
        drip.start(10);
    });
    const BackendAnswer answer("C", "m");
    QTRY_COMPARE_WITH_TIMEOUT(answer.text, failure(" gave no answer within 1 seconds"), 30000);
}

void tst_KyHttpBackend::aBackendThatDies()
{
    mServer->handle("/call",
                    [](const LoopbackHttpServer::Request&, QTcpSocket& ioSocket) { ioSocket.abort(); });
    const BackendAnswer answer("C", "m");
    QTRY_COMPARE(answer.count, 1);
    QVERIFY2(answer.text.startsWith(failure(": ")), qPrintable(answer.text));
}

void tst_KyHttpBackend::aBackendThatIsNotThere()
{
    const QString prefix = failure(": ");
    mServer.reset();
    const BackendAnswer answer("C", "m");
    QTRY_COMPARE(answer.count, 1);
    QVERIFY2(answer.text.startsWith(prefix) && answer.text.contains("refused"), qPrintable(answer.text));
}

void tst_KyHttpBackend::aBackendThatComesBack()
{
    mServer->handle("/call",
                    [](const LoopbackHttpServer::Request&, QTcpSocket& ioSocket) { ioSocket.abort(); });
    const BackendAnswer lost("C", "m");
    QTRY_COMPARE(lost.count, 1);
    mServer->answer("/call", LoopbackHttpServer::reply("200 OK", "{\"result\":1}"));
    const BackendAnswer found("C", "m");
    QTRY_COMPARE(found.text, QStringLiteral("ok 1"));
}

void tst_KyHttpBackend::theEndEndsWhatIsUnderWay()
{
    mServer->handle("/call", [](const LoopbackHttpServer::Request&, QTcpSocket&) {});
    const BackendAnswer answer("C", "m");
    QTRY_COMPARE(mServer->requests.size(), 1);
    mBackend.reset();
    QTRY_COMPARE(answer.count, 1);
    QVERIFY(answer.text.startsWith("failed: "));
}

void tst_KyHttpBackend::aServerWithoutTls()
{
    mBackend.reset();
    QUrl url(mServer->url("/call"));
    url.setScheme("https");
    mBackend = std::make_unique<KyHttpBackend>(url, QString(), 1);
    mServer->answer("/call", LoopbackHttpServer::reply("200 OK", "{\"result\":1}"));
    const BackendAnswer answer("C", "m");
    QTRY_COMPARE_WITH_TIMEOUT(answer.count, 1, 30000);
    QVERIFY(answer.text.startsWith("failed: "));
}

KY_TEST_MAIN(tst_KyHttpBackend)
#include "tst_KyHttpBackend.moc"
