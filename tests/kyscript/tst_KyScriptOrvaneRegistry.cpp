// Settings outside of the properties, by application keys and by absolute ones.

#include <support/ContractWatch.h>
#include <support/KyTest.h>
#include <support/KyTestPlatform.h>
#include <support/LogCapture.h>

#include <kyscript/KyScriptEngine.h>
#include <kyscript/KyScriptOrvane.h>
#include <kyscript/KyScriptProgram.h>

#include <QDateTime>
#include <QDir>
#include <QSettings>
#include <QTemporaryDir>

class tst_KyScriptOrvaneRegistry : public QObject
{
    Q_OBJECT

private slots:
    void init();
    void cleanup();

    void unknownKeyGivesTheDefault_data();
    void unknownKeyGivesTheDefault();
    void defaultIsTheVeryObject();
    void valueIsThereAtOnce_data();
    void valueIsThereAtOnce();
    void valueIsInTheFile_data();
    void valueIsInTheFile();
    void whatCannotBeStoredIsUndefined_data();
    void whatCannotBeStoredIsUndefined();
    void harmfulValuesDoNoHarm_data();
    void harmfulValuesDoNoHarm();
    void applicationKeysStandUnderTheNamesOfTheApplication();
    void keyTellsWhichStoreItMeans_data();
    void keyTellsWhichStoreItMeans();
    void separatorsOfBothKindsAreEqual_data();
    void separatorsOfBothKindsAreEqual();
    void absoluteKeyWithoutASeparatorIsBoth();
    void locationThatCannotBeHoldsNothing_data();
    void locationThatCannotBeHoldsNothing();
    void removalGivesTrue_data();
    void removalGivesTrue();
    void removalTakesWhatIsBelow();
    void emptyKeyRemovesNothing_data();
    void emptyKeyRemovesNothing();
    void keysOfTheApplicationAreListed_data();
    void keysOfTheApplicationAreListed();
    void keysOfALocationAreRelativeToIt_data();
    void keysOfALocationAreRelativeToIt();
    void locationsAreKeptApart();
    void unusualKeysAreKept_data();
    void unusualKeysAreKept();
    void nothingIsLeftInTheCurrentFolder();
    void layersOfThePropertiesAreNotTouched();
    void storeThatCannotBeWrittenIsNotTold();
    void damagedStoreGivesTheDefault();
    void withoutAPlatformEverythingIsNeutral();
    void argumentsAreConvertedAsEver_data();
    void argumentsAreConvertedAsEver();

private:
    QJSValue run(const QString& inSource)
    {
        return mEngine->runScript(KyScriptProgram(inSource, ""), false, false, false);
    }
    QJSValue call(const char* inOperation, const QVariantList& inArguments);
    QString applicationFile() const { return mFolder->filePath("Maker/Client.conf"); }
    QString nativeFile() const { return mFolder->filePath("Maker/Registry.ini"); }
    static QByteArray textOf(const QString& inPath)
    {
        QFile file(inPath);
        return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
    }

    std::unique_ptr<QTemporaryDir> mFolder;
    std::unique_ptr<KyTestPlatform> mPlatform;
    std::unique_ptr<ContractWatch> mContracts;
    std::unique_ptr<KyScriptEngine> mEngine;
};

void tst_KyScriptOrvaneRegistry::init()
{
    mFolder = std::make_unique<QTemporaryDir>();
    QSettings::setPath(QSettings::NativeFormat, QSettings::UserScope, mFolder->path());
    mPlatform = std::make_unique<KyTestPlatform>();
    mPlatform->facts.organizationName = "Maker";
    mPlatform->facts.applicationRegistryName = "Client";
    mContracts = std::make_unique<ContractWatch>();
    mEngine = std::make_unique<KyScriptEngine>(nullptr, ScriptOrvane);
}

void tst_KyScriptOrvaneRegistry::cleanup()
{
    const QString broken = mContracts->verify();
    mEngine.reset();
    mContracts.reset();
    mPlatform.reset();
    mFolder.reset();
    QVERIFY2(broken.isEmpty(), qPrintable(broken));
}

