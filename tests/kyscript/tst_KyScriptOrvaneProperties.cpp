// The properties of the application as scripts read, change, reset and register them.

#include <support/ContractWatch.h>
#include <support/KyTest.h>
#include <support/KyTestPlatform.h>
#include <support/LogCapture.h>

#include <kyscript/KyScriptEngine.h>
#include <kyscript/KyScriptOrvane.h>
#include <kyscript/KyScriptProgram.h>

#include <kybase/KyNotifiable.h>
#include <ovbase/OvEnum.h>
#include <ovbase/OvRegistryMemoryStore.h>
#include <ovbase/OvTranslationProperty.h>

#include <QDateTime>

#include <optional>
#include <stdexcept>

namespace {

using StringList = QList<QString>;

/// A value type of another module.
struct Angle
{
    int degrees = 0;
};

std::ostream& operator<<(std::ostream& ioStream, const Angle& inValue)
{
    return ioStream << inValue.degrees << "deg";
}

std::istream& operator>>(std::istream& ioStream, Angle& ioValue)
{
    return ioStream >> ioValue.degrees;
}

class SideValue final : public OvEnumValue
{
public:
    SideValue(int inNumber, const char* inKey)
        : mNumber(inNumber)
        , mKey(inKey)
    {}
    int value() const override { return mNumber; }
    const char* key() const override { return mKey; }
    QString label() const override { return QStringLiteral("The %1 side").arg(QLatin1String(mKey)); }
    std::unique_ptr<OvEnumValue> clone() const override { return std::make_unique<SideValue>(*this); }

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
};

/// Hears of changed properties, and does something of the test's then.
class Receiver final : public KyNotifiable
{
public:
    Receiver()
    {
        KyNotifiables::getInstance()->addNotification(this, KyNotification(KyNotification::PropertyChanged));
    }
    void notified(const KyNotification& inNotification) override
    {
        heard.append(QStringLiteral("%1|%2|%3|%4=%5|%6")
                         .arg(QString::number(inNotification.code), QString::number(inNotification.firstWord),
                              QString::number(inNotification.secondWord),
                              QString::fromLatin1(inNotification.property->identifier().c_str()),
                              inNotification.property->toQString(),
                              QString::number(inNotification.session.value)));
        if (action)
            action();
    }
    QStringList take() { return std::exchange(heard, QStringList()); }

    QStringList heard;
    std::function<void()> action;
};

class FailingSerializer final : public OvSerializer
{
public:
    bool write(const OvVariant&, int) override { throw std::runtime_error("no room"); }
    bool read(OvVariant&) override { return false; }
};

template <class T>
QString nameOf()
{
    return QString::fromLatin1(typeid(T).name());
}

} // namespace

class tst_KyScriptOrvaneProperties : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();
    void init();
    void cleanup();

    void propertiesHaveATextForm_data();
    void propertiesHaveATextForm();
    void unknownPropertiesAreNeutral_data();
    void unknownPropertiesAreNeutral();

    void variantHasTheTypeOfTheProperty_data();
    void variantHasTheTypeOfTheProperty();

    void textIsSet_data();
    void textIsSet();
    void unreadableTextLeavesTheValue_data();
    void unreadableTextLeavesTheValue();
    void equalTextTellsNobody();
    void changeBeyondTheDigitsOfTheTextTellsNobody();

    void valueIsSet_data();
    void valueIsSet();
    void presentValueIsNoChange_data();
    void presentValueIsNoChange();
    void otherTypeIsRefused_data();
    void otherTypeIsRefused();
    void unsupportedTypeIsRefused_data();
    void unsupportedTypeIsRefused();
    void unsupportedHostTypeIsRefused_data();
    void unsupportedHostTypeIsRefused();
    void mixedListIsRefused_data();
    void mixedListIsRefused();
    void typeIsLookedAtBeforeTheList();
    void stringListOfTheHostNeedsNoTest();
    void percentSignsAreNoPlaces();
    void messagesAreLatin1();
    void harmfulValuesDoNoHarm_data();
    void harmfulValuesDoNoHarm();
    void failureToStoreDoesNotReachTheScript();
    void failureOfAnObserverDoesNotReachTheScript();

    void scriptsWriteTheirOwnLayer();
    void layersAreRestoredByRemoval();
    void removalOfWhatNoScriptSetLeavesTheValue_data();
    void removalOfWhatNoScriptSetLeavesTheValue();
    void removalTellsUnlessTheStoredValueIsTheSame();
    void removalLeavesOtherPropertiesAlone();
    void priorityIsTheScriptsDuringTheCallOnly();

    void propertyIsRegistered_data();
    void propertyIsRegistered();
    void wholeDefaultMakesAnInteger();
    void floatingPointTakesWholeDefaults();
    void secondRegistrationKeepsTheValue();
    void registrationWithAnotherTypeIsRefused();
    void floatingPointOverAnotherTypeIsRefused();
    void unsupportedDefaultIsRefused_data();
    void unsupportedDefaultIsRefused();
    void unmatchedComponentsAreRefused_data();
    void unmatchedComponentsAreRefused();
    void mixedDefaultLeavesItsLabels();
    void everyLevelHasItsLabel();
    void emptyComponentsAreKept();
    void labelsMayHaveAnyCharacters();
    void storedValueIsThereAtRegistration();
    void registeredPropertyOutlivesItsEngine();
    void invalidIdsAreNotRegistered_data();
    void invalidIdsAreNotRegistered();
    void longestIdIsRegistered();
    void serversOwnProcessIsReported();

    void withoutAPoolEverythingIsNeutral();
    void withoutARegistryValuesLiveInThePool();
    void propertiesEndInTheMidstOfAChange_data();
    void propertiesEndInTheMidstOfAChange();
    void enginesShareTheProperties();
    void argumentsAreConvertedAsEver_data();
    void argumentsAreConvertedAsEver();

private:
    QJSValue run(const QString& inSource)
    {
        return mEngine->runScript(KyScriptProgram(inSource, ""), false, false, false);
    }
    KyScriptOrvane& orvane()
    {
        return *qobject_cast<KyScriptOrvane*>(mEngine->globalObject().property("Orvane").toQObject());
    }
    template <class T>
    OvProperty<T>& add(const char* inId, const T& inValue)
    {
        return *mPlatform->pool.property<T>(inId, inValue, mPlatform->pool.defaultSerializer());
    }
    void addOneOfEachType();
    QString stored(const char* inId, OvRegistry::Priority inLayer = OvRegistry::EffectivePriority)
    {
        OvRegistry::Value value{"(none)", ""};
        mPlatform->registry.getProperty(inId, value, inLayer);
        return value.value;
    }
    /// The lines of level 3, and no others, since the last call.
    QStringList messages();

    std::unique_ptr<KyTestPlatform> mPlatform;
    std::unique_ptr<ContractWatch> mContracts;
    std::unique_ptr<LogCapture> mLog;
    std::unique_ptr<KyScriptEngine> mEngine;
    std::unique_ptr<Receiver> mReceiver;
};

void tst_KyScriptOrvaneProperties::initTestCase()
{
    OvEnum::prepareRegistration("Side");
    OvEnum::registerValue("Side", std::make_unique<SideValue>(0, "left"));
    OvEnum::registerValue("Side", std::make_unique<SideValue>(1, "right"));
    OvEnum::registerEnum("Side");
}

void tst_KyScriptOrvaneProperties::init()
{
    mPlatform = std::make_unique<KyTestPlatform>();
    mContracts = std::make_unique<ContractWatch>();
    mEngine = std::make_unique<KyScriptEngine>(nullptr, ScriptOrvane | ScriptGlobal);
    mReceiver = std::make_unique<Receiver>();
    mLog = std::make_unique<LogCapture>(2);
}

