#include <support/ContractWatch.h>
#include <support/KyTest.h>
#include <support/KyTestPlatform.h>
#include <support/LogCapture.h>

#include <kyscript/KyScriptEngine.h>
#include <kyscript/KyScriptServer.h>

#include <ovbase/OvBackendPeer.h>
#include <ovvolren/OvServer.h>
#include <rnlib/RnBuildInfo.h>
#include <rnlib/RnOSInfo.h>
#include <rnlib/RnSysInfo.h>

#include <QHostInfo>
#include <QMetaProperty>

class tst_KyScriptServer : public QObject
{
    Q_OBJECT

private slots:
    void init();
    void cleanup();

    void propertiesInTheirOrder();
    void itHasNoMethodsAndNoSignalsOfItsOwn();
    void literalValuesDependOnNothing_data();
    void literalValuesDependOnNothing();
    void factsOfTheMachine();
    void languageIsEnglishWhenNoneIsChosen();
    void languageIsTheChosenOne();
    void clientVersionIsTheBuilds();
    void renderServerVersionIsTrimmed();
    void renderServerAddressIsTheServers();
    void userAndSessionAreTheClients();
    void levelHasANameAndANumberAsText();
    void groupsComeInOrder();
    void withoutServersTheTextsAreEmpty_data();
    void withoutServersTheTextsAreEmpty();
    void withoutThePlatformTheTextsAreEmpty();
    void textsAreLatin1AndGroupsAreUtf8();
    void eachReadAsksAgain();
    void nothingCanBeWritten_data();
    void nothingCanBeWritten();
    void withoutItsOptionThereIsNone();

private:
    QJSValue read(const char* inProperty)
    {
        return mEngine->evaluate(QStringLiteral("Server.%1").arg(inProperty));
    }
    QString text(const char* inProperty) { return read(inProperty).toString(); }

    std::unique_ptr<KyTestPlatform> mPlatform;
    std::unique_ptr<ContractWatch> mContracts;
    std::unique_ptr<LogCapture> mLog;
    std::unique_ptr<KyScriptEngine> mEngine;
};

void tst_KyScriptServer::init()
{
    mPlatform = std::make_unique<KyTestPlatform>();
    mContracts = std::make_unique<ContractWatch>();
    mLog = std::make_unique<LogCapture>();
    mEngine = std::make_unique<KyScriptEngine>(nullptr, ScriptServer);
}

void tst_KyScriptServer::cleanup()
{
    const QString broken = mContracts->verify();
    const QStringList lines = mLog->take();
    mEngine.reset();
    mLog.reset();
    mContracts.reset();
    mPlatform.reset();
    QVERIFY2(broken.isEmpty(), qPrintable(broken));
    QCOMPARE(lines, QStringList());
}

void tst_KyScriptServer::propertiesInTheirOrder()
{
    const QMetaObject& meta = KyScriptServer::staticMetaObject;
    QStringList properties;
    for (int i = meta.propertyOffset(); i < meta.propertyCount(); ++i)
        properties.append(QStringLiteral("%1 %2").arg(meta.property(i).typeName(), meta.property(i).name()));
    const QStringList expected = {"QString clientArch",      "QString osName",
                                  "qlonglong physMemTotal",  "QString clientHostName",
                                  "QString clientLanguage",  "QString clientVersion",
                                  "QString protocolVersion", "QString renderServerVersion",
                                  "QString userName",        "QString userLevel",
                                  "QString userLevelId",     "QStringList orvaneLocalGroups",
                                  "QString backendAddress",  "QString renderServerAddress",
                                  "QString sessionID"};
    QCOMPARE(properties, expected);
}

void tst_KyScriptServer::itHasNoMethodsAndNoSignalsOfItsOwn()
{
    const QMetaObject& meta = KyScriptServer::staticMetaObject;
    QCOMPARE(meta.methodCount(), meta.methodOffset());
    QCOMPARE(text("constructor === Object && typeof Server"), QStringLiteral("object"));
}

