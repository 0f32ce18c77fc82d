#pragma once

/// Names a session of the client (see KySessionContext) for as long as the process runs. The default one, 0,
/// names no session in particular.
struct OvSessionContextID
{
    int value = 0;

    friend bool operator==(const OvSessionContextID&, const OvSessionContextID&) = default;
};
