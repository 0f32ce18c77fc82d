#include <support/ContractWatch.h>
#include <support/KyTest.h>
#include <support/KyTestPlatform.h>
#include <support/LogCapture.h>

#include <kyscript/KyScriptAbstractEngine.h>
#include <kyscript/KyScriptEngine.h>
#include <kyscript/KyScriptInterface.h>
#include <kyscript/KyScriptProgram.h>
#include <kyscript/KyScriptTool.h>

#include <kybase/KyActionUI.h>
#include <kybase/KyApplication.h>
#include <kybase/KyBaseViewer.h>
#include <kybase/KyToolRegistry.h>
#include <ovbase/OvImageSeries.h>

#include <QDir>
#include <QFile>
#include <QImage>
#include <QTemporaryDir>

#include <type_traits>

static_assert(std::is_base_of_v<KyObsoleteTrigger, KyScriptTool>);
static_assert(std::is_base_of_v<KyToolAspect::UnDeletable<KyTool>, KyScriptTool>);
static_assert(!std::is_base_of_v<QObject, KyScriptTool>);
static_assert(!std::is_constructible_v<KyScriptTool, const char*, QString>);

namespace {

class EmptyViewer : public KyBaseViewer
{
public:
    using KyBaseViewer::KyBaseViewer;
};

class ImageViewer : public KyBaseViewer
{
public:
    using KyBaseViewer::KyBaseViewer;
    OvImageSeries* imageSeries(int inIndex) override { return inIndex == 0 ? mSeries.get() : nullptr; }

private:
    const RnHandle<OvImageSeries> mSeries{new OvImageSeries(Ky::ImageSetID())};
};

using Tool = std::shared_ptr<KyTool>;

Tool toolOf(const char* inKey)
{
    return KyToolRegistry::getToolByDecorationKey<KyTool>(inKey, true);
}

QStringList keys()
{
    QStringList all;
    for (const Tool& tool : KyToolRegistry::tools())
        all.append(QString::fromLatin1(tool->decorationKey().c_str()));
    return all;
}

/// Scripts note in this global what they have done.
QString noted(const QString& inEngine = "tools")
{
    return KyScriptInterface::getInstance(inEngine).evaluate("String(Global.noted)").toString();
}

} // namespace

class tst_KyScriptTool : public QObject
{
    Q_OBJECT

private slots:
    void init();
    void cleanup();

    // the file
    void nullFileNameDoesNothing();
    void rootMayHaveAnyName();
    void toolsCountAtAnyDepth();
    void toolsOfSeveralFilesAccumulate();
    void sameIdMakesASecondTool();
    void clearedToolsAreForgotten();
    void clearedToolThatIsHeldLives();
    void toolsMayBeClearedWhileOneRuns();

    // attributes
    void attributesHaveDefaults_data();
    void attributesHaveDefaults();
    void toolIsSkippedSilently_data();
    void toolIsSkippedSilently();
    void keyIsTheIdInLatin1();
    void groupOfTheDecorationIsEmpty();
    void decorationIsRecordedWithoutAnApplication_data();
    void decorationIsRecordedWithoutAnApplication();
    void checkableIsABoolean_data();
    void checkableIsABoolean();
    void enabledDecidesTheViewerTest_data();
    void enabledDecidesTheViewerTest();

    // icons
    void iconsLieInTheirFolder();
    void missingIconIsToldAndTheToolMade_data();
    void missingIconIsToldAndTheToolMade();
    void iconFolderMayBeEmpty_data();
    void iconFolderMayBeEmpty();
    void brokenIconLeavesTheLabel();

    // process
    void processChoosesTheScript_data();
    void processChoosesTheScript();
    void firstScriptOfANameCounts();
    void scriptsCountAtAnyDepth();
    void emptyScriptIsNotRun_data();
    void emptyScriptIsNotRun();
    void viewerIsNotUsed();
    void resultOfTheScriptIsDropped();
    void scriptHasAScopeOfItsOwn();
    void engineIsTheOneOfTheFile();
    void engineIsAskedForAtEachTrigger();
    void endedEngineIsAContractReport();
    void scriptThatFailsIsReported_data();
    void scriptThatFailsIsReported();
    void lineOfAnErrorIsThatOfTheFile_data();
    void lineOfAnErrorIsThatOfTheFile();
    void fileNameIsShortenedAtTheMarker_data();
    void fileNameIsShortenedAtTheMarker();
    void reentryRunsNestedAtOnce();
    void scriptTriggersATool();
    void actionTriggersTheScripts();

    void whatScriptsKeepOutlivesThePlatform();

    // bad input
    void unreadableFileIsToldOf_data();
    void unreadableFileIsToldOf();
    void malformedFileIsToldOf_data();
    void malformedFileIsToldOf();
    void fileBuiltToExhaustIsRefused_data();
    void fileBuiltToExhaustIsRefused();
    void externalEntityIsNotRead();
    void encodingIsThatOfTheFile_data();
    void encodingIsThatOfTheFile();
    void fileNameMayBeBeyondLatin1();
    void tenThousandToolsAreLoaded();

private:
    /// Writes the file and loads it, with the test's folder for icons. Gives what was logged from level 2 on.
    QStringList load(const QByteArray& inXml, const QString& inName = "t.xml");
    QString write(const QByteArray& inText, const QString& inName = "t.xml");
    KyToolDecorations& decorations() { return *mPlatform->application.toolDecorations(); }

    std::unique_ptr<KyTestPlatform> mPlatform;
    std::unique_ptr<ContractWatch> mContracts;
    std::unique_ptr<QTemporaryDir> mFolder;
};

void tst_KyScriptTool::init()
{
    mPlatform = std::make_unique<KyTestPlatform>();
    mContracts = std::make_unique<ContractWatch>();
    mFolder = std::make_unique<QTemporaryDir>();
    KyScriptAbstractInterface::getInstance("tools").runScript(KyScriptProgram("Global.noted = undefined", ""),
                                                              false, false, false);
}

