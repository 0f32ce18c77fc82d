#include <support/ContractWatch.h>
#include <support/KyTest.h>
#include <support/KyTestPlatform.h>
#include <support/LogCapture.h>
#include <support/Unprivileged.h>

#include <kyscript/KyScriptEngine.h>
#include <kyscript/KyScriptXmlFileWriter.h>

#include <QDateTime>
#include <QDir>
#include <QFile>
#include <QRegularExpression>
#include <QTemporaryDir>
#include <QTest>
#include <QXmlStreamReader>
#include <QXmlStreamWriter>

#include <functional>
#include <memory>

#include <sys/stat.h>
#include <unistd.h>

using Calls = std::function<void(QXmlStreamWriter&)>;
Q_DECLARE_METATYPE(Calls)

class tst_KyScriptXmlFileWriter : public QObject
{
    Q_OBJECT

private slots:
    void init();
    void cleanup();

    void scriptsMakeTheirOwn();

    // files
    void openFileNamesTheFile_data();
    void openFileNamesTheFile();
    void openFileAppendsTheTimestamp_data();
    void openFileAppendsTheTimestamp();
    void openFileCreatesTheDirectory_data();
    void openFileCreatesTheDirectory();
    void directoryThatCannotBeCreatedIsLogged_data();
    void directoryThatCannotBeCreatedIsLogged();
    void fileThatCannotBeOpenedIsNotLogged_data();
    void fileThatCannotBeOpenedIsNotLogged();
    void foldersWithoutPermissionTakeNothing();
    void openFileEmptiesTheFile();
    void fileBecomesADocument();

    // which target is written to
    void writesWithoutATargetDoNothing();
    void failedOpenLeavesTheBufferTheTarget();
    void failedOpenAfterAFileWritesNowhere();
    void failedDirectoryLeavesTheFileTheTarget();
    void nextFileIsTheTarget();
    void openBufferLeavesTheFileAlone();
    void closedFileTakesNothing();
    void closeFileInBufferModeLeavesTheWriterWorking();
    void closeFileTwiceIsHarmless();
    void fullDiskIsNotReported();

    // the buffer
    void bufferIsEmptyAtFirst();
    void bufferHoldsTheDocument();
    void bufferTakesBytesAndTexts_data();
    void bufferTakesBytesAndTexts();
    void bufferRefusesValuesWithoutBytes_data();
    void bufferRefusesValuesWithoutBytes();
    void valueOfTheBufferMayRunAScript();
    void secondDocumentOverwritesFromTheStart();
    void clearedBufferHoldsTheSecondDocumentOnly();
    void bufferReplacedWhileWritingGoesOnBehindIt_data();
    void bufferReplacedWhileWritingGoesOnBehindIt();
    void bufferIsACopy();
    void bufferCanBeWrittenToAFile();

    // what is written
    void callsWriteWhatQtWrites_data();
    void callsWriteWhatQtWrites();
    void argumentsAreTexts();
    void manyOpenElementsAreClosed();

    // life
    void objectThatIsCollectedClosesItsFile();
    void objectInBufferModeCanBeCollected();

private:
    QString text(const QString& inSource) { return mEngine->evaluate(inSource).toString(); }
    /// What stands in the buffer of the writer `w`.
    QByteArray buffer() { return mEngine->evaluate("w.buffer").toVariant().toByteArray(); }
    void set(const char* inName, const QString& inValue)
    {
        mEngine->globalObject().setProperty(QString::fromLatin1(inName), inValue);
    }
    QString path(const QString& inName) const { return mFolder->filePath(inName); }
    QStringList files() const { return QDir(mFolder->path()).entryList(QDir::Files, QDir::Name); }
    static QByteArray read(const QString& inPath);

    std::unique_ptr<QTemporaryDir> mFolder;
    std::unique_ptr<KyTestPlatform> mPlatform;
    std::unique_ptr<ContractWatch> mContracts;
    std::unique_ptr<KyScriptEngine> mEngine;
};

