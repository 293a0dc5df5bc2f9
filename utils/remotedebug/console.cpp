// The console calls of the command set: connecting and logging in, sending commands, help.
#include <chrono>

#include <zrad/json.h>
#include <zrad/remotedebug.h>

#include "remotedebug/console_address.h"
#include "remotedebug/netcommand_table.h"

namespace {

// A conversation is waited on in slices: a signal given before a wait began is not seen, so
// the status is looked at between slices.
constexpr int kWaitSliceMs = 100;

const char kClientThreadName[] = "调试客户线程";

ZrString argument(const ZrJsonPtr& in, const char* name) {
  const ZrJsonPtr value = in(name);
  return value ? ZrString(value->strValue()) : ZrString();
}

}  // namespace

ZrSmartPtr<RvRemoteDebugClient> CNetCommand::cmdConnect(const ZrString& address, const ZrString&,
                                                        NetCommandClientCallBack* callback) {
  ZrUtf8String host;
  int port = 0;
  zrad::remote::splitConsoleAddress(ZrUtf8String(address), host, port);
  ZrSmartPtr<RvRemoteDebugClient> client = RvRemoteDebugClient::createObject(host, port);
  client->execute(kClientThreadName);
  const int state = client->threadState();
  if (client->getSocket() == 0 || (state != RvDebugThread::kRunning && state != RvDebugThread::kStopRequested)) return nullptr;
  if (!callback) {
    client->Disconect();
    return nullptr;
  }
  ZrString passPhrase;
  if (!callback->inputPassPhrase(passPhrase)) {
    callback->showText(L"CN", L"取消登陆！");
    client->Disconect();
    return nullptr;
  }
  sendCommand(client.get(), L"CHECKPASS", passPhrase, ZrString(), nullptr);
  return client;
}

bool CNetCommand::sendCommand(RvRemoteDebugCommunication* endpoint, const ZrString& command,
                              const ZrString& arg1, const ZrString& arg2,
                              NetCommandClientCallBack* callback) {
  if (command == L"HELP") {
    cmdHelp(nullptr);  // the text reaches nobody this way; consoles call cmdHelp themselves
    return true;
  }
  if (!endpoint) return false;
  if (endpoint->getSocket() == 0 || command == L"CN") return true;
  return endpoint->communicate(
      ZrRxObjectImpl<CNetCommand>::createObject(command, arg1, arg2, callback));
}

bool CNetCommand::sendSynCommand(RvRemoteDebugCommunication* endpoint, const ZrUtf8String& command,
                                 int timeoutMs, ZrJsonPtr in, ZrJsonPtr out) {
  if (command == "HELP") {
    cmdHelp(nullptr);
    return true;
  }
  if (!endpoint) return false;
  if (endpoint->getSocket() == 0 || command == "CN") return true;
  ZrSmartPtr<CNetCommand> com = ZrRxObjectImpl<CNetCommand>::createObject(
      ZrString(command), argument(in, "arg1"), argument(in, "arg2"), nullptr);
  com->m_in = in;
  com->m_out = out;
  endpoint->communicate(com);
  return com->waitForEnd(*endpoint, timeoutMs);
}

bool CNetCommand::waitForEnd(RvRemoteDebugCommunication& endpoint, int timeoutMs) {
  using Clock = std::chrono::steady_clock;
  const Clock::time_point deadline = Clock::now() + std::chrono::milliseconds(timeoutMs);
  for (;;) {
    const int status = getStatus();
    if (status == kFinished || status == kAborted) return status == kFinished;
    int slice = kWaitSliceMs;
    if (timeoutMs < 0) {
      if (endpoint.getSocket() == 0) break;
    } else {
      const auto left =
          std::chrono::duration_cast<std::chrono::milliseconds>(deadline - Clock::now()).count();
      if (left <= 0) break;
      if (left < slice) slice = static_cast<int>(left);
    }
    waitSignal(slice);
  }
  // Given up: an answer that still comes must not write into the caller's tree any more.
  std::lock_guard<std::timed_mutex> lock(*getMutex());
  m_out = ZrJsonPtr();
  return getStatus() == kFinished;
}

void CNetCommand::cmdHelp(NetCommandClientCallBack* callback) {
  if (callback) callback->showText(L"HELP", zrad::remote::commandHelpText());
}
