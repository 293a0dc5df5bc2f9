// Listings of the LS and FIND commands.
#pragma once

#include <zrad/files.h>
#include <zrplatform/strings.h>

namespace zrad::remote {

// One listing line of `entry`. No option (or an empty one) gives "%s\r\n" with the name; "-l"
// (any case) gives the long line
//   "%-40s  ||  %16d Byte  ||  %s (%24s)  \r\n"
// with name, size, the modification time as "%Y-%m-%d %H:%M:%S" and as ctime gives it (its
// newline kept). A symbolic link carries its target as a second path, appended as
// "  ||  %-260s " before the "\r\n". Any other option gives "".
ZrUtf8String formatListLine(const _finddata_t& entry, const ZrUtf8String& option);

// The LS listing of `dir` (the empty directory is the process's current one):
//   ("", "")         every entry, "." and ".." included, short lines
//   ("-l", "")       every entry but "." and "..", long lines
//   ("-l", pattern)  the files matching pattern, long lines
//   (pattern, "")    the files matching pattern, short lines
//   (other, other)   ""
ZrUtf8String listDirectory(const ZrUtf8String& dir, const ZrUtf8String& first,
                           const ZrUtf8String& second);

// The FIND answer: every file under `dir` (searched recursively) whose name matches
// `pattern`, each followed by ";\r\n".
ZrUtf8String findFiles(const ZrUtf8String& dir, const ZrUtf8String& pattern);

}  // namespace zrad::remote
