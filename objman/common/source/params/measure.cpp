// How long a parameter's value is, and where its bytes lie; and the text of a DskString. A fixed
// value has the size of its format (a DSKDECIMAL 16 bytes), a DSKNULL 0, and a block that holds 10
// characters from offset 100 on the length 110, but its bytes lie at its pointer.

#include "record.h"
#include "text.h"

#include "nomos/log.h"
#include "sys/messages.h"
#include "sys/params.h"

#include <algorithm>
#include <cstdint>

namespace nomutil::params {
namespace {

// A piece reaches from the beginning of the whole value to its own end; modulo 2^32.
std::uint32_t reachOfBlock(const DskParam* parameter) {
  const auto block = loadBlock<DskBinaryBlock>(parameter);
  return block.length + block.offset;
}

// The length is only stored when the handler knows it.
int measureInto(const DskParam* parameter, HandlerCode code, unsigned* length) {
  std::uint32_t measured = 0;
  const int status = measureHeld(parameter, code, measured);
  if (status == kNoError) *length = measured;
  return status;
}

int placeInto(const DskParam* parameter, HandlerCode code, unsigned char** bytes) {
  StringUtf8Info text{};
  const int status = describeHeld(parameter, code, text);
  if (status == kNoError) *bytes = text.data;
  return status;
}

}  // namespace
}  // namespace nomutil::params

using namespace nomutil::params;

int paramBytesLen(const DskParam* parameter, unsigned* length) {
  if (parameter == nullptr) return kInvalidParameterType;
  const FormatRow& row = formatRow(formatOf(parameter));
  switch (row.kind) {
    case Kind::Integer:
    case Kind::Character:
    case Kind::Fixed:
      *length = row.info.valueSize;
      return kNoError;
    case Kind::CString:
      *length = lengthOf(load<const char*>(parameter));
      return kNoError;
    case Kind::InlineString:
    case Kind::InlineBinary:
      *length = inlineLength(parameter);
      return kNoError;
    case Kind::StringBlock:
    case Kind::BinaryBlock:
      *length = reachOfBlock(parameter);
      return kNoError;
    case Kind::Utf8Block:
      *length = loadUtf8Block(parameter).byteLength;
      return kNoError;
    case Kind::Any:
    case Kind::Null:
      *length = 0;
      return kNoError;
    case Kind::HeldString:
      return measureInto(parameter, kCharacterCount, length);
    case Kind::HeldBinary:
      return measureInto(parameter, kByteCount, length);
    case Kind::HeldUtf8:
      return measureInto(parameter, kUtf8ByteCount, length);
    case Kind::Rendered:
    case Kind::None:
      break;
  }
  return refuseFormat("paramBytesLen", formatOf(parameter));
}

int paramCharactersLen(const DskParam* parameter, unsigned* length) {
  if (parameter == nullptr) return kInvalidParameterType;
  switch (kindOf(parameter)) {
    case Kind::CString:
    case Kind::InlineString:
    case Kind::StringBlock:
    case Kind::HeldString:
    case Kind::Character:
    case Kind::Any:
    case Kind::Null:
      // A character is a byte.
      return paramBytesLen(parameter, length);
    case Kind::Utf8Block:
      *length = loadUtf8Block(parameter).charLength;
      return kNoError;
    case Kind::HeldUtf8:
      return measureInto(parameter, kUtf8CharacterCount, length);
    default:
      return refuseFormat("paramCharactersLen", formatOf(parameter));
  }
}

int paramBytesPtr(const DskParam* parameter, unsigned char** bytes) {
  if (parameter == nullptr) return kInvalidParameterType;
  switch (kindOf(parameter)) {
    case Kind::CString:
    case Kind::StringBlock:
    case Kind::BinaryBlock:
    case Kind::Utf8Block:
      *bytes = load<unsigned char*>(parameter);
      return kNoError;
    case Kind::InlineString:
    case Kind::InlineBinary:
      *bytes = const_cast<unsigned char*>(inlineData(parameter));
      return kNoError;
    case Kind::HeldString:
      return placeInto(parameter, kCharacters, bytes);
    case Kind::HeldBinary:
      return placeInto(parameter, kBytes, bytes);
    case Kind::HeldUtf8:
      return placeInto(parameter, kUtf8, bytes);
    default:
      nomLog("paramBytesPtr: invalid param type (%u)", static_cast<unsigned>(formatOf(parameter)));
      return kInvalidParameterType;
  }
}

bool CEqualToDsk(const char* text, const DskString* string) {
  const unsigned length = std::min<unsigned>(string->length, kInlineRoom);
  // A text that ends earlier has its NUL where the string has a character, unless that is a NUL.
  for (unsigned i = 0; i < length; ++i) {
    if (text[i] != string->data[i] || text[i] == '\0') return false;
  }
  return text[length] == '\0';
}

unsigned dskStringToC(const DskString* string, char* target) {
  return dskStringToC(string, target, kInlineRoom);
}

unsigned dskStringToC(const DskString* string, char* target, unsigned limit) {
  const unsigned length = std::min({unsigned{string->length}, kInlineRoom, limit});
  copyBytes(target, string->data, length);
  target[length] = '\0';
  return length;
}
