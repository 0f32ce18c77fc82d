#include "TestWebView.h"

#include <support/KyTest.h>
#include <support/LogCapture.h>

#include <kywebview/KyWebViewBrowser.h>
#include <kywebview/KyWebViewWidget.h>
#include <ovbase/OvRegistry.h>
#include <ovbase/OvStoredGeometry.h>

#include <optional>

class tst_KyWebViewBrowser : public QObject
{
    Q_OBJECT

private slots:
    void init();
    void cleanup();

    void newWindowIsHiddenAndBlank();
    void commandsAreFollowed_data();
    void commandsAreFollowed();
    void commandsThatCannotBeFollowedAreTold_data();
    void commandsThatCannotBeFollowedAreTold();
    void severalCommandsAreFollowedInOrder();
    void showAndHide();
    void showBringsAMinimizedWindowBack();
    void isHiddenIsAnswered();
    void geometryIsTaken();
    void emptyGeometryChangesNothing();
    void hugeGeometryIsBounded();
    void titleIsThePagesUntilOneIsSet();
    void closingHidesTheWindow();
    void pageMayCloseTheWindow();
    void moveOfTheUserIsTold();
    void commandedMoveIsNotTold();
    void hidingTellsAtOnce();
    void withoutAReceiverTheWindowKeepsItsPlace();
    void storedPlaceIsTakenUpAgain();
    void withoutAReceiverErrorsAreLogged();

private:
    std::optional<OvRegistry> mRegistry;
    std::optional<TestWebViewRuntime> mRuntime;
    std::optional<KyWebViewBrowser> mBrowser;
    QStringList mMessages;
};

void tst_KyWebViewBrowser::init()
{
    mRegistry.emplace(nullptr);
    mRuntime.emplace();
    mBrowser.emplace(nullptr, "OrvaneBrowser.x");
    mMessages.clear();
    mBrowser->setReceiver([this](const QString& message) { mMessages.append(message); });
}

void tst_KyWebViewBrowser::cleanup()
{
    mBrowser.reset();
    mRuntime.reset();
    mRegistry.reset();
}

void tst_KyWebViewBrowser::newWindowIsHiddenAndBlank()
{
    QVERIFY(!mBrowser->isVisible());
    QVERIFY(mBrowser->isWindow());
    QCOMPARE(mBrowser->size(), QSize(500, 500));
    QCOMPARE(mBrowser->windowTitle(), QString());
    QCOMPARE(mRuntime->profiles, QStringList("OrvaneBrowser.x"));
    QCOMPARE(mRuntime->last->calls, QStringList());
    QCOMPARE(mMessages, QStringList());
}

void tst_KyWebViewBrowser::commandsAreFollowed_data()
{
    QTest::addColumn<QString>("command");
    QTest::addColumn<QStringList>("calls");
    QTest::newRow("URL") << "URL http://host/a b" << QStringList("load http://host/a b");
    QTest::newRow("URL of a host") << "URL www.host.org" << QStringList("load http://www.host.org");
    QTest::newRow("BACK") << "BACK" << QStringList("back");
    QTest::newRow("FORWARD") << "FORWARD" << QStringList("forward");
    QTest::newRow("RELOAD") << "RELOAD" << QStringList("reload");
    QTest::newRow("STOP") << "STOP" << QStringList("stop");
    QTest::newRow("ZOOM") << "ZOOM 150" << QStringList("zoom 1.5");
    QTest::newRow("least ZOOM") << "ZOOM 25" << QStringList("zoom 0.25");
    QTest::newRow("most ZOOM") << "ZOOM 500" << QStringList("zoom 5");
    QTest::newRow("nothing") << "" << QStringList();
    QTest::newRow("SHOW") << "SHOW" << QStringList();
    QTest::newRow("HIDE") << "HIDE" << QStringList();
    QTest::newRow("TITLE") << "TITLE x" << QStringList();
    QTest::newRow("GEOMETRY") << "GEOMETRY 1 2 30 40" << QStringList();
}

