#include <ovvolren/OvServer.h>

#include <ovbase/OvPropertyPool.h>
#include <support/ContractWatch.h>
#include <support/LogCapture.h>

#include <QtTest>

class tst_OvServer : public QObject
{
    Q_OBJECT

private slots:
    void instanceIsThereWhileTheServerLives();
    void peerIsThereWhileTheServerLives();
    void factsAreKeptAsGiven();
    void sessionLogGetsTheLines();
    void commandsGoToTheFunctionOfThePeer();
    void commandsWithoutAFunctionGiveNothing();
    void commandThatThrowsIsLogged();
    void commandMayEndTheConnection();
    void poolAsksTheServerWhetherThisIsTheClient();
};

namespace {

class Lines final : public RnLogSink
{
public:
    void write(const RnLogRecord& inRecord) override
    {
        lines.append(
            QStringLiteral("%1|%2|%3")
                .arg(inRecord.level)
                .arg(QString::fromStdString(inRecord.context), QString::fromStdString(inRecord.text)));
    }
    QStringList lines;
};

} // namespace

void tst_OvServer::instanceIsThereWhileTheServerLives()
{
    QVERIFY(!OvServer::instance());
    {
        OvServer server("host:1", "7.1");
        QCOMPARE(OvServer::instance(), &server);
    }
    QVERIFY(!OvServer::instance());
}

void tst_OvServer::peerIsThereWhileTheServerLives()
{
    QVERIFY(!OvServerPeer::instance());
    {
        OvServer server("host:1", "7.1");
        QCOMPARE(OvServerPeer::instance(), server.peer());
    }
    QVERIFY(!OvServerPeer::instance());
}

void tst_OvServer::factsAreKeptAsGiven()
{
    OvServer server("host:1", " 7.1 \n", false);
    QCOMPARE(server.renderServer(), "host:1");
    QCOMPARE(server.peer()->renderServerVersion(), " 7.1 \n");
    QVERIFY(!server.isClient());
    QVERIFY(OvServer("", "").isClient());
}

void tst_OvServer::sessionLogGetsTheLines()
{
    OvServer server("host:1", "7.1");
    const auto sink = std::make_shared<Lines>();
    server.peer()->sessionLog().addSink(sink);
    server.peer()->printSessionLog("Tool", "clicked", 1);
    server.peer()->printSessionLog(nullptr, nullptr, 2);
    QCOMPARE(sink->lines, QStringList({"1|Tool|clicked", "2||"}));
}

void tst_OvServer::commandsGoToTheFunctionOfThePeer()
{
    OvServerPeer peer;
    QStringList commands;
    peer.setCommandFunction([&](const std::string& inCommand, const std::string& inArguments) {
        commands.append(QString::fromLatin1(inCommand.c_str()) + "|" +
                        QString::fromLatin1(inArguments.c_str()));
        return std::string("answer \xe4\0!", 10);
    });
    QCOMPARE(peer.evalOnServer("command \xe4", "arguments"), std::string("answer \xe4\0!", 10));
    peer.execOnServer("other", nullptr);
    QCOMPARE(peer.evalOnServer(nullptr, ""), std::string("answer \xe4\0!", 10));
    QCOMPARE(commands, QStringList({QString::fromUtf8("command ä|arguments"), "other|", "|"}));
}

void tst_OvServer::commandsWithoutAFunctionGiveNothing()
{
    OvServerPeer peer;
    QCOMPARE(peer.evalOnServer("command", "arguments"), std::string());
    peer.execOnServer("command", "arguments");
}

void tst_OvServer::commandThatThrowsIsLogged()
{
    OvServerPeer peer;
    peer.setCommandFunction(
        [](const auto&, const auto&) -> std::string { throw std::runtime_error("no server"); });
    LogCapture log(2);
    QCOMPARE(peer.evalOnServer("command", ""), std::string());
    peer.execOnServer("command", "");
    QCOMPARE(log.lines().size(), 2);
    QVERIFY2(log.lines().first().text.contains("no server"), qPrintable(log.lines().first().text));
}

void tst_OvServer::commandMayEndTheConnection()
{
    auto peer = std::make_unique<OvServerPeer>();
    peer->setCommandFunction([&](const auto&, const auto&) {
        peer.reset();
        return std::string("ended");
    });
    QCOMPARE(OvServerPeer::instance()->evalOnServer("end", ""), std::string("ended"));
    QVERIFY(!OvServerPeer::instance());
}

void tst_OvServer::poolAsksTheServerWhetherThisIsTheClient()
{
    ContractWatch contracts;
    OvPropertyPool pool;
    {
        OvServer server("host:1", "7.1", false);
        contracts.expect("0", "This method should be used on the client only. "
                              "Call OvPropertyPool::propertyValue() instead");
        pool.property<int>("Test.Served", 1, pool.defaultSerializer());
        QCOMPARE(contracts.verify(), QString());
    }
    OvServer client("host:1", "7.1", true);
    pool.property<int>("Test.Client", 1, pool.defaultSerializer());
    QCOMPARE(contracts.verify(), QString());
}

QTEST_GUILESS_MAIN(tst_OvServer)
#include "tst_OvServer.moc"
