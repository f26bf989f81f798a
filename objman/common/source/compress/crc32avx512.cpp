// CRC-32 with the carry-less multiplication of 512 bits: 64 bytes are folded forward as four times
// 16, by the factors that crc32kernels.h explains, four such at once while there are enough.

#include "crc32kernels.h"

#include <immintrin.h>

#include <array>
#include <numeric>

#define NOMUTIL_AVX512 \
  __attribute__((target("avx512f,avx512bw,avx512vl,avx512vbmi,vpclmulqdq,pclmul,sse4.1")))

namespace nomutil::compress {
namespace {

constexpr std::size_t kWide = sizeof(__m512i);
constexpr std::size_t kWays = 4;
constexpr std::size_t kStride = kWays * kWide;
constexpr std::size_t kFewest = 16;  // bytes that are worth it

// Masks that mask nothing: the forms without one read a variable that has no value, of which the
// compiler warns.
constexpr __mmask64 kAllBytes = ~__mmask64{};
constexpr __mmask16 kAllLanes = 0xFFFF;
constexpr __mmask8 kAllWords = 0xFF;
constexpr int kXorAll = 0x96;  // of three vectors

// 0, 1, 2 ...
alignas(kWide) constexpr std::array<std::uint8_t, kWide> kPlaces = [] {
  std::array<std::uint8_t, kWide> places{};
  std::iota(places.begin(), places.end(), std::uint8_t{});
  return places;
}();

bool isUsable() {
  __builtin_cpu_init();
  return __builtin_cpu_supports("avx512f") != 0 && __builtin_cpu_supports("avx512bw") != 0 &&
         __builtin_cpu_supports("avx512vl") != 0 && __builtin_cpu_supports("avx512vbmi") != 0 &&
         __builtin_cpu_supports("vpclmulqdq") != 0 && __builtin_cpu_supports("pclmul") != 0;
}

NOMUTIL_AVX512 __m512i load(const std::uint8_t* from) {
  return _mm512_loadu_si512(from);
}

NOMUTIL_AVX512 __m128i pair(std::uint64_t low, std::uint64_t high) {
  return _mm_set_epi64x(static_cast<long long>(high), static_cast<long long>(low));
}

// Each of the four blocks moved forward by byteCount, and added to what is there.
template <unsigned byteCount>
NOMUTIL_AVX512 __m512i fold(__m512i blocks, __m512i there) {
  constexpr FoldFactors kFactors = foldFactors(byteCount);
  const __m512i factors =
      _mm512_maskz_broadcast_i32x4(kAllLanes, pair(kFactors.first, kFactors.second));
  return _mm512_ternarylogic_epi64(_mm512_clmulepi64_epi128(blocks, factors, 0x00), there,
                                   _mm512_clmulepi64_epi128(blocks, factors, 0x11), kXorAll);
}

// Four blocks as one: the first three are folded over what follows them, the last one stays.
NOMUTIL_AVX512 __m128i join(__m512i blocks) {
  constexpr FoldFactors k48 = foldFactors(48), k32 = foldFactors(32), k16 = foldFactors(16);
  const __m512i factors =
      _mm512_set_epi64(0, 0, static_cast<long long>(k16.second), static_cast<long long>(k16.first),
                       static_cast<long long>(k32.second), static_cast<long long>(k32.first),
                       static_cast<long long>(k48.second), static_cast<long long>(k48.first));
  const __m512i folded = _mm512_xor_si512(_mm512_clmulepi64_epi128(blocks, factors, 0x00),
                                          _mm512_clmulepi64_epi128(blocks, factors, 0x11));
  const __m256i half = _mm256_xor_si256(_mm512_maskz_extracti64x4_epi64(kAllWords, folded, 0),
                                        _mm512_maskz_extracti64x4_epi64(kAllWords, folded, 1));
  return _mm_ternarylogic_epi64(_mm256_castsi256_si128(half), _mm256_extracti128_si256(half, 1),
                                _mm512_maskz_extracti32x4_epi32(kAllWords, blocks, 3), kXorAll);
}

// The CRC of 16 bytes.
NOMUTIL_AVX512 std::uint32_t reduce(__m128i block) {
  const __m128i y =
      _mm_xor_si128(_mm_clmulepi64_si128(block, pair(kToY, 0), 0x00), _mm_srli_si128(block, 8));
  const __m128i quotient = _mm_clmulepi64_si128(y, pair(kToQuotient, 0), 0x00);
  const __m128i product = _mm_clmulepi64_si128(quotient, pair(kToRemainder, 0), 0x00);
  return static_cast<std::uint32_t>(_mm_extract_epi32(_mm_xor_si128(y, product), 2));
}

// The blocks of four times 64 bytes as one of 64.
NOMUTIL_AVX512 __m512i foldStrides(__m512i first, const std::uint8_t*& bytes,
                                   const std::uint8_t* end) {
  __m512i blocks[kWays] = {first};
  for (std::size_t i = 1; i < kWays; ++i) blocks[i] = load(bytes + (i - 1) * kWide);
  bytes += kStride - kWide;
  for (; static_cast<std::size_t>(end - bytes) >= kStride; bytes += kStride) {
    for (std::size_t i = 0; i < kWays; ++i) {
      blocks[i] = fold<kStride>(blocks[i], load(bytes + i * kWide));
    }
  }
  return _mm512_xor_si512(fold<3 * kWide>(blocks[0], fold<2 * kWide>(blocks[1], blocks[3])),
                          fold<kWide>(blocks[2], _mm512_setzero_si512()));
}

// Every byte moved down by count places, the first ones to the end; 1 to 63.
NOMUTIL_AVX512 __m512i rotate(__m512i blocks, std::size_t count) {
  const __m512i places =
      _mm512_add_epi8(load(kPlaces.data()), _mm512_set1_epi8(static_cast<char>(count)));
  return _mm512_maskz_permutexvar_epi8(kAllBytes, places, blocks);
}

// The blocks, and left bytes, 1 to 63, that end at `end`, as 64 bytes.
// REQUIRES: 64 bytes lie before end.
NOMUTIL_AVX512 __m512i foldRest(__m512i blocks, const std::uint8_t* end, std::size_t left) {
  // The first bytes of the blocks are the ones to fold; the others make room for those at the end.
  const __m512i rotated = rotate(blocks, left);
  const __mmask64 atEnd = ~0ull << (kWide - left);
  return fold<kWide>(_mm512_maskz_mov_epi8(atEnd, rotated),
                     _mm512_mask_loadu_epi8(rotated, atEnd, end - kWide));
}

NOMUTIL_AVX512 std::uint32_t update(std::uint32_t crc, const std::uint8_t* bytes,
                                    std::size_t length) {
  if (length < kFewest) return kPortableCrc32.update(crc, bytes, length);
  const __m512i start = _mm512_zextsi128_si512(_mm_cvtsi32_si128(static_cast<int>(crc)));
  if (length < kWide) {
    // Zeros in front of a text do not count.
    const __m512i text = _mm512_maskz_loadu_epi8(~(~0ull << length), bytes);
    return reduce(join(rotate(_mm512_xor_si512(text, start), length)));
  }
  const std::uint8_t* const end = bytes + length;
  __m512i blocks = _mm512_xor_si512(load(bytes), start);
  bytes += kWide;
  if (length >= kStride) blocks = foldStrides(blocks, bytes, end);
  for (; static_cast<std::size_t>(end - bytes) >= kWide; bytes += kWide) {
    blocks = fold<kWide>(blocks, load(bytes));
  }
  const auto left = static_cast<std::size_t>(end - bytes);
  return reduce(join(left == 0 ? blocks : foldRest(blocks, end, left)));
}

}  // namespace

constinit const Crc32Kernel kAvx512Crc32 = {"avx512", isUsable, update};

}  // namespace nomutil::compress
