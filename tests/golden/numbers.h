// Where the results come from and where they go: numbers from a seed, and a SHA-256.
#ifndef NOMUTIL_TESTS_GOLDEN_NUMBERS_H
#define NOMUTIL_TESTS_GOLDEN_NUMBERS_H

#include "golden/sha256.h"

#include <cstdint>
#include <cstring>
#include <string>
#include <type_traits>

// Numbers by splitmix64, whose results the standard library has no say in.
class Numbers {
 public:
  explicit Numbers(std::uint64_t seed) : _state(seed) {}
  std::uint64_t next() {
    std::uint64_t z = _state += 0x9E3779B97F4A7C15;
    z = (z ^ z >> 30) * 0xBF58476D1CE4E5B9;
    z = (z ^ z >> 27) * 0x94D049BB133111EB;
    return z ^ z >> 31;
  }
  std::uint32_t below(std::uint32_t bound) { return static_cast<std::uint32_t>(next() % bound); }
  std::string bytes(std::uint32_t most) {
    std::string bytes(below(most + 1), '\0');
    for (char& byte : bytes) byte = static_cast<char>(next());
    return bytes;
  }
  // Bytes of which most are of an alphabet.
  std::string text(const char* alphabet, std::uint32_t most) {
    std::string text(below(most + 1), '\0');
    const auto size = static_cast<std::uint32_t>(std::strlen(alphabet));
    for (char& c : text) c = alphabet[below(size)];
    return text;
  }

 private:
  std::uint64_t _state;
};

class Results {
 public:
  void add(const void* bytes, std::size_t count) {
    _sum.add(bytes, count);
    ++_count;
  }
  void add(const std::string& text) { add(text.c_str(), text.size() + 1); }
  template <class T>
  requires std::is_arithmetic_v<T>
  void add(T value) { add(&value, sizeof value); }
  std::uint64_t count() const { return _count; }
  std::string digest() { return _sum.digest(); }

 private:
  Sha256 _sum;
  std::uint64_t _count = 0;
};

#endif  // NOMUTIL_TESTS_GOLDEN_NUMBERS_H
