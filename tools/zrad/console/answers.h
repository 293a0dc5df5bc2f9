// How the console shows what the service answers.
#pragma once

#include <functional>
#include <string>

#include <zrad/remotedebug.h>

namespace zradtool {

// `text` as the console prints it: UTF-8, "\r\n" made "\n", ending in "\n" unless it is empty.
//   "a\r\nb\r\n" => "a\nb\n";  "新建成功！" => "新建成功！\n";  "" => ""
std::string answerText(const ZrString& text);

// The console's callback. Answers arrive on the client's socket thread; each one is handed,
// finished, to `write`, which must be safe to call from that thread.
class AnswerPrinter : public NetCommandClientCallBack {
 public:
  AnswerPrinter(std::function<void(const std::string&)> write, std::string passPhrase = {})
      : m_write(std::move(write)), m_passPhrase(std::move(passPhrase)) {}
  // Gives the phrase it was made with without asking (empty unless --pass-file named one: a
  // service without a pass check accepts any).
  bool inputPassPhrase(ZrString& passPhrase) override;
  bool showText(const ZrString& word, const ZrString& text) override;

 private:
  std::function<void(const std::string&)> m_write;
  std::string m_passPhrase;
};

}  // namespace zradtool
