// Whether two parameters hold equal values, and whether their formats agree. A DSKNULL takes the
// part of the empty or zero value of the other side: a record of zeros is one in every format.

#include "record.h"

#include "nomos/log.h"
#include "sys/datetime.h"
#include "sys/decimals.h"
#include "sys/formatters.h"
#include "sys/messages.h"
#include "sys/params.h"

#include <cstddef>
#include <cstdint>
#include <cstring>

namespace nomutil::params {
namespace {

// Bytes that lie nowhere are equal when there are none.
bool sameBytes(const void* left, const void* right, std::size_t count) {
  return count == 0 || std::memcmp(left, right, count) == 0;
}

bool sameValue(const DskParam* left, const DskParam* right, std::size_t size) {
  return std::memcmp(valueOf(left), valueOf(right), size) == 0;
}

// A block of characters or bytes that has an offset; 0 for everything else.
std::uint32_t offsetOf(const DskParam* parameter, Kind kind) {
  const bool isBlock = kind == Kind::StringBlock || kind == Kind::BinaryBlock;
  return isBlock ? loadBlock<DskBinaryBlock>(parameter).offset : 0;
}

int viewText(const DskParam* parameter, unsigned& length, unsigned char*& bytes) {
  const int status = paramBytesLen(parameter, &length);
  return status == kNoError ? paramBytesPtr(parameter, &bytes) : status;
}

struct Family {
  const char* operation;
  bool (*has)(Kind kind);
  const char* block;  // what its log line calls a block
};
constexpr Family kStrings = {"stringParamEqualTo", isString, "character"};
constexpr Family kBinaries = {"binaryParamEqualTo", isBinary, "binary"};
constexpr Family kUtf8Strings = {"stringUtf8ParamEqualTo", isUtf8, "UTF-8"};

int familyEqual(const Family& family, const DskParam* left, const DskParam* right, bool* equal) {
  *equal = false;
  if (left == nullptr || right == nullptr) return kInvalidParameterType;
  const Kind leftKind = kindOf(left);
  if (!family.has(leftKind)) return refuseFormat(family.operation, formatOf(left));
  if (const std::uint32_t offset = offsetOf(left, leftKind); offset != 0) {
    nomLog("%s: %s block offset %u", family.operation, family.block, offset);
    return kInvalidParameterValue;
  }
  unsigned leftLength = 0;
  unsigned char* leftBytes = nullptr;
  if (const int status = viewText(left, leftLength, leftBytes); status != kNoError) return status;

  // The right side's offset is no failure: such a piece just equals nothing.
  const Kind rightKind = kindOf(right);
  if (!family.has(rightKind) || offsetOf(right, rightKind) != 0) return kNoError;
  unsigned rightLength = 0;
  unsigned char* rightBytes = nullptr;
  if (const int status = viewText(right, rightLength, rightBytes); status != kNoError) {
    return status;
  }
  *equal = leftLength == rightLength && sameBytes(leftBytes, rightBytes, leftLength);
  return kNoError;
}

// Pieces: the content stands at the pointer, whatever the offset.
bool samePiece(const DskParam* left, const DskParam* right) {
  if (formatOf(left) != formatOf(right)) return false;
  const auto a = loadBlock<DskBinaryBlock>(left);
  const auto b = loadBlock<DskBinaryBlock>(right);
  return a.offset == b.offset && a.length == b.length && sameBytes(a.data, b.data, a.length);
}

double loadReal(const DskParam* parameter) {
  return formatOf(parameter) == DSKSHORTREAL ? double{load<float>(parameter)}
                                             : load<double>(parameter);
}

constexpr bool isReal(PFormat format) {
  return format == DSKSHORTREAL || format == DSKREAL;
}

// Values of a fixed size. REQUIRES: the left format is not DSKSHORTOBJECTID.
bool sameFixed(const DskParam* left, const DskParam* right) {
  const PFormat format = formatOf(left);
  const PFormat other = formatOf(right);
  if (isReal(format)) return isReal(other) && loadReal(left) == loadReal(right);
  if (format == DSKDATE && other == DSKTIMESTAMP) {
    const auto stamp = load<DskTimeStamp>(right);
    return load<std::uint32_t>(left) == stamp.date && stamp.time == 0;
  }
  if (format == DSKTIMESTAMP && other == DSKDATE) {
    const auto stamp = load<DskTimeStamp>(left);
    return stamp.date == load<std::uint32_t>(right) && stamp.time == 0;
  }
  if (format != other) return false;
  switch (format) {
    case DSKOBJECTID:
      return oidsAreEqual(load<DskObjectId>(left), load<DskObjectId>(right));
    case DSKDECIMAL:
      return Decimal(load<DskDecimal>(left)) == Decimal(load<DskDecimal>(right));
    case DSKTIMESTAMPOFFSET:
      return sameValue(left, right, sizeof(DskTimeStamp));
    default:
      return sameValue(left, right, formatRow(format).info.valueSize);
  }
}

// The format of an empty or zero value that can stand in for a DSKNULL beside `other`.
PFormat standInFor(const DskParam* other) {
  const Kind kind = kindOf(other);
  if (isString(kind)) return DSKSTRING;
  if (isBinary(kind)) return DSKBINARY;
  if (isUtf8(kind)) return DSKSTRINGUTF8BLOCK;
  return formatOf(other);
}

int compare(const DskParam* left, const DskParam* right, bool* equal) {
  const Kind kind = kindOf(left);
  if ((kind == Kind::StringBlock || kind == Kind::BinaryBlock) && offsetOf(left, kind) != 0) {
    *equal = samePiece(left, right);
    return kNoError;
  }
  if (isString(kind)) return familyEqual(kStrings, left, right, equal);
  if (isBinary(kind)) return familyEqual(kBinaries, left, right, equal);
  if (isUtf8(kind)) return familyEqual(kUtf8Strings, left, right, equal);
  const PFormat format = formatOf(left);
  const bool isFixed = kind == Kind::Fixed || kind == Kind::Integer || kind == Kind::Character;
  if (!isFixed || format == DSKSHORTOBJECTID) return refuseFormat("paramsAreEqual", format);
  *equal = sameFixed(left, right);
  return kNoError;
}

}  // namespace
}  // namespace nomutil::params

