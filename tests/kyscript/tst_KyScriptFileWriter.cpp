#include <support/ContractWatch.h>
#include <support/KyTest.h>
#include <support/KyTestPlatform.h>
#include <support/LogCapture.h>
#include <support/Unprivileged.h>

#include <kyscript/KyScriptEngine.h>
#include <kyscript/KyScriptFileWriter.h>
#include <kyscript/KyScriptOutputFile.h>

#include <QDateTime>
#include <QDir>
#include <QElapsedTimer>
#include <QFile>
#include <QPointer>
#include <QRegularExpression>
#include <QTemporaryDir>
#include <QTest>
#include <QTimeZone>

#include <csignal>
#include <ctime>
#include <memory>

#include <sys/resource.h>
#include <sys/stat.h>
#include <unistd.h>

class tst_KyScriptFileWriter : public QObject
{
    Q_OBJECT

private slots:
    void init();
    void cleanup();

    void scriptsMakeTheirOwn();

    // names
    void openFileNamesTheFile_data();
    void openFileNamesTheFile();
    void openFileAppendsTheTimestamp_data();
    void openFileAppendsTheTimestamp();
    void timestampIsTheLocalTime_data();
    void timestampIsTheLocalTime();
    void timestampFollowsTheLocalTimeAcrossAChange();
    void emptyDirectoryIsTheRoot();
    void relativeDirectoryIsBelowTheCurrentOne();

    // opening
    void openFileEmptiesTheFile();
    void openFileThatFails_data();
    void openFileThatFails();
    void filesWithoutPermissionCannotBeOpened();
    void failedOpenClosesTheFileBefore();
    void nextOpenClosesTheFileBefore();
    void sameNameAgainEmptiesTheFile();

    // writing
    void writeTakesWhatScriptsHold_data();
    void writeTakesWhatScriptsHold();
    void writeRefusesValuesWithoutBytes_data();
    void writeRefusesValuesWithoutBytes();
    void writeOfAnObjectMayRunAScript();
    void writeOfAnObjectThatThrowsIsRefused();
    void allWritesOfALargeBufferInPieces();
    void writeUtf8WritesUtf8_data();
    void writeUtf8WritesUtf8();
    void writeLatin1WritesLatin1_data();
    void writeLatin1WritesLatin1();
    void nothingIsTranslated();
    void writesWithoutAnOpenFileDoNothing_data();
    void writesWithoutAnOpenFileDoNothing();
    void closeFileTwiceIsHarmless();
    void fullDiskIsNotReported_data();
    void fullDiskIsNotReported();
    void fileSizeLimitIsNotReported();

    // saveFile
    void saveFileWritesTheWholeText_data();
    void saveFileWritesTheWholeText();
    void saveFileTakesThePathAsItIs();
    void saveFileReplacesTheContent();
    void saveFileThatFails_data();
    void saveFileThatFails();
    void saveFileLeavesTheOpenFileAlone();

    // life
    void objectThatIsCollectedClosesItsFile();
    void engineThatEndsClosesTheFile();
    void methodsOutliveTheirObject();

private:
    QString text(const QString& inSource) { return mEngine->evaluate(inSource).toString(); }
    /// Evaluates with a writer `w` whose file D/f.txt is open, closes it, and gives what the file holds.
    QByteArray afterWriting(const QString& inSource);
    void set(const char* inName, const QString& inValue)
    {
        mEngine->globalObject().setProperty(QString::fromLatin1(inName), inValue);
    }
    QString path(const QString& inName) const { return mFolder->filePath(inName); }
    QStringList files() const { return QDir(mFolder->path()).entryList(QDir::Files, QDir::Name); }
    static QByteArray read(const QString& inPath);
    /// Makes what cannot be opened for writing.
    void addObstacles();

    std::unique_ptr<QTemporaryDir> mFolder;
    std::unique_ptr<KyTestPlatform> mPlatform;
    std::unique_ptr<ContractWatch> mContracts;
    std::unique_ptr<KyScriptEngine> mEngine;
};

namespace {

constexpr const char* StampPattern = "-\\d{17}";

/// The environment variable TZ, for as long as this lives.
class TimeZone
{
public:
    explicit TimeZone(const QByteArray& inZone)
        : mBefore(qgetenv("TZ"))
    {
        qputenv("TZ", inZone);
        tzset();
    }
    ~TimeZone()
    {
        qputenv("TZ", mBefore);
        tzset();
    }
    TimeZone(const TimeZone&) = delete;
    TimeZone& operator=(const TimeZone&) = delete;

private:
    const QByteArray mBefore;
};

QDateTime parsed(const QString& inStamp)
{
    return QDateTime::fromString(inStamp, QStringLiteral("yyyyMMddhhmmsszzz"));
}

void flushDeferredDeletes()
{
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
}

} // namespace

