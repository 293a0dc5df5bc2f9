// The log sink: line format, level names, file and callback switches, threads, stack text;
// and the load-time log: inactive until named, three-line file, final open state.
#include <pthread.h>

#include <chrono>
#include <ctime>
#include <map>
#include <regex>
#include <sstream>
#include <thread>
#include <tuple>

#include <gtest/gtest.h>
#include <zrad/log.h>

#include "common/testdir.h"
#include "log/logline.h"
#include "log/logmsg.h"
#include "log/stacktext.h"

namespace {

// The file's lines; none when it does not exist.
std::vector<std::string> lines(const std::string& file) {
  std::vector<std::string> out;
  if (!exists(file)) return out;
  std::istringstream in(readFile(file));
  for (std::string line; std::getline(in, line);) out.push_back(line);
  return out;
}

struct Received {
  int level, line;
  std::string file, function, message;
  unsigned long thread;
};
std::vector<Received> g_received;

void receive(int level, int line, const char* file, const char* function, const char* message,
             unsigned long thread) {
  g_received.push_back({level, line, file, function, message, thread});
}

void receiveNothing(int, int, const char*, const char*, const char*, unsigned long) {}

// Logs to a file in a fresh directory at the default threshold, with no callback.
class LogSink : public ::testing::Test {
 protected:
  void SetUp() override {
    zr_set_Log_file(file.c_str());
    g_received.clear();
  }
  void TearDown() override {
    zr_attach_log_fun(nullptr);
    zr_set_print_log_to_file(1);
    zr_set_print_log_level(4);
  }
  TestDir dir;
  std::string file = dir / "zrad.log";
};

}  // namespace

TEST_F(LogSink, LineFormatAndLevelNames) {
  const char* names[] = {"info", "info", "info", "debug", "warnning", "error", "info", "info"};
  for (int level : {0, 1, 2, 3, 4, 5, 6, -1}) zr_Log(level, 12, "src/a.cpp", "fn", "hello world");
  std::vector<std::string> got = lines(file);
  ASSERT_EQ(got.size(), 8u);
  for (size_t i = 0; i < got.size(); ++i) {
    std::regex shape(R"(\d{4}-\d\d-\d\d \d\d:\d\d:\d\d\.\d{6}, src/a\.cpp \(12\)<fn>,\[)" +
                     std::string(names[i]) + R"(\],\{tid:0x[0-9a-f]+\} hello world)");
    EXPECT_TRUE(std::regex_match(got[i], shape)) << "row " << i << ": " << got[i];
  }
}

TEST(LogLine, SameBytesAsPrintf) {
  std::tm when{};
  when.tm_year = 126, when.tm_mon = 0, when.tm_mday = 2, when.tm_hour = 3, when.tm_min = 4,
  when.tm_sec = 7;
  struct Row { long micros; int line; const void* thread; };
  const Row rows[] = {{42, 12, reinterpret_cast<void*>(0x7f12abcdef00)}, {999999, -1, nullptr},
                      {0, 2147483647, reinterpret_cast<void*>(1)}};
  for (size_t i = 0; i < std::size(rows); ++i) {
    std::string got;
    zrad::detail::appendLogLine(got, when, rows[i].micros, "f.cpp", rows[i].line, "g", "debug",
                                rows[i].thread, "m");
    char want[512];
    std::snprintf(want, sizeof want, "%4d-%02d-%02d %02d:%02d:%02d.%06d, %s (%d)<%s>,[%s],{tid:%p} %s\n",
                  when.tm_year + 1900, when.tm_mon + 1, when.tm_mday, when.tm_hour, when.tm_min,
                  when.tm_sec, static_cast<int>(rows[i].micros), "f.cpp", rows[i].line, "g", "debug",
                  rows[i].thread, "m");
    EXPECT_EQ(got, want) << "row " << i;
  }
}

TEST_F(LogSink, FileFlagCallbackAndNullName) {
  zr_attach_log_fun(receive);
  zr_set_print_log_to_file(0);
  zr_Log(3, 7, "src/b.cpp", "g", "to the callback only");
  EXPECT_FALSE(exists(file));
  ASSERT_EQ(g_received.size(), 1u);
  const Received& r = g_received[0];
  EXPECT_EQ(std::make_tuple(r.level, r.line, r.file, r.function, r.message, r.thread),
            std::make_tuple(3, 7, std::string("src/b.cpp"), std::string("g"),
                            std::string("to the callback only"), static_cast<unsigned long>(pthread_self())));

  zr_set_print_log_to_file(1);
  zr_set_Log_file(nullptr);  // keeps the current name
  zr_Log_w(5, 1, "src/c.cpp", "h", L"wide \u4e2d");
  ASSERT_EQ(lines(file).size(), 1u);
  EXPECT_NE(lines(file)[0].find("[error],{tid:"), std::string::npos);
  EXPECT_EQ(g_received.back().message, "wide \xE4\xB8\xAD");
}

TEST_F(LogSink, LibraryHelperFiltersAndBounds) {
  zr_attach_log_fun(receive);
  ZRAD_LOG(3, "utils/test", "below the default threshold %d", 3);
  EXPECT_TRUE(g_received.empty());
  std::string big(5000, 'x');
  ZRAD_LOG(4, "utils/test", "%s", big.c_str());
  ASSERT_EQ(g_received.size(), 1u);
  EXPECT_EQ(g_received[0].message.size(), 2044u);
  EXPECT_EQ(g_received[0].file, "utils/test");
  EXPECT_EQ(g_received[0].function, "TestBody");
  zr_set_print_log_level(3);
  ZRAD_LOG(3, "utils/test", "now it passes");
  EXPECT_EQ(g_received.size(), 2u);
}

