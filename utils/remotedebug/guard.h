// The opt-in protections of a service as one connection sees them.
//
// A link client's socket thread installs a ConnectionGuard for the connection it serves; the
// framing, the socket loop and the command handlers running on that thread ask
// connectionGuard() for it. Threads without one (clients, services never started) get null
// and behave exactly as without protections.
#pragma once

#include <cstdint>
#include <memory>
#include <vector>

#include <zrad/remotedebug.h>

#include "remotedebug/rooted_files.h"

namespace zrad::remote {

class ConnectionGuard {
 public:
  // Opens the restricted root, if one is set; a root that cannot be opened refuses every file
  // command of the connection.
  explicit ConnectionGuard(const RvServiceProtections& protections);
  ConnectionGuard(const ConnectionGuard&) = delete;
  ConnectionGuard& operator=(const ConnectionGuard&) = delete;

  // False (logged) for every word but CHECKPASS while a pass phrase is required and the peer
  // has not given it.
  bool admits(const ZrString& word) const;
  // Compares the MD5 of `phrase` with the verifier in constant time. A match lets the
  // connection pass; a mismatch is logged and answered only after kPassFailureDelayMs, which
  // holds up this connection's thread alone. True when no verifier is set.
  bool checkPass(const ZrUtf8String& phrase);

  // Frame (payload and size table) and file sizes against the limits; refusals are logged.
  bool admitsPayload(uint64_t bytes) const;
  bool admitsFile(int64_t bytes) const;
  // The idle time-out in milliseconds; -1 when there is none.
  int idleTimeoutMs() const;

  // The restricted file operations; null when the file commands reach the whole file system.
  const RootedFiles* rootedFiles() const { return m_rooted.get(); }
  // Keeps `held` open until the next message of the connection (a download's file must stay
  // open until its reply has been sent).
  void holdUntilNextMessage(HeldPath held);
  void beginMessage() { m_held.clear(); }

 private:
  const RvServiceProtections m_protections;  // a copy: the service's may change later
  bool m_passed;  // touched only by the connection's socket thread
  std::unique_ptr<RootedFiles> m_rooted;
  std::vector<HeldPath> m_held;
};

constexpr int kPassFailureDelayMs = 1000;

// The guard of the connection served on the calling thread; null when there is none.
ConnectionGuard* connectionGuard();

// Makes `guard` the calling thread's guard while it lives.
class ScopedConnectionGuard {
 public:
  explicit ScopedConnectionGuard(ConnectionGuard& guard);
  ~ScopedConnectionGuard();
  ScopedConnectionGuard(const ScopedConnectionGuard&) = delete;
  ScopedConnectionGuard& operator=(const ScopedConnectionGuard&) = delete;

 private:
  ConnectionGuard* m_previous;
};

// True when `a` and `b` are equal; the time taken depends on their lengths only.
bool equalInConstantTime(const std::string& a, const std::string& b);

}  // namespace zrad::remote