void tst_KyScriptFileWriter::init()
{
    mFolder = std::make_unique<QTemporaryDir>();
    QVERIFY(mFolder->isValid());
    mPlatform = std::make_unique<KyTestPlatform>();
    mContracts = std::make_unique<ContractWatch>();
    mEngine = std::make_unique<KyScriptEngine>(nullptr, ScriptFileWriter | ScriptSystem);
    set("D", mFolder->path());
    text("w = new FileWriter()");
}

void tst_KyScriptFileWriter::cleanup()
{
    const QString broken = mContracts->verify();
    mEngine.reset();
    mContracts.reset();
    mPlatform.reset();
    mFolder.reset();
    QVERIFY2(broken.isEmpty(), qPrintable(broken));
}

QByteArray tst_KyScriptFileWriter::read(const QString& inPath)
{
    QFile file(inPath);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray("not there");
}

QByteArray tst_KyScriptFileWriter::afterWriting(const QString& inSource)
{
    const QJSValue value =
        mEngine->evaluate("w.openFile(D, 'f', false);" + inSource + "; w.closeFile(); 'written'");
    QTest::qCompare(value.toString(), QStringLiteral("written"), "value", "written", __FILE__, __LINE__);
    return read(path("f.txt"));
}

void tst_KyScriptFileWriter::scriptsMakeTheirOwn()
{
    QCOMPARE(KyScriptFileWriter::staticMetaObject.constructorCount(), 2); // with and without a parent
    QCOMPARE(text("var a = new FileWriter(), b = new FileWriter(a); a !== b && typeof b"),
             QStringLiteral("object"));
    text("a.destroy()"); // and with it what belongs to it
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    QCOMPARE(text("Object.keys(b).length"), QStringLiteral("0"));
}

void tst_KyScriptFileWriter::addObstacles()
{
    QVERIFY(QDir(mFolder->path()).mkdir("folder.txt"));
    QFile file(path("file"));
    QVERIFY(file.open(QIODevice::WriteOnly));
    QCOMPARE(::mkfifo(QFile::encodeName(path("pipe.txt")).constData(), 0600), 0);
    QVERIFY(QFile::link(path("loop.txt"), path("loop.txt")));
}

void tst_KyScriptFileWriter::openFileNamesTheFile_data()
{
    QTest::addColumn<QString>("name");
    QTest::addColumn<QString>("file");
    QTest::newRow("plain") << "report"
                           << "report.txt";
    QTest::newRow("with an extension") << "a.txt"
                                       << "a.txt.txt";
    QTest::newRow("ends in a dot") << "a."
                                   << "a..txt";
    QTest::newRow("blanks") << " a b "
                            << " a b .txt";
    QTest::newRow("letters of all scripts")
        << QString::fromUtf8("größe 東京 отчёт") << QString::fromUtf8("größe 東京 отчёт.txt");
    QTest::newRow("line break") << "a\nb"
                                << "a\nb.txt";
    QTest::newRow("folder in the name") << "sub/a"
                                        << "sub/a.txt";
    QTest::newRow("upwards") << "sub/../a"
                             << "a.txt";
    QTest::newRow("longest name") << QString(251, 'x') << QString(251, 'x') + ".txt";
}

void tst_KyScriptFileWriter::openFileNamesTheFile()
{
    QFETCH(QString, name);
    QFETCH(QString, file);
    QVERIFY(QDir(mFolder->path()).mkdir("sub"));
    set("name", name);
    QCOMPARE(text("w.openFile(D, name, false)"), QStringLiteral("true"));
    QVERIFY(QFile::exists(path(file)));
    QCOMPARE(files().size() + QDir(path("sub")).entryList(QDir::Files).size(), 1);
}

void tst_KyScriptFileWriter::openFileAppendsTheTimestamp_data()
{
    QTest::addColumn<QString>("arguments");
    QTest::addColumn<QString>("before");
    QTest::newRow("directory only") << "D"
                                    << "";
    QTest::newRow("no name") << "D, ''"
                             << "";
    QTest::newRow("no name, not wanted") << "D, '', false"
                                         << "";
    QTest::newRow("null as name, not wanted") << "D, null, false"
                                              << "";
    QTest::newRow("name") << "D, 'report'"
                          << "report";
    QTest::newRow("name, wanted") << "D, 'report', true"
                                  << "report";
    QTest::newRow("undefined") << "D, undefined, undefined"
                               << "";
    QTest::newRow("name with an extension") << "D, 'a.txt'"
                                            << "a.txt";
}

