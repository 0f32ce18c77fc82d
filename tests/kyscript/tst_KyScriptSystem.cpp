#include <support/ContractWatch.h>
#include <support/KyTest.h>
#include <support/KyTestPlatform.h>
#include <support/LogCapture.h>
#include <support/ModalAnswer.h>
#include <support/Unprivileged.h>

#include <kyscript/KyScriptEngine.h>
#include <kyscript/KyScriptSystem.h>

#include <jxbase/JxMessageBox.h>

#include <QApplication>
#include <QClipboard>
#include <QDir>
#include <QElapsedTimer>
#include <QFile>
#include <QPointer>
#include <QTemporaryDir>
#include <QTest>
#include <QTimer>

#include <memory>

#include <signal.h>
#include <sys/stat.h>
#include <unistd.h>

class tst_KyScriptSystem : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();
    void init();
    void cleanup();

    void onlyTheEngineMakesTheObject();

    // environment and files
    void getEnvGivesTheValue_data();
    void getEnvGivesTheValue();
    void fileExistsTellsWhetherItIsThere_data();
    void fileExistsTellsWhetherItIsThere();
    void fileReadAllGivesEachByteAsOneCharacter_data();
    void fileReadAllGivesEachByteAsOneCharacter();
    void fileReadAllOfWhatCannotBeReadIsEmpty_data();
    void fileReadAllOfWhatCannotBeReadIsEmpty();
    void fileReadAllWithoutPermissionIsEmpty();
    void fileReadAllReadsFilesWithoutASize();
    void fileThatIsTooLargeIsNotRead();
    void missingThingsAreNotLogged();

    // waiting
    void sleepBelowOneReturnsAtOnce_data();
    void sleepBelowOneReturnsAtOnce();
    void sleepTakesItsTime();
    void sleepServesEventsAndOtherScripts();
    void processEventsServesWhatIsPending_data();
    void processEventsServesWhatIsPending();
    void processEventsBelowOneDoesNotWait();

    // findCmd
    void findCmdSearchesTheFoldersInOrder_data();
    void findCmdSearchesTheFoldersInOrder();
    void findCmdFindsAFileOfTheCurrentFolder();
    void findCmdLeavesSlashesToTheSystem();
    void findCmdReadsTheEnvironmentOnce();
    void findCmdWithoutFoldersLooksUnderTheRoot();

    // processCmd
    void processCmdStartsTheProgramAndReturnsAtOnce();
    void processCmdPassesItsArguments_data();
    void processCmdPassesItsArguments();
    void processCmdLogsTheCommand_data();
    void processCmdLogsTheCommand();
    void processCmdWaitsForTheProgramBefore();
    void processCmdWaitsTenSecondsAsARule();
    void processCmdDoesNotWaitForAProgramThatHasEnded();
    void processCmdTellsThatAProgramIsStillRunning();
    void messageNamesWhatIsThereLiterally();
    void processCmdServesEventsWhileItWaits();
    void processCmdFromAHandlerDuringTheWaitIsNotLost();
    void programThatCannotStartIsTold_data();
    void programThatCannotStartIsTold();
    void programWithoutPermissionIsTold();
    void programThatEndsAtOnceIsNotTold_data();
    void programThatEndsAtOnceIsNotTold();
    void nextProgramStartsAfterOneThatCouldNot();
    void nextProgramStartsWhileTheMessageIsShown();
    void messagesAreShownOneAfterTheOther();
    void messageComesWhileAModalWindowIsOpen();
    void programThatPrintsAGigabyteEnds();
    void programThatReadsItsInputWaits();
    void argumentsOfTheWrongKindAreRefused_data();
    void argumentsOfTheWrongKindAreRefused();
    void argumentsAreAList_data();
    void argumentsAreAList();

    // the life of the process
    void programOutlivesTheEngineWithoutAZombie();
    void startingProgramOutlivesTheEngine();
    void engineMayEndWhileTheMessageIsShown();
    void messageOfAnEndedEngineIsOnlyLogged();

    // working directory
    void setWorkingDirectoryIsWhereProgramsStart_data();
    void setWorkingDirectoryIsWhereProgramsStart();
    void emptyWorkingDirectoryIsTheCurrentOne();
    void missingWorkingDirectoryIsAFailureToStart();

    // startDetached
    void startDetachedStartsTheProgram();
    void startDetachedTellsWhetherItStarted_data();
    void startDetachedTellsWhetherItStarted();
    void startDetachedDoesNotWait();
    void startDetachedTakesThePlaceOfTheCommand();
    void detachedProgramLeavesNoZombie();

    // clipboard
    void setClipboardTextReachesTheClipboard_data();
    void setClipboardTextReachesTheClipboard();

private:
    QString text(const QString& inSource) { return mEngine->evaluate(inSource).toString(); }
    bool boolean(const QString& inSource)
    {
        const QJSValue value = mEngine->evaluate(inSource);
        QTest::qVerify(value.isBool(), "isBool", qPrintable(value.toString()), __FILE__, __LINE__);
        return value.toBool();
    }
    void set(const char* inName, const QString& inValue)
    {
        mEngine->globalObject().setProperty(QString::fromLatin1(inName), inValue);
    }
    QString path(const QString& inName) const { return mFolder->filePath(inName); }
    QString write(const QString& inName, const QByteArray& inBytes) const;
    /// The content of a file that a program is about to write.
    QByteArray written(const QString& inName) const;
    /// Starts a program by processCmd that runs until release().
    void startWaiting();
    void release() { QFile::remove(path("mark")); }
    pid_t waitingPid() const { return read(path("mark")).toInt(); }
    static QByteArray read(const QString& inPath);
    static ModalAnswer::Answer expecting(const QString& inText);

    std::unique_ptr<QTemporaryDir> mFolder;
    std::unique_ptr<QTemporaryDir> mPrograms;
    std::unique_ptr<QTemporaryDir> mPrograms32;
    std::unique_ptr<KyTestPlatform> mPlatform;
    std::unique_ptr<ContractWatch> mContracts;
    std::unique_ptr<KyScriptEngine> mEngine;
};

