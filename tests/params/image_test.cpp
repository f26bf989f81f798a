// Values as bytes and back, and negation.

#include "exactparam.h"
#include "sys/decimals.h"

#include <map>

using namespace nomtest;

namespace {

// The image of a source in words: the bytes, their number, whether they lie in its value area.
std::string image(const Param& source) {
  Param target(0);
  const int status = paramAsBinary(target.asShort(), source.asShort());
  if (status != 0) return std::to_string(status);
  const auto block = target->getValue<DskBinaryBlock>();
  EXPECT_EQ(target.format(), 34u);
  EXPECT_EQ(target.asShort()->header.usage, 3);
  EXPECT_EQ(block.offset, 0u);
  EXPECT_EQ(block.capacity, block.length);
  const bool isInside = block.data == reinterpret_cast<unsigned char*>(source.get()) + 8;
  return wordOf(std::string(reinterpret_cast<char*>(block.data), block.length)) +
         (isInside ? "/inside" : "");
}

const char kLetters[] = "abcdefghijklmnopqrstuvwxyzABCDEF";

TEST(ParamAsBinary, LooksAtTheBytesOfTheSource) {
  Recorder recorder;
  // Format, its text or value, the image.
  expectRows(
      3, [](const Row& row) { return image(filled(numberOf(row[0]), row[1])); },
      "1 abc abc  2 abc abc  14 abc abc  33 a|c a|c  34 abc abc  51 a~ a~  54 a~ a~ "
      "3 abcdefghijklmnopqrstuvwx abcdefghijklmnopqrstuv/inside  4 abcdef abcd/inside "
      "16 abcdef abcd/inside  17 abcdef abcd/inside  6 abc a/inside  7 abc a/inside "
      "52 abc a/inside  8 abcdefghijk abcdefgh/inside  18 abcdefghijk abcdefgh/inside "
      "21 abcdefghijk abcdefgh/inside  42 abcdefghijk abcdefgh/inside "
      "53 abcdefghijk abcdefgh/inside  19 abcdefghijklmnopq abcdefghijklmn/inside "
      "57 abcdefghijklmno abcdefghijkl/inside");
  EXPECT_EQ(image(Param(14, "abc", 7)), "abc");
  EXPECT_EQ(linesOf(recorder), "");
  for (const unsigned format : {0u, 5u, 11u, 15u, 20u, 24u, 25u, 36u, 44u, 48u, 58u}) {
    EXPECT_EQ(image(filled(format, "abc")), "1000");
    EXPECT_EQ(linesOf(recorder),
              "paramAsBinary: invalid parameter type (" + std::to_string(format) + ")\n");
  }
}

// A held text, or the value area.
std::string shown(const Param& parameter) {
  if (parameter.isHeld()) return parameter.word();
  return wordOf(std::string(reinterpret_cast<const char*>(parameter.get()) + 8, 32));
}

// Builds from a binary of each kind; the status, and the target where that is 0.
std::string build(unsigned format, const std::string& bytes) {
  std::string all;
  for (const unsigned kind : {11u, 33u, 34u}) {
    const Param source(kind, bytes);
    Param target(format);
    const std::string before = target.snapshot();
    const int status = paramFromBinary(target.asShort(), source.asShort());
    EXPECT_TRUE(status == 0 || target.snapshot() == before);
    const std::string word = status != 0 ? std::to_string(status)
                                         : std::to_string(target.format()) + ":" + shown(target);
    if (word != all) all += word;
  }
  return all;
}

TEST(ParamFromBinary, BuildsAFixedValueOfItsLengthAlone) {
  Recorder recorder;
  const std::map<unsigned, std::size_t> sizes = {{3, 22},  {4, 4},  {6, 1},  {7, 1},   {8, 8},
                                                 {16, 4},  {17, 4}, {18, 8}, {19, 14}, {42, 8},
                                                 {44, 12}, {52, 1}, {53, 8}, {57, 12}};
  for (const auto& [format, size] : sizes) {
    const std::string bytes(kLetters, size);
    EXPECT_EQ(build(format, bytes),
              std::to_string(format) + ":" + bytes + std::string(32 - size, '\xCC'));
    EXPECT_EQ(linesOf(recorder), "");
    for (const std::size_t wrong : {size - 1, size + 1}) {
      if (wrong == 0) continue;
      EXPECT_EQ(build(format, std::string(kLetters, wrong)), "1002");
      const std::string line = std::string("paramFromBinary: invalid length for ") +
                               findParamFormat(format)->enumerator + " (" + std::to_string(wrong) +
                               ")\n";
      EXPECT_EQ(linesOf(recorder), line + line + line);
    }
    EXPECT_EQ(build(format, "_"), std::to_string(format) + ":" + std::string(32, '\xCC'));
  }
  // A real takes 8 bytes, however long the binary says that it is.
  Param block(34, std::string(kLetters, 8)), real(0);
  block->setValue(DskBinaryBlock{reinterpret_cast<unsigned char*>(block.memory.data()), 0, 3, 3});
  real.asShort()->header.format = DSKREAL;
  EXPECT_EQ(paramFromBinary(real.asShort(), block.asShort()), 0);
  EXPECT_EQ(shown(real).substr(0, 8), "abcdefgh");
}

TEST(ParamFromBinary, BuildsTextsBehindTheHandler) {
  Recorder recorder;
  expectRows(
      3, [](const Row& row) { return build(numberOf(row[0]), row[1]); },
      "1 ab 25:ab  14 ab 25:ab  11 ab 33:ab  34 ab 33:ab  51 a~ 54:a~/2  25 ab 25:ab  33 ab 33:ab "
      "54 a~ 54:a~/2");
  EXPECT_EQ(build(54, "a^"), "1002");
  EXPECT_EQ(build(51, "a^").substr(0, 4), "54:a");
  EXPECT_EQ(linesOf(recorder), "");
  for (const unsigned format : {0u, 5u, 15u, 20u, 24u, 36u, 58u}) {
    const std::string line =
        "paramFromBinary: invalid parameter type (" + std::to_string(format) + ")\n";
    EXPECT_EQ(build(format, "ab"), "1000");
    EXPECT_EQ(linesOf(recorder), line + line + line);
    EXPECT_NE(build(format, "_"), "1000");
  }
  Param target(4);
  EXPECT_EQ(paramFromBinary(target.asShort(), Param(25, "abcd").asShort()), 1000);
  EXPECT_EQ(linesOf(recorder), "");
  // From the offset on; one behind the end is refused unread.
  EXPECT_EQ(paramFromBinary(target.asShort(), Param(34, "abcdef", 2).asShort()), 0);
  EXPECT_EQ(shown(target).substr(0, 5), "cdef\xCC");
  EXPECT_EQ(paramFromBinary(target.asShort(), Param(34, "abc", 5).asShort()), 1002);
}

TEST(ParamNegateValue, NegatesNumbers) {
  Recorder recorder;
  const auto negate = [](const Param& source, auto zero) {
    Param target(0);
    EXPECT_EQ(paramNegateValue(target.asShort(), source.asShort()), 0);
    EXPECT_EQ(std::memcmp(target.get(), source.get(), 8), 0);
    return target->getValue<decltype(zero)>();
  };
  const auto of = [](unsigned format, auto value) {
    Param parameter(format);
    parameter->setValue(value);
    return parameter;
  };
  EXPECT_EQ(negate(of(4, 7), std::int32_t{}), -7);
  EXPECT_EQ(negate(of(4, INT32_MIN), std::int32_t{}), INT32_MIN);
  EXPECT_EQ(negate(of(42, std::int64_t{-5}), std::int64_t{}), 5);
  EXPECT_EQ(negate(of(42, INT64_MIN), std::int64_t{}), INT64_MIN);
  EXPECT_EQ(negate(of(20, 0x7FC01234u), 0u), 0xFFC01234u);
  EXPECT_EQ(negate(of(20, 0u), 0u), 0x80000000u);
  EXPECT_EQ(negate(of(21, 0xC000000000000000u), std::uint64_t{}), 0x4000000000000000u);
  expectRows(
      2,
      [&](const Row& row) {
        DskDecimal stored{};
        EXPECT_TRUE(nomDecimalFromString(row[0].c_str(), &stored));
        const DskDecimal negated = negate(of(19, stored), stored);
        char text[64];
        EXPECT_TRUE(nomDecimalToString(&negated, text, sizeof text, negated.scaleFactor));
        return std::string(text);
      },
      "12.50 -12.50  -0.1 0.1  0.00 0.00  -32768 32768  32768 -32768  9{23} -9{23}  -9{23} 9{23}");
}

TEST(ParamNegateValue, RefusesWhatHasNoNegativeAfterItsHeader) {
  Recorder recorder;
  Param target(4);
  EXPECT_EQ(paramNegateValue(target.asShort(), Param(25, "ab").asShort()), 1000);
  EXPECT_EQ(linesOf(recorder), "paramNegateValue: invalid parameter type (25)\n");
  EXPECT_EQ(target.format(), 25u);
  target.asShort()->header.format = DSKINTEGER;

  Param invalid(19);
  invalid->setValue(DskDecimal{10, 24, {}, {}, {}});
  EXPECT_EQ(paramNegateValue(target.asShort(), invalid.asShort()), 1002);
  EXPECT_EQ(target.format(), 19u);
}

}  // namespace
