#pragma once

#include <rnlib/RnString.h>

/// Names and session of this client, from the host's KyClientFacts; all empty without that record.
///
/// Texts are Latin-1. The pointers are never null and valid until the record changes or goes.
class KyResource
{
public:
    KyResource() = delete;

    /// With getApplicationRegistryName() the place of the client's settings in the system's registry.
    static const char* getOrganizationName();
    static const char* getApplicationRegistryName();

    /// Who is logged in.
    static const char* getUserName();
    static const char* getSessionId();

    /// The backend's address as seen from outside.
    static RnString getWebServiceHostExternal();
};
