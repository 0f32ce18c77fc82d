#pragma once

#include <QFileDialog>

/// The file dialog of the client: that of the system where Qt has one.
///
/// Belongs to whoever made it and never to its parent: when the parent goes, the dialog lets go of it, and
/// closes as if it had been cancelled in case it is on show. It has no meta-object of its own, since Qt shows
/// the system's dialog for a plain QFileDialog only.
class JxFileDialog : public QFileDialog
{
public:
    JxFileDialog(QWidget* inParent, const QString& inCaption, Options inOptions);

    /// Asks the user for the name of a file to write, and asks again before an existing one is taken unless
    /// the options say otherwise. Returns when the dialog is closed: the absolute path, or empty when the
    /// user cancels or the parent goes, and in an application without windows.
    ///
    /// \a inDir is the proposed path; in place of a folder that is missing, the nearest one above it is
    /// shown. \a inFilter lists the kinds of files as "Text (*.txt);;All (*)"; empty shows all. \a
    /// ioSelectedFilter may be null; else it says which of them is chosen at first, and gets the user's
    /// choice.
    static QString getSaveFileName(QWidget* inParent, const QString& inCaption, const QString& inDir,
                                   const QString& inFilter, QString* ioSelectedFilter, Options inOptions);

private:
    void propose(const QString& inPath);
    void leaveParent();
};
