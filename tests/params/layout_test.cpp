// The worked bytes of docs/formats: parameter.md, datetime.md and objectid.md.

#include "exactparam.h"
#include "sys/datetime.h"
#include "sys/decimals.h"
#include "sys/formatters.h"

#include <cstdio>
#include <utility>

template <class Record>
static std::string hexOf(const Record& record, std::size_t size = sizeof(Record)) {
  char text[3 * sizeof record + 1];
  for (std::size_t i = 0; i < size; ++i)
    std::snprintf(text + 3 * i, 4, " %02X", reinterpret_cast<const unsigned char*>(&record)[i]);
  return text + 1;
}

TEST(StoredBytes, OfParametersAreThoseOfTheirPage) {
  ShortDskParam price = ShortDskParam::allZero();
  price.header.format = DSKDECIMAL;
  ASSERT_TRUE(nomDecimalFromString("12.50", reinterpret_cast<DskDecimal*>(price.value)));
  EXPECT_EQ(hexOf(price, 22), "13 00 00 00 00 00 00 00 02 02 E2 04 AA AA AA AA AA AA AA AA 00 00");
  ShortDskParam block(DSKSTRINGBLOCK, 2, 1);
  block.header.carried = 0;
  auto* const text = reinterpret_cast<char*>(0x00007F0012345678);
  block.setValue(DskStringBlock{.data = text, .offset = 100, .length = 10, .capacity = 64});
  EXPECT_EQ(hexOf(block, 28),
            "0E 00 02 01 00 00 00 00 78 56 34 12 00 7F 00 00 64 00 00 00 0A 00 00 00 40 00 00 00");
}
TEST(StoredBytes, OfDatesAreThoseOfTheirPage) {
  const DskTimeStamp stamp = julianDayTime(5, 1, 2024, 14, 7, 9, 42);
  const DskTimeStampOffset zoned = {stamp.date, stamp.time, -780};
  EXPECT_EQ(hexOf(zoned), "9B 8A 25 00 F2 96 07 03 F4 FC FF FF");
  EXPECT_EQ(hexOf(DskTimeStampInterval{-93784005}), "3B F8 68 FA FF FF FF FF");
}
TEST(StoredBytes, OfIdentifiersAreThoseOfTheirPage) {
  const DskObjectId oid = {17, {{0, 8, 0x40}}, 7, {{3, 0, 0}}, 4, 5, 3};
  EXPECT_EQ(hexOf(oid), "11 00 00 00 00 00 00 00 00 08 40 07 03 00 00 04 05 00 03 00 00 00");
  OidFormatter general, longNames, whole, full;
  RelationalDbOidFormatter newer(RelationalDbOidFormatter::kNewerLayout), edition(newer);
  RelationalDbOidFormatter older(RelationalDbOidFormatter::kOlderLayout);
  Custom_Separator_Relational_OID_Formatter separated("_");
  longNames.longLifetimeNames = full.alwaysFull = edition.showEdition = true;
  whole.lifetimeBits = false;
  const std::pair<OidFormatter*, const char*> texts[] = {
      {&general, "#7#[2048.17.3.4.5:3 (t)]"},
      {&longNames, "#7#[2048.17.3.4.5:3 (transient)]"},
      {&whole, "#7#[4196352.17.3.4.5:3]"},
      {&newer, "#7#0002048.00000000000000000017.0000003.004.00005 (t)"},
      {&older, "#7#02048.0000000017.00003.004.005 (t)"},
      {&edition, "#7#0002048.00000000000000000017.0000003.004.00005:0000000003 (t)"},
      {&separated, "#7#0002048_00000000000000000017_0000003_004_00005 (t)"}};
  for (const auto& [formatter, text] : texts) EXPECT_STREQ(formatter->formatOid(oid), text);
  OidKey key;
  ShortDskObjectId instance;
  std::memcpy(&key, &oid, sizeof key);
  std::memcpy(&instance, &oid, sizeof instance);
  EXPECT_STREQ(general.formatOid(key), "#7#[2048.17.3.4.5 (t)]");
  EXPECT_STREQ(general.formatOid(instance), "#7#[2048.17 (t)]");
  EXPECT_STREQ(full.formatOid(instance), "#7#[2048.17.0.0.0 (t)]");
  const DskHandle handle = {0x1F, 3, 4, {'Q', 'W', 0}, 0};
  EXPECT_EQ(hexOf(handle), "1F 00 00 00 00 00 00 00 03 00 04 00 51 57 00 00");
}
