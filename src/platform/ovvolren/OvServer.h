#pragma once

#include "OvServerPeer.h"

#include <memory>

/// The client's connection to a render server.
///
/// Somebody's object: construction makes it the one that instance() finds, destruction ends that. While it
/// lives it answers the property pool's question whether this process is the client. GUI thread only.
class OvServer
{
public:
    /// \a inRenderServer is the server's address for people, \a inRenderServerVersion what it told of itself,
    /// both Latin-1. \a inIsClient is false in a process that serves.
    OvServer(RnString inRenderServer, RnString inRenderServerVersion, bool inIsClient = true);
    ~OvServer();
    OvServer(const OvServer&) = delete;
    OvServer& operator=(const OvServer&) = delete;

    /// Null when there is no connection.
    static OvServer* instance();

    bool isClient() const { return mIsClient; }
    /// Never null; lives as long as this object.
    OvServerPeer* peer() { return &mPeer; }
    /// Never null.
    const char* renderServer() const { return mRenderServer; }

private:
    const RnString mRenderServer;
    const bool mIsClient;
    OvServerPeer mPeer;
};
