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
    QString profile;   ///< Folder of settings and data; empty keeps them in memory.
    QString proxyHost; ///< Empty for no proxy.
    int proxyPort = 0;
    QList<std::pair<QString, QString>> properties; ///< Ids of application properties and their texts.
};
