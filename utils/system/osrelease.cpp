// Parsing of os-release lines into the release record.
//
// Pure text: the key table in record order and the one-line parser. Reading the file is in
// system_posix.cpp.
#include "system/osrelease.h"

#include <zrad/text.h>

namespace zrad::osinfo {
namespace {

struct KeyField {
  const char* key;
  ZrUtf8String OSRELEASEINFO::*field;
};

// In record order; the first key equal to a line's key receives its value.
const KeyField kKeys[] = {
    {"NAME", &OSRELEASEINFO::NAME},
    {"VERSION", &OSRELEASEINFO::VERSION},
    {"ID", &OSRELEASEINFO::ID},
    {"ID_LINK", &OSRELEASEINFO::ID_LINK},
    {"VERSION_CODENAME", &OSRELEASEINFO::VERSION_CODENAME},
    {"VERSION_ID", &OSRELEASEINFO::VERSION_ID},
    {"PRETTY_NAME", &OSRELEASEINFO::PRETTY_NAME},
    {"ANSI_COLOR", &OSRELEASEINFO::ANSI_COLOR},
    {"CPE_NAME", &OSRELEASEINFO::CPE_NAME},
    {"HOME_URL", &OSRELEASEINFO::HOME_URL},
    {"DOCUMENTATION_URL", &OSRELEASEINFO::DOCUMENTATION_URL},
    {"SUPPORT_URL", &OSRELEASEINFO::SUPPORT_URL},
    {"BUG_REPORT_URL", &OSRELEASEINFO::BUG_REPORT_URL},
    {"PRIVACY_POLICY_URL", &OSRELEASEINFO::PRIVACY_POLICY_URL},
    {"BUILD_ID", &OSRELEASEINFO::BUILD_ID},
    {"VARIANT", &OSRELEASEINFO::VARIANT},
    {"VARIANT_ID", &OSRELEASEINFO::VARIANT_ID},
    {"LOGO", &OSRELEASEINFO::LOGO},
};

}  // namespace

void applyOsReleaseLine(const ZrUtf8String& line, OSRELEASEINFO& info) {
  // Splitting drops empty parts, so "A=b=c" stores "b" and "A=" stores nothing.
  ZrArray<ZrUtf8String> parts;
  zrutSplitStringA(line, '=', parts);
  if (parts.length() < 2) return;
  for (const KeyField& k : kKeys) {
    if (parts[0] == k.key) {
      info.*k.field = parts[1];
      return;
    }
  }
}

}  // namespace zrad::osinfo
