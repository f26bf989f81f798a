// Identifiers and handles as text, against worked cases and, over random identifiers and flags,
// against the format strings of each style, printed by the C library.

#include "sys/formatters.h"

#include <gtest/gtest.h>

#include <cinttypes>
#include <cstdio>
#include <cstring>
#include <random>
#include <string>
#include <utility>

namespace {

ClassID classOf(std::uint32_t number) {
  return {{static_cast<std::uint8_t>(number), static_cast<std::uint8_t>(number >> 8),
           static_cast<std::uint8_t>(number >> 16)}};
}

constexpr std::uint32_t kTransient = 1u << 22;
constexpr std::uint32_t kShared = 3u << 22;

TEST(OidFormatter, ShowsWorkedCases) {
  const struct {
    DskObjectId oid;
    const char* plain;
    const char* newer;
    const char* older;
  } cases[] = {
      {{17, classOf(2048), 0, {}, 0, 0, 3},
       "[2048.17:3]",
       "0002048.00000000000000000017",
       "02048.0000000017"},
      {{17, classOf(2048 | kTransient), 0, {}, 0, 0, 3},
       "[2048.17:3 (t)]",
       "0002048.00000000000000000017 (t)",
       "02048.0000000017 (t)"},
      {{17, classOf(2048), 7, {}, 0, 0, 0},
       "#7#[2048.17]",
       "#7#0002048.00000000000000000017",
       "#7#02048.0000000017"},
      {{1, classOf(2), 0, classOf(3), 0, 9, 0},
       "[2.1.3]",
       "0000002.00000000000000000001.0000003",
       "00002.0000000001.003"},
      {{1, classOf(2), 0, classOf(3), 4, 5, 0},
       "[2.1.3.4.5]",
       "0000002.00000000000000000001.0000003.004.00005",
       "00002.0000000001.00003.004.005"},
      // The lifetime falls back to the parent in the general style alone.
      {{1, classOf(0), 0, classOf(3 | kShared), 0, 0, 0},
       "[0.1.3 (s)]",
       "0000000.00000000000000000001.0000003",
       "00000.0000000001.003"},
      {{1, classOf(kTransient), 0, classOf(3 | kShared), 0, 0, 0},
       "[0.1.3 (s)]",
       "0000000.00000000000000000001.0000003 (t)",
       "00000.0000000001.003 (t)"},
      {{1, classOf(2), 0, classOf(kTransient), 0, 0, 0},
       "[2.1.0]",
       "0000002.00000000000000000001.0000000",
       "00002.0000000001.000"},
      {{1, classOf(2 | 2u << 22), 0, {}, 5, 6, 0},
       "[2.1]",
       "0000002.00000000000000000001",
       "00002.0000000001"},
  };
  for (const auto& [oid, plain, newer, older] : cases) {
    OidFormatter formatter;
    RelationalDbOidFormatter newerFormatter(RelationalDbOidFormatter::kNewerLayout);
    RelationalDbOidFormatter olderFormatter(RelationalDbOidFormatter::kOlderLayout);
    EXPECT_STREQ(formatter.formatOid(oid), plain);
    EXPECT_EQ(formatter.getLength(), std::strlen(plain));
    EXPECT_STREQ(newerFormatter.formatOid(&oid), newer);
    EXPECT_STREQ(olderFormatter.formatOid(oid), older);
  }
  const DskObjectId* const none = nullptr;
  OidFormatter formatter;
  EXPECT_STREQ(formatter.formatOid(none), "[<nullptr>]");
  EXPECT_EQ(formatter.getLength(), 11u);
  formatter.brackets = false;
  EXPECT_STREQ(formatter.formatNullPtr(), "<nullptr>");
  RelationalDbOidFormatter unknown(RelationalDbOidFormatter::kNewerLayout);
  unknown.formatOid(cases[0].oid);
  unknown.version = static_cast<RelationalDbOidFormatter::KoraVersion>(2);
  EXPECT_STREQ(unknown.formatOid(cases[0].oid), "");
}

// The styles by their format strings. style: 0 general, 1 newer, 2 older, 3 with a separator.
std::string printed(const OidFormatter& flags, int style, const char* separator,
                    const DskObjectId& oid) {
  const std::uint32_t classId = oid.classId.number();
  const std::uint32_t parentId = oid.parentClassId.number();
  const std::uint32_t mask = flags.lifetimeBits ? 0x3FFFFF : 0xFFFFFF;
  const bool fallsBack = style == 0 && (classId & mask) == 0;
  const std::uint32_t code = (fallsBack ? parentId : classId) >> 22;
  std::string lifetime;
  if (flags.lifetimeBits && code == 1) lifetime = flags.longLifetimeNames ? " (transient)" : " (t)";
  if (flags.lifetimeBits && code == 3) {
    lifetime = flags.longLifetimeNames ? " (shared transient)" : " (s)";
  }
  char edition[16] = "";
  if (flags.showEdition && oid.edition != 0) {
    std::snprintf(edition, sizeof edition, style == 0 ? ":%u" : ":%010u", oid.edition);
  }
  const char* const start[] = {"%u%s%" PRIu64, "%07u%s%020" PRIu64, "%05u%s%010" PRIu64};
  const char* const middle[] = {"%s%u", "%s%07u", "%s%03u"};
  const char* const full[] = {"%s%u%s%u%s%u", "%s%07u%s%03u%s%05u", "%s%05u%s%03u%s%03u"};
  const int row = style == 3 ? 1 : style;
  const char* const dot = style == 3 ? separator : ".";
  char numbers[400];
  int at = std::snprintf(numbers, sizeof numbers, start[row], classId & mask, dot, oid.instanceId);
  char* const rest = numbers + at;
  const std::size_t room = sizeof numbers - static_cast<std::size_t>(at);
  if (!flags.alwaysFull && parentId != 0 && oid.level == 0) {
    std::snprintf(rest, room, middle[row], dot, parentId & mask);
  } else if (flags.alwaysFull || parentId != 0) {
    std::snprintf(rest, room, full[row], dot, parentId & mask, dot, unsigned{oid.level}, dot,
                  unsigned{oid.subId});
  }
  const std::string inside = std::string(numbers) + edition + lifetime;
  std::string text = (flags.brackets ? "[" + inside + "]" : inside).substr(0, 79);
  if (oid.qualifier != 0) text = "#" + std::to_string(oid.qualifier) + "#" + text;
  return text.substr(0, 79);
}

TEST(OidFormatter, PrintsAsTheFormatStringsOfItsStyle) {
  std::mt19937_64 random(20);
  const char* const separators[] = {"/", "", "::", "a separator of 24 letters"};
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
    const DskObjectId oid = {number(64),
                             classOf(static_cast<std::uint32_t>(number(24))),
                             static_cast<std::uint8_t>(number(8)),
                             classOf(static_cast<std::uint32_t>(number(24))),
                             static_cast<std::uint8_t>(number(8)),
                             static_cast<std::uint16_t>(number(16)),
                             static_cast<std::uint32_t>(number(32))};
    const int style = i % 4;
    const char* const separator = separators[random() % 4];
    OidFormatter plain;
    RelationalDbOidFormatter padded(static_cast<RelationalDbOidFormatter::KoraVersion>(style & 1));
    Custom_Separator_Relational_OID_Formatter separated(separator);
    OidFormatter& formatter = style == 0 ? plain : style == 3 ? separated : padded;
    const std::uint64_t flags = random();
    formatter.lifetimeBits = (flags & 1) != 0;
    formatter.longLifetimeNames = (flags & 2) != 0;
    formatter.brackets = (flags & 4) != 0;
    formatter.showEdition = (flags & 8) != 0;
    formatter.alwaysFull = (flags & 16) != 0;

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
    ASSERT_EQ(text, printed(formatter, style, separator, shown)) << "seed 20, case " << i;
    ASSERT_EQ(formatter.getLength(), std::strlen(text));
  }
}

