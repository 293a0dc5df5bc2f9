// Fuzz target: arbitrary bytes through the JSON text readers.
//
// Whatever parses must write back as text that parses again (doubles may move by an ulp, as the
// parser's default precision allows), must survive the binary round trip unchanged, and must
// clone into a tree with the same text that compares equal both ways.
#include <cstdlib>
#include <string>

#include <zrad/json.h>

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  if (size > (1u << 20)) return 0;
  const std::string bytes(reinterpret_cast<const char*>(data), size);
  ZrJson detected;
  detected.readFromStream(bytes.data(), static_cast<unsigned>(bytes.size()), -1);

  ZrJsonPtr tree = ZrJson::readjson(ZrUtf8String(bytes));
  if (!tree) return 0;
  const std::string text = tree->writeJson().str();
  if (text.find("nan") != std::string::npos || text.find("inf") != std::string::npos) return 0;
  // A zero byte in a string is written as it is, and the parser takes it for the end of the text.
  if (text.find('\0') == std::string::npos && !ZrJson::readjson(ZrUtf8String(text))) std::abort();
  ZrJsonPtr copy = tree->clone();
  if (!copy || copy->writeJson().str() != text || !copy->bEqual(tree) || !tree->bEqual(copy)) std::abort();

  ZrMemoryStreamPtr stream = ZrMemoryStream::createNew();
  if (!ZrJson(tree).write2Stream(stream.get(), ZrJson::eBinary)) std::abort();
  stream->rewind();
  ZrJson back;
  if (!back.readBinaryStream(stream.get()) || back->writeJson().str() != text) std::abort();
  return 0;
}
