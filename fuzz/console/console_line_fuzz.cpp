// Console lines as a user types or pipes them: splitting refuses only with a reason, never
// makes fields longer than the line; the answer text keeps every line and adds at most the
// last line end.
#include <cstddef>
#include <algorithm>
#include <cstdint>
#include <string>

#include "console/answers.h"
#include "console/commandline.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  const std::string text(reinterpret_cast<const char*>(data), size);
  zradtool::ConsoleLine line;
  std::string error;
  if (zradtool::parseConsoleLine(text, line, error)) {
    if (line.word.size() + line.arg1.size() + line.arg2.size() > size) __builtin_trap();
  } else if (error.empty()) {
    __builtin_trap();
  }
  const ZrString wide(ZrUtf8String(text.c_str()));
  const std::string utf8 = ZrUtf8String(wide).c_str();
  const std::string shown = zradtool::answerText(wide);
  const bool endAdded = !utf8.empty() && utf8.back() != '\n';
  if (std::count(shown.begin(), shown.end(), '\n') !=
          std::count(utf8.begin(), utf8.end(), '\n') + endAdded ||
      shown.size() > utf8.size() + 1)
    __builtin_trap();
  return 0;
}