void tst_KyScriptOrvaneProperties::cleanup()
{
    const QStringList lines = mLog->take();
    const QString broken = mContracts->verify();
    mLog.reset();
    mReceiver.reset();
    mEngine.reset();
    mContracts.reset();
    mPlatform.reset();
    QVERIFY2(broken.isEmpty(), qPrintable(broken));
    QCOMPARE(lines, QStringList());
}

QStringList tst_KyScriptOrvaneProperties::messages()
{
    QStringList texts;
    for (QString line : mLog->take()) {
        const QLatin1String head("3|Script Interface|Orvane.");
        texts.append(line.startsWith(head) ? line.mid(head.size()) : "?" + line);
    }
    return texts;
}

void tst_KyScriptOrvaneProperties::addOneOfEachType()
{
    add<bool>("T.Bool", true);
    add<int>("T.Int", 7);
    add<double>("T.Double", 2.5);
    add<QString>("T.String", QStringLiteral("text"));
    add<StringList>("T.List", {"a", "b c", "d,e"});
    add<Side>("T.Enum", Side());
    add<Angle>("T.Angle", Angle{90});
    add<float>("T.Float", 1.5F);
}

void tst_KyScriptOrvaneProperties::propertiesHaveATextForm_data()
{
    QTest::addColumn<QString>("id");
    QTest::addColumn<QString>("text");
    QTest::newRow("bool") << "T.Bool"
                          << "true";
    QTest::newRow("int") << "T.Int"
                         << "7";
    QTest::newRow("double") << "T.Double"
                            << "2.5";
    QTest::newRow("string") << "T.String"
                            << "text";
    QTest::newRow("list") << "T.List"
                          << "a,b c,\"d,e\"";
    QTest::newRow("enumeration") << "T.Enum"
                                 << "left";
    QTest::newRow("type of another module") << "T.Angle"
                                            << "90deg";
    QTest::newRow("float") << "T.Float"
                           << "1.5";
}

void tst_KyScriptOrvaneProperties::propertiesHaveATextForm()
{
    QFETCH(QString, id);
    QFETCH(QString, text);
    addOneOfEachType();
    QCOMPARE(orvane().propertyValue(id), text);
    const QJSValue value = run(QStringLiteral("Orvane.propertyValue('%1')").arg(id));
    QVERIFY(value.isString());
    QCOMPARE(value.toString(), text);
}

void tst_KyScriptOrvaneProperties::unknownPropertiesAreNeutral_data()
{
    QTest::addColumn<QString>("id");
    QTest::newRow("another name") << "No.Such";
    QTest::newRow("part of a name") << "T";
    QTest::newRow("other letters") << "t.int";
    QTest::newRow("with more behind") << "T.Int.";
    QTest::newRow("empty") << "";
    QTest::newRow("dots") << "...";
    QTest::newRow("empty component") << "T..Int";
    QTest::newRow("beyond Latin-1") << QStringLiteral("T.\u65e5\u672c");
    QTest::newRow("NUL") << QString("T.Int") + QChar(u'\0');
    QTest::newRow("10000 characters") << QString(10000, 'x');
    QTest::newRow("10000 dots") << QString(10000, '.');
}

void tst_KyScriptOrvaneProperties::unknownPropertiesAreNeutral()
{
    QFETCH(QString, id);
    addOneOfEachType();
    mEngine->globalObject().setProperty("id", id);
    const QJSValue text = run("Orvane.propertyValue(id)");
    QVERIFY(text.isString() && text.toString().isEmpty());
    QVERIFY(run("Orvane.propertyVariant(id)").isUndefined());
    QVERIFY(!orvane().propertyVariant(id).isValid());
    for (const char* call :
         {"setPropertyValue(id, 'x')", "setPropertyVariant(id, 1)", "setPropertyVariant(id, undefined)",
          "setPropertyVariant(id, {})", "removePropertyValue(id)"})
    {
        const QJSValue result = run(QLatin1String("Orvane.") + QLatin1String(call));
        QVERIFY2(result.isBool() && !result.toBool(), call);
    }
    QCOMPARE(mReceiver->take(), QStringList());
}

void tst_KyScriptOrvaneProperties::variantHasTheTypeOfTheProperty_data()
{
    QTest::addColumn<QString>("id");
    QTest::addColumn<QVariant>("value");
    QTest::addColumn<QString>("script");
    QTest::newRow("bool") << "T.Bool" << QVariant(true) << "v === true";
    QTest::newRow("int") << "T.Int" << QVariant(7) << "v === 7";
    QTest::newRow("double") << "T.Double" << QVariant(2.5) << "v === 2.5";
    QTest::newRow("string") << "T.String" << QVariant(QString("text")) << "v === 'text'";
    QTest::newRow("list") << "T.List" << QVariant(QStringList{"a", "b c", "d,e"})
                          << "Array.isArray(v) && v.join('|') === 'a|b c|d,e'";
    QTest::newRow("enumeration") << "T.Enum" << QVariant(QString("left")) << "v === 'left'";
    QTest::newRow("another module's") << "T.Angle" << QVariant(QString("90deg")) << "v === '90deg'";
    QTest::newRow("float") << "T.Float" << QVariant(QString("1.5")) << "v === '1.5'";
}

void tst_KyScriptOrvaneProperties::variantHasTheTypeOfTheProperty()
{
    QFETCH(QString, id);
    QFETCH(QVariant, value);
    QFETCH(QString, script);
    addOneOfEachType();
    const QVariant found = orvane().propertyVariant(id);
    QCOMPARE(found.typeId(), value.typeId());
    QCOMPARE(found, value);
    QVERIFY(run(QStringLiteral("var v = Orvane.propertyVariant('%1'); %2").arg(id, script)).toBool());
}

void tst_KyScriptOrvaneProperties::textIsSet_data()
{
    QTest::addColumn<QString>("id");
    QTest::addColumn<QString>("text");
    QTest::addColumn<QString>("shown");
    QTest::newRow("bool") << "T.Bool"
                          << "false"
                          << "false";
    QTest::newRow("bool as number") << "T.Bool"
                                    << "0"
                                    << "false";
    QTest::newRow("int") << "T.Int"
                         << "-12"
                         << "-12";
    QTest::newRow("int with blanks") << "T.Int"
                                     << "  8 apples"
                                     << "8";
    QTest::newRow("double") << "T.Double"
                            << "0.125"
                            << "0.125";
    QTest::newRow("string") << "T.String" << QStringLiteral("\u65e5\u672c \"x\"")
                            << QStringLiteral("\u65e5\u672c \"x\"");
    QTest::newRow("empty string") << "T.String"
                                  << ""
                                  << "";
    QTest::newRow("list") << "T.List"
                          << "x,\"y,z\""
                          << "x,\"y,z\"";
    QTest::newRow("empty list") << "T.List"
                                << ""
                                << "";
    QTest::newRow("enumeration") << "T.Enum"
                                 << "right"
                                 << "right";
    QTest::newRow("enumeration by number") << "T.Enum"
                                           << "1"
                                           << "right";
    QTest::newRow("another module's") << "T.Angle"
                                      << "45"
                                      << "45deg";
}

void tst_KyScriptOrvaneProperties::textIsSet()
{
    QFETCH(QString, id);
    QFETCH(QString, text);
    QFETCH(QString, shown);
    addOneOfEachType();
    mEngine->globalObject().setProperty("text", text);
    const QJSValue result = run(QStringLiteral("Orvane.setPropertyValue('%1', text)").arg(id));
    QVERIFY(result.isBool() && result.toBool());
    QCOMPARE(orvane().propertyValue(id), shown);
    QCOMPARE(stored(qPrintable(id), 3000), shown);
    QCOMPARE(mReceiver->take(), QStringList{QStringLiteral("102|0|0|%1=%2|0").arg(id, shown)});
}

