#include "KyRunTests.h"

#include "KyRunConsole.h"
#include "KyRunOutput.h"
#include "KyRunScript.h"

#include <kyscript/KyScriptAbstractEngine.h>
#include <kyscript/KyScriptEngine.h>
#include <kyscript/KyScriptInterface.h>
#include <kyscript/KyScriptProgram.h>

#include <rnlib/RnLogFile.h>

#include <QtCore/QCoreApplication>
#include <QtCore/QFile>
#include <QtCore/QTimer>

/// Keeps the errors of scripts that nobody catches: they are told in the log and nowhere else.
class KyRunTestErrors final : public RnLogSink
{
public:
    void write(const RnLogRecord& inRecord) override
    {
        if (inRecord.level == 3 && inRecord.context == "Script Interface")
            texts.append(QString::fromStdString(inRecord.text));
    }

    QStringList texts;
};

namespace {

/// How often a test is asked whether it is over.
constexpr int sPace = 1;

QString framework()
{
    QFile file(QStringLiteral(":/kyrun/test_framework.js"));
    return file.open(QIODevice::ReadOnly) ? QString::fromUtf8(file.readAll()) : QString();
}

/// One line, with what has a meaning in the protocol escaped.
QString described(QString inText)
{
    return inText.replace(QLatin1Char('\\'), QLatin1String("\\\\"))
        .replace(QLatin1Char('#'), QLatin1String("\\#"))
        .simplified();
}

/// A text of YAML in double quotes.
QString quoted(const QString& inText)
{
    QString quoted;
    for (const QChar c : inText) {
        if (c == QLatin1Char('"') || c == QLatin1Char('\\'))
            quoted += QLatin1Char('\\') + QString(c);
        else if (c == QLatin1Char('\n'))
            quoted += QLatin1String("\\n");
        else if (c.unicode() < 0x20 || c.unicode() == 0x7f || c.isSurrogate() || c.unicode() == 0xfeff)
            quoted += c.isSurrogate() ? QString(c)
                                      : QStringLiteral("\\u%1").arg(c.unicode(), 4, 16, QLatin1Char('0'));
        else
            quoted += c;
    }
    return QLatin1Char('"') + quoted + QLatin1Char('"');
}

} // namespace

KyRunTests::KyRunTests(const QStringList& inFiles)
    : mFiles(inFiles)
    , mErrors(std::make_shared<KyRunTestErrors>())
{
    getTheLogInstance().addSink(mErrors, 3);
}

KyRunTests::~KyRunTests()
{
    getTheLogInstance().removeSink(mErrors.get());
}

int KyRunTests::exec()
{
    KyRunOutput::writeLine(QStringLiteral("TAP version 14"));
    KyRunOutput::setComments(true);
    QTimer::singleShot(0, this, &KyRunTests::nextFile);
    const int status = QCoreApplication::exec();
    KyRunOutput::setComments(false);
    if (mFile < mFiles.size())
        KyRunOutput::writeLine(QStringLiteral("Bail out! The script side has left"));
    KyRunOutput::writeLine(QStringLiteral("1..%1").arg(mTold));
    return status != 0 ? status : mFailed > 0 || mFile < mFiles.size() ? 1 : 0;
}

void KyRunTests::nextFile()
{
    if (++mFile >= mFiles.size()) {
        QCoreApplication::exit(0);
        return;
    }
    KyRunOutput::writeLine(mFiles.at(mFile));
    QString reason;
    const auto source = KyRunScript::read(mFiles.at(mFile), reason);
    if (source) {
        define(*source);
        return;
    }
    failFile(reason);
    QTimer::singleShot(0, this, &KyRunTests::nextFile);
}

/// Runs the file, which defines its tests.
void KyRunTests::define(const QString& inSource)
{
    mFacade = &KyScriptAbstractInterface::getInstance(QStringLiteral("Tests %1").arg(mFile));
    KyScriptEngine& engine = *mFacade->jsEngine(true);
    KyRunOutput::install(engine);
    mFramework = engine.QJSEngine::evaluate(framework(), QStringLiteral("kyrun:test")).call();
    mErrors->texts.clear();
    mTest = -1;

    const QJSValue value =
        mFacade->runScript(KyScriptProgram(inSource, mFiles.at(mFile), 1), false, false, false);
    if (value.isError())
        failFile(value.toString(),
                 QStringLiteral("%1:%2").arg(mFiles.at(mFile),
                                             value.property(QStringLiteral("lineNumber")).toString()));
    else if (ask("count").toInt() == 0)
        failFile(QStringLiteral("The file defines no test"));
    mErrors->texts.clear();
    QTimer::singleShot(0, this, value.isError() ? &KyRunTests::endFile : &KyRunTests::nextTest);
}

