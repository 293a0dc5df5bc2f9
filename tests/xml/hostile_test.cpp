// Hostile files for the XML filer: deep nesting on a small stack, truncations, entity tricks,
// broken UTF-8, and paths that are not regular files.
#include <sys/stat.h>

#include <gtest/gtest.h>

#include <filesystem>
#include <string>

#include "common/small_stack.h"
#include "xml/xml_support.h"

namespace {

using zradtest::onSmallStack;

std::string nested(size_t depth) {
  std::string xml;
  for (size_t i = 0; i < depth; ++i) xml += "<a>";
  for (size_t i = 0; i < depth; ++i) xml += "</a>";
  return xml;
}

// Visits every node, text and attribute; returns the number of nodes.
size_t walk(const XmlNodePtr& node) {
  size_t count = 1;
  ZrUtf8String value;
  ZrArray<ZrUtf8String> names = zrutXmlAttributeNames(node.get());
  for (const ZrUtf8String& name : names) EXPECT_TRUE(node->getAttribute(name, value));
  node->text();
  for (unsigned i = 0, n = node->childCount(); i < n; ++i) count += walk(node->child(i));
  return count;
}

TEST(XmlHostile, DeepNestingStopsAtTheParsersLimit) {
  TestDir dir;
  onSmallStack([&] {
    LoadedXml deep = loadXml(dir, nested(1000000));
    EXPECT_FALSE(deep.ok);
    int line = 0;
    EXPECT_EQ(zrutXmlLoadError(deep.filer.get(), line).str(), "XML_ELEMENT_DEPTH_EXCEEDED");

    // The deepest document accepted is walked to the bottom and torn down on the same stack.
    LoadedXml limit = loadXml(dir, nested(98));
    ASSERT_TRUE(limit.ok);
    EXPECT_EQ(walk(limit.root), 98u);
    EXPECT_FALSE(loadXml(dir, nested(99)).ok);
  });
}

TEST(XmlHostile, BadBytesGiveFalseOrASmallTree) {
  struct Row { std::string xml; bool loads; };
  const std::string laughs =
      "<!DOCTYPE l [<!ENTITY a \"aaaaaaaaaa\"><!ENTITY b \"&a;&a;&a;&a;&a;&a;&a;&a;&a;&a;\">"
      "<!ENTITY c \"&b;&b;&b;&b;&b;&b;&b;&b;&b;&b;\">]><l>&c;&c;&c;&c;&c;&c;</l>";
  const Row rows[] = {
      {"<a b=\"", false},
      {"<a><b></a>", false},
      {"\xEF\xBB\xBF", false},
      {"<a b='1' b='2'/>", false},
      {laughs, true},
      {"<!DOCTYPE x [<!ENTITY e SYSTEM \"file:///etc/passwd\">]><x>&e;</x>", true},
      {"<a>&#xFFFFFFFFFF;&#0;&#xD800;&unknown;</a>", true},
      {"<\xFF\xFE a\xC0='\x80'>\xED\xA0\x80</\xFF\xFE>", true},
      {std::string("<a>x\0y</a>", 10), false},
  };
  TestDir dir;
  for (size_t i = 0; i < std::size(rows); ++i) {
    LoadedXml doc = loadXml(dir, rows[i].xml);
    EXPECT_EQ(doc.ok, rows[i].loads) << "row " << i;
    if (!doc.root) continue;
    walk(doc.root);
    // Entities are never expanded beyond what the file holds.
    EXPECT_LE(doc.root->text().length(), int(rows[i].xml.size())) << "row " << i;
  }
}

TEST(XmlHostile, OnlyRegularFilesAreRead) {
  TestDir dir;
  ASSERT_EQ(mkfifo((dir / "fifo").c_str(), 0600), 0);
  std::filesystem::create_directory_symlink(dir.path(), dir / "dirlink");
  for (const char* name : {"fifo", "dirlink", "."}) {
    auto filer = createPwutXmlFiler();
    EXPECT_FALSE(filer->load(ZrUtf8String(dir / name))) << name;  // a FIFO must not block
    int line = 0;
    EXPECT_EQ(zrutXmlLoadError(filer.get(), line).str(), "not a regular file") << name;
  }
}

}  // namespace
