#include <jxbase/JxMainWindow.h>
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
    void contentsHaveTheirMainWindows();
    void mainWindowThatHasGoneIsNull();
    void withoutAContentThereIsNoMainWindow();
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

void tst_KyMonitorManager::contentsHaveTheirMainWindows()
{
    KyMonitorManager manager;
    JxMainWindow first;
    JxMainWindow second;
    KyMonitorContent* view = manager.content("View");
    QCOMPARE(view->id(), QString("View"));
    QCOMPARE(manager.content("View"), view);
    view->addMainWindow(&first);
    view->addMainWindow(&second);
    QCOMPARE(manager.mainWindows(view), QList<JxMainWindow*>({&first, &second}));
    QCOMPARE(manager.mainWindows(manager.content("Worklist")), QList<JxMainWindow*>());
    view->removeMainWindow(&first);
    QCOMPARE(manager.mainWindows(view), QList<JxMainWindow*>({&second}));
}

void tst_KyMonitorManager::mainWindowThatHasGoneIsNull()
{
    KyMonitorManager manager;
    JxMainWindow second;
    {
        JxMainWindow first;
        manager.content("View")->addMainWindow(&first);
        manager.content("View")->addMainWindow(&second);
    }
    QCOMPARE(manager.mainWindows(manager.content("View")), QList<JxMainWindow*>({nullptr, &second}));
}

void tst_KyMonitorManager::withoutAContentThereIsNoMainWindow()
{
    KyMonitorManager manager;
    QCOMPARE(manager.mainWindows(nullptr), QList<JxMainWindow*>());
}

QTEST_MAIN(tst_KyMonitorManager)
#include "tst_KyMonitorManager.moc"
