// zrad: the command-line face of libzradutils, one subcommand family per library family.
#include <cstdio>
#include <cstring>

#include "command.h"

using namespace zradtool;

static void printHelp(FILE* out) {
  std::fprintf(out,
               "usage: zrad <command> [ARGS...]\n"
               "       zrad <command> --help\n\n"
               "commands:\n");
  std::fprintf(out, "  %-10s %s\n", "help", "list the commands");
  for (const Family& f : families()) std::fprintf(out, "  %-10s %s\n", f.name, f.summary);
  std::fprintf(out, "\nexit status: 0 ok, 1 failed, 2 usage error\n");
}

int main(int argc, char** argv) {
  if (argc < 2) {
    printHelp(stderr);
    return kUsage;
  }
  const char* name = argv[1];
  if (!std::strcmp(name, "help") || !std::strcmp(name, "--help") || !std::strcmp(name, "-h")) {
    printHelp(stdout);
    return kOk;
  }
  for (const Family& f : families()) {
    if (std::strcmp(f.name, name) != 0) continue;
    Args args(argv + 2, argv + argc);
    if (wantsHelp(args) && args.size() == 1) {
      std::fputs(f.usage, stdout);
      return kOk;
    }
    return f.run(args);
  }
  std::fprintf(stderr, "zrad: unknown command '%s'\n\n", name);
  printHelp(stderr);
  return kUsage;
}
