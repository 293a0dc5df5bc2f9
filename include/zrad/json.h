// Element tree: the reference-counted document model, its JSON text and its binary stream.
//
// IElementValueBase is the abstract element (alone it behaves as the null element), ElementValue
// the concrete one holding a value of one of thirteen kinds; ZrJsonPtr is the counted handle and
// ZrJson the handle with file and stream operations. Slash-separated property paths, path
// variables and typed accessors (GetData*/SetData*) address values deep in a tree.
//
// Depth: no walk of a tree recurses. Reading (JSON text and binary), writing, cloning,
// comparing and destroying work at any depth with memory in proportion to the depth; trees of
// other element classes go through the same walks, through their virtual getters. A tree that
// contains itself cannot be written, cloned or compared: the writers refuse it (false, logged),
// clone gives null, bEqual false.
//
// Hostile numbers: a negative exponent too long for the parser's arithmetic is read as the
// equivalent short one, which gives the value a correct parser gives:
//   [1e-000000001] => 0.1      [1.5e-2147483639] => 0.0
// Only a number of more than 100 million digits is refused.
//
// Out of memory: the platform's ZrError(eOutOfMemory) is the one exception any operation lets
// out; the file and stream writers answer false instead.
//
// The virtual operations are declared in a fixed slot order that other modules call through:
// never reorder them or insert new ones between them.
#pragma once

#include <atomic>
#include <cstdint>
#include <string>

#include <zrad/export.h>
#include <zrplatform/platform.h>

class IElementValueBase;
class ElementValue;

// Kinds (the low byte of a type word) and the two flags above them.
enum ZrElementType : int {
  etNone = 0x00,
  etArray = 0x01,
  etObject = 0x02,
  etString = 0x04,
  etByteBlock = 0x05,
  etBoolean = 0x08,
  etInteger = 0x10,
  etDouble = 0x20,
  etPointer = 0x40,
  etOwnedPointer = 0x41,
  etReserved42 = 0x42,
  etRxObjectPointer = 0x43,
  etTime = 0x80,
  etNullFlag = 0x1000,
  etReadOnlyFlag = 0x2000,
};

// Counted handle to an element, or null. Walking never creates anything: a miss gives null.
//   ZrJsonPtr()("x")       => null handle
//   ZrJsonPtr().ArrayCount() => 0
class ZRAD_EXPORT ZrJsonPtr {
 public:
  ZrJsonPtr() = default;
  ZrJsonPtr(std::nullptr_t) {}
  // Adds a reference when `p` is not null.
  inline ZrJsonPtr(IElementValueBase* p);
  inline ZrJsonPtr(const ZrJsonPtr& o);
  ZrJsonPtr(ZrJsonPtr&& o) noexcept : m_p(o.m_p) { o.m_p = nullptr; }
  inline ~ZrJsonPtr();
  // The new element gains its reference before the old one loses it (aliases are safe).
  inline ZrJsonPtr& operator=(const ZrJsonPtr& o);
  inline ZrJsonPtr& operator=(ZrJsonPtr&& o) noexcept;

  // Takes over a reference the caller already holds.
  static ZrJsonPtr adopt(IElementValueBase* p) {
    ZrJsonPtr h;
    h.m_p = p;
    return h;
  }

  // property_sub / array_sub of the element; null on a null handle.
  ZrJsonPtr operator()(const char* name) const;
  ZrJsonPtr operator()(const ZrUtf8String& name) const;
  ZrJsonPtr operator()(const std::string& name) const;
  ZrJsonPtr operator()(int index) const;

  int ArrayCount() const;
  bool hasProperty(const ZrUtf8String& name) const;

  IElementValueBase* get() const { return m_p; }
  IElementValueBase* operator->() const { return m_p; }
  IElementValueBase& operator*() const { return *m_p; }
  bool isNull() const { return m_p == nullptr; }
  explicit operator bool() const { return m_p != nullptr; }

  friend bool operator==(const ZrJsonPtr& a, const ZrJsonPtr& b) { return a.m_p == b.m_p; }
  friend bool operator!=(const ZrJsonPtr& a, const ZrJsonPtr& b) { return a.m_p != b.m_p; }

 protected:
  IElementValueBase* m_p = nullptr;
};

// The abstract element. Its own behaviour is the null element's: type 0x1000, no value, every
// edit refused. Created elements start with a count of 1; Release at zero deletes.
class ZRAD_EXPORT IElementValueBase {
 public:
  IElementValueBase() = default;
  IElementValueBase(const IElementValueBase&) = delete;
  IElementValueBase& operator=(const IElementValueBase&) = delete;

