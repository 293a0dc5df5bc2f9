// Starting a remote-debugging service for the tool: `zrad serve` and `zrad console --local`.
#pragma once

#include <string>

#include <zrad/remotedebug.h>

namespace zradtool {

// A port on 127.0.0.1 that nothing listens on right now; 0 when none could be found.
unsigned freeLoopbackPort();

// True when `address` is a dotted IPv4 address in 127.0.0.0/8.
bool isLoopbackAddress(const std::string& address);

// Makes `service` listen on `address`:`port` (port 0: a free loopback port; a taken port steps
// on as the service does) and starts its thread. false, with `error`, when it does not listen.
bool startService(RvRemoteDebugService& service, const std::string& address, unsigned port,
                  std::string& error);

}  // namespace zradtool
