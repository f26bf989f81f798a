// Strings that own their text: KoraString<char> of characters, KoraString<unsigned char> of bytes,
// KoraUtf8String of UTF-8, which counts its characters as well, and KoraInlineString, which keeps a
// short text in itself. A held object is 24 bytes, that of UTF-8 is 32:
//
//   offset  size  field
//        0     8  the table of virtual functions
//        8     8  the text; one NUL stands behind its last element and does not count
//       16     4  length, in elements of one byte
//       20     4  maximum length; 0xFFFFFFFF is no limit
//       24     4  characters, in KoraUtf8String alone
//
// An operation that fails throws a NomException and leaves the object as it was: 1448 when the heap
// is exhausted; over the maximum 1035 (characters), 1091 (bytes) or 1124 (UTF-8). An object belongs
// to one thread at a time.
#ifndef NOMOS_KORASTRING_H
#define NOMOS_KORASTRING_H

#include "nomos/export.h"

#include <cstddef>
#include <cstdint>
#include <new>

inline constexpr std::uint32_t kKoraNoMaximum = 0xFFFFFFFF;

// A UTF-8 text that somebody else owns. A charLength of 0 says that nobody has counted.
struct StringUtf8Info {
  unsigned char* data;
  std::uint32_t byteLength;
  std::uint32_t charLength;
  std::uint32_t maximum;  // bytes; of a string that is described, not of one that is set from it
};
static_assert(sizeof(StringUtf8Info) == 24);

// What all of them share: their text as plain bytes, whatever they stand for.
class NOMOS_API KoraBytes {
 public:
  virtual ~KoraBytes() { _release(); }

  // The text; it moves when the string changes its length. Never null.
  void* bytes() noexcept { return _data; }
  const void* bytes() const noexcept { return _data; }
  std::uint32_t length() const noexcept { return _length; }
  std::uint32_t maximum() const noexcept { return _maximum; }

  // Replace, extend, and cut or fill up with NULs. The source may lie in the string itself; it may
  // be null when byteCount is 0. A KoraUtf8String keeps its character count through these: its own
  // operations are those to use.
  void setBytes(const void* source, std::uint32_t byteCount);
  void appendBytes(const void* source, std::uint32_t byteCount);
  void resizeBytes(std::uint32_t byteCount);

  // Makes the text longer by byteCount elements that have no values yet, for somebody who writes
  // them in place, and returns where they begin.
  void* extendBytes(std::uint32_t byteCount);

  // The same for one that knows not what it holds: a KoraUtf8String counts characters, any other
  // takes each byte for one and the charLength of a source for nothing.
  virtual std::uint32_t characters() const noexcept { return _length; }
  virtual void setUtf8(const StringUtf8Info& source);
  virtual void appendUtf8(const StringUtf8Info& source);

  // Gives an empty string memory of byteCount bytes for texts of up to byteCount - kTextOverhead
  // elements; a longer text goes to the heap. REQUIRES: the string is empty; memory is aligned to 4
  // and lives until the string is destroyed; byteCount is at least kTextOverhead.
  void useMemory(void* memory, std::uint32_t byteCount) noexcept {
    _reset();
    _useRoom(static_cast<char*>(memory), byteCount - kHeaderSize);
  }
  static constexpr std::uint32_t kTextOverhead = 9;

 protected:
  static constexpr std::uint32_t kHeaderSize = kTextOverhead - 1;

  // An empty string.
  explicit KoraBytes(std::uint32_t maximum) noexcept : _data(_empty.text), _maximum(maximum) {}
  KoraBytes(const KoraBytes&) = delete;
  KoraBytes& operator=(const KoraBytes&) = delete;

  // The status of a length over the maximum.
  virtual int _tooLong() const noexcept;

  // Takes the text of source, which becomes empty; one that does not lie on the heap is copied.
  void _take(KoraBytes& source);
  // Gives the text's memory back; then the string is empty, on the text that all share.
  void _reset() noexcept {
    _release();
    _data = _empty.text;
    _length = 0;
  }
  // Puts a string that is as after _reset on memory of kHeaderSize bytes and room more, aligned to
  // 4, that lives until _reset.
  void _useRoom(char* memory, std::uint32_t room) noexcept {
    _data = (new (memory) Block{room - 1, 0})->text();
    *static_cast<char*>(_data) = '\0';
  }
  void _swap(KoraBytes& other) noexcept;
  bool _equals(const KoraBytes& other) const noexcept;

 private:
  // The header in front of a text and its NUL.
  struct Block {
    std::uint32_t capacity;  // elements without the NUL
    std::uint32_t isOnHeap;

    char* text() noexcept { return reinterpret_cast<char*>(this) + kHeaderSize; }
  };
  static_assert(sizeof(Block) == kHeaderSize);
  struct EmptyText {
    Block header;
    char text[8];
  };

  static constexpr std::uint64_t _blockSize(std::uint64_t capacity) {
    return sizeof(Block) + capacity + 1;
  }
  Block& _block() const noexcept { return static_cast<Block*>(_data)[-1]; }
  void _checkLength(std::uint64_t byteCount) const;
  Block* _allocateBlock(std::uint64_t byteCount) const;
  void _release() noexcept {
    if (_block().isOnHeap != 0) _releaseBlock();
  }
  void _releaseBlock() noexcept;
  void _setLength(std::uint32_t byteCount) noexcept;

  void* _data;
  std::uint32_t _length = 0;
  std::uint32_t _maximum;
  static EmptyText _empty;
};
static_assert(sizeof(KoraBytes) == 24);

