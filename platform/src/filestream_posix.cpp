// File streams over stdio and the system services that open them.
//
// Writes are buffered; flush() reports whether the system took them.
#include <sys/stat.h>
#include <unistd.h>

#include <cstdio>

#include "zrplatform/stream.h"

namespace {

class FileStream : public ZrStreamBuf {
 public:
  explicit FileStream(FILE* f) : m_file(f) {}
  ~FileStream() override { std::fclose(m_file); }

  uint64_t length() override {
    struct stat st;
    std::fflush(m_file);
    return fstat(fileno(m_file), &st) == 0 ? static_cast<uint64_t>(st.st_size) : 0;
  }
  uint64_t tell() override {
    off_t at = ftello(m_file);
    return at < 0 ? 0 : static_cast<uint64_t>(at);
  }
  uint64_t seek(int64_t offset, ZrSeekFrom from) override {
    int64_t base = from == kSeekFromStart ? 0
                   : from == kSeekFromCurrent ? static_cast<int64_t>(tell())
                                              : static_cast<int64_t>(length());
    int64_t target = base + offset;
    int64_t end = static_cast<int64_t>(length());
    if (target < 0) target = 0;
    if (target > end) target = end;
    if (fseeko(m_file, static_cast<off_t>(target), SEEK_SET) != 0) throw ZrError(Zrad::eFileSeekError);
    return tell();
  }
  bool isEof() override { return tell() >= length(); }
  uint8_t getByte() override {
    int c = std::getc(m_file);
    return c == EOF ? 0 : static_cast<uint8_t>(c);
  }
  void putByte(uint8_t b) override {
    if (std::putc(b, m_file) == EOF) throw ZrError(Zrad::eFileWriteError);
  }
  uint32_t getBytes(void* buf, uint32_t n) override {
    return static_cast<uint32_t>(std::fread(buf, 1, n, m_file));
  }
  void putBytes(const void* buf, uint32_t n) override {
    if (n && std::fwrite(buf, 1, n, m_file) != n) throw ZrError(Zrad::eFileWriteError);
  }
  void truncate() override {
    flush();
    if (ftruncate(fileno(m_file), ftello(m_file)) != 0) throw ZrError(Zrad::eFileWriteError);
  }
  // Closing a duplicate descriptor runs the file system's close-time checks (the ones that
  // report delayed write errors) while the stream stays open.
  void flush() override {
    int copy = std::fflush(m_file) == 0 ? dup(fileno(m_file)) : -1;
    if (copy < 0 || close(copy) != 0) throw ZrError(Zrad::eFileWriteError);
  }

 private:
  FILE* m_file;
};

// The stdio mode for an access and creation pair, after the existence checks.
const char* modeFor(unsigned access, ZrFileCreation creation, bool exists) {
  bool write = access & kFileWrite;
  bool read = access & kFileRead;
  if (!write) return "rb";
  if (creation == kCreateAlways || creation == kTruncateExisting || !exists) return read ? "w+b" : "wb";
  return "r+b";
}

}  // namespace

ZrSystemServices::~ZrSystemServices() = default;

ZrStreamBufPtr ZrSystemServices::createFile(const ZrUtf8String& path, unsigned access, ZrFileShare,
                                            ZrFileCreation creation) {
  struct stat st;
  bool exists = ::stat(path.c_str(), &st) == 0;
  if ((exists && creation == kCreateNew) ||
      (!exists && (creation == kOpenExisting || creation == kTruncateExisting)) ||
      (exists && S_ISDIR(st.st_mode)))
    throw ZrError(Zrad::eFileOpenError);
  FILE* f = std::fopen(path.c_str(), modeFor(access, creation, exists));
  if (!f) throw ZrError(Zrad::eFileOpenError);
  return ZrStreamBufPtr(new ZrRxObjectImpl<FileStream>(f), kZrAttach);
}

ZrStreamBufPtr ZrSystemServices::createFile(const ZrString& path, unsigned access, ZrFileShare share,
                                            ZrFileCreation creation) {
  return createFile(ZrUtf8String(path), access, share, creation);
}

bool ZrSystemServices::accessFile(const ZrUtf8String& path, unsigned access) {
  int mode = F_OK;
  if (access & kFileRead) mode |= R_OK;
  if (access & kFileWrite) mode |= W_OK;
  return ::access(path.c_str(), mode) == 0;
}

ZrSystemServices* zrSystemServices() {
  static ZrSystemServices services;
  return &services;
}
