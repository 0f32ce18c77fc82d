#pragma once

#include <QStringView>

/// Reading of values that stand in XML files. Always there; may be used on any thread.
class JxDom
{
public:
    JxDom() = delete;

    /// The boolean of \a inText: "1", "true", "yes" or "on", and "0", "false", "no" or "off", in any case and
    /// with white space at the ends. Any other text, also an empty one, gives \a inDefaultValue. \a outOk,
    /// which may be null, tells whether the text was one of these words.
    static bool qStringToBool(QStringView inText, const bool& inDefaultValue, bool* outOk = nullptr);
};
