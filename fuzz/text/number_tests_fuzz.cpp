// Differential fuzz target: the number tests' automaton against the expressions that define it.
//
// Each input byte picks a character: the low values an alphabet that reaches every state of the
// scan (white space, signs, point, digits, and near misses), the rest a code unit of their own.
// Texts are kept to 16 characters, where <regex> is quick and its recursion shallow: its
// backtracking grows about threefold with every two characters, and 21 of them once took 0.4 s,
// beyond the time limit on a loaded machine.
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <regex>
#include <string>

#include <zrad/text.h>

#include "files/numberpatterns.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  static const std::wregex patterns[] = {std::wregex(zrad::files::kLongPattern),
                                         std::wregex(zrad::files::kUnsignedDigitPattern),
                                         std::wregex(zrad::files::kDoublePattern)};
  static bool (*const tests[])(const ZrString&) = {zrutIsLong, zrutIsUnsignedDigit, zrutIsDouble};
  static const wchar_t alphabet[] = L" \t\n\v\f\r+,-.0189ex\u00a0\u3000\u0661";
  constexpr size_t letters = sizeof alphabet / sizeof *alphabet - 1;
  if (size > 16) return 0;
  std::wstring text;
  for (size_t i = 0; i < size; ++i)
    text += data[i] < letters * 8 ? alphabet[data[i] % letters] : static_cast<wchar_t>(data[i]);
  for (int k = 0; k < 3; ++k)
    if (tests[k](ZrString(text.c_str())) != std::regex_match(text, patterns[k])) std::abort();
  return 0;
}
