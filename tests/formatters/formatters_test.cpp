// Identifiers and handles as text, against worked cases and, over random identifiers and flags,
// against a model of each style.

#include "sys/formatters.h"

#include "rows.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cinttypes>
#include <cstdio>
#include <cstring>
#include <random>
#include <string>
#include <utility>

namespace {

ClassID classOf(std::uint64_t number) {
  return {{static_cast<std::uint8_t>(number), static_cast<std::uint8_t>(number >> 8),
           static_cast<std::uint8_t>(number >> 16)}};
}
// Instance, class, qualifier, parent, level, sub-identifier and edition.
DskObjectId oidOf(const std::array<std::uint64_t, 7>& n) {
  return {n[0],
          classOf(n[1]),
          static_cast<std::uint8_t>(n[2]),
          classOf(n[3]),
          static_cast<std::uint8_t>(n[4]),
          static_cast<std::uint16_t>(n[5]),
          static_cast<std::uint32_t>(n[6])};
}

// The numbers of an identifier; the text in the general, the newer and the older style, with '_'
// for a blank. A class of 0 takes the lifetime of its parent in the general style alone.
TEST(OidFormatter, ShowsWorkedCases) {
  OidFormatter formatter;
  RelationalDbOidFormatter newer(RelationalDbOidFormatter::kNewerLayout);
  RelationalDbOidFormatter older(RelationalDbOidFormatter::kOlderLayout);
  const auto check = [&](const nomtest::Row& row) {
    std::array<std::uint64_t, 7> numbers;
    std::transform(row.begin(), row.end() - 1, numbers.begin(),
                   [](const std::string& word) { return std::stoull(word); });
    const DskObjectId oid = oidOf(numbers);
    std::string text = formatter.formatOid(oid);
    EXPECT_EQ(formatter.getLength(), text.size());
    text += std::string(",") + newer.formatOid(&oid) + "," + older.formatOid(oid);
    std::replace(text.begin(), text.end(), ' ', '_');
    return text;
  };
  // 4194304 and 12582912 are the lifetimes 1 and 3.
  nomtest::expectRows(8, check, R"(
      17 2048 0 0 0 0 3     [2048.17:3],0002048.00000000000000000017,02048.0000000017
      17 4196352 0 0 0 0 3  [2048.17:3_(t)],0002048.00000000000000000017_(t),02048.0000000017_(t)
      17 2048 7 0 0 0 0     #7#[2048.17],#7#0002048.00000000000000000017,#7#02048.0000000017
      1 2 0 3 0 9 0         [2.1.3],0000002.00000000000000000001.0000003,00002.0000000001.003
      1 2 0 3 4 5 0
      [2.1.3.4.5],0000002.00000000000000000001.0000003.004.00005,00002.0000000001.00003.004.005
      1 0 0 12582915 0 0 0
      [0.1.3_(s)],0000000.00000000000000000001.0000003,00000.0000000001.003)");
  const DskObjectId oid{}, *const none = nullptr;
  EXPECT_STREQ(formatter.formatOid(none), "[<nullptr>]");
  EXPECT_EQ(formatter.getLength(), 11u);
  formatter.brackets = false;
  EXPECT_STREQ(formatter.formatNullPtr(), "<nullptr>");
  newer.version = static_cast<RelationalDbOidFormatter::KoraVersion>(2);
  EXPECT_STREQ(newer.formatOid(oid), "");
}

// The styles by the widths of their numbers. style: 0 general, 1 newer, 2 older, 3 separated.
std::string modelText(const OidFormatter& flags, int style, const char* separator,
                      const DskObjectId& oid, std::size_t room = 79) {
  const std::size_t styles[][7] = {
      {1, 1, 1, 1, 1, 1, 1}, {7, 20, 7, 7, 3, 5, 10}, {5, 10, 3, 5, 3, 3, 10}};
  const std::size_t* const widths = styles[style == 3 ? 1 : style];
  const auto padded = [widths](unsigned place, std::uint64_t value) {
    const std::string digits = std::to_string(value);
    return std::string(std::max(widths[place], digits.size()) - digits.size(), '0') + digits;
  };
  const std::uint32_t classId = oid.classId.number(), parent = oid.parentClassId.number();
  const std::uint32_t mask = flags.lifetimeBits ? 0x3FFFFF : 0xFFFFFF;
  const std::string dot = style != 3 ? "." : separator != nullptr ? separator : "";
  std::string text = padded(0, classId & mask) + dot + padded(1, oid.instanceId);
  if (flags.alwaysFull || (parent != 0 && oid.level != 0)) {
    text +=
        dot + padded(3, parent & mask) + dot + padded(4, oid.level) + dot + padded(5, oid.subId);
  } else if (parent != 0) {
    text += dot + padded(2, parent & mask);
  }
  if (flags.showEdition && oid.edition != 0) text += ":" + padded(6, oid.edition);
  const char* const lifetimes[][4] = {{"", " (t)", "", " (s)"},
                                      {"", " (transient)", "", " (shared transient)"}};
  const bool fallsBack = style == 0 && (classId & mask) == 0;
  const std::uint32_t code = (fallsBack ? parent : classId) >> 22;
  if (flags.lifetimeBits) text += lifetimes[flags.longLifetimeNames][code];
  if (flags.brackets) text = "[" + text + "]";
  text = text.substr(0, room);
  if (oid.qualifier != 0) text = "#" + std::to_string(oid.qualifier) + "#" + text;
  return text.substr(0, room);
}

TEST(OidFormatter, PrintsTheNumbersOfItsStyle) {
  std::mt19937_64 random(20);
  const char* const separators[] = {"/", nullptr, "", "::", "a separator of 24 letters"};
  // 0, the largest, a power of ten or its neighbour, or any of any length.
  const auto number = [&](unsigned bits) {
    const std::uint64_t largest = ~std::uint64_t{0} >> (64 - bits);
    std::uint64_t power = 1;
    for (auto digits = random() % 20; digits > 0 && power <= largest / 10; --digits) power *= 10;
    const std::uint64_t values[] = {0, largest, power - random() % 2,
                                    random() >> (64 - bits) >> random() % bits};
    return values[random() % 4];
  };
  for (int i = 0; i < 40000; ++i) {
    const DskObjectId oid =
        oidOf({number(64), number(24), number(8), number(24), number(8), number(16), number(32)});
    const int style = i % 4;
    const char* const separator = separators[random() % 5];
    OidFormatter plain;
    RelationalDbOidFormatter padded(static_cast<RelationalDbOidFormatter::KoraVersion>(style & 1));
    Custom_Separator_Relational_OID_Formatter separated(separator);
    OidFormatter& formatter = style == 0 ? plain : style == 3 ? separated : padded;
    for (bool OidFormatter::*flag :
         {&OidFormatter::lifetimeBits, &OidFormatter::longLifetimeNames, &OidFormatter::brackets,
          &OidFormatter::showEdition, &OidFormatter::alwaysFull}) {
      formatter.*flag = random() % 2 != 0;
    }
    DskObjectId shown = oid;
    const char* text = nullptr;
    if (i % 3 == 0) {
      text = formatter.formatOid(oid);
    } else if (i % 3 == 1) {
      shown.edition = 0;
      OidKey key;
      std::memcpy(&key, &oid, sizeof key);
      text = formatter.formatOid(&key);
    } else {
      shown = {oid.instanceId, oid.classId, oid.qualifier, {}, 0, 0, 0};
      text = formatter.formatOid(ShortDskObjectId{oid.instanceId, oid.classId, oid.qualifier});
    }
    ASSERT_EQ(text, modelText(formatter, style, separator, shown)) << "seed 20, case " << i;
    ASSERT_EQ(formatter.getLength(), std::strlen(text));

    // Straight from the rendering step, into a block of any size.
    auto length = static_cast<std::uint32_t>(random() % 200);
    std::string block(length + 8, '~'), stored;
    shown = oid;
    shown.qualifier = 0;
    if (length != 0) stored = modelText(formatter, style, separator, shown, length - 1) + '\0';
    formatter.doFormatOid(oid.classId, oid.instanceId, oid.parentClassId, oid.level, oid.subId,
                          oid.edition, block.data(), length);
    ASSERT_EQ(block.substr(0, stored.size()), stored);
    ASSERT_EQ(block.substr(block.size() - 8), "~~~~~~~~") << stored;
    ASSERT_EQ(length, stored.empty() ? 0 : stored.size() - 1);
  }
}

// The other formatter differs in all that is copied.
template <class Formatter>
void expectCopies(Formatter original, Formatter other, const char* text) {
  const DskObjectId oid = oidOf({1, 2, 0, 3, 0, 0, 0});
  original.lifetimeBits = original.brackets = original.showEdition = false;
  original.longLifetimeNames = original.alwaysFull = true;
  original.formatOid(oid);
  const Formatter copy(original);
  other = copy;
  EXPECT_STREQ(other.getBuffer(), text);
  EXPECT_EQ(other.getLength(), std::strlen(text));
  EXPECT_TRUE(!other.lifetimeBits && !other.brackets && !other.showEdition);
  EXPECT_TRUE(other.longLifetimeNames && other.alwaysFull);
  EXPECT_STREQ(other.formatOid(oid), text);
}
TEST(OidFormatter, CopiesItsTextFlagsAndStyle) {
  using Relational = RelationalDbOidFormatter;
  using Separated = Custom_Separator_Relational_OID_Formatter;
  expectCopies(OidFormatter(), OidFormatter(), "2.1.3.0.0");
  expectCopies(Relational(Relational::kOlderLayout), Relational(Relational::kNewerLayout),
               "00002.0000000001.00003.000.000");
  expectCopies(Separated("-"), Separated("+"), "0000002-00000000000000000001-0000003-000-00000");
}

TEST(OidFormatter, AsksTheClassThatIsDerivedFromIt) {
  struct Instance : RelationalDbOidFormatter {
    Instance() : RelationalDbOidFormatter(kNewerLayout) {}
    void doFormatOid(ClassID classId, std::uint64_t instanceId, ClassID parentClassId,
                     std::uint8_t level, std::uint16_t subId, std::uint32_t edition, char* output,
                     std::uint32_t& outputLength) override {
      const std::uint32_t room = outputLength;
      outputLength = 1000;  // as a formatting function that tells the length it needs
      std::snprintf(output, room, "%u %" PRIu64 " %u %u %u %u", classId.number(), instanceId,
                    parentClassId.number(), unsigned{level}, unsigned{subId}, edition);
    }
  };
  Instance formatter;
  EXPECT_STREQ(formatter.formatOid(oidOf({1, 2, 0, 3, 4, 5, 6})), "2 1 3 4 5 6");
  EXPECT_STREQ(formatter.formatOid(OidKey{1, classOf(2), 70, classOf(3), 4, 5}), "#70#2 1 3 4 5 0");
  EXPECT_EQ(formatter.getLength(), 15u);
  EXPECT_STREQ(formatter.formatOid(ShortDskObjectId{1, classOf(2), 0}), "2 1 0 0 0 0");
}

TEST(DskHandleFormatter, ShowsTagsAsLettersOnlyInUpperCase) {
  const std::pair<DskHandle, std::string> cases[] = {
      {{0x1234567800000000, 0, 0, {'Q', 'q', 0}, 0}, "0-0-0-Q7100"},
      {{0xFFFFFFFFFFFFFFFF, 65535, 65535, {'A', 'Z', '@'}, 0}, "FFFFFFFF-65535-65535-AZ40"},
      {{0x1F, 3, 4, {'Q', 'W', 0}, 0}, "1F-3-4-QW00"},
      {{0xABC, 1, 20, {'[', 0xC4, 0xFF}, 0}, "ABC-1-20-5BC4FF"}};
  for (const auto& [handle, text] : cases) {
    DskHandleFormatter formatter;
    EXPECT_EQ(formatter.format(&handle), text);
    formatter.braces = true;
    EXPECT_EQ(formatter.format(&handle), "{" + text + "}");
    EXPECT_STREQ(formatter.format(nullptr), "{<null>}");
  }
}

TEST(HoleFinder, FindsTheLowestFreeSlotAndSharesItsMarks) {
  HoleFinder finder(3);
  for (const unsigned outside : {0u, 4u, 0xFFFFFFFFu}) finder.markSlot(outside);
  EXPECT_EQ(finder.getNextSlot(), 1u);
  for (const unsigned slot : {1u, 2u}) finder.markSlot(slot);
  EXPECT_EQ(finder.getNextSlot(), 3u);
  {
    HoleFinder other(100);
    other = finder;
    other.markSlot(3);
  }
  EXPECT_EQ(finder.getNextSlot(), 4u);
  EXPECT_EQ(HoleFinder(0).getNextSlot(), 1u);
}

TEST(Volatility, HasNames) {
  const char* const names[] = {"Volatile", "Frozen", "Stable"};
  for (std::uint32_t value = 0; value < 12; ++value) {
    const char* const name = value % 4 == 0 ? names[value / 4] : "Unknown";
    EXPECT_STREQ(decodeVolatility(static_cast<ObjectVolatility>(value)), name);
    EXPECT_STREQ(decodeDbVolatility(static_cast<DbObjectVolatility>(value + 1)), name);
  }
  EXPECT_STREQ(decodeDbVolatility(kDbTransparent), "Transparent");
}

}  // namespace