void tst_KyScriptOrvaneProperties::unreadableTextLeavesTheValue_data()
{
    QTest::addColumn<QString>("id");
    QTest::addColumn<QString>("text");
    QTest::newRow("bool") << "T.Bool"
                          << "perhaps";
    QTest::newRow("int") << "T.Int"
                         << "seven";
    QTest::newRow("empty int") << "T.Int"
                               << "";
    QTest::newRow("int out of range") << "T.Int"
                                      << "99999999999999999999";
    QTest::newRow("double") << "T.Double"
                            << "x1";
    QTest::newRow("list") << "T.List"
                          << "\"open";
    QTest::newRow("enumeration") << "T.Enum"
                                 << "top";
}

void tst_KyScriptOrvaneProperties::unreadableTextLeavesTheValue()
{
    QFETCH(QString, id);
    QFETCH(QString, text);
    addOneOfEachType();
    const QString before = orvane().propertyValue(id);
    mEngine->globalObject().setProperty("text", text);
    QVERIFY(run(QStringLiteral("Orvane.setPropertyValue('%1', text)").arg(id)).toBool());
    QCOMPARE(orvane().propertyValue(id), before);
    QCOMPARE(stored(qPrintable(id)), QStringLiteral("(none)"));
    QCOMPARE(mReceiver->take(), QStringList());
}

void tst_KyScriptOrvaneProperties::equalTextTellsNobody()
{
    addOneOfEachType();
    for (const char* id : {"T.Bool", "T.Int", "T.Double", "T.String", "T.List", "T.Enum", "T.Angle"}) {
        QVERIFY(run(QStringLiteral("Orvane.setPropertyValue('%1', Orvane.propertyValue('%1'))").arg(id))
                    .toBool());
        QCOMPARE(stored(id), QStringLiteral("(none)"));
    }
    QCOMPARE(mReceiver->take(), QStringList());
}

/// The text of a double has six digits.
void tst_KyScriptOrvaneProperties::changeBeyondTheDigitsOfTheTextTellsNobody()
{
    auto& property = add<double>("T.Double", 2.5);
    QVERIFY(run("Orvane.setPropertyValue('T.Double', '2.50000001')").toBool());
    QCOMPARE(property.value, 2.50000001);
    QCOMPARE(mReceiver->take(), QStringList());
}

void tst_KyScriptOrvaneProperties::valueIsSet_data()
{
    QTest::addColumn<QString>("id");
    QTest::addColumn<QString>("value");
    QTest::addColumn<QString>("shown");
    QTest::newRow("bool") << "T.Bool"
                          << "false"
                          << "false";
    QTest::newRow("int") << "T.Int"
                         << "5"
                         << "5";
    QTest::newRow("negative int") << "T.Int"
                                  << "-5"
                                  << "-5";
    QTest::newRow("largest int") << "T.Int"
                                 << "2147483647"
                                 << "2147483647";
    QTest::newRow("smallest int") << "T.Int"
                                  << "-2147483648"
                                  << "-2147483648";
    QTest::newRow("nought") << "T.Int"
                            << "0"
                            << "0";
    QTest::newRow("negative nought") << "T.Int"
                                     << "-0"
                                     << "0";
    QTest::newRow("whole literal") << "T.Int"
                                   << "2.0"
                                   << "2";
    QTest::newRow("whole quotient") << "T.Int"
                                    << "4 / 2"
                                    << "2";
    QTest::newRow("whole product") << "T.Int"
                                   << "0.5 * 4"
                                   << "2";
    QTest::newRow("rounded") << "T.Int"
                             << "Math.round(2.4)"
                             << "2";
    QTest::newRow("power") << "T.Int"
                           << "Math.pow(2, 3)"
                           << "8";
    QTest::newRow("parsed") << "T.Int"
                            << "parseFloat('3.0')"
                            << "3";
    QTest::newRow("of a text") << "T.Int"
                               << "Number('9')"
                               << "9";
    QTest::newRow("of a typed array") << "T.Int"
                                      << "new Float64Array([6])[0]"
                                      << "6";
    QTest::newRow("double") << "T.Double"
                            << "0.1"
                            << "0.1";
    QTest::newRow("negative double") << "T.Double"
                                     << "-1.25"
                                     << "-1.25";
    QTest::newRow("beyond int") << "T.Double"
                                << "2147483648"
                                << "2.14748e+09";
    QTest::newRow("infinite") << "T.Double"
                              << "Infinity"
                              << "inf";
    QTest::newRow("no number") << "T.Double"
                               << "NaN"
                               << "nan";
    QTest::newRow("string") << "T.String"
                            << "'\\u65e5'" << QStringLiteral("\u65e5");
    QTest::newRow("empty string") << "T.String"
                                  << "''"
                                  << "";
    QTest::newRow("array of strings") << "T.List"
                                      << "['x', 'y,z']"
                                      << "x,\"y,z\"";
    QTest::newRow("empty array") << "T.List"
                                 << "[]"
                                 << "";
    QTest::newRow("one empty string") << "T.List"
                                      << "['']"
                                      << "\"\"";
    QTest::newRow("list of the host") << "T.List"
                                      << "Orvane.propertyVariant('T.Other')"
                                      << "o,p";
    QTest::newRow("result of split") << "T.List"
                                     << "'q r'.split(' ')"
                                     << "q,r";
}

void tst_KyScriptOrvaneProperties::valueIsSet()
{
    QFETCH(QString, id);
    QFETCH(QString, value);
    QFETCH(QString, shown);
    addOneOfEachType();
    add<StringList>("T.Other", {"o", "p"});
    QStringList heardByObserver;
    OvVariant* property = mPlatform->pool.variant(id.toStdString());
    property->connectPropertyChangedSignal(
        nullptr, [&](const OvVariant* p) { heardByObserver += p->toQString(); }, false);
    QStringList heardByPool;
    mPlatform->pool.observeChanges(this, [&](const OvVariant* p) { heardByPool += p->toQString(); });

    const QJSValue result = run(QStringLiteral("Orvane.setPropertyVariant('%1', %2)").arg(id, value));
    QVERIFY(result.isBool() && result.toBool());
    QCOMPARE(orvane().propertyValue(id), shown);
    QCOMPARE(stored(qPrintable(id), 3000), shown);
    QCOMPARE(mPlatform->registry.layers(id), std::vector<int>{3000});
    QCOMPARE(mReceiver->take(), QStringList{QStringLiteral("102|0|0|%1=%2|0").arg(id, shown)});
    QCOMPARE(heardByObserver, QStringList{shown});
    QCOMPARE(heardByPool, QStringList{shown});
}

void tst_KyScriptOrvaneProperties::presentValueIsNoChange_data()
{
    QTest::addColumn<QString>("id");
    QTest::addColumn<QString>("value");
    QTest::newRow("bool") << "T.Bool"
                          << "true";
    QTest::newRow("int") << "T.Int"
                         << "7";
    QTest::newRow("computed int") << "T.Int"
                                  << "3.5 * 2";
    QTest::newRow("double") << "T.Double"
                            << "2.5";
    QTest::newRow("string") << "T.String"
                            << "'text'";
    QTest::newRow("list") << "T.List"
                          << "['a', 'b c', 'd,e']";
}

void tst_KyScriptOrvaneProperties::presentValueIsNoChange()
{
    QFETCH(QString, id);
    QFETCH(QString, value);
    addOneOfEachType();
    QVERIFY(run(QStringLiteral("Orvane.setPropertyVariant('%1', %2)").arg(id, value)).toBool());
    QCOMPARE(stored(qPrintable(id)), QStringLiteral("(none)"));
    QCOMPARE(mReceiver->take(), QStringList());
}

