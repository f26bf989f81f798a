// The index of property names: a table of the hashes of the names with their places, searched from
// the entry that the hash names to the first free one. It lies beside the images: a few searches
// go without, the next one builds it, additions enter it, and it is dropped when the descriptions
// are replaced. A name that would lie too far from its entry is left out, and the names from the
// first of these on are searched one by one, as all are in an object that has no index for want of
// memory: the result is the same, and names that were chosen to collide cost no more than that.
#ifndef NOMUTIL_DYNAOBJ_NAMEINDEX_H
#define NOMUTIL_DYNAOBJ_NAMEINDEX_H

#include <bit>
#include <cstdint>
#include <cstring>

namespace nomutil::dynaobj {

inline constexpr std::uint32_t kNoName = 0xFFFFFFFF;

template <class T>
T loadFrom(const void* bytes) {
  T record;
  std::memcpy(&record, bytes, sizeof record);
  return record;
}

// A text of less than 8 bytes as a number, different for each of its length.
inline std::uint64_t shortWord(const char* text, std::uint32_t length) {
  if (length >= 4) {
    return loadFrom<std::uint32_t>(text) | std::uint64_t{loadFrom<std::uint32_t>(text + length - 4)}
                                               << 32;
  }
  if (length == 0) return 0;
  const auto byteAt = [text](std::uint32_t at) {
    return static_cast<std::uint32_t>(static_cast<unsigned char>(text[at]));
  };
  return byteAt(0) | byteAt(length / 2) << 8 | byteAt(length - 1) << 16;
}

// Of every byte of the name and of its length. The factors have nothing in common, so that changes
// in several words do not cancel each other.
inline std::uint32_t nameHash(const char* name, std::uint32_t length) {
  constexpr std::uint64_t kFactor = 0x9E3779B97F4A7C15;
  std::uint64_t sum = length;
  if (length < 8) [[unlikely]] {
    sum += shortWord(name, length) * kFactor;
  } else {
    const std::uint32_t last = length - 8;
    sum += loadFrom<std::uint64_t>(name) * kFactor;
    sum += loadFrom<std::uint64_t>(name + last / 2) * 0xC2B2AE3D27D4EB4F;
    sum += loadFrom<std::uint64_t>(name + last) * 0x165667B19E3779F9;
    for (std::uint32_t at = 8; length > 24 && at < last; at += 8) {
      sum = (sum ^ sum >> 32) * kFactor + loadFrom<std::uint64_t>(name + at);
    }
  }
  return static_cast<std::uint32_t>((sum ^ sum >> 32) * kFactor >> 32);
}

// The words at both ends and in the middle cover up to 24 bytes without a loop whose number of
// rounds the processor would have to guess. REQUIRES: both have length bytes.
inline bool isSameText(const char* left, const char* right, std::uint32_t length) {
  if (length < 8) return shortWord(left, length) == shortWord(right, length);
  const auto differAt = [=](std::uint32_t at) {
    return loadFrom<std::uint64_t>(left + at) ^ loadFrom<std::uint64_t>(right + at);
  };
  const std::uint32_t last = length - 8;
  std::uint64_t different = differAt(0) | differAt(last / 2) | differAt(last);
  for (std::uint32_t at = 8; length > 24 && at < last; at += 8) different |= differAt(at);
  return different == 0;
}

// A name of up to 24 characters, of which 32 bytes are loaded at once. What lies behind its end is
// hidden from compilers and sanitizers.
class ShortName {
 public:
  static constexpr std::uint32_t kRoom = 32;
  static constexpr std::uint32_t kMaximum = 24;

  // Whether no page ends in the bytes that are loaded.
  static bool mayLoad(const char* name) {
    constexpr std::uintptr_t kPageSize = 4096;  // the smallest
    return reinterpret_cast<std::uintptr_t>(name) % kPageSize <= kPageSize - kRoom;
  }

  // REQUIRES: mayLoad(name).
  explicit ShortName(const char* name) : _bytes(name) { _ends = _bytes.equal(Bytes()); }

