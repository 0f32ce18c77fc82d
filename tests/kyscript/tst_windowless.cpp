// What scripts may call in an application that has no windows, such as a service.

#include <support/LogCapture.h>

#include <kyscript/KyScriptEngine.h>

#include <QCoreApplication>
#include <QTest>

class tst_windowless : public QObject
{
    Q_OBJECT

private slots:
    void nothingIsAskedOrShown_data();
    void nothingIsAskedOrShown();
    void failureToStartIsLogged();
};

void tst_windowless::nothingIsAskedOrShown_data()
{
    QTest::addColumn<QString>("call");
    QTest::addColumn<QString>("result");
    QTest::newRow("FileDialog") << "new FileDialog().getSaveFileName('a', '')"
                                << "string:";
    QTest::newRow("clipboard") << "System.setClipboardText('x')"
                               << "undefined:undefined";
    QTest::newRow("message") << "Message.show('x')"
                             << "undefined:undefined";
    QTest::newRow("no message to hide") << "Message.hide()"
                                        << "undefined:undefined";
    QTest::newRow("question") << "Message.question('x', ['a'], 'a')"
                              << "string:";
}

void tst_windowless::nothingIsAskedOrShown()
{
    QFETCH(QString, call);
    QFETCH(QString, result);
    KyScriptEngine engine(nullptr, ScriptSystem | ScriptFileDialog | ScriptMessage);
    const LogCapture log;
    QCOMPARE(engine.evaluate("var r = " + call + "; typeof r + ':' + r").toString(), result);
    QCOMPARE(log.toStrings(), QStringList());
}

void tst_windowless::failureToStartIsLogged()
{
    KyScriptEngine engine(nullptr, ScriptSystem);
    const LogCapture log(3);
    QCOMPARE(engine.evaluate("System.processCmd('', ['x']) && System.processCmd('', [])").toString(),
             QStringLiteral("true"));
    QTest::qWait(20);
    QCOMPARE(log.toStrings(), QStringList({"3|Script Interface|Failed to start process  x!",
                                           "3|Script Interface|Failed to start process  !"}));
}

QTEST_GUILESS_MAIN(tst_windowless)

#include "tst_windowless.moc"
