#include <support/KyTest.h>

#include <kyscript/KyScriptEngine.h>
#include <kyscript/KyScriptProgram.h>

#include <QDomDocument>
#include <QTest>

class tst_KyScriptProgram : public QObject
{
    Q_OBJECT

private slots:
    void defaultProgramIsEmpty();
    void constructorKeepsSourceFileAndLine();
    void infoStringIsReadAsLatin1_data();
    void infoStringIsReadAsLatin1();
    void onlyTheSourceDecidesOnEmptiness();
    void copyKeepsIsolationAndIsIndependent();

    void scriptOfAnElementIsTrimmedAndNumbered_data();
    void scriptOfAnElementIsTrimmedAndNumbered();
    void textNodeBeforeCDataLeavesTheBaseLine();
    void elementWithoutChildrenGivesAnEmptyProgram();
    void nullElementGivesAnEmptyProgram();
    void errorInAnElementIsReportedOnItsLineOfTheFile();

    void fileNameIsCutAtTheMarker_data();
    void fileNameIsCutAtTheMarker();

    void wrapperChangesNoLineOfAnError();
    void wrapperEscapesNothing();
    void sourceEndingInACommentHidesTheEndOfItsWrapper();
};

namespace {

QDomElement firstScript(QDomDocument& outDocument, const char* inXml)
{
    const bool ok = outDocument.setContent(QByteArray(inXml));
    return ok ? outDocument.documentElement().firstChildElement(QStringLiteral("s")) : QDomElement();
}

QString stackOf(const KyScriptProgram& inProgram)
{
    KyScriptEngine engine(nullptr, 0);
    return engine.runScript(inProgram, inProgram.isolatedContext())
        .property(QStringLiteral("stack"))
        .toString();
}

} // namespace

void tst_KyScriptProgram::defaultProgramIsEmpty()
{
    const KyScriptProgram program;
    QVERIFY(program.isEmpty());
    QVERIFY(!program.isolatedContext());
    QVERIFY(program.sourceCode().isEmpty());
    QVERIFY(program.infoString().isEmpty());
}

void tst_KyScriptProgram::constructorKeepsSourceFileAndLine()
{
    const KyScriptProgram program(QStringLiteral("throw new Error('x')"), QStringLiteral("a.js"), 12);
    QCOMPARE(program.sourceCode(), QStringLiteral("throw new Error('x')"));
    QVERIFY(program.infoString().isEmpty());
    QVERIFY(!program.isolatedContext());
    QCOMPARE(stackOf(program), QStringLiteral("%entry@file:a.js:12"));
}

void tst_KyScriptProgram::infoStringIsReadAsLatin1_data()
{
    QTest::addColumn<QByteArray>("info");
    QTest::addColumn<bool>("isNull");
    QTest::addColumn<QString>("text");
    QTest::newRow("ascii") << QByteArray("Tool") << false << QStringLiteral("Tool");
    QTest::newRow("Latin-1") << QByteArray("M\xfcller") << false << QStringLiteral("Müller");
    QTest::newRow("empty") << QByteArray("") << false << QString();
    QTest::newRow("null") << QByteArray() << true << QString();
}

void tst_KyScriptProgram::infoStringIsReadAsLatin1()
{
    QFETCH(QByteArray, info);
    QFETCH(bool, isNull);
    QFETCH(QString, text);
    const char* pointer = isNull ? nullptr : info.constData();

    const KyScriptProgram constructed(QStringLiteral("1"), pointer);
    QCOMPARE(constructed.infoString(), text);
    QCOMPARE(constructed.sourceCode(), QStringLiteral("1"));

    KyScriptProgram changed(QStringLiteral("1"), "before");
    changed.setInfoString(pointer);
    QCOMPARE(changed.infoString(), text);
}

void tst_KyScriptProgram::onlyTheSourceDecidesOnEmptiness()
{
    KyScriptProgram program(QString(), QStringLiteral("a.js"), 3);
    program.setInfoString("info");
    program.setIsolatedContext(true);
    QVERIFY(program.isEmpty());
    program.setSourceCode(QStringLiteral(" "));
    QVERIFY(!program.isEmpty());
}

