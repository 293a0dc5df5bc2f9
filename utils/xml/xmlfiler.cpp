// The XML filer and its nodes over tinyxml2: the one source of the library that includes it.
//
// Ownership: the filer owns the parsed document and holds the root node; every node holds its
// parent and the children it handed out (its cache). Those two links form cycles, so the
// filer's destructor detaches the whole node tree: caches are emptied and elements forgotten,
// after which nodes still held elsewhere are plain empty nodes freed with their last reference.
// Nodes are stored in blocks of the filer's arena (nodearena.h); a block outlives its nodes.
// The parser refuses documents nested more than 98 elements deep (its depth count, capped at
// TINYXML2_MAX_ELEMENT_DEPTH = 100, includes the document itself), which bounds every recursion
// here, the detaching included.
#include <zrad/files.h>
#include <zrad/xml.h>

#include <tinyxml2.h>

#include <string>
#include <vector>

#include "xml/nodearena.h"
#include "xml/regularfile_posix.h"

using tinyxml2::XMLElement;
using zrad::xml::NodeArena;

ZR_RX_DEFINE_MEMBERS(ZrsiPwUtXmlNode, ZrRxObject, L"ZrsiPwUtXmlNode")
ZR_RX_DEFINE_MEMBERS(ZrsiPwUtXmlFiler, ZrRxObject, L"ZrsiPwUtXmlFiler")

namespace {

// The opaque element handle of the exported header is the parser's element.
XMLElement* toXml(ZrsiXmlElement* element) { return reinterpret_cast<XMLElement*>(element); }

char foldAscii(char c) { return c >= 'A' && c <= 'Z' ? char(c - 'A' + 'a') : c; }

// Whether the parser's name `tag` is `name`, byte for byte or ignoring ASCII case. Names from
// the parser end at their first 0 byte, so a `name` holding one matches none.
bool sameName(const char* tag, const ZrUtf8String& name, bool ignoreCase) {
  const char* key = name.c_str();
  const size_t length = size_t(name.length());
  for (size_t i = 0; i < length; ++i) {
    if (tag[i] == '\0') return false;
    if (tag[i] != key[i] && !(ignoreCase && foldAscii(tag[i]) == foldAscii(key[i]))) return false;
  }
  return tag[length] == '\0';
}

}  // namespace

class ZrsiXmlNodeImpl : public ZrsiPwUtXmlNode {
 public:
  ZR_RX_DECLARE_MEMBERS(ZrsiXmlNodeImpl);

  ZrsiXmlNodeImpl(XMLElement* element, ZrsiPwUtXmlNode* parent, ZrsiPwUtXmlFiler* filer)
      : m_element(element), m_filer(filer), m_parent(parent) {}

  // A new node (count 1) for `element`, holding `parent`, stored in `arena`.
  static ZrSmartPtr<ZrsiXmlNodeImpl> make(NodeArena& arena, XMLElement* element,
                                          ZrsiPwUtXmlNode* parent, ZrsiPwUtXmlFiler* filer) {
    using Counted = ZrRxObjectImpl<ZrsiXmlNodeImpl>;
    static_assert(alignof(Counted) <= NodeArena::kAlign, "nodes fit the arena's slots");
    return ZrSmartPtr<ZrsiXmlNodeImpl>(new (arena) Counted(element, parent, filer), kZrAttach);
  }

  // Nodes live in their filer's arena only.
  static void* operator new(size_t size, NodeArena& arena) { return arena.allocate(size); }
  static void operator delete(void* node, NodeArena&) { NodeArena::deallocate(node); }
  static void operator delete(void* node) { NodeArena::deallocate(node); }

  ZrUtf8String name() const override {
    return m_element ? ZrUtf8String(m_element->Name()) : ZrUtf8String();
  }
  bool setName(const ZrUtf8String&) override { return false; }

