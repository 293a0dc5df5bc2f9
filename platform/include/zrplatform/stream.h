// Byte streams: the ZrStreamBuf interface, memory streams, and file streams from the system
// services.
//
// Reading past the end reads nothing more and is not an error: getBytes() returns how many
// bytes it delivered and getByte() gives 0 at the end. File streams throw ZrError when they
// cannot be opened or written.
#pragma once

#include <cstdint>

#include "export.h"
#include "rxobject.h"
#include "strings.h"

enum ZrSeekFrom { kSeekFromStart = 0, kSeekFromCurrent = 1, kSeekFromEnd = 2 };

class ZRPLATFORM_EXPORT ZrStreamBuf : public ZrRxObject {
 public:
  ZR_RX_DECLARE_MEMBERS(ZrStreamBuf);

  virtual uint64_t length() = 0;
  virtual uint64_t tell() = 0;
  // Moves the position (clamped to 0 .. length) and returns it.
  virtual uint64_t seek(int64_t offset, ZrSeekFrom from) = 0;
  virtual bool isEof() = 0;
  virtual uint8_t getByte() = 0;
  virtual void putByte(uint8_t b) = 0;
  // Reads up to n bytes; returns how many were read.
  virtual uint32_t getBytes(void* buf, uint32_t n) = 0;
  virtual void putBytes(const void* buf, uint32_t n) = 0;
  virtual void rewind() { seek(0, kSeekFromStart); }
  // Cuts the stream at the current position.
  virtual void truncate() = 0;
  // Hands what was written to the system and checks that it was taken, as closing would: a file
  // stream throws ZrError(eFileWriteError) when that fails (a full disk). Writers call it before
  // they report success; a stream released without it cannot report a failed close.
  virtual void flush() {}
};

using ZrStreamBufPtr = ZrSmartPtr<ZrStreamBuf>;

// A stream over one contiguous block that grows geometrically as it is written.
class ZRPLATFORM_EXPORT ZrMemoryStream : public ZrStreamBuf {
 public:
  ZR_RX_DECLARE_MEMBERS(ZrMemoryStream);
  static ZrSmartPtr<ZrMemoryStream> createNew(uint64_t initialCapacity = 0);

  uint64_t length() override { return m_size; }
  uint64_t tell() override { return m_pos; }
  uint64_t seek(int64_t offset, ZrSeekFrom from) override;
  bool isEof() override { return m_pos >= m_size; }
  uint8_t getByte() override { return m_pos < m_size ? m_data[m_pos++] : 0; }
  void putByte(uint8_t b) override {
    if (m_pos < m_capacity) {
      m_data[m_pos++] = b;
      if (m_pos > m_size) m_size = m_pos;
    } else {
      putBytes(&b, 1);
    }
  }
  uint32_t getBytes(void* buf, uint32_t n) override;
  void putBytes(const void* buf, uint32_t n) override;
  void truncate() override { m_size = m_pos; }

  // The stream's bytes, valid until the next write.
  const uint8_t* data() const { return m_data; }

 protected:
  explicit ZrMemoryStream(uint64_t initialCapacity);
  ~ZrMemoryStream() override;

 private:
  void reserve(uint64_t needed);

  uint8_t* m_data = nullptr;
  uint64_t m_size = 0;
  uint64_t m_pos = 0;
  uint64_t m_capacity = 0;
};

using ZrMemoryStreamPtr = ZrSmartPtr<ZrMemoryStream>;

// Access, sharing and creation modes of createFile.
enum ZrFileAccess : unsigned { kFileRead = 0x80000000u, kFileWrite = 0x40000000u };
enum ZrFileShare { kShareDenyNo = 0, kShareDenyRead = 1, kShareDenyWrite = 2, kShareDenyReadWrite = 3 };
enum ZrFileCreation {
  kCreateNew = 1,         // fails when the file exists
  kCreateAlways = 2,      // creates or truncates
  kOpenExisting = 3,      // fails when the file is missing
  kOpenAlways = 4,        // opens or creates
  kTruncateExisting = 5,  // fails when missing, truncates otherwise
};

class ZRPLATFORM_EXPORT ZrSystemServices {
 public:
  virtual ~ZrSystemServices();
  // Opens a file stream on a UTF-8 path; throws ZrError(eFileOpenError) when it cannot.
  virtual ZrStreamBufPtr createFile(const ZrUtf8String& path, unsigned access,
                                    ZrFileShare share = kShareDenyNo,
                                    ZrFileCreation creation = kOpenExisting);
  ZrStreamBufPtr createFile(const ZrString& path, unsigned access, ZrFileShare share = kShareDenyNo,
                            ZrFileCreation creation = kOpenExisting);
  virtual bool accessFile(const ZrUtf8String& path, unsigned access);
};

ZRPLATFORM_EXPORT ZrSystemServices* zrSystemServices();
