#pragma once

#include <QString>

#include <string_view>
#include <vector>

/// A format of QLocale::toString, taken apart into its fields and the text between them. A field is a run of
/// one letter outside of quotes, such as "HH", and is named by that letter in lower case.
class OvFormatText
{
public:
    /// Only the letters \a inFields, of either case, count as fields.
    OvFormatText(const QString& inFormat, std::string_view inFields);

    /// The format put together again, without blanks around it.
    QString text() const;

    bool has(char inField) const;
    /// What stands between two fields that follow one another; empty when they don't.
    QString between(char inField, char inNext) const;

    /// Replaces the fields that are written exactly as \a inRun.
    void replace(std::string_view inRun, const QString& inText);
    /// Removes a field, together with the punctuation before it or else with the unit behind it.
    void drop(char inField);
    /// Puts a new field and what parts it from its neighbour behind \a inPrevious, if there is such a field.
    void insertBehind(char inPrevious, char inField, const QString& inSeparator, const QString& inRun);

    /// Whether \a inText is not empty and holds no letters and no quotes.
    static bool isPunctuation(const QString& inText);

private:
    struct Part
    {
        char field = 0; ///< 0 for the text between fields.
        QString text;
    };

    /// Number of the first part of this field; that of all parts when there is none.
    std::size_t find(char inField) const;
    bool isText(std::size_t inPart) const { return inPart < mParts.size() && mParts[inPart].field == 0; }
    void erase(std::size_t inPart);

    std::vector<Part> mParts;
};
