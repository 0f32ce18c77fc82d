#include <support/ContractWatch.h>
#include <support/KyTest.h>
#include <support/LogCapture.h>

#include <ovbase/OvPropertyPool.h>
#include <ovbase/OvRegistryMemoryStore.h>

#include <stdexcept>

namespace {

const QString ClientOnly = QStringLiteral("This method should be used on the client only. "
                                          "Call OvPropertyPool::propertyValue() instead");
const QString OtherType = QStringLiteral("v->isType<t_type>()");
const QString OtherSerializer =
    QStringLiteral("ifThen(isAutoCommitEnabled(), "
                   "serializer == instance().defaultSerializer() || serializer == v->serializer())");

int theStaticRuns = 0;

// As a module registers its properties when it is loaded; the id is not used elsewhere.
[[maybe_unused]] const bool IsRegistered = [] {
    OvPropertyPool::addRegisterProperties([](OvPropertyPool& ioPool) {
        ++theStaticRuns;
        ioPool.property<int>("Static.Number", 3, ioPool.defaultSerializer());
    });
    return true;
}();

} // namespace

class TestOvPropertyPool final : public QObject
{
    Q_OBJECT

private slots:
    void init()
    {
        mContract = std::make_unique<ContractWatch>();
        mRegistry = std::make_unique<OvRegistry>(nullptr);
        mPool = std::make_unique<OvPropertyPool>();
    }
    void cleanup()
    {
        OvPropertyPool::setClientQuestion({});
        mPool.reset();
        mRegistry.reset();
        QCOMPARE(mContract->verify(), QString());
        mContract.reset();
    }

    void theInstanceIsThePoolThatLives()
    {
        QCOMPARE(OvPropertyPool::instance(), mPool.get());
        mPool.reset();
        QCOMPARE(OvPropertyPool::instance(), nullptr);
    }

    void theNewestPoolIsFound()
    {
        auto second = std::make_unique<OvPropertyPool>();
        QCOMPARE(OvPropertyPool::instance(), second.get());
        mPool.reset();
        QCOMPARE(OvPropertyPool::instance(), second.get());
        second.reset();
        QCOMPARE(OvPropertyPool::instance(), nullptr);
    }

    void callbacksOfStaticInitialisationRunForEveryPool()
    {
        QCOMPARE(mPool->value<int>("Static.Number", 0), 3);
        const int before = theStaticRuns;
        mPool = std::make_unique<OvPropertyPool>();
        QCOMPARE(theStaticRuns, before + 1);
        QCOMPARE(mPool->value<int>("Static.Number", 0), 3);
    }

    void aLateCallbackRunsAtOnceAndForLaterPools()
    {
        static int sRuns = 0;
        OvPropertyPool::addRegisterProperties([](OvPropertyPool& pool) {
            ++sRuns;
            pool.property<bool>("Late.Flag", true, pool.defaultSerializer());
        });
        QCOMPARE(sRuns, 1);
        QCOMPARE(mPool->value<bool>("Late.Flag", false), true);
        mPool.reset();
        QCOMPARE(sRuns, 1);
        mPool = std::make_unique<OvPropertyPool>();
        QCOMPARE(sRuns, 2);
        QCOMPARE(mPool->value<bool>("Late.Flag", false), true);
    }

    void aCallbackMayRegisterAnother()
    {
        static bool sIsNested = false;
        static int sInner = 0;
        static int sOuter = 0;
        mPool.reset();
        OvPropertyPool::addRegisterProperties([](OvPropertyPool&) {
            ++sOuter;
            if (!std::exchange(sIsNested, true))
                OvPropertyPool::addRegisterProperties([](OvPropertyPool&) { ++sInner; });
        });
        mPool = std::make_unique<OvPropertyPool>();
        QCOMPARE(sOuter, 1);
        QCOMPARE(sInner, 1);
        mPool = std::make_unique<OvPropertyPool>();
        QCOMPARE(sOuter, 2);
        QCOMPARE(sInner, 2);
    }

