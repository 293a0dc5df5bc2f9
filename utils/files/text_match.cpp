// Name matching: UTF-8 names against wildcard patterns through the platform's matchers.
//
// A "." in a pattern is escaped before matching so that it stands only for itself.
#include <zrad/text.h>
#include <zrplatform/wildcard.h>

namespace {

bool matchWith(bool (*matcher)(const ZrString&, const ZrString&), const ZrUtf8String& name,
               const ZrUtf8String& pattern) {
  ZrString escaped(pattern);
  escaped.replace(ZrString(L"."), ZrString(L"`."));
  return matcher(ZrString(name), escaped);
}

}  // namespace

bool quickMatch(const ZrUtf8String& name, const ZrUtf8String& pattern) {
  return matchWith(zrutWcMatchExp, name, pattern);
}

bool quickMatchNoCase(const ZrUtf8String& name, const ZrUtf8String& pattern) {
  return matchWith(zrutWcMatchNoCase, name, pattern);
}
