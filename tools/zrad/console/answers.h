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
  explicit AnswerPrinter(std::function<void(const std::string&)> write) : m_write(std::move(write)) {}
  // The service checks no pass phrase, so an empty one is given without asking.
  bool inputPassPhrase(ZrString& passPhrase) override;
  bool showText(const ZrString& word, const ZrString& text) override;

 private:
  std::function<void(const std::string&)> m_write;
};

}  // namespace zradtool
