#include "TestTool.h"

#include <support/KyTest.h>
#include <support/LogCapture.h>

#include <kybase/KyActionUI.h>
#include <kybase/KyBaseViewer.h>
#include <kybase/KyToolRegistry.h>
#include <kybase/KyViewerManager.h>

#include <type_traits>

static_assert(std::has_virtual_destructor_v<KyTool>);
static_assert(std::is_base_of_v<KyNotifiable, KyTool>);
static_assert(std::is_base_of_v<std::enable_shared_from_this<KyTool>, KyTool>);
static_assert(std::is_base_of_v<KyToolAspect::UnDeletable<KyTool>, KyObsoleteTrigger>);

namespace {

/// A tool of the base class's own ways.
class PlainTool : public KyTool
{
public:
    using KyTool::KyTool;
    bool process(KyBaseViewer*, bool) override { return true; }
};

class EmptyViewer : public KyBaseViewer
{
public:
    using KyBaseViewer::KyBaseViewer;
};

} // namespace

class tst_KyTool : public QObject
{
    Q_OBJECT

private slots:
    void noScriptTriggersAtFirst();
    void theFlagIsKeptUntilItChanges();

    void plainToolHasItsDefaults();
    void obsoleteTriggerIsToldWhetherItIsActivatable();
    void viewerWithoutImagesIsNotSupported();

    void triggerOfAPlainToolSetsTheFlag();
    void triggerTurnsAnActivatableToolOver();
    void stateChangesBeforeTheWork();
    void unsupportedViewerIsRefused();
    void refusedWorkTakesTheStateBack();
    void triggerIsTakenBack();
    void activeViewerIsHandedOn();
    void viewerLivesUntilTheEndOfTheWork();
    void toolMayEndDuringItsWork();
    void onlyAnActivatableToolIsActive();
    void toolNoLongerActivatableBecomesInactive();

    void toolsAreFoundByKey_data();
    void toolsAreFoundByKey();
    void newestToolOfAKeyIsFound();
    void unknownKeyIsALogLineUnlessQuiet();
    void toolWithoutAnOwnerIsNotFound();
    void toolOfAnotherClassIsNotFound();
    void allToolsAreListedInTheirOrder();
    void manyToolsOfOneKeyComeAndGo();
};

void tst_KyTool::noScriptTriggersAtFirst()
{
    QVERIFY(!KyTool::triggeredByScript());
}

void tst_KyTool::theFlagIsKeptUntilItChanges()
{
    KyTool::setTriggeredByScript(true);
    QVERIFY(KyTool::triggeredByScript());
    KyTool::setTriggeredByScript(true);
    QVERIFY(KyTool::triggeredByScript());
    KyTool::setTriggeredByScript(false);
    QVERIFY(!KyTool::triggeredByScript());
}

void tst_KyTool::plainToolHasItsDefaults()
{
    const auto tool = std::make_shared<PlainTool>("key");
    QCOMPARE(tool->decorationKey(), std::string("key"));
    QVERIFY(!tool->isActivatable());
    QVERIFY(!tool->isActive());
    QVERIFY(tool->isDeletable());
    QVERIFY(tool->getUIs().empty());
    QVERIFY(tool->hotKey().empty());
    QCOMPARE(tool->hotKeyScope(), std::set<std::string>{"Window"});
    QVERIFY(PlainTool(nullptr).decorationKey().empty());
}

void tst_KyTool::obsoleteTriggerIsToldWhetherItIsActivatable()
{
    const auto tool = TestTool::make("key");
    QVERIFY(!tool->isActivatable());
    tool->setActivatable(true);
    QVERIFY(tool->isActivatable());
    tool->setActivatable(false);
    QVERIFY(!tool->isActivatable());
    QVERIFY(!tool->isDeletable());
}

void tst_KyTool::viewerWithoutImagesIsNotSupported()
{
    const auto tool = std::make_shared<PlainTool>("key");
    QVERIFY(!tool->supportsViewer(nullptr));
    const RnHandle<KyBaseViewer> empty(new EmptyViewer);
    QVERIFY(!tool->supportsViewer(empty.get()));
}