    void aCallbackFindsThePool()
    {
        static OvPropertyPool* sFound = nullptr;
        OvPropertyPool::addRegisterProperties([](OvPropertyPool&) { sFound = OvPropertyPool::instance(); });
        QCOMPARE(sFound, mPool.get());
        mPool = std::make_unique<OvPropertyPool>();
        QCOMPARE(sFound, mPool.get());
    }

    void whatACallbackThrowsIsLoggedAndStopsNothing()
    {
        static bool sThrows = true;
        const LogCapture log;
        OvPropertyPool::addRegisterProperties([](OvPropertyPool&) {
            if (sThrows)
                throw std::runtime_error("no memory");
        });
        mPool = std::make_unique<OvPropertyPool>();
        sThrows = false;
        const QString line = "3|OvPropertyPool|a registration of properties failed: no memory";
        QCOMPARE(log.toStrings(), (QStringList{line, line}));
        QCOMPARE(mPool->value<int>("Static.Number", 0), 3);
    }

    void anEmptyCallbackIsIgnored() { OvPropertyPool::addRegisterProperties({}); }

    void aNewPropertyHasItsDefault()
    {
        QCOMPARE(mPool->property<int>("t.int", 1, nullptr)->value, 1);
        QCOMPARE(mPool->property<double>("t.double", 2.5, nullptr)->value, 2.5);
        QCOMPARE(mPool->property<bool>("t.bool", true, nullptr)->value, true);
        QCOMPARE(mPool->property<QString>("t.string", "x", nullptr)->value, "x");
        QCOMPARE(mPool->property<QList<QString>>("t.list", {"x", "y"}, nullptr)->value,
                 (QStringList{"x", "y"}));
        QCOMPARE(mPool->variant("t.list")->identifier(), std::string("t.list"));
        QCOMPARE(mPool->variant("t.none"), nullptr);
    }

    void registeringAgainKeepsTheFirstValue()
    {
        auto* first = mPool->property<int>("a.b", 1, mPool->defaultSerializer());
        QCOMPARE(mPool->property<int>("a.b", 2, mPool->defaultSerializer()), first);
        QCOMPARE(first->value, 1);
        first->value = 7;
        QCOMPARE(mPool->property<int>("a.b", 2, mPool->defaultSerializer())->value, 7);
    }

    void registeringWithAnotherTypeIsAContractReport()
    {
        mPool->property<int>("a.b", 1, mPool->defaultSerializer());
        mContract->expect(OtherType);
        QCOMPARE(mPool->property<double>("a.b", 2, mPool->defaultSerializer()), nullptr);
        QCOMPARE(mPool->value<int>("a.b", 0), 1);
    }

    void registeringWithAnotherSerializerIsAContractReport()
    {
        OvRegistrySerializer own;
        OvRegistrySerializer other;
        auto* property = mPool->property<int>("a.b", 1, &own);
        QCOMPARE(mPool->property<int>("a.b", 1, &own), property);
        QCOMPARE(mPool->property<int>("a.b", 1, mPool->defaultSerializer()), property);
        mContract->expect(OtherSerializer);
        QCOMPARE(mPool->property<int>("a.b", 1, &other), property);
        mContract->expect(OtherSerializer);
        QCOMPARE(mPool->property<int>("a.b", 1, nullptr), property);
        QCOMPARE(property->serializer(), &own);
        mPool->setAutoCommitEnabled(false);
        QCOMPARE(mPool->property<int>("a.b", 1, &other), property);
        mPool.reset();
    }

    void anotherTypeAndAnotherSerializerAreTwoReports()
    {
        OvRegistrySerializer other;
        mPool->property<int>("a.b", 1, mPool->defaultSerializer());
        mContract->expect(OtherType);
        mContract->expect(OtherSerializer);
        QCOMPARE(mPool->property<bool>("a.b", true, &other), nullptr);
    }

