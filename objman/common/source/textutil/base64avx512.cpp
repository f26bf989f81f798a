// The inner loops of base64 with vectors of 64 bytes and permutations of bytes: 48 bytes are 64
// characters, and a table of 64 or 128 entries is looked up in one instruction.

#include "base64kernels.h"

#include <immintrin.h>

#include <algorithm>
#include <bit>

#define NOMUTIL_AVX512 \
  __attribute__((target("avx512f,avx512bw,avx512vbmi,avx512vbmi2,bmi,bmi2,popcnt")))

namespace nomutil::textutil {
namespace {

constexpr std::size_t kBytes = 48;
constexpr std::size_t kCharacters = 64;

using Table = std::array<std::uint8_t, kCharacters>;

// Each group a b c becomes b a c b, a word in which the bits of every sextet are neighbours.
alignas(64) constexpr Table kSpread = [] {
  Table places{};
  for (std::uint8_t i = 0; i < kCharacters; i += 4) {
    const auto group = static_cast<std::uint8_t>(i / 4 * 3);
    places[i] = places[i + 3] = static_cast<std::uint8_t>(group + 1);
    places[i + 1] = group;
    places[i + 2] = static_cast<std::uint8_t>(group + 2);
  }
  return places;
}();

// The bits of the sextets of two such words, where each begins.
constexpr long long kSextetBits = 0x3036242A1016040A;

// Of each word with 24 bits, the bytes in the order of the text.
alignas(64) constexpr Table kGather = [] {
  Table places{};
  for (std::uint8_t i = 0; i < kBytes; ++i) {
    places[i] = static_cast<std::uint8_t>(i / 3 * 4 + 2 - i % 3);
  }
  return places;
}();

bool isUsable() {
  __builtin_cpu_init();
  return __builtin_cpu_supports("avx512bw") != 0 && __builtin_cpu_supports("avx512vbmi") != 0 &&
         __builtin_cpu_supports("avx512vbmi2") != 0 && __builtin_cpu_supports("bmi2") != 0 &&
         __builtin_cpu_supports("popcnt") != 0;
}

NOMUTIL_AVX512 __m512i load(const void* from) {
  return _mm512_loadu_si512(from);
}
// count bytes, no more read, and zeros behind them; 0 to 64.
NOMUTIL_AVX512 __m512i load(const void* from, std::size_t count) {
  return _mm512_maskz_loadu_epi8(_bzhi_u64(~0ull, static_cast<unsigned>(count)), from);
}
NOMUTIL_AVX512 void store(void* to, __m512i vector) {
  _mm512_storeu_si512(to, vector);
}
NOMUTIL_AVX512 void store(void* to, __m512i vector, std::size_t count) {
  _mm512_mask_storeu_epi8(to, _bzhi_u64(~0ull, static_cast<unsigned>(count)), vector);
}

// Forms with a mask, although it takes all: g++ sees an undefined vector in those without.
constexpr __mmask64 kAll = ~__mmask64{0};

// from[places[i]] for each i.
NOMUTIL_AVX512 __m512i permute(__m512i from, __m512i places) {
  return _mm512_maskz_permutexvar_epi8(kAll, places, from);
}

// 48 bytes as 64 characters.
NOMUTIL_AVX512 __m512i encodeBlock(__m512i bytes) {
  const __m512i words = permute(bytes, load(kSpread.data()));
  const __m512i sextets =
      _mm512_maskz_multishift_epi64_epi8(kAll, _mm512_set1_epi64(kSextetBits), words);
  return permute(load(kAlphabet), sextets);
}

NOMUTIL_AVX512 void encode(const std::uint8_t* bytes, std::size_t groups, char* text) {
  constexpr std::size_t kGroups = kBytes / 3;
  for (; groups >= kGroups; groups -= kGroups, bytes += kBytes, text += kCharacters) {
    store(text, encodeBlock(load(bytes, kBytes)));
  }
  if (groups > 0) store(text, encodeBlock(load(bytes, 3 * groups)), 4 * groups);
}

// A line is two blocks that overlap.
NOMUTIL_AVX512 void encodeLines(const std::uint8_t* bytes, std::size_t lines, char* text) {
  for (; lines > 0; --lines, bytes += kLineBytes, text += kLineSize) {
    store(text, encodeBlock(load(bytes, kBytes)));
    store(text + kLineCharacters - kCharacters,
          encodeBlock(load(bytes + kLineBytes - kBytes, kBytes)));
    putLineEnd(text + kLineCharacters);
  }
}

// The sextets of 64 characters; isJunk has a bit for each that has none.
struct Translated {
  __m512i sextets;
  std::uint64_t isJunk;
};

NOMUTIL_AVX512 Translated translate(__m512i text) {
  // The look-up takes the low seven bits; the eighth makes junk by itself.
  const __m512i sextets =
      _mm512_permutex2var_epi8(load(kSextets.data()), text, load(kSextets.data() + kCharacters));
  return {sextets, _mm512_movepi8_mask(_mm512_or_si512(sextets, text))};
}

// 64 sextets as 48 bytes and 16 that do not count.
NOMUTIL_AVX512 __m512i packBlock(__m512i sextets) {
  const __m512i pairs = _mm512_maddubs_epi16(sextets, _mm512_set1_epi32(0x01400140));
  const __m512i groups = _mm512_madd_epi16(pairs, _mm512_set1_epi32(0x00011000));
  return permute(groups, load(kGather.data()));
}

NOMUTIL_AVX512 Progress decode(const char* text, std::size_t length, std::uint8_t* bytes) {
  const char* const end = text + length;
  const char* at = text;
  std::uint8_t* to = bytes;
  const auto left = [&] { return static_cast<std::size_t>(end - at); };
  while (left() >= kCharacters) {
    const Translated first = translate(load(at));
    if (first.isJunk != 0) break;
    store(to, packBlock(first.sextets));
    if (left() >= kLineSize && isLineEnd(at + kLineCharacters)) {
      // A line: its last 64 characters overlap the first.
      const Translated last = translate(load(at + kLineCharacters - kCharacters));
      if (last.isJunk == 0) {
        store(to + kLineBytes - kBytes, packBlock(last.sextets));
        at += kLineSize;
        to += kLineBytes;
        continue;
      }
    }
    at += kCharacters;
    to += kBytes;
  }
  // The groups before the junk or the end, where zeros are read as junk.
  const Translated rest = translate(load(at, std::min(left(), kCharacters)));
  const auto groups = static_cast<std::size_t>(std::countr_zero(rest.isJunk)) / 4;
  store(to, packBlock(rest.sextets), 3 * groups);
  at += 4 * groups;
  to += 3 * groups;
  return {static_cast<std::size_t>(at - text), static_cast<std::size_t>(to - bytes)};
}

// Writes the sextets of 64 characters without a gap; returns how many there are.
NOMUTIL_AVX512 std::size_t filterBlock(__m512i text, std::uint8_t* sextets) {
  const Translated block = translate(text);
  store(sextets, _mm512_maskz_compress_epi8(~block.isJunk, block.sextets));
  return static_cast<std::size_t>(std::popcount(~block.isJunk));
}

NOMUTIL_AVX512 std::size_t filter(const char* text, std::size_t length, std::uint8_t* sextets) {
  std::size_t kept = 0;
  for (; length >= kCharacters; length -= kCharacters, text += kCharacters) {
    kept += filterBlock(load(text), sextets + kept);
  }
  return kept + filterBlock(load(text, length), sextets + kept);
}

NOMUTIL_AVX512 void pack(const std::uint8_t* sextets, std::size_t groups, std::uint8_t* bytes) {
  constexpr std::size_t kGroups = kBytes / 3;
  for (; groups >= kGroups; groups -= kGroups, sextets += kCharacters, bytes += kBytes) {
    store(bytes, packBlock(load(sextets)));
  }
  if (groups > 0) store(bytes, packBlock(load(sextets, 4 * groups)), 3 * groups);
}

}  // namespace

constinit const Base64Kernels kAvx512Base64 = {"avx512", isUsable, encode, encodeLines,
                                               decode,   filter,   pack};

}  // namespace nomutil::textutil
