// Copies between short parameters, each of which ends where its block of the heap ends.

#include "exactparam.h"

using namespace nomtest;

namespace {

class ShortCopy : public testing::Test {
 protected:
  ~ShortCopy() override {
    nosFailAllocation(0);
    EXPECT_EQ(nosAllocatedBlocks(), _before);
  }

 private:
  std::uint64_t _before = nosAllocatedBlocks();
};

// The columns: source format and text, target format and text ("-" holds nothing yet); status,
// format, usage.more and value of the target.
TEST_F(ShortCopy, KeepsStringsBehindTheHandlerOfTheTarget) {
  const auto check = [](const Row& row) {
    const Param source(numberOf(row[0]), row[1], 3);
    const unsigned format = numberOf(row[2]);
    const Param target = row[3] == "-" ? Param(format) : Param(format, row[3], 0, 9);
    const std::string before = source.snapshot();
    target->header.usage = 8;
    target->header.more = 7;
    const int status = paramcpy(target.asShort(), source.asShort());
    EXPECT_EQ(source.snapshot(), before);
    EXPECT_TRUE(target->getValue<DskHandlerValue>().handler == koraDataHandler);
    EXPECT_EQ(target->getValue<DskHandlerValue>().self, target.get());
    EXPECT_EQ(target->header.carried, 0x44332211u);
    return std::to_string(status) + ":" + std::to_string(target.format()) + ":" +
           std::to_string(target->header.usage) + "." + std::to_string(target->header.more) + ":" +
           target.word();
  };
  expectRows(5, check, R"(
      1  abc 4  -  0:25:2.0:abc  14 abc 1  - 0:25:2.0:abc  25 abc 14 - 0:25:2.0:abc
      1  abc 5  -  0:25:8.7:abc  14 abc 5  - 0:25:8.7:abc  25 abc 5  - 0:25:8.7:abc
      1  abc 25 x  0:25:8.7:abc  14 abc 25 x 0:25:8.7:abc  25 abc 25 x 0:25:8.7:abc
      1  abc 33 -  0:25:2.0:abc  25 abc 54 - 0:25:2.0:abc  25 _   25 x 0:25:8.7:_
      34 abc 4  -  0:33:2.0:abc  33 abc 57 - 0:33:2.0:abc  34 abc 25 - 0:33:2.0:abc
      34 abc 5  -  0:33:8.7:abc  33 abc 5  - 0:33:8.7:abc  33 abc 54 - 0:33:2.0:abc
      34 abc 33 x  0:33:8.7:abc  33 abc 33 x 0:33:8.7:abc  33 _   1  - 0:33:2.0:_
      51 ab~ 4  -  0:54:2.0:ab~/3  54 ab~ 36 - 0:54:2.0:ab~/3  51 _ 0 - 0:54:2.0:_/0
      51 ab~ 5  -  0:54:8.7:ab~/3  54 ab~ 5  - 0:54:8.7:ab~/3  54 ab~ 25 - 0:54:2.0:ab~/3
      51 ab~ 54 x  0:54:8.7:ab~/3  54 ab~ 54 x 0:54:8.7:ab~/3  51 ab~ 33 - 0:54:2.0:ab~/3
      1  x{10} 25 abc 1035:25:8.7:abc  33 x{10} 33 abc 1091:33:8.7:abc
      51 x{10} 54 abc 1124:54:8.7:abc/3)");
}

// Of each format that has no text elsewhere: how many bytes of the value are copied besides the
// header, "-" for the header alone, "!" for nothing.
TEST_F(ShortCopy, CopiesOtherValuesWithTheirHeader) {
  Recorder recorder;
  std::string all;
  for (unsigned format = 1; format <= 60; ++format) {
    if (isAmong(format, {1, 14, 25, 33, 34, 51, 54})) continue;
    std::vector<char> source(40, '\x11'), target(40, '\xEE');
    std::memcpy(source.data(), &format, 2);
    const int status = paramcpy(reinterpret_cast<ShortDskParam*>(target.data()),
                                reinterpret_cast<ShortDskParam*>(source.data()));
    const std::string number = std::to_string(format);
    const auto rest = std::mismatch(source.begin(), source.end(), target.begin()).second;
    const auto copied = rest - target.begin();
    EXPECT_EQ(std::count(rest, target.end(), '\xEE'), 40 - copied) << format;
    EXPECT_EQ(status, copied > 8 ? 0 : 1000);
    EXPECT_EQ(linesOf(recorder),
              status == 0 ? "" : "paramcpy: invalid parameter type (" + number + ")\n");
    all += number +
           (copied == 0   ? "!"
            : copied == 8 ? "-"
                          : ":" + std::to_string(copied - 8)) +
           " ";
  }
  EXPECT_EQ(all,
            "2:28 3:22 4:4 5:24 6:1 7:1 8:8 9- 10- 11- 12- 13- 15- 16:4 17:4 18:8 19:16 20:4 21:8 "
            "22- 23- 24:12 26- 27- 28- 29- 30- 31- 32- 35- 36:32 37- 38- 39- 40- 41- 42:8 43- "
            "44:12 45- 46- 47- 48- 49- 50- 52:1 53:8 55- 56- 57:12 58! 59! 60! ");
  const Param zero(0), target(4);
  EXPECT_EQ(paramcpy(target.asShort(), zero.asShort()), 1000);
  EXPECT_EQ(linesOf(recorder), "paramcpy: invalid parameter type (0)\n");
  EXPECT_EQ(paramcpy(target.asShort(), static_cast<const ShortDskParam*>(nullptr)), 1000);
  EXPECT_EQ(paramcpy(static_cast<ShortDskParam*>(nullptr), target.asShort()), 1000);
  EXPECT_EQ(linesOf(recorder), "");
}

TEST_F(ShortCopy, OfAFreshAnyIsAnAnyOfItsOwn) {
  const Param source(5), target(4);
  EXPECT_EQ(paramcpy(target.asShort(), source.asShort()), 0);
  EXPECT_EQ(paramcpy(target, "abc", 3), 0);
  EXPECT_EQ(target.word(), "abc");
  EXPECT_EQ(source.format(), 5u);
}

TEST_F(ShortCopy, WithoutMemoryHoldsNothingOrStaysAsItWas) {
  for (const unsigned from : {14u, 25u, 34u, 33u, 51u, 54u}) {
    const unsigned format = from < 30 ? 25 : from < 40 ? 33 : 54;
    const Param source(from, std::string(3000, 'x'));
    for (const std::uint64_t n : {1u, 2u}) {
      const Param target(4);
      nosFailAllocation(n);
      EXPECT_EQ(paramcpy(target.asShort(), source.asShort()), 0);
      EXPECT_EQ(target.format(), format);
      EXPECT_EQ(target.word(), "(none)") << n;
    }
    const Param target(format, "abc");
    const std::string before = target.snapshot();
    nosFailAllocation(1);
    EXPECT_EQ(paramcpy(target.asShort(), source.asShort()), 1448);
    EXPECT_EQ(target.snapshot(), before);
    EXPECT_EQ(paramcpy(target.asShort(), target.asShort()), 0);
    EXPECT_EQ(target.snapshot(), before);
  }
}

}  // namespace