void tst_KyTool::triggerOfAPlainToolSetsTheFlag()
{
    const auto tool = TestTool::make("key");
    QVERIFY(tool->trigger(nullptr));
    QVERIFY(tool->trigger(nullptr));
    QCOMPARE(tool->flags(), QList<bool>({true, true}));
    QVERIFY(!tool->isActive());
}

void tst_KyTool::triggerTurnsAnActivatableToolOver()
{
    const auto tool = TestTool::make("key");
    tool->setActivatable(true);
    QVERIFY(tool->trigger(nullptr));
    QVERIFY(tool->isActive());
    QVERIFY(tool->trigger(nullptr));
    QVERIFY(!tool->isActive());
    QCOMPARE(tool->flags(), QList<bool>({true, false}));
}

void tst_KyTool::stateChangesBeforeTheWork()
{
    const auto tool = TestTool::make("key");
    tool->setActivatable(true);
    QList<bool> seen;
    tool->work = [&] { seen.append(tool->isActive()); };
    tool->trigger(nullptr);
    tool->trigger(nullptr);
    QCOMPARE(seen, QList<bool>({true, false}));
}

void tst_KyTool::unsupportedViewerIsRefused()
{
    const auto tool = TestTool::make("key");
    tool->setActivatable(true);
    tool->supports = false;
    QVERIFY(!tool->trigger(nullptr));
    QVERIFY(!tool->takeBack(nullptr));
    QVERIFY(tool->runs.isEmpty());
    QVERIFY(!tool->isActive());
}

void tst_KyTool::refusedWorkTakesTheStateBack()
{
    const auto tool = TestTool::make("key");
    tool->setActivatable(true);
    tool->result = false;
    QVERIFY(!tool->trigger(nullptr));
    QVERIFY(!tool->isActive());
    tool->setActive(true);
    QVERIFY(!tool->trigger(nullptr));
    QVERIFY(tool->isActive());
}

void tst_KyTool::triggerIsTakenBack()
{
    const auto tool = TestTool::make("key");
    QVERIFY(tool->takeBack(nullptr));
    tool->setActivatable(true);
    tool->setActive(true);
    QVERIFY(tool->takeBack(nullptr));
    QVERIFY(!tool->isActive());
    QCOMPARE(tool->flags(), QList<bool>({false, false}));
}

void tst_KyTool::activeViewerIsHandedOn()
{
    KyViewerManager manager;
    const RnHandle<KyBaseViewer> viewer(new EmptyViewer);
    const auto tool = TestTool::make("key");
    const std::unique_ptr<QAction> action(KyActionUI::createAction(tool, {}, nullptr));
    action->trigger();
    manager.setActiveViewer(viewer.get());
    action->trigger();
    QCOMPARE(tool->runs.size(), 2);
    QCOMPARE(tool->runs.at(0).first, nullptr);
    QCOMPARE(tool->runs.at(1).first, viewer.get());
}

void tst_KyTool::viewerLivesUntilTheEndOfTheWork()
{
    RnHandle<KyBaseViewer> viewer(new EmptyViewer);
    const RnUniqueID id = viewer->uniqueID();
    const auto tool = TestTool::make("key");
    bool lives = false;
    tool->work = [&] {
        viewer.reset();
        lives = OvInterface::instanceWithUID(id);
    };
    tool->trigger(viewer.get());
    QVERIFY(lives);
    QVERIFY(!OvInterface::instanceWithUID(id));
}

void tst_KyTool::toolMayEndDuringItsWork()
{
    auto tool = TestTool::make("key");
    const std::weak_ptr<KyTool> watch = tool;
    tool->setActivatable(true);
    tool->result = false;
    tool->work = [&] { tool.reset(); };
    TestTool& present = *tool;
    present.trigger(nullptr);
    QVERIFY(watch.expired());
}

void tst_KyTool::onlyAnActivatableToolIsActive()
{
    const auto tool = TestTool::make("key");
    tool->setActive(true);
    QVERIFY(!tool->isActive());
    tool->setActivatable(true);
    tool->setActive(true);
    QVERIFY(tool->isActive());
    tool->setActive(false);
    QVERIFY(!tool->isActive());
    QVERIFY(tool->runs.isEmpty());
}