void KyRunTests::endFile()
{
    mFramework = QJSValue();
    if (mFacade)
        delete mFacade->jsEngine(false);
    nextFile();
}

void KyRunTests::nextTest()
{
    if (++mTest >= ask("count").toInt()) {
        endFile();
        return;
    }
    const QString directive = ask("directive", {mTest}).toString();
    if (directive.isEmpty()) {
        startTest();
        return;
    }
    tell(directive == QLatin1String("SKIP"), ask("name", {mTest}).toString(), directive);
    QTimer::singleShot(0, this, &KyRunTests::nextTest);
}

void KyRunTests::startTest()
{
    mTime.start();
    const KyScriptProgram start(QStringLiteral("test.run(%1)").arg(mTest), "test");
    const QJSValue value = mFacade->runScript(start, false, false, false);
    if (value.isError() && mErrors->texts.isEmpty())
        mErrors->texts.append(value.toString());
    watchTest();
}

void KyRunTests::watchTest()
{
    if (!mFacade->jsEngine(false)) {
        tell(false, QStringLiteral("the engine has gone"));
        nextFile();
        return;
    }
    for (const QString& text : std::exchange(mErrors->texts, {}))
        ask("failed", {mTest, text, false});
    const int limit = ask("timeout", {mTest}).toInt();
    if (!ask("isOver", {mTest}).toBool() && mTime.hasExpired(limit))
        ask("failed", {mTest, QStringLiteral("it is not over after %1 ms").arg(limit), true});
    if (ask("isOver", {mTest}).toBool())
        endTest();
    else
        QTimer::singleShot(sPace, this, &KyRunTests::watchTest);
}

void KyRunTests::endTest()
{
    const QJSValue failures = ask("failures", {mTest});
    tell(failures.property(0).isUndefined(), ask("name", {mTest}).toString());
    tellReasons(failures);
    QTimer::singleShot(0, this, &KyRunTests::nextTest);
}

QJSValue KyRunTests::ask(const char* inQuestion, const QJSValueList& inArguments) const
{
    return mFramework.property(QString::fromLatin1(inQuestion)).call(inArguments);
}

void KyRunTests::tell(bool inIsOk, const QString& inName, const QString& inDirective)
{
    ++mTold;
    // What is still to do is not a failure.
    mFailed += inIsOk || inDirective == QLatin1String("TODO") ? 0 : 1;
    KyRunOutput::setComments(false);
    KyRunOutput::writeLine(
        QStringLiteral("%1 %2 - %3%4")
            .arg(inIsOk ? QStringLiteral("ok") : QStringLiteral("not ok"))
            .arg(mTold)
            .arg(described(inName), inDirective.isEmpty() ? QString() : QStringLiteral(" # ") + inDirective));
    KyRunOutput::setComments(true);
}

void KyRunTests::tellReasons(const QJSValue& inFailures)
{
    const auto text = [&](quint32 index, const QString& name) {
        return inFailures.property(index).property(name).toString();
    };
    QStringList others;
    const quint32 count = inFailures.property(QStringLiteral("length")).toUInt();
    for (quint32 i = 1; i < count; ++i)
        others.append(text(i, QStringLiteral("message")));
    if (count > 0)
        tellReason(text(0, QStringLiteral("message")), text(0, QStringLiteral("at")), others);
}

void KyRunTests::tellReason(const QString& inMessage, const QString& inPlace, const QStringList& inOthers)
{
    KyRunOutput::setComments(false);
    KyRunOutput::writeLine(QStringLiteral("  ---"));
    KyRunOutput::writeLine(QStringLiteral("  message: ") + quoted(inMessage));
    if (!inPlace.isEmpty())
        KyRunOutput::writeLine(QStringLiteral("  at: ") + quoted(inPlace));
    if (!inOthers.isEmpty())
        KyRunOutput::writeLine(QStringLiteral("  also:"));
    for (const QString& other : inOthers)
        KyRunOutput::writeLine(QStringLiteral("    - ") + quoted(other));
    KyRunOutput::writeLine(QStringLiteral("  ..."));
    KyRunOutput::setComments(true);
}

void KyRunTests::failFile(const QString& inReason, const QString& inPlace)
{
    tell(false, mFiles.at(mFile));
    tellReason(inReason, inPlace);
}
