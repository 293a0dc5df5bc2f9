// The library's own way to log: bounded formatting behind the level test of ZRAD_LOG.
#include "log/logmsg.h"

#include <cstdarg>
#include <cstdio>

namespace zrad::detail {

void logFormatted(int level, int line, const char* source, const char* function,
                  const char* format, ...) {
  char text[2048] = {};
  va_list args;
  va_start(args, format);
  std::vsnprintf(text, 2045, format, args);  // at most 2044 characters and the terminator
  va_end(args);
  zr_Log(level, line, source, function, text);
}

}  // namespace zrad::detail
