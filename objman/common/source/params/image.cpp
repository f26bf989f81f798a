// The binary image of a value, the value of an image, and negation. An image is the bytes of the
// value area but for a decimal, whose last 2 bytes of 16 do not count.

#include "record.h"
#include "text.h"

#include "nomos/intl.h"
#include "nomos/log.h"
#include "sys/decimals.h"
#include "sys/messages.h"
#include "sys/params.h"

#include <cstddef>
#include <cstdint>
#include <cstring>

namespace nomutil::params {
namespace {

constexpr std::uint32_t kDecimalImage = offsetof(DskDecimal, padding);

struct Image {
  const unsigned char* data;
  std::uint32_t length;
};

// What a held value answers.
int viewImage(const ShortDskParam* source, HandlerCode code, Image& image) {
  StringUtf8Info text{};
  const int status =
      code == kUtf8 ? describeHeld(source, code, text) : viewHeld(source, code, text);
  if (status == kNoError) image = {text.data, text.byteLength};
  return status;
}

int imageOf(const ShortDskParam* source, Image& image) {
  const PFormat format = formatOf(source);
  const FormatRow& row = formatRow(format);
  switch (row.kind) {
    case Kind::CString: {
      const auto text = load<const char*>(source);
      image = {reinterpret_cast<const unsigned char*>(text), lengthOf(text)};
      return kNoError;
    }
    case Kind::InlineString: {
      const DskParam* const whole = *source;
      image = {inlineData(whole), inlineLength(whole)};
      return kNoError;
    }
    case Kind::StringBlock:
    case Kind::BinaryBlock: {
      const auto block = loadBlock<DskBinaryBlock>(source);
      image = {block.data, block.length};
      return kNoError;
    }
    case Kind::Utf8Block: {
      const StringUtf8Info block = loadUtf8Block(source);
      image = {block.data, block.byteLength};
      return kNoError;
    }
    case Kind::HeldBinary:
      return viewImage(source, kBytesAndCount, image);
    case Kind::HeldUtf8:
      return viewImage(source, kUtf8, image);
    case Kind::Integer:
    case Kind::Character:
    case Kind::Fixed:
      // These three have none, though an address can be built from one.
      if (format == DSKSHORTREAL || format == DSKSHORTOBJECTID || format == DSKMEMORYADDRESS) break;
      image = {valueOf(source), format == DSKDECIMAL ? kDecimalImage : row.info.valueSize};
      return kNoError;
    default:
      break;
  }
  return refuseFormat("paramAsBinary", format);
}

// The bytes of a binary; a block's from its offset to its length.
int binaryOf(const ShortDskParam* source, Image& image) {
  switch (kindOf(source)) {
    case Kind::InlineBinary: {
      const DskParam* const whole = *source;
      image = {inlineData(whole), inlineLength(whole)};
      return kNoError;
    }
    case Kind::BinaryBlock: {
      const auto block = loadBlock<DskBinaryBlock>(source);
      if (block.offset > block.length) return kInvalidParameterValue;
      image = {block.data, block.length - block.offset};
      if (image.length != 0) image.data += block.offset;
      return kNoError;
    }
    case Kind::HeldBinary:
      return viewImage(source, kBytesAndCount, image);
    default:
      return kInvalidParameterType;
  }
}

int buildFixed(ShortDskParam* target, const FormatRow& row, const Image& image) {
  const PFormat format = formatOf(target);
  if (format == DSKSHORTREAL || format == DSKSHORTOBJECTID) {
    return refuseFormat("paramFromBinary", format);
  }
  const std::uint32_t size = format == DSKDECIMAL ? kDecimalImage : row.info.valueSize;
  // The length for a real is not tested: those who build one have always had the 8 bytes.
  if (image.length != size && format != DSKREAL) {
    nomLog("paramFromBinary: invalid length for %s (%u)", row.info.enumerator, image.length);
    return kInvalidParameterValue;
  }
  std::memmove(valueOf(target), image.data, size);
  return kNoError;
}

// Sets a held UTF-8 string, which other processes may read, from bytes that are UTF-8.
int setVerified(ShortDskParam* target, const Image& image) {
  std::uint32_t characters = 0;
  const int status = intlStringUTF8VerifyCountchars(image.data, image.length, characters);
  return status == kNoError ? setHeld(target, kSetUtf8, image.data, image.length, characters)
                            : status;
}

int buildValue(ShortDskParam* target, const Image& image) {
  const PFormat format = formatOf(target);
  const FormatRow& row = formatRow(format);
  switch (row.kind) {
    case Kind::Integer:
    case Kind::Character:
    case Kind::Fixed:
      return buildFixed(target, row, image);
    case Kind::CString:
    case Kind::StringBlock:
      return paramCreateKoraString(*target, reinterpret_cast<const char*>(image.data), image.length,
                                   kKoraNoMaximum, kOwnUsage);
    case Kind::InlineBinary:
    case Kind::BinaryBlock:
      return paramCreateKoraBinary(*target, image.data, image.length, kKoraNoMaximum, kOwnUsage);
    case Kind::Utf8Block: {
      // A character count of 0: the string counts for itself.
      const StringUtf8Info text{const_cast<unsigned char*>(image.data), image.length, 0, 0};
      return paramCreateKoraStringUtf8(*target, &text, kKoraNoMaximum, kOwnUsage);
    }
    case Kind::HeldString:
      return setHeld(target, kSetCharacters, image.data, image.length);
    case Kind::HeldBinary:
      return setHeld(target, kSetBytes, image.data, image.length);
    case Kind::HeldUtf8:
      return setVerified(target, image);
    default:
      return refuseFormat("paramFromBinary", format);
  }
}

// The last bytes of the target's decimal stay as they are.
int negateDecimal(ShortDskParam* target, const ShortDskParam* source) {
  const Decimal value(load<DskDecimal>(source));
  auto negated = load<DskDecimal>(target);
  constexpr std::uint8_t kOwnPlaces = 255;
  if (!value.isvalid() || !(-value).decimalToDskDecimal(negated, kOwnPlaces)) {
    return kInvalidParameterValue;
  }
  store(target, negated);
  return kNoError;
}

// An integer in two's complement, modulo 2^bits: the most negative is its own negative.
template <class Unsigned>
int negateInteger(ShortDskParam* target, const ShortDskParam* source) {
  store(target, static_cast<Unsigned>(0 - load<Unsigned>(source)));
  return kNoError;
}

// The sign is the highest bit of a real; a NaN keeps its other bits.
template <class Bits>
int negateReal(ShortDskParam* target, const ShortDskParam* source) {
  constexpr Bits kSign = Bits{1} << (8 * sizeof(Bits) - 1);
  store(target, load<Bits>(source) ^ kSign);
  return kNoError;
}

}  // namespace
}  // namespace nomutil::params

