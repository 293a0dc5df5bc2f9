// The log sink: levels, the log file, the redirect callback, stack dumps, and the load-time log.
//
// zr_Log appends one line per message to the log file (default "zrad.log" in the current
// directory), opening and closing the file for every line, then hands the message to the
// attached callback. The sink itself does not filter: callers compare their level with
// zrad_log_level() first (a message of level L goes out when zrad_log_level() < L + 1).
//
// Line format:
//   2026-11-22 04:21:19.000042, src/file.cpp (12)<function>,[warnning],{tid:0x7f...} text
// Level names: 0, 1, 2 and anything outside 0..5 => "info", 3 => "debug", 4 => "warnning",
// 5 => "error".
#pragma once

#include <cstdint>
#include <map>
#include <string>

#include <zrplatform/error.h>

#include "export.h"

extern "C" {

// The host's redirect: level, source line, source file, function, UTF-8 message, and the
// calling thread as pthread_self() gives it. The strings are valid only during the call.
typedef void (*ZrLogCallback)(int level, int line, const char* file, const char* function,
                              const char* message, unsigned long thread);

// Replaces the callback; null detaches.
ZRAD_EXPORT void zr_attach_log_fun(ZrLogCallback callback);
// Copies `path` and logs to it from now on; null (or a failed copy) keeps the current name.
// Every setting may change while other threads log: each message sees the old or the new value.
// A replaced name is never freed (a logging thread may still be opening it).
ZRAD_EXPORT void zr_set_Log_file(const char* path);
ZRAD_EXPORT void zr_set_print_log_level(unsigned level);
// The threshold callers compare with; 4 by default.
ZRAD_EXPORT unsigned zrad_log_level();
// Non-zero writes lines to the file (the default); zero leaves only the callback.
ZRAD_EXPORT void zr_set_print_log_to_file(int enabled);

ZRAD_EXPORT void zr_Log(int level, int line, const char* file, const char* function,
                        const char* message);
// As zr_Log with wide text, converted to UTF-8.
ZRAD_EXPORT void zr_Log_w(int level, int line, const char* file, const char* function,
                          const wchar_t* message);

// Logs the calling thread's stack at level 2, one line per frame:
//   "  # 0: 0x55d1...  symbol/usr/lib/libfoo.so  0x55d0... 0x55c0... PC:0x1234\n"
// The dump ends early at a frame whose shared object has no name.
ZRAD_EXPORT void zr_dumpStack();

// Accepted and ignored on this platform.
ZRAD_EXPORT void zrutSetCurThreadName(const char* name);

}  // extern "C"

// Load-time log: how long the host takes to read and to show a drawing, and how opening ended,
// kept in a three-line key=value file that outside tools read:
//   readdwgtime=<ms>\nshowdwgtime=<ms>\nexitno=<state>\n
// Nothing is recorded until createFile() names the file.
class ZRAD_EXPORT zrLogTimes {
 public:
  typedef int LogTimeType;  // 1: reading the drawing, 2: showing it
  enum { kReadDwg = 1, kShowDwg = 2 };

  struct TestLogInfo {
    int64_t startTime = 0;  // ms since the epoch
    int32_t elapsed = -1;   // ms; -1 while unknown
    bool flag = false;      // the phase is being measured
  };

  static zrLogTimes* getInstance();
  // Writes the file a last time (with the open state) and forgets the instance.
  static void destoryInstance();

  // Activates the recorder and creates or truncates the file.
  void createFile(const char* path);
  bool isLogInfo() const { return m_active; }
  static int64_t getCurrentTime();
  // Kept only while active.
  void setOpenErrorStatus(Zrad::ErrorStatus status);
  // 2, 3, 211, 337, 430, 503 => their negatives; anything else => -9999.
  int getOpenState() const;
  // Starts (b true) or stops (b false) measuring a phase and rewrites the file.
  void LogTime(LogTimeType phase, bool b);
  void LogInfo(bool final);

 private:
  zrLogTimes() = default;

  bool m_active = false;
  std::string m_path;
  std::map<LogTimeType, TestLogInfo> m_phases;
  Zrad::ErrorStatus m_status = Zrad::eOk;
};
