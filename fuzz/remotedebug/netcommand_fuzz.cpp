// Fuzz target: the service side of the command conversation, fed arbitrary payloads.
//
// Commands work in a scratch directory of their own; inputs that hold "..", which could lead a
// command out of it, are skipped. Each input finds the directory holding "d/f" (a command may
// have removed it, or the directory itself), and the directory is emptied every 256 runs.
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cstdint>
#include <cstring>
#include <string>

#include <zrad/files.h>
#include <zrad/remotedebug.h>

#include "common/scratch_dir.h"

namespace {

// The directory the commands work in.
struct CommandDir {
  const ScratchDir dir{"zrad-netcommand-fuzz"};
  const ZrUtf8String path{dir.path().c_str()};
  CommandDir() { CNetCommand::setCurrentDir(ZrString(path)); }

  // Puts back the directory, "d" and "d/f" where a command removed them.
  void restore() const {
    mkdir(path.c_str(), 0777);
    mkdir((dir.path() + "/d").c_str(), 0777);
    const int file = open((dir.path() + "/d/f").c_str(), O_WRONLY | O_CREAT | O_EXCL, 0666);
    if (file >= 0) close(file);
  }
};

const CommandDir& commandDir() {
  static const CommandDir commands;
  return commands;
}

bool leavesScratchDir(const uint8_t* data, size_t size) {
  static const char kDotDot[] = {'.', 0, '.', 0};
  return memmem(data, size, kDotDot, sizeof kDotDot) != nullptr;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  static unsigned runs = 0;
  const CommandDir& dir = commandDir();
  if (leavesScratchDir(data, size)) return 0;
  if (++runs % 256 == 0) zrutCleanPath(dir.path);
  dir.restore();

  ZrMemoryStreamPtr payload = ZrMemoryStream::createNew(2048);
  payload->putBytes(data, static_cast<uint32_t>(size));
  ZrMemoryStreamPtr answer = ZrMemoryStream::createNew(2048);
  const char header[24] = {1};
  answer->putBytes(header, sizeof header);
  CNetCommand::createNetCom(1)->OnReceiveData(1, RvNetPackage::createObject(payload),
                                              RvNetPackage::createObject(answer));
  return 0;
}
