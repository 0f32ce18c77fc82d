#pragma once

#include <jxbase/JxDialog.h>
#include <kybase/KyNotifiable.h>

#include <QtCore/QStringList>
#include <QtCore/QVariant>
#include <QtQml/QJSValue>

#include <memory>

/// The dialog that scripts open with `new Dialog({...})`: message box, text viewer, text editor, one-line
/// prompt or busy indicator, as the keys of its configuration say. docs/scripting/dialogs.md tells of them.
///
/// It never blocks. show() returns at once, the answer comes with processed(). In the normal mode every
/// answer closes the dialog; with the key "manuallyCloseDialog" it stays open until the script closes it.
///
/// Owner: the script that made it, so a dialog that nothing refers to goes with a garbage collection, on show
/// or not. One that was shown goes with KyScriptEngine::cleanup() at the latest. While a signal of it is
/// being handled its deletion waits, unless the engine itself ends.
///
/// Everything may be called in every state. What a script gets wrong does nothing or works as the default,
/// see each operation. User actions become lines of the session log, with the dialog's context as source.
class KyScriptDialog : public JxDialog, public KyNotifiableContextSensitive
{
    Q_OBJECT

public:
    /// Values of clickedButton() that are no index.
    static constexpr int NoButton = -1;     ///< Nothing yet, or closed in some other way.
    static constexpr int AutoClosed = -2;   ///< Closed by an event of the application.
    static constexpr int EnterPressed = -3; ///< Enter in the line edit.

    explicit KyScriptDialog(QVariantMap config);
    Q_INVOKABLE KyScriptDialog();
    /// Scripts reach this one, and the like of setButtons() and setButtonToolTips(), since Qt's conversion to
    /// maps and lists doesn't survive every value.
    Q_INVOKABLE explicit KyScriptDialog(const QJSValue& config);
    ~KyScriptDialog() override;

    /// Never opens anything and gives 0. With an engine it throws a script error.
    Q_INVOKABLE int exec() override;
    /// Opens the dialog at the next turn of the event loop, with the answer of the last time forgotten.
    Q_INVOKABLE void show();

    /// Shows that something is under way, with \a status beside an animated icon; or else \a status alone,
    /// and nothing when that is empty.
    Q_INVOKABLE void setStatus(bool busy, QString status = QString());

    Q_INVOKABLE void setTitle(QString title);
    Q_INVOKABLE QString title();
    /// Rich text is found by itself.
    Q_INVOKABLE void setMessage(QString message);

    /// \a type is "auto", "html", "markdown" or "plaintext" in any letter case; another one is logged at
    /// level 2 and works as "auto".
    Q_INVOKABLE void setFieldText(QString fieldText, QString type = QStringLiteral("auto"));
    /// \a type is "html", "markdown" or "plaintext" in any letter case; another one, "auto" too, is logged at
    /// level 2 and works as "plaintext".
    Q_INVOKABLE QString fieldText(QString type = QStringLiteral("plaintext"));
    /// Says whether the user may change the text field. The text browser, if that is in use, never can be.
    Q_INVOKABLE void setEditable(bool editable);

    Q_INVOKABLE void setLineEditEnabled(bool enabled);
    Q_INVOKABLE void setLineEditText(QString text);
    Q_INVOKABLE QString lineEditText();

    /// Scrolls the text field; before the dialog is on show, the wish is kept until then.
    Q_INVOKABLE void scrollToBottom();
    Q_INVOKABLE void scrollToTop();

    /// Replaces all buttons. An element is the text of a button, or a map with "text", "toolTip" and
    /// "menuItems", a list of maps with "text" and "toolTip"; anything else gives a button without a text.
    /// The first button accepts, all others reject.
    void setButtons(QVariantList buttons);
    Q_INVOKABLE void setButtons(const QJSValue& buttons);
    /// An empty text removes a tool tip. Surplus ones are skipped.
    void setButtonToolTips(QStringList buttonToolTips);
    Q_INVOKABLE void setButtonToolTips(const QJSValue& buttonToolTips);
    /// \a index is that of a button, which takes the items of its menu along, or a pair of the indices of a
    /// button and of an item. One out of range does nothing, anything else is a contract report.
    Q_INVOKABLE void setButtonEnabled(QVariant index, bool enabled);
    /// \a indices is a list of what setButtonEnabled() takes; an empty one, or no list, means all buttons.
    Q_INVOKABLE void setButtonsEnabled(QVariant indices, bool enabled);

    /// What the last finish gave: QDialog::Accepted or QDialog::Rejected.
    Q_INVOKABLE int result();
    /// The index of the button that was clicked, or of whose menu an item was chosen; else a value below 0.
    Q_INVOKABLE int clickedButton();
    /// The index of the chosen item, or -1.
    Q_INVOKABLE int clickedButtonMenuItem();
    /// 1 when the dialog was closed by an event of the application, else 0.
    Q_INVOKABLE int autoClosed();

    /// What its handlers do must not end the dialog before it has told of the answer.
    void done(int result) override;

Q_SIGNALS:
    /// The user has answered. In the normal mode the dialog is closed by then, and the answer can be read
    /// until the next show(); in the manual mode only while this is being handled.
    void processed();
    /// A link of the text browser was clicked. The browser itself never follows it.
    void linkClicked(QString url);
    /// The mouse has come over a link of the text browser; empty when it has left it.
    void linkHovered(QString link);

protected:
    void keyPressEvent(QKeyEvent* inEvent) override;

    void addNotifications() override;
    /// Closes a dialog on show that has the key "autoClose".
    void notified(const KyNotification& inNotification) override;

private:
    struct Private;
    friend class StatusIndicator;

    static QString plainText(const QString& inText);

    void build();
    void readConfig(const QVariantMap& inConfig);
    void nameParts();

    void appear();
    void chooseFocus();
    bool isMessageTooWide() const;
    void makeRoom();
    void makeStatusRoom();
    void comeInside(const QRect& inArea);
    QSize borderSize() const;

    void answer(int inButton, int inMenuItem, const QString& inLogText);
    void finish(int inResult);
    QString finishText() const;
    void log(const QString& inText) const;
    void warn(const QString& inText) const;

    const std::unique_ptr<Private> d;
};
