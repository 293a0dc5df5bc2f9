// JSON text writer: the compact text of an element tree.
//
// No white space; names in the map's byte-wise order, "*" before the names of read-only values;
// None and null elements as []; numbers as "%ld" / "%lf"; strings escaped by the table in
// putEscaped. Plain text is copied a word at a time into a buffer grown ahead of the writes.
#include "json/element_store.h"
#include "json/numfmt.h"
#include "json/oom.h"
#include "json/outbuf.h"
#include "json/walk.h"
#include "json/writer.h"
#include "log/logmsg.h"

using namespace zrad::json;

namespace {

const char kLogSource[] = "utils/zradjson";

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

// "name": with a "*" before the name of a read-only value.
__attribute__((noinline)) void putName(OutBuffer& out, std::string_view name, uint32_t valueType) {
  char* p = out.room(escapedRoom(name) + 4);
  *p++ = '"';
  if (isReadOnly(valueType)) *p++ = '*';
  p = putEscaped(p, name);
  *p++ = '"';
  *p++ = ':';
  out.putEnd(p);
}

// Writes each element as the walk meets it: a separator, the name, then the value or the
// opening bracket of a container.
class TextVisitor {
 public:
  // The bracket that closes an open container.
  struct Open {
    char closer;
  };

  explicit TextVisitor(OutBuffer& out) : m_out(out) {}

  // Inline in the walk's loop over scalar members: a call per member costs 3% of a write.
  __attribute__((always_inline)) bool leaf(const Member& m, Open*) {
    const uint32_t type = m.type();
    prefix(m, type);
    if (isContainerGroup(type)) {  // None and null elements
      m_out.put("[]");
      return true;
    }
    if (!m.own) return writeScalar(type, m.element->strValue()), true;
    const uint64_t word = ElementAccess::word(*m.own);
    switch (kindOf(type)) {
      case etString:
        putQuoted(m_out, textOf(*m.own));
        break;
      case etInteger:
        m_out.putEnd(putInteger(m_out.room(kIntegerTextMax), static_cast<int64_t>(word)));
        break;
      case etDouble: {
        double d;
        std::memcpy(&d, &word, sizeof d);
        m_out.putEnd(putFixed6(m_out.room(kFixed6TextMax), d));
        break;
      }
      case etBoolean:
        m_out.put((word & 0xFF) ? "true" : "false");
        break;
      default:
        writeScalar(type, m.own->strValue());
    }
    return true;
  }

  Enter open(const Member& m, uint32_t, Open*, Open& opened) {
    const uint32_t type = m.type();
    prefix(m, type);
    const bool object = kindOf(type) == etObject;
    m_out.put(object ? '{' : '[');
    opened.closer = object ? '}' : ']';
    return Enter::kMembers;
  }

  void close(Open& opened) { m_out.put(opened.closer); }

 private:
  void prefix(const Member& m, uint32_t type) {
    if (!m.first) m_out.put(',');
    if (m.named) putName(m_out, m.name, type);
  }

  void writeScalar(uint32_t type, const ZrUtf8String& text) {
    int kind = kindOf(type);
    if (kind == etBoolean || kind == etInteger || kind == etDouble) m_out.put(viewOf(text));
    else putQuoted(m_out, viewOf(text));
  }

  OutBuffer& m_out;
};

}  // namespace

namespace zrad::json {

bool writeText(const IElementValueBase& root, OutBuffer& out) {
  TextVisitor visitor(out);
  if (platformOutOfMemory([&] { return walkTree(root, visitor); }) == WalkEnd::kDone) return true;
  ZRAD_LOG(5, kLogSource, "writeJson: the tree contains itself and cannot be written");
  return false;
}

}  // namespace zrad::json

ZrUtf8String IElementValueBase::writeJson() const {
  OutBuffer out;
  if (!writeText(*this, out)) return {};
  return ZrUtf8String(out.text());
}
