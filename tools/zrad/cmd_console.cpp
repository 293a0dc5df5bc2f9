// zrad console: an interactive console on a remote-debugging service.
//
// On a terminal it edits lines with libedit; otherwise it reads one command a line and waits
// for each answer. Commands work in the directory the console starts in: DOWN stores there,
// and so does the service that --local starts.
#include <unistd.h>

#include <cstdlib>
#include <cstdio>

#include <zrad/log.h>
#include <zrad/remotedebug.h>

#include "command.h"
#include "console/answers.h"
#include "console/console.h"

using namespace zradtool;

namespace {

const char kName[] = "console";
constexpr int kDefaultTimeoutSeconds = 30;

int run(const Args& args);

const Family kFamily{
    kName, "interactive console on a remote-debugging service",
    "usage: zrad console [--timeout SECONDS] [HOST[:PORT]]\n"
    "       zrad console [--timeout SECONDS] --local\n"
    "  connects to the service at HOST (dotted IPv4, default 127.0.0.1) on PORT (default 6666)\n"
    "  --local    starts a service on 127.0.0.1 on a free port inside this process and\n"
    "             connects to it\n"
    "  --timeout  when standard input is not a terminal, how long to wait for each answer\n"
    "             (default 30)\n"
    "  HELP lists the commands; on a terminal Ctrl-C stops waiting and Ctrl-D leaves.\n"
    "  Without a terminal it runs one command a line and fails (1) when the connection\n"
    "  fails or breaks, an answer does not come in time or a line is refused.\n"
    "  The service has no authentication: whoever reaches it can read, write and delete the\n"
    "  files of the user it runs as.\n",
    run};

void printAnswer(const std::string& text) {
  std::fputs(text.c_str(), stdout);
  std::fflush(stdout);
}

int run(const Args& args) {
  bool local = false;
  std::string address = "127.0.0.1";
  int operands = 0;
  int timeoutSeconds = kDefaultTimeoutSeconds;
  for (size_t i = 0; i < args.size(); ++i) {
    if (args[i] == "--local") {
      local = true;
    } else if (args[i] == "--timeout" && i + 1 < args.size()) {
      char* end = nullptr;
      timeoutSeconds = static_cast<int>(std::strtol(args[++i].c_str(), &end, 10));
      if (*end || timeoutSeconds <= 0 || timeoutSeconds > 24 * 3600)
        return usageError(kFamily, "--timeout takes a number of seconds");
    } else if (args[i].size() > 1 && args[i][0] == '-') {
      return usageError(kFamily, "unknown option " + args[i]);
    } else {
      address = args[i];
      ++operands;
    }
  }
  if (operands > 1 || (local && operands)) return usageError(kFamily, "expected one HOST[:PORT] or --local");

  // The library's own refusals would only repeat ours (and could tear the prompt).
  zr_set_print_log_to_file(0);
  char* cwd = getcwd(nullptr, 0);
  if (cwd) CNetCommand::setCurrentDir(ZrString(ZrUtf8String(cwd)));
  std::free(cwd);

  AnswerPrinter answers(printAnswer);
  Session session;
  std::string error;
  if (!(local ? session.connectLocal(&answers, error) : session.connect(address, &answers, error)))
    return fail(kName, error);
  if (isatty(STDIN_FILENO)) return runInteractive(session, local ? "local" : address);
  return runLineMode(session, answers, timeoutSeconds * 1000);
}

const FamilyRegistration kRegistration(kFamily);

}  // namespace
