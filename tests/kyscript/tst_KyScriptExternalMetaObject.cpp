#include <support/ContractWatch.h>
#include <support/KyTest.h>
#include <support/KyTestPlatform.h>

#include <kyscript/KyScriptEngine.h>
#include <kyscript/KyScriptExternalMetaObject.h>
#include <kyscript/KyScriptExternalObject.h>
#include <kyscript/KyScriptProgram.h>

#include <QPointer>
#include <QTest>

/// A class that another module offers.
class Scale : public QObject
{
    Q_OBJECT
public:
    Q_INVOKABLE explicit Scale(int inFactor)
        : mFactor(inFactor)
    {
        ++sAlive;
    }
    Q_INVOKABLE Scale()
        : Scale(2)
    {}
    ~Scale() override { --sAlive; }
    Q_INVOKABLE int of(int inValue) const { return mFactor * inValue; }
    static inline int sAlive = 0;

private:
    const int mFactor;
};

class Other : public QObject
{
    Q_OBJECT
public:
    Q_INVOKABLE Other() {}
    Q_INVOKABLE int of(int) const { return -1; }
};

/// What a module derives and keeps alive while it offers the class.
class Offer : public KyScriptExternalMetaObject
{
public:
    explicit Offer(const QString& inName, const QMetaObject& inClass = Scale::staticMetaObject,
                   QObject* inParent = nullptr)
        : Offer(inName, &inClass, inParent)
    {}
    Offer(const QString& inName, const QMetaObject* inClass, QObject* inParent = nullptr)
        : KyScriptExternalMetaObject(inParent, inName, inClass)
    {}
};

/// Does something when a script asks it to.
class Host : public QObject
{
    Q_OBJECT
public:
    explicit Host(std::function<void()> inAction)
        : mAction(std::move(inAction))
    {
        QJSEngine::setObjectOwnership(this, QJSEngine::CppOwnership);
    }
    Q_INVOKABLE void act() { mAction(); }

private:
    const std::function<void()> mAction;
};

class tst_KyScriptExternalMetaObject : public QObject
{
    Q_OBJECT

private slots:
    void init();
    void cleanup();

    void offeredClassIsConstructed();
    void objectsBelongToTheScript();
    void engineSeesClassesByItsOptions_data();
    void engineSeesClassesByItsOptions();
    void classOfferedLaterIsSeenAtTheNextEvaluation();
    void presentNameStays_data();
    void presentNameStays();
    void throwingAccessorOfTheNameStays();
    void externalObjectTakesTheNameFirst();
    void nameIsTheObjectName();
    void parentIsKept();

    void emptyNameIsAContractReport();
    void duplicateIsAContractReportAndTheFirstStands();
    void offerWithoutAClassIsAContractReportAndPassedOver();
    void endedOfferLeavesTheNextOfItsName();
    void endedOfferStaysInEngines();
    void nameIsFreeAfterTheEnd();
    void orderOfTheOthersIsKept();
    void offersMayEndDuringTheWalk();

private:
    std::unique_ptr<KyTestPlatform> mPlatform;
    std::unique_ptr<ContractWatch> mContracts;
};

namespace {

QString takenMessage(const char* inName)
{
    return QStringLiteral("Duplicate external script meta object name '%1'").arg(QLatin1String(inName));
}

struct Engine : KyScriptEngine
{
    explicit Engine(int inOptions = 0)
        : KyScriptEngine(nullptr, inOptions)
    {}
    QString text(const char* inSource)
    {
        return evaluate(KyScriptProgram(QString::fromUtf8(inSource), ""), false).toString();
    }
};

} // namespace

void tst_KyScriptExternalMetaObject::init()
{
    mPlatform = std::make_unique<KyTestPlatform>();
    mContracts = std::make_unique<ContractWatch>();
}

void tst_KyScriptExternalMetaObject::cleanup()
{
    const QString broken = mContracts->verify();
    mContracts.reset();
    mPlatform.reset();
    QVERIFY2(broken.isEmpty(), qPrintable(broken));
}

void tst_KyScriptExternalMetaObject::offeredClassIsConstructed()
{
    Offer offer("Scale");
    Engine engine;
    QCOMPARE(engine.text("typeof Scale"), QStringLiteral("function"));
    QCOMPARE(engine.text("new Scale().of(21) + ' ' + new Scale(3).of(2)"), QStringLiteral("42 6"));
    QCOMPARE(engine.runScript(KyScriptProgram("return new Scale(5).of(1)", "")).toInt(), 5);
}

