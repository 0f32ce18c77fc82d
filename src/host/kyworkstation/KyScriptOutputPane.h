#pragma once

#include <QtWidgets/QWidget>

class KyScriptInterface;
class QJSValue;
class QTextEdit;

/// Runs scripts from files on the default engine and shows what they print, their values and their errors.
/// Made by the main window.
///
/// What a script prints in its run stands here even when a console of the engine is open. What its handlers
/// print later goes to that console, or here as long as there is none.
class KyScriptOutputPane : public QWidget
{
    Q_OBJECT

public:
    /// What the pane keeps of its text; the oldest lines go once there is half as much again. A line is
    /// never cut.
    static constexpr int MaxLines = 20'000;
    static constexpr int MaxCharacters = 4'000'000;

    explicit KyScriptOutputPane(QWidget* inParent);

    /// Runs the script in a file, which must be UTF-8; says why when it can't be read. While another module's
    /// script is waiting on the engine, this one runs when that has ended.
    void run(const QString& inFile);

Q_SIGNALS:
    /// The script has been read and is about to run.
    void starting(const QString& inFile);

private:
    void showResult(const KyScriptInterface& inEngine, const QJSValue& inValue);
    void trim();

    QTextEdit* const mText;
};