void tst_KyScriptTool::cleanup()
{
    KyScriptTool::clearTools();
    const QString broken = mContracts->verify();
    mContracts.reset();
    mPlatform.reset();
    QVERIFY2(broken.isEmpty(), qPrintable(broken));
    QCOMPARE(keys(), QStringList());
}

QString tst_KyScriptTool::write(const QByteArray& inText, const QString& inName)
{
    QFile file(mFolder->filePath(inName));
    if (!file.open(QIODevice::WriteOnly) || file.write(inText) != inText.size())
        qFatal("cannot write %s", qPrintable(file.fileName()));
    return file.fileName();
}

QStringList tst_KyScriptTool::load(const QByteArray& inXml, const QString& inName)
{
    const QString name = write(inXml, inName);
    LogCapture log(2);
    KyScriptTool::loadTools(QFile::encodeName(name), QFile::encodeName(mFolder->path()));
    return log.take();
}

void tst_KyScriptTool::nullFileNameDoesNothing()
{
    LogCapture log;
    KyScriptTool::loadTools(nullptr, nullptr);
    KyScriptTool::loadTools(nullptr, "icons");
    QCOMPARE(log.take(), QStringList());
    QCOMPARE(keys(), QStringList());
}

void tst_KyScriptTool::rootMayHaveAnyName()
{
    QCOMPARE(load("<Anything><Tool Id='a'><OnSet>1</OnSet></Tool></Anything>"), QStringList());
    QCOMPARE(keys(), QStringList("a"));
    QCOMPARE(load("<Tool Id='root'><OnSet>1</OnSet><Tool Id='b'><OnSet>1</OnSet></Tool></Tool>"),
             QStringList());
    QCOMPARE(keys(), QStringList({"a", "b"}));
}

void tst_KyScriptTool::toolsCountAtAnyDepth()
{
    load("<x><Tool Id='a'><OnSet>1</OnSet></Tool><y><z><Tool Id='b'><OnSet>1</OnSet></Tool></z></y>"
         "<Tool Id='c'><OnSet>1</OnSet><Tool Id='d'><OnUnset>1</OnUnset></Tool></Tool></x>");
    QCOMPARE(keys(), QStringList({"a", "b", "c", "d"}));
}

void tst_KyScriptTool::toolsOfSeveralFilesAccumulate()
{
    load("<x><Tool Id='a'><OnSet>1</OnSet></Tool></x>");
    load("<x><Tool Id='b'><OnSet>1</OnSet></Tool></x>", "u.xml");
    load("<x><Tool Id='a'><OnSet>1</OnSet></Tool></x>");
    QCOMPARE(keys(), QStringList({"a", "b", "a"}));
}

void tst_KyScriptTool::sameIdMakesASecondTool()
{
    load("<x ScriptEngine='tools'><Tool Id='a' Label='1'><OnSet>Global.noted = 1</OnSet></Tool>"
         "<Tool Id='a' Label='2'><OnSet>Global.noted = 2</OnSet></Tool></x>");
    QCOMPARE(keys(), QStringList({"a", "a"}));
    const auto all = KyToolRegistry::tools();
    all[0]->process(nullptr, true);
    QCOMPARE(noted(), QStringLiteral("1"));
    all[1]->process(nullptr, true);
    QCOMPARE(noted(), QStringLiteral("2"));
    QCOMPARE(toolOf("a"), all[1]);
    QCOMPARE(decorations().label("a", false), QStringLiteral("2"));
}

void tst_KyScriptTool::clearedToolsAreForgotten()
{
    load("<x><Tool Id='a'><OnSet>1</OnSet></Tool></x>");
    KyScriptTool::clearTools();
    QCOMPARE(keys(), QStringList());
    KyScriptTool::clearTools();
    load("<x><Tool Id='b'><OnSet>1</OnSet></Tool></x>");
    QCOMPARE(keys(), QStringList("b"));
}

void tst_KyScriptTool::clearedToolThatIsHeldLives()
{
    load("<x ScriptEngine='tools'><Tool Id='a'><OnSet>Global.noted = 'ran'</OnSet></Tool></x>");
    Tool held = toolOf("a");
    KyScriptTool::clearTools();
    QCOMPARE(toolOf("a"), held);
    QVERIFY(held->process(nullptr, true));
    QCOMPARE(noted(), QStringLiteral("ran"));
    held.reset();
    QVERIFY(!toolOf("a"));
}

void tst_KyScriptTool::toolsMayBeClearedWhileOneRuns()
{
    load("<x ScriptEngine='tools'><Tool Id='a'><OnSet>Clearer.clear(); Global.noted = "
         "'ran'</OnSet></Tool></x>");
    QTimer clearer;
    connect(&clearer, &QObject::objectNameChanged, this, [] { KyScriptTool::clearTools(); });
    KyScriptInterface& engine = KyScriptInterface::getInstance("tools");
    QJSEngine::setObjectOwnership(&clearer, QJSEngine::CppOwnership);
    engine.globalObject().setProperty("Clearer", engine.newQObject(&clearer));
    engine.evaluate("Clearer.clear = function() { Clearer.objectName = 'x'; }");
    KyTool* const tool = toolOf("a").get();
    QVERIFY(tool->process(nullptr, true));
    QCOMPARE(noted(), QStringLiteral("ran"));
    QCOMPARE(keys(), QStringList());
    engine.globalObject().deleteProperty("Clearer");
}

