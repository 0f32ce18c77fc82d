#include <support/BrowserPeer.h>
#include <support/ContractWatch.h>
#include <support/KyTest.h>
#include <support/KyTestPlatform.h>
#include <support/LogCapture.h>
#include <support/ModalAnswer.h>

#include <kyscript/KyScriptOvBrowserCtrl.h>

#include <jxbase/JxMainWindow.h>
#include <jxbase/JxMessageBox.h>
#include <kybase/KyGUISizeManager.h>

#include <QDir>
#include <QElapsedTimer>
#include <QFile>
#include <QRegularExpression>
#include <QTest>
#include <QThread>

#include <csignal>
#include <memory>

class tst_KyScriptOvBrowserCtrl : public QObject
{
    Q_OBJECT

private slots:
    void init();
    void cleanup();

    // construction
    void nameGivesTheSettings_data();
    void nameGivesTheSettings();
    void firstSizeStandsInTheMiddleOfTheMainWindow();
    void withoutAMainWindowAnEmptyRectangleIsStored();
    void mainWindowThatHasGoneCountsAsNone();
    void withoutMonitorsTheRectangleIsEmpty();
    void storedGeometryStays();
    void programIsLookedForInItsPlaces_data();
    void programIsLookedForInItsPlaces();
    void programBesideTheApplicationIsTheLastChoice();
    void freshObjectRunsNothing();

    // setSize
    void setSizeKeepsTheStoredPlace_data();
    void setSizeKeepsTheStoredPlace();
    void setSizeBeforeTheStartOnlyStores();
    void setSizeTellsTheBrowser();
    void setSizeDoesNotFlush();

    // setInstallationDirectory
    void installationDirectoryGivesTheProgram();
    void programWithoutASuffixIsTakenWhereOnlyThatIsThere();

    // starting
    void startTellsOfItselfAndOfTheGeometry();
    void argumentsOfTheBrowserComeFirst();
    void anyCommandStartsTheBrowser();
    void missingProgramIsToldForShowAlone_data();
    void missingProgramIsToldForShowAlone();
    void boxIsAWarningWithOk();
    void pipeThatCannotBeCreatedIsTold();
    void programThatCannotBeExecutedIsTold();
    void programThatNeverConnectsIsToldAndLeftRunning();
    void programThatFailsBeforeItConnectsIsNotWaitedFor();
    void programThatLeavesTheConnectionToAnotherIsServed();
    void objectMayEndWhileTheBoxIsShown();
    void onlyTheUserMayConnect();
    void secondConnectionIsLeftAlone();

    // commands
    void commandsArriveByteForByte();
    void commandsAreUtf8();
    void manyCommandsArriveWhole();
    void browserThatReadsNothingBlocksNothing();

    // isHidden
    void isHiddenIsWhatTheBrowserAnswers_data();
    void isHiddenIsWhatTheBrowserAnswers();
    void isHiddenAsksTheBrowser();
    void isHiddenWaitsForOneSecond();
    void isHiddenStartsNothing();

    // messages
    void messageIsFollowed_data();
    void messageIsFollowed();
    void halfAMessageIsIgnored();
    void megabytesAreHarmless();

    // the end of the process
    void nextCommandStartsABrowserThatHasEnded_data();
    void nextCommandStartsABrowserThatHasEnded();
    void endIsNoticedWithoutEvents();
    void browserThatConnectsAndEndsIsStartedAgain();
    void connectionOfAnEarlierStartIsNotTaken();
    void closedPipeDropsCommands();

    // destruction
    void destructorEndsTheBrowser_data();
    void destructorEndsTheBrowser();
    void nothingIsLeftOfTwentyBrowsers();

private:
    std::unique_ptr<KyScriptOvBrowserCtrl> control(const QStringList& inOptions = QStringList(),
                                                   const QString& inName = QString()) const;
    QByteArray received(const QByteArray& inEnd) const;

    std::unique_ptr<KyTestPlatform> mPlatform;
    std::unique_ptr<ContractWatch> mContracts;
    std::unique_ptr<BrowserPeer> mPeer;
};

namespace {

constexpr const char* DefaultKey = "OrvaneBrowser.Default.Geometry";
constexpr const char* NoGeometry = "GEOMETRY 0 0 -1 -1;";

QRect stored(const QString& inKey = DefaultKey)
{
    return KyGUISizeManager::storedWidgetGeometry(inKey);
}

bool isStored(const QString& inKey)
{
    OvRegistry::Value value;
    return OvRegistry::getInstance()->getProperty("GUI.Geometry." + inKey, value);
}

QString without(const QString& inText, const QString& inPart)
{
    return QString(inText).remove(inPart);
}

/// The name of the pipe that the last start got.
QString pipeOf(const BrowserPeer& inPeer)
{
    const QStringList names = inPeer.starts().constLast().filter(QRegularExpression("^--named-pipe="));
    return names.isEmpty() ? QString() : without(names.last(), "--named-pipe=");
}

void makeFile(const QString& inPath)
{
    QDir().mkpath(QFileInfo(inPath).path());
    QFile file(inPath);
    QVERIFY(file.open(QIODevice::WriteOnly));
}

/// A variable of the environment for a while.
class Variable
{
public:
    Variable(const char* inName, const QByteArray& inValue)
        : mName(inName)
        , mValue(qgetenv(inName))
    {
        inValue.isNull() ? qunsetenv(inName) : qputenv(inName, inValue);
    }
    ~Variable() { mValue.isNull() ? qunsetenv(mName) : qputenv(mName, mValue); }
    Variable(const Variable&) = delete;
    Variable& operator=(const Variable&) = delete;

private:
    const char* const mName;
    const QByteArray mValue;
};

} // namespace

