// Copies between short parameters: a whole value, whose text goes to the target's handler or
// becomes a new handler value, since a short parameter cannot hold it.

#include "record.h"
#include "text.h"

#include "nomos/korastring.h"
#include "sys/messages.h"
#include "sys/params.h"

#include <cstdint>
#include <cstring>

namespace nomutil::params {
namespace {

// The text of a source of any kind.
int viewSource(const ShortDskParam* source, Kind kind, StringUtf8Info& text) {
  switch (kind) {
    case Kind::CString:
      text.data = load<unsigned char*>(source);
      text.byteLength = lengthOf(reinterpret_cast<const char*>(text.data));
      return kNoError;
    case Kind::StringBlock:
    case Kind::BinaryBlock: {
      const auto block = loadBlock<DskBinaryBlock>(source);
      text.data = block.data;
      text.byteLength = block.length;
      return kNoError;
    }
    case Kind::Utf8Block:
      text = loadUtf8Block(source);
      return kNoError;
    case Kind::HeldString:
      return viewHeld(source, kCharactersAndCount, text);
    case Kind::HeldBinary:
      return viewHeld(source, kBytesAndCount, text);
    default:
      return describeHeld(source, kUtf8, text);
  }
}

int copyString(ShortDskParam* target, const StringUtf8Info& text) {
  const Kind kind = kindOf(target);
  if (kind == Kind::Any || kind == Kind::HeldString) {
    return setHeld(target, kSetCharacters, text.data, text.byteLength);
  }
  return paramCreateKoraString(*target, reinterpret_cast<const char*>(text.data), text.byteLength,
                               kKoraNoMaximum, kOwnUsage);
}

int copyBinary(ShortDskParam* target, const StringUtf8Info& text) {
  const Kind kind = kindOf(target);
  if (kind == Kind::Any || kind == Kind::HeldBinary) {
    return setHeld(target, kSetBytes, text.data, text.byteLength);
  }
  return paramCreateKoraBinary(*target, text.data, text.byteLength, kKoraNoMaximum, kOwnUsage);
}

int copyUtf8(ShortDskParam* target, const StringUtf8Info& text) {
  const Kind kind = kindOf(target);
  if (kind == Kind::Any || kind == Kind::HeldUtf8) {
    return setHeld(target, kSetUtf8, text.data, text.byteLength, text.charLength);
  }
  return paramCreateKoraStringUtf8(*target, &text, kKoraNoMaximum, kOwnUsage);
}

int copyText(ShortDskParam* target, const ShortDskParam* source, Kind kind) {
  StringUtf8Info text{};
  if (const int status = viewSource(source, kind, text); status != kNoError) return status;
  switch (kind) {
    case Kind::Utf8Block:
    case Kind::HeldUtf8:
      return copyUtf8(target, text);
    case Kind::BinaryBlock:
    case Kind::HeldBinary:
      return copyBinary(target, text);
    default:
      return copyString(target, text);
  }
}

// The size of a value that is copied with its header and nothing else to be done, 0 for others. Of
// an inline string the beginning is copied that a short parameter has room for.
constexpr auto kPlainSizes = columnOf([](const FormatRow& row) -> std::uint8_t {
  switch (row.kind) {
    case Kind::Integer:
    case Kind::Character:
    case Kind::Fixed:
    case Kind::Any:
    case Kind::Null:
      return static_cast<std::uint8_t>(row.info.valueSize);
    case Kind::InlineString:
      return 28;
    default:
      return 0;
  }
});

// Constant sizes become plain loads and stores, and a value is read in the pieces in which it was
// written.
template <unsigned kSize>
void copyPiece(unsigned char*& to, const unsigned char*& from) {
  std::memmove(to, from, kSize);
  to += kSize;
  from += kSize;
}

// Sizes of 0, 1, 4, 6, 8 and 12. Each way ends by itself: a copy takes its time for jumps.
void copyBelow16(unsigned char* to, const unsigned char* from, unsigned size) {
  if ((size & 8) != 0) {
    copyPiece<8>(to, from);
    if ((size & 4) != 0) copyPiece<4>(to, from);
  } else if ((size & 4) != 0) {
    copyPiece<4>(to, from);
    if ((size & 2) != 0) copyPiece<2>(to, from);
  } else if (size != 0) {
    copyPiece<1>(to, from);
  }
}
static_assert([] {
  for (const unsigned size : kPlainSizes) {
    const unsigned rest = size % 16;
    if (rest > 1 && rest != 4 && rest != 6 && rest != 8 && rest != 12) return false;
  }
  return true;
}());

// A header and the size bytes of value behind it, at most 32, which may be the same record's.
void copyPlain(ShortDskParam* target, const ShortDskParam* source, unsigned size) {
  unsigned char* to = bytesOf(target);
  const unsigned char* from = bytesOf(source);
  copyPiece<kHeaderSize>(to, from);
  if (size < 16) return copyBelow16(to, from, size);
  copyPiece<16>(to, from);
  if (size == 32) return copyPiece<16>(to, from);
  copyBelow16(to, from, size - 16);
}

// What is not plain.
[[gnu::noinline]] int copyOther(ShortDskParam* target, const ShortDskParam* source,
                                PFormat format) {
  switch (const Kind kind = kindOfFormat(format)) {
    case Kind::CString:
    case Kind::StringBlock:
    case Kind::HeldString:
    case Kind::BinaryBlock:
    case Kind::HeldBinary:
    case Kind::Utf8Block:
    case Kind::HeldUtf8:
      return copyText(target, source, kind);
    case Kind::None:
      if (format == 0 || format >= kFormatCount) break;
      [[fallthrough]];
    default:
      // A format up to 57 that cannot be copied leaves its header behind.
      std::memmove(bytesOf(target), bytesOf(source), kHeaderSize);
      break;
  }
  return refuseFormat("paramcpy", format);
}

}  // namespace
}  // namespace nomutil::params

using namespace nomutil::params;

int paramcpy(ShortDskParam* target, const ShortDskParam* source) {
  if (target == nullptr || source == nullptr) return kInvalidParameterType;
  const PFormat format = formatOf(source);
  const unsigned size = format < kFormatCount ? kPlainSizes[format] : 0;
  if (size == 0) return copyOther(target, source, format);
  copyPlain(target, source, size);
  return kNoError;
}
