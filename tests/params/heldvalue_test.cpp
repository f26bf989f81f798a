// What the functions on held values send to a data handler, whose failure they return; and the
// DSKANY, which its first operation settles.

#include "exactparam.h"

#include <functional>

using namespace nomtest;

namespace {

TEST(HeldValue, IsReachedByCodesWhoseFailureIsReturned) {
  char* characters = nullptr;
  unsigned char* bytes = nullptr;
  std::uint32_t length = 0, charLength = 0;
  StringUtf8Info view{};
  const auto getString = [&](DskParam* p) {
    const auto value = p->getValue<DskHandlerValue>();
    return koraGetString(&value, &view);
  };
  const struct {
    unsigned format;
    std::string codes;
    std::function<int(DskParam*)> run;
  } rows[] = {
      {25, ",25", paramDeleteKoraString},
      {33, ",40", paramDeleteKoraBinary},
      {54, ",25", paramDeleteKoraStringUtf8},
      {25, ",25", paramDeleteKoraAny},
      {33, ",40", paramDeleteKoraAny},
      {54, ",25", paramDeleteKoraAny},
      {25, ",16", getString},
      {25, ",18", [](DskParam* p) { return koraSetString(p, "x", 1); }},
      {25, ",16", [&](DskParam* p) { return DerefString(p, &characters); }},
      {33, ",36,32", [&](DskParam* p) { return DerefBinary(p, &bytes, &length); }},
      {54, ",64", [&](DskParam* p) { return DerefStringUtf8(p, &bytes, &length, &charLength); }},
  };
  for (const auto& [format, codes, run] : rows) {
    const auto calls = static_cast<unsigned>(std::count(codes.begin(), codes.end(), ','));
    for (unsigned failing = 0; failing <= calls; ++failing) {
      const Param param(format, "abc");
      param->setValue<DskDataHandler>(watchingHandler);
      characters = nullptr;
      bytes = nullptr;
      length = charLength = 99;
      codesSent.clear();
      callsUntilFailure = failing;
      EXPECT_EQ(run(param), failing == 0 ? 0 : 77) << codes << " of " << format;
      callsUntilFailure = 0;
      if (failing == 0) {
        EXPECT_EQ(codesSent, codes) << format;
      } else {
        EXPECT_TRUE(!characters && !bytes && length == 99 && charLength == 99) << codes;
      }
    }
  }
}

// The columns: code, format and value then.
TEST(HeldValue, OfAnAnyIsSettledByItsFirstCode) {
  const auto check = [](const Row& row) {
    const Param any(4);
    EXPECT_EQ(paramCreateKoraAny(any, 9), 0);
    const auto value = any->getValue<DskHandlerValue>();
    EXPECT_TRUE(value.handler == koraDataHandler && value.item == nullptr && value.self == any);
    const DskParamHeader& header = any.asShort()->header;
    EXPECT_EQ(header.usage * 256 + header.more, 9 * 256);
    EXPECT_EQ(header.carried, 0x44332211u);
    EXPECT_EQ(any.format(), 5u);
    std::vector<char> text = bytesOf("ab~");
    StringUtf8Info argument{reinterpret_cast<unsigned char*>(text.data()), 4, 3, 0};
    std::uint32_t count = 4;
    EXPECT_EQ(koraDataHandler(static_cast<std::uint8_t>(numberOf(row[0])), any, &argument, &count),
              0);
    return std::to_string(any.format()) + ":" + any.word();
  };
  expectRows(2, check, "23 25:ab~  66 54:ab~/3  38 33:ab~");
}

}  // namespace