void tst_KyWebViewBrowser::commandsAreFollowed()
{
    QFETCH(QString, command);
    mBrowser->receiveCommand(command);
    QTEST(mRuntime->last->calls, "calls");
    QCOMPARE(mMessages, QStringList());
}

void tst_KyWebViewBrowser::commandsThatCannotBeFollowedAreTold_data()
{
    QTest::addColumn<QString>("command");
    for (const char* command :
         {"bad command here", "show", "SHOWN", "URL", "URL http://", "ZOOM", "ZOOM x", "ZOOM 24", "ZOOM 501",
          "GEOMETRY", "GEOMETRY 1 2 3", "GEOMETRY 1 2 3 4 5", "GEOMETRY a b c d"})
        QTest::newRow(command) << command;
}

void tst_KyWebViewBrowser::commandsThatCannotBeFollowedAreTold()
{
    QFETCH(QString, command);
    const QRect before = mBrowser->geometry();
    mBrowser->receiveCommand(command);
    QCOMPARE(mMessages, QStringList("ERROR " + command));
    QCOMPARE(mRuntime->last->calls, QStringList());
    QCOMPARE(mBrowser->geometry(), before);
    QVERIFY(!mBrowser->isVisible());
}

void tst_KyWebViewBrowser::severalCommandsAreFollowedInOrder()
{
    mBrowser->receiveCommand("URL http://a/; x ;BACK;;SHOW;ISHIDDEN;");
    QCOMPARE(mRuntime->last->calls, QStringList({"load http://a/", "back"}));
    QCOMPARE(mMessages, QStringList({"ERROR x", "ISHIDDEN 0"}));
    QVERIFY(mBrowser->isVisible());
}

void tst_KyWebViewBrowser::showAndHide()
{
    for (int i = 0; i < 2; ++i) {
        mBrowser->receiveCommand("SHOW");
        QVERIFY(mBrowser->isVisible());
        QVERIFY(QTest::qWaitForWindowActive(&*mBrowser));
        mBrowser->receiveCommand("HIDE");
        QVERIFY(!mBrowser->isVisible());
    }
}

void tst_KyWebViewBrowser::showBringsAMinimizedWindowBack()
{
    mBrowser->showMinimized();
    mBrowser->receiveCommand("SHOW");
    QVERIFY(!mBrowser->isMinimized());
    QVERIFY(mBrowser->isVisible());
}

void tst_KyWebViewBrowser::isHiddenIsAnswered()
{
    mBrowser->receiveCommand("ISHIDDEN");
    mBrowser->receiveCommand("SHOW;ISHIDDEN");
    mBrowser->receiveCommand("HIDE;ISHIDDEN");
    QCOMPARE(mMessages, QStringList({"ISHIDDEN 1", "ISHIDDEN 0", "ISHIDDEN 1"}));
}

void tst_KyWebViewBrowser::geometryIsTaken()
{
    mBrowser->receiveCommand("GEOMETRY 30 40 429 539;SHOW");
    QCOMPARE(mBrowser->geometry(), QRect(40, 30, 500, 400));
    mBrowser->receiveCommand("GEOMETRY 50 60 449 559");
    QCOMPARE(mBrowser->geometry(), QRect(60, 50, 500, 400));
}

void tst_KyWebViewBrowser::emptyGeometryChangesNothing()
{
    const QRect before = mBrowser->geometry();
    mBrowser->receiveCommand("GEOMETRY 0 0 -1 -1;GEOMETRY 50 50 10 10");
    QCOMPARE(mBrowser->geometry(), before);
    QCOMPARE(mMessages, QStringList());
}

void tst_KyWebViewBrowser::hugeGeometryIsBounded()
{
    mBrowser->receiveCommand("GEOMETRY -2147483648 -2147483648 2147483647 2147483647");
    QCOMPARE(mBrowser->size(), QSize(KyWebViewBrowser::LargestSize, KyWebViewBrowser::LargestSize));
}