void tst_KyScriptOvBrowserCtrl::init()
{
    mPlatform = std::make_unique<KyTestPlatform>();
    mContracts = std::make_unique<ContractWatch>();
    mPeer = std::make_unique<BrowserPeer>();
}

void tst_KyScriptOvBrowserCtrl::cleanup()
{
    for (const qint64 id : mPeer->ids()) {
        QTRY_VERIFY_WITH_TIMEOUT(!BrowserPeer::isAlive(id), 30000);
    }
    QCOMPARE(mPeer->sockets(), QStringList());
    mPeer.reset();
    mContracts.reset();
    mPlatform.reset();
}

std::unique_ptr<KyScriptOvBrowserCtrl> tst_KyScriptOvBrowserCtrl::control(const QStringList& inOptions,
                                                                          const QString& inName) const
{
    auto made = std::make_unique<KyScriptOvBrowserCtrl>(inName);
    made->setInstallationDirectory(mPeer->folder());
    made->setBrowserCmdArgs(mPeer->arguments(inOptions));
    return made;
}

/// What has come when it ends like that.
QByteArray tst_KyScriptOvBrowserCtrl::received(const QByteArray& inEnd) const
{
    if (!QTest::qWaitFor([&] { return mPeer->received().endsWith(inEnd); }, 30000))
        qWarning("no %s at the end", inEnd.constData());
    return mPeer->received();
}

void tst_KyScriptOvBrowserCtrl::nameGivesTheSettings_data()
{
    QTest::addColumn<QString>("name");
    QTest::addColumn<QString>("settings");
    QTest::newRow("empty") << ""
                           << "OrvaneBrowser.Default";
    QTest::newRow("given") << "Help"
                           << "OrvaneBrowser.Help";
    QTest::newRow("with blanks") << "My Help"
                                 << "OrvaneBrowser.My Help";
    QTest::newRow("beyond Latin-1") << QString::fromUtf8("帮助") << QString::fromUtf8("OrvaneBrowser.帮助");
    QTest::newRow("with a per cent sign") << "%1"
                                          << "OrvaneBrowser.%1";
}

void tst_KyScriptOvBrowserCtrl::nameGivesTheSettings()
{
    QFETCH(QString, name);
    QFETCH(QString, settings);
    const auto browser = control({}, name);
    QVERIFY(isStored(settings + ".Geometry"));
    browser->sendCommand("SHOW");
    QCOMPARE(mPeer->starts().at(0).last(), "--user-data-dir=ovbrowser-" + settings);
}

void tst_KyScriptOvBrowserCtrl::firstSizeStandsInTheMiddleOfTheMainWindow()
{
    JxMainWindow window;
    window.setGeometry(100, 80, 701, 603);
    window.show();
    mPlatform->monitors.content("View")->addMainWindow(&window);
    const QPoint place = window.mapToGlobal(window.pos());
    const KyScriptOvBrowserCtrl browser{QString()};
    QCOMPARE(stored(), QRect(place.x() + 350 - 250, place.y() + 301 - 250, 500, 500));
}

void tst_KyScriptOvBrowserCtrl::withoutAMainWindowAnEmptyRectangleIsStored()
{
    JxMainWindow other;
    mPlatform->monitors.content("Worklist")->addMainWindow(&other);
    const KyScriptOvBrowserCtrl browser{QString()};
    QVERIFY(isStored(DefaultKey));
    QVERIFY(stored().isEmpty());
}

void tst_KyScriptOvBrowserCtrl::mainWindowThatHasGoneCountsAsNone()
{
    JxMainWindow second;
    {
        JxMainWindow first;
        mPlatform->monitors.content("View")->addMainWindow(&first);
        mPlatform->monitors.content("View")->addMainWindow(&second);
    }
    const KyScriptOvBrowserCtrl browser{QString()};
    QVERIFY(isStored(DefaultKey));
    QVERIFY(stored().isEmpty());
}

void tst_KyScriptOvBrowserCtrl::withoutMonitorsTheRectangleIsEmpty()
{
    mPlatform.reset();
    {
        OvRegistry registry(nullptr);
        const KyScriptOvBrowserCtrl browser{QString()};
        QVERIFY(isStored(DefaultKey));
        QVERIFY(stored().isEmpty());
    }
    const KyScriptOvBrowserCtrl withoutARegistry{QString()};
    QVERIFY(stored().isEmpty());
}

void tst_KyScriptOvBrowserCtrl::storedGeometryStays()
{
    KyGUISizeManager::storeWidgetGeometry(QRect(1, 2, 30, 40), DefaultKey);
    const KyScriptOvBrowserCtrl browser{QString()};
    QCOMPARE(stored(), QRect(1, 2, 30, 40));
}

void tst_KyScriptOvBrowserCtrl::programIsLookedForInItsPlaces_data()
{
    QTest::addColumn<QString>("file"); // of the user, below the folder of data
    QTest::addColumn<bool>("hasProgramFiles");
    QTest::addColumn<QString>("expected");
    const QString first = "%1/Ky/Orvane Browser 2/ovbrowser.exe";
    const QString second = "C:/Programs/Orvane Imaging/Orvane Browser/ovbrowser.exe";
    QTest::newRow("nothing is there") << "" << false << first;
    QTest::newRow("the user's") << "Ky/Orvane Browser 2/ovbrowser.exe" << true << first;
    QTest::newRow("the user's, without a suffix")
        << "Ky/Orvane Browser 2/ovbrowser" << true << "%1/Ky/Orvane Browser 2/ovbrowser";
    QTest::newRow("folder of programs") << "" << true << second;
    QTest::newRow("name in another case") << "Ky/orvane browser 2/ovbrowser.exe" << true << second;
}

