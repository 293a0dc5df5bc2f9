// Tests of the release record and the distribution choices built on it.
//
// Sample os-release files of several distributions are written into a fresh temporary
// directory; the real "/etc/os-release" gets only a smoke test.
#include <gtest/gtest.h>

#include <stdlib.h>

#include <filesystem>
#include <fstream>
#include <functional>
#include <string>

#include "system/distro.h"
#include "system/osrelease.h"

using namespace zrad::osinfo;
namespace fs = std::filesystem;

namespace {

// A fresh directory per test, removed afterwards.
class TempDir {
 public:
  TempDir() {
    std::string pattern = (fs::temp_directory_path() / "zrad-system-XXXXXX").string();
    if (mkdtemp(pattern.data())) m_path = pattern;
  }
  ~TempDir() {
    std::error_code ignored;
    fs::remove_all(m_path, ignored);
  }
  std::string write(const std::string& name, const std::string& content) const {
    const std::string path = (m_path / name).string();
    std::ofstream(path, std::ios::binary) << content;
    return path;
  }

 private:
  fs::path m_path;
};

struct Answers {
  const char* pkgFormat;
  const char* textEditor;
  const char* explorer;
  const char* paint;
};

void expectAnswers(const Answers& want, const std::function<ZrUtf8String(Choice)>& choose,
                   const std::string& row) {
  EXPECT_EQ(choose(Choice::kPkgFormat), want.pkgFormat) << row;
  EXPECT_EQ(choose(Choice::kTextEditor), want.textEditor) << row;
  EXPECT_EQ(choose(Choice::kExplorer), want.explorer) << row;
  EXPECT_EQ(choose(Choice::kPaint), want.paint) << row;
}

OSRELEASEINFO record(const char* family, const char* name) {
  OSRELEASEINFO info;
  info.OS_FAMILY = family;
  info.NAME = name;
  return info;
}

}  // namespace