void tst_KyTool::toolNoLongerActivatableBecomesInactive()
{
    const auto tool = TestTool::make("key");
    tool->setActivatable(true);
    tool->setActive(true);
    tool->setActivatable(false);
    QVERIFY(!tool->isActive());
}

void tst_KyTool::toolsAreFoundByKey_data()
{
    QTest::addColumn<QByteArray>("key");
    QTest::addColumn<bool>("isFound");
    QTest::newRow("same") << QByteArray("a.Key") << true;
    QTest::newRow("other case") << QByteArray("a.key") << false;
    QTest::newRow("shorter") << QByteArray("a.Ke") << false;
    QTest::newRow("longer") << QByteArray("a.Keys") << false;
    QTest::newRow("empty") << QByteArray("") << false;
    QTest::newRow("null") << QByteArray() << false;
}

void tst_KyTool::toolsAreFoundByKey()
{
    QFETCH(QByteArray, key);
    QFETCH(bool, isFound);
    const auto tool = TestTool::make("a.Key");
    const auto nameless = TestTool::make("");
    const char* asked = key.isNull() ? nullptr : key.constData();
    QCOMPARE(KyToolRegistry::getToolByDecorationKey<KyTool>(asked, true),
             isFound ? std::shared_ptr<KyTool>(tool) : nullptr);
}

void tst_KyTool::newestToolOfAKeyIsFound()
{
    const auto found = [] { return KyToolRegistry::getToolByDecorationKey<KyTool>("key", true); };
    const auto first = TestTool::make("key");
    auto second = TestTool::make("key");
    auto third = TestTool::make("key");
    QCOMPARE(found(), third);
    second.reset();
    QCOMPARE(found(), third);
    third.reset();
    QCOMPARE(found(), first);
}

void tst_KyTool::unknownKeyIsALogLineUnlessQuiet()
{
    LogCapture log;
    QVERIFY(!KyToolRegistry::getToolByDecorationKey<KyTool>("none", true));
    QCOMPARE(log.take(), QStringList());
    QVERIFY(!KyToolRegistry::getToolByDecorationKey<KyTool>("none", false));
    QVERIFY(!KyToolRegistry::getToolByDecorationKey<KyTool>(nullptr, false));
    QCOMPARE(log.take(), QStringList({"2|KyToolRegistry|There is no tool \"none\"",
                                      "2|KyToolRegistry|There is no tool \"\""}));
}

void tst_KyTool::toolWithoutAnOwnerIsNotFound()
{
    const TestTool tool("key");
    QVERIFY(!KyToolRegistry::getToolByDecorationKey<KyTool>("key", true));
    QVERIFY(KyToolRegistry::tools().empty());
}

void tst_KyTool::toolOfAnotherClassIsNotFound()
{
    const auto tool = TestTool::make("key");
    QVERIFY(KyToolRegistry::getToolByDecorationKey<TestTool>("key", true));
    QVERIFY(!KyToolRegistry::getToolByDecorationKey<PlainTool>("key", true));
}

void tst_KyTool::allToolsAreListedInTheirOrder()
{
    const auto first = TestTool::make("b");
    const auto second = TestTool::make("");
    const auto third = TestTool::make("a");
    const std::vector<std::shared_ptr<KyTool>> expected{first, second, third};
    QCOMPARE(KyToolRegistry::tools(), expected);
}

void tst_KyTool::manyToolsOfOneKeyComeAndGo()
{
    std::vector<std::shared_ptr<TestTool>> many;
    for (int i = 0; i < 10000; ++i)
        many.push_back(TestTool::make("key"));
    QCOMPARE(KyToolRegistry::tools().size(), std::size_t(10000));
    many.clear();
    QVERIFY(KyToolRegistry::tools().empty());
    QVERIFY(!KyToolRegistry::getToolByDecorationKey<KyTool>("key", true));
}

KY_TEST_MAIN(tst_KyTool)
#include "tst_KyTool.moc"
