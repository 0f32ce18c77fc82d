#pragma once

#include <QtCore/QVariant>

class QObject;

/// What scripts pass where an operation takes a QVariant.
class KyScriptVariant
{
public:
    KyScriptVariant() = delete;

    /// Nested deeper, or with more values in all, a value stays a QJSValue.
    static constexpr int MaxDepth = 100;
    static constexpr int MaxValues = 100000;

    /// \a inArgument in the form that operations expect. Qt hands over arrays and objects as QJSValue, and
    /// the whole numbers that a script has computed as double: they become QVariantList and QVariantMap, and
    /// int where that holds them, also inside. A function, a symbol, and what is beyond the limits stays a
    /// QJSValue, and is invalid inside lists and maps, as is a property whose getter throws. All other values
    /// are as they were.
    ///
    /// Qt's own conversion ends the process at a symbol, and at values nested too deep; this one does not,
    /// and leaves no error behind on the engine of \a inHost, the object that the script has called.
    static QVariant normalised(const QVariant& inArgument, const QObject& inHost);

    /// Whether \a inValue is a list: a text, which QVariant converts to a list of its characters, is none.
    static bool isList(const QVariant& inValue);
};