void tst_KyScriptOrvaneProperties::otherTypeIsRefused_data()
{
    QTest::addColumn<QString>("id");
    QTest::addColumn<QString>("type");
    QTest::addColumn<QString>("value");
    QTest::addColumn<QString>("shown");
    const std::vector<std::pair<const char*, QString>> properties{
        {"T.Bool", nameOf<bool>()},      {"T.Int", nameOf<int>()},         {"T.Double", nameOf<double>()},
        {"T.String", nameOf<QString>()}, {"T.List", nameOf<StringList>()}, {"T.Enum", nameOf<Side>()},
        {"T.Angle", nameOf<Angle>()},    {"T.Float", nameOf<float>()}};
    const std::vector<std::tuple<const char*, const char*, const char*>> values{
        {"T.Bool", "false", "false"},
        {"T.Int", "3", "3"},
        {"T.Double", "1.5", "1.5"},
        {"T.String", "'a \"b\"'", "\"a \"b\"\""},
        {"T.List", "['x','y']", "[\"x\",\"y\"]"}};
    for (const auto& [id, type] : properties) {
        for (const auto& [own, value, shown] : values) {
            if (QLatin1String(id) != QLatin1String(own))
                QTest::addRow("%s to %s", value, id) << id << type << value << shown;
        }
    }
    QTest::newRow("whole number to a double") << "T.Double" << nameOf<double>() << "2"
                                              << "2";
    QTest::newRow("empty list to a string") << "T.String" << nameOf<QString>() << "[]"
                                            << "[]";
}

void tst_KyScriptOrvaneProperties::otherTypeIsRefused()
{
    QFETCH(QString, id);
    QFETCH(QString, type);
    QFETCH(QString, value);
    QFETCH(QString, shown);
    addOneOfEachType();
    const QString before = orvane().propertyValue(id);
    QVERIFY(run(QStringLiteral("Orvane.setPropertyVariant('%1', %2)").arg(id, value)).toBool());
    QCOMPARE(messages(), QStringList{"setPropertyVariant(\"" + id + "\", " + shown + ") - property type '" +
                                     type + "' does not match argument"});
    QCOMPARE(orvane().propertyValue(id), before);
    QCOMPARE(stored(qPrintable(id)), QStringLiteral("(none)"));
    QCOMPARE(mReceiver->take(), QStringList());
}

void tst_KyScriptOrvaneProperties::unsupportedTypeIsRefused_data()
{
    QTest::addColumn<QString>("value");
    QTest::addColumn<QString>("shown");
    QTest::addColumn<QString>("type");
    QTest::newRow("undefined") << "undefined"
                               << ""
                               << "";
    QTest::newRow("null") << "null"
                          << ""
                          << "std::nullptr_t";
    QTest::newRow("object") << "({a: 1})"
                            << ""
                            << "QVariantMap";
    QTest::newRow("empty object") << "({})"
                                  << ""
                                  << "QVariantMap";
    QTest::newRow("function") << "function() {}"
                              << ""
                              << "QJSValue";
    QTest::newRow("class of the engine") << "Date"
                                         << ""
                                         << "QJSValue";
    QTest::newRow("symbol") << "Symbol('s')"
                            << ""
                            << "QJSValue";
    QTest::newRow("date") << "new Date(2026, 0, 31, 14, 5, 9)"
                          << "2026-01-31T14:05:09.000"
                          << "QDateTime";
    QTest::newRow("regular expression") << "/x/"
                                        << ""
                                        << "QRegularExpression";
    QTest::newRow("host object") << "Orvane"
                                 << ""
                                 << "QObject*";
    QTest::newRow("buffer") << "new ArrayBuffer(2)" << QString(2, QChar(u'\0')) << "QByteArray";
    QTest::newRow("typed array") << "new Uint8Array(2)"
                                 << ""
                                 << "QVariantMap";
    QTest::newRow("map") << "new Map()"
                         << ""
                         << "QVariantMap";
    QTest::newRow("error") << "new Error('x')"
                           << ""
                           << "QVariantMap";
    QTest::newRow("String object") << "new String('x')"
                                   << ""
                                   << "QVariantMap";
}

void tst_KyScriptOrvaneProperties::unsupportedTypeIsRefused()
{
    QFETCH(QString, value);
    QFETCH(QString, shown);
    QFETCH(QString, type);
    addOneOfEachType();
    const QJSValue result = run(QStringLiteral("Orvane.setPropertyVariant('T.String', %1)").arg(value));
    QVERIFY2(result.isBool() && result.toBool(), qPrintable(result.toString()));
    QString expected =
        "setPropertyVariant(\"T.String\", " + shown + ") - unsupported property type '" + type + "'";
    // A line of the log ends at a NUL.
    expected.truncate(expected.contains(QChar(u'\0')) ? expected.indexOf(QChar(u'\0')) : expected.size());
    QCOMPARE(messages(), QStringList{expected});
    QCOMPARE(orvane().propertyValue("T.String"), QStringLiteral("text"));
    QCOMPARE(mReceiver->take(), QStringList());
}

void tst_KyScriptOrvaneProperties::unsupportedHostTypeIsRefused_data()
{
    QTest::addColumn<QVariant>("value");
    QTest::addColumn<QString>("shown");
    QTest::addColumn<QString>("type");
    QTest::newRow("3") << QVariant(7U) << "7"
                       << "uint";
    QTest::newRow("4") << QVariant(7LL) << "7"
                       << "qlonglong";
    QTest::newRow("5") << QVariant(7ULL) << "7"
                       << "qulonglong";
    QTest::newRow("7") << QVariant(QChar('7')) << "7"
                       << "QChar";
    QTest::newRow("8") << QVariant(QVariantMap{{"a", 1}}) << ""
                       << "QVariantMap";
    QTest::newRow("12") << QVariant(QByteArray("7")) << "7"
                        << "QByteArray";
    QTest::newRow("38") << QVariant(7.0F) << "7"
                        << "float";
}

void tst_KyScriptOrvaneProperties::unsupportedHostTypeIsRefused()
{
    QFETCH(QVariant, value);
    QFETCH(QString, shown);
    QFETCH(QString, type);
    addOneOfEachType();
    QVERIFY(orvane().setPropertyVariant("T.Int", value));
    orvane().registerProperty("N.New", "N.New", value);
    QCOMPARE(messages(),
             (QStringList{
                 "setPropertyVariant(\"T.Int\", " + shown + ") - unsupported property type '" + type + "'",
                 "registerProperty(\"N.New\"..." + shown + ") - unsupported property type '" + type + "'"}));
    QCOMPARE(mPlatform->pool.variant("N.New"), nullptr);
    QCOMPARE(mReceiver->take(), QStringList());
}

void tst_KyScriptOrvaneProperties::mixedListIsRefused_data()
{
    QTest::addColumn<QString>("value");
    QTest::addColumn<QString>("shown");
    QTest::newRow("number") << "['a', 1]"
                            << "[\"a\",1]";
    QTest::newRow("number alone") << "[1]"
                                  << "[1]";
    QTest::newRow("computed number") << "['a', 0.5 * 4]"
                                     << "[\"a\",2]";
    QTest::newRow("fraction") << "[2.5]"
                              << "[2.5]";
    QTest::newRow("bool") << "[true, 'a']"
                          << "[true,\"a\"]";
    QTest::newRow("null") << "['a', null]"
                          << "[\"a\",]";
    QTest::newRow("undefined") << "[undefined, 'a']"
                               << "[,\"a\"]";
    QTest::newRow("hole") << "['a',,'b']"
                          << "[\"a\",,\"b\"]";
    QTest::newRow("nested list") << "[['a', ['b']], 'c']"
                                 << "[[\"a\",[\"b\"]],\"c\"]";
    QTest::newRow("nested empty list") << "[[]]"
                                       << "[[]]";
    QTest::newRow("object") << "[{a: 1}]"
                            << "[]";
    QTest::newRow("function") << "['a', function() {}]"
                              << "[\"a\",]";
    QTest::newRow("symbol") << "['a', Symbol('s')]"
                            << "[\"a\",]";
    QTest::newRow("host object") << "['a', Orvane]"
                                 << "[\"a\",]";
    QTest::newRow("getter that throws")
        << "Object.defineProperty(['a', 'b'], 1, {get() { throw 1; }, enumerable: true})"
        << "[\"a\",]";
}

