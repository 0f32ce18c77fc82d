#include "KyScriptOrvane.h"

#include "KyScriptVariant.h"

#include <kyresources/KyResource.h>

#include <QtCore/QDir>
#include <QtCore/QFileInfo>
#include <QtCore/QSettings>
#include <QtQml/QJSValue>

#include <memory>

namespace {

using Settings = std::unique_ptr<QSettings>;

Settings openApplicationStore()
{
    return std::make_unique<QSettings>(QString::fromLatin1(KyResource::getOrganizationName()),
                                       QString::fromLatin1(KyResource::getApplicationRegistryName()));
}

/// The operating system's store at a location, or null for a location that can't be.
Settings openNativeStore(const QString& inLocation)
{
#ifdef Q_OS_WIN
    return std::make_unique<QSettings>(inLocation, QSettings::NativeFormat);
#else
    // There is no registry: one file beside the application's store holds them all, with a group for each
    // component of a location.
    const QStringList groups = inLocation.split(QLatin1Char('\\'), Qt::SkipEmptyParts);
    if (groups.isEmpty())
        return nullptr;
    const QDir folder = QFileInfo(openApplicationStore()->fileName()).dir();
    auto settings =
        std::make_unique<QSettings>(folder.filePath(QStringLiteral("Registry.ini")), QSettings::IniFormat);
    settings->beginGroup(groups.join(QLatin1Char('/')));
    return settings;
#endif
}

bool isAbsolute(const QString& inKey)
{
    return inKey.startsWith(QLatin1Char('\\')) || inKey.startsWith(QLatin1Char('/')) ||
           inKey.startsWith(QLatin1String("HKEY"));
}

/// Opens the store that a key names; its end writes it out. With \a inSplit the last component of an absolute
/// key is the name of a value, which the key becomes; else the whole key is the location.
Settings openSettings(QString& ioKey, bool inSplit)
{
    if (!isAbsolute(ioKey))
        return openApplicationStore();
    QString location = ioKey;
    location.replace(QLatin1Char('/'), QLatin1Char('\\'));
    const auto last = location.lastIndexOf(QLatin1Char('\\'));
    if (inSplit && last >= 0) {
        ioKey = location.mid(last + 1);
        location.truncate(last);
    }
    return openNativeStore(location);
}

/// The value with \a inChange applied to all that it holds that is neither a list nor a map.
template <class Change>
QVariant changed(const QVariant& inValue, Change inChange)
{
    if (inValue.typeId() == QMetaType::QVariantList) {
        QVariantList list = inValue.toList();
        for (QVariant& element : list)
            element = changed(element, inChange);
        return list;
    }
    if (inValue.typeId() == QMetaType::QVariantMap) {
        QVariantMap map = inValue.toMap();
        for (QVariant& value : map)
            value = changed(value, inChange);
        return map;
    }
    return inChange(inValue);
}

/// Functions, symbols and host objects can't be stored: they count as undefined.
QVariant storable(const QVariant& inValue)
{
    const bool isStorable = inValue.metaType() != QMetaType::fromType<QJSValue>() &&
                            inValue.metaType() != QMetaType::fromType<QObject*>();
    return isStorable ? inValue : QVariant();
}

/// A null QByteArray would reach the script as a broken buffer.
QVariant scriptable(const QVariant& inValue)
{
    const bool isNullArray = inValue.typeId() == QMetaType::QByteArray && inValue.toByteArray().isNull();
    return isNullArray ? QVariant(QByteArray("")) : inValue;
}

} // namespace

bool KyScriptOrvane::setRegistryValue(const QString& inKey, const QVariant& inValue)
{
    QString key = inKey;
    const Settings settings = openSettings(key, true);
    if (settings && !key.isEmpty())
        settings->setValue(key, changed(KyScriptVariant::normalised(inValue, *this), storable));
    return true;
}

QVariant KyScriptOrvane::getRegistryValue(const QString& inKey, const QVariant& inDefaultValue) const
{
    QString key = inKey;
    const Settings settings = openSettings(key, true);
    if (!settings || key.isEmpty() || !settings->contains(key))
        return inDefaultValue;
    return changed(settings->value(key), scriptable);
}

bool KyScriptOrvane::removeRegistryValue(const QString& inKey)
{
    QString key = inKey;
    const Settings settings = openSettings(key, true);
    // An empty key would remove all that the application or the location has.
    if (settings && !key.isEmpty())
        settings->remove(key);
    return true;
}

QStringList KyScriptOrvane::registryKeys(const QString& inPath) const
{
    QString path = inPath;
    const Settings settings = openSettings(path, false);
    if (!settings)
        return QStringList();
    if (settings->applicationName().isEmpty())
        return settings->allKeys();
    settings->beginGroup(inPath);
    const QStringList keys = settings->allKeys();
    settings->endGroup();
    return keys;
}
