// The workstation as a user meets it: the program on a display, driven by keyboard and mouse.

#include <support/KyTest.h>
#include <support/VirtualDisplay.h>

#include <QDir>
#include <QDirIterator>
#include <QFile>
#include <QProcess>
#include <QRegularExpression>
#include <QTemporaryDir>

class tst_kyworkstation_program : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();
    void init();
    void cleanup();

    void folderIsOpenedAndCountedInTheConsole();
    void consolesOfTwoEnginesAreApart();
    void closedConsoleOpensAgainWithItsText();
    void titlesAreExact();
    void additionalFolderOfTheCommandLineIsRead();
    void scriptIsRunFromTheMenu();
    void placesAreKeptBetweenTwoProcesses();
    void closingTheMainWindowEndsTheProgram();

private:
    void start(const QStringList& inArguments = {});
    /// Waits for the program's own end and gives its exit status; -1 when it had to be killed.
    int waitForEnd();
    QString logged() const;
    /// Waits for a window, gives it the keyboard, and gives its id.
    QString open(const QString& inTitle);
    /// Presses keys in the main window.
    void pressInMainWindow(const QStringList& inKeys);
    /// The text of a console's output, selected and copied.
    QString output(const QString& inConsole);
    /// Types a line into a console in place of what is there, presses F5 and compares the output.
    void evaluate(const QString& inConsole, const QString& inSource, const QString& inOutput);

    VirtualDisplay mDisplay;
    QTemporaryDir mFolder;
    QString mSample;
    std::unique_ptr<QTemporaryDir> mProfile;
    std::unique_ptr<QProcess> mProgram;
};

namespace {

constexpr int sPatience = 60'000;
constexpr int sMenuTime = 200; // for a menu to open
constexpr const char* sMainTitle = "Ky Workstation";
constexpr const char* sConsoleTitle = "Console[QJSEngine]";

} // namespace

#define TRY_VERIFY(condition) QTRY_VERIFY_WITH_TIMEOUT(condition, sPatience)
#define TRY_COMPARE(a, b) QTRY_COMPARE_WITH_TIMEOUT(a, b, sPatience)

void tst_kyworkstation_program::initTestCase()
{
    const QString missing = VirtualDisplay::missingPrograms();
    if (!missing.isEmpty())
        QSKIP(qPrintable("not installed: " + missing));
    QVERIFY(mDisplay.start());
    mSample = mFolder.filePath("sample");
    QCOMPARE(QProcess::execute(KYSAMPLE, {mSample}), 0);
}

void tst_kyworkstation_program::init()
{
    mProfile = std::make_unique<QTemporaryDir>();
}

void tst_kyworkstation_program::cleanup()
{
    if (mProgram && mProgram->state() != QProcess::NotRunning) {
        mProgram->kill();
        mProgram->waitForFinished();
    }
    mProgram.reset();
}

void tst_kyworkstation_program::start(const QStringList& inArguments)
{
    mProgram = std::make_unique<QProcess>();
    mProgram->setProcessEnvironment(mDisplay.environment());
    mProgram->setProcessChannelMode(QProcess::ForwardedErrorChannel);
    mProgram->start(KYWORKSTATION,
                    QStringList{"--profile", mProfile->path(), "--log", mProfile->filePath("log")} +
                        inArguments);
    QVERIFY(mProgram->waitForStarted());
    QVERIFY(!open(sMainTitle).isEmpty());
}

int tst_kyworkstation_program::waitForEnd()
{
    const bool hasEnded = mProgram->state() == QProcess::NotRunning || mProgram->waitForFinished(sPatience);
    return hasEnded && mProgram->exitStatus() == QProcess::NormalExit ? mProgram->exitCode() : -1;
}

QString tst_kyworkstation_program::logged() const
{
    QFile file(mProfile->filePath("log"));
    return file.open(QIODevice::ReadOnly) ? QString::fromUtf8(file.readAll()) : QString();
}