QJSValue tst_KyScriptOrvaneRegistry::call(const char* inOperation, const QVariantList& inArguments)
{
    QStringList names;
    for (qsizetype i = 0; i < inArguments.size(); ++i) {
        names.append(QStringLiteral("arg%1").arg(i));
        mEngine->globalObject().setProperty(names.last(), mEngine->toScriptValue(inArguments[i]));
    }
    return run(QStringLiteral("Orvane.%1(%2)").arg(QLatin1String(inOperation), names.join(", ")));
}

void tst_KyScriptOrvaneRegistry::unknownKeyGivesTheDefault_data()
{
    QTest::addColumn<QString>("key");
    QTest::newRow("application") << "No/Such";
    QTest::newRow("backslashes") << "HKEY_CURRENT_USER\\Software\\No\\Such";
    QTest::newRow("slashes") << "/Software/No/Such";
    QTest::newRow("empty") << "";
}

void tst_KyScriptOrvaneRegistry::unknownKeyGivesTheDefault()
{
    QFETCH(QString, key);
    mEngine->globalObject().setProperty("key", key);
    QVERIFY(run("Orvane.getRegistryValue(key)").isUndefined());
    QVERIFY(run("Orvane.getRegistryValue(key, undefined)").isUndefined());
    QVERIFY(run("Orvane.getRegistryValue(key, 5) === 5").toBool());
    QVERIFY(run("Orvane.getRegistryValue(key, 0.5 * 4) === 2").toBool());
    QVERIFY(run("Orvane.getRegistryValue(key, 'x') === 'x'").toBool());
    QVERIFY(run("Orvane.getRegistryValue(key, null) === null").toBool());
    QVERIFY(run("Orvane.getRegistryValue(key, false) === false").toBool());
    QVERIFY(!QFile::exists(applicationFile()) && !QFile::exists(nativeFile()));
}

void tst_KyScriptOrvaneRegistry::defaultIsTheVeryObject()
{
    QVERIFY(
        run("var d = {a: [function() { return 7; }]}; Orvane.getRegistryValue('No/Such', d) === d").toBool());
    QVERIFY(run("Orvane.getRegistryValue('/No/Such', d).a[0]() === 7").toBool());
    QVERIFY(run("Orvane.getRegistryValue('No/Such', Orvane) === Orvane").toBool());
}

void tst_KyScriptOrvaneRegistry::valueIsThereAtOnce_data()
{
    QTest::addColumn<QString>("value");
    QTest::addColumn<QString>("test");
    QTest::newRow("text") << "'x'"
                          << "v === 'x'";
    QTest::newRow("empty text") << "''"
                                << "v === ''";
    QTest::newRow("text with all sorts") << "'a\"b\\\\c;d=e,f\\n\\u65e5\\ud83d\\ude00 '"
                                         << "v === 'a\"b\\\\c;d=e,f\\n\\u65e5\\ud83d\\ude00 '";
    QTest::newRow("text like a marker") << "'@Invalid()'"
                                        << "v === '@Invalid()'";
    QTest::newRow("int") << "42"
                         << "v == 42";
    QTest::newRow("computed int") << "0.5 * 4"
                                  << "v == 2";
    QTest::newRow("fraction") << "2.5"
                              << "v == 2.5";
    QTest::newRow("large number") << "1e300"
                                  << "v == 1e300";
    QTest::newRow("true") << "true"
                          << "String(v) === 'true'";
    QTest::newRow("false") << "false"
                           << "String(v) === 'false'";
    QTest::newRow("null") << "null"
                          << "v === null";
    QTest::newRow("undefined") << "undefined"
                               << "v === undefined";
    QTest::newRow("list of texts") << "['a', 'b,c', '']"
                                   << "Array.isArray(v) && v.length === 3 && v[1] === 'b,c'";
    QTest::newRow("list of one") << "['a']"
                                 << "Array.isArray(v) && v.length === 1 && v[0] === 'a'";
    QTest::newRow("list of lists") << "[['a'], ['b', ['c']]]"
                                   << "v[1][1][0] === 'c'";
    QTest::newRow("object") << "{a: 1, b: {c: ['d']}}"
                            << "v.a === 1 && v.b.c[0] === 'd'";
    QTest::newRow("date") << "new Date(2026, 0, 31, 14, 5, 9, 120)"
                          << "v.getTime() === new Date(2026, 0, 31, 14, 5, 9, 120).getTime()";
    QTest::newRow("regular expression") << "/a.b/i"
                                        << "v.source === 'a.b' && v.flags === 'i'";
    QTest::newRow("buffer") << "new Uint8Array([1, 0, 255]).buffer"
                            << "new Uint8Array(v).join() === '1,0,255'";
    QTest::newRow("empty buffer") << "new ArrayBuffer(0)"
                                  << "v.byteLength === 0";
    QTest::newRow("buffer inside") << "{b: [new ArrayBuffer(0)]}"
                                   << "v.b[0].byteLength === 0";
}

