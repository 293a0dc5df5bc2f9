// The console's connection address.
#include "remotedebug/console_address.h"

#include <cstdlib>

namespace zrad::remote {

void splitConsoleAddress(const ZrUtf8String& address, ZrUtf8String& host, int& port) {
  const int colon = address.find(':');
  if (colon < 0) {
    host = address;
    port = kConsoleDefaultPort;
    return;
  }
  host = address.left(colon);
  port = static_cast<int>(std::strtol(address.mid(colon + 1).c_str(), nullptr, 10));
}

}  // namespace zrad::remote
