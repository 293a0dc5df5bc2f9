// Parsing of process status lines into memory figures.
//
// Pure text: finds the three memory keys and converts their values the way the standard
// unsigned-long conversion does, but reports an unreadable value as a result, not a throw.
#include "system/procstatus.h"

#include <cerrno>
#include <cstdlib>
#include <cstring>

#include <zrplatform/wildcard.h>

namespace zrad::osinfo {
namespace {

struct KeyField {
  const char* key;
  uint64_t PROCESSMEMORYINFO::*field;
};

const KeyField kKeys[] = {
    {"VmRSS", &PROCESSMEMORYINFO::VmRSS},
    {"VmHWM", &PROCESSMEMORYINFO::VmHWM},
    {"VmPeak", &PROCESSMEMORYINFO::VmPeak},
};

// Leading blanks skipped, digits read, anything after them ignored; false when no digit
// follows the blanks or the number overflows.
bool readUnsigned(const char* text, uint64_t& value) {
  char* end = nullptr;
  errno = 0;
  const unsigned long long n = std::strtoull(text, &end, 10);
  if (end == text || errno == ERANGE) return false;
  value = n;
  return true;
}

}  // namespace

bool applyStatusLine(const ZrUtf8String& line, PROCESSMEMORYINFO& info) {
  const int colon = line.find(':');
  if (colon < 0) return true;
  const ZrUtf8String key = line.left(colon);
  for (const KeyField& k : kKeys) {
    // The length test keeps a key with a NUL byte in it from passing as its prefix.
    if (static_cast<size_t>(key.length()) == std::strlen(k.key) &&
        Zr_stricmpA(key.c_str(), k.key) == 0) {
      return readUnsigned(line.c_str() + colon + 1, info.*k.field);
    }
  }
  return true;
}

}  // namespace zrad::osinfo