using namespace nomutil::params;

int stringParamEqualTo(const DskParam* left, const DskParam* right, bool* equal) {
  return familyEqual(kStrings, left, right, equal);
}

int binaryParamEqualTo(const DskParam* left, const DskParam* right, bool* equal) {
  return familyEqual(kBinaries, left, right, equal);
}

int stringUtf8ParamEqualTo(const DskParam* left, const DskParam* right, bool* equal) {
  return familyEqual(kUtf8Strings, left, right, equal);
}

int paramsAreEqual(const DskParam* left, const DskParam* right, bool* equal) {
  *equal = false;
  if (left == nullptr || right == nullptr) return kInvalidParameterType;
  ShortDskParam leftStandIn;
  ShortDskParam rightStandIn;
  if (formatOf(left) == DSKNULL) {
    leftStandIn = ShortDskParam::allZero();
    leftStandIn.header.format = standInFor(right);
    left = leftStandIn;
  }
  if (formatOf(right) == DSKNULL) {
    rightStandIn = ShortDskParam::allZero();
    rightStandIn.header.format = standInFor(left);
    right = rightStandIn;
  }
  return compare(left, right, equal);
}

int paramsAreCompatible(const DskParam* left, const DskParam* right, bool* compatible) {
  *compatible = false;
  if (left == nullptr || right == nullptr) return kInvalidParameterType;
  const PFormat format = formatOf(left);
  const PFormat other = formatOf(right);
  const Kind kind = kindOfFormat(format);
  const Kind otherKind = kindOfFormat(other);
  const auto isOpen = [](PFormat side) { return side == DSKNULL || side == DSKANY; };
  *compatible = format == other || isOpen(format) || isOpen(other) ||
                (isString(kind) && isString(otherKind)) ||
                (isBinary(kind) && isBinary(otherKind)) || (isUtf8(kind) && isUtf8(otherKind));
  return kNoError;
}