void tst_KyScriptTool::attributesHaveDefaults_data()
{
    QTest::addColumn<QByteArray>("attributes");
    QTest::addColumn<QString>("label");
    QTest::addColumn<QString>("active");
    QTest::addColumn<QString>("toolTip");
    QTest::newRow("Id alone") << QByteArray() << "the.id"
                              << "the.id"
                              << "the.id";
    QTest::newRow("Label") << QByteArray("Label='L'") << "L"
                           << "L"
                           << "L";
    QTest::newRow("Tooltip") << QByteArray("Tooltip='T'") << "the.id"
                             << "the.id"
                             << "T";
    QTest::newRow("LabelActive") << QByteArray("LabelActive='A'") << "the.id"
                                 << "A"
                                 << "the.id";
    QTest::newRow("all") << QByteArray("Label='L' LabelActive='A' Tooltip='T'") << "L"
                         << "A"
                         << "T";
    QTest::newRow("empty Label") << QByteArray("Label=''") << ""
                                 << ""
                                 << "";
    QTest::newRow("empty Tooltip") << QByteArray("Label='L' Tooltip=''") << "L"
                                   << "L"
                                   << "";
    QTest::newRow("names mind case") << QByteArray("label='L' ToolTip='T' labelActive='A'") << "the.id"
                                     << "the.id"
                                     << "the.id";
}

void tst_KyScriptTool::attributesHaveDefaults()
{
    QFETCH(QByteArray, attributes);
    QFETCH(QString, label);
    QFETCH(QString, active);
    QFETCH(QString, toolTip);
    QCOMPARE(load("<x><Tool Id='the.id' " + attributes + "><OnSet>1</OnSet></Tool></x>"), QStringList());
    QCOMPARE(decorations().label("the.id", false), label);
    QCOMPARE(decorations().label("the.id", true), active);
    QCOMPARE(decorations().toolTip("the.id"), toolTip);
    QCOMPARE(decorations().iconPath("the.id"), QString());
    QCOMPARE(decorations().activeIconPath("the.id"), QString());
    const auto tool = std::dynamic_pointer_cast<KyScriptTool>(toolOf("the.id"));
    QVERIFY(tool);
    QVERIFY(!tool->isActivatable());
    QVERIFY(!tool->isDeletable());
    QVERIFY(!tool->supportsViewer(nullptr));
}

void tst_KyScriptTool::toolIsSkippedSilently_data()
{
    QTest::addColumn<QByteArray>("tool");
    QTest::newRow("no Id") << QByteArray("<Tool Label='L'><OnSet>1</OnSet></Tool>");
    QTest::newRow("empty Id") << QByteArray("<Tool Id='' Label='L'><OnSet>1</OnSet></Tool>");
    QTest::newRow("no script") << QByteArray("<Tool Id='L' Icon='none.png'/>");
    QTest::newRow("other elements") << QByteArray("<Tool Id='L'><onset>1</onset><Run>1</Run></Tool>");
    QTest::newRow("other name") << QByteArray("<tool Id='L'><OnSet>1</OnSet></tool>");
}

void tst_KyScriptTool::toolIsSkippedSilently()
{
    QFETCH(QByteArray, tool);
    QCOMPARE(load("<x>" + tool + "<Tool Id='next'><OnSet>1</OnSet></Tool></x>"), QStringList());
    QCOMPARE(keys(), QStringList("next"));
    QCOMPARE(decorations().label("L", false) + decorations().label("", false), QString());
}

void tst_KyScriptTool::keyIsTheIdInLatin1()
{
    load(QString::fromUtf8("<x><Tool Id='Größe€'><OnSet>1</OnSet></Tool></x>").toUtf8());
    QVERIFY(toolOf("Gr\xf6\xdf"
                   "e?"));
    QCOMPARE(decorations().label("Gr\xf6\xdf"
                                 "e?",
                                 false),
             QString::fromUtf8("Größe€"));
}

void tst_KyScriptTool::groupOfTheDecorationIsEmpty()
{
    decorations().registerDecoration("a", "old", "", "", "", "", "");
    load("<x><Tool Id='a'><OnSet>1</OnSet></Tool></x>");
    QCOMPARE(decorations().group("a"), QString());
}

void tst_KyScriptTool::decorationIsRecordedWithoutAnApplication_data()
{
    QTest::addColumn<bool>("hasApplication");
    QTest::newRow("no application") << false;
    QTest::newRow("application without a store") << true;
}

/// Without a place for its looks a tool works all the same.
void tst_KyScriptTool::decorationIsRecordedWithoutAnApplication()
{
    QFETCH(bool, hasApplication);
    auto application = std::make_unique<KyApplication>(nullptr);
    if (!hasApplication)
        application.reset();
    load("<x ScriptEngine='tools'><Tool Id='a'><OnSet>Global.noted = 'ran'</OnSet></Tool></x>");
    toolOf("a")->process(nullptr, true);
    QCOMPARE(noted(), QStringLiteral("ran"));
}

void tst_KyScriptTool::checkableIsABoolean_data()
{
    QTest::addColumn<QByteArray>("attribute");
    QTest::addColumn<bool>("isActivatable");
    QTest::newRow("missing") << QByteArray() << false;
    for (const char* text : {"1", "true", "True", "yes", "on"})
        QTest::newRow(text) << QByteArray("Checkable='") + text + "'" << true;
    for (const char* text : {"", "0", "false", "no", "off", "2", "maybe"})
        QTest::addRow("\"%s\"", text) << QByteArray("Checkable='") + text + "'" << false;
}

void tst_KyScriptTool::checkableIsABoolean()
{
    QFETCH(QByteArray, attribute);
    QFETCH(bool, isActivatable);
    load("<x><Tool Id='a' " + attribute + "><OnSet>1</OnSet></Tool></x>");
    QCOMPARE(toolOf("a")->isActivatable(), isActivatable);
    QVERIFY(!toolOf("a")->isActive());
}

void tst_KyScriptTool::enabledDecidesTheViewerTest_data()
{
    QTest::addColumn<QByteArray>("attribute");
    QTest::addColumn<bool>("supportsAll");
    for (const char* text : {"whensupported", "WhenSupported", "WHENSUPPORTED"})
        QTest::newRow(text) << QByteArray("Enabled='") + text + "'" << true;
    for (const char* text :
         {"always", "Always", "ALWAYS", "", "never", "when supported", "whensupported ", "1"})
        QTest::addRow("\"%s\"", text) << QByteArray("Enabled='") + text + "'" << false;
    QTest::newRow("missing") << QByteArray() << false;
}

