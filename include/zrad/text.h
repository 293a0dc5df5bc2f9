// Text services: number tests and conversions, splitting and joining, name matching, time.
//
// Small helpers the whole library shares. None of them reports an error: a text that is not a
// number converts to 0, a test on such a text is false, an empty date text is time 0.
#pragma once

#include <cstdint>

#include <zrad/export.h>
#include <zrplatform/array.h>
#include <zrplatform/strings.h>

// ---------------------------------------------------------------------------------------------
// Number tests. Each takes wide or UTF-8 text and is true only when the whole text matches.
// White space may surround the number and separate the sign from the digits, and the sign
// class is "[+,-]", so a comma stands where a sign may.
//   zrutIsLong(" + 12 ")          => true
//   zrutIsLong(",5")              => true
//   zrutIsLong("1.0")             => false
//   zrutIsLong("")                => false
//   zrutIsUnsignedDigit("123")    => true
//   zrutIsUnsignedDigit(" 1")     => false   (no white space at all)
//   zrutIsUnsignedDigit("-1")     => false
//   zrutIsDouble("-1.5")          => true
//   zrutIsDouble(".5")            => true
//   zrutIsDouble("-.5")           => true
//   zrutIsDouble("5.")            => false
//   zrutIsDouble("1e5")           => false   (no exponent)
// Any length is tested (one pass over the text). White space is the C locale's: space, \t, \n,
// \v, \f and \r, whatever locale the process has chosen.
ZRAD_EXPORT bool zrutIsLong(const ZrString& text);
ZRAD_EXPORT bool zrutIsLong(const ZrUtf8String& text);
ZRAD_EXPORT bool zrutIsUnsignedDigit(const ZrString& text);
ZRAD_EXPORT bool zrutIsUnsignedDigit(const ZrUtf8String& text);
ZRAD_EXPORT bool zrutIsDouble(const ZrString& text);
ZRAD_EXPORT bool zrutIsDouble(const ZrUtf8String& text);

// ---------------------------------------------------------------------------------------------
// Number to text, printf style.
//   ltos(-12)                     => "-12"
//   ulltos(18446744073709551615)  => "18446744073709551615"
//   ftos(1.5)                     => "1.500000"
ZRAD_EXPORT ZrUtf8String ltos(long value);
ZRAD_EXPORT ZrUtf8String lltos(long long value);
ZRAD_EXPORT ZrUtf8String ulltos(unsigned long long value);
ZRAD_EXPORT ZrUtf8String ftos(double value);

// Text to number. Leading white space is skipped, reading stops at the first character that
// does not fit, and a text without a number gives 0. The `w` forms take wide text.
// stol, stoll and stoull read the base from the prefix ("0x" hexadecimal, "0" octal); stoi is
// always decimal and keeps the low bits of a value beyond int.
//   stol("0x10")   => 16
//   stol("017")    => 15
//   stoi("0x10")   => 0
//   stoi(" 42abc") => 42
//   stof("2.5e1")  => 25.0
//   stof("0x10")   => 16.0   (strtod reads hexadecimal too)
//   stol("abc")    => 0
ZRAD_EXPORT long stol(const ZrUtf8String& text);
ZRAD_EXPORT long wstol(const ZrString& text);
ZRAD_EXPORT long long stoll(const ZrUtf8String& text);
ZRAD_EXPORT long long wstoll(const ZrString& text);
ZRAD_EXPORT unsigned long long stoull(const ZrUtf8String& text);
ZRAD_EXPORT unsigned long long wstoull(const ZrString& text);
ZRAD_EXPORT int stoi(const ZrUtf8String& text);
ZRAD_EXPORT int wstoi(const ZrString& text);
ZRAD_EXPORT double stof(const ZrUtf8String& text);
ZRAD_EXPORT double wstof(const ZrString& text);

// ---------------------------------------------------------------------------------------------
// Splitting and joining. Every split appends to `fields`; nothing is cleared first.
//
// zrutSplitString(text, delimiters, fields): `delimiters` is a set of characters (UTF-8
// characters, not bytes); empty fields never appear.
//   ("a,,b,", ",")    => ["a", "b"]
//   ("a;b,c", ",;")   => ["a", "b", "c"]
//   ("", ",")         => []
//   (",,", ",")       => []
ZRAD_EXPORT void zrutSplitString(const ZrUtf8String& text, const ZrUtf8String& delimiters,
                                 ZrArray<ZrUtf8String>& fields);
