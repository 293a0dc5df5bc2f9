// File operands of the zrad subcommands: "-" for standard input and output, whole reads,
// and writes that replace a file only when complete.
#include <cerrno>
#include <cstring>

#include "command.h"

namespace zradtool {

namespace {

int closeUnlessStd(FILE* file) { return file == stdin || file == stdout ? 0 : std::fclose(file); }

std::string systemError() { return std::strerror(errno); }

}  // namespace

std::string operandName(const std::string& operand, bool input) {
  if (!isStdStream(operand)) return operand;
  return input ? "standard input" : "standard output";
}

Stream openInput(const std::string& operand, std::string& cause) {
  FILE* file = isStdStream(operand) ? stdin : std::fopen(operand.c_str(), "rb");
  if (!file) cause = systemError();
  return Stream(file, closeUnlessStd);
}

bool readAll(const std::string& operand, std::string& bytes, std::string& cause) {
  Stream in = openInput(operand, cause);
  if (!in) return false;
  char block[64 * 1024];
  while (size_t got = std::fread(block, 1, sizeof block, in.get())) bytes.append(block, got);
  if (!std::ferror(in.get())) return true;
  cause = systemError();
  return false;
}

bool writeAll(const std::string& operand, std::string_view bytes, std::string& cause) {
  if (isStdStream(operand)) {
    if (std::fwrite(bytes.data(), 1, bytes.size(), stdout) == bytes.size() && !std::fflush(stdout))
      return true;
    cause = systemError();
    return false;
  }
  const std::string partial = operand + ".zrad-part";
  FILE* out = std::fopen(partial.c_str(), "wb");
  if (!out) {
    cause = systemError();
    return false;
  }
  bool ok = std::fwrite(bytes.data(), 1, bytes.size(), out) == bytes.size();
  ok = !std::fclose(out) && ok;
  if (ok && !std::rename(partial.c_str(), operand.c_str())) return true;
  cause = systemError();
  std::remove(partial.c_str());
  return false;
}

}  // namespace zradtool