TEST(OsRelease, SampleFilesOfSeveralDistributions) {
  struct Row {
    const char* file;
    const char* name;
    const char* id;
    const char* versionId;
    const char* prettyName;
    Answers answers;
  };
  const Row rows[] = {
      {"PRETTY_NAME=\"Debian GNU/Linux 12 (bookworm)\"\nNAME=\"Debian GNU/Linux\"\n"
       "VERSION_ID=\"12\"\nVERSION=\"12 (bookworm)\"\nVERSION_CODENAME=bookworm\nID=debian\n"
       "HOME_URL=\"https://www.debian.org/\"\n",
       "\"Debian GNU/Linux\"", "debian", "\"12\"", "\"Debian GNU/Linux 12 (bookworm)\"",
       {"", "", "", ""}},
      {"PRETTY_NAME=\"Ubuntu 22.04.4 LTS\"\nNAME=\"Ubuntu\"\nVERSION_ID=\"22.04\"\n"
       "VERSION=\"22.04.4 LTS (Jammy Jellyfish)\"\nVERSION_CODENAME=jammy\nID=ubuntu\n"
       "ID_LIKE=debian\nUBUNTU_CODENAME=jammy\n",
       "\"Ubuntu\"", "ubuntu", "\"22.04\"", "\"Ubuntu 22.04.4 LTS\"",
       {"deb", "gedit", "nautilus", ""}},
      {"NAME=\"Fedora Linux\"\nVERSION=\"39 (Workstation Edition)\"\nID=fedora\nVERSION_ID=39\n"
       "PRETTY_NAME=\"Fedora Linux 39 (Workstation Edition)\"\nANSI_COLOR=\"0;38;2;60;110;180\"\n"
       "LOGO=fedora-logo-icon\nCPE_NAME=\"cpe:/o:fedoraproject:fedora:39\"\n"
       "VARIANT=\"Workstation Edition\"\nVARIANT_ID=workstation\n",
       "\"Fedora Linux\"", "fedora", "39", "\"Fedora Linux 39 (Workstation Edition)\"",
       {"", "", "", ""}},
      {"NAME=\"openSUSE Leap\"\nVERSION=\"15.5\"\nID=\"opensuse-leap\"\n"
       "ID_LIKE=\"suse opensuse\"\nVERSION_ID=\"15.5\"\nPRETTY_NAME=\"openSUSE Leap 15.5\"\n",
       "\"openSUSE Leap\"", "\"opensuse-leap\"", "\"15.5\"", "\"openSUSE Leap 15.5\"",
       {"", "", "", ""}},
      {"NAME=\"Arch Linux\"\nPRETTY_NAME=\"Arch Linux\"\nID=arch\nBUILD_ID=rolling\n",
       "\"Arch Linux\"", "arch", "", "\"Arch Linux\"", {"", "", "", ""}},
      {"NAME=\"CentOS Linux\"\nVERSION=\"7 (Core)\"\nID=\"centos\"\nVERSION_ID=\"7\"\n"
       "PRETTY_NAME=\"CentOS Linux 7 (Core)\"\n",
       "\"CentOS Linux\"", "\"centos\"", "\"7\"", "\"CentOS Linux 7 (Core)\"",
       {"rpm", "gedit", "nautilus", ""}},
      {"PRETTY_NAME=\"UnionTech OS Desktop 20 Pro\"\nNAME=\"uos\"\nVERSION_ID=\"20\"\n"
       "VERSION=\"20\"\nID=uos\nHOME_URL=\"https://www.chinauos.com/\"\n",
       "\"uos\"", "uos", "\"20\"", "\"UnionTech OS Desktop 20 Pro\"",
       {"deb", "dedit", "gio open", "deepin-draw"}},
      {"PRETTY_NAME=\"Deepin 20.9\"\nNAME=\"Deepin\"\nVERSION_ID=\"20.9\"\nID=Deepin\n",
       "\"Deepin\"", "Deepin", "\"20.9\"", "\"Deepin 20.9\"",
       {"deb", "dedit", "gio open", "deepin-draw"}},
      {"NAME=\"Kylin\"\nVERSION=\"银河麒麟桌面操作系统V10 (SP1)\"\nID=kylin\nID_LIKE=debian\n"
       "PRETTY_NAME=\"Kylin V10 SP1\"\nVERSION_ID=\"v10\"\n",
       "\"Kylin\"", "kylin", "\"v10\"", "\"Kylin V10 SP1\"",
       {"deb", "pluma", "caja", "gnome-paint"}},
      {"NAME=\"方德桌面操作系统\"\nID=nfs\nVERSION_ID=\"4.0\"\nPRETTY_NAME=\"NFS Desktop 4.0\"\n",
       "\"方德桌面操作系统\"", "nfs", "\"4.0\"", "\"NFS Desktop 4.0\"",
       {"deb", "gedit", "nemo", "mypaint"}},
  };
  TempDir dir;
  for (size_t i = 0; i < std::size(rows); ++i) {
    const std::string row = "row " + std::to_string(i);
    const std::string path = dir.write("os-release-" + std::to_string(i), rows[i].file);
    OSRELEASEINFO info;
    readOsRelease(path.c_str(), info);
    EXPECT_EQ(info.OS_FAMILY, "Linux") << row;
    EXPECT_EQ(info.NAME, rows[i].name) << row;
    EXPECT_EQ(info.ID, rows[i].id) << row;
    EXPECT_EQ(info.VERSION_ID, rows[i].versionId) << row;
    EXPECT_EQ(info.PRETTY_NAME, rows[i].prettyName) << row;
    EXPECT_TRUE(info.ID_LINK.isEmpty()) << row << ": ID_LIKE must not fill ID_LINK";
    expectAnswers(rows[i].answers, [&](Choice c) { return chooseFromFile(c, path.c_str()); }, row);
  }
}