void tst_KyScriptOvBrowserCtrl::programIsLookedForInItsPlaces()
{
    QFETCH(QString, file);
    QFETCH(bool, hasProgramFiles);
    QFETCH(QString, expected);
    const QString data = mPeer->file("data");
    const Variable dataHome("XDG_DATA_HOME", data.toUtf8());
    const Variable programFiles("PROGRAMFILES", hasProgramFiles ? QByteArray("C:\\Programs") : QByteArray());
    if (!file.isEmpty())
        makeFile(data + '/' + file);
    const QString name = QCoreApplication::applicationName();
    QCoreApplication::setApplicationName("Orvane Client 2");
    KyScriptOvBrowserCtrl browser{QString()};
    QCoreApplication::setApplicationName(name);
    if (QFile::exists(QCoreApplication::applicationDirPath() + "/ovbrowser") && file.isEmpty() &&
        !hasProgramFiles)
        QSKIP("there is a program beside this one");

    if (expected.contains("%1"))
        expected = expected.arg(data);
    QCOMPARE(browser.isInstalled(), QFile::exists(expected));
    QFile::remove(expected);
    const ModalAnswer answer([&](QWidget* box) {
        QCOMPARE(qobject_cast<QMessageBox*>(box)->text(), "Could not start Browser: " + expected);
        box->close();
    });
    browser.sendCommand("SHOW");
    QVERIFY(answer.happened());
}

void tst_KyScriptOvBrowserCtrl::programBesideTheApplicationIsTheLastChoice()
{
    const Variable dataHome("XDG_DATA_HOME", mPeer->file("data").toUtf8());
    const Variable programFiles("PROGRAMFILES", QByteArray());
    const QString program = QCoreApplication::applicationDirPath() + "/ovbrowser.exe";
    QVERIFY(!QFile::exists(program));
    QVERIFY(QFile::link(mPeer->program(), program));
    KyScriptOvBrowserCtrl browser{QString()};
    browser.setBrowserCmdArgs(mPeer->arguments());
    browser.sendCommand("SHOW");
    QFile::remove(program);
    QVERIFY(browser.isRunning());
    QVERIFY(received("SHOW;").endsWith("SHOW;"));
}

void tst_KyScriptOvBrowserCtrl::freshObjectRunsNothing()
{
    LogCapture log;
    const auto browser = control();
    QVERIFY(!browser->isRunning());
    QVERIFY(browser->isHidden());
    QVERIFY(browser->isInstalled());
    QCOMPARE(log.take(), QStringList());
    QCOMPARE(mPeer->starts().size(), 0);
}

void tst_KyScriptOvBrowserCtrl::setSizeKeepsTheStoredPlace_data()
{
    QTest::addColumn<QRect>("before");
    QTest::addColumn<QSize>("size");
    QTest::addColumn<QRect>("after");
    QTest::newRow("new size") << QRect(10, 20, 300, 400) << QSize(640, 480) << QRect(10, 20, 640, 480);
    QTest::newRow("same size") << QRect(10, 20, 300, 400) << QSize(300, 400) << QRect(10, 20, 300, 400);
    QTest::newRow("left of the screen") << QRect(-90, -5, 3, 4) << QSize(7, 8) << QRect(-90, -5, 7, 8);
    QTest::newRow("one pixel") << QRect(1, 2, 3, 4) << QSize(1, 1) << QRect(1, 2, 1, 1);
    QTest::newRow("nothing") << QRect(1, 2, 3, 4) << QSize(0, 0) << QRect(1, 2, 0, 0);
    QTest::newRow("less than nothing") << QRect(1, 2, 3, 4) << QSize(-5, -6) << QRect(1, 2, -5, -6);
    constexpr int most = KyGUISizeManager::MaxEdge;
    QTest::newRow("more than any screen")
        << QRect(1, 2, 3, 4) << QSize(INT_MAX, INT_MAX) << QRect(QPoint(1, 2), QPoint(most, most));
    QTest::newRow("far below") << QRect(1, 2, 3, 4) << QSize(INT_MIN, INT_MIN)
                               << QRect(QPoint(1, 2), QPoint(-most, 1 - most));
}

void tst_KyScriptOvBrowserCtrl::setSizeKeepsTheStoredPlace()
{
    QFETCH(QRect, before);
    QFETCH(QSize, size);
    KyGUISizeManager::storeWidgetGeometry(before, DefaultKey);
    KyScriptOvBrowserCtrl browser{QString()};
    browser.setSize(size.width(), size.height());
    QTEST(stored(), "after");
}

void tst_KyScriptOvBrowserCtrl::setSizeBeforeTheStartOnlyStores()
{
    KyGUISizeManager::storeWidgetGeometry(QRect(20, 10, 1, 1), DefaultKey);
    const auto browser = control();
    browser->setSize(201, 101);
    QVERIFY(!browser->isRunning());
    browser->sendCommand("SHOW");
    QCOMPARE(received("SHOW;"), QByteArray("GEOMETRY 10 20 110 220;SHOW;"));
}

void tst_KyScriptOvBrowserCtrl::setSizeTellsTheBrowser()
{
    KyGUISizeManager::storeWidgetGeometry(QRect(20, 10, 201, 101), DefaultKey);
    const auto browser = control();
    browser->sendCommand("SHOW");
    browser->setSize(301, 401);
    QCOMPARE(stored(), QRect(20, 10, 301, 401));
    QCOMPARE(received("410 320;"), QByteArray("GEOMETRY 10 20 110 220;SHOW;GEOMETRY 10 20 410 320;"));
}

