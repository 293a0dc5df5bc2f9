// Formats one log line exactly as
//   "%4d-%02d-%02d %02d:%02d:%02d.%06d, %s (%d)<%s>,[%s],{tid:%p} %s\n"
// without going through printf, which costs more than the file write itself.
#pragma once

#include <ctime>
#include <string>

namespace zrad::detail {

// The level's name in a line: 3 "debug", 4 "warnning", 5 "error", anything else "info".
const char* logLevelName(int level);

// Appends the line for the given broken-down time, microseconds and parts to `out`.
void appendLogLine(std::string& out, const std::tm& when, long micros, const char* file, int line,
                   const char* function, const char* levelName, const void* thread,
                   const char* message);

}  // namespace zrad::detail