namespace {

const QString Document =
    QStringLiteral("w.writeStartDocument(); w.writeStartElement('a'); w.writeAttribute('b', 'c');"
                   "w.writeTextElement('d', 'e'); w.writeEndElement(); w.writeEndDocument();");
const QByteArray Written = "<?xml version=\"1.0\" encoding=\"UTF-8\"?><a b=\"c\"><d>e</d></a>\n";

void flushDeferredDeletes()
{
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
}

} // namespace

void tst_KyScriptXmlFileWriter::init()
{
    mFolder = std::make_unique<QTemporaryDir>();
    QVERIFY(mFolder->isValid());
    mPlatform = std::make_unique<KyTestPlatform>();
    mContracts = std::make_unique<ContractWatch>();
    mEngine = std::make_unique<KyScriptEngine>(nullptr, ScriptXmlFileWriter | ScriptFileWriter);
    set("D", mFolder->path());
    text("w = new XmlFileWriter()");
}

void tst_KyScriptXmlFileWriter::cleanup()
{
    const QString broken = mContracts->verify();
    mEngine.reset();
    mContracts.reset();
    mPlatform.reset();
    mFolder.reset();
    QVERIFY2(broken.isEmpty(), qPrintable(broken));
}

QByteArray tst_KyScriptXmlFileWriter::read(const QString& inPath)
{
    QFile file(inPath);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray("not there");
}

void tst_KyScriptXmlFileWriter::scriptsMakeTheirOwn()
{
    QCOMPARE(KyScriptXmlFileWriter::staticMetaObject.constructorCount(), 2); // with and without a parent
    QCOMPARE(text("var a = new XmlFileWriter(), b = new XmlFileWriter(a); a !== b && typeof b"),
             QStringLiteral("object"));
    text("a.destroy()"); // and with it what belongs to it
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    QCOMPARE(text("Object.keys(b).length"), QStringLiteral("0"));
}

void tst_KyScriptXmlFileWriter::openFileNamesTheFile_data()
{
    QTest::addColumn<QString>("name");
    QTest::addColumn<QString>("file");
    QTest::newRow("plain") << "a"
                           << "a.xml";
    QTest::newRow("with an extension") << "a.xml"
                                       << "a.xml.xml";
    QTest::newRow("ends in a dot") << "a."
                                   << "a..xml";
    QTest::newRow("letters of all scripts, blanks")
        << QString::fromUtf8("größe 東京 ") << QString::fromUtf8("größe 東京 .xml");
}

void tst_KyScriptXmlFileWriter::openFileNamesTheFile()
{
    QFETCH(QString, name);
    QFETCH(QString, file);
    set("name", name);
    QCOMPARE(text("w.openFile(D, name, false)"), QStringLiteral("true"));
    QCOMPARE(files(), QStringList(file));
}

void tst_KyScriptXmlFileWriter::openFileAppendsTheTimestamp_data()
{
    QTest::addColumn<QString>("arguments");
    QTest::addColumn<QString>("before");
    QTest::newRow("directory only") << "D"
                                    << "";
    QTest::newRow("no name, not wanted") << "D, '', false"
                                         << "";
    QTest::newRow("name") << "D, 'a'"
                          << "a";
    QTest::newRow("name, wanted") << "D, 'a', true"
                                  << "a";
}

void tst_KyScriptXmlFileWriter::openFileAppendsTheTimestamp()
{
    QFETCH(QString, arguments);
    QFETCH(QString, before);
    const QDateTime from = QDateTime::currentDateTime();
    QCOMPARE(text("w.openFile(" + arguments + ")"), QStringLiteral("true"));
    const QDateTime to = QDateTime::currentDateTime();
    QCOMPARE(files().size(), 1);
    const auto match = QRegularExpression("^" + before + "-(\\d{17})\\.xml$").match(files().at(0));
    QVERIFY2(match.hasMatch(), qPrintable(files().at(0)));
    const QDateTime stamp = QDateTime::fromString(match.captured(1), "yyyyMMddhhmmsszzz");
    QVERIFY(stamp >= from && stamp <= to);
}

