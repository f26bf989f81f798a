// The inner loops of base64 with vectors of 32 bytes: 24 bytes are 32 characters. The algorithm is
// that of Mula and Lemire, "Faster Base64 Encoding and Decoding Using AVX2 Instructions".

#include "base64kernels.h"

#include <immintrin.h>

#include <bit>
#include <cstring>

#define NOMUTIL_AVX2 __attribute__((target("avx2,bmi2,popcnt")))

namespace nomutil::textutil {
namespace {

constexpr std::size_t kBytes = 24;
constexpr std::size_t kCharacters = 32;
constexpr std::size_t kGroups = kBytes / 3;

bool isUsable() {
  __builtin_cpu_init();
  return __builtin_cpu_supports("avx2") != 0 && __builtin_cpu_supports("bmi2") != 0 &&
         __builtin_cpu_supports("popcnt") != 0;
}

NOMUTIL_AVX2 __m256i load(const void* from) {
  return _mm256_loadu_si256(static_cast<const __m256i*>(from));
}
NOMUTIL_AVX2 void store(void* to, __m256i vector) {
  _mm256_storeu_si256(static_cast<__m256i*>(to), vector);
}
// The first count words of 32 bits, 0 to 8; no more is read, and zeros stand behind them.
NOMUTIL_AVX2 __m256i load(const char* from, std::size_t count) {
  const __m256i isRead = _mm256_cmpgt_epi32(_mm256_set1_epi32(static_cast<int>(count)),
                                            _mm256_setr_epi32(0, 1, 2, 3, 4, 5, 6, 7));
  return _mm256_maskload_epi32(reinterpret_cast<const int*>(from), isRead);
}

// 24 bytes as 32 characters. Neither load reaches beyond the 24: the high one starts 4 bytes early.
NOMUTIL_AVX2 void encodeBlock(const std::uint8_t* bytes, char* text) {
  const __m256i loaded =
      _mm256_loadu2_m128i(reinterpret_cast<const __m128i*>(bytes + kBytes - sizeof(__m128i)),
                          reinterpret_cast<const __m128i*>(bytes));
  // Each group a b c becomes b a c b, a word in which every sextet lies in one half.
  const __m256i spread = _mm256_setr_epi8(1, 0, 2, 1, 4, 3, 5, 4, 7, 6, 8, 7, 10, 9, 11, 10,  //
                                          5, 4, 6, 5, 8, 7, 9, 8, 11, 10, 12, 11, 14, 13, 15, 14);
  const __m256i words = _mm256_shuffle_epi8(loaded, spread);
  // Multiplications shift the two sextets of each half by different amounts.
  const __m256i even = _mm256_mulhi_epu16(_mm256_and_si256(words, _mm256_set1_epi32(0x0FC0FC00)),
                                          _mm256_set1_epi32(0x04000040));
  const __m256i odd = _mm256_mullo_epi16(_mm256_and_si256(words, _mm256_set1_epi32(0x003F03F0)),
                                         _mm256_set1_epi32(0x01000010));
  const __m256i sextets = _mm256_or_si256(even, odd);
  // The range of a sextet (0 for A-Z, 1 for a-z, 2 to 11 for the digits, 12 '+', 13 '/') selects
  // what is to be added.
  const __m256i isNotUpper = _mm256_cmpgt_epi8(sextets, _mm256_set1_epi8(25));
  const __m256i range =
      _mm256_sub_epi8(_mm256_subs_epu8(sextets, _mm256_set1_epi8(51)), isNotUpper);
  const __m256i offsets =
      _mm256_setr_epi8('A', 'a' - 26, '0' - 52, '0' - 52, '0' - 52, '0' - 52, '0' - 52, '0' - 52,
                       '0' - 52, '0' - 52, '0' - 52, '0' - 52, '+' - 62, '/' - 63, 0, 0,  //
                       'A', 'a' - 26, '0' - 52, '0' - 52, '0' - 52, '0' - 52, '0' - 52, '0' - 52,
                       '0' - 52, '0' - 52, '0' - 52, '0' - 52, '+' - 62, '/' - 63, 0, 0);
  store(text, _mm256_add_epi8(sextets, _mm256_shuffle_epi8(offsets, range)));
}

// The last block overlaps the one before it.
NOMUTIL_AVX2 void encode(const std::uint8_t* bytes, std::size_t groups, char* text) {
  if (groups < kGroups) {
    kPortableBase64.encode(bytes, groups, text);
    return;
  }
  for (; groups > kGroups; groups -= kGroups, bytes += kBytes, text += kCharacters) {
    encodeBlock(bytes, text);
  }
  encodeBlock(bytes + 3 * groups - kBytes, text + 4 * groups - kCharacters);
}

// A line is three blocks, of which the last overlaps the second.
NOMUTIL_AVX2 void encodeLines(const std::uint8_t* bytes, std::size_t lines, char* text) {
  for (; lines > 0; --lines, bytes += kLineBytes, text += kLineSize) {
    encodeBlock(bytes, text);
    encodeBlock(bytes + kBytes, text + kCharacters);
    encodeBlock(bytes + kLineBytes - kBytes, text + kLineCharacters - kCharacters);
    putLineEnd(text + kLineCharacters);
  }
}

// The sextets of 32 characters; a byte of errors is 0 for each that has one.
struct Translated {
  __m256i sextets;
  __m256i errors;
};

NOMUTIL_AVX2 Translated translate(__m256i text) {
  // Each half of a byte names a set of errors; a byte that is in a set by both halves is none of
  // the alphabet. Bit 4 stands for the high halves that never occur, the others for the ends of
  // the ranges.
  const __m256i lowErrors = _mm256_setr_epi8(0x15, 0x11, 0x11, 0x11, 0x11, 0x11, 0x11, 0x11, 0x11,
                                             0x11, 0x13, 0x1A, 0x1B, 0x1B, 0x1B, 0x1A,  //
                                             0x15, 0x11, 0x11, 0x11, 0x11, 0x11, 0x11, 0x11, 0x11,
                                             0x11, 0x13, 0x1A, 0x1B, 0x1B, 0x1B, 0x1A);
  const __m256i highErrors = _mm256_setr_epi8(0x10, 0x10, 0x01, 0x02, 0x04, 0x08, 0x04, 0x08, 0x10,
                                              0x10, 0x10, 0x10, 0x10, 0x10, 0x10, 0x10,  //
                                              0x10, 0x10, 0x01, 0x02, 0x04, 0x08, 0x04, 0x08, 0x10,
                                              0x10, 0x10, 0x10, 0x10, 0x10, 0x10, 0x10);
  const __m256i half = _mm256_set1_epi8(0x0F);
  const __m256i high = _mm256_and_si256(_mm256_srli_epi32(text, 4), half);
  const __m256i low = _mm256_and_si256(text, half);
  const __m256i errors =
      _mm256_and_si256(_mm256_shuffle_epi8(lowErrors, low), _mm256_shuffle_epi8(highErrors, high));
  // The high half selects what is to be added; '/' shares its half with '+' and takes the entry
  // before.
  const __m256i offsets = _mm256_setr_epi8(
      0, 63 - '/', 62 - '+', 52 - '0', -'A', -'A', 26 - 'a', 26 - 'a', 0, 0, 0, 0, 0, 0, 0, 0,  //
      0, 63 - '/', 62 - '+', 52 - '0', -'A', -'A', 26 - 'a', 26 - 'a', 0, 0, 0, 0, 0, 0, 0, 0);
  const __m256i isSlash = _mm256_cmpeq_epi8(text, _mm256_set1_epi8('/'));
  const __m256i offset = _mm256_shuffle_epi8(offsets, _mm256_add_epi8(high, isSlash));
  return {_mm256_add_epi8(text, offset), errors};
}

// 32 sextets as 24 bytes and 8 that do not count.
NOMUTIL_AVX2 __m256i packBlock(__m256i sextets) {
  const __m256i pairs = _mm256_maddubs_epi16(sextets, _mm256_set1_epi32(0x01400140));
  const __m256i groups = _mm256_madd_epi16(pairs, _mm256_set1_epi32(0x00011000));
  const __m256i order = _mm256_setr_epi8(2, 1, 0, 6, 5, 4, 10, 9, 8, 14, 13, 12, -1, -1, -1, -1,  //
                                         2, 1, 0, 6, 5, 4, 10, 9, 8, 14, 13, 12, -1, -1, -1, -1);
  const __m256i halves = _mm256_shuffle_epi8(groups, order);
  return _mm256_permutevar8x32_epi32(halves, _mm256_setr_epi32(0, 1, 2, 4, 5, 6, 3, 7));
}

// False, with whatever written, when not all of the 32 characters have sextets.
NOMUTIL_AVX2 bool decodeBlock(const char* text, std::uint8_t* bytes) {
  const auto [sextets, errors] = translate(load(text));
  store(bytes, packBlock(sextets));
  return _mm256_testz_si256(errors, errors) != 0;
}

// The groups before the first character that has no sextet.
NOMUTIL_AVX2 std::size_t cleanGroups(const Translated& block) {
  const __m256i keeps = _mm256_cmpeq_epi8(block.errors, _mm256_setzero_si256());
  const auto keepBits = static_cast<std::uint32_t>(_mm256_movemask_epi8(keeps));
  return static_cast<std::size_t>(std::countr_one(keepBits)) / 4;
}

// A line of 76 characters in three blocks, of which the last overlaps the second.
NOMUTIL_AVX2 bool decodeLine(const char* text, std::uint8_t* bytes) {
  return decodeBlock(text, bytes) && decodeBlock(text + kCharacters, bytes + kBytes) &&
         decodeBlock(text + kLineCharacters - kCharacters, bytes + kLineBytes - kBytes);
}

NOMUTIL_AVX2 Progress decode(const char* text, std::size_t length, std::uint8_t* bytes) {
  const char* const end = text + length;
  const char* at = text;
  std::uint8_t* to = bytes;
  const auto left = [&] { return static_cast<std::size_t>(end - at); };
  const auto progress = [&]() -> Progress {
    return {static_cast<std::size_t>(at - text), static_cast<std::size_t>(to - bytes)};
  };
  const auto advance = [&](std::size_t groups) {
    at += 4 * groups;
    to += 3 * groups;
  };
  for (;;) {
    while (left() >= kLineSize && isLineEnd(at + kLineCharacters) && decodeLine(at, to)) {
      at += kLineSize;
      to += kLineBytes;
    }
    while (left() >= kCharacters && !isLineBreak(*at) && decodeBlock(at, to)) advance(kGroups);
    if (left() < kCharacters) break;
    // A line of another length ends here, or the text is no longer clean.
    const std::size_t groups = isLineBreak(*at) ? 0 : cleanGroups(translate(load(at)));
    if (!isLineBreak(at[4 * groups])) return progress();
    advance(groups);
    do ++at;
    while (at != end && isLineBreak(*at));
  }
  Progress done = progress();
  if (length - done.written < kCharacters) {
    decodeGroups(text, length, bytes, done);
    return done;
  }
  // The groups of the rest, behind which zeros are read as junk. There is room for a whole block.
  const Translated rest = translate(load(at, left() / 4));
  store(to, packBlock(rest.sextets));
  advance(cleanGroups(rest));
  return progress();
}

NOMUTIL_AVX2 std::size_t filter(const char* text, std::size_t length, std::uint8_t* sextets) {
  std::size_t kept = 0, i = 0;
  for (; length - i >= kCharacters; i += kCharacters) {
    const Translated part = translate(load(text + i));
    const __m256i keeps = _mm256_cmpeq_epi8(part.errors, _mm256_setzero_si256());
    const auto keepBits = static_cast<std::uint32_t>(_mm256_movemask_epi8(keeps));
    if (keepBits == 0xFFFFFFFF) {
      store(sextets + kept, part.sextets);
      kept += kCharacters;
      continue;
    }
    std::uint64_t eights[4], masks[4];
    store(eights, part.sextets);
    store(masks, keeps);
    // Each place is counted from the beginning, so that none waits for the one before it.
    for (unsigned k = 0; k < 4; ++k) {
      const std::uint64_t some = _pext_u64(eights[k], masks[k]);
      const int before = std::popcount(_bzhi_u32(keepBits, 8 * k));
      std::memcpy(sextets + kept + before, &some, sizeof some);
    }
    kept += static_cast<std::size_t>(std::popcount(keepBits));
  }
  return kept + kPortableBase64.filter(text + i, length - i, sextets + kept);
}

NOMUTIL_AVX2 void pack(const std::uint8_t* sextets, std::size_t groups, std::uint8_t* bytes) {
  std::size_t room = 4 * groups;
  for (; groups >= kGroups; groups -= kGroups, sextets += kCharacters, bytes += kBytes) {
    store(bytes, packBlock(load(sextets)));
    room -= kBytes;
  }
  if (room >= kCharacters) {
    store(bytes, packBlock(load(sextets)));
  } else {
    kPortableBase64.pack(sextets, groups, bytes);
  }
}

}  // namespace

constinit const Base64Kernels kAvx2Base64 = {"avx2", isUsable, encode, encodeLines,
                                             decode, filter,   pack};

}  // namespace nomutil::textutil
