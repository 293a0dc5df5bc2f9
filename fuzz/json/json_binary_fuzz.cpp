// Fuzz target: arbitrary bytes through the binary element reader.
//
// A stream that decodes must encode back to a stream that decodes to the same JSON text. Its
// clone must encode to the same bytes and compare with it as it compares with itself.
#include <cstdlib>
#include <cstring>
#include <string>

#include <zrad/json.h>

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  if (size > (1u << 20)) return 0;
  ZrMemoryStreamPtr stream = ZrMemoryStream::createNew();
  stream->putByte(0xE0);
  if (size) stream->putBytes(data, static_cast<uint32_t>(size));
  stream->rewind();
  ZrJson tree;
  if (!tree.readBinaryStream(stream.get())) return 0;
  const std::string text = tree->writeJson().str();

  ZrMemoryStreamPtr again = ZrMemoryStream::createNew();
  if (!tree.write2Stream(again.get(), ZrJson::eBinary)) std::abort();
  again->rewind();
  ZrJson back;
  if (!back.readBinaryStream(again.get()) || back->writeJson().str() != text) std::abort();

  ZrJson copy(tree->clone());
  ZrMemoryStreamPtr copied = ZrMemoryStream::createNew();
  if (!copy.write2Stream(copied.get(), ZrJson::eBinary) || copied->length() != again->length() ||
      std::memcmp(copied->data(), again->data(), again->length()) != 0)
    std::abort();
  if (copy->bEqual(tree) != tree->bEqual(tree)) std::abort();
  return 0;
}