void tst_KyScriptOrvaneRegistry::valueIsThereAtOnce()
{
    QFETCH(QString, value);
    QFETCH(QString, test);
    for (const char* key : {"Group/Value", "/Software/Maker/Value"}) {
        const QJSValue stored =
            run(QStringLiteral("Orvane.setRegistryValue('%1', %2)").arg(QLatin1String(key), value));
        QVERIFY2(stored.isBool() && stored.toBool(), qPrintable(stored.toString()));
        const QJSValue read = run(QStringLiteral("var v = Orvane.getRegistryValue('%1', 'default'); %2")
                                      .arg(QLatin1String(key), test));
        QVERIFY2(read.toBool(), qPrintable(read.toString() + ": " + run("JSON.stringify(v)").toString()));
    }
}

/// What another process reads.
void tst_KyScriptOrvaneRegistry::valueIsInTheFile_data()
{
    QTest::addColumn<QString>("value");
    QTest::addColumn<QString>("line");
    QTest::newRow("text") << "'x y'"
                          << "Value=x y";
    QTest::newRow("int") << "42"
                         << "Value=42";
    QTest::newRow("computed int") << "0.5 * 4"
                                  << "Value=2";
    QTest::newRow("fraction") << "2.5"
                              << "Value=2.5";
    QTest::newRow("bool") << "true"
                          << "Value=true";
    QTest::newRow("list of texts") << "['a', 'b']"
                                   << "Value=a, b";
    QTest::newRow("undefined") << "undefined"
                               << "Value=@Invalid()";
}

void tst_KyScriptOrvaneRegistry::valueIsInTheFile()
{
    QFETCH(QString, value);
    QFETCH(QString, line);
    run(QStringLiteral("Orvane.setRegistryValue('Group/Value', %1)").arg(value));
    QCOMPARE(textOf(applicationFile()), "[Group]\n" + line.toUtf8() + "\n");
    run(QStringLiteral("Orvane.setRegistryValue('HKEY_CURRENT_USER\\\\Software\\\\Value', %1)").arg(value));
    QCOMPARE(textOf(nativeFile()), "[HKEY_CURRENT_USER]\nSoftware\\" + line.toUtf8() + "\n");
}

void tst_KyScriptOrvaneRegistry::whatCannotBeStoredIsUndefined_data()
{
    QTest::addColumn<QString>("value");
    QTest::addColumn<QString>("test");
    QTest::newRow("function") << "function() {}"
                              << "v === undefined";
    QTest::newRow("class") << "Date"
                           << "v === undefined";
    QTest::newRow("symbol") << "Symbol('s')"
                            << "v === undefined";
    QTest::newRow("host object") << "Orvane"
                                 << "v === undefined";
    QTest::newRow("function inside") << "['a', function() {}]"
                                     << "v.length === 2 && v[0] === 'a' && !v[1]";
    QTest::newRow("host object inside") << "{a: Orvane, b: 1}"
                                        << "v.a === undefined && v.b === 1";
    QTest::newRow("symbol inside") << "{a: [Symbol()], b: 1}"
                                   << "!v.a[0] && v.b === 1";
    QTest::newRow("too deep")
        << "(function() { var a = []; for (var i = 0; i < 30000; ++i) a = [a]; return a; })()"
        << "v === undefined";
}

