#include <support/ContractWatch.h>
#include <support/KyTest.h>
#include <support/KyTestPlatform.h>
#include <support/LogCapture.h>
#include <support/LoopbackHttpServer.h>
#include <support/ModalAnswer.h>

#include <kyscript/KyUrlCall.h>

#include <jxbase/JxMessageBox.h>

#include <QApplication>
#include <QNetworkAccessManager>
#include <QNetworkReply>
#include <QPointer>
#include <QTest>

#include <optional>

class tst_KyUrlCall : public QObject
{
    Q_OBJECT

private slots:
    void init();
    void cleanup();

    void requestIsLoggedAndSent();
    void plainTextIsLogged_data();
    void plainTextIsLogged();
    void emptyPageIsLogged();
    void replyOfASuccessIsReleased();
    void errorOfThePageIsOnlyLogged_data();
    void errorOfThePageIsOnlyLogged();
    void errorsAsQtNumbersThem_data();
    void errorsAsQtNumbersThem();
    void otherErrorsShowABox_data();
    void otherErrorsShowABox();
    void failedConnectionShowsABox_data();
    void failedConnectionShowsABox();
    void replyOfAFailureStays();
    void callsRunSideBySide();
    void objectMayEndUnderItsBox();
    void objectMayEndUnderNestedBoxes();
    void endOfTheObjectEndsItsCalls();
    void managerIsAChild();
    void noReplyIsNothing();
    void proxyIsUsed();

private:
    QStringList linesOf(const QString& inPath);

    std::unique_ptr<KyTestPlatform> mPlatform;
    std::unique_ptr<ContractWatch> mContracts;
    std::unique_ptr<LoopbackHttpServer> mServer;
};

namespace {

QString closedUrl()
{
    QTcpServer server;
    server.listen(QHostAddress::LocalHost);
    return QStringLiteral("http://127.0.0.1:%1/x").arg(server.serverPort());
}

/// A reply that has failed in a way of its own.
class FailedReply : public QNetworkReply
{
public:
    FailedReply(NetworkError inError, const QString& inText)
    {
        setError(inError, inText);
        setFinished(true);
    }
    void abort() override {}

protected:
    qint64 readData(char*, qint64) override { return -1; }
};

bool hasOpenBox()
{
    return qobject_cast<QMessageBox*>(QApplication::activeModalWidget());
}

} // namespace

void tst_KyUrlCall::init()
{
    mPlatform = std::make_unique<KyTestPlatform>();
    mContracts = std::make_unique<ContractWatch>();
    mServer = std::make_unique<LoopbackHttpServer>();
}

void tst_KyUrlCall::cleanup()
{
    QVERIFY(!hasOpenBox());
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    mServer.reset();
    mContracts.reset();
    mPlatform.reset();
}

void tst_KyUrlCall::requestIsLoggedAndSent()
{
    mServer->answer("/ping?a=b", LoopbackHttpServer::reply("200 OK", "", "Content-Type: text/html\r\n"));
    LogCapture log;
    KyUrlCall call;
    call.sendRequest(mServer->url("/ping?a=b"));
    QCOMPARE(log.take(), QStringList("1||URL request: " + mServer->url("/ping?a=b")));
    QTRY_COMPARE(mServer->requests.size(), 1);
    QCOMPARE(mServer->requests.at(0).method, QByteArray("GET"));
    QTRY_COMPARE(log.lines().size(), 1);

    call.sendRequest(mServer->url(QString::fromUtf8("/ä€ x")));
    QCOMPARE(log.toStrings().at(1), QString::fromUtf8("1||URL request: %1/ä? x").arg(mServer->url("")));
    QTRY_COMPARE(mServer->requests.size(), 2);
    QCOMPARE(mServer->requests.at(1).target, QByteArray("/%C3%A4%E2%82%AC%20x"));
}

void tst_KyUrlCall::plainTextIsLogged_data()
{
    QTest::addColumn<QByteArray>("contentType");
    QTest::addColumn<QByteArray>("body");
    QTest::addColumn<QStringList>("lines");
    const QStringList logged("1||URL reply: some text");
    QTest::newRow("plain") << QByteArray("text/plain") << QByteArray("some text") << logged;
    QTest::newRow("with a charset") << QByteArray("text/plain; charset=utf-8") << QByteArray("some text")
                                    << logged;
    QTest::newRow("among others") << QByteArray("x-text/plain2") << QByteArray("some text") << logged;
    QTest::newRow("other case") << QByteArray("Text/Plain") << QByteArray("some text") << QStringList();
    QTest::newRow("html") << QByteArray("text/html") << QByteArray("some text") << QStringList();
    QTest::newRow("json") << QByteArray("application/json") << QByteArray("{}") << QStringList();
    QTest::newRow("none") << QByteArray() << QByteArray("some text") << QStringList();
    QTest::newRow("Latin-1") << QByteArray("text/plain") << QByteArray("J\xfcrgen")
                             << QStringList(QString::fromUtf8("1||URL reply: Jürgen"));
    QTest::newRow("per cent signs") << QByteArray("text/plain") << QByteArray("100% %s %n")
                                    << QStringList("1||URL reply: 100% %s %n");
    QTest::newRow("NUL") << QByteArray("text/plain") << QByteArray("a\0b", 3)
                         << QStringList("1||URL reply: a");
}