// T is char or unsigned char.
template <class T>
class NOMOS_API KoraString : public KoraBytes {
  static_assert(sizeof(T) == 1);

 public:
  KoraString() noexcept : KoraBytes(kKoraNoMaximum) {}
  // A copy of the text.
  explicit KoraString(const T* source, std::uint32_t length, std::uint32_t maximum = kKoraNoMaximum)
      : KoraBytes(maximum) {
    setBytes(source, length);
  }
  // A new string has the maximum of the one it is made from.
  KoraString(const KoraString& other) : KoraBytes(other.maximum()) {
    setBytes(other.bytes(), other.length());
  }
  // May throw: a text in a KoraInlineString, or in memory from useMemory, must be copied.
  KoraString(KoraString&& other) : KoraBytes(other.maximum()) { _take(other); }

  // An assignment gives the text alone: the maximum of the target stays and is kept.
  KoraString& operator=(const KoraString& other) {
    setBytes(other.bytes(), other.length());
    return *this;
  }
  KoraString& operator=(KoraString&& other) {
    _take(other);
    return *this;
  }

  // As bytes, setBytes, appendBytes and resizeBytes.
  T* data() noexcept { return static_cast<T*>(bytes()); }
  const T* data() const noexcept { return static_cast<const T*>(bytes()); }
  void set(const T* source, std::uint32_t length) { setBytes(source, length); }
  void append(const T* source, std::uint32_t length) { appendBytes(source, length); }
  void resize(std::uint32_t length) { resizeBytes(length); }
  void clear() noexcept { resizeBytes(0); }  // keeps the memory

  // Exchanges texts, where they lie, and maxima. REQUIRES: memory from useMemory outlives both.
  void swap(KoraString& other) noexcept { _swap(other); }

  // Length and elements; maxima do not count.
  bool operator==(const KoraString& other) const noexcept { return _equals(other); }
  bool operator!=(const KoraString& other) const noexcept { return !_equals(other); }

 protected:
  // 1035 for characters, 1091 for bytes.
  int _tooLong() const noexcept override;
};

template <>
NOMOS_API int KoraString<char>::_tooLong() const noexcept;
template <>
NOMOS_API int KoraString<unsigned char>::_tooLong() const noexcept;
extern template class KoraString<char>;
extern template class KoraString<unsigned char>;
static_assert(sizeof(KoraString<char>) == 24);
static_assert(sizeof(KoraString<unsigned char>) == 24);

// Counts its characters where the caller does not: those before the first malformed sequence.
// Length and maximum are in bytes.
class NOMOS_API KoraUtf8String : public KoraBytes {
 public:
  KoraUtf8String() noexcept : KoraBytes(kKoraNoMaximum) {}
  // A copy of the text; the maximum of info is not regarded.
  explicit KoraUtf8String(const StringUtf8Info& info, std::uint32_t maximum = kKoraNoMaximum);
  KoraUtf8String(const KoraUtf8String& other);             // with the maximum of the other
  KoraUtf8String(KoraUtf8String&& other);                  // may throw as KoraString's does
  KoraUtf8String& operator=(const KoraUtf8String& other);  // keeps its own maximum
  KoraUtf8String& operator=(KoraUtf8String&& other);
  ~KoraUtf8String() override;

  // As bytes.
  unsigned char* data() noexcept { return static_cast<unsigned char*>(bytes()); }
  const unsigned char* data() const noexcept { return static_cast<const unsigned char*>(bytes()); }
  std::uint32_t characters() const noexcept override { return _characters; }

  // Replace, and extend, as setBytes and appendBytes do, and count the characters.
  void set(const StringUtf8Info& info);
  void append(const unsigned char* source, std::uint32_t byteLength, std::uint32_t charLength = 0);
  void setUtf8(const StringUtf8Info& source) override { set(source); }
  void appendUtf8(const StringUtf8Info& source) override {
    append(source.data, source.byteLength, source.charLength);
  }
  void resize(std::uint32_t byteLength);  // counts again
  void clear() noexcept;                  // keeps the memory

  // Byte by byte; maxima and counted characters do not count.
  bool operator==(const KoraUtf8String& other) const noexcept { return _equals(other); }
  bool operator!=(const KoraUtf8String& other) const noexcept { return !_equals(other); }

 protected:
  int _tooLong() const noexcept override;

 private:
  std::uint32_t _characters = 0;
};
static_assert(sizeof(KoraUtf8String) == 32);

// A KoraString<char> for the stack: up to 63 characters and their NUL lie in the object, longer
// texts on the heap. A KoraString<char> that is made from it keeps its text on the heap.
class NOMOS_API KoraInlineString final : public KoraString<char> {
 public:
  KoraInlineString() noexcept { _useRoom(_own, kRoom); }
  // A copy of the text, without a maximum.
  explicit KoraInlineString(const char* source, std::uint32_t length);
  // Also what is moved is copied where it is short.
  KoraInlineString(const KoraInlineString& other);
  KoraInlineString& operator=(const KoraInlineString& other);
  // The base class must not find a block that is already gone.
  ~KoraInlineString() override { _reset(); }

  void swap(KoraString& other) = delete;  // its text would outlive it

  static constexpr std::uint32_t kRoom = 64;

 protected:
  int _tooLong() const noexcept override;  // out of line, so that one module has the virtual table

 private:
  alignas(std::uint32_t) char _own[kHeaderSize + kRoom];
};
static_assert(sizeof(KoraInlineString) == 24 + 8 + 64);

#endif  // NOMOS_KORASTRING_H
