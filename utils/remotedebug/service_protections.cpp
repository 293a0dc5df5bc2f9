// The service's opt-in protections: checking and storing them, and the socket thread of a link
// client running under them.
#include <arpa/inet.h>
#include <netinet/in.h>
#include <sys/socket.h>
#include <sys/stat.h>

#include <cctype>

#include <zrad/crypto.h>
#include <zrad/remotedebug.h>

#include "remotedebug/guard.h"

namespace {

bool isVerifier(const std::string& text) {
  if (text.size() != 32) return false;
  for (char c : text)
    if (!std::isxdigit(static_cast<unsigned char>(c))) return false;
  return true;
}

bool isDirectory(const ZrUtf8String& path) {
  struct stat info;
  return stat(path.c_str(), &info) == 0 && S_ISDIR(info.st_mode);
}

}  // namespace

bool RvRemoteDebugService::setProtections(const RvServiceProtections& protections) {
  if (!protections.passVerifier.isEmpty() && !isVerifier(protections.passVerifier.str()))
    return false;
  if (!protections.rootDir.isEmpty() && !isDirectory(protections.rootDir)) return false;
  m_protections = protections;
  return true;
}

ZrUtf8String RvRemoteDebugService::passVerifierOf(const ZrUtf8String& phrase) {
  const std::string& text = phrase.str();
  return ZrUtf8String(MD5_32(reinterpret_cast<const unsigned char*>(text.data()),
                             static_cast<unsigned>(text.size()), false));
}

namespace {

// "a.b.c.d:port" of the peer on `sock`; "?" when the socket cannot tell.
ZrUtf8String peerOf(int sock) {
  sockaddr_in address{};
  socklen_t size = sizeof address;
  char text[INET_ADDRSTRLEN] = "?";
  if (getpeername(sock, reinterpret_cast<sockaddr*>(&address), &size) != 0 ||
      !inet_ntop(AF_INET, &address.sin_addr, text, sizeof text))
    return ZrUtf8String("?");
  return ZrUtf8String::format("%s:%u", text, unsigned{ntohs(address.sin_port)});
}

}  // namespace

void RvRemoteLinkClient::Run() {
  if (getSocket() == 0 || !m_owner) return;
  const ZrUtf8String peer = peerOf(getSocket());
  m_owner->connectionOpened(peer);
  {
    zrad::remote::ConnectionGuard guard(m_owner->protections());
    zrad::remote::ScopedConnectionGuard active(guard);
    socketThread();
  }
  m_owner->connectionClosed(peer);
}