  // ---- virtual operations, in their fixed slot order ----
  virtual ~IElementValueBase();
  virtual unsigned AddRef();
  // Returns the new count; deletes the element when it reaches zero.
  virtual unsigned Release();
  // Kind in the low byte, etNullFlag / etReadOnlyFlag above it. Base: 0x1000.
  virtual int getType() const;
  // Property of an Object, item of an Array; null for a miss or another kind.
  virtual ZrJsonPtr property_sub(const ZrUtf8String& name) const;
  virtual ZrJsonPtr array_sub(int index) const;
  virtual int array_count() const;
  virtual int property_count() const;
  // The i-th property in byte-wise name order; null (and `key` untouched) when i is out of range.
  virtual ZrJsonPtr enumproperty(int i, ZrUtf8String& key) const;
  virtual bool hasProperty(const ZrUtf8String& name) const;

  // Scalar getters. Conversions between kinds (the odd ones are deliberate):
  //   String "true"      => boolValue false, longlongValue 0
  //   String "42"        => longlongValue 42, floatValue 42.0, timeValue 0
  //   Integer -1         => floatValue 18446744073709551615.0, ulonglongValue 2^64-1
  //   Double 2.5         => longlongValue 2, strValue "2.500000", timeValue 2160000
  //   Time t             => strValue "", boolValue t != 0
  //   Pointer p          => strValue "0x%x" of its low 32 bits
  //   None, Array, Object, null => true, 0, 0.0, ""
  virtual ZrUtf8String strValue() const;
  virtual long long longlongValue() const;
  virtual unsigned long long ulonglongValue() const;
  virtual bool boolValue() const;
  virtual double floatValue() const;
  virtual void* ptrValue() const;
  virtual long long timeValue() const;
  // `def` for a null element, else timeValue().
  virtual long long safeTimeValue(long long def) const;
  // The named property's safeTimeValue(def); `def` when it is missing.
  virtual long long safePropertyt(const ZrUtf8String& name, long long def) const;

  // Property setters: only on a writable Object. Each creates a new value element (read-only
  // when `readOnly`) and stores it through set_property; they return what set_property returns.
  virtual ZrJsonPtr set_propertys(const ZrUtf8String& name, const ZrUtf8String& value, bool readOnly);
  virtual ZrJsonPtr set_propertysW(const ZrUtf8String& name, const ZrString& value, bool readOnly);
  // Shares `value` under `name` and returns it. Null when this is not a writable Object (logged
  // at level 5) or when the present value under `name` is read-only (not logged).
  virtual ZrJsonPtr set_property(const ZrUtf8String& name, const ZrJsonPtr& value);
  virtual ZrJsonPtr set_propertyi(const ZrUtf8String& name, int value, bool readOnly);
  virtual ZrJsonPtr set_propertyi64(const ZrUtf8String& name, long long value, bool readOnly);
  virtual ZrJsonPtr set_propertyu(const ZrUtf8String& name, unsigned long long value, bool readOnly);
  // Stores an Integer, not a Time.
  virtual ZrJsonPtr set_propertyt(const ZrUtf8String& name, long long value, bool readOnly);
  virtual ZrJsonPtr set_propertyd(const ZrUtf8String& name, double value, bool readOnly);
  virtual ZrJsonPtr set_propertyb(const ZrUtf8String& name, bool value, bool readOnly);
  // A Pointer (0x40) the element does not own.
  virtual ZrJsonPtr set_propertyp(const ZrUtf8String& name, void* value, bool readOnly);

  // Value setters: change the kind when needed and store; a handle to this element, or null
  // (nothing changed) when it is read-only. Base: stores nothing.
  virtual ZrJsonPtr set_valuei(int value);
  virtual ZrJsonPtr set_valuei64(long long value);
  virtual ZrJsonPtr set_valueu(unsigned long long value);
  virtual ZrJsonPtr set_valuet(long long value);
  virtual ZrJsonPtr set_values(const ZrUtf8String& value);
  // Null on a null element.
  virtual ZrJsonPtr set_valuesW(const ZrString& value);
  // Always null.
  virtual ZrJsonPtr set_value_point2d(const ZrGePoint2d& value);
  virtual ZrJsonPtr set_valued(double value);
  virtual ZrJsonPtr set_valueb(bool value);
  // Kind chosen by the caller (0x40, 0x41, 0x43); a previous pointer of the same kind is
  // neither freed nor released.
  virtual ZrJsonPtr set_valuep(void* value, int type);

