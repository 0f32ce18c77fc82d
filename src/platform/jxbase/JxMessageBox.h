#pragma once

#include <QMessageBox>

/// The message box of the client.
///
/// It belongs to whoever made it, mostly a stack, and never to its parent: when the parent goes, the box lets
/// go of it, and closes as if it had been rejected in case it is on show.
class JxMessageBox : public QMessageBox
{
    Q_OBJECT

public:
    /// The box stands above \a inParent, which may be null. \a inStaysOnTop keeps it above the windows of
    /// all other programs too.
    JxMessageBox(QWidget* inParent, bool inStaysOnTop);

    /// Shows the box, modal for the application, and returns when it is closed: the standard button that was
    /// clicked, an opaque value for another button, see clickedButton(), and 0 when the parent went.
    int exec() override;

private:
    void leaveParent();
};