void tst_KyScriptProgram::copyKeepsIsolationAndIsIndependent()
{
    KyScriptProgram program(QStringLiteral("1"), "info");
    program.setIsolatedContext(true);
    KyScriptProgram copy = program;
    QVERIFY(copy.isolatedContext());
    QCOMPARE(copy.infoString(), QStringLiteral("info"));

    copy.setIsolatedContext(false);
    copy.setSourceCode(QStringLiteral("2"));
    QVERIFY(program.isolatedContext());
    QCOMPARE(program.sourceCode(), QStringLiteral("1"));
}

void tst_KyScriptProgram::scriptOfAnElementIsTrimmedAndNumbered_data()
{
    QTest::addColumn<QByteArray>("xml");
    QTest::addColumn<QString>("text");
    QTest::addColumn<int>("line");

    QTest::newRow("text on the line of the tag") << QByteArray("<x>\n<s>a()</s></x>") << "a()" << 2;
    QTest::newRow("text below the tag")
        << QByteArray("<x>\n<s>\n\n  a()\nb()  \n</s></x>") << "a()\nb()" << 4;
    QTest::newRow("text below the tag, CRLF") << QByteArray("<x>\r\n<s>\r\n\r\na()</s></x>") << "a()" << 4;
    QTest::newRow("CDATA behind the tag") << QByteArray("<x>\n<s><![CDATA[a()]]></s></x>") << "a()" << 3;
    QTest::newRow("CDATA with line breaks at its head")
        << QByteArray("<x>\n<s><![CDATA[\n\na() < 2\n]]></s></x>") << "a() < 2" << 5;
    QTest::newRow("text before CDATA")
        << QByteArray("<x>\n<s>a();<![CDATA[\nb()]]></s></x>") << "a();\nb()" << 2;
    QTest::newRow("comment before CDATA")
        << QByteArray("<x>\n<s><!-- c --><![CDATA[b()]]></s></x>") << "b()" << 2;
    QTest::newRow("tag over two lines") << QByteArray("<x>\n<s\n  a='1'>a()</s></x>") << "a()" << 3;
    QTest::newRow("only white space in CDATA") << QByteArray("<x>\n<s><![CDATA[ \n ]]></s></x>") << "" << 4;
}

void tst_KyScriptProgram::scriptOfAnElementIsTrimmedAndNumbered()
{
    QFETCH(QByteArray, xml);
    QFETCH(QString, text);
    QFETCH(int, line);

    QDomDocument document;
    const QDomElement element = firstScript(document, xml.constData());
    QVERIFY(!element.isNull());
    int found = 0;
    QCOMPARE(KyScriptProgram::extractScript(element, found), text);
    QCOMPARE(found, line);
    QCOMPARE(KyScriptProgram(element, QStringLiteral("a.xml"), nullptr).sourceCode(), text);
}

// A parser drops white space between a tag and CDATA; only a document built by hand has such a text node.
void tst_KyScriptProgram::textNodeBeforeCDataLeavesTheBaseLine()
{
    QDomDocument document;
    QDomElement element = firstScript(document, "<x>\n<s><![CDATA[a()]]></s></x>");
    element.insertBefore(document.createTextNode(QStringLiteral("\n")), element.firstChild());
    int line = 0;
    QCOMPARE(KyScriptProgram::extractScript(element, line), QStringLiteral("a()"));
    QCOMPARE(line, 2 + 1);
}

void tst_KyScriptProgram::elementWithoutChildrenGivesAnEmptyProgram()
{
    QDomDocument document;
    const QDomElement element = firstScript(document, "<x>\n\n<s/></x>");
    int line = 0;
    QVERIFY(KyScriptProgram::extractScript(element, line).isEmpty());
    QCOMPARE(line, 3);
    QVERIFY(KyScriptProgram(element, QStringLiteral("a.xml"), "tools").isEmpty());
}