void tst_KyScriptXmlFileWriter::openFileCreatesTheDirectory_data()
{
    QTest::addColumn<QString>("directory");
    QTest::newRow("one") << "new";
    QTest::newRow("with parents") << "new/deeper/deepest";
    QTest::newRow("letters of all scripts, blanks") << QString::fromUtf8("größe 東京 /x y");
    QTest::newRow("path of 4000 characters") << (QString(240, 'x') + '/').repeated(16);
    QTest::newRow("ends in a slash") << "new/";
}

void tst_KyScriptXmlFileWriter::openFileCreatesTheDirectory()
{
    QFETCH(QString, directory);
    set("directory", path(directory));
    const LogCapture log;
    QCOMPARE(text("w.openFile(directory, 'a', false)"), QStringLiteral("true"));
    QVERIFY(QFile::exists(path(directory) + "/a.xml"));
    QCOMPARE(log.toStrings(), QStringList());
}

void tst_KyScriptXmlFileWriter::directoryThatCannotBeCreatedIsLogged_data()
{
    QTest::addColumn<QString>("directory");
    QTest::newRow("is a file") << "file";
    QTest::newRow("below a file") << "file/new";
    QTest::newRow("not for anybody") << "/proc/new";
    QTest::newRow("name of 4000 characters") << QString(4000, 'x');
    QTest::newRow("beyond Latin-1") << QString::fromUtf8("file/größe 東京 %s");
}

void tst_KyScriptXmlFileWriter::directoryThatCannotBeCreatedIsLogged()
{
    QFETCH(QString, directory);
    QFile file(path("file"));
    QVERIFY(file.open(QIODevice::WriteOnly));
    const QString whole = directory.startsWith('/') ? directory : path(directory);
    set("directory", whole);
    const LogCapture log;
    const QJSValue result = mEngine->evaluate("w.openFile(directory, 'a', false)");
    QVERIFY(result.isBool());
    QVERIFY(!result.toBool());
    QCOMPARE(log.toStrings(),
             QStringList("3||Error creating directory " + QString::fromLatin1(whole.toLatin1())));
    QCOMPARE(files(), QStringList("file"));
}

void tst_KyScriptXmlFileWriter::fileThatCannotBeOpenedIsNotLogged_data()
{
    QTest::addColumn<QString>("name");
    QTest::newRow("is a directory") << "folder";
    QTest::newRow("in a missing directory") << "missing/a"; // only the directory itself is created
    QTest::newRow("link to itself") << "loop";
    QTest::newRow("pipe that nobody reads") << "pipe";
    QTest::newRow("4000 characters") << QString(4000, 'x');
    QTest::newRow("NUL") << QString::fromLatin1("a\0b", 3);
}

void tst_KyScriptXmlFileWriter::fileThatCannotBeOpenedIsNotLogged()
{
    QFETCH(QString, name);
    QVERIFY(QDir(mFolder->path()).mkdir("folder.xml"));
    QVERIFY(QFile::link(path("loop.xml"), path("loop.xml")));
    QCOMPARE(::mkfifo(QFile::encodeName(path("pipe.xml")).constData(), 0600), 0);
    const QStringList before = files();
    set("name", name);
    const LogCapture log;
    const QJSValue result = mEngine->evaluate("w.openFile(D, name, false)");
    QVERIFY(result.isBool());
    QVERIFY(!result.toBool());
    QCOMPARE(text(Document + "w.closeFile(); 'done'"), QStringLiteral("done"));
    QCOMPARE(log.toStrings(), QStringList());
    QCOMPARE(files(), before);
}

