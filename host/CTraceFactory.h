#pragma once

#include "host/CChannelServer.h"

namespace Zu::Wep::Trace {

/// What a trace factory library hands out. `libTraceFactory.so` exports, with C linkage,
///     CTraceFactory* CreateTraceFactory();
///     void DestroyTraceFactory(CTraceFactory*);
/// Failures are exceptions.
class CTraceFactory {
  public:
    /// Sets `server` to a new channel server. Managers pass 1 as `mode`.
    virtual void CreateChannelServer(CChannelServer*& server, int mode) = 0;

    /// Destroys a server that this factory created. Managers pass 0 as `mode`.
    virtual void DestroyChannelServer(CChannelServer* server, int mode) = 0;

  protected:
    ~CTraceFactory() = default;
};

}  // namespace Zu::Wep::Trace
