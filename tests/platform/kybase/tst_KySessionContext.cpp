#include <kybase/KySessionContext.h>

#include <QStringList>
#include <QTest>

namespace {

QStringList sEnded;
int sRefusals = 0;

class First final : public KySessionComponent
{
public:
    static std::unique_ptr<First> create(KySessionContext&) { return std::make_unique<First>(); }
    ~First() override { sEnded += QStringLiteral("First"); }
};

/// Leans on First.
class Second final : public KySessionComponent
{
public:
    explicit Second(First* inFirst)
        : first(inFirst)
    {}
    static std::unique_ptr<Second> create(KySessionContext& inContext)
    {
        return std::make_unique<Second>(inContext.component<First>(true));
    }
    ~Second() override { sEnded += QStringLiteral("Second"); }

    First* const first;
};

class Refused final : public KySessionComponent
{
public:
    static std::unique_ptr<Refused> create(KySessionContext&)
    {
        ++sRefusals;
        return nullptr;
    }
};

} // namespace

class tst_KySessionContext : public QObject
{
    Q_OBJECT

private slots:
    void init();
    void thereIsNoSessionAtFirst();
    void constructionBeginsAndDestructionEndsTheSession();
    void theEndOfAnOlderSessionLeavesTheNewerOne();
    void theSessionIsReachedByASharedPointer();
    void eachSessionHasAnIdOfItsOwn();
    void aMissingComponentIsMadeOnlyOnDemand();
    void aComponentIsMadeOnce();
    void componentsAreToldApartByClass();
    void aClassMayRefuseAndIsAskedAgain();
    void componentsEndWithTheirSessionYoungestFirst();
};

void tst_KySessionContext::init()
{
    sEnded.clear();
    sRefusals = 0;
}

void tst_KySessionContext::thereIsNoSessionAtFirst()
{
    QVERIFY(!KySessionContext::currentInstance());
}

void tst_KySessionContext::constructionBeginsAndDestructionEndsTheSession()
{
    {
        KySessionContext context;
        QCOMPARE(KySessionContext::currentInstance().get(), &context);
    }
    QVERIFY(!KySessionContext::currentInstance());
}

void tst_KySessionContext::theEndOfAnOlderSessionLeavesTheNewerOne()
{
    auto older = std::make_unique<KySessionContext>();
    KySessionContext newer;
    older.reset();
    QCOMPARE(KySessionContext::currentInstance().get(), &newer);
}

/// As a client's may be, which shares its sessions: then whoever works with one keeps it.
void tst_KySessionContext::theSessionIsReachedByASharedPointer()
{
    static_assert(
        std::is_same_v<decltype(KySessionContext::currentInstance()), std::shared_ptr<KySessionContext>&>);
    auto shared = std::make_shared<KySessionContext>();
    shared->component<First>(true);
    KySessionContext::currentInstance() = shared;
    auto held = KySessionContext::currentInstance();
    shared.reset();
    KySessionContext::currentInstance().reset();
    QVERIFY(!KySessionContext::currentInstance());
    QVERIFY(held->component<First>(false));
    QVERIFY(sEnded.isEmpty());
    held.reset();
    QCOMPARE(sEnded, QStringList(QStringLiteral("First")));
}

void tst_KySessionContext::eachSessionHasAnIdOfItsOwn()
{
    QCOMPARE(KySessionContext::currentInstanceID(), OvSessionContextID());
    auto older = std::make_unique<KySessionContext>();
    const OvSessionContextID first = older->id();
    QVERIFY(first.value > 0);
    QCOMPARE(KySessionContext::currentInstanceID(), first);
    KySessionContext newer;
    QVERIFY(newer.id() != first);
    QCOMPARE(KySessionContext::currentInstanceID(), newer.id());
    older = std::make_unique<KySessionContext>();
    QVERIFY(older->id() != first && older->id() != newer.id());
}

void tst_KySessionContext::aMissingComponentIsMadeOnlyOnDemand()
{
    KySessionContext context;
    QCOMPARE(context.component<First>(false), nullptr);
    QVERIFY(context.component<First>(true));
    QVERIFY(context.component<First>(false));
}

void tst_KySessionContext::aComponentIsMadeOnce()
{
    KySessionContext context;
    First* const first = context.component<First>(true);
    QCOMPARE(context.component<First>(true), first);
    QCOMPARE(context.component<First>(false), first);
}

void tst_KySessionContext::componentsAreToldApartByClass()
{
    KySessionContext context;
    Second* const second = context.component<Second>(true);
    First* const first = context.component<First>(false);
    QVERIFY(first);
    QCOMPARE(second->first, first);
    QCOMPARE(context.component<Second>(true), second);
}

void tst_KySessionContext::aClassMayRefuseAndIsAskedAgain()
{
    KySessionContext context;
    QCOMPARE(context.component<Refused>(true), nullptr);
    QCOMPARE(context.component<Refused>(false), nullptr);
    QCOMPARE(context.component<Refused>(true), nullptr);
    QCOMPARE(sRefusals, 2);
}

void tst_KySessionContext::componentsEndWithTheirSessionYoungestFirst()
{
    {
        KySessionContext context;
        context.component<Second>(true);
        QVERIFY(sEnded.isEmpty());
    }
    QCOMPARE(sEnded, QStringList({QStringLiteral("Second"), QStringLiteral("First")}));
}

QTEST_APPLESS_MAIN(tst_KySessionContext)
#include "tst_KySessionContext.moc"
