// The browser program: its parts, and the program itself where it is built.

#include <support/KyTest.h>
#include <support/LoopbackHttpServer.h>
#include <support/VirtualDisplay.h>

#include <kyscript/KyScriptOvBrowserCtrl.h>
#include <ovbrowser/OvBrowserOptions.h>
#include <ovbrowser/OvBrowserPipe.h>
#include <webengine/KyWebEngineSandbox.h>

#include <QDir>
#include <QLocalServer>
#include <QLocalSocket>
#include <QProcess>
#include <QSignalSpy>
#include <QTemporaryDir>
#include <QUuid>

#include <csignal>
#include <memory>

#include <unistd.h>

class tst_ovbrowser : public QObject
{
    Q_OBJECT

private slots:
    void init();
    void cleanup();

    void commandLineIsRead_data();
    void commandLineIsRead();
    void otherOptionsGoToTheEngine();
    void pipeHandsOnCommands();
    void pipeSendsMessages();
    void pipeThatNobodyServes();
    void superuserNeedsToSwitchTheSandboxOff();

    // the program
    void programTellsOfItself();
    void programWithoutItsPipeFails();
    void programAnswersCommands();
    void programTakesCommandsInPieces();
    void programShowsPages();
    void programKeepsCookiesInItsFolder();
    void programsMayShareAName();
    void programEndsWithItsPipe();
    void nothingIsLeftOfAProgramThatIsKilled();
    void programTellsOfAMoveOfTheUser();
    void scriptsControlServesIt();

private:
    void start(const QStringList& inOptions = {}, const QProcessEnvironment& inEnvironment = environment());
    void send(const QByteArray& inCommands);
    /// Sends, and gives what comes back.
    QByteArray ask(const QByteArray& inCommands);
    bool isGroupAlive() const;
    static QProcessEnvironment environment();

    static QTemporaryDir* sFolder;
    std::unique_ptr<QTemporaryDir> mFolder;
    std::unique_ptr<QLocalServer> mServer;
    std::unique_ptr<QProcess> mProgram;
    QLocalSocket* mPipe = nullptr;
    qint64 mGroup = 0;
};

QTemporaryDir* tst_ovbrowser::sFolder = nullptr;

namespace {

constexpr int Patience = 60'000;

QString newName()
{
    return "ovbrowser-test-" + QUuid::createUuid().toString(QUuid::WithoutBraces);
}

} // namespace

#ifdef OVBROWSER
#define NEEDS_PROGRAM() static_cast<void>(0)
#else
#define OVBROWSER "not built"
#define NEEDS_PROGRAM() QSKIP("built without Qt WebEngine; scripts/setup --tests installs it")
#endif

void tst_ovbrowser::init()
{
    mFolder = std::make_unique<QTemporaryDir>();
    sFolder = mFolder.get();
}

void tst_ovbrowser::cleanup()
{
    mServer.reset();
    if (mProgram && mProgram->state() != QProcess::NotRunning) {
        mProgram->kill();
        mProgram->waitForFinished();
    }
    mProgram.reset();
    mPipe = nullptr;
    mGroup = 0;
}

/// The data of the program stand in the test's folder.
QProcessEnvironment tst_ovbrowser::environment()
{
    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    environment.insert("QTWEBENGINE_DISABLE_SANDBOX", "1");
    environment.insert("ASAN_OPTIONS", "detect_leaks=0"); // the engine keeps things to its end
    environment.insert("QT_QPA_PLATFORM", "offscreen");
    environment.insert("XDG_DATA_HOME", sFolder->path());
    return environment;
}

void tst_ovbrowser::start(const QStringList& inOptions, const QProcessEnvironment& inEnvironment)
{
    mServer = std::make_unique<QLocalServer>();
    QVERIFY(mServer->listen(newName()));
    mProgram = std::make_unique<QProcess>();
    mProgram->setProcessEnvironment(inEnvironment);
    mProgram->setProcessChannelMode(QProcess::ForwardedChannels);
    mProgram->setChildProcessModifier([] { ::setpgid(0, 0); });
    mProgram->start(OVBROWSER,
                    inOptions + QStringList{"--named-pipe=first", "--named-pipe=" + mServer->serverName()});
    QVERIFY(mProgram->waitForStarted());
    mGroup = mProgram->processId();
    QTRY_VERIFY_WITH_TIMEOUT(mServer->hasPendingConnections(), Patience);
    mPipe = mServer->nextPendingConnection();
}

void tst_ovbrowser::send(const QByteArray& inCommands)
{
    mPipe->write(inCommands);
    mPipe->flush();
}

QByteArray tst_ovbrowser::ask(const QByteArray& inCommands)
{
    send(inCommands);
    return mPipe->waitForReadyRead(Patience) ? mPipe->readAll() : QByteArray("no answer");
}

