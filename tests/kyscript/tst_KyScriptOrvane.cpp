#include <support/ContractWatch.h>
#include <support/KyTest.h>
#include <support/KyTestPlatform.h>
#include <support/LogCapture.h>
#include <support/ModalAnswer.h>

#include <kyscript/KyScriptAbstractEngine.h>
#include <kyscript/KyScriptEngine.h>
#include <kyscript/KyScriptInterface.h>
#include <kyscript/KyScriptOrvane.h>
#include <kyscript/KyScriptProgram.h>

#include <jxbase/JxMessageBox.h>
#include <kybase/KyActionUI.h>
#include <kybase/KyApplication.h>
#include <kybase/KyBaseViewer.h>
#include <kybase/KyContextToolBar.h>
#include <kybase/KyEditor.h>
#include <kybase/KyObsoleteTrigger.h>
#include <kybase/KyToolRegistry.h>
#include <kyscript/KyScriptViewer.h>
#include <ovvolren/OvServerPeer.h>

#include <QAction>
#include <QDir>
#include <QImage>
#include <QPushButton>
#include <QSignalSpy>
#include <QTemporaryDir>

namespace {

/// A viewer with a widget that counts its paintings, and a tool bar.
class ScreenViewer : public KyBaseViewer
{
public:
    explicit ScreenViewer(const char* inId, Ky::ViewerType inType = Ky::ViewerTypeSlice)
        : KyBaseViewer(inType)
        , mId(inId)
    {}

    const std::string& protocolDisplaySetId() const override { return mId; }
    QWidget* widget() const override { return screen.get(); }
    KyContextToolBar* contextToolBar() const override { return bar.get(); }

    std::unique_ptr<QWidget> screen;
    std::unique_ptr<KyContextToolBar> bar = std::make_unique<KyContextToolBar>();

private:
    const std::string mId;
};

using Viewer = RnHandle<ScreenViewer>;

class CountingWidget : public QWidget
{
public:
    int updates = 0;

protected:
    bool event(QEvent* inEvent) override
    {
        updates += inEvent->type() == QEvent::UpdateRequest || inEvent->type() == QEvent::Paint ? 1 : 0;
        return QWidget::event(inEvent);
    }
};

/// A manager with places that hold no viewer.
class SparseManager : public KyViewerManager
{
public:
    int numViewers() const override { return int(places.size()); }
    KyBaseViewer* viewer(int inIndex) const override { return places.at(std::size_t(inIndex)); }
    void setActiveViewer(KyBaseViewer* inViewer) override { activated.push_back(inViewer); }

    std::vector<KyBaseViewer*> places;
    std::vector<KyBaseViewer*> activated;
};

/// A UI without an action.
class BareUI : public KyToolUI
{
public:
    using KyToolUI::KyToolUI;
    QAction* action() override { return nullptr; }
};

class TestTool : public KyObsoleteTrigger
{
public:
    using KyObsoleteTrigger::KyObsoleteTrigger;
    bool supportsViewer(const KyBaseViewer*) const override { return true; }
    bool process(KyBaseViewer*, bool inFlag) override
    {
        flags.append(inFlag);
        return true;
    }
    /// With entries that are null.
    std::vector<KyToolUI*> getUIs() const override
    {
        std::vector<KyToolUI*> all{nullptr};
        for (KyToolUI* ui : KyObsoleteTrigger::getUIs())
            all.insert(all.end(), {ui, nullptr});
        return all;
    }
    std::set<std::string> hotKeyScope() const override { return scope; }
    QList<bool> flags;
    std::set<std::string> scope{HotKeyInWindow};
};

/// Keeps what it is told, and answers with what it is to answer.
class Decorations : public KyToolDecorations
{
public:
    QIcon icon(const char* inKey) override
    {
        calls.append(QStringLiteral("icon(%1)").arg(inKey));
        return KyToolDecorations::icon(inKey);
    }
    QString label(const char* inKey, bool inActive) override
    {
        calls.append(QStringLiteral("label(%1,%2)").arg(inKey).arg(inActive));
        return QStringLiteral("store's label");
    }
    QString toolTip(const char* inKey) override
    {
        calls.append(QStringLiteral("toolTip(%1)").arg(inKey));
        return QStringLiteral("store's tip");
    }
    void setIcon(const QString& inKey, const QString& inIconPath) override
    {
        calls.append(QStringLiteral("setIcon(%1,%2)").arg(inKey, inIconPath));
        KyToolDecorations::setIcon(inKey, inIconPath);
    }
    void setTexts(const QString& inKey, const QString& inToolTip, const QString& inMenuText,
                  const QString& inActiveText) override
    {
        calls.append(QStringLiteral("setTexts(%1,%2,%3,%4)")
                         .arg(inKey, inToolTip, inMenuText,
                              inActiveText.isNull() ? QStringLiteral("null") : inActiveText));
    }
    QStringList calls;
};

class EditorScript : public QObject
{
    Q_OBJECT
public:
    using QObject::QObject;
    Q_INVOKABLE QString name() const { return QStringLiteral("the editor"); }
};

class TestEditor : public KyEditor
{
public:
    using KyEditor::KyEditor;
    QObject* scriptObject(QObject* inParent) override
    {
        parents.append(inParent);
        return offers ? new EditorScript(inParent) : nullptr;
    }
    void open() override { ++opened; }
    QObjectList parents;
    bool offers = true;
    int opened = 0;
};

} // namespace

class tst_KyScriptOrvane : public QObject
{
    Q_OBJECT

private slots:
    void init();
    void cleanup();

    // the global
    void globalComesWithItsOption();
    void globalCannotBeDestroyed();
    void classIsNotConstructible();

    // tools
    void unknownToolIsNull_data();
    void unknownToolIsNull();
    void toolIsAnActionOfTheEnginesOwn();
    void actionHasTheHotKeyWhereTheToolSays_data();
    void actionHasTheHotKeyWhereTheToolSays();
    void eachCallMakesAnotherAction();
    void actionOfAToolOutlivesItsTool();
    void actionCannotBeDestroyed();
    void toolsKeyIsLatin1();
    void scriptTurnsAnActivatableTool();

