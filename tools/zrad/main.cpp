// zrad: the command-line face of libzradutils, one subcommand family per library family.
//
// main builds the CLI11 app from the registered families, routes the library's log to stderr
// (never to a file unless --log asks) and turns parse errors into one cause line and one
// usage line with exit status 2.
#include <cstdio>
#include <exception>
#include <string>

#include <zrad/log.h>

#include "command.h"

using namespace zradtool;

namespace {

bool verbose = false;

// The communication layer reports a peer that closed or went quiet as an error ("readdata
// ,expire"). Every connection ends that way, and serve and console say so in their own words.
bool peerGone(const char* file, const std::string& text) {
  const std::string suffix = " ,expire";
  return file && std::string(file) == "utils/rvremotedebugcommunication" && text.size() >= suffix.size() &&
         text.compare(text.size() - suffix.size(), suffix.size(), suffix) == 0;
}

// Library messages, one line each: "zrad: error: <text> (<source>:<line>)".
void logToStderr(int level, int line, const char* file, const char* function, const char* message,
                 unsigned long) {
  static const char* const kNames[] = {"info", "info", "info", "debug", "warning", "error"};
  std::string text = message ? message : "";
  if (!verbose && peerGone(file, text)) return;
  for (char& c : text)
    if (c == '\n' || c == '\r') c = ' ';
  while (!text.empty() && text.back() == ' ') text.pop_back();
  std::fprintf(stderr, "zrad: %s: %s (%s:%d, %s)\n", level >= 0 && level <= 5 ? kNames[level] : "info",
               text.c_str(), file ? file : "", line, function ? function : "");
}

void routeLog(const std::string& logFile) {
  zr_attach_log_fun(logToStderr);
  zr_set_print_log_level(verbose ? 0 : 4);
  zr_set_print_log_to_file(!logFile.empty());
  if (!logFile.empty()) zr_set_Log_file(logFile.c_str());
}

// The subcommand the command line reached, the deepest one parsed.
const CLI::App* reached(const CLI::App& app) {
  const CLI::App* at = &app;
  while (!at->get_subcommands().empty()) at = at->get_subcommands().front();
  return at;
}

// `zrad help [CMD...]`: the help of the named subcommand, or of the tool.
int printHelp(const CLI::App& zrad, const std::vector<std::string>& words) {
  const CLI::App* at = &zrad;
  for (const std::string& word : words) {
    const CLI::App* next = nullptr;
    for (const CLI::App* sub : at->get_subcommands({}))
      if (sub->check_name(word)) next = sub;
    if (!next) return usageError("no command " + word + " in " + commandPath(at));
    at = next;
  }
  std::fputs(at->help(at->get_parent() ? commandPath(at->get_parent()) : "").c_str(), stdout);
  return kOk;
}

}  // namespace

int main(int argc, char** argv) {
  CLI::App zrad("the command-line face of libzradutils\n\nexit status: 0 ok, 1 failed, 2 usage error",
                "zrad");
  zrad.get_formatter()->label("Usage", "usage");
  zrad.set_version_flag("--version", "zrad " ZRAD_VERSION);
  zrad.require_subcommand(1);
  zrad.fallthrough();
  std::string logFile;
  zrad.add_option("--log", logFile, "append the library's log lines to FILE")->type_name("FILE");
  zrad.add_flag("--verbose", verbose, "print the library's debug and info messages on stderr too");

  std::vector<std::string> topic;
  CLI::App* help = zrad.add_subcommand("help", "the help of a command: zrad help json cat");
  help->add_option("CMD", topic, "the command and its subcommands");
  onRun(help, [&] { return printHelp(zrad, topic); });
  addFamilies(zrad);
  zrad.parse_complete_callback([&] { routeLog(logFile); });

  try {
    zrad.parse(argc, argv);
  } catch (const CLI::Success& e) {
    return zrad.exit(e);
  } catch (const CLI::ParseError& e) {
    const CLI::App* at = reached(zrad);
    std::fprintf(stderr, "%s: %s\n%s\n", commandPath(at).c_str(), e.what(), usageLine(at).c_str());
    return kUsage;
  } catch (const std::exception& e) {
    std::fprintf(stderr, "zrad: %s\n", e.what());
    return kFailed;
  }
  return exitStatus();
}
