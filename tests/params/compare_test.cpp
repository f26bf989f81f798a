// Equality and agreement of formats, and the text of values. Every value is also compared from the
// other side, but for the few pairs whose status depends on the side.

#include "exactparam.h"

#include <utility>

using namespace nomtest;

namespace {

using ParamsAreEqual = Checked;
using FamilyEquality = Checked;
using ParamToString = Checked;

std::string equality(const DskParam* left, const DskParam* right) {
  bool equal = true;
  const int status = paramsAreEqual(left, right, &equal);
  EXPECT_FALSE(status != 0 && equal);
  return status != 0 ? std::to_string(status) : equal ? "equal" : "no";
}
std::string bothWays(const DskParam* left, const DskParam* right) {
  const std::string there = equality(left, right);
  const std::string back = equality(right, left);
  return there == back ? there : there + "/" + back;
}

TEST_F(ParamsAreEqual, AFamilyComparesItsBytesHoweverTheyAreKept) {
  const std::string words[] = {"text", "texT", "texts", "_"};
  for (const unsigned left : kTexts) {
    for (const std::string& word : words) {
      EXPECT_EQ(bothWays(Param(left, word), Param(36)), word == "_" ? "equal" : "no") << left;
      for (const unsigned right : kTexts) {
        for (const std::string& other : words) {
          const bool isEqual = tooLongOf(left) == tooLongOf(right) && word == other;
          EXPECT_EQ(equality(Param(left, word), Param(right, other)), isEqual ? "equal" : "no")
              << left << " " << word << " and " << right << " " << other;
        }
      }
    }
  }
}

// The bytes of a value that count. Those of an identifier are its instance, class, level and what
// stands at 16, but not the qualifier at 11.
TEST_F(ParamsAreEqual, FixedValuesAreThoseBytesAndZerosAreNull) {
  const auto check = [](const Row& row) {
    const unsigned format = numberOf(row[0]);
    std::string counted;
    EXPECT_EQ(bothWays(Param(format, std::string(32, '|')), Param(36)), "equal") << format;
    for (std::size_t place = 0; place < 32; ++place) {
      std::string value(32, '|');
      const Param zeros(format, value);
      value[place] = '1';
      const std::string answer = bothWays(Param(format, value), zeros);
      EXPECT_EQ(bothWays(Param(format, value), Param(36)), answer) << format;
      counted += answer == "no" ? 'x' : answer == "equal" ? '.' : '?';
    }
    return counted.substr(0, counted.rfind('x') + 1);
  };
  expectRows(2, check,
             "3 x{11}.x{8} 4 xxxx 6 x 7 x 8 x{8} 16 xxxx 17 xxxx 18 x{8} 42 x{8} 44 x{12} 52 x "
             "53 x{8} 57 x{8}");
}

// The formats and values of both sides. 'D' and 'd' are two dates, "D|{7}" is a midnight. Pieces,
// whose texts have offsets, equal pieces alone.
TEST_F(ParamsAreEqual, OtherFormatsAreOtherValuesButForNumbersAndDates) {
  const auto check = [](const Row& row) {
    return bothWays(Param(numberOf(row[0]), row[1]), Param(numberOf(row[2]), row[3]));
  };
  expectRows(5, check, R"(
      4 abcd 42 abcd|||| no      4 abcd 17 abcd no          6 a 52 a no
      16 D||| 18 D|{7} equal     16 D||| 18 D|{6}a no       16 D||| 18 d|{7} no
      19 =1.50 19 =1.5 equal     19 =1.50 19 =1.51 no       19 =0.00 36 _ equal
      20 =0.5 21 =0.5 equal      20 =0.1 21 =0.1 no         21 =-0 36 _ equal
      20 =nan 20 =nan no         21 =nan 21 =nan no         4 =0 21 =0 no
      14 abc@2 14 abc@2 equal    14 abc@2 14 abc@3 no       14 abc@2 14 abd@2 no
      14 abc@2 14 ab@2 no        14 @2 14 @2 equal          14 abc@2 14 abc no
      14 abc@2 25 abc no         14 abc@2 36 _ no           34 abc@2 34 abc@2 equal
      34 abc@2 33 abc no         34 abc@2 14 abc@2 no)");
}

TEST_F(ParamsAreEqual, OtherFormatsAreRefused) {
  for (const unsigned format : {0u, 5u, 15u, 24u, 36u, 48u, 58u}) {
    EXPECT_EQ(bothWays(Param(format), Param(36)), "1000");
    const std::string line =
        "paramsAreEqual: invalid parameter type (" + std::to_string(format) + ")\n";
    EXPECT_EQ(lines(), line + line);
  }
  EXPECT_EQ(bothWays(nullptr, Param(36)), "1000");
}

// The family by a letter, the formats and values of both sides, the status and the log line.
TEST_F(FamilyEquality, RefusesTheLeftSideAndNotTheRight) {
  const auto check = [this](const Row& row) {
    const auto compare = row[0] == "s"   ? stringParamEqualTo
                         : row[0] == "b" ? binaryParamEqualTo
                                         : stringUtf8ParamEqualTo;
    bool equal = true;
    const int status =
        compare(Param(numberOf(row[1]), row[2]), Param(numberOf(row[3]), row[4]), &equal);
    std::string line = lines();
    std::replace(line.begin(), line.end(), ' ', '_');
    EXPECT_FALSE(equal);
    return std::to_string(status) + line.substr(0, line.find('\n'));
  };
  expectRows(6, check, R"(
      s 14 abc@3 25 abc 1002stringParamEqualTo:_character_block_offset_3
      s 25 abc 14 abc@3 0
      b 34 abc@4 4 _    1002binaryParamEqualTo:_binary_block_offset_4
      b 14 abc@4 33 abc 1000binaryParamEqualTo:_invalid_parameter_type_(14)
      u 25 abc 54 abc   1000stringUtf8ParamEqualTo:_invalid_parameter_type_(25))");
  bool equal = true;
  EXPECT_EQ(stringUtf8ParamEqualTo(nullptr, Param(54, "abc"), &equal), 1000);
}

TEST(ParamsAreCompatible, WithinAFamilyAndWithWhatIsOpen) {
  bool compatible = true;
  EXPECT_EQ(paramsAreCompatible(nullptr, Param(36), &compatible), 1000);
  EXPECT_FALSE(std::exchange(compatible, true));
  EXPECT_EQ(paramsAreCompatible(Param(36), nullptr, &compatible), 1000);
  EXPECT_FALSE(compatible);
  for (unsigned pair = 0; pair < 61 * 61; ++pair) {
    const unsigned left = pair / 61, right = pair % 61;
    const bool isKin = tooLongOf(left) != 0 && tooLongOf(left) == tooLongOf(right);
    const bool expected =
        isKin || left == right || isAmong(left, {5, 36}) || isAmong(right, {5, 36});
    compatible = !expected;
    EXPECT_EQ(paramsAreCompatible(Param(left), Param(right), &compatible), 0);
    EXPECT_EQ(compatible, expected) << left << " " << right;
  }
}

// A text of paramToString as a word: '_' for a blank, '(' and ')' for braces, "-" for none.
std::string render(const DskParam* parameter, std::uint32_t size) {
  std::vector<char> text(size + 1, '\x7E');
  const int status = paramToString(parameter, text.data(), size);
  EXPECT_EQ(text[size], '\x7E') << "behind the buffer";
  if (status != 0) return std::to_string(status);
  std::string word = size == 0 || text[0] == '\0' ? "-" : text.data();
  for (char& c : word) c = c == ' ' ? '_' : c == '{' ? '(' : c == '}' ? ')' : c;
  return word;
}

// Every smaller buffer takes the beginning of a value; the cuts of texts have a test of their own.
// A decimal, 12.345 here, is '*' throughout where its integer part or its places do not fit.
TEST_F(ParamToString, ShowsEveryFormat) {
  const auto check = [](const Row& row) {
    const unsigned format = numberOf(row[0]);
    const Param value(format, row[1]);
    const std::string all = render(value, 100);
    for (unsigned size = 0; tooLongOf(format) == 0 && size < all.size() + 4; ++size) {
      std::string part = size < 2 || all == "-" ? "-" : all.substr(0, size - 1);
      if (format == 19 && size < 4) std::fill(part.begin(), part.end(), size < 2 ? '-' : '*');
      EXPECT_EQ(render(value, size), part) << format << " in " << size;
    }
    return all;
  };
  expectRows(3, check, R"(
      3 7|{8}8|{8}3||| [2048.7:3]    24 7|{8}8|| [2048.7]    44 21||^^^^9||| 0x00000102,9
      4 =-1 -1    6 A A    6 | -    7 2 true    7 | false    8 1|||2||^ 1,-469762046    52 ^ 228
      15 5|||6| (5.6)    45 1|||2|||3| 1_(2.3)    46 |{8}1|||2|3 (1.2.3)    49 5|||6| (5.6)
      16 =2440588 01_January_1970    17 =3600000 01:00:00    57 |{12} 00:00:00_+0000
      18 =15461882268040588 01_January_1970,_01:00:00        18 =-1 *invalid*
      53 =0 0:00:00:00.000           42 =-9223372036854775808 -9223372036854775808
      19 =12.345 12.345  20 =0.1 0.1    21 =-0.5 -0.5    21 =1e20 10{20}
      33 ^2 e4_02_       11 |^ 00_e4_   51 a^ 1002   14 _@5 -   34 _@5 -)");
  EXPECT_EQ(render(nullptr, 9), "1000");
  EXPECT_EQ(render(Param(19, "^"), 9), "0");
  EXPECT_EQ(lines().substr(0, 29), "attempt to convert an invalid");
  // A block from its offset on.
  Param block(14, "abcdefgh");
  auto value = block->getValue<DskStringBlock>();
  value.offset = 2;
  value.length = 3;
  block->setValue(value);
  EXPECT_EQ(render(block, 20), "cde");
  block.asShort()->header.format = DSKBINARYBLOCK;
  EXPECT_EQ(render(block, 20), "63_64_65_");
}

// Size, a binary of five bytes and a text of eight in it.
TEST_F(ParamToString, CutsTextsAndBinariesByTheirRules) {
  const auto check = [](const Row& row) {
    for (const unsigned format : {11u, 33u, 34u, 1u, 2u, 14u, 25u}) {
      const bool isBinary = isAmong(format, {11, 33, 34});
      const std::string word =
          render(Param(format, isBinary ? "abcde" : "abcdefgh"), numberOf(row[0]));
      EXPECT_EQ(word, row[isBinary ? 1 : 2]) << format << " " << row[0];
    }
    return row[2];
  };
  expectRows(3, check, R"(
      0 - -          1 - -           2 - a            3 61 ab         4 61_ abc     5 6... a...
      6 61... ab...  7 61_... abc... 8 61_6... abcdefg 9 61_62... abcdefgh 10 61_62_... abcdefgh
      11 61_62_6... abcdefgh         12 61_62_63... abcdefgh   13 61_62_63_... abcdefgh
      14 61_62_63_6... abcdefgh      15 61_62_63_64_65 abcdefgh 16 61_62_63_64_65_ abcdefgh)");
  EXPECT_EQ(render(Param(51, "a~"), 3), "a\xE4");
  EXPECT_EQ(render(Param(54, "a~"), 2), "1035");
  for (const unsigned format : {0u, 5u, 36u, 58u}) {
    EXPECT_EQ(render(Param(format), 9) + render(Param(format), 0), "10001000");
    const std::string line =
        "paramToString: invalid parameter type (" + std::to_string(format) + ")";
    EXPECT_EQ(lines(), line + "\n" + line + "\n");
  }
}

}  // namespace