    // setToolIcon
    void iconIsStored_data();
    void iconIsStored();
    void iconReachesTheActionsOfTheTool();
    void iconWithoutAStoreDoesNothing();
    void iconIsSetInOrder();

    // setToolText
    void textsAreStoredWithoutATool();
    void textsReachTheActionsAsTheStoreAnswers();
    void textsWithoutAStoreDoNothing();
    void textsOfTheReferenceStoreAreShown();

    // editor
    void unknownEditorIsNull();
    void editorGivesItsScriptObject();
    void editorThatOffersNothingIsNull();
    void scriptOwnsTheEditorsObject();

    // viewers
    void withoutAManagerThereIsNoViewer();
    void activeViewerIsNullWithoutOne();
    void viewerIsFoundByItsId_data();
    void viewerIsFoundByItsId();
    void emptyIdFindsTheFirstViewerWithoutOne();
    void firstOfEqualIdsIsFound();
    void placesWithoutAViewerAreSkipped();
    void sameViewerGivesTheSameObject();
    void wrapperOutlivesItsViewer();
    void wrapperCannotBeDestroyed();
    void wrappersBelongToOrvaneAndItsParent();
    void viewerIsActivatedAndRepainted();
    void activeViewerIsRepaintedToo();
    void activationIsNotCompared();
    void unknownViewerIsNotActivated();
    void viewerMayCloseWhenItIsActivated();

    // display hint
    void hintGoesToTheActiveViewer();
    void hintWithoutAViewerDoesNothing();
    void hintWithoutAToolBarDoesNothing();

    // session and server
    void sessionIdIsThatOfTheSession();
    void withoutASessionThingsAreNeutral();
    void commandsGoToTheServer();
    void withoutAServerCommandsDoNothing();
    void answerOfTheServerIsLatin1();
    void sessionIsComparedWithExtAcc();
    void outOfSyncWarningIsShown();
    void loadHelperIsMadeOnDemand();

    // what scripts pass
    void operationsTakeAnything_data();
    void operationsTakeAnything();

    // extAcc
    void extAccIsEmptyAtFirst();
    void extAccIsReadAndWritten_data();
    void extAccIsReadAndWritten();
    void extAccIsACopy();
    void extAccIsRefusedWhenItIsNoList_data();
    void extAccIsRefusedWhenItIsNoList();
    void extAccIsAPropertyForHosts();
    void equalExtAccSignalsNothing();
    void differentExtAccSignals_data();
    void differentExtAccSignals();
    void extAccIsSharedAndOnlyTheWriterSignals();
    void extAccOutlivesItsObjects();
    void engineOffersExtAcc();
    void enginesReportToThemselvesWithoutNamedOnes();
    void enginesReportToTheDefaultOne();
    void firstNamedEngineReportsToItself();
    void facadeTellsOfExtAcc();
    void handlerMayEndTheEngineThatOwnsTheList();

private:
    QString text(const QString& inCode, KyScriptEngine* inEngine = nullptr);

    std::unique_ptr<KyTestPlatform> mPlatform;
    std::unique_ptr<ContractWatch> mContracts;
    std::unique_ptr<LogCapture> mLog;
    std::unique_ptr<KyScriptEngine> mEngine;
};

void tst_KyScriptOrvane::init()
{
    mPlatform = std::make_unique<KyTestPlatform>();
    mContracts = std::make_unique<ContractWatch>();
    mLog = std::make_unique<LogCapture>(2);
    mEngine = std::make_unique<KyScriptEngine>(nullptr, ScriptOrvane);
    mEngine->setExtAcc({});
}

/// No operation reports anything, whatever is missing.
void tst_KyScriptOrvane::cleanup()
{
    const QStringList lines = mLog->take();
    const QString broken = mContracts->verify();
    mEngine.reset();
    mLog.reset();
    mContracts.reset();
    mPlatform.reset();
    QCOMPARE(lines, QStringList());
    QVERIFY2(broken.isEmpty(), qPrintable(broken));
}

QString tst_KyScriptOrvane::text(const QString& inCode, KyScriptEngine* inEngine)
{
    KyScriptEngine& engine = inEngine ? *inEngine : *mEngine;
    return engine.runScript(KyScriptProgram(inCode, ""), false).toString();
}

void tst_KyScriptOrvane::globalComesWithItsOption()
{
    KyScriptEngine without(nullptr, ScriptAllOptions & ~ScriptOrvane);
    QCOMPARE(text("typeof Orvane", &without), QStringLiteral("undefined"));
    QCOMPARE(text("typeof Orvane"), QStringLiteral("object"));
    auto* orvane = qobject_cast<KyScriptOrvane*>(mEngine->globalObject().property("Orvane").toQObject());
    QVERIFY(orvane);
    QCOMPARE(orvane->parent(), mEngine.get());
}

void tst_KyScriptOrvane::globalCannotBeDestroyed()
{
    QCOMPARE(text("try { Orvane.destroy(); 'gone' } catch (e) { 'refused' }"), QStringLiteral("refused"));
    QCOMPARE(text("collectGarbage(); typeof Orvane.extAcc.length"), QStringLiteral("number"));
}

void tst_KyScriptOrvane::classIsNotConstructible()
{
    QCOMPARE(KyScriptOrvane::staticMetaObject.constructorCount(), 0);
    QCOMPARE(text("typeof KyScriptOrvane"), QStringLiteral("undefined"));
}

void tst_KyScriptOrvane::unknownToolIsNull_data()
{
    QTest::addColumn<QString>("key");
    for (const char* key : {"'none'", "''", "null", "undefined", "5", "'KEY'"})
        QTest::newRow(key) << key;
}

void tst_KyScriptOrvane::unknownToolIsNull()
{
    QFETCH(QString, key);
    const auto tool = std::make_shared<TestTool>("key");
    QCOMPARE(text("String(Orvane.tool(" + key + "))"), QStringLiteral("null"));
}

void tst_KyScriptOrvane::toolIsAnActionOfTheEnginesOwn()
{
    mPlatform->application.toolDecorations()->registerDecoration("key", "", "", "", "tip", "label", "");
    const auto tool = std::make_shared<TestTool>("key");
    QCOMPARE(text("var t = Orvane.tool('key'); [t.text, t.toolTip, t.enabled, t.checkable].join()"),
             QStringLiteral("label,tip,true,false"));
    auto* action = qobject_cast<QAction*>(mEngine->globalObject().property("t").toQObject());
    QVERIFY(action);
    QCOMPARE(action->parent(), mEngine.get());
    text("t.trigger(); t.trigger()");
    QCOMPARE(tool->flags, QList<bool>({true, true}));
}

