#include "KyScriptServer.h"

#include <kyresources/KyClientConfig.h>
#include <kyresources/KyResource.h>
#include <ovbase/OvBackendPeer.h>
#include <ovvolren/OvServer.h>
#include <rnlib/RnBuildInfo.h>
#include <rnlib/RnOSInfo.h>
#include <rnlib/RnSysInfo.h>

#include <QtNetwork/QHostInfo>

KyScriptServer::KyScriptServer(QObject* parent)
    : QObject(parent)
{}

QString KyScriptServer::clientArch() const
{
    return QStringLiteral("Win64");
}

QString KyScriptServer::osName() const
{
    return QString::fromLatin1(RnOSInfo::getOSName(false).c_str());
}

qlonglong KyScriptServer::physMemTotal() const
{
    return qlonglong(RnSysInfo::physmem_total());
}

QString KyScriptServer::clientHostName() const
{
    return QHostInfo::localHostName();
}

QString KyScriptServer::clientLanguage() const
{
    const RnString language = KyClientConfig::language();
    return QString::fromLatin1(language.isEmpty() ? "en" : language.c_str());
}

QString KyScriptServer::clientVersion() const
{
    return QString::fromStdString(RnBuildInfo::getBuildString(1));
}

QString KyScriptServer::protocolVersion() const
{
    return QStringLiteral("%1.%2.%3.%4").arg(6).arg(1).arg(0).arg(13);
}

QString KyScriptServer::renderServerVersion() const
{
    OvServer* server = OvServer::instance();
    return server ? QString::fromLatin1(server->peer()->renderServerVersion()).trimmed() : QString();
}

QString KyScriptServer::userName() const
{
    return QString::fromLatin1(KyResource::getUserName());
}

QString KyScriptServer::userLevel() const
{
    int id = 0;
    std::string name;
    OvBackendPeer::userLevel(id, name, nullptr);
    return QString::fromLatin1(name.c_str());
}

QString KyScriptServer::userLevelId() const
{
    int id = 0;
    std::string name;
    OvBackendPeer::userLevel(id, name, nullptr);
    return QString::number(id);
}

QStringList KyScriptServer::orvaneLocalGroups() const
{
    QStringList names;
    for (const Ovg::GroupInfo& group : OvBackendPeer::orvaneLocalGroups())
        names.append(QString::fromStdString(group.name));
    return names;
}

QString KyScriptServer::backendAddress() const
{
    return QString::fromLatin1(KyResource::getWebServiceHostExternal().c_str());
}

QString KyScriptServer::renderServerAddress() const
{
    const OvServer* server = OvServer::instance();
    return server ? QString::fromLatin1(server->renderServer()) : QString();
}

QString KyScriptServer::sessionID() const
{
    return QString::fromLatin1(KyResource::getSessionId());
}
