// Package framing: the transfer loops and sendData / recvData.
//
// Files are streamed through one block buffer per call and never held whole in memory; a
// received payload and size table grow with the bytes that arrive, never with the lengths
// the frame header claims.
#include "remotedebug/framing.h"

#include <errno.h>
#include <fcntl.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cstring>
#include <string>
#include <vector>

#include <zrad/files.h>

#include "remotedebug/guard.h"
#include "remotedebug/logsource.h"
#include "remotedebug/socketio.h"

namespace zrad::remote {

namespace {

bool retryable(int error) { return error == EINTR || error == EAGAIN || error == EWOULDBLOCK; }

// Moves exactly `length` bytes with `step` (a send or recv that never blocks). Each step is
// tried first and poll() waits only when the socket would block, so the pieces of a frame that
// has arrived whole cost one call each: HELLO round trips take half the time (remotedebug_bench).
template <class Step>
int transfer(int sock, int length, short events, int timeoutMs, const char* function, Step step) {
  if (length <= 0) return length;
  int done = 0;
  while (done < length) {
    ssize_t moved = step(done, length - done);
    if (moved > 0) {
      done += static_cast<int>(moved);
      continue;
    }
    if (moved < 0 && errno == EINTR) continue;
    int polled = 0;
    if (moved < 0 && retryable(errno)) {
      pollfd ready{sock, events, 0};
      polled = socketIo().poll(&ready, 1, timeoutMs);
      if (polled < 0 && errno == EINTR) continue;
      if (polled < 0) {
        REMOTE_LOG(function, "%s ,SOCKET_ERROR", function);
        return -1;
      }
    }
    if (polled == 0) {
      // Closed by the peer, failed, or idle for the whole time-out.
      REMOTE_LOG(function, "%s ,expire", function);
      return -2;
    }
  }
  return length;
}

// writedata with extra send flags.
int sendBytes(int sock, int length, const void* buffer, int timeoutMs, int flags) {
  const char* bytes = static_cast<const char*>(buffer);
  return transfer(sock, length, POLLOUT, timeoutMs, "writedata", [&](int offset, int rest) {
    return socketIo().send(sock, bytes + offset, static_cast<size_t>(rest),
                           flags | MSG_NOSIGNAL | MSG_DONTWAIT);
  });
}

// Temporary files of a receive; removed unless handed to the package.
struct ReceivedFiles {
  std::vector<ZrUtf8String> paths;
  ~ReceivedFiles() {
    for (const ZrUtf8String& path : paths) unlink(path.c_str());
  }
};

// Creates a fresh temporary file exclusively, so concurrent receives never share a name.
int createTempFile(ZrUtf8String& path) {
  for (int attempt = 0; attempt < 64; ++attempt) {
    path = zrutMktempUTF8(ZrUtf8String());
    if (path.isEmpty()) return -1;
    int fd = open(path.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0666);
    if (fd >= 0 || errno != EEXIST) return fd;
  }
  return -1;
}

bool writeAll(int fd, const char* data, size_t length) {
  while (length > 0) {
    ssize_t written = write(fd, data, length);
    if (written < 0 && errno == EINTR) continue;
    if (written <= 0) return false;
    data += written;
    length -= static_cast<size_t>(written);
  }
  return true;
}

// Reads `length` bytes in blocks and hands each block to `sink`; false on a failed read or sink.
// The block grows to at most kBlockSize, so a claimed length reserves nothing beyond that.
template <class Sink>
bool receiveBlocks(int sock, uint64_t length, std::vector<char>& block, int timeoutMs, Sink sink) {
  const size_t wanted = static_cast<size_t>(std::min<uint64_t>(length, kBlockSize));
  if (block.size() < wanted) block.resize(wanted);
  while (length > 0) {
    int part = static_cast<int>(std::min<uint64_t>(length, block.size()));
    if (readdata(sock, part, block.data(), timeoutMs) != part) return false;
    if (!sink(block.data(), part)) return false;
    length -= static_cast<uint64_t>(part);
  }
  return true;
}

// Sends `length` bytes that `source` fills block by block (zeros where it runs dry): -1 when
// a block could not be sent.
template <class Source>
int sendBlocks(int sock, int length, int timeoutMs, Source source) {
  if (length < 1) return length;
  std::vector<char> block(static_cast<size_t>(std::min(length, kBlockSize)));
  for (int sent = 0; sent < length;) {
    int part = std::min(length - sent, static_cast<int>(block.size()));
    int got = std::max(0, source(block.data(), part));
    std::memset(block.data() + got, 0, static_cast<size_t>(part - got));
    if (writedata(sock, part, block.data(), timeoutMs) < 0) return -1;
    sent += part;
  }
  return length;
}

int sendFile(int sock, const ZrUtf8String& path, int size, int timeoutMs) {
  int fd = open(path.c_str(), O_RDONLY | O_CLOEXEC);
  if (fd < 0) return -1;
  int result = sendBlocks(sock, size, timeoutMs, [fd](char* buffer, int length) {
    int got = 0;
    while (got < length) {
      ssize_t n = read(fd, buffer + got, static_cast<size_t>(length - got));
      if (n < 0 && errno == EINTR) continue;
      if (n <= 0) break;
      got += static_cast<int>(n);
    }
    return got;
  });
  close(fd);
  return result;
}

}  // namespace

int writedata(int sock, int length, const void* buffer, int timeoutMs) {
  return sendBytes(sock, length, buffer, timeoutMs, 0);
}

int readdata(int sock, int length, void* buffer, int timeoutMs) {
  char* bytes = static_cast<char*>(buffer);
  return transfer(sock, length, POLLIN, timeoutMs, "readdata", [&](int offset, int rest) {
    return socketIo().recv(sock, bytes + offset, static_cast<size_t>(rest), MSG_DONTWAIT);
  });
}

int sendStream(int sock, int length, ZrSmartPtr<ZrStreamBuf> stream, int timeoutMs) {
  if (stream) stream->seek(0, kSeekFromStart);
  return sendBlocks(sock, length, timeoutMs, [&](char* buffer, int part) {
    return stream ? static_cast<int>(stream->getBytes(buffer, static_cast<uint32_t>(part))) : 0;
  });
}

}  // namespace zrad::remote

