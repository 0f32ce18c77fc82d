#pragma once

#include <QtCore/QList>
#include <QtCore/QString>
#include <QtCore/QStringList>

#include <utility>

/// What a host is told at its start.
struct KyHostOptions
{
    QStringList studyFolders;
    QStringList additionalFolders;
    QString archiveUrl;   ///< Root of a DICOMweb service; empty for that of the profile's configuration.
    QStringList patients; ///< Ids of patients whose studies in the archive are opened as primary ones.
    QStringList toolFiles;
    QString profile;   ///< Folder of settings and data; empty keeps them in memory.
    QString proxyHost; ///< Empty for no proxy.
    int proxyPort = 0;
    QList<std::pair<QString, QString>> properties; ///< Ids of application properties and their texts.

    /// Takes the proxy from "HOST:PORT"; the host may be an IPv6 address in brackets. False, with nothing
    /// changed, for anything else.
    bool setProxy(const QString& inText);

    /// Adds a property from "ID=TEXT". False, with nothing changed, for anything else.
    bool addProperty(const QString& inText);
};
