// A console's connection.
#include "console/session.h"

#include "console/service.h"

namespace zradtool {

namespace {
// A failed check answers after a delay of one second.
constexpr int kLoginTimeoutMs = 10000;
}  // namespace

Session::~Session() {
  if (m_client) m_client->Disconect();
  if (m_service) m_service->Disconect();
}

bool Session::connect(const std::string& address, NetCommandClientCallBack* answers,
                      std::string& error, const std::string& passPhrase) {
  m_client = CNetCommand::cmdConnect(ZrString(ZrUtf8String(address.c_str())), ZrString(), answers);
  if (!m_client) {
    error = "cannot connect to " + address;
    return false;
  }
  if (passPhrase.empty()) return true;
  // The login's CHECKPASS is queued without being awaited, and the queue opens the newest
  // conversation first, so a command sent now could overtake it: check the phrase once more and
  // wait for that.
  ZrSmartPtr<INetCom> login = send({"CHECKPASS", passPhrase, ""}, nullptr);
  if (login && login->waitEnded(kLoginTimeoutMs)) return true;
  error = "no answer to the pass phrase from " + address;
  return false;
}

bool Session::connectLocal(NetCommandClientCallBack* answers, std::string& error) {
  m_service = RvRemoteDebugService::createObject(0);
  if (!startService(*m_service, "127.0.0.1", 0, error)) return false;
  return connect("127.0.0.1:" + std::to_string(m_service->getPort()), answers, error);
}

// The conversation is made here rather than through sendCommand so that the console can wait
// for its end; it is the same conversation sendCommand would queue.
ZrSmartPtr<INetCom> Session::send(const ConsoleLine& line, NetCommandClientCallBack* answers) {
  if (!connected()) return nullptr;
  auto utf16 = [](const std::string& text) { return ZrString(ZrUtf8String(text.c_str())); };
  ZrSmartPtr<INetCom> com = ZrRxObjectImpl<CNetCommand>::createObject(
      utf16(line.word), utf16(line.arg1), utf16(line.arg2), answers);
  m_client->communicate(com);
  return com;
}

bool Session::connected() const { return socket() != 0; }

int Session::socket() const { return m_client ? m_client->getSocket() : 0; }

bool conversationEnded(const ZrSmartPtr<INetCom>& com) {
  return com->getStatus() >= INetCom::kFinished;
}

}  // namespace zradtool