  // Makes a chain of Objects exist along `path`; the last one, or null when a step is no Object.
  virtual ZrJsonPtr appendObjects(const ZrUtf8String& path);
  // Removes `name` from a writable Object.
  virtual void removeProperty(const ZrUtf8String& name);
  // Array edits on a writable Array. An index is valid for 0 <= i < count; arrays never grow
  // through setArrayItem:
  //   setArrayItem(count, v) => false     remove_array_item(-1) => -1
  virtual bool array_append(ZrJsonPtr value);
  virtual bool setArrayItem(int index, ZrJsonPtr value);
  // Returns `index`, or -1.
  virtual int remove_array_item(int index);
  // Index of the first item that is the same element as `value`; -1 when none.
  virtual int get_array_index(const ZrJsonPtr& value) const;
  // Appends the binary form (no 0xE0 signature) to `stream`; platform stream errors propagate.
  // Every element of the tree, of whatever class, is written from its getters in one walk (an
  // override of this slot is called only for the element it is called on). Nothing is written
  // (logged) for a tree the reader could not read back: a text of 2 GiB or more, or a tree
  // that contains itself.
  virtual void writeBinary(ZrSmartPtr<ZrStreamBuf> stream);
  // Merges a copy of `value` into the property `name` of a writable Object; `value` itself is
  // never shared. True when everything merged; false for another kind, a null `value`, or any
  // refusal by a read-only value on the way (the rest is still merged).
  //   missing          => stores a clone       Object into Object => merges name by name
  //   Array into Array => update_array of each item (a set union)
  //   otherwise        => replaces the value by a clone
  virtual bool update_property(const ZrUtf8String& name, const ZrJsonPtr& value);
  // Appends `item` to a writable Array unless an equal item is there already (scalars compare
  // by their text, Objects and Arrays by bEqual). True when the Array now holds such an item;
  // false (logged at level 5) when this is no writable Array, or for a null `item`.
  //   [1] + "1" => true, unchanged      [1] + 2 => true, [1,2]
  virtual bool update_array(const ZrJsonPtr& item);
  // Copies the properties of `source` into this Object (clones when `deep`).
  virtual void copySubProperty(const ZrJsonPtr& source, bool deep);
  // Deep copy; read-only elements are shared, not copied. A byte block gets its own copy of the
  // bytes; owned pointers and kind 0x42 are copied with a zero value (owned memory is never
  // shared). Null (logged) for a tree that contains itself.
  virtual ZrJsonPtr clone() const;
  // Empties a writable Object or Array; other kinds are left unchanged.
  virtual void clear();
  // ---- end of the virtual operations ----

  // Calls timeValue() and returns an empty string.
  ZrUtf8String strTimeValue() const;
  ZrJsonPtr set_propertys(const ZrUtf8String& name, const char* value, bool readOnly);
  // Adds a platform reference to `obj` (when not null) and stores it as kind 0x43.
  ZrJsonPtr set_value_rxobject_ptr(ZrRxObject* obj);
  // Every byte a digit:  "" => true, "012" => true, "-1" => false, "1.5" => false
  static bool isNumber(const ZrUtf8String& text);
  // Compact JSON text (no white space). Names of read-only values get a leading "*"; None and
  // null elements are written as []; doubles as "%lf", integers as "%ld". Empty (logged) for a
  // tree that contains itself.
  //   {"b":1,"a":0.1} => {"a":0.100000,"b":1}
  //   {"*r":1,"a":2}  => {"a":2,"*r":1}   (names sort without the "*": it marks the value)
  ZrUtf8String writeJson() const;

