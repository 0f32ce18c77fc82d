#include "KyReportEditor.h"

#include <QtCore/QScopedValueRollback>
#include <QtGui/QTextCursor>
#include <QtQml/QJSEngine>

KyReportEditor::KyReportEditor()
    : KyEditor(Key)
{
    KyReportScript::instance().setEditor(this);
}

KyReportEditor::~KyReportEditor()
{
    KyReportScript::instance().forget(this);
}

QObject* KyReportEditor::scriptObject(QObject*)
{
    return &KyReportScript::instance();
}

void KyReportEditor::open()
{
    if (mOpener)
        mOpener();
}

void KyReportEditor::addNotifications()
{
    for (const int code : {KyNotification::SessionClosed, KyNotification::PatientChanged})
        KyNotifiables::getInstance()->addNotification(this, KyNotification(code));
}

/// What was written about one patient must not stand in the report of the next.
void KyReportEditor::notified(const KyNotification&)
{
    QTextCursor all(&mDocument);
    all.select(QTextCursor::Document);
    all.removeSelectedText();
}

KyReportScript::KyReportScript()
{
    QJSEngine::setObjectOwnership(this, QJSEngine::CppOwnership);
}

KyReportScript& KyReportScript::instance()
{
    static auto& one = *new KyReportScript;
    return one;
}

void KyReportScript::setEditor(KyReportEditor* inEditor)
{
    if (mEditor)
        mEditor->document().disconnect(this);
    mEditor = inEditor;
    if (mEditor)
        connect(&mEditor->document(), &QTextDocument::contentsChanged, this, &KyReportScript::tell);
}

void KyReportScript::forget(const KyReportEditor* inEditor)
{
    if (mEditor == inEditor)
        setEditor(nullptr);
}

void KyReportScript::tell()
{
    if (mIsTelling)
        return;
    const QScopedValueRollback<bool> telling(mIsTelling, true);
    Q_EMIT textChanged();
}

QString KyReportScript::text() const
{
    return mEditor ? mEditor->document().toPlainText() : QString();
}

QString KyReportScript::textOf(const QJSValue& inValue)
{
    return inValue.isNull() || inValue.isUndefined() ? QString() : inValue.toString();
}

void KyReportScript::setText(const QString& inText)
{
    if (mEditor)
        mEditor->document().setPlainText(inText);
}

QString KyReportScript::html() const
{
    return mEditor ? mEditor->document().toHtml() : QString();
}

void KyReportScript::setHtml(const QString& inHtml)
{
    if (mEditor)
        mEditor->document().setHtml(inHtml);
}

void KyReportScript::append(QString inText)
{
    if (!mEditor)
        return;
    QTextCursor cursor(&mEditor->document());
    cursor.movePosition(QTextCursor::End);
    cursor.insertText(inText);
}

/// Behind what was put in, which may hold the placeholder itself.
int KyReportScript::replace(QString inPlaceholder, QString inText)
{
    if (!mEditor || inPlaceholder.isEmpty())
        return 0;
    QTextDocument& document = mEditor->document();
    QTextCursor all(&document);
    all.beginEditBlock();
    int count = 0;
    for (QTextCursor found = document.find(inPlaceholder, 0, QTextDocument::FindCaseSensitively);
         !found.isNull();
         found = document.find(inPlaceholder, found.position(), QTextDocument::FindCaseSensitively))
    {
        found.insertText(inText, found.charFormat());
        ++count;
    }
    all.endEditBlock();
    return count;
}

void KyReportScript::open()
{
    if (mEditor)
        mEditor->open();
}
