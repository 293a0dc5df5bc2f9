// XML filer: a read-only view of an XML file as a tree of reference-counted nodes.
//
// createPwutXmlFiler() makes an empty filer; load() parses a file (UTF-8) and rootNode() gives
// the document's first element. Nodes are made on demand as children are asked for, cached by
// their parent, and keep their parent alive; the parsed document lives as long as the filer.
//
//   <a><b/>text<c/></a>      root->childCount() => 2   (elements only)
//                            root->child(1)     => c   root->text() => ""  (first child is <b>)
//   <a>hi<b/></a>            root->text()       => "hi"
//   root->child("B")         => b                      (ASCII case ignored)
//
// Child order: a node's children are numbered in the order they were first asked for, by index
// or by name. child(index) answers from that cache when it holds more than `index` entries and
// otherwise walks `index` elements into the document order and appends what it finds:
//   <a><b/><c/></a>   root->child("c"); root->child(0) => c   (cache entry 0)
//                                        root->child(1) => c   (document position 1, a second node)
//
// Bad input: a path that is not a regular file (directory, FIFO, device) is refused without
// being read; the parser (tinyxml2 9) refuses elements nested more than 98 deep, so no input
// can run the parse, a walk or the node tree's teardown into deep recursion; memory stays in
// proportion to the file (one copy of its bytes plus the parsed document).
//
// Decisions beyond the node and filer contracts:
// - When the filer is released, every node it handed out is detached: nodes a caller still
//   holds stay valid objects that answer as an empty node ("" names and texts, no attributes,
//   no children) instead of reading a freed document, and the parent and child caches no longer
//   hold each other alive.
// - load() once a root node was handed out returns false and keeps the loaded document, so the
//   nodes out there keep pointing into it.
// - zrutXmlLoadError() and zrutXmlAttributeNames() below serve tools that must say why a load
//   failed and list every attribute; the node and filer interfaces have no slot for either.
//
// The virtual operations are declared in a fixed slot order that other modules call through:
// never reorder them or insert new ones between them.
#pragma once

#include <zrad/export.h>
#include <zrplatform/platform.h>

class ZrsiPwUtXmlFiler;

// An element of a filer's document. Opaque: only the filer's own implementation makes and
// reads these.
class ZrsiXmlElement;

class ZRAD_EXPORT ZrsiPwUtXmlNode : public ZrRxObject {
 public:
  ZR_RX_DECLARE_MEMBERS(ZrsiPwUtXmlNode);

  // The element's tag name.
  virtual ZrUtf8String name() const = 0;
  // Not supported: changes nothing and returns false.
  virtual bool setName(const ZrUtf8String& name) = 0;
  // The text of the element's first child when that child is text (CDATA included); otherwise "".
  virtual ZrUtf8String text() const = 0;
  // Not supported: changes nothing and returns false.
  virtual bool setText(const ZrUtf8String& text) = 0;
  // True and `value` set when the element has the attribute `name` (case matters); false with
  // `value` untouched otherwise.
  virtual bool getAttribute(const ZrUtf8String& name, ZrUtf8String& value) const = 0;
  // Not supported: changes nothing and returns false.
  virtual bool setAttribute(const ZrUtf8String& name, const ZrUtf8String& value) = 0;
  // The parent node; null for the root.
  virtual ZrSmartPtr<ZrsiPwUtXmlNode> parent() const = 0;
  // The number of child elements (text, comments and other node kinds are not counted).
  virtual unsigned childCount() const = 0;
  // The index-th child in first-request order (see the head of this file); null when the
  // element has no more than `index` child elements.
  virtual ZrSmartPtr<ZrsiPwUtXmlNode> child(unsigned index) = 0;
  // The first child whose tag name equals `name` ignoring ASCII case, cached children first;
  // null when there is none or `name` is empty.
  virtual ZrSmartPtr<ZrsiPwUtXmlNode> child(const ZrUtf8String& name) = 0;
  // Holds `node` (null allowed) as the parent and releases the previous one.
  virtual void setParent(ZrsiPwUtXmlNode* node) = 0;
  // The filer the node belongs to (not held).
  virtual void setFiler(ZrsiPwUtXmlFiler* filer) = 0;
  // The element the node stands for (not held); null makes an empty node.
  virtual void setElement(ZrsiXmlElement* element) = 0;
};

class ZRAD_EXPORT ZrsiPwUtXmlFiler : public ZrRxObject {
 public:
  ZR_RX_DECLARE_MEMBERS(ZrsiPwUtXmlFiler);

  // Parses the file at `path` as UTF-8 XML; true on success. False for an empty path, a path
  // where nothing exists, anything but a regular file, a read or parse error, any exception on
  // the way, and once rootNode() has handed out a node.
  virtual bool load(const ZrUtf8String& path) = 0;
  // The node of the document's first element, made once and then kept; null before a
  // successful load or when the document has no element.
  virtual ZrSmartPtr<ZrsiPwUtXmlNode> rootNode() = 0;
};

// A new empty filer (reference count 1). Throws ZrError(eNotThatKindOfClass) should the object
// not answer to the filer's class query.
ZRAD_EXPORT ZrSmartPtr<ZrsiPwUtXmlFiler> createPwutXmlFiler();

// Why the filer's last load() failed, as one phrase: "no such file", "not a regular file",
// "cannot open: <system text>", "a root node was already handed out", or the parser's error name
// ("XML_ERROR_MISMATCHED_ELEMENT", ...) with `line` set to the line it stopped on. "" with
// `line` 0 after a successful load, before any load, and for filers of other implementations.
ZRAD_EXPORT ZrUtf8String zrutXmlLoadError(const ZrsiPwUtXmlFiler* filer, int& line);

// The node's attribute names in document order; empty for a null or empty node and for nodes
// of other implementations.
ZRAD_EXPORT ZrArray<ZrUtf8String> zrutXmlAttributeNames(const ZrsiPwUtXmlNode* node);
