// Stack dumps: capture with the unwinder, name frames with dladdr, log or copy the text.
#include <dlfcn.h>
#include <unwind.h>

#include <cstdint>
#include <cstring>
#include <iomanip>
#include <sstream>

#include <zrad/log.h>

#include "log/stacktext.h"

namespace {

constexpr int kMaxFrames = 100;

struct Capture {
  void* frames[kMaxFrames];
  int count = 0;
};

_Unwind_Reason_Code collect(_Unwind_Context* context, void* arg) {
  auto* capture = static_cast<Capture*>(arg);
  if (capture->count == kMaxFrames) return _URC_END_OF_STACK;
  capture->frames[capture->count++] = reinterpret_cast<void*>(_Unwind_GetIP(context));
  return _URC_NO_REASON;
}

// One line per frame. A frame without an object name puts the stream in its failed state (a
// null char* is not printable), which ends the dump there.
std::string formatStack() {
  Capture capture;
  _Unwind_Backtrace(collect, &capture);
  std::ostringstream out;
  for (int i = 0; i < capture.count; ++i) {
    void* address = capture.frames[i];
    Dl_info info{};
    if (!dladdr(address, &info)) info = Dl_info{};
    auto pc = reinterpret_cast<uintptr_t>(address) - reinterpret_cast<uintptr_t>(info.dli_fbase) + 8;
    out << "  #" << std::setw(2) << i << ": " << address << "  "
        << (info.dli_sname ? info.dli_sname : "") << info.dli_fname << "  " << info.dli_saddr
        << " " << info.dli_fbase << " PC:" << reinterpret_cast<void*>(pc) << "\n";
  }
  return out.str();
}

zrad::detail::StackTextProvider g_provider = zrad::detail::builtinStackText;

}  // namespace

namespace zrad::detail {

void builtinStackText(char* buffer, size_t size) {
  std::string text = formatStack();
  std::strncpy(buffer, text.c_str(), size);
}

void setStackTextProvider(StackTextProvider provider) { g_provider = provider; }

std::string stackText() {
  if (!g_provider) return std::string();
  char buffer[1024] = {};
  g_provider(buffer, sizeof buffer);
  return std::string(buffer, strnlen(buffer, sizeof buffer));
}

}  // namespace zrad::detail

extern "C" void zr_dumpStack() { zr_Log(2, -1, "", "", formatStack().c_str()); }