void tst_KyScriptFileWriter::openFileAppendsTheTimestamp()
{
    QFETCH(QString, arguments);
    QFETCH(QString, before);
    const QDateTime from = QDateTime::currentDateTime();
    QCOMPARE(text("w.openFile(" + arguments + ")"), QStringLiteral("true"));
    const QDateTime to = QDateTime::currentDateTime();
    QCOMPARE(files().size(), 1);
    const QRegularExpression pattern(
        QStringLiteral("^%1-(\\d{17})\\.txt$").arg(QRegularExpression::escape(before)));
    const auto match = pattern.match(files().at(0));
    QVERIFY2(match.hasMatch(), qPrintable(files().at(0)));
    QVERIFY(parsed(match.captured(1)) >= from && parsed(match.captured(1)) <= to);
}

void tst_KyScriptFileWriter::timestampIsTheLocalTime_data()
{
    QTest::addColumn<QString>("utc");
    QTest::addColumn<QString>("stamp");
    // Europe/Berlin
    QTest::newRow("winter") << "2026-01-31T13:05:09.120Z"
                            << "20260131140509120";
    QTest::newRow("summer") << "2026-07-31T12:05:09.007Z"
                            << "20260731140509007";
    QTest::newRow("before the clocks go forward") << "2026-03-29T00:59:59.999Z"
                                                  << "20260329015959999";
    QTest::newRow("after that") << "2026-03-29T01:00:00.000Z"
                                << "20260329030000000";
    QTest::newRow("before the clocks go back") << "2026-10-25T00:30:00.000Z"
                                               << "20261025023000000";
    QTest::newRow("an hour later") << "2026-10-25T01:30:00.000Z"
                                   << "20261025023000000";
    QTest::newRow("midnight of the new year") << "2026-12-31T23:00:00.000Z"
                                              << "20270101000000000";
}

void tst_KyScriptFileWriter::timestampIsTheLocalTime()
{
    QFETCH(QString, utc);
    QFETCH(QString, stamp);
    const TimeZone zone("Europe/Berlin");
    const QDateTime time = QDateTime::fromString(utc, Qt::ISODateWithMs);
    QVERIFY(time.isValid());
    QCOMPARE(KyScriptOutputFile::timestamp(time), stamp);
}

/// In a zone whose clocks go forward by an hour in a second from now.
void tst_KyScriptFileWriter::timestampFollowsTheLocalTimeAcrossAChange()
{
    const QDateTime change = QDateTime::currentDateTimeUtc().addMSecs(1500);
    const int day = change.date().dayOfYear() - 1; // counts a leap day, from 0
    const TimeZone zone(QStringLiteral("AAA0BBB,%1/%2,%3/%2")
                            .arg(QString::number(day), change.time().toString("hh:mm:ss"),
                                 QString::number(day > 180 ? 0 : 364))
                            .toLatin1());
    const auto stampOfANewFile = [this] {
        for (const QString& file : files())
            QFile::remove(path(file));
        text("w.openFile(D)");
        return parsed(files().at(0).mid(1, 17)).toString(Qt::ISODateWithMs);
    };
    const auto offset = [](const QString& stamp, const QDateTime& utc) {
        QDateTime time = QDateTime::fromString(stamp, Qt::ISODateWithMs);
        time.setTimeSpec(Qt::UTC);
        return utc.secsTo(time);
    };
    const QDateTime second = QDateTime(
        change.date(), QTime(change.time().hour(), change.time().minute(), change.time().second()), Qt::UTC);
    if (QDateTime::currentDateTimeUtc() < second.addMSecs(-300))
        QVERIFY(std::abs(offset(stampOfANewFile(), QDateTime::currentDateTimeUtc())) < 60);
    QTRY_VERIFY(QDateTime::currentDateTimeUtc() >= second);
    QVERIFY(std::abs(offset(stampOfANewFile(), QDateTime::currentDateTimeUtc()) - 3600) < 60);
}

void tst_KyScriptFileWriter::emptyDirectoryIsTheRoot()
{
    set("name", path("a").mid(1));
    QCOMPARE(text("w.openFile('', name, false)"), QStringLiteral("true"));
    QCOMPARE(files(), QStringList("a.txt"));
}

