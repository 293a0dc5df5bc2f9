// Logging of the communication layer: level 5, one source, the reporting operation's name.
#pragma once

#include "log/logmsg.h"

namespace zrad::remote {

inline constexpr char kLogSource[] = "utils/rvremotedebugcommunication";

}  // namespace zrad::remote

// REMOTE_LOG("server", "listen err:%d", errno): the function name is given, so helpers log
// under the operation they serve.
#define REMOTE_LOG(function, ...)                                                         \
  do {                                                                                    \
    if (::zrad::detail::logEnabled(5))                                                    \
      ::zrad::detail::logFormatted(5, __LINE__, ::zrad::remote::kLogSource, (function),   \
                                   __VA_ARGS__);                                          \
  } while (0)
