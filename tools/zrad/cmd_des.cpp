// zrad des: encrypts or decrypts a file with the DES message codec under a pass phrase.
//
// The output replaces OUT only when complete, so a failed run never leaves a truncated OUT
// (IN and OUT may be the same file).
#include <climits>
#include <string>

#include <zrad/crypto.h>

#include "command.h"

using namespace zradtool;

namespace {

std::string mode, pass, inPath, outPath;

int run() {
  std::string input, output, cause;
  if (!readAll(inPath, input, cause)) return fail("cannot read " + operandName(inPath, true), cause);
  if (input.size() > size_t(INT_MAX)) return fail("cannot read " + inPath, "larger than 2 GiB");
  if (mode == "encrypt") {
    DES_Encrypt(&input[0], int(input.size()), pass, output);
  } else if (!DES_Decrypt(&input[0], int(input.size()), pass, output)) {
    return fail(operandName(inPath, true) + " is not an encrypted message",
                "its length prefix does not match its size");
  }
  if (!writeAll(outPath, output, cause)) return fail("cannot write " + operandName(outPath, false), cause);
  return kOk;
}

void add(CLI::App& zrad) {
  CLI::App* cmd = zrad.add_subcommand("des", "DES-CBC message codec keyed by a pass phrase");
  cmd->footer(
      "encrypt: OUT = 4-byte length of IN, then the DES-CBC ciphertext of IN\n"
      "decrypt: the reverse; fails when IN's length prefix does not match its size\n"
      "Key and IV come from the MD5 of PHRASE. \"-\" for IN or OUT: standard input or output.");
  cmd->add_option("MODE", mode, "encrypt or decrypt")->required()->check(CLI::IsMember({"encrypt", "decrypt"}));
  cmd->add_option("IN", inPath, "the input")->required();
  cmd->add_option("OUT", outPath, "the output")->required();
  cmd->add_option("--pass", pass, "the pass phrase")->required()->type_name("PHRASE");
  onRun(cmd, run);
}

const Registration kRegistration("des", add);

}  // namespace
