// JSON text writer: the compact text of an element tree.
//
// No white space; names in the map's byte-wise order, "*" before the names of read-only values;
// None and null elements as []; numbers as "%ld" / "%lf"; strings escaped by the table in
// appendEscaped. Unescaped runs are appended in bulk.
#include "json/element_store.h"
#include "json/limits.h"
#include "json/numfmt.h"

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

void appendEscaped(std::string& out, std::string_view text) {
  static const char kHex[] = "0123456789abcdef";
  const char* run = text.data();
  const char* end = run + text.size();
  for (const char* p = run; p < end; ++p) {
    unsigned char c = static_cast<unsigned char>(*p);
    if (!kEscape.needs[c]) continue;
    out.append(run, static_cast<size_t>(p - run));
    run = p + 1;
    switch (c) {
      case '\r': out += "\\r"; break;
      case '\t': out += "\\t"; break;
      case '\n': out += "\\n"; break;
      case '"': out += "\\\""; break;
      case '\\': out += "\\\\"; break;
      default: {
        const char u[] = {'\\', 'u', '0', '0', kHex[c >> 4], kHex[c & 15]};
        out.append(u, sizeof u);
      }
    }
  }
  out.append(run, static_cast<size_t>(end - run));
}

void appendQuoted(std::string& out, std::string_view text) {
  out += '"';
  appendEscaped(out, text);
  out += '"';
}

bool readOnlyValue(const IElementValueBase* v) {
  return v && (v->getType() & etReadOnlyFlag);
}

void appendName(std::string& out, std::string_view name, const IElementValueBase* value) {
  out += '"';
  if (readOnlyValue(value)) out += '*';
  appendEscaped(out, name);
  out += "\":";
}

class JsonWriter {
 public:
  explicit JsonWriter(std::string& out) : m_out(out) {}

  // False when the tree nests deeper than kMaxDepth.
  bool write(const IElementValueBase* e, int depth) {
    if (!e) {
      m_out += "[]";
      return true;
    }
    const ElementValue* ev = asElement(e);
    uint32_t type = ev ? ElementAccess::type(*ev) : static_cast<uint32_t>(e->getType());
    if (isContainerGroup(type)) {
      if (depth >= kMaxDepth) return false;
      return kindOf(type) == etObject ? writeObject(e, ev, depth + 1) : writeArray(e, ev, depth + 1);
    }
    if (!ev) return writeScalar(type, e->strValue());
    uint64_t word = ElementAccess::word(*ev);
    switch (kindOf(type)) {
      case etString:
        appendQuoted(m_out, textOf(reinterpret_cast<const TextStore*>(word)));
        return true;
      case etInteger:
        appendInteger(m_out, static_cast<int64_t>(word));
        return true;
      case etDouble:
        appendFixed6(m_out, ev->floatValue());
        return true;
      default:
        return writeScalar(type, ev->strValue());
    }
  }

 private:
  bool writeScalar(uint32_t type, const ZrUtf8String& text) {
    int kind = kindOf(type);
    if (kind == etBoolean || kind == etInteger || kind == etDouble) m_out += text.str();
    else appendQuoted(m_out, viewOf(text));
    return true;
  }

  bool writeObject(const IElementValueBase* e, const ElementValue* ev, int depth) {
    m_out += '{';
    if (ev) {
      auto* store = reinterpret_cast<const ObjectStore*>(ElementAccess::word(*ev));
      for (uint32_t i = 0; i < sizeOf(store); ++i) {
        const Entry& entry = store->items()[i];
        if (i) m_out += ',';
        appendName(m_out, entry.name.view(), entry.value);
        if (!write(entry.value, depth)) return false;
      }
    } else {
      ZrUtf8String name;
      for (int i = 0, n = e->property_count(); i < n; ++i) {
        ZrJsonPtr value = e->enumproperty(i, name);
        if (i) m_out += ',';
        appendName(m_out, viewOf(name), value.get());
        if (!write(value.get(), depth)) return false;
      }
    }
    m_out += '}';
    return true;
  }

  bool writeArray(const IElementValueBase* e, const ElementValue* ev, int depth) {
    m_out += '[';
    if (ev) {
      auto* store = kindOf(ElementAccess::type(*ev)) == etArray
                        ? reinterpret_cast<const ItemStore*>(ElementAccess::word(*ev))
                        : nullptr;
      for (uint32_t i = 0; i < sizeOf(store); ++i) {
        if (i) m_out += ',';
        if (!write(store->items()[i], depth)) return false;
      }
    } else {
      for (int i = 0, n = e->array_count(); i < n; ++i) {
        if (i) m_out += ',';
        if (!write(e->array_sub(i).get(), depth)) return false;
      }
    }
    m_out += ']';
    return true;
  }

  std::string& m_out;
};

}  // namespace

ZrUtf8String IElementValueBase::writeJson() const {
  std::string out;
  if (!JsonWriter(out).write(this, 0)) return {};
  return ZrUtf8String(std::move(out));
}
