// Binary element stream: the decoder.
//
// The decoder works on the stream's bytes in one piece and keeps its read position in a local
// pointer, checks every count and length against the bytes left before it reserves anything,
// builds each container straight into its block, and keeps its open containers on a heap stack
// rather than the call stack, so streams of any depth are read (the stack grows with the bytes).
#include "json/binary.h"

#include <cstdlib>
#include <string>
#include <vector>

#include "json/element_store.h"
#include "json/entry_sort.h"
#include "json/oom.h"

namespace zrad::json {
namespace {

static_assert(__BYTE_ORDER__ == __ORDER_LITTLE_ENDIAN__, "fields are read in the host's order");

// The bytes of a stream from its position on, in one piece: a memory stream's own, any other
// stream's rest read in (memory grows with the bytes the stream delivers, not with what it
// claims to hold). `finish` leaves the stream just after the bytes used.
class Source {
 public:
  explicit Source(ZrStreamBuf& stream) : m_stream(stream) {
    if (auto* memory = dynamic_cast<ZrMemoryStream*>(&stream)) {
      const char* data = reinterpret_cast<const char*>(memory->data());
      begin = data + stream.tell();
      end = data + stream.length();
      return;
    }
    constexpr uint32_t kChunk = 64 * 1024;
    uint32_t got;
    do {
      size_t at = m_copy.size();
      m_copy.resize(at + kChunk);
      got = stream.getBytes(&m_copy[at], kChunk);
      m_copy.resize(at + got);
    } while (got == kChunk);
    m_copied = true;
    begin = m_copy.data();
    end = begin + m_copy.size();
  }

  void finish(const char* used) {
    int64_t move = m_copied ? -(end - used) : used - begin;
    if (move) m_stream.seek(move, kSeekFromCurrent);
  }

  const char* begin;
  const char* end;

 private:
  ZrStreamBuf& m_stream;
  std::string m_copy;
  bool m_copied = false;
};

// Field readers over [p, end): each advances `p` and is false when the bytes run short.
template <class T>
bool take(const char*& p, const char* end, T& v) {
  if (static_cast<size_t>(end - p) < sizeof v) return false;
  std::memcpy(&v, p, sizeof v);
  p += sizeof v;
  return true;
}

// A 32-bit length and that many bytes; a length of 0 or less is an empty text.
bool takeText(const char*& p, const char* end, std::string_view& text) {
  int32_t length;
  if (!take(p, end, length)) return false;
  size_t n = length > 0 ? static_cast<size_t>(length) : 0;
  if (n > static_cast<size_t>(end - p)) return false;
  text = std::string_view(p, n);
  p += n;
  return true;
}

// A count that the bytes left can hold at `minBytes` per member; negative is 0.
bool takeCount(const char*& p, const char* end, uint64_t minBytes, uint32_t& count) {
  int32_t n;
  if (!take(p, end, n)) return false;
  count = n < 0 ? 0 : static_cast<uint32_t>(n);
  return count <= static_cast<uint64_t>(end - p) / minBytes;
}

// Reads the type and, for a scalar, its body into the fresh null element `e` (a text block
// taken with `s`); for an Array or Object only the member count. Returns the position after
// it, or null.
// Inlined: the decoder calls it for every element.
__attribute__((always_inline)) inline const char* readHead(ChunkState& s, ElementValue& e, const char* p, const char* end, uint32_t& count) {
  int16_t type;
  if (!take(p, end, type)) return nullptr;
  uint32_t t = static_cast<uint32_t>(static_cast<int>(type));
  ElementAccess::type(e) = t;
  bool ok;
  switch (kindOf(t)) {
    case etObject: ok = takeCount(p, end, 6, count); break;  // a name length and a type at least
    case etArray: ok = takeCount(p, end, 2, count); break;
    case etString: {
      std::string_view text;
      ok = takeText(p, end, text);
      if (ok) initText(s, e, text);
      break;
    }
    case etByteBlock: {
      uint32_t length;
      ok = take(p, end, length) && length <= static_cast<size_t>(end - p);
      if (!ok || !length) break;
      void* data = std::malloc(length);
      if (!data) throw ZrError(Zrad::eOutOfMemory);
      std::memcpy(data, p, length);
      p += length;
      ElementAccess::word(e) = length;
      ElementAccess::byteBlock(e) = data;
      break;
    }
    case etReserved42: ok = true; break;
    case etBoolean:
    case etInteger:
    case etDouble: ok = take(p, end, ElementAccess::word(e)); break;
    default:
      if (isContainerGroup(t)) {  // None and null elements
        ok = true;
      } else {  // pointers and times are not restored
        ok = end - p >= 8;
        p += ok ? 8 : 0;
      }
  }
  return ok ? p : nullptr;
}

bool isOpen(const ElementValue& e) {
  int kind = kindOf(ElementAccess::type(e));
  return kind == etObject || kind == etArray;
}

// Decodes without recursion: open containers wait on a stack of frames, each with the block
// its members go into. A block is reserved for the member count the container announces, so
// the counts of all open containers together must fit the bytes left, at the fewest bytes a
// member can take: memory stays in proportion to the stream whatever the counts claim.
class Decoder {
 public:
  // Takes its blocks with the chunk state of the bulk build it works in.
  explicit Decoder(ChunkState& chunks) : m_chunks(chunks) {}

