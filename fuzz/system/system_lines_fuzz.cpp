// Feeds every line of the input to the os-release and process-status line parsers.
#include <cstddef>
#include <cstdint>

#include "system/osrelease.h"
#include "system/procstatus.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  OSRELEASEINFO release;
  PROCESSMEMORYINFO memory{};
  const char* text = reinterpret_cast<const char*>(data);
  size_t start = 0;
  for (size_t i = 0; i <= size; ++i) {
    if (i < size && data[i] != '\n') continue;
    ZrUtf8String line(text + start, i - start);
    zrad::osinfo::applyOsReleaseLine(line, release);
    zrad::osinfo::applyStatusLine(line, memory);
    start = i + 1;
  }
  return 0;
}
