#pragma once

#include <QtCore/QRegularExpression>
#include <QtCore/QVariantMap>

/// The description of the editor that a script works on.
///
/// An expression with an empty pattern sets no condition.
struct KyScriptRichEditTarget
{
    /// From the configuration of a script, see docs/scripting/report.md. What is missing, or of the wrong
    /// type, sets no condition.
    static KyScriptRichEditTarget of(const QVariantMap& inConfig);

    bool operator==(const KyScriptRichEditTarget& inOther) const = default;

    QRegularExpression processName;        ///< File name of the target's process.
    QRegularExpression windowClassName;    ///< Window class of the control.
    QRegularExpression contentPattern;     ///< Text of the control.
    QRegularExpression topLevelWindowName; ///< Title of the top-level window.
    QRegularExpression parentWindowName;   ///< Title of the control's direct parent.
    QRegularExpression windowName;         ///< Title of the control.
    bool convertCRLFToLF = false;          ///< "\r\n" in text that is read becomes "\n".
    bool ownEditor = false;                ///< The application's own report editor.
};