// zrutSplitString with the one-character set {delimiter}; the delimiter is one byte.
//   ("1.2.3", '.')    => ["1", "2", "3"]
ZRAD_EXPORT void zrutSplitStringA(const ZrUtf8String& text, char delimiter,
                                  ZrArray<ZrUtf8String>& fields);
// Wide split on one character: like the set form, except that a text holding no delimiter is
// appended whole, even when it is empty.
//   (L"a,,b,", L',')  => [L"a", L"b"]
//   (L"abc", L',')    => [L"abc"]
//   (L"", L',')       => [L""]
ZRAD_EXPORT void zrutSplitString(const ZrString& text, wchar_t delimiter, ZrArray<ZrString>& fields);

// Element 0, then the separator and the next element for each further one.
//   ([], ",")           => ""
//   (["a"], ",")        => "a"
//   (["a", "", "b"], ", ") => "a, , b"
ZRAD_EXPORT ZrUtf8String zrutJoinString(const ZrArray<ZrUtf8String>& fields, const ZrUtf8String& separator);
ZRAD_EXPORT ZrString zrutJoinStringW(const ZrArray<ZrString>& fields, const ZrString& separator);

// ---------------------------------------------------------------------------------------------
// Name matching with the platform's wildcards: "*" any run, "?" one character, "#" one digit,
// "`" takes the next character literally. A "." in the pattern matches only a dot.
//   quickMatch("a.txt", "*.txt")        => true
//   quickMatch("abtxt", "*.txt")        => false
//   quickMatch("A.TXT", "*.txt")        => false
//   quickMatchNoCase("A.TXT", "*.txt")  => true
//   quickMatch("12", "##")              => true
ZRAD_EXPORT bool quickMatch(const ZrUtf8String& name, const ZrUtf8String& pattern);
ZRAD_EXPORT bool quickMatchNoCase(const ZrUtf8String& name, const ZrUtf8String& pattern);

// ---------------------------------------------------------------------------------------------
// Clock, sleep and thread identity.

// Microseconds since the epoch (wall clock).
ZRAD_EXPORT uint64_t zrutGetcurrentTime();
// Milliseconds since the epoch: zrutGetcurrentTime() / 1000.
ZRAD_EXPORT uint64_t zrutGetTickCount();
// Sleeps at least `milliseconds`, resuming after signals.
ZRAD_EXPORT void zrutSleep(unsigned int milliseconds);
// The calling thread's pthread identity as a number.
ZRAD_EXPORT uint64_t zrutCurrentThreadId();

// Seconds since the epoch for a free-form date-time text, its fields taken as UTC. The text is
// split on spaces; tokens are read in this order of precedence:
//   year-month-day or year/month/day (exactly three fields; years 0..69 mean 2000..2069,
//     70..99 mean 1970..1999, larger years are taken as written),
//   hours:minutes:seconds (exactly three fields),
//   -N (N whole days back),
//   a month name "Jan".."Dec" (any case; a token of three or more characters that starts with
//     a letter is taken as one) followed by a day "#"/"##" and then a year "####",
//   any other token holding "+", read as a whole number of days on ("+2" => two days on).
// A text that is one token of none of these kinds is a count of days since 1970-01-01, which
// may be fractional. Missing fields default to 1970-01-01 00:00:00. A text with a field that
// does not fit an int, or whose date timegm cannot represent, gives 0 (no time), like a result
// beyond the 64-bit range.
//   ""                      => 0
//   "2020-01-02 03:04:05"   => 1577934245
//   "20-1-2"                => 1577923200
//   "2020/01/02"            => 1577923200
//   "2020-01-02 -1"         => 1577836800
//   "2020-01-02 +1"         => 1578009600
//   "Jan 2 2020"            => 1577923200
//   "1.5"                   => 129600
//   "2020-01"               => 0         (a date needs three fields)
//   "1e300"                 => 0         (beyond the 64-bit range)
//   "1/2147483648/1"        => 0         (a month beyond an int)
//   "99999999999999999999-1-1" => 0      (a year beyond an int)
//   "2147485547-13-1"       => 0         (a year timegm cannot represent)
//   "1969-12-31 23:59:59"   => -1
ZRAD_EXPORT int64_t zrutStrToTime(const ZrUtf8String& text);
