#pragma once

#include <rnlib/RnString.h>

/// Settings of this client, from the host's KyClientFacts; empty without that record. Texts are Latin-1.
class KyClientConfig
{
public:
    KyClientConfig() = delete;

    /// Language of the user interface, such as "en"; empty when none was chosen.
    static RnString language();

    /// Host of the HTTP proxy and, in \a outPort, its port. Without a proxy null and 0. The pointer is valid
    /// until the record changes or goes.
    static const char* getProxyServer(int& outPort);
};