void tst_KyUrlCall::plainTextIsLogged()
{
    QFETCH(QByteArray, contentType);
    QFETCH(QByteArray, body);
    QFETCH(QStringList, lines);
    mServer->answer("/p", LoopbackHttpServer::reply("200 OK", body,
                                                    contentType.isEmpty()
                                                        ? QByteArray()
                                                        : "Content-Type: " + contentType + "\r\n"));
    QCOMPARE(linesOf("/p"), lines);
}

void tst_KyUrlCall::emptyPageIsLogged()
{
    mServer->answer("/e", LoopbackHttpServer::reply("200 OK", "", "Content-Type: text/plain\r\n"));
    QCOMPARE(linesOf("/e"), QStringList("1||URL call received empty page"));
    mServer->answer("/n", "HTTP/1.1 204 No Content\r\n\r\n");
    QCOMPARE(linesOf("/n"), QStringList("1||URL call received empty page"));
}

/// The lines of one call, but for that of its request; no box may come.
QStringList tst_KyUrlCall::linesOf(const QString& inPath)
{
    KyUrlCall call;
    LogCapture log;
    call.sendRequest(mServer->url(inPath));
    auto* manager = call.findChild<QNetworkAccessManager*>();
    bool done = false, boxSeen = false;
    connect(manager, &QNetworkAccessManager::finished, this, [&] { done = true; });
    const bool came = QTest::qWaitFor([&] {
        boxSeen = boxSeen || hasOpenBox();
        return done;
    });
    return came && !boxSeen ? log.toStrings().mid(1) : QStringList("no answer, or a box");
}

void tst_KyUrlCall::replyOfASuccessIsReleased()
{
    mServer->answer("/p", LoopbackHttpServer::reply("200 OK", "x", "Content-Type: text/plain\r\n"));
    KyUrlCall call;
    auto* manager = call.findChild<QNetworkAccessManager*>();
    bool came = false;
    QPointer<QNetworkReply> reply;
    connect(manager, &QNetworkAccessManager::finished, this, [&](QNetworkReply* inReply) {
        came = true;
        reply = inReply;
    });
    call.sendRequest(mServer->url("/p"));
    QTRY_VERIFY(came);
    QTRY_VERIFY(!reply);
}

void tst_KyUrlCall::errorOfThePageIsOnlyLogged_data()
{
    QTest::addColumn<QByteArray>("status");
    QTest::addColumn<int>("error");
    QTest::newRow("ContentAccessDenied") << QByteArray("403 Forbidden") << 201;
    QTest::newRow("ContentOperationNotPermittedError") << QByteArray("405 Not Allowed") << 202;
    QTest::newRow("ContentNotFoundError") << QByteArray("404 Not Found") << 203;
    QTest::newRow("UnknownContentError") << QByteArray("402 Payment Required") << 299;
}

void tst_KyUrlCall::errorOfThePageIsOnlyLogged()
{
    QFETCH(QByteArray, status);
    QFETCH(int, error);
    mServer->answer("/p", LoopbackHttpServer::reply(status, "page", "Content-Type: text/plain\r\n"));
    int seen = 0;
    {
        QNetworkAccessManager bare;
        const std::unique_ptr<QNetworkReply> reply(bare.get(QNetworkRequest(mServer->url("/p"))));
        QTRY_VERIFY(reply->isFinished());
        seen = reply->error();
    }
    QCOMPARE(seen, error);
    QCOMPARE(linesOf("/p"), QStringList(QString("3||URL error: Error transferring %1 - server replied: %2")
                                            .arg(mServer->url("/p"), status.mid(4))));
}

void tst_KyUrlCall::errorsAsQtNumbersThem_data()
{
    QTest::addColumn<int>("error");
    QTest::addColumn<bool>("showsBox");
    for (const int error : {1,   2,   3,   4,   5,   6,   7,   8,   9,   10,  11,  99,  101, 102,
                            103, 104, 105, 199, 204, 206, 207, 301, 302, 399, 401, 402, 403, 499})
        QTest::addRow("%d", error) << error << true;
    for (const int error : {201, 202, 203, 205, 299})
        QTest::addRow("%d", error) << error << false;
}

