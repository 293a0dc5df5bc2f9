// The XML filer's rules: what load refuses, texts, child counting, lookups by index and name in
// first-request order, attributes, the refused setters, and who keeps whom alive.
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "xml/xml_support.h"

namespace {

TEST(XmlFiler, LoadRefusesAndSaysWhy) {
  TestDir dir;
  writeFile(dir / "empty.xml", "");
  writeFile(dir / "broken.xml", "<a>\n<b>\n</a>\n");
  struct Row { std::string path; const char* error; int line; };
  const Row rows[] = {
      {"", "no such file", 0},
      {dir / "missing.xml", "no such file", 0},
      {dir.path(), "not a regular file", 0},
      {dir / "empty.xml", "XML_ERROR_EMPTY_DOCUMENT", 0},
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
  auto filer = createPwutXmlFiler();
  EXPECT_EQ(filer->numRefs(), 1);
  EXPECT_TRUE(filer->isKindOf(ZrsiPwUtXmlFiler::desc()));
  EXPECT_FALSE(filer->rootNode());  // empty until a load succeeds

  TestDir dir;
  LoadedXml doc = loadXml(dir, "<?xml version=\"1.0\"?><!-- c --><a/><b/>");
  ASSERT_TRUE(doc.ok);
  EXPECT_EQ(nameOf(doc.root), "a");
  EXPECT_EQ(doc.filer->rootNode().get(), doc.root.get());
  EXPECT_FALSE(doc.root->parent());

  // Once nodes are out, a second load is refused and the first document stays.
  writeFile(dir / "other.xml", "<z/>");
  EXPECT_FALSE(doc.filer->load(ZrUtf8String(dir / "other.xml")));
  EXPECT_EQ(nameOf(doc.filer->rootNode()), "a");
  // Before that, a filer takes the latest file, and a failed load empties it.
  auto fresh = createPwutXmlFiler();
  EXPECT_TRUE(fresh->load(ZrUtf8String(dir / "doc.xml")));
  EXPECT_TRUE(fresh->load(ZrUtf8String(dir / "other.xml")));
  EXPECT_FALSE(fresh->load(ZrUtf8String(dir / "missing.xml")));
  EXPECT_FALSE(fresh->rootNode());
}

TEST(XmlFiler, TextIsTheFirstChildsText) {
  const std::pair<const char*, const char*> rows[] = {
      {"<a><b/>text<c/></a>", ""},        {"<a>hi<b/>more</a>", "hi"},
      {"<a><![CDATA[x<y]]></a>", "x<y"},  {"<a><!--c-->t</a>", ""},
      {"<a>&lt;&amp;&#x41;&#66;</a>", "<&AB"}, {"<a/>", ""},
      {"<a>\xE4\xB8\xAD</a>", "\xE4\xB8\xAD"},
  };
  TestDir dir;
  for (size_t i = 0; i < std::size(rows); ++i) {
    LoadedXml doc = loadXml(dir, rows[i].first);
    ASSERT_TRUE(doc.root) << "row " << i;
    EXPECT_EQ(doc.root->text().str(), rows[i].second) << "row " << i;
  }
}

TEST(XmlFiler, ChildrenCountAndLookup) {
  TestDir dir;
  LoadedXml doc = loadXml(dir, "<a><b/>text<!-- x --><c/>tail</a>");
  ASSERT_TRUE(doc.root);
  EXPECT_EQ(doc.root->childCount(), 2u);
  EXPECT_EQ(nameOf(doc.root->child(1)), "c");
  EXPECT_EQ(nameOf(doc.root->child(2)), "<null>");
  EXPECT_EQ(nameOf(doc.root->child(ZrUtf8String("B"))), "b");
  EXPECT_EQ(nameOf(doc.root->child(ZrUtf8String(""))), "<null>");
  EXPECT_EQ(nameOf(doc.root->child(ZrUtf8String(std::string("b\0x", 3)))), "<null>");
}

// Children are numbered in the order they were first asked for; an index beyond the cache
// walks the document and may make a second node for an element already handed out.
TEST(XmlFiler, CacheOrderIsRequestOrder) {
  struct Step { const char* byName; unsigned index; const char* expected; };
  const std::vector<std::vector<Step>> rows = {
      {{"c", 0, "c"}, {"B", 0, "b"}, {nullptr, 0, "c"}, {nullptr, 1, "b"}, {nullptr, 2, "d"},
       {nullptr, 3, "e"}, {nullptr, 4, "<null>"}},
      {{nullptr, 2, "d"}, {nullptr, 1, "c"}, {nullptr, 0, "d"}, {nullptr, 3, "e"},
       {"D", 0, "d"}, {"b", 0, "b"}, {nullptr, 3, "b"}, {nullptr, 4, "<null>"}},
      {{nullptr, 9, "<null>"}, {nullptr, 3, "e"}, {nullptr, 0, "e"}, {nullptr, 1, "c"}},
  };
  TestDir dir;
  for (size_t r = 0; r < rows.size(); ++r) {
    LoadedXml doc = loadXml(dir, "<a><b/><c/><d/><e/></a>");
    for (size_t s = 0; s < rows[r].size(); ++s) {
      const Step& step = rows[r][s];
      XmlNodePtr got = step.byName ? doc.root->child(ZrUtf8String(step.byName))
                                   : doc.root->child(step.index);
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
  ASSERT_TRUE(doc.root);
  ZrUtf8String value("untouched");
  EXPECT_FALSE(doc.root->getAttribute(ZrUtf8String("K"), value));
  EXPECT_FALSE(doc.root->getAttribute(ZrUtf8String(std::string("k\0z", 3)), value));
  EXPECT_FALSE(doc.root->getAttribute(ZrUtf8String("missing"), value));
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
// as empty nodes. LeakSanitizer catches a parent/child cycle left behind.
TEST(XmlFiler, NodesKeepParentsAliveFilerDetaches) {
  TestDir dir;
  XmlNodePtr grandchild;
  {
    LoadedXml doc = loadXml(dir, "<a x='1'><b><c>t<d/></c></b></a>");
    grandchild = doc.root->child(0)->child(ZrUtf8String("c"));
    doc.root.reset();
    XmlNodePtr parent = grandchild->parent();
    EXPECT_EQ(nameOf(parent->parent()), "a");
    EXPECT_EQ(grandchild->text().str(), "t");
  }
  ZrUtf8String value("kept");
  EXPECT_EQ(grandchild->name().str(), "");
  EXPECT_EQ(grandchild->text().str(), "");
  EXPECT_EQ(grandchild->childCount(), 0u);
  EXPECT_FALSE(grandchild->child(0u));
  EXPECT_FALSE(grandchild->parent()->parent()->getAttribute(ZrUtf8String("x"), value));
  EXPECT_EQ(value.str(), "kept");
  EXPECT_TRUE(zrutXmlAttributeNames(grandchild.get()).isEmpty());
}

}  // namespace
