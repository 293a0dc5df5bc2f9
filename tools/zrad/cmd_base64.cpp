// zrad base64: Base64 encoding and decoding of a file or of standard input.
//
// Encoding prints one line of text; decoding ignores line breaks and other white space in
// its input and writes the bytes to standard output.
#include <cctype>
#include <climits>
#include <cstdio>
#include <string>
#include <vector>

#include <zrad/crypto.h>

#include "command.h"

using namespace zradtool;

namespace {

const char kName[] = "base64";

// The whole content of the file, or of standard input for "-".
bool readAll(const std::string& path, std::string& bytes) {
  FILE* in = path == "-" ? stdin : std::fopen(path.c_str(), "rb");
  if (!in) return false;
  char block[16 * 1024];
  while (size_t got = std::fread(block, 1, sizeof block, in)) bytes.append(block, got);
  const bool ok = !std::ferror(in);
  if (in != stdin) std::fclose(in);
  return ok;
}

int encode(const std::string& bytes) {
  if (bytes.size() > size_t(INT_MAX)) return fail(kName, "input too large");
  // c_str() keeps a zero byte after the data, which a final pair of bytes reads.
  const std::string text =
      CBase64().Encode(reinterpret_cast<const unsigned char*>(bytes.c_str()), int(bytes.size()));
  std::printf("%s\n", text.c_str());
  return kOk;
}

int decode(const std::string& input) {
  std::string text;
  for (char c : input)
    if (!std::isspace(static_cast<unsigned char>(c))) text += c;
  if (text.size() % 4) return fail(kName, "input length is not a multiple of 4");
  if (text.size() / 4 * 3 >= size_t(UINT_MAX)) return fail(kName, "input too large");
  unsigned length = unsigned(text.size() / 4 * 3) + 1;
  std::vector<unsigned char> bytes(length);
  if (!CBase64().Decode(text.c_str(), bytes.data(), length)) return fail(kName, "cannot decode");
  if (std::fwrite(bytes.data(), 1, length, stdout) != length) return fail(kName, "cannot write");
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
  std::string input;
  if (!readAll(path, input)) return fail(kName, "cannot read " + path);
  return decoding ? decode(input) : encode(input);
}

const FamilyRegistration kRegistration(kFamily);

}  // namespace
