// How the console shows what the service answers.
#include "console/answers.h"

namespace zradtool {

std::string answerText(const ZrString& text) {
  const std::string utf8 = ZrUtf8String(text).c_str();
  std::string shown;
  shown.reserve(utf8.size() + 1);
  for (size_t i = 0; i < utf8.size(); ++i)
    if (!(utf8[i] == '\r' && i + 1 < utf8.size() && utf8[i + 1] == '\n')) shown += utf8[i];
  if (!shown.empty() && shown.back() != '\n') shown += '\n';
  return shown;
}

bool AnswerPrinter::inputPassPhrase(ZrString& passPhrase) {
  passPhrase = ZrString();
  return true;
}

bool AnswerPrinter::showText(const ZrString&, const ZrString& text) {
  const std::string shown = answerText(text);
  if (!shown.empty()) m_write(shown);
  return true;
}

}  // namespace zradtool
