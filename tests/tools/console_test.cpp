// The console's pure parts: splitting a line, the answer text, the progress line, the words.
#include <gtest/gtest.h>

#include "console/answers.h"
#include "console/commandline.h"
#include "console/progress.h"

using namespace zradtool;

TEST(ConsoleLineTest, SplitsWordAndTwoArguments) {
  struct Row {
    const char* text;
    bool ok;
    const char* word;
    const char* arg1;
    const char* arg2;
  };
  const Row rows[] = {
      {"ls -l *.txt", true, "LS", "-l", "*.txt"},
      {"  down\ta.txt  ", true, "DOWN", "a.txt", ""},
      {"up \"my file.txt\"", true, "UP", "my file.txt", ""},
      {"rn \"\" b", true, "RN", "", "b"},
      {"md a\"b c\"d", true, "MD", "ab cd", ""},
      {"Hello 欢迎", true, "HELLO", "欢迎", ""},
      {"", true, "", "", ""},
      {"rn a b c", false, "", "", ""},
      {"up \"a", false, "", "", ""},
  };
  for (size_t i = 0; i < sizeof rows / sizeof rows[0]; ++i) {
    ConsoleLine line;
    std::string error;
    ASSERT_EQ(parseConsoleLine(rows[i].text, line, error), rows[i].ok) << "row " << i;
    if (!rows[i].ok) {
      EXPECT_FALSE(error.empty()) << "row " << i;
      continue;
    }
    EXPECT_EQ(line.word, rows[i].word) << "row " << i;
    EXPECT_EQ(line.arg1, rows[i].arg1) << "row " << i;
    EXPECT_EQ(line.arg2, rows[i].arg2) << "row " << i;
  }
}

TEST(ConsoleLineTest, CommandWordsComeFromTheHelpText) {
  const std::vector<std::string>& words = commandWords();
  ASSERT_EQ(words.size(), 20u);  // 21 help lines without "!" and "(", and CHECKPASS
  EXPECT_EQ(words.front(), "HELLO");
  EXPECT_EQ(words[2], "LOF");
  EXPECT_EQ(words.back(), "CHECKPASS");
  for (const char* word : {"UP", "DOWN", "FIND", "AF", "DEBUG"}) EXPECT_TRUE(isCommandWord(word)) << word;
  for (const char* word : {"HELP", "CN", "ls", "!", ""}) EXPECT_FALSE(isCommandWord(word)) << word;
}

TEST(ConsoleOutputTest, AnswerTextAndProgressLine) {
  EXPECT_EQ(answerText(L"a\r\nb\r\n"), "a\nb\n");
  EXPECT_EQ(answerText(L"新建成功！"), "新建成功！\n");
  EXPECT_EQ(answerText(L"x\ry"), "x\ry\n");
  EXPECT_EQ(answerText(L""), "");

  const std::pair<uint64_t, const char*> sizes[] = {
      {0, "0 B"}, {1023, "1023 B"}, {1024, "1.0 KiB"}, {1536, "1.5 KiB"},
      {5ull << 20, "5.0 MiB"}, {3ull << 30, "3.0 GiB"}, {5ull << 40, "5.0 TiB"}, {5ull << 50, "5120.0 TiB"}};
  for (const auto& row : sizes) EXPECT_EQ(formatBytes(row.first), row.second) << row.first;

  EXPECT_EQ(formatProgress("UP", 5ull << 20, 10ull << 20, 2),
            "UP    5.0 MiB of 10.0 MiB  [##########          ]  2.5 MiB/s");
  EXPECT_EQ(formatProgress("DOWN", 1536, 0, 1), "DOWN  1.5 KiB  1.5 KiB/s");
  // More bytes than announced (framing) keep the bar full; no time yet means no rate.
  EXPECT_EQ(formatProgress("UP", 2048, 1024, 0), "UP    2.0 KiB of 1.0 KiB  [####################]  0 B/s");
}
