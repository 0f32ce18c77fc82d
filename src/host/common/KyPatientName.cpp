#include "KyPatientName.h"

#include <QtCore/QStringList>

QString KyPatientName::forDisplay(const QString& inName)
{
    for (const QString& group : inName.split(QLatin1Char('='))) {
        const QStringList parts = group.split(QLatin1Char('^'));
        const QString family = parts.value(0).trimmed();
        const QString given = (parts.value(1) + QLatin1Char(' ') + parts.value(2)).simplified();
        if (!family.isEmpty() && !given.isEmpty())
            return family + QStringLiteral(", ") + given;
        if (!family.isEmpty() || !given.isEmpty())
            return family + given;
    }
    return QString();
}
