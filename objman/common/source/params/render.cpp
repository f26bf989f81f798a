// Parameters as text for people: paramToString. Texts and binaries have a rule each for a buffer
// that is too small; every other format is printed by the family it belongs to, bounded.

#include "record.h"
#include "text.h"

#include "nomos/intl.h"
#include "sys/datetime.h"
#include "sys/decimals.h"
#include "sys/formatters.h"
#include "sys/messages.h"
#include "sys/params.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstring>

namespace nomutil::params {
namespace {

struct Target {
  char* text;
  std::uint32_t size;  // not 0
};

// A text that is longer than the buffer, not only by its NUL, ends in dots.
int renderString(const void* characters, std::uint32_t length, Target target) {
  const std::uint32_t shown = std::min(length, target.size - 1);
  copyBytes(target.text, characters, shown);
  target.text[shown] = '\0';
  if (length > target.size && target.size >= 5) std::memcpy(target.text + shown - 3, "...", 3);
  return kNoError;
}

int renderText(const char* text, Target target) {
  const std::uint32_t shown = std::min(lengthOf(text), target.size - 1);
  std::memcpy(target.text, text, shown);
  target.text[shown] = '\0';
  return kNoError;
}

// Three characters a byte. Where the last blank would leave no room for the NUL, it is the NUL.
int renderBytes(const unsigned char* bytes, std::uint32_t count, Target target) {
  constexpr char kDigits[] = "0123456789abcdef";
  const std::uint32_t shown = std::min(count, target.size / 3);
  char* to = target.text;
  for (std::uint32_t i = 0; i < shown; ++i) {
    *to++ = kDigits[bytes[i] >> 4];
    *to++ = kDigits[bytes[i] & 15];
    *to++ = ' ';
  }
  target.text[std::min(3 * shown, target.size - 1)] = '\0';
  if (count > shown && target.size > 4) std::memcpy(target.text + target.size - 4, "...", 4);
  return kNoError;
}

int renderUtf8(const StringUtf8Info& text, Target target) {
  std::uint32_t bytes = 0;
  std::uint32_t characters = 0;
  const int status =
      intlConvertString(IntlFormat::Utf8, text.data, text.byteLength, IntlFormat::CodePage,
                        target.text, target.size - 1, bytes, characters);
  target.text[bytes] = '\0';
  return status;
}

int renderHeld(const DskParam* parameter, HandlerCode code, Target target) {
  StringUtf8Info text{};
  const int status =
      code == kUtf8 ? describeHeld(parameter, code, text) : viewHeld(parameter, code, text);
  if (status != kNoError) return status;
  if (code == kUtf8) return renderUtf8(text, target);
  return code == kBytesAndCount ? renderBytes(text.data, text.byteLength, target)
                                : renderString(text.data, text.byteLength, target);
}

template <class... Values>
int print(Target target, const char* format, Values... values) {
  intlSnprintf(target.text, target.size, format, values...);
  return kNoError;
}

// A field of a value that is only rendered.
template <class T>
unsigned fieldAt(const DskParam* parameter, std::size_t offset) {
  return load<T>(parameter, offset);
}

int renderDecimal(const DskDecimal& stored, Target target) {
  const Decimal value(stored);
  value.decimalToString(target.text, target.size, value.getScaleFactor());
  return kNoError;
}

// Blocks are shown from their offset on, unlike where they are copied. One that shows nothing may
// lie nowhere, whatever its offset.
template <class Block>
const unsigned char* shownFrom(const Block& block) {
  const auto* const data = reinterpret_cast<const unsigned char*>(block.data);
  return block.length != 0 ? data + block.offset : data;
}

int renderValue(const DskParam* parameter, PFormat format, Target target) {
  using std::uint16_t;
  using std::uint32_t;
  switch (format) {
    case DSKOBJECTID:
      return renderText(OidFormatter().formatOid(load<DskObjectId>(parameter)), target);
    case DSKINTEGER:
      return print(target, "%d", load<std::int32_t>(parameter));
    case DSKCHARACTER:
      return print(target, "%c", load<char>(parameter));
    case DSKBOOLEAN:
      return renderText(load<unsigned char>(parameter) != 0 ? "true" : "false", target);
    case DSKPOINT: {
      const auto point = load<DskPoint>(parameter);
      return print(target, "%d,%d", point.x, point.y);
    }
    case DSKDOTTEDPAIR:
    case DSKDOTTEDPAIR2:
      return print(target, "{%u.%u}", fieldAt<uint32_t>(parameter, 0),
                   fieldAt<uint16_t>(parameter, 4));
    case DSKDATE:
      formatDate(load<uint32_t>(parameter), target.text, target.size);
      return kNoError;
    case DSKTIME:
      formatTime(load<uint32_t>(parameter), target.text, target.size);
      return kNoError;
    case DSKTIMESTAMP:
      formatTimeStamp(load<DskTimeStamp>(parameter), target.text, target.size);
      return kNoError;
    case DSKDECIMAL:
      return renderDecimal(load<DskDecimal>(parameter), target);
    case DSKSHORTREAL:
      intlFloatToStringFixed(target.text, target.size, load<float>(parameter), 0);
      return kNoError;
    case DSKREAL:
      intlDoubleToStringFixed(target.text, target.size, load<double>(parameter), 0);
      return kNoError;
    case DSKSHORTOBJECTID:
      return renderText(OidFormatter().formatOid(load<ShortDskObjectId>(parameter)), target);
    case DSKINTEGER64:
      return print(target, "%I64d", static_cast<long long>(load<std::int64_t>(parameter)));
    case DSKMEMORYADDRESS:
      // The low half of the address.
      return print(target, "0x%08x,%u", fieldAt<uint32_t>(parameter, 0),
                   fieldAt<uint32_t>(parameter, 8));
    case DSKNUMBERANDPAIR:
      return print(target, "%u {%u.%u}", fieldAt<uint32_t>(parameter, 0),
                   fieldAt<uint32_t>(parameter, 4), fieldAt<uint16_t>(parameter, 8));
    case DSKDOTTEDTRIPLE:
      return print(target, "{%u.%u.%u}", fieldAt<uint32_t>(parameter, 8),
                   fieldAt<uint16_t>(parameter, 12), fieldAt<std::uint8_t>(parameter, 14));
    case DSKBYTE:
      return print(target, "%u", fieldAt<std::uint8_t>(parameter, 0));
    case DSKTIMESTAMPINTERVAL:
      formatTimeStampInterval(load<DskTimeStampInterval>(parameter), target.text, target.size);
      return kNoError;
    case DSKTIMESTAMPOFFSET:
      formatTimeStampOffset(load<DskTimeStampOffset>(parameter), target.text, target.size);
      return kNoError;
    default:
      return refuseFormat("paramToString", format);
  }
}

int render(const DskParam* parameter, Target target) {
  const PFormat format = formatOf(parameter);
  switch (kindOfFormat(format)) {
    case Kind::InlineString:
      return renderString(inlineData(parameter), inlineLength(parameter), target);
    case Kind::StringBlock: {
      const auto block = loadBlock<DskStringBlock>(parameter);
      return renderString(shownFrom(block), block.length, target);
    }
    case Kind::HeldString:
      return renderHeld(parameter, kCharactersAndCount, target);
    case Kind::InlineBinary:
      return renderBytes(inlineData(parameter), inlineLength(parameter), target);
    case Kind::BinaryBlock: {
      const auto block = loadBlock<DskBinaryBlock>(parameter);
      return renderBytes(shownFrom(block), block.length, target);
    }
    case Kind::HeldBinary:
      return renderHeld(parameter, kBytesAndCount, target);
    case Kind::Utf8Block:
      return renderUtf8(loadUtf8Block(parameter), target);
    case Kind::HeldUtf8:
      return renderHeld(parameter, kUtf8, target);
    default:
      break;
  }
  if (format == DSKCSTRING || format == DSKCSTRING2) {
    const auto text = load<const char*>(parameter);
    return renderString(text, lengthOf(text), target);
  }
  return renderValue(parameter, format, target);
}

}  // namespace
}  // namespace nomutil::params

using namespace nomutil::params;

int paramToString(const DskParam* parameter, char* text, unsigned size) {
  if (parameter == nullptr) return kInvalidParameterType;
  if (size != 0) return render(parameter, {text, size});
  // The status is that of any size.
  char nothing[1];
  return render(parameter, {nothing, sizeof nothing});
}
