// Tests of the text services: number tests and conversions, split and join, matching, time.
//
// The rows are the ones documented in text.h plus the edges around them; every row runs
// through the UTF-8 and the wide form where both exist.
#include <pthread.h>
#include <stdlib.h>
#include <time.h>

#include <string>
#include <thread>
#include <vector>

#include <gtest/gtest.h>
#include <zrad/text.h>

namespace {

ZrString wide(const char* utf8) { return ZrString(ZrUtf8String(utf8)); }

template <class Text>
std::string joined(const ZrArray<Text>& fields) {
  std::string text;
  for (const Text& f : fields) text += std::string(ZrUtf8String(ZrString(f)).c_str()) + "|";
  return text;
}
template <>
std::string joined(const ZrArray<ZrUtf8String>& fields) {
  std::string text;
  for (const ZrUtf8String& f : fields) text += std::string(f.c_str()) + "|";
  return text;
}

}  // namespace

TEST(Text, NumberTests) {
  struct {
    const char* text;
    bool isLong, isUnsigned, isDouble;
  } rows[] = {
      {" + 12 ", true, false, true}, {",5", true, false, true},   {"1.0", false, false, true},
      {"", false, false, false},     {"123", true, true, true},   {" 1", true, false, true},
      {"-1", true, false, true},     {"-1.5", false, false, true}, {".5", false, false, true},
      {"-.5", false, false, true},   {"5.", false, false, false}, {"1e5", false, false, false},
      {"+-1", false, false, false},  {"0x10", false, false, false}, {"1 2", false, false, false},
      {"١٢", false, false, false},   {"12\n", true, false, true}, {"+", false, false, false},
  };
  for (size_t i = 0; i < std::size(rows); ++i) {
    const auto& r = rows[i];
    EXPECT_EQ(zrutIsLong(ZrUtf8String(r.text)), r.isLong) << "row " << i;
    EXPECT_EQ(zrutIsUnsignedDigit(ZrUtf8String(r.text)), r.isUnsigned) << "row " << i;
    EXPECT_EQ(zrutIsDouble(ZrUtf8String(r.text)), r.isDouble) << "row " << i;
    EXPECT_EQ(zrutIsLong(wide(r.text)), r.isLong) << "wide row " << i;
    EXPECT_EQ(zrutIsUnsignedDigit(wide(r.text)), r.isUnsigned) << "wide row " << i;
    EXPECT_EQ(zrutIsDouble(wide(r.text)), r.isDouble) << "wide row " << i;
  }

  // Every printed double passes; the longest accepted text is matched whole, one more is refused.
  EXPECT_TRUE(zrutIsDouble(ftos(-1.7976931348623157e308)));
  std::string digits(kMaxNumberTestLength, '7');
  EXPECT_TRUE(zrutIsLong(ZrUtf8String(digits)));
  EXPECT_TRUE(zrutIsDouble(wide(digits.c_str())));
  EXPECT_FALSE(zrutIsUnsignedDigit(ZrUtf8String(digits + "7")));
}

TEST(Text, Conversions) {
  struct {
    const char* text;
    long l;
    long long ll;
    unsigned long long ull;
    int i;
    double d;
  } rows[] = {
      {"0x10", 16, 16, 16, 0, 16.0},       {"017", 15, 15, 15, 17, 17.0},   {" 42abc", 42, 42, 42, 42, 42.0},
      {"abc", 0, 0, 0, 0, 0.0},           {"", 0, 0, 0, 0, 0.0},           {"-7", -7, -7, -7ULL, -7, -7.0},
      {"2.5e1", 2, 2, 2, 2, 25.0},        {"9223372036854775807", 9223372036854775807L, 9223372036854775807LL,
                                           9223372036854775807ULL, -1, 9223372036854775807.0},
      {"18446744073709551615", 9223372036854775807L, 9223372036854775807LL, 18446744073709551615ULL, -1,
       18446744073709551615.0},
  };
  for (size_t k = 0; k < std::size(rows); ++k) {
    const auto& r = rows[k];
    EXPECT_EQ(stol(ZrUtf8String(r.text)), r.l) << "row " << k;
    EXPECT_EQ(stoll(ZrUtf8String(r.text)), r.ll) << "row " << k;
    EXPECT_EQ(stoull(ZrUtf8String(r.text)), r.ull) << "row " << k;
    EXPECT_EQ(stoi(ZrUtf8String(r.text)), r.i) << "row " << k;
    EXPECT_DOUBLE_EQ(stof(ZrUtf8String(r.text)), r.d) << "row " << k;
    EXPECT_EQ(wstol(wide(r.text)), r.l) << "wide row " << k;
    EXPECT_EQ(wstoll(wide(r.text)), r.ll) << "wide row " << k;
    EXPECT_EQ(wstoull(wide(r.text)), r.ull) << "wide row " << k;
    EXPECT_EQ(wstoi(wide(r.text)), r.i) << "wide row " << k;
    EXPECT_DOUBLE_EQ(wstof(wide(r.text)), r.d) << "wide row " << k;
  }

  EXPECT_STREQ(ltos(-12).c_str(), "-12");
  EXPECT_STREQ(lltos(-9223372036854775807LL - 1).c_str(), "-9223372036854775808");
  EXPECT_STREQ(ulltos(18446744073709551615ULL).c_str(), "18446744073709551615");
  EXPECT_STREQ(ftos(1.5).c_str(), "1.500000");
  EXPECT_STREQ(ftos(-0.0000004).c_str(), "-0.000000");
}