/// What is not flushed goes out with the next command, or with the next turn of the event loop.
void tst_KyScriptOvBrowserCtrl::setSizeDoesNotFlush()
{
    const auto browser = control();
    browser->sendCommand("A");
    browser->setSize(1, 1);
    // The peer looks at the pipe before it takes an order.
    QVERIFY(mPeer->order("ping"));
    QCOMPARE(mPeer->received(), NoGeometry + QByteArray("A;"));
    browser->sendCommand("B");
    QCOMPARE(received("B;"), NoGeometry + QByteArray("A;GEOMETRY 0 0 -1 -1;B;"));
    browser->setSize(1, 1);
    QVERIFY(received("-1;").endsWith("B;GEOMETRY 0 0 -1 -1;"));
}

void tst_KyScriptOvBrowserCtrl::installationDirectoryGivesTheProgram()
{
    LogCapture log;
    const auto browser = control();
    browser->setInstallationDirectory("/nowhere/%1");
    QVERIFY(!browser->isInstalled());
    QString text;
    const ModalAnswer answer([&](QWidget* box) {
        text = qobject_cast<QMessageBox*>(box)->text();
        box->close();
    });
    browser->sendCommand("SHOW");
    QCOMPARE(text, QString("Could not start Browser: /nowhere/%1/ovbrowser.exe"));
    QCOMPARE(log.take(), QStringList());
}

void tst_KyScriptOvBrowserCtrl::programWithoutASuffixIsTakenWhereOnlyThatIsThere()
{
    const auto browser = control();
    QVERIFY(QFile::rename(mPeer->program(), mPeer->file("browser/ovbrowser")));
    browser->setInstallationDirectory(mPeer->folder());
    QVERIFY(browser->isInstalled());
    browser->sendCommand("SHOW");
    QVERIFY(received("SHOW;").endsWith("SHOW;"));
}

void tst_KyScriptOvBrowserCtrl::startTellsOfItselfAndOfTheGeometry()
{
    KyGUISizeManager::storeWidgetGeometry(QRect(QPoint(20, 10), QPoint(220, 110)), DefaultKey);
    LogCapture log;
    const auto browser = control();
    browser->sendCommand("SHOW");
    QVERIFY(browser->isRunning());
    QCOMPARE(received("SHOW;"), QByteArray("GEOMETRY 10 20 110 220;SHOW;"));

    const QString pipe = pipeOf(*mPeer);
    const QRegularExpression uuid("^ovbrowser-[0-9a-f]{8}(-[0-9a-f]{4}){3}-[0-9a-f]{12}$");
    QVERIFY2(uuid.match(pipe).hasMatch(), qPrintable(pipe));
    QCOMPARE(log.take(),
             QStringList({"1|BrowseCtrl|Named pipe \\\\.\\pipe\\" + pipe + " created",
                          "1|BrowseCtrl|ovBrowser connected to named pipe \\\\.\\pipe\\" + pipe}));
    QCOMPARE(mPeer->sockets(), QStringList(pipe));

    browser->sendCommand("SHOW");
    QCOMPARE(mPeer->starts().size(), 1);
    QCOMPARE(log.take(), QStringList());
    QVERIFY(received("SHOW;SHOW;").endsWith("220;SHOW;SHOW;"));
}

void tst_KyScriptOvBrowserCtrl::argumentsOfTheBrowserComeFirst()
{
    const auto browser = control();
    browser->setBrowserCmdArgs({"dropped"});
    const QStringList given = mPeer->arguments({"--proxy=x y", "", "ü€"});
    browser->setBrowserCmdArgs(given);
    browser->sendCommand("X");
    const QStringList added{"--named-pipe=" + pipeOf(*mPeer),
                            "--user-data-dir=ovbrowser-OrvaneBrowser.Default"};
    QCOMPARE(mPeer->starts(), QList<QStringList>(1, given + added));
}

void tst_KyScriptOvBrowserCtrl::anyCommandStartsTheBrowser()
{
    const auto browser = control();
    browser->sendCommand("URL file:///nothing.html");
    QVERIFY(browser->isRunning());
    QCOMPARE(received("html;"), NoGeometry + QByteArray("URL file:///nothing.html;"));
}

void tst_KyScriptOvBrowserCtrl::missingProgramIsToldForShowAlone_data()
{
    QTest::addColumn<QString>("command");
    QTest::addColumn<bool>("isTold");
    QTest::newRow("SHOW") << "SHOW" << true;
    for (const char* command : {"show", "SHOW ", " SHOW", "SHOW;", "HIDE", "URL x", ""})
        QTest::newRow(qPrintable('"' + QString(command) + '"')) << command << false;
}

void tst_KyScriptOvBrowserCtrl::missingProgramIsToldForShowAlone()
{
    QFETCH(QString, command);
    QFETCH(bool, isTold);
    LogCapture log;
    const auto browser = control();
    browser->setInstallationDirectory("/nowhere");
    std::unique_ptr<ModalAnswer> answer;
    if (isTold)
        answer = std::make_unique<ModalAnswer>([](QWidget* box) { box->close(); });
    browser->sendCommand(command);
    if (answer)
        QVERIFY(answer->happened());
    QVERIFY(!browser->isRunning());
    QCOMPARE(log.take(), QStringList());
    QCOMPARE(mPeer->sockets(), QStringList());
}

