// The small tables of the type system: which format a type number has, which class numbers are
// reserved, what may be assigned to what, and the type of an arithmetic result.
//
// Both tables of types are squares of 11 by 11 bytes. Row 0 and column 0 hold the type numbers; the
// other cells are looked up by the type on the left (or the target) and that on the right (or the
// source).

#include "sys/params.h"

#include <algorithm>
#include <cstdint>
#include <iterator>

namespace {

// The types of the tables, and short names for the cells: D(ecimal), R(eal), L(ong: Integer64),
// I(nteger), B(yte), d(ate), t(ime), s(tamp), v (interval), o(ffset).
constexpr std::uint8_t D = DSKDECIMAL, R = DSKREAL, L = DSKINTEGER64, I = DSKINTEGER, B = DSKBYTE,
                       d = DSKDATE, t = DSKTIME, s = DSKTIMESTAMP, v = DSKTIMESTAMPINTERVAL,
                       o = DSKTIMESTAMPOFFSET;

constexpr unsigned kSide = 11;
using TypeTable = std::uint8_t[kSide][kSide];

// clang-format off
constexpr TypeTable kAssignment = {
    {0, D, R, L, I, B, d, t, s, v, o},
    {D, 1, 1, 1, 1, 1, 0, 0, 0, 0, 0},
    {R, 1, 1, 1, 1, 1, 0, 0, 0, 0, 0},
    {L, 0, 0, 1, 1, 1, 0, 0, 0, 0, 0},
    {I, 0, 0, 0, 1, 1, 0, 0, 0, 0, 0},
    {B, 0, 0, 0, 0, 1, 0, 0, 0, 0, 0},
    {d, 0, 0, 0, 0, 0, 1, 0, 0, 0, 0},
    {t, 0, 0, 0, 0, 0, 0, 1, 0, 0, 0},
    {s, 0, 0, 0, 0, 0, 0, 0, 1, 0, 0},
    {v, 0, 0, 0, 0, 0, 0, 0, 0, 1, 0},
    {o, 0, 0, 0, 0, 0, 0, 0, 0, 0, 1},
};

// Between numbers: Decimal before Real before Integer64 before Integer, and a Byte never stays one.
constexpr TypeTable kNumeric = {
    {0, D, R, L, I, B, d, t, s, v, o},
    {D, D, D, D, D, D, 0, 0, 0, 0, 0},
    {R, D, R, R, R, R, 0, 0, 0, 0, 0},
    {L, D, R, L, L, L, 0, 0, 0, 0, 0},
    {I, D, R, L, I, I, 0, 0, 0, 0, 0},
    {B, D, R, L, I, I, 0, 0, 0, 0, 0},
    {d, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0},
    {t, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0},
    {s, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0},
    {v, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0},
    {o, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0},
};

constexpr TypeTable kAddition = {
    {0, D, R, L, I, B, d, t, s, v, o},
    {D, D, D, D, D, D, 0, 0, 0, 0, 0},
    {R, D, R, R, R, R, 0, 0, 0, 0, 0},
    {L, D, R, L, L, L, 0, 0, 0, 0, 0},
    {I, D, R, L, I, I, d, t, 0, 0, 0},
    {B, D, R, L, I, I, 0, 0, 0, 0, 0},
    {d, 0, 0, 0, d, 0, 0, 0, 0, 0, 0},
    {t, 0, 0, 0, t, 0, 0, t, s, 0, o},
    {s, 0, 0, 0, 0, 0, 0, s, 0, s, 0},
    {v, 0, 0, 0, 0, 0, 0, 0, s, v, o},
    {o, 0, 0, 0, 0, 0, 0, o, 0, o, 0},
};

constexpr TypeTable kSubtraction = {
    {0, D, R, L, I, B, d, t, s, v, o},
    {D, D, D, D, D, D, 0, 0, 0, 0, 0},
    {R, D, R, R, R, R, 0, 0, 0, 0, 0},
    {L, D, R, L, L, L, 0, 0, 0, 0, 0},
    {I, D, R, L, I, I, 0, 0, 0, 0, 0},
    {B, D, R, L, I, I, 0, 0, 0, 0, 0},
    {d, 0, 0, 0, d, 0, I, 0, 0, 0, 0},
    {t, 0, 0, 0, t, 0, 0, I, 0, 0, 0},
    {s, 0, 0, 0, 0, 0, 0, s, v, s, 0},
    {v, 0, 0, 0, 0, 0, 0, 0, 0, v, 0},
    {o, 0, 0, 0, 0, 0, 0, o, 0, o, v},
};

constexpr TypeTable kMultiplication = {
    {0, D, R, L, I, B, d, t, s, v, o},
    {D, D, D, D, D, D, 0, 0, 0, v, 0},
    {R, D, R, R, R, R, 0, 0, 0, v, 0},
    {L, D, R, L, L, L, 0, 0, 0, v, 0},
    {I, D, R, L, I, I, 0, 0, 0, v, 0},
    {B, D, R, L, I, I, 0, 0, 0, v, 0},
    {d, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0},
    {t, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0},
    {s, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0},
    {v, v, v, v, v, v, 0, 0, 0, 0, 0},
    {o, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0},
};

constexpr TypeTable kDivision = {
    {0, D, R, L, I, B, d, t, s, v, o},
    {D, D, D, D, D, D, 0, 0, 0, 0, 0},
    {R, D, R, R, R, R, 0, 0, 0, 0, 0},
    {L, D, R, R, R, R, 0, 0, 0, 0, 0},
    {I, D, R, R, R, R, 0, 0, 0, 0, 0},
    {B, D, R, R, R, R, 0, 0, 0, 0, 0},
    {d, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0},
    {t, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0},
    {s, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0},
    {v, v, v, v, v, v, 0, 0, 0, 0, 0},
    {o, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0},
};

// Also of decimals and reals the quotient is an integer.
constexpr TypeTable kIntegralDivision = {
    {0, D, R, L, I, B, d, t, s, v, o},
    {D, I, I, L, I, I, 0, 0, 0, 0, 0},
    {R, I, I, L, I, I, 0, 0, 0, 0, 0},
    {L, L, L, L, L, L, 0, 0, 0, 0, 0},
    {I, I, I, L, I, I, 0, 0, 0, 0, 0},
    {B, I, I, L, I, I, 0, 0, 0, 0, 0},
    {d, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0},
    {t, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0},
    {s, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0},
    {v, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0},
    {o, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0},
};
// clang-format on

constexpr const TypeTable* kResults[] = {&kAddition, &kSubtraction,      &kMultiplication,
                                         &kDivision, &kIntegralDivision, &kNumeric,
                                         &kNumeric};

// The place of a type in row 0 and column 0; 0 for a type that has none.
unsigned placeOf(int type) {
  for (unsigned place = 1; place < kSide; ++place) {
    if (kNumeric[0][place] == type) return place;
  }
  return 0;
}

// Row 0 and column 0 hold type numbers, no results.
std::uint8_t lookUp(const TypeTable& table, int left, int right) {
  const unsigned row = placeOf(left);
  const unsigned column = placeOf(right);
  return row != 0 && column != 0 ? table[row][column] : std::uint8_t{0};
}

struct Range {
  int first, last;
};

// Grown over the years and irregular: classes of the system that lie among those of users.
constexpr Range kReservedClasses[] = {
    {180, 180}, {203, 204}, {279, 279},   {383, 383},   {388, 390},   {398, 398}, {419, 419},
    {427, 427}, {451, 451}, {542, 542},   {546, 546},   {554, 554},   {559, 559}, {571, 571},
    {574, 574}, {583, 583}, {635, 635},   {651, 652},   {654, 654},   {680, 682}, {701, 702},
    {722, 722}, {727, 727}, {732, 732},   {736, 737},   {742, 742},   {749, 749}, {756, 756},
    {762, 763}, {765, 765}, {1191, 1209}, {1216, 1221}, {1223, 1223},
};

bool isPrimitiveType(int typeNumber) {
  switch (typeNumber) {
    case DSKCSTRING:
    case DSKINTEGER:
    case DSKANY:
    case DSKCHARACTER:
    case DSKBOOLEAN:
    case DSKPOINT:
    case DSKBINARY:
    case DSKDATE:
    case DSKTIME:
    case DSKTIMESTAMP:
    case DSKDECIMAL:
    case DSKREAL:
    case DSKINTEGER64:
    case DSKMEMORYADDRESS:
    case DSKSTRINGUTF8BLOCK:
    case DSKBYTE:
    case DSKTIMESTAMPINTERVAL:
    case DSKTIMESTAMPOFFSET:
      return true;
    default:
      return false;
  }
}

}  // namespace

int mapTypeNumberToPFormat(int typeNumber, PFormat* format) {
  *format = isPrimitiveType(typeNumber) ? static_cast<PFormat>(typeNumber) : DSKOBJECTID;
  return 0;
}

int makeUserClassNumber(int classNumber) {
  if (classNumber < 1 || classNumber > 2047) return classNumber;
  const bool isReserved = std::any_of(
      std::begin(kReservedClasses), std::end(kReservedClasses), [classNumber](const Range& range) {
        return range.first <= classNumber && classNumber <= range.last;
      });
  return isReserved ? classNumber : classNumber + 1000000;
}

std::uint8_t LookupArithmeticOperationResultType(ArithmeticOperation operation, int left,
                                                 int right) {
  return operation < std::size(kResults) ? lookUp(*kResults[operation], left, right)
                                         : std::uint8_t{0};
}

bool CheckAssignmentCompatibility(int target, int source) {
  return lookUp(kAssignment, target, source) != 0;
}
