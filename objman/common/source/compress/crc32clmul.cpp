// CRC-32 with the carry-less multiplication of 128 bits (Gopal and others, "Fast CRC Computation
// for Generic Polynomials Using PCLMULQDQ Instruction"): 16 bytes are folded forward over those
// that follow, four or eight such at once while there are enough.

#include "crc32kernels.h"

#include <immintrin.h>

#define NOMUTIL_CLMUL __attribute__((target("pclmul,sse4.1")))

namespace nomutil::compress {
namespace {

constexpr std::size_t kBlock = sizeof(__m128i);
constexpr std::size_t kWays = 4;
constexpr std::size_t kStride = kWays * kBlock;

bool isUsable() {
  __builtin_cpu_init();
  return __builtin_cpu_supports("pclmul") != 0 && __builtin_cpu_supports("sse4.1") != 0;
}

NOMUTIL_CLMUL __m128i load(const std::uint8_t* from) {
  return _mm_loadu_si128(reinterpret_cast<const __m128i*>(from));
}

NOMUTIL_CLMUL __m128i pair(std::uint64_t low, std::uint64_t high) {
  return _mm_set_epi64x(static_cast<long long>(high), static_cast<long long>(low));
}

// block moved forward by byteCount, and added to what is there.
template <unsigned byteCount>
NOMUTIL_CLMUL __m128i fold(__m128i block, __m128i there) {
  constexpr FoldFactors kFactors = foldFactors(byteCount);
  const __m128i factors = pair(kFactors.first, kFactors.second);
  return _mm_xor_si128(_mm_xor_si128(_mm_clmulepi64_si128(block, factors, 0x00), there),
                       _mm_clmulepi64_si128(block, factors, 0x11));
}

// The CRC of 16 bytes.
NOMUTIL_CLMUL std::uint32_t reduce(__m128i block) {
  const __m128i y =
      _mm_xor_si128(_mm_clmulepi64_si128(block, pair(kToY, 0), 0x00), _mm_srli_si128(block, 8));
  const __m128i quotient = _mm_clmulepi64_si128(y, pair(kToQuotient, 0), 0x00);
  const __m128i product = _mm_clmulepi64_si128(quotient, pair(kToRemainder, 0), 0x00);
  return static_cast<std::uint32_t>(_mm_extract_epi32(_mm_xor_si128(y, product), 2));
}

// block, and left bytes, 1 to 15, that end at `end`, as 16 bytes. REQUIRES: 16 bytes lie before
// end.
NOMUTIL_CLMUL __m128i foldRest(__m128i block, const std::uint8_t* end, std::size_t left) {
  alignas(kBlock) static constexpr std::uint8_t kPlaces[3 * kBlock] = {
      0x80, 0x80, 0x80, 0x80, 0x80, 0x80, 0x80, 0x80, 0x80, 0x80, 0x80, 0x80,
      0x80, 0x80, 0x80, 0x80, 0,    1,    2,    3,    4,    5,    6,    7,
      8,    9,    10,   11,   12,   13,   14,   15,   0x80, 0x80, 0x80, 0x80,
      0x80, 0x80, 0x80, 0x80, 0x80, 0x80, 0x80, 0x80, 0x80, 0x80, 0x80, 0x80};
  // The first bytes of block are the ones to fold; the others move down to make room.
  const __m128i first = _mm_shuffle_epi8(block, load(kPlaces + left));
  const __m128i down = load(kPlaces + kBlock + left);
  const __m128i last = _mm_blendv_epi8(_mm_shuffle_epi8(block, down), load(end - kBlock), down);
  return fold<kBlock>(first, last);
}

// Goes on with twice as many blocks while there are enough bytes; returns the first byte that is
// not in blocks. REQUIRES: three strides or more are left.
NOMUTIL_CLMUL const std::uint8_t* foldTwice(__m128i (&blocks)[kWays], const std::uint8_t* bytes,
                                            const std::uint8_t* end) {
  __m128i others[kWays];
  for (std::size_t i = 0; i < kWays; ++i, bytes += kBlock) others[i] = load(bytes);
  do {
    for (std::size_t i = 0; i < kWays; ++i) {
      blocks[i] = fold<2 * kStride>(blocks[i], load(bytes + i * kBlock));
      others[i] = fold<2 * kStride>(others[i], load(bytes + kStride + i * kBlock));
    }
    bytes += 2 * kStride;
  } while (static_cast<std::size_t>(end - bytes) >= 2 * kStride);
  for (std::size_t i = 0; i < kWays; ++i) blocks[i] = fold<kStride>(blocks[i], others[i]);
  return bytes;
}

NOMUTIL_CLMUL std::uint32_t update(std::uint32_t crc, const std::uint8_t* bytes,
                                   std::size_t length) {
  if (length < kBlock) return kPortableCrc32.update(crc, bytes, length);
  const std::uint8_t* const end = bytes + length;
  __m128i block = _mm_xor_si128(load(bytes), _mm_cvtsi32_si128(static_cast<int>(crc)));
  bytes += kBlock;
  if (length >= kStride) {
    __m128i blocks[kWays] = {block};
    for (std::size_t i = 1; i < kWays; ++i, bytes += kBlock) blocks[i] = load(bytes);
    if (length >= 4 * kStride) bytes = foldTwice(blocks, bytes, end);
    for (; static_cast<std::size_t>(end - bytes) >= kStride; bytes += kStride) {
      for (std::size_t i = 0; i < kWays; ++i) {
        blocks[i] = fold<kStride>(blocks[i], load(bytes + i * kBlock));
      }
    }
    block = _mm_xor_si128(fold<3 * kBlock>(blocks[0], fold<2 * kBlock>(blocks[1], blocks[3])),
                          fold<kBlock>(blocks[2], _mm_setzero_si128()));
  }
  for (; static_cast<std::size_t>(end - bytes) >= kBlock; bytes += kBlock) {
    block = fold<kBlock>(block, load(bytes));
  }
  const auto left = static_cast<std::size_t>(end - bytes);
  return reduce(left == 0 ? block : foldRest(block, end, left));
}

}  // namespace

constinit const Crc32Kernel kClmulCrc32 = {"clmul", isUsable, update};

}  // namespace nomutil::compress
