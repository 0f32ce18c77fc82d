#include <ovvolren/OvInterface.h>

#include <QTest>

namespace {

class Thing : public OvInterface
{
public:
    ~Thing() override = default;
};

} // namespace

class tst_OvInterface : public QObject
{
    Q_OBJECT

private slots:
    void everyObjectHasItsOwnId();
    void aLiveObjectIsFoundById();
    void aGoneObjectIsNotFound();
    void theEmptyIdFindsNothing();
    void theTableCountsLiveObjects();
    void aFoundObjectCanBeKeptAlive();
};

void tst_OvInterface::everyObjectHasItsOwnId()
{
    const Thing a;
    const Thing b;
    QVERIFY(!a.uniqueID().isEmpty());
    QVERIFY(!b.uniqueID().isEmpty());
    QVERIFY(!(a.uniqueID() == b.uniqueID()));
}

void tst_OvInterface::aLiveObjectIsFoundById()
{
    Thing a;
    Thing b;
    QCOMPARE(OvInterface::instanceWithUID(a.uniqueID()), &a);
    QCOMPARE(OvInterface::instanceWithUID(b.uniqueID()), &b);
}

void tst_OvInterface::aGoneObjectIsNotFound()
{
    RnUniqueID id;
    {
        const RnHandle<Thing> handle(new Thing);
        id = handle->uniqueID();
        QVERIFY(OvInterface::instanceWithUID(id));
    }
    QCOMPARE(OvInterface::instanceWithUID(id), nullptr);
}

void tst_OvInterface::theEmptyIdFindsNothing()
{
    const Thing thing;
    QCOMPARE(OvInterface::instanceWithUID(RnUniqueID()), nullptr);
}

void tst_OvInterface::theTableCountsLiveObjects()
{
    const std::size_t before = OvInterface::numInstances();
    {
        const Thing a;
        const Thing b;
        QCOMPARE(OvInterface::numInstances(), before + 2);
    }
    QCOMPARE(OvInterface::numInstances(), before);
}

void tst_OvInterface::aFoundObjectCanBeKeptAlive()
{
    RnHandle<Thing> owner(new Thing);
    const RnUniqueID id = owner->uniqueID();
    RnHandle<OvInterface> kept(OvInterface::instanceWithUID(id));
    owner.reset();
    QCOMPARE(OvInterface::instanceWithUID(id), kept.get());
    kept.reset();
    QCOMPARE(OvInterface::instanceWithUID(id), nullptr);
}

QTEST_APPLESS_MAIN(tst_OvInterface)
#include "tst_OvInterface.moc"
