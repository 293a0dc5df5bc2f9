// The command table of the remote command set: words, handlers and the console's help lines.
#pragma once

#include <zrad/remotedebug.h>

namespace zrad::remote {

// The handler of an upper-case command word; null when the word is no command.
CNetCommand::Handler findCommandHandler(const ZrString& word);

// The console's help: 21 lines in their fixed order, each followed by "\r\n".
ZrString commandHelpText();

}  // namespace zrad::remote
