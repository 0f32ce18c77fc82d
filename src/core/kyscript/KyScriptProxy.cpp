#include "KyScriptProxy.h"

#include <kyresources/KyClientConfig.h>
#include <rnlib/RnLogFile.h>

std::optional<QNetworkProxy> KyScriptProxy::ofClient(const char* inLogPrefix)
{
    int port = 0;
    const char* host = KyClientConfig::getProxyServer(port);
    if (!host)
        return std::nullopt;
    getTheLogInstance().printf("%sUsing proxy server %s:%d", inLogPrefix, host, port);
    return QNetworkProxy(QNetworkProxy::HttpProxy, QString::fromLatin1(host), static_cast<quint16>(port));
}