void tst_KyScriptOrvane::actionHasTheHotKeyWhereTheToolSays_data()
{
    QTest::addColumn<QString>("scope");
    QTest::addColumn<QString>("keys");
    QTest::addColumn<int>("context");
    QTest::newRow("window") << KyTool::HotKeyInWindow << "Ctrl+K" << int(Qt::WindowShortcut);
    QTest::newRow("application") << KyTool::HotKeyInApplication << "Ctrl+K" << int(Qt::ApplicationShortcut);
    QTest::newRow("nowhere") << ""
                             << "" << int(Qt::WindowShortcut);
}

void tst_KyScriptOrvane::actionHasTheHotKeyWhereTheToolSays()
{
    QFETCH(QString, scope);
    QFETCH(QString, keys);
    QFETCH(int, context);
    const auto tool = std::make_shared<TestTool>("key");
    tool->setHotKey("Ctrl+K");
    tool->scope.clear();
    if (!scope.isEmpty())
        tool->scope.insert(scope.toStdString());
    text("var t = Orvane.tool('key')");
    const auto* action = qobject_cast<QAction*>(mEngine->globalObject().property("t").toQObject());
    QCOMPARE(action->shortcut().toString(QKeySequence::PortableText), keys);
    QCOMPARE(int(action->shortcutContext()), context);
}

void tst_KyScriptOrvane::eachCallMakesAnotherAction()
{
    const auto tool = std::make_shared<TestTool>("key");
    QCOMPARE(text("Orvane.tool('key') === Orvane.tool('key')"), QStringLiteral("false"));
    QCOMPARE(tool->KyTool::getUIs().size(), std::size_t(2));
    text("collectGarbage()");
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    QCOMPARE(tool->KyTool::getUIs().size(), std::size_t(2));
    mEngine.reset();
    QCOMPARE(tool->KyTool::getUIs().size(), std::size_t(0));
}

void tst_KyScriptOrvane::actionOfAToolOutlivesItsTool()
{
    auto tool = std::make_shared<TestTool>("key");
    text("var t = Orvane.tool('key'); var trigger = t.trigger;");
    tool.reset();
    QCOMPARE(text("t.trigger(); trigger(); t.toggle(); t.setEnabled(true); t.trigger(); t.checked = true;"
                  "t.enabled + ':' + Orvane.tool('key')"),
             QStringLiteral("true:null"));
}

void tst_KyScriptOrvane::actionCannotBeDestroyed()
{
    const auto tool = std::make_shared<TestTool>("key");
    QCOMPARE(text("var t = Orvane.tool('key'); try { t.destroy(); 'gone' } catch (e) { 'refused' }"),
             QStringLiteral("refused"));
    text("t.trigger()");
    QCOMPARE(tool->flags.size(), 1);
}

void tst_KyScriptOrvane::toolsKeyIsLatin1()
{
    const auto tool = std::make_shared<TestTool>("Gr\xf6\xdf"
                                                 "e?");
    QCOMPARE(text(QString::fromUtf8("typeof Orvane.tool('Größe€').trigger")), QStringLiteral("function"));
}

void tst_KyScriptOrvane::scriptTurnsAnActivatableTool()
{
    const auto tool = std::make_shared<TestTool>("key");
    tool->setActivatable(true);
    QCOMPARE(text("var t = Orvane.tool('key'); t.checked = true; t.trigger(); t.toggle();"
                  "t.checked + ':' + Orvane.tool('key').checked"),
             QStringLiteral("true:true"));
    QCOMPARE(tool->flags, QList<bool>({true, false, true}));
}

void tst_KyScriptOrvane::iconIsStored_data()
{
    QTest::addColumn<QString>("icon");
    QTest::addColumn<QString>("stored");
    QTest::newRow("file") << "FOLDER/icon.png"
                          << "FOLDER/icon.png";
    QTest::newRow("relative file") << "icon.png"
                                   << "icon.png";
    QTest::newRow("icon of the application") << "report.svg"
                                             << "report.svg";
    QTest::newRow("with its folder") << ":icons/report.svg"
                                     << ":icons/report.svg";
    QTest::newRow("neither") << "none.png"
                             << "OrvaneLogo";
    QTest::newRow("missing file") << "/none/icon.png"
                                  << "OrvaneLogo";
    QTest::newRow("the mark itself") << "OrvaneLogo"
                                     << "OrvaneLogo";
    QTest::newRow("empty") << ""
                           << "";
    QTest::newRow("other case") << "Report.svg"
                                << "OrvaneLogo";
}

void tst_KyScriptOrvane::iconIsStored()
{
    QFETCH(QString, icon);
    QFETCH(QString, stored);
    QTemporaryDir folder;
    QVERIFY(QImage(8, 8, QImage::Format_RGB32).save(folder.filePath("icon.png")));
    const QString before = QDir::currentPath();
    QDir::setCurrent(folder.path());
    auto* store = mPlatform->application.toolDecorations();
    for (const bool hasTool : {false, true}) {
        const auto tool = hasTool ? std::make_shared<TestTool>("key") : nullptr;
        store->setIcon("key", "before");
        text(QStringLiteral("Orvane.setToolIcon('key', '%1')").arg(icon).replace("FOLDER", folder.path()));
        QCOMPARE(store->iconPath("key"), QString(stored).replace("FOLDER", folder.path()));
        QCOMPARE(store->icon("key").isNull(), stored.isEmpty());
    }
    QDir::setCurrent(before);
}

void tst_KyScriptOrvane::iconReachesTheActionsOfTheTool()
{
    const auto tool = std::make_shared<TestTool>("key");
    const BareUI bare(tool);
    const std::unique_ptr<QAction> first(KyActionUI::createAction(tool, {}, nullptr));
    text("var t = Orvane.tool('key'); Orvane.setToolIcon('key', 'report.svg')");
    QVERIFY(!first->icon().isNull());
    const auto* second = qobject_cast<QAction*>(mEngine->globalObject().property("t").toQObject());
    QVERIFY(!second->icon().isNull());
    text("Orvane.setToolIcon('key', '')");
    QVERIFY(first->icon().isNull() && second->icon().isNull());
}

