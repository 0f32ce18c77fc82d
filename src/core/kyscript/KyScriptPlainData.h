#pragma once

#include <QtCore/QVariant>

class QJSValue;

/// What a script has passed, as plain data of the host: numbers, texts, booleans, dates, and lists and maps
/// of these. An invalid value stands for everything else, such as functions, symbols and objects of the host.
///
/// Qt's own conversion ends the process at a symbol, and at values nested too deep; this one does not. It
/// ends behind 65536 values, and leaves out what is nested deeper than eight levels.
class KyScriptPlainData
{
public:
    KyScriptPlainData() = delete;

    static QVariant of(const QJSValue& inValue);
    /// An argument of the type QVariant, which holds arrays and objects as values of the script.
    static QVariant of(const QVariant& inArgument);

    /// An empty one for anything that is no object.
    static QVariantMap mapOf(const QJSValue& inValue);
    /// An empty one for anything that is no array; a text is none.
    static QVariantList listOf(const QJSValue& inValue);
    /// Likewise for a value that is plain data already. Of a text QVariant would make a list of its
    /// characters.
    static QVariantList listOf(const QVariant& inData);
};