void tst_KyScriptXmlFileWriter::foldersWithoutPermissionTakeNothing()
{
    QVERIFY(QFile::setPermissions(mFolder->path(), QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner |
                                                       QFile::ReadOther | QFile::ExeOther));
    QVERIFY(QDir(mFolder->path()).mkdir("locked"));
    QVERIFY(QFile::setPermissions(path("locked"), QFile::ReadOwner | QFile::ExeOwner));
    const LogCapture log;
    QStringList results;
    {
        const Unprivileged rights;
        results.append(text("w.openFile(D + '/locked/new', 'a', false)"));
        results.append(text("w.openFile(D + '/locked', 'a', false)"));
    }
    QCOMPARE(results, QStringList({"false", "false"}));
    QCOMPARE(log.toStrings().at(0), "3||Error creating directory " + path("locked/new"));
    QVERIFY(QDir(path("locked")).isEmpty());
}

void tst_KyScriptXmlFileWriter::openFileEmptiesTheFile()
{
    text("w.openFile(D, 'a', false);" + Document + "w.closeFile(); w.openFile(D, 'a', false)");
    QCOMPARE(read(path("a.xml")), QByteArray());
}

void tst_KyScriptXmlFileWriter::fileBecomesADocument()
{
    text("w.openFile(D, 'a', false);" + Document + "w.closeFile()");
    QCOMPARE(read(path("a.xml")), Written);
}

void tst_KyScriptXmlFileWriter::writesWithoutATargetDoNothing()
{
    const LogCapture log;
    for (const char* call :
         {"w.writeStartDocument()", "w.writeStartElement('a')", "w.writeAttribute('b', 'c')",
          "w.writeTextElement('d', 'e')", "w.writeEndElement()", "w.writeEndDocument()", "w.closeFile()"})
    {
        QCOMPARE(text(call), QStringLiteral("undefined"));
        QCOMPARE(buffer(), QByteArray());
    }
    QCOMPARE(files(), QStringList());
    QCOMPARE(log.toStrings(), QStringList());
}

void tst_KyScriptXmlFileWriter::failedOpenLeavesTheBufferTheTarget()
{
    QVERIFY(QDir(mFolder->path()).mkdir("folder.xml"));
    QCOMPARE(text("w.openBuffer(); w.writeStartElement('a'); w.openFile(D, 'folder', false)"),
             QStringLiteral("false"));
    text("w.writeEndElement()");
    QCOMPARE(buffer(), QByteArray("<a/>"));
}

/// The file before is closed then, and the writer still writes to it.
void tst_KyScriptXmlFileWriter::failedOpenAfterAFileWritesNowhere()
{
    QVERIFY(QDir(mFolder->path()).mkdir("folder.xml"));
    text("w.openFile(D, 'a', false); w.writeTextElement('a', 'b')");
    QCOMPARE(text("w.openFile(D, 'folder', false)"), QStringLiteral("false"));
    QCOMPARE(read(path("a.xml")), QByteArray("<a>b</a>"));
    QTest::ignoreMessage(QtWarningMsg, QRegularExpression("device not open"));
    QCOMPARE(text(Document + "w.closeFile(); 'done'"), QStringLiteral("done"));
    QCOMPARE(read(path("a.xml")), QByteArray("<a>b</a>"));
    QCOMPARE(text("w.openFile(D, 'c', false);" + Document + "w.closeFile(); 'done'"), QStringLiteral("done"));
    QCOMPARE(read(path("c.xml")), Written);
}

void tst_KyScriptXmlFileWriter::failedDirectoryLeavesTheFileTheTarget()
{
    text("w.openFile(D, 'a', false); w.writeStartElement('a')");
    QCOMPARE(text("w.openFile(D + '/a.xml/x', 'b', false)"), QStringLiteral("false"));
    text("w.writeEndElement(); w.closeFile()");
    QCOMPARE(read(path("a.xml")), QByteArray("<a/>"));
}

void tst_KyScriptXmlFileWriter::nextFileIsTheTarget()
{
    text("w.openFile(D, 'a', false); w.writeStartElement('a'); w.openFile(D, 'b', false)");
    QCOMPARE(read(path("a.xml")), QByteArray("<a"));
    text("w.writeTextElement('b', ''); w.writeEndDocument(); w.closeFile()");
    QCOMPARE(read(path("a.xml")), QByteArray("<a"));
    QCOMPARE(read(path("b.xml")), QByteArray("<b></b>\n")); // the new writer knows of no open element
}

