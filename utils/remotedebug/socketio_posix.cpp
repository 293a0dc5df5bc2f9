// The system's socket calls as the default SocketIo table.
#include "remotedebug/socketio.h"

#include <sys/socket.h>

namespace zrad::remote {

SocketIo& socketIo() {
  static SocketIo io{::send, ::recv, ::poll};
  return io;
}

}  // namespace zrad::remote