void tst_KyScriptOrvane::iconWithoutAStoreDoesNothing()
{
    const auto tool = std::make_shared<TestTool>("key");
    const std::unique_ptr<QAction> action(KyActionUI::createAction(tool, {}, nullptr));
    const KyApplication bare(nullptr);
    QCOMPARE(text("String(Orvane.setToolIcon('key', 'report.svg'))"), QStringLiteral("undefined"));
    QVERIFY(action->icon().isNull());
    QCOMPARE(mPlatform->application.toolDecorations()->iconPath("key"), QString());
}

void tst_KyScriptOrvane::iconIsSetInOrder()
{
    auto owned = std::make_unique<Decorations>();
    Decorations& store = *owned;
    const KyApplication application(std::move(owned));
    text("Orvane.setToolIcon('key', 'none')");
    QCOMPARE(std::exchange(store.calls, {}), QStringList("setIcon(key,OrvaneLogo)"));
    const auto tool = std::make_shared<TestTool>("key");
    text("Orvane.setToolIcon('key', 'report.svg')");
    QCOMPARE(store.calls, QStringList({"setIcon(key,report.svg)", "icon(key)"}));
}

void tst_KyScriptOrvane::textsAreStoredWithoutATool()
{
    auto owned = std::make_unique<Decorations>();
    Decorations& store = *owned;
    const KyApplication application(std::move(owned));
    text("Orvane.setToolText('key', 'tip', 'label')");
    QCOMPARE(store.calls, QStringList("setTexts(key,tip,label,null)"));
}

void tst_KyScriptOrvane::textsReachTheActionsAsTheStoreAnswers()
{
    auto owned = std::make_unique<Decorations>();
    Decorations& store = *owned;
    const KyApplication application(std::move(owned));
    const auto tool = std::make_shared<TestTool>("key");
    tool->setActivatable(true);
    const BareUI bare(tool);
    const std::unique_ptr<QAction> action(KyActionUI::createAction(tool, {}, nullptr));
    for (const bool isActive : {false, true}) {
        tool->setActive(isActive);
        action->setText("before");
        action->setIconText("before");
        action->setToolTip("before");
        store.calls.clear();
        text("Orvane.setToolText('key', 'tip', 'label')");
        QCOMPARE(store.calls, QStringList({"setTexts(key,tip,label,null)",
                                           QStringLiteral("label(key,%1)").arg(isActive), "toolTip(key)"}));
        QCOMPARE(action->text(), QStringLiteral("store's label"));
        QCOMPARE(action->iconText(), QStringLiteral("store's label"));
        QCOMPARE(action->toolTip(), QStringLiteral("store's tip"));
    }
}

void tst_KyScriptOrvane::textsWithoutAStoreDoNothing()
{
    const auto tool = std::make_shared<TestTool>("key");
    const std::unique_ptr<QAction> action(KyActionUI::createAction(tool, {}, nullptr));
    const QString before = action->text();
    const KyApplication bare(nullptr);
    QCOMPARE(text("String(Orvane.setToolText('key', 'tip', 'label'))"), QStringLiteral("undefined"));
    QCOMPARE(action->text(), before);
}

void tst_KyScriptOrvane::textsOfTheReferenceStoreAreShown()
{
    mPlatform->application.toolDecorations()->registerDecoration("key", "", "", "", "", "Start", "Stop");
    const auto tool = std::make_shared<TestTool>("key");
    tool->setActivatable(true);
    tool->setActive(true);
    QCOMPARE(text(QString::fromUtf8("var t = Orvane.tool('key'); var before = t.text;"
                                    "Orvane.setToolText('key', 'tip ü€', 'label ü€');"
                                    "[before, t.text, t.iconText, t.toolTip].join()")),
             QString::fromUtf8("Stop,label ü€,label ü€,tip ü€"));
}

void tst_KyScriptOrvane::unknownEditorIsNull()
{
    TestEditor editor("key");
    QCOMPARE(text("[Orvane.editor('none'), Orvane.editor(''), Orvane.editor(null), Orvane.editor('KEY')]"
                  ".map(String).join()"),
             QStringLiteral("null,null,null,null"));
    QCOMPARE(editor.parents, QObjectList());
}

void tst_KyScriptOrvane::editorGivesItsScriptObject()
{
    TestEditor editor("Gr\xf6\xdf"
                      "e");
    QCOMPARE(text(QString::fromUtf8("Orvane.editor('Größe').name()")), QStringLiteral("the editor"));
    QCOMPARE(editor.parents, QObjectList({nullptr}));
    QCOMPARE(editor.opened, 0);
}

void tst_KyScriptOrvane::editorThatOffersNothingIsNull()
{
    TestEditor editor("key");
    editor.offers = false;
    QCOMPARE(text("String(Orvane.editor('key'))"), QStringLiteral("null"));
}

void tst_KyScriptOrvane::scriptOwnsTheEditorsObject()
{
    TestEditor editor("key");
    text("var e = Orvane.editor('key')");
    const QPointer<QObject> object = mEngine->globalObject().property("e").toQObject();
    text("collectGarbage()");
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    QVERIFY(object);
    text("e = null; collectGarbage()");
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    QVERIFY(!object);
    QCOMPARE(text("e = Orvane.editor('key'); e.destroy(); typeof e"), QStringLiteral("object"));
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    QCOMPARE(text("typeof e.name"), QStringLiteral("undefined"));
}

void tst_KyScriptOrvane::withoutAManagerThereIsNoViewer()
{
    QVERIFY(KyViewerManager::getInstance());
    {
        const KyViewerManager newer;
    }
    QVERIFY(!KyViewerManager::getInstance());
    QCOMPARE(text("Orvane.setDisplayHint('x');"
                  "[Orvane.activeViewer(), Orvane.viewer('1'), Orvane.viewer(''), Orvane.activateViewer('1')]"
                  ".map(String).join()"),
             QStringLiteral("null,null,null,false"));
}

