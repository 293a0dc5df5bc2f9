// Fuzzes the XML filer's load with any bytes as the file, then walks every node, text and
// attribute, checking that counts, index and name lookups and attributes agree with each other,
// and that a node held past its filer's release answers as an empty node.
#include <zrad/xml.h>

#include <unistd.h>

#include <cstdint>
#include <cstdio>
#include <cstdlib>

namespace {

// The file each input is written to, one per process, removed at exit. A plain array, so it
// is still there when the exit handler runs.
const char* inputPath() {
  static char path[64];
  if (!path[0]) {
    std::snprintf(path, sizeof path, "/tmp/zrad-xml-fuzz-%d.xml", int(getpid()));
    std::atexit([] { unlink(path); });
  }
  return path;
}

void check(bool ok) {
  if (!ok) __builtin_trap();
}

// Walks the tree below `node`; returns its deepest node.
ZrSmartPtr<ZrsiPwUtXmlNode> walk(const ZrSmartPtr<ZrsiPwUtXmlNode>& node) {
  ZrUtf8String value;
  for (const ZrUtf8String& name : zrutXmlAttributeNames(node.get()))
    check(node->getAttribute(name, value));
  node->text();
  ZrSmartPtr<ZrsiPwUtXmlNode> deepest = node;
  const unsigned count = node->childCount();
  for (unsigned i = 0; i < count; ++i) {
    ZrSmartPtr<ZrsiPwUtXmlNode> child = node->child(i);
    check(child && child->parent().get() == node.get());
    ZrSmartPtr<ZrsiPwUtXmlNode> byName = node->child(child->name());
    check(byName && Zr_stricmpA(byName->name().c_str(), child->name().c_str()) == 0);
    deepest = walk(child);
  }
  check(!node->child(count));
  return deepest;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  FILE* file = std::fopen(inputPath(), "wb");
  if (!file) return 0;
  const bool written = std::fwrite(data, 1, size, file) == size;
  if (std::fclose(file) != 0 || !written) return 0;

  ZrSmartPtr<ZrsiPwUtXmlFiler> filer = createPwutXmlFiler();
  const bool loaded = filer->load(ZrUtf8String(inputPath()));
  ZrSmartPtr<ZrsiPwUtXmlNode> root = filer->rootNode();
  check(loaded || !root);
  if (!root) return 0;
  ZrSmartPtr<ZrsiPwUtXmlNode> deepest = walk(root);
  filer.reset();
  check(deepest->name().isEmpty() && deepest->childCount() == 0);
  return 0;
}
