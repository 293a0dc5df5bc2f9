// zr_Log against the plain stdio way of writing the same line: fopen "ab+", fseek, fprintf,
// fclose for every line.
#include <pthread.h>
#include <sys/time.h>
#include <unistd.h>

#include <cstdio>
#include <ctime>
#include <string>

#include <zrad/log.h>

#include "common/peer_ratio.h"

namespace {

const std::string& logPath() {
  static const std::string path = "/tmp/zrad_log_bench_" + std::to_string(getpid()) + ".log";
  return path;
}

const char kMessage[] = "drawing opened: 1432 entities, 12 layers, 3 viewports";

void stdioLine(const char* path, int level, int line, const char* file, const char* function,
               const char* message) {
  FILE* f = std::fopen(path, "ab+");
  if (!f) return;
  std::fseek(f, 0, SEEK_END);
  timeval now;
  gettimeofday(&now, nullptr);
  std::tm t;
  localtime_r(&now.tv_sec, &t);
  static const char* names[] = {"info", "info", "info", "debug", "warnning", "error"};
  std::fprintf(f, "%4d-%02d-%02d %02d:%02d:%02d.%06d, %s (%d)<%s>,[%s],{tid:%p} %s\n",
               t.tm_year + 1900, t.tm_mon + 1, t.tm_mday, t.tm_hour, t.tm_min, t.tm_sec,
               static_cast<int>(now.tv_usec), file, line, function, names[level],
               reinterpret_cast<void*>(pthread_self()), message);
  std::fclose(f);
}

void log_line_zrad(benchmark::State& state) {
  std::remove(logPath().c_str());
  zr_set_Log_file(logPath().c_str());
  for (auto _ : state) zr_Log(4, 120, "utils/bench", "openDrawing", kMessage);
  state.SetItemsProcessed(state.iterations());
  std::remove(logPath().c_str());
}

void log_line_stdio(benchmark::State& state) {
  std::remove(logPath().c_str());
  for (auto _ : state) stdioLine(logPath().c_str(), 4, 120, "utils/bench", "openDrawing", kMessage);
  state.SetItemsProcessed(state.iterations());
  std::remove(logPath().c_str());
}

}  // namespace

BENCHMARK(log_line_zrad)->Name("log_line/zrad");
BENCHMARK(log_line_stdio)->Name("log_line/stdio");

ZRAD_BENCHMARK_MAIN()
