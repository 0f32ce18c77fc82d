#pragma once

#include <kybase/KyEditor.h>
#include <kybase/KyNotifiable.h>

#include <QtCore/QObject>
#include <QtCore/QPointer>
#include <QtGui/QTextDocument>
#include <QtQml/QJSValue>

#include <functional>

/// The editor of the report: one document, which the user writes and scripts fill.
///
/// It is the editor with the key "Report". A host with windows shows its document and sets what opens it.
/// With the end of the work on a patient the report is emptied, in a way that the user can undo.
class KyReportEditor final : public KyEditor, private KyNotifiable
{
public:
    static constexpr const char* Key = "Report";

    KyReportEditor();
    ~KyReportEditor() override;

    QTextDocument& document() { return mDocument; }

    /// What brings the editor in front of the user; empty, as at first, for nothing.
    void setOpener(std::function<void()> inOpener) { mOpener = std::move(inOpener); }

    /// One KyReportScript for all, which is never deleted, so that a script may keep it for ever; the parent
    /// is not used.
    QObject* scriptObject(QObject* inParent) override;
    void open() override;

private:
    void addNotifications() override;
    void notified(const KyNotification& inNotification) override;

    QTextDocument mDocument;
    std::function<void()> mOpener;
};

/// The report as scripts see it. Without an editor, as at the end of the program, it is empty and stays so.
class KyReportScript final : public QObject
{
    Q_OBJECT
    /// The report as plain text, with "\n" between paragraphs. Whatever a script sets counts as its text.
    Q_PROPERTY(QJSValue text READ scriptText WRITE setScriptText NOTIFY textChanged)
    /// The report with its formatting. What is written may be a fragment.
    Q_PROPERTY(QJSValue html READ scriptHtml WRITE setScriptHtml NOTIFY textChanged)

public:
    /// The one that there is.
    static KyReportScript& instance();

    QString text() const;
    void setText(const QString& inText);
    QString html() const;
    void setHtml(const QString& inHtml);

    /// Adds plain text at the end.
    Q_INVOKABLE void append(QString inText);
    /// Replaces each occurrence of \a inPlaceholder, in place and in its format. Gives how many there were;
    /// an empty placeholder occurs nowhere.
    Q_INVOKABLE int replace(QString inPlaceholder, QString inText);
    /// Brings the editor in front of the user.
    Q_INVOKABLE void open();

Q_SIGNALS:
    /// A change that is made while this is told is not told again, so that whoever hears of it may write.
    void textChanged();

private:
    friend class KyReportEditor;
    KyReportScript();
    void tell();

    // Scripts reach the texts as values: Qt's own conversion ends the process at an array that holds a
    // symbol.
    QJSValue scriptText() const { return text(); }
    QJSValue scriptHtml() const { return html(); }
    void setScriptText(const QJSValue& inText) { setText(textOf(inText)); }
    void setScriptHtml(const QJSValue& inHtml) { setHtml(textOf(inHtml)); }
    static QString textOf(const QJSValue& inValue);

    void setEditor(KyReportEditor* inEditor);
    void forget(const KyReportEditor* inEditor);

    KyReportEditor* mEditor = nullptr;
    bool mIsTelling = false;
};
