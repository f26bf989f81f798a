// The index of property names: a table of the hashes of the names with their positions, searched
// from the place that the hash names to the first free entry. It lies beside the images: the first
// search that is worth it builds it, additions enter it, and it is dropped when the descriptions
// are replaced. Images from outside cannot make it slow: an entry that would lie too far from its
// place is left out, and positions from the first of these on are searched name by name, as all
// are in an object that has no index for want of memory. The result is the same.
#ifndef NOMUTIL_DYNAOBJ_NAMEINDEX_H
#define NOMUTIL_DYNAOBJ_NAMEINDEX_H

#include <cstdint>
#include <cstring>

namespace nomutil::dynaobj {

inline constexpr std::uint32_t kNoPosition = 0xFFFFFFFF;

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

// Hands over words from both ends and the middle, which cover up to 24 bytes without a loop whose
// number of rounds the processor would have to guess. REQUIRES: length is at least 8.
template <class UseOffset>
inline void forWords(std::uint32_t length, UseOffset use) {
  const std::uint32_t last = length - 8;
  use(0);
  use(last / 2);
  use(last);
  for (std::uint32_t at = 8; length > 24 && at < last; at += 8) use(at);
}

// Of every byte of the name and of its length.
inline std::uint32_t nameHash(const char* name, std::uint32_t length) {
  constexpr std::uint64_t kFactor = 0x9E3779B97F4A7C15;
  std::uint64_t sum = length;
  if (length < 8) {
    sum += shortWord(name, length) * kFactor;
  } else {
    std::uint64_t factor = kFactor;
    forWords(length, [&](std::uint32_t at) {
      sum += loadFrom<std::uint64_t>(name + at) * factor;
      factor += kFactor << 1;  // stays odd
    });
  }
  return static_cast<std::uint32_t>((sum ^ sum >> 32) * kFactor >> 32);
}

// REQUIRES: both have length bytes.
inline bool isSameText(const char* left, const char* right, std::uint32_t length) {
  if (length < 8) return shortWord(left, length) == shortWord(right, length);
  std::uint64_t different = 0;
  forWords(length, [&](std::uint32_t at) {
    different |= loadFrom<std::uint64_t>(left + at) ^ loadFrom<std::uint64_t>(right + at);
  });
  return different == 0;
}

class NameIndex {
 public:
  // With free entries for count properties and as many more; null without memory.
  static NameIndex* create(std::uint32_t count);
  static void release(NameIndex* index);

  // Enters the name of the next position. False, and nothing is entered, when the table is full.
  bool append(std::uint32_t hash);

  // The first position that has the hash and that isMatch accepts.
  template <class IsMatch>
  std::uint32_t find(std::uint32_t hash, IsMatch isMatch) const {
    for (std::uint32_t i = 0; i < kMaximumDistance; ++i) {
      const Entry entry = _entries()[(hash + i) & _mask];
      if (entry.position == kNoPosition) break;
      if (entry.hash == hash && isMatch(entry.position)) return entry.position;
    }
    for (std::uint32_t position = _firstLeftOut; position < _count; ++position) {
      if (isMatch(position)) return position;
    }
    return kNoPosition;
  }

 private:
  struct Entry {
    std::uint32_t hash;
    std::uint32_t position;
  };
  static constexpr std::uint32_t kMaximumDistance = 64;

  explicit NameIndex(std::uint32_t mask) : _mask(mask) {}
  Entry* _entries() { return reinterpret_cast<Entry*>(this + 1); }
  const Entry* _entries() const { return reinterpret_cast<const Entry*>(this + 1); }

  std::uint32_t _mask;  // the number of entries, a power of two, less 1
  std::uint32_t _count = 0;
  std::uint32_t _firstLeftOut = kNoPosition;
};

}  // namespace nomutil::dynaobj

#endif  // NOMUTIL_DYNAOBJ_NAMEINDEX_H
