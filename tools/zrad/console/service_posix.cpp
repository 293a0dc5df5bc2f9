// Starting a service for the tool, and the loopback facts it needs.
#include "console/service.h"

#include <arpa/inet.h>
#include <netinet/in.h>
#include <sys/socket.h>
#include <unistd.h>

namespace zradtool {

unsigned freeLoopbackPort() {
  const int sock = socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
  if (sock < 0) return 0;
  sockaddr_in address{};
  address.sin_family = AF_INET;
  address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
  socklen_t length = sizeof address;
  unsigned port = 0;
  if (bind(sock, reinterpret_cast<sockaddr*>(&address), sizeof address) == 0 &&
      getsockname(sock, reinterpret_cast<sockaddr*>(&address), &length) == 0)
    port = ntohs(address.sin_port);
  close(sock);
  return port;
}

bool isLoopbackAddress(const std::string& address) {
  in_addr parsed{};
  return inet_pton(AF_INET, address.c_str(), &parsed) == 1 && (ntohl(parsed.s_addr) >> 24) == 127;
}

bool startService(RvRemoteDebugService& service, const std::string& address, unsigned port,
                  std::string& error) {
  if (port == 0 && (port = freeLoopbackPort()) == 0) {
    error = "no free port on 127.0.0.1";
    return false;
  }
  service.setPort(port);
  service.setBindAddress(address.c_str());
  if (!service.execute("zrad service") || !service.isListening()) {
    error = "cannot listen on " + (address.empty() ? std::string("*") : address) + ":" +
            std::to_string(port) + " or the ports after it";
    service.Disconect();
    return false;
  }
  return true;
}

}  // namespace zradtool
