// The console on a pipe or file: one command a line, each answer awaited in turn.
#include <cstdio>
#include <iostream>

#include "console/console.h"

namespace zradtool {
namespace {

// A conversation's status signal can come before the wait begins, so the wait goes in slices.
constexpr int kWaitSliceMs = 50;

// True when `com` ended within `timeoutMs`.
bool awaitEnd(const ZrSmartPtr<INetCom>& com, int timeoutMs) {
  for (int waited = 0; !conversationEnded(com); waited += kWaitSliceMs) {
    if (waited >= timeoutMs) return false;
    com->waitSignal(kWaitSliceMs);
  }
  return true;
}

}  // namespace

int runLineMode(Session& session, NetCommandClientCallBack& answers, int timeoutMs) {
  int status = 0;
  int number = 0;
  const auto complain = [&](const std::string& why) {
    std::fprintf(stderr, "zrad console: line %d: %s\n", number, why.c_str());
    status = 1;
  };
  for (std::string text; std::getline(std::cin, text);) {
    ++number;
    ZrSmartPtr<INetCom> com;
    ConsoleLine line;
    const LineAction action = carryOut(text, session, answers, complain, com, line);
    if (action == LineAction::kLeave) break;
    if (action == LineAction::kNothing) continue;
    if (!com) {
      complain("the connection is closed");
      return 1;
    }
    if (!awaitEnd(com, timeoutMs)) {
      complain("no answer to " + line.word + " within " + std::to_string(timeoutMs / 1000) + " s");
      return 1;
    }
    if (com->getStatus() == INetCom::kAborted) {
      complain("the connection broke during " + line.word);
      return 1;
    }
  }
  std::fflush(stdout);
  return status;
}

}  // namespace zradtool
