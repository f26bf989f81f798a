// The General Decimal Arithmetic test suite against Decimal. Its files belong to the Debian package
// libpython3.11-testsuite and are read where that puts them, or in NOMUTIL_DECTEST_DIR.
//
// A case runs when fixed-point decimals can take it: finite operands and result of at most 100
// digits, which 21 limbs hold, also at one scale; exponents written out (1.2E+3 is 1200); factors
// whose limbs do not exceed the product's, a dividend of 14 limbs and a quotient of 23 places;
// nothing rounded. The suite's arithmetic is a floating one, so these differences are meant:
//
//   zero sign        a zero has no sign: -0 is 0
//   product scale    an exponent that is written out adds no places: 1E+3 * 0.01 is 10.00, not 1E+1
//   quotient scale   an exact quotient has the fewest places: 2.40 / 2 is 1.2, not 1.20
#include "decimalshow.h"

#include <algorithm>
#include <cctype>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <iterator>
#include <map>
#include <optional>
#include <string>

namespace {

using nomtest::show;

constexpr const char* kDebianDirectory = "/usr/lib/python3.11/test/decimaltestdata";
constexpr unsigned kMostDigits = 100;

// Nothing for a token that is no number, or one of too many digits.
std::optional<Decimal> parseNumber(std::string token) {
  std::size_t at = token.starts_with('+') || token.starts_with('-') ? 1 : 0;
  const std::string sign = token.substr(0, at);
  const auto readDigits = [&] {
    const std::size_t begin = at;
    at = std::min(token.find_first_not_of("0123456789", begin), token.size());
    return token.substr(begin, at - begin);
  };
  const std::string whole = readDigits();
  if (token[at] == '.') ++at;
  const std::string fraction = readDigits();
  char* end = token.data() + at;
  const long exponent = *end == 'e' ? std::strtol(end + 1, &end, 10) : 0;
  if (*end != '\0' || token.size() > 2 * kMostDigits || std::labs(exponent) > 999) return {};
  std::string digits = whole + fraction;
  const int shift = static_cast<int>(exponent) - static_cast<int>(fraction.size());
  const auto places = static_cast<unsigned>(std::max(-shift, 0));
  if (digits.empty()) return {};
  digits.append(static_cast<unsigned>(std::max(shift, 0)), '0');
  digits.erase(0, std::min(digits.find_first_not_of('0'), digits.size() - 1));
  if (digits.size() <= places) digits.insert(0, places + 1 - digits.size(), '0');
  if (digits.size() > kMostDigits) return {};
  digits.insert(digits.size() - places, ".");
  return nomtest::dec(sign + digits);
}

struct Operation {
  int fewest;  // cases of it that must run: a reader that loses cases would pass
  Decimal (*apply)(const Decimal& a, const Decimal& b);
};

const std::map<std::string, Operation> kOperations = {
    {"abs", {170, [](auto& a, auto&) { return a.isneg() ? -a : a; }}},
    {"plus", {120, [](auto& a, auto&) { return +a; }}},
    {"minus", {120, [](auto& a, auto&) { return -a; }}},
    {"add", {1790, [](auto& a, auto& b) { return a + b; }}},
    {"subtract", {940, [](auto& a, auto& b) { return a - b; }}},
    {"multiply", {630, [](auto& a, auto& b) { return a * b; }}},
    {"divideint", {970, [](auto& a, auto& b) { return a / b; }}},
    {"remainder", {1420, [](auto& a, auto& b) { return a % b; }}},
    {"divide", {850, [](auto& a, auto& b) { return a.realDivide(b); }}},
    {"compare", {1900, [](auto& a, auto& b) { return Decimal((a > b) - (a < b)); }}},
    {"quantize", {580, [](auto& a, auto& b) {
                    Decimal moved = a;
                    moved.scale(b.getScaleFactor() - a.getScaleFactor());
                    return moved;
                  }}}};

// Whether the digits of the value have room when it is raised to a scale.
bool fitsAt(const Decimal& value, int places) {
  const auto digits = static_cast<int>(show(value).size());
  return digits + places - value.getScaleFactor() <= static_cast<int>(kMostDigits);
}

bool canTake(const std::string& operation, const Decimal& a, const Decimal& b,
             const Decimal& result) {
  if (operation == "multiply") return a.getLength() + b.getLength() + 1 <= 21;
  const int places = std::max(a.getScaleFactor(), b.getScaleFactor());
  return fitsAt(a, places) && fitsAt(b, places) &&
         (operation != "divide" || (a.getLength() <= 14 && result.getScaleFactor() <= 23));
}

// id operation operand... -> result flag...
void run(const std::vector<std::string>& words, std::map<std::string, int>& counts) {
  const auto arrow = std::find(words.begin(), words.end(), "->");
  const auto has = [&](const char* flag) {
    return std::find(arrow, words.end(), flag) != words.end();
  };
  if (arrow - words.begin() < 3 || words.end() - arrow < 2 || kOperations.count(words[1]) == 0 ||
      has("rounded") || has("clamped")) {
    return;
  }
  const auto left = parseNumber(words[2]), right = parseNumber(arrow[-1]);
  const auto expected = parseNumber(arrow[1]);
  if (!left || !right || !expected || !canTake(words[1], *left, *right, *expected)) return;
  const Decimal actual = kOperations.at(words[1]).apply(*left, *right);
  const bool hasOwnScale = words[1] == "multiply" || words[1] == "divide";
  EXPECT_TRUE(show(actual) == show(*expected) || (hasOwnScale && actual == *expected))
      << show(actual) << " for " << testing::PrintToString(words);
  ++counts[words[1]];
}

TEST(DecTest, EveryCaseThatFixedPointCanTakeHolds) {
  const char* set = std::getenv("NOMUTIL_DECTEST_DIR");
  std::map<std::string, int> counts;
  for (const auto& entry : std::filesystem::directory_iterator(set ? set : kDebianDirectory)) {
    std::ifstream file(entry.path());
    for (std::string line; std::getline(file, line);) {
      line.erase(std::min(line.find("--"), line.size()));
      for (char& c : line) c = static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
      // No operand that is a number has a blank or a quote inside.
      std::replace(line.begin(), line.end(), '\'', ' ');
      std::istringstream words(line);
      run({std::istream_iterator<std::string>(words), {}}, counts);
    }
  }
  int all = 0;
  for (const auto& [name, operation] : kOperations) {
    EXPECT_GE(counts[name], operation.fewest) << name;
    all += counts[name];
    std::cout << name << ' ' << counts[name] << ", ";
  }
  std::cout << "in all " << all << '\n';
}

}  // namespace
