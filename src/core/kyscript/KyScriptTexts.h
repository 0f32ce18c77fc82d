#pragma once

#include <QtCore/QStringList>

#include <optional>

class QJSValue;
class QObject;

/// The list of texts that a script passes.
///
/// Qt's own conversion ends the process at an array that holds a symbol or claims to be longer than memory;
/// this one does not. Otherwise both accept and refuse the same values.
class KyScriptTexts
{
public:
    KyScriptTexts() = delete;

    /// The elements of an array as texts: those that are null, undefined or missing as empty ones, objects as
    /// their toString() has it, or what that throws. A text is a list of itself alone, and an object that is
    /// no array an empty list. No value for everything else, for objects of the host, and for arrays of more
    /// than 1048576 elements.
    static std::optional<QStringList> of(const QJSValue& inValue);

    /// Likewise. What has no value becomes a TypeError of the script that has called \a inCaller, an object
    /// of the host; \a inWhat tells which argument it is.
    static std::optional<QStringList> argument(const QObject* inCaller, const QJSValue& inValue,
                                               const QString& inWhat);
};