    void onlyAClientMayRegister_data()
    {
        QTest::addColumn<bool>("isConnected");
        QTest::addColumn<bool>("isClient");
        QTest::addColumn<bool>("isReported");
        QTest::newRow("no connection") << false << false << false;
        QTest::newRow("client") << true << true << false;
        QTest::newRow("not the client") << true << false << true;
    }
    void onlyAClientMayRegister()
    {
        QFETCH(bool, isConnected);
        QFETCH(bool, isClient);
        QFETCH(bool, isReported);
        if (isConnected)
            OvPropertyPool::setClientQuestion([=] { return isClient; });
        for (int i = 0; isReported && i < 2; ++i)
            mContract->expect(QStringLiteral("0"), ClientOnly);
        auto* property = mPool->property<int>("a.b", 1, mPool->defaultSerializer());
        QCOMPARE(property->value, 1);
        QCOMPARE(mPool->property<int>("a.b", 2, mPool->defaultSerializer()), property);
    }

    void theClientQuestionOutlivesPools()
    {
        OvPropertyPool::setClientQuestion([] { return true; });
        mPool = std::make_unique<OvPropertyPool>();
        OvPropertyPool::setClientQuestion([] { return false; });
        mContract->expect(QStringLiteral("0"), ClientOnly);
        mPool->property<int>("a.b", 1, nullptr);
        OvPropertyPool::setClientQuestion({});
        mPool->property<int>("a.c", 1, nullptr);
    }

    void names_data()
    {
        QTest::addColumn<QByteArray>("name");
        QTest::addColumn<bool>("isValid");
        QTest::newRow("plain") << QByteArray("General") << true;
        QTest::newRow("components") << QByteArray("Scripting.LogNumLines") << true;
        QTest::newRow("blank inside") << QByteArray("a b.c") << true;
        QTest::newRow("Latin-1") << QByteArray("Gr\xf6\xdf"
                                               "e.a")
                                 << true;
        QTest::newRow("no-break space") << QByteArray("a\xa0") << true;
        QTest::newRow("empty component") << QByteArray("a..b") << true;
        QTest::newRow("dot first") << QByteArray(".a") << true;
        QTest::newRow("dot last") << QByteArray("a.") << true;
        QTest::newRow("longest") << QByteArray(1024, 'a') << true;
        QTest::newRow("empty") << QByteArray() << false;
        QTest::newRow("dot") << QByteArray(".") << false;
        QTest::newRow("dots") << QByteArray("...") << false;
        QTest::newRow("line break") << QByteArray("a\nb") << false;
        QTest::newRow("tab") << QByteArray("a\tb") << false;
        QTest::newRow("NUL") << QByteArray("a\0b", 3) << false;
        QTest::newRow("delete") << QByteArray("a\x7f") << false;
        QTest::newRow("C1 control") << QByteArray("a\x85") << false;
        QTest::newRow("replaced character") << QByteArray("a.?") << false;
        QTest::newRow("too long") << QByteArray(1025, 'a') << false;
        QTest::newRow("10 000 characters") << QByteArray(10000, 'a') << false;
    }
    void names()
    {
        QFETCH(QByteArray, name);
        QFETCH(bool, isValid);
        const std::string id = name.toStdString();
        QCOMPARE(OvPropertyPool::validPropertyName(id), isValid);
        if (!isValid)
            mContract->expect(QStringLiteral("validPropertyName(id)"), QString::fromLatin1(id.c_str()));
        auto* property = mPool->property<int>(id, 1, mPool->defaultSerializer());
        QCOMPARE(property != nullptr, isValid);
        QCOMPARE(mPool->variant(id), property);
    }

    void valueReadsByIdAndType()
    {
        mPool->property<int>("a.number", 7, nullptr);
        mPool->property<QString>("a.text", "x", nullptr);
        QCOMPARE(mPool->value<int>("a.number", 1), 7);
        QCOMPARE(mPool->value<int>(std::string("a.number"), 1), 7);
        QCOMPARE(mPool->value<double>("a.number", 1.5), 1.5);
        QCOMPARE(mPool->value<QString>("a.text", "y"), "x");
        QCOMPARE(mPool->value<QString>("a.none", "y"), "y");
        QCOMPARE(mPool->value<int>("", 1), 1);
    }

    void addedVariantsBelongToThePool()
    {
        auto* variant = new OvProperty<int>("a.b", 1);
        QVERIFY(mPool->addVariant(variant, mPool->defaultSerializer()));
        QCOMPARE(mPool->variant("a.b"), variant);
        QCOMPARE(variant->serializer(), mPool->defaultSerializer());
    }

