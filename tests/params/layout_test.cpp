// The worked bytes of docs/formats/parameter.md, datetime.md and objectid.md.

#include "sys/datetime.h"
#include "sys/decimals.h"
#include "sys/formatters.h"
#include "sys/params.h"

#include <gtest/gtest.h>

#include <vector>

namespace {

template <class Record>
void expectBytes(const Record& record, const std::vector<int>& expected) {
  const auto* const bytes = reinterpret_cast<const unsigned char*>(&record);
  EXPECT_EQ(std::vector<int>(bytes, bytes + expected.size()), expected);
}

TEST(StoredBytes, OfParametersAreThoseOfTheirPage) {
  const DskHeader header{0x13};
  ShortDskParam param;
  param.header = DskParamHeader(header);
  DskDecimal stored{};
  ASSERT_TRUE(nomDecimalFromString("12.50", &stored));
  param.setValue(stored);
  // clang-format off
  expectBytes(param, {0x13, 0, 0, 0, 0, 0, 0, 0, 0x02, 0x02, 0xE2, 0x04, 0xAA, 0xAA, 0xAA, 0xAA});
}

}  // namespace
