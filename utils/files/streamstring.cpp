// Length-prefixed UTF-8 strings on a platform stream: a 32-bit count, then the bytes.
//
// Reading checks the count against the limit and against what the stream still holds before
// any memory is reserved for it.
#include <cstdint>
#include <string>

#include <zrad/files.h>

namespace {

constexpr uint32_t kMaxStreamString = 0x20000000;

// Stream errors other than running out of memory become a failed result.
template <class Result, class Body>
Result orOnStreamError(Result failed, Body body) {
  try {
    return body();
  } catch (const ZrError& error) {
    if (error.status() == Zrad::eOutOfMemory) throw;
    return failed;
  }
}

}  // namespace

bool zrutWrUtf8String(ZrStreamBuf* stream, const ZrUtf8String& text) {
  if (!stream || text.str().size() > UINT32_MAX) return false;
  return orOnStreamError(false, [&] {
    uint32_t count = static_cast<uint32_t>(text.str().size());
    stream->putBytes(&count, sizeof count);
    stream->putBytes(text.c_str(), count);
    return true;
  });
}

ZrUtf8String zrutRdUtf8String(ZrStreamBuf* stream) {
  if (!stream) return ZrUtf8String();
  return orOnStreamError(ZrUtf8String(), [&] {
    uint32_t count = 0;
    if (stream->getBytes(&count, sizeof count) != sizeof count || count > kMaxStreamString)
      return ZrUtf8String();
    uint64_t position = stream->tell(), length = stream->length();
    if (position > length || count > length - position) return ZrUtf8String();
    std::string bytes(count, '\0');
    if (count > 0 && stream->getBytes(&bytes[0], count) != count) return ZrUtf8String();
    return ZrUtf8String(std::move(bytes));
  });
}