    void addVariantRefusesNullAndTakenIds()
    {
        mContract->expect(QStringLiteral("inVariant != nullptr"));
        QVERIFY(!mPool->addVariant(nullptr, nullptr));
        QVERIFY(mPool->addVariant(new OvProperty<int>("a.b", 1), nullptr));
        mContract->expect(QStringLiteral("variant(id) == nullptr"), "a.b");
        QVERIFY(!mPool->addVariant(new OvProperty<int>("a.b", 2), nullptr));
        QCOMPARE(mPool->value<int>("a.b", 0), 1);
    }

    void aStoredValueIsThereAtRegistration()
    {
        mRegistry->setProperty("a.b", "7", OvRegistry::UserPriority);
        QCOMPARE(mPool->property<int>("a.b", 1, mPool->defaultSerializer())->value, 7);
        QCOMPARE(mPool->property<int>("a.c", 1, mPool->defaultSerializer())->value, 1);
    }

    void aLatin1IdIsStoredUnderItsCharacters()
    {
        mPool
            ->property<int>("Gr\xf6\xdf"
                            "e",
                            1, mPool->defaultSerializer())
            ->setValueFromQString("2");
        OvRegistry::Value value;
        QVERIFY(mRegistry->getProperty(QStringLiteral("Größe"), value));
        QCOMPARE(value.value, "2");
    }

    void everyTypeIsKeptFromOnePoolToTheNext()
    {
        const QStringList list{"a,b", "", "\"", "line\nbreak"};
        mPool->property<int>("t.int", 0, mPool->defaultSerializer())->setValueFromQString("-5");
        mPool->property<double>("t.double", 0, mPool->defaultSerializer())->setValueFromQString("2.5");
        mPool->property<bool>("t.bool", false, mPool->defaultSerializer())->setValueFromQString("true");
        mPool->property<QString>("t.string", "", mPool->defaultSerializer())->setValueFromQString("\"ж\"\n");
        auto* strings = mPool->property<QList<QString>>("t.list", {}, mPool->defaultSerializer());
        strings->value = list;
        QVERIFY(strings->serialize());

        mPool = std::make_unique<OvPropertyPool>();
        QCOMPARE(mPool->property<int>("t.int", 0, mPool->defaultSerializer())->value, -5);
        QCOMPARE(mPool->property<double>("t.double", 0, mPool->defaultSerializer())->value, 2.5);
        QCOMPARE(mPool->property<bool>("t.bool", false, mPool->defaultSerializer())->value, true);
        QCOMPARE(mPool->property<QString>("t.string", "", mPool->defaultSerializer())->value, "\"ж\"\n");
        QCOMPARE(mPool->property<QList<QString>>("t.list", {}, mPool->defaultSerializer())->value, list);
    }

    void theScriptLayerOverridesTheUsersAndGivesItBack()
    {
        auto* property = mPool->property<int>("a.b", 1, mPool->defaultSerializer());
        property->setValueFromQString("2");
        const OvRegistry::Priority before = mPool->defaultSerializationPriority();
        QCOMPARE(before, OvRegistry::UserPriority);
        mPool->setDefaultSerializationPriority(3000);
        property->setValueFromQString("3");
        mPool->setDefaultSerializationPriority(before);

        mPool = std::make_unique<OvPropertyPool>();
        property = mPool->property<int>("a.b", 1, mPool->defaultSerializer());
        QCOMPARE(property->value, 3);
        QVERIFY(mRegistry->removeProperty("a.b", 3000));
        property->deserialize();
        QCOMPARE(property->value, 2);
    }

    void variantsAreOrderedById()
    {
        for (const char* id : {"Z.b", "Z.a", "Y", "Z.a.c"})
            mPool->property<int>(id, 1, nullptr);
        QStringList ids;
        for (const OvVariant* variant : mPool->variants())
            ids.append(QString::fromStdString(variant->identifier()));
        QCOMPARE(ids.filter(QRegularExpression("^[YZ]")), (QStringList{"Y", "Z.a", "Z.a.c", "Z.b"}));
        QVERIFY(ids.contains("Static.Number"));
        QVERIFY(std::is_sorted(ids.begin(), ids.end()));
    }

