// Decimals beside their peers, from operands in the 46-byte form to a new result in it. Peers carry
// a scale beside a Boost cpp_int or a GMP integer, or are the numeric of PostgreSQL's client
// library; their results go into objects that exist already.
//
// Mix A: 1,024 pairs of prices, 1 to 5 integer digits and 2 to 4 places, an eighth negative.
// Mix B: values of 20 to 23 digits, a quarter of the pairs with unequal scales.
// The peers' quotients of 23 places keep their trailing zeros; ours loses them.

#include "sys/decimals.h"

#include <benchmark/benchmark.h>
#include <gmp.h>
#include <pgtypes_numeric.h>
#include <boost/multiprecision/cpp_int.hpp>

#include <cstdlib>
#include <cstring>
#include <new>
#include <random>
#include <string>
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

// Puts the point back. The digits are more than the places in both mixes.
void insertPoint(char* digits, std::size_t length, int places) {
  if (places == 0) return;
  char* const point = digits + length - places;
  std::memmove(point + 1, point, static_cast<std::size_t>(places) + 1);
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
  // It chooses its places itself: at least 16 significant digits.
  static void divide(Value& out, const Value& a, const Value& b) { PGTYPESnumeric_div(a, b, out); }
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

// mix 0 is A, mix 1 is B.
const Texts& texts(std::int64_t mix) {
  static const auto both = [] {
    std::array<Texts, 2> made;
    std::mt19937_64 random(20);
    const auto between = [&](int low, int high) {
      return low + static_cast<int>(random() % static_cast<unsigned>(high - low + 1));
    };
    for (std::size_t i = 0; i < kPairs; ++i) {
      const int leftPlaces = between(2, 4);
      const int rightPlaces = between(2, 4);
      made[0].left.push_back(randomNumber(random, between(1, 5) + leftPlaces, leftPlaces));
      made[0].right.push_back(randomNumber(random, between(1, 5) + rightPlaces, rightPlaces));
      made[1].left.push_back(randomNumber(random, between(20, 23), 4));
      made[1].right.push_back(randomNumber(random, between(20, 23), i % 4 == 0 ? 6 : 4));
    }
    return made;
  }();
  return both[static_cast<std::size_t>(mix)];
}

template <class Peer>
struct Values {
  explicit Values(const Texts& source) : left(kPairs), right(kPairs), out(kPairs) {
    for (std::size_t i = 0; i < kPairs; ++i) {
      Peer::init(left[i]);
      Peer::init(right[i]);
      Peer::init(out[i]);
      Peer::parse(left[i], source.left[i].c_str());
      Peer::parse(right[i], source.right[i].c_str());
    }
  }
  std::vector<typename Peer::Value> left, right, out;
};

// Runs an operation over all pairs in turn.
template <class Peer, class Operation>
void run(benchmark::State& state, Operation operation) {
  static Values<Peer>* const values[2] = {new Values<Peer>(texts(0)), new Values<Peer>(texts(1))};
  Values<Peer>& mix = *values[state.range(0)];
  std::size_t i = 0;
  for (auto unused : state) {
    operation(mix, i);
    i = (i + 1) % kPairs;
  }
  benchmark::DoNotOptimize(mix.out.data());
  benchmark::ClobberMemory();
}

template <class Peer>
void registerPeer(const std::string& name) {
  const auto add = [&](const char* operation, auto function) {
    benchmark::RegisterBenchmark(
        (std::string(operation) + "/" + name).c_str(),
        [function](benchmark::State& state) { run<Peer>(state, function); })
        ->ArgName("mix")
        ->Arg(0)
        ->Arg(1);
  };
  using All = Values<Peer>;
  add("add", [](All& v, std::size_t i) { Peer::add(v.out[i], v.left[i], v.right[i]); });
  add("subtract", [](All& v, std::size_t i) { Peer::subtract(v.out[i], v.left[i], v.right[i]); });
  add("multiply", [](All& v, std::size_t i) { Peer::multiply(v.out[i], v.left[i], v.right[i]); });
  add("divide", [](All& v, std::size_t i) { Peer::divide(v.out[i], v.left[i], v.right[i]); });
  add("compare",
      [](All& v, std::size_t i) { benchmark::DoNotOptimize(Peer::less(v.left[i], v.right[i])); });
  add("print", [](All& v, std::size_t i) {
    char text[128];
    Peer::print(v.left[i], text);
    benchmark::DoNotOptimize(text[0]);
  });
}

// Parsing reads the texts themselves.
template <class Peer>
void registerParse(const std::string& name) {
  benchmark::RegisterBenchmark(("parse/" + name).c_str(),
                               [](benchmark::State& state) {
                                 const Texts& source = texts(state.range(0));
                                 run<Peer>(state, [&source](Values<Peer>& v, std::size_t i) {
                                   Peer::parse(v.out[i], source.left[i].c_str());
                                 });
                               })
      ->ArgName("mix")
      ->Arg(0)
      ->Arg(1);
}

// The general path at 8 to 21 limbs, scales equal, against GMP: args are the operands' limbs.
template <class Function>
void longOperands(benchmark::State& state, Function function) {
  std::mt19937_64 random(21);
  const auto make = [&](std::int64_t count) {
    std::uint16_t limbs[Decimal::MaxDecimalValueSize];
    for (std::uint16_t& limb : limbs) limb = static_cast<std::uint16_t>(random());
    limbs[0] = static_cast<std::uint16_t>((limbs[0] & 0x7FFF) | 0x100);
    return std::vector<std::uint16_t>(limbs, limbs + count);
  };
  constexpr std::size_t kCount = 256;
  std::vector<Decimal> left, right, out(kCount);
  std::vector<Gmp::Value> gmpLeft(kCount), gmpRight(kCount), gmpOut(kCount);
  for (std::size_t i = 0; i < kCount; ++i) {
    const auto a = make(state.range(0));
    const auto b = make(state.range(1));
    left.emplace_back(a.data(), static_cast<int>(a.size()), std::uint8_t{2});
    right.emplace_back(b.data(), static_cast<int>(b.size()), std::uint8_t{2});
    for (Gmp::Value* value : {&gmpLeft[i], &gmpRight[i], &gmpOut[i]}) Gmp::init(*value);
    mpz_import(gmpLeft[i].digits, a.size(), 1, sizeof a[0], -1, 0, a.data());
    mpz_import(gmpRight[i].digits, b.size(), 1, sizeof b[0], -1, 0, b.data());
  }
  std::size_t i = 0;
  for (auto unused : state) {
    function(left[i], right[i], out[i], gmpLeft[i].digits, gmpRight[i].digits, gmpOut[i].digits);
    i = (i + 1) % kCount;
  }
}

using Mpz = mpz_t;

void registerLong() {
  const auto add = [](const char* name, auto function, std::int64_t left, std::int64_t right) {
    benchmark::RegisterBenchmark(
        name, [function](benchmark::State& state) { longOperands(state, function); })
        ->ArgNames({"limbs", "by"})
        ->Args({left, right});
  };
  const auto ours = [](auto operation) {
    return [operation](const Decimal& a, const Decimal& b, Decimal& out, Mpz&, Mpz&, Mpz&) {
      new (&out) Decimal(operation(a, b));
    };
  };
  const auto gmp = [](auto operation) {
    return [operation](const Decimal&, const Decimal&, Decimal&, Mpz& a, Mpz& b, Mpz& out) {
      operation(out, a, b);
    };
  };
  for (const auto& [left, right] : {std::pair{8, 8}, {12, 12}, {20, 15}}) {
    add("long-add/ours", ours([](auto& a, auto& b) { return a + b; }), left, right);
    add("long-add/gmp", gmp([](auto& o, auto& a, auto& b) { mpz_add(o, a, b); }), left, right);
  }
  for (const auto& [left, right] : {std::pair{8, 8}, {10, 10}}) {
    add("long-multiply/ours", ours([](auto& a, auto& b) { return a * b; }), left, right);
    add("long-multiply/gmp", gmp([](auto& o, auto& a, auto& b) { mpz_mul(o, a, b); }), left, right);
  }
  for (const auto& [left, right] : {std::pair{16, 8}, {21, 12}}) {
    add("long-divide/ours", ours([](auto& a, auto& b) { return a / b; }), left, right);
    add("long-divide/gmp", gmp([](auto& o, auto& a, auto& b) { mpz_tdiv_q(o, a, b); }), left,
        right);
  }
}

template <class Peer>
void registerAll(const std::string& name) {
  registerPeer<Peer>(name);
  registerParse<Peer>(name);
}

}  // namespace

int main(int argc, char** argv) {
  registerAll<Ours>("ours");
  registerAll<Flat>("flat");
  registerAll<Gmp>("gmp");
  registerAll<Boost>("boost");
  registerAll<Postgres>("postgres");
  registerLong();
  benchmark::Initialize(&argc, argv);
  if (benchmark::ReportUnrecognizedArguments(argc, argv)) return 1;
  benchmark::RunSpecifiedBenchmarks();
  return 0;
}