void tst_KyScriptOrvaneRegistry::whatCannotBeStoredIsUndefined()
{
    QFETCH(QString, value);
    QFETCH(QString, test);
    QVERIFY(run(QStringLiteral("Orvane.setRegistryValue('Value', %1)").arg(value)).toBool());
    QVERIFY2(run("var v = Orvane.getRegistryValue('Value', 'default'); " + test).toBool(),
             qPrintable(run("String(v) + JSON.stringify(v)").toString()));
    QVERIFY(!textOf(applicationFile()).contains("QJSValue"));
}

void tst_KyScriptOrvaneRegistry::harmfulValuesDoNoHarm_data()
{
    QTest::addColumn<QString>("value");
    QTest::newRow("cycle") << "(function() { var a = {}; a.a = a; return a; })()";
    QTest::newRow("huge and empty") << "new Array(4294967295)";
    QTest::newRow("getter that throws") << "({get a() { throw new Error('x'); }})";
    QTest::newRow("proxy that throws") << "new Proxy({}, {ownKeys() { throw 1; }, get() { throw 2; }})";
}

void tst_KyScriptOrvaneRegistry::harmfulValuesDoNoHarm()
{
    QFETCH(QString, value);
    QVERIFY(run(QStringLiteral("Orvane.setRegistryValue('Value', %1)").arg(value)).toBool());
    QVERIFY(!mEngine->hasError());
    QCOMPARE(run("Orvane.getRegistryValue('Value'); 1 + 1").toInt(), 2);
}

void tst_KyScriptOrvaneRegistry::applicationKeysStandUnderTheNamesOfTheApplication()
{
    run("Orvane.setRegistryValue('Group/Sub/Value', 'x')");
    QCOMPARE(QSettings("Maker", "Client").value("Group/Sub/Value"), QVariant("x"));
    QSettings("Maker", "Client").setValue("Group/Other", "y");
    QCOMPARE(run("Orvane.getRegistryValue('Group/Other')").toString(), QStringLiteral("y"));
}

void tst_KyScriptOrvaneRegistry::keyTellsWhichStoreItMeans_data()
{
    QTest::addColumn<QString>("key");
    QTest::addColumn<bool>("isAbsolute");
    QTest::newRow("word") << "Value" << false;
    QTest::newRow("group") << "Group/Value" << false;
    QTest::newRow("lower case prefix") << "hkey_current_user/Value" << false;
    QTest::newRow("mixed case prefix") << "Hkey_CURRENT_USER/Value" << false;
    QTest::newRow("part of the prefix") << "HKE/Value" << false;
    QTest::newRow("blank before the prefix") << " HKEY/Value" << false;
    QTest::newRow("short name of a root") << "HKCU/Value" << false;
    QTest::newRow("prefix") << "HKEY_CURRENT_USER\\Value" << true;
    QTest::newRow("prefix alone") << "HKEY" << true;
    QTest::newRow("prefix of a word") << "HKEYNOTE" << true;
    QTest::newRow("backslash") << "\\Software\\Value" << true;
    QTest::newRow("slash") << "/Software/Value" << true;
}

void tst_KyScriptOrvaneRegistry::keyTellsWhichStoreItMeans()
{
    QFETCH(QString, key);
    QFETCH(bool, isAbsolute);
    QVERIFY(call("setRegistryValue", {key, "x"}).toBool());
    QCOMPARE(QFile::exists(nativeFile()), isAbsolute);
    QCOMPARE(QFile::exists(applicationFile()), !isAbsolute);
    QCOMPARE(call("getRegistryValue", {key}).toString(), QStringLiteral("x"));
    QVERIFY(call("removeRegistryValue", {key}).toBool());
    QVERIFY(call("getRegistryValue", {key}).isUndefined());
}

