#include "KyRunScript.h"

#include <QtCore/QFile>
#include <QtCore/QRegularExpression>
#include <QtCore/QStringDecoder>
#include <QtQml/QJSEngine>

#include <cstdio>

namespace {

/// Whether the directives at the beginning of \a inSource make it strict.
bool isStrict(const QString& inSource)
{
    static const QRegularExpression directive(QStringLiteral(
        R"(\A(?:\s|//[^\n]*|/\*[\s\S]*?\*/|;|"[^"\n]*"|'[^'\n]*')*?(?:"use strict"|'use strict')\s*(?:;|\n|\}|\z))"));
    return directive.match(inSource).hasMatch();
}

} // namespace

std::optional<QString> KyRunScript::read(const QString& inFile, QString& outReason)
{
    QFile file(inFile);
    const bool isOpen =
        inFile == QLatin1String("-") ? file.open(stdin, QIODevice::ReadOnly) : file.open(QIODevice::ReadOnly);
    const QByteArray bytes = isOpen ? file.readAll() : QByteArray();
    if (!isOpen || file.error() != QFileDevice::NoError) {
        outReason = QStringLiteral("Cannot read the script %1: %2").arg(inFile, file.errorString());
        return std::nullopt;
    }
    QStringDecoder decoder(QStringDecoder::Utf8);
    QString text = decoder(bytes);
    if (!decoder.hasError())
        return text;
    outReason = QStringLiteral("Cannot read the script %1: it is not UTF-8").arg(inFile);
    return std::nullopt;
}

/// The engine compiles all of a text before it runs the first statement, which here leaves at once.
QString KyRunScript::syntaxError(const QString& inSource, const QString& inFile)
{
    QJSEngine engine;
    const QString first =
        isStrict(inSource) ? QStringLiteral("'use strict';throw 0;") : QStringLiteral("throw 0;");
    const QJSValue result = engine.evaluate(first + inSource, inFile, 1);
    if (!result.isError())
        return QString();
    return QStringLiteral("%1:%2: %3")
        .arg(inFile, result.property(QStringLiteral("lineNumber")).toString(), result.toString());
}