void tst_KyScriptTool::enabledDecidesTheViewerTest()
{
    QFETCH(QByteArray, attribute);
    QFETCH(bool, supportsAll);
    load("<x><Tool Id='a' " + attribute + "><OnSet>1</OnSet></Tool></x>");
    const RnHandle<KyBaseViewer> empty(new EmptyViewer), images(new ImageViewer);
    QCOMPARE(toolOf("a")->supportsViewer(nullptr), supportsAll);
    QCOMPARE(toolOf("a")->supportsViewer(empty.get()), supportsAll);
    QVERIFY(toolOf("a")->supportsViewer(images.get()));
}

void tst_KyScriptTool::iconsLieInTheirFolder()
{
    QImage picture(16, 16, QImage::Format_RGB32);
    picture.fill(Qt::red);
    QVERIFY(picture.save(mFolder->filePath("off.png")) && picture.save(mFolder->filePath("on.png")));
    QCOMPARE(load("<x><Tool Id='a' Icon='off.png' IconActive='on.png'><OnSet>1</OnSet></Tool></x>"),
             QStringList());
    QCOMPARE(decorations().iconPath("a"), mFolder->path() + "/off.png");
    QCOMPARE(decorations().activeIconPath("a"), mFolder->path() + "/on.png");
    QVERIFY(!decorations().icon("a").isNull());
}

void tst_KyScriptTool::missingIconIsToldAndTheToolMade_data()
{
    QTest::addColumn<QByteArray>("attributes");
    QTest::addColumn<QStringList>("missing");
    QTest::newRow("icon") << QByteArray("Icon='none.png'") << QStringList("none.png");
    QTest::newRow("active icon") << QByteArray("IconActive='none.png'") << QStringList("none.png");
    QTest::newRow("both") << QByteArray("IconActive='2.png' Icon='1.png'") << QStringList({"1.png", "2.png"});
    QTest::newRow("per cent sign") << QByteArray("Icon='%s%n.png'") << QStringList("%s%n.png");
    QTest::newRow("beyond Latin-1") << QString::fromUtf8("Icon='ü€.png'").toUtf8()
                                    << QStringList(QString::fromUtf8("ü€.png"));
}

void tst_KyScriptTool::missingIconIsToldAndTheToolMade()
{
    QFETCH(QByteArray, attributes);
    QFETCH(QStringList, missing);
    QStringList expected;
    for (const QString& name : missing)
        expected.append(QStringLiteral("2||Tool Configuration %1/t.xml - cannot find icon %1/%2\n")
                            .arg(mFolder->path(), name));
    QCOMPARE(load("<x><Tool Id='a' " + attributes + "><OnSet>1</OnSet></Tool></x>"), expected);
    QCOMPARE(keys(), QStringList("a"));
    QCOMPARE(decorations().iconPath("a") + decorations().activeIconPath("a"),
             mFolder->path() + "/" + missing.join(mFolder->path() + "/"));
    QVERIFY(decorations().icon("a").isNull());
}

void tst_KyScriptTool::iconFolderMayBeEmpty_data()
{
    QTest::addColumn<bool>("isNull");
    QTest::newRow("null") << true;
    QTest::newRow("empty") << false;
}

void tst_KyScriptTool::iconFolderMayBeEmpty()
{
    QFETCH(bool, isNull);
    const QByteArray file =
        QFile::encodeName(write("<x><Tool Id='a' Icon='no such.png'><OnSet>1</OnSet></Tool></x>"));
    LogCapture log(2);
    KyScriptTool::loadTools(file, isNull ? nullptr : "");
    QCOMPARE(log.take(), QStringList("2||Tool Configuration " + QFile::decodeName(file) +
                                     " - cannot find icon /no such.png\n"));
    QCOMPARE(decorations().iconPath("a"), QStringLiteral("/no such.png"));
}

void tst_KyScriptTool::brokenIconLeavesTheLabel()
{
    write("no picture", "broken.png");
    QCOMPARE(load("<x><Tool Id='a' Label='L' Icon='broken.png'><OnSet>1</OnSet></Tool></x>"), QStringList());
    QVERIFY(decorations().icon("a").isNull());
    const std::unique_ptr<QAction> action(KyActionUI::createAction(toolOf("a"), {}, nullptr));
    QVERIFY(action->icon().isNull());
    QCOMPARE(action->text(), QStringLiteral("L"));
}

void tst_KyScriptTool::processChoosesTheScript_data()
{
    QTest::addColumn<bool>("isActivatable");
    QTest::addColumn<bool>("flag");
    QTest::addColumn<QByteArray>("scripts");
    QTest::addColumn<QString>("ran");
    const QByteArray onSet = "<OnSet>Global.noted = 'set'</OnSet>";
    const QByteArray onUnset = "<OnUnset>Global.noted = 'unset'</OnUnset>";
    QTest::newRow("trigger") << false << true << onSet + onUnset << "set";
    QTest::newRow("taken back") << false << false << onSet + onUnset << "unset";
    QTest::newRow("on") << true << true << onSet + onUnset << "set";
    QTest::newRow("off") << true << false << onSet + onUnset << "set";
    QTest::newRow("trigger, only OnSet") << false << true << onSet << "set";
    QTest::newRow("taken back, only OnSet") << false << false << onSet << "undefined";
    QTest::newRow("trigger, only OnUnset") << false << true << onUnset << "undefined";
    QTest::newRow("taken back, only OnUnset") << false << false << onUnset << "unset";
    QTest::newRow("on, only OnUnset") << true << true << onUnset << "undefined";
    QTest::newRow("off, only OnUnset") << true << false << onUnset << "undefined";
}

