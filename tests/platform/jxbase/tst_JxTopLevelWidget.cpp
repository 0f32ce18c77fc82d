#include <support/KyTest.h>

#include <jxbase/JxTopLevelWidget.h>

#include <QDialog>
#include <QPointer>

class tst_JxTopLevelWidget : public QObject
{
    Q_OBJECT

private slots:
    void frameIsBroughtWithinReach_data();
    void frameIsBroughtWithinReach();
    void frameStaysWithoutScreens();

    void screensAreThoseOfTheApplication();
    void windowOutsideAllScreensComesBackWhenShown();
    void windowOnAScreenStaysWhereItIs();
    void windowThatNobodyPlacedIsLeftToTheWindowSystem();
    void minimizedWindowStaysMinimized();
    void maximizedWindowStaysMaximized();
    void hidingMovesNothing();
    void childWidgetStaysWhereItIs();
    void otherQtClassesCanBeWrapped();
    void parentOwnsTheWindow();
};

void tst_JxTopLevelWidget::frameIsBroughtWithinReach_data()
{
    QTest::addColumn<QRect>("frame");
    QTest::addColumn<QRect>("reachable");
    // Two screens side by side, the second with a panel at its top.
    QTest::newRow("inside the first") << QRect(10, 20, 300, 200) << QRect(10, 20, 300, 200);
    QTest::newRow("inside the second") << QRect(1100, 60, 300, 200) << QRect(1100, 60, 300, 200);
    QTest::newRow("partly outside, title bar within reach")
        << QRect(900, 700, 300, 200) << QRect(900, 700, 300, 200);
    QTest::newRow("right of all") << QRect(5000, 100, 300, 200) << QRect(1748, 100, 300, 200);
    QTest::newRow("left of all") << QRect(-2000, 100, 300, 200) << QRect(0, 100, 300, 200);
    QTest::newRow("above all") << QRect(100, -500, 300, 200) << QRect(100, 0, 300, 200);
    QTest::newRow("below all") << QRect(100, 5000, 300, 200) << QRect(100, 568, 300, 200);
    QTest::newRow("title bar above the edge") << QRect(100, -10, 300, 200) << QRect(100, 0, 300, 200);
    QTest::newRow("title bar under the panel") << QRect(1100, 10, 300, 200) << QRect(1100, 50, 300, 200);
    QTest::newRow("larger than the screen and outside")
        << QRect(-5000, -5000, 4000, 3000) << QRect(0, 0, 1024, 768);
    QTest::newRow("larger than the screen but within reach")
        << QRect(5, 5, 4000, 3000) << QRect(5, 5, 4000, 3000);
    QTest::newRow("smaller than the handle") << QRect(3000, 100, 20, 10) << QRect(2028, 100, 20, 10);
}

void tst_JxTopLevelWidget::frameIsBroughtWithinReach()
{
    QFETCH(QRect, frame);
    QFETCH(QRect, reachable);
    const QList<QRect> areas{QRect(0, 0, 1024, 768), QRect(1024, 50, 1024, 718)};
    QCOMPARE(JxTopLevelWidget::reachableFrame(frame, areas), reachable);
}

void tst_JxTopLevelWidget::frameStaysWithoutScreens()
{
    const QRect frame(-100, -100, 10, 10);
    QCOMPARE(JxTopLevelWidget::reachableFrame(frame, {}), frame);
}

void tst_JxTopLevelWidget::screensAreThoseOfTheApplication()
{
    QCOMPARE(JxTopLevelWidget::screenAreas().size(), QGuiApplication::screens().size());
    QCOMPARE(JxTopLevelWidget::screenAreas().constFirst(),
             QGuiApplication::primaryScreen()->availableGeometry());
}

void tst_JxTopLevelWidget::windowOutsideAllScreensComesBackWhenShown()
{
    JxTopLevelWidget window;
    window.resize(200, 100);
    window.move(20000, 20000);
    window.show();
    QVERIFY(QGuiApplication::primaryScreen()->availableGeometry().contains(window.pos()));
    QCOMPARE(JxTopLevelWidget::reachableFrame(window.frameGeometry(), JxTopLevelWidget::screenAreas()),
             window.frameGeometry());
    QCOMPARE(window.size(), QSize(200, 100));
}

void tst_JxTopLevelWidget::windowOnAScreenStaysWhereItIs()
{
    JxTopLevelWidget window;
    window.resize(200, 100);
    window.move(30, 40);
    window.show();
    QCOMPARE(window.pos(), QPoint(30, 40));
    QCOMPARE(window.size(), QSize(200, 100));
}

void tst_JxTopLevelWidget::windowThatNobodyPlacedIsLeftToTheWindowSystem()
{
    JxTopLevelWidget window;
    JxTopLevelWidget::bringBack(window);
    QVERIFY(!window.testAttribute(Qt::WA_Moved));
}

void tst_JxTopLevelWidget::minimizedWindowStaysMinimized()
{
    JxTopLevelWidget window;
    window.move(20000, 20000);
    window.showMinimized();
    QVERIFY(window.isMinimized());
}

void tst_JxTopLevelWidget::maximizedWindowStaysMaximized()
{
    JxTopLevelWidget window;
    window.move(30, 40);
    window.setWindowState(Qt::WindowMaximized);
    window.show();
    QVERIFY(window.isMaximized());
}

void tst_JxTopLevelWidget::hidingMovesNothing()
{
    JxTopLevelWidget window;
    window.move(20000, 20000);
    window.setVisible(false);
    QCOMPARE(window.pos(), QPoint(20000, 20000));
}

void tst_JxTopLevelWidget::childWidgetStaysWhereItIs()
{
    QWidget parent;
    JxTopLevelWidget child(&parent);
    child.move(-500, -500);
    child.show();
    QCOMPARE(child.pos(), QPoint(-500, -500));
}

void tst_JxTopLevelWidget::otherQtClassesCanBeWrapped()
{
    JxTopLevelWidgetWrapper<QDialog> dialog;
    dialog.resize(200, 100);
    dialog.move(20000, 20000);
    dialog.show();
    QVERIFY(QGuiApplication::primaryScreen()->availableGeometry().contains(dialog.pos()));
}

void tst_JxTopLevelWidget::parentOwnsTheWindow()
{
    auto parent = std::make_unique<QWidget>();
    const QPointer<JxTopLevelWidget> window = new JxTopLevelWidget(parent.get(), Qt::Window);
    QVERIFY(window->isWindow());
    parent.reset();
    QVERIFY(!window);
}

KY_TEST_MAIN(tst_JxTopLevelWidget)
#include "tst_JxTopLevelWidget.moc"