using namespace nomutil::params;

int paramAsBinary(ShortDskParam* target, const ShortDskParam* source) {
  if (target == nullptr || source == nullptr) return kInvalidParameterType;
  Image image{};
  if (const int status = imageOf(source, image); status != kNoError) return status;
  storeFormat(*target, DSKBINARYBLOCK);
  const DskBinaryBlock block{const_cast<unsigned char*>(image.data), 0, image.length, image.length};
  std::memcpy(valueOf(target), &block, kBlockSize);
  return kNoError;
}

int paramFromBinary(ShortDskParam* target, const ShortDskParam* source) {
  if (target == nullptr || source == nullptr) return kInvalidParameterType;
  Image image{};
  if (const int status = binaryOf(source, image); status != kNoError) return status;
  return image.length == 0 ? kNoError : buildValue(target, image);
}

int paramNegateValue(ShortDskParam* target, const ShortDskParam* source) {
  if (target == nullptr || source == nullptr) return kInvalidParameterType;
  std::memmove(bytesOf(target), bytesOf(source), kHeaderSize);
  switch (const PFormat format = formatOf(source)) {
    case DSKINTEGER:
      return negateInteger<std::uint32_t>(target, source);
    case DSKINTEGER64:
      return negateInteger<std::uint64_t>(target, source);
    case DSKDECIMAL:
      return negateDecimal(target, source);
    case DSKSHORTREAL:
      return negateReal<std::uint32_t>(target, source);
    case DSKREAL:
      return negateReal<std::uint64_t>(target, source);
    default:
      return refuseFormat("paramNegateValue", format);
  }
}