void tst_KyScriptOrvaneRegistry::separatorsOfBothKindsAreEqual_data()
{
    QTest::addColumn<QString>("key");
    QTest::newRow("backslashes") << "HKEY_CURRENT_USER\\Software\\Maker\\Value";
    QTest::newRow("slashes") << "HKEY_CURRENT_USER/Software/Maker/Value";
    QTest::newRow("mixed, slash last") << "HKEY_CURRENT_USER\\Software\\Maker/Value";
    QTest::newRow("mixed, backslash last") << "HKEY_CURRENT_USER/Software/Maker\\Value";
    QTest::newRow("one in front") << "\\HKEY_CURRENT_USER\\Software\\Maker\\Value";
    QTest::newRow("doubled") << "HKEY_CURRENT_USER//Software\\\\Maker/Value";
}

void tst_KyScriptOrvaneRegistry::separatorsOfBothKindsAreEqual()
{
    QFETCH(QString, key);
    run("Orvane.setRegistryValue('HKEY_CURRENT_USER\\\\Software\\\\Maker\\\\Value', 'x')");
    QCOMPARE(call("getRegistryValue", {key}).toString(), QStringLiteral("x"));
    QVERIFY(call("setRegistryValue", {key, "y"}).toBool());
    QCOMPARE(run("Orvane.getRegistryValue('HKEY_CURRENT_USER\\\\Software\\\\Maker\\\\Value')").toString(),
             QStringLiteral("y"));
    QCOMPARE(call("registryKeys", {"/HKEY_CURRENT_USER/Software/Maker"}).toVariant().toStringList(),
             QStringList{"Value"});
}

void tst_KyScriptOrvaneRegistry::absoluteKeyWithoutASeparatorIsBoth()
{
    run("Orvane.setRegistryValue('HKEY_X', 'x')");
    QCOMPARE(run("Orvane.registryKeys('HKEY_X')").toVariant().toStringList(), QStringList{"HKEY_X"});
    QCOMPARE(run("Orvane.getRegistryValue('HKEY_X\\\\HKEY_X')").toString(), QStringLiteral("x"));
}

void tst_KyScriptOrvaneRegistry::locationThatCannotBeHoldsNothing_data()
{
    QTest::addColumn<QString>("key");
    QTest::newRow("backslash") << "\\Value";
    QTest::newRow("slash") << "/Value";
    QTest::newRow("backslash alone") << "\\";
    QTest::newRow("slashes alone") << "///";
    QTest::newRow("no name of a value") << "/Location/";
}

void tst_KyScriptOrvaneRegistry::locationThatCannotBeHoldsNothing()
{
    QFETCH(QString, key);
    QVERIFY(call("setRegistryValue", {key, "x"}).toBool());
    QCOMPARE(call("getRegistryValue", {key, "default"}).toString(), QStringLiteral("default"));
    QVERIFY(call("removeRegistryValue", {key}).toBool());
    QVERIFY(!QFile::exists(nativeFile()) && !QFile::exists(applicationFile()));
    run("Orvane.setRegistryValue('/A/B', 1)");
    QCOMPARE(run("Orvane.registryKeys('/')").toVariant().toStringList(), QStringList());
    QCOMPARE(run("Orvane.registryKeys('\\\\')").toVariant().toStringList(), QStringList());
}

void tst_KyScriptOrvaneRegistry::removalGivesTrue_data()
{
    QTest::addColumn<QString>("key");
    QTest::newRow("application") << "Group/Value";
    QTest::newRow("absolute") << "HKEY_CURRENT_USER\\Software\\Value";
}

void tst_KyScriptOrvaneRegistry::removalGivesTrue()
{
    QFETCH(QString, key);
    QVERIFY(call("removeRegistryValue", {key}).toBool());
    QVERIFY(!QFile::exists(nativeFile()) && !QFile::exists(applicationFile()));
    call("setRegistryValue", {key, "x"});
    QVERIFY(call("removeRegistryValue", {key}).toBool());
    QVERIFY(call("getRegistryValue", {key}).isUndefined());
    QVERIFY(call("removeRegistryValue", {key}).toBool());
}