bool tst_ovbrowser::isGroupAlive() const
{
    return ::kill(-pid_t(mGroup), 0) == 0;
}

void tst_ovbrowser::commandLineIsRead_data()
{
    using Outcome = OvBrowserOptions::Outcome;
    QTest::addColumn<QStringList>("arguments");
    QTest::addColumn<int>("outcome");
    QTest::addColumn<QStringList>("read"); // pipe, folder, address
    const auto row = [](const char* inName, const QStringList& inArguments, Outcome inOutcome,
                        const QStringList& inRead) {
        QTest::newRow(inName) << inArguments << int(inOutcome) << inRead;
    };
    row("nothing", {}, Outcome::Run, {"", "", ""});
    row("both", {"--named-pipe=a", "--user-data-dir=b c"}, Outcome::Run, {"a", "b c", ""});
    row("twice", {"--named-pipe=a", "--user-data-dir=b", "--named-pipe=c", "--user-data-dir=d"}, Outcome::Run,
        {"c", "d", ""});
    row("with an address", {"http://host/"}, Outcome::Run, {"", "", "http://host/"});
    row("two addresses", {"a", "b"}, Outcome::Bad, {"", "", "a"});
    row("help", {"--help"}, Outcome::Help, {"", "", ""});
    row("version", {"--version"}, Outcome::Version, {"", "", ""});
}

void tst_ovbrowser::commandLineIsRead()
{
    QFETCH(QStringList, arguments);
    OvBrowserOptions options;
    QString text;
    QTEST(int(options.parse(arguments, text)), "outcome");
    QTEST(QStringList({options.namedPipe, options.userDataFolder, options.address}), "read");
    QCOMPARE(text.isEmpty(), options.parse(arguments, text) == OvBrowserOptions::Outcome::Run);
}

void tst_ovbrowser::otherOptionsGoToTheEngine()
{
    OvBrowserOptions options;
    QString text;
    options.parse({"--proxy-server=h:1", "--named-pipe=a", "--user-agent=a b"}, text);
    QCOMPARE(options.engineFlags, QStringList({"--proxy-server=h:1", "--user-agent=a b"}));
    QCOMPARE(options.engineEnvironment("--present"),
             QByteArray("--present --proxy-server=h:1 \"--user-agent=a b\""));
    QCOMPARE(OvBrowserOptions().engineEnvironment(QByteArray()), QByteArray());
}

void tst_ovbrowser::pipeHandsOnCommands()
{
    QLocalServer server;
    QVERIFY(server.listen(newName()));
    OvBrowserPipe pipe;
    QSignalSpy commands(&pipe, &OvBrowserPipe::commandReceived);
    QSignalSpy closed(&pipe, &OvBrowserPipe::closed);
    QVERIFY(pipe.connectTo(server.serverName()));
    QTRY_VERIFY(server.hasPendingConnections());
    QLocalSocket* other = server.nextPendingConnection();
    other->write("GEOMETRY 1 2 3 4;URL \xc3\xa4");
    other->flush();
    QTRY_COMPARE(commands.size(), 1);
    other->write(";SHOW;");
    QTRY_COMPARE(commands.size(), 3);
    QCOMPARE(commands.at(0).at(0).toString(), QString("GEOMETRY 1 2 3 4"));
    QCOMPARE(commands.at(1).at(0).toString(), QString("URL ") + QChar(0xe4));
    QCOMPARE(commands.at(2).at(0).toString(), QString("SHOW"));
    QCOMPARE(closed.size(), 0);
    delete other;
    QTRY_COMPARE(closed.size(), 1);
}

void tst_ovbrowser::pipeSendsMessages()
{
    QLocalServer server;
    QVERIFY(server.listen(newName()));
    OvBrowserPipe pipe;
    QVERIFY(pipe.connectTo(server.serverName()));
    QTRY_VERIFY(server.hasPendingConnections());
    QLocalSocket* other = server.nextPendingConnection();
    pipe.send(QString("ERROR ") + QChar(0xe4));
    QVERIFY(other->waitForReadyRead(Patience));
    QCOMPARE(other->readAll(), QByteArray("ERROR \xe4"));
}

void tst_ovbrowser::pipeThatNobodyServes()
{
    OvBrowserPipe pipe;
    QVERIFY(!pipe.connectTo(newName()));
    QVERIFY(!pipe.errorText().isEmpty());
}