void tst_KyScriptProgram::nullElementGivesAnEmptyProgram()
{
    int line = 0;
    QVERIFY(KyScriptProgram::extractScript(QDomElement(), line).isEmpty());
    QCOMPARE(line, -1);
}

void tst_KyScriptProgram::errorInAnElementIsReportedOnItsLineOfTheFile()
{
    QDomDocument document;
    const QDomElement element =
        firstScript(document, "<x>\n<s>\n<![CDATA[\n  var a;\n  throw new Error('x');\n]]></s></x>");
    const KyScriptProgram program(element, QStringLiteral("C:/site/tools/a.xml"), "tools");
    QVERIFY(!program.isolatedContext());
    QCOMPARE(stackOf(program), QStringLiteral("%entry@file:.../tools/a.xml:5"));
}

void tst_KyScriptProgram::fileNameIsCutAtTheMarker_data()
{
    QTest::addColumn<QString>("fileName");
    QTest::addColumn<QByteArray>("marker");
    QTest::addColumn<QString>("result");
    const auto path = QStringLiteral("C:/x/tools/a.xml");
    QTest::newRow("in the middle") << path << QByteArray("tools") << ".../tools/a.xml";
    QTest::newRow("first of two") << "C:/tools/tools/a.xml" << QByteArray("tools") << ".../tools/tools/a.xml";
    QTest::newRow("at the beginning") << "tools/a.xml" << QByteArray("tools") << ".../tools/a.xml";
    QTest::newRow("whole name") << "tools" << QByteArray("tools") << ".../tools";
    QTest::newRow("other case") << "C:/x/Tools/a.xml" << QByteArray("tools") << "C:/x/Tools/a.xml";
    QTest::newRow("missing") << path << QByteArray("scripts") << path;
    QTest::newRow("empty marker") << path << QByteArray("") << path;
    QTest::newRow("null marker") << path << QByteArray() << path;
    QTest::newRow("empty name") << QString() << QByteArray("tools") << QString();
    QTest::newRow("Latin-1 marker") << "C:/Müller/a.xml" << QByteArray("M\xfc") << ".../Müller/a.xml";
}

void tst_KyScriptProgram::fileNameIsCutAtTheMarker()
{
    QFETCH(QString, fileName);
    QFETCH(QByteArray, marker);
    QFETCH(QString, result);
    const char* pointer = marker.isNull() ? nullptr : marker.constData();
    QCOMPARE(KyScriptProgram::stripFileName(fileName, pointer), result);
}

void tst_KyScriptProgram::wrapperChangesNoLineOfAnError()
{
    KyScriptProgram program(QStringLiteral("var a;\nthrow new Error('x')"), QStringLiteral("a.js"), 20);
    QVERIFY(stackOf(program).contains(QLatin1String("a.js:21")));
    program.setIsolatedContext(true);
    QVERIFY2(stackOf(program).startsWith(QLatin1String("@file:a.js:21\n%entry@file:a.js")),
             qPrintable(stackOf(program)));
}

void tst_KyScriptProgram::wrapperEscapesNothing()
{
    KyScriptEngine engine(nullptr, 0);
    KyScriptProgram program(QStringLiteral("return '%1 %2 \\\\ \"'"), "f");
    program.setIsolatedContext(true);
    QCOMPARE(engine.runScript(program).toString(), QStringLiteral("%1 %2 \\ \""));
}

void tst_KyScriptProgram::sourceEndingInACommentHidesTheEndOfItsWrapper()
{
    KyScriptEngine engine(nullptr, 0);
    KyScriptProgram program(QStringLiteral("return 1 // one"), "f");
    program.setIsolatedContext(true);
    const QJSValue result = engine.runScript(program);
    QVERIFY(result.isError());
    QVERIFY(result.toString().startsWith(QLatin1String("SyntaxError")));

    program.setSourceCode(QStringLiteral("return 1 // one\n"));
    QCOMPARE(engine.runScript(program).toInt(), 1);
}

KY_TEST_MAIN(tst_KyScriptProgram)
#include "tst_KyScriptProgram.moc"