void tst_KyScriptFileWriter::relativeDirectoryIsBelowTheCurrentOne()
{
    const QString before = QDir::currentPath();
    QDir::setCurrent(mFolder->path());
    QCOMPARE(text("w.openFile('.', 'a', false)"), QStringLiteral("true"));
    QDir::setCurrent(before);
    QCOMPARE(files(), QStringList("a.txt"));
}

void tst_KyScriptFileWriter::openFileEmptiesTheFile()
{
    afterWriting("w.writeUtf8('a long content')");
    QCOMPARE(text("w.openFile(D, 'f', false)"), QStringLiteral("true"));
    QCOMPARE(read(path("f.txt")), QByteArray());
}

void tst_KyScriptFileWriter::openFileThatFails_data()
{
    QTest::addColumn<QString>("directory");
    QTest::addColumn<QString>("name");
    QTest::newRow("missing directory") << "missing"
                                       << "a";
    QTest::newRow("directory is a file") << "file"
                                         << "a";
    QTest::newRow("file is a directory") << "."
                                         << "folder";
    QTest::newRow("link to itself") << "."
                                    << "loop";
    QTest::newRow("pipe that nobody reads") << "."
                                            << "pipe";
    QTest::newRow("4000 characters") << "." << QString(4000, 'x');
    QTest::newRow("directory of 4000 characters") << QString(4000, 'x') << "a";
    QTest::newRow("path of 5000 characters") << "." << QString("./").repeated(2500) + 'a';
    QTest::newRow("NUL in the name") << "." << QString::fromLatin1("file\0a", 6);
    QTest::newRow("NUL in the directory") << QString::fromLatin1(".\0a", 3) << "a";
}

void tst_KyScriptFileWriter::openFileThatFails()
{
    QFETCH(QString, directory);
    QFETCH(QString, name);
    addObstacles();
    const QStringList before = files();
    set("directory", mFolder->path() + '/' + directory);
    set("name", name);
    const LogCapture log;
    QElapsedTimer elapsed;
    elapsed.start();
    const QJSValue result = mEngine->evaluate("w.openFile(directory, name, false)");
    QVERIFY(result.isBool());
    QVERIFY(!result.toBool());
    QCOMPARE(text("w.write('x'); w.writeUtf8('x'); w.writeLatin1('x'); w.closeFile(); 'done'"),
             QStringLiteral("done"));
    QVERIFY(elapsed.elapsed() < 30000);
    QCOMPARE(log.toStrings(), QStringList());
    QCOMPARE(files(), before);
    QCOMPARE(read(path("file")), QByteArray());
}

void tst_KyScriptFileWriter::filesWithoutPermissionCannotBeOpened()
{
    QFile file(path("a.txt"));
    QVERIFY(file.open(QIODevice::WriteOnly));
    QVERIFY(file.setPermissions(QFile::ReadOwner));
    file.close();
    QVERIFY(QFile::setPermissions(mFolder->path(), QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner |
                                                       QFile::ReadOther | QFile::ExeOther));
    QVERIFY(QDir(mFolder->path()).mkdir("locked"));
    QVERIFY(QFile::setPermissions(path("locked"), QFile::ReadOwner | QFile::ExeOwner));
    QStringList results;
    {
        const Unprivileged rights;
        for (const char* call : {"w.openFile(D, 'a', false)", "w.openFile(D + '/locked', 'b', false)",
                                 "w.saveFile(D + '/a.txt', 'x')", "w.saveFile(D + '/locked/b', 'x')"})
            results.append(text(call));
    }
    QCOMPARE(results, QStringList({"false", "false", "false", "false"}));
    QVERIFY(QFile::setPermissions(path("locked"), QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner));
}

void tst_KyScriptFileWriter::failedOpenClosesTheFileBefore()
{
    text("w.openFile(D, 'a', false); w.writeUtf8('first')");
    QCOMPARE(text("w.openFile(D + '/missing', 'b', false)"), QStringLiteral("false"));
    QCOMPARE(read(path("a.txt")), QByteArray("first"));
    text("w.writeUtf8('second'); w.closeFile()");
    QCOMPARE(read(path("a.txt")), QByteArray("first"));
}

