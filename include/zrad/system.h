// System information: the operating-system release, package format, default programs, memory.
//
// Every call reads its facts afresh ("/etc/os-release", "/proc/<pid>/status", the kernel's
// sysinfo record); nothing is cached, nothing is locked, and any thread may call.
#pragma once

#include <cstdint>

#include <zrad/export.h>
#include <zrplatform/strings.h>

// The operating system's own memory record (<sys/sysinfo.h>), filled by zrutGetSysMemoryInfo.
struct sysinfo;

// The release record: the operating-system family, then one field per os-release key of the
// same name. Values are stored exactly as the file has them, quotes included:
//   NAME="Ubuntu"  => NAME is "\"Ubuntu\""
// The key read into ID_LINK is "ID_LINK" (not the usual ID_LIKE), so on ordinary systems the
// field stays empty.
struct OSRELEASEINFO {
  ZrUtf8String OS_FAMILY;  // "Linux" once zrutGetOSVersionInfo has run
  ZrUtf8String NAME;
  ZrUtf8String VERSION;
  ZrUtf8String ID;
  ZrUtf8String ID_LINK;
  ZrUtf8String VERSION_CODENAME;
  ZrUtf8String VERSION_ID;
  ZrUtf8String PRETTY_NAME;
  ZrUtf8String ANSI_COLOR;
  ZrUtf8String CPE_NAME;
  ZrUtf8String HOME_URL;
  ZrUtf8String DOCUMENTATION_URL;
  ZrUtf8String SUPPORT_URL;
  ZrUtf8String BUG_REPORT_URL;
  ZrUtf8String PRIVACY_POLICY_URL;
  ZrUtf8String BUILD_ID;
  ZrUtf8String VARIANT;
  ZrUtf8String VARIANT_ID;
  ZrUtf8String LOGO;
};

// Memory figures of one process in kB, as the process status file gives them.
struct PROCESSMEMORYINFO {
  uint64_t VmRSS = 0;   // current resident size
  uint64_t VmPeak = 0;  // peak virtual size
  uint64_t VmHWM = 0;   // peak resident size
};

// Sets OS_FAMILY to "Linux", then reads "/etc/os-release": each line is split at "=" (empty
// parts dropped) and the second part is stored in the field whose key equals the first part.
// A missing file leaves every field but OS_FAMILY as it was; so do keys the file omits.
//   NAME=Arch Linux     => NAME "Arch Linux"
//   ID_LIKE=debian      => ignored (no such field)
//   NAME=               => ignored (no second part)
//   A=b=c               => the second part only: "b"
ZRAD_EXPORT void zrutGetOSVersionInfo(OSRELEASEINFO& info);

// The package format suiting this distribution, found from the lower-cased NAME; the first
// word of this list found in it decides:
//   kylin, uos, deepin, ubuntu, 方德桌面 => "deb";  superredos, centos linux => "rpm"
// A "Windows" family gives "exe"; no word found, or no release file, gives "".
//   NAME="Ubuntu"        => "deb"
//   NAME="CentOS Linux"  => "rpm"
//   NAME="CentOS Stream" => ""   (the word is "centos linux")
//   NAME="Debian GNU/Linux" => ""
ZRAD_EXPORT ZrUtf8String zrutGetPkgFormat();

// The default text editor: the first of these words found in the lower-cased NAME decides:
//   kylin => "pluma"; uos, deepin => "dedit"; superredos, ubuntu, centos linux, 方德桌面 => "gedit"
// A "Windows" family gives "notepad"; no word found, or no release file, gives "".
ZRAD_EXPORT ZrUtf8String zrutGetDefaultTextEditor();

// The default file explorer (a program or a command line), chosen like the text editor:
//   kylin => "caja"; uos, deepin => "gio open"; superredos, ubuntu, centos linux => "nautilus";
//   方德桌面 => "nemo"
// A "Windows" family gives "explorer"; no word found gives "".
ZRAD_EXPORT ZrUtf8String zrutGetDefaultExplorer();

// The default paint program, chosen like the text editor:
//   kylin => "gnome-paint"; uos, deepin => "deepin-draw"; superredos => "gimp";
//   ubuntu, centos linux => "" (they decide, with no program); 方德桌面 => "mypaint"
// A "Windows" family gives "mspaint"; no word found gives "".
//   NAME="Ubuntu 方德桌面" => ""   (ubuntu is met first)
ZRAD_EXPORT ZrUtf8String zrutGetDefaultPaint();

// Reads VmRSS, VmPeak and VmHWM (kB) of process `processId` from "/proc/<id>/status". Keys are
// compared ignoring case; a key the file lacks leaves its field as it was.
// Returns false when `info` is null, when the file cannot be opened or read (no such process),
// or when one of the three values is not a readable number (the fields read so far stay filled).
ZRAD_EXPORT bool zrutGetProcessMemoryInfo(int processId, PROCESSMEMORYINFO* info);

// The kernel's sysinfo call: 0 and `info` filled, or -1.
ZRAD_EXPORT int zrutGetSysMemoryInfo(struct sysinfo& info);