void tst_KyUrlCall::errorsAsQtNumbersThem()
{
    QFETCH(int, error);
    QFETCH(bool, showsBox);
    LogCapture log;
    KyUrlCall call;
    FailedReply reply(QNetworkReply::NetworkError(error), QString::fromUtf8("what went wrong: ä€ %s"));
    std::optional<ModalAnswer> answer;
    if (showsBox)
        answer.emplace([](QWidget* inWindow) {
            QCOMPARE(qobject_cast<JxMessageBox*>(inWindow)->text(),
                     QString::fromUtf8("what went wrong: ä€ %s"));
            ModalAnswer::clicking("OK")(inWindow);
        });
    call.replyFinished(&reply);
    QCOMPARE(log.take(), QStringList(QString::fromUtf8("3||URL error: what went wrong: ä? %s")));
}

void tst_KyUrlCall::otherErrorsShowABox_data()
{
    QTest::addColumn<QByteArray>("status");
    QTest::addColumn<int>("error");
    QTest::addColumn<QString>("text");
    const QString replied("Error transferring %1 - server replied: %2");
    QTest::newRow("AuthenticationRequiredError")
        << QByteArray("401 Unauthorized") << 204 << "Host requires authentication";
    QTest::newRow("ContentConflictError") << QByteArray("409 Conflict") << 206 << replied;
    QTest::newRow("ContentGoneError") << QByteArray("410 Gone") << 207 << replied;
    QTest::newRow("ProtocolInvalidOperationError") << QByteArray("400 Bad Request") << 302 << replied;
    QTest::newRow("InternalServerError") << QByteArray("500 Oops") << 401 << replied;
    QTest::newRow("OperationNotImplementedError") << QByteArray("501 No") << 402 << replied;
    QTest::newRow("ServiceUnavailableError") << QByteArray("503 Later") << 403 << replied;
    QTest::newRow("UnknownServerError") << QByteArray("599 Odd") << 499 << replied;
}

void tst_KyUrlCall::otherErrorsShowABox()
{
    QFETCH(QByteArray, status);
    QFETCH(int, error);
    QFETCH(QString, text);
    mServer->answer("/p", LoopbackHttpServer::reply(status, "page", "Content-Type: text/plain\r\n"));
    if (text.contains("%1"))
        text = text.arg(mServer->url("/p"), QString(status.mid(4)));

    LogCapture log(3);
    int seen = 0;
    ModalAnswer answer([&](QWidget* inWindow) {
        auto* box = qobject_cast<JxMessageBox*>(inWindow);
        QVERIFY(box);
        QCOMPARE(box->icon(), QMessageBox::Critical);
        QCOMPARE(box->text(), text);
        QCOMPARE(box->informativeText(), QString());
        QCOMPARE(box->standardButtons(), QMessageBox::Ok);
        QCOMPARE(log.take(), QStringList());
        ModalAnswer::clicking("OK")(box);
    });
    KyUrlCall call;
    connect(call.findChild<QNetworkAccessManager*>(), &QNetworkAccessManager::finished, this,
            [&](QNetworkReply* inReply) { seen = inReply->error(); });
    call.sendRequest(mServer->url("/p"));
    QTRY_VERIFY(answer.happened());
    QTRY_COMPARE(log.toStrings(), QStringList("3||URL error: " + text));
    QTRY_COMPARE(seen, error);
}

void tst_KyUrlCall::failedConnectionShowsABox_data()
{
    QTest::addColumn<QString>("url");
    QTest::addColumn<QString>("text");
    QTest::newRow("refused") << closedUrl() << "Connection refused";
    QTest::newRow("no host") << "http://name.invalid/"
                             << "Host name.invalid not found";
    QTest::newRow("no URL") << "no url"
                            << "Protocol \"\" is unknown";
    QTest::newRow("empty") << ""
                           << "Protocol \"\" is unknown";
}

void tst_KyUrlCall::failedConnectionShowsABox()
{
    QFETCH(QString, url);
    QFETCH(QString, text);
    LogCapture log(3);
    ModalAnswer answer(
        [&](QWidget* inWindow) {
            QCOMPARE(qobject_cast<JxMessageBox*>(inWindow)->text(), text);
            ModalAnswer::clicking("OK")(inWindow);
        },
        std::chrono::seconds(30));
    KyUrlCall call;
    call.sendRequest(url);
    QTRY_COMPARE_WITH_TIMEOUT(log.toStrings(), QStringList("3||URL error: " + text), 30000);
}

