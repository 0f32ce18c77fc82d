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
    static void install(QJSEngine& inEngine);

    /// Writes \a inText and a line break as UTF-8, at once.
    static void writeLine(const QString& inText);

    /// The text of \a inValue as the language converts it; a symbol, and a value whose conversion throws,
    /// have one too.
    static QString textOf(QJSEngine& inEngine, const QJSValue& inValue);

    /// Writes one line of the texts.
    Q_INVOKABLE void line(QString inText) { writeLine(inText); }

private:
    explicit KyRunOutput(QObject* inParent);
};
