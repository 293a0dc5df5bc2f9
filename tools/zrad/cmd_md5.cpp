// zrad md5: MD5 digests of files or of standard input, in md5sum's format, and checks of them.
//
// Every input is streamed through the library's MD5 engine, so a pipe of any size needs no
// more memory than one block.
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

std::vector<std::string> operands;
bool shortForm = false, upper = false, checking = false;

// The digest of an operand as 32 (or with --short 16) hexadecimal digits; empty with `cause`
// when it cannot be read.
std::string digestOf(const std::string& operand, std::string& cause) {
  Stream in = openInput(operand, cause);
  if (!in) return std::string();
  MD5 context;
  MD5Open(&context);
  unsigned char block[16 * 1024];
  while (size_t got = std::fread(block, 1, sizeof block, in.get())) MD5Digest(&context, block, unsigned(got));
  if (std::ferror(in.get())) {
    cause = std::strerror(errno);
    return std::string();
  }
  unsigned char digest[16];
  MD5Close(&context, digest);
  std::string hex;
  char pair[3];
  for (unsigned char b : digest) {
    std::snprintf(pair, sizeof pair, upper ? "%02X" : "%02x", b);
    hex += pair;
  }
  return shortForm ? hex.substr(8, 16) : hex;
}

int printDigests() {
  int status = kOk;
  for (const std::string& operand : operands) {
    std::string cause;
    const std::string digest = digestOf(operand, cause);
    if (digest.empty()) status = fail(operandName(operand, true), cause);
    else std::printf("%s  %s\n", digest.c_str(), operand.c_str());
  }
  return status;
}

bool isHex(const std::string& text) { return text.find_first_not_of("0123456789abcdefABCDEF") == std::string::npos; }

bool sameDigest(const std::string& a, const std::string& b) {
  return std::equal(a.begin(), a.end(), b.begin(), b.end(),
                    [](char x, char y) { return std::tolower(x) == std::tolower(y); });
}

// Checks the "DIGEST  NAME" lines of one list; prints "NAME: OK" or "NAME: FAILED" for each.
int checkList(const std::string& list, int& mismatches, int& unreadable) {
  std::string text, cause;
  if (!readAll(list, text, cause)) return fail(operandName(list, true), cause);
  int status = kOk;
  size_t lineNumber = 0, checked = 0;
  for (size_t start = 0; start < text.size();) {
    size_t end = text.find('\n', start);
    if (end == std::string::npos) end = text.size();
    const std::string line = text.substr(start, end - start);
    start = end + 1;
    ++lineNumber;
    const size_t gap = line.find("  ");
    const std::string expected = line.substr(0, gap);
    if (gap == std::string::npos || (gap != 32 && gap != 16) || !isHex(expected) || gap + 2 == line.size()) {
      status = fail(operandName(list, true) + ":" + std::to_string(lineNumber), "not a \"DIGEST  NAME\" line");
      continue;
    }
    const std::string name = line.substr(gap + 2);
    shortForm = gap == 16;
    ++checked;
    const std::string digest = digestOf(name, cause);
    if (digest.empty()) {
      fail(name, cause);
      ++unreadable;
    } else if (sameDigest(digest, expected)) {
      std::printf("%s: OK\n", name.c_str());
    } else {
      std::printf("%s: FAILED\n", name.c_str());
      ++mismatches;
    }
  }
  // A list that checks nothing must not pass as if every file were intact.
  if (checked == 0 && status == kOk) status = fail(operandName(list, true), "no \"DIGEST  NAME\" lines found");
  return status;
}

int checkLists() {
  int status = kOk, mismatches = 0, unreadable = 0;
  for (const std::string& list : operands)
    if (checkList(list, mismatches, unreadable) != kOk) status = kFailed;
  if (mismatches) fail("WARNING", std::to_string(mismatches) + " computed checksum(s) did NOT match");
  if (unreadable) fail("WARNING", std::to_string(unreadable) + " listed file(s) could not be read");
  return status == kOk && !mismatches && !unreadable ? kOk : kFailed;
}

void add(CLI::App& zrad) {
  CLI::App* cmd = zrad.add_subcommand("md5", "MD5 digests of files, or checks of a list of them");
  cmd->footer(
      "Prints \"DIGEST  NAME\" for each FILE as md5sum does (cut -c1-32 takes the digest).\n"
      "With -c, reads such lines from each FILE and prints \"NAME: OK\" or \"NAME: FAILED\";\n"
      "the status is 1 when any digest differs or a listed file cannot be read.");
  cmd->add_option("FILE", operands, "files to digest; none or \"-\": standard input");
  cmd->add_flag("--short", shortForm, "the 16-digit form: digest bytes 4 to 11");
  cmd->add_flag("--upper", upper, "capital letters");
  cmd->add_flag("-c,--check", checking, "check the digests listed in each FILE");
  onRun(cmd, [] {
    if (operands.empty()) operands.push_back("-");
    return checking ? checkLists() : printDigests();
  });
}

const Registration kRegistration("md5", add);

}  // namespace