void tst_KyScriptXmlFileWriter::openBufferLeavesTheFileAlone()
{
    text(
        "w.openFile(D, 'a', false); w.writeTextElement('a', ''); w.openBuffer(); w.writeTextElement('b', '');"
        "w.closeFile(); w.writeTextElement('c', '')");
    QCOMPARE(read(path("a.xml")), QByteArray("<a></a>"));
    QCOMPARE(buffer(), QByteArray("<b></b><c></c>"));
}

void tst_KyScriptXmlFileWriter::closedFileTakesNothing()
{
    text("w.openFile(D, 'a', false); w.writeTextElement('a', ''); w.closeFile()");
    QTest::ignoreMessage(QtWarningMsg, QRegularExpression("device not open"));
    QCOMPARE(text(Document + "'done'"), QStringLiteral("done"));
    QCOMPARE(read(path("a.xml")), QByteArray("<a></a>"));
    QCOMPARE(buffer(), QByteArray());
}

void tst_KyScriptXmlFileWriter::closeFileInBufferModeLeavesTheWriterWorking()
{
    text("w.openBuffer(); w.writeStartElement('a'); w.closeFile(); w.writeEndElement()");
    QCOMPARE(buffer(), QByteArray("<a/>"));
}

void tst_KyScriptXmlFileWriter::closeFileTwiceIsHarmless()
{
    QCOMPARE(text("w.closeFile(); w.openFile(D, 'a', false); w.closeFile(); w.closeFile(); 'done'"),
             QStringLiteral("done"));
}

void tst_KyScriptXmlFileWriter::fullDiskIsNotReported()
{
    QVERIFY(QFile::link("/dev/full", path("full.xml")));
    const LogCapture log;
    QCOMPARE(text("w.openFile(D, 'full', false)"), QStringLiteral("true"));
    QCOMPARE(text("for (var i = 0; i < 10000; ++i) w.writeTextElement('a', 'text'); w.closeFile(); 'done'"),
             QStringLiteral("done"));
    QCOMPARE(text("w.openFile(D, 'a', false);" + Document + "w.closeFile(); 'done'"), QStringLiteral("done"));
    QCOMPARE(read(path("a.xml")), Written);
    QCOMPARE(log.toStrings(), QStringList());
}

void tst_KyScriptXmlFileWriter::bufferIsEmptyAtFirst()
{
    QCOMPARE(text("w.buffer instanceof ArrayBuffer"), QStringLiteral("true"));
    QCOMPARE(text("w.buffer.byteLength"), QStringLiteral("0"));
    QCOMPARE(text("w.openBuffer(); new Uint8Array(w.buffer).length"), QStringLiteral("0"));
    const QMetaObject& meta = KyScriptXmlFileWriter::staticMetaObject;
    const QMetaProperty property = meta.property(meta.indexOfProperty("buffer"));
    QVERIFY(property.isReadable() && property.isWritable() && !property.hasNotifySignal());
}

void tst_KyScriptXmlFileWriter::bufferHoldsTheDocument()
{
    text("w.openBuffer();" + Document);
    QCOMPARE(buffer(), Written);
    QCOMPARE(text("String(w.buffer)"), QString::fromUtf8(Written));
    QCOMPARE(text("w.buffer.byteLength"), QString::number(Written.size()));
}

