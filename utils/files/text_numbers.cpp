// Number tests (regular expressions over wide text) and number <-> text conversions.
//
// The tests compile their expression once; the UTF-8 forms widen and call the wide ones.
// The conversions are the C library's, with the base each operation documents.
#include <cstdlib>
#include <regex>

#include <zrad/text.h>

#include "files/pathtext.h"

using zrad::files::viaUtf8;

namespace {

bool matchesWhole(const ZrString& text, const std::wregex& pattern) {
  // libstdc++ matches recursively, one frame per character: bound the depth.
  if (text.isEmpty() || text.length() > kMaxNumberTestLength) return false;
  return std::regex_match(text.str(), pattern);
}

}  // namespace

bool zrutIsLong(const ZrString& text) {
  static const std::wregex pattern(LR"(^\s*[+,-]?\s*[0-9]+\s*$)");
  return matchesWhole(text, pattern);
}

bool zrutIsUnsignedDigit(const ZrString& text) {
  static const std::wregex pattern(LR"(^[0-9]+$)");
  return matchesWhole(text, pattern);
}

bool zrutIsDouble(const ZrString& text) {
  static const std::wregex pattern(
      LR"(^(\s*[+,-]?\s*[0-9]+([.][0-9]+){0,1}\s*)|(\s*[+,-]?\s*[.][0-9]+\s*)$)");
  return matchesWhole(text, pattern);
}

bool zrutIsLong(const ZrUtf8String& text) { return zrutIsLong(ZrString(text)); }
bool zrutIsUnsignedDigit(const ZrUtf8String& text) { return zrutIsUnsignedDigit(ZrString(text)); }
bool zrutIsDouble(const ZrUtf8String& text) { return zrutIsDouble(ZrString(text)); }

ZrUtf8String ltos(long value) { return ZrUtf8String::format("%ld", value); }
ZrUtf8String lltos(long long value) { return ZrUtf8String::format("%lld", value); }
ZrUtf8String ulltos(unsigned long long value) { return ZrUtf8String::format("%llu", value); }
ZrUtf8String ftos(double value) { return ZrUtf8String::format("%lf", value); }

long stol(const ZrUtf8String& text) { return std::strtol(text.c_str(), nullptr, 0); }
long long stoll(const ZrUtf8String& text) { return std::strtoll(text.c_str(), nullptr, 0); }
unsigned long long stoull(const ZrUtf8String& text) { return std::strtoull(text.c_str(), nullptr, 0); }
int stoi(const ZrUtf8String& text) { return static_cast<int>(std::strtol(text.c_str(), nullptr, 10)); }
double stof(const ZrUtf8String& text) { return std::strtod(text.c_str(), nullptr); }

long wstol(const ZrString& text) { return viaUtf8(::stol, text); }
long long wstoll(const ZrString& text) { return viaUtf8(::stoll, text); }
unsigned long long wstoull(const ZrString& text) { return viaUtf8(::stoull, text); }
int wstoi(const ZrString& text) { return viaUtf8(::stoi, text); }
double wstof(const ZrString& text) { return viaUtf8(::stof, text); }
