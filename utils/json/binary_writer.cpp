// Binary element stream: the encoder.
//
// One encoded element is a 16-bit type word and a body by kind (counts and lengths 32-bit, values
// 64-bit, little-endian). The encoder builds the bytes in memory and writes them at once, so a
// refused tree leaves the stream untouched.
#include "json/binary.h"

#include <algorithm>

#include "json/element_store.h"
#include "json/limits.h"
#include "json/outbuf.h"

namespace zrad::json {
namespace {

static_assert(__BYTE_ORDER__ == __ORDER_LITTLE_ENDIAN__, "fields are written in the host's order");

// Little-endian fields, written at `p`; each returns the end.
template <class T>
char* putField(char* p, T v) {
  std::memcpy(p, &v, sizeof v);
  return p + sizeof v;
}
char* putText(char* p, std::string_view text) {
  p = putField(p, static_cast<uint32_t>(text.size()));
  copyBytes(p, text.data(), text.size());
  return p + text.size();
}

template <class T>
void put(OutBuffer& out, T v) {
  out.putEnd(putField(out.room(sizeof v), v));
}
void put16(OutBuffer& out, uint32_t v) { put(out, static_cast<uint16_t>(v)); }
void put32(OutBuffer& out, uint32_t v) { put(out, v); }
void put64(OutBuffer& out, uint64_t v) { put(out, v); }
void putText(OutBuffer& out, std::string_view text) { out.putEnd(putText(out.room(4 + text.size()), text)); }

// The bulk of a tree: an entry's name (when given) and a scalar ElementValue, written with one
// reservation. False, writing nothing, when `e` is anything else.
bool putPlainScalar(OutBuffer& out, const Name* name, const IElementValueBase* e) {
  const ElementValue* ev = asElement(e);
  if (!ev || isContainerGroup(ElementAccess::type(*ev))) return false;
  uint32_t type = ElementAccess::type(*ev);
  uint64_t word = ElementAccess::word(*ev);
  int kind = kindOf(type);
  bool texty = kind == etString || kind == etByteBlock;
  std::string_view text;
  if (kind == etString) {
    text = textOf(*ev);
  } else if (kind == etByteBlock && ElementAccess::second(*ev)) {
    text = std::string_view(reinterpret_cast<const char*>(ElementAccess::second(*ev)), static_cast<uint32_t>(word));
  }
  std::string_view nameText = name ? name->view() : std::string_view();
  char* p = out.room(4 + nameText.size() + 2 + 4 + text.size() + 8);
  if (name) p = putText(p, nameText);
  p = putField(p, static_cast<uint16_t>(type));
  if (texty) p = putText(p, text);
  else if (kind != etReserved42) p = putField(p, word);
  out.putEnd(p);
  return true;
}

// Another element class writes itself through its writeBinary slot.
void appendOwnEncoding(OutBuffer& out, const IElementValueBase& e) {
  ZrMemoryStreamPtr own = ZrMemoryStream::createNew();
  const_cast<IElementValueBase&>(e).writeBinary(ZrStreamBufPtr(own.get()));
  out.put(std::string_view(reinterpret_cast<const char*>(own->data()), own->length()));
}

class Encoder {
 public:
  explicit Encoder(OutBuffer& out) : m_out(out) {}

  // `depth` counts the containers above `e`.
  bool encode(const IElementValueBase* e, int depth, bool root) {
    if (!e) {
      put16(m_out, etNullFlag);
      return true;
    }
    if (putPlainScalar(m_out, nullptr, e)) return true;
    const ElementValue* ev = asElement(e);
    if (!ev && !root) {
      appendOwnEncoding(m_out, *e);
      return true;
    }
    uint32_t type = ev ? ElementAccess::type(*ev) : static_cast<uint32_t>(e->getType());
    int kind = kindOf(type);
    put16(m_out, type);
    if (isContainerGroup(type)) {
      if (kind != etObject && kind != etArray) return true;
      if (depth >= kMaxDepth) return false;
      return kind == etObject ? encodeObject(e, ev, depth + 1) : encodeArray(e, ev, depth + 1);
    }
    encodeScalar(e, kind);
    return true;
  }