void tst_KyScriptOrvaneRegistry::removalTakesWhatIsBelow()
{
    run("Orvane.setRegistryValue('Group/A', 1); Orvane.setRegistryValue('Group/B/C', 1); "
        "Orvane.setRegistryValue('Groups', 1);"
        "Orvane.removeRegistryValue('Group')");
    QCOMPARE(run("Orvane.registryKeys()").toVariant().toStringList(), QStringList{"Groups"});
}

void tst_KyScriptOrvaneRegistry::emptyKeyRemovesNothing_data()
{
    QTest::addColumn<QString>("call");
    QTest::newRow("empty") << "removeRegistryValue('')";
    QTest::newRow("undefined") << "removeRegistryValue(undefined)";
    QTest::newRow("null") << "removeRegistryValue(null)";
    QTest::newRow("location without a name") << "removeRegistryValue('/Location/Sub/')";
}

void tst_KyScriptOrvaneRegistry::emptyKeyRemovesNothing()
{
    QFETCH(QString, call);
    run("Orvane.setRegistryValue('Group/A', 1); Orvane.setRegistryValue('/Location/Sub/A', 1)");
    QVERIFY(run("Orvane." + call).toBool());
    QCOMPARE(run("Orvane.registryKeys().concat(Orvane.registryKeys('/Location'))").toVariant().toStringList(),
             (QStringList{"Group/A", "Sub/A"}));
}

void tst_KyScriptOrvaneRegistry::keysOfTheApplicationAreListed_data()
{
    QTest::addColumn<QString>("call");
    QTest::addColumn<QStringList>("keys");
    QTest::newRow("no argument") << "registryKeys()"
                                 << QStringList{"Alone", "Group/A", "Group/Sub/B", "Group/Sub/C"};
    QTest::newRow("empty") << "registryKeys('')"
                           << QStringList{"Alone", "Group/A", "Group/Sub/B", "Group/Sub/C"};
    QTest::newRow("undefined") << "registryKeys(undefined)"
                               << QStringList{"Alone", "Group/A", "Group/Sub/B", "Group/Sub/C"};
    QTest::newRow("group") << "registryKeys('Group')" << QStringList{"A", "Sub/B", "Sub/C"};
    QTest::newRow("group in a group") << "registryKeys('Group/Sub')" << QStringList{"B", "C"};
    QTest::newRow("slash at the end") << "registryKeys('Group/Sub/')" << QStringList{"B", "C"};
    QTest::newRow("value") << "registryKeys('Group/A')" << QStringList();
    QTest::newRow("unknown group") << "registryKeys('None')" << QStringList();
    QTest::newRow("other letters") << "registryKeys('group')" << QStringList();
}

void tst_KyScriptOrvaneRegistry::keysOfTheApplicationAreListed()
{
    QFETCH(QString, call);
    QFETCH(QStringList, keys);
    run("['Alone', 'Group/A', 'Group/Sub/B', 'Group/Sub/C', '/Absolute/D'].forEach("
        "function(key) { Orvane.setRegistryValue(key, key); })");
    const QJSValue found = run("Orvane." + call);
    QVERIFY(found.isArray());
    QCOMPARE(found.toVariant().toStringList(), keys);
}

void tst_KyScriptOrvaneRegistry::keysOfALocationAreRelativeToIt_data()
{
    QTest::addColumn<QString>("path");
    QTest::addColumn<QStringList>("keys");
    QTest::newRow("root") << "HKEY_CURRENT_USER" << QStringList{"Software/Maker/A", "Software/Maker/Sub/B"};
    QTest::newRow("backslashes") << "HKEY_CURRENT_USER\\Software\\Maker" << QStringList{"A", "Sub/B"};
    QTest::newRow("slashes") << "HKEY_CURRENT_USER/Software/Maker" << QStringList{"A", "Sub/B"};
    QTest::newRow("separator at the end") << "HKEY_CURRENT_USER/Software/Maker/" << QStringList{"A", "Sub/B"};
    QTest::newRow("below") << "HKEY_CURRENT_USER\\Software\\Maker\\Sub" << QStringList{"B"};
    QTest::newRow("value") << "HKEY_CURRENT_USER\\Software\\Maker\\A" << QStringList();
    QTest::newRow("unknown") << "HKEY_LOCAL_MACHINE\\Software" << QStringList();
    QTest::newRow("beginning of a name") << "HKEY_CURRENT_USER\\Soft" << QStringList();
}