  ZrUtf8String text() const override {
    const tinyxml2::XMLNode* first = m_element ? m_element->FirstChild() : nullptr;
    const tinyxml2::XMLText* text = first ? first->ToText() : nullptr;
    return text ? ZrUtf8String(text->Value()) : ZrUtf8String();
  }
  bool setText(const ZrUtf8String&) override { return false; }

  bool getAttribute(const ZrUtf8String& name, ZrUtf8String& value) const override {
    if (!m_element) return false;
    // Names compared here rather than by the parser's Attribute(), whose strncmp per attribute
    // cost a tenth of the benchmark's load and walk.
    for (const tinyxml2::XMLAttribute* a = m_element->FirstAttribute(); a; a = a->Next()) {
      if (sameName(a->Name(), name, false)) {
        value.str().assign(a->Value());
        return true;
      }
    }
    return false;
  }
  bool setAttribute(const ZrUtf8String&, const ZrUtf8String&) override { return false; }

  ZrSmartPtr<ZrsiPwUtXmlNode> parent() const override { return m_parent; }

  unsigned childCount() const override {
    unsigned count = 0;
    for (const XMLElement* e = firstChild(); e; e = e->NextSiblingElement()) ++count;
    return count;
  }

  ZrSmartPtr<ZrsiPwUtXmlNode> child(unsigned index) override {
    if (index < m_cache.size()) return m_cache[index];
    // Resume from the previous index walk when it stopped short of `index`: a loop over all
    // children then costs one pass instead of a quadratic number of steps (a full walk of the
    // benchmark's 20 MB document takes a sixth of the time).
    XMLElement* e = firstChild();
    unsigned at = 0;
    if (m_walked && m_walkedIndex <= index) {
      e = m_walked;
      at = m_walkedIndex;
    }
    for (; e && at < index; ++at) e = e->NextSiblingElement();
    if (!e) return nullptr;
    m_walked = e;
    m_walkedIndex = index;
    return adopt(e);
  }

  ZrSmartPtr<ZrsiPwUtXmlNode> child(const ZrUtf8String& name) override {
    if (name.isEmpty()) return nullptr;
    for (const ZrSmartPtr<ZrsiXmlNodeImpl>& cached : m_cache)
      if (cached->m_element && sameName(cached->m_element->Name(), name, true)) return cached;
    for (XMLElement* e = firstChild(); e; e = e->NextSiblingElement())
      if (sameName(e->Name(), name, true)) return adopt(e);
    return nullptr;
  }

  void setParent(ZrsiPwUtXmlNode* node) override { m_parent = ZrSmartPtr<ZrsiPwUtXmlNode>(node); }
  void setFiler(ZrsiPwUtXmlFiler* filer) override { m_filer = filer; }
  void setElement(ZrsiXmlElement* element) override {
    m_element = toXml(element);
    m_walked = nullptr;
  }

  // Lets go of the children handed out and of the element, in this node and below (see the
  // head of this file).
  void detach() {
    for (const ZrSmartPtr<ZrsiXmlNodeImpl>& cached : m_cache) cached->detach();
    m_cache.clear();
    setElement(nullptr);
    m_filer = nullptr;
  }

  const XMLElement* element() const { return m_element; }

 private:
  XMLElement* firstChild() const { return m_element ? m_element->FirstChildElement() : nullptr; }

  ZrSmartPtr<ZrsiPwUtXmlNode> adopt(XMLElement* element) {
    // Every node is made by make(), so the most derived object starts at an arena's slot; only
    // attached nodes adopt, while their filer and so its arena live.
    NodeArena& arena = NodeArena::owner(static_cast<ZrRxObjectImpl<ZrsiXmlNodeImpl>*>(this));
    m_cache.push_back(make(arena, element, this, m_filer));
    return m_cache.back();
  }

  XMLElement* m_element;
  ZrsiPwUtXmlFiler* m_filer;
  std::vector<ZrSmartPtr<ZrsiXmlNodeImpl>> m_cache;
  ZrSmartPtr<ZrsiPwUtXmlNode> m_parent;
  XMLElement* m_walked = nullptr;  // where the last child(index) walk stopped, and its index
  unsigned m_walkedIndex = 0;
};