  // Property paths: segments separated by "/" or "\"; an Object takes a name, an Array an
  // index in decimal. The empty path is the element itself.
  //   quickGetProperty("a//b/") == quickGetProperty("a/b")
  //   on {"arr":[10,20]}: quickGetProperty("arr/x") => 10 (strtol of "x" is 0)
  //                       quickGetProperty("arr/4294967296") => null (beyond the int range)
  ZrJsonPtr quickGetProperty(const ZrUtf8String& path) const;
  // Creates missing containers along `path` (an Array where the next segment is a number, else
  // an Object) and returns the element reached; never creates array items.
  // Null when an Array segment is no number, an item is missing before the last segment, or a
  // read-only Object refuses a new member. A scalar on the way ends the walk and is returned.
  //   {} quickSetProperty("a/b")   => the new {} b, tree {"a":{"b":{}}}
  //   {} quickSetProperty("a/0/b") => null, tree {"a":[]}
  //   {"a":[1]} quickSetProperty("a/5") => the Array a
  ZrJsonPtr quickSetProperty(const ZrUtf8String& path);
  // quickGetProperty, then quickSetProperty when missing and `create`.  CheckKey("", x) => this
  ZrJsonPtr CheckKey(const ZrUtf8String& path, bool create);
  // Splits `path` into a parent path and the last name; false (outputs untouched) for a path
  // without segments ("" or "///").
  //   "a/b/c" => "a/b", "c"     "a/b/0" => "a/b/0", "0"     "a/1/2" => "a/1", "2"
  static bool RebuildJsonName(const ZrUtf8String& path, ZrUtf8String& parent, ZrUtf8String& name);

  // Typed accessors at a path (a null `path` counts as ""). Getters: false (out unchanged)
  // when nothing is there; a null element gives true with out unchanged.
  bool GetDataI(const char* path, int& out);
  bool GetDataB(const char* path, bool& out);
  bool GetDataD(const char* path, double& out);
  bool GetDataS(const char* path, ZrUtf8String& out);
  bool GetDataSW(const char* path, ZrString& out);
  // timeValue() of the element, not longlongValue().
  bool GetDataL(const char* path, long long& out);
  bool GetDataP2d(const char* path, ZrGePoint2d& out);
  bool GetDataP3d(const char* path, ZrGePoint3d& out);
  bool GetDataJ(const char* path, ZrJsonPtr& out);
  // Setters create missing containers; false for an empty path or a parent that cannot take
  // the value. An Array parent takes only strings and handles (appended). A read-only property
  // keeps its value and the setter still returns true. SetDataJ refuses a null handle.
  //   {} SetDataI("a/b", 5) => {"a":{"b":5}}      {"l":[]} SetDataS("l/7", "x") => {"l":["x"]}
  bool SetDataI(const char* path, int value);
  bool SetDataB(const char* path, bool value);
  bool SetDataD(const char* path, double value);
  bool SetDataL(const char* path, long long value);
  bool SetDataS(const char* path, const ZrUtf8String& value);
  bool SetDataSW(const char* path, const ZrString& value);
  bool SetDataJ(const char* path, ZrJsonPtr value);
  bool SetDataP2d(const char* path, const ZrGePoint2d& value);
  bool SetDataP3d(const char* path, const ZrGePoint3d& value);

  // Points: an Object {"x","y"[,"z"]} or an Array [x, y(, z)]; `def` for other kinds.
  ZrGePoint2d safe_point2d_value(const ZrGePoint2d& def) const;
  ZrGePoint3d safe_point3d_value(const ZrGePoint3d& def) const;
  // Stores a new Object of Doubles under `name`; returns it. The bool is not used.
  ZrJsonPtr set_property_point2d(const ZrUtf8String& name, const ZrGePoint2d& p, bool readOnly);
  ZrJsonPtr set_property_point3d(const ZrUtf8String& name, const ZrGePoint3d& p, bool readOnly);
  // Equal content. Array order is ignored and items are not paired off; an Integer never
  // equals a Double, a Time nothing; two None or null elements are equal. False for a null
  // handle or a tree that contains itself.
  //   [1,1,2] vs [1,2,2] => true      {"a":1} vs {"a":1.0} => false
  bool bEqual(const ZrJsonPtr& other) const;

 protected:
  // The reference count; the library's own teardown reads it to drop trees held once quickly.
  std::atomic<uint32_t> m_refCount{1};
};

// The concrete element: a type word, a value word and a second word (a byte block's data).
class ZRAD_EXPORT ElementValue : public IElementValueBase {
 public:
  // A new element of `type` with the only reference held by the returned handle.
  static ZrJsonPtr createObject(int type);

