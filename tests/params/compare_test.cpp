// Equality and agreement of formats, and the text of values. Every value is also compared from the
// other side, but for the few pairs whose status depends on the side.

#include "exactparam.h"
#include "sys/decimals.h"

#include <limits>

using namespace nomtest;

namespace {

std::string equality(const DskParam* left, const DskParam* right) {
  bool equal = true;
  const int status = paramsAreEqual(left, right, &equal);
  return status != 0 ? std::to_string(status) : equal ? "equal" : "no";
}
std::string bothWays(const DskParam* left, const DskParam* right) {
  const std::string there = equality(left, right);
  const std::string back = equality(right, left);
  return there == back ? there : there + "/" + back;
}

const std::vector<std::vector<unsigned>> kFamilies = {{1, 2, 14, 25}, {11, 33, 34}, {51, 54}};

TEST(ParamsAreEqual, AFamilyComparesItsBytesHoweverTheyAreKept) {
  for (const auto& family : kFamilies) {
    for (const unsigned left : family) {
      for (const unsigned right : family) {
        SCOPED_TRACE(testing::Message() << left << " and " << right);
        EXPECT_EQ(bothWays(Param(left, "text"), Param(right, "text")), "equal");
        EXPECT_EQ(bothWays(Param(left, "text"), Param(right, "texT")), "no");
        EXPECT_EQ(bothWays(Param(left, "text"), Param(right, "texts")), "no");
        EXPECT_EQ(bothWays(Param(left, "_"), Param(right, "_")), "equal");
      }
      EXPECT_EQ(bothWays(Param(left, "_"), Param(36)), "equal") << left;
      EXPECT_EQ(bothWays(Param(left, "x"), Param(36)), "no") << left;
      for (const auto& other : kFamilies) {
        const bool isSame = other == family;
        EXPECT_EQ(equality(Param(left, "_"), Param(other[0], "_")), isSame ? "equal" : "no");
      }
    }
  }
}

// Fixed values by their first bytes, in words; 'D' and 'd' are two dates, "D|{7}" is a midnight.
TEST(ParamsAreEqual, FixedValuesCompareByTheirFormat) {
  expectRows(
      5,
      [](const Row& row) {
        return bothWays(filled(numberOf(row[0]), row[1]), filled(numberOf(row[2]), row[3]));
      },
      "4 abcd 4 abcd equal  4 abcd 4 abcD no  4 abcd 42 abcd|||| no  4 abcd 17 abcd no "
      "6 a 6 a equal  6 a 52 a no  7 a 7 b no  7 | 7 | equal  52 a 52 b no "
      "8 abcdefgh 8 abcdefgh equal  8 abcdefgh 8 abcdefgH no  8 abcdefgh 8 Abcdefgh no "
      "16 D||| 16 D||| equal  16 D||| 18 D|{7} equal  16 D||| 18 D|{6}a no  16 D||| 18 d|{7} no "
      "17 D||| 17 d||| no  18 D|{6}a 18 D|{6}a equal  18 D|{6}a 18 D|{6}b no "
      "42 abcdefgh 42 abcdefgh equal  42 abcdefgh 42 abcdefgH no  53 abcdefgh 53 abcdefgh equal "
      "44 abcdefghijkl 44 abcdefghijkl equal  44 abcdefghijkl 44 abcdefghijkL no "
      "57 abcdefghijkl 57 abcdefghIJKL equal  57 abcdefghijkl 57 abcdefgHijkl no "
      // What a null equals: zeros, false, the null date, an identifier of nothing.
      "36 _ 4 |||| equal  36 _ 4 |||a no  36 _ 7 | equal  36 _ 16 |||| equal  36 _ 21 |{8} equal "
      "36 _ 19 |{16} equal  36 _ 3 |{22} equal  36 _ 57 |{12} equal "
      // An identifier: instance, class, level and the bytes at 16 count, the qualifier (at 11) and
      // the last two bytes do not.
      "3 abcdefghijkLmnopqrstuv 3 abcdefghijklmnopqrstUV equal "
      "3 abcdefghijklmnopqrstuv 3 Abcdefghijklmnopqrstuv no "
      "3 abcdefghijklmnopqrstuv 3 abcdefghijKlmnopqrstuv no "
      "3 abcdefghijklmnopqrstuv 3 abcdefghijklmnOpqrstuv no "
      "3 abcdefghijklmnopqrstuv 3 abcdefghijklmnoPqrstuv no "
      "3 abcdefghijklmnopqrstuv 3 abcdefghijklmnopqRstuv no "
      "3 abcdefghijklmnopqrstuv 3 abcdefghijklmnopqrSTuv no");
}

TEST(ParamsAreEqual, NumbersCompareByValue) {
  const auto decimal = [](const char* text) {
    Param parameter(19);
    DskDecimal stored{};
    EXPECT_TRUE(nomDecimalFromString(text, &stored));
    parameter->setValue(stored);
    return parameter;
  };
  EXPECT_EQ(bothWays(decimal("1.50"), decimal("1.5")), "equal");
  EXPECT_EQ(bothWays(decimal("1.50"), decimal("1.51")), "no");
  EXPECT_EQ(bothWays(decimal("0.00"), Param(36)), "equal");

  const auto real = [](unsigned format, double value) {
    Param parameter(format);
    format == 21 ? parameter->setValue(value) : parameter->setValue(static_cast<float>(value));
    return parameter;
  };
  const double nan = std::numeric_limits<double>::quiet_NaN();
  EXPECT_EQ(bothWays(real(20, 0.5), real(21, 0.5)), "equal");
  EXPECT_EQ(bothWays(real(20, 0.1), real(21, 0.1)), "no");
  EXPECT_EQ(bothWays(real(21, -0.0), Param(36)), "equal");
  EXPECT_EQ(equality(real(21, nan), real(21, nan)), "no");
  EXPECT_EQ(equality(real(20, nan), real(20, nan)), "no");
}

TEST(ParamsAreEqual, PiecesCompareWithPiecesAndOthersAreRefused) {
  Recorder recorder;
  // Format, text and offset of both sides.
  expectRows(
      7,
      [](const Row& row) {
        return equality(Param(numberOf(row[0]), row[1], numberOf(row[2])),
                        Param(numberOf(row[3]), row[4], numberOf(row[5])));
      },
      "14 abc 2 14 abc 2 equal  14 abc 2 14 abc 3 no  14 abc 2 14 abd 2 no  14 abc 2 14 ab 2 no "
      "14 _ 2 14 _ 2 equal  14 abc 2 14 abc 0 no  14 abc 0 14 abc 2 no  14 abc 2 25 abc 0 no "
      "14 abc 2 36 _ 0 no  34 abc 2 34 abc 2 equal  34 abc 2 33 abc 0 no  34 abc 2 14 abc 2 no");
  EXPECT_EQ(linesOf(recorder), "");
  for (const unsigned format : {0u, 5u, 15u, 24u, 36u, 48u, 58u}) {
    EXPECT_EQ(equality(Param(format), Param(36)), "1000");
    EXPECT_EQ(linesOf(recorder),
              "paramsAreEqual: invalid parameter type (" + std::to_string(format) + ")\n");
  }
  EXPECT_EQ(equality(nullptr, Param(36)), "1000");
  EXPECT_EQ(linesOf(recorder), "");
}

TEST(FamilyEquality, RefusesTheLeftSideAndNotTheRight) {
  Recorder recorder;
  const auto check = [&](auto compare, const DskParam* left, const DskParam* right) {
    bool equal = true;
    const int status = compare(left, right, &equal);
    EXPECT_FALSE(equal);
    return std::to_string(status) + " " + linesOf(recorder);
  };
  EXPECT_EQ(check(stringParamEqualTo, Param(14, "abc", 3), Param(25, "abc")),
            "1002 stringParamEqualTo: character block offset 3\n");
  EXPECT_EQ(check(stringParamEqualTo, Param(25, "abc"), Param(14, "abc", 3)), "0 ");
  EXPECT_EQ(check(binaryParamEqualTo, Param(34, "abc", 4), Param(4)),
            "1002 binaryParamEqualTo: binary block offset 4\n");
  EXPECT_EQ(check(binaryParamEqualTo, Param(14, "abc", 4), Param(33, "abc")),
            "1000 binaryParamEqualTo: invalid parameter type (14)\n");
  EXPECT_EQ(check(stringUtf8ParamEqualTo, Param(25, "abc"), Param(54, "abc")),
            "1000 stringUtf8ParamEqualTo: invalid parameter type (25)\n");
  EXPECT_EQ(check(stringUtf8ParamEqualTo, nullptr, Param(54, "abc")), "1000 ");
}

TEST(ParamsAreCompatible, WithinAFamilyAndWithWhatIsOpen) {
  const auto familyOf = [](unsigned format) -> unsigned {
    for (unsigned i = 0; i < kFamilies.size(); ++i) {
      for (const unsigned member : kFamilies[i]) {
        if (member == format) return i;
      }
    }
    return 100 + format;
  };
  for (unsigned left = 0; left <= 60; ++left) {
    for (unsigned right = 0; right <= 60; ++right) {
      Param a(0), b(0);
      a.asShort()->header.format = static_cast<PFormat>(left);
      b.asShort()->header.format = static_cast<PFormat>(right);
      const bool isOpen = left == 5 || left == 36 || right == 5 || right == 36;
      bool compatible = false;
      EXPECT_EQ(paramsAreCompatible(a, b, &compatible), 0);
      EXPECT_EQ(compatible, isOpen || familyOf(left) == familyOf(right)) << left << " " << right;
      a.asShort()->header.format = b.asShort()->header.format = PFormat{};
    }
  }
}

std::string render(const DskParam* parameter, std::uint32_t size) {
  std::vector<char> text(size + 1, '\x7E');
  const int status = paramToString(parameter, text.data(), size);
  EXPECT_EQ(text[size], '\x7E') << "behind the buffer";
  if (status != 0) return std::to_string(status);
  return size == 0 ? "" : std::string(text.data());
}

// A parameter by the bytes of its value area, or of its text, in hexadecimal.
Param fromHex(unsigned format, const std::string& digits) {
  std::string bytes;
  for (std::size_t i = 0; i + 1 < digits.size(); i += 2) {
    bytes += static_cast<char>(std::stoi(digits.substr(i, 2), nullptr, 16));
  }
  Param parameter(format, std::string(bytes.size(), '|'));
  void* const to = parameter.isHeld() ? parameter.held()->bytes()
                                      : reinterpret_cast<char*>(parameter.get()) +
                                            (Param::isInline(format) ? 12 : 8);
  std::memcpy(to, bytes.data(), bytes.size());
  return parameter;
}

TEST(ParamToString, ShowsEveryFormat) {
  // Format, the value area in hexadecimal, the text with '_' for a blank, '(' and ')' for braces.
  expectRows(
      3,
      [](const Row& row) {
        std::string text = render(fromHex(numberOf(row[0]), row[1]), 100);
        for (char& c : text) c = c == ' ' ? '_' : c == '{' ? '(' : c == '}' ? ')' : c;
        return text;
      },
      "4 ffffffff -1  6 41 A  7 02 true  7 00 false  8 0100000002000080 1,-2147483646 "
      "15 0500000006000000 (5.6)  49 0500000006000000 (5.6)  52 ff 255 "
      "42 0000000000000080 -9223372036854775808  44 887766554433221109000000 0x55667788,9 "
      "45 010000000200000003000000 1_(2.3)  46 0000000000000000010000000200030000 (1.2.3) "
      "16 8c3d2500 01_January_1970  17 80ee3600 01:00:00  18 8c3d250080ee3600 "
      "01_January_1970,_01:00:00  57 8c3d250080ee360000000000 01_January_1970,_01:00:00_+0000 "
      "53 0000000000000000 0:00:00:00.000  18 ffffffffffffffff *invalid* "
      "20 0000003f 0.5  21 000000000000e0bf -0.5  21 408cb5781daf1544 10{20} "
      "19 0202e903000000000000000000000000 10.01 "
      "3 11000000000000000008000000000000000003000000 [2048.17:3] "
      "24 110000000000000000080000 [2048.17]  33 deadbeef de_ad_be_ef_  11 00ff 00_ff_ ");
}

TEST(ParamToString, CutsTextsAndBinariesByTheirRules) {
  const std::string letters = "abcdefghij";
  for (const unsigned format : {1u, 2u, 14u, 25u}) {
    const Param text(format, letters);
    for (std::uint32_t size = 0; size <= 12; ++size) {
      std::string expected = letters.substr(0, size == 0 ? 0 : size - 1);
      if (size >= 5 && size < 10) expected.replace(size - 4, 3, "...");
      EXPECT_EQ(render(text, size), expected) << format << " " << size;
    }
  }
  for (const unsigned format : {11u, 33u, 34u}) {
    const Param bytes(format, "abcde");
    const char* const expected[] = {"",
                                    "",
                                    "",
                                    "61",
                                    "61 ",
                                    "6...",
                                    "61...",
                                    "61 ...",
                                    "61 6...",
                                    "61 62...",
                                    "61 62 ...",
                                    "61 62 6...",
                                    "61 62 63...",
                                    "61 62 63 ...",
                                    "61 62 63 6...",
                                    "61 62 63 64 65",
                                    "61 62 63 64 65 "};
    for (std::uint32_t size = 0; size < std::size(expected); ++size) {
      EXPECT_EQ(render(bytes, size), expected[size]) << format << " " << size;
    }
  }
  EXPECT_EQ(render(Param(51, "a~"), 3), "a\xE4");
  EXPECT_EQ(render(Param(54, "a~"), 2), "1035");
  EXPECT_EQ(render(Param(51, "a^"), 9), "1002");
}

TEST(ParamToString, ShowsABlockFromItsOffsetOn) {
  Param block(14, "abcdefgh", 2);
  auto value = block->getValue<DskStringBlock>();
  value.length = 3;
  block->setValue(value);
  EXPECT_EQ(render(block, 20), "cde");
  block.asShort()->header.format = DSKBINARYBLOCK;
  EXPECT_EQ(render(block, 20), "63 64 65 ");

  Recorder recorder;
  for (const unsigned format : {0u, 5u, 36u, 58u}) {
    EXPECT_EQ(render(Param(format), 9), "1000");
    EXPECT_EQ(render(Param(format), 0), "1000");
    const std::string line =
        "paramToString: invalid parameter type (" + std::to_string(format) + ")\n";
    EXPECT_EQ(linesOf(recorder), line + line);
  }
}

}  // namespace
