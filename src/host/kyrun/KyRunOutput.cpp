#include "KyRunOutput.h"

#include <QtQml/QJSEngine>

#include <cstdio>

KyRunOutput::KyRunOutput(QObject* inParent)
    : QObject(inParent)
{}

void KyRunOutput::install(QJSEngine& inEngine)
{
    auto* output = new KyRunOutput(&inEngine);
    QJSEngine::setObjectOwnership(output, QJSEngine::CppOwnership);
    const QJSValue make = inEngine.evaluate(QStringLiteral(
        "(function(line) { var string = String, map = Array.prototype.map, join = Array.prototype.join;"
        " return function print() { line(join.call(map.call(arguments,"
        " function(value) { return string(value); }), ' ')); }; })"));
    inEngine.globalObject().setProperty(
        QStringLiteral("print"), make.call({inEngine.newQObject(output).property(QStringLiteral("line"))}));
}

void KyRunOutput::writeLine(const QString& inText)
{
    const QByteArray line = inText.toUtf8() + '\n';
    std::fwrite(line.constData(), 1, size_t(line.size()), stdout);
    std::fflush(stdout);
}

QString KyRunOutput::textOf(QJSEngine& inEngine, const QJSValue& inValue)
{
    // String() takes a symbol, where the engine's own conversion would leave an error behind.
    return inEngine.evaluate(QStringLiteral("(function(value) { return String(value); })"))
        .call({inValue})
        .toString();
}
