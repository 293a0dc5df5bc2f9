// Distribution tests: which package format and default programs suit a release record.
//
// Each choice is a table of distribution words in match order; the first word found in the
// lower-cased NAME decides, even when its answer is "". Pure text: nothing here reads a file.
#include "system/distro.h"

#include <cstddef>

namespace zrad::osinfo {
namespace {

struct Rule {
  const char* word;
  const char* answer;
};

struct Table {
  const char* windows;  // the answer for a Windows family
  bool exactFamily;     // the family must equal "Windows"/"Linux" rather than contain it
  const Rule* rules;
  size_t count;
};

// Upper-case letters can never be found in the lower-cased name; "NewStartOS" stays listed all
// the same, as the one rpm word that never matches.
const Rule kPkgFormatRules[] = {
    {"kylin", "deb"},      {"uos", "deb"},          {"deepin", "deb"},     {"ubuntu", "deb"},
    {"方德桌面", "deb"},   {"superredos", "rpm"},   {"centos linux", "rpm"}, {"NewStartOS", "rpm"},
};
const Rule kTextEditorRules[] = {
    {"kylin", "pluma"},       {"uos", "dedit"},    {"deepin", "dedit"},
    {"superredos", "gedit"},  {"ubuntu", "gedit"}, {"centos linux", "gedit"},
    {"方德桌面", "gedit"},
};
const Rule kExplorerRules[] = {
    {"kylin", "caja"},          {"uos", "gio open"},    {"deepin", "gio open"},
    {"superredos", "nautilus"}, {"ubuntu", "nautilus"}, {"centos linux", "nautilus"},
    {"方德桌面", "nemo"},
};
// Ubuntu and CentOS decide too, with no program.
const Rule kPaintRules[] = {
    {"kylin", "gnome-paint"}, {"uos", "deepin-draw"}, {"deepin", "deepin-draw"},
    {"superredos", "gimp"},   {"ubuntu", ""},         {"centos linux", ""},
    {"方德桌面", "mypaint"},
};

template <size_t N>
constexpr Table makeTable(const char* windows, bool exactFamily, const Rule (&rules)[N]) {
  return Table{windows, exactFamily, rules, N};
}

const Table& tableFor(Choice choice) {
  static const Table kPkgFormat = makeTable("exe", false, kPkgFormatRules);
  static const Table kTextEditor = makeTable("notepad", true, kTextEditorRules);
  static const Table kExplorer = makeTable("explorer", false, kExplorerRules);
  static const Table kPaint = makeTable("mspaint", false, kPaintRules);
  switch (choice) {
    case Choice::kPkgFormat: return kPkgFormat;
    case Choice::kTextEditor: return kTextEditor;
    case Choice::kExplorer: return kExplorer;
    case Choice::kPaint: break;
  }
  return kPaint;
}

bool familyIs(const ZrUtf8String& family, const char* word, bool exact) {
  return exact ? family == word : family.find(word) >= 0;
}

}  // namespace

ZrUtf8String chooseFor(Choice choice, const OSRELEASEINFO& info) {
  const Table& table = tableFor(choice);
  if (familyIs(info.OS_FAMILY, "Windows", table.exactFamily)) return table.windows;
  if (!familyIs(info.OS_FAMILY, "Linux", table.exactFamily)) return ZrUtf8String();
  ZrUtf8String name = info.NAME;
  name.makeLower();
  for (size_t i = 0; i < table.count; ++i) {
    if (name.find(table.rules[i].word) >= 0) return table.rules[i].answer;
  }
  return ZrUtf8String();
}

}  // namespace zrad::osinfo