void tst_KyUrlCall::replyOfAFailureStays()
{
    mServer->answer("/p", LoopbackHttpServer::reply("404 Not Found", "page"));
    QPointer<QNetworkReply> reply;
    {
        KyUrlCall call;
        connect(call.findChild<QNetworkAccessManager*>(), &QNetworkAccessManager::finished, this,
                [&](QNetworkReply* inReply) { reply = inReply; });
        call.sendRequest(mServer->url("/p"));
        QTRY_VERIFY(reply);
        QTest::qWait(20);
        QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
        QVERIFY(reply);
    }
    QVERIFY(!reply);
}

void tst_KyUrlCall::callsRunSideBySide()
{
    QTcpSocket* slow = nullptr;
    mServer->handle("/slow", [&](const auto&, QTcpSocket& ioSocket) { slow = &ioSocket; });
    mServer->answer("/p", LoopbackHttpServer::reply("200 OK", "fast", "Content-Type: text/plain\r\n"));
    LogCapture log;
    KyUrlCall call;
    call.sendRequest(mServer->url("/slow"));
    call.sendRequest(mServer->url("/p"));
    QTRY_COMPARE(log.toStrings().filter("URL reply"), QStringList("1||URL reply: fast"));
    QTRY_VERIFY(slow);
    slow->write(LoopbackHttpServer::reply("200 OK", "slow", "Content-Type: text/plain\r\n"));
    QTRY_COMPARE(log.toStrings().filter("URL reply"),
                 QStringList({"1||URL reply: fast", "1||URL reply: slow"}));
}

void tst_KyUrlCall::objectMayEndUnderItsBox()
{
    auto call = std::make_unique<KyUrlCall>();
    const QPointer<QNetworkAccessManager> manager = call->findChild<QNetworkAccessManager*>();
    LogCapture log(3);
    ModalAnswer answer([&](QWidget* inWindow) {
        call.reset();
        ModalAnswer::clicking("OK")(inWindow);
    });
    call->sendRequest(closedUrl());
    QTRY_COMPARE(log.toStrings(), QStringList("3||URL error: Connection refused"));
    QTRY_VERIFY(!manager);
}

void tst_KyUrlCall::objectMayEndUnderNestedBoxes()
{
    auto call = std::make_unique<KyUrlCall>();
    const QPointer<QNetworkAccessManager> manager = call->findChild<QNetworkAccessManager*>();
    LogCapture log(3);
    ModalAnswer ofOuter([&](QWidget* inWindow) {
        ModalAnswer ofInner([&](QWidget* inInner) {
            call.reset();
            ModalAnswer::clicking("OK")(inInner);
        });
        call->sendRequest(closedUrl());
        QTRY_COMPARE(log.lines().size(), 1);
        ModalAnswer::clicking("OK")(inWindow);
    });
    call->sendRequest(closedUrl());
    QTRY_COMPARE(log.lines().size(), 2);
    QTRY_VERIFY(!manager);
}

void tst_KyUrlCall::endOfTheObjectEndsItsCalls()
{
    QPointer<QTcpSocket> connection;
    mServer->handle("/never", [&](const auto&, QTcpSocket& ioSocket) { connection = &ioSocket; });
    LogCapture log;
    {
        KyUrlCall call;
        call.sendRequest(mServer->url("/never"));
        QTRY_VERIFY(connection);
        log.take();
    }
    QTRY_VERIFY(!connection);
    QCOMPARE(log.take(), QStringList());
}

void tst_KyUrlCall::managerIsAChild()
{
    QObject parent;
    auto* call = new KyUrlCall(&parent);
    QCOMPARE(call->parent(), &parent);
    QCOMPARE(call->findChildren<QNetworkAccessManager*>().size(), 1);
}

void tst_KyUrlCall::noReplyIsNothing()
{
    LogCapture log;
    KyUrlCall call;
    call.replyFinished(nullptr);
    QCOMPARE(log.take(), QStringList());
}

void tst_KyUrlCall::proxyIsUsed()
{
    mPlatform->facts.proxyHost = "127.0.0.1";
    mPlatform->facts.proxyPort = mServer->port();
    mServer->answer("http://archive.invalid/x",
                    LoopbackHttpServer::reply("200 OK", "by the proxy", "Content-Type: text/plain\r\n"));
    LogCapture log;
    KyUrlCall call;
    call.sendRequest("http://archive.invalid/x");
    QTRY_COMPARE(log.toStrings(),
                 QStringList({QString("1||Using proxy server 127.0.0.1:%1").arg(mServer->port()),
                              "1||URL request: http://archive.invalid/x", "1||URL reply: by the proxy"}));
}

KY_TEST_MAIN(tst_KyUrlCall)
#include "tst_KyUrlCall.moc"
