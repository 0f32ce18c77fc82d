#pragma once

#include <rnlib/RnString.h>

/// The record behind KyResource and KyClientConfig: what the host knows of this client and its user.
///
/// Somebody's object: the host makes one, and fills and changes its fields at will. Construction makes it the
/// record that instance() finds, in place of an older one; destruction ends that.
class KyClientFacts
{
public:
    KyClientFacts();
    ~KyClientFacts();
    KyClientFacts(const KyClientFacts&) = delete;
    KyClientFacts& operator=(const KyClientFacts&) = delete;

    /// The record in force, or null.
    static const KyClientFacts* instance();

    /// Under these two names the client's settings stand in the system's registry.
    RnString organizationName;
    RnString applicationRegistryName;
    /// Who is logged in; empty before.
    RnString userName;
    RnString sessionId;
    /// The backend's address as seen from outside.
    RnString webServiceHostExternal;
    /// Language of the user interface, such as "en" or "de".
    RnString language;
    /// The HTTP proxy; none without a host.
    RnString proxyHost;
    int proxyPort = 0;
};