void tst_KyScriptFileWriter::nextOpenClosesTheFileBefore()
{
    text("w.openFile(D, 'a', false); w.writeUtf8('first')");
    text("w.openFile(D, 'b', false)");
    QCOMPARE(read(path("a.txt")), QByteArray("first"));
    text("w.writeUtf8('second'); w.closeFile()");
    QCOMPARE(read(path("a.txt")), QByteArray("first"));
    QCOMPARE(read(path("b.txt")), QByteArray("second"));
}

/// As two calls in the same millisecond do.
void tst_KyScriptFileWriter::sameNameAgainEmptiesTheFile()
{
    text("w.openFile(D, 'a', false); w.writeUtf8('first')");
    QCOMPARE(text("w.openFile(D, 'a', false)"), QStringLiteral("true"));
    QCOMPARE(read(path("a.txt")), QByteArray());
    text("w.writeUtf8('2'); w.closeFile()");
    QCOMPARE(read(path("a.txt")), QByteArray("2"));

    // Until two come in the same millisecond.
    const QString source =
        "var n = 0; for (var i = 0; i < 1000; ++i) { w.openFile(D, 't'); ++n; w.write('' + i); } n";
    QCOMPARE(text(source), QStringLiteral("1000"));
    const auto stamped = QDir(mFolder->path()).entryList({"t-*"}, QDir::Files);
    QVERIFY2(stamped.size() < 1000, "each in a millisecond of its own");
    for (const QString& file : stamped)
        QVERIFY(QRegularExpression(QStringLiteral("^t%1\\.txt$").arg(StampPattern)).match(file).hasMatch());
}

void tst_KyScriptFileWriter::writeTakesWhatScriptsHold_data()
{
    QTest::addColumn<QString>("value");
    QTest::addColumn<QByteArray>("bytes");
    QTest::newRow("text") << "'a\\u00e4\\u20ac'" << QByteArray("a\xc3\xa4\xe2\x82\xac");
    QTest::newRow("empty text") << "''" << QByteArray();
    QTest::newRow("NUL") << "'a\\0b'" << QByteArray("a\0b", 3);
    QTest::newRow("half a character") << "'\\ud83d'" << QString(QChar(0xd83d)).toUtf8();
    QTest::newRow("number") << "5.5" << QByteArray("5.5");
    QTest::newRow("boolean") << "true" << QByteArray("true");
    QTest::newRow("null") << "null" << QByteArray();
    QTest::newRow("array") << "[1, 300, -1, '7']" << QByteArray("\x01\x2c\xff\x07", 4);
    QTest::newRow("empty array") << "[]" << QByteArray();
    QTest::newRow("array of odd values") << "[Symbol(), , {}, 'x', 1]" << QByteArray("\0\0\0\0\1", 5);
    QTest::newRow("ArrayBuffer") << "new Uint8Array([0, 255, 10]).buffer" << QByteArray("\x00\xff\x0a", 3);
    QTest::newRow("empty ArrayBuffer") << "new ArrayBuffer(0)" << QByteArray();
    QTest::newRow("Uint8Array") << "new Uint8Array([0, 255, 10])" << QByteArray("\x00\xff\x0a", 3);
    QTest::newRow("empty Uint8Array") << "new Uint8Array(0)" << QByteArray();
    QTest::newRow("Int8Array") << "new Int8Array([-1, 1])" << QByteArray("\xff\x01", 2);
    QTest::newRow("Uint8ClampedArray") << "new Uint8ClampedArray([300])" << QByteArray("\xff", 1);
    QTest::newRow("Uint16Array") << "new Uint16Array([258])" << QByteArray("\x02\x01", 2);
    QTest::newRow("Float64Array") << "new Float64Array([1])" << QByteArray("\0\0\0\0\0\0\xf0\x3f", 8);
    QTest::newRow("part of a buffer")
        << "new Uint8Array(new Uint8Array([1, 2, 3, 4]).buffer, 1, 2)" << QByteArray("\x02\x03", 2);
    QTest::newRow("end of a buffer") << "new Uint8Array([1, 2, 3, 4]).subarray(3)" << QByteArray("\x04", 1);
    QTest::newRow("DataView") << "new DataView(new Uint8Array([1, 2, 3]).buffer, 1)"
                              << QByteArray("\x02\x03", 2);
}

void tst_KyScriptFileWriter::writeTakesWhatScriptsHold()
{
    QFETCH(QString, value);
    QFETCH(QByteArray, bytes);
    QCOMPARE(afterWriting("w.write('<'); w.write(" + value + "); w.write('>')"), '<' + bytes + '>');
}