QString tst_kyworkstation_program::open(const QString& inTitle)
{
    QString window;
    const auto isThere = [&] { return !(window = mDisplay.window(inTitle)).isEmpty(); };
    if (!QTest::qWaitFor(isThere, sPatience) || !mDisplay.activate(window))
        qWarning("no window %s", qPrintable(inTitle));
    return window;
}

void tst_kyworkstation_program::pressInMainWindow(const QStringList& inKeys)
{
    QVERIFY(!open(sMainTitle).isEmpty());
    for (const QString& key : inKeys) {
        mDisplay.press({key});
        QTest::qWait(sMenuTime);
    }
}

QString tst_kyworkstation_program::output(const QString& inConsole)
{
    mDisplay.setClipboard("nothing copied");
    const QSize size = mDisplay.geometry(inConsole).size();
    mDisplay.click(inConsole, QPoint(size.width() / 2, size.height() * 82 / 100));
    mDisplay.press({"ctrl+a", "ctrl+c"});
    QTest::qWait(50);
    return mDisplay.clipboard();
}

void tst_kyworkstation_program::evaluate(const QString& inConsole, const QString& inSource,
                                         const QString& inOutput)
{
    QVERIFY(mDisplay.activate(inConsole));
    mDisplay.click(inConsole, QPoint(mDisplay.geometry(inConsole).width() / 2, 60));
    mDisplay.press({"ctrl+a", "Delete"});
    mDisplay.type(inSource);
    mDisplay.press({"F5"});
    TRY_COMPARE(output(inConsole), inOutput);
}

void tst_kyworkstation_program::folderIsOpenedAndCountedInTheConsole()
{
    start();
    pressInMainWindow({"ctrl+o"});
    QVERIFY(!open("Open Folder").isEmpty());
    mDisplay.type(mSample);
    mDisplay.press({"Return"});
    TRY_VERIFY(mDisplay.window("Open Folder").isEmpty());
    TRY_VERIFY(logged().contains("[Studies]"));

    pressInMainWindow({"alt+s", "d"});
    const QString console = open(sConsoleTitle);
    evaluate(console, "StudyList.get(\"ALL_STUDIES_OF_PATIENT\").length", "2");
    evaluate(console, "print('a', 1); StudyList.get('PRIMARY_STUDIES').length", "a 1\n3");
    evaluate(console, "nothing.there", "Error (Line: 1): nothing is not defined\n%entry@:1");
    QVERIFY2(logged().contains("nothing is not defined"), qPrintable(logged()));

    pressInMainWindow({"ctrl+q"});
    QCOMPARE(waitForEnd(), 0);
}

void tst_kyworkstation_program::consolesOfTwoEnginesAreApart()
{
    start();
    pressInMainWindow({"alt+s", "1"});
    const QString reports = open("Console[QJSEngine] (Reports)");
    pressInMainWindow({"alt+s", "2"});
    const QString tools = open("Console[QJSEngine] (Tools)");
    QVERIFY(reports != tools);
    evaluate(reports, "var who = 'reports'", "undefined");
    evaluate(tools, "typeof who", "undefined");
    evaluate(tools, "var who = 'tools'; who", "tools");
    evaluate(reports, "who", "reports");
}

void tst_kyworkstation_program::closedConsoleOpensAgainWithItsText()
{
    start();
    pressInMainWindow({"F12"});
    const QString console = open(sConsoleTitle);
    evaluate(console, "'kept'", "kept");
    mDisplay.press({"alt+F4"});
    TRY_VERIFY(mDisplay.window(sConsoleTitle).isEmpty());
    QCOMPARE(mProgram->state(), QProcess::Running);

    pressInMainWindow({"F12"});
    const QString again = open(sConsoleTitle);
    TRY_COMPARE(output(again), QStringLiteral("kept"));
    evaluate(again, "1 + 1", "2");
}