TEST(OsRelease, EveryKeyFillsItsOwnField) {
  using Field = ZrUtf8String OSRELEASEINFO::*;
  const std::pair<const char*, Field> keys[] = {
      {"NAME", &OSRELEASEINFO::NAME},
      {"VERSION", &OSRELEASEINFO::VERSION},
      {"ID", &OSRELEASEINFO::ID},
      {"ID_LINK", &OSRELEASEINFO::ID_LINK},
      {"VERSION_CODENAME", &OSRELEASEINFO::VERSION_CODENAME},
      {"VERSION_ID", &OSRELEASEINFO::VERSION_ID},
      {"PRETTY_NAME", &OSRELEASEINFO::PRETTY_NAME},
      {"ANSI_COLOR", &OSRELEASEINFO::ANSI_COLOR},
      {"CPE_NAME", &OSRELEASEINFO::CPE_NAME},
      {"HOME_URL", &OSRELEASEINFO::HOME_URL},
      {"DOCUMENTATION_URL", &OSRELEASEINFO::DOCUMENTATION_URL},
      {"SUPPORT_URL", &OSRELEASEINFO::SUPPORT_URL},
      {"BUG_REPORT_URL", &OSRELEASEINFO::BUG_REPORT_URL},
      {"PRIVACY_POLICY_URL", &OSRELEASEINFO::PRIVACY_POLICY_URL},
      {"BUILD_ID", &OSRELEASEINFO::BUILD_ID},
      {"VARIANT", &OSRELEASEINFO::VARIANT},
      {"VARIANT_ID", &OSRELEASEINFO::VARIANT_ID},
      {"LOGO", &OSRELEASEINFO::LOGO},
  };
  // Written in reverse so that a parser relying on line order would be caught.
  std::string file;
  for (size_t i = std::size(keys); i-- > 0;)
    file += std::string(keys[i].first) + "=v" + std::to_string(i) + "\n";
  TempDir dir;
  OSRELEASEINFO info;
  readOsRelease(dir.write("all", file).c_str(), info);
  EXPECT_EQ(info.OS_FAMILY, "Linux");
  for (size_t i = 0; i < std::size(keys); ++i)
    EXPECT_EQ(info.*keys[i].second, ("v" + std::to_string(i)).c_str())
        << "row " << i << " " << keys[i].first;
}

TEST(OsRelease, LineRules) {
  struct Row {
    std::string line;
    const char* name;  // NAME after the line is applied to a record whose NAME is "old"
  };
  const Row rows[] = {
      {"NAME=Arch Linux", "Arch Linux"},
      {"NAME=\"quoted\"", "\"quoted\""},
      {"NAME=\"unterminated", "\"unterminated"},
      {"NAME=a=b", "a"},
      {"NAME==b", "b"},
      {"NAME=", "old"},
      {"NAME", "old"},
      {"", "old"},
      {"=NAME", "old"},
      {" NAME=x", "old"},
      {"NAME =x", "old"},
      {"name=x", "old"},
      {"# NAME=x", "old"},
      {"NAMEX=x", "old"},
      {"NAME=x\r", "x\r"},
      {std::string("NAME=\x01\xff\xfe", 8), "\x01\xff\xfe"},
      {std::string("NAME=a\0b", 8), nullptr},  // the NUL byte is kept
  };
  for (size_t i = 0; i < std::size(rows); ++i) {
    OSRELEASEINFO info;
    info.NAME = "old";
    applyOsReleaseLine(ZrUtf8String(rows[i].line), info);
    const std::string want = rows[i].name ? rows[i].name : std::string("a\0b", 3);
    EXPECT_EQ(info.NAME.str(), want) << "row " << i;
    EXPECT_TRUE(info.VERSION.isEmpty() && info.ID.isEmpty()) << "row " << i;
  }
}

TEST(OsRelease, MissingFileKeepsFieldsAndChoosesNothing) {
  OSRELEASEINFO info = record("Windows", "\"Ubuntu\"");
  info.VERSION = "kept";
  readOsRelease("/nonexistent/os-release", info);
  EXPECT_EQ(info.OS_FAMILY, "Linux");
  EXPECT_EQ(info.NAME, "\"Ubuntu\"");
  EXPECT_EQ(info.VERSION, "kept");
  expectAnswers({"", "", "", ""},
                [](Choice c) { return chooseFromFile(c, "/nonexistent/os-release"); }, "missing");
}