void tst_KyScriptOrvaneProperties::mixedListIsRefused()
{
    QFETCH(QString, value);
    QFETCH(QString, shown);
    addOneOfEachType();
    const QJSValue result = run(QStringLiteral("Orvane.setPropertyVariant('T.List', %1)").arg(value));
    QVERIFY2(result.isBool() && result.toBool(), qPrintable(result.toString()));
    QCOMPARE(messages(), QStringList{"setPropertyVariant(\"T.List\", " + shown +
                                     ") - all elements of a list-type property must be strings"});
    QCOMPARE(orvane().propertyValue("T.List"), QStringLiteral("a,b c,\"d,e\""));
    QCOMPARE(mReceiver->take(), QStringList());
}

void tst_KyScriptOrvaneProperties::typeIsLookedAtBeforeTheList()
{
    addOneOfEachType();
    QVERIFY(run("Orvane.setPropertyVariant('T.Int', ['a', 1])").toBool());
    QCOMPARE(
        messages(),
        QStringList{"setPropertyVariant(\"T.Int\", [\"a\",1]) - property type 'i' does not match argument"});
}

void tst_KyScriptOrvaneProperties::stringListOfTheHostNeedsNoTest()
{
    addOneOfEachType();
    QVERIFY(orvane().setPropertyVariant("T.List", QStringList({"x", ""})));
    QCOMPARE(orvane().propertyVariant("T.List").toStringList(), (QStringList{"x", ""}));
    QVERIFY(orvane().setPropertyVariant("T.Int", QStringList({"x", "y"})));
    QCOMPARE(messages(),
             QStringList{
                 "setPropertyVariant(\"T.Int\", [\"x\",\"y\"]) - property type 'i' does not match argument"});
}

void tst_KyScriptOrvaneProperties::percentSignsAreNoPlaces()
{
    add<int>("T.%3%2%1", 1);
    QVERIFY(run("Orvane.setPropertyVariant('T.%3%2%1', '%1 %s %n')").toBool());
    run("Orvane.registerProperty('%2', '%1.%1', '')");
    QCOMPARE(messages(),
             (QStringList{
                 "setPropertyVariant(\"T.%3%2%1\", \"%1 %s %n\") - property type 'i' does not match argument",
                 "registerProperty() - unmatched components in '%2' and '%1.%1'"}));
}

void tst_KyScriptOrvaneProperties::messagesAreLatin1()
{
    add<int>("T.\xe4", 1);
    QVERIFY(run(QStringLiteral("Orvane.setPropertyVariant('T.\u00e4', '\u00f6\u65e5')")).toBool());
    QCOMPARE(
        messages(),
        QStringList{QStringLiteral(
            "setPropertyVariant(\"T.\u00e4\", \"\u00f6?\") - property type 'i' does not match argument")});
}

void tst_KyScriptOrvaneProperties::harmfulValuesDoNoHarm_data()
{
    QTest::addColumn<QString>("value");
    QTest::newRow("nested symbol") << "[{a: [Symbol()]}]";
    QTest::newRow("cycle") << "(function() { var a = ['x']; a.push(a); return a; })()";
    QTest::newRow("deep")
        << "(function() { var a = ['x']; for (var i = 0; i < 30000; ++i) a = [a]; return a; })()";
    QTest::newRow("huge and empty") << "new Array(4294967295)";
    QTest::newRow("proxy that throws") << "new Proxy([], {ownKeys() { throw 1; }, get() { throw 2; }})";
    QTest::newRow("getter that throws") << "({get a() { throw new Error('x'); }})";
    QTest::newRow("toString that throws") << "[{toString() { throw new Error('x'); }}]";
}

void tst_KyScriptOrvaneProperties::harmfulValuesDoNoHarm()
{
    QFETCH(QString, value);
    addOneOfEachType();
    run(QStringLiteral(
            "var v = %1; Orvane.setPropertyVariant('T.List', v); Orvane.setPropertyVariant('T.String', v);"
            "Orvane.registerProperty('N.New', 'N.New', v)")
            .arg(value));
    QVERIFY(!mEngine->hasError());
    QCOMPARE(run("1 + 1").toInt(), 2);
    QVERIFY(messages().size() <= 3);
    QCOMPARE(orvane().propertyValue("T.List"), QStringLiteral("a,b c,\"d,e\""));
    QCOMPARE(orvane().propertyValue("T.String"), QStringLiteral("text"));
    QCOMPARE(mPlatform->pool.variant("N.New"), nullptr);
}

void tst_KyScriptOrvaneProperties::failureToStoreDoesNotReachTheScript()
{
    FailingSerializer serializer;
    auto* property = new OvProperty<int>("T.Int", 1);
    QVERIFY(mPlatform->pool.addVariant(property, &serializer));
    QVERIFY(run("Orvane.setPropertyVariant('T.Int', 2)").toBool());
    QCOMPARE(property->value, 2);
    QCOMPARE(mLog->take(), QStringList{"3|OvPropertyPool|storing a property failed: no room"});
    QCOMPARE(mReceiver->take(), QStringList{"102|0|0|T.Int=2|0"});
    QCOMPARE(mPlatform->pool.defaultSerializationPriority(), OvRegistry::UserPriority);
}

void tst_KyScriptOrvaneProperties::failureOfAnObserverDoesNotReachTheScript()
{
    add<int>("T.Int", 1)
        .connectPropertyChangedSignal(
            nullptr, [](const OvVariant*) { throw std::runtime_error("not now"); }, false);
    QVERIFY(run("Orvane.setPropertyVariant('T.Int', 2) && Orvane.setPropertyValue('T.Int', '3')").toBool());
    QCOMPARE(mLog->take(), (QStringList{"3|OvObservers|an observer failed: not now",
                                        "3|OvObservers|an observer failed: not now"}));
    QCOMPARE(mReceiver->take(), (QStringList{"102|0|0|T.Int=2|0", "102|0|0|T.Int=3|0"}));
    QCOMPARE(mPlatform->pool.defaultSerializationPriority(), OvRegistry::UserPriority);
}

void tst_KyScriptOrvaneProperties::scriptsWriteTheirOwnLayer()
{
    QCOMPARE(OvRegistry::ScriptPriority, 3000);
    auto& property = add<int>("T.Int", 1);
    property.setValueFromQString("5"); // by the user
    run("Orvane.setPropertyVariant('T.Int', 9)");
    QCOMPARE(stored("T.Int", 1000), QStringLiteral("5"));
    QCOMPARE(stored("T.Int", 3000), QStringLiteral("9"));
    run("Orvane.setPropertyValue('T.Int', '10')");
    QCOMPARE(stored("T.Int", 1000), QStringLiteral("5"));
    QCOMPARE(stored("T.Int", 3000), QStringLiteral("10"));
    QCOMPARE(stored("T.Int"), QStringLiteral("10"));
}

