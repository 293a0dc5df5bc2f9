// Fuzz target: peer-given paths through the restricted root's file operations. Beneath the root
// lie links to an outside directory (absolute, relative, "..") that holds one secret file;
// whatever the paths, nothing outside may change and every descriptor opened must lie beneath
// the root. The first byte picks the operation, the first NUL splits the first path from the
// second; the second keeps any further NUL, as a peer's name may hold one.
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cstdint>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <string>
#include <system_error>

#include "common/scratch_dir.h"
#include "remotedebug/rooted_files.h"

namespace {

struct Tree {
  const ScratchDir scratch{"zrad-rooted"};
  const std::string& top = scratch.path();
  const std::string root = top + "/root";
  const std::string outside = top + "/outside";
  Tree() {
    mkdir(root.c_str(), 0777);
    mkdir(outside.c_str(), 0777);
    std::ofstream(outside + "/secret") << "secret";
  }
  // Each input starts from the same root: what an earlier one made is gone (so the tree does
  // not grow through a long run and an input found replays alike), the links are back.
  void reset() const {
    std::error_code ignored;
    std::filesystem::remove_all(root, ignored);
    mkdir(root.c_str(), 0777);
    symlink(outside.c_str(), (root + "/abs").c_str());
    symlink("../outside", (root + "/rel").c_str());
    symlink((outside + "/secret").c_str(), (root + "/file").c_str());
    mkdir((root + "/d").c_str(), 0777);
  }
  bool outsideIntact() const {
    std::ifstream in(outside + "/secret");
    std::string text((std::istreambuf_iterator<char>(in)), std::istreambuf_iterator<char>());
    struct stat info;
    return text == "secret" && stat((outside + "/escaped").c_str(), &info) != 0 &&
           stat((top + "/escaped").c_str(), &info) != 0;
  }
};

bool beneath(int fd, const std::string& root) {
  char target[4096];
  const ssize_t n = readlink(("/proc/self/fd/" + std::to_string(fd)).c_str(), target, sizeof target);
  const std::string path(target, n > 0 ? static_cast<size_t>(n) : 0);
  return path == root || path.compare(0, root.size() + 1, root + "/") == 0;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  static const Tree tree;
  if (size == 0) return 0;
  tree.reset();
  const std::string input(reinterpret_cast<const char*>(data) + 1, size - 1);
  const size_t split = input.find('\0');
  const ZrUtf8String first = input.substr(0, split);
  const ZrUtf8String second = split == std::string::npos ? "" : input.substr(split + 1);
  zrad::remote::RootedFiles files(open(tree.root.c_str(), O_PATH | O_DIRECTORY | O_CLOEXEC));
  switch (data[0] % 6) {
    case 0: {
      zrad::remote::HeldPath held = files.open(first, O_RDONLY | O_NONBLOCK);
      if (held && !beneath(held.fd(), tree.root)) abort();
      break;
    }
    case 1: files.makeDir(first); break;
    case 2: files.remove(first); break;
    case 3: files.rename(first, second); break;
    case 4: files.copy(first, second); break;
    default:
      files.store(ZrUtf8String((tree.outside + "/secret").c_str()), ZrString(second), ZrString(first));
      break;
  }
  if (!tree.outsideIntact()) abort();
  return 0;
}
