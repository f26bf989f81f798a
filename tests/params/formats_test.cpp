// Formats, type numbers and the record itself. In the type tables a letter stands for a type:
// D Decimal, R Real, L Integer64, I Integer, B Byte, d Date, t Time, s Timestamp,
// v TimestampInterval, o TimestampOffset, and a point for none.

#include "exactparam.h"

#include <new>

using namespace nomtest;

namespace {

// Number, enumerator, name, family and size of each format, and of a fixed one its length.
TEST(ParamFormat, HasItsNameSizeAndFamily) {
  std::string all;
  for (unsigned number = 0; number < 0x10100; ++number) {
    const ParamFormatInfo* const found = findParamFormat(number);
    const std::string name = getParamFormatName(static_cast<PFormat>(number));
    EXPECT_TRUE(found != nullptr || number > 0xFFFF || name == "Unknown") << number;
    if (found == nullptr) continue;
    EXPECT_EQ(found->fitsShortParam, !Param::isInline(number)) << number;
    all += std::to_string(number) + found->enumerator + " " + name + " " + found->family + " " +
           std::to_string(found->valueSize) + ", ";
    const bool isFixed = std::string(found->family) == "fixed";
    unsigned length = 77, characters = 77;
    if (!isFixed && !isAmong(number, {5, 36})) continue;
    EXPECT_EQ(paramBytesLen(Param(number), &length), 0);
    EXPECT_EQ(length, isFixed ? found->valueSize : 0) << number;
    if (isFixed && number != 6) continue;
    EXPECT_EQ(paramCharactersLen(Param(number), &characters), 0);
    EXPECT_EQ(characters, length);
  }
  EXPECT_EQ(all,
            "1DSKCSTRING String string 8, 2DSKSTRING String string 516, 3DSKOBJECTID Object fixed "
            "22, 4DSKINTEGER Integer fixed 4, 5DSKANY Any any 24, 6DSKCHARACTER Character fixed 1, "
            "7DSKBOOLEAN Boolean fixed 1, 8DSKPOINT Point fixed 8, 11DSKBINARY Binary binary 516, "
            "14DSKSTRINGBLOCK String string 20, 15DSKDOTTEDPAIR Unknown rendered 6, 16DSKDATE Date "
            "fixed 4, 17DSKTIME Time fixed 4, 18DSKTIMESTAMP Timestamp fixed 8, 19DSKDECIMAL "
            "Decimal fixed 16, 20DSKSHORTREAL Unknown fixed 4, 21DSKREAL Real fixed 8, "
            "24DSKSHORTOBJECTID Object fixed 12, 25DSKKORASTRING String string 24, 33DSKKORABINARY "
            "Binary binary 24, 34DSKBINARYBLOCK Binary binary 20, 36DSKNULL Null null 32, "
            "42DSKINTEGER64 Integer64 fixed 8, 44DSKMEMORYADDRESS MemoryAddress fixed 12, "
            "45DSKNUMBERANDPAIR Unknown rendered 10, 46DSKDOTTEDTRIPLE Unknown rendered 15, "
            "48DSKCSTRING2 Unknown rendered 8, 49DSKDOTTEDPAIR2 Unknown rendered 6, "
            "51DSKSTRINGUTF8BLOCK StringUtf8 utf8 20, 52DSKBYTE Byte fixed 1, "
            "53DSKTIMESTAMPINTERVAL TimestampInterval fixed 8, 54DSKKORASTRINGUTF8 StringUtf8 utf8 "
            "24, 57DSKTIMESTAMPOFFSET TimestampOffset fixed 12, ");
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

// A copy of 528 bytes out of 40.
static_assert(!std::is_convertible_v<ShortDskParam, DskParam>);
static_assert(!std::is_convertible_v<ShortDskParam&, DskParam>);
static_assert(!std::is_convertible_v<const ShortDskParam&, DskParam>);

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

// Strings of three characters, of none and of "a|c": which equal the texts.
TEST(DskString, EqualsAndBecomesACStringThatEndsWithIt) {
  const DskString strings[] = {{3, 0xFFFF, "abcdef"}, {0, 0, "x"}, {3, 0, {'a', '\0', 'c'}}};
  std::string equal;
  for (const char* const text : {"|", "a|", "ab|", "abc|", "abcd|", "abd|"}) {
    const std::vector<char> c = bytesOf(text);
    for (const DskString& each : strings) equal += CEqualToDsk(c.data(), &each) ? '1' : '0';
  }
  EXPECT_EQ(equal, "010000000100000000");
  for (const unsigned limit : {0u, 2u, 3u, 9u}) {
    std::vector<char> c(std::min(limit, 3u) + 1, '#');
    EXPECT_EQ(dskStringToC(strings, c.data(), limit), c.size() - 1);
    EXPECT_EQ(wordOf(c), std::string("abc").substr(0, limit) + "|");
    if (limit > 3) dskStringToC(strings, c.data());
  }
}

TEST(DskString, OfALengthAboveItsRoomEndsThere) {
  const std::string text(512, 'x');
  for (const unsigned format : {2u, 11u}) {
    const Param param(format, text);
    param->setValue(std::uint16_t{600});
    char target[513];
    unsigned bytes = 0, characters = 0;
    EXPECT_EQ(paramcpy(target, param, 513, bytes, characters), 0);
    EXPECT_EQ(bytes, 512u);
    const auto* const string = reinterpret_cast<const DskString*>(param->value);
    EXPECT_TRUE(CEqualToDsk(text.c_str(), string));
    EXPECT_EQ(dskStringToC(string, target), 512u);
    EXPECT_EQ(dskStringToC(string, target, 513), 512u);
  }
}

}  // namespace