void tst_KyScriptOvBrowserCtrl::boxIsAWarningWithOk()
{
    const auto browser = control();
    browser->setInstallationDirectory("/nowhere");
    const ModalAnswer answer([](QWidget* window) {
        auto* box = qobject_cast<JxMessageBox*>(window);
        QVERIFY(box);
        QCOMPARE(box->icon(), QMessageBox::Warning);
        QCOMPARE(box->standardButtons(), QMessageBox::Ok);
        QCOMPARE(box->informativeText(), QString());
        ModalAnswer::clicking("OK")(window);
    });
    browser->sendCommand("SHOW");
    QVERIFY(answer.happened());
}

void tst_KyScriptOvBrowserCtrl::pipeThatCannotBeCreatedIsTold()
{
    LogCapture log;
    const auto browser = control();
    const QString folder = qEnvironmentVariable("TMPDIR");
    const QString tooLong = mPeer->file(QString("x").repeated(120));
    QVERIFY(QDir().mkdir(tooLong));
    const Variable temporary("TMPDIR", tooLong.toUtf8());
    const ModalAnswer answer([&](QWidget* box) {
        QCOMPARE(qobject_cast<QMessageBox*>(box)->text(), "Could not start Browser: " + mPeer->program());
        box->close();
    });
    browser->sendCommand("SHOW");
    QVERIFY(answer.happened());
    browser->sendCommand("HIDE");
    QCOMPARE(mPeer->starts().size(), 0);
    QStringList lines = log.take();
    QCOMPARE(lines.size(), 2);
    const QRegularExpression line(
        "^3\\|BrowseCtrl\\|Failed to create named pipe \\\\\\\\\\.\\\\pipe\\\\ovbrowser-[0-9a-f-]{36}$");
    QVERIFY2(line.match(lines.at(0)).hasMatch(), qPrintable(lines.at(0)));
    QCOMPARE(lines.at(1), lines.at(0));

    // The next command tries again.
    const Variable again("TMPDIR", folder.toUtf8());
    browser->sendCommand("SHOW");
    QVERIFY(received("SHOW;").endsWith("SHOW;"));
}

void tst_KyScriptOvBrowserCtrl::programThatCannotBeExecutedIsTold()
{
    LogCapture log(2);
    const auto browser = control();
    QVERIFY(QFile::remove(mPeer->program()));
    makeFile(mPeer->program());
    browser->setBrowserCmdArgs({"--a", "b c"});
    const ModalAnswer answer([](QWidget* box) { box->close(); });
    browser->sendCommand("SHOW");
    QVERIFY(answer.happened());
    QVERIFY(!browser->isRunning());
    const QStringList lines = log.take();
    QCOMPARE(lines.size(), 2);
    const QString pipe = lines.at(1).section('\\', -1).section(' ', 0, 0);
    QCOMPARE(lines,
             QStringList(
                 {"3|BrowseCtrl|Failed to start process " + mPeer->program() +
                      " --a b c --named-pipe=" + pipe + " --user-data-dir=ovbrowser-OrvaneBrowser.Default",
                  "3|BrowseCtrl|ovBrowser did not connect to named pipe \\\\.\\pipe\\" + pipe + " in time"}));
}

void tst_KyScriptOvBrowserCtrl::programThatNeverConnectsIsToldAndLeftRunning()
{
    LogCapture log(2);
    auto browser = control({"--hold=" + mPeer->file("gate")});
    QElapsedTimer elapsed;
    elapsed.start();
    qint64 blocked = 0;
    const ModalAnswer answer([&](QWidget* box) {
        blocked = elapsed.elapsed();
        QCOMPARE(qobject_cast<QMessageBox*>(box)->text(), "Could not start Browser: " + mPeer->program());
        box->close();
    });
    browser->sendCommand("SHOW");
    QVERIFY(answer.happened());
    QVERIFY2(blocked >= 2990, QByteArray::number(blocked));
    QVERIFY(browser->isRunning());
    QTRY_COMPARE(mPeer->starts().size(), 1);
    QCOMPARE(log.take(), QStringList("3|BrowseCtrl|ovBrowser did not connect to named pipe \\\\.\\pipe\\" +
                                     pipeOf(*mPeer) + " in time"));

    // Without a connection commands are dropped without a word, and nothing more is started.
    browser->sendCommand("SHOW");
    QVERIFY(browser->isHidden());
    QVERIFY(browser->isRunning());
    QCOMPARE(mPeer->starts().size(), 1);
    QCOMPARE(log.take(), QStringList());

    // The end of the object is that of the program all the same.
    browser.reset();
    QVERIFY(!BrowserPeer::isAlive(mPeer->ids().at(0)));
}

void tst_KyScriptOvBrowserCtrl::programThatFailsBeforeItConnectsIsNotWaitedFor()
{
    LogCapture log(2);
    const auto browser = control({"--exit=1"});
    QElapsedTimer elapsed;
    elapsed.start();
    constexpr int starts = 8;
    for (int i = 0; i < starts; ++i)
        browser->sendCommand("HIDE");
    // Far from the time of so many waits, and far from what so many starts need.
    QVERIFY2(elapsed.elapsed() < starts * 3000 / 2, QByteArray::number(elapsed.elapsed()));
    QVERIFY(!browser->isRunning());
    QCOMPARE(mPeer->starts().size(), starts);
    QCOMPARE(log.take().filter("did not connect to named pipe").size(), starts);
}

void tst_KyScriptOvBrowserCtrl::programThatLeavesTheConnectionToAnotherIsServed()
{
    const auto browser = control({"--fork"});
    browser->sendCommand("FIRST");
    QCOMPARE(received("FIRST;"), NoGeometry + QByteArray("FIRST;"));
}

