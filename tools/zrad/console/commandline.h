// The console's line grammar: a command word and up to two arguments.
//
//   "ls -l *.txt"         => word "LS", arguments "-l" and "*.txt"
//   "up \"my file.txt\""  => word "UP", argument "my file.txt"
//   "   "                 => empty word: nothing to do
//   "rn a b c"            => refused: more than two arguments
//   "up \"a"              => refused: the quote is not closed
#pragma once

#include <string>
#include <vector>

namespace zradtool {

struct ConsoleLine {
  std::string word;  // upper-cased (ASCII)
  std::string arg1;
  std::string arg2;
};

// Splits `text` at blanks; double quotes keep blanks inside an argument. false, with `error`
// saying why, when the line cannot be split.
bool parseConsoleLine(const std::string& text, ConsoleLine& line, std::string& error);

// The command words the service understands, in the order of the library's help text, and
// CHECKPASS (which has no help line).
const std::vector<std::string>& commandWords();
bool isCommandWord(const std::string& word);

}  // namespace zradtool
