// The XML filer's rules: what load refuses and why, texts, child counting, lookups by index and
// name in first-request order, attributes, the refused setters, who keeps whom alive; and
// hostile files (the fuzz replay walks its seeds and kept inputs in full besides).
#include <sys/stat.h>

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include <zrad/xml.h>

#include "common/small_stack.h"
#include "common/testdir.h"

namespace {

using namespace std::string_literals;
using XmlNodePtr = ZrSmartPtr<ZrsiPwUtXmlNode>;

struct LoadedXml {
  ZrSmartPtr<ZrsiPwUtXmlFiler> filer;  // keeps the document (and so `root`) alive
  bool ok;                             // what load() returned
  XmlNodePtr root;
};

// A new filer's load() of `xml` written to dir/doc.xml, and its root node.
LoadedXml loadXml(const TestDir& dir, const std::string& xml) {
  writeFile(dir / "doc.xml", xml);
  auto filer = createPwutXmlFiler();
  const bool ok = filer->load(ZrUtf8String(dir / "doc.xml"));
  return {filer, ok, filer->rootNode()};
}

std::string nameOf(const XmlNodePtr& node) { return node ? node->name().str() : "<null>"; }

TEST(XmlFiler, LoadRefusesAndSaysWhy) {
  TestDir dir;
  writeFile(dir / "broken.xml", "<a>\n<b>\n</a>\n");
  ASSERT_EQ(mkfifo((dir / "fifo").c_str(), 0600), 0);
  struct Row { std::string path; const char* error; int line; };
  const Row rows[] = {
      {"", "no such file", 0},
      {dir / "missing.xml", "no such file", 0},
      {dir.path(), "not a regular file", 0},
      {dir / "fifo", "not a regular file", 0},  // refused without waiting for a writer
      {dir / "broken.xml", "XML_ERROR_MISMATCHED_ELEMENT", 2},  // where <b> was left open
  };
  for (size_t i = 0; i < std::size(rows); ++i) {
    auto filer = createPwutXmlFiler();
    EXPECT_FALSE(filer->load(ZrUtf8String(rows[i].path))) << "row " << i;
    int line = -1;
    EXPECT_EQ(zrutXmlLoadError(filer.get(), line).str(), rows[i].error) << "row " << i;
    EXPECT_EQ(line, rows[i].line) << "row " << i;
    EXPECT_FALSE(filer->rootNode()) << "row " << i;
  }
}

TEST(XmlFiler, FilerMadeOnceRootKept) {
  TestDir dir;
  LoadedXml doc = loadXml(dir, "<?xml version=\"1.0\"?><!-- c --><a/><b/>");
  ASSERT_TRUE(doc.ok);
  EXPECT_EQ(doc.filer->numRefs(), 1);
  EXPECT_EQ(nameOf(doc.root), "a");
  EXPECT_EQ(doc.filer->rootNode().get(), doc.root.get());
  EXPECT_FALSE(doc.root->parent());
  // Once nodes are out, a second load is refused and the first document stays.
  writeFile(dir / "other.xml", "<z/>");
  EXPECT_FALSE(doc.filer->load(ZrUtf8String(dir / "other.xml")));
  EXPECT_EQ(nameOf(doc.filer->rootNode()), "a");
  // Before that, a filer takes the latest file, and a failed load empties it.
  auto filer = createPwutXmlFiler();
  EXPECT_TRUE(filer->load(ZrUtf8String(dir / "doc.xml")));
  EXPECT_TRUE(filer->load(ZrUtf8String(dir / "other.xml")));
  EXPECT_FALSE(filer->load(ZrUtf8String(dir / "missing.xml")));
  EXPECT_FALSE(filer->rootNode());
}

// Any bytes give the parser's verdict (its error name, "" when the file loads) and a root whose
// text is its first child's when that is text, with entities never expanded beyond the file.
TEST(XmlFiler, DocumentsLoadOrSayWhyAndGiveTheFirstText) {
  const std::string laughs =
      "<!DOCTYPE l [<!ENTITY a \"aaaaaaaaaa\"><!ENTITY b \"&a;&a;&a;&a;&a;&a;&a;&a;&a;&a;\">"
      "<!ENTITY c \"&b;&b;&b;&b;&b;&b;&b;&b;&b;&b;\">]><l>&c;&c;&c;&c;&c;&c;</l>";
  struct Row { std::string xml; const char* error; const char* text; };
  const Row rows[] = {
      {"<a><b/>text<c/></a>", "", ""}, {"<a>hi<b/>more</a>", "", "hi"}, {"<a/>", "", ""},
      {"<a><![CDATA[x<y]]></a>", "", "x<y"}, {"<a>&lt;&amp;&#x41;&#66;</a>", "", "<&AB"},
      {laughs, "", "&c;&c;&c;&c;&c;&c;"},
      {"<!DOCTYPE x [<!ENTITY e SYSTEM \"file:///etc/passwd\">]><x>&e;</x>", "", "&e;"},
      {"<a>&#xFFFFFFFFFF;&#0;&#xD800;&unknown;</a>", "", ""},
      {"<\xFF\xFE a\xC0='\x80'>\xED\xA0\x80</\xFF\xFE>", "", "\xED\xA0\x80"},
      {"", "XML_ERROR_EMPTY_DOCUMENT", ""}, {"\xEF\xBB\xBF", "XML_ERROR_EMPTY_DOCUMENT", ""},
      {"<a b='1' b='2'/>", "XML_ERROR_PARSING_ATTRIBUTE", ""},
      {"<a>x\0y</a>"s, "XML_ERROR_PARSING_TEXT", ""},
  };
  TestDir dir;
  for (size_t i = 0; i < std::size(rows); ++i) {
    LoadedXml doc = loadXml(dir, rows[i].xml);
    int line = 0;
    EXPECT_EQ(zrutXmlLoadError(doc.filer.get(), line).str(), rows[i].error) << "row " << i;
    EXPECT_EQ(doc.ok, !*rows[i].error) << "row " << i;
    EXPECT_EQ(bool(doc.root), doc.ok) << "row " << i;
    EXPECT_EQ(doc.root ? doc.root->text().str() : "", rows[i].text) << "row " << i;
  }
}

// Children are elements only, numbered in the order they were first asked for; an index beyond
// the cache walks the document and may make a second node for an element already handed out.
TEST(XmlFiler, ChildrenInFirstRequestOrder) {
  struct Step { std::string name; int index; const char* expected; };  // index -1: by name
  const std::vector<std::vector<Step>> rows = {
      {{"c", -1, "c"}, {"B", -1, "b"}, {"", 0, "c"}, {"", 1, "b"}, {"", 2, "d"}, {"", 3, "e"},
       {"", 4, "<null>"}, {"", -1, "<null>"}, {"b\0x"s, -1, "<null>"}},
      {{"", 2, "d"}, {"", 1, "c"}, {"", 0, "d"}, {"", 3, "e"}, {"D", -1, "d"}, {"b", -1, "b"},
       {"", 3, "b"}, {"", 4, "<null>"}},
      {{"", 9, "<null>"}, {"", 3, "e"}, {"", 0, "e"}, {"", 1, "c"}},
  };
  TestDir dir;
  for (size_t r = 0; r < rows.size(); ++r) {
    LoadedXml doc = loadXml(dir, "<a><b/>text<!-- x --><c/>tail<d/><e/></a>");
    EXPECT_EQ(doc.root->childCount(), 4u);
    for (size_t s = 0; s < rows[r].size(); ++s) {
      const Step& step = rows[r][s];
      XmlNodePtr got = step.index < 0 ? doc.root->child(ZrUtf8String(step.name))
                                      : doc.root->child(unsigned(step.index));
      EXPECT_EQ(nameOf(got), step.expected) << "row " << r << " step " << s;
    }
  }
  // Cache hits hand out the same node; a walk past the cache makes a new one.
  LoadedXml doc = loadXml(dir, "<a><b/><c/></a>");
  XmlNodePtr byName = doc.root->child(ZrUtf8String("c"));
  EXPECT_EQ(doc.root->child(0).get(), byName.get());
  EXPECT_EQ(doc.root->child(ZrUtf8String("C")).get(), byName.get());
  XmlNodePtr byIndex = doc.root->child(1);
  EXPECT_EQ(nameOf(byIndex), "c");
  EXPECT_NE(byIndex.get(), byName.get());
}

TEST(XmlFiler, AttributesAndRefusedSetters) {
  TestDir dir;
  LoadedXml doc = loadXml(dir, "<a k=\"v\" empty=\"\" q='x'>t</a>");
  ZrUtf8String value("untouched");
  for (const std::string& absent : {"K"s, "missing"s, ""s, "k\0"s, "ke"s, "emp"s})
    EXPECT_FALSE(doc.root->getAttribute(ZrUtf8String(absent), value)) << absent;
  EXPECT_EQ(value.str(), "untouched");
  EXPECT_TRUE(doc.root->getAttribute(ZrUtf8String("empty"), value));
  EXPECT_EQ(value.str(), "");
  ZrArray<ZrUtf8String> names = zrutXmlAttributeNames(doc.root.get());
  ASSERT_EQ(names.length(), 3);
  EXPECT_EQ(names[0].str() + names[1].str() + names[2].str(), "kemptyq");

  EXPECT_FALSE(doc.root->setName(ZrUtf8String("z")));
  EXPECT_FALSE(doc.root->setText(ZrUtf8String("z")));
  EXPECT_FALSE(doc.root->setAttribute(ZrUtf8String("k"), ZrUtf8String("z")));
  EXPECT_EQ(doc.root->name().str() + doc.root->text().str(), "at");
  EXPECT_TRUE(doc.root->getAttribute(ZrUtf8String("k"), value));
  EXPECT_EQ(value.str(), "v");
}

// Nodes hold their parents; releasing the filer detaches the nodes still held, which then answer
// as empty nodes. LeakSanitizer catches a parent/child cycle or storage left behind,
// AddressSanitizer a node whose storage went with the filer (the 300 siblings take the nodes
// held over more than one block of storage).
TEST(XmlFiler, NodesKeepParentsAliveFilerDetaches) {
  TestDir dir;
  XmlNodePtr grandchild;
  {
    std::string siblings;
    for (int i = 0; i < 300; ++i) siblings += "<e/>";
    LoadedXml doc = loadXml(dir, "<a x='1'><b>" + siblings + "<c>t<d/></c></b></a>");
    for (unsigned i = 0; i < 300; ++i) doc.root->child(0)->child(i);
    grandchild = doc.root->child(0)->child(ZrUtf8String("c"));
    doc.root.reset();
    EXPECT_EQ(nameOf(grandchild->parent()->parent()), "a");
    EXPECT_EQ(grandchild->text().str(), "t");
  }
  ZrUtf8String value("kept");
  EXPECT_EQ(grandchild->name().str() + grandchild->text().str(), "");
  EXPECT_EQ(grandchild->childCount(), 0u);
  EXPECT_FALSE(grandchild->child(0u));
  EXPECT_FALSE(grandchild->parent()->parent()->getAttribute(ZrUtf8String("x"), value));
  EXPECT_EQ(value.str(), "kept");
  EXPECT_TRUE(zrutXmlAttributeNames(grandchild.get()).isEmpty());
}

std::string nested(size_t depth) {
  std::string xml;
  for (size_t i = 0; i < depth; ++i) xml += "<a>";
  for (size_t i = 0; i < depth; ++i) xml += "</a>";
  return xml;
}

size_t depth(const XmlNodePtr& node) {
  XmlNodePtr child = node->child(0u);
  return child ? 1 + depth(child) : 1;
}

TEST(XmlHostile, DeepNestingStopsAtTheParsersLimit) {
  TestDir dir;
  zradtest::onSmallStack([&] {
    LoadedXml deep = loadXml(dir, nested(1000000));
    EXPECT_FALSE(deep.ok);
    int line = 0;
    EXPECT_EQ(zrutXmlLoadError(deep.filer.get(), line).str(), "XML_ELEMENT_DEPTH_EXCEEDED");
    // The deepest document accepted is walked to the bottom and torn down on the same stack.
    LoadedXml limit = loadXml(dir, nested(98));
    ASSERT_TRUE(limit.ok);
    EXPECT_EQ(depth(limit.root), 98u);
    EXPECT_FALSE(loadXml(dir, nested(99)).ok);
  });
}

}  // namespace
