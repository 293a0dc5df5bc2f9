// Tests of the text services: number tests and conversions, split and join, matching, time.
//
// The rows are the ones documented in text.h plus the edges around them; rows run through the
// UTF-8 and the wide form where both exist.
#include <stdlib.h>
#include <time.h>

#include <thread>

#include <zrad/text.h>

#include "rowcheck.h"

TEST(Text, NumberTests) {
  // out: zrutIsLong, zrutIsUnsignedDigit, zrutIsDouble
  Rows rows = {{" + 12 ", 0, "101"}, {",5", 0, "101"},  {"1.0", 0, "001"}, {"", 0, "000"},    {"123", 0, "111"},
               {" 1", 0, "101"},     {"-1", 0, "101"},  {"-1.5", 0, "001"}, {".5", 0, "001"}, {"-.5", 0, "001"},
               {"5.", 0, "000"},     {"1e5", 0, "000"}, {"+-1", 0, "000"}, {"0x10", 0, "000"}, {"1 2", 0, "000"},
               {"١٢", 0, "000"},     {"12\n", 0, "101"}};
  // The UTF-8 forms convert and call the wide ones, so these rows run through both.
  checkRows("numbers", rows, [](const Row& r) {
    ZrUtf8String t = r.a;
    return text(int(zrutIsLong(t))) + text(int(zrutIsUnsignedDigit(t))) + text(int(zrutIsDouble(t)));
  });

  // Every printed double passes; the longest accepted text is matched whole, one more is refused.
  EXPECT_TRUE(zrutIsDouble(ftos(-1.7976931348623157e308)));
  std::string digits(kMaxNumberTestLength, '7');
  EXPECT_TRUE(zrutIsLong(ZrUtf8String(digits)));
  EXPECT_FALSE(zrutIsUnsignedDigit(ZrUtf8String(digits + "7")));
}

TEST(Text, Conversions) {
  // out: stol, stoll, stoull, stoi, stof
  Rows rows = {{"0x10", 0, "16 16 16 0 16"},  {"017", 0, "15 15 15 17 17"}, {" 42abc", 0, "42 42 42 42 42"},
               {"abc", 0, "0 0 0 0 0"},       {"-7", 0, "-7 -7 18446744073709551609 -7 -7"},
               {"2.5e1", 0, "2 2 2 2 25"},
               {"18446744073709551615", 0,
                "9223372036854775807 9223372036854775807 18446744073709551615 -1 1.84467e+19"}};
  auto all = [](long l, long long ll, unsigned long long ull, int i, double d) {
    return text(l) + " " + text(ll) + " " + text(ull) + " " + text(i) + " " + text(ZrUtf8String::format("%g", d));
  };
  checkRows("stoX", rows, [&](const Row& r) { return all(stol(r.a), stoll(r.a), stoull(r.a), stoi(r.a), stof(r.a)); });
  // The wide forms convert and call the UTF-8 ones: one row where the five answers differ.
  const ZrString w = wide(rows.back().a);
  EXPECT_EQ(all(wstol(w), wstoll(w), wstoull(w), wstoi(w), wstof(w)), rows.back().out);

  EXPECT_EQ(text(lltos(-9223372036854775807LL - 1)), "-9223372036854775808");
  EXPECT_EQ(text(ulltos(18446744073709551615ULL)), "18446744073709551615");
  EXPECT_EQ(text(ltos(-12) + " " + ftos(1.5)), "-12 1.500000");
}

TEST(Text, SplitAndJoin) {
  checkRows("split",
            {{"a,,b,", ",", "kept|a|b"}, {"a;b,c", ",;", "kept|a|b|c"}, {"", ",", "kept"}, {",,", ",", "kept"},
             {"a b", "", "kept|a b"}, {"甲，乙，", "，", "kept|甲|乙"},
             // "，" (EF BC 8C) shares its lead byte with "｛" (EF BD 9B): no cut inside it.
             {"｛，x", "，", "kept|｛|x"}, {"a,b，c，", ",，", "kept|a|b|c"}},
            [](const Row& r) {
              ZrArray<ZrUtf8String> fields;
              fields.append("kept");  // appended to, never cleared
              zrutSplitString(r.a, r.b, fields);
              return zrutJoinString(fields, "|");
            });
  checkRows("splitA", {{"1.2..3.", ".", "1|2|3"}, {"..", ".", ""}}, [](const Row& r) {
    ZrArray<ZrUtf8String> fields;
    zrutSplitStringA(r.a, r.b[0], fields);
    return zrutJoinString(fields, "|");
  });
  // out: the number of fields, then the fields (an empty text holding no delimiter is one field)
  checkRows("splitW", {{"a,,b,", 0, "2:a|b"}, {"abc", 0, "1:abc"}, {"", 0, "1:"}, {",", 0, "0:"}, {"甲,乙", 0, "2:甲|乙"}},
            [](const Row& r) {
              ZrArray<ZrString> fields;
              zrutSplitString(wide(r.a), L',', fields);
              return text(fields.length()) + ":" + text(zrutJoinStringW(fields, L"|"));
            });

  ZrArray<ZrUtf8String> list;  // an empty field and a longer delimiter
  for (const char* field : {"a", "", "b"}) list.append(field);
  EXPECT_EQ(text(zrutJoinString(list, ", ")), "a, , b");
}

TEST(Text, QuickMatch) {
  // out: quickMatch, quickMatchNoCase
  checkRows("match",
            {{"a.txt", "*.txt", "11"}, {"abtxt", "*.txt", "00"}, {"A.TXT", "*.txt", "01"}, {"12", "##", "11"},
             {"1a", "##", "00"}, {"a.b", "?.?", "11"}, {"ab", "?.?", "00"}, {"图.dwg", "?.dwg", "11"}},
            [](const Row& r) { return text(int(quickMatch(r.a, r.b))) + text(int(quickMatchNoCase(r.a, r.b))); });
}

TEST(Text, StrToTime) {
  setenv("TZ", "UTC", 1);
  tzset();
  checkRows("time",
            {{"", 0, "0"},           {"2020-01-02 03:04:05", 0, "1577934245"}, {"20-1-2", 0, "1577923200"},
             {"99-12-31", 0, "946598400"},  {"1950-01-01", 0, "-631152000"},   {"2020/01/02", 0, "1577923200"},
             {"2020-01-02 -1", 0, "1577836800"}, {"2020-01-02 +1", 0, "1578009600"}, {"Jan 2 2020", 0, "1577923200"},
             {"dec 31 1999 23:59:59", 0, "946684799"}, {"Feb 29", 0, "5097600"}, {"1.5", 0, "129600"},
             {"-2", 0, "-172800"},   {"2020-01", 0, "0"},  {"1e300", 0, "0"},  {"12:30:00", 0, "45000"},
             {"12:30", 0, "0"},      {"2020-01-02 1.5", 0, "1577923200"}},
            [](const Row& r) { return zrutStrToTime(r.a); });
}

TEST(Text, ClockAndThreads) {
  uint64_t before = zrutGetcurrentTime();
  zrutSleep(20);
  uint64_t after = zrutGetcurrentTime();
  EXPECT_GE(after - before, 20000u);
  uint64_t ticks = zrutGetTickCount();
  EXPECT_TRUE(ticks >= after / 1000 && ticks <= zrutGetcurrentTime() / 1000);
  EXPECT_NEAR(double(after / 1000000), double(time(nullptr)), 2.0);  // counted from the epoch

  uint64_t here = zrutCurrentThreadId(), there = 0;
  std::thread([&] { there = zrutCurrentThreadId(); }).join();
  EXPECT_NE(there, here);
}
