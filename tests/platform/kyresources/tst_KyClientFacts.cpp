#include <support/KyTest.h>

#include <kyresources/KyClientFacts.h>

class TestKyClientFacts final : public QObject
{
    Q_OBJECT

private slots:
    void theRecordIsInForceWhileItLives()
    {
        QVERIFY(!KyClientFacts::instance());
        {
            const KyClientFacts facts;
            QVERIFY(KyClientFacts::instance() == &facts);
        }
        QVERIFY(!KyClientFacts::instance());
    }

    void aNewRecordFollowsAnOldOne()
    {
        {
            const KyClientFacts old;
        }
        const KyClientFacts facts;
        QVERIFY(KyClientFacts::instance() == &facts);
    }

    void theEndOfAReplacedRecordHasNoEffect()
    {
        auto old = std::make_unique<KyClientFacts>();
        const KyClientFacts facts;
        QVERIFY(KyClientFacts::instance() == &facts);
        old.reset();
        QVERIFY(KyClientFacts::instance() == &facts);
    }
};

KY_TEST_MAIN(TestKyClientFacts)

#include "tst_KyClientFacts.moc"
