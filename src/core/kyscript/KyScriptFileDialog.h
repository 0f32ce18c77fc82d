#pragma once

#include <QtCore/QObject>

/// `new FileDialog()` in scripts: asks the user for the name of a file. Belongs to the script.
class KyScriptFileDialog : public QObject
{
    Q_OBJECT

public:
    Q_INVOKABLE explicit KyScriptFileDialog(QObject* parent = nullptr);

    /// Asks where to save a file and returns when the dialog is closed; the application goes on meanwhile.
    /// Proposed is \a inFileName in the user's folder of downloads. \a inFilter lists the kinds of files as
    /// "Text (*.txt);;All (*)"; empty shows all.
    ///
    /// \return the absolute path; empty when the user cancels, and in an application without
    /// windows. Nothing is written.
    Q_INVOKABLE QString getSaveFileName(QString inFileName, QString inFilter);
};
