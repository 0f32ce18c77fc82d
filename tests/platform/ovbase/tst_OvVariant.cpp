#include <support/ContractWatch.h>
#include <support/KyTest.h>
#include <support/LogCapture.h>

#include <ovbase/OvPropertyPool.h>

#include <stdexcept>

namespace {

/// Keeps nothing, fails as told, and notes what it is asked.
class FailingSerializer final : public OvSerializer
{
public:
    bool write(const OvVariant&, int) override
    {
        ++writes;
        if (throws)
            throw std::runtime_error("broken");
        return false;
    }
    bool read(OvVariant&) override
    {
        if (throws)
            throw std::runtime_error("broken");
        return false;
    }

    int writes = 0;
    bool throws = false;
};

} // namespace

class TestOvVariant final : public QObject
{
    Q_OBJECT

private slots:
    void init()
    {
        mContract = std::make_unique<ContractWatch>();
        mRegistry = std::make_unique<OvRegistry>(nullptr);
        mPool = std::make_unique<OvPropertyPool>();
        mNumber = mPool->property<int>("a.number", 5, mPool->defaultSerializer());
    }
    void cleanup()
    {
        mPool.reset();
        mRegistry.reset();
        QCOMPARE(mContract->verify(), QString());
        mContract.reset();
    }

    void aNewTextIsTakenStoredAndPropagated()
    {
        QStringList heard;
        mNumber->connectPropertyChangedSignal(
            this, [&](const OvVariant* v) { heard.append("property " + v->toQString()); }, false);
        mPool->observeChanges(this, [&](const OvVariant* v) { heard.append("pool " + v->toQString()); });
        QVERIFY(mNumber->setValueFromQString("7"));
        QCOMPARE(mNumber->value, 7);
        QCOMPARE(stored("a.number", OvRegistry::UserPriority), "7");
        QCOMPARE(heard, (QStringList{"property 7", "pool 7"}));
    }

    void theSameValueIsNeitherStoredNorPropagated()
    {
        int calls = 0;
        mNumber->connectPropertyChangedSignal(
            this, [&](const OvVariant*) { ++calls; }, false);
        QVERIFY(mNumber->setValueFromQString("5"));
        QVERIFY(mNumber->setValueFromQString(" 5"));
        QCOMPARE(calls, 0);
        QVERIFY(mRegistry->layers("a.number").empty());
    }

    void aTextThatCannotBeReadChangesNothing()
    {
        int calls = 0;
        mNumber->connectPropertyChangedSignal(
            this, [&](const OvVariant*) { ++calls; }, false);
        QVERIFY(!mNumber->setValueFromQString("many"));
        QVERIFY(!mNumber->setValueFromQString(""));
        QCOMPARE(mNumber->value, 5);
        QCOMPARE(calls, 0);
        QVERIFY(mRegistry->layers("a.number").empty());
    }

    void theLayerIsThePoolsDefaultOne()
    {
        mPool->setDefaultSerializationPriority(OvRegistry::ScriptPriority);
        QVERIFY(mNumber->setValueFromQString("7"));
        QCOMPARE(stored("a.number", OvRegistry::ScriptPriority), "7");
        QCOMPARE(stored("a.number", OvRegistry::UserPriority), QString());
    }

    void withoutASerializerNothingIsStored()
    {
        auto* loose = mPool->property<int>("a.loose", 1, nullptr);
        QVERIFY(loose->setValueFromQString("2"));
        QCOMPARE(loose->value, 2);
        QVERIFY(!loose->serialize());
        QVERIFY(!loose->deserialize());
        QCOMPARE(loose->value, 2);
        QVERIFY(mRegistry->layers("a.loose").empty());
    }

    void outsideAPoolAPropertyStandsAlone()
    {
        OvProperty<int> alone("a.alone", 1);
        int calls = 0;
        alone.connectPropertyChangedSignal(
            nullptr, [&](const OvVariant*) { ++calls; }, false);
        QVERIFY(!alone.serialize());
        QVERIFY(!alone.deserialize());
        QVERIFY(alone.setValueFromQString("2"));
        alone.propagate(true);
        QCOMPARE(calls, 2);
    }

    void deserializeTakesTheHighestLayer()
    {
        mRegistry->setProperty("a.number", "10", OvRegistry::UserPriority);
        mRegistry->setProperty("a.number", "30", OvRegistry::ScriptPriority);
        QVERIFY(mNumber->deserialize());
        QCOMPARE(mNumber->value, 30);
        mRegistry->removeProperty("a.number", OvRegistry::ScriptPriority);
        QVERIFY(mNumber->deserialize());
        QCOMPARE(mNumber->value, 10);
    }

    void deserializeWithoutAStoredValueRestoresTheDefault()
    {
        mPool->setDefaultSerializationPriority(OvRegistry::ScriptPriority);
        mNumber->setValueFromQString("7");
        mRegistry->removeProperty("a.number", OvRegistry::ScriptPriority);
        QVERIFY(!mNumber->deserialize());
        QCOMPARE(mNumber->value, 5);
    }

    void theDefaultComesBackWithAllItsDigits()
    {
        constexpr double Pi = 3.14159265358979;
        auto* fraction = mPool->property<double>("a.fraction", Pi, mPool->defaultSerializer());
        fraction->setValueFromQString("2");
        mRegistry->removeProperty("a.fraction", OvRegistry::UserPriority);
        fraction->deserialize();
        QCOMPARE(fraction->value, Pi);
    }

