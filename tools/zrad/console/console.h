// The two faces of `zrad console`: a line-editing terminal session and a line-by-line reader
// for pipes and files. Both return the tool's exit status.
#pragma once

#include <functional>
#include <string>

#include "console/session.h"

namespace zradtool {

// How a console line is carried out, shared by both faces.
enum class LineAction { kNothing, kSent, kLeave };

// Handles the console's own words (HELP, EXIT, QUIT, CN) and refuses bad lines through
// `complain`; queues everything else on `session`. `com` receives the queued conversation.
LineAction carryOut(const std::string& text, Session& session, NetCommandClientCallBack& answers,
                    const std::function<void(const std::string&)>& complain,
                    ZrSmartPtr<INetCom>& com, ConsoleLine& line);

// Standard input is not a terminal: one command a line, each answer awaited for at most
// `timeoutMs`. 1 when the connection breaks, an answer does not come or a line is refused.
int runLineMode(Session& session, NetCommandClientCallBack& answers, int timeoutMs);

// Standard input is a terminal: line editing, history, completion, progress bars.
int runInteractive(Session& session, const std::string& peer);

}  // namespace zradtool