void tst_KyScriptTool::processChoosesTheScript()
{
    QFETCH(bool, isActivatable);
    QFETCH(bool, flag);
    QFETCH(QByteArray, scripts);
    QFETCH(QString, ran);
    load("<x ScriptEngine='tools'><Tool Id='a' Checkable='" + QByteArray::number(isActivatable) + "'>" +
         scripts + "</Tool></x>");
    QVERIFY(toolOf("a")->process(nullptr, flag));
    QCOMPARE(noted(), ran);
}

void tst_KyScriptTool::firstScriptOfANameCounts()
{
    load("<x ScriptEngine='tools'><Tool Id='a'><OnSet>Global.noted = 1</OnSet><OnSet>Global.noted = 2</OnSet>"
         "<OnUnset>Global.noted = 3</OnUnset><OnUnset>Global.noted = 4</OnUnset></Tool></x>");
    toolOf("a")->process(nullptr, true);
    QCOMPARE(noted(), QStringLiteral("1"));
    toolOf("a")->process(nullptr, false);
    QCOMPARE(noted(), QStringLiteral("3"));
}

void tst_KyScriptTool::scriptsCountAtAnyDepth()
{
    load("<x ScriptEngine='tools'><Tool Id='outer'><y><OnSet>Global.noted = 1</OnSet></y>"
         "<Tool Id='inner'><OnUnset>Global.noted = 2</OnUnset></Tool></Tool></x>");
    toolOf("outer")->process(nullptr, true);
    QCOMPARE(noted(), QStringLiteral("1"));
    toolOf("outer")->process(nullptr, false);
    QCOMPARE(noted(), QStringLiteral("2"));
    toolOf("inner")->process(nullptr, true);
    QCOMPARE(noted(), QStringLiteral("2"));
}

void tst_KyScriptTool::emptyScriptIsNotRun_data()
{
    QTest::addColumn<QByteArray>("script");
    QTest::newRow("empty element") << QByteArray("<OnSet/>");
    QTest::newRow("white space") << QByteArray("<OnSet>  \n\t </OnSet>");
    QTest::newRow("empty CDATA") << QByteArray("<OnSet><![CDATA[]]></OnSet>");
}

void tst_KyScriptTool::emptyScriptIsNotRun()
{
    QFETCH(QByteArray, script);
    load("<x ScriptEngine='tools'><Tool Id='a'>" + script + "</Tool></x>");
    LogCapture log;
    QVERIFY(toolOf("a")->process(nullptr, true));
    QVERIFY(toolOf("a")->process(nullptr, false));
    QCOMPARE(log.take(), QStringList());
}

void tst_KyScriptTool::viewerIsNotUsed()
{
    load("<x ScriptEngine='tools'><Tool Id='a'><OnSet>Global.noted = (Global.noted || 0) + "
         "1</OnSet></Tool></x>");
    const RnHandle<KyBaseViewer> viewer(new EmptyViewer);
    QVERIFY(toolOf("a")->process(viewer.get(), true));
    QVERIFY(toolOf("a")->process(nullptr, true));
    QCOMPARE(noted(), QStringLiteral("2"));
}

void tst_KyScriptTool::resultOfTheScriptIsDropped()
{
    for (const char* value : {"return false", "return 0", "return new Error('x').message", "throw 5"}) {
        KyScriptTool::clearTools();
        load(QByteArray("<x ScriptEngine='tools'><Tool Id='a'><OnSet>") + value + "</OnSet></Tool></x>");
        QVERIFY2(toolOf("a")->process(nullptr, true), value);
    }
}

void tst_KyScriptTool::scriptHasAScopeOfItsOwn()
{
    load("<x ScriptEngine='tools'><Tool Id='a'><OnSet>var own = 1; function f() {} everywhere = 2;"
         " Global.noted = typeof own + typeof f; return 3;</OnSet></Tool></x>");
    toolOf("a")->process(nullptr, true);
    QCOMPARE(noted(), QStringLiteral("numberfunction"));
    QCOMPARE(
        KyScriptInterface::getInstance("tools").evaluate("typeof own + typeof f + everywhere").toString(),
        QStringLiteral("undefinedundefined2"));
}

void tst_KyScriptTool::engineIsTheOneOfTheFile()
{
    load("<x ScriptEngine='site'><Tool Id='a'><OnSet>here = 1</OnSet></Tool></x>");
    load("<x><Tool Id='b'><OnSet>here = 2</OnSet></Tool></x>");
    toolOf("a")->process(nullptr, true);
    toolOf("b")->process(nullptr, true);
    const auto here = [](const QString& inEngine) {
        return KyScriptInterface::getInstance(inEngine)
            .evaluate("typeof here + String(this.here)")
            .toString();
    };
    QCOMPARE(here("site"), QStringLiteral("number1"));
    QCOMPARE(here(""), QStringLiteral("number2"));
    QCOMPARE(here("tools"), QStringLiteral("undefinedundefined"));
}

/// In a process of its own: no engine is there when the file is loaded.
void tst_KyScriptTool::engineIsAskedForAtEachTrigger()
{
    delete static_cast<QObject*>(&KyScriptInterface::getInstance("tools"));
    QVERIFY(!KyScriptInterface::hasInstances());
    load("<x ScriptEngine='later'><Tool Id='a'><OnSet>ran = 1</OnSet></Tool></x>");
    QVERIFY(!KyScriptInterface::hasInstances());
    toolOf("a")->process(nullptr, true);
    QVERIFY(KyScriptInterface::hasInstances());
    QCOMPARE(KyScriptInterface::getInstance("later").evaluate("ran").toInt(), 1);
}

void tst_KyScriptTool::endedEngineIsAContractReport()
{
    load("<x ScriptEngine='ended'><Tool Id='a'><OnSet>ran = 1</OnSet></Tool></x>");
    toolOf("a")->process(nullptr, true);
    delete static_cast<QObject*>(&KyScriptInterface::getInstance("ended"));
    mContracts->expect("0", "Uninitialized engine");
    QVERIFY(toolOf("a")->process(nullptr, true));
}

