// Fuzz target: the service side of the command conversation, fed arbitrary payloads.
//
// Commands work in a scratch directory of their own; inputs that hold "..", which could lead a
// command out of it, are skipped, and the directory is emptied every 256 runs.
#include <cstdint>
#include <cstring>
#include <string>

#include <zrad/files.h>
#include <zrad/remotedebug.h>

namespace {

const ZrUtf8String& scratchDir() {
  static const ZrUtf8String dir = [] {
    char pattern[] = "/tmp/zrad-netcommand-fuzz-XXXXXX";
    ZrUtf8String made(mkdtemp(pattern));
    CNetCommand::setCurrentDir(ZrString(made));
    return made;
  }();
  return dir;
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