void tst_KyScriptOrvaneProperties::layersAreRestoredByRemoval()
{
    auto& property = add<int>("T.Int", 1);
    run("Orvane.setPropertyVariant('T.Int', 2)");
    mReceiver->take();
    QVERIFY(run("Orvane.removePropertyValue('T.Int')").toBool());
    QCOMPARE(property.value, 1); // the default
    QCOMPARE(stored("T.Int"), QStringLiteral("(none)"));
    QCOMPARE(mReceiver->take(), QStringList{"102|0|0|T.Int=1|0"});

    property.setValueFromQString("5");
    run("Orvane.setPropertyVariant('T.Int', 2); Orvane.removePropertyValue('T.Int')");
    QCOMPARE(property.value, 5); // the user's
    QCOMPARE(mPlatform->registry.layers("T.Int"), std::vector<int>{1000});
    QCOMPARE(mReceiver->take(), (QStringList{"102|0|0|T.Int=2|0", "102|0|0|T.Int=5|0"}));
}

void tst_KyScriptOrvaneProperties::removalOfWhatNoScriptSetLeavesTheValue_data()
{
    QTest::addColumn<QString>("id");
    for (const char* id : {"T.Bool", "T.Int", "T.Double", "T.String", "T.List", "T.Enum", "T.Angle"})
        QTest::newRow(id) << id;
}

void tst_KyScriptOrvaneProperties::removalOfWhatNoScriptSetLeavesTheValue()
{
    QFETCH(QString, id);
    addOneOfEachType();
    const QString before = orvane().propertyValue(id);
    const QJSValue result = run(QStringLiteral("Orvane.removePropertyValue('%1')").arg(id));
    QVERIFY(result.isBool() && result.toBool());
    QCOMPARE(orvane().propertyValue(id), before);
}

/// Also when nothing is stored any more, as the text of the default is not looked at.
void tst_KyScriptOrvaneProperties::removalTellsUnlessTheStoredValueIsTheSame()
{
    auto& property = add<int>("T.Int", 1);
    run("Orvane.removePropertyValue('T.Int')");
    QCOMPARE(mReceiver->take(), QStringList{"102|0|0|T.Int=1|0"});
    property.setValueFromQString("5");
    run("Orvane.removePropertyValue('T.Int')");
    QCOMPARE(mReceiver->take(), QStringList());
    mPlatform->registry.setProperty("T.Int", "5", 3000);
    run("Orvane.removePropertyValue('T.Int')");
    QCOMPARE(mReceiver->take(), QStringList());
    QCOMPARE(mPlatform->registry.layers("T.Int"), std::vector<int>{1000});
    mPlatform->registry.setProperty("T.Int", "6", 4000);
    run("Orvane.removePropertyValue('T.Int')");
    QCOMPARE(mReceiver->take(), QStringList{"102|0|0|T.Int=6|0"});
}

void tst_KyScriptOrvaneProperties::removalLeavesOtherPropertiesAlone()
{
    add<int>("T.Int", 1);
    add<int>("T.Int.Below", 1);
    run("Orvane.setPropertyVariant('T.Int', 2); Orvane.setPropertyVariant('T.Int.Below', 3);"
        "Orvane.removePropertyValue('T.Int')");
    QCOMPARE(orvane().propertyValue("T.Int.Below"), QStringLiteral("3"));
    QCOMPARE(stored("T.Int.Below"), QStringLiteral("3"));
}

void tst_KyScriptOrvaneProperties::priorityIsTheScriptsDuringTheCallOnly()
{
    OvPropertyPool& pool = mPlatform->pool;
    pool.setDefaultSerializationPriority(2222);
    QList<int> during, whenTold;
    add<int>("T.Int", 1)
        .connectPropertyChangedSignal(
            nullptr, [&](const OvVariant*) { during += pool.defaultSerializationPriority(); }, false);
    mReceiver->action = [&] { whenTold += pool.defaultSerializationPriority(); };
    run("Orvane.setPropertyVariant('T.Int', 2); Orvane.setPropertyValue('T.Int', '3')");
    QCOMPARE(during, (QList<int>{3000, 3000}));
    QCOMPARE(whenTold, (QList<int>{2222, 2222}));
    run("Orvane.setPropertyVariant('T.Int', 'x'); Orvane.setPropertyVariant('T.Int', undefined);"
        "Orvane.setPropertyVariant('T.Int', 3); Orvane.setPropertyValue('T.Int', 'x');"
        "Orvane.removePropertyValue('T.Int')");
    QCOMPARE(pool.defaultSerializationPriority(), 2222);
    QCOMPARE(messages().size(), 2);
}

void tst_KyScriptOrvaneProperties::propertyIsRegistered_data()
{
    QTest::addColumn<QString>("value");
    QTest::addColumn<QString>("type");
    QTest::addColumn<QString>("text");
    QTest::newRow("bool") << "true" << nameOf<bool>() << "true";
    QTest::newRow("int") << "-3" << nameOf<int>() << "-3";
    QTest::newRow("whole number") << "2" << nameOf<int>() << "2";
    QTest::newRow("computed whole number") << "Math.round(1.6)" << nameOf<int>() << "2";
    QTest::newRow("fraction") << "0.5" << nameOf<double>() << "0.5";
    QTest::newRow("beyond int") << "4294967296" << nameOf<double>() << "4.29497e+09";
    QTest::newRow("string") << "'x'" << nameOf<QString>() << "x";
    QTest::newRow("empty string") << "''" << nameOf<QString>() << "";
    QTest::newRow("array") << "['x', 'y']" << nameOf<StringList>() << "x,y";
    QTest::newRow("empty array") << "[]" << nameOf<StringList>() << "";
}

void tst_KyScriptOrvaneProperties::propertyIsRegistered()
{
    QFETCH(QString, value);
    QFETCH(QString, type);
    QFETCH(QString, text);
    QVERIFY(run(QStringLiteral("Orvane.registerProperty('New.Property', 'Group.Label', %1)").arg(value))
                .isUndefined());
    const OvVariant* property = mPlatform->pool.variant("New.Property");
    QVERIFY(property);
    QCOMPARE(QString::fromLatin1(property->type().name()), type);
    QCOMPARE(property->toQString(), text);
    QCOMPARE(property->serializer(), mPlatform->pool.defaultSerializer());
    QCOMPARE(stored("New.Property"), QStringLiteral("(none)"));
    QCOMPARE(mReceiver->take(), QStringList());
}

void tst_KyScriptOrvaneProperties::wholeDefaultMakesAnInteger()
{
    run("Orvane.registerProperty('W.Int', 'W.Int', 2); Orvane.setPropertyVariant('W.Int', 2.5)");
    QCOMPARE(messages(),
             QStringList{"setPropertyVariant(\"W.Int\", 2.5) - property type 'i' does not match argument"});
    QCOMPARE(run("Orvane.propertyVariant('W.Int')").toNumber(), 2.0);
}

void tst_KyScriptOrvaneProperties::floatingPointTakesWholeDefaults()
{
    QVERIFY(run("Orvane.registerPropertyFloatingPoint('W.Double', 'W.Double', 2)").isUndefined());
    QVERIFY(mPlatform->pool.variant("W.Double")->isType<double>());
    run("Orvane.setPropertyVariant('W.Double', 2.5)");
    QCOMPARE(run("Orvane.propertyVariant('W.Double')").toNumber(), 2.5);
}

void tst_KyScriptOrvaneProperties::secondRegistrationKeepsTheValue()
{
    run("Orvane.registerProperty('W.A', 'W.One', 1); Orvane.registerProperty('W.A', 'W.Two', 2);"
        "Orvane.registerProperty('W.B', 'W.B', ['x']); Orvane.registerProperty('W.B', 'W.B', ['y', 'z']);"
        "Orvane.registerPropertyFloatingPoint('W.C', 'W.C', 1); Orvane.registerProperty('W.C', 'W.C', 1.5)");
    QCOMPARE(orvane().propertyValue("W.A"), QStringLiteral("1"));
    QCOMPARE(orvane().propertyValue("W.B"), QStringLiteral("x"));
    QCOMPARE(orvane().propertyValue("W.C"), QStringLiteral("1"));
    QCOMPARE(OvTranslationProperty::label("W.A"), QStringLiteral("Two"));
}

