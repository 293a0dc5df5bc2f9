// zrad serve: runs a remote-debugging service in the foreground until SIGINT or SIGTERM.
//
// It listens on 127.0.0.1 unless --bind says otherwise, works in the directory it starts in,
// and logs every connection and command to stderr, one line each.
#include <pthread.h>
#include <signal.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <cstring>

#include <zrad/remotedebug.h>

#include "command.h"
#include "console/service.h"

using namespace zradtool;

namespace {

constexpr long kWatchIntervalNs = 50 * 1000 * 1000;

unsigned port = 6666;
std::string address = "127.0.0.1";

// The command conversation, logging each command it serves.
class LoggedCommand : public CNetCommand {
 public:
  LoggedCommand() : CNetCommand(ZrString(), ZrString(), ZrString(), nullptr) {}
  bool OnReceiveData(int reqId, ZrSmartPtr<RvNetPackage> received,
                     ZrSmartPtr<RvNetPackage> reply) override {
    const bool more = CNetCommand::OnReceiveData(reqId, received, reply);
    if (reqId == CNetCommand::iReqId && !m_logged) {
      m_logged = true;
      std::fprintf(stderr, "zrad serve: command %s \"%s\" \"%s\"\n",
                   ZrUtf8String(word()).c_str(), ZrUtf8String(firstArgument()).c_str(),
                   ZrUtf8String(secondArgument()).c_str());
    }
    return more;
  }

 private:
  bool m_logged = false;
};

class LoggedService : public RvRemoteDebugService {
 public:
  ZrSmartPtr<INetCom> createMonitor(unsigned int reqId) const override {
    if (static_cast<int>(reqId) == CNetCommand::iReqId) return ZrRxObjectImpl<LoggedCommand>::createObject();
    return RvRemoteDebugService::createMonitor(reqId);
  }
};

// Waits for SIGINT or SIGTERM (blocked in every thread), logging the connections as their
// number changes.
void serveUntilSignalled(const RvRemoteDebugService& service, const sigset_t& stopSignals) {
  const timespec interval{0, kWatchIntervalNs};
  int links = 0;
  for (;;) {
    const int signal = sigtimedwait(&stopSignals, nullptr, &interval);
    for (int now = service.linkCount(); links != now; links += now > links ? 1 : -1)
      std::fprintf(stderr, "zrad serve: connection %s (%d open)\n",
                   now > links ? "opened" : "closed", now > links ? links + 1 : links - 1);
    if (signal > 0) {
      std::fprintf(stderr, "zrad serve: %s, stopping\n", strsignal(signal));
      return;
    }
  }
}

int run() {
  char* cwd = getcwd(nullptr, 0);
  if (cwd) CNetCommand::setCurrentDir(ZrString(ZrUtf8String(cwd)));
  std::free(cwd);

  // Blocked before the service starts its threads, so only sigtimedwait takes these.
  sigset_t stopSignals;
  sigemptyset(&stopSignals);
  sigaddset(&stopSignals, SIGINT);
  sigaddset(&stopSignals, SIGTERM);
  pthread_sigmask(SIG_BLOCK, &stopSignals, nullptr);

  ZrSmartPtr<LoggedService> service = ZrRxObjectImpl<LoggedService>::createObject();
  std::string error;
  if (!startService(*service, address, port, error)) return fail(error);
  std::fprintf(stderr, "zrad serve: listening on %s:%u\n", address.c_str(), service->getPort());
  if (!isLoopbackAddress(address))
    std::fprintf(stderr,
                 "zrad serve: warning: listening beyond loopback; every peer can read, write and "
                 "delete this user's files (the service has no authentication)\n");
  serveUntilSignalled(*service, stopSignals);
  service->Disconect();
  std::fprintf(stderr, "zrad serve: stopped\n");
  return kOk;
}

void add(CLI::App& zrad) {
  CLI::App* cmd = zrad.add_subcommand("serve", "run a remote-debugging service until SIGINT or SIGTERM");
  cmd->add_option("--port", port,
                  "port to listen on (default 6666; 0: a free one; a taken port steps on to N+1, "
                  "N+3, N+6, ...)")
      ->type_name("N")
      ->check(CLI::Range(0, 65535));
  cmd->add_option("--bind", address, "dotted IPv4 address to listen on (default 127.0.0.1)")
      ->type_name("ADDR");
  cmd->footer(
      "Commands work in the current directory. The service has no authentication: whoever\n"
      "reaches it can read, write and delete the files of the user it runs as, so it listens\n"
      "on loopback unless --bind says otherwise (0.0.0.0: every network), and warns then.");
  onRun(cmd, run);
}

const Registration kRegistration("serve", add);

}  // namespace