void tst_KyScriptXmlFileWriter::bufferTakesBytesAndTexts_data()
{
    QTest::addColumn<QString>("value");
    QTest::addColumn<QByteArray>("bytes");
    QTest::newRow("text") << "'a\\u00e4'" << QByteArray("a\xc3\xa4");
    QTest::newRow("ArrayBuffer") << "new Uint8Array([1, 0, 255]).buffer" << QByteArray("\x01\x00\xff", 3);
    QTest::newRow("typed array") << "new Uint8Array([0, 1, 0, 255]).subarray(1)"
                                 << QByteArray("\x01\x00\xff", 3);
    QTest::newRow("array") << "[1, 0, 255]" << QByteArray("\x01\x00\xff", 3);
    QTest::newRow("array with a symbol") << "[65, Symbol(), 66]" << QByteArray("A\0B", 3);
    QTest::newRow("number") << "5" << QByteArray("5");
    QTest::newRow("empty text") << "''" << QByteArray();
    QTest::newRow("null") << "null" << QByteArray();
    QTest::newRow("another writer's") << "(function() { var o = new XmlFileWriter(); o.openBuffer();"
                                         "o.writeTextElement('a', 'b'); return o.buffer; })()"
                                      << QByteArray("<a>b</a>");
}

void tst_KyScriptXmlFileWriter::bufferTakesBytesAndTexts()
{
    QFETCH(QString, value);
    QFETCH(QByteArray, bytes);
    text("w.buffer = 'before'; w.buffer = " + value);
    QCOMPARE(buffer(), bytes);
    QCOMPARE(text("w.buffer.byteLength"), QString::number(bytes.size()));
}

void tst_KyScriptXmlFileWriter::bufferRefusesValuesWithoutBytes_data()
{
    QTest::addColumn<QString>("value");
    for (const char* value : {"undefined", "{}", "{a: Symbol()}", "Symbol()", "function() {}", "w",
                              "(function() { var a = []; a.length = 4294967295; return a; })()"})
        QTest::newRow(value) << value;
}

void tst_KyScriptXmlFileWriter::bufferRefusesValuesWithoutBytes()
{
    QFETCH(QString, value);
    QCOMPARE(text("w.buffer = 'before'; try { w.buffer = " + value + "; 'taken' } catch (e) { '' + e }"),
             QStringLiteral("TypeError: XmlFileWriter.buffer: the value has no bytes"));
    QVERIFY(!mEngine->hasError());
    QCOMPARE(buffer(), QByteArray("before"));
}

void tst_KyScriptXmlFileWriter::valueOfTheBufferMayRunAScript()
{
    text("w.openBuffer(); w.buffer = {get buffer() { w.writeTextElement('a', ''); w.buffer = 'inner';"
         "return new Uint8Array([65, 66]).buffer; }, byteOffset: 0, byteLength: 2}");
    QCOMPARE(buffer(), QByteArray("AB"));
}

void tst_KyScriptXmlFileWriter::secondDocumentOverwritesFromTheStart()
{
    text("w.openBuffer();" + Document + "w.openBuffer(); w.writeTextElement('z', '')");
    QCOMPARE(buffer(), "<z></z>" + Written.mid(7));
    text("w.openBuffer();" + Document);
    QCOMPARE(buffer(), Written);
}

void tst_KyScriptXmlFileWriter::clearedBufferHoldsTheSecondDocumentOnly()
{
    text("w.openBuffer();" + Document + "w.buffer = ''; w.openBuffer(); w.writeTextElement('z', '')");
    QCOMPARE(buffer(), QByteArray("<z></z>"));
}

void tst_KyScriptXmlFileWriter::bufferReplacedWhileWritingGoesOnBehindIt_data()
{
    QTest::addColumn<QString>("value");
    QTest::addColumn<QByteArray>("result");
    QTest::newRow("cleared") << "''" << QByteArray("<b></b>");
    QTest::newRow("shorter") << "'xy'" << QByteArray("xy<b></b>");
    QTest::newRow("as long") << "'12345678'" << QByteArray("12345678<b></b>");
    QTest::newRow("longer") << "'1234567890'" << QByteArray("12345678<b></b>");
}

void tst_KyScriptXmlFileWriter::bufferReplacedWhileWritingGoesOnBehindIt()
{
    QFETCH(QString, value);
    QFETCH(QByteArray, result);
    text("w.openBuffer(); w.writeTextElement('a', 'b'); w.buffer = " + value +
         "; w.writeTextElement('b', '')");
    QCOMPARE(buffer(), result);
}

