#include "KyScriptRichEditTarget.h"

#include <jxbase/JxRegularExpression.h>

namespace {

constexpr QLatin1String OwnEditorClass("OvReportEditor");

QRegularExpression expressionOf(const QVariant& inValue)
{
    if (inValue.typeId() == QMetaType::QRegularExpression)
        return inValue.toRegularExpression();
    if (inValue.typeId() != QMetaType::QString)
        return QRegularExpression();
    return JxRegularExpression::fromWildcard(inValue.toString(), Qt::CaseInsensitive,
                                             JxRegularExpression::NonPathWildcardConversion |
                                                 QRegularExpression::UnanchoredWildcardConversion);
}

/// The text as the script has given it, before it is taken for a wildcard.
QString literalText(const QVariant& inValue)
{
    if (inValue.typeId() == QMetaType::QRegularExpression)
        return inValue.toRegularExpression().pattern();
    return inValue.typeId() == QMetaType::QString ? inValue.toString() : QString();
}

} // namespace

KyScriptRichEditTarget KyScriptRichEditTarget::of(const QVariantMap& inConfig)
{
    const auto expression = [&](const char* inKey) {
        return expressionOf(inConfig.value(QLatin1String(inKey)));
    };
    KyScriptRichEditTarget target;
    target.processName = expression("processName");
    target.windowClassName = expression("windowClassName");
    target.contentPattern = expression("contentPattern");
    target.topLevelWindowName = expression("topLevelWindowName");
    target.parentWindowName = expression("parentWindowName");
    target.windowName = expression("windowName");
    target.convertCRLFToLF = inConfig.value(QLatin1String("convertCRLFToLF")).toBool();
    target.ownEditor = literalText(inConfig.value(QLatin1String("windowClassName"))) == OwnEditorClass;
    return target;
}
