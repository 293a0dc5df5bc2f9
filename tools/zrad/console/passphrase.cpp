// The pass phrase of a pass file: its first line.
#include "console/passphrase.h"

#include "command.h"

namespace zradtool {

bool readPassPhrase(const std::string& file, std::string& phrase, std::string& error) {
  std::string bytes;
  if (!readAll(file, bytes, error)) {
    error = "cannot read " + operandName(file, true) + ": " + error;
    return false;
  }
  phrase = bytes.substr(0, bytes.find_first_of("\r\n"));
  if (phrase.empty()) {
    error = operandName(file, true) + " holds no pass phrase";
    return false;
  }
  return true;
}

}  // namespace zradtool
