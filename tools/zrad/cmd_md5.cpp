// zrad md5: the MD5 digest of a file or of standard input in hexadecimal.
//
// Files go through MD5_File32; standard input is streamed through the engine, so a pipe of
// any size needs no more memory than one block.
#include <cstdio>
#include <string>

#include <zrad/crypto.h>

#include "command.h"

using namespace zradtool;

namespace {

const char kName[] = "md5";

std::string digestOfStdin(bool upper) {
  MD5 context;
  MD5Open(&context);
  unsigned char block[16 * 1024];
  while (size_t got = std::fread(block, 1, sizeof block, stdin))
    MD5Digest(&context, block, unsigned(got));
  if (std::ferror(stdin)) return std::string();
  unsigned char digest[16];
  MD5Close(&context, digest);
  std::string hex;
  char pair[3];
  for (unsigned char b : digest) {
    std::snprintf(pair, sizeof pair, upper ? "%02X" : "%02x", b);
    hex += pair;
  }
  return hex;
}

int run(const Args& args);

const Family kFamily{
    kName, "MD5 digest of a file or standard input",
    "usage: zrad md5 [--short] [--upper] FILE|-\n"
    "  prints the MD5 digest of FILE (\"-\": standard input) as 32 hexadecimal digits\n"
    "  --short  the 16-digit form: digest bytes 4 to 11\n"
    "  --upper  capital letters\n",
    run};

int run(const Args& args) {
  bool shortForm = false, upper = false;
  std::string operand;
  int operands = 0;
  for (const std::string& arg : args) {
    if (arg == "--short") shortForm = true;
    else if (arg == "--upper") upper = true;
    else if (arg.size() > 1 && arg[0] == '-') return usageError(kFamily, "unknown option " + arg);
    else operand = arg, ++operands;
  }
  if (operands != 1) return usageError(kFamily, "expected one FILE or -");
  const std::string digest = operand == "-" ? digestOfStdin(upper) : MD5_File32(operand, upper);
  if (digest.empty())
    return fail(kName, "cannot read " + (operand == "-" ? std::string("standard input") : operand));
  std::printf("%s\n", (shortForm ? digest.substr(8, 16) : digest).c_str());
  return kOk;
}

const FamilyRegistration kRegistration(kFamily);

}  // namespace
