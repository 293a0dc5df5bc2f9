// The pass phrase that `zrad serve --pass-file` demands and `zrad console --pass-file` gives.
#pragma once

#include <string>

namespace zradtool {

// The first line of `file` ("-": standard input), without its line end. False, with the cause in
// `error`, when the file cannot be read or its first line is empty.
bool readPassPhrase(const std::string& file, std::string& phrase, std::string& error);

}  // namespace zradtool
