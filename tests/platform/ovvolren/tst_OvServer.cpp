#include <ovvolren/OvServer.h>

#include <ovbase/OvPropertyPool.h>
#include <support/ContractWatch.h>

#include <QtTest>

class tst_OvServer : public QObject
{
    Q_OBJECT

private slots:
    void instanceIsThereWhileTheServerLives();
    void peerIsThereWhileTheServerLives();
    void factsAreKeptAsGiven();
    void sessionLogGetsTheLines();
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