// Writers log bodies of their own lengths while two threads keep changing the file name, the
// threshold and the callback: every line lands whole in one of the files named on the way (a
// mixed line would count as a body of its own).
TEST_F(LogSink, ThreadsNeverInterleaveWhileSettingsChange) {
  constexpr int kWriters = 6, kLines = 400;
  const std::string names[] = {dir / "a.log", dir / "b.log"};
  std::vector<std::thread> threads;
  for (int t = 0; t < kWriters; ++t)
    threads.emplace_back([t] {
      std::string body(200 + 37 * t, static_cast<char>('a' + t));
      for (int i = 0; i < kLines; ++i) zr_Log(4, i, "src/t.cpp", "worker", body.c_str());
    });
  for (int t = 0; t < 2; ++t)
    threads.emplace_back([&names, t] {
      for (int i = 0; i < kLines; ++i) {
        zr_set_Log_file(names[(i + t) % 2].c_str());
        zr_set_print_log_level(static_cast<unsigned>(i % 6));
        zr_attach_log_fun(i % 2 ? nullptr : receiveNothing);
      }
    });
  for (auto& th : threads) th.join();
  std::map<std::string, int> bodies;
  for (const std::string& name : {names[0], names[1], file})
    for (const std::string& line : lines(name)) ++bodies[line.substr(line.rfind("} ") + 2)];
  EXPECT_EQ(bodies.size(), static_cast<size_t>(kWriters));
  for (int t = 0; t < kWriters; ++t)
    EXPECT_EQ(bodies[std::string(200 + 37 * t, static_cast<char>('a' + t))], kLines) << "thread " << t;
}

TEST_F(LogSink, StackDumpAndStackText) {
  zr_attach_log_fun(receive);
  zr_set_print_log_to_file(0);
  zr_dumpStack();
  ASSERT_EQ(g_received.size(), 1u);
  EXPECT_EQ(std::make_tuple(g_received[0].level, g_received[0].line, g_received[0].file),
            std::make_tuple(2, -1, std::string()));
  std::regex frame(R"(  # 0: 0x[0-9a-f]+  \S*  (0x[0-9a-f]+|0) 0x[0-9a-f]+ PC:0x[0-9a-f]+)");
  std::string first = g_received[0].message.substr(0, g_received[0].message.find('\n'));
  EXPECT_TRUE(std::regex_match(first, frame)) << first;

  std::string text = zrad::detail::stackText();
  EXPECT_EQ(text.compare(0, 6, "  # 0:"), 0);
  EXPECT_LE(text.size(), 1024u);
  zrad::detail::setStackTextProvider(nullptr);
  EXPECT_EQ(zrad::detail::stackText(), "");
  zrad::detail::setStackTextProvider(zrad::detail::builtinStackText);
}

TEST(LogTimes, InactiveUntilNamedThenPhasesAndFinalState) {
  TestDir dir;
  zrLogTimes* times = zrLogTimes::getInstance();
  EXPECT_FALSE(times->isLogInfo());
  times->LogTime(zrLogTimes::kReadDwg, true);
  times->setOpenErrorStatus(static_cast<Zrad::ErrorStatus>(3));
  EXPECT_EQ(times->getOpenState(), -9999);
  zrLogTimes::destoryInstance();  // writes nothing: no file was named

  std::string file = dir / "times.txt";
  times = zrLogTimes::getInstance();
  times->createFile(file.c_str());
  ASSERT_TRUE(exists(file));
  EXPECT_EQ(readFile(file), "");

  times->LogTime(zrLogTimes::kReadDwg, true);
  EXPECT_TRUE(std::regex_match(readFile(file), std::regex("readdwgtime=[0-9]+\nshowdwgtime=\nexitno=\n")));

  // The phase's time runs until the call that clears its flag and is frozen there.
  std::this_thread::sleep_for(std::chrono::milliseconds(40));
  times->LogTime(zrLogTimes::kReadDwg, false);
  std::string frozen = lines(file)[0];
  EXPECT_GE(std::stoi(frozen.substr(frozen.find('=') + 1)), 40) << frozen;
  std::this_thread::sleep_for(std::chrono::milliseconds(5));
  times->LogTime(zrLogTimes::kShowDwg, true);
  EXPECT_EQ(lines(file)[0], frozen);

  const int states[][2] = {{2, -2}, {3, -3}, {211, -211}, {337, -337}, {430, -430}, {503, -503},
                           {5, -9999}, {0, -9999}};
  for (const auto& row : states) {
    times->setOpenErrorStatus(static_cast<Zrad::ErrorStatus>(row[0]));
    EXPECT_EQ(times->getOpenState(), row[1]) << "status " << row[0];
  }
  times->setOpenErrorStatus(static_cast<Zrad::ErrorStatus>(5));
  zrLogTimes::destoryInstance();
  EXPECT_EQ(lines(file)[2], "exitno=-9999");
  EXPECT_FALSE(zrLogTimes::getInstance()->isLogInfo());  // a fresh instance
  zrLogTimes::destoryInstance();
}
