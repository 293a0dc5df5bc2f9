// One console line, from text to a queued conversation.
#include "console/console.h"

namespace zradtool {

LineAction carryOut(const std::string& text, Session& session, NetCommandClientCallBack& answers,
                    const std::function<void(const std::string&)>& complain,
                    ZrSmartPtr<INetCom>& com, ConsoleLine& line) {
  std::string error;
  if (!parseConsoleLine(text, line, error)) {
    complain(error);
    return LineAction::kNothing;
  }
  if (line.word.empty() || line.word == "CN") return LineAction::kNothing;
  if (line.word == "EXIT" || line.word == "QUIT") return LineAction::kLeave;
  if (line.word == "HELP") {
    CNetCommand::cmdHelp(&answers);
    return LineAction::kNothing;
  }
  if (line.word[0] == '!' || line.word[0] == '(') {
    complain("platform commands and expressions need the host application");
    return LineAction::kNothing;
  }
  if (!isCommandWord(line.word)) {
    complain("unknown command " + line.word + " (HELP lists them)");
    return LineAction::kNothing;
  }
  com = session.send(line, &answers);
  return LineAction::kSent;
}

}  // namespace zradtool