// Straight from the rendering step, into blocks of every size around the text's.
TEST(OidFormatter, FillsItsBufferAndNothingBehind) {
  OidFormatter plain;
  RelationalDbOidFormatter padded(RelationalDbOidFormatter::kNewerLayout);
  Custom_Separator_Relational_OID_Formatter separated("<>");
  const std::string wide(30, '-');
  Custom_Separator_Relational_OID_Formatter spread(wide.c_str());
  const std::pair<OidFormatter*, std::string> cases[] = {
      {&plain, "[2.1.3.4.5:6]"},
      {&padded, "0000002.00000000000000000001.0000003.004.00005"},
      {&separated, "0000002<>00000000000000000001<>0000003<>004<>00005"},
      {&spread, "0000002" + wide + "00000000000000000001" + wide + "0000003" + wide + "004" + wide +
                    "00005"},
  };
  for (const auto& [formatter, text] : cases) {
    for (std::uint32_t size = 0; size < text.size() + 100; ++size) {
      std::string block(size + 8, '~');
      std::uint32_t length = size;
      formatter->doFormatOid(classOf(2), 1, classOf(3), 4, 5, 6, block.data(), length);
      const std::string stored = size == 0 ? "" : text.substr(0, size - 1) + '\0';
      ASSERT_EQ(block.substr(0, stored.size()), stored);
      ASSERT_EQ(length, size == 0 ? 0 : stored.size() - 1);
      ASSERT_EQ(block.substr(size), "~~~~~~~~") << text << " in " << size;
    }
  }
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
  EXPECT_STREQ(formatter.formatOid(DskObjectId{1, classOf(2), 0, classOf(3), 4, 5, 6}),
               "2 1 3 4 5 6");
  EXPECT_STREQ(formatter.formatOid(OidKey{1, classOf(2), 70, classOf(3), 4, 5}), "#70#2 1 3 4 5 0");
  EXPECT_EQ(formatter.getLength(), 15u);
  EXPECT_STREQ(formatter.formatOid(ShortDskObjectId{1, classOf(2), 0}), "2 1 0 0 0 0");
}

