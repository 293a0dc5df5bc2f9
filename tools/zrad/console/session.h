// A console's connection: the client endpoint and, for `--local`, the service it talks to.
#pragma once

#include <string>

#include <zrad/remotedebug.h>

#include "console/commandline.h"

namespace zradtool {

class Session {
 public:
  Session() = default;
  Session(const Session&) = delete;
  Session& operator=(const Session&) = delete;
  // Disconnects the client, then stops a local service: every thread is joined.
  ~Session();

  // Connects to "HOST[:PORT]" (dotted IPv4; port 6666 when none is given) and logs in; with a
  // pass phrase (the one `answers` gives), returns once the service has checked it. false, with
  // `error`, when nothing answers there or the check does not end in time.
  bool connect(const std::string& address, NetCommandClientCallBack* answers, std::string& error,
               const std::string& passPhrase = {});
  // Starts a service on 127.0.0.1 on a free port inside this process and connects to it.
  bool connectLocal(NetCommandClientCallBack* answers, std::string& error);

  // Queues the command of `line` (a command word) with `answers` as its callback; the
  // conversation, or null when the connection is gone.
  ZrSmartPtr<INetCom> send(const ConsoleLine& line, NetCommandClientCallBack* answers);

  // True while the connection lasts.
  bool connected() const;
  // The client's socket (for its transfer counters); 0 when gone.
  int socket() const;

 private:
  ZrSmartPtr<RvRemoteDebugService> m_service;
  ZrSmartPtr<RvRemoteDebugClient> m_client;
};

// True once `com` has finished or was aborted.
bool conversationEnded(const ZrSmartPtr<INetCom>& com);

}  // namespace zradtool
