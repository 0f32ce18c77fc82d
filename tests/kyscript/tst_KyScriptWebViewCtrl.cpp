#include <support/ContractWatch.h>
#include <support/KyTest.h>
#include <support/KyTestPlatform.h>
#include <support/LogCapture.h>

#include <kyscript/KyScriptWebViewCtrl.h>

#include <kybase/KyGUISizeManager.h>
#include <kywebview/KyWebView.h>
#include <kywebview/KyWebViewBrowser.h>
#include <kywebview/KyWebViewRuntime.h>
#include <kywebview/KyWebViewWidget.h>

#include <QApplication>
#include <QPointer>
#include <QTest>

class tst_KyScriptWebViewCtrl : public QObject
{
    Q_OBJECT

private slots:
    void init();
    void cleanup();

    void freshObjectHasNoWindow();
    void firstCommandMakesTheWindow();
    void nameGivesSettingsAndTitle_data();
    void nameGivesSettingsAndTitle();
    void commandsReachTheWindow();
    void setSizeBeforeTheFirstCommandHasNoEffect();
    void setSizeResizesTheWindow();
    void isHiddenFollowsTheWindow();
    void userMayCloseTheWindow();
    void nextCommandMakesANewWindow();
    void destructorEndsTheWindow();
    void destructorSurvivesTheEndOfTheWindow();
    void isInstalledAsksForTheRuntime();
    void controlsHaveWindowsOfTheirOwn();

private:
    std::unique_ptr<KyTestPlatform> mPlatform;
    std::unique_ptr<ContractWatch> mContracts;
};

namespace {

QList<KyWebViewBrowser*> windows()
{
    QList<KyWebViewBrowser*> found;
    for (QWidget* window : QApplication::topLevelWidgets()) {
        if (auto* browser = qobject_cast<KyWebViewBrowser*>(window))
            found.append(browser);
    }
    return found;
}

class Runtime final : public KyWebViewRuntime
{
public:
    QString version() const override { return "1.2"; }
    KyWebView* makeView(const QString&, QWidget*) override { return nullptr; }
};

} // namespace

void tst_KyScriptWebViewCtrl::init()
{
    mPlatform = std::make_unique<KyTestPlatform>();
    mContracts = std::make_unique<ContractWatch>();
}

void tst_KyScriptWebViewCtrl::cleanup()
{
    QCOMPARE(windows().size(), 0);
    mContracts.reset();
    mPlatform.reset();
}

void tst_KyScriptWebViewCtrl::freshObjectHasNoWindow()
{
    LogCapture log;
    const KyScriptWebViewCtrl browser("x");
    QVERIFY(!browser.isRunning());
    QVERIFY(browser.isHidden());
    QCOMPARE(windows().size(), 0);
    QCOMPARE(log.take(), QStringList());
}

void tst_KyScriptWebViewCtrl::firstCommandMakesTheWindow()
{
    KyScriptWebViewCtrl browser("x");
    browser.sendCommand("HIDE");
    QVERIFY(browser.isRunning());
    QVERIFY(browser.isHidden());
    QCOMPARE(windows().size(), 1);
    QCOMPARE(windows().at(0)->parentWidget(), nullptr);
    browser.sendCommand("SHOW");
    QVERIFY(!browser.isHidden());
    QCOMPARE(windows().size(), 1);
}

void tst_KyScriptWebViewCtrl::nameGivesSettingsAndTitle_data()
{
    QTest::addColumn<QString>("name");
    QTest::addColumn<QString>("key");
    QTest::newRow("empty") << ""
                           << "OrvaneBrowser.Default.Geometry";
    QTest::newRow("given") << "Help"
                           << "OrvaneBrowser.Help.Geometry";
}

void tst_KyScriptWebViewCtrl::nameGivesSettingsAndTitle()
{
    QFETCH(QString, name);
    QFETCH(QString, key);
    KyGUISizeManager::storeWidgetGeometry(QRect(30, 40, 321, 234), key);
    KyScriptWebViewCtrl browser(name);
    browser.sendCommand("HIDE");
    QCOMPARE(windows().at(0)->windowTitle(), name);
    QCOMPARE(windows().at(0)->geometry(), QRect(30, 40, 321, 234));
}