void tst_KyScriptServer::literalValuesDependOnNothing_data()
{
    QTest::addColumn<QByteArray>("property");
    QTest::addColumn<QString>("value");
    QTest::newRow("architecture") << QByteArray("clientArch") << "Win64";
    QTest::newRow("protocol") << QByteArray("protocolVersion") << "6.1.0.13";
}

void tst_KyScriptServer::literalValuesDependOnNothing()
{
    QFETCH(QByteArray, property);
    QFETCH(QString, value);
    QCOMPARE(text(property.constData()), value);
    mPlatform.reset();
    QCOMPARE(text(property.constData()), value);
}

void tst_KyScriptServer::factsOfTheMachine()
{
    QCOMPARE(text("osName"), QString::fromLatin1(RnOSInfo::getOSName(false).c_str()));
    QVERIFY(!text("osName").isEmpty());
    QVERIFY(read("physMemTotal").isNumber());
    QCOMPARE(read("physMemTotal").toNumber(), double(RnSysInfo::physmem_total()));
    QVERIFY(read("physMemTotal").toNumber() > 1e6);
    QCOMPARE(text("clientHostName"), QHostInfo::localHostName());
    QVERIFY(!text("clientHostName").isEmpty());
}

void tst_KyScriptServer::languageIsEnglishWhenNoneIsChosen()
{
    mPlatform->facts.language = "";
    QCOMPARE(text("clientLanguage"), QStringLiteral("en"));
    mPlatform.reset();
    QCOMPARE(text("clientLanguage"), QStringLiteral("en"));
}

void tst_KyScriptServer::languageIsTheChosenOne()
{
    mPlatform->facts.language = "de";
    QCOMPARE(text("clientLanguage"), QStringLiteral("de"));
}

void tst_KyScriptServer::clientVersionIsTheBuilds()
{
    QCOMPARE(text("clientVersion"), QString::fromStdString(RnBuildInfo::getBuildString(1)));
    QCOMPARE(text("clientVersion").count('.'), 2);
}

void tst_KyScriptServer::renderServerVersionIsTrimmed()
{
    const OvServer server("render:1", " \t7.1 build 5\r\n ");
    QCOMPARE(text("renderServerVersion"), QStringLiteral("7.1 build 5"));
}

void tst_KyScriptServer::renderServerAddressIsTheServers()
{
    const OvServer server(" render:1", "");
    QCOMPARE(text("renderServerAddress"), QStringLiteral(" render:1"));
    QCOMPARE(text("renderServerVersion"), QString());
}

void tst_KyScriptServer::userAndSessionAreTheClients()
{
    mPlatform->facts.userName = "jane";
    mPlatform->facts.sessionId = "s-17";
    mPlatform->facts.webServiceHostExternal = "https://backend.example";
    QCOMPARE(text("userName"), QStringLiteral("jane"));
    QCOMPARE(text("sessionID"), QStringLiteral("s-17"));
    QCOMPARE(text("backendAddress"), QStringLiteral("https://backend.example"));
}

void tst_KyScriptServer::levelHasANameAndANumberAsText()
{
    OvUserRights rights;
    rights.level = 30;
    rights.levelName = "Radiologist";
    QCOMPARE(text("userLevel"), QStringLiteral("Radiologist"));
    QCOMPARE(text("userLevelId"), QStringLiteral("30"));
    QVERIFY(read("userLevelId").isString());
    rights.level = -1;
    QCOMPARE(text("userLevelId"), QStringLiteral("-1"));
}

void tst_KyScriptServer::groupsComeInOrder()
{
    OvUserRights rights;
    QCOMPARE(text("orvaneLocalGroups.length"), QStringLiteral("0"));
    rights.groups = {{"Zurich", "first"}, {"Aarau", "second"}, {"Zurich", "again"}};
    QVERIFY(read("orvaneLocalGroups").isArray());
    QCOMPARE(text("orvaneLocalGroups.join('|')"), QStringLiteral("Zurich|Aarau|Zurich"));
}

