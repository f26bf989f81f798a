// Copies between short parameters, each of which ends where its block of the heap ends.

#include "exactparam.h"

using namespace nomtest;

namespace {

using ShortCopy = Checked;

// A text becomes a held one, of the target's own handler where that takes it.
TEST_F(ShortCopy, KeepsTextsBehindTheHandlerOfTheTarget) {
  for (const unsigned from : kTexts) {
    if (Param::isInline(from)) continue;
    const int tooLong = tooLongOf(from);
    const unsigned held = tooLong == 1035 ? 25 : tooLong == 1091 ? 33 : 54;
    const std::string suffix = held == 54 ? "/3" : "";
    const Param source(from, "ab~@3"), full(held, "abc", 9);
    const std::string before = source.snapshot();
    EXPECT_EQ(paramcpy(full.asShort(), Param(from, std::string(10, 'x')).asShort()), tooLong);
    EXPECT_EQ(full.word(), "abc" + suffix);
    EXPECT_EQ(paramcpy(full.asShort(), Param(from, "_").asShort()), 0);
    EXPECT_EQ(full.word(), held == 54 ? "_/0" : "_");
    EXPECT_EQ(full.held()->maximum(), 9u);
    for (const unsigned to : {0u, 1u, 4u, 5u, 14u, 25u, 33u, 36u, 54u, 57u}) {
      SCOPED_TRACE(testing::Message() << from << " to " << to);
      const Param target(to);
      EXPECT_EQ(paramcpy(target.asShort(), source.asShort()), 0);
      EXPECT_EQ(source.snapshot(), before);
      EXPECT_EQ(target.format(), held);
      EXPECT_EQ(target.word(), "ab~" + suffix);
      EXPECT_EQ(target.held()->maximum(), kKoraNoMaximum);
      const auto value = target->getValue<DskHandlerValue>();
      EXPECT_TRUE(value.handler == koraDataHandler && value.self == target.get());
      const bool isOwn = to == 5 || to == held;
      EXPECT_EQ(target->header.usage * 10 + target->header.more, isOwn ? 35 : 20);
      EXPECT_EQ(target->header.carried, 0x44332211u);
    }
  }
}

// The columns: source and target format; the statuses when the first, the second and no call of a
// handler fails, the codes sent and the text then. The owner of UTF-8 says that it has 3
// characters.
TEST_F(ShortCopy, ReachesHeldTextsByTheirHandlersAndReturnsAFailure) {
  const auto check = [](const Row& row) {
    std::string statuses;
    for (const unsigned failing : {1u, 2u, 0u}) {
      const Param source(numberOf(row[0]), "abcd"), target(numberOf(row[1]));
      auto* const bytes = reinterpret_cast<unsigned char*>(source.memory.data());
      if (source.format() == 51) source->setValue(StringUtf8Info{bytes, 4, 3, 4});
      if (source.isHeld()) source->setValue<DskDataHandler>(watchingHandler);
      if (target.format() != 4) target->setValue<DskDataHandler>(watchingHandler);
      const std::string before = target.snapshot();
      codesSent.clear();
      callsUntilFailure = failing;
      const int status = paramcpy(target.asShort(), source.asShort());
      callsUntilFailure = 0;
      EXPECT_TRUE(status == 0 || target.snapshot() == before);
      statuses += std::to_string(status) + "/";
      if (failing == 0) statuses += codesSent + ":" + target.word();
    }
    return statuses;
  };
  expectRows(3, check, R"(
      25 25 77/77/0/,24,18:abcd  33 33 77/77/0/,39,34:abcd  54 54 77/77/0/,64,66:abcd/4
      25 4  77/0/0/,24:abcd      33 4  77/0/0/,39:abcd      54 4  77/0/0/,64:abcd/4
      14 5  77/0/0/,18:abcd      34 5  77/0/0/,34:abcd      51 5  77/0/0/,66:abcd/3
      51 54 77/0/0/,66:abcd/3    51 4  0/0/0/:abcd/3)");
}

// Of each format that has no text elsewhere: how many bytes of the value are copied besides the
// header, "-" for the header alone, "!" for nothing.
TEST_F(ShortCopy, CopiesOtherValuesWithTheirHeader) {
  std::string all;
  for (unsigned format = 0; format <= 60; ++format) {
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
    EXPECT_EQ(lines(), status == 0 ? "" : "paramcpy: invalid parameter type (" + number + ")\n");
    const std::string size = ":" + std::to_string(copied - 8);
    all += number + (copied == 0 ? "!" : copied == 8 ? "-" : size) + " ";
  }
  EXPECT_EQ(all,
            "0! 2:28 3:22 4:4 5:24 6:1 7:1 8:8 9- 10- 11- 12- 13- 15- 16:4 17:4 18:8 19:16 20:4 "
            "21:8 22- 23- 24:12 26- 27- 28- 29- 30- 31- 32- 35- 36:32 37- 38- 39- 40- 41- 42:8 43- "
            "44:12 45- 46- 47- 48- 49- 50- 52:1 53:8 55- 56- 57:12 58! 59! 60! ");
  const Param target(4);
  EXPECT_EQ(paramcpy(target.asShort(), static_cast<const ShortDskParam*>(nullptr)), 1000);
  EXPECT_EQ(paramcpy(static_cast<ShortDskParam*>(nullptr), target.asShort()), 1000);
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
    const Param source(from, std::string(3000, 'x')), held(format, "abc");
    for (const std::uint64_t n : {1u, 2u}) {
      const Param target(4);
      nosFailAllocation(n);
      EXPECT_EQ(paramcpy(target.asShort(), source.asShort()), 0);
      EXPECT_EQ(target.format(), format);
      EXPECT_EQ(target.word(), "(none)") << n;
    }
    const std::string before = held.snapshot();
    nosFailAllocation(1);
    EXPECT_EQ(paramcpy(held.asShort(), source.asShort()), 1448);
    EXPECT_EQ(paramcpy(held.asShort(), held.asShort()), 0);
    EXPECT_EQ(held.snapshot(), before);
  }
}

}  // namespace