void tst_KyScriptOrvaneProperties::registrationWithAnotherTypeIsRefused()
{
    addOneOfEachType();
    run("Orvane.registerProperty('T.Int', 'Types.Number', 'a'); Orvane.registerProperty('T.List', 'T.List', "
        "2.5);"
        "Orvane.registerProperty('T.Enum', 'T.Enum', 'left')");
    QCOMPARE(
        messages(),
        (QStringList{
            "registerProperty(\"T.Int\"...\"a\") - property already registered with different type 'i'",
            "registerProperty(\"T.List\"...2.5) - property already registered with different type '" +
                nameOf<StringList>() + "'",
            "registerProperty(\"T.Enum\"...\"left\") - property already registered with different type '" +
                nameOf<Side>() + "'"}));
    QCOMPARE(orvane().propertyValue("T.Int"), QStringLiteral("7"));
    QCOMPARE(OvTranslationProperty::label("T.Int"), QStringLiteral("Number"));
}

void tst_KyScriptOrvaneProperties::floatingPointOverAnotherTypeIsRefused()
{
    addOneOfEachType();
    run("Orvane.registerPropertyFloatingPoint('T.Int', 'T.Int', 2)");
    QCOMPARE(
        messages(),
        QStringList{"registerProperty(\"T.Int\"...2) - property already registered with different type 'i'"});
}

void tst_KyScriptOrvaneProperties::unsupportedDefaultIsRefused_data()
{
    unsupportedTypeIsRefused_data();
}

void tst_KyScriptOrvaneProperties::unsupportedDefaultIsRefused()
{
    QFETCH(QString, value);
    QFETCH(QString, shown);
    QFETCH(QString, type);
    // The components don't match either: the type is looked at first, and leaves no labels.
    run(QStringLiteral("Orvane.registerProperty('Un.supported', 'Label', %1);"
                       "Orvane.registerProperty('Un.supported', 'Label.Label', %1)")
            .arg(value));
    QString expected =
        "registerProperty(\"Un.supported\"..." + shown + ") - unsupported property type '" + type + "'";
    expected.truncate(expected.contains(QChar(u'\0')) ? expected.indexOf(QChar(u'\0')) : expected.size());
    QCOMPARE(messages(), (QStringList{expected, expected}));
    QCOMPARE(mPlatform->pool.variant("Un.supported"), nullptr);
    QCOMPARE(OvTranslationProperty::label("Un"), QString());
    QCOMPARE(OvTranslationProperty::label("Un.supported"), QString());
}

void tst_KyScriptOrvaneProperties::unmatchedComponentsAreRefused_data()
{
    QTest::addColumn<QString>("id");
    QTest::addColumn<QString>("label");
    QTest::newRow("two and one") << "Unmatched.Id"
                                 << "Label";
    QTest::newRow("one and two") << "Unmatched"
                                 << "Label.Label";
    QTest::newRow("empty label") << "Unmatched.Id"
                                 << "";
    QTest::newRow("empty component without its label") << "Unmatched..Id"
                                                       << "Label.Label";
    QTest::newRow("dot at the end") << "Unmatched."
                                    << "Label";
    QTest::newRow("10000 components") << "Unmatched" + QString(10000, '.') << "Label";
}

void tst_KyScriptOrvaneProperties::unmatchedComponentsAreRefused()
{
    QFETCH(QString, id);
    QFETCH(QString, label);
    mEngine->globalObject().setProperty("id", id);
    mEngine->globalObject().setProperty("label", label);
    run("Orvane.registerProperty(id, label, 1); Orvane.registerPropertyFloatingPoint(id, label, 1)");
    const QString expected = "registerProperty() - unmatched components in '" + id + "' and '" + label + "'";
    QCOMPARE(messages(), (QStringList{expected, expected}));
    QCOMPARE(mPlatform->pool.variant(id.toStdString()), nullptr);
    QCOMPARE(OvTranslationProperty::label("Unmatched"), QString());
}

void tst_KyScriptOrvaneProperties::mixedDefaultLeavesItsLabels()
{
    run("Orvane.registerProperty('Mixed.List', 'Group.Label', ['a', 1])");
    QCOMPARE(messages(), QStringList{"registerProperty(\"Mixed.List\"...[\"a\",1]) - "
                                     "all elements of a list-type property must be strings"});
    QCOMPARE(mPlatform->pool.variant("Mixed.List"), nullptr);
    QCOMPARE(OvTranslationProperty::label("Mixed"), QStringLiteral("Group"));
    QCOMPARE(OvTranslationProperty::label("Mixed.List"), QStringLiteral("Label"));
}

void tst_KyScriptOrvaneProperties::everyLevelHasItsLabel()
{
    run("Orvane.registerProperty('One.Two.Three', 'First.Second.Third', 1)");
    QCOMPARE(OvTranslationProperty::label("One"), QStringLiteral("First"));
    QCOMPARE(OvTranslationProperty::label("One.Two"), QStringLiteral("Second"));
    QCOMPARE(OvTranslationProperty::label("One.Two.Three"), QStringLiteral("Third"));
    run("Orvane.registerProperty('Single', 'Alone', 1)");
    QCOMPARE(OvTranslationProperty::label("Single"), QStringLiteral("Alone"));
}

void tst_KyScriptOrvaneProperties::emptyComponentsAreKept()
{
    run("Orvane.registerProperty('Empty..Part', 'A..C', 1); Orvane.registerProperty('.Lead', '.L', 1);"
        "Orvane.registerProperty('Trail.', 'T.', 1)");
    QVERIFY(mPlatform->pool.variant("Empty..Part") && mPlatform->pool.variant(".Lead") &&
            mPlatform->pool.variant("Trail."));
    QCOMPARE(OvTranslationProperty::label("Empty"), QStringLiteral("A"));
    QCOMPARE(OvTranslationProperty::label("Empty."), QString());
    QCOMPARE(OvTranslationProperty::label("Empty..Part"), QStringLiteral("C"));
    QCOMPARE(OvTranslationProperty::label(".Lead"), QStringLiteral("L"));
    QVERIFY(run("Orvane.setPropertyVariant('Empty..Part', 5)").toBool());
    QCOMPARE(stored("Empty..Part"), QStringLiteral("5"));
}

void tst_KyScriptOrvaneProperties::labelsMayHaveAnyCharacters()
{
    run(QStringLiteral("Orvane.registerProperty('Any.Label', '\u8a2d\u5b9a.Gr\u00f6\u00dfe <b>', 1)"));
    QCOMPARE(OvTranslationProperty::label("Any"), QStringLiteral("\u8a2d\u5b9a"));
    QCOMPARE(OvTranslationProperty::label("Any.Label"), QStringLiteral("Gr\u00f6\u00dfe <b>"));
    run(QStringLiteral("Orvane.registerProperty('Gr\u00f6\u00dfe', 'x', 1)"));
    QVERIFY(mPlatform->pool.variant("Gr\xf6\xdf"
                                    "e"));
    QCOMPARE(OvTranslationProperty::label(QStringLiteral("Gr\u00f6\u00dfe")), QStringLiteral("x"));
}

void tst_KyScriptOrvaneProperties::storedValueIsThereAtRegistration()
{
    mPlatform->registry.setProperty("Kept.Value", "41", 3000);
    run("Orvane.registerProperty('Kept.Value', 'Kept.Value', 1)");
    QCOMPARE(run("Orvane.propertyVariant('Kept.Value')").toInt(), 41);
    run("Orvane.removePropertyValue('Kept.Value')");
    QCOMPARE(run("Orvane.propertyVariant('Kept.Value')").toInt(), 1);
}

