#include <support/KyTest.h>

#include <kyresources/KyClientFacts.h>
#include <kyresources/KyResource.h>

class TestKyResource final : public QObject
{
    Q_OBJECT

private slots:
    void withoutARecordAllIsEmpty()
    {
        QCOMPARE(KyResource::getOrganizationName(), "");
        QCOMPARE(KyResource::getApplicationRegistryName(), "");
        QCOMPARE(KyResource::getUserName(), "");
        QCOMPARE(KyResource::getSessionId(), "");
        QVERIFY(KyResource::getWebServiceHostExternal().isEmpty());
    }

    void aFreshRecordIsEmpty()
    {
        const KyClientFacts facts;
        withoutARecordAllIsEmpty();
    }

    void eachFactIsTheFieldOfTheRecord()
    {
        KyClientFacts facts;
        facts.organizationName = "Org";
        facts.applicationRegistryName = "App";
        facts.userName = "M\xFCller";
        facts.sessionId = "S-1";
        facts.webServiceHostExternal = "https://host";
        QCOMPARE(KyResource::getOrganizationName(), "Org");
        QCOMPARE(KyResource::getApplicationRegistryName(), "App");
        QCOMPARE(KyResource::getUserName(), "M\xFCller");
        QCOMPARE(KyResource::getSessionId(), "S-1");
        QCOMPARE(KyResource::getWebServiceHostExternal().c_str(), "https://host");
    }

    void changesAreSeenAtOnce()
    {
        KyClientFacts facts;
        facts.userName = "one";
        QCOMPARE(KyResource::getUserName(), "one");
        facts.userName = "two";
        QCOMPARE(KyResource::getUserName(), "two");
    }

    void theFactsGoWithTheRecord()
    {
        {
            KyClientFacts facts;
            facts.userName = "one";
        }
        QCOMPARE(KyResource::getUserName(), "");
    }
};

KY_TEST_MAIN(TestKyResource)

#include "tst_KyResource.moc"
