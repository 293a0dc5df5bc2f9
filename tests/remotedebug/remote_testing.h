// Helpers of the remote-debugging tests: hand-built frames, raw peers, a service and clients on
// 127.0.0.1.
//
// Frames are encoded here independently of the library: every integer appended byte by byte
// in little-endian order, as the two ends of this protocol lay them out.
#pragma once

#include <poll.h>
#include <sys/socket.h>
#include <unistd.h>

#include <algorithm>
#include <cstdint>
#include <functional>
#include <string>
#include <utility>
#include <vector>

#include <gtest/gtest.h>

#include <zrad/remotedebug.h>

namespace remotetest {

// The low `bytes` bytes of `value`, least significant first.
inline std::string le(uint64_t value, int bytes) {
  std::string out;
  for (int i = 0; i < bytes; ++i) out += static_cast<char>((value >> (8 * i)) & 0xFF);
  return out;
}

// [L][N]
inline std::string frameHeader(uint32_t length, uint32_t count) {
  return le(length, 4) + le(count, 4);
}

// [L][N][payload][sizes when L and N are not 0][contents]
inline std::string frame(const std::string& payload, const std::vector<std::string>& files = {}) {
  std::string out = frameHeader(payload.size(), files.size()) + payload;
  if (payload.empty()) return out;
  for (const std::string& file : files) out += le(file.size(), 4);
  for (const std::string& file : files) out += file;
  return out;
}

inline std::string messageHeader(int32_t reqId, uint64_t sender, uint64_t receiver, int32_t seq) {
  return le(static_cast<uint32_t>(reqId), 4) + le(sender, 8) + le(receiver, 8) +
         le(static_cast<uint32_t>(seq), 4);
}

// A connected pair of stream sockets; both closed at the end unless released.
struct SocketPair {
  int fd[2] = {-1, -1};
  SocketPair() { EXPECT_EQ(socketpair(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0, fd), 0); }
  ~SocketPair() {
    for (int f : fd)
      if (f >= 0) close(f);
  }
  int release(int i) { return std::exchange(fd[i], -1); }
};

inline void sendAll(int fd, const std::string& bytes) {
  for (size_t done = 0; done < bytes.size();) {
    ssize_t n = send(fd, bytes.data() + done, bytes.size() - done, MSG_NOSIGNAL);
    if (n <= 0) return;
    done += static_cast<size_t>(n);
  }
}

// What `fd` delivers until `length` bytes have come, it has been quiet for `quietMs` or closed.
inline std::string receive(int fd, size_t length, int quietMs) {
  std::string out;
  char buffer[65536];
  pollfd ready{fd, POLLIN, 0};
  while (out.size() < length && poll(&ready, 1, quietMs) > 0) {
    ssize_t n = recv(fd, buffer, std::min(sizeof buffer, length - out.size()), 0);
    if (n <= 0) break;
    out.append(buffer, static_cast<size_t>(n));
  }
  return out;
}

// Payload bytes of a package, from the start.
inline std::string payloadOf(const RvNetPackage& pkg) {
  ZrSmartPtr<ZrStreamBuf> stream = pkg.stream();
  if (!stream) return "";
  std::string out(stream->length(), '\0');
  stream->seek(0, kSeekFromStart);
  stream->getBytes(&out[0], static_cast<uint32_t>(out.size()));
  return out;
}

// Entries of a directory; 0 when it is missing.
size_t entriesIn(const std::string& dir);
// True once `done` holds, asked every 10 ms for at most `seconds`.
bool waitFor(const std::function<bool()>& done, int seconds = 10);

// A started service on 127.0.0.1 (port 0: a free one) with `protections`.
ZrSmartPtr<RvRemoteDebugService> startService(const RvServiceProtections& protections = {},
                                              unsigned port = 0);
// A started client connected to 127.0.0.1:`port`.
ZrSmartPtr<RvRemoteDebugClient> connectClient(unsigned port);
// A bare TCP connection to 127.0.0.1:`port`.
int rawConnect(unsigned port);
// True when nothing listens on or holds 127.0.0.1:`port`.
bool portFree(unsigned port);
// Runs one console command and waits for it: its answer texts joined by " | ", "<none>" when
// it has none, "<failed>" when the conversation did not finish.
std::string command(RvRemoteDebugClient& client, const char* word, const std::string& arg1 = "",
                    const std::string& arg2 = "");

}  // namespace remotetest
