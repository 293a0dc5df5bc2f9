// Parsing free-form date-time texts into seconds since the epoch.
//
// The text is cut at spaces and each token fills part of a broken-down UTC time or sets a day
// offset; the result is timegm of the fields plus the offset in days.
#include <climits>
#include <cstdlib>
#include <ctime>

#include <zrad/text.h>
#include <zrplatform/wildcard.h>

namespace {

const char* const kMonthNames[12] = {"Jan", "Feb", "Mar", "Apr", "May", "Jun",
                                     "Jul", "Aug", "Sep", "Oct", "Nov", "Dec"};

// A base-10 field of a date text. Fields go through `store` into ints, and the adjustments of
// year and month are done on longs, so no sum can overflow.
long decimal(const ZrUtf8String& text) { return std::strtol(text.c_str(), nullptr, 10); }

// Stores `value` in `field` when it fits an int; otherwise marks the text as unusable.
void store(int& field, long value, bool& fits) {
  if (value < INT_MIN || value > INT_MAX)
    fits = false;
  else
    field = static_cast<int>(value);
}

// Years as tm_year: 0..69 are 2000..2069, 70..99 are 1970..1999, four-digit years as written.
long yearField(long year) {
  if (year > 99) return year - 1900;
  if (year < 70) return year + 100;
  return year;
}

bool holdsAfterFirst(const ZrUtf8String& token, char ch) { return token.find(ch, 1) > 0; }

bool isLetter(char ch) { return (ch >= 'a' && ch <= 'z') || (ch >= 'A' && ch <= 'Z'); }

// Splits `token` on `separator`; true with the three fields when there are exactly three.
bool threeFields(const ZrUtf8String& token, char separator, int (&out)[3], bool& fits) {
  ZrArray<ZrUtf8String> fields;
  zrutSplitStringA(token, separator, fields);
  if (fields.length() != 3) return false;
  for (int i = 0; i < 3; ++i) store(out[i], decimal(fields[i]), fits);
  return true;
}

// Reads "Mon D YYYY" starting at tokens[i]; returns the index of the last token used.
// The day and year are one to four digits, so they always fit.
int readMonthGroup(const ZrArray<ZrUtf8String>& tokens, int i, std::tm& fields) {
  for (int month = 0; month < 12; ++month) {
    if (Zr_stricmpA(tokens[i].c_str(), kMonthNames[month]) != 0) continue;
    fields.tm_mon = month;
    if (i + 1 < tokens.length() && (quickMatch(tokens[i + 1], "#") || quickMatch(tokens[i + 1], "##"))) {
      fields.tm_mday = static_cast<int>(decimal(tokens[++i]));
      if (i + 1 < tokens.length() && quickMatch(tokens[i + 1], "####"))
        fields.tm_year = static_cast<int>(yearField(decimal(tokens[++i])));
    }
    break;
  }
  return i;
}

}  // namespace

int64_t zrutStrToTime(const ZrUtf8String& text) {
  if (text.isEmpty()) return 0;
  std::tm fields{};
  fields.tm_year = 70;
  fields.tm_mday = 1;
  double days = 0;
  int wholeDays = 0;
  bool fits = true;

  ZrArray<ZrUtf8String> tokens;
  zrutSplitStringA(text, ' ', tokens);
  for (int i = 0; i < tokens.length(); ++i) {
    const ZrUtf8String& token = tokens[i];
    int three[3] = {};
    if (holdsAfterFirst(token, '-') || holdsAfterFirst(token, '/')) {
      if (threeFields(token, holdsAfterFirst(token, '-') ? '-' : '/', three, fits)) {
        store(fields.tm_year, yearField(three[0]), fits);
        store(fields.tm_mon, three[1] - 1L, fits);
        fields.tm_mday = three[2];
      }
    } else if (holdsAfterFirst(token, ':')) {
      if (threeFields(token, ':', three, fits)) {
        fields.tm_hour = three[0];
        fields.tm_min = three[1];
        fields.tm_sec = three[2];
      }
    } else if (token[0] == '-') {
      store(wholeDays, decimal(token), fits);
      days = wholeDays;
    } else if (token.length() >= 3 && isLetter(token[0])) {
      i = readMonthGroup(tokens, i, fields);
    } else if (token.find('+') >= 0) {
      store(wholeDays, decimal(token), fits);
      days = wholeDays;
    } else if (tokens.length() == 1) {
      days = std::strtod(token.c_str(), nullptr);
    }
  }

  // timegm leaves tm_wday alone when it cannot represent the date, and -1 is a valid time.
  fields.tm_wday = -1;
  time_t base = timegm(&fields);
  if (!fits || fields.tm_wday == -1) return 0;
  double seconds = static_cast<double>(base) + days * 86400.0;
  // Outside the 64-bit range (or not a number) there is no time to give.
  if (!(seconds >= -9223372036854775808.0 && seconds < 9223372036854775808.0)) return 0;
  return static_cast<int64_t>(seconds);
}
