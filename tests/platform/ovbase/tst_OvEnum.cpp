#include <support/ContractWatch.h>
#include <support/KyTest.h>

#include <ovbase/OvEnum.h>
#include <ovbase/OvPropertyPool.h>
#include <ovbase/OvTranslationProperty.h>

#include <sstream>

namespace {

/// A value made of its facts.
class Value final : public OvEnumValue
{
public:
    Value(int inNumber, const char* inKey)
        : mNumber(inNumber)
        , mKey(inKey)
    {}

    int value() const override { return mNumber; }
    const char* key() const override { return mKey; }
    QString label() const override
    {
        return OvTranslationProperty::label(QStringLiteral("Enumeration.Side.") + QString::fromLatin1(mKey));
    }
    std::unique_ptr<OvEnumValue> clone() const override { return std::make_unique<Value>(*this); }

private:
    int mNumber;
    const char* mKey;
};

class Side final : public OvEnum
{
public:
    Side()
        : OvEnum("Side")
    {}
    explicit Side(const OvEnumValue& inValue)
        : OvEnum("Side", inValue)
    {}
};

class Unregistered final : public OvEnum
{
public:
    Unregistered()
        : OvEnum("Unregistered")
    {}
};

const Value Left(32, "Left");
const Value Right(33, "Right");

void registerSides()
{
    OvEnum::prepareRegistration("Side");
    OvEnum::registerValue("Side", Left.clone());
    OvEnum::registerValue("Side", Right.clone());
    OvEnum::registerEnum("Side");
}

// As a module does it when it is loaded.
[[maybe_unused]] const bool IsRegistered = [] {
    OvTranslationProperty::translate("Left", "Left side", "Enumeration.Side");
    registerSides();
    return true;
}();

} // namespace

class TestOvEnum final : public QObject
{
    Q_OBJECT

private slots:
    void init() { mContract = std::make_unique<ContractWatch>(); }
    void cleanup()
    {
        QCOMPARE(mContract->verify(), QString());
        mContract.reset();
    }

    void valuesStandInTheOrderOfTheirRegistration()
    {
        const OvEnum::Values& values = OvEnum::values("Side");
        QCOMPARE(values.size(), std::size_t(2));
        QCOMPARE(values[0]->value(), 32);
        QCOMPARE(values[1]->value(), 33);
    }

    void theFirstValueIsTheDefault()
    {
        QCOMPARE(Side().value(), 32);
        QCOMPARE(Side().key(), std::string("Left"));
        QCOMPARE(Side().name(), std::string("Side"));
    }

    void aValueHasNumberKeyAndLabel()
    {
        const Side side(Left);
        QCOMPARE(side.value(), 32);
        QCOMPARE(side.key(), std::string("Left"));
        QCOMPARE(side.label(), QStringLiteral("Left side"));
        QCOMPARE(Side(Right).label(), QString());
    }

    void aPropertyTellsThatItIsAnEnumeration()
    {
        OvProperty<Side> side("Image.Side", Side(Right));
        const OvVariant& property = side;
        QVERIFY(property.enumeration());
        QCOMPARE(property.enumeration()->name(), std::string("Side"));
        QCOMPARE(property.enumeration()->key(), std::string("Right"));
        QVERIFY(side.fromString("Left"));
        QCOMPARE(property.enumeration()->key(), std::string("Left"));
        QVERIFY(!OvProperty<int>("Image.Number", 32).enumeration());
        QVERIFY(!OvProperty<QString>("Image.Text", QStringLiteral("Left")).enumeration());
    }

    void anUnregisteredEnumHasNoValue()
    {
        Unregistered none;
        QCOMPARE(none.value(), -1);
        QCOMPARE(none.key(), std::string());
        QCOMPARE(none.label(), QString());
        QVERIFY(OvEnum::values("Unregistered").empty());
        QVERIFY(!none.setKey("Left"));
        QVERIFY(!none.setValue(32));
        std::stringstream stream("Left");
        stream >> none;
        QVERIFY(stream.fail());
    }

    void valuesAreTakenByKeyAndNumber()
    {
        Side side;
        QVERIFY(side.setKey("Right"));
        QCOMPARE(side.value(), 33);
        QVERIFY(side.setValue(32));
        QCOMPARE(side.key(), std::string("Left"));
        QVERIFY(!side.setKey("right"));
        QVERIFY(!side.setValue(34));
        QCOMPARE(side.value(), 32);
    }

