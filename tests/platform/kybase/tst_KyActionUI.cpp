#include "TestTool.h"

#include <support/KyTest.h>

#include <kybase/KyActionUI.h>
#include <kybase/KyApplication.h>
#include <kybase/KyBaseViewer.h>
#include <kybase/KyToolRegistry.h>
#include <kybase/KyViewerManager.h>

#include <QSignalSpy>
#include <QWidget>

namespace {

class EmptyViewer : public KyBaseViewer
{
public:
    using KyBaseViewer::KyBaseViewer;
};

/// Supports only that viewer.
class ToolOfAViewer : public TestTool
{
public:
    using TestTool::TestTool;
    bool supportsViewer(const KyBaseViewer* inViewer) const override { return inViewer == wanted; }
    const KyBaseViewer* wanted = nullptr;
};

} // namespace

class tst_KyActionUI : public QObject
{
    Q_OBJECT

private slots:
    void init();
    void cleanup();

    void actionShowsTheDecoration();
    void actionWithoutDecorationShowsTheKey();
    void toolListsItsActions();
    void triggerRunsTheTool();
    void actionFollowsTheStateOfTheTool();
    void labelFollowsTheState();
    void checkingByCodeTriggersTheTool();
    void refusedWorkUnchecksTheAction();
    void actionThatIsMadeCheckableIsNoActivatableTool();
    void actionsOfOneToolAgree();
    void actionIsEnabledForTheActiveViewer();
    void hotKeyCountsInItsScope_data();
    void hotKeyCountsInItsScope();
    void toolThatEndsLeavesAnInertAction();
    void actionWithoutAToolIsInert();
    void actionMayEndWhileItTriggers();
    void actionsMayEndWhileTheToolEnds();
    void actionTakesATriggerBack();
    void parentOwnsTheAction();

private:
    QAction* actionOf(const std::shared_ptr<KyTool>& inTool)
    {
        return KyActionUI::createAction(inTool, inTool->hotKeyScope(), mParent.get());
    }
    KyToolDecorations& decorations() { return *mApplication->toolDecorations(); }

    std::unique_ptr<KyApplication> mApplication;
    std::unique_ptr<KyViewerManager> mManager;
    std::unique_ptr<QObject> mParent;
};

void tst_KyActionUI::init()
{
    mApplication = std::make_unique<KyApplication>();
    mManager = std::make_unique<KyViewerManager>();
    mParent = std::make_unique<QObject>();
}

void tst_KyActionUI::cleanup()
{
    mParent.reset();
    mManager.reset();
    mApplication.reset();
}

void tst_KyActionUI::actionShowsTheDecoration()
{
    decorations().registerDecoration("key", "", ":icons/report.svg", "", "The tip", "The label", "");
    const auto tool = TestTool::make("key");
    const QAction* action = actionOf(tool);
    QCOMPARE(action->text(), QStringLiteral("The label"));
    QCOMPARE(action->iconText(), QStringLiteral("The label"));
    QCOMPARE(action->toolTip(), QStringLiteral("The tip"));
    QVERIFY(!action->icon().isNull());
    QVERIFY(!action->isCheckable());
    QVERIFY(action->isEnabled());
}

void tst_KyActionUI::actionWithoutDecorationShowsTheKey()
{
    KyApplication bare(nullptr);
    const auto tool = TestTool::make("key");
    QCOMPARE(actionOf(tool)->text(), QStringLiteral("key"));
}

void tst_KyActionUI::toolListsItsActions()
{
    const auto tool = TestTool::make("key");
    const QAction* first = actionOf(tool);
    std::unique_ptr<QAction> second(KyActionUI::createAction(tool, {}, nullptr));
    QCOMPARE(tool->getUIs().size(), std::size_t(2));
    QCOMPARE(tool->getUIs()[0]->action(), first);
    QCOMPARE(tool->getUIs()[1]->action(), second.get());
    second.reset();
    QCOMPARE(tool->getUIs().size(), std::size_t(1));
}

