// zrad des: encrypts or decrypts a file with the DES message codec under a pass phrase.
//
// The output is written to a temporary file beside OUT and renamed over it only when
// complete, so a failed run never leaves a truncated OUT (IN and OUT may be the same file).
#include <climits>
#include <cstdio>
#include <string>

#include <zrad/crypto.h>

#include "command.h"

using namespace zradtool;

namespace {

const char kName[] = "des";

// The whole content of the file, or of standard input for "-".
bool readInput(const std::string& path, std::string& bytes) {
  FILE* in = path == "-" ? stdin : std::fopen(path.c_str(), "rb");
  if (!in) return false;
  char block[16 * 1024];
  while (size_t got = std::fread(block, 1, sizeof block, in)) bytes.append(block, got);
  const bool ok = !std::ferror(in);
  if (in != stdin) std::fclose(in);
  return ok;
}

bool writeOutput(const std::string& path, const std::string& bytes) {
  if (path == "-")
    return std::fwrite(bytes.data(), 1, bytes.size(), stdout) == bytes.size() && !std::fflush(stdout);
  const std::string partial = path + ".zrad-part";
  FILE* out = std::fopen(partial.c_str(), "wb");
  if (!out) return false;
  bool ok = std::fwrite(bytes.data(), 1, bytes.size(), out) == bytes.size();
  ok = !std::fclose(out) && ok;
  if (ok && !std::rename(partial.c_str(), path.c_str())) return true;
  std::remove(partial.c_str());
  return false;
}

int run(const Args& args);

const Family kFamily{
    kName, "DES-CBC message codec keyed by a pass phrase",
    "usage: zrad des encrypt|decrypt --pass PHRASE IN OUT\n"
    "  encrypt: OUT = 4-byte length of IN, then DES-CBC ciphertext of IN\n"
    "  decrypt: the reverse; fails when IN's length prefix does not match its size\n"
    "  IN or OUT \"-\": standard input or output. Key and IV come from the MD5 of PHRASE.\n",
    run};

int run(const Args& args) {
  std::string pass, operands[3];
  int count = 0;
  bool havePass = false;
  for (size_t i = 0; i < args.size(); ++i) {
    if (args[i] == "--pass") {
      if (++i == args.size()) return usageError(kFamily, "--pass needs a PHRASE");
      pass = args[i];
      havePass = true;
    } else if (args[i].size() > 1 && args[i][0] == '-') {
      return usageError(kFamily, "unknown option " + args[i]);
    } else if (count == 3) {
      return usageError(kFamily, "too many arguments");
    } else {
      operands[count++] = args[i];
    }
  }
  if (count != 3 || !havePass) return usageError(kFamily, "expected encrypt|decrypt --pass PHRASE IN OUT");
  const std::string &mode = operands[0], &inPath = operands[1], &outPath = operands[2];
  if (mode != "encrypt" && mode != "decrypt") return usageError(kFamily, "unknown mode " + mode);

  std::string input, output;
  if (!readInput(inPath, input)) return fail(kName, "cannot read " + inPath);
  if (input.size() > size_t(INT_MAX)) return fail(kName, inPath + " is too large (2 GiB at most)");
  if (mode == "encrypt") {
    DES_Encrypt(&input[0], int(input.size()), pass, output);
  } else if (!DES_Decrypt(&input[0], int(input.size()), pass, output)) {
    return fail(kName, inPath + " is not an encrypted message: its length prefix does not match its size");
  }
  if (!writeOutput(outPath, output)) return fail(kName, "cannot write " + outPath);
  return kOk;
}

const FamilyRegistration kRegistration(kFamily);

}  // namespace
