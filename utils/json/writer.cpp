// JSON text writer: the compact text of an element tree.
//
// No white space; names in the map's byte-wise order, "*" before the names of read-only values;
// None and null elements as []; numbers as "%ld" / "%lf"; strings escaped by the table in
// putEscaped. Plain text is copied a word at a time into a buffer grown ahead of the writes.
#include "json/element_store.h"
#include "json/limits.h"
#include "json/numfmt.h"
#include "json/outbuf.h"
#include "json/writer.h"

using namespace zrad::json;

namespace {

// Bytes written as an escape: the controls 1..31, the quote and the backslash.
struct EscapeTable {
  bool needs[256] = {};
  constexpr EscapeTable() {
    for (int c = 1; c < 32; ++c) needs[c] = true;
    needs[static_cast<unsigned char>('"')] = needs[static_cast<unsigned char>('\\')] = true;
  }
};
constexpr EscapeTable kEscape;

// Whether one of the 8 bytes at `p` may need an escape: a control, '"' or '\\' (a zero byte
// also answers yes; the byte-wise check then decides).
bool mayNeedEscape(const char* p) {
  constexpr uint64_t kOnes = 0x0101010101010101ull, kHighs = 0x8080808080808080ull;
  uint64_t x;
  std::memcpy(&x, p, sizeof x);
  uint64_t quote = x ^ (kOnes * '"'), backslash = x ^ (kOnes * '\\');
  return (((x - kOnes * 0x20) & ~x) | ((quote - kOnes) & ~quote) | ((backslash - kOnes) & ~backslash)) & kHighs;
}

// Bytes `text` may take once escaped (every byte as \u00XX at worst).
size_t escapedRoom(std::string_view text) { return text.size() * 6; }

// Writes `text` escaped at `p`; returns the end.
char* putEscaped(char* p, std::string_view text) {
  static const char kHex[] = "0123456789abcdef";
  const char* c = text.data();
  const char* end = c + text.size();
  while (c < end) {
    // Plain text goes a word at a time; a short rest is tested as one word padded with spaces.
    if (end - c >= 8) {
      if (!mayNeedEscape(c)) {
        std::memcpy(p, c, 8);
        p += 8, c += 8;
        continue;
      }
    } else {
      char rest[8] = {' ', ' ', ' ', ' ', ' ', ' ', ' ', ' '};
      size_t n = static_cast<size_t>(end - c);
      std::memcpy(rest, c, n);
      if (!mayNeedEscape(rest)) {
        std::memcpy(p, c, n);
        p += n, c = end;
        continue;
      }
    }
    unsigned char b = static_cast<unsigned char>(*c++);
    if (!kEscape.needs[b]) {
      *p++ = static_cast<char>(b);
      continue;
    }
    *p++ = '\\';
    switch (b) {
      case '\r': *p++ = 'r'; break;
      case '\t': *p++ = 't'; break;
      case '\n': *p++ = 'n'; break;
      case '"': *p++ = '"'; break;
      case '\\': *p++ = '\\'; break;
      default:
        *p++ = 'u', *p++ = '0', *p++ = '0', *p++ = kHex[b >> 4], *p++ = kHex[b & 15];
    }
  }
  return p;
}

void putQuoted(OutBuffer& out, std::string_view text) {
  char* p = out.room(escapedRoom(text) + 2);
  *p++ = '"';
  p = putEscaped(p, text);
  *p++ = '"';
  out.putEnd(p);
}

bool readOnlyValue(const IElementValueBase* v) {
  const ElementValue* ev = asElement(v);
  uint32_t type = ev ? ElementAccess::type(*ev) : v ? static_cast<uint32_t>(v->getType()) : 0;
  return (type & etReadOnlyFlag) != 0;
}

// "name": with a "*" before the name of a read-only value.
__attribute__((noinline)) void putName(OutBuffer& out, std::string_view name, const IElementValueBase* value) {
  char* p = out.room(escapedRoom(name) + 4);
  *p++ = '"';
  if (readOnlyValue(value)) *p++ = '*';
  p = putEscaped(p, name);
  *p++ = '"';
  *p++ = ':';
  out.putEnd(p);
}

class JsonWriter {
 public:
  explicit JsonWriter(OutBuffer& out) : m_out(out) {}