void tst_KyScriptFileWriter::writeRefusesValuesWithoutBytes_data()
{
    QTest::addColumn<QString>("value");
    for (const char* value :
         {"undefined", "{}", "{a: Symbol()}", "Symbol()", "function() {}", "new Date()", "/x/", "w",
          "{buffer: 5, byteOffset: 0, byteLength: 1}", "{buffer: {}, byteOffset: 0, byteLength: 1}",
          "{buffer: [Symbol()], byteOffset: 0, byteLength: 1}",
          "(function() { var a = []; a.length = 4e9; return a; })()"})
        QTest::newRow(value) << value;
}

void tst_KyScriptFileWriter::writeRefusesValuesWithoutBytes()
{
    QFETCH(QString, value);
    QCOMPARE(afterWriting("w.write('<'); try { w.write(" + value +
                          "); } catch (e) { w.write(e instanceof TypeError ? 'TypeError' : '' + e); }"),
             QByteArray("<TypeError"));
    QVERIFY(!mEngine->hasError());
}

void tst_KyScriptFileWriter::writeOfAnObjectMayRunAScript()
{
    QCOMPARE(afterWriting("w.write('<'); w.write({get buffer() { w.write('inner'); w.closeFile();"
                          "return new Uint8Array([65, 66]).buffer; }, byteOffset: 0, byteLength: 2})"),
             QByteArray("<inner"));

    // The object may even end.
    text("w.openFile(D, 'g', false); w.write('<'); try { w.write({get buffer() { w.destroy(); "
         "System.sleep(20);"
         "return new Uint8Array([65, 66]).buffer; }, byteOffset: 0, byteLength: 2}); } catch (e) {}");
    flushDeferredDeletes();
    QCOMPARE(read(path("g.txt")).left(1), QByteArray("<"));
}

void tst_KyScriptFileWriter::writeOfAnObjectThatThrowsIsRefused()
{
    const QString source =
        "w.openFile(D, 'f', false); try { w.write({get buffer() { throw new RangeError('mine'); }});"
        " 'no error' } catch (e) { '' + e }";
    QVERIFY(text(source).startsWith("TypeError"));
    QCOMPARE(text("w.closeFile(); 1 + 1"), QStringLiteral("2"));
    QCOMPARE(read(path("f.txt")), QByteArray());
}

/// A copy of the whole buffer for each piece would take minutes.
void tst_KyScriptFileWriter::allWritesOfALargeBufferInPieces()
{
    QElapsedTimer elapsed;
    elapsed.start();
    const QByteArray content =
        afterWriting("var all = new Uint8Array(16000000); all[15999999] = 7;"
                     "for (var at = 0; at < all.length; at += 1000) w.write(all.subarray(at, at + 1000))");
    QCOMPARE(content.size(), 16000000);
    QCOMPARE(int(content.back()), 7);
    QVERIFY(elapsed.elapsed() < 30000);
}

void tst_KyScriptFileWriter::writeUtf8WritesUtf8_data()
{
    QTest::addColumn<QString>("value");
    QTest::addColumn<QByteArray>("bytes");
    QTest::newRow("plain") << "'abc'" << QByteArray("abc");
    QTest::newRow("beyond Latin-1") << "'\\u00e4\\u20ac\\ud83d\\ude00'"
                                    << QByteArray("\xc3\xa4\xe2\x82\xac\xf0\x9f\x98\x80");
    QTest::newRow("number") << "5" << QByteArray("5");
    QTest::newRow("null") << "null" << QByteArray();
    QTest::newRow("undefined") << "undefined" << QByteArray();
    QTest::newRow("NUL") << "'a\\0b'" << QByteArray("a\0b", 3);
}

void tst_KyScriptFileWriter::writeUtf8WritesUtf8()
{
    QFETCH(QString, value);
    QFETCH(QByteArray, bytes);
    QCOMPARE(afterWriting("w.writeUtf8('<'); w.writeUtf8(" + value + "); w.writeUtf8('>')"),
             '<' + bytes + '>');
}

void tst_KyScriptFileWriter::writeLatin1WritesLatin1_data()
{
    QTest::addColumn<QString>("value");
    QTest::addColumn<QByteArray>("bytes");
    QTest::newRow("plain") << "'abc'" << QByteArray("abc");
    QTest::newRow("Latin-1") << "'\\u00e4\\u00ff'" << QByteArray("\xe4\xff");
    QTest::newRow("beyond") << "'\\u20ac\\u6771'" << QByteArray("??");
    QTest::newRow("null") << "null" << QByteArray();
    QTest::newRow("NUL") << "'a\\0b'" << QByteArray("a\0b", 3);
}