  // Without this the name is longer, and has no length here.
  bool isShort() const { return (_ends & ((2u << kMaximum) - 1)) != 0; }
  std::uint32_t length() const { return static_cast<std::uint32_t>(std::countr_zero(_ends)); }

  // REQUIRES: kRoom bytes of the text may be read.
  bool isSame(const char* text) const {
    const std::uint32_t charactersAndEnd = _ends ^ (_ends - 1);
    return (~_bytes.equal(Bytes(text)) & charactersAndEnd) == 0;
  }

 private:
  class Bytes {
   public:
    Bytes() = default;
    explicit Bytes(const char* text) : _low(load(text)), _high(load(text + sizeof _low)) {}

    // A bit for each byte.
    std::uint32_t equal(const Bytes& other) const {
      return bits(_low == other._low) | bits(_high == other._high) << 16;
    }

   private:
    using Vector = char __attribute__((vector_size(16)));
    static Vector load(const char* text) {
      Vector vector;
      __asm__ volatile("movdqu %[text], %[vector]"
                       : [vector] "=x"(vector)
                       : [text] "m"(*reinterpret_cast<const char(*)[sizeof vector]>(text)));
      return vector;
    }
    template <class Mask>
    static std::uint32_t bits(Mask mask) {
      return static_cast<std::uint32_t>(__builtin_ia32_pmovmskb128(reinterpret_cast<Vector>(mask)));
    }

    Vector _low = {};
    Vector _high = {};
  };

  Bytes _bytes;
  std::uint32_t _ends;  // a bit for each NUL
};

class NameIndex {
 public:
  // With free entries for count names and as many more, the first at offset 0 and each `stride`
  // bytes behind the one before; null without memory.
  static NameIndex* create(std::uint32_t count, std::uint32_t stride);
  static void release(NameIndex* index);

  // Enters the next name. False, and nothing is entered, when the table is full.
  bool append(std::uint32_t hash);

  // The offset of the first name that has the hash and that isMatch accepts.
  template <class IsMatch>
  std::uint32_t find(std::uint32_t hash, IsMatch isMatch) const {
    const std::uint32_t offset = findEntered(hash, isMatch);
    if (offset != kNoName) return offset;
    const std::uint64_t end = std::uint64_t{_count} * _stride;
    for (std::uint64_t at = _firstLeftOut; at < end; at += _stride) {
      if (isMatch(static_cast<std::uint32_t>(at))) return static_cast<std::uint32_t>(at);
    }
    return kNoName;
  }

  // The same among the names that are not left out.
  template <class IsMatch>
  std::uint32_t findEntered(std::uint32_t hash, IsMatch isMatch) const {
    for (std::uint32_t i = 0; i < kMaximumDistance; ++i) {
      const Entry entry = _entries()[(hash + i) & _mask];
      if (entry.hash == hash && entry.offset != kNoName && isMatch(entry.offset)) [[likely]] {
        return entry.offset;
      }
      if (entry.offset == kNoName) break;
    }
    return kNoName;
  }

 private:
  struct Entry {
    std::uint32_t hash;
    std::uint32_t offset;
  };
  static constexpr std::uint32_t kMaximumDistance = 64;

  NameIndex(std::uint32_t mask, std::uint32_t stride) : _mask(mask), _stride(stride) {}
  static std::size_t _byteCount(std::uint32_t entries) {
    return sizeof(NameIndex) + std::size_t{entries} * sizeof(Entry);
  }
  Entry* _entries() { return reinterpret_cast<Entry*>(this + 1); }
  const Entry* _entries() const { return reinterpret_cast<const Entry*>(this + 1); }

  std::uint32_t _mask;  // the number of entries, a power of two, less 1
  std::uint32_t _stride;
  std::uint32_t _count = 0;
  std::uint32_t _firstLeftOut = kNoName;
};

}  // namespace nomutil::dynaobj

#endif  // NOMUTIL_DYNAOBJ_NAMEINDEX_H