void tst_KyScriptOrvane::activeViewerIsNullWithoutOne()
{
    const Viewer viewer(new ScreenViewer("1"));
    QCOMPARE(text("String(Orvane.activeViewer())"), QStringLiteral("null"));
    mPlatform->viewers.setActiveViewer(viewer.get());
    QCOMPARE(text("Orvane.activeViewer().displaySetId()"), QStringLiteral("1"));
    mPlatform->viewers.setActiveViewer(nullptr);
    QCOMPARE(text("String(Orvane.activeViewer())"), QStringLiteral("null"));
}

void tst_KyScriptOrvane::viewerIsFoundByItsId_data()
{
    QTest::addColumn<QString>("id");
    QTest::addColumn<QString>("type");
    QTest::newRow("first") << "'a'"
                           << "slice";
    QTest::newRow("second") << "'b'"
                            << "volren";
    QTest::newRow("Latin-1") << QString::fromUtf8("'ä'") << "curved";
    QTest::newRow("other case") << "'A'"
                                << "none";
    QTest::newRow("longer") << "'ab'"
                            << "none";
    QTest::newRow("empty") << "''"
                           << "none";
    QTest::newRow("null") << "null"
                          << "none";
}

void tst_KyScriptOrvane::viewerIsFoundByItsId()
{
    QFETCH(QString, id);
    QFETCH(QString, type);
    const Viewer first(new ScreenViewer("a", Ky::ViewerTypeSlice)),
        second(new ScreenViewer("b", Ky::ViewerTypeVolRen)),
        third(new ScreenViewer("\xe4", Ky::ViewerTypeCurved));
    QCOMPARE(text("var v = Orvane.viewer(" + id + "); v ? v.type() : 'none'"), type);
    QCOMPARE(text("Orvane.activateViewer(" + id + ")"), type == "none" ? "false" : "true");
}

void tst_KyScriptOrvane::emptyIdFindsTheFirstViewerWithoutOne()
{
    const Viewer named(new ScreenViewer("a", Ky::ViewerTypeVolRen));
    QCOMPARE(text("String(Orvane.viewer(''))"), QStringLiteral("null"));
    const Viewer first(new ScreenViewer("", Ky::ViewerTypeCurved)), second(new ScreenViewer(""));
    QCOMPARE(text("Orvane.viewer('').type()"), QStringLiteral("curved"));
    QCOMPARE(text("Orvane.activateViewer('')"), QStringLiteral("true"));
    QCOMPARE(mPlatform->viewers.activeViewer(), first.get());
}

void tst_KyScriptOrvane::firstOfEqualIdsIsFound()
{
    const Viewer first(new ScreenViewer("a", Ky::ViewerTypeCurved)), second(new ScreenViewer("a"));
    QCOMPARE(text("Orvane.viewer('a').type()"), QStringLiteral("curved"));
}

void tst_KyScriptOrvane::placesWithoutAViewerAreSkipped()
{
    SparseManager manager;
    const Viewer viewer(new ScreenViewer("a"));
    manager.places = {nullptr, nullptr, viewer.get(), nullptr};
    QCOMPARE(text("Orvane.viewer('a').type() + Orvane.viewer('b') + Orvane.activateViewer('a')"),
             QStringLiteral("slicenulltrue"));
    QCOMPARE(manager.activated, std::vector<KyBaseViewer*>{viewer.get()});
}

void tst_KyScriptOrvane::sameViewerGivesTheSameObject()
{
    const Viewer a(new ScreenViewer("a")), b(new ScreenViewer("b"));
    mPlatform->viewers.setActiveViewer(a.get());
    QCOMPARE(text("var v = Orvane.activeViewer(); [v === Orvane.activeViewer(), v === Orvane.viewer('a'),"
                  " v === Orvane.viewer('b'), Orvane.viewer('b') === Orvane.viewer('b')].join()"),
             QStringLiteral("true,true,false,true"));
    KyScriptEngine other(nullptr, ScriptOrvane);
    QVERIFY(other.evaluate("Orvane.activeViewer()").toQObject() !=
            mEngine->evaluate("Orvane.activeViewer()").toQObject());
}

void tst_KyScriptOrvane::wrapperOutlivesItsViewer()
{
    Viewer viewer(new ScreenViewer("a"));
    text("var v = Orvane.viewer('a')");
    viewer.reset();
    QCOMPARE(text("v.type() + ':' + v.sliceNumber() + ':' + v.dims() + ':' + Orvane.viewer('a')"),
             QStringLiteral(":-1:undefined:null"));
    const Viewer next(new ScreenViewer("a"));
    QCOMPARE(text("(v === Orvane.viewer('a')) + ':' + Orvane.viewer('a').type()"),
             QStringLiteral("false:slice"));
}

void tst_KyScriptOrvane::wrapperCannotBeDestroyed()
{
    const Viewer viewer(new ScreenViewer("a"));
    QCOMPARE(text("var v = Orvane.viewer('a'); try { v.destroy(); 'gone' } catch (e) { 'refused' }"),
             QStringLiteral("refused"));
    text("v = null; collectGarbage()");
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    QCOMPARE(text("Orvane.viewer('a').type()"), QStringLiteral("slice"));
}

void tst_KyScriptOrvane::wrappersBelongToOrvaneAndItsParent()
{
    const Viewer viewer(new ScreenViewer("a"));
    QObject parent;
    auto orvane = std::make_unique<KyScriptOrvane>(&parent);
    const QPointer<QObject> wrapper = orvane->viewer("a");
    QVERIFY(qobject_cast<KyScriptViewer*>(wrapper));
    QCOMPARE(wrapper->parent(), &parent);
    orvane.reset();
    QVERIFY(!wrapper);
    // Whichever end comes first.
    auto* owner = new QObject;
    const QPointer<QObject> second = (new KyScriptOrvane(owner))->viewer("a");
    QVERIFY(second);
    delete owner;
    QVERIFY(!second);
}

