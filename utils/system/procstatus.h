// Internal: memory figures read from a given process status file, and its line parser.
//
// zrutGetProcessMemoryInfo is readProcessStatus on "/proc/<id>/status"; tests hand it files of
// their own.
#pragma once

#include <zrad/system.h>

namespace zrad::osinfo {

// Stores the value of one status line whose key (the text before the first ":") is VmRSS,
// VmPeak or VmHWM, ignoring case, read as an unsigned decimal after leading blanks; trailing
// text such as " kB" is ignored. Returns false only for such a key with an unreadable value.
//   "VmRSS:\t    1234 kB" => VmRSS 1234, true
//   "vmhwm: 7"            => VmHWM 7, true
//   "VmRSS:  kB"          => false
//   "VmSwap: 5 kB"        => nothing stored, true
bool applyStatusLine(const ZrUtf8String& line, PROCESSMEMORYINFO& info);

// zrutGetProcessMemoryInfo on the file at `path`: false for a null `info`, a file that cannot be
// opened or read, or an unreadable value (reading stops there; figures read before it stay stored).
bool readProcessStatus(const char* path, PROCESSMEMORYINFO* info);

}  // namespace zrad::osinfo