using namespace zrad::remote;

int RvRemoteDebugCommunication::sendData(int sock, ZrSmartPtr<RvNetPackage> pkg, int timeoutMs) {
  ZrSmartPtr<ZrStreamBuf> payload = pkg ? pkg->stream() : nullptr;
  const int fileCount = pkg ? pkg->fileCount() : 0;
  uint32_t header[2] = {payload ? static_cast<uint32_t>(payload->length()) : 0u,
                        static_cast<uint32_t>(fileCount)};
  // The header waits in the kernel for the payload (MSG_MORE), so a small frame leaves as one
  // segment and wakes the peer once: HELLO round trips take half the time (remotedebug_bench).
  const int more = header[0] > 0 ? MSG_MORE : 0;
  if (sendBytes(sock, sizeof header, header, timeoutMs, more) < 0) return 0;
  // A package without payload never carries its files; a failed payload goes on to them.
  if (sendStream(sock, static_cast<int>(header[0]), payload, timeoutMs) == 0) return 0;
  if (fileCount == 0) return 0;
  std::vector<int32_t> sizes(static_cast<size_t>(fileCount));
  for (int i = 0; i < fileCount; ++i) {
    struct stat info;
    if (stat(pkg->getFilePath(i + 1).c_str(), &info) != 0) return -1;
    sizes[static_cast<size_t>(i)] = static_cast<int32_t>(info.st_size);
  }
  const int tableBytes = fileCount * static_cast<int>(sizeof(int32_t));
  if (writedata(sock, tableBytes, sizes.data(), timeoutMs) < 0) return -1;
  for (int i = 0; i < fileCount; ++i) {
    if (sendFile(sock, pkg->getFilePath(i + 1), sizes[static_cast<size_t>(i)], timeoutMs) < 0)
      return -1;
  }
  return 0;
}

int RvRemoteDebugCommunication::recvData(int sock, ZrSmartPtr<RvNetPackage>& pkg, int timeoutMs) {
  uint32_t header[2];
  if (readdata(sock, sizeof header, header, timeoutMs) < 1) return -1;
  const uint64_t payloadLength = header[0];
  const uint64_t fileCount = header[1];
  const ConnectionGuard* guard = connectionGuard();
  if (guard && !guard->admitsPayload(payloadLength + 4 * fileCount)) return -1;
  std::vector<char> block;

  ZrSmartPtr<ZrStreamBuf> payload = ZrMemoryStream::createNew(2048);
  bool ok = receiveBlocks(sock, payloadLength, block, timeoutMs, [&](const char* data, int n) {
    payload->putBytes(data, static_cast<uint32_t>(n));
    return true;
  });
  if (!ok) return -1;

  std::vector<int32_t> sizes;
  ok = receiveBlocks(sock, fileCount * 4, block, timeoutMs, [&](const char* data, int n) {
    const size_t old = sizes.size();
    sizes.resize(old + static_cast<size_t>(n) / 4);
    std::memcpy(sizes.data() + old, data, static_cast<size_t>(n));
    return true;
  });
  if (!ok) return -1;

  ReceivedFiles received;
  for (int32_t size : sizes) {
    if (size < 0 || (guard && !guard->admitsFile(size))) return -1;
    ZrUtf8String path;
    int fd = createTempFile(path);
    if (fd < 0) return -1;
    received.paths.push_back(path);
    auto toFile = [fd](const char* data, int n) { return writeAll(fd, data, static_cast<size_t>(n)); };
    ok = receiveBlocks(sock, static_cast<uint64_t>(size), block, timeoutMs, toFile);
    if (close(fd) != 0 || !ok) return -1;
  }

  pkg = RvNetPackage::createObject(payload);
  for (const ZrUtf8String& path : received.paths) pkg->putFile(path, true);
  received.paths.clear();
  return 0;
}
