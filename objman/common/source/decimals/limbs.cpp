// Limb vectors: loading, storing, and schoolbook arithmetic on six 64-bit words. The long division
// is Knuth's algorithm D in base 2^64.

#include "limbs.h"

#include <bit>
#include <cstdint>

namespace nomutil::decimals {
namespace {

// Words in use of a non-negative value.
int wordCount(const Wide& value) {
  int count = kWideWords;
  while (count > 0 && value.word[count - 1] == 0) --count;
  return count;
}

// Algorithm D for a divisor of n >= 2 words and a dividend that is not smaller.
// The Art of Computer Programming, volume 2, section 4.3.1.
void divideLong(const Wide& dividend, const Wide& divisor, int n, Wide& quotient, Wide& remainder) {
  // D1: normalise, so that the top bit of the divisor is set; the dividend gains a word.
  const int shift = std::countl_zero(divisor.word[n - 1]);
  std::uint64_t v[kWideWords];
  std::uint64_t u[kWideWords + 1];
  std::uint64_t below = 0;
  for (int i = 0; i < n; ++i) {
    v[i] = highWord(joinWords(divisor.word[i], below) << shift);
    below = divisor.word[i];
  }
  below = 0;
  for (int i = 0; i < kWideWords; ++i) {
    u[i] = highWord(joinWords(dividend.word[i], below) << shift);
    below = dividend.word[i];
  }
  u[kWideWords] = highWord(joinWords(0, below) << shift);

  // D2 to D7: one quotient word a round.
  for (int j = wordCount(dividend) - n; j >= 0; --j) {
    // D3: estimate from the two top words, then correct with the third.
    std::uint64_t estimate = ~std::uint64_t{0};
    if (u[j + n] < v[n - 1]) {
      std::uint64_t rest;
      estimate = divideTwoByOne(u[j + n], u[j + n - 1], v[n - 1], rest);
      UInt128 product = UInt128{estimate} * v[n - 2];
      while (product > joinWords(rest, u[j + n - 2])) {
        --estimate;
        product -= v[n - 2];
        rest += v[n - 1];
        if (rest < v[n - 1]) break;
      }
    }
    // D4: multiply and subtract.
    std::uint64_t carry = 0;
    std::uint64_t borrow = 0;
    for (int i = 0; i < n; ++i) {
      const UInt128 product = UInt128{estimate} * v[i] + carry;
      carry = highWord(product);
      const UInt128 difference = UInt128{u[i + j]} - lowWord(product) - borrow;
      u[i + j] = lowWord(difference);
      borrow = highWord(difference) & 1;
    }
    const UInt128 top = UInt128{u[j + n]} - carry - borrow;
    u[j + n] = 0;  // as it is in the end, since the rest is below the divisor
    // D5, D6: an estimate that was too large by one is undone by adding the divisor back. The one
    // of 2^64 - 1 that was not corrected is not further off either: with equal top words the
    // quotient exceeds 2^64 / (1 + 2 / 2^64), hence 2^64 - 2.
    if (highWord(top) != 0) {
      --estimate;
      std::uint64_t back = 0;
      for (int i = 0; i < n; ++i) {
        const UInt128 sum = UInt128{u[i + j]} + v[i] + back;
        u[i + j] = lowWord(sum);
        back = highWord(sum);
      }
    }
    quotient.word[j] = estimate;
  }

  // D8: shift the remainder back.
  for (int i = 0; i < n; ++i) {
    remainder.word[i] = lowWord(joinWords(u[i + 1], u[i]) >> shift);
  }
}

}  // namespace

int bitLength(const Wide& value) {
  const int count = wordCount(value);
  return count == 0 ? 0 : 64 * count - std::countl_zero(value.word[count - 1]);
}

int digitCount(const Wide& value) {
  // bits * log10(2) counts the digits or one too few: 1233 / 4096 is just below log10(2).
  const int estimate = bitLength(value) * 1233 >> 12;
  return estimate + (compareMagnitudes(value, widePowerOfTen(estimate)) >= 0 ? 1 : 0);
}

Wide multiply(const Wide& left, const Wide& right) {
  Wide product;
  const int leftWords = wordCount(left);
  const int rightWords = wordCount(right);
  for (int i = 0; i < leftWords; ++i) {
    std::uint64_t carry = 0;
    for (int j = 0; j < rightWords && i + j < kWideWords; ++j) {
      const UInt128 word = UInt128{left.word[i]} * right.word[j] + product.word[i + j] + carry;
      product.word[i + j] = lowWord(word);
      carry = highWord(word);
    }
    if (i + rightWords < kWideWords) product.word[i + rightWords] = carry;
  }
  return product;
}

int compareMagnitudes(const Wide& left, const Wide& right) {
  for (int i = kWideWords - 1; i >= 0; --i) {
    if (left.word[i] != right.word[i]) return left.word[i] < right.word[i] ? -1 : 1;
  }
  return 0;
}

std::uint64_t divideByWord(Wide& value, std::uint64_t divisor) {
  std::uint64_t remainder = 0;
  for (int i = wordCount(value) - 1; i >= 0; --i) {
    value.word[i] = divideTwoByOne(remainder, value.word[i], divisor, remainder);
  }
  return remainder;
}

void divide(const Wide& dividend, const Wide& divisor, Wide& quotient, Wide& remainder) {
  const int divisorWords = wordCount(divisor);
  if (divisorWords == 1) {
    quotient = dividend;
    remainder = Wide{{divideByWord(quotient, divisor.word[0])}};
    return;
  }
  quotient = Wide{};
  remainder = dividend;
  if (compareMagnitudes(dividend, divisor) < 0) return;
  remainder = Wide{};
  divideLong(dividend, divisor, divisorWords, quotient, remainder);
}

}  // namespace nomutil::decimals
