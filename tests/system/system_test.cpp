// Tests of system information: release parsing, distribution choices, memory figures.
//
// Sample os-release and status files are written to a temporary directory; the machine's own
// "/etc/os-release", this process's status and the kernel's record get smoke tests.
#include <gtest/gtest.h>

#include <sys/sysinfo.h>
#include <unistd.h>

#include <filesystem>
#include <functional>
#include <string>

#include "common/testdir.h"
#include "system/distro.h"
#include "system/osrelease.h"
#include "system/procstatus.h"

using namespace zrad::osinfo;

namespace {

// The release read from a file of `content`, or from `path` when no content is given.
OSRELEASEINFO release(const std::string& path, const char* content = nullptr) {
  if (content) writeFile(path, content);
  OSRELEASEINFO info;
  readOsRelease(path.c_str(), info);
  return info;
}

// Package format, text editor, explorer and paint, each followed by "|".
std::string answers(const std::function<ZrUtf8String(Choice)>& choose) {
  std::string all;
  for (Choice c : {Choice::kPkgFormat, Choice::kTextEditor, Choice::kExplorer, Choice::kPaint})
    all += choose(c).str() + "|";
  return all;
}

// "VmRSS VmPeak VmHWM"
std::string figures(const PROCESSMEMORYINFO& info) {
  return std::to_string(info.VmRSS) + " " + std::to_string(info.VmPeak) + " " +
         std::to_string(info.VmHWM);
}

}  // namespace

TEST(OsRelease, EveryKeyFillsItsOwnFieldAndNameDecides) {
  // Every field is named as its key.
#define KEY(field) {#field, &OSRELEASEINFO::field}
  const std::pair<const char*, ZrUtf8String OSRELEASEINFO::*> keys[] = {
      KEY(NAME), KEY(VERSION), KEY(ID), KEY(ID_LINK), KEY(VERSION_CODENAME), KEY(VERSION_ID),
      KEY(PRETTY_NAME), KEY(ANSI_COLOR), KEY(CPE_NAME), KEY(HOME_URL), KEY(DOCUMENTATION_URL),
      KEY(SUPPORT_URL), KEY(BUG_REPORT_URL), KEY(PRIVACY_POLICY_URL), KEY(BUILD_ID), KEY(VARIANT),
      KEY(VARIANT_ID), KEY(LOGO)};
#undef KEY
  std::string text;  // each key's value is its row number; ID_LIKE has no field
  for (size_t i = 0; i < std::size(keys); ++i)
    text += keys[i].first + ("=" + std::to_string(i)) + "\n";
  TestDir dir;
  const OSRELEASEINFO info = release(dir / "f", (text + "ID_LIKE=debian\n").c_str());
  for (size_t i = 0; i < std::size(keys); ++i)
    EXPECT_EQ(info.*keys[i].second, std::to_string(i).c_str()) << keys[i].first;

  // The choices read NAME, not PRETTY_NAME; the distribution words are the DistroChoice rows.
  writeFile(dir / "uos", "PRETTY_NAME=\"UnionTech OS Desktop 20 Pro\"\nNAME=\"uos\"\nID=uos\n");
  EXPECT_EQ(answers([&](Choice c) { return chooseFromFile(c, (dir / "uos").c_str()); }),
            "deb|dedit|gio open|deepin-draw|");
}

TEST(OsRelease, LineRules) {
  const std::string rows[][2] = {  // line, NAME after it is applied to a NAME of "old"
      {"NAME=Arch Linux", "Arch Linux"}, {"NAME=\"unterminated", "\"unterminated"},
      {"NAME=a=b", "a"}, {"NAME==b", "b"}, {"NAME=", "old"}, {"NAME", "old"}, {"=NAME", "old"},
      {" NAME=x", "old"}, {"NAME =x", "old"}, {"name=x", "old"}, {"NAMEX=x", "old"},
      {"NAME=x\r", "x\r"}, {"NAME=\x01\xff\xfe", "\x01\xff\xfe"},
      {std::string("NAME=a\0b", 8), std::string("a\0b", 3)}};
  for (size_t i = 0; i < std::size(rows); ++i) {
    OSRELEASEINFO info;
    info.NAME = "old";
    applyOsReleaseLine(ZrUtf8String(rows[i][0]), info);
    EXPECT_EQ(info.NAME.str(), rows[i][1]) << "row " << i;
  }
}

TEST(OsRelease, MissingAndHostileFiles) {
  OSRELEASEINFO kept;
  kept.OS_FAMILY = "Windows";
  kept.NAME = "kept";
  readOsRelease("/nonexistent/os-release", kept);
  EXPECT_EQ(kept.OS_FAMILY, "Linux");
  EXPECT_EQ(kept.NAME, "kept");
  EXPECT_EQ(answers([](Choice c) { return chooseFromFile(c, "/nonexistent/os-release"); }), "||||");

  // A line past the line limit is skipped whole; the lines around it still count.
  TestDir dir;
  const std::string longLine = "ID=a\nNAME=" + std::string(200000, 'k') + "ylin\nVERSION=2\n";
  const OSRELEASEINFO info = release(dir / "long", longLine.c_str());
  EXPECT_EQ(info.ID, "a");
  EXPECT_TRUE(info.NAME.isEmpty());
  EXPECT_EQ(info.VERSION, "2");

  // Every byte value (an "=" among them), then a good last line without its line feed.
  std::string bytes;
  for (int b = 0; b < 256; ++b) bytes += static_cast<char>(b);
  writeFile(dir / "bytes", bytes + "\nNAME=ubuntu");
  EXPECT_EQ(release(dir / "bytes").NAME, "ubuntu");

  // A device that never ends is read only up to the file limit.
  EXPECT_TRUE(release("/dev/zero").NAME.isEmpty());
}

