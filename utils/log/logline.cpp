// Log line formatting by hand, byte-identical to the printf format it replaces.
#include "log/logline.h"

#include <cstdint>
#include <cstring>

namespace zrad::detail {

const char* logLevelName(int level) {
  static const char* const names[] = {"info", "info", "info", "debug", "warnning", "error"};
  auto index = static_cast<unsigned>(level);
  return index < 6 ? names[index] : "info";
}

namespace {

// %0<width>d for a non-negative value; wider values print whole, as printf does.
void appendPadded(std::string& out, long value, int width, char pad) {
  char digits[24];
  int n = 0;
  unsigned long v = value < 0 ? 0UL - static_cast<unsigned long>(value) : static_cast<unsigned long>(value);
  do {
    digits[n++] = static_cast<char>('0' + v % 10);
    v /= 10;
  } while (v);
  int length = n + (value < 0 ? 1 : 0);
  if (pad == ' ')
    for (int i = length; i < width; ++i) out += ' ';
  if (value < 0) out += '-';
  if (pad == '0')
    for (int i = length; i < width; ++i) out += '0';
  while (n) out += digits[--n];
}

void appendText(std::string& out, const char* text) {
  out.append(text ? text : "(null)");
}

// %p as glibc prints it: "(nil)" or 0x and lowercase hex without leading zeros.
void appendPointer(std::string& out, const void* p) {
  auto v = reinterpret_cast<uintptr_t>(p);
  if (!v) {
    out += "(nil)";
    return;
  }
  char hex[2 * sizeof v];
  int n = 0;
  for (; v; v >>= 4) hex[n++] = "0123456789abcdef"[v & 15];
  out += "0x";
  while (n) out += hex[--n];
}

}  // namespace

void appendLogLine(std::string& out, const std::tm& when, long micros, const char* file, int line,
                   const char* function, const char* levelName, const void* thread,
                   const char* message) {
  appendPadded(out, when.tm_year + 1900L, 4, ' ');
  out += '-';
  appendPadded(out, when.tm_mon + 1L, 2, '0');
  out += '-';
  appendPadded(out, when.tm_mday, 2, '0');
  out += ' ';
  appendPadded(out, when.tm_hour, 2, '0');
  out += ':';
  appendPadded(out, when.tm_min, 2, '0');
  out += ':';
  appendPadded(out, when.tm_sec, 2, '0');
  out += '.';
  appendPadded(out, micros, 6, '0');
  out += ", ";
  appendText(out, file);
  out += " (";
  appendPadded(out, line, 0, ' ');
  out += ")<";
  appendText(out, function);
  out += ">,[";
  appendText(out, levelName);
  out += "],{tid:";
  appendPointer(out, thread);
  out += "} ";
  appendText(out, message);
  out += '\n';
}

}  // namespace zrad::detail