void tst_KyScriptFileWriter::writeLatin1WritesLatin1()
{
    QFETCH(QString, value);
    QFETCH(QByteArray, bytes);
    QCOMPARE(afterWriting("w.writeLatin1('<'); w.writeLatin1(" + value + "); w.writeLatin1('>')"),
             '<' + bytes + '>');
}

void tst_KyScriptFileWriter::nothingIsTranslated()
{
    QCOMPARE(afterWriting("w.writeUtf8('a\\nb\\r\\n'); w.writeLatin1('c\\n'); w.write('d\\n\\ufeff')"),
             QByteArray("a\nb\r\nc\nd\n\xef\xbb\xbf"));
}

void tst_KyScriptFileWriter::writesWithoutAnOpenFileDoNothing_data()
{
    QTest::addColumn<QString>("source");
    QTest::newRow("before openFile") << "";
    QTest::newRow("after closeFile") << "w.openFile(D, 'f', false); w.closeFile();";
    QTest::newRow("after an openFile that failed") << "w.openFile(D + '/missing', 'f', false);";
}

void tst_KyScriptFileWriter::writesWithoutAnOpenFileDoNothing()
{
    QFETCH(QString, source);
    const LogCapture log;
    QCOMPARE(text(source + "w.write('x'); w.write(new Uint8Array(3)); w.write(undefined); w.writeUtf8('x');"
                           "w.writeLatin1('x'); w.closeFile(); 'done'"),
             QStringLiteral("done"));
    QCOMPARE(log.toStrings(), QStringList());
    for (const QString& file : files())
        QCOMPARE(read(path(file)), QByteArray());
}

void tst_KyScriptFileWriter::closeFileTwiceIsHarmless()
{
    QCOMPARE(text("w.closeFile(); w.closeFile(); w.openFile(D, 'a', false); w.write('x'); w.closeFile();"
                  "w.closeFile(); 'done'"),
             QStringLiteral("done"));
    QCOMPARE(read(path("a.txt")), QByteArray("x"));
    QCOMPARE(text("w.openFile(D, 'b', false)"), QStringLiteral("true")); // and may be opened again
}

void tst_KyScriptFileWriter::fullDiskIsNotReported_data()
{
    QTest::addColumn<QString>("source");
    QTest::newRow("writeUtf8") << "w.writeUtf8('x'.repeat(100))";
    QTest::newRow("writeLatin1") << "w.writeLatin1('x'.repeat(100))";
    QTest::newRow("write") << "w.write(new Uint8Array(100))";
}

void tst_KyScriptFileWriter::fullDiskIsNotReported()
{
    QFETCH(QString, source);
    QVERIFY(QFile::link("/dev/full", path("full.txt")));
    const LogCapture log;
    QCOMPARE(text("w.openFile(D, 'full', false)"), QStringLiteral("true"));
    QCOMPARE(text("for (var i = 0; i < 1000; ++i) " + source + "; w.closeFile(); w.closeFile(); 'done'"),
             QStringLiteral("done"));
    QCOMPARE(text("w.openFile(D, 'next', false); w.write('x'); w.closeFile(); 'done'"),
             QStringLiteral("done"));
    QCOMPARE(read(path("next.txt")), QByteArray("x"));
    QCOMPARE(log.toStrings(), QStringList());
}