TEST(DskHandleFormatter, ShowsTagsAsLettersOnlyInUpperCase) {
  const struct {
    DskHandle handle;
    const char* text;
  } cases[] = {
      {{0x1234567800000000, 0, 0, {'Q', 'q', 0}, 0}, "0-0-0-Q7100"},
      {{0xFFFFFFFFFFFFFFFF, 65535, 65535, {'A', 'Z', '@'}, 0}, "FFFFFFFF-65535-65535-AZ40"},
      {{0xABC, 1, 20, {'[', 0xC4, 0xFF}, 0}, "ABC-1-20-5BC4FF"},
  };
  for (const auto& [handle, text] : cases) {
    DskHandleFormatter formatter;
    EXPECT_STREQ(formatter.format(&handle), text);
    formatter.braces = true;
    EXPECT_EQ(formatter.format(&handle), "{" + std::string(text) + "}");
    EXPECT_STREQ(formatter.format(nullptr), "{<null>}");
  }
}

TEST(OidEquality, CountsWhatNamesTheObject) {
  const DskObjectId oid = {1, classOf(2), 3, classOf(4), 5, 6, 7};
  for (unsigned byte = 0; byte < sizeof oid; ++byte) {
    DskObjectId other = oid;
    reinterpret_cast<unsigned char*>(&other)[byte] ^= 0x80;
    const bool isIgnored = byte == 11 || byte >= 20;
    EXPECT_EQ(oidsAreEqual(oid, other), isIgnored) << byte;
  }
}

TEST(HoleFinder, FindsTheLowestFreeSlotAndSharesItsMarks) {
  HoleFinder finder(3);
  for (const unsigned outside : {0u, 4u, 0xFFFFFFFFu}) finder.markSlot(outside);
  EXPECT_EQ(finder.getNextSlot(), 1u);
  finder.markSlot(1);
  finder.markSlot(2);
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