namespace {

/// The folder of the process, for as long as this lives.
class CurrentFolder
{
public:
    explicit CurrentFolder(const QString& inPath)
        : mBefore(QDir::currentPath())
    {
        QDir::setCurrent(inPath);
    }
    ~CurrentFolder() { QDir::setCurrent(mBefore); }
    CurrentFolder(const CurrentFolder&) = delete;
    CurrentFolder& operator=(const CurrentFolder&) = delete;

private:
    const QString mBefore;
};

bool exists(pid_t inPid)
{
    return ::kill(inPid, 0) == 0;
}

int boxesOnShow()
{
    int count = 0;
    for (QWidget* window : QApplication::topLevelWidgets())
        count += qobject_cast<JxMessageBox*>(window) && window->isVisible() ? 1 : 0;
    return count;
}

QString canonical(const QString& inPath)
{
    return QFileInfo(inPath).canonicalFilePath();
}

QByteArray allBytes(int inTimes)
{
    QByteArray bytes;
    for (int i = 0; i < 256 * inTimes; ++i)
        bytes.append(char(i));
    return bytes;
}

} // namespace

void tst_KyScriptSystem::initTestCase()
{
    mPrograms = std::make_unique<QTemporaryDir>();
    mPrograms32 = std::make_unique<QTemporaryDir>();
    QVERIFY(mPrograms->isValid() && mPrograms32->isValid());
    qputenv("ProgramFiles", mPrograms->path().toUtf8());
    qputenv("ProgramFiles(x86)", mPrograms32->path().toUtf8());
}

void tst_KyScriptSystem::init()
{
    mFolder = std::make_unique<QTemporaryDir>();
    QVERIFY(mFolder->isValid());
    mPlatform = std::make_unique<KyTestPlatform>();
    mContracts = std::make_unique<ContractWatch>();
    mEngine = std::make_unique<KyScriptEngine>(nullptr, ScriptSystem);
    set("program", PROCESS_SAMPLE);
    set("mark", path("mark"));
    set("file", path("file"));
    set("missing", path("no such program"));
}

void tst_KyScriptSystem::cleanup()
{
    const pid_t pid = waitingPid();
    release();
    if (pid)
        QTRY_VERIFY(!exists(pid)); // neither running nor a zombie
    const QString broken = mContracts->verify();
    mEngine.reset();
    mContracts.reset();
    mPlatform.reset();
    mFolder.reset();
    QVERIFY2(broken.isEmpty(), qPrintable(broken));
    QVERIFY(!QApplication::activeModalWidget());
}

QString tst_KyScriptSystem::write(const QString& inName, const QByteArray& inBytes) const
{
    QFile file(path(inName));
    if (!file.open(QIODevice::WriteOnly) || file.write(inBytes) != inBytes.size())
        QTest::qFail("could not be written", __FILE__, __LINE__);
    return file.fileName();
}

