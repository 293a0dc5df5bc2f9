// Transfer counters of a TCP socket, from the kernel's connection statistics.
#include <linux/tcp.h>
#include <netinet/in.h>
#include <sys/socket.h>

#include "console/progress.h"

namespace zradtool {
namespace {

bool tcpInfo(int sock, tcp_info& info) {
  socklen_t length = sizeof info;
  return sock > 0 && getsockopt(sock, IPPROTO_TCP, TCP_INFO, &info, &length) == 0;
}

}  // namespace

uint64_t socketBytesSent(int sock) {
  tcp_info info{};
  return tcpInfo(sock, info) ? info.tcpi_bytes_acked : 0;
}

uint64_t socketBytesReceived(int sock) {
  tcp_info info{};
  return tcpInfo(sock, info) ? info.tcpi_bytes_received : 0;
}

}  // namespace zradtool