  ~ElementValue() override;
  int getType() const override;
  ZrJsonPtr property_sub(const ZrUtf8String& name) const override;
  ZrJsonPtr array_sub(int index) const override;
  int array_count() const override;
  int property_count() const override;
  ZrJsonPtr enumproperty(int i, ZrUtf8String& key) const override;
  bool hasProperty(const ZrUtf8String& name) const override;
  ZrUtf8String strValue() const override;
  long long longlongValue() const override;
  unsigned long long ulonglongValue() const override;
  bool boolValue() const override;
  double floatValue() const override;
  void* ptrValue() const override;
  long long timeValue() const override;
  using IElementValueBase::set_propertys;
  ZrJsonPtr set_propertys(const ZrUtf8String& name, const ZrUtf8String& value, bool readOnly) override;
  ZrJsonPtr set_property(const ZrUtf8String& name, const ZrJsonPtr& value) override;
  ZrJsonPtr set_propertyi(const ZrUtf8String& name, int value, bool readOnly) override;
  ZrJsonPtr set_propertyi64(const ZrUtf8String& name, long long value, bool readOnly) override;
  ZrJsonPtr set_propertyu(const ZrUtf8String& name, unsigned long long value, bool readOnly) override;
  ZrJsonPtr set_propertyt(const ZrUtf8String& name, long long value, bool readOnly) override;
  ZrJsonPtr set_propertyd(const ZrUtf8String& name, double value, bool readOnly) override;
  ZrJsonPtr set_propertyb(const ZrUtf8String& name, bool value, bool readOnly) override;
  ZrJsonPtr set_propertyp(const ZrUtf8String& name, void* value, bool readOnly) override;
  ZrJsonPtr set_valuei(int value) override;
  ZrJsonPtr set_valuei64(long long value) override;
  ZrJsonPtr set_valueu(unsigned long long value) override;
  ZrJsonPtr set_valuet(long long value) override;
  ZrJsonPtr set_values(const ZrUtf8String& value) override;
  ZrJsonPtr set_valued(double value) override;
  ZrJsonPtr set_valueb(bool value) override;
  ZrJsonPtr set_valuep(void* value, int type) override;
  ZrJsonPtr appendObjects(const ZrUtf8String& path) override;
  void removeProperty(const ZrUtf8String& name) override;
  bool array_append(ZrJsonPtr value) override;
  bool setArrayItem(int index, ZrJsonPtr value) override;
  int remove_array_item(int index) override;
  int get_array_index(const ZrJsonPtr& value) const override;
  void writeBinary(ZrSmartPtr<ZrStreamBuf> stream) override;
  bool update_property(const ZrUtf8String& name, const ZrJsonPtr& value) override;
  bool update_array(const ZrJsonPtr& item) override;
  void clear() override;

  // Frees the old storage when the kind changes, takes `type` (flags included) as the type
  // word, then gives an Array, Object or String empty storage when it has none (an unchanged
  // kind keeps its content) and zeroes the value of every other kind.
  void initWithType(int type);
  // Makes this a String holding `text` (0x2004 when `readOnly`, else 0x04).
  void initWithUtf8String(const ZrUtf8String& text, bool readOnly);
  // Stores `text` parsed as type 0x10 (strtol), 0x20 (strtod) or 0x04 (as is).
  void setString(const ZrUtf8String& text, int type);
  // Frees the storage of the kind; the type word stays.
  void freePointerValue();
  // Removes the first item that is the same element as `value`; its former index, or -1.
  int remove_array_item(const ZrJsonPtr& value);
  // Placeholder kept in the interface: always null.
  ZrJsonPtr queryArrayItemByItemProperty(const ZrUtf8String& name, const ZrUtf8String& value);
  // Replaces the content by the next encoded element of `stream` (no signature byte) and
  // leaves the stream just after it. False, with the element and the stream position
  // unchanged, when the stream ends early or claims more items or bytes than it holds.
  bool readBinary(ZrSmartPtr<ZrStreamBuf> stream);

 protected:
  // The element's words belong to the library's own readers and writers; nothing outside it
  // may rely on their layout.
  uint32_t m_type = etNullFlag;
  union {
    uint64_t u;
    int64_t i;
    double d;
    void* p;
  } m_value{0};
  // The data of a byte block, or the last bytes of a short String's text; zero otherwise.
  union {
    uint64_t word;
    void* byteBlock;
    char textTail[8];
  } m_second{0};

  // A new element in `block` (an element's block of the library's own) with a count of 1 and
  // the type word `type`, nothing initialised.
  static ElementValue* make(void* block, uint32_t type);

 private:
  ElementValue() = default;
};

// A handle with the file and stream operations. A reader on a null handle first makes it a new
// Object; reading into an Object merges (names the text does not mention survive; read-only
// values refuse replacement).
class ZRAD_EXPORT ZrJson : public ZrJsonPtr {
 public:
  enum fileFormat { eJsonText = 1, eBinary = 2 };

