// The console's line grammar and the command words, read from the library's help text so the
// console never keeps a second copy of the command table.
#include "console/commandline.h"

#include <algorithm>
#include <cctype>

#include <zrad/remotedebug.h>

namespace zradtool {
namespace {

// Catches the help text that cmdHelp shows.
class HelpText : public NetCommandClientCallBack {
 public:
  bool inputPassPhrase(ZrString&) override { return false; }
  bool showText(const ZrString&, const ZrString& text) override {
    m_text = ZrUtf8String(text).c_str();
    return true;
  }
  std::string m_text;
};

std::vector<std::string> wordsOfHelp() {
  HelpText help;
  CNetCommand::cmdHelp(&help);
  std::vector<std::string> words;
  size_t start = 0;
  while (start < help.m_text.size()) {
    size_t end = help.m_text.find("\r\n", start);
    if (end == std::string::npos) end = help.m_text.size();
    const std::string line = help.m_text.substr(start, end - start);
    const std::string word = line.substr(0, line.find(' '));
    // "!..." and "(...)" lines describe what the host application does with such lines.
    if (!word.empty() && std::isupper(static_cast<unsigned char>(word[0]))) words.push_back(word);
    start = end + 2;
  }
  words.push_back("CHECKPASS");
  return words;
}

}  // namespace

bool parseConsoleLine(const std::string& text, ConsoleLine& line, std::string& error) {
  std::vector<std::string> fields;
  size_t i = 0;
  for (;;) {
    while (i < text.size() && std::isspace(static_cast<unsigned char>(text[i]))) ++i;
    if (i == text.size()) break;
    std::string field;
    bool quoted = false;
    for (; i < text.size() && (quoted || !std::isspace(static_cast<unsigned char>(text[i]))); ++i) {
      if (text[i] == '"')
        quoted = !quoted;
      else
        field += text[i];
    }
    if (quoted) {
      error = "the quote is not closed";
      return false;
    }
    fields.push_back(field);
  }
  if (fields.size() > 3) {
    error = "a command takes at most two arguments";
    return false;
  }
  fields.resize(3);
  line.word = fields[0];
  std::transform(line.word.begin(), line.word.end(), line.word.begin(),
                 [](unsigned char c) { return static_cast<char>(std::toupper(c)); });
  line.arg1 = fields[1];
  line.arg2 = fields[2];
  return true;
}

const std::vector<std::string>& commandWords() {
  static const std::vector<std::string> words = wordsOfHelp();
  return words;
}

bool isCommandWord(const std::string& word) {
  const std::vector<std::string>& words = commandWords();
  return std::find(words.begin(), words.end(), word) != words.end();
}

}  // namespace zradtool
