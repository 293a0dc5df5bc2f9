// Binary element stream: encoder and decoder.
//
// One encoded element is a 16-bit type word and a body by kind (counts and lengths 32-bit, values
// 64-bit, little-endian). The encoder builds the bytes in memory and writes them at once, so a
// refused tree leaves the stream untouched. The decoder reads a memory stream in place and
// others through a buffer, checks every count and length against what the stream still holds
// before it reserves anything, and keeps its open containers on a heap stack rather than the
// call stack.
#include "json/binary.h"

#include <cstdlib>
#include <memory>
#include <typeinfo>
#include <vector>

#include "json/element_store.h"
#include "json/entry_sort.h"
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
// A type word and a text: strings and byte blocks.
void putTyped(OutBuffer& out, uint32_t type, std::string_view text) {
  out.putEnd(putText(putField(out.room(2 + 4 + text.size()), static_cast<uint16_t>(type)), text));
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
    const ElementValue* ev = asElement(e);
    if (!ev && !root) {
      appendOwnEncoding(m_out, *e);
      return true;
    }
    uint32_t type = ev ? ElementAccess::type(*ev) : static_cast<uint32_t>(e->getType());
    int kind = kindOf(type);
    if (ev && !isContainerGroup(type)) {
      // The common case, one reservation per element.
      uint64_t word = ElementAccess::word(*ev);
      switch (kind) {
        case etString: putTyped(m_out, type, textOf(*ev)); break;
        case etByteBlock: {
          auto* data = reinterpret_cast<const char*>(ElementAccess::second(*ev));
          putTyped(m_out, type, data ? std::string_view(data, static_cast<uint32_t>(word)) : std::string_view());
          break;
        }
        case etReserved42: put16(m_out, type); break;
        default: m_out.putEnd(putField(putField(m_out.room(2 + 8), static_cast<uint16_t>(type)), word));
      }
      return true;
    }
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
      auto* store = reinterpret_cast<const ObjectStore*>(ElementAccess::word(*ev));
      put32(m_out, sizeOf(store));
      for (uint32_t i = 0; i < sizeOf(store); ++i) {
        putText(m_out, store->items()[i].name.view());
        if (!encode(store->items()[i].value, depth, false)) return false;
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
      for (uint32_t i = 0; i < sizeOf(store); ++i)
        if (!encode(store->items()[i], depth, false)) return false;
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

// Reading from a platform stream that never reads past what the stream holds: a memory
// stream is read in place, any other through a buffer.
class Input {
 public:
  explicit Input(ZrStreamBuf& stream) : m_stream(stream) {
    uint64_t at = stream.tell();
    if (typeid(stream) == typeid(ZrMemoryStream)) {
      const char* data = reinterpret_cast<const char*>(static_cast<ZrMemoryStream&>(stream).data());
      m_begin = m_pos = data + at;
      m_end = data + stream.length();
    } else {
      m_buf.reset(new char[kChunk]);
      m_begin = m_pos = m_end = m_buf.get();
      m_left = stream.length() - at;
    }
  }
  // Leaves the stream just after what was used.
  ~Input() {
    int64_t move = m_buf ? -(m_end - m_pos) : m_pos - m_begin;
    if (move) m_stream.seek(move, kSeekFromCurrent);
  }

  uint64_t remaining() const { return static_cast<uint64_t>(m_end - m_pos) + m_left; }

  bool read(void* dst, uint64_t n) {
    if (n <= static_cast<uint64_t>(m_end - m_pos)) {
      std::memcpy(dst, m_pos, static_cast<size_t>(n));
      m_pos += n;
      return true;
    }
    if (n > remaining()) return false;
    char* out = static_cast<char*>(dst);
    while (n) {
      if (m_pos == m_end && !refill()) return false;
      size_t take = static_cast<size_t>(std::min<uint64_t>(n, m_end - m_pos));
      std::memcpy(out, m_pos, take);
      m_pos += take;
      out += take;
      n -= take;
    }
    return true;
  }
  // The next `n` bytes (n <= remaining()): in place when they are at hand, else via `scratch`.
  bool view(uint64_t n, std::string& scratch, std::string_view& out) {
    if (n <= static_cast<uint64_t>(m_end - m_pos)) {
      out = std::string_view(m_pos, static_cast<size_t>(n));
      m_pos += n;
      return true;
    }
    scratch.resize(static_cast<size_t>(n));
    out = scratch;
    return read(scratch.data(), n);
  }
  bool skip(uint64_t n) {
    char sink[8];
    return n <= sizeof sink && read(sink, n);
  }
  // A little-endian field (the host's own order).
  template <class T>
  bool get(T& v) {
    static_assert(__BYTE_ORDER__ == __ORDER_LITTLE_ENDIAN__, "fields are read in the host's order");
    if (sizeof(T) <= static_cast<size_t>(m_end - m_pos)) {
      std::memcpy(&v, m_pos, sizeof(T));
      m_pos += sizeof(T);
      return true;
    }
    return read(&v, sizeof(T));
  }

 private:
  static constexpr size_t kChunk = 64 * 1024;

  bool refill() {
    if (!m_buf) return false;
    uint32_t want = static_cast<uint32_t>(std::min<uint64_t>(kChunk, m_left));
    uint32_t got = want ? m_stream.getBytes(m_buf.get(), want) : 0;
    m_left = got < want ? 0 : m_left - got;
    m_pos = m_buf.get();
    m_end = m_pos + got;
    return got > 0;
  }

  ZrStreamBuf& m_stream;
  std::unique_ptr<char[]> m_buf;  // null when reading a memory stream in place
  const char* m_begin;
  const char* m_pos;
  const char* m_end;
  uint64_t m_left = 0;  // bytes of the stream not yet in the buffer
};

// Decodes without recursion: open containers wait on a stack of frames while their members
// gather on shared stacks, and become blocks when their last member has been read.
class Decoder {
 public:
  explicit Decoder(Input& in) : m_in(in) {}
  ~Decoder() {
    for (Entry& e : m_entries) {
      freeName(e.name);
      releaseItem(e.value);
    }
    for (IElementValueBase* item : m_items) releaseItem(item);
  }

  bool decode(ElementValue& root) {
    uint32_t count = 0;
    if (!readHead(root, count)) return false;
    if (isOpen(root)) open(root, count);
    while (!m_frames.empty()) {
      Frame& top = m_frames.back();
      if (top.left == 0) {
        close(top);
        m_frames.pop_back();
        continue;
      }
      --top.left;
      bool object = top.object;
      if (object && !readText(m_name)) return false;
      ElementValue* child = ElementAccess::make(etNullFlag);
      if (object) {
        Entry entry{{}, child};
        makeName(entry.name, m_name);
        m_entries.push_back(entry);
      } else {
        m_items.push_back(child);
      }
      if (!readHead(*child, count)) return false;
      if (isOpen(*child)) {
        if (m_frames.size() >= static_cast<size_t>(kMaxDepth)) return false;
        open(*child, count);
      }
    }
    return true;
  }

 private:
  struct Frame {
    ElementValue* node;
    uint32_t left;  // members still to read
    bool object;
    size_t start;   // where its members begin on the shared stack
  };

  static bool isOpen(const ElementValue& e) {
    int kind = kindOf(ElementAccess::type(e));
    return kind == etObject || kind == etArray;
  }

  void open(ElementValue& node, uint32_t count) {
    bool object = kindOf(ElementAccess::type(node)) == etObject;
    m_frames.push_back({&node, count, object, object ? m_entries.size() : m_items.size()});
  }

  // Moves the gathered members of a finished container into its block.
  void close(const Frame& f) {
    uint64_t& word = ElementAccess::word(*f.node);
    if (f.object) {
      uint32_t n = static_cast<uint32_t>(m_entries.size() - f.start);
      word = reinterpret_cast<uint64_t>(settleEntries(m_entries.data() + f.start, n, Repeats::kLastWins));
      m_entries.resize(f.start);
    } else {
      uint32_t n = static_cast<uint32_t>(m_items.size() - f.start);
      word = reinterpret_cast<uint64_t>(blockFrom(m_items.data() + f.start, sizeof(IElementValueBase*), n));
      m_items.resize(f.start);
    }
  }

  // Reads the type and, for a scalar, its body; for an Array or Object only the member count.
  // `e` is a fresh null element.
  bool readHead(ElementValue& e, uint32_t& count) {
    int16_t type;
    if (!m_in.get(type)) return false;
    ElementAccess::type(e) = static_cast<uint32_t>(static_cast<int>(type));  // e is fresh: words 0
    uint32_t t = ElementAccess::type(e);
    uint64_t& word = ElementAccess::word(e);
    switch (kindOf(t)) {
      case etObject: return readCount(count, 6);  // a name length and a type at least
      case etArray: return readCount(count, 2);
      case etString:
        if (!readText(m_name)) return false;
        setText(e, m_name);
        return true;
      case etByteBlock: {
        uint32_t length;
        if (!m_in.get(length) || length > m_in.remaining()) return false;
        if (!length) return true;
        void* data = std::malloc(length);
        if (!data) throw ZrError(Zrad::eOutOfMemory);
        word = length;
        ElementAccess::second(e) = reinterpret_cast<uint64_t>(data);
        return m_in.read(data, length);
      }
      case etReserved42: return true;
      case etBoolean:
      case etInteger:
      case etDouble: return m_in.get(word);
      default:
        if (isContainerGroup(t)) return true;  // None and null elements
        return m_in.skip(8);  // pointers and times are not restored
    }
  }

  // A 32-bit length and that many bytes; a length of 0 or less is an empty text. The view
  // lasts until the next read.
  bool readText(std::string_view& text) {
    text = {};
    int32_t length;
    if (!m_in.get(length)) return false;
    if (length <= 0) return true;
    if (static_cast<uint64_t>(length) > m_in.remaining()) return false;
    return m_in.view(static_cast<uint64_t>(length), m_scratch, text);
  }

  // A count that the rest of the stream can hold at `minBytes` per member; negative is 0.
  bool readCount(uint32_t& count, uint64_t minBytes) {
    int32_t n;
    if (!m_in.get(n)) return false;
    count = n < 0 ? 0 : static_cast<uint32_t>(n);
    return count <= m_in.remaining() / minBytes;
  }

  Input& m_in;
  std::vector<Frame> m_frames;
  std::vector<Entry> m_entries;
  std::vector<IElementValueBase*> m_items;
  std::string_view m_name;
  std::string m_scratch;
};

}  // namespace

bool encodeBinary(const IElementValueBase* root, OutBuffer& out) { return Encoder(out).encode(root, 0, true); }

bool decodeBinary(ElementValue& target, ZrStreamBuf& stream) {
  ZrJsonPtr fresh = ElementValue::createObject(etNullFlag);
  auto& decoded = static_cast<ElementValue&>(*fresh);
  {
    Input in(stream);
    if (!Decoder(in).decode(decoded)) return false;
  }
  takeContent(target, decoded);
  return true;
}

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

bool ElementValue::readBinary(ZrSmartPtr<ZrStreamBuf> stream) {
  return stream && zrad::json::decodeBinary(*this, *stream);
}
