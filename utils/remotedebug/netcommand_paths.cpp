// Path rules of the remote commands.
#include "remotedebug/netcommand_paths.h"

namespace zrad::remote {

ZrString joinToCurrentDir(const ZrString& dir, const ZrString& name) {
  const bool endsWithSlash = !dir.isEmpty() && dir.str().back() == L'/';
  return endsWithSlash ? dir + name : dir + L"/" + name;
}

ZrString freeFileName(const ZrString& dir, const ZrString& lastName,
                      const std::function<bool(const ZrString&)>& taken) {
  const int dot = lastName.find(L'.');
  ZrString stem = dot < 0 ? lastName : lastName.left(dot);
  const ZrString extension = dot < 0 ? ZrString() : lastName.mid(dot);
  ZrString path = joinToCurrentDir(dir, stem + extension);
  while (taken(path)) {
    stem += L"-副本";
    path = joinToCurrentDir(dir, stem + extension);
  }
  return path;
}

}  // namespace zrad::remote
