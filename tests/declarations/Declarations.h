#pragma once

#include <QJsonArray>
#include <QJsonObject>
#include <QStringList>

/// The declarations for editors, read by TypeScript's own compiler; declared.js tells of the form.
class Declarations
{
public:
    /// Reads a declaration file. An error of the reading itself is in error().
    explicit Declarations(const QString& inFile);

    const QString& error() const { return mError; }

    QJsonObject globals() const { return part("globals"); }
    QJsonObject types() const { return part("types"); }
    QStringList texts(const QString& inPart) const;
    /// The texts that an editor offers for a type.
    QStringList offers(const QString& inType) const { return list(part("offers").value(inType)); }
    QJsonArray examples() const { return mAnswer.value("examples").toArray(); }

    /// Names of the types that stand for objects of the application.
    QStringList hostTypes() const;

    static QStringList list(const QJsonValue& inArray);

private:
    QJsonObject part(const QString& inName) const { return mAnswer.value(inName).toObject(); }

    QJsonObject mAnswer;
    QString mError;
};
