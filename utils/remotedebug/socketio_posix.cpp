// The system's socket calls as the default SocketIo table.
#include "remotedebug/socketio.h"

#include <netinet/in.h>
#include <netinet/tcp.h>
#include <sys/socket.h>

namespace zrad::remote {

SocketIo& socketIo() {
  static SocketIo io{::send, ::recv, ::poll};
  return io;
}

void sendWithoutDelay(int sock) {
  const int on = 1;
  setsockopt(sock, IPPROTO_TCP, TCP_NODELAY, &on, sizeof on);
}

}  // namespace zrad::remote
