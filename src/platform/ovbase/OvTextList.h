#pragma once

#include <QList>
#include <QString>

#include <optional>

/// Lists of strings in one text, exact for every list: the elements with "," between them, quoted as in
/// RFC 4180 where they need it. The empty text is the empty list.
class OvTextList
{
public:
    static QString toText(const QList<QString>& inList);

    /// Nothing when a quote is not closed, or text stands behind a closing one.
    static std::optional<QList<QString>> fromText(const QString& inText);
};