void tst_KyScriptTool::scriptThatFailsIsReported_data()
{
    QTest::addColumn<QByteArray>("script");
    QTest::addColumn<QString>("message");
    QTest::newRow("throws") << QByteArray("throw new Error('too bad')") << "too bad";
    QTest::newRow("never defined") << QByteArray("\n\nneverDefined()") << "neverDefined is not defined";
    QTest::newRow("syntax") << QByteArray("if (") << "Expected token";
    QTest::newRow("comment at the end") << QByteArray("1 // end") << "Expected token";
    QTest::newRow("deep recursion") << QByteArray("(function f() { f(); })()") << "Maximum call stack size";
}

void tst_KyScriptTool::scriptThatFailsIsReported()
{
    QFETCH(QByteArray, script);
    QFETCH(QString, message);
    QCOMPARE(load("<x ScriptEngine='tools'><Tool Id='a'><OnSet>" + script + "</OnSet></Tool></x>"),
             QStringList());
    LogCapture log(2);
    QVERIFY(toolOf("a")->process(nullptr, true));
    QCOMPARE(log.lines().size(), 1);
    QCOMPARE(log.lines().first().level, 3);
    QCOMPARE(log.lines().first().context, QStringLiteral("Script Interface"));
    QVERIFY2(log.lines().first().text.startsWith("Uncaught JavaScript Exception\nException: "),
             qPrintable(log.lines().first().text));
    QVERIFY2(log.lines().first().text.contains(message), qPrintable(log.lines().first().text));
}

void tst_KyScriptTool::lineOfAnErrorIsThatOfTheFile_data()
{
    QTest::addColumn<QByteArray>("script");
    QTest::addColumn<int>("line");
    QTest::newRow("same line") << QByteArray("<OnSet>throw new Error('x')</OnSet>") << 3;
    QTest::newRow("next line") << QByteArray("<OnSet>\n throw new Error('x')</OnSet>") << 4;
    QTest::newRow("further down") << QByteArray("<OnSet>\n\n var a;\n\n throw new Error('x')\n</OnSet>") << 7;
    QTest::newRow("CDATA on the next line")
        << QByteArray("<OnSet>\n<![CDATA[throw new Error('x')]]></OnSet>") << 4;
    QTest::newRow("lines in CDATA") << QByteArray(
                                           "<OnSet>\n<![CDATA[var a;\n throw new Error('x')]]></OnSet>")
                                    << 5;
    QTest::newRow("start tag of two lines") << QByteArray("<OnSet\n>throw new Error('x')</OnSet>") << 4;
}

void tst_KyScriptTool::lineOfAnErrorIsThatOfTheFile()
{
    QFETCH(QByteArray, script);
    QFETCH(int, line);
    load("<x ScriptEngine='tools'>\n<Tool Id='a'>\n" + script + "</Tool></x>");
    LogCapture log(3);
    toolOf("a")->process(nullptr, true);
    QVERIFY2(log.lines().first().text.contains(QStringLiteral("\nLine: %1\n").arg(line)),
             qPrintable(log.lines().first().text));
}

void tst_KyScriptTool::fileNameIsShortenedAtTheMarker_data()
{
    QTest::addColumn<QString>("folder");
    QTest::addColumn<QString>("shown");
    QTest::newRow("tools") << "site/tools"
                           << ".../tools/f.xml:1";
    QTest::newRow("other") << "site/other"
                           << "/site/other/f.xml:1";
}

void tst_KyScriptTool::fileNameIsShortenedAtTheMarker()
{
    QFETCH(QString, folder);
    QFETCH(QString, shown);
    QVERIFY(QDir(mFolder->path()).mkpath(folder));
    load("<x ScriptEngine='tools'><Tool Id='a'><OnSet>throw new Error('x')</OnSet></Tool></x>",
         folder + "/f.xml");
    LogCapture log(3);
    toolOf("a")->process(nullptr, true);
    const QString text = log.lines().first().text;
    QVERIFY2(text.contains(shown), qPrintable(text));
    QCOMPARE(text.contains(mFolder->path()), !shown.startsWith("..."));
}

void tst_KyScriptTool::reentryRunsNestedAtOnce()
{
    load("<x ScriptEngine='tools'><Tool Id='outer' Enabled='whensupported'><OnSet>"
         "Global.noted = 'before'; order = ['outer begins']; Orvane.tool('inner').trigger();"
         " order.push('outer ends');</OnSet></Tool>"
         "<Tool Id='inner' Enabled='whensupported'><OnSet>order.push('inner');</OnSet></Tool></x>");
    LogCapture log(2);
    toolOf("outer")->process(nullptr, true);
    QCOMPARE(KyScriptInterface::getInstance("tools").evaluate("String(order)").toString(),
             QStringLiteral("outer begins,inner,outer ends"));
    QCOMPARE(log.take(), QStringList("2|Script Interface|Recursive script call, in file: " +
                                     mFolder->filePath("t.xml") + ", line 1"));
}

void tst_KyScriptTool::scriptTriggersATool()
{
    load("<x ScriptEngine='tools'><Tool Id='a' Label='L' Enabled='whensupported'><OnSet>"
         "Global.noted = 'ran'</OnSet></Tool></x>");
    KyScriptEngine engine(nullptr, -1);
    QCOMPARE(engine.evaluate("var t = Orvane.tool('a'); t.trigger(); t.text").toString(),
             QStringLiteral("L"));
    QCOMPARE(noted(), QStringLiteral("ran"));
}

