#include <kybase/KyMonitorManager.h>

#include <QTest>

class tst_KyMonitorManager : public QObject
{
    Q_OBJECT

private slots:
    void withoutAManagerThereIsNoParent();
    void withoutAMainWindowThereIsNoParent();
    void theMainWindowParentsAllWindows();
    void aDeletedMainWindowCountsAsNone();
    void theEndOfTheManagerEndsItsAnswers();
};

void tst_KyMonitorManager::withoutAManagerThereIsNoParent()
{
    QCOMPARE(KyMonitorManager::instance(), nullptr);
    QCOMPARE(KyMonitorManager::parentForModalWidget(), nullptr);
    QCOMPARE(KyMonitorManager::parentForGlobalNonModalWidget(), nullptr);
}

void tst_KyMonitorManager::withoutAMainWindowThereIsNoParent()
{
    const KyMonitorManager manager;
    QCOMPARE(KyMonitorManager::instance(), &manager);
    QCOMPARE(KyMonitorManager::parentForModalWidget(), nullptr);
    QCOMPARE(KyMonitorManager::parentForGlobalNonModalWidget(), nullptr);
}

void tst_KyMonitorManager::theMainWindowParentsAllWindows()
{
    KyMonitorManager manager;
    QWidget window;
    manager.setMainWindow(&window);
    QCOMPARE(KyMonitorManager::parentForModalWidget(), &window);
    QCOMPARE(KyMonitorManager::parentForGlobalNonModalWidget(), &window);
    QCOMPARE(KyMonitorManager::parentForGlobalNonModalWidget(QStringLiteral("Report")), &window);
}

void tst_KyMonitorManager::aDeletedMainWindowCountsAsNone()
{
    KyMonitorManager manager;
    {
        QWidget window;
        manager.setMainWindow(&window);
    }
    QCOMPARE(KyMonitorManager::parentForModalWidget(), nullptr);
    QCOMPARE(KyMonitorManager::parentForGlobalNonModalWidget(), nullptr);
}

void tst_KyMonitorManager::theEndOfTheManagerEndsItsAnswers()
{
    QWidget window;
    {
        KyMonitorManager manager;
        manager.setMainWindow(&window);
    }
    QCOMPARE(KyMonitorManager::parentForModalWidget(), nullptr);
}

QTEST_MAIN(tst_KyMonitorManager)
#include "tst_KyMonitorManager.moc"