void tst_KyActionUI::triggerRunsTheTool()
{
    const auto tool = TestTool::make("key");
    QAction* action = actionOf(tool);
    action->trigger();
    action->trigger();
    QCOMPARE(tool->flags(), QList<bool>({true, true}));
}

void tst_KyActionUI::actionFollowsTheStateOfTheTool()
{
    const auto tool = TestTool::make("key");
    tool->setActivatable(true);
    QAction* action = actionOf(tool);
    QVERIFY(action->isCheckable());
    QVERIFY(!action->isChecked());
    action->trigger();
    QVERIFY(action->isChecked());
    QVERIFY(tool->isActive());
    action->trigger();
    QVERIFY(!action->isChecked());
    QCOMPARE(tool->flags(), QList<bool>({true, false}));
    tool->setActive(true);
    QVERIFY(action->isChecked());
    QCOMPARE(tool->runs.size(), 2);
    tool->setActivatable(false);
    QVERIFY(!action->isCheckable());
    QCOMPARE(tool->runs.size(), 2);
}

void tst_KyActionUI::labelFollowsTheState()
{
    decorations().registerDecoration("key", "", "", "", "", "Start", "Stop");
    const auto tool = TestTool::make("key");
    tool->setActivatable(true);
    QAction* action = actionOf(tool);
    QCOMPARE(action->text(), QStringLiteral("Start"));
    action->trigger();
    QCOMPARE(action->text(), QStringLiteral("Stop"));
    QCOMPARE(action->iconText(), QStringLiteral("Stop"));
    action->trigger();
    QCOMPARE(action->text(), QStringLiteral("Start"));
}

void tst_KyActionUI::checkingByCodeTriggersTheTool()
{
    const auto tool = TestTool::make("key");
    tool->setActivatable(true);
    QAction* action = actionOf(tool);
    action->setChecked(true);
    action->setChecked(true);
    QVERIFY(tool->isActive());
    action->toggle();
    QVERIFY(!tool->isActive());
    QCOMPARE(tool->flags(), QList<bool>({true, false}));
}

void tst_KyActionUI::refusedWorkUnchecksTheAction()
{
    const auto tool = TestTool::make("key");
    tool->setActivatable(true);
    tool->result = false;
    QAction* action = actionOf(tool);
    action->trigger();
    QVERIFY(!action->isChecked());
    QCOMPARE(tool->runs.size(), 1);
    tool->result = true;
    tool->supports = false;
    action->setChecked(true);
    QVERIFY(!action->isChecked());
    QCOMPARE(tool->runs.size(), 1);
}

/// As a script can do it.
void tst_KyActionUI::actionThatIsMadeCheckableIsNoActivatableTool()
{
    const auto tool = TestTool::make("key");
    QAction* action = actionOf(tool);
    action->setCheckable(true);
    action->setChecked(true);
    QVERIFY(tool->runs.isEmpty());
    action->trigger();
    QCOMPARE(tool->flags(), QList<bool>({true}));
    QVERIFY(!tool->isActive());
}

void tst_KyActionUI::actionsOfOneToolAgree()
{
    const auto tool = TestTool::make("key");
    tool->setActivatable(true);
    QAction* first = actionOf(tool);
    const QAction* second = actionOf(tool);
    first->trigger();
    QVERIFY(second->isChecked());
    QCOMPARE(tool->runs.size(), 1);
}

void tst_KyActionUI::actionIsEnabledForTheActiveViewer()
{
    const RnHandle<KyBaseViewer> wanted(new EmptyViewer), other(new EmptyViewer);
    const auto tool = std::make_shared<ToolOfAViewer>("key");
    tool->wanted = wanted.get();
    const QAction* action = actionOf(tool);
    QVERIFY(!action->isEnabled());
    mManager->setActiveViewer(wanted.get());
    QVERIFY(action->isEnabled());
    mManager->setActiveViewer(other.get());
    QVERIFY(!action->isEnabled());
    tool->wanted = other.get();
    KyToolRegistry::refreshUIs();
    QVERIFY(action->isEnabled());
}

