// The settings of the workstation with properties that come, go by other labels, and are many.

#include <support/KyTest.h>

#include <common/KyHostPlatform.h>
#include <kyscript/KyScriptEngine.h>
#include <kyscript/KyScriptProgram.h>
#include <kyworkstation/KyPropertyEditor.h>
#include <kyworkstation/KySettingsDialog.h>
#include <kyworkstation/KySettingsTree.h>

#include <ovbase/OvPropertyPool.h>
#include <ovbase/OvRegistry.h>
#include <ovbase/OvTranslationProperty.h>

#include <QCheckBox>
#include <QElapsedTimer>
#include <QLineEdit>
#include <QScrollBar>
#include <QSpinBox>
#include <QToolButton>

class tst_KySettingsTree : public QObject
{
    Q_OBJECT

private slots:
    void init();
    void cleanup();

    void propertyOfAScriptShowsAtOnceUnderItsLabels();
    void propertyOfAScriptCanBeChanged();
    void newLabelsShowAtOnce();
    void newLabelOfAGroupMovesWhatIsBelow();
    void groupsOfOneLabelAreOne();
    void groupThatHasBecomeEmptyGoes();
    void rowsStandInAlphabeticalOrder();
    void pathWithoutALabelShowsItsLastWord();
    void emptyComponentsAreShown();
    void valueOfAScriptShowsAtOnce();
    void removalByAScriptShowsAtOnce();
    void changeByHandTakesThePlaceOfTheScripts();
    void unreadableTextLeavesWhatTheScriptSet();
    void changesByHandAreTold();
    void searchGoesOnForNewProperties();
    void editorsAreMadeWhereTheUserLooks();
    void rowsKeepTheirPlaceWhenEditorsAreMade();
    void tabKeyReachesEveryProperty();
    void tenThousandPropertiesOpenQuickly();
    void tenThousandPropertiesCanComeWhileTheSettingsAreOpen();

private:
    void run(const QString& inSource)
    {
        const QJSValue value = mEngine->runScript(KyScriptProgram(inSource, ""));
        QVERIFY2(!value.isError(), qPrintable(value.toString()));
    }
    KySettingsTree& tree()
    {
        auto* found = mDialog->findChild<KySettingsTree*>();
        found->item(QString()); // brings it up to date
        return *found;
    }
    /// The labels down to the row of a property.
    QStringList labels(const char* inId);
    template <class T>
    T& editor(const char* inId)
    {
        QTreeWidgetItem* row = tree().item(QLatin1String(inId));
        tree().scrollToItem(row);
        // Made when the event loop runs the next time.
        if (!QTest::qWaitFor([&] { return tree().itemWidget(row, 1) != nullptr; }))
            qFatal("%s has no editor", inId);
        return *tree().itemWidget(row, 1)->findChild<T*>();
    }
    void open();
    void addMany(int inCount);

    std::unique_ptr<KyHostPlatform> mPlatform;
    std::unique_ptr<KyScriptEngine> mEngine;
    std::unique_ptr<KySettingsDialog> mDialog;
};

void tst_KySettingsTree::init()
{
    mPlatform = std::make_unique<KyHostPlatform>(KyHostOptions());
    mEngine = std::make_unique<KyScriptEngine>(nullptr, ScriptOrvane);
    open();
}

void tst_KySettingsTree::cleanup()
{
    mDialog.reset();
    mEngine.reset();
    mPlatform.reset();
}

void tst_KySettingsTree::open()
{
    mDialog = std::make_unique<KySettingsDialog>(nullptr);
    mDialog->show();
    QVERIFY(QTest::qWaitForWindowExposed(mDialog.get()));
}

void tst_KySettingsTree::addMany(int inCount)
{
    OvPropertyPool& pool = *OvPropertyPool::instance();
    for (int i = 0; i < inCount; ++i)
        pool.property<int>("Many.Group" + std::to_string(i % 10) + ".P" + std::to_string(i), i,
                           pool.defaultSerializer());
}

QStringList tst_KySettingsTree::labels(const char* inId)
{
    QStringList texts;
    for (const QTreeWidgetItem* row = tree().item(QLatin1String(inId)); row; row = row->parent())
        texts.prepend(row->text(0));
    return texts;
}

void tst_KySettingsTree::propertyOfAScriptShowsAtOnceUnderItsLabels()
{
    run("Orvane.registerProperty('MyTool.Report.AutoSign', 'My Tool.Reports.Sign automatically', true)");
    QCOMPARE(labels("MyTool.Report.AutoSign"), (QStringList{"My Tool", "Reports", "Sign automatically"}));
    QCOMPARE(tree().item("MyTool.Report.AutoSign")->toolTip(0), QStringLiteral("MyTool.Report.AutoSign"));
    QTRY_VERIFY(tree().itemWidget(tree().item("MyTool.Report.AutoSign"), 1));
    QVERIFY(editor<QCheckBox>("MyTool.Report.AutoSign").isChecked());
    QCOMPARE(editor<QCheckBox>("MyTool.Report.AutoSign").accessibleName(),
             QStringLiteral("Sign automatically"));
}

