// Copies between short parameters: a whole value, whose text goes to the target's handler or
// becomes a new handler value, since a short parameter cannot hold it.

#include "record.h"
#include "text.h"

#include "nomos/korastring.h"
#include "sys/messages.h"
#include "sys/params.h"

#include <cstddef>
#include <cstdint>

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

// Header and value, which may be the same record's. Constant sizes become plain loads and stores.
template <std::size_t kSize>
int copyRecord(ShortDskParam* target, const ShortDskParam* source) {
  std::memmove(bytesOf(target), bytesOf(source), kHeaderSize);
  std::memmove(valueOf(target), valueOf(source), kSize);
  return kNoError;
}

int copyFixed(ShortDskParam* target, const ShortDskParam* source, unsigned size) {
  switch (size) {
    case 1:
      return copyRecord<1>(target, source);
    case 4:
      return copyRecord<4>(target, source);
    case 8:
      return copyRecord<8>(target, source);
    case 12:
      return copyRecord<12>(target, source);
    case 16:
      return copyRecord<16>(target, source);
    default:
      // An object identifier.
      return copyRecord<22>(target, source);
  }
}

}  // namespace
}  // namespace nomutil::params

using namespace nomutil::params;

int paramcpy(ShortDskParam* target, const ShortDskParam* source) {
  if (target == nullptr || source == nullptr) return kInvalidParameterType;
  const PFormat format = formatOf(source);
  const FormatRow& row = formatRow(format);
  switch (row.kind) {
    case Kind::Integer:
    case Kind::Character:
    case Kind::Fixed:
      return copyFixed(target, source, row.info.valueSize);
    case Kind::CString:
    case Kind::StringBlock:
    case Kind::HeldString:
    case Kind::BinaryBlock:
    case Kind::HeldBinary:
    case Kind::Utf8Block:
    case Kind::HeldUtf8:
      return copyText(target, source, row.kind);
    case Kind::InlineString:
      // The beginning that fits, 24 of its characters.
      return copyRecord<28>(target, source);
    case Kind::Any:
      return copyRecord<sizeof(DskHandlerValue)>(target, source);
    case Kind::Null:
      return copyRecord<sizeof ShortDskParam::value>(target, source);
    case Kind::InlineBinary:
    case Kind::Rendered:
    case Kind::None:
      break;
  }
  // A refused format leaves its header behind, but for a number beyond them all, and 0.
  if (format != 0 && format < kFormatCount) {
    std::memmove(bytesOf(target), bytesOf(source), kHeaderSize);
  }
  return refuseFormat("paramcpy", format);
}
