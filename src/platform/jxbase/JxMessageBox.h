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
    /// What stands in smaller letters below the text of a box.
    class InformativeText
    {
    public:
        explicit InformativeText(const QString& inText = QString())
            : mText(inText)
        {}
        const QString& text() const { return mText; }

    private:
        QString mText;
    };

    /// The box stands above \a inParent, which may be null. \a inStaysOnTop keeps it above the windows of
    /// all other programs too.
    JxMessageBox(QWidget* inParent, bool inStaysOnTop);

    /// Shows the box, modal for the application, and returns when it is closed: the standard button that was
    /// clicked, an opaque value for another button, see clickedButton(), and 0 when the parent went.
    int exec() override;

    /// Warns of something that failed, or tells of an error, and returns when the box is closed: the button
    /// that was clicked, or the one that Escape stands for; NoButton when the window below went. Texts are
    /// shown as they are, without markup; of one beyond 1000 characters the middle only stands in the
    /// details, which the user can open. \a inDefaultButton may be NoButton.
    ///
    /// The box stands above the window that is in use, a modal one too. An application without windows shows
    /// none; the result is NoButton then.
    static StandardButton warning(const QString& inText, StandardButtons inButtons,
                                  StandardButton inDefaultButton, const InformativeText& inInformativeText);
    static StandardButton critical(const QString& inText, StandardButtons inButtons,
                                   StandardButton inDefaultButton, const InformativeText& inInformativeText);

private:
    static StandardButton ask(Icon inIcon, const QString& inText, StandardButtons inButtons,
                              StandardButton inDefaultButton, const InformativeText& inInformativeText);
    void leaveParent();
};
