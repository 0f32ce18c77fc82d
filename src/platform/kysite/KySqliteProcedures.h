#pragma once

#include "KySqlConnection.h"
#include "KySqlScript.h"

#include <ovbase/OvDatabase.h>

#include <QtCore/QDateTime>
#include <QtCore/QHash>

class QSqlQuery;

/// Stored procedures over SQLite: a procedure is a file of SQL, "NAME.sql" in a folder, in UTF-8.
///
/// Its statements run in their order, all or none of them, and the rows of the last one that has columns are
/// the result. Values are bound to its named parameters, ":station", whatever the case of their letters, and
/// never pasted into its text; those that are not given are NULL. The type words are those of a comment
/// "-- columns: int, bit, datetime" in the file, or else those with which the table's columns are declared.
class KySqliteProcedures final : public OvDatabase
{
public:
    /// The file of the database in \a inSettings is made when it is not there.
    KySqliteProcedures(KyDatabaseSettings inSettings, QString inFolder);

    /// A name is made of letters, digits, "_" and "-".
    RnResult execStoredProcedure(const std::string& inName, const Parameters& inParameters, Rows& outRows,
                                 std::vector<std::string>& outColumnTypes) override;

private:
    struct Cached
    {
        QDateTime modified;
        qint64 size = -1;
        KySqlScript script;
    };
    using Values = QHash<QString, QVariant>;

    const KySqlScript* script(const QString& inName, QString& outError);
    bool run(const KySqlScript& inScript, const Values& inValues, Rows& outRows,
             std::vector<std::string>& outColumnTypes, QString& outError);
    bool run(const KySqlScript::Statement& inStatement, const KySqlScript& inScript, const Values& inValues,
             Rows& outRows, std::vector<std::string>& outColumnTypes, QString& outError);

    KySqlConnection mConnection;
    const QString mFolder;
    QHash<QString, Cached> mScripts;
};
