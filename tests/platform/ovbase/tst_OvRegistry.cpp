#include <support/ContractWatch.h>
#include <support/KyTest.h>

#include <ovbase/OvRegistry.h>
#include <ovbase/OvRegistryMemoryStore.h>

namespace {

/// A store that counts what it is asked, and can be full.
class CountingStore final : public OvRegistryStore
{
public:
    const Content& content() override { return mContent; }
    bool apply(const Change& inChange) override
    {
        ++changes;
        if (!isFull)
            merge(inChange, mContent);
        return !isFull;
    }

    int changes = 0;
    bool isFull = false;

private:
    Content mContent;
};

} // namespace

class TestOvRegistry final : public QObject
{
    Q_OBJECT

private slots:
    void init()
    {
        mContract = std::make_unique<ContractWatch>();
        mRegistry = std::make_unique<OvRegistry>(nullptr);
    }
    void cleanup()
    {
        mRegistry.reset();
        QCOMPARE(mContract->verify(), QString());
        mContract.reset();
    }

    void theInstanceIsTheNewestThatLives()
    {
        QCOMPARE(OvRegistry::getInstance(), mRegistry.get());
        auto second = std::make_unique<OvRegistry>(nullptr);
        QCOMPARE(OvRegistry::getInstance(), second.get());
        mRegistry.reset();
        QCOMPARE(OvRegistry::getInstance(), second.get());
        second.reset();
        QCOMPARE(OvRegistry::getInstance(), nullptr);
    }

    void anUnknownIdHasNoValueAndLeavesTheRecord()
    {
        OvRegistry::Value value{"kept", "kept"};
        QVERIFY(!mRegistry->getProperty("a.b", value));
        QVERIFY(!mRegistry->getProperty("a.b", value, OvRegistry::UserPriority));
        QVERIFY(!mRegistry->getProperty("", value));
        QCOMPARE(value.value, "kept");
        QCOMPARE(value.source, "kept");
        QVERIFY(mRegistry->layers("a.b").empty());
    }

    void aValueNamesItsWriter()
    {
        QVERIFY(mRegistry->setProperty("a.b", "x", OvRegistry::UserPriority));
        OvRegistry::Value value;
        QVERIFY(mRegistry->getProperty("a.b", value));
        QCOMPARE(value.value, "x");
        QCOMPARE(value.source, QCoreApplication::applicationName());
        QVERIFY(!value.source.isEmpty());
    }

    void theHighestLayerIsInEffect_data()
    {
        QTest::addColumn<QList<int>>("order");
        QTest::newRow("ascending") << QList<int>{1, 1000, 3000, 4000};
        QTest::newRow("descending") << QList<int>{4000, 3000, 1000, 1};
        QTest::newRow("mixed") << QList<int>{3000, 1, 4000, 1000};
    }
    void theHighestLayerIsInEffect()
    {
        QFETCH(QList<int>, order);
        for (const int priority : order)
            QVERIFY(mRegistry->setProperty("a.b", QString::number(priority), priority));
        QCOMPARE(mRegistry->layers("a.b"), (std::vector<int>{1, 1000, 3000, 4000}));
        for (const int priority : {4000, 3000, 1000, 1}) {
            QCOMPARE(value("a.b", OvRegistry::EffectivePriority), QString::number(priority));
            QCOMPARE(value("a.b", priority), QString::number(priority));
            QVERIFY(mRegistry->removeProperty("a.b", priority));
            QCOMPARE(value("a.b", priority), QStringLiteral("(none)"));
        }
        QCOMPARE(value("a.b", OvRegistry::EffectivePriority), QStringLiteral("(none)"));
        QVERIFY(mRegistry->layers("a.b").empty());
    }

    void removingALowerLayerLeavesTheEffectiveValue()
    {
        mRegistry->setProperty("a.b", "user", OvRegistry::UserPriority);
        mRegistry->setProperty("a.b", "script", OvRegistry::ScriptPriority);
        QVERIFY(mRegistry->removeProperty("a.b", OvRegistry::UserPriority));
        QCOMPARE(value("a.b", OvRegistry::EffectivePriority), "script");
    }

    void removingWhatIsNotThereIsFalse()
    {
        QVERIFY(!mRegistry->removeProperty("a.b", OvRegistry::ScriptPriority));
        mRegistry->setProperty("a.b", "user", OvRegistry::UserPriority);
        QVERIFY(!mRegistry->removeProperty("a.b", OvRegistry::ScriptPriority));
        QCOMPARE(value("a.b", OvRegistry::EffectivePriority), "user");
    }

