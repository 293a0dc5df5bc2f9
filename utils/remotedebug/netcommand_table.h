// The command table of the remote command set: words, handlers and the console's help lines.
#pragma once

#include <zrad/remotedebug.h>

namespace zrad::remote {

// The answer of commands that find no file of the name they were given.
inline constexpr wchar_t kMissingFile[] = L"此文件（夹）不存在！";

// What the service knows of one command word.
struct Command {
  CNetCommand::Handler handler;
  // Its arguments name files, which no name holding a zero character can be: such a request is
  // not run but answered with `failed`, the command's answer to an operation that failed (null:
  // it answers nothing then).
  bool namesFiles;
  const wchar_t* failed;
};

// The command of an upper-case word; null when the word is no command.
const Command* findCommand(const ZrString& word);

// The console's help: 21 lines in their fixed order, each followed by "\r\n".
ZrString commandHelpText();

}  // namespace zrad::remote
