#pragma once

#include <QtCore/QByteArray>

#include <optional>

class QJSValue;

/// The bytes that a script passes.
///
/// Qt's own conversion refuses typed arrays, and ends the process at an array that holds a symbol or claims
/// to be longer than memory; this one does not.
class KyScriptBytes
{
public:
    KyScriptBytes() = delete;

    /// The bytes of an ArrayBuffer, a typed array or a DataView, the elements of an array modulo 256, the
    /// UTF-8 form of a text, number or boolean, and none for null. No value for everything else, and for
    /// arrays of more than 67108864 elements.
    ///
    /// The properties of an object can be functions of the script, which may end the caller's object.
    static std::optional<QByteArray> of(const QJSValue& inValue);
};
