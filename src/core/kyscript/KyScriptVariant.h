#pragma once

#include <QtCore/QVariant>

class QJSValue;
class QObject;

/// What scripts pass where an operation takes a QVariant, a map or a list.
///
/// Qt hands over arrays and objects as QJSValue, and the whole numbers that a script has computed as double:
/// they become QVariantList and QVariantMap, and int where that holds them, also inside. A function or a
/// symbol has no such form; inside lists and maps it is invalid, as is a property whose getter throws. All
/// other values are as Qt hands them over.
///
/// Qt's own conversion ends the process at a symbol, and at values nested too deep; this one does not, and
/// leaves no error behind on the engine of \a inHost, the object that the script has called. Without a host,
/// as in constructors, the script may get the error of a proxy.
///
/// Getters are functions of the script, which may end the caller's object.
class KyScriptVariant
{
public:
    KyScriptVariant() = delete;

    /// What normalised() accepts: nested deeper, or with more values in all, a value stays a QJSValue.
    static constexpr int MaxDepth = 100;
    static constexpr int MaxValues = 100000;

    /// Where cut() ends a value.
    static constexpr int CutDepth = 8;
    static constexpr int CutValues = 65536;

    /// For a value that is stored: whole or not at all. What has no form, or is beyond the limits, stays a
    /// QJSValue.
    static QVariant normalised(const QVariant& inArgument, const QObject& inHost);

    /// For a description, of which as much counts as can be read. What has no form is invalid, and what is
    /// beyond the limits is left out.
    static QVariant cut(const QVariant& inArgument, const QObject* inHost);
    static QVariant cut(const QJSValue& inArgument, const QObject* inHost = nullptr);

    /// Whether \a inValue is a list: a text, which QVariant converts to a list of its characters, is none.
    static bool isList(const QVariant& inValue);
    /// An empty one for anything that is no list.
    static QVariantList listOf(const QVariant& inValue);
};