ZR_RX_DEFINE_MEMBERS(ZrsiXmlNodeImpl, ZrsiPwUtXmlNode, L"ZrsiXmlNodeImpl")

class ZrsiXmlFilerImpl : public ZrsiPwUtXmlFiler {
 public:
  ZR_RX_DECLARE_MEMBERS(ZrsiXmlFilerImpl);

  ~ZrsiXmlFilerImpl() override {
    if (m_root) m_root->detach();
  }

  bool load(const ZrUtf8String& path) override {
    try {
      return loadFile(path);
    } catch (...) {
      m_document.Clear();
      return refuse("out of memory or another failure while parsing");
    }
  }

  ZrSmartPtr<ZrsiPwUtXmlNode> rootNode() override {
    if (!m_root) {
      XMLElement* first = m_document.FirstChildElement();
      if (!first) return nullptr;
      m_root = ZrsiXmlNodeImpl::make(m_arena, first, nullptr, this);
    }
    return m_root;
  }

  const std::string& loadError(int& line) const {
    line = m_errorLine;
    return m_error;
  }

 private:
  bool loadFile(const ZrUtf8String& path) {
    m_error.clear();
    m_errorLine = 0;
    // The nodes handed out point into the present document: it must stay as it is.
    if (m_root) return refuse("a root node was already handed out");
    m_document.Clear();
    if (path.isEmpty() || !zrutIsExistFile(path)) return refuse("no such file");
    std::string whyNot;
    FILE* file = zrad::xml::openRegularFile(path.c_str(), whyNot);
    if (!file) return refuse(whyNot);
    tinyxml2::XMLError status = m_document.LoadFile(file);
    std::fclose(file);
    if (status == tinyxml2::XML_SUCCESS) return true;
    m_error = m_document.ErrorName();
    m_errorLine = m_document.ErrorLineNum();
    m_document.Clear();
    return false;
  }

  bool refuse(std::string why) {
    m_error = std::move(why);
    return false;
  }

  tinyxml2::XMLDocument m_document;  // entities processed, white space preserved
  NodeArena m_arena;  // where the nodes live
  ZrSmartPtr<ZrsiXmlNodeImpl> m_root;
  std::string m_error;  // why the last load failed, and the parser's line for a parse error
  int m_errorLine = 0;
};

ZR_RX_DEFINE_MEMBERS(ZrsiXmlFilerImpl, ZrsiPwUtXmlFiler, L"ZrsiXmlFilerImpl")

ZrSmartPtr<ZrsiPwUtXmlFiler> createPwutXmlFiler() {
  ZrSmartPtr<ZrsiXmlFilerImpl> filer = ZrRxObjectImpl<ZrsiXmlFilerImpl>::createObject();
  // Through the class query, as for any object handed out as an interface.
  return ZrSmartPtr<ZrsiPwUtXmlFiler>(static_cast<ZrRxObject*>(filer.get()));
}

ZrUtf8String zrutXmlLoadError(const ZrsiPwUtXmlFiler* filer, int& line) {
  line = 0;
  ZrRxObject* impl = filer ? filer->queryX(ZrsiXmlFilerImpl::desc()) : nullptr;
  return impl ? ZrUtf8String(static_cast<ZrsiXmlFilerImpl*>(impl)->loadError(line)) : ZrUtf8String();
}

ZrArray<ZrUtf8String> zrutXmlAttributeNames(const ZrsiPwUtXmlNode* node) {
  ZrArray<ZrUtf8String> names;
  ZrRxObject* impl = node ? node->queryX(ZrsiXmlNodeImpl::desc()) : nullptr;
  const XMLElement* element = impl ? static_cast<ZrsiXmlNodeImpl*>(impl)->element() : nullptr;
  if (!element) return names;
  for (const tinyxml2::XMLAttribute* a = element->FirstAttribute(); a; a = a->Next())
    names.append(ZrUtf8String(a->Name()));
  return names;
}