void tst_KyScriptOrvaneRegistry::keysOfALocationAreRelativeToIt()
{
    QFETCH(QString, path);
    QFETCH(QStringList, keys);
    run("Orvane.setRegistryValue('HKEY_CURRENT_USER/Software/Maker/A', 1);"
        "Orvane.setRegistryValue('HKEY_CURRENT_USER/Software/Maker/Sub/B', 1); Orvane.setRegistryValue('C', "
        "1)");
    QCOMPARE(call("registryKeys", {path}).toVariant().toStringList(), keys);
}

void tst_KyScriptOrvaneRegistry::locationsAreKeptApart()
{
    run("Orvane.setRegistryValue('Software/Value', 'application'); "
        "Orvane.setRegistryValue('/Software/Value', 'native');"
        "Orvane.setRegistryValue('HKEY_CURRENT_USER/Software/Value', 'user')");
    QCOMPARE(run("['Software/Value', '/Software/Value', 'HKEY_CURRENT_USER/Software/Value']"
                 ".map(function(key) { return Orvane.getRegistryValue(key); }).join()")
                 .toString(),
             QStringLiteral("application,native,user"));
}

void tst_KyScriptOrvaneRegistry::unusualKeysAreKept_data()
{
    QTest::addColumn<QString>("key");
    QTest::newRow("not Latin") << QStringLiteral("\u8a2d\u5b9a/\u5024");
    QTest::newRow("blanks and signs") << " a b / =;#[]%\"' ";
    QTest::newRow("folders of a file system") << "../../escape";
    QTest::newRow("General") << "General/x";
    QTest::newRow("10000 characters") << QString(10000, 'k');
    QTest::newRow("1000 groups") << QString("g/").repeated(1000) + "k";
    QTest::newRow("absolute, not Latin") << QStringLiteral("/\u8a2d\u5b9a/\u5024");
    QTest::newRow("absolute, folders of a file system") << "/../../../etc/escape";
    QTest::newRow("absolute, General") << "/General/x";
    QTest::newRow("absolute, drive") << "/C:\\Windows/x";
    QTest::newRow("absolute, 10000 characters") << "/a/" + QString(10000, 'k');
}

void tst_KyScriptOrvaneRegistry::unusualKeysAreKept()
{
    QFETCH(QString, key);
    QVERIFY(call("setRegistryValue", {key, "x"}).toBool());
    QCOMPARE(call("getRegistryValue", {key}).toString(), QStringLiteral("x"));
    const QString made = key.startsWith('/') ? nativeFile() : applicationFile();
    QCOMPARE(QDir(mFolder->filePath("Maker")).entryList(QDir::Files),
             QStringList{QFileInfo(made).fileName()});
    QCOMPARE(QDir(mFolder->path()).entryList(QDir::AllEntries | QDir::NoDotAndDotDot), QStringList{"Maker"});
    QVERIFY(call("removeRegistryValue", {key}).toBool());
    QVERIFY(call("getRegistryValue", {key}).isUndefined());
}

void tst_KyScriptOrvaneRegistry::nothingIsLeftInTheCurrentFolder()
{
    const QTemporaryDir current;
    const QString before = QDir::currentPath();
    QVERIFY(QDir::setCurrent(current.path()));
    run("['HKEY_CURRENT_USER\\\\Software\\\\X', '\\\\X', '/X', '/a/b', 'HKEY', 'x', "
        "'g/x'].forEach(function(key) {"
        "Orvane.setRegistryValue(key, 1); Orvane.getRegistryValue(key); Orvane.registryKeys(key);"
        "Orvane.removeRegistryValue(key); })");
    QVERIFY(QDir::setCurrent(before));
    QCOMPARE(QDir(current.path()).entryList(QDir::AllEntries | QDir::Hidden | QDir::NoDotAndDotDot),
             QStringList());
}