    void observersHearOfAdditionsWithTheStoredValue()
    {
        QStringList added;
        int changes = 0;
        mRegistry->setProperty("a.b", "7", OvRegistry::UserPriority);
        mPool->observeAdditions(this, [&](const OvVariant* v) {
            added.append(QString::fromStdString(v->identifier()) + '=' + v->toQString());
        });
        mPool->observeChanges(this, [&](const OvVariant*) { ++changes; });
        mPool->property<int>("a.b", 1, mPool->defaultSerializer());
        mPool->property<int>("a.b", 1, mPool->defaultSerializer());
        QCOMPARE(added, QStringList{"a.b=7"});
        QCOMPARE(changes, 0);
    }

    void anObserverOfAdditionsMayAddAnother()
    {
        mPool->observeAdditions(this, [&](const OvVariant* v) {
            if (v->identifier() == "a.b")
                mPool->property<int>("a.c", 2, nullptr);
        });
        mPool->property<int>("a.b", 1, nullptr);
        QCOMPARE(mPool->value<int>("a.c", 0), 2);
    }

    void withoutAutoCommitValuesWaitForCommit()
    {
        QVERIFY(mPool->isAutoCommitEnabled());
        auto* property = mPool->property<int>("a.b", 1, mPool->defaultSerializer());
        mPool->setAutoCommitEnabled(false);
        QVERIFY(!mPool->isAutoCommitEnabled());
        property->setValueFromQString("2");
        QCOMPARE(property->value, 2);
        QVERIFY(mRegistry->layers("a.b").empty());
        QVERIFY(mPool->commit());
        QCOMPARE(stored("a.b", OvRegistry::UserPriority), "2");
    }

    void eachLayerWaitsWithItsOwnValue()
    {
        auto* property = mPool->property<int>("a.b", 1, mPool->defaultSerializer());
        mPool->setAutoCommitEnabled(false);
        property->setValueFromQString("2");
        mPool->setDefaultSerializationPriority(3000);
        property->setValueFromQString("3");
        property->setValueFromQString("4");
        QVERIFY(mPool->commit());
        QCOMPARE(stored("a.b", OvRegistry::UserPriority), "2");
        QCOMPARE(stored("a.b", 3000), "4");
    }

    void turningAutoCommitOnCommits()
    {
        auto* property = mPool->property<int>("a.b", 1, mPool->defaultSerializer());
        mPool->setAutoCommitEnabled(false);
        property->setValueFromQString("2");
        mPool->setAutoCommitEnabled(true);
        QCOMPARE(stored("a.b", OvRegistry::UserPriority), "2");
    }

    void deserializeDropsWhatWaits()
    {
        auto* property = mPool->property<int>("a.b", 1, mPool->defaultSerializer());
        mPool->setAutoCommitEnabled(false);
        property->setValueFromQString("2");
        property->deserialize();
        QCOMPARE(property->value, 1);
        QVERIFY(mPool->commit());
        QVERIFY(mRegistry->layers("a.b").empty());
    }

    void whatCannotBeCommittedWaitsOn()
    {
        auto* property = mPool->property<int>("a.b", 1, mPool->defaultSerializer());
        mPool->setAutoCommitEnabled(false);
        property->setValueFromQString("2");
        mRegistry.reset();
        QVERIFY(!mPool->commit());
        mRegistry = std::make_unique<OvRegistry>(nullptr);
        QVERIFY(mPool->commit());
        QCOMPARE(stored("a.b", OvRegistry::UserPriority), "2");
    }

    void whatWaitsEndsWithThePool()
    {
        mPool->property<int>("a.b", 1, mPool->defaultSerializer());
        mPool->setAutoCommitEnabled(false);
        mPool->variant("a.b")->setValueFromQString("2");
        mPool.reset();
        QVERIFY(mRegistry->layers("a.b").empty());
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
};

KY_TEST_MAIN(TestOvPropertyPool)

#include "tst_OvPropertyPool.moc"