void tst_KyScriptOvBrowserCtrl::objectMayEndWhileTheBoxIsShown()
{
    auto browser = control();
    browser->setInstallationDirectory("/nowhere");
    const ModalAnswer answer([&](QWidget* box) {
        browser.reset();
        box->close();
    });
    KyScriptOvBrowserCtrl* const called = browser.get();
    called->sendCommand("SHOW");
    QVERIFY(answer.happened());
    QVERIFY(!browser);
}

void tst_KyScriptOvBrowserCtrl::onlyTheUserMayConnect()
{
    const auto browser = control();
    browser->sendCommand("SHOW");
    const QFileInfo pipe(QDir(qEnvironmentVariable("TMPDIR")).filePath(pipeOf(*mPeer)));
    QVERIFY(pipe.exists());
    constexpr auto others = QFileDevice::ReadGroup | QFileDevice::WriteGroup | QFileDevice::ExeGroup |
                            QFileDevice::ReadOther | QFileDevice::WriteOther | QFileDevice::ExeOther;
    QCOMPARE(int(pipe.permissions() & others), 0);
}

void tst_KyScriptOvBrowserCtrl::secondConnectionIsLeftAlone()
{
    const auto browser = control({"--twice", "--answer=ISHIDDEN 0"});
    browser->sendCommand("SHOW");
    QVERIFY(!browser->isHidden());
    QCOMPARE(received("ISHIDDEN;"), NoGeometry + QByteArray("SHOW;ISHIDDEN;"));
    QVERIFY(mPeer->order("exit 0"));
    QTRY_VERIFY(!browser->isRunning());
    QVERIFY(browser->isHidden());
    browser->sendCommand("AGAIN");
    QVERIFY(received("AGAIN;").endsWith(NoGeometry + QByteArray("AGAIN;")));
}

void tst_KyScriptOvBrowserCtrl::commandsArriveByteForByte()
{
    const auto browser = control();
    browser->sendCommand("SHOW");
    for (const char* command :
         {"HIDE", "", ";", "two;commands", "ISHIDDEN", "anything at all\n\t %1 %2", "SHOW"})
        browser->sendCommand(command);
    QCOMPARE(received("SHOW;"), NoGeometry + QByteArray("SHOW;HIDE;;;;two;commands;ISHIDDEN;"
                                                        "anything at all\n\t %1 %2;SHOW;"));
}

void tst_KyScriptOvBrowserCtrl::commandsAreUtf8()
{
    const auto browser = control();
    browser->sendCommand(QString::fromUtf8("URL ä€😀"));
    QCOMPARE(received("\x80;"), NoGeometry + QByteArray("URL \xc3\xa4\xe2\x82\xac\xf0\x9f\x98\x80;"));
}

void tst_KyScriptOvBrowserCtrl::manyCommandsArriveWhole()
{
    constexpr int count = 10000;
    const auto browser = control();
    QByteArray expected = NoGeometry;
    for (int i = 0; i < count; ++i) {
        const QString command = QString("URL http://host/%1").arg(i);
        browser->sendCommand(command);
        expected += command.toLatin1() + ';';
    }
    QCOMPARE(received(QByteArray::number(count - 1) + ';').size(), expected.size());
    QVERIFY(mPeer->received() == expected);
}

void tst_KyScriptOvBrowserCtrl::browserThatReadsNothingBlocksNothing()
{
    const auto browser = control({"--deaf"});
    const QString command(1000, 'x');
    for (int i = 0; i < 10000; ++i)
        browser->sendCommand(command);
    QVERIFY(browser->isRunning());
    QCOMPARE(mPeer->received(), QByteArray());
}

void tst_KyScriptOvBrowserCtrl::isHiddenIsWhatTheBrowserAnswers_data()
{
    QTest::addColumn<QString>("answer");
    QTest::addColumn<bool>("isHidden");
    QTest::newRow("1") << "ISHIDDEN 1" << true;
    QTest::newRow("0") << "ISHIDDEN 0" << false;
    QTest::newRow("another number") << "ISHIDDEN -7" << true;
    QTest::newRow("with the end of a command") << "ISHIDDEN 1;" << false;
    QTest::newRow("no number") << "ISHIDDEN x" << false;
    QTest::newRow("nothing behind the blank") << "ISHIDDEN " << false;
    QTest::newRow("beyond all numbers") << "ISHIDDEN 99999999999" << false;
    QTest::newRow("no token") << "ISHIDDEN" << true;
    QTest::newRow("two tokens") << "ISHIDDEN 0 0" << true;
    QTest::newRow("two blanks") << "ISHIDDEN  0" << true;
    QTest::newRow("small letters") << "ishidden 0" << true;
    QTest::newRow("behind another message") << "GEOMETRY 1 2 3 4ISHIDDEN 0" << true;
    QTest::newRow("in front of another message") << "ISHIDDEN 0GEOMETRY 1 2 3 4" << true;
    QTest::newRow("another message") << "HIDDEN 0" << true;
}

void tst_KyScriptOvBrowserCtrl::isHiddenIsWhatTheBrowserAnswers()
{
    QFETCH(QString, answer);
    const auto browser = control({"--answer=" + answer});
    browser->sendCommand("SHOW");
    QTEST(browser->isHidden(), "isHidden");
}

void tst_KyScriptOvBrowserCtrl::isHiddenAsksTheBrowser()
{
    const auto browser = control({"--answer=ISHIDDEN 0"});
    browser->sendCommand("SHOW");
    QVERIFY(!browser->isHidden());
    QVERIFY(!browser->isHidden());
    QCOMPARE(mPeer->received(), NoGeometry + QByteArray("SHOW;ISHIDDEN;ISHIDDEN;"));
}

