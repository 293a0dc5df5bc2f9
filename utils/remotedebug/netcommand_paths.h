// Path rules of the remote commands: joining an argument to the connection's current
// directory, and the free name under which a received file is stored.
#pragma once

#include <functional>

#include <zrplatform/strings.h>

namespace zrad::remote {

// The current directory followed by `name`, with a "/" put between them unless the directory
// already ends with one. The empty directory thus gives an absolute path.
//   ("", "tmp")      => "/tmp"
//   ("/srv", "a")    => "/srv/a"
//   ("/srv/", "a")   => "/srv/a"
ZrString joinToCurrentDir(const ZrString& dir, const ZrString& name);

// Where a received file named `lastName` is stored in `dir`: the name is split at its first
// "." into stem and extension, and "-副本" is appended to the stem while the path is taken.
// A name without "." has no extension and no "." is added.
//   ("/d", "a.txt")     => "/d/a.txt", then "/d/a-副本.txt", then "/d/a-副本-副本.txt"
//   ("/d", "a.tar.gz")  => "/d/a.tar.gz", then "/d/a-副本.tar.gz"
//   ("/d", "README")    => "/d/README", then "/d/README-副本"
ZrString freeFileName(const ZrString& dir, const ZrString& lastName,
                      const std::function<bool(const ZrString&)>& taken);

}  // namespace zrad::remote
