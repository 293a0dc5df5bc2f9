// zrad console: an interactive console on a remote-debugging service.
//
// On a terminal it edits lines with libedit; otherwise it reads one command a line and waits
// for each answer. Commands work in the directory the console starts in: DOWN stores there,
// and so does the service that --local starts.
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <string>

#include <zrad/log.h>
#include <zrad/remotedebug.h>

#include "command.h"
#include "console/answers.h"
#include "console/console.h"
#include "console/passphrase.h"

using namespace zradtool;

namespace {

constexpr int kDefaultTimeoutSeconds = 30;

std::string address = "127.0.0.1";
bool local = false;
int timeoutSeconds = kDefaultTimeoutSeconds;
std::string passFile;

void printAnswer(const std::string& text) {
  std::fputs(text.c_str(), stdout);
  std::fflush(stdout);
}

int run() {
  const bool terminal = isatty(STDIN_FILENO);
  // Library messages on stderr would tear the prompt; --log FILE still gets them.
  if (terminal) zr_attach_log_fun(nullptr);
  char* cwd = getcwd(nullptr, 0);
  if (cwd) CNetCommand::setCurrentDir(ZrString(ZrUtf8String(cwd)));
  std::free(cwd);

  std::string phrase, error;
  if (!passFile.empty() && !readPassPhrase(passFile, phrase, error)) return fail(error);
  AnswerPrinter answers(printAnswer, phrase);
  Session session;
  if (!(local ? session.connectLocal(&answers, error) : session.connect(address, &answers, error, phrase)))
    return fail(error);
  if (terminal) return runInteractive(session, local ? "local" : address);
  return runLineMode(session, answers, timeoutSeconds * 1000);
}

void add(CLI::App& zrad) {
  CLI::App* cmd = zrad.add_subcommand("console", "an interactive console on a remote-debugging service");
  CLI::Option* at = cmd->add_option(
      "ADDRESS", address, "HOST[:PORT] of the service: dotted IPv4 (default 127.0.0.1), port 6666 by default");
  cmd->add_flag("--local", local,
                "start a service on 127.0.0.1 on a free port inside this process and connect to it")
      ->excludes(at);
  cmd->add_option("--timeout", timeoutSeconds,
                  "without a terminal, how long to wait for each answer (default 30)")
      ->type_name("SECONDS")
      ->check(CLI::Range(1, 24 * 3600));
  cmd->add_option("--pass-file", passFile,
                  "file whose first line is the pass phrase to log in with (for a service started "
                  "with --pass-file)")
      ->type_name("FILE");
  cmd->footer(
      "HELP lists the commands; on a terminal Ctrl-C stops waiting and Ctrl-D leaves. Without a\n"
      "terminal it runs one command a line and fails (1) when the connection fails or breaks, an\n"
      "answer does not come in time or a line is refused. Commands work in the current directory:\n"
      "DOWN stores there, and so does the service that --local starts.\n"
      "Unless it was started with --pass-file, the service has no authentication: whoever reaches\n"
      "it can read, write and delete the files of the user it runs as.");
  onRun(cmd, run);
}

const Registration kRegistration("console", add);

}  // namespace