void tst_ovbrowser::superuserNeedsToSwitchTheSandboxOff()
{
    if (geteuid() != 0)
        QSKIP("runs for the superuser alone");
    const QByteArray disabled = qgetenv("QTWEBENGINE_DISABLE_SANDBOX");
    const QByteArray flags = qgetenv("QTWEBENGINE_CHROMIUM_FLAGS");
    qunsetenv("QTWEBENGINE_DISABLE_SANDBOX");
    qunsetenv("QTWEBENGINE_CHROMIUM_FLAGS");
    QVERIFY(KyWebEngineSandbox::obstacle().contains("QTWEBENGINE_DISABLE_SANDBOX=1"));
    qputenv("QTWEBENGINE_DISABLE_SANDBOX", "1");
    QCOMPARE(KyWebEngineSandbox::obstacle(), QString());
    qputenv("QTWEBENGINE_DISABLE_SANDBOX", "0");
    QVERIFY(!KyWebEngineSandbox::obstacle().isEmpty());
    qputenv("QTWEBENGINE_CHROMIUM_FLAGS", "--x --no-sandbox");
    QCOMPARE(KyWebEngineSandbox::obstacle(), QString());
    disabled.isNull() ? qunsetenv("QTWEBENGINE_DISABLE_SANDBOX")
                      : qputenv("QTWEBENGINE_DISABLE_SANDBOX", disabled);
    flags.isNull() ? qunsetenv("QTWEBENGINE_CHROMIUM_FLAGS") : qputenv("QTWEBENGINE_CHROMIUM_FLAGS", flags);
}

void tst_ovbrowser::programTellsOfItself()
{
    NEEDS_PROGRAM();
    QProcess program;
    program.start(OVBROWSER, {"--version"});
    QVERIFY(program.waitForFinished(Patience));
    QCOMPARE(program.readAllStandardOutput(), QByteArray("ovbrowser " KY_VERSION "\n"));
    program.start(OVBROWSER, {"--help"});
    QVERIFY(program.waitForFinished(Patience));
    QVERIFY(program.readAllStandardOutput().startsWith("usage: ovbrowser"));
}

void tst_ovbrowser::programWithoutItsPipeFails()
{
    NEEDS_PROGRAM();
    QProcess program;
    program.setProcessEnvironment(environment());
    program.start(OVBROWSER, {"--named-pipe=" + newName()});
    QVERIFY(program.waitForFinished(Patience));
    QCOMPARE(program.exitCode(), 1);
    QVERIFY(program.readAllStandardError().contains("Cannot connect to the pipe"));
}

void tst_ovbrowser::programAnswersCommands()
{
    NEEDS_PROGRAM();
    start();
    QCOMPARE(ask("GEOMETRY 30 40 429 539;ISHIDDEN;"), QByteArray("ISHIDDEN 1"));
    QCOMPARE(ask("SHOW;ISHIDDEN;"), QByteArray("ISHIDDEN 0"));
    QCOMPARE(ask("bad command here;"), QByteArray("ERROR bad command here"));
    QCOMPARE(ask("HIDE;ISHIDDEN;"), QByteArray("ISHIDDEN 1"));
}

void tst_ovbrowser::programTakesCommandsInPieces()
{
    NEEDS_PROGRAM();
    start();
    send("SH");
    send("OW;ISHI");
    QCOMPARE(ask("DDEN;"), QByteArray("ISHIDDEN 0"));
}

void tst_ovbrowser::programShowsPages()
{
    NEEDS_PROGRAM();
    LoopbackHttpServer server;
    server.answer("/page",
                  LoopbackHttpServer::reply("200 OK", "<script>fetch('/by-script-' + (6 * 7))</script>",
                                            "Content-Type: text/html\r\n"));
    start();
    send("URL " + server.url("/page").toUtf8() + ";SHOW;");
    const auto targets = [&] {
        QList<QByteArray> all;
        for (const auto& request : server.requests)
            all.append(request.target);
        return all;
    };
    QTRY_VERIFY_WITH_TIMEOUT(targets().contains("/by-script-42"), Patience);
    // The history of the window.
    server.requests.clear();
    server.answer("/next", LoopbackHttpServer::reply("200 OK", "next", "Content-Type: text/html\r\n"));
    send("URL " + server.url("/next").toUtf8() + ";");
    QTRY_VERIFY_WITH_TIMEOUT(targets().contains("/next"), Patience);
}

/// The end of the pipe leaves time to write them.
void tst_ovbrowser::programKeepsCookiesInItsFolder()
{
    NEEDS_PROGRAM();
    LoopbackHttpServer server;
    server.answer("/",
                  LoopbackHttpServer::reply("200 OK", "<script>fetch('/done')</script>",
                                            "Content-Type: text/html\r\nSet-Cookie: a=b; Max-Age=9999\r\n"));
    for (int run = 0; run < 2; ++run) {
        server.requests.clear();
        start({"--user-data-dir=ovbrowser-OrvaneBrowser.../x"});
        send("URL " + server.url("/").toUtf8() + ";");
        QTRY_VERIFY_WITH_TIMEOUT(server.requests.size() > 1, Patience);
        QCOMPARE(server.requests.at(0).header("Cookie"), run == 0 ? QByteArray() : QByteArray("a=b"));
        mServer.reset();
        QVERIFY(mProgram->waitForFinished(Patience));
    }
    QVERIFY(QDir(mFolder->filePath("Ky/ovbrowser/ovbrowser-OrvaneBrowser...%2Fx")).exists());
}