  // False when the tree nests deeper than kMaxDepth.
  bool write(const IElementValueBase* e, int depth) {
    if (!e) {
      m_out.put("[]");
      return true;
    }
    const ElementValue* ev = asElement(e);
    uint32_t type = ev ? ElementAccess::type(*ev) : static_cast<uint32_t>(e->getType());
    if (isContainerGroup(type)) {
      if (depth >= kMaxDepth) return false;
      return kindOf(type) == etObject ? writeObject(e, ev, depth + 1) : writeArray(e, ev, depth + 1);
    }
    writeLeaf(e, ev, type);
    return true;
  }

 private:
  // Kept out of line so the recursive frames of write/writeObject/writeArray stay small.
  __attribute__((noinline)) void writeLeaf(const IElementValueBase* e, const ElementValue* ev, uint32_t type) {
    if (!ev) return writeScalar(type, e->strValue());
    uint64_t word = ElementAccess::word(*ev);
    switch (kindOf(type)) {
      case etString:
        return putQuoted(m_out, textOf(*ev));
      case etInteger:
        return m_out.putEnd(putInteger(m_out.room(kIntegerTextMax), static_cast<int64_t>(word)));
      case etDouble: {
        double d;
        std::memcpy(&d, &word, sizeof d);
        return m_out.putEnd(putFixed6(m_out.room(kFixed6TextMax), d));
      }
      case etBoolean:
        return m_out.put((word & 0xFF) ? "true" : "false");
      default:
        return writeScalar(type, ev->strValue());
    }
  }

  void writeScalar(uint32_t type, const ZrUtf8String& text) {
    int kind = kindOf(type);
    if (kind == etBoolean || kind == etInteger || kind == etDouble) m_out.put(viewOf(text));
    else putQuoted(m_out, viewOf(text));
  }

  bool writeObject(const IElementValueBase* e, const ElementValue* ev, int depth) {
    if (!ev) return writeForeignObject(e, depth);
    m_out.put('{');
    const ObjectStore* store = entriesOf(*ev);
    for (uint32_t i = 0; i < sizeOf(store); ++i) {
      const Entry& entry = store->items()[i];
      if (i) m_out.put(',');
      putName(m_out, entry.name.view(), entry.value);
      if (!write(entry.value, depth)) return false;
    }
    m_out.put('}');
    return true;
  }

  bool writeArray(const IElementValueBase* e, const ElementValue* ev, int depth) {
    if (!ev) return writeForeignArray(e, depth);
    m_out.put('[');
    auto* store = kindOf(ElementAccess::type(*ev)) == etArray
                      ? reinterpret_cast<const ItemStore*>(ElementAccess::word(*ev))
                      : nullptr;
    for (uint32_t i = 0; i < sizeOf(store); ++i) {
      if (i) m_out.put(',');
      if (!write(store->items()[i], depth)) return false;
    }
    m_out.put(']');
    return true;
  }

  // Containers of another element class, through their getters (out of line: their handles
  // and names would otherwise widen every recursive frame).
  __attribute__((noinline)) bool writeForeignObject(const IElementValueBase* e, int depth) {
    m_out.put('{');
    ZrUtf8String name;
    for (int i = 0, n = e->property_count(); i < n; ++i) {
      ZrJsonPtr value = e->enumproperty(i, name);
      if (i) m_out.put(',');
      putName(m_out, viewOf(name), value.get());
      if (!write(value.get(), depth)) return false;
    }
    m_out.put('}');
    return true;
  }

  __attribute__((noinline)) bool writeForeignArray(const IElementValueBase* e, int depth) {
    m_out.put('[');
    for (int i = 0, n = e->array_count(); i < n; ++i) {
      if (i) m_out.put(',');
      if (!write(e->array_sub(i).get(), depth)) return false;
    }
    m_out.put(']');
    return true;
  }

  OutBuffer& m_out;
};

}  // namespace

namespace zrad::json {

bool writeText(const IElementValueBase& root, OutBuffer& out) { return JsonWriter(out).write(&root, 0); }

}  // namespace zrad::json

ZrUtf8String IElementValueBase::writeJson() const {
  OutBuffer out;
  if (!writeText(*this, out)) return {};
  return ZrUtf8String(out.text());
}
