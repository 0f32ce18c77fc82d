#pragma once

#include <QtCore/QObject>
#include <QtQml/QJSEngine>

/// Evaluates a text while a script is on the stack already.
///
/// Qt compiles a text in strict mode when the script function that is calling out at that moment is strict.
/// So the evaluation is entered through a script function that is not.
class KyScriptNestedEvaluation : public QObject
{
    Q_OBJECT

public:
    KyScriptNestedEvaluation(QJSEngine& inEngine, const QString& inText, const QString& inFileName,
                             int inLine);

    /// \a inTrampoline is what makeTrampoline() gave for the same engine.
    QJSValue evaluate(const QJSValue& inTrampoline);

    static QJSValue makeTrampoline(QJSEngine& inEngine);

    Q_INVOKABLE void run();

private:
    QJSEngine& mEngine;
    const QString mText;
    const QString mFileName;
    const int mLine;
    QJSValue mResult;
};
