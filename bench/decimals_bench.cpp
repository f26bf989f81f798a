// Decimals beside their peers, from operands in the 46-byte form to a new result in it. Peers carry
// a scale beside a Boost cpp_int or a GMP integer, or are the numeric of PostgreSQL's client
// library; their results go into objects that exist already.
//
// Mixes of 1,024 pairs, an eighth of the values negative:
//   A  prices of 1 to 5 integer digits and 2 to 4 places
//   B  values of 20 to 23 digits, a quarter of the pairs with unequal scales
//   C  the same of 36 to 47 digits: 8 to 10 limbs, beyond the fast path; against GMP alone
//   D  dividends of 80 to 90 and divisors of 40 to 57 digits: up to 19 limbs; against GMP alone
// Before anything is timed, all have to give the same results. The peers' quotients of 23 places
// keep their trailing zeros, ours lose them. No product of B fits a stored decimal: the flat
// multiplication measures its refusal there.

#include "sys/decimals.h"

#include <benchmark/benchmark.h>
#include <gmp.h>
#include <pgtypes_numeric.h>
#include <boost/multiprecision/cpp_int.hpp>

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstring>
#include <iostream>
#include <new>
#include <random>
#include <string>
#include <utility>
#include <vector>

namespace {

constexpr std::size_t kPairs = 1024;
constexpr int kQuotientPlaces = 23;

// A text without its point, and the places behind it.
int dropPoint(const char* text, char* digits) {
  int places = 0;
  bool behind = false;
  for (; *text != '\0'; ++text) {
    if (*text == '.') {
      behind = true;
      continue;
    }
    *digits++ = *text;
    places += behind;
  }
  *digits = '\0';
  return places;
}

// Puts the point back, behind a zero when there are no more digits than places.
void insertPoint(char* text, std::size_t length, int places) {
  if (places == 0) return;
  const auto behind = static_cast<std::size_t>(places);
  char* const digits = text + (text[0] == '-');
  std::size_t count = length - static_cast<std::size_t>(digits - text);
  if (count <= behind) {
    const std::size_t missing = behind + 1 - count;
    std::memmove(digits + missing, digits, count + 1);
    std::memset(digits, '0', missing);
    count += missing;
  }
  char* const point = digits + count - behind;
  std::memmove(point + 1, point, behind + 1);
  *point = '.';
}

struct Ours {
  using Value = Decimal;
  static void init(Value&) {}
  static void parse(Value& out, const char* text) { new (&out) Decimal(text); }
  static void add(Value& out, const Value& a, const Value& b) { new (&out) Decimal(a + b); }
  static void subtract(Value& out, const Value& a, const Value& b) { new (&out) Decimal(a - b); }
  static void multiply(Value& out, const Value& a, const Value& b) { new (&out) Decimal(a * b); }
  static void divide(Value& out, const Value& a, const Value& b) {
    new (&out) Decimal(a.realDivide(b));
  }
  static void divideInteger(Value& out, const Value& a, const Value& b) {
    new (&out) Decimal(a / b);
  }
  static bool less(const Value& a, const Value& b) { return a < b; }
  static void print(const Value& a, char* text) {
    a.decimalToString(text, 128, a.getScaleFactor());
  }
};

// From record to record, through the flat functions.
struct Flat {
  using Value = DskDecimal;
  static void init(Value& value) { value = {}; }
  static void parse(Value& out, const char* text) { nomDecimalFromString(text, &out); }
  static void add(Value& out, const Value& a, const Value& b) { nomDecimalAdd(&a, &b, &out); }
  static void subtract(Value& out, const Value& a, const Value& b) {
    nomDecimalSubtract(&a, &b, &out);
  }
  static void multiply(Value& out, const Value& a, const Value& b) {
    nomDecimalMultiply(&a, &b, &out);
  }
  static void divide(Value& out, const Value& a, const Value& b) {
    nomDecimalRealDivide(&a, &b, &out);
  }
  static bool less(const Value& a, const Value& b) { return nomDecimalCompare(&a, &b) < 0; }
  static void print(const Value& a, char* text) {
    nomDecimalToString(&a, text, 128, a.scaleFactor);
  }
};

struct Gmp {
  struct Value {
    mpz_t digits;
    int places;
  };
  static void init(Value& value) { mpz_init2(value.digits, 512); }
  static const mpz_t& power(int exponent) {
    static mpz_t* const powers = [] {
      auto* const table = new mpz_t[64];
      for (unsigned i = 0; i < 64; ++i) {
        mpz_init(table[i]);
        mpz_ui_pow_ui(table[i], 10, i);
      }
      return table;
    }();
    return powers[exponent];
  }
  static mpz_t& scratch() {
    static Value value = [] {
      Value made;
      init(made);
      return made;
    }();
    return value.digits;
  }
  static void parse(Value& out, const char* text) {
    char digits[128];
    out.places = dropPoint(text, digits);
    mpz_set_str(out.digits, digits, 10);
  }
  template <class Function>
  static auto aligned(const Value& a, const Value& b, Function function) {
    if (a.places == b.places) return function(a.digits, b.digits);
    mpz_t& raised = scratch();
    if (a.places < b.places) {
      mpz_mul(raised, a.digits, power(b.places - a.places));
      return function(raised, b.digits);
    }
    mpz_mul(raised, b.digits, power(a.places - b.places));
    return function(a.digits, raised);
  }
  static void add(Value& out, const Value& a, const Value& b) {
    aligned(a, b, [&](const mpz_t& x, const mpz_t& y) { mpz_add(out.digits, x, y); });
    out.places = std::max(a.places, b.places);
  }
  static void subtract(Value& out, const Value& a, const Value& b) {
    aligned(a, b, [&](const mpz_t& x, const mpz_t& y) { mpz_sub(out.digits, x, y); });
    out.places = std::max(a.places, b.places);
  }
  static void multiply(Value& out, const Value& a, const Value& b) {
    mpz_mul(out.digits, a.digits, b.digits);
    out.places = a.places + b.places;
  }
  static void divide(Value& out, const Value& a, const Value& b) {
    mpz_t& raised = scratch();
    mpz_mul(raised, a.digits, power(kQuotientPlaces + b.places - a.places));
    mpz_tdiv_q(out.digits, raised, b.digits);
    out.places = kQuotientPlaces;
  }
  static void divideInteger(Value& out, const Value& a, const Value& b) {
    aligned(a, b, [&](const mpz_t& x, const mpz_t& y) { mpz_tdiv_q(out.digits, x, y); });
    out.places = 0;
  }
  static bool less(const Value& a, const Value& b) {
    return aligned(a, b, [](const mpz_t& x, const mpz_t& y) { return mpz_cmp(x, y); }) < 0;
  }
  static void print(const Value& a, char* text) {
    mpz_get_str(text, 10, a.digits);
    insertPoint(text, std::strlen(text), a.places);
  }
};

struct Boost {
  using Integer = boost::multiprecision::number<boost::multiprecision::cpp_int_backend<
      256, 256, boost::multiprecision::signed_magnitude, boost::multiprecision::unchecked, void>>;
  struct Value {
    Integer digits;
    int places;
  };
  static void init(Value&) {}
  static const Integer& power(int exponent) {
    static const std::vector<Integer> powers = [] {
      std::vector<Integer> table{1};
      while (table.size() < 64) table.push_back(table.back() * 10);
      return table;
    }();
    return powers[static_cast<std::size_t>(exponent)];
  }
  static void parse(Value& out, const char* text) {
    char digits[128];
    out.places = dropPoint(text, digits);
    // The text constructor takes a leading 0 for octal.
    const bool negative = digits[0] == '-';
    const char* first = digits + negative;
    while (first[0] == '0' && first[1] != '\0') ++first;
    out.digits = Integer(first);
    if (negative) out.digits = -out.digits;
  }
  template <class Function>
  static auto aligned(const Value& a, const Value& b, Function function) {
    if (a.places == b.places) return function(a.digits, b.digits);
    if (a.places < b.places) {
      return function(Integer(a.digits * power(b.places - a.places)), b.digits);
    }
    return function(a.digits, Integer(b.digits * power(a.places - b.places)));
  }
  static void add(Value& out, const Value& a, const Value& b) {
    aligned(a, b, [&](const Integer& x, const Integer& y) { out.digits = x + y; });
    out.places = std::max(a.places, b.places);
  }
  static void subtract(Value& out, const Value& a, const Value& b) {
    aligned(a, b, [&](const Integer& x, const Integer& y) { out.digits = x - y; });
    out.places = std::max(a.places, b.places);
  }
  static void multiply(Value& out, const Value& a, const Value& b) {
    out.digits = a.digits * b.digits;
    out.places = a.places + b.places;
  }
  static void divide(Value& out, const Value& a, const Value& b) {
    out.digits = a.digits * power(kQuotientPlaces + b.places - a.places) / b.digits;
    out.places = kQuotientPlaces;
  }
  static bool less(const Value& a, const Value& b) {
    return aligned(a, b, [](const Integer& x, const Integer& y) { return x < y; });
  }
  static void print(const Value& a, char* text) {
    const std::string digits = a.digits.str();
    std::memcpy(text, digits.c_str(), digits.size() + 1);
    insertPoint(text, digits.size(), a.places);
  }
};

struct Postgres {
  using Value = numeric*;
  static void init(Value& value) { value = PGTYPESnumeric_new(); }
  static void parse(Value& out, const char* text) {
    PGTYPESnumeric_free(out);
    out = PGTYPESnumeric_from_asc(const_cast<char*>(text), nullptr);
  }
  static void add(Value& out, const Value& a, const Value& b) { PGTYPESnumeric_add(a, b, out); }
  static void subtract(Value& out, const Value& a, const Value& b) {
    PGTYPESnumeric_sub(a, b, out);
  }
  static void multiply(Value& out, const Value& a, const Value& b) {
    PGTYPESnumeric_mul(a, b, out);
  }
  // The quotient has at least the places that the dividend shows, and is rounded.
  static void divide(Value& out, const Value& a, const Value& b) {
    const int shown = std::exchange(a->dscale, kQuotientPlaces);
    PGTYPESnumeric_div(a, b, out);
    a->dscale = shown;
  }
  static bool less(const Value& a, const Value& b) { return PGTYPESnumeric_cmp(a, b) < 0; }
  static void print(const Value& a, char* text) {
    char* const made = PGTYPESnumeric_to_asc(a, a->dscale);
    std::strcpy(text, made);
    PGTYPESchar_free(made);
  }
};

std::string randomNumber(std::mt19937_64& random, int digits, int places) {
  std::string text = random() % 8 == 0 ? "-" : "";
  text += static_cast<char>('1' + random() % 9);
  for (int i = 1; i < digits; ++i) {
    if (i == digits - places) text += '.';
    text += static_cast<char>('0' + random() % 10);
  }
  return text;
}

struct Texts {
  std::vector<std::string> left, right;
};

const Texts& texts(char mix) {
  static const auto all = [] {
    std::array<Texts, 4> made;
    std::mt19937_64 random(20);
    const auto between = [&](int low, int high) {
      return low + static_cast<int>(random() % static_cast<unsigned>(high - low + 1));
    };
    const auto add = [&](std::size_t to, int digits, int places, int otherDigits, int otherPlaces) {
      made[to].left.push_back(randomNumber(random, digits, places));
      made[to].right.push_back(randomNumber(random, otherDigits, otherPlaces));
    };
    for (std::size_t i = 0; i < kPairs; ++i) {
      const int places = between(2, 4);
      const int otherPlaces = between(2, 4);
      add(0, between(1, 5) + places, places, between(1, 5) + otherPlaces, otherPlaces);
      const int unequal = i % 4 == 0 ? 6 : 4;
      add(1, between(20, 23), 4, between(20, 23), unequal);
      add(2, between(36, 47), 4, between(36, 47), unequal);
      add(3, between(80, 90), 4, between(40, 57), unequal);
    }
    return made;
  }();
  return all[static_cast<std::size_t>(mix - 'A')];
}

template <class Peer>
struct Values {
  explicit Values(const Texts& texts) : source(texts), left(kPairs), right(kPairs), out(kPairs) {
    for (std::size_t i = 0; i < kPairs; ++i) {
      Peer::init(left[i]);
      Peer::init(right[i]);
      Peer::init(out[i]);
      Peer::parse(left[i], source.left[i].c_str());
      Peer::parse(right[i], source.right[i].c_str());
    }
  }
  const Texts& source;
  std::vector<typename Peer::Value> left, right, out;
  bool less = false;
  char text[128] = "";
};

// Calls visit(name, operation) for what a peer is measured in; operation(values, i) runs it on
// pair i. A product of D would saturate, and its dividends are too long for places.
template <class Peer, class Visit>
void forEachOperation(char mix, Visit visit) {
  using All = Values<Peer>;
  using Index = std::size_t;
  visit("add", [](All& v, Index i) { Peer::add(v.out[i], v.left[i], v.right[i]); });
  visit("subtract", [](All& v, Index i) { Peer::subtract(v.out[i], v.left[i], v.right[i]); });
  if (mix != 'D') {
    visit("multiply", [](All& v, Index i) { Peer::multiply(v.out[i], v.left[i], v.right[i]); });
  }
  visit("compare", [](All& v, Index i) {
    benchmark::DoNotOptimize(v.less = Peer::less(v.left[i], v.right[i]));
  });
  visit("parse", [](All& v, Index i) { Peer::parse(v.out[i], v.source.left[i].c_str()); });
  visit("print", [](All& v, Index i) {
    Peer::print(v.left[i], v.text);
    benchmark::DoNotOptimize(v.text[0]);
  });
  if (mix != 'D') {
    visit("divide", [](All& v, Index i) { Peer::divide(v.out[i], v.left[i], v.right[i]); });
  }
  if constexpr (requires { Peer::divideInteger; }) {
    if (mix < 'C') return;
    visit("divideint",
          [](All& v, Index i) { Peer::divideInteger(v.out[i], v.left[i], v.right[i]); });
  }
}

// What all operations give on all pairs, a line each. Of a quotient its first digits count, without
// trailing zeros: one peer rounds the last place.
template <class Peer>
std::vector<std::string> results(char mix) {
  Values<Peer> v(texts(mix));
  std::vector<std::string> lines;
  forEachOperation<Peer>(mix, [&](const std::string& name, auto operation) {
    for (std::size_t i = 0; i < kPairs; ++i) {
      operation(v, i);
      char out[160];
      Peer::print(v.out[i], out);
      std::string line = out;
      if (name == "divide" && line.find('.') != line.npos) {
        line.resize(std::min<std::size_t>(line.size(), 16));
        line.erase(line.find_last_not_of('0') + 1);
        if (line.back() == '.') line.pop_back();
      }
      line += v.less ? " less " : " ";
      lines.push_back(name + " " + line + v.text);
    }
  });
  return lines;
}

template <class Peer>
bool givesOurResults(const char* name, const char* mixes) {
  for (; *mixes != '\0'; ++mixes) {
    const auto ours = results<Ours>(*mixes);
    const auto theirs = results<Peer>(*mixes);
    const auto [our, their] = std::mismatch(ours.begin(), ours.end(), theirs.begin(), theirs.end());
    if (our == ours.end()) continue;
    std::cerr << name << ", mix " << *mixes << ": " << *their << "\nand not " << *our << "\n";
    return false;
  }
  return true;
}

template <class Peer>
void registerPeer(const std::string& name, const char* mixes) {
  for (; *mixes != '\0'; ++mixes) {
    auto* const values = new Values<Peer>(texts(*mixes));
    forEachOperation<Peer>(*mixes, [&](const std::string& operation, auto run) {
      const auto loop = [run, values](benchmark::State& state) {
        while (state.KeepRunningBatch(kPairs)) {
          for (std::size_t i = 0; i < kPairs; ++i) run(*values, i);
        }
        benchmark::ClobberMemory();
      };
      benchmark::RegisterBenchmark((operation + "/" + name + "/" + *mixes).c_str(), loop);
    });
  }
}

}  // namespace

int main(int argc, char** argv) {
  benchmark::Initialize(&argc, argv);
  if (benchmark::ReportUnrecognizedArguments(argc, argv)) return 1;
  if (!givesOurResults<Flat>("flat", "A") || !givesOurResults<Gmp>("gmp", "ABCD") ||
      !givesOurResults<Boost>("boost", "AB") || !givesOurResults<Postgres>("postgres", "AB")) {
    return 1;
  }
  registerPeer<Ours>("ours", "ABCD");
  registerPeer<Flat>("flat", "AB");
  registerPeer<Gmp>("gmp", "ABCD");
  registerPeer<Boost>("boost", "AB");
  registerPeer<Postgres>("postgres", "AB");
  benchmark::RunSpecifiedBenchmarks();
  return 0;
}
