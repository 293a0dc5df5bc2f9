// zrad serve: runs a remote-debugging service in the foreground until SIGINT or SIGTERM.
//
// It listens on 127.0.0.1 unless --bind says otherwise, works in the directory it starts in,
// and logs every connection and command to stderr, one line each.
#include <pthread.h>
#include <signal.h>
#include <unistd.h>

#include <atomic>
#include <cstdio>
#include <cstdlib>
#include <cstring>

#include <zrad/remotedebug.h>

#include "command.h"
#include "console/passphrase.h"
#include "console/service.h"

using namespace zradtool;

namespace {

unsigned port = 6666;
std::string address = "127.0.0.1";
std::string passFile;
std::string rootDir;
int maxClients = 0;

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
  void connectionOpened(const ZrUtf8String& peer) override {
    std::fprintf(stderr, "zrad serve: connection from %s opened (%d open)\n", peer.c_str(), ++m_open);
  }
  void connectionClosed(const ZrUtf8String& peer) override {
    std::fprintf(stderr, "zrad serve: connection from %s closed (%d open)\n", peer.c_str(), --m_open);
  }

 private:
  std::atomic<int> m_open{0};
};

// Waits for SIGINT or SIGTERM, blocked in every thread.
void waitForStopSignal(const sigset_t& stopSignals) {
  int signal = 0;
  while (sigwait(&stopSignals, &signal) != 0) {
  }
  std::fprintf(stderr, "zrad serve: %s, stopping\n", strsignal(signal));
}

// The opt-in protections the options ask for; false with the cause in `error`.
bool applyProtections(RvRemoteDebugService& service, std::string& error) {
  RvServiceProtections protections;
  if (!passFile.empty()) {
    std::string phrase;
    if (!readPassPhrase(passFile, phrase, error)) return false;
    protections.passVerifier = RvRemoteDebugService::passVerifierOf(ZrUtf8String(phrase.c_str()));
  }
  protections.rootDir = ZrUtf8String(rootDir.c_str());
  protections.maxClients = maxClients;
  if (!service.setProtections(protections)) {
    error = "cannot serve beneath " + rootDir + ": not a directory";
    return false;
  }
  return true;
}

int run() {
  // Beneath a root, paths start at the root itself; otherwise commands work where serve started.
  if (rootDir.empty()) {
    char* cwd = getcwd(nullptr, 0);
    if (cwd) CNetCommand::setCurrentDir(ZrString(ZrUtf8String(cwd)));
    std::free(cwd);
  }

  // A peer or a log reader that goes away, or a file-size limit reached while storing an
  // upload, fails that one call (EPIPE, EFBIG) instead of ending the service.
  signal(SIGPIPE, SIG_IGN);
  signal(SIGXFSZ, SIG_IGN);

  // Blocked before the service starts its threads, so only sigwait takes these.
  sigset_t stopSignals;
  sigemptyset(&stopSignals);
  sigaddset(&stopSignals, SIGINT);
  sigaddset(&stopSignals, SIGTERM);
  pthread_sigmask(SIG_BLOCK, &stopSignals, nullptr);

  ZrSmartPtr<LoggedService> service = ZrRxObjectImpl<LoggedService>::createObject();
  std::string error;
  if (!applyProtections(*service, error)) return fail(error);
  if (!startService(*service, address, port, error)) return fail(error);
  std::fprintf(stderr, "zrad serve: listening on %s:%u\n", address.c_str(), service->getPort());
  if (!isLoopbackAddress(address))
    std::fprintf(stderr,
                 "zrad serve: warning: listening beyond loopback; every peer%s can read, write "
                 "and delete %s\n",
                 passFile.empty() ? "" : " that knows the pass phrase",
                 rootDir.empty() ? "this user's files (the service has no authentication)"
                                 : "the files beneath the root");
  waitForStopSignal(stopSignals);
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
  cmd->add_option("--pass-file", passFile,
                  "file whose first line is the pass phrase that CHECKPASS must give before any "
                  "other command is served")
      ->type_name("FILE");
  cmd->add_option("--root", rootDir,
                  "directory the file commands cannot leave (\"..\", absolute paths and links "
                  "leading out are refused)")
      ->type_name("DIR");
  cmd->add_option("--max-clients", maxClients, "connections served at once (default: no limit)")
      ->type_name("N")
      ->check(CLI::Range(0, 1 << 20));
  cmd->footer(
      "Commands work in the current directory. Without --pass-file the service has no\n"
      "authentication: whoever reaches it can read, write and delete the files of the user it\n"
      "runs as, so it listens on loopback unless --bind says otherwise (0.0.0.0: every\n"
      "network), and warns then.");
  onRun(cmd, run);
}

const Registration kRegistration("serve", add);

}  // namespace