void tst_KyActionUI::hotKeyCountsInItsScope_data()
{
    QTest::addColumn<QString>("scope");
    QTest::addColumn<QString>("keys");
    QTest::addColumn<int>("context");
    QTest::newRow("nowhere") << ""
                             << "" << int(Qt::WindowShortcut);
    QTest::newRow("window") << "Window"
                            << "Ctrl+Shift+K" << int(Qt::WindowShortcut);
    QTest::newRow("application") << "Application"
                                 << "Ctrl+Shift+K" << int(Qt::ApplicationShortcut);
}

void tst_KyActionUI::hotKeyCountsInItsScope()
{
    QFETCH(QString, scope);
    QFETCH(QString, keys);
    QFETCH(int, context);
    const auto tool = TestTool::make("key");
    tool->setHotKey("Ctrl+Shift+K");
    std::set<std::string> scopes;
    if (!scope.isEmpty())
        scopes.insert(scope.toStdString());
    const QAction* action = KyActionUI::createAction(tool, scopes, mParent.get());
    QCOMPARE(action->shortcut().toString(QKeySequence::PortableText), keys);
    QCOMPARE(int(action->shortcutContext()), context);
}

void tst_KyActionUI::toolThatEndsLeavesAnInertAction()
{
    auto tool = TestTool::make("key");
    tool->setActivatable(true);
    QAction* action = actionOf(tool);
    const TestTool* const ended = tool.get();
    QVERIFY(ended);
    tool.reset();
    QVERIFY(!action->isEnabled());
    action->trigger();
    action->setChecked(true);
    action->setEnabled(true);
    action->trigger();
    mManager->setActiveViewer(nullptr);
    QVERIFY(KyToolRegistry::tools().empty());
}

void tst_KyActionUI::actionWithoutAToolIsInert()
{
    QAction* action = KyActionUI::createAction(nullptr, {}, mParent.get());
    QVERIFY(!action->isEnabled());
    action->setEnabled(true);
    action->trigger();
    static_cast<KyActionUI*>(action)->refresh();
    static_cast<KyActionUI*>(action)->takeBack();
}

void tst_KyActionUI::actionMayEndWhileItTriggers()
{
    for (const bool isActivatable : {false, true}) {
        const auto tool = TestTool::make("key");
        tool->setActivatable(isActivatable);
        tool->result = false;
        QPointer<QAction> action = actionOf(tool);
        tool->work = [&] { delete action; };
        action->trigger();
        QVERIFY(!action);
        QCOMPARE(tool->runs.size(), 1);
    }
}

void tst_KyActionUI::actionsMayEndWhileTheToolEnds()
{
    auto tool = TestTool::make("key");
    QPointer<QAction> first = actionOf(tool), second = actionOf(tool), third = actionOf(tool);
    connect(third, &QAction::enabledChanged, this, [&] {
        delete first;
        delete second;
    });
    tool.reset();
    QVERIFY(!first && !second && third);
}

void tst_KyActionUI::actionTakesATriggerBack()
{
    const auto tool = TestTool::make("key");
    auto* action = static_cast<KyActionUI*>(actionOf(tool));
    action->takeBack();
    QCOMPARE(tool->flags(), QList<bool>({false}));
    tool->setActivatable(true);
    action->takeBack();
    QCOMPARE(tool->runs.size(), 1);
}

void tst_KyActionUI::parentOwnsTheAction()
{
    const auto tool = TestTool::make("key");
    const QPointer<QAction> action = actionOf(tool);
    QCOMPARE(action->parent(), mParent.get());
    mParent.reset();
    QVERIFY(!action);
    QVERIFY(tool->getUIs().empty());
}

KY_TEST_MAIN(tst_KyActionUI)
#include "tst_KyActionUI.moc"