TEST(DistroChoice, FamilyAndNameWords) {
  const char* rows[][3] = {  // family, NAME, answers
      {"Linux", "CentOS Stream", "||||"},
      {"Linux", "CentOS Linux", "rpm|gedit|nautilus||"},
      {"Linux", "Deepin 20.9", "deb|dedit|gio open|deepin-draw|"},
      {"Linux", "方德桌面操作系统", "deb|gedit|nemo|mypaint|"},
      {"Linux", "SuperRedOS", "rpm|gedit|nautilus|gimp|"},
      {"Linux", "Kylin on Ubuntu", "deb|pluma|caja|gnome-paint|"},
      // The package table meets ubuntu before superredos; the other tables the other way round.
      {"Linux", "ubuntu superredos", "deb|gedit|nautilus|gimp|"},
      // Ubuntu decides paint, with no program, before 方德桌面 is looked for.
      {"Linux", "ubuntu 方德桌面", "deb|gedit|nautilus||"},
      {"Linux", "NewStartOS", "||||"},
      {"Windows", "\"Ubuntu\"", "exe|notepad|explorer|mspaint|"},
      // Only the text editor wants the family exactly.
      {"GNU/Linux", "Ubuntu", "deb||nautilus||"},
      {"Linux+Windows", "Ubuntu", "exe||explorer|mspaint|"},
      {"linux", "Ubuntu", "||||"},
  };
  for (size_t i = 0; i < std::size(rows); ++i) {
    OSRELEASEINFO info;
    info.OS_FAMILY = rows[i][0];
    info.NAME = rows[i][1];
    EXPECT_EQ(answers([&](Choice c) { return chooseFor(c, info); }), rows[i][2]) << "row " << i;
  }
}

TEST(ProcessStatus, LinesAndFiles) {
  const std::string rows[][3] = {  // line, readable, "VmRSS VmPeak VmHWM" from "9 9 9"
      {"VmRSS:\t    1234 kB", "1", "1234 9 9"}, {"vmhwm: 7", "1", "9 9 7"},
      {"VmRSS:18446744073709551615 kB", "1", "18446744073709551615 9 9"},
      {"VmRSS:18446744073709551616 kB", "0", "9 9 9"}, {"VmRSS:  kB", "0", "9 9 9"},
      {"VmSwap:\t 5 kB", "1", "9 9 9"}, {" VmRSS: 5", "1", "9 9 9"}, {"Name:\tVmRSS: 5", "1", "9 9 9"},
      {std::string("VmRSS\0x: 5", 10), "1", "9 9 9"}};  // a NUL byte does not end the key
  for (size_t i = 0; i < std::size(rows); ++i) {
    PROCESSMEMORYINFO info{9, 9, 9};
    EXPECT_EQ(applyStatusLine(ZrUtf8String(rows[i][0]), info), rows[i][1] == "1") << "row " << i;
    EXPECT_EQ(figures(info), rows[i][2]) << "row " << i;
  }

  TestDir dir;
  const std::string sample = dir / "sample", broken = dir / "broken";
  writeFile(sample, "Name:\tzrad\nGroups:\t" + std::string(100000, '1') +  // too long: skipped
                        "\nVmPeak:\t  225436 kB\nVmHWM:\t   12816 kB\nVmRSS:\t   12700 kB\n");
  PROCESSMEMORYINFO info;
  EXPECT_TRUE(readProcessStatus(sample.c_str(), &info));
  EXPECT_EQ(figures(info), "12700 225436 12816");
  EXPECT_FALSE(readProcessStatus(sample.c_str(), nullptr));
  // Reading stops at an unreadable value; what came before it stays.
  writeFile(broken, "VmPeak:\t 5 kB\nVmHWM:\t?? kB\nVmRSS:\t 6 kB\n");
  PROCESSMEMORYINFO partial{9, 9, 9};
  EXPECT_FALSE(readProcessStatus(broken.c_str(), &partial));
  EXPECT_EQ(figures(partial), "9 5 9");
  EXPECT_FALSE(readProcessStatus("/nonexistent/status", &partial));
  EXPECT_FALSE(readProcessStatus(dir.path().c_str(), &partial));
}

TEST(SystemSmoke, ThisMachineAndProcess) {
  OSRELEASEINFO release;
  zrutGetOSVersionInfo(release);
  EXPECT_EQ(release.NAME.isEmpty(), !std::filesystem::exists("/etc/os-release"));
  const std::string pkg = zrutGetPkgFormat().str();
  EXPECT_TRUE(pkg == "deb" || pkg == "rpm" || pkg.empty()) << pkg;

  PROCESSMEMORYINFO own;
  ASSERT_TRUE(zrutGetProcessMemoryInfo(getpid(), &own));
  EXPECT_GT(own.VmRSS, 100u);  // more than 100 kB resident
  EXPECT_LE(own.VmRSS, own.VmHWM);
  EXPECT_LE(own.VmHWM, own.VmPeak);
  EXPECT_FALSE(zrutGetProcessMemoryInfo(getpid(), nullptr));
  EXPECT_FALSE(zrutGetProcessMemoryInfo(0x7fffffff, &own));  // above any pid_max

  struct sysinfo system {};
  ASSERT_EQ(zrutGetSysMemoryInfo(system), 0);
  EXPECT_GT(system.totalram, 0u);
  EXPECT_LE(system.freeram, system.totalram);
}
