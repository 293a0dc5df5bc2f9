// The progress line's text.
#include "console/progress.h"

#include <cstdio>

namespace zradtool {

std::string formatBytes(uint64_t bytes) {
  static const char* const kUnits[] = {"KiB", "MiB", "GiB", "TiB"};
  if (bytes < 1024) return std::to_string(bytes) + " B";
  double value = bytes / 1024.0;
  int unit = 0;
  for (; value >= 1024 && unit < 3; ++unit) value /= 1024;
  char text[32];
  std::snprintf(text, sizeof text, "%.1f %s", value, kUnits[unit]);
  return text;
}

std::string formatProgress(const std::string& word, uint64_t bytes, uint64_t total,
                           double seconds) {
  constexpr int kBarWidth = 20;
  char head[16];
  std::snprintf(head, sizeof head, "%-5s ", word.c_str());
  std::string line = head + formatBytes(bytes);
  if (total > 0) {
    const uint64_t shown = bytes < total ? bytes : total;
    const int filled = static_cast<int>(shown * kBarWidth / total);
    line += " of " + formatBytes(total) + "  [" + std::string(filled, '#') +
            std::string(kBarWidth - filled, ' ') + "]";
  }
  const uint64_t rate = seconds > 0 ? static_cast<uint64_t>(bytes / seconds) : 0;
  return line + "  " + formatBytes(rate) + "/s";
}

}  // namespace zradtool