  ZrJson() = default;
  ZrJson(const ZrJsonPtr& h) : ZrJsonPtr(h) {}
  ZrJson(IElementValueBase* p) : ZrJsonPtr(p) {}

  // format 1: `source` is the JSON text. Negative: `source` is a file path, its format detected;
  // a binary file (first byte 0xE0..0xE2) gives true and is not decoded here (see load). Other
  // formats: true, nothing read. False on a parse error or an unopenable file.
  bool read(const ZrUtf8String& source, int format, const char* unused = nullptr);
  // In-memory text. null/0 => false. Format 1 parses; negative detects (binary or text not
  // starting with "[" or "{" => true, not parsed); 0 and >= 2 => true, nothing read.
  bool readFromStream(const char* data, unsigned int length, int format, const char* unused = nullptr);
  // A new element from `text`; null (logged at level 5) on a parse error.
  static ZrJsonPtr readjson(const ZrUtf8String& text);
  // Loads a file written by write() in either format: JSON text is parsed, the binary form
  // (signature 0xE0) decoded. False when the file is missing, unreadable or malformed.
  bool load(const ZrUtf8String& path);
  // Decodes a signature byte 0xE0 and one encoded element from the stream's position (see
  // ElementValue::readBinary); the first byte is taken even when the stream is refused.
  bool readBinaryStream(ZrStreamBuf* stream);

  // Format 1: the JSON text; format 2: 0xE0 and the binary form; other formats: true, nothing
  // written. False for a null handle, a file or stream that cannot be written.
  bool write(const std::string& path, fileFormat format, const char* unused = nullptr) const;
  bool write2Stream(ZrStreamBuf* stream, fileFormat format, const char* unused = nullptr) const;

 private:
  ElementValue* ensureElement();
};

// Expands %NAME% variables (EXEPATH, TEMPPATH, LANGUAGE, ..., then the environment) of `text`
// against a configuration tree.
//   "100%%" => "100%"     "a%b" => "a"     "%OS%" => "linux" when unconfigured
ZRAD_EXPORT ZrUtf8String zrsiutEvaluatePath(const ZrUtf8String& text, ZrJsonPtr configuration);
// Appends the non-empty texts of an Array's items to `out`, skipping those already there.
ZRAD_EXPORT void zrutEnumPaths(ZrJsonPtr list, ZrArray<ZrUtf8String>& out);
ZRAD_EXPORT void zrutEnumPathsW(ZrJsonPtr list, ZrArray<ZrString>& out);

// Questions a tool asks about element-tree input before or after reading it.
//
// True when a file or stream starting with the byte `first` is taken for the binary form, as
// read(), readFromStream() and load() decide (0xE0..0xE2; only 0xE0 is decoded).
ZRAD_EXPORT bool zrutIsBinaryJsonStart(unsigned char first);
// Why JSON text does not read as a tree: the byte offset where parsing stopped, its line and
// column there (both from 1; the column counts bytes) and the reason in the parser's words
// ("Missing a comma or '}' after an object member."). A number of more digits than the reader
// accepts is reported at offset 0. The text is read as the readers read it, up to its first
// zero byte.
struct ZrJsonTextError {
  size_t offset = 0;
  int line = 0;
  int column = 0;
  std::string reason;
};
// False, with `error` untouched, when the text reads as a tree.
ZRAD_EXPORT bool zrutLocateJsonError(const char* text, size_t length, ZrJsonTextError& error);

inline ZrJsonPtr::ZrJsonPtr(IElementValueBase* p) : m_p(p) {
  if (m_p) m_p->AddRef();
}
inline ZrJsonPtr::ZrJsonPtr(const ZrJsonPtr& o) : ZrJsonPtr(o.m_p) {}
inline ZrJsonPtr::~ZrJsonPtr() {
  if (m_p) m_p->Release();
}
inline ZrJsonPtr& ZrJsonPtr::operator=(const ZrJsonPtr& o) {
  if (o.m_p != m_p) {
    IElementValueBase* old = m_p;
    m_p = o.m_p;
    if (m_p) m_p->AddRef();
    if (old) old->Release();
  }
  return *this;
}
inline ZrJsonPtr& ZrJsonPtr::operator=(ZrJsonPtr&& o) noexcept {
  if (this != &o) {
    IElementValueBase* old = m_p;
    m_p = o.m_p;
    o.m_p = nullptr;
    if (old) old->Release();
  }
  return *this;
}
