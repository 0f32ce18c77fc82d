#pragma once

#include <QtCore/QRegularExpression>

/// Wildcards as regular expressions, also where Qt takes them for names of files only.
class JxRegularExpression
{
public:
    JxRegularExpression() = delete;

    /// A wildcard that is not the name of a file: "*" stands for any characters and "?" for any one, also for
    /// "/" and line breaks. "[abc]" and "[a-c]" stand for one of a set, "[!abc]" for one outside of it; a "]"
    /// straight behind the bracket belongs to the set. All other characters stand for themselves. Without
    /// UnanchoredWildcardConversion the expression matches whole texts only; without
    /// NonPathWildcardConversion it is Qt's own, for names of files.
    ///
    /// A set without its closing bracket gives an expression that is not valid.
    static QRegularExpression fromWildcard(QStringView inPattern, Qt::CaseSensitivity inCase,
                                           QRegularExpression::WildcardConversionOptions inOptions);

    /// QRegularExpression::NonPathWildcardConversion, which Qt has from 6.6 on.
    static constexpr QRegularExpression::WildcardConversionOptions NonPathWildcardConversion{QFlag(0x2)};
};