/// Neither a script's view of what it was given, nor what it gave, is the buffer itself.
void tst_KyScriptXmlFileWriter::bufferIsACopy()
{
    text("w.openBuffer(); w.writeTextElement('a', 'b'); var view = new Uint8Array(w.buffer); view[0] = 65");
    QCOMPARE(buffer(), QByteArray("<a>b</a>"));
    text("var given = new Uint8Array([65, 66]); w.buffer = given.buffer; given[0] = 67");
    QCOMPARE(buffer(), QByteArray("AB"));
    QCOMPARE(text("var b = w.buffer; w.openBuffer(); w.writeTextElement('c', 'd'); String(b)"),
             QStringLiteral("AB"));
}

void tst_KyScriptXmlFileWriter::bufferCanBeWrittenToAFile()
{
    text("w.openBuffer();" + Document +
         "var f = new FileWriter(); f.openFile(D, 'a', false); f.write(w.buffer); f.closeFile()");
    QCOMPARE(read(path("a.txt")), Written);
}

void tst_KyScriptXmlFileWriter::callsWriteWhatQtWrites_data()
{
    QTest::addColumn<QString>("source");
    QTest::addColumn<Calls>("calls");
    const auto row = [](const char* name, const char* source, const Calls& calls) {
        QTest::newRow(name) << source << calls;
    };
    row("declaration", "w.writeStartDocument()", [](auto& w) { w.writeStartDocument(); });
    row("two declarations", "w.writeStartDocument(); w.writeStartDocument()", [](auto& w) {
        w.writeStartDocument();
        w.writeStartDocument();
    });
    row("escaped",
        "w.writeStartElement('a'); w.writeAttribute('b', '<>&\"\\'\\t\\n'); w.writeTextElement('c', "
        "'<>&\"\\'\\t\\n')",
        [](auto& w) {
            w.writeStartElement("a");
            w.writeAttribute("b", "<>&\"'\t\n");
            w.writeTextElement("c", "<>&\"'\t\n");
        });
    row("beyond Latin-1", "w.writeTextElement('\\u00e4', '\\u20ac\\ud83d\\ude00')",
        [](auto& w) { w.writeTextElement(QString::fromUtf8("ä"), QString::fromUtf8("€😀")); });
    row("names with forbidden characters",
        "w.writeStartElement('a b<'); w.writeAttribute('c=\"', 'd'); w.writeEndElement(); "
        "w.writeTextElement('&', '')",
        [](auto& w) {
            w.writeStartElement("a b<");
            w.writeAttribute("c=\"", "d");
            w.writeEndElement();
            w.writeTextElement("&", "");
        });
    row("empty names",
        "w.writeStartElement(''); w.writeAttribute('', ''); w.writeEndElement(); w.writeTextElement('', '')",
        [](auto& w) {
            w.writeStartElement("");
            w.writeAttribute("", "");
            w.writeEndElement();
            w.writeTextElement("", "");
        });
    row("prefixes", "w.writeStartElement('p:a'); w.writeAttribute('q:b', 'c')", [](auto& w) {
        w.writeStartElement("p:a");
        w.writeAttribute("q:b", "c");
    });
    row("control character in a text",
        "w.writeStartElement('a'); w.writeTextElement('b', 'x\\u0001y'); w.writeTextElement('c', 'z'); "
        "w.writeEndElement()",
        [](auto& w) {
            w.writeStartElement("a");
            w.writeTextElement("b", QString::fromUtf8("x\x01y"));
            w.writeTextElement("c", "z");
            w.writeEndElement();
        });
    row("NUL, U+FFFE and half a character", "w.writeTextElement('a', 'x\\0\\ufffe\\ud83d')", [](auto& w) {
        w.writeTextElement("a", QStringLiteral("x") + QChar(0) + QChar(0xfffe) + QChar(0xd83d));
    });
    row("control character in an attribute", "w.writeStartElement('a'); w.writeAttribute('b', '\\u000b')",
        [](auto& w) {
            w.writeStartElement("a");
            w.writeAttribute("b", "\v");
        });
    row("attribute without an element", "w.writeAttribute('a', 'b')",
        [](auto& w) { w.writeAttribute("a", "b"); });
    row("attribute behind an element", "w.writeTextElement('a', ''); w.writeAttribute('b', 'c')",
        [](auto& w) {
            w.writeTextElement("a", "");
            w.writeAttribute("b", "c");
        });
    row("end without an element", "w.writeEndElement(); w.writeEndElement(); w.writeEndDocument()",
        [](auto& w) {
            w.writeEndElement();
            w.writeEndElement();
            w.writeEndDocument();
        });
    row("document's end closes all elements",
        "w.writeStartDocument(); w.writeStartElement('a'); w.writeStartElement('b'); w.writeEndDocument(); "
        "w.writeEndDocument()",
        [](auto& w) {
            w.writeStartDocument();
            w.writeStartElement("a");
            w.writeStartElement("b");
            w.writeEndDocument();
            w.writeEndDocument();
        });
    row("long texts", "w.writeTextElement('n'.repeat(4000), 't'.repeat(1000000))",
        [](auto& w) { w.writeTextElement(QString(4000, 'n'), QString(1000000, 't')); });
}

