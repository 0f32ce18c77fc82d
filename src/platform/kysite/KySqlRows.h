#pragma once

#include <ovbase/OvDatabase.h>

#include <QtCore/QStringList>

class QSqlQuery;

/// The rows of a query in the form of OvDatabase: texts in Latin-1, and a type word for each column.
class KySqlRows
{
public:
    KySqlRows() = delete;

    /// Reads all rows of \a ioQuery. \a inTypes are the type words of its columns as far as they are known;
    /// the word of another column is told by its values: "bigint" and "float" for numbers, "bit" for
    /// booleans, "varbinary" for bytes, which stand in hexadecimal digits behind "\x", and "nvarchar" for the
    /// rest.
    static void read(QSqlQuery& ioQuery, const QStringList& inTypes, OvDatabase::Rows& outRows,
                     std::vector<std::string>& outColumnTypes);
};
