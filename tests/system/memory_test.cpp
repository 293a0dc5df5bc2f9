// Tests of the memory figures: status-line parsing, sample status files, the live process.
#include <gtest/gtest.h>

#include <stdlib.h>
#include <sys/sysinfo.h>
#include <unistd.h>

#include <cstring>
#include <filesystem>
#include <fstream>
#include <memory>
#include <string>

#include "system/procstatus.h"

using namespace zrad::osinfo;
namespace fs = std::filesystem;

namespace {

constexpr uint64_t kUntouched = 99;

PROCESSMEMORYINFO untouched() { return {kUntouched, kUntouched, kUntouched}; }

std::string writeTemp(const std::string& content) {
  std::string path = (fs::temp_directory_path() / "zrad-status-XXXXXX").string();
  const int fd = mkstemp(path.data());
  if (fd >= 0) close(fd);
  std::ofstream(path, std::ios::binary) << content;
  return path;
}

}  // namespace

TEST(StatusLine, KeysAndValues) {
  struct Row {
    const char* line;
    bool readable;
    PROCESSMEMORYINFO want;  // VmRSS, VmPeak, VmHWM
  };
  const uint64_t u = kUntouched;
  const Row rows[] = {
      {"VmRSS:\t    1234 kB", true, {1234, u, u}},
      {"VmPeak:\t  987654 kB", true, {u, 987654, u}},
      {"VmHWM:\t 42 kB", true, {u, u, 42}},
      {"vmrss: 7", true, {7, u, u}},
      {"VMHWM:8kB", true, {u, u, 8}},
      {"VmRSS:18446744073709551615 kB", true, {18446744073709551615ull, u, u}},
      {"VmRSS:18446744073709551616 kB", false, {u, u, u}},
      {"VmRSS:  kB", false, {u, u, u}},
      {"VmRSS:", false, {u, u, u}},
      {"VmRSS:x12", false, {u, u, u}},
      {"VmSwap:\t 5 kB", true, {u, u, u}},
      {"VmRSSX: 5", true, {u, u, u}},
      {" VmRSS: 5", true, {u, u, u}},
      {"VmRSS 5 kB", true, {u, u, u}},
      {"Name:\tVmRSS: 5", true, {u, u, u}},
      {"", true, {u, u, u}},
  };
  for (size_t i = 0; i < std::size(rows); ++i) {
    PROCESSMEMORYINFO info = untouched();
    EXPECT_EQ(applyStatusLine(ZrUtf8String(rows[i].line), info), rows[i].readable) << "row " << i;
    EXPECT_EQ(info.VmRSS, rows[i].want.VmRSS) << "row " << i;
    EXPECT_EQ(info.VmPeak, rows[i].want.VmPeak) << "row " << i;
    EXPECT_EQ(info.VmHWM, rows[i].want.VmHWM) << "row " << i;
  }
  // A NUL byte inside the key must not let its prefix pass for a memory key.
  PROCESSMEMORYINFO info = untouched();
  EXPECT_TRUE(applyStatusLine(ZrUtf8String(std::string("VmRSS\0x: 5", 10)), info));
  EXPECT_EQ(info.VmRSS, kUntouched);
}

TEST(StatusFile, SampleFilesAndFailures) {
  const std::string sample = writeTemp(
      "Name:\tzrad\nUmask:\t0022\nState:\tS (sleeping)\nPid:\t4242\n"
      "Groups:\t" + std::string(100000, '1') +  // past the line limit: skipped, not fatal
      "\nVmPeak:\t  225436 kB\nVmSize:\t  225436 kB\nVmLck:\t       0 kB\n"
      "VmHWM:\t   12816 kB\nVmRSS:\t   12700 kB\nRssAnon:\t    2220 kB\nThreads:\t1\n");
  PROCESSMEMORYINFO info;
  EXPECT_TRUE(readProcessStatus(sample.c_str(), &info));
  EXPECT_EQ(info.VmRSS, 12700u);
  EXPECT_EQ(info.VmPeak, 225436u);
  EXPECT_EQ(info.VmHWM, 12816u);
  EXPECT_FALSE(readProcessStatus(sample.c_str(), nullptr));

  // A kernel thread has no memory lines: the file is read, the figures stay as they were.
  const std::string kernelThread = writeTemp("Name:\tkthreadd\nState:\tS (sleeping)\n");
  PROCESSMEMORYINFO none = untouched();
  EXPECT_TRUE(readProcessStatus(kernelThread.c_str(), &none));
  EXPECT_EQ(none.VmRSS, kUntouched);

  // Reading stops at an unreadable value; what came before it stays.
  const std::string broken = writeTemp("VmPeak:\t 5 kB\nVmHWM:\t?? kB\nVmRSS:\t 6 kB\n");
  PROCESSMEMORYINFO partial = untouched();
  EXPECT_FALSE(readProcessStatus(broken.c_str(), &partial));
  EXPECT_EQ(partial.VmPeak, 5u);
  EXPECT_EQ(partial.VmHWM, kUntouched);
  EXPECT_EQ(partial.VmRSS, kUntouched);

  PROCESSMEMORYINFO missing = untouched();
  EXPECT_FALSE(readProcessStatus("/nonexistent/status", &missing));
  EXPECT_EQ(missing.VmRSS, kUntouched);
  for (const std::string& p : {sample, kernelThread, broken}) fs::remove(p);
}

TEST(ProcessMemory, FiguresOfThisProcess) {
  PROCESSMEMORYINFO before;
  ASSERT_TRUE(zrutGetProcessMemoryInfo(getpid(), &before));
  EXPECT_GT(before.VmRSS, 100u);                 // more than 100 kB resident
  EXPECT_LT(before.VmRSS, 64ull * 1024 * 1024);  // less than 64 GiB
  EXPECT_LE(before.VmRSS, before.VmHWM);
  EXPECT_LE(before.VmHWM, before.VmPeak);

  // Touching every page of a large block makes it resident.
  const size_t bytes = 128u << 20;
  std::unique_ptr<char[]> block(new char[bytes]);
  std::memset(block.get(), 1, bytes);
  asm volatile("" : : "r"(block.get()) : "memory");  // keep the stores
  PROCESSMEMORYINFO after;
  ASSERT_TRUE(zrutGetProcessMemoryInfo(getpid(), &after));
  EXPECT_GE(after.VmRSS, before.VmRSS + 100u * 1024);
  EXPECT_GE(after.VmHWM, after.VmRSS);

  PROCESSMEMORYINFO ignored;
  EXPECT_FALSE(zrutGetProcessMemoryInfo(getpid(), nullptr));
  EXPECT_FALSE(zrutGetProcessMemoryInfo(-1, &ignored));
  EXPECT_FALSE(zrutGetProcessMemoryInfo(0x7fffffff, &ignored));  // above any pid_max
}

TEST(SystemMemory, KernelRecord) {
  struct sysinfo info {};
  ASSERT_EQ(zrutGetSysMemoryInfo(info), 0);
  EXPECT_GT(info.totalram, 0u);
  EXPECT_LE(info.freeram, info.totalram);
  EXPECT_GT(info.mem_unit, 0u);
}