QByteArray tst_KyScriptSystem::read(const QString& inPath)
{
    QFile file(inPath);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

QByteArray tst_KyScriptSystem::written(const QString& inName) const
{
    if (!QTest::qWaitFor([&] { return QFile::exists(path(inName)); }, 30000))
        return "not written";
    return read(path(inName));
}

void tst_KyScriptSystem::startWaiting()
{
    QVERIFY(boolean("System.processCmd(program, ['wait', mark])"));
    QTRY_VERIFY(QFile::exists(path("mark")));
}

/// Checks the box of a failure and closes it.
ModalAnswer::Answer tst_KyScriptSystem::expecting(const QString& inText)
{
    return [=](QWidget* inWindow) {
        auto* box = qobject_cast<JxMessageBox*>(inWindow);
        QVERIFY(box);
        QCOMPARE(box->detailedText().isEmpty() ? box->text() : box->detailedText(), inText);
        QCOMPARE(box->icon(), QMessageBox::Warning);
        QCOMPARE(box->standardButtons(), QMessageBox::Ok);
        QVERIFY(!box->defaultButton());
        QVERIFY(box->informativeText().isEmpty());
        ModalAnswer::clicking("OK")(inWindow);
    };
}

void tst_KyScriptSystem::onlyTheEngineMakesTheObject()
{
    QCOMPARE(text("typeof System"), QStringLiteral("object"));
    QVERIFY(mEngine->evaluate("new System()").isError());
    QVERIFY(mEngine->evaluate("System.destroy()").isError());
    text("collectGarbage()");
    QVERIFY(boolean("System.fileExists('/')"));
    QCOMPARE(text("typeof System.onProcessCmdError"), QStringLiteral("undefined"));
}

void tst_KyScriptSystem::getEnvGivesTheValue_data()
{
    QTest::addColumn<QString>("name");
    QTest::addColumn<QString>("value");
    QTest::newRow("plain") << "'KY_TEST'"
                           << "a value";
    QTest::newRow("each byte is a character") << "'KY_TEST_UTF8'" << QStringLiteral("\u00c3\u00a4");
    QTest::newRow("Latin-1 name") << "'KY_\\u00e4'"
                                  << "umlaut";
    QTest::newRow("name beyond Latin-1") << "'KY_\\u20ac'"
                                         << "";
    QTest::newRow("empty value") << "'KY_TEST_EMPTY'"
                                 << "";
    QTest::newRow("unset") << "'KY_TEST_UNSET'"
                           << "";
    QTest::newRow("empty name") << "''"
                                << "";
    QTest::newRow("name with an equals sign") << "'KY_TEST=a'"
                                              << "";
    QTest::newRow("NUL within") << "'KY_TEST\\0x'"
                                << "";
    QTest::newRow("null") << "null"
                          << "";
    QTest::newRow("number") << "5"
                            << "";
}

void tst_KyScriptSystem::getEnvGivesTheValue()
{
    QFETCH(QString, name);
    QFETCH(QString, value);
    qputenv("KY_TEST", "a value");
    qputenv("KY_TEST_UTF8", "\xc3\xa4");
    qputenv("KY_\xe4", "umlaut");
    qputenv("KY_TEST_EMPTY", "");
    qunsetenv("KY_TEST_UNSET");
    const QJSValue result = mEngine->evaluate("System.getEnv(" + name + ")");
    QVERIFY(result.isString());
    QCOMPARE(result.toString(), value);
}

void tst_KyScriptSystem::fileExistsTellsWhetherItIsThere_data()
{
    QTest::addColumn<QString>("name");
    QTest::addColumn<bool>("exists");
    QTest::newRow("file") << "file" << true;
    QTest::newRow("folder") << "folder" << true;
    QTest::newRow("letters of all scripts, blanks") << QString::fromUtf8("größe 東京.txt") << true;
    QTest::newRow("name that ends in a dot") << "dot." << true;
    QTest::newRow("link") << "link" << true;
    QTest::newRow("link to nothing") << "broken" << false;
    QTest::newRow("missing") << "missing" << false;
    QTest::newRow("below a file") << "file/x" << false;
    QTest::newRow("4000 characters") << QString(4000, 'x') << false;
    QTest::newRow("NUL within") << QString::fromLatin1("file\0x", 6) << false;
}

void tst_KyScriptSystem::fileExistsTellsWhetherItIsThere()
{
    QFETCH(QString, name);
    QFETCH(bool, exists);
    write("file", "x");
    write(QString::fromUtf8("größe 東京.txt"), "x");
    write("dot.", "x");
    QDir(mFolder->path()).mkdir("folder");
    QFile::link(path("file"), path("link"));
    QFile::link(path("nothing"), path("broken"));
    set("name", path(name));
    QCOMPARE(boolean("System.fileExists(name)"), exists);

    const CurrentFolder current(mFolder->path());
    set("name", name);
    QCOMPARE(boolean("System.fileExists(name)"), exists);
    QVERIFY(!boolean("System.fileExists('')"));
    QVERIFY(!boolean("System.fileExists(null)"));
}

void tst_KyScriptSystem::fileReadAllGivesEachByteAsOneCharacter_data()
{
    QTest::addColumn<QByteArray>("bytes");
    QTest::newRow("empty") << QByteArray();
    QTest::newRow("lines") << QByteArray("a\r\nb\n");
    QTest::newRow("UTF-8") << QByteArray("\xef\xbb\xbf\xc3\xa4\xe2\x82\xac");
    QTest::newRow("all bytes") << allBytes(1);
    QTest::newRow("1 MB and more") << allBytes(5000) + "end";
}

void tst_KyScriptSystem::fileReadAllGivesEachByteAsOneCharacter()
{
    QFETCH(QByteArray, bytes);
    for (const QString& name : {QStringLiteral("file"), QString::fromUtf8("größe 東京 .")}) {
        set("name", write(name, bytes));
        const QJSValue result = mEngine->evaluate("System.fileReadAll(name)");
        QVERIFY(result.isString());
        QCOMPARE(result.toString(), QString::fromLatin1(bytes));
    }
}

void tst_KyScriptSystem::fileReadAllOfWhatCannotBeReadIsEmpty_data()
{
    QTest::addColumn<QString>("file");
    QTest::newRow("missing") << "missing";
    QTest::newRow("folder") << "folder";
    QTest::newRow("below a file") << "file/x";
    QTest::newRow("4000 characters") << QString(4000, 'x');
    QTest::newRow("NUL within") << QString::fromLatin1("file\0x", 6);
    QTest::newRow("link to nothing") << "broken";
    QTest::newRow("pipe that nobody writes to") << "pipe";
    QTest::newRow("device without an end") << "/dev/zero";
    QTest::newRow("link to itself") << "loop";
}

void tst_KyScriptSystem::fileReadAllOfWhatCannotBeReadIsEmpty()
{
    QFETCH(QString, file);
    write("file", "content");
    ::mkfifo(QFile::encodeName(path("pipe")).constData(), 0600);
    QDir(mFolder->path()).mkdir("folder");
    QFile::link(path("nothing"), path("broken"));
    QFile::link(path("loop"), path("loop"));
    const CurrentFolder current(mFolder->path());
    set("name", file);
    const LogCapture log;
    const QJSValue result = mEngine->evaluate("System.fileReadAll(name)");
    QVERIFY(result.isString());
    QCOMPARE(result.toString(), QString());
    QCOMPARE(log.toStrings(), QStringList());
}

void tst_KyScriptSystem::fileReadAllWithoutPermissionIsEmpty()
{
    QVERIFY(QFile::setPermissions(write("file", "content"), QFile::WriteOwner));
    QVERIFY(QFile::setPermissions(mFolder->path(), QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner |
                                                       QFile::ReadOther | QFile::ExeOther));
    QString content = "not read";
    {
        const Unprivileged rights;
        content = text("System.fileReadAll(file)");
    }
    QCOMPARE(content, QString());
}

void tst_KyScriptSystem::programWithoutPermissionIsTold()
{
    QVERIFY(QFile::setPermissions(write("file", "#!/bin/sh\n"), QFile::ReadOwner)); // for root neither
    ModalAnswer answer(expecting("Failed to start process " + path("file") + " !"));
    QVERIFY(boolean("System.processCmd(file, [])"));
    QTRY_VERIFY(answer.happened());
    QTRY_VERIFY(!QApplication::activeModalWidget());
    QVERIFY(!boolean("System.startDetached(file, [])"));
}

void tst_KyScriptSystem::fileReadAllReadsFilesWithoutASize()
{
    QCOMPARE(QFileInfo("/proc/self/status").size(), 0);
    QVERIFY(text("System.fileReadAll('/proc/self/status')").startsWith("Name:"));
}

void tst_KyScriptSystem::fileThatIsTooLargeIsNotRead()
{
    QFile file(path("file"));
    QVERIFY(file.open(QIODevice::WriteOnly));
    QVERIFY(file.resize((qint64(1) << 30) + 1)); // without blocks on the disk
    const LogCapture log;
    QCOMPARE(text("System.fileReadAll(file)"), QString());
    QCOMPARE(log.toStrings(), QStringList("2|Script Interface|File too large to be read: " + path("file")));
}

void tst_KyScriptSystem::missingThingsAreNotLogged()
{
    const LogCapture log;
    text("System.getEnv('KY_TEST_UNSET'); System.fileReadAll(missing); System.fileExists(missing);"
         "System.findCmd(missing); System.setWorkingDirectory(missing)");
    QCOMPARE(log.toStrings(), QStringList());
}

void tst_KyScriptSystem::sleepBelowOneReturnsAtOnce_data()
{
    QTest::addColumn<QString>("time");
    for (const char* time : {"0", "-5", "-2147483648", "NaN", "null", "Infinity"})
        QTest::newRow(time) << time;
}

void tst_KyScriptSystem::sleepBelowOneReturnsAtOnce()
{
    QFETCH(QString, time);
    bool served = false;
    QObject scope;
    QTimer::singleShot(0, &scope, [&] { served = true; });
    QCOMPARE(text("System.sleep(" + time + "); 'done'"), QStringLiteral("done"));
    QVERIFY(!served);
}

void tst_KyScriptSystem::sleepTakesItsTime()
{
    QElapsedTimer elapsed;
    elapsed.start();
    text("System.sleep(60)");
    QVERIFY(elapsed.elapsed() >= 59);
}

void tst_KyScriptSystem::sleepServesEventsAndOtherScripts()
{
    QTimer::singleShot(10, this, [this] { text("step += 'b'; System.sleep(10); step += 'c'"); });
    QCOMPARE(text("step = 'a'; System.sleep(100); step + 'd'"), QStringLiteral("abcd"));
}

void tst_KyScriptSystem::processEventsServesWhatIsPending_data()
{
    QTest::addColumn<QString>("arguments");
    QTest::newRow("none") << "";
    QTest::newRow("undefined") << "undefined";
    QTest::newRow("below 1") << "-1";
    QTest::newRow("0") << "0";
    QTest::newRow("time") << "1000";
}

void tst_KyScriptSystem::processEventsServesWhatIsPending()
{
    QFETCH(QString, arguments);
    int served = 0;
    QMetaObject::invokeMethod(
        this, [&] { ++served; }, Qt::QueuedConnection);
    QTimer::singleShot(0, this, [&] { ++served; });
    QCOMPARE(text("System.processEvents(" + arguments + "); 'done'"), QStringLiteral("done"));
    QCOMPARE(served, 2);
}

void tst_KyScriptSystem::processEventsBelowOneDoesNotWait()
{
    bool served = false;
    QTimer::singleShot(60000, this, [&] { served = true; });
    QElapsedTimer elapsed;
    elapsed.start();
    text("System.processEvents(); System.processEvents(0); System.processEvents(-5)");
    QVERIFY(elapsed.elapsed() < 30000);
    QVERIFY(!served);
}

void tst_KyScriptSystem::findCmdSearchesTheFoldersInOrder_data()
{
    QTest::addColumn<QString>("command");
    QTest::addColumn<QString>("found"); // "1/" and "2/" stand for the folders of programs
    QTest::newRow("marker, first folder") << "%ProgramFiles%/Vendor/first.exe"
                                          << "1/Vendor/first.exe";
    QTest::newRow("marker, second folder") << "%ProgramFiles%/Vendor/second.exe"
                                           << "2/Vendor/second.exe";
    QTest::newRow("marker, both folders") << "%ProgramFiles%/both.exe"
                                          << "1/both.exe";
    QTest::newRow("marker, folder") << "%ProgramFiles%/Vendor"
                                    << "1/Vendor";
    QTest::newRow("marker, neither") << "%ProgramFiles%/none.exe"
                                     << "";
    QTest::newRow("marker alone") << "%ProgramFiles%"
                                  << "1";
    QTest::newRow("marker in lower case") << "%programfiles%/both.exe"
                                          << "";
    QTest::newRow("marker in lower case is a name") << "%programfiles%/odd.exe"
                                                    << "1/%programfiles%/odd.exe";
    QTest::newRow("marker in the middle") << "x/%ProgramFiles%/both.exe"
                                          << "";
    QTest::newRow("relative, first folder") << "Vendor/first.exe"
                                            << "1/Vendor/first.exe";
    QTest::newRow("relative, second folder") << "Vendor/second.exe"
                                             << "2/Vendor/second.exe";
    QTest::newRow("relative, both folders") << "both.exe"
                                            << "1/both.exe";
    QTest::newRow("relative, neither") << "none.exe"
                                       << "";
    QTest::newRow("relative, unusual letters")
        << QString::fromUtf8("größe 東京.exe") << QString::fromUtf8("2/größe 東京.exe");
    QTest::newRow("relative, upwards") << "Vendor/../both.exe"
                                       << "1/both.exe";
    QTest::newRow("empty") << ""
                           << "1/";
    QTest::newRow("absolute") << "1/both.exe"
                              << "1/both.exe";
    QTest::newRow("absolute, missing") << "1/none.exe"
                                       << "";
    QTest::newRow("4000 characters") << QString(4000, 'x') << "";
}

void tst_KyScriptSystem::findCmdSearchesTheFoldersInOrder()
{
    QFETCH(QString, command);
    QFETCH(QString, found);
    const auto make = [](const QTemporaryDir& folder, const QString& name) {
        QDir().mkpath(QFileInfo(folder.filePath(name)).path());
        QFile file(folder.filePath(name));
        QVERIFY(file.open(QIODevice::WriteOnly));
    };
    make(*mPrograms, "Vendor/first.exe");
    make(*mPrograms32, "Vendor/second.exe");
    make(*mPrograms, "both.exe");
    make(*mPrograms32, "both.exe");
    make(*mPrograms, "%programfiles%/odd.exe");
    make(*mPrograms32, QString::fromUtf8("größe 東京.exe"));

    const auto absolute = [&](QString name) {
        if (name.startsWith("1"))
            return name.replace(0, 1, mPrograms->path());
        return name.startsWith("2") ? name.replace(0, 1, mPrograms32->path()) : name;
    };
    const CurrentFolder current(mFolder->path());
    set("command", absolute(command));
    const QJSValue result = mEngine->evaluate("System.findCmd(command)");
    QVERIFY(result.isString());
    QCOMPARE(result.toString(), absolute(found));
}

void tst_KyScriptSystem::findCmdFindsAFileOfTheCurrentFolder()
{
    write("here.exe", "x");
    QDir(mFolder->path()).mkpath("%ProgramFiles%");
    write("%ProgramFiles%/here.exe", "x");
    const CurrentFolder current(mFolder->path());
    QCOMPARE(text("System.findCmd('here.exe')"), QDir::currentPath() + "/here.exe");
    QCOMPARE(text("System.findCmd('./here.exe')"), QDir::currentPath() + "/here.exe");
    // The text as it stands counts last, with the marker in it too.
    QCOMPARE(text("System.findCmd('%ProgramFiles%/here.exe')"),
             QDir::currentPath() + "/%ProgramFiles%/here.exe");
}

/// Where backslashes separate folders they become slashes; elsewhere they are letters of a name.
void tst_KyScriptSystem::findCmdLeavesSlashesToTheSystem()
{
    const QString name = QDir::toNativeSeparators(write("a\\b.exe", "x"));
    set("command", name);
    QCOMPARE(text("System.findCmd(command)"), QFileInfo(name).absoluteFilePath());
#ifdef Q_OS_WIN
    QVERIFY(!text("System.findCmd(command)").contains('\\'));
#endif
}

void tst_KyScriptSystem::findCmdReadsTheEnvironmentOnce()
{
    text("System.findCmd('x')");
    const QTemporaryDir other;
    QFile file(other.filePath("later.exe"));
    QVERIFY(file.open(QIODevice::WriteOnly));
    const QByteArray before = qgetenv("ProgramFiles");
    qputenv("ProgramFiles", other.path().toUtf8());
    KyScriptEngine second(nullptr, ScriptSystem);
    QCOMPARE(second.evaluate("System.findCmd('later.exe')").toString(), QString());
    QCOMPARE(text("System.findCmd('%ProgramFiles%')"), mPrograms->path());
    qputenv("ProgramFiles", before);
}

void tst_KyScriptSystem::findCmdWithoutFoldersLooksUnderTheRoot()
{
    qunsetenv("ProgramFiles");
    qunsetenv("ProgramFiles(x86)");
    const QString file = write("here.exe", "x");
    set("command", file.mid(1));
    QCOMPARE(text("System.findCmd(command)"), file);
    set("command", "%ProgramFiles%" + file);
    QCOMPARE(text("System.findCmd(command)"), file);
    QCOMPARE(text("System.findCmd('%ProgramFiles%')"), QString());
    QCOMPARE(text("System.findCmd('')"), QStringLiteral("/"));
}

void tst_KyScriptSystem::processCmdStartsTheProgramAndReturnsAtOnce()
{
    startWaiting(); // the call is back, and the program runs
    QVERIFY(exists(waitingPid()));
}

void tst_KyScriptSystem::processCmdPassesItsArguments_data()
{
    QTest::addColumn<QString>("arguments");
    QTest::addColumn<QByteArray>("lines");
    QTest::newRow("none") << "" << QByteArray();
    QTest::newRow("several") << ", 'a', 'b'" << QByteArray("a\nb\n");
    QTest::newRow("empty") << ", '', 'b'" << QByteArray("\nb\n");
    QTest::newRow("blanks and quotes") << ", 'a b', '\"c\"', \"'\"" << QByteArray("a b\n\"c\"\n'\n");
    QTest::newRow("signs of a shell") << ", '$HOME', '*', ';', '%1'" << QByteArray("$HOME\n*\n;\n%1\n");
    QTest::newRow("beyond Latin-1") << ", '\\u00e4\\u20ac'" << QByteArray("\xc3\xa4\xe2\x82\xac\n");
    QTest::newRow("numbers") << ", 1, 2.5" << QByteArray("1\n2.5\n");
    QTest::newRow("booleans") << ", true, false" << QByteArray("true\nfalse\n");
    QTest::newRow("null, undefined, missing") << ", null, undefined, , 'd'" << QByteArray("\n\n\nd\n");
    QTest::newRow("symbol") << ", Symbol('s'), 'b'" << QByteArray("Symbol(s)\nb\n");
    QTest::newRow("objects") << ", new String('a'), ['b', 'c'], {toString() { return 'd'; }}"
                             << QByteArray("a\nb,c\nd\n");
    QTest::newRow("object whose text fails")
        << ", {toString() { throw 'failure'; }}, 'b'" << QByteArray("failure\nb\n");
    QTest::newRow("object with a symbol") << ", {a: Symbol()}" << QByteArray("[object Object]\n");
    QTest::newRow("4000 characters") << ", 'x'.repeat(4000)" << QByteArray(4000, 'x') + '\n';
}

void tst_KyScriptSystem::processCmdPassesItsArguments()
{
    QFETCH(QString, arguments);
    QFETCH(QByteArray, lines);
    QVERIFY(boolean("System.processCmd(program, ['write', file" + arguments + "])"));
    QCOMPARE(written("file").mid(QDir::currentPath().toUtf8().size() + 1), lines);
    QFile::remove(path("file"));
    QVERIFY(boolean("System.startDetached(program, ['write', file" + arguments + "])"));
    QCOMPARE(written("file").mid(QDir::currentPath().toUtf8().size() + 1), lines);
}

void tst_KyScriptSystem::processCmdLogsTheCommand_data()
{
    QTest::addColumn<QString>("source");
    QTest::addColumn<QString>("line");
    const QString program = PROCESS_SAMPLE;
    QTest::newRow("processCmd") << "System.processCmd(program, ['exit', '0', 'a b'])"
                                << "Processing command: " + program + " exit 0 a b";
    QTest::newRow("processCmd without arguments") << "System.processCmd(program, [])"
                                                  << "Processing command: " + program + " ";
    QTest::newRow("processCmd, place markers") << "System.processCmd(program, ['%1', '%2 %s'])"
                                               << "Processing command: " + program + " %1 %2 %s";
    QTest::newRow("startDetached") << "System.startDetached(program, ['exit', '0'])"
                                   << "Starting detached: " + program + " exit 0";
    QTest::newRow("startDetached without arguments") << "System.startDetached(program, [])"
                                                     << "Starting detached: " + program + " ";
}

void tst_KyScriptSystem::processCmdLogsTheCommand()
{
    QFETCH(QString, source);
    QFETCH(QString, line);
    const LogCapture log;
    QVERIFY(boolean(source));
    QCOMPARE(log.toStrings(), QStringList("1|Script Interface|" + line));
}

void tst_KyScriptSystem::processCmdWaitsForTheProgramBefore()
{
    startWaiting();
    QTimer::singleShot(50, this, [this] { release(); });
    const LogCapture log(2);
    QVERIFY(boolean("System.processCmd(program, ['write', file], 60000)"));
    QVERIFY(!QFile::exists(path("mark")));
    QVERIFY(written("file") != "not written");
    QCOMPARE(log.toStrings(), QStringList());
}

void tst_KyScriptSystem::processCmdWaitsTenSecondsAsARule()
{
    startWaiting();
    ModalAnswer answer(ModalAnswer::clicking("OK"), std::chrono::seconds(60));
    QElapsedTimer elapsed;
    elapsed.start();
    QVERIFY(!boolean("System.processCmd(program, [])"));
    QVERIFY2(elapsed.elapsed() >= 9990, qPrintable(QString::number(elapsed.elapsed())));
    QVERIFY2(elapsed.elapsed() < 30000, qPrintable(QString::number(elapsed.elapsed())));
}

void tst_KyScriptSystem::processCmdDoesNotWaitForAProgramThatHasEnded()
{
    startWaiting();
    const QString stat = QStringLiteral("/proc/%1/stat").arg(waitingPid());
    release();
    QElapsedTimer elapsed;
    elapsed.start();
    while (!read(stat).contains(") Z ") && elapsed.elapsed() < 30000)
        ::usleep(1000); // without serving events: nothing has told of the end yet
    const LogCapture log(2);
    QVERIFY(boolean("System.processCmd(program, ['exit', '0'], 0)"));
    QCOMPARE(log.toStrings(), QStringList());
}

void tst_KyScriptSystem::processCmdTellsThatAProgramIsStillRunning()
{
    startWaiting();
    const QString program = PROCESS_SAMPLE;
    const QString running = "Process " + program + " wait " + path("mark") + " is still running! Skipping ";
    const LogCapture log;
    {
        ModalAnswer answer(expecting(running + "process " + program + " write " + path("file") + "."));
        QVERIFY(!boolean("System.processCmd(program, ['write', file], 30)"));
        QVERIFY(answer.happened());
    }
    QCOMPARE(log.toStrings(), QStringList("3|Script Interface|" + running + "process " + program + " write " +
                                          path("file") + "."));
    {
        // The stored command is still the first one.
        ModalAnswer answer(expecting(running + "process other ."));
        QVERIFY(!boolean("System.processCmd('other', [], 0)"));
        QVERIFY(answer.happened());
    }
    release();
    QVERIFY(boolean("System.processCmd(program, ['exit', '0'])"));
    QVERIFY(!QFile::exists(path("file")));
}

void tst_KyScriptSystem::messageNamesWhatIsThereLiterally()
{
    QVERIFY(boolean("System.processCmd(program, ['wait', mark, '%2', '<b>%4</b>'])"));
    QTRY_VERIFY(QFile::exists(path("mark")));
    ModalAnswer answer(expecting("Process " PROCESS_SAMPLE " wait " + path("mark") +
                                 " %2 <b>%4</b> is still running! Skipping process %1 %3."));
    QVERIFY(!boolean("System.processCmd('%1', ['%3'], 0)"));
}

void tst_KyScriptSystem::processCmdServesEventsWhileItWaits()
{
    startWaiting();
    QTimer::singleShot(10, this, [this] {
        text("handler = true");
        release();
    });
    QVERIFY(boolean("System.processCmd(program, ['exit', '0'], 60000) && handler"));
}

/// A handler that runs during the wait and starts a program of its own: both are started, one after the
/// other.
void tst_KyScriptSystem::processCmdFromAHandlerDuringTheWaitIsNotLost()
{
    startWaiting();
    QTimer::singleShot(10, this, [this] {
        QTimer::singleShot(30, this, [this] { release(); });
        text("inner = System.processCmd(program, ['write', file], 60000)");
    });
    set("second", path("second"));
    QVERIFY(boolean("System.processCmd(program, ['write', second], 60000) && inner"));
    QVERIFY(written("file") != "not written");
    QVERIFY(written("second") != "not written");
}

void tst_KyScriptSystem::programThatCannotStartIsTold_data()
{
    QTest::addColumn<QString>("command");
    QTest::addColumn<QString>("arguments");
    QTest::addColumn<QString>("named");
    QTest::newRow("missing") << "missing"
                             << ""
                             << "MISSING ";
    QTest::newRow("missing, with arguments") << "missing"
                                             << "'a', 'b c'"
                                             << "MISSING a b c";
    QTest::newRow("place markers") << "missing"
                                   << "'%1', '<i>%2</i>'"
                                   << "MISSING %1 <i>%2</i>";
    QTest::newRow("no name") << "''"
                             << ""
                             << " ";
    QTest::newRow("null") << "null"
                          << "'a'"
                          << " a";
    QTest::newRow("folder") << "'/'"
                            << ""
                            << "/ ";
    QTest::newRow("no program") << "'/proc/self/status'"
                                << ""
                                << "/proc/self/status ";
    QTest::newRow("beyond Latin-1") << "'/none/\\u6771\\u4eac'"
                                    << "'\\u20ac'" << QString::fromUtf8("/none/東京 €");
    QTest::newRow("4000 characters") << "'x'.repeat(4000)"
                                     << "" << QString(4000, 'x') + ' ';
    QTest::newRow("argument that is too long") << "program"
                                               << "'x'.repeat(4000000)"
                                               << "";
}

void tst_KyScriptSystem::programThatCannotStartIsTold()
{
    QFETCH(QString, command);
    QFETCH(QString, arguments);
    QFETCH(QString, named);
    named.replace("MISSING", path("no such program")).replace("PROGRAM", PROCESS_SAMPLE);
    const LogCapture log;
    const QString message = "Failed to start process " + named + "!";
    bool returned = false;
    ModalAnswer answer([&](QWidget* inWindow) {
        QVERIFY(returned);
        if (named.isEmpty())
            ModalAnswer::clicking("OK")(inWindow); // of the text only the ends are shown
        else
            expecting(message)(inWindow);
    });
    QVERIFY(boolean("System.processCmd(" + command + ", [" + arguments + "])"));
    returned = true;
    QTRY_VERIFY_WITH_TIMEOUT(answer.happened(), 30000);
    QTRY_VERIFY(!QApplication::activeModalWidget());
    QCOMPARE(log.lines().size(), 2);
    QCOMPARE(log.lines().at(1).level, 3);
    QCOMPARE(log.lines().at(1).context, QStringLiteral("Script Interface"));
    if (named.isEmpty())
        QCOMPARE(log.lines().at(1).text,
                 "Failed to start process " PROCESS_SAMPLE " " + QString(4000000, 'x') + '!');
    else
        QCOMPARE(log.lines().at(1).text, QString::fromLatin1(message.toLatin1()));
}

void tst_KyScriptSystem::programThatEndsAtOnceIsNotTold_data()
{
    QTest::addColumn<QString>("arguments");
    QTest::newRow("success") << "['exit', '0']";
    QTest::newRow("failure") << "['exit', '1']";
    QTest::newRow("crash") << "['crash']";
}

void tst_KyScriptSystem::programThatEndsAtOnceIsNotTold()
{
    QFETCH(QString, arguments);
    const LogCapture log(2);
    QVERIFY(boolean("System.processCmd(program, " + arguments + ")"));
    QVERIFY(boolean("System.processCmd(program, ['write', file])"));
    QVERIFY(written("file") != "not written");
    QCOMPARE(log.toStrings(), QStringList());
    QVERIFY(!QApplication::activeModalWidget());
}

void tst_KyScriptSystem::nextProgramStartsAfterOneThatCouldNot()
{
    ModalAnswer answer(expecting("Failed to start process " + path("no such program") + " !"));
    QVERIFY(boolean("System.processCmd(missing, []) && System.processCmd(program, ['write', file])"));
    QVERIFY(written("file") != "not written");
    QTRY_VERIFY(answer.happened());
    QTRY_VERIFY(!QApplication::activeModalWidget());
}

void tst_KyScriptSystem::nextProgramStartsWhileTheMessageIsShown()
{
    bool started = false;
    ModalAnswer answer([&](QWidget* inWindow) {
        started = boolean("System.processCmd(program, ['wait', mark])");
        QTRY_VERIFY(QFile::exists(path("mark")));
        ModalAnswer::clicking("OK")(inWindow);
    });
    QVERIFY(boolean("System.processCmd(missing, [])"));
    QTRY_VERIFY(started);
    QTRY_VERIFY(!QApplication::activeModalWidget());
    QVERIFY(exists(waitingPid())); // the end of the message hasn't ended it, nor waited for it
}

/// A box in the event loop of each one before would exhaust the stack.
void tst_KyScriptSystem::messagesAreShownOneAfterTheOther()
{
    QStringList shown;
    const auto answer = [&](QWidget* inWindow) {
        if (shown.isEmpty()) {
            boolean("System.processCmd('', ['later'])");
            QTest::qWait(20); // time for the next box, were it not to wait
        }
        QCOMPARE(boxesOnShow(), 1);
        QCOMPARE(QApplication::activeModalWidget(), inWindow);
        shown.append(qobject_cast<JxMessageBox*>(inWindow)->text());
        ModalAnswer::clicking("OK")(inWindow);
    };
    const ModalAnswer first(answer);
    const ModalAnswer second(answer);
    const ModalAnswer third(answer);
    const ModalAnswer fourth(answer);
    const LogCapture log(3);
    QVERIFY(boolean("for (var i = 0; i < 3; ++i) System.processCmd('', ['' + i])"));
    QCOMPARE(log.lines().size(), 3);
    QTRY_VERIFY(fourth.happened());
    QTRY_VERIFY(!QApplication::activeModalWidget());
    QCOMPARE(shown, QStringList({"Failed to start process  0!", "Failed to start process  1!",
                                 "Failed to start process  2!", "Failed to start process  later!"}));
    QCOMPARE(log.lines().size(), 4);

    // And again, once all have been seen.
    ModalAnswer again(expecting("Failed to start process  again!"));
    QVERIFY(boolean("System.processCmd('', ['again'])"));
    QTRY_VERIFY(again.happened());
    QTRY_VERIFY(!QApplication::activeModalWidget());
}

void tst_KyScriptSystem::messageComesWhileAModalWindowIsOpen()
{
    QDialog dialog;
    dialog.setModal(true);
    const ModalAnswer ofDialog([&](QWidget*) { boolean("System.processCmd(missing, [])"); });
    ModalAnswer ofBox([&](QWidget* inWindow) {
        QVERIFY(dialog.isVisible());
        expecting("Failed to start process " + path("no such program") + " !")(inWindow);
        QVERIFY(dialog.isVisible());
        dialog.accept();
    });
    QCOMPARE(dialog.exec(), int(QDialog::Accepted));
    QVERIFY(ofBox.happened());
}

void tst_KyScriptSystem::programThatPrintsAGigabyteEnds()
{
    QVERIFY(boolean("System.processCmd(program, ['print', '1000000000', file])"));
    QVERIFY(boolean("System.processCmd(program, ['exit', '0'], 60000)"));
    QCOMPARE(read(path("file")), QByteArray("printed"));
}

/// The program has an input that stays open, so that it waits; it ends with the client.
void tst_KyScriptSystem::programThatReadsItsInputWaits()
{
    QVERIFY(boolean("System.processCmd(program, ['read', file])"));
    ModalAnswer answer(ModalAnswer::clicking("OK"));
    QVERIFY(!boolean("System.processCmd(program, [], 100)"));
    QVERIFY(!QFile::exists(path("file")));
}

void tst_KyScriptSystem::argumentsOfTheWrongKindAreRefused_data()
{
    QTest::addColumn<QString>("argument");
    for (const char* argument :
         {"null", "undefined", "5", "true", "Symbol()", "new Date()", "System",
          "(function() { var a = []; a.length = 4294967295; return a; })()", "new Array(3e6)"})
        QTest::newRow(argument) << argument;
}

void tst_KyScriptSystem::argumentsOfTheWrongKindAreRefused()
{
    QFETCH(QString, argument);
    for (const char* start : {"processCmd", "startDetached"}) {
        const LogCapture log;
        QCOMPARE(
            text(QStringLiteral("try { System.%1('/bin/true', %2) } catch (e) { e.name + ': ' + e.message }")
                     .arg(QString::fromLatin1(start), argument)),
            QStringLiteral("TypeError: System.%1: not a list of texts").arg(QString::fromLatin1(start)));
        QCOMPARE(log.toStrings(), QStringList());
    }
    QVERIFY(!mEngine->hasError());
}

void tst_KyScriptSystem::argumentsAreAList_data()
{
    QTest::addColumn<QString>("argument");
    QTest::addColumn<QString>("logged");
    QTest::newRow("text") << "'0'"
                          << "0";
    QTest::newRow("empty text") << "''"
                                << "";
    QTest::newRow("object") << "{a: Symbol()}"
                            << "";
    QTest::newRow("function") << "function() {}"
                              << "";
    QTest::newRow("typed array") << "new Uint8Array(3)"
                                 << "";
}

void tst_KyScriptSystem::argumentsAreAList()
{
    QFETCH(QString, argument);
    QFETCH(QString, logged);
    const LogCapture log;
    QVERIFY(boolean("System.startDetached('/bin/true', " + argument + ")"));
    QCOMPARE(log.toStrings(), QStringList("1|Script Interface|Starting detached: /bin/true " + logged));
    for (const char* call : {"System.processCmd(program)", "System.startDetached(program)"})
        QVERIFY2(mEngine->evaluate(call).isError(), call);
}

void tst_KyScriptSystem::programOutlivesTheEngineWithoutAZombie()
{
    startWaiting();
    const pid_t pid = waitingPid();
    mEngine.reset();
    QTest::qWait(30);
    QVERIFY(exists(pid));
    release();
    QTRY_VERIFY(!exists(pid));
}

void tst_KyScriptSystem::startingProgramOutlivesTheEngine()
{
    QVERIFY(boolean("System.processCmd(program, ['wait', mark])"));
    mEngine.reset();
    QTRY_VERIFY(QFile::exists(path("mark")));
    QVERIFY(exists(waitingPid()));
}

void tst_KyScriptSystem::engineMayEndWhileTheMessageIsShown()
{
    ModalAnswer answer([&](QWidget* inWindow) {
        mEngine.reset();
        QVERIFY(inWindow->isVisible());
        ModalAnswer::clicking("OK")(inWindow);
    });
    QVERIFY(boolean("System.processCmd(missing, [])"));
    QTRY_VERIFY(answer.happened());
    QTRY_VERIFY(!QApplication::activeModalWidget());
}

void tst_KyScriptSystem::messageOfAnEndedEngineIsOnlyLogged()
{
    const LogCapture log(3);
    QVERIFY(boolean("System.processCmd('', [])")); // found at once, shown later
    mEngine.reset();
    QTest::qWait(30);
    QVERIFY(!QApplication::activeModalWidget());
    QCOMPARE(log.toStrings(), QStringList("3|Script Interface|Failed to start process  !"));
}

void tst_KyScriptSystem::setWorkingDirectoryIsWhereProgramsStart_data()
{
    QTest::addColumn<QString>("folder");
    QTest::addColumn<bool>("detached");
    for (const bool detached : {false, true}) {
        const QByteArray by = detached ? "startDetached, " : "processCmd, ";
        QTest::newRow(by + "plain") << "folder" << detached;
        QTest::newRow(by + "letters of all scripts, blanks") << QString::fromUtf8("größe 東京 x") << detached;
    }
}

void tst_KyScriptSystem::setWorkingDirectoryIsWhereProgramsStart()
{
    QFETCH(QString, folder);
    QFETCH(bool, detached);
    QVERIFY(QDir(mFolder->path()).mkpath(folder));
    set("folder", path(folder));
    set("start", detached ? "startDetached" : "processCmd");
    QVERIFY(boolean("System.setWorkingDirectory(folder); System[start](program, ['write', file])"));
    QCOMPARE(QString::fromUtf8(written("file")), canonical(path(folder)) + '\n');
}

void tst_KyScriptSystem::emptyWorkingDirectoryIsTheCurrentOne()
{
    QVERIFY(QDir(mFolder->path()).mkpath("one"));
    QVERIFY(QDir(mFolder->path()).mkpath("two"));
    set("one", path("one"));
    {
        const CurrentFolder current(path("two"));
        text("System.setWorkingDirectory(one); System.setWorkingDirectory('')");
    }
    QVERIFY(boolean("System.processCmd(program, ['write', file])"));
    QCOMPARE(QString::fromUtf8(written("file")), canonical(path("two")) + '\n');
}

void tst_KyScriptSystem::missingWorkingDirectoryIsAFailureToStart()
{
    ModalAnswer answer(expecting("Failed to start process " PROCESS_SAMPLE " exit 0!"));
    QVERIFY(boolean("System.setWorkingDirectory(missing); System.processCmd(program, ['exit', '0'])"));
    QTRY_VERIFY(answer.happened());
    QTRY_VERIFY(!QApplication::activeModalWidget());
    QVERIFY(!boolean("System.startDetached(program, ['exit', '0'])"));
}

void tst_KyScriptSystem::startDetachedStartsTheProgram()
{
    QVERIFY(boolean("System.startDetached(program, ['wait', mark])"));
    QTRY_VERIFY(QFile::exists(path("mark")));
    const pid_t pid = waitingPid();
    QVERIFY(exists(pid));
    mEngine.reset();
    QVERIFY(exists(pid));
}

void tst_KyScriptSystem::startDetachedTellsWhetherItStarted_data()
{
    QTest::addColumn<QString>("command");
    QTest::addColumn<bool>("started");
    QTest::newRow("program") << "program" << true;
    QTest::newRow("missing") << "missing" << false;
    QTest::newRow("no name") << "''" << false;
    QTest::newRow("folder") << "'/'" << false;
    QTest::newRow("4000 characters") << "'x'.repeat(4000)" << false;
}

void tst_KyScriptSystem::startDetachedTellsWhetherItStarted()
{
    QFETCH(QString, command);
    QFETCH(bool, started);
    const LogCapture log(2);
    QCOMPARE(boolean("System.startDetached(" + command + ", ['exit', '0'])"), started);
    QTest::qWait(20);
    QVERIFY(!QApplication::activeModalWidget());
    QCOMPARE(log.toStrings(), QStringList());
}

void tst_KyScriptSystem::startDetachedDoesNotWait()
{
    startWaiting();
    QVERIFY(boolean("System.startDetached(program, ['write', file])"));
    QVERIFY(written("file") != "not written");
    QVERIFY(exists(waitingPid()));
}

/// The message then names the detached program as the one that runs.
void tst_KyScriptSystem::startDetachedTakesThePlaceOfTheCommand()
{
    startWaiting();
    QVERIFY(boolean("System.startDetached(program, ['exit', '0'])"));
    ModalAnswer answer(
        expecting("Process " PROCESS_SAMPLE " exit 0 is still running! Skipping process other x."));
    QVERIFY(!boolean("System.processCmd('other', ['x'], 0)"));
}

void tst_KyScriptSystem::detachedProgramLeavesNoZombie()
{
    QVERIFY(boolean("System.startDetached(program, ['wait', mark])"));
    QTRY_VERIFY(QFile::exists(path("mark")));
    const pid_t pid = waitingPid();
    release();
    QTRY_VERIFY(
        !exists(pid) ||
        !read(QStringLiteral("/proc/%1/stat").arg(pid)).contains(" " + QByteArray::number(getpid()) + " "));
}

void tst_KyScriptSystem::setClipboardTextReachesTheClipboard_data()
{
    QTest::addColumn<QString>("argument");
    QTest::addColumn<QString>("copied");
    QTest::newRow("plain") << "'text'"
                           << "text";
    QTest::newRow("beyond Latin-1") << "'\\u00e4\\u20ac'" << QString::fromUtf8("ä€");
    QTest::newRow("lines") << "'a\\nb'"
                           << "a\nb";
    QTest::newRow("place markers") << "'%1 %s'"
                                   << "%1 %s";
    QTest::newRow("empty") << "''"
                           << "";
    QTest::newRow("null") << "null"
                          << "";
    QTest::newRow("number") << "5"
                            << "5";
}

void tst_KyScriptSystem::setClipboardTextReachesTheClipboard()
{
    QFETCH(QString, argument);
    QFETCH(QString, copied);
    QClipboard* clipboard = QGuiApplication::clipboard();
    clipboard->setText("before");
    const LogCapture log;
    text("System.setClipboardText(" + argument + ")");
    QCOMPARE(clipboard->text(QClipboard::Clipboard), copied);
    QCOMPARE(log.toStrings(), QStringList("1|Script Interface|Copied text to clipboard: " +
                                          QString::fromLatin1(copied.toLatin1())));
}

KY_TEST_MAIN(tst_KyScriptSystem)

#include "tst_KyScriptSystem.moc"