void tst_KyScriptFileWriter::fileSizeLimitIsNotReported()
{
    const auto handler = std::signal(SIGXFSZ, SIG_IGN);
    rlimit before{};
    QCOMPARE(::getrlimit(RLIMIT_FSIZE, &before), 0);
    rlimit limit = before;
    limit.rlim_cur = 100'000;
    QCOMPARE(::setrlimit(RLIMIT_FSIZE, &limit), 0);
    const QByteArray content = afterWriting("for (var i = 0; i < 10000; ++i) w.writeUtf8('x'.repeat(100))");
    set("file", path("saved"));
    const QString saved = text("new FileWriter().saveFile(file, 'x'.repeat(1000000))");
    ::setrlimit(RLIMIT_FSIZE, &before);
    std::signal(SIGXFSZ, handler);
    QCOMPARE(content.size(), 100'000);
    QCOMPARE(saved, QStringLiteral("true"));
    QCOMPARE(QFileInfo(path("saved")).size(), 100'000);
}

void tst_KyScriptFileWriter::saveFileWritesTheWholeText_data()
{
    QTest::addColumn<QString>("value");
    QTest::addColumn<QByteArray>("bytes");
    QTest::newRow("plain") << "'a\\nb'" << QByteArray("a\nb");
    QTest::newRow("beyond Latin-1") << "'\\u00e4\\u20ac'" << QByteArray("\xc3\xa4\xe2\x82\xac");
    QTest::newRow("empty") << "''" << QByteArray();
    QTest::newRow("null") << "null" << QByteArray();
    QTest::newRow("undefined") << "undefined" << QByteArray();
    QTest::newRow("number") << "5" << QByteArray("5");
    QTest::newRow("a million") << "'x'.repeat(1000000)" << QByteArray(1000000, 'x');
}

void tst_KyScriptFileWriter::saveFileWritesTheWholeText()
{
    QFETCH(QString, value);
    QFETCH(QByteArray, bytes);
    QCOMPARE(text("w.saveFile(D + '/f', " + value + ")"), QStringLiteral("true"));
    QCOMPARE(read(path("f")), bytes);
}

void tst_KyScriptFileWriter::saveFileTakesThePathAsItIs()
{
    for (const QString& name : {QStringLiteral("f"), QStringLiteral("f.csv"), QStringLiteral("f."),
                                QStringLiteral(" "), QString::fromUtf8("größe 東京.csv")})
    {
        set("name", name);
        QCOMPARE(text("w.saveFile(D + '/' + name, 'x')"), QStringLiteral("true"));
        QCOMPARE(read(path(name)), QByteArray("x"));
    }
    QCOMPARE(files().size(), 5);
}

void tst_KyScriptFileWriter::saveFileReplacesTheContent()
{
    text("w.saveFile(D + '/f', 'a long content'); w.saveFile(D + '/f', 'short')");
    QCOMPARE(read(path("f")), QByteArray("short"));
}

void tst_KyScriptFileWriter::saveFileThatFails_data()
{
    QTest::addColumn<QString>("name");
    QTest::newRow("empty") << "";
    QTest::newRow("missing directory") << "missing/f";
    QTest::newRow("directory") << "folder.txt";
    QTest::newRow("below a file") << "file/f";
    QTest::newRow("link to itself") << "loop.txt";
    QTest::newRow("pipe that nobody reads") << "pipe.txt";
    QTest::newRow("4000 characters") << QString(4000, 'x');
    QTest::newRow("NUL") << QString::fromLatin1("file\0x", 6);
}

void tst_KyScriptFileWriter::saveFileThatFails()
{
    QFETCH(QString, name);
    addObstacles();
    const QStringList before = files();
    set("name", name.isEmpty() ? name : path(name));
    const LogCapture log;
    const QJSValue result = mEngine->evaluate("w.saveFile(name, 'x')");
    QVERIFY(result.isBool());
    QVERIFY(!result.toBool());
    QCOMPARE(log.toStrings(), QStringList());
    QCOMPARE(files(), before);
    QCOMPARE(read(path("file")), QByteArray());
}

void tst_KyScriptFileWriter::saveFileLeavesTheOpenFileAlone()
{
    QCOMPARE(afterWriting("w.write('a'); w.saveFile(D + '/other', 'x'); w.saveFile(D + '/missing/x', 'x');"
                          "w.write('b')"),
             QByteArray("ab"));
    QCOMPARE(text("w.saveFile('/dev/full', 'x')"), QStringLiteral("true")); // only the opening counts
}

void tst_KyScriptFileWriter::objectThatIsCollectedClosesItsFile()
{
    text("w.openFile(D, 'a', false); w.write('x'); w = null");
    text("collectGarbage()");
    flushDeferredDeletes();
    QCOMPARE(read(path("a.txt")), QByteArray("x"));
}

void tst_KyScriptFileWriter::engineThatEndsClosesTheFile()
{
    text("w.openFile(D, 'a', false); w.write('x')");
    mEngine.reset();
    QCOMPARE(read(path("a.txt")), QByteArray("x"));
}

void tst_KyScriptFileWriter::methodsOutliveTheirObject()
{
    text("write = w.write; open = w.openFile; open(D + '/missing'); write('x'); w = null");
    text("collectGarbage()");
    flushDeferredDeletes();
    text("open(D, 'a', false); write('x')");
    QCOMPARE(files(), QStringList());
}

KY_TEST_MAIN(tst_KyScriptFileWriter)

#include "tst_KyScriptFileWriter.moc"
