#include "KyRunErrors.h"

#include <QtQml/QJSValue>

#include <cstdio>

void KyRunErrors::tell(const QJSValue& inError, const QString& inPlace)
{
    QString text =
        QStringLiteral("%1:%2: %3\n")
            .arg(inPlace, inError.property(QStringLiteral("lineNumber")).toString(), inError.toString());
    for (const QString& frame : inError.property(QStringLiteral("stack")).toString().split(QLatin1Char('\n')))
        text += QStringLiteral("    at %1\n").arg(frame);
    std::fputs(text.toUtf8().constData(), stderr);
}