    void anEmptyTextIsAValue()
    {
        mRegistry->setProperty("a.b", "user", OvRegistry::UserPriority);
        mRegistry->setProperty("a.b", "", OvRegistry::ScriptPriority);
        QCOMPARE(value("a.b", OvRegistry::EffectivePriority), QString());
        QVERIFY(mRegistry->removeProperty("a.b", OvRegistry::ScriptPriority));
        QCOMPARE(value("a.b", OvRegistry::EffectivePriority), "user");
    }

    void idsAreTakenAsTheyAre()
    {
        const QStringList ids{"a", "A", "a.", "a..b", QStringLiteral("ж"), QString(10000, 'x'), QString()};
        for (const QString& id : ids)
            QVERIFY(mRegistry->setProperty(id, "value of " + id, 1000));
        for (const QString& id : ids)
            QCOMPARE(value(id, 1000), "value of " + id);
    }

    void aPriorityBelowOneIsAContractReport_data()
    {
        QTest::addColumn<int>("priority");
        QTest::newRow("effective") << 0;
        QTest::newRow("negative") << -1;
    }
    void aPriorityBelowOneIsAContractReport()
    {
        QFETCH(int, priority);
        for (int i = 0; i < 2; ++i)
            mContract->expect(QStringLiteral("inPriority > EffectivePriority"));
        QVERIFY(!mRegistry->setProperty("a.b", "x", priority));
        QVERIFY(!mRegistry->removeProperty("a.b", priority));
        QCOMPARE(value("a.b", priority), QStringLiteral("(none)"));
    }

    void layersOfTheSessionAreNotStored()
    {
        const auto store = std::make_shared<OvRegistryMemoryStore>();
        mRegistry = std::make_unique<OvRegistry>(store);
        mRegistry->setProperty("a.b", "user", OvRegistry::UserPriority);
        mRegistry->setProperty("a.b", "last kept", OvRegistry::SessionPriority - 1);
        mRegistry->setProperty("a.b", "session", OvRegistry::SessionPriority);
        mRegistry->setProperty("a.b", "more", 1000000);
        QCOMPARE(value("a.b", 0), "more");
        mRegistry = std::make_unique<OvRegistry>(store);
        QCOMPARE(mRegistry->layers("a.b"), (std::vector<int>{1000, 3999}));
        QCOMPARE(value("a.b", 0), "last kept");
    }

    void theSameValueIsNotWrittenAgain()
    {
        const auto store = std::make_shared<CountingStore>();
        mRegistry = std::make_unique<OvRegistry>(store);
        QVERIFY(mRegistry->setProperty("a.b", "x", 1000));
        QVERIFY(mRegistry->setProperty("a.b", "x", 1000));
        QCOMPARE(store->changes, 1);
        QVERIFY(mRegistry->setProperty("a.b", "x", 3000));
        QVERIFY(mRegistry->setProperty("a.b", "y", 1000));
        QCOMPARE(store->changes, 3);
        QVERIFY(!mRegistry->removeProperty("a.c", 1000));
        QCOMPARE(store->changes, 3);
    }

    void aStoreThatCannotBeWrittenKeepsTheOldValues()
    {
        const auto store = std::make_shared<CountingStore>();
        mRegistry = std::make_unique<OvRegistry>(store);
        QVERIFY(mRegistry->setProperty("a.b", "old", 1000));
        store->isFull = true;
        QVERIFY(!mRegistry->setProperty("a.b", "new", 1000));
        QVERIFY(!mRegistry->setProperty("a.c", "new", 1000));
        QVERIFY(!mRegistry->removeProperty("a.b", 1000));
        QCOMPARE(value("a.b", 0), "old");
        QCOMPARE(value("a.c", 0), QStringLiteral("(none)"));
        QVERIFY(mRegistry->setProperty("a.b", "session", OvRegistry::SessionPriority));
        QCOMPARE(value("a.b", 0), "session");
    }

    void aMemoryStoreLastsFromOneRegistryToTheNext()
    {
        const auto store = std::make_shared<OvRegistryMemoryStore>();
        mRegistry = std::make_unique<OvRegistry>(store);
        mRegistry->setProperty("a.b", "x", 1000);
        mRegistry->setProperty("a.c", "y", 1000);
        mRegistry->removeProperty("a.c", 1000);
        mRegistry = std::make_unique<OvRegistry>(store);
        QCOMPARE(value("a.b", 0), "x");
        QCOMPARE(store->content().size(), 1);
    }

private:
    /// "(none)" when there is none.
    QString value(const QString& inId, OvRegistry::Priority inPriority) const
    {
        OvRegistry::Value found;
        return mRegistry->getProperty(inId, found, inPriority) ? found.value : QStringLiteral("(none)");
    }

    std::unique_ptr<ContractWatch> mContract;
    std::unique_ptr<OvRegistry> mRegistry;
};

KY_TEST_MAIN(TestOvRegistry)

#include "tst_OvRegistry.moc"
