// zrad base64: Base64 encoding and decoding of a file or of standard input.
//
// Encoding streams: 48 KiB of input at a time (a multiple of 3 bytes, so the pieces join into
// one text) become one output line. Decoding checks the whole input first and refuses it
// without writing anything unless it is standard Base64 (line breaks allowed); --lenient
// instead drops white space and decodes groups of four as they arrive, by the library's rules.
#include <algorithm>
#include <cctype>
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <string>
#include <vector>

#include <zrad/crypto.h>

#include "command.h"

using namespace zradtool;

namespace {

constexpr size_t kChunk = 48 * 1024;

std::string path = "-";
bool decoding = false, lenient = false;

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

int decodeLeniently(FILE* in) {
  std::string text;
  char block[kChunk];
  while (size_t got = std::fread(block, 1, sizeof block, in)) {
    for (size_t i = 0; i < got; ++i)
      if (!std::isspace(static_cast<unsigned char>(block[i]))) text += block[i];
    if (!decodeGroups(text)) return fail("cannot decode " + operandName(path, true));
  }
  if (std::ferror(in)) return fail("cannot read " + operandName(path, true), std::strerror(errno));
  if (!text.empty()) return fail("cannot decode " + operandName(path, true), "its length is not a multiple of 4");
  return kOk;
}

bool inAlphabet(char c) { return std::isalnum(static_cast<unsigned char>(c)) || c == '+' || c == '/'; }

// `text` without its line breaks when it is standard Base64; else empty with the reason.
std::string strictGroups(const std::string& text, std::string& reason) {
  std::string groups;
  for (char c : text)
    if (c != '\n' && c != '\r') groups += c;
  const size_t padding = groups.size() - std::min(groups.size(), groups.find_last_not_of('=') + 1);
  for (size_t i = 0; i + padding < groups.size(); ++i) {
    if (inAlphabet(groups[i])) continue;
    reason = groups[i] == '=' ? "\"=\" before the end" : "a character outside the Base64 alphabet";
    return std::string();
  }
  if (groups.size() % 4) reason = "its length is not a multiple of 4";
  else if (padding > 2 || (padding && groups.size() == padding)) reason = "too much \"=\" padding";
  return reason.empty() ? groups : std::string();
}

int decodeStrictly() {
  std::string text, cause;
  if (!readAll(path, text, cause)) return fail("cannot read " + operandName(path, true), cause);
  std::string reason;
  std::string groups = strictGroups(text, reason);
  if (!reason.empty()) return fail("invalid input in " + operandName(path, true), reason);
  return decodeGroups(groups) ? kOk : fail("cannot decode " + operandName(path, true));
}

void add(CLI::App& zrad) {
  CLI::App* cmd = zrad.add_subcommand("base64", "Base64 encoding and decoding");
  cmd->footer(
      "Encodes FILE as one line of Base64. -d decodes standard Base64 (A-Z a-z 0-9 + /, \"=\" padding,\n"
      "line breaks anywhere) and refuses anything else with status 1 and no output.");
  cmd->add_option("FILE", path, "the input; none or \"-\": standard input");
  cmd->add_flag("-d,--decode", decoding, "decode instead of encoding");
  cmd->add_flag("--lenient", lenient,
                "decode by the library's rules: white space dropped, any other character counts as 0");
  onRun(cmd, [] {
    if (decoding && !lenient) return decodeStrictly();
    std::string cause;
    Stream in = openInput(path, cause);
    if (!in) return fail("cannot read " + operandName(path, true), cause);
    if (decoding) return decodeLeniently(in.get());
    return encode(in.get()) ? kOk : fail("cannot read " + operandName(path, true), std::strerror(errno));
  });
}

const Registration kRegistration("base64", add);

}  // namespace
