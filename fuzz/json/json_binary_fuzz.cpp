// Fuzz target: arbitrary bytes through the binary element reader.
//
// A stream that decodes must encode back to a stream that decodes to the same JSON text. Its
// clone must encode to the same bytes and compare with it as it compares with itself. The same
// bytes in a file stream (for one input in eight), which the reader copies in rather than reads
// in place, must decode alike and leave the stream where the memory stream was left.
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>

#include <zrad/json.h>

namespace {

// A scratch file of this process, removed at exit.
struct ScratchFile {
  const std::string path = "/tmp/fuzz_json_binary." + std::to_string(getpid());
  ~ScratchFile() { std::remove(path.c_str()); }
};

void checkFileStream(ZrMemoryStream& memory, bool decoded, const std::string& text) {
  static const ScratchFile scratch;
  const std::string& path = scratch.path;
  FILE* f = std::fopen(path.c_str(), "wb");
  if (!f || std::fwrite(memory.data(), 1, memory.length(), f) != memory.length() || std::fclose(f) != 0) std::abort();
  ZrStreamBufPtr file = zrSystemServices()->createFile(ZrUtf8String(path), kFileRead);
  ZrJson tree;
  const bool ok = tree.readBinaryStream(file.get());
  if (ok != decoded || file->tell() != memory.tell() || (ok && tree->writeJson().str() != text)) std::abort();
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  if (size > (1u << 20)) return 0;
  ZrMemoryStreamPtr stream = ZrMemoryStream::createNew();
  stream->putByte(0xE0);
  if (size) stream->putBytes(data, static_cast<uint32_t>(size));
  stream->rewind();
  ZrJson tree;
  const bool decoded = tree.readBinaryStream(stream.get());
  const std::string text = decoded ? tree->writeJson().str() : std::string();
  if (size % 8 == 0) checkFileStream(*stream, decoded, text);  // a file costs ten reads in memory
  if (!decoded) return 0;

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
