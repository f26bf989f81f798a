// The General Decimal Arithmetic test suite against Decimal. Its files belong to the Debian package
// libpython3.11-testsuite and are read where that puts them, or in NOMUTIL_DECTEST_DIR.
//
// A case runs when fixed-point decimals can take it: finite operands and result, exponents written
// out (1.2E+3 is 1200), nothing rounded unless the case is about giving a value fewer places. The
// suite's arithmetic is a floating one, so these differences are meant:
//
//   zero sign        a zero has no sign: -0 is 0
//   product scale    an exponent that is written out adds no places: 1E+3 * 0.01 is 10.00, not 1E+1
//   quotient scale   an exact quotient has the fewest places: 2.40 / 2 is 1.2, not 1.20
//   zero quotient    it has 23 places
#include "decimalshow.h"

#include <algorithm>
#include <array>
#include <cctype>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <map>

namespace {

using nomtest::dec;
using nomtest::show;

constexpr const char* kDebianDirectory = "/usr/lib/python3.11/test/decimaltestdata";
constexpr int kMaxDigits = 100;  // of a text
// So far any value can be raised: a negative one by a product, whose limbs stay below 21.
constexpr int kMaxRaisedDigits = 86;

// A number of the suite, written out.
struct Number {
  bool finite = false;   // and not too long
  bool shifted = false;  // it had a positive exponent
  std::string plain;     // "-12.50": no plus, no needless zeros in front, no sign on zero
  int digits = 0;        // of plain
  int places = 0;
  Decimal value;  // read from the text as it stands in the file, if that has no exponent
};

Number parseNumber(const std::string& token) {
  Number number;
  const std::size_t sign = token.find_first_of("+-") == 0 ? 1 : 0;
  const std::size_t mantissaEnd = std::min(token.find_first_of("Ee"), token.size());
  std::string digits = token.substr(sign, mantissaEnd - sign);
  const std::size_t point = digits.find('.');
  if (point != std::string::npos) digits.erase(point, 1);
  const bool numeric = !digits.empty() && digits.find_first_not_of("0123456789") == digits.npos;
  const bool scientific = mantissaEnd != token.size();
  const long exponent = scientific ? std::strtol(token.c_str() + mantissaEnd + 1, nullptr, 10) : 0;
  if (!numeric || digits.size() > kMaxDigits || std::abs(exponent) > kMaxDigits) return number;

  const int fraction = point == std::string::npos ? 0 : static_cast<int>(digits.size() - point);
  const int shift = static_cast<int>(exponent) - fraction;
  number.shifted = shift > 0;
  number.places = std::max(-shift, 0);
  const auto places = static_cast<std::size_t>(number.places);
  digits.append(static_cast<std::size_t>(std::max(shift, 0)), '0');
  digits.erase(0, std::min(digits.find_first_not_of('0'), digits.size()));
  const bool negative = token[0] == '-' && !digits.empty();
  if (digits.size() <= places) digits.insert(0, places + 1 - digits.size(), '0');
  number.digits = static_cast<int>(digits.size());
  number.finite = number.digits <= kMaxDigits;
  if (places != 0) digits.insert(digits.size() - places, ".");
  number.plain = (negative ? "-" : "") + digits;
  number.value = dec(scientific ? number.plain : token);
  return number;
}

// The number without zeros at the end of its places.
std::string shortest(std::string plain) {
  if (plain.find('.') == std::string::npos) return plain;
  plain.erase(plain.find_last_not_of('0') + 1);
  if (plain.back() == '.') plain.pop_back();
  return plain;
}

// The value, spelled out apart from the library, and the library's own rendering if that differs.
std::string render(const Decimal& value) {
  const std::string shown = show(value);
  char text[104];
  value.decimalToString(text, sizeof text, value.getScaleFactor());
  return shown == text ? shown : shown + ", rendered as " + text;
}

struct Case {
  std::string id, operation, rounding;
  std::array<Number, 2> operands;
  Number result;
  bool inexact = false;  // what was cut off was not zero
  bool rounded = false;  // a digit was cut off or the exponent clamped
};

// What an operation gives and what it should give; both empty for a case that decimals cannot take.
struct Outcome {
  std::string actual, expected;
};

// The places are those of the result.
Outcome quantize(const Case& test) {
  const auto& [from, to] = test.operands;
  const bool down = test.rounding == "down";
  const int places = test.result.places - from.places;
  if (test.result.shifted || (test.inexact && !down && test.rounding != "half_up")) return {};
  if (from.digits + places > kMaxRaisedDigits) return {};
  Decimal value = from.value;
  if (down && places < 0) {
    value.truncate(static_cast<std::uint8_t>(-places));
  } else if (!value.scale(places)) {
    return {"scale() failed", test.result.plain};
  }
  return {render(value), test.result.plain};
}

Outcome evaluate(const Case& test) {
  const Decimal& a = test.operands[0].value;
  const Decimal& b = test.operands[1].value;
  const std::string& name = test.operation;
  const std::string& expected = test.result.plain;
  const Decimal absolute = a.isneg() ? -a : a;
  if (name == "abs") return {render(absolute), expected};
  if (name == "plus") return {render(+a), expected};
  if (name == "minus") return {render(-a), expected};
  if (name == "quantize") return quantize(test);
  if (name == "multiply") {
    if (absolute.getLength() + (b.isneg() ? -b : b).getLength() + 1 > 21) return {};
    const bool shifted = test.operands[0].shifted || test.operands[1].shifted;  // "product scale"
    if (shifted) return {shortest(show(a * b)), shortest(expected)};
    return {render(a * b), expected};
  }
  // The others give their operands the same places, a division 23 more to the first.
  const bool divides = name == "divide";
  const int places = std::max(test.operands[0].places, test.operands[1].places);
  for (const auto& [finite, shifted, plain, digits, own, value] : test.operands) {
    const int more = divides && &value == &a ? 23 : 0;
    if (digits + places - own + more > kMaxRaisedDigits) return {};
  }
  if (name == "add") return {render(a + b), expected};
  if (name == "subtract") return {render(a - b), expected};
  if (name == "divideint") return {render(a / b), expected};
  if (name == "remainder") return {render(a % b), expected};
  if (name == "compare") return {a < b ? "-1" : a > b ? "1" : a == b ? "0" : "?", expected};
  // The differences "quotient scale" and "zero quotient".
  const std::string quotient = shortest(expected);
  const std::size_t point = std::min(quotient.find('.'), quotient.size() - 1);
  if (a.getLength() > 14 || quotient.size() - point - 1 > 23) return {};
  return {render(a.realDivide(b)), quotient == "0" ? "0." + nomtest::zeros(23) : quotient};
}

std::string lower(std::string text) {
  for (char& c : text) c = static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
  return text;
}

// id operation operand... -> result flag...
bool parseCase(std::istringstream& words, const std::string& id, Case& test) {
  std::string word;
  test.id = id;
  words >> test.operation;
  test.operation = lower(test.operation);
  bool finite = true;
  std::size_t count = 0;
  for (test.operands = {}; words >> word && word != "->"; ++count) {
    if (count == test.operands.size()) return false;
    test.operands[count] = parseNumber(word);
    finite = finite && test.operands[count].finite;
  }
  if (!(words >> word) || count == 0) return false;
  test.result = parseNumber(word);
  test.inexact = test.rounded = false;
  while (words >> word) {
    word = lower(word);
    test.inexact = test.inexact || word == "inexact";
    test.rounded = test.rounded || word == "inexact" || word == "rounded" || word == "clamped";
  }
  return finite && test.result.finite;
}

// The operations, and the fewest cases of each that must run: a reader that loses cases would pass.
const std::map<std::string, int> kFewest = {
    {"add", 1750},      {"subtract", 900},   {"multiply", 600}, {"divide", 850},
    {"divideint", 950}, {"remainder", 1400}, {"compare", 1850}, {"quantize", 750},
    {"abs", 170},       {"plus", 120},       {"minus", 120}};

void run(const Case& test, std::map<std::string, int>& counts) {
  if (kFewest.count(test.operation) == 0) return;
  if (test.rounded && test.operation != "quantize") return;
  const auto [actual, expected] = evaluate(test);
  if (expected.empty()) return;
  ++counts[test.operation];
  EXPECT_EQ(actual, expected) << test.id << " " << test.operation;
}

void runFile(const std::filesystem::path& path, std::map<std::string, int>& counts) {
  std::ifstream file(path);
  ASSERT_TRUE(file.is_open()) << path;
  Case test;
  for (std::string line; std::getline(file, line);) {
    line.erase(std::min(line.find("--"), line.size()));
    // No operand that is a number has a blank or a quote inside.
    std::replace_if(
        line.begin(), line.end(), [](char c) { return c == '\'' || c == '"'; }, ' ');
    std::istringstream words(line);
    std::string first;
    words >> first;
    if (lower(first) == "rounding:") {
      words >> test.rounding;
    } else if (parseCase(words, first, test)) {
      run(test, counts);
    }
  }
}

TEST(DecTest, EveryCaseThatFixedPointCanTakeHolds) {
  const char* set = std::getenv("NOMUTIL_DECTEST_DIR");
  const std::string directory = set != nullptr ? set : kDebianDirectory;
  std::error_code error;
  std::filesystem::directory_iterator files(directory, error);
  ASSERT_FALSE(error) << directory << ": " << error.message();
  std::map<std::string, int> counts;
  for (; files != std::filesystem::directory_iterator(); files.increment(error)) {
    if (files->path().extension() == ".decTest") runFile(files->path(), counts);
  }
  for (const auto& [operation, fewest] : kFewest) {
    std::cout << operation << " " << counts[operation] << "\n";
    EXPECT_GE(counts[operation], fewest) << operation;
  }
}

}  // namespace