void tst_KySettingsTree::propertyOfAScriptCanBeChanged()
{
    run("Orvane.registerProperty('MyTool.Names', 'My Tool.Names', ['a'])");
    auto& line = editor<QLineEdit>("MyTool.Names");
    line.selectAll();
    QTest::keyClicks(&line, "x,\"y,z\"");
    QTest::keyClick(&line, Qt::Key_Return);
    run("if (Orvane.propertyVariant('MyTool.Names').join('|') !== 'x|y,z') throw new Error('not changed')");
}

void tst_KySettingsTree::newLabelsShowAtOnce()
{
    run("Orvane.registerProperty('MyTool.Names', 'My Tool.Names', 'a')");
    QCOMPARE(labels("MyTool.Names"), (QStringList{"My Tool", "Names"}));
    run("Orvane.registerProperty('MyTool.Names', 'My Tool.Users', 'a')");
    QCOMPARE(labels("MyTool.Names"), (QStringList{"My Tool", "Users"}));
    QCOMPARE(editor<QLineEdit>("MyTool.Names").accessibleName(), QStringLiteral("Users"));
}

void tst_KySettingsTree::newLabelOfAGroupMovesWhatIsBelow()
{
    run("Orvane.registerProperty('MyTool.A.One', 'My Tool.First.One', 1);"
        "Orvane.registerProperty('MyTool.A.Two', 'My Tool.First.Two', 2);"
        "Orvane.registerProperty('MyToolbox.A', 'My Toolbox.A', 3);"
        "Orvane.registerProperty('MyTool.A.One', 'Your Tool.First.One', 1)");
    QCOMPARE(labels("MyTool.A.One"), (QStringList{"Your Tool", "First", "One"}));
    QCOMPARE(labels("MyTool.A.Two"), (QStringList{"Your Tool", "First", "Two"}));
    QCOMPARE(labels("MyToolbox.A"), (QStringList{"My Toolbox", "A"}));
    QCOMPARE(tree().item("MyTool.A.One")->parent(), tree().item("MyTool.A.Two")->parent());
    QVERIFY(tree().findItems("My Tool", Qt::MatchExactly | Qt::MatchRecursive).isEmpty());
}

void tst_KySettingsTree::groupsOfOneLabelAreOne()
{
    run("Orvane.registerProperty('GroupA.One', 'Same.One', 1); Orvane.registerProperty('GroupB.Two', "
        "'Same.Two', 2)");
    QCOMPARE(tree().item("GroupA.One")->parent(), tree().item("GroupB.Two")->parent());
    QCOMPARE(tree().findItems("Same", Qt::MatchExactly).size(), 1);
    run("Orvane.registerProperty('Same', 'Same', 1)"); // a property of the same label is no group
    run("Orvane.registerProperty('GroupC.Three', 'Same.Three', 3)");
    QCOMPARE(tree().item("GroupC.Three")->parent(), tree().item("GroupA.One")->parent());
}

void tst_KySettingsTree::groupThatHasBecomeEmptyGoes()
{
    run("Orvane.registerProperty('Lone.Deep.Value', 'Lone.Deep.Value', 1);"
        "Orvane.registerProperty('Lone.Deep.Value', 'Other.Deep.Value', 1)");
    QVERIFY(tree().findItems("Lone", Qt::MatchExactly | Qt::MatchRecursive).isEmpty());
    QCOMPARE(labels("Lone.Deep.Value"), (QStringList{"Other", "Deep", "Value"}));
    run("Orvane.registerProperty('Lone.Deep.Next', 'Other.Deep.Next', 1)");
    QCOMPARE(tree().item("Lone.Deep.Next")->parent(), tree().item("Lone.Deep.Value")->parent());
}

void tst_KySettingsTree::rowsStandInAlphabeticalOrder()
{
    run("['b', 'C', 'item 10', 'a', 'item 9', 'Zeta', 'item 9'].forEach(function(label, i) {"
        "    Orvane.registerProperty('Order.P' + i, 'Order.' + label, i); })");
    QTreeWidgetItem* group = tree().item("Order.P0")->parent();
    QStringList texts;
    for (int i = 0; i < group->childCount(); ++i)
        texts.append(group->child(i)->text(0));
    QCOMPARE(texts, (QStringList{"a", "b", "C", "item 9", "item 9", "item 10", "Zeta"}));
}