void tst_KyScriptTool::actionTriggersTheScripts()
{
    load("<x ScriptEngine='tools'>"
         "<Tool Id='a' Enabled='whensupported'><OnSet>Global.noted = 'set'</OnSet>"
         "<OnUnset>Global.noted = 'unset'</OnUnset></Tool>"
         "<Tool Id='b' Enabled='whensupported' Checkable='1' Label='Start' LabelActive='Stop'><OnSet>"
         "Global.noted = Orvane.tool('b').checked</OnSet></Tool>"
         "<Tool Id='c'><OnSet>Global.noted = 'c'</OnSet></Tool></x>");
    const auto actionOf = [](const char* inKey) {
        return std::unique_ptr<KyActionUI>(KyActionUI::createAction(toolOf(inKey), {}, nullptr));
    };
    const auto a = actionOf("a"), b = actionOf("b"), c = actionOf("c");
    a->trigger();
    QCOMPARE(noted(), QStringLiteral("set"));
    a->takeBack();
    QCOMPARE(noted(), QStringLiteral("unset"));
    b->trigger();
    QCOMPARE(noted(), QStringLiteral("true"));
    QCOMPARE(b->text(), QStringLiteral("Stop"));
    b->trigger();
    QCOMPARE(noted(), QStringLiteral("false"));
    QCOMPARE(b->text(), QStringLiteral("Start"));
    QVERIFY(!c->isEnabled());
    const RnHandle<KyBaseViewer> viewer(new ImageViewer);
    mPlatform->viewers.setActiveViewer(viewer.get());
    QVERIFY(c->isEnabled());
    c->trigger();
    QCOMPARE(noted(), QStringLiteral("c"));
}

/// Named engines do, and with them the actions that they own, with a key at that, up to the end of the
/// process.
void tst_KyScriptTool::whatScriptsKeepOutlivesThePlatform()
{
    load("<x ScriptEngine='tools'><Tool Id='a' Enabled='whensupported'><OnSet>Global.noted = 'ran'</OnSet>"
         "</Tool></x>");
    KyScriptInterface& engine = KyScriptInterface::getInstance("tools");
    RnHandle<KyBaseViewer> viewer(new ImageViewer);
    mPlatform->viewers.setActiveViewer(viewer.get());
    engine.evaluate(
        "keptTool = Orvane.tool('a'); keptTool.shortcut = 'Ctrl+K'; keptTrigger = keptTool.trigger;"
        "keptViewer = Orvane.activeViewer(); keptTool.trigger()");
    QCOMPARE(noted(), QStringLiteral("ran"));
    engine.evaluate("Global.noted = 'before'");
    KyScriptTool::clearTools();
    viewer.reset();
    mPlatform.reset();
    QCOMPARE(
        engine
            .evaluate("keptTool.trigger(); keptTrigger(); keptTool.toggle(); keptTool.setEnabled(true);"
                      "keptTool.trigger(); Orvane.setToolText('a', 'b', 'c'); Orvane.setToolIcon('a', 'b');"
                      "[keptTool.enabled, keptViewer.type(), Orvane.tool('a'), Orvane.activeViewer(),"
                      " Orvane.isOutOfSync(), Orvane.eval('', '')].join()")
            .toString(),
        QStringLiteral("true,,,,false,"));
    QCOMPARE(noted(), QStringLiteral("before"));
}

void tst_KyScriptTool::unreadableFileIsToldOf_data()
{
    QTest::addColumn<QString>("name");
    QTest::newRow("missing") << "/no/such/file.xml";
    QTest::newRow("per cent sign") << "/no/%s%n.xml";
    QTest::newRow("folder") << "/usr";
    QTest::newRow("empty name") << "";
    if (QFile::exists("/dev/zero"))
        QTest::newRow("endless") << "/dev/zero";
}

void tst_KyScriptTool::unreadableFileIsToldOf()
{
    QFETCH(QString, name);
    LogCapture log;
    KyScriptTool::loadTools(QFile::encodeName(name), "");
    QCOMPARE(log.take(), QStringList("2||Tool Configuration " + name + " - READ ERROR:\n"));
    QCOMPARE(keys(), QStringList());
}

void tst_KyScriptTool::malformedFileIsToldOf_data()
{
    QTest::addColumn<QByteArray>("xml");
    QTest::addColumn<QString>("report");
    const auto row = [](const char* inName, const QByteArray& inXml, const char* inReport) {
        QTest::newRow(inName) << inXml << inReport;
    };
    const QByteArray tool = "<x>\n<Tool Id='a'><OnSet>1</OnSet></Tool>\n";
    row("empty", "", "Line(1),Column(0): Premature end of document.");
    row("no XML", "hello", "Line(1),Column(1): Start tag expected.");
    row("binary",
        QByteArray("\x7f"
                   "ELF\0\1",
                   6),
        "Line(1),Column(1): Start tag expected.");
    row("tag mismatch", tool + "  </y>", "Line(3),Column(6): Opening and ending tag mismatch.");
    row("never closed", tool, "Line(3),Column(0): Premature end of document.");
    row("second root", tool + "</x><y/>", "Line(3),Column(8): Extra content at end of document.");
    row("attribute twice", tool + "<Tool Id='a' Id='b'/></x>",
        "Line(3),Column(21): Attribute 'Id' redefined.");
    row("unknown entity", tool + "&nope;</x>", "Line(3),Column(6): Entity 'nope' not declared.");
    row("unknown encoding", "<?xml version='1.0' encoding='klingon'?><x/>",
        "Line(1),Column(40): Encoding klingon is unsupported");
    row("other encoding than it says", "<x>\xe4</x>",
        "Line(1),Column(2): Encountered incorrectly encoded content.");
    row("entity that refers to itself", "<!DOCTYPE x [<!ENTITY a '&a;'>]>\n<x>&a;</x>",
        "Line(2),Column(6): Self-referencing entity detected.");
}

void tst_KyScriptTool::malformedFileIsToldOf()
{
    QFETCH(QByteArray, xml);
    QFETCH(QString, report);
    QCOMPARE(load(xml),
             QStringList({"2||Tool Configuration " + mFolder->filePath("t.xml") + " - PARSE ERROR:\n",
                          "2||" + report + "\n"}));
    QCOMPARE(keys(), QStringList());
}

