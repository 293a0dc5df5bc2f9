// ConnectionGuard: the pass-phrase check, the limits and the restricted root of one connection.
#include "remotedebug/guard.h"

#include <fcntl.h>

#include <cctype>
#include <chrono>
#include <thread>

#include <zrad/crypto.h>

#include "remotedebug/logsource.h"

namespace zrad::remote {
namespace {

thread_local ConnectionGuard* tActiveGuard = nullptr;
const char kCommandLogSource[] = "utils/netcommand";  // refusals of the command set

std::string lowerCase(std::string text) {
  for (char& c : text) c = static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
  return text;
}

}  // namespace

bool equalInConstantTime(const std::string& a, const std::string& b) {
  unsigned char difference = a.size() == b.size() ? 0 : 1;
  const std::string& same = a.size() == b.size() ? b : a;
  for (size_t i = 0; i < a.size(); ++i) difference |= static_cast<unsigned char>(a[i] ^ same[i]);
  return difference == 0;
}

ConnectionGuard::ConnectionGuard(const RvServiceProtections& protections)
    : m_protections(protections), m_passed(protections.passVerifier.isEmpty()) {
  if (protections.rootDir.isEmpty()) return;
  const int root = ::open(protections.rootDir.c_str(), O_PATH | O_DIRECTORY | O_CLOEXEC);
  if (root < 0) REMOTE_LOG("socketThread", "root %s cannot be opened", protections.rootDir.c_str());
  m_rooted = std::make_unique<RootedFiles>(root);
}

bool ConnectionGuard::admits(const ZrString& word) const {
  if (m_passed || word == L"CHECKPASS") return true;
  ZRAD_LOG(5, kCommandLogSource, "refused before CHECKPASS: %s", ZrUtf8String(word).c_str());
  return false;
}

bool ConnectionGuard::checkPass(const ZrUtf8String& phrase) {
  if (m_protections.passVerifier.isEmpty()) return true;
  const std::string& text = phrase.str();
  const std::string digest =
      MD5_32(reinterpret_cast<const unsigned char*>(text.data()), static_cast<unsigned>(text.size()), false);
  if (equalInConstantTime(digest, lowerCase(m_protections.passVerifier.str()))) {
    m_passed = true;
    return true;
  }
  ZRAD_LOG(5, kCommandLogSource, "wrong pass phrase");
  std::this_thread::sleep_for(std::chrono::milliseconds(kPassFailureDelayMs));
  return false;
}

bool ConnectionGuard::admitsPayload(uint64_t bytes) const {
  if (m_protections.maxPayloadSize == 0 || bytes <= m_protections.maxPayloadSize) return true;
  REMOTE_LOG("recvData", "frame of %llu bytes refused", static_cast<unsigned long long>(bytes));
  return false;
}

bool ConnectionGuard::admitsFile(int64_t bytes) const {
  if (m_protections.maxFileSize <= 0 || bytes <= m_protections.maxFileSize) return true;
  REMOTE_LOG("recvData", "file of %lld bytes refused", static_cast<long long>(bytes));
  return false;
}

int ConnectionGuard::idleTimeoutMs() const {
  return m_protections.idleTimeoutMs > 0 ? m_protections.idleTimeoutMs : -1;
}

void ConnectionGuard::holdUntilNextMessage(HeldPath held) { m_held.push_back(std::move(held)); }

ConnectionGuard* connectionGuard() { return tActiveGuard; }

ScopedConnectionGuard::ScopedConnectionGuard(ConnectionGuard& guard) : m_previous(tActiveGuard) {
  tActiveGuard = &guard;
}

ScopedConnectionGuard::~ScopedConnectionGuard() { tActiveGuard = m_previous; }

}  // namespace zrad::remote