 private:
  // A scalar of another element class, from its getters.
  void encodeScalar(const IElementValueBase* e, int kind) {
    switch (kind) {
      case etString: putText(m_out, viewOf(e->strValue())); break;
      case etByteBlock: put32(m_out, 0); break;
      case etReserved42: break;
      case etBoolean: put64(m_out, e->boolValue() ? 1 : 0); break;
      case etDouble: {
        double d = e->floatValue();
        uint64_t bits;
        std::memcpy(&bits, &d, sizeof bits);
        put64(m_out, bits);
        break;
      }
      case etTime: put64(m_out, static_cast<uint64_t>(e->timeValue())); break;
      case etPointer:
      case etOwnedPointer:
      case etRxObjectPointer: put64(m_out, reinterpret_cast<uintptr_t>(e->ptrValue())); break;
      default: put64(m_out, static_cast<uint64_t>(e->longlongValue()));
    }
  }

  bool encodeObject(const IElementValueBase* e, const ElementValue* ev, int depth) {
    if (ev) {
      const ObjectStore* store = entriesOf(*ev);
      put32(m_out, sizeOf(store));
      for (uint32_t i = 0; i < sizeOf(store); ++i) {
        const Entry& entry = store->items()[i];
        if (putPlainScalar(m_out, &entry.name, entry.value)) continue;
        putText(m_out, entry.name.view());
        if (!encode(entry.value, depth, false)) return false;
      }
      return true;
    }
    int n = e->property_count();
    put32(m_out, static_cast<uint32_t>(n));
    ZrUtf8String name;
    for (int i = 0; i < n; ++i) {
      ZrJsonPtr value = e->enumproperty(i, name);
      putText(m_out, viewOf(name));
      if (!encode(value.get(), depth, false)) return false;
    }
    return true;
  }

  bool encodeArray(const IElementValueBase* e, const ElementValue* ev, int depth) {
    if (ev) {
      auto* store = reinterpret_cast<const ItemStore*>(ElementAccess::word(*ev));
      put32(m_out, sizeOf(store));
      for (uint32_t i = 0; i < sizeOf(store); ++i) {
        const IElementValueBase* item = store->items()[i];
        if (putPlainScalar(m_out, nullptr, item)) continue;
        if (!encode(item, depth, false)) return false;
      }
      return true;
    }
    int n = e->array_count();
    put32(m_out, static_cast<uint32_t>(n));
    for (int i = 0; i < n; ++i)
      if (!encode(e->array_sub(i).get(), depth, false)) return false;
    return true;
  }

  OutBuffer& m_out;
};

}  // namespace

bool encodeBinary(const IElementValueBase* root, OutBuffer& out) { return Encoder(out).encode(root, 0, true); }

bool signedBinary(const IElementValueBase& root, OutBuffer& out) {
  out.put(static_cast<char>(kBinarySignature));
  if (asElement(&root)) return encodeBinary(&root, out);
  appendOwnEncoding(out, root);
  return true;
}

void putAll(ZrStreamBuf& stream, std::string_view bytes) {
  constexpr size_t kBlock = size_t(1) << 30;
  for (size_t at = 0; at < bytes.size(); at += kBlock)
    stream.putBytes(bytes.data() + at, static_cast<uint32_t>(std::min(kBlock, bytes.size() - at)));
}

}  // namespace zrad::json

void IElementValueBase::writeBinary(ZrSmartPtr<ZrStreamBuf> stream) {
  zrad::json::OutBuffer bytes;
  if (stream && zrad::json::encodeBinary(this, bytes)) zrad::json::putAll(*stream, bytes.view());
}

void ElementValue::writeBinary(ZrSmartPtr<ZrStreamBuf> stream) { IElementValueBase::writeBinary(stream); }