void tst_KyScriptOrvane::viewerIsActivatedAndRepainted()
{
    const Viewer viewer(new ScreenViewer("a"));
    auto screen = std::make_unique<CountingWidget>();
    CountingWidget& counting = *screen;
    viewer->screen = std::move(screen);
    counting.show();
    QVERIFY(QTest::qWaitForWindowExposed(&counting));
    QTRY_VERIFY(counting.updates > 0);
    QTest::qWait(0);
    const int before = counting.updates;
    QCOMPARE(text("Orvane.activateViewer('a')"), QStringLiteral("true"));
    QCOMPARE(mPlatform->viewers.activeViewer(), viewer.get());
    QTRY_VERIFY(counting.updates > before);
}

void tst_KyScriptOrvane::activeViewerIsRepaintedToo()
{
    const Viewer viewer(new ScreenViewer("a"));
    auto screen = std::make_unique<CountingWidget>();
    CountingWidget& counting = *screen;
    viewer->screen = std::move(screen);
    mPlatform->viewers.setActiveViewer(viewer.get());
    counting.show();
    QVERIFY(QTest::qWaitForWindowExposed(&counting));
    QTRY_VERIFY(counting.updates > 0);
    QTest::qWait(0);
    const int before = counting.updates;
    QCOMPARE(text("Orvane.activateViewer('a')"), QStringLiteral("true"));
    QTRY_VERIFY(counting.updates > before);
}

void tst_KyScriptOrvane::activationIsNotCompared()
{
    SparseManager manager;
    const Viewer viewer(new ScreenViewer("a"));
    manager.places = {viewer.get()};
    text("Orvane.activateViewer('a'); Orvane.activateViewer('a')");
    QCOMPARE(manager.activated.size(), std::size_t(2));
}

void tst_KyScriptOrvane::unknownViewerIsNotActivated()
{
    const Viewer a(new ScreenViewer("a"));
    mPlatform->viewers.setActiveViewer(a.get());
    QCOMPARE(text("Orvane.activateViewer('b')"), QStringLiteral("false"));
    QCOMPARE(mPlatform->viewers.activeViewer(), a.get());
}

void tst_KyScriptOrvane::viewerMayCloseWhenItIsActivated()
{
    Viewer viewer(new ScreenViewer("a"));
    viewer->screen = std::make_unique<QWidget>();
    connect(&mPlatform->viewers, &KyViewerManager::activeViewerChanged, this, [&] { viewer.reset(); });
    QCOMPARE(text("Orvane.activateViewer('a')"), QStringLiteral("true"));
    QCOMPARE(text("String(Orvane.viewer('a'))"), QStringLiteral("null"));
}

void tst_KyScriptOrvane::hintGoesToTheActiveViewer()
{
    const Viewer a(new ScreenViewer("a")), b(new ScreenViewer("b"));
    mPlatform->viewers.setActiveViewer(b.get());
    QCOMPARE(text(QString::fromUtf8("String(Orvane.setDisplayHint('Measure ü€'))")),
             QStringLiteral("undefined"));
    QCOMPARE(b->bar->displayHint(), QString::fromUtf8("Measure ü€"));
    QCOMPARE(a->bar->displayHint(), QString());
    text("Orvane.setDisplayHint('')");
    QCOMPARE(b->bar->displayHint(), QString());
}

void tst_KyScriptOrvane::hintWithoutAViewerDoesNothing()
{
    const Viewer a(new ScreenViewer("a"));
    QCOMPARE(text("Orvane.setDisplayHint('x'); 'done'"), QStringLiteral("done"));
    QCOMPARE(a->bar->displayHint(), QString());
}

void tst_KyScriptOrvane::hintWithoutAToolBarDoesNothing()
{
    const Viewer a(new ScreenViewer("a"));
    a->bar.reset();
    mPlatform->viewers.setActiveViewer(a.get());
    QCOMPARE(text("Orvane.setDisplayHint('x'); 'done'"), QStringLiteral("done"));
}

void tst_KyScriptOrvane::sessionIdIsThatOfTheSession()
{
    const int id = KySessionContext::currentInstanceID().value;
    QVERIFY(id != 0);
    QCOMPARE(text("typeof Orvane.getSessionContextID() + Orvane.getSessionContextID()"),
             QStringLiteral("number%1").arg(id));
    KySessionContext next;
    QCOMPARE(text("Orvane.getSessionContextID()"),
             QString::number(KySessionContext::currentInstanceID().value));
    QVERIFY(KySessionContext::currentInstanceID().value != id);
}

void tst_KyScriptOrvane::withoutASessionThingsAreNeutral()
{
    {
        const KySessionContext newer;
    }
    QCOMPARE(
        text("Orvane.extAcc = ['A1'];"
             "[Orvane.getSessionContextID(), Orvane.isOutOfSync(), Orvane.showOutOfSyncWarning()].join()"),
        QStringLiteral("0,false,0"));
}

void tst_KyScriptOrvane::commandsGoToTheServer()
{
    OvServerPeer peer;
    QStringList commands;
    peer.setCommandFunction([&](const std::string& inCommand, const std::string& inArguments) {
        commands.append(QString::fromLatin1(inCommand.c_str()) + "|" +
                        QString::fromLatin1(inArguments.c_str()));
        return std::string("answer");
    });
    QCOMPARE(text(QString::fromUtf8("String(Orvane.exec('run ä€', 'with ö€')) + Orvane.eval('ask', 'for')")),
             QStringLiteral("undefinedanswer"));
    QCOMPARE(commands, QStringList({QString::fromUtf8("run ä?|with ö?"), "ask|for"}));
}

void tst_KyScriptOrvane::withoutAServerCommandsDoNothing()
{
    QCOMPARE(text("var r = Orvane.eval('a', 'b'); Orvane.exec('a', 'b') + ':' + typeof r + ':' + r"),
             QStringLiteral("undefined:string:"));
}

void tst_KyScriptOrvane::answerOfTheServerIsLatin1()
{
    OvServerPeer peer;
    peer.setCommandFunction([](const auto&, const auto&) { return std::string("\xe4\0\xdf", 3); });
    QCOMPARE(text("Orvane.eval('', '')"), QString::fromLatin1("\xe4\0\xdf", 3));
}