void tst_KyScriptXmlFileWriter::callsWriteWhatQtWrites()
{
    QFETCH(QString, source);
    QFETCH(Calls, calls);
    QByteArray expected;
    QXmlStreamWriter writer(&expected);
    calls(writer);
    QVERIFY(!expected.isEmpty());
    QCOMPARE(text("w.openBuffer();" + source + "; 'done'"), QStringLiteral("done"));
    QCOMPARE(buffer(), expected);
    // A spoiled document spoils no other.
    text("w.buffer = ''; w.openBuffer();" + Document);
    QCOMPARE(buffer(), Written);

    text("w.openFile(D, 'a', false);" + source + "; w.closeFile()");
    QCOMPARE(read(path("a.xml")), expected);
}

void tst_KyScriptXmlFileWriter::argumentsAreTexts()
{
    text("w.openBuffer(); w.writeStartElement(5); w.writeAttribute('b', true); w.writeTextElement('c', null);"
         "w.writeTextElement('d', undefined); w.writeTextElement('e', 2.5); w.writeEndElement()");
    QCOMPARE(buffer(), QByteArray("<5 b=\"true\"><c></c><d></d><e>2.5</e></5>"));
}

void tst_KyScriptXmlFileWriter::manyOpenElementsAreClosed()
{
    text("w.openBuffer(); for (var i = 0; i < 10000; ++i) w.writeStartElement('e'); w.writeEndDocument()");
    QXmlStreamReader reader(buffer());
    while (!reader.atEnd())
        reader.readNext();
    QVERIFY2(!reader.hasError(), qPrintable(reader.errorString()));
}

void tst_KyScriptXmlFileWriter::objectThatIsCollectedClosesItsFile()
{
    text("w.openFile(D, 'a', false);" + Document + "w = null");
    text("collectGarbage()");
    flushDeferredDeletes();
    QCOMPARE(read(path("a.xml")), Written);
    text("w = new XmlFileWriter(); w.openFile(D, 'b', false);" + Document);
    mEngine.reset();
    QCOMPARE(read(path("b.xml")), Written);
}

void tst_KyScriptXmlFileWriter::objectInBufferModeCanBeCollected()
{
    text("w.openBuffer();" + Document + "b = w.buffer; w = null");
    text("collectGarbage()");
    flushDeferredDeletes();
    QCOMPARE(text("String(b)"), QString::fromUtf8(Written));
}

KY_TEST_MAIN(tst_KyScriptXmlFileWriter)

#include "tst_KyScriptXmlFileWriter.moc"