void tst_KyScriptOrvaneProperties::registeredPropertyOutlivesItsEngine()
{
    run("Orvane.registerProperty('Stays.There', 'Stays.There', 'x')");
    mEngine = std::make_unique<KyScriptEngine>(nullptr, ScriptOrvane);
    QCOMPARE(run("Orvane.propertyValue('Stays.There')").toString(), QStringLiteral("x"));
}

void tst_KyScriptOrvaneProperties::invalidIdsAreNotRegistered_data()
{
    QTest::addColumn<QString>("id");
    QTest::addColumn<QString>("told");
    QTest::newRow("empty") << ""
                           << "";
    QTest::newRow("dots only") << ".."
                               << "..";
    QTest::newRow("beyond Latin-1") << QStringLiteral("Inv.\u65e5") << "Inv.?";
    QTest::newRow("control character") << "Inv.\t"
                                       << "Inv.\t";
    QTest::newRow("10000 characters") << QString(10000, 'I') << QString(10000, 'I');
    QTest::newRow("10000 components") << "I" + QString(10000, '.') << "I" + QString(10000, '.');
    QTest::newRow("1025 characters") << QString(1025, 'I') << QString(1025, 'I');
}

void tst_KyScriptOrvaneProperties::invalidIdsAreNotRegistered()
{
    QFETCH(QString, id);
    QFETCH(QString, told);
    mContracts->expect("validPropertyName(id)", told);
    mEngine->globalObject().setProperty("id", id);
    run("Orvane.registerProperty(id, id.replace(/[^.]/g, 'x'), 1)");
    QVERIFY(run("Orvane.propertyVariant(id)").isUndefined());
    QCOMPARE(mContracts->verify(), QString());
    if (id.size() > 1024)
        QCOMPARE(OvTranslationProperty::label(id), QString());
}

void tst_KyScriptOrvaneProperties::longestIdIsRegistered()
{
    mEngine->globalObject().setProperty("id", QString(1024, 'L'));
    run("Orvane.registerProperty(id, 'x', 1); Orvane.setPropertyVariant(id, 2)");
    QCOMPARE(run("Orvane.propertyVariant(id)").toInt(), 2);
    QCOMPARE(OvTranslationProperty::label(QString(1024, 'L')), QStringLiteral("x"));
}

void tst_KyScriptOrvaneProperties::serversOwnProcessIsReported()
{
    OvPropertyPool::setClientQuestion([] { return false; });
    mContracts->expect("0", "This method should be used on the client only. "
                            "Call OvPropertyPool::propertyValue() instead");
    run("Orvane.registerProperty('Server.Own', 'Server.Own', 1)");
    OvPropertyPool::setClientQuestion({});
    QCOMPARE(mContracts->verify(), QString());
    QVERIFY(mPlatform->pool.variant("Server.Own"));
}

void tst_KyScriptOrvaneProperties::withoutAPoolEverythingIsNeutral()
{
    mReceiver.reset();
    mPlatform.reset();
    QVERIFY(run("Orvane.propertyValue('T.Int') === '' && Orvane.propertyVariant('T.Int') === undefined")
                .toBool());
    QVERIFY(run("Orvane.setPropertyValue('T.Int', '1') === false").toBool());
    QVERIFY(run("Orvane.setPropertyVariant('T.Int', 1) === false").toBool());
    QVERIFY(run("Orvane.removePropertyValue('T.Int') === false").toBool());
    run("Orvane.registerProperty('No.Pool', 'A.B', 1); Orvane.registerPropertyFloatingPoint('No.Pool', "
        "'A.B', 1)");
    QCOMPARE(OvTranslationProperty::label("No.Pool"), QStringLiteral("B"));
}

void tst_KyScriptOrvaneProperties::withoutARegistryValuesLiveInThePool()
{
    mReceiver.reset();
    mPlatform.reset();
    OvPropertyPool pool;
    run("Orvane.registerProperty('No.Registry', 'A.B', 1)");
    QVERIFY(run("Orvane.setPropertyVariant('No.Registry', 2)").toBool());
    QCOMPARE(run("Orvane.propertyVariant('No.Registry')").toInt(), 2);
    QVERIFY(run("Orvane.removePropertyValue('No.Registry')").toBool());
    QCOMPARE(run("Orvane.propertyVariant('No.Registry')").toInt(), 1);
}

void tst_KyScriptOrvaneProperties::propertiesEndInTheMidstOfAChange_data()
{
    QTest::addColumn<QString>("call");
    QTest::newRow("variant") << "Orvane.setPropertyVariant('T.Int', 2)";
    QTest::newRow("text") << "Orvane.setPropertyValue('T.Int', '2')";
    QTest::newRow("removal") << "Orvane.removePropertyValue('T.Int')";
}

/// As when somebody ends the application in answer to a change.
void tst_KyScriptOrvaneProperties::propertiesEndInTheMidstOfAChange()
{
    QFETCH(QString, call);
    mReceiver.reset();
    mPlatform.reset();
    OvRegistry registry(nullptr);
    registry.setProperty("T.Int", "5", 3000);
    auto pool = std::make_unique<OvPropertyPool>();
    auto* property = pool->property<int>("T.Int", 1, pool->defaultSerializer());
    property->connectPropertyChangedSignal(
        nullptr, [&](const OvVariant*) { pool.reset(); }, false);
    QVERIFY(run(call).toBool());
    QVERIFY(!pool);
    QVERIFY(run("Orvane.propertyVariant('T.Int') === undefined").toBool());
}

void tst_KyScriptOrvaneProperties::enginesShareTheProperties()
{
    KyScriptEngine other(nullptr, ScriptOrvane);
    run("Orvane.registerProperty('Shared.Value', 'Shared.Value', 'a'); "
        "Orvane.setPropertyVariant('Shared.Value', 'b')");
    QCOMPARE(other.runScript(KyScriptProgram("return Orvane.propertyValue('Shared.Value')", "")).toString(),
             QStringLiteral("b"));
}

void tst_KyScriptOrvaneProperties::argumentsAreConvertedAsEver_data()
{
    QTest::addColumn<QString>("source");
    QTest::addColumn<QString>("value");
    QTest::newRow("number as text") << "Orvane.setPropertyValue('T.Int', 12); Orvane.propertyValue('T.Int')"
                                    << "12";
    QTest::newRow("bool as text")
        << "Orvane.setPropertyValue('T.Bool', false); Orvane.propertyValue('T.Bool')"
        << "false";
    QTest::newRow("array as text")
        << "Orvane.setPropertyValue('T.List', ['x', 'y']); Orvane.propertyVariant('T.List').length"
        << "2";
    QTest::newRow("null as text")
        << "Orvane.setPropertyValue('T.String', null); Orvane.propertyValue('T.String').length"
        << "0";
    QTest::newRow("no argument") << "try { Orvane.propertyValue() } catch (e) { e.name }"
                                 << "Error";
    QTest::newRow("no value") << "try { Orvane.setPropertyVariant('T.Int') } catch (e) { e.name }"
                              << "Error";
    QTest::newRow("text as floating point")
        << "Orvane.registerPropertyFloatingPoint('F.F', 'F.F', '2.5'); Orvane.propertyVariant('F.F')"
        << "2.5";
}

void tst_KyScriptOrvaneProperties::argumentsAreConvertedAsEver()
{
    QFETCH(QString, source);
    QFETCH(QString, value);
    addOneOfEachType();
    QCOMPARE(run(source).toString(), value);
}

KY_TEST_MAIN(tst_KyScriptOrvaneProperties)
#include "tst_KyScriptOrvaneProperties.moc"
