// The socket calls of the remote-debugging layer, behind one replaceable table.
//
// Every send, recv and poll of the framing and the socket thread goes through socketIo(), so
// tests can make a call return short counts, EINTR or errors. Replace entries only while no
// connection is being served.
#pragma once

#include <poll.h>
#include <sys/types.h>

#include <cstddef>

namespace zrad::remote {

struct SocketIo {
  ssize_t (*send)(int sock, const void* buffer, size_t length, int flags);
  ssize_t (*recv)(int sock, void* buffer, size_t length, int flags);
  int (*poll)(pollfd* fds, nfds_t count, int timeoutMs);
};

// The table in use; the system's calls unless a test replaced them.
SocketIo& socketIo();

// Turns off the coalescing of small segments (Nagle) on a connected TCP socket: a frame goes
// out as a header and a payload write, and waiting for the peer's delayed acknowledgement
// between them cost a round trip about 40 ms each way.
void sendWithoutDelay(int sock);

}  // namespace zrad::remote