void tst_KyWebViewBrowser::titleIsThePagesUntilOneIsSet()
{
    mRuntime->last->name = "First page";
    emit mRuntime->last->pageChanged();
    QCOMPARE(mBrowser->windowTitle(), QString("First page"));
    mRuntime->last->name = "Second page";
    emit mRuntime->last->pageChanged();
    QCOMPARE(mBrowser->windowTitle(), QString("Second page"));
    mBrowser->receiveCommand("TITLE Mine  and yours");
    emit mRuntime->last->pageChanged();
    QCOMPARE(mBrowser->windowTitle(), QString("Mine  and yours"));
    mBrowser->receiveCommand("TITLE");
    QCOMPARE(mBrowser->windowTitle(), QString("Second page"));
    mBrowser->setWindowTitle("Set by the owner");
    emit mRuntime->last->pageChanged();
    QCOMPARE(mBrowser->windowTitle(), QString("Set by the owner"));
}

void tst_KyWebViewBrowser::closingHidesTheWindow()
{
    mBrowser->receiveCommand("SHOW");
    QVERIFY(mBrowser->close());
    QVERIFY(!mBrowser->isVisible());
    QVERIFY(!mBrowser->testAttribute(Qt::WA_DeleteOnClose));
    mBrowser->receiveCommand("SHOW");
    QVERIFY(mBrowser->isVisible());
}

void tst_KyWebViewBrowser::pageMayCloseTheWindow()
{
    mBrowser->receiveCommand("SHOW");
    emit mRuntime->last->closeWanted();
    QVERIFY(!mBrowser->isVisible());
}

void tst_KyWebViewBrowser::moveOfTheUserIsTold()
{
    mBrowser->receiveCommand("GEOMETRY 30 40 429 539;SHOW");
    mBrowser->move(70, 80);
    mBrowser->move(71, 81);
    const QRect moved = mBrowser->geometry();
    QTRY_COMPARE(mMessages.size(), 1);
    QCOMPARE(mMessages.at(0), QString("GEOMETRY %1 %2 %3 %4")
                                  .arg(moved.top())
                                  .arg(moved.left())
                                  .arg(moved.bottom())
                                  .arg(moved.right()));
    mBrowser->resize(610, 420);
    QTRY_COMPARE(mMessages.size(), 2);
}

void tst_KyWebViewBrowser::commandedMoveIsNotTold()
{
    mBrowser->receiveCommand("GEOMETRY 30 40 429 539;SHOW");
    mBrowser->receiveCommand("GEOMETRY 31 41 439 549");
    mBrowser->receiveCommand("HIDE");
    QCOMPARE(mMessages, QStringList());
}

void tst_KyWebViewBrowser::hidingTellsAtOnce()
{
    mBrowser->receiveCommand("GEOMETRY 30 40 429 539;SHOW");
    mBrowser->resize(300, 200);
    mBrowser->close();
    QCOMPARE(mMessages, QStringList("GEOMETRY 30 40 229 339"));
}

void tst_KyWebViewBrowser::withoutAReceiverTheWindowKeepsItsPlace()
{
    mBrowser->setReceiver(KyWebViewBrowser::Receiver());
    mBrowser->receiveCommand("SHOW");
    mBrowser->setGeometry(33, 44, 555, 444);
    mBrowser->receiveCommand("HIDE");
    QCOMPARE(OvStoredGeometry::read("OrvaneBrowser.x.Geometry"), QRect(33, 44, 555, 444));
}

void tst_KyWebViewBrowser::storedPlaceIsTakenUpAgain()
{
    OvStoredGeometry::write(QRect(33, 44, 555, 444), "OrvaneBrowser.y.Geometry");
    const KyWebViewBrowser browser(nullptr, "OrvaneBrowser.y");
    QCOMPARE(browser.geometry(), QRect(33, 44, 555, 444));
}

void tst_KyWebViewBrowser::withoutAReceiverErrorsAreLogged()
{
    mBrowser->setReceiver(KyWebViewBrowser::Receiver());
    LogCapture log;
    mBrowser->receiveCommand("bad command here;ISHIDDEN");
    QCOMPARE(log.take(), QStringList("3|BrowseCtrl|Browser returned invalid command: 'bad command here'"));
}

KY_TEST_MAIN(tst_KyWebViewBrowser)
#include "tst_KyWebViewBrowser.moc"