void tst_KyScriptServer::withoutServersTheTextsAreEmpty_data()
{
    QTest::addColumn<QByteArray>("property");
    for (const char* property : {"renderServerVersion", "renderServerAddress", "userLevel", "backendAddress"})
        QTest::newRow(property) << QByteArray(property);
}

void tst_KyScriptServer::withoutServersTheTextsAreEmpty()
{
    QFETCH(QByteArray, property);
    QVERIFY(read(property.constData()).isString());
    QCOMPARE(text(property.constData()), QString());
    QCOMPARE(text("userLevelId"), QStringLiteral("0"));
    QCOMPARE(text("orvaneLocalGroups.length"), QStringLiteral("0"));
}

void tst_KyScriptServer::withoutThePlatformTheTextsAreEmpty()
{
    mPlatform.reset();
    for (const char* property : {"renderServerVersion", "renderServerAddress", "userName", "userLevel",
                                 "backendAddress", "sessionID"})
        QCOMPARE(text(property), QString());
}

void tst_KyScriptServer::textsAreLatin1AndGroupsAreUtf8()
{
    OvUserRights rights;
    rights.levelName = "\xc4rztin";
    rights.groups = {{"\xc3\x84rzte \xe6\x9d\xb1", ""}};
    mPlatform->facts.userName = "m\xfcller";
    mPlatform->facts.sessionId = "\xdf";
    mPlatform->facts.webServiceHostExternal = "h\xf4te";
    const OvServer server("\xe9", "\xe8 ");
    QCOMPARE(text("userLevel"), QString::fromUtf8("Ärztin"));
    QCOMPARE(text("orvaneLocalGroups[0]"), QString::fromUtf8("Ärzte 東"));
    QCOMPARE(text("userName"), QString::fromUtf8("müller"));
    QCOMPARE(text("sessionID"), QString::fromUtf8("ß"));
    QCOMPARE(text("backendAddress"), QString::fromUtf8("hôte"));
    QCOMPARE(text("renderServerAddress"), QString::fromUtf8("é"));
    QCOMPARE(text("renderServerVersion"), QString::fromUtf8("è"));
}

void tst_KyScriptServer::eachReadAsksAgain()
{
    mPlatform->facts.userName = "jane";
    QCOMPARE(text("userName"), QStringLiteral("jane"));
    mPlatform->facts.userName = "john";
    QCOMPARE(text("userName"), QStringLiteral("john"));
    {
        const OvServer server("a", "1");
        QCOMPARE(text("renderServerAddress"), QStringLiteral("a"));
    }
    QCOMPARE(text("renderServerAddress"), QString());
}

void tst_KyScriptServer::nothingCanBeWritten_data()
{
    QTest::addColumn<QString>("property");
    const QMetaObject& meta = KyScriptServer::staticMetaObject;
    for (int i = meta.propertyOffset(); i < meta.propertyCount(); ++i)
        QTest::newRow(meta.property(i).name()) << QString::fromLatin1(meta.property(i).name());
}

void tst_KyScriptServer::nothingCanBeWritten()
{
    QFETCH(QString, property);
    const QString before = text(qPrintable(property));
    QVERIFY(mEngine->evaluate(QStringLiteral("Server.%1 = 'x'").arg(property)).isError());
    QCOMPARE(text(qPrintable(property)), before);
}

void tst_KyScriptServer::withoutItsOptionThereIsNone()
{
    KyScriptEngine without(nullptr, ScriptAllOptions & ~ScriptServer);
    QCOMPARE(without.evaluate("typeof Server").toString(), QStringLiteral("undefined"));
    QCOMPARE(text("destroy ? 'hidden' : ''"), QStringLiteral("hidden"));
    QVERIFY(mEngine->evaluate("Server.destroy()").isError());
    QCOMPARE(text("clientArch"), QStringLiteral("Win64"));
}

KY_TEST_MAIN(tst_KyScriptServer)
#include "tst_KyScriptServer.moc"