    void deserializeTellsOnlyOfChanges()
    {
        int calls = 0;
        mNumber->connectPropertyChangedSignal(
            this, [&](const OvVariant*) { ++calls; }, false);
        mNumber->deserialize();
        QCOMPARE(calls, 0);
        mRegistry->setProperty("a.number", "10", OvRegistry::UserPriority);
        mNumber->deserialize();
        QCOMPARE(calls, 1);
        mNumber->deserialize();
        QCOMPARE(calls, 1);
    }

    void aStoredTextThatCannotBeReadCountsAsNoneAndIsLogged()
    {
        const LogCapture log;
        mRegistry->setProperty("a.number", QStringLiteral("viele ж"), OvRegistry::UserPriority);
        mNumber->value = 7;
        QVERIFY(!mNumber->deserialize());
        QCOMPARE(mNumber->value, 5);
        QCOMPARE(log.toStrings(),
                 QStringList{QStringLiteral(
                     "2|OvPropertyPool|the stored value of \"a.number\" can't be read: \"viele ж\"")});
        QCOMPARE(stored("a.number", OvRegistry::UserPriority), QStringLiteral("viele ж"));
    }

    void propagateTellsThePoolOnlyWhenAsked()
    {
        int property = 0;
        int pool = 0;
        mNumber->connectPropertyChangedSignal(
            this, [&](const OvVariant*) { ++property; }, false);
        mPool->observeChanges(this, [&](const OvVariant*) { ++pool; });
        mNumber->propagate(false);
        QCOMPARE(property, 1);
        QCOMPARE(pool, 0);
        mNumber->propagate(true);
        QCOMPARE(property, 2);
        QCOMPARE(pool, 1);
    }

    void aConnectedFunctionCanBeCalledAtOnce()
    {
        QList<int> heard;
        const auto hear = [&](const OvVariant* v) {
            heard.append(static_cast<const OvProperty<int>*>(v)->value);
        };
        mNumber->connectPropertyChangedSignal(this, hear, true);
        QCOMPARE(heard, QList<int>{5});
        mNumber->setValueFromQString("6");
        QCOMPARE(heard, (QList<int>{5, 6}));
    }

    void anEmptyFunctionIsNotConnected()
    {
        mNumber->connectPropertyChangedSignal(this, {}, true);
        mNumber->propagate(true);
        QCOMPARE(mNumber->value, 5);
    }

    void aConnectionEndsWithItsContextOrByHand()
    {
        int calls = 0;
        {
            const QObject context;
            mNumber->connectPropertyChangedSignal(
                &context, [&](const OvVariant*) { ++calls; }, false);
            mNumber->propagate(true);
        }
        mNumber->propagate(true);
        QCOMPARE(calls, 1);
        mNumber->connectPropertyChangedSignal(
            this, [&](const OvVariant*) { ++calls; }, false);
        mNumber->disconnectPropertyChangedSignal(this);
        mNumber->propagate(true);
        QCOMPARE(calls, 1);
    }

    void anObserverMaySetThePropertyAgain()
    {
        mNumber->connectPropertyChangedSignal(
            this,
            [&](const OvVariant* v) {
                if (v->toQString() == "6")
                    mNumber->setValueFromQString("8");
            },
            false);
        QVERIFY(mNumber->setValueFromQString("6"));
        QCOMPARE(mNumber->value, 8);
        QCOMPARE(stored("a.number", OvRegistry::UserPriority), "8");
    }

    void anObserverMayEndThePool()
    {
        mNumber->connectPropertyChangedSignal(
            this, [&](const OvVariant*) { mPool.reset(); }, false);
        QVERIFY(mNumber->setValueFromQString("6"));
        QVERIFY(!mPool);
        QCOMPARE(stored("a.number", OvRegistry::UserPriority), "6");
    }

    void aFailingSerializerStopsNothing()
    {
        FailingSerializer serializer;
        auto* property = mPool->property<int>("a.failing", 1, &serializer);
        QCOMPARE(property->serializer(), &serializer);
        QVERIFY(property->setValueFromQString("2"));
        QCOMPARE(property->value, 2);
        QCOMPARE(serializer.writes, 1);
        QVERIFY(!property->serialize());
        mPool.reset();
    }

    void whatASerializerThrowsIsLogged()
    {
        const LogCapture log;
        FailingSerializer serializer;
        auto* property = mPool->property<int>("a.failing", 1, &serializer);
        serializer.throws = true;
        QVERIFY(property->setValueFromQString("2"));
        QVERIFY(!property->deserialize());
        QCOMPARE(property->value, 1);
        QCOMPARE(log.toStrings(), (QStringList{"3|OvPropertyPool|storing a property failed: broken",
                                               "3|OvPropertyPool|reading a stored property failed: broken"}));
        mPool.reset();
    }

    void withoutARegistryValuesAreNotKept()
    {
        mRegistry.reset();
        QVERIFY(mNumber->setValueFromQString("7"));
        QCOMPARE(mNumber->value, 7);
        QVERIFY(!mNumber->serialize());
        QVERIFY(!mNumber->deserialize());
        QCOMPARE(mNumber->value, 5);
    }

private:
    QString stored(const QString& inId, OvRegistry::Priority inPriority) const
    {
        OvRegistry::Value value;
        mRegistry->getProperty(inId, value, inPriority);
        return value.value;
    }

    std::unique_ptr<ContractWatch> mContract;
    std::unique_ptr<OvRegistry> mRegistry;
    std::unique_ptr<OvPropertyPool> mPool;
    OvProperty<int>* mNumber = nullptr;
};

KY_TEST_MAIN(TestOvVariant)

#include "tst_OvVariant.moc"
