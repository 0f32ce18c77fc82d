#include <kybase/KyTool.h>

#include <QTest>

class tst_KyTool : public QObject
{
    Q_OBJECT

private slots:
    void noScriptTriggersAtFirst();
    void theFlagIsKeptUntilItChanges();
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

QTEST_APPLESS_MAIN(tst_KyTool)
#include "tst_KyTool.moc"
