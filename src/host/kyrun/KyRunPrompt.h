#pragma once

#include <QtCore/QObject>
#include <QtCore/QString>
#include <QtQml/QJSValue>

#include <functional>

class KyScriptAbstractEngine;

/// `kyrun --interactive`: reads scripts from the terminal line by line and runs each on the engine, in the
/// event loop, so that timers, sockets and dialogs live between the lines.
///
/// A line that leaves brackets, a template or a comment open goes on in the next. The value of a run is
/// printed unless it is undefined, an error with its place. Names are completed with the tabulator: globals,
/// and behind a dot the members of what the words before it name, without calling anything. The lines are
/// kept in a history from one session to the next. The end of input, or Runner.exit(), ends it. One at a
/// time: the line editor has one state for the process.
class KyRunPrompt : public QObject
{
    Q_OBJECT

public:
    /// Runs one text, named \a inPlace, and tells of its value or error.
    using Run = std::function<void(const QString& inText, const QString& inPlace)>;

    /// \a inHistoryFile keeps the lines; empty keeps none.
    KyRunPrompt(KyScriptAbstractEngine& inFacade, const Run& inRun, const QString& inHistoryFile);
    ~KyRunPrompt() override;

    /// Serves the prompt until its end. Gives the exit status.
    int exec();

    /// Whether \a inText leaves a bracket, a template or a comment open.
    static bool isOpen(const QString& inText);

    /// What may stand for \a inWord, the last word of a line: whole words, sorted. A word is a name, or names
    /// joined by dots.
    QStringList completions(const QString& inWord) const;

private:
    void readLine(const char* inLine);
    void runText();
    void install();

    KyScriptAbstractEngine& mFacade;
    const Run mRun;
    const QByteArray mHistoryFile;
    QJSValue mNames;
    QString mText;
    int mCount = 0;
    bool mIsAtEnd = false;
};
