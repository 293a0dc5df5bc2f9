// Fuzzes the frame reader: arbitrary bytes arrive on a socket whose writer then closes.
//
// Whatever the bytes claim, recvData must return 0 or -1 without crashing, without reserving
// memory for lengths that never arrive, and without leaving temporary files behind.
#include <sys/socket.h>
#include <unistd.h>

#include <cstddef>
#include <cstdint>
#include <filesystem>

#include <zrad/files.h>
#include <zrad/remotedebug.h>

#include "common/scratch_dir.h"

namespace {

// The temporary directory of received files, which must be empty between inputs.
struct ReceiveDir {
  const ScratchDir dir{"zradfuzz-recv"};
  ReceiveDir() { setTempPath(dir.path().c_str()); }
};

const std::string& scratchDir() {
  static const ReceiveDir received;
  return received.dir.path();
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  scratchDir();
  int fds[2];
  if (socketpair(AF_UNIX, SOCK_STREAM, 0, fds) != 0) return 0;
  // Inputs stay below the socket buffer, so the whole input is written before reading.
  if (size > 65536) size = 65536;
  ssize_t written = size > 0 ? send(fds[0], data, size, MSG_NOSIGNAL) : 0;
  close(fds[0]);
  if (written == static_cast<ssize_t>(size)) {
    {
      ZrSmartPtr<RvNetPackage> pkg;
      RvRemoteDebugCommunication::recvData(fds[1], pkg, 20);
    }
    // A failed receive removes its files; a received package removes them when it goes.
    if (!std::filesystem::is_empty(scratchDir())) abort();
  }
  close(fds[1]);
  return 0;
}
