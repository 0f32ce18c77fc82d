#include "KyRunOutput.h"

#include <QtQml/QJSEngine>

#include <cerrno>
#include <cstdio>
#include <cstring>

namespace {

bool sHasFailed = false;
bool sIsComment = false;

} // namespace

KyRunOutput::KyRunOutput(QJSEngine& inEngine)
    : QObject(&inEngine)
    , mString(inEngine.evaluate(
          QStringLiteral("(function(string) { return function(v) { return string(v); }; })(String)")))
{
    QJSEngine::setObjectOwnership(this, QJSEngine::CppOwnership);
}

KyRunOutput& KyRunOutput::install(QJSEngine& inEngine)
{
    auto* output = new KyRunOutput(inEngine);
    const QJSValue make = inEngine.evaluate(
        QStringLiteral("(function(line, string) { var map = Array.prototype.map, join = Array.prototype.join;"
                       " return function print() { line(join.call(map.call(arguments,"
                       " function(value) { return string(value); }), ' ')); }; })"));
    inEngine.globalObject().setProperty(
        QStringLiteral("print"),
        make.call({inEngine.newQObject(output).property(QStringLiteral("line")), output->mString}));
    return *output;
}

void KyRunOutput::setComments(bool inOn)
{
    sIsComment = inOn;
}

void KyRunOutput::writeLine(const QString& inText)
{
    const QString text =
        sIsComment ? QStringLiteral("# ") + QString(inText).replace(QLatin1Char('\n'), QLatin1String("\n# "))
                   : inText;
    const QByteArray line = text.toUtf8() + '\n';
    const bool isWritten =
        std::fwrite(line.constData(), 1, size_t(line.size()), stdout) == size_t(line.size());
    if ((isWritten && std::fflush(stdout) == 0) || sHasFailed)
        return;
    sHasFailed = true;
    std::fprintf(stderr, "kyrun: Cannot write the output: %s\n", std::strerror(errno));
}

bool KyRunOutput::hasFailed()
{
    return sHasFailed;
}
