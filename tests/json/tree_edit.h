// Test helpers for the element tree: trees written as JSON text, their binary form, and
// tables of edits.
//
// A row of an edit table names a starting tree, an edit that reports its result as text and
// the tree expected afterwards; checkEdits runs each row on a fresh tree.
#pragma once

#include <functional>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include <zrad/json.h>
#include <zrad/log.h>

namespace jsontest {

inline ZrJsonPtr parse(const char* text) {
  ZrJsonPtr tree = ZrJson::readjson(text);
  EXPECT_TRUE(tree) << text;
  return tree;
}

// The element that the JSON text `text` holds, as an item of an array.   "1" => Integer 1
inline ZrJsonPtr item(const char* text) { return parse((std::string("[") + text + "]").c_str())(0); }

// JSON text of an element; "null" for a null handle.
inline std::string textOf(const ZrJsonPtr& e) { return e ? e->writeJson().str() : "null"; }
inline std::string yes(bool b) { return b ? "true" : "false"; }

// The binary form of an element (no signature byte).
inline std::string encode(const ZrJsonPtr& e) {
  ZrMemoryStreamPtr s = ZrMemoryStream::createNew();
  e->writeBinary(ZrStreamBufPtr(s.get()));
  return std::string(reinterpret_cast<const char*>(s->data()), s->length());
}

// The element read from the binary form `bytes`; null when the reader refuses.
inline ZrJsonPtr decode(const std::string& bytes) {
  ZrJsonPtr e = ElementValue::createObject(etNullFlag);
  ZrMemoryStreamPtr s = ZrMemoryStream::createNew();
  if (!bytes.empty()) s->putBytes(bytes.data(), static_cast<uint32_t>(bytes.size()));
  s->rewind();
  return static_cast<ElementValue*>(e.get())->readBinary(ZrStreamBufPtr(s.get())) ? e : ZrJsonPtr();
}

// Collects the lines logged while it lives, as "level|source|function|message".
class LogCapture {
 public:
  LogCapture() {
    lines().clear();
    zr_attach_log_fun(capture);
  }
  ~LogCapture() { zr_attach_log_fun(nullptr); }
  static std::vector<std::string>& lines() {
    static std::vector<std::string> logged;
    return logged;
  }

 private:
  static void capture(int level, int, const char* file, const char* function, const char* message, unsigned long) {
    lines().push_back(std::to_string(level) + "|" + file + "|" + function + "|" + message);
  }
};

struct EditRow {
  const char* tree;
  std::function<std::string(IElementValueBase&)> edit;
  const char* result;
  const char* after;
};

inline void checkEdits(const std::vector<EditRow>& rows) {
  for (size_t i = 0; i < rows.size(); ++i) {
    ZrJsonPtr tree = parse(rows[i].tree);
    EXPECT_EQ(rows[i].edit(*tree), rows[i].result) << "row " << i;
    EXPECT_EQ(textOf(tree), rows[i].after) << "row " << i;
  }
}

}  // namespace jsontest