TEST(OsRelease, HostileFilesGiveWhatTheyHold) {
  TempDir dir;
  // A line past the line limit is skipped whole; the lines around it still count.
  const std::string huge = "ID=first\nNAME=" + std::string(200000, 'k') + "ylin\nVERSION=2\n";
  OSRELEASEINFO info;
  readOsRelease(dir.write("huge", huge).c_str(), info);
  EXPECT_EQ(info.ID, "first");
  EXPECT_TRUE(info.NAME.isEmpty());
  EXPECT_EQ(info.VERSION, "2");

  // Every byte value (an "=" among them), then a good last line without its line feed.
  std::string binary;
  for (int b = 0; b < 256; ++b) binary += static_cast<char>(b);
  binary += "\nNAME=ubuntu";
  OSRELEASEINFO bin;
  readOsRelease(dir.write("binary", binary).c_str(), bin);
  EXPECT_EQ(bin.NAME, "ubuntu");

  // A device that never ends is read only up to the file limit.
  OSRELEASEINFO endless;
  readOsRelease("/dev/zero", endless);
  EXPECT_EQ(endless.OS_FAMILY, "Linux");
  EXPECT_TRUE(endless.NAME.isEmpty());

  // A directory opens but reads as nothing.
  OSRELEASEINFO directory;
  readOsRelease(fs::temp_directory_path().c_str(), directory);
  EXPECT_TRUE(directory.NAME.isEmpty());
}

TEST(DistroChoice, FamilyAndNameWords) {
  struct Row {
    const char* family;
    const char* name;
    Answers answers;
  };
  const Row rows[] = {
      {"Linux", "\"Ubuntu\"", {"deb", "gedit", "nautilus", ""}},
      {"Linux", "\"CentOS Linux\"", {"rpm", "gedit", "nautilus", ""}},
      {"Linux", "CentOS Stream", {"", "", "", ""}},
      {"Linux", "SuperRedOS", {"rpm", "gedit", "nautilus", "gimp"}},
      {"Linux", "KYLIN", {"deb", "pluma", "caja", "gnome-paint"}},
      {"Linux", "Kylin on Ubuntu", {"deb", "pluma", "caja", "gnome-paint"}},
      // The package table meets ubuntu before superredos; the other tables the other way round.
      {"Linux", "ubuntu superredos", {"deb", "gedit", "nautilus", "gimp"}},
      // Ubuntu decides paint with no program before 方德桌面 is looked for.
      {"Linux", "ubuntu 方德桌面", {"deb", "gedit", "nautilus", ""}},
      {"Linux", "NewStartOS", {"", "", "", ""}},
      {"Linux", "", {"", "", "", ""}},
      {"Windows", "", {"exe", "notepad", "explorer", "mspaint"}},
      {"Windows", "\"Ubuntu\"", {"exe", "notepad", "explorer", "mspaint"}},
      // Only the text editor wants the family exactly.
      {"GNU/Linux", "Ubuntu", {"deb", "", "nautilus", ""}},
      {"Windows 11", "", {"exe", "", "explorer", "mspaint"}},
      {"Linux+Windows", "Ubuntu", {"exe", "", "explorer", "mspaint"}},
      {"linux", "Ubuntu", {"", "", "", ""}},
      {"", "Ubuntu", {"", "", "", ""}},
  };
  for (size_t i = 0; i < std::size(rows); ++i) {
    const OSRELEASEINFO info = record(rows[i].family, rows[i].name);
    expectAnswers(rows[i].answers, [&](Choice c) { return chooseFor(c, info); },
                  "row " + std::to_string(i));
  }
}

TEST(SystemSmoke, ThisMachinesRelease) {
  OSRELEASEINFO info;
  zrutGetOSVersionInfo(info);
  EXPECT_EQ(info.OS_FAMILY, "Linux");
  if (fs::exists("/etc/os-release")) {
    EXPECT_FALSE(info.NAME.isEmpty());
  }
  const ZrUtf8String pkg = zrutGetPkgFormat();
  EXPECT_TRUE(pkg == "deb" || pkg == "rpm" || pkg.isEmpty()) << pkg.c_str();
}
