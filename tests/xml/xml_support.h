// The XML suites' helper: a filer loaded from text written to a fresh file.
#pragma once

#include <gtest/gtest.h>

#include <string>

#include <zrad/xml.h>

#include "common/testdir.h"

using XmlNodePtr = ZrSmartPtr<ZrsiPwUtXmlNode>;

struct LoadedXml {
  ZrSmartPtr<ZrsiPwUtXmlFiler> filer;  // keeps the document (and so `root`) alive
  bool ok = false;                     // what load() returned
  XmlNodePtr root;
};

// A new filer's load() of `xml` written to dir/name, and its root node.
inline LoadedXml loadXml(const TestDir& dir, const std::string& xml,
                         const std::string& name = "doc.xml") {
  writeFile(dir / name, xml);
  LoadedXml result;
  result.filer = createPwutXmlFiler();
  result.ok = result.filer->load(ZrUtf8String(dir / name));
  result.root = result.filer->rootNode();
  return result;
}

inline std::string nameOf(const XmlNodePtr& node) { return node ? node->name().str() : "<null>"; }