void tst_KyScriptOvBrowserCtrl::isHiddenWaitsForOneSecond()
{
    const auto browser = control();
    browser->sendCommand("SHOW");
    QVERIFY(mPeer->send("ISHIDDEN 0"));
    QElapsedTimer elapsed;
    elapsed.start();
    QVERIFY(browser->isHidden());
    QVERIFY2(elapsed.elapsed() >= 990, QByteArray::number(elapsed.elapsed()));
}

void tst_KyScriptOvBrowserCtrl::isHiddenStartsNothing()
{
    const auto browser = control();
    QVERIFY(browser->isHidden());
    QVERIFY(!browser->isRunning());
    QCOMPARE(mPeer->starts().size(), 0);
}

void tst_KyScriptOvBrowserCtrl::messageIsFollowed_data()
{
    QTest::addColumn<QString>("message");
    QTest::addColumn<QRect>("geometry");
    QTest::addColumn<QStringList>("lines");
    const QRect before(1, 2, 3, 4);
    const auto row = [](const char* inName, const char* inMessage, const QRect& inGeometry,
                        const QStringList& inLines = QStringList()) {
        QTest::newRow(inName) << inMessage << inGeometry << inLines;
    };
    row("geometry", "GEOMETRY 10 20 110 220", QRect(20, 10, 201, 101));
    row("negative edges", "GEOMETRY -10 -20 -1 -1", QRect(QPoint(-20, -10), QPoint(-1, -1)));
    row("no numbers", "GEOMETRY a b 7 8", QRect(QPoint(0, 0), QPoint(8, 7)));
    row("beyond all numbers", "GEOMETRY 1 2 99999999999 8", QRect(QPoint(2, 1), QPoint(8, 0)));
    constexpr int most = KyGUISizeManager::MaxEdge;
    row("beyond all screens", "GEOMETRY -2147483648 -2147483648 2147483647 2147483647",
        QRect(QPoint(-most, -most), QPoint(most, most)));
    row("with the end of a command", "GEOMETRY 1 2 30 40;", QRect(QPoint(2, 1), QPoint(0, 30)));
    row("three edges", "GEOMETRY 10 20 110", before);
    row("five edges", "GEOMETRY 10 20 110 220 1", before);
    row("two blanks", "GEOMETRY  10 20 110 220", before);
    row("two messages in one", "GEOMETRY 10 20 110 220GEOMETRY 11 21 111 221", before);
    row("small letters", "geometry 10 20 110 220", before);
    row("blank in front", " GEOMETRY 10 20 110 220", before);
    row("error", "ERROR bad command here", before,
        {"3|BrowseCtrl|Browser returned invalid command: 'bad command here'"});
    row("error with blanks", "ERROR  a  b ", before,
        {"3|BrowseCtrl|Browser returned invalid command: ' a  b '"});
    row("error without a text", "ERROR", before, {"3|BrowseCtrl|Browser returned invalid command: ''"});
    row("error with a per cent sign", "ERROR %1", before,
        {"3|BrowseCtrl|Browser returned invalid command: '%1'"});
    row("error in UTF-8", "ERROR \xc3\xa4", before,
        {QString("3|BrowseCtrl|Browser returned invalid command: '") + QChar(0xe4) + "'"});
    row("unknown", "HELLO world", before);
    row("error in small letters", "error x", before);
    row("error as part of a word", "ERRORS x", before);
}

void tst_KyScriptOvBrowserCtrl::messageIsFollowed()
{
    QFETCH(QString, message);
    const auto browser = control();
    browser->sendCommand("SHOW");
    KyGUISizeManager::storeWidgetGeometry(QRect(1, 2, 3, 4), DefaultKey);
    LogCapture log;
    QVERIFY(mPeer->send(message));
    QTEST(stored(), "geometry");
    QTEST(log.take(), "lines");
}

void tst_KyScriptOvBrowserCtrl::halfAMessageIsIgnored()
{
    const auto browser = control();
    browser->sendCommand("SHOW");
    KyGUISizeManager::storeWidgetGeometry(QRect(1, 2, 3, 4), DefaultKey);
    LogCapture log;
    QVERIFY(mPeer->send("GEOMETRY 10 20"));
    QVERIFY(mPeer->send(" 110 220"));
    QVERIFY(mPeer->send("ERR"));
    QVERIFY(mPeer->send("OR x"));
    QCOMPARE(stored(), QRect(1, 2, 3, 4));
    QCOMPARE(log.take(), QStringList());
    QVERIFY(mPeer->send("GEOMETRY 10 20 110 220"));
    QCOMPARE(stored(), QRect(20, 10, 201, 101));
}

void tst_KyScriptOvBrowserCtrl::megabytesAreHarmless()
{
    const auto browser = control({"--answer=ERROR \\m\\m\\m"});
    browser->sendCommand("SHOW");
    LogCapture log(3);
    browser->sendCommand("ISHIDDEN");
    QVERIFY(received("ISHIDDEN;").endsWith("ISHIDDEN;"));
    // It reads this when its answer is out as a whole.
    browser->sendCommand("SHOW");
    QVERIFY(received("SHOW;").endsWith("ISHIDDEN;SHOW;"));
    QTRY_COMPARE(log.lines().size(), 1);
    QVERIFY(log.lines().at(0).text.startsWith("Browser returned invalid command: 'xxxxx"));
    QVERIFY(browser->isRunning());
}

void tst_KyScriptOvBrowserCtrl::nextCommandStartsABrowserThatHasEnded_data()
{
    QTest::addColumn<QString>("order");
    QTest::newRow("by itself") << "exit 0";
    QTest::newRow("with a failure") << "exit 3";
    QTest::newRow("by a signal") << "";
}

