#pragma once

#include <QtCore/QObject>
#include <QtQml/QJSValue>

class QJSEngine;

/// Standard output for scripts: the global function `print`.
class KyRunOutput : public QObject
{
    Q_OBJECT

public:
    /// Gives \a inEngine the function. The engine owns the object.
    static KyRunOutput& install(QJSEngine& inEngine);

    /// From now on each line of what scripts print is a comment, begun with "# ", or no longer.
    static void setComments(bool inOn);

    /// Writes \a inText and a line break as UTF-8, at once. The first failure is told on standard error.
    static void writeLine(const QString& inText);
    /// Whether a line could not be written.
    static bool hasFailed();

    /// The text of \a inValue as the language converts it; a symbol, and a value whose conversion throws,
    /// have one too.
    QString textOf(const QJSValue& inValue) const { return mString.call({inValue}).toString(); }

    /// Writes one line.
    Q_INVOKABLE void line(QString inText) { writeLine(inText); }

private:
    explicit KyRunOutput(QJSEngine& inEngine);

    QJSValue mString; ///< The function String as it was before scripts could replace it.
};