TEST(Text, SplitAndJoin) {
  struct {
    const char* text;
    const char* delimiters;
    const char* fields;
  } rows[] = {{"a,,b,", ",", "a|b|"},  {"a;b,c", ",;", "a|b|c|"}, {"", ",", ""},     {",,", ",", ""},
              {"abc", ",", "abc|"},    {"a b", "", "a b|"},       {"甲，乙，", "，", "甲|乙|"},
              // "，" (EF BC 8C) shares its lead byte with "｛" (EF BD 9B): no cut inside it.
              {"｛，x", "，", "｛|x|"}, {"\xE4", "\xE4", ""}, {"a,b，c，", ",，", "a|b|c|"}};
  for (size_t i = 0; i < std::size(rows); ++i) {
    ZrArray<ZrUtf8String> fields;
    fields.append("kept");
    zrutSplitString(ZrUtf8String(rows[i].text), ZrUtf8String(rows[i].delimiters), fields);
    EXPECT_EQ(joined(fields), std::string("kept|") + rows[i].fields) << "row " << i;
  }

  ZrArray<ZrUtf8String> dotted;
  zrutSplitStringA("1.2..3.", '.', dotted);
  EXPECT_EQ(joined(dotted), "1|2|3|");

  struct {
    const char* text;
    const char* fields;
  } wideRows[] = {{"a,,b,", "a|b|"}, {"abc", "abc|"}, {"", "|"}, {",a", "a|"}, {",", ""}, {"甲,乙", "甲|乙|"}};
  for (size_t i = 0; i < std::size(wideRows); ++i) {
    ZrArray<ZrString> fields;
    zrutSplitString(wide(wideRows[i].text), L',', fields);
    EXPECT_EQ(joined(fields), wideRows[i].fields) << "wide row " << i;
  }

  ZrArray<ZrUtf8String> list;
  EXPECT_STREQ(zrutJoinString(list, ",").c_str(), "");
  EXPECT_STREQ(ZrUtf8String(zrutJoinStringW(ZrArray<ZrString>(), L",")).c_str(), "");
  list.append("a");
  EXPECT_STREQ(zrutJoinString(list, ",").c_str(), "a");
  list.append("");
  list.append("b");
  EXPECT_STREQ(zrutJoinString(list, ", ").c_str(), "a, , b");
  ZrArray<ZrString> wideList;
  wideList.append(L"x");
  wideList.append(L"y");
  EXPECT_STREQ(ZrUtf8String(zrutJoinStringW(wideList, L"::")).c_str(), "x::y");
}

TEST(Text, QuickMatch) {
  struct {
    const char* name;
    const char* pattern;
    bool exact, noCase;
  } rows[] = {{"a.txt", "*.txt", true, true},  {"abtxt", "*.txt", false, false}, {"A.TXT", "*.txt", false, true},
              {"12", "##", true, true},        {"1a", "##", false, false},       {"a.b", "?.?", true, true},
              {"ab", "?.?", false, false},     {"图.dwg", "?.dwg", true, true},  {"", "*", true, true}};
  for (size_t i = 0; i < std::size(rows); ++i) {
    EXPECT_EQ(quickMatch(rows[i].name, rows[i].pattern), rows[i].exact) << "row " << i;
    EXPECT_EQ(quickMatchNoCase(rows[i].name, rows[i].pattern), rows[i].noCase) << "row " << i;
  }
}

TEST(Text, StrToTime) {
  setenv("TZ", "UTC", 1);
  tzset();
  struct {
    const char* text;
    int64_t seconds;
  } rows[] = {
      {"", 0},
      {"2020-01-02 03:04:05", 1577934245},
      {"20-1-2", 1577923200},
      {"99-12-31", 946598400},
      {"1950-01-01", -631152000},
      {"2020/01/02", 1577923200},
      {"2020-01-02 -1", 1577836800},
      {"2020-01-02 +1", 1578009600},
      {"Jan 2 2020", 1577923200},
      {"dec 31 1999 23:59:59", 946684799},
      {"Feb 29", 5097600},
      {"1.5", 129600},
      {"-2", -172800},
      {"2020-01", 0},
      {"1e300", 0},
      {"12:30:00", 45000},
      {"12:30", 0},
      {"2020-01-02 1.5", 1577923200},
  };
  for (size_t i = 0; i < std::size(rows); ++i)
    EXPECT_EQ(zrutStrToTime(rows[i].text), rows[i].seconds) << "row " << i << ": " << rows[i].text;
}

TEST(Text, ClockAndThreads) {
  uint64_t before = zrutGetcurrentTime();
  zrutSleep(20);
  uint64_t after = zrutGetcurrentTime();
  EXPECT_GE(after - before, 20000u);
  uint64_t ticks = zrutGetTickCount();
  EXPECT_GE(ticks, after / 1000);
  EXPECT_LE(ticks, zrutGetcurrentTime() / 1000);
  // The clock counts from the epoch, as time() does.
  EXPECT_NEAR(static_cast<double>(after / 1000000), static_cast<double>(time(nullptr)), 2.0);

  uint64_t here = zrutCurrentThreadId();
  EXPECT_EQ(here, static_cast<uint64_t>(pthread_self()));
  uint64_t there = 0;
  std::thread([&] { there = zrutCurrentThreadId(); }).join();
  EXPECT_NE(there, here);
}
