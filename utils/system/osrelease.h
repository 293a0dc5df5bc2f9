// Internal: the release record read from a given os-release file, and its line parser.
//
// zrutGetOSVersionInfo is readOsRelease on "/etc/os-release"; tests hand it files of their own.
#pragma once

#include <zrad/system.h>

namespace zrad::osinfo {

// Stores the value of one os-release line (without its line feed) in the field its key names;
// lines with another key, no "=" or no value leave `info` alone.
//   NAME="Fedora Linux" => NAME "\"Fedora Linux\""
//   ID_LIKE=debian      => nothing
void applyOsReleaseLine(const ZrUtf8String& line, OSRELEASEINFO& info);

// zrutGetOSVersionInfo on the file at `path`: OS_FAMILY becomes "Linux", then each line is
// applied. A file that cannot be opened changes nothing else.
void readOsRelease(const char* path, OSRELEASEINFO& info);

}  // namespace zrad::osinfo
