// zrad base64: Base64 encoding and decoding of a file or of standard input.
//
// Both directions stream: encoding turns 48 KiB of input at a time (a multiple of 3 bytes,
// so the pieces join into one text) into one output line; decoding drops white space and
// decodes whole groups of four characters as they arrive.
#include <cctype>
#include <cstdio>
#include <memory>
#include <string>
#include <vector>

#include <zrad/crypto.h>

#include "command.h"

using namespace zradtool;

namespace {

const char kName[] = "base64";
constexpr size_t kChunk = 48 * 1024;

bool encode(FILE* in) {
  // One byte more than a chunk: a final pair of bytes has Encode read the byte after it.
  std::vector<unsigned char> block(kChunk + 1);
  while (size_t got = std::fread(block.data(), 1, kChunk, in)) {
    block[got] = 0;
    std::fputs(CBase64().Encode(block.data(), int(got)).c_str(), stdout);
  }
  if (std::ferror(in)) return false;
  std::fputc('\n', stdout);
  return true;
}

// Decodes the whole groups at the front of `text` to standard output and keeps the rest.
bool decodeGroups(std::string& text) {
  const size_t whole = text.size() / 4 * 4;
  if (!whole) return true;
  const std::string groups = text.substr(0, whole);
  std::vector<unsigned char> bytes(whole / 4 * 3);
  unsigned length = unsigned(bytes.size());
  if (!CBase64().Decode(groups.c_str(), bytes.data(), length)) return false;
  std::fwrite(bytes.data(), 1, length, stdout);
  text.erase(0, whole);
  return true;
}

int decode(FILE* in) {
  std::string text;
  char block[kChunk];
  while (size_t got = std::fread(block, 1, sizeof block, in)) {
    for (size_t i = 0; i < got; ++i)
      if (!std::isspace(static_cast<unsigned char>(block[i]))) text += block[i];
    if (!decodeGroups(text)) return fail(kName, "cannot decode");
  }
  if (std::ferror(in)) return fail(kName, "cannot read the input");
  if (!text.empty()) return fail(kName, "input length is not a multiple of 4");
  return kOk;
}

int run(const Args& args);

const Family kFamily{kName, "Base64 encoding and decoding",
                     "usage: zrad base64 [-d] [FILE|-]\n"
                     "  encodes FILE (default \"-\": standard input) as one line of Base64\n"
                     "  -d  decodes instead; white space in the input is ignored\n",
                     run};

int run(const Args& args) {
  bool decoding = false;
  std::string path = "-";
  int operands = 0;
  for (const std::string& arg : args) {
    if (arg == "-d") decoding = true;
    else if (arg.size() > 1 && arg[0] == '-') return usageError(kFamily, "unknown option " + arg);
    else path = arg, ++operands;
  }
  if (operands > 1) return usageError(kFamily, "expected at most one FILE");
  std::unique_ptr<FILE, int (*)(FILE*)> file(path == "-" ? nullptr : std::fopen(path.c_str(), "rb"),
                                             std::fclose);
  FILE* in = path == "-" ? stdin : file.get();
  if (!in) return fail(kName, "cannot read " + path);
  if (decoding) return decode(in);
  return encode(in) ? kOk : fail(kName, "cannot read " + path);
}

const FamilyRegistration kRegistration(kFamily);

}  // namespace