void tst_KyScriptOrvane::sessionIsComparedWithExtAcc()
{
    mPlatform->loader().setPrimaryExams({KyTestPlatform::studyWith({{"AccessionNumber", "A1"}})});
    QCOMPARE(text("Orvane.isOutOfSync()"), QStringLiteral("false"));
    QCOMPARE(text("Orvane.extAcc = ['A2']; Orvane.isOutOfSync()"), QStringLiteral("true"));
    QCOMPARE(text("Orvane.extAcc = ['A1']; Orvane.isOutOfSync() + ':' + Orvane.showOutOfSyncWarning()"),
             QStringLiteral("false:0"));
}

void tst_KyScriptOrvane::outOfSyncWarningIsShown()
{
    mPlatform->loader().setPrimaryExams({KyTestPlatform::studyWith({{"AccessionNumber", "A1"}})});
    ModalAnswer answer([](QWidget* inWindow) {
        auto* box = qobject_cast<JxMessageBox*>(inWindow);
        QVERIFY(box);
        QVERIFY(box->informativeText().contains("A2"));
        box->button(QMessageBox::Ok)->click();
    });
    QCOMPARE(text("Orvane.extAcc = ['A2']; Orvane.showOutOfSyncWarning()"),
             QString::number(int(QMessageBox::Ok)));
    QVERIFY(answer.happened());
}

void tst_KyScriptOrvane::loadHelperIsMadeOnDemand()
{
    const KySessionContext fresh;
    QVERIFY(!KySessionContext::currentInstance()->component<KyLoadHelper>(false));
    QCOMPARE(text("Orvane.isOutOfSync()"), QStringLiteral("false"));
    QVERIFY(KySessionContext::currentInstance()->component<KyLoadHelper>(false));
}

void tst_KyScriptOrvane::operationsTakeAnything_data()
{
    QTest::addColumn<QString>("call");
    for (const char* operation :
         {"tool(%1)", "setToolIcon(%1, %1)", "setToolText(%1, %1, %1)", "editor(%1)", "activateViewer(%1)",
          "viewer(%1)", "setDisplayHint(%1)", "exec(%1, %1)", "eval(%1, %1)"})
    {
        for (const char* value :
             {"undefined", "null", "5", "true", "[]", "({})", "Orvane", "(function() {})",
              "new Array(100000).join('x')", "Symbol()", "[Symbol()]", "({a: Symbol()})", "NaN", "1e300",
              "({toString: function() { throw 1; }})", "new Proxy({}, {get: function() { throw 1; }})"})
            QTest::addRow("%s %s", operation, value) << QString(operation).arg(value);
    }
}

/// Whatever a script passes counts as its text.
void tst_KyScriptOrvane::operationsTakeAnything()
{
    QFETCH(QString, call);
    const Viewer viewer(new ScreenViewer("a"));
    mPlatform->viewers.setActiveViewer(viewer.get());
    const QString result = text("String(Orvane." + call + ")");
    QVERIFY2(QStringList({"undefined", "null", "false", ""}).contains(result), qPrintable(result));
}

void tst_KyScriptOrvane::extAccIsEmptyAtFirst()
{
    QCOMPARE(text("Array.isArray(Orvane.extAcc) + ':' + Orvane.extAcc.length"), QStringLiteral("true:0"));
}

void tst_KyScriptOrvane::extAccIsReadAndWritten_data()
{
    QTest::addColumn<QString>("written");
    QTest::addColumn<QStringList>("list");
    QTest::newRow("two") << "['A1', 'A2']" << QStringList({"A1", "A2"});
    QTest::newRow("none") << "[]" << QStringList();
    QTest::newRow("duplicates stay") << "['a', 'a']" << QStringList({"a", "a"});
    QTest::newRow("empty text") << "['']" << QStringList("");
    QTest::newRow("beyond Latin-1") << QString::fromUtf8("['ü€']") << QStringList(QString::fromUtf8("ü€"));
    QTest::newRow("number") << "[5]" << QStringList("5");
    QTest::newRow("text") << "'abc'" << QStringList("abc");
    QTest::newRow("null and undefined") << "[null, undefined, 'a']" << QStringList({"", "", "a"});
    QTest::newRow("objects") << "[{toString: function() { return 'o'; }}, [1, 2]]"
                             << QStringList({"o", "1,2"});
    QTest::newRow("toString that throws")
        << "[{toString: function() { throw new Error('x'); }}, 'a']" << QStringList({"Error: x", "a"});
    QTest::newRow("symbol") << "[Symbol('s'), 'a']" << QStringList({"Symbol(s)", "a"});
    QTest::newRow("object") << "{a: 1}" << QStringList();
    QTest::newRow("proxy of an array") << "new Proxy([Symbol()], {})" << QStringList();
}

void tst_KyScriptOrvane::extAccIsReadAndWritten()
{
    QFETCH(QString, written);
    QFETCH(QStringList, list);
    text("Orvane.extAcc = ['before']; Orvane.extAcc = " + written);
    QCOMPARE(mEngine->extAcc(), list);
    QCOMPARE(text("JSON.stringify(Orvane.extAcc.slice())"),
             text(QStringLiteral("JSON.stringify([%1])")
                      .arg(list.isEmpty() ? QString() : "'" + list.join("', '") + "'")));
}

void tst_KyScriptOrvane::extAccIsACopy()
{
    QCOMPARE(text("Orvane.extAcc = ['a']; var list = Orvane.extAcc; list.push('b'); list[0] = 'c';"
                  "Orvane.extAcc.push('d'); String(Orvane.extAcc)"),
             QStringLiteral("a"));
}

void tst_KyScriptOrvane::extAccIsRefusedWhenItIsNoList_data()
{
    QTest::addColumn<QString>("value");
    for (const char* value : {"5", "null", "undefined", "true", "Symbol()", "Orvane", "new Date()",
                              "function() {}", "new Array(4294967295)"})
        QTest::newRow(value) << value;
}

void tst_KyScriptOrvane::extAccIsRefusedWhenItIsNoList()
{
    QFETCH(QString, value);
    QCOMPARE(text("Orvane.extAcc = ['a']; try { Orvane.extAcc = " + value +
                  "; 'taken' } catch (e) { 'refused ' + Orvane.extAcc }"),
             QStringLiteral("refused a"));
}

