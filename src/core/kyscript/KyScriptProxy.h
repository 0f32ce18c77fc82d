#pragma once

#include <QtNetwork/QNetworkProxy>

#include <optional>

/// The proxy rule of all network classes.
class KyScriptProxy
{
public:
    KyScriptProxy() = delete;

    /// The HTTP proxy of the client's configuration, told to the log as "Using proxy server HOST:PORT" behind
    /// \a inLogPrefix. Nothing without one: Qt's own default is left in force then.
    static std::optional<QNetworkProxy> ofClient(const char* inLogPrefix = "");
};