void tst_KySettingsTree::pathWithoutALabelShowsItsLastWord()
{
    OvPropertyPool& pool = *OvPropertyPool::instance();
    pool.property<int>("NoLabel.AutoClose", 1, pool.defaultSerializer());
    QCOMPARE(labels("NoLabel.AutoClose"), (QStringList{"No Label", "Auto Close"}));
    OvTranslationProperty::translate("NoLabel.AutoClose", "Close by itself", nullptr);
    QCOMPARE(labels("NoLabel.AutoClose"), (QStringList{"No Label", "Close by itself"}));
}

void tst_KySettingsTree::emptyComponentsAreShown()
{
    run("Orvane.registerProperty('Empty..Part', 'E..P', 1); Orvane.registerProperty('.', '.', 1)");
    QCOMPARE(labels("Empty..Part"), (QStringList{"E", "", "P"}));
}

void tst_KySettingsTree::valueOfAScriptShowsAtOnce()
{
    run("Orvane.registerProperty('My.Number', 'My.Number', 1)");
    auto& box = editor<QSpinBox>("My.Number");
    auto& reset = editor<QToolButton>("My.Number");
    QVERIFY(!reset.isEnabled());
    run("Orvane.setPropertyVariant('My.Number', 5)");
    QCOMPARE(box.value(), 5);
    QVERIFY(reset.isEnabled());
    QCOMPARE(box.toolTip(), QStringLiteral("My.Number (set by a script)"));
}

void tst_KySettingsTree::removalByAScriptShowsAtOnce()
{
    run("Orvane.registerProperty('My.Number', 'My.Number', 1); Orvane.setPropertyVariant('My.Number', 5);"
        "Orvane.setPropertyVariant('My.Number', 1)");
    auto& reset = editor<QToolButton>("My.Number");
    QVERIFY(reset.isEnabled());
    run("Orvane.removePropertyValue('My.Number')"); // the value stays the same
    QVERIFY(!reset.isEnabled());
    QCOMPARE(editor<QSpinBox>("My.Number").value(), 1);
    QCOMPARE(editor<QSpinBox>("My.Number").toolTip(), QStringLiteral("My.Number"));
}

void tst_KySettingsTree::changeByHandTakesThePlaceOfTheScripts()
{
    run("Orvane.registerProperty('My.Number', 'My.Number', 1); Orvane.setPropertyVariant('My.Number', 5)");
    QTest::keyClick(&editor<QSpinBox>("My.Number"), Qt::Key_Up);
    const OvRegistry& registry = *OvRegistry::getInstance();
    QCOMPARE(registry.layers("My.Number"), std::vector<int>{1000});
    OvRegistry::Value value;
    QVERIFY(registry.getProperty("My.Number", value) && value.value == "6");
    QTest::mouseClick(&editor<QToolButton>("My.Number"), Qt::LeftButton);
    QVERIFY(registry.layers("My.Number").empty());
    QCOMPARE(editor<QSpinBox>("My.Number").value(), 1);
}

void tst_KySettingsTree::unreadableTextLeavesWhatTheScriptSet()
{
    run("Orvane.registerProperty('My.List', 'My.List', ['a']); Orvane.setPropertyVariant('My.List', ['b'])");
    auto& line = editor<QLineEdit>("My.List");
    line.selectAll();
    QTest::keyClicks(&line, "\"open");
    QTest::keyClick(&line, Qt::Key_Return);
    QCOMPARE(line.text(), QStringLiteral("b"));
    QCOMPARE(OvRegistry::getInstance()->layers("My.List"), std::vector<int>{3000});
}

void tst_KySettingsTree::changesByHandAreTold()
{
    class Receiver final : public KyNotifiable
    {
    public:
        void notified(const KyNotification& inNotification) override
        {
            heard.append(inNotification.property->toQString());
        }
        QStringList heard;
    } receiver;
    KyNotifiables::getInstance()->addNotification(&receiver, KyNotification(KyNotification::PropertyChanged));
    OvPropertyPool& pool = *OvPropertyPool::instance();
    pool.property<int>("My.Number", 1, pool.defaultSerializer());
    QTest::keyClick(&editor<QSpinBox>("My.Number"), Qt::Key_Up);
    QCOMPARE(receiver.heard, QStringList{"2"});
    QTest::mouseClick(&editor<QToolButton>("My.Number"), Qt::LeftButton);
    QCOMPARE(receiver.heard, (QStringList{"2", "1"}));
}

