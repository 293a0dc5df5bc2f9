// The definition of the number tests: ECMAScript expressions over wide text, matched whole.
//
// The library does not match them with <regex> (libstdc++ recurses once per character); it
// scans with the small automaton in text_numbers.cpp. The tests and a differential fuzz target
// hold the two equal. "\s" is read as the C locale reads it: space, \t, \n, \v, \f and \r.
#pragma once

namespace zrad::files {

inline constexpr const wchar_t* kLongPattern = LR"(^\s*[+,-]?\s*[0-9]+\s*$)";
inline constexpr const wchar_t* kUnsignedDigitPattern = LR"(^[0-9]+$)";
inline constexpr const wchar_t* kDoublePattern =
    LR"(^(\s*[+,-]?\s*[0-9]+([.][0-9]+){0,1}\s*)|(\s*[+,-]?\s*[.][0-9]+\s*)$)";

}  // namespace zrad::files