/// The second one keeps nothing.
void tst_ovbrowser::programsMayShareAName()
{
    NEEDS_PROGRAM();
    start({"--user-data-dir=shared"});
    QCOMPARE(ask("ISHIDDEN;"), QByteArray("ISHIDDEN 1"));
    const auto firstServer = std::move(mServer);
    const auto first = std::move(mProgram);
    start({"--user-data-dir=shared"});
    QCOMPARE(ask("SHOW;ISHIDDEN;"), QByteArray("ISHIDDEN 0"));
    first->kill();
    first->waitForFinished();
}

void tst_ovbrowser::programEndsWithItsPipe()
{
    NEEDS_PROGRAM();
    start();
    QCOMPARE(ask("SHOW;ISHIDDEN;"), QByteArray("ISHIDDEN 0"));
    QVERIFY(isGroupAlive());
    mServer.reset();
    QVERIFY(mProgram->waitForFinished(Patience));
    QCOMPARE(mProgram->exitStatus(), QProcess::NormalExit);
    QCOMPARE(mProgram->exitCode(), 0);
    QTRY_VERIFY_WITH_TIMEOUT(!isGroupAlive(), Patience);
}

void tst_ovbrowser::nothingIsLeftOfAProgramThatIsKilled()
{
    NEEDS_PROGRAM();
    start();
    QCOMPARE(ask("SHOW;URL about:blank;ISHIDDEN;"), QByteArray("ISHIDDEN 0"));
    ::kill(pid_t(mProgram->processId()), SIGKILL);
    QVERIFY(mProgram->waitForFinished(Patience));
    QTRY_VERIFY_WITH_TIMEOUT(!isGroupAlive(), Patience);
}

void tst_ovbrowser::programTellsOfAMoveOfTheUser()
{
    NEEDS_PROGRAM();
    if (!VirtualDisplay::missingPrograms().isEmpty())
        QSKIP(qPrintable("not installed: " + VirtualDisplay::missingPrograms()));
    VirtualDisplay display;
    QVERIFY(display.start());
    QProcessEnvironment there = display.environment();
    there.insert("QTWEBENGINE_DISABLE_SANDBOX", "1");
    there.insert("ASAN_OPTIONS", "detect_leaks=0");
    there.insert("XDG_DATA_HOME", sFolder->path());
    start({"--user-data-dir=ovbrowser-OrvaneBrowser.Moved"}, there);
    QByteArray told;
    connect(mPipe, &QLocalSocket::readyRead, this, [&] { told = mPipe->readAll(); });
    send("GEOMETRY 130 140 429 539;SHOW;");
    QString window;
    QTRY_VERIFY_WITH_TIMEOUT(!(window = display.window("Moved")).isEmpty(), Patience);
    QVERIFY(display.activate(window));
    display.resize(window, QSize(444, 333));
    // Top, left, bottom, right of the new size.
    const auto hasSize = [&] {
        const QList<QByteArray> tokens = told.split(' ');
        return tokens.size() == 5 && tokens.at(0) == "GEOMETRY" &&
               tokens.at(3).toInt() - tokens.at(1).toInt() == 332 &&
               tokens.at(4).toInt() - tokens.at(2).toInt() == 443;
    };
    QTRY_VERIFY_WITH_TIMEOUT(hasSize(), Patience);
}

void tst_ovbrowser::scriptsControlServesIt()
{
    NEEDS_PROGRAM();
    qputenv("QTWEBENGINE_DISABLE_SANDBOX", "1");
    KyScriptOvBrowserCtrl browser("control");
    browser.setInstallationDirectory(QFileInfo(OVBROWSER).path());
    browser.setBrowserCmdArgs({"--disable-logging"});
    QVERIFY(browser.isInstalled());
    browser.sendCommand("SHOW");
    QVERIFY(browser.isRunning());
    QTRY_VERIFY_WITH_TIMEOUT(!browser.isHidden(), Patience);
    browser.sendCommand("HIDE");
    QTRY_VERIFY_WITH_TIMEOUT(browser.isHidden(), Patience);
    browser.sendCommand("SHOW");
    QTRY_VERIFY_WITH_TIMEOUT(!browser.isHidden(), Patience);
}

KY_TEST_MAIN(tst_ovbrowser)
#include "tst_ovbrowser.moc"
