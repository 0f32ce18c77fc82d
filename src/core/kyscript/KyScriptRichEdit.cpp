#include "KyScriptRichEdit.h"

#include "KyScriptRichEditControl.h"
#include "KyScriptRichEditDocument.h"
#include "KyScriptRichEditSearch.h"

#include <kyreporttab/JxReport.h>
#include <kyreporttab/OvReportEditor.h>

#include <QtQml/QJSEngine>
#include <QtWidgets/QTextEdit>

#include <optional>

namespace {

/// The values that the description knows: texts, regular expressions, and what can say yes or no.
QVariant configValue(const QJSValue& inValue)
{
    if (inValue.isRegExp())
        return qjsvalue_cast<QRegularExpression>(inValue);
    const bool isPlain = inValue.isString() || inValue.isBool() || inValue.isNumber();
    return isPlain ? inValue.toVariant() : QVariant();
}

QVariantMap configMap(const QJSValue& inConfig)
{
    QVariantMap map;
    if (!inConfig.isObject() || inConfig.isArray() || inConfig.isCallable() || inConfig.isQObject())
        return map;
    for (const char* key : {"processName", "windowClassName", "contentPattern", "topLevelWindowName",
                            "parentWindowName", "windowName", "convertCRLFToLF"})
    {
        if (inConfig.hasOwnProperty(QLatin1String(key)))
            map.insert(QLatin1String(key), configValue(inConfig.property(QLatin1String(key))));
    }
    return map;
}

std::optional<KyScriptRichEditControl> controlFor(const KyScriptRichEditTarget& inTarget)
{
    const RnWindows::Window window = KyScriptRichEditSearch::find(inTarget);
    if (!window)
        return std::nullopt;
    return KyScriptRichEditControl(*RnWindows::instance(), window, inTarget.convertCRLFToLF);
}

} // namespace

KyScriptRichEdit::KyScriptRichEdit(QVariantMap config)
    : mTarget(KyScriptRichEditTarget::of(config))
{}

KyScriptRichEdit::KyScriptRichEdit()
    : KyScriptRichEdit(QVariantMap())
{}

KyScriptRichEdit::KyScriptRichEdit(const QJSValue& config)
    : KyScriptRichEdit(configMap(config))
{}

QTextEdit* KyScriptRichEdit::findOwnEditor(bool readOnlyAllowed) const
{
    const JxReport* reports = mTarget.ownEditor ? JxReport::instance() : nullptr;
    const Ovg::OvReportEditor* report = reports ? reports->activeReport() : nullptr;
    QTextEdit* edit = report ? report->textEdit() : nullptr;
    return edit && (readOnlyAllowed || !edit->isReadOnly()) ? edit : nullptr;
}

bool KyScriptRichEdit::isValid()
{
    return findOwnEditor(false) || KyScriptRichEditSearch::find(mTarget);
}

bool KyScriptRichEdit::isReadable()
{
    return findOwnEditor(true) || KyScriptRichEditSearch::find(mTarget);
}

QVariant KyScriptRichEdit::getText()
{
    if (const QTextEdit* edit = findOwnEditor(true))
        return edit->toPlainText();
    const auto control = controlFor(mTarget);
    return control ? QVariant(control->text()) : QVariant();
}

QVariant KyScriptRichEdit::getHtml()
{
    const QTextEdit* edit = findOwnEditor(true);
    return edit ? QVariant(edit->toHtml()) : QVariant();
}

void KyScriptRichEdit::setHtml(QString html)
{
    if (QTextEdit* edit = findOwnEditor(false))
        edit->setHtml(html);
}

QVariantList KyScriptRichEdit::getSelection()
{
    if (QTextEdit* edit = findOwnEditor(true))
        return KyScriptRichEditDocument(*edit).selection();
    const auto control = controlFor(mTarget);
    if (!control)
        return QVariantList();
    const RnWindows::Selection selection = control->selection();
    return {int(selection.start), int(selection.end)};
}

void KyScriptRichEdit::setSelection(int start, int end)
{
    if (QTextEdit* edit = findOwnEditor(true))
        KyScriptRichEditDocument(*edit).setSelection(start, end);
    else if (auto control = controlFor(mTarget))
        control->setSelection(start, end);
}

void KyScriptRichEdit::replace(QVariant pattern, QString text)
{
    if (QTextEdit* edit = findOwnEditor(false))
        KyScriptRichEditDocument(*edit).replace(pattern, text);
    else if (auto control = controlFor(mTarget))
        control->replace(pattern, text);
}

void KyScriptRichEdit::replaceSelection(QString text, bool allowUndo)
{
    if (QTextEdit* edit = findOwnEditor(false))
        KyScriptRichEditDocument(*edit).replaceSelection(text);
    else if (auto control = controlFor(mTarget))
        control->replaceSelection(text, allowUndo);
}

void KyScriptRichEdit::replaceSelectionHtml(QString text)
{
    if (QTextEdit* edit = findOwnEditor(false))
        edit->insertHtml(text);
}

void KyScriptRichEdit::insertAfter(QString search, QString text)
{
    if (QTextEdit* edit = findOwnEditor(false))
        KyScriptRichEditDocument(*edit).insertAfter(search, text);
    else if (auto control = controlFor(mTarget))
        control->insertAfter(search, text);
}
