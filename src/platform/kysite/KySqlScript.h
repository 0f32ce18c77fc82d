#pragma once

#include <QtCore/QString>
#include <QtCore/QStringList>

#include <vector>

/// A text of SQL, taken apart: its statements, their named parameters, and what its comments say.
///
/// Texts in quotes and comments hold neither parameters nor ends of statements. A parameter is a colon with a
/// name behind it. Triggers, which hold statements of their own, can't be written in it.
class KySqlScript
{
public:
    struct Statement
    {
        QString text;
        /// Names without their colon, each once, in the order in which they come first.
        QStringList parameters;
    };

    KySqlScript() = default;
    explicit KySqlScript(const QString& inText);

    /// Without those that are empty, or only a comment.
    const std::vector<Statement>& statements() const { return mStatements; }

    /// The words behind "columns:" in a comment "-- columns: bit, datetime", in lower case; empty without
    /// one.
    const QStringList& columnTypes() const { return mColumnTypes; }

    /// Whether a statement has that parameter, whatever the case of its letters.
    bool hasParameter(const QString& inName) const;

private:
    void readComment(QStringView inComment);

    std::vector<Statement> mStatements;
    QStringList mColumnTypes;
};
