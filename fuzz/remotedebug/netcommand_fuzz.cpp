// Fuzz target: the service side of the command conversation, fed arbitrary payloads.
//
// Commands work in a scratch directory of their own; inputs that hold "..", which could lead a
// command out of it, are skipped, and the directory is emptied every 256 runs.
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
};

const ZrUtf8String& scratchDir() {
  static const CommandDir commands;
  return commands.path;
}

bool leavesScratchDir(const uint8_t* data, size_t size) {
  static const char kDotDot[] = {'.', 0, '.', 0};
  return memmem(data, size, kDotDot, sizeof kDotDot) != nullptr;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  static unsigned runs = 0;
  const ZrUtf8String& dir = scratchDir();
  if (leavesScratchDir(data, size)) return 0;
  if (++runs % 256 == 0) zrutCleanPath(dir);

  ZrMemoryStreamPtr payload = ZrMemoryStream::createNew(2048);
  payload->putBytes(data, static_cast<uint32_t>(size));
  ZrMemoryStreamPtr answer = ZrMemoryStream::createNew(2048);
  const char header[24] = {1};
  answer->putBytes(header, sizeof header);
  CNetCommand::createNetCom(1)->OnReceiveData(1, RvNetPackage::createObject(payload),
                                              RvNetPackage::createObject(answer));
  return 0;
}