void tst_KyScriptWebViewCtrl::commandsReachTheWindow()
{
    LogCapture log;
    KyScriptWebViewCtrl browser("x");
    browser.sendCommand("URL http://host/a;URL http://host/b");
    KyWebViewWidget& page = windows().at(0)->page();
    QCOMPARE(page.view().url(), QUrl("http://host/b"));
    QVERIFY(page.view().canGoBack());
    browser.sendCommand("bad command here");
    QCOMPARE(log.take(), QStringList("3|BrowseCtrl|Browser returned invalid command: 'bad command here'"));
}

void tst_KyScriptWebViewCtrl::setSizeBeforeTheFirstCommandHasNoEffect()
{
    KyScriptWebViewCtrl browser("x");
    browser.setSize(333, 222);
    browser.sendCommand("SHOW");
    QCOMPARE(windows().at(0)->size(), QSize(500, 500));
}

void tst_KyScriptWebViewCtrl::setSizeResizesTheWindow()
{
    KyScriptWebViewCtrl browser("x");
    browser.sendCommand("SHOW");
    browser.setSize(433, 322);
    QCOMPARE(windows().at(0)->size(), QSize(433, 322));
    browser.setSize(INT_MAX, INT_MAX);
    QCOMPARE(windows().at(0)->size(), QSize(KyWebViewBrowser::LargestSize, KyWebViewBrowser::LargestSize));
    browser.setSize(INT_MIN, -1);
    QVERIFY(!windows().at(0)->size().isEmpty());
}

void tst_KyScriptWebViewCtrl::isHiddenFollowsTheWindow()
{
    KyScriptWebViewCtrl browser("x");
    browser.sendCommand("SHOW");
    QVERIFY(!browser.isHidden());
    windows().at(0)->hide();
    QVERIFY(browser.isHidden());
    QVERIFY(browser.isRunning());
}

void tst_KyScriptWebViewCtrl::userMayCloseTheWindow()
{
    KyScriptWebViewCtrl browser("x");
    browser.sendCommand("URL http://host/a;SHOW");
    windows().at(0)->close();
    QVERIFY(browser.isHidden());
    browser.sendCommand("SHOW");
    QVERIFY(!browser.isHidden());
    QCOMPARE(windows().at(0)->page().view().url(), QUrl("http://host/a"));
}

void tst_KyScriptWebViewCtrl::nextCommandMakesANewWindow()
{
    KyScriptWebViewCtrl browser("x");
    browser.sendCommand("SHOW");
    delete windows().at(0);
    QVERIFY(!browser.isRunning());
    QVERIFY(browser.isHidden());
    browser.setSize(333, 222);
    browser.sendCommand("SHOW");
    QVERIFY(browser.isRunning());
    QCOMPARE(windows().at(0)->windowTitle(), QString("x"));
}

void tst_KyScriptWebViewCtrl::destructorEndsTheWindow()
{
    auto browser = std::make_unique<KyScriptWebViewCtrl>("x");
    browser->sendCommand("SHOW");
    const QPointer<KyWebViewBrowser> window = windows().at(0);
    browser.reset();
    QVERIFY(!window);
}

void tst_KyScriptWebViewCtrl::destructorSurvivesTheEndOfTheWindow()
{
    auto browser = std::make_unique<KyScriptWebViewCtrl>("x");
    browser->sendCommand("SHOW");
    delete windows().at(0);
    browser.reset();
}

void tst_KyScriptWebViewCtrl::isInstalledAsksForTheRuntime()
{
    const KyScriptWebViewCtrl browser("x");
    QVERIFY(!browser.isInstalled());
    {
        const Runtime runtime;
        QVERIFY(browser.isInstalled());
    }
    QVERIFY(!browser.isInstalled());
}

void tst_KyScriptWebViewCtrl::controlsHaveWindowsOfTheirOwn()
{
    KyScriptWebViewCtrl first("a");
    KyScriptWebViewCtrl second("a");
    first.sendCommand("SHOW");
    second.sendCommand("SHOW");
    QCOMPARE(windows().size(), 2);
    first.sendCommand("HIDE");
    QVERIFY(first.isHidden());
    QVERIFY(!second.isHidden());
}

KY_TEST_MAIN(tst_KyScriptWebViewCtrl)
#include "tst_KyScriptWebViewCtrl.moc"
