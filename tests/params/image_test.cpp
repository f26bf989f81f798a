// Values as bytes and back, and negation.

#include "exactparam.h"

#include <cmath>
#include <map>

using namespace nomtest;

namespace {

using ParamAsBinary = Checked;
using ParamFromBinary = Checked;
using ParamNegateValue = Checked;

std::string refusal(const char* operation, unsigned format) {
  return std::string(operation) + ": invalid parameter type (" + std::to_string(format) + ")\n";
}

// The image of a source in words: the bytes, and whether they lie in its value area.
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

TEST_F(ParamAsBinary, LooksAtTheBytesOfTheSource) {
  expectRows(
      3, [](const Row& row) { return image(Param(numberOf(row[0]), row[1])); },
      "1 abc abc  2 abc abc  14 abc abc  14 abc@7 abc  33 a|c a|c  34 abc abc  51 a~ a~  54 a~ a~");
  for (const unsigned format : {0u, 5u, 11u, 15u, 20u, 24u, 25u, 36u, 48u, 58u}) {
    EXPECT_EQ(image(Param(format, "abc")), "1000");
    EXPECT_EQ(lines(), refusal("paramAsBinary", format));
  }
  const Param itself(51, "a~");
  EXPECT_EQ(paramAsBinary(itself.asShort(), itself.asShort()), 0);
  EXPECT_EQ(itself.word(), "a~");
}

TEST_F(ParamAsBinary, PassesTheStatusOfAHandlerOn) {
  for (const unsigned format : {33u, 54u}) {
    const Param held(format, "abcd"), target(4);
    held->setValue<DskDataHandler>(watchingHandler);
    for (const auto convert : {paramAsBinary, paramFromBinary}) {
      callsUntilFailure = 1;
      const bool isBinary = convert == paramAsBinary || format == 33;
      EXPECT_EQ(convert(target.asShort(), held.asShort()), isBinary ? 77 : 1000);
    }
    callsUntilFailure = 0;
  }
}

// Builds from a binary of each kind; the status, and where that is 0 the format and the held text
// or the value area.
std::string build(unsigned format, const std::string& bytes) {
  std::string all;
  for (const unsigned kind : {11u, 33u, 34u}) {
    const Param source(kind, bytes);
    Param target(format);
    const std::string before = target.snapshot();
    const int status = paramFromBinary(target.asShort(), source.asShort());
    EXPECT_TRUE(status == 0 || target.snapshot() == before);
    const auto* const value = reinterpret_cast<const char*>(target.get()) + 8;
    const std::string shown = target.isHeld() ? target.word() : wordOf(std::string(value, 32));
    const std::string word =
        std::to_string(status) + (status == 0 ? ":" + std::to_string(target.format()) + shown : "");
    if (word != all) all += word;
  }
  return all;
}

TEST_F(ParamFromBinary, RestoresAFixedValueFromItsImageAlone) {
  const std::string letters = "abcdefghijklmnopqrstuvwxyzABCDEF";
  const std::map<unsigned, std::size_t> sizes = {{3, 22}, {4, 4},   {6, 1},  {7, 1},   {8, 8},
                                                 {16, 4}, {17, 4},  {18, 8}, {19, 14}, {21, 8},
                                                 {42, 8}, {44, 12}, {52, 1}, {53, 8},  {57, 12}};
  for (const auto& [format, size] : sizes) {
    const std::string bytes = letters.substr(0, size), number = "0:" + std::to_string(format);
    EXPECT_EQ(image(Param(format, letters)), format == 44 ? "1000" : bytes + "/inside");
    EXPECT_EQ(lines(), format == 44 ? refusal("paramAsBinary", 44) : "");
    EXPECT_EQ(build(format, bytes), number + bytes + std::string(32 - size, '\xCC'));
    EXPECT_EQ(build(format, "_"), number + std::string(32, '\xCC'));
    for (const std::size_t wrong : {size - 1, size + 1}) {
      if (wrong == 0 || format == 21) continue;
      EXPECT_EQ(build(format, letters.substr(0, wrong)), "1002");
      const std::string line = std::string("paramFromBinary: invalid length for ") +
                               findParamFormat(format)->enumerator + " (" + std::to_string(wrong) +
                               ")\n";
      EXPECT_EQ(lines(), line + line + line);
    }
  }
  // A real takes 8 bytes, however long the binary says that it is.
  const Param block(34, letters), real(21);
  block->setValue(DskBinaryBlock{reinterpret_cast<unsigned char*>(block.memory.data()), 0, 3, 3});
  EXPECT_EQ(paramFromBinary(real.asShort(), block.asShort()), 0);
  EXPECT_EQ(image(real), "abcdefgh/inside");
}

TEST_F(ParamFromBinary, BuildsTextsBehindTheHandler) {
  expectRows(
      3, [](const Row& row) { return build(numberOf(row[0]), row[1]); },
      "1 ab 0:25ab  14 ab 0:25ab  25 ab 0:25ab  11 ab 0:33ab  34 ab 0:33ab  33 ab 0:33ab "
      "51 a~ 0:54a~/2  54 a~ 0:54a~/2  54 a^ 1002");
  EXPECT_EQ(build(51, "a^").substr(0, 5), "0:54a");
  for (const unsigned format : {0u, 5u, 15u, 20u, 24u, 36u, 58u}) {
    const std::string line = refusal("paramFromBinary", format);
    EXPECT_EQ(build(format, "ab"), "1000");
    EXPECT_EQ(lines(), line + line + line);
    EXPECT_NE(build(format, "_"), "1000");
  }
  const Param target(4);
  EXPECT_EQ(paramFromBinary(target.asShort(), Param(25, "abcd").asShort()), 1000);
  // From the offset on; one behind the end is refused unread.
  EXPECT_EQ(paramFromBinary(target.asShort(), Param(34, "abcdef@2").asShort()), 0);
  EXPECT_EQ(image(target), "cdef/inside");
  EXPECT_EQ(paramFromBinary(target.asShort(), Param(34, "abc@5").asShort()), 1002);
}

TEST_F(ParamNegateValue, NegatesNumbers) {
  const auto check = [](const Row& row) {
    const Param source(numberOf(row[0]), row[1]), target(0);
    std::fill_n(reinterpret_cast<char*>(target.get()), 8, '~');
    EXPECT_EQ(paramNegateValue(target.asShort(), source.asShort()), 0);
    EXPECT_EQ(std::memcmp(target.get(), source.get(), 8), 0);
    EXPECT_EQ(target.snapshot().substr(22, 18), std::string(18, '\xCC')) << "from the padding on";
    char text[64] = "";
    EXPECT_EQ(paramToString(target, text, sizeof text), 0);
    return std::signbit(target->getValue<float>()) && row[1] == "=nan" ? "-nan" : std::string(text);
  };
  expectRows(3, check, R"(
      4 =7 -7            4 =-2147483648 -2147483648    42 =-9223372036854775808 -9223372036854775808
      42 =-5 5           20 =nan -nan    20 =0 -0      21 =-2 2        21 =0.5 -0.5
      19 =12.50 -12.50   19 =-0.1 0.1    19 =0.00 0.00 19 =-32768 32768 19 =32768 -32768
      19 =9{23} -9{23}   19 =-9{23} 9{23})");
}

TEST_F(ParamNegateValue, RefusesWhatHasNoNegativeAfterItsHeader) {
  const Param target(4), invalid(19), text(25, "ab");
  std::fill_n(reinterpret_cast<char*>(target.get()), 8, '~');
  EXPECT_EQ(paramNegateValue(target.asShort(), text.asShort()), 1000);
  EXPECT_EQ(lines(), refusal("paramNegateValue", 25));
  EXPECT_EQ(std::memcmp(target.get(), text.get(), 8), 0);
  target.asShort()->header.format = DSKINTEGER;
  invalid->setValue(DskDecimal{10, 24, {}, {}, {}});
  EXPECT_EQ(paramNegateValue(target.asShort(), invalid.asShort()), 1002);
  EXPECT_NE(lines(), "");
  EXPECT_EQ(target.format(), 19u);
}

}  // namespace