void tst_KyScriptExternalMetaObject::objectsBelongToTheScript()
{
    Offer offer("Scale");
    {
        Engine engine;
        engine.text("var kept = new Scale(); new Scale(); 1");
        QCOMPARE(Scale::sAlive, 2);
        engine.text("collectGarbage()");
        QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
        QCOMPARE(Scale::sAlive, 1);
    }
    QCOMPARE(Scale::sAlive, 0);
}

void tst_KyScriptExternalMetaObject::engineSeesClassesByItsOptions_data()
{
    QTest::addColumn<int>("options");
    QTest::addColumn<bool>("seen");
    QTest::newRow("0") << 0 << true;
    QTest::newRow("-1") << -1 << true;
    QTest::newRow("the option") << 0x100000 << true;
    QTest::newRow("all others") << ~0x100000 << false;
    QTest::newRow("external objects") << (0x40000 | 0x80000) << false;
}

void tst_KyScriptExternalMetaObject::engineSeesClassesByItsOptions()
{
    QFETCH(int, options);
    QFETCH(bool, seen);
    Offer offer("Scale");
    Engine engine(options);
    QVERIFY(!engine.globalObject().hasProperty("Scale"));
    engine.text("1");
    QCOMPARE(engine.globalObject().hasProperty("Scale"), seen);
}

void tst_KyScriptExternalMetaObject::classOfferedLaterIsSeenAtTheNextEvaluation()
{
    Engine engine;
    QCOMPARE(engine.text("typeof Late"), QStringLiteral("undefined"));
    Offer offer("Late");
    QVERIFY(!engine.globalObject().hasProperty("Late"));
    QCOMPARE(engine.text("new Late().of(1)"), QStringLiteral("2"));
}

void tst_KyScriptExternalMetaObject::presentNameStays_data()
{
    QTest::addColumn<QString>("value");
    QTest::addColumn<bool>("stays");
    for (const char* value : {"5", "0", "''", "false", "({})", "(function() {})", "null"})
        QTest::newRow(value) << value << true;
    QTest::newRow("undefined") << "undefined" << false;
}

void tst_KyScriptExternalMetaObject::presentNameStays()
{
    QFETCH(QString, value);
    QFETCH(bool, stays);
    Offer offer("Present");
    Engine engine;
    engine.QJSEngine::evaluate(QStringLiteral("var Present = %1").arg(value));
    const QJSValue before = engine.globalObject().property("Present");
    engine.text("1");
    const QJSValue after = engine.globalObject().property("Present");
    QCOMPARE(after.strictlyEquals(before), stays);
    QCOMPARE(after.isQMetaObject(), !stays);
}

void tst_KyScriptExternalMetaObject::throwingAccessorOfTheNameStays()
{
    Offer offer("Thrower");
    Engine engine;
    engine.QJSEngine::evaluate(
        "Object.defineProperty(this, 'Thrower', {get: function() { throw new Error('x'); }})");
    QCOMPARE(engine.text("6 * 7"), QStringLiteral("42"));
    QVERIFY(!engine.hasError());
}

void tst_KyScriptExternalMetaObject::externalObjectTakesTheNameFirst()
{
    Offer offer("Contested");
    KyScriptExternalObject object(nullptr, "Contested", ScriptExternalKindB);
    Engine engine;
    engine.text("1");
    QCOMPARE(engine.globalObject().property("Contested").toQObject(), &object);
}

void tst_KyScriptExternalMetaObject::nameIsTheObjectName()
{
    Offer offer("Scale");
    QCOMPARE(offer.objectName(), QStringLiteral("Scale"));
    offer.setObjectName("Renamed");
    Engine engine;
    QCOMPARE(engine.text("typeof Scale + ' ' + typeof Renamed"), QStringLiteral("undefined function"));
    Offer free("Scale"); // no report
    QCOMPARE(engine.text("typeof Scale"), QStringLiteral("function"));
}

void tst_KyScriptExternalMetaObject::parentIsKept()
{
    auto parent = std::make_unique<QObject>();
    const QPointer<Offer> offer = new Offer("Owned", Scale::staticMetaObject, parent.get());
    QCOMPARE(offer->parent(), parent.get());
    parent.reset();
    QVERIFY(!offer);
    Engine engine;
    QCOMPARE(engine.text("typeof Owned"), QStringLiteral("undefined"));
}