void tst_kyworkstation_program::titlesAreExact()
{
    start();
    pressInMainWindow({"F12"});
    QVERIFY(!open("Console[QJSEngine]").isEmpty());
    pressInMainWindow({"ctrl+comma"});
    QVERIFY(!open("Settings").isEmpty());
    QVERIFY(!open("Ky Workstation").isEmpty());
}

void tst_kyworkstation_program::additionalFolderOfTheCommandLineIsRead()
{
    // One patient with two studies, one with one.
    const QDir sample(mSample);
    const QStringList patients = sample.entryList(QDir::Dirs | QDir::NoDotAndDotDot);
    QCOMPARE(patients.size(), 2);
    QDirIterator files(sample.filePath(patients.at(1)), QDir::Files, QDirIterator::Subdirectories);
    // A file stands for its folder.
    start({"--additional", sample.filePath(patients.at(0)), files.next()});
    TRY_COMPARE(logged().count("[Studies]"), 2);
    pressInMainWindow({"F12"});
    evaluate(open(sConsoleTitle),
             "[StudyList.get('PRIMARY_STUDIES').length, StudyList.get('ADDITIONAL_STUDIES').length]", "1,2");
}

void tst_kyworkstation_program::scriptIsRunFromTheMenu()
{
    QFile script(mFolder.filePath("fails.js"));
    QVERIFY(script.open(QIODevice::WriteOnly));
    script.write("print('printed');\nthrow new Error('from the file')");
    script.close();
    start();
    pressInMainWindow({"alt+s", "r"});
    QVERIFY(!open("Run Script").isEmpty());
    mDisplay.type(script.fileName());
    mDisplay.press({"Return"});
    TRY_VERIFY(logged().contains("Exception: from the file"));

    // The menu knows it from now on, also in the next process.
    pressInMainWindow({"ctrl+q"});
    QCOMPARE(waitForEnd(), 0);
    QVERIFY(QFile::remove(mProfile->filePath("log")));
    start();
    // On a busy machine a submenu may open too late for the key.
    bool hasRun = false;
    for (int i = 0; i < 4 && !hasRun; ++i) {
        pressInMainWindow({"Escape", "Escape", "alt+s", "c", "1"});
        hasRun = QTest::qWaitFor([this] { return logged().contains("Exception: from the file"); }, 10'000);
    }
    QVERIFY(hasRun);
}

void tst_kyworkstation_program::placesAreKeptBetweenTwoProcesses()
{
    start();
    pressInMainWindow({"F12"});
    QString console = open(sConsoleTitle);
    mDisplay.resize(console, QSize(500, 400));
    mDisplay.move(console, QPoint(300, 200));
    QString window = open(sMainTitle);
    mDisplay.resize(window, QSize(700, 500));
    mDisplay.move(window, QPoint(120, 90));
    TRY_COMPARE(mDisplay.geometry(console).size(), QSize(500, 400));
    TRY_COMPARE(mDisplay.geometry(window).size(), QSize(700, 500));
    const QRect consolePlace = mDisplay.geometry(console);
    const QRect windowPlace = mDisplay.geometry(window);
    pressInMainWindow({"ctrl+q"});
    QCOMPARE(waitForEnd(), 0);

    start();
    window = open(sMainTitle);
    TRY_COMPARE(mDisplay.geometry(window), windowPlace);
    pressInMainWindow({"F12"});
    console = open(sConsoleTitle);
    TRY_COMPARE(mDisplay.geometry(console), consolePlace);
}

void tst_kyworkstation_program::closingTheMainWindowEndsTheProgram()
{
    start();
    pressInMainWindow({"F12"});
    QVERIFY(!open(sConsoleTitle).isEmpty());
    pressInMainWindow({"alt+F4"});
    QCOMPARE(waitForEnd(), 0);
    QCOMPARE(mDisplay.window(sConsoleTitle), QString());
}

KY_TEST_MAIN(tst_kyworkstation_program)
#include "tst_kyworkstation_program.moc"
