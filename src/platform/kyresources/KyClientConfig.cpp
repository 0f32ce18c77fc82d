#include "KyClientConfig.h"

#include "KyClientFacts.h"

RnString KyClientConfig::language()
{
    const KyClientFacts* facts = KyClientFacts::instance();
    return facts ? facts->language : RnString();
}

const char* KyClientConfig::getProxyServer(int& outPort)
{
    const KyClientFacts* facts = KyClientFacts::instance();
    const bool hasProxy = facts && !facts->proxyHost.isEmpty();
    outPort = hasProxy ? facts->proxyPort : 0;
    return hasProxy ? facts->proxyHost.c_str() : nullptr;
}