void tst_KyScriptExternalMetaObject::emptyNameIsAContractReport()
{
    const QString message = "Invalid name for external script meta object";
    mContracts->expect("!inName.isEmpty()", message);
    Offer first("");
    // The entry is there all the same, and so the empty name is taken.
    mContracts->expect("!inName.isEmpty()", message);
    mContracts->expect("it == objects.end()", takenMessage(""));
    Offer second("");
    Engine engine;
    QCOMPARE(engine.text("typeof this['']"), QStringLiteral("function"));
}

void tst_KyScriptExternalMetaObject::duplicateIsAContractReportAndTheFirstStands()
{
    Offer first("Twice");
    mContracts->expect("it == objects.end()", takenMessage("Twice"));
    Offer second("Twice", Other::staticMetaObject);
    mContracts->expect("it == objects.end()", takenMessage("Twice"));
    Offer third("Twice", Other::staticMetaObject);
    Offer lower("twice", Other::staticMetaObject); // names mind case
    Engine engine;
    QCOMPARE(engine.text("new Twice().of(1)"), QStringLiteral("2"));
}

void tst_KyScriptExternalMetaObject::offerWithoutAClassIsAContractReportAndPassedOver()
{
    mContracts->expect("inMetaObject", "No class for external script meta object 'None'");
    Offer none("None", nullptr);
    QCOMPARE(none.objectName(), QStringLiteral("None"));
    Engine engine;
    QCOMPARE(engine.text("typeof None + ('None' in this)"), QStringLiteral("undefinedfalse"));

    // Its name is taken all the same, but a class of that name serves.
    mContracts->expect("it == objects.end()", takenMessage("None"));
    Offer second("None");
    QCOMPARE(engine.text("new None().of(21)"), QStringLiteral("42"));
}

void tst_KyScriptExternalMetaObject::endedOfferLeavesTheNextOfItsName()
{
    auto first = std::make_unique<Offer>("Twice");
    mContracts->expect("it == objects.end()", takenMessage("Twice"));
    Offer second("Twice", Other::staticMetaObject);
    first.reset();
    Engine engine;
    QCOMPARE(engine.text("new Twice().of(1)"), QStringLiteral("-1"));
}

void tst_KyScriptExternalMetaObject::endedOfferStaysInEngines()
{
    auto offer = std::make_unique<Offer>("Ended");
    Engine engine;
    engine.text("1");
    offer.reset();
    QCOMPARE(engine.text("new Ended(3).of(2)"), QStringLiteral("6"));
    Engine later;
    QCOMPARE(later.text("typeof Ended"), QStringLiteral("undefined"));
}

void tst_KyScriptExternalMetaObject::nameIsFreeAfterTheEnd()
{
    {
        Offer offer("Freed");
    }
    Offer again("Freed", Other::staticMetaObject);
    Engine engine;
    QCOMPARE(engine.text("new Freed().of(1)"), QStringLiteral("-1"));
}

/// Seen through duplicates: each engine takes the first of a name.
void tst_KyScriptExternalMetaObject::orderOfTheOthersIsKept()
{
    auto first = std::make_unique<Offer>("first");
    auto middle = std::make_unique<Offer>("middle");
    Offer third("third"), fourth("fourth", Other::staticMetaObject);
    middle.reset();
    third.setObjectName("same");
    fourth.setObjectName("same");
    {
        Engine engine;
        QCOMPARE(engine.text("new same().of(1)"), QStringLiteral("2"));
    }
    first.reset();
    Engine engine;
    QCOMPARE(engine.text("new same().of(1)"), QStringLiteral("2"));
}

/// A global that the walk reads may be an accessor, and that may end what the walk has still before it.
void tst_KyScriptExternalMetaObject::offersMayEndDuringTheWalk()
{
    Offer first("first");
    auto second = std::make_unique<Offer>("second");
    Offer third("third");
    Host host([&] { second.reset(); });
    Engine engine;
    engine.globalObject().setProperty("host", engine.newQObject(&host));
    engine.QJSEngine::evaluate("Object.defineProperty(this, 'first', {get: function() { host.act(); }})");
    QCOMPARE(engine.text("typeof second + typeof third"), QStringLiteral("undefinedfunction"));
    QVERIFY(!second);
}

KY_TEST_MAIN(tst_KyScriptExternalMetaObject)
#include "tst_KyScriptExternalMetaObject.moc"
