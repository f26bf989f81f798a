// Formats, type numbers and the record itself. In the type tables a letter stands for a type:
// D Decimal, R Real, L Integer64, I Integer, B Byte, d Date, t Time, s Timestamp,
// v TimestampInterval, o TimestampOffset, and a point for none.

#include "exactparam.h"

#include <new>

using namespace nomtest;

namespace {

TEST(ParamFormat, HasItsNameAndSize) {
  std::string all;
  for (unsigned number = 0; number < 0x10100; ++number) {
    const ParamFormatInfo* const found = findParamFormat(number);
    const std::string name = getParamFormatName(static_cast<PFormat>(number));
    EXPECT_TRUE(found != nullptr || number > 0xFFFF || name == "Unknown") << number;
    if (found == nullptr) continue;
    EXPECT_EQ(found->fitsShortParam, !Param::isInline(number)) << number;
    all += " " + std::to_string(number) + " " + name + " " + std::to_string(found->valueSize);
  }
  EXPECT_EQ(all,
            " 1 String 8 2 String 516 3 Object 22 4 Integer 4 5 Any 24 6 Character 1 7 Boolean 1"
            " 8 Point 8 11 Binary 516 14 String 20 15 Unknown 6 16 Date 4 17 Time 4 18 Timestamp 8"
            " 19 Decimal 16 20 Unknown 4 21 Real 8 24 Object 12 25 String 24 33 Binary 24"
            " 34 Binary 20 36 Null 32 42 Integer64 8 44 MemoryAddress 12 45 Unknown 10"
            " 46 Unknown 15 48 Unknown 8 49 Unknown 6 51 StringUtf8 20 52 Byte 1"
            " 53 TimestampInterval 8 54 StringUtf8 24 57 TimestampOffset 12");
}

TEST(TypeNumber, MapsToItsOwnFormatAndOutOfTheUnreservedClasses) {
  std::string own, unchanged;
  for (int number = -300; number <= 0x10100; ++number) {
    PFormat format = DSKNULL;
    const int userClass = makeUserClassNumber(number);
    EXPECT_EQ(mapTypeNumberToPFormat(number, &format), 0);
    if (format != 3) own += std::to_string(number) + (format == number ? " " : "! ");
    if (number < 1 || number > 2047) {
      EXPECT_EQ(userClass, number);
    } else if (userClass == number) {
      unchanged += std::to_string(number) + " ";
    } else {
      EXPECT_EQ(userClass, number + 1000000);
    }
  }
  EXPECT_EQ(own, "1 4 5 6 7 8 11 16 17 18 19 21 42 44 51 52 53 57 ");
  EXPECT_EQ(unchanged,
            "180 203 204 279 383 388 389 390 398 419 427 451 542 546 554 559 571 574 583 635 651 "
            "652 654 680 681 682 701 702 722 727 732 736 737 742 749 756 762 763 765 1191 1192 "
            "1193 1194 1195 1196 1197 1198 1199 1200 1201 1202 1203 1204 1205 1206 1207 1208 1209 "
            "1216 1217 1218 1219 1220 1221 1223 ");
}

// The results of an operation 0 to 6, of none for 7; for 8 the assignable sources.
int resultOf(unsigned operation, int left, int right) {
  if (operation == 8) return CheckAssignmentCompatibility(left, right) ? right : 0;
  return LookupArithmeticOperationResultType(static_cast<ArithmeticOperation>(operation), left,
                                             right);
}

TEST(TypeTable, GivesEveryPairItsResult) {
  const int types[] = {0, 19, 21, 42, 4, 52, 16, 17, 18, 53, 57};
  const std::string rule = "DDDDD..... DRRRR..... DRLLL..... DRLII..... DRLII..... ";
  const std::string letters = ".DRLIBdtsvo?", no = ".......... ", none = no + no + no + no + no;
  // A row for each left or target type, in it a letter for each right or source type.
  const std::string tables[] = {
      "DDDDD..... DRRRR..... DRLLL..... DRLIIdt... DRLII..... "
      "...d...... ...t..ts.o ......s.s. .......svo ......o.o. ",
      rule + "...d.I.... ...t..I... ......svs. ........v. ......o.ov ",
      "DDDDD...v. DRRRR...v. DRLLL...v. DRLII...v. DRLII...v. " + no + no + no + "vvvvv..... " + no,
      "DDDDD..... DRRRR..... DRRRR..... DRRRR..... DRRRR..... " + no + no + no + "vvvvv..... " + no,
      "IILII..... IILII..... LLLLL..... IILII..... IILII..... " + none,
      rule + none,
      rule + none,
      none + none,
      "DRLIB..... DRLIB..... ..LIB..... ...IB..... ....B..... "
      ".....d.... ......t... .......s.. ........v. .........o "};
  for (unsigned operation = 0; operation <= 8; ++operation) {
    std::string table;
    for (int left = 1; left <= 10; ++left, table += ' ') {
      for (int right = 1; right <= 10; ++right) {
        const int type = resultOf(operation, types[left], types[right]);
        const auto index = std::find(types, types + 11, type) - types;
        table += letters[static_cast<std::size_t>(index)];
      }
    }
    EXPECT_EQ(table, tables[operation]) << operation;
    for (const int other : {0, 6, 7, 256 + 19, 19 - 256, 0x10013, 2048}) {
      EXPECT_EQ(resultOf(operation, 19, other) | resultOf(operation, other, 19) |
                    resultOf(operation, other, other),
                0)
          << operation;
    }
  }
}

static_assert(!std::is_convertible_v<DskParam*, ShortDskParam*>);

// A record built on bytes of 0xCC. No optimizer sees through the call, which would let it drop
// them.
template <class T, class... Arguments>
std::string built(Arguments... arguments) {
  void (*volatile build)(void*, Arguments...) = [](void* place, Arguments... given) {
    new (place) T(given...);
  };
  std::string bytes(sizeof(T), '\xCC');
  build(bytes.data(), arguments...);
  return bytes;
}

TEST(ParamRecord, IsBuiltByItsFirstFourBytesAndCopiedWhole) {
  const std::string rest(524, '\xCC'), zero(4, '\0'), given("\x19\0\2\3", 4);
  EXPECT_EQ(built<ShortDskParam>(), zero + rest.substr(0, 36));
  EXPECT_EQ(built<DskParam>(), zero + rest);
  EXPECT_EQ(built<ShortDskParam>(DSKKORASTRING, PUsage{2}, PMore{3}), given + rest.substr(0, 36));
  EXPECT_EQ(built<DskParam>(DSKKORASTRING, PUsage{2}, PMore{3}), given + rest);
  EXPECT_EQ(built<DskParamHeader>(DskHeader{0x8877665504030019}),
            std::string("\x19\0\3\4\x55\x66\x77\x88", 8));

  DskParam target = DskParam::allZero(), longSource;
  ShortDskParam shortSource = ShortDskParam::allZero();
  const auto bytes = [](const auto& record) {
    return std::string(reinterpret_cast<const char*>(&record), sizeof record);
  };
  EXPECT_EQ(bytes(target) + bytes(shortSource), std::string(568, '\0'));
  std::memset(static_cast<void*>(&shortSource), 's', 40);
  std::memset(static_cast<void*>(&longSource), 'l', 528);
  target = longSource;
  EXPECT_EQ(bytes(target), std::string(528, 'l'));
  target = shortSource;
  EXPECT_EQ(bytes(target), std::string(40, 's') + std::string(488, 'l'));
}

TEST(DskString, EqualsAndBecomesACStringThatEndsWithIt) {
  const DskString string{3, 0xFFFF, "abcdef"}, empty{0, 0, "x"}, inner{3, 0, {'a', '\0', 'c'}};
  std::string equal;
  for (const char* const text : {"|", "a|", "ab|", "abc|", "abcd|", "abd|"}) {
    const std::vector<char> c = bytesOf(text);
    for (const auto& each : {&string, &empty, &inner})
      equal += CEqualToDsk(c.data(), each) ? '1' : '0';
  }
  EXPECT_EQ(equal, "010000000100000000");
  for (const unsigned limit : {0u, 2u, 3u, 9u}) {
    std::vector<char> c(std::min(limit, 3u) + 1, '#');
    EXPECT_EQ(dskStringToC(&string, c.data(), limit), c.size() - 1);
    EXPECT_EQ(wordOf(c), std::string("abc").substr(0, limit) + "|");
    if (limit > 3) dskStringToC(&string, c.data());
  }
}

}  // namespace