void tst_KyScriptOrvane::extAccIsAPropertyForHosts()
{
    auto* orvane = mEngine->globalObject().property("Orvane").toQObject();
    QVERIFY(orvane->setProperty("extAcc", QStringList({"A1", "A2"})));
    QCOMPARE(text("String(Orvane.extAcc)"), QStringLiteral("A1,A2"));
    text("Orvane.extAcc = ['B']");
    QCOMPARE(orvane->property("extAcc").toStringList(), QStringList("B"));
}

void tst_KyScriptOrvane::equalExtAccSignalsNothing()
{
    text("Orvane.extAcc = ['a', 'b']");
    QSignalSpy changed(mEngine.get(), &KyScriptEngine::extAccChanged);
    text("Orvane.extAcc = ['a', 'b']");
    mEngine->setExtAcc({"a", "b"});
    QCOMPARE(changed.size(), 0);
}

void tst_KyScriptOrvane::differentExtAccSignals_data()
{
    QTest::addColumn<QString>("written");
    QTest::newRow("longer") << "['a', 'b', 'c']";
    QTest::newRow("shorter") << "['a']";
    QTest::newRow("order") << "['b', 'a']";
    QTest::newRow("case") << "['a', 'B']";
    QTest::newRow("empty") << "[]";
}

void tst_KyScriptOrvane::differentExtAccSignals()
{
    QFETCH(QString, written);
    text("Orvane.extAcc = ['a', 'b']; var heard = 0; Orvane.extAccChanged.connect(function() { heard++; })");
    QSignalSpy changed(mEngine.get(), &KyScriptEngine::extAccChanged);
    QCOMPARE(text("Orvane.extAcc = " + written + "; heard"), QStringLiteral("1"));
    QCOMPARE(changed.size(), 1);
}

void tst_KyScriptOrvane::extAccIsSharedAndOnlyTheWriterSignals()
{
    KyScriptOrvane writer(nullptr), reader(nullptr);
    QSignalSpy ofWriter(&writer, &KyScriptOrvane::extAccChanged);
    QSignalSpy ofReader(&reader, &KyScriptOrvane::extAccChanged);
    writer.setExtAcc({"a"});
    QCOMPARE(reader.extAcc(), QStringList("a"));
    QCOMPARE(text("String(Orvane.extAcc)"), QStringLiteral("a"));
    QCOMPARE(ofWriter.size(), 1);
    QCOMPARE(ofReader.size(), 0);
}

void tst_KyScriptOrvane::extAccOutlivesItsObjects()
{
    std::make_unique<KyScriptOrvane>(nullptr)->setExtAcc({"kept"});
    QCOMPARE(KyScriptOrvane(nullptr).extAcc(), QStringList("kept"));
}

void tst_KyScriptOrvane::engineOffersExtAcc()
{
    QSignalSpy changed(mEngine.get(), &KyScriptEngine::extAccChanged);
    mEngine->setExtAcc({"a", "b"});
    QCOMPARE(mEngine->extAcc(), QStringList({"a", "b"}));
    QCOMPARE(text("String(Orvane.extAcc)"), QStringLiteral("a,b"));
    QCOMPARE(changed.size(), 1);
}

/// In a process of its own, as those below: named engines stay.
void tst_KyScriptOrvane::enginesReportToThemselvesWithoutNamedOnes()
{
    KyScriptEngine other(nullptr, ScriptOrvane);
    QSignalSpy ofEngine(mEngine.get(), &KyScriptEngine::extAccChanged);
    QSignalSpy ofOther(&other, &KyScriptEngine::extAccChanged);
    other.setExtAcc({"a"});
    QCOMPARE(ofOther.size(), 1);
    QCOMPARE(ofEngine.size(), 0);
    QVERIFY(!KyScriptInterface::hasInstances());
}

void tst_KyScriptOrvane::enginesReportToTheDefaultOne()
{
    KyScriptInterface& named = KyScriptInterface::getInstance("b");
    KyScriptEngine later(nullptr, ScriptOrvane);
    KyScriptInterface& standard = KyScriptInterface::getInstance("");
    QSignalSpy ofStandard(&standard, &KyScriptEngine::extAccChanged);
    QSignalSpy ofNamed(&named, &KyScriptEngine::extAccChanged);
    QSignalSpy ofLater(&later, &KyScriptEngine::extAccChanged);
    later.setExtAcc({"a"});
    QCOMPARE(ofStandard.size(), 1);
    standard.setExtAcc({"b"});
    QCOMPARE(ofStandard.size(), 2);
    KyScriptInterface::getInstance("c").setExtAcc({"c"});
    QCOMPARE(ofStandard.size(), 3);
    QCOMPARE(ofNamed.size(), 0);
    QCOMPARE(ofLater.size(), 0);
}

void tst_KyScriptOrvane::firstNamedEngineReportsToItself()
{
    KyScriptInterface& named = KyScriptInterface::getInstance("first");
    QSignalSpy ofNamed(&named, &KyScriptEngine::extAccChanged);
    KyScriptInterface& standard = KyScriptInterface::getInstance("");
    QSignalSpy ofStandard(&standard, &KyScriptEngine::extAccChanged);
    named.setExtAcc({"a"});
    QCOMPARE(ofNamed.size(), 1);
    QCOMPARE(ofStandard.size(), 0);
}

void tst_KyScriptOrvane::facadeTellsOfExtAcc()
{
    KyScriptAbstractEngine& facade = KyScriptAbstractInterface::getInstance("");
    QSignalSpy changed(&facade, &KyScriptAbstractEngine::extAccChanged);
    KyScriptEngine later(nullptr, ScriptOrvane);
    later.setExtAcc({"a"});
    QCOMPARE(changed.size(), 1);
    QCOMPARE(facade.extAcc(), QStringList("a"));
    facade.setExtAcc({"b"});
    QCOMPARE(changed.size(), 2);
}

void tst_KyScriptOrvane::handlerMayEndTheEngineThatOwnsTheList()
{
    auto other = std::make_unique<KyScriptEngine>(nullptr, ScriptOrvane);
    connect(other.get(), &KyScriptEngine::extAccChanged, this, [&] { other.reset(); });
    other->setExtAcc({"a"});
    QVERIFY(!other);
    QCOMPARE(mEngine->extAcc(), QStringList("a"));
}

KY_TEST_MAIN(tst_KyScriptOrvane)
#include "tst_KyScriptOrvane.moc"
