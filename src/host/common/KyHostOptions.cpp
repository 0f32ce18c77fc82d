#include "KyHostOptions.h"

bool KyHostOptions::setProxy(const QString& inText)
{
    const auto colon = inText.lastIndexOf(QLatin1Char(':'));
    bool isNumber = false;
    const int port = inText.mid(colon + 1).toInt(&isNumber);
    if (colon < 1 || !isNumber || port < 1 || port > 65535)
        return false;
    proxyHost = inText.left(colon);
    proxyPort = port;
    return true;
}

bool KyHostOptions::addProperty(const QString& inText)
{
    const auto equals = inText.indexOf(QLatin1Char('='));
    if (equals < 1)
        return false;
    properties.append({inText.left(equals), inText.mid(equals + 1)});
    return true;
}
