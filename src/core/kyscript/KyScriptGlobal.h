#pragma once

#include <QtCore/QObject>
#include <QtCore/QVariantMap>

/// The values that scripts keep in `Global` from one run to the next and from one engine to another.
///
/// One object in the process, made on first use and destroyed at process exit; nothing is written to disk.
/// Values are dynamic properties of the object, the name being the key as UTF-8. Two sorts of keys cannot be
/// names of dynamic properties, "objectName" and keys with a NUL, and are kept beside them.
///
/// A value is null, bool, int, double, QString, QDateTime, QRegularExpression, QByteArray, a host object as
/// KyScriptHostObject, or a QVariantList or QVariantMap of such values. GUI thread only.
class KyScriptGlobal : public QObject
{
    Q_OBJECT

public:
    static KyScriptGlobal& instance();

    /// All values. Follows the dynamic properties, however they are set.
    const QVariantMap& values() const { return mValues; }

    /// Grows with every change of a value.
    quint64 revision() const { return mRevision; }

    /// Keeps \a inValue under \a inKey, which may be empty; an invalid value removes the key.
    void setValue(const QString& inKey, const QVariant& inValue);

    bool event(QEvent* inEvent) override;

private:
    KyScriptGlobal() = default;

    void mirror(const QString& inKey, const QVariant& inValue);

    QVariantMap mValues;
    quint64 mRevision = 1;
};
