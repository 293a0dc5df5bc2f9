// The process-wide log sink: its settings, the line writer and the callback.
//
// Each line is formatted in full, then written with a single append write on a file opened and
// closed for that line, so concurrent writers never interleave inside a line and every line is
// on disk when zr_Log returns.
#include <fcntl.h>
#include <pthread.h>
#include <sys/time.h>
#include <unistd.h>

#include <atomic>
#include <cerrno>
#include <cstring>
#include <ctime>
#include <string>
#include <type_traits>

#include <zrad/log.h>
#include <zrplatform/memory.h>
#include <zrplatform/strings.h>

#include "log/logline.h"

static_assert(std::is_same<pthread_t, unsigned long>::value,
              "the callback passes pthread_self() as unsigned long");

namespace {

// Settings change while other threads log, so each is an atomic that the logging path reads
// once per message, without a lock. A log file name, once published, is never freed: a logging
// thread may still be opening it. Each name links to the one it replaced, which keeps every
// retired name reachable (leak checkers see them as owned) without a list to guard.
struct LogFileName {
  const char* text;
  const LogFileName* replaced;
};

const LogFileName kDefaultLogFile{"zrad.log", nullptr};
std::atomic<const LogFileName*> g_logFile{&kDefaultLogFile};
std::atomic<bool> g_printToFile{true};
std::atomic<unsigned> g_level{4};
std::atomic<ZrLogCallback> g_callback{nullptr};

// localtime_r once per second per thread: the broken-down time is the costly part of a line.
const std::tm& localTimeOf(time_t seconds) {
  thread_local time_t cachedSeconds = -1;
  thread_local std::tm cached{};
  if (seconds != cachedSeconds) {
    localtime_r(&seconds, &cached);
    cachedSeconds = seconds;
  }
  return cached;
}

// Opens as "ab+" would, falling back to "wb" (create or truncate) as stdio callers did. The
// file usually exists, and opening without O_CREAT skips the kernel's create path, a quarter of
// the cost of a line.
int openLogFile(const char* name) {
  int fd = ::open(name, O_RDWR | O_APPEND | O_CLOEXEC);
  if (fd < 0 && errno == ENOENT) fd = ::open(name, O_RDWR | O_APPEND | O_CREAT | O_CLOEXEC, 0666);
  if (fd < 0) fd = ::open(name, O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0666);
  return fd;
}

void writeLine(int level, int line, const char* file, const char* function, const char* message) {
  int fd = openLogFile(g_logFile.load(std::memory_order_acquire)->text);
  if (fd < 0) return;
  timeval now;
  gettimeofday(&now, nullptr);
  thread_local std::string text;
  text.clear();
  zrad::detail::appendLogLine(text, localTimeOf(now.tv_sec), static_cast<long>(now.tv_usec), file,
                              line, function, zrad::detail::logLevelName(level),
                              reinterpret_cast<const void*>(pthread_self()), message);
  const char* at = text.data();
  size_t left = text.size();
  while (left) {
    ssize_t n = ::write(fd, at, left);
    if (n <= 0) break;
    at += n;
    left -= static_cast<size_t>(n);
  }
  ::close(fd);
}

}  // namespace

extern "C" {

void zr_attach_log_fun(ZrLogCallback callback) { g_callback.store(callback); }

void zr_set_Log_file(const char* path) {
  if (!path) return;
  // One block holds the link and the copied name, so the name is length + 1 bytes of it.
  size_t size = std::strlen(path) + 1;
  auto* name = static_cast<LogFileName*>(zrrxAlloc(sizeof(LogFileName) + size));
  if (!name) return;
  char* text = reinterpret_cast<char*>(name + 1);
  std::memcpy(text, path, size);
  name->text = text;
  // Published before it is linked: readers look only at the text, which is complete.
  name->replaced = g_logFile.exchange(name, std::memory_order_acq_rel);
}

void zr_set_print_log_level(unsigned level) { g_level.store(level, std::memory_order_relaxed); }
unsigned zrad_log_level() { return g_level.load(std::memory_order_relaxed); }
void zr_set_print_log_to_file(int enabled) {
  g_printToFile.store(enabled != 0, std::memory_order_relaxed);
}

void zr_Log(int level, int line, const char* file, const char* function, const char* message) {
  if (g_printToFile.load(std::memory_order_relaxed)) writeLine(level, line, file, function, message);
  if (ZrLogCallback callback = g_callback.load())
    callback(level, line, file, function, message, pthread_self());
}

void zr_Log_w(int level, int line, const char* file, const char* function, const wchar_t* message) {
  ZrUtf8String utf8{ZrString(message)};
  zr_Log(level, line, file, function, utf8.c_str());
}

void zrutSetCurThreadName(const char*) {}

}  // extern "C"