void tst_KyScriptOrvaneRegistry::layersOfThePropertiesAreNotTouched()
{
    run("Orvane.setRegistryValue('T.Int', 5); Orvane.setRegistryValue('T/Int', 5)");
    QVERIFY(mPlatform->registry.layers("T.Int").empty());
    mPlatform->registry.setProperty("T.Text", "x", 1000);
    QVERIFY(run("Orvane.getRegistryValue('T.Text')").isUndefined());
}

void tst_KyScriptOrvaneRegistry::storeThatCannotBeWrittenIsNotTold()
{
    LogCapture log(2);
    QFile obstacle(mFolder->filePath("file"));
    QVERIFY(obstacle.open(QIODevice::WriteOnly));
    QSettings::setPath(QSettings::NativeFormat, QSettings::UserScope, obstacle.fileName() + "/below");
    QVERIFY(run("Orvane.setRegistryValue('a', 1) && Orvane.setRegistryValue('/a/b', 1)").toBool());
    QVERIFY(run("Orvane.removeRegistryValue('a') && Orvane.removeRegistryValue('/a/b')").toBool());
    QVERIFY(run("Orvane.getRegistryValue('/a/c', 'd') === 'd' && Orvane.getRegistryValue('c', 'd') === 'd'")
                .toBool());
    QCOMPARE(run("Orvane.registryKeys('/a')").toVariant().toStringList(), QStringList());
    QCOMPARE(log.take(), QStringList());
}

void tst_KyScriptOrvaneRegistry::damagedStoreGivesTheDefault()
{
    QVERIFY(QDir(mFolder->path()).mkpath("Maker"));
    for (const QString& path : {nativeFile(), applicationFile()}) {
        QFile file(path);
        QVERIFY(file.open(QIODevice::WriteOnly));
        file.write(QByteArray(5000, '\0') + "[[[\n=\n@Variant(\\0\\0\n[a]\nb=@Variant(\\0)\n");
    }
    QVERIFY(run("Orvane.getRegistryValue('x', 'd') === 'd' && Orvane.getRegistryValue('/x/y', 'd') === 'd'")
                .toBool());
    run("Orvane.getRegistryValue('a/b'); Orvane.getRegistryValue('/a/b'); Orvane.registryKeys(); "
        "Orvane.registryKeys('/a')");
    QCOMPARE(run("1 + 1").toInt(), 2);
}

void tst_KyScriptOrvaneRegistry::withoutAPlatformEverythingIsNeutral()
{
    mPlatform.reset();
    QVERIFY(run("Orvane.getRegistryValue('a', 'd') === 'd'").toBool());
    QVERIFY(run("Orvane.setRegistryValue('a', 'x') && Orvane.removeRegistryValue('a')").toBool());
    QVERIFY(run("Array.isArray(Orvane.registryKeys())").toBool());
    QVERIFY(run("Orvane.setRegistryValue('/a/b', 'x')").toBool());
    QVERIFY(run("Orvane.registryKeys('/a').length <= 1").toBool());
}

void tst_KyScriptOrvaneRegistry::argumentsAreConvertedAsEver_data()
{
    QTest::addColumn<QString>("source");
    QTest::addColumn<QString>("value");
    QTest::newRow("number as key") << "Orvane.setRegistryValue(5, 'x'); Orvane.getRegistryValue('5')"
                                   << "x";
    QTest::newRow("no value") << "try { Orvane.setRegistryValue('a') } catch (e) { e.name }"
                              << "Error";
    QTest::newRow("no key") << "try { Orvane.getRegistryValue() } catch (e) { e.name }"
                            << "Error";
    QTest::newRow("no key to remove") << "try { Orvane.removeRegistryValue() } catch (e) { e.name }"
                                      << "Error";
}

void tst_KyScriptOrvaneRegistry::argumentsAreConvertedAsEver()
{
    QFETCH(QString, source);
    QFETCH(QString, value);
    QCOMPARE(run(source).toString(), value);
}

KY_TEST_MAIN(tst_KyScriptOrvaneRegistry)
#include "tst_KyScriptOrvaneRegistry.moc"