    void streamsReadAWord_data()
    {
        QTest::addColumn<QString>("text");
        QTest::addColumn<bool>("isRead");
        QTest::addColumn<int>("value");
        QTest::newRow("key") << "Right" << true << 33;
        QTest::newRow("blanks before") << "  Right" << true << 33;
        QTest::newRow("further words") << "Right Left" << true << 33;
        QTest::newRow("number") << "33" << true << 33;
        QTest::newRow("unknown number") << "34" << false << 32;
        QTest::newRow("number and text") << "33x" << false << 32;
        QTest::newRow("unknown key") << "Middle" << false << 32;
        QTest::newRow("empty") << "" << false << 32;
    }
    void streamsReadAWord()
    {
        QFETCH(QString, text);
        QFETCH(bool, isRead);
        std::stringstream stream(text.toStdString());
        Side side;
        stream >> side;
        QCOMPARE(!stream.fail(), isRead);
        QTEST(side.value(), "value");
    }

    void streamsWriteTheKey()
    {
        std::stringstream stream;
        stream << Side(Right);
        QCOMPARE(stream.str(), std::string("Right"));
    }

    void equalityIsThatOfNameAndNumber()
    {
        QVERIFY(Side(Right) == Side(Right));
        QVERIFY(!(Side(Left) == Side(Right)));
        QVERIFY(Side(Left) == Side(Value(32, "Other")));
        QVERIFY(!(static_cast<const OvEnum&>(Side()) == static_cast<const OvEnum&>(Unregistered())));
    }

    void anEnumIsAPropertyWithItsKeyAsText()
    {
        OvRegistry registry(nullptr);
        {
            OvPropertyPool pool;
            auto* property = pool.property<Side>("View.Side", Side(Right), pool.defaultSerializer());
            QCOMPARE(property->toQString(), QStringLiteral("Right"));
            QVERIFY(property->setValueFromQString(QStringLiteral("Left")));
            QVERIFY(!property->setValueFromQString(QStringLiteral("Up")));
            QCOMPARE(pool.value<Side>("View.Side", Side(Right)).value(), 32);
            QVERIFY(!property->isStringType());
        }
        OvPropertyPool next;
        QCOMPARE(next.property<Side>("View.Side", Side(Right), next.defaultSerializer())->value.value(), 32);
    }

    void aCopyOutlivesAnotherRegistration()
    {
        const Side before(Right);
        const Side taken = [] {
            Side side;
            side.setKey("Right");
            return side;
        }();
        registerSides();
        QCOMPARE(before.key(), std::string("Right"));
        QCOMPARE(taken.key(), std::string("Right"));
        QVERIFY(before == taken);
        QCOMPARE(OvEnum::values("Side").size(), std::size_t(2));
    }

    void doubleAndNullValuesAreContractReports()
    {
        mContract->expect(QStringLiteral("isNew"));
        mContract->expect(QStringLiteral("isNew"));
        mContract->expect(QStringLiteral("inValue != nullptr"));
        OvEnum::prepareRegistration("Twice");
        OvEnum::registerValue("Twice", std::make_unique<Value>(1, "One"));
        OvEnum::registerValue("Twice", std::make_unique<Value>(1, "Uno"));
        OvEnum::registerValue("Twice", std::make_unique<Value>(2, "One"));
        OvEnum::registerValue("Twice", nullptr);
        OvEnum::registerEnum("Twice");
        QCOMPARE(OvEnum::values("Twice").size(), std::size_t(1));
    }

    void registeringUnpreparedIsAContractReport()
    {
        mContract->expect(QStringLiteral("isPrepared"));
        OvEnum::registerEnum("Side");
        QCOMPARE(OvEnum::values("Side").size(), std::size_t(2));
    }

    void preparedValuesAreNotInUseYet()
    {
        OvEnum::prepareRegistration("Side");
        OvEnum::registerValue("Side", std::make_unique<Value>(1, "One"));
        QCOMPARE(OvEnum::values("Side").size(), std::size_t(2));
        registerSides();
        QCOMPARE(OvEnum::values("Side").size(), std::size_t(2));
        QCOMPARE(OvEnum::values("Side")[0]->value(), 32);
    }

private:
    std::unique_ptr<ContractWatch> mContract;
};

KY_TEST_MAIN(TestOvEnum)

#include "tst_OvEnum.moc"