void tst_KyScriptTool::fileBuiltToExhaustIsRefused_data()
{
    QTest::addColumn<QByteArray>("xml");
    QTest::addColumn<QString>("report");
    QByteArray doubled = "<!DOCTYPE x [<!ENTITY a0 'ha'>";
    for (int i = 1; i < 40; ++i) {
        const QByteArray before = "&a" + QByteArray::number(i - 1) + ";";
        doubled += "<!ENTITY a" + QByteArray::number(i) + " '" + before + before + "'>";
    }
    doubled += "]>\n";
    const QString limit = "Entity expands to more characters than the entity expansion limit.";
    QTest::newRow("in a script") << doubled + "<x><Tool Id='a'><OnSet>&a39;</OnSet></Tool></x>" << limit;
    QTest::newRow("in an attribute") << doubled + "<x><Tool Id='&a39;'><OnSet>1</OnSet></Tool></x>" << limit;
    const QByteArray large =
        "<!DOCTYPE x [<!ENTITY a '" + QByteArray("h").repeated(4000) + "'>]>\n<x><Tool Id='a'><OnSet>";
    QTest::newRow("many references") << large + QByteArray("&a;").repeated(1000000) + "</OnSet></Tool></x>"
                                     << "Too many references to entities.";
    QTest::newRow("deep") << QByteArray("<a>").repeated(200000) + QByteArray("</a>").repeated(200000)
                          << "Elements are nested too deeply.";
    QTest::newRow("deep and never closed")
        << QByteArray("<a>\n").repeated(200000) << "Elements are nested too deeply.";
}

void tst_KyScriptTool::fileBuiltToExhaustIsRefused()
{
    QFETCH(QByteArray, xml);
    QFETCH(QString, report);
    const QStringList lines = load(xml);
    QCOMPARE(lines.size(), 2);
    QCOMPARE(lines[0], "2||Tool Configuration " + mFolder->filePath("t.xml") + " - PARSE ERROR:\n");
    QVERIFY2(lines[1].startsWith("2||Line(") && lines[1].endsWith("): " + report + "\n"),
             qPrintable(lines[1]));
    QCOMPARE(keys(), QStringList());
}

void tst_KyScriptTool::externalEntityIsNotRead()
{
    const QString secret = write("Global.noted = 'secret'", "secret.js");
    load("<!DOCTYPE x [<!ENTITY e SYSTEM 'file://" + QFile::encodeName(secret) +
         "'>]>\n<x ScriptEngine='tools'><Tool Id='a'><OnSet>Global.noted = 'own'; &e;</OnSet></Tool></x>");
    toolOf("a")->process(nullptr, true);
    QCOMPARE(noted(), QStringLiteral("own"));
}

void tst_KyScriptTool::encodingIsThatOfTheFile_data()
{
    QTest::addColumn<QByteArray>("xml");
    QTest::addColumn<QString>("label");
    const QString text = QString::fromUtf8("ä€");
    const QString body =
        "<x ScriptEngine='tools'><Tool Id='a' Label='%1'><OnSet>Global.noted = '%1'</OnSet></Tool></x>";
    const auto swapped = [](QByteArray inBytes) {
        for (qsizetype i = 0; i + 1 < inBytes.size(); i += 2)
            std::swap(inBytes[i], inBytes[i + 1]);
        return inBytes;
    };
    const auto utf16 = [](const QString& inText) {
        return QByteArray("\xff\xfe", 2) +
               QByteArray(reinterpret_cast<const char*>(inText.utf16()), inText.size() * 2);
    };
    const auto declared = [&](const char* inEncoding) {
        return QStringLiteral("<?xml version='1.0' encoding='%1'?>\n").arg(inEncoding);
    };
    QTest::newRow("UTF-8") << body.arg(text).toUtf8() << text;
    QTest::newRow("UTF-8 with a mark") << "\xef\xbb\xbf" + body.arg(text).toUtf8() << text;
    QTest::newRow("UTF-8, declared") << (declared("UTF-8") + body.arg(text)).toUtf8() << text;
    QTest::newRow("UTF-16, little endian") << utf16(declared("UTF-16") + body.arg(text)) << text;
    QTest::newRow("UTF-16, big endian") << swapped(utf16(declared("UTF-16") + body.arg(text))) << text;
    QTest::newRow("Latin-1, declared")
        << (declared("ISO-8859-1") + body.arg(QString::fromUtf8("äß"))).toLatin1() << QString::fromUtf8("äß");
}

void tst_KyScriptTool::encodingIsThatOfTheFile()
{
    QFETCH(QByteArray, xml);
    QFETCH(QString, label);
    QCOMPARE(load(xml), QStringList());
    QCOMPARE(decorations().label("a", false), label);
    toolOf("a")->process(nullptr, true);
    QCOMPARE(noted(), label);
}

void tst_KyScriptTool::fileNameMayBeBeyondLatin1()
{
    const QString name = QString::fromUtf8("ü€.xml");
    QCOMPARE(load("<x><Tool Id='a'><OnSet>1</OnSet></Tool></x>", name), QStringList());
    QCOMPARE(keys(), QStringList("a"));
    QCOMPARE(load("<x>", name).value(0),
             "2||Tool Configuration " + mFolder->filePath(name) + " - PARSE ERROR:\n");
}

void tst_KyScriptTool::tenThousandToolsAreLoaded()
{
    QByteArray xml = "<x ScriptEngine='tools'>\n";
    for (int i = 0; i < 10000; ++i)
        xml += "<Tool Id='t" + QByteArray::number(i) +
               "' Label='L'><OnSet><![CDATA[Global.noted = " + QByteArray::number(i) +
               ";]]></OnSet></Tool>\n";
    QElapsedTimer watch;
    watch.start();
    QCOMPARE(load(xml + "</x>"), QStringList());
    QCOMPARE(keys().size(), 10000);
    toolOf("t9999")->process(nullptr, true);
    QCOMPARE(noted(), QStringLiteral("9999"));
    KyScriptTool::clearTools();
    QVERIFY2(watch.elapsed() < 30000, qPrintable(QString::number(watch.elapsed())));
}

KY_TEST_MAIN(tst_KyScriptTool)
#include "tst_KyScriptTool.moc"
