// The load-time log: phase timings of reading and showing a drawing, rewritten whole each time.
#include <sys/time.h>

#include <algorithm>
#include <cstdint>
#include <cstdio>

#include <zrad/log.h>
#include <zrplatform/strings.h>

static zrLogTimes* g_instance = nullptr;

// Milliseconds from `start` to now, held within 0 .. INT32_MAX (a clock set back gives 0).
static int32_t elapsedSince(int64_t start) {
  int64_t elapsed = zrLogTimes::getCurrentTime() - start;
  return static_cast<int32_t>(std::min<int64_t>(std::max<int64_t>(elapsed, 0), INT32_MAX));
}

zrLogTimes* zrLogTimes::getInstance() {
  if (!g_instance) g_instance = new zrLogTimes();
  return g_instance;
}

void zrLogTimes::destoryInstance() {
  if (!g_instance) return;
  g_instance->LogInfo(true);
  delete g_instance;
  g_instance = nullptr;
}

void zrLogTimes::createFile(const char* path) {
  m_active = true;
  m_path = path ? path : "";
  if (FILE* f = std::fopen(m_path.c_str(), "w+")) std::fclose(f);
}

int64_t zrLogTimes::getCurrentTime() {
  timeval now;
  gettimeofday(&now, nullptr);
  return static_cast<int64_t>(now.tv_sec) * 1000 + now.tv_usec / 1000;
}

void zrLogTimes::setOpenErrorStatus(Zrad::ErrorStatus status) {
  if (m_active) m_status = status;
}

int zrLogTimes::getOpenState() const {
  switch (static_cast<int>(m_status)) {
    case 2: case 3: case 211: case 337: case 430: case 503:
      return -static_cast<int>(m_status);
    default:
      return -9999;
  }
}

void zrLogTimes::LogTime(LogTimeType phase, bool b) {
  if (!m_active) return;
  auto found = m_phases.find(phase);
  if (found == m_phases.end()) found = m_phases.emplace(phase, TestLogInfo{getCurrentTime(), -1, true}).first;
  TestLogInfo& info = found->second;
  // The call that clears the flag ends the phase: its elapsed time is taken now and kept.
  if (info.flag && !b) info.elapsed = elapsedSince(info.startTime);
  info.flag = b;
  LogInfo(false);
}

void zrLogTimes::LogInfo(bool final) {
  FILE* f = std::fopen(m_path.c_str(), "w+");
  if (!f) return;
  static const struct { LogTimeType phase; const char* key; } keys[] = {
      {kReadDwg, "readdwgtime="}, {kShowDwg, "showdwgtime="}};
  for (const auto& k : keys) {
    auto found = m_phases.find(k.phase);
    int32_t elapsed = -1;
    if (found != m_phases.end()) {
      TestLogInfo& info = found->second;
      if (info.flag) info.elapsed = elapsedSince(info.startTime);
      elapsed = info.elapsed;
    }
    ZrUtf8String text = elapsed != -1
                            ? ZrUtf8String::format((ZrUtf8String(k.key) + "%d\n").c_str(), elapsed)
                            : ZrUtf8String(k.key) + "\n";
    std::fputs(text.c_str(), f);
  }
  if (final)
    std::fprintf(f, "exitno=%d\n", getOpenState());
  else
    std::fputs("exitno=\n", f);
  std::fclose(f);
}