void tst_KySettingsTree::searchGoesOnForNewProperties()
{
    auto& search = *mDialog->findChild<QLineEdit*>(QString(), Qt::FindDirectChildrenOnly);
    QTest::keyClicks(&search, "needle");
    run("Orvane.registerProperty('Hay.A', 'Hay.Straw', 1); Orvane.registerProperty('Hay.B', 'Hay.A Needle', "
        "1);"
        "Orvane.registerProperty('Straw.C', 'Straw.C', 1)");
    QTRY_VERIFY(tree().item("Hay.A")->isHidden());
    QVERIFY(!tree().item("Hay.B")->isHidden());
    QVERIFY(tree().item("Straw.C")->parent()->isHidden());
    search.clear();
    QVERIFY(!tree().item("Hay.A")->isHidden() && !tree().item("Straw.C")->parent()->isHidden());
}

void tst_KySettingsTree::editorsAreMadeWhereTheUserLooks()
{
    addMany(1000);
    const auto count = [&] { return mDialog->findChildren<KyPropertyEditor*>().size(); };
    QTest::qWait(1);
    QVERIFY2(count() < 300, qPrintable(QString::number(count())));
    QTreeWidgetItem* last = tree().item("Many.Group9.P999");
    QVERIFY(!tree().itemWidget(last, 1));
    tree().verticalScrollBar()->setValue(tree().verticalScrollBar()->maximum());
    tree().scrollToItem(last);
    QVERIFY(tree().itemWidget(last, 1));
    QVERIFY2(count() < 600, qPrintable(QString::number(count())));
    tree().showMatching("P555");
    QVERIFY(tree().itemWidget(tree().item("Many.Group5.P555"), 1));
}

void tst_KySettingsTree::rowsKeepTheirPlaceWhenEditorsAreMade()
{
    addMany(1000);
    QTest::qWait(1);
    tree().verticalScrollBar()->setValue(tree().verticalScrollBar()->maximum() / 2);
    const int maximum = tree().verticalScrollBar()->maximum();
    tree().verticalScrollBar()->setValue(maximum);
    QTest::qWait(1);
    QCOMPARE(tree().verticalScrollBar()->maximum(), maximum);
}

void tst_KySettingsTree::tabKeyReachesEveryProperty()
{
    addMany(200);
    QTest::qWait(1);
    mDialog->activateWindow();
    QVERIFY(QTest::qWaitForWindowActive(mDialog.get()));
    tree().verticalScrollBar()->setValue(0);
    tree().itemWidget(tree().item("AdvancedSettings.ScriptingConsole.AutoIndentation"), 1)->setFocus();
    QStringList visited;
    for (int i = 0; i < 400 && !visited.contains("Many.Group9.P199"); ++i) {
        QTest::keyClick(QApplication::focusWidget(), Qt::Key_Tab);
        const QWidget* widget = QApplication::focusWidget();
        while (widget && !qobject_cast<const KyPropertyEditor*>(widget))
            widget = widget->parentWidget();
        if (widget && (visited.isEmpty() || visited.last() != widget->objectName()))
            visited.append(widget->objectName());
    }
    QVERIFY(visited.contains("Many.Group9.P199"));
    for (int i = 0; i < 200; ++i) {
        const QString id = QStringLiteral("Many.Group%1.P%2").arg(i % 10).arg(i);
        QVERIFY2(visited.contains(id), qPrintable(id + " not in " + visited.join(' ')));
    }
    const QStringList many = visited.filter("Many.");
    QCOMPARE(many.size(), 200);
    QCOMPARE(many.mid(0, 3), (QStringList{"Many.Group0.P0", "Many.Group0.P10", "Many.Group0.P20"}));
}

void tst_KySettingsTree::tenThousandPropertiesOpenQuickly()
{
    mDialog.reset();
    addMany(10000);
    QElapsedTimer timer;
    timer.start();
    open();
    QVERIFY(tree().item("Many.Group9.P9999"));
    QVERIFY2(timer.elapsed() < 60'000, qPrintable(QString::number(timer.elapsed())));
}

void tst_KySettingsTree::tenThousandPropertiesCanComeWhileTheSettingsAreOpen()
{
    QElapsedTimer timer;
    timer.start();
    run("for (var i = 0; i < 10000; ++i)"
        "    Orvane.registerProperty('Coming.Group' + i % 10 + '.P' + i, 'Coming.Group ' + i % 10 + "
        "'.Property ' + i, i)");
    QCOMPARE(labels("Coming.Group3.P9993"), (QStringList{"Coming", "Group 3", "Property 9993"}));
    QTest::qWait(1);
    QVERIFY2(timer.elapsed() < 60'000, qPrintable(QString::number(timer.elapsed())));
}

KY_TEST_MAIN(tst_KySettingsTree)
#include "tst_KySettingsTree.moc"