void tst_KyScriptOvBrowserCtrl::nextCommandStartsABrowserThatHasEnded()
{
    QFETCH(QString, order);
    const auto browser = control();
    browser->sendCommand("ONE");
    const QString pipe = pipeOf(*mPeer);
    QCOMPARE(received("ONE;"), NoGeometry + QByteArray("ONE;"));
    if (order.isEmpty())
        kill(pid_t(mPeer->ids().at(0)), SIGKILL);
    else
        QVERIFY(mPeer->order(order));
    QTRY_VERIFY(!browser->isRunning());
    QVERIFY(browser->isHidden());

    LogCapture log;
    browser->sendCommand("TWO");
    QCOMPARE(received("TWO;"), NoGeometry + QByteArray("ONE;") + NoGeometry + "TWO;");
    QCOMPARE(log.take(), QStringList("1|BrowseCtrl|ovBrowser connected to named pipe \\\\.\\pipe\\" + pipe));
    const QStringList added{"--named-pipe=" + pipe, "--user-data-dir=ovbrowser-OrvaneBrowser.Default"};
    QCOMPARE(mPeer->starts(),
             QList<QStringList>({mPeer->arguments() + added, mPeer->arguments() + added + added}));
}

void tst_KyScriptOvBrowserCtrl::endIsNoticedWithoutEvents()
{
    const auto browser = control();
    browser->sendCommand("ONE");
    QCOMPARE(received("ONE;"), NoGeometry + QByteArray("ONE;"));
    kill(pid_t(mPeer->ids().at(0)), SIGKILL);
    // Without an event loop, as in a script that does not wait.
    QElapsedTimer limit;
    limit.start();
    while (browser->isRunning() && limit.elapsed() < 30000)
        QThread::msleep(1);
    browser->sendCommand("TWO");
    QCOMPARE(received("TWO;"), NoGeometry + QByteArray("ONE;") + NoGeometry + "TWO;");
}

void tst_KyScriptOvBrowserCtrl::browserThatConnectsAndEndsIsStartedAgain()
{
    const auto browser = control({"--leave"});
    for (int start = 1; start <= 3; ++start) {
        browser->sendCommand("SHOW");
        QTRY_VERIFY(!browser->isRunning());
        QCOMPARE(mPeer->starts().size(), start);
    }
}

/// The first program connects only when it is given up. It gets nothing, and the second one is served.
void tst_KyScriptOvBrowserCtrl::connectionOfAnEarlierStartIsNotTaken()
{
    const QString gate = mPeer->file("gate");
    const auto browser = control({"--hold=" + gate, "--answer=ISHIDDEN 0"});
    browser->sendCommand("LOST");
    QVERIFY(browser->isRunning());
    makeFile(gate);
    QVERIFY(mPeer->order("ping"));
    browser->sendCommand("SHOW");
    QVERIFY(browser->isHidden());
    QCoreApplication::processEvents();
    QVERIFY(mPeer->order("exit 0"));
    QTRY_VERIFY(!browser->isRunning());
    browser->sendCommand("SHOW");
    QCOMPARE(received("SHOW;"), NoGeometry + QByteArray("SHOW;"));
    QVERIFY(!browser->isHidden());
}

void tst_KyScriptOvBrowserCtrl::closedPipeDropsCommands()
{
    const auto browser = control({"--hangup"});
    browser->sendCommand("SHOW");
    QVERIFY(mPeer->order("ping"));
    LogCapture log;
    browser->sendCommand("SHOW");
    QCoreApplication::processEvents();
    browser->sendCommand("SHOW");
    browser->setSize(3, 4);
    QVERIFY(browser->isHidden());
    QVERIFY(browser->isRunning());
    QCOMPARE(mPeer->starts().size(), 1);
    QCOMPARE(log.take(), QStringList());
}

void tst_KyScriptOvBrowserCtrl::destructorEndsTheBrowser_data()
{
    QTest::addColumn<QStringList>("options");
    QTest::newRow("that ends with its pipe") << QStringList();
    QTest::newRow("that stays") << QStringList("--stay");
    QTest::newRow("that reads nothing") << QStringList("--deaf");
}

void tst_KyScriptOvBrowserCtrl::destructorEndsTheBrowser()
{
    QFETCH(QStringList, options);
    auto browser = control(options);
    browser->sendCommand("SHOW");
    QCOMPARE(mPeer->ids().size(), 1);
    const qint64 id = mPeer->ids().at(0);
    QVERIFY(BrowserPeer::isAlive(id));
    QCOMPARE(mPeer->sockets().size(), 1);
    browser.reset();
    QVERIFY(!BrowserPeer::isAlive(id));
    QCOMPARE(mPeer->sockets(), QStringList());
}

void tst_KyScriptOvBrowserCtrl::nothingIsLeftOfTwentyBrowsers()
{
    constexpr int count = 20;
    std::vector<std::unique_ptr<KyScriptOvBrowserCtrl>> browsers;
    for (int i = 0; i < count; ++i)
        browsers.push_back(control({"--answer=ISHIDDEN 0"}, QString("b%1").arg(i)));
    for (const auto& browser : browsers)
        browser->sendCommand("SHOW");
    for (const auto& browser : browsers)
        QVERIFY(!browser->isHidden());
    QCOMPARE(mPeer->ids().size(), count);
    QCOMPARE(mPeer->sockets().size(), count);
    browsers.clear();
    for (const qint64 id : mPeer->ids())
        QVERIFY(!BrowserPeer::isAlive(id));
    QCOMPARE(mPeer->sockets(), QStringList());
}

KY_TEST_MAIN(tst_KyScriptOvBrowserCtrl)
#include "tst_KyScriptOvBrowserCtrl.moc"
