// Fuzz target: file bytes through the byte-order-mark decoder, and a stream of length-prefixed
// strings read until it runs out.
#include <cstddef>
#include <cstdint>
#include <string>

#include <zrad/files.h>

#include "files/content.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  const std::string bytes(reinterpret_cast<const char*>(data), size);
  ZrUtf8String text = zrad::files::decodeContent(bytes);
  // Whatever was read must survive the way back out.
  for (int mode = 0; mode < 6; ++mode) zrad::files::encodeContent(text, mode);

  ZrMemoryStreamPtr stream = ZrMemoryStream::createNew();
  stream->putBytes(data, static_cast<uint32_t>(size));
  stream->rewind();
  while (!stream->isEof()) {
    uint64_t before = stream->tell();
    zrutRdUtf8String(stream.get());
    if (stream->tell() == before) break;  // nothing more could be read
  }
  return 0;
}
