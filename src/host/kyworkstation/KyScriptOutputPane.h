#pragma once

#include <QtWidgets/QWidget>

class QTextEdit;

/// Runs scripts from files on the default engine and shows what they print, their values and their errors.
/// Made by the main window.
class KyScriptOutputPane : public QWidget
{
    Q_OBJECT

public:
    explicit KyScriptOutputPane(QWidget* inParent);

    /// Runs the script in a file, which must be UTF-8; says why when it can't be read. While another script
    /// of the engine is waiting, this one runs when that has ended.
    void run(const QString& inFile);

Q_SIGNALS:
    /// The script has been read and is about to run.
    void starting(const QString& inFile);

private:
    QTextEdit* const mText;
};
