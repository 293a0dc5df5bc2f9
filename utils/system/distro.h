// Internal: the package format and default programs that suit a release record.
//
// The exported zrutGetPkgFormat and zrutGetDefault* are chooseFor on a fresh record read from
// "/etc/os-release"; tests call chooseFor on records and files of their own.
#pragma once

#include <zrad/system.h>

namespace zrad::osinfo {

enum class Choice { kPkgFormat, kTextEditor, kExplorer, kPaint };

// The answer for the record's family and lower-cased NAME (see zrad/system.h for the tables);
// "" when the family is neither Windows nor Linux or no distribution word is found.
//   {OS_FAMILY "Linux", NAME "\"Kylin Ubuntu\""}, kTextEditor => "pluma" (kylin is met first)
//   {OS_FAMILY "Linux Windows"}, kTextEditor => ""   (this choice wants the family exactly)
//   {OS_FAMILY "Linux Windows"}, kExplorer   => "explorer"
ZrUtf8String chooseFor(Choice choice, const OSRELEASEINFO& info);

// chooseFor on a fresh record read from the os-release file at `path`.
ZrUtf8String chooseFromFile(Choice choice, const char* path);

}  // namespace zrad::osinfo
