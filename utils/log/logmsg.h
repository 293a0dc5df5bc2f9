// Internal logging helper: the one way the library's own code reports a message.
//
// ZRAD_LOG(level, source, fmt, ...) asks zrad_log_level() first and formats only when the
// threshold lets the level through (threshold < level + 1); the text is cut at 2044 bytes and
// handed to zr_Log with the calling line and function:
//
//   static const char kLogSource[] = "utils/zrfiletools";
//   ZRAD_LOG(5, kLogSource, "cannot open %s", path);
#pragma once

#include <zrad/log.h>

namespace zrad::detail {

inline bool logEnabled(int level) {
  return zrad_log_level() < static_cast<unsigned>(level) + 1u;
}

// Formats into a bounded buffer and calls zr_Log; callers test logEnabled() first.
void logFormatted(int level, int line, const char* source, const char* function,
                  const char* format, ...) __attribute__((format(printf, 5, 6)));

}  // namespace zrad::detail

#define ZRAD_LOG(level, source, ...)                                                  \
  do {                                                                                \
    if (::zrad::detail::logEnabled(level))                                            \
      ::zrad::detail::logFormatted((level), __LINE__, (source), __func__, __VA_ARGS__); \
  } while (0)
