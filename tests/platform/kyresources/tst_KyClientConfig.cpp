#include <support/KyTest.h>

#include <kyresources/KyClientConfig.h>
#include <kyresources/KyClientFacts.h>

class TestKyClientConfig final : public QObject
{
    Q_OBJECT

private slots:
    void withoutARecordThereIsNoLanguage() { QVERIFY(KyClientConfig::language().isEmpty()); }

    void theLanguageIsThatOfTheRecord()
    {
        KyClientFacts facts;
        QVERIFY(KyClientConfig::language().isEmpty());
        facts.language = "de";
        QCOMPARE(KyClientConfig::language().c_str(), "de");
    }

    void withoutARecordThereIsNoProxy()
    {
        int port = 99;
        QVERIFY(!KyClientConfig::getProxyServer(port));
        QCOMPARE(port, 0);
    }

    void aPortAloneIsNoProxy()
    {
        KyClientFacts facts;
        facts.proxyPort = 3128;
        int port = 99;
        QVERIFY(!KyClientConfig::getProxyServer(port));
        QCOMPARE(port, 0);
    }

    void theProxyIsThatOfTheRecord()
    {
        KyClientFacts facts;
        facts.proxyHost = "proxy.example";
        facts.proxyPort = 3128;
        int port = 0;
        QCOMPARE(KyClientConfig::getProxyServer(port), "proxy.example");
        QCOMPARE(port, 3128);
    }

    void theProxyGoesWithTheRecord()
    {
        {
            KyClientFacts facts;
            facts.proxyHost = "proxy.example";
        }
        withoutARecordThereIsNoProxy();
    }
};

KY_TEST_MAIN(TestKyClientConfig)

#include "tst_KyClientConfig.moc"