  // Decodes the element at `p` into the fresh null element `root`; the position after it, or
  // null. What was built so far hangs on `root` either way.
  const char* decode(ElementValue& root, const char* p, const char* end) {
    uint32_t count = 0;
    if (!(p = readHead(m_chunks, root, p, end, count))) return nullptr;
    if (isOpen(root) && !open(root, count, static_cast<uint64_t>(end - p))) return nullptr;
    while (!m_frames.empty()) {
      Frame& top = m_frames.back();
      if (top.left == 0) {
        close(top);
        m_frames.pop_back();
        continue;
      }
      --top.left;
      m_promised -= top.minBytes;
      ElementValue* child = ElementAccess::make(m_chunks, etNullFlag);
      if (top.object) {
        auto* store = static_cast<ObjectStore*>(top.block);
        Entry& entry = store->items()[store->size++];
        entry.name.size = 0;
        entry.value = child;
        std::string_view name;
        if (!takeText(p, end, name)) return nullptr;
        makeName(m_chunks, entry.name, name);
        // A stream we wrote lists names in order: checked here, the block needs no sort.
        if (top.sorted && store->size > 1) top.sorted = compareNames((&entry)[-1].name.view(), name) < 0;
      } else {
        auto* store = static_cast<ItemStore*>(top.block);
        store->items()[store->size++] = child;
      }
      if (!(p = readHead(m_chunks, *child, p, end, count))) return nullptr;
      if (isOpen(*child) && !open(*child, count, static_cast<uint64_t>(end - p))) return nullptr;
    }
    return p;
  }

 private:
  struct Frame {
    ElementValue* node;
    void* block;        // the node's block, filled up to its size
    uint32_t left;      // members still to read
    uint32_t minBytes;  // the fewest bytes a member takes
    bool object;
    bool sorted;        // the names so far are in order and all different
  };

  // Gives `node` a block for `count` members, if the bytes `left` can hold them beside the
  // members already promised.
  bool open(ElementValue& node, uint32_t count, uint64_t left) {
    bool object = kindOf(ElementAccess::type(node)) == etObject;
    uint32_t minBytes = object ? 6 : 2;  // a name length and a type, or a type
    uint64_t needed = uint64_t(count) * minBytes;
    if (m_promised > left || needed > left - m_promised) return false;
    void* block = nullptr;
    if (count) {
      block = newBlock(m_chunks, object ? sizeof(Entry) : sizeof(IElementValueBase*), count);
      static_cast<Block<char>*>(block)->size = 0;
      ElementAccess::word(node) = reinterpret_cast<uint64_t>(block);
    }
    m_promised += needed;
    m_frames.push_back({&node, block, count, minBytes, object, true});
    return true;
  }

  // An Object whose names were not in order gets them sorted, the last of a repeated name kept.
  void close(const Frame& f) {
    if (!f.object || f.sorted) return;
    auto* store = static_cast<ObjectStore*>(f.block);
    ElementAccess::word(*f.node) =
        reinterpret_cast<uint64_t>(settleEntries(store->items(), store->size, Repeats::kLastWins));
    freeBlock(store, sizeof(Entry));
  }

  std::vector<Frame> m_frames;
  uint64_t m_promised = 0;  // bytes the members still to read take at least
  ChunkState& m_chunks;
};

bool decode(ElementValue& target, ZrStreamBuf& stream) {
  ZrJsonPtr fresh = ElementValue::createObject(etNullFlag);
  auto& decoded = static_cast<ElementValue&>(*fresh);
  Source source(stream);
  BulkBuild bulk;
  const char* after = Decoder(bulk.chunks()).decode(decoded, source.begin, source.end);
  source.finish(after ? after : source.begin);
  if (!after) return false;
  takeContent(target, decoded);
  return true;
}

}  // namespace

bool decodeBinary(ElementValue& target, ZrStreamBuf& stream) {
  return platformOutOfMemory([&] { return decode(target, stream); });
}

}  // namespace zrad::json

bool ElementValue::readBinary(ZrSmartPtr<ZrStreamBuf> stream) {
  return stream && zrad::json::decodeBinary(*this, *stream);
}
