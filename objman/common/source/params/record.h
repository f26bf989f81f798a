// Parameters as bytes. A field is read and written by memcpy from the record's address, since the
// record at hand may be a ShortDskParam and its value may start with any record of 32 bytes or
// less; nothing else of the value area is touched. A handler parameter is reached through its
// handler alone.
#ifndef NOMUTIL_PARAMS_RECORD_H
#define NOMUTIL_PARAMS_RECORD_H

#include "formats.h"

#include "sys/messages.h"
#include "sys/params.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstring>

namespace nomutil::params {

inline constexpr std::size_t kHeaderSize = 8;
// Characters or bytes that an inline value holds.
inline constexpr std::uint32_t kInlineRoom = sizeof DskString::data;
// The usage of a parameter that the library makes on a caller's behalf.
inline constexpr PUsage kOwnUsage = 2;

// A is DskParam or ShortDskParam.
template <class A>
const unsigned char* bytesOf(const A* parameter) {
  return reinterpret_cast<const unsigned char*>(parameter);
}
template <class A>
unsigned char* bytesOf(A* parameter) {
  return reinterpret_cast<unsigned char*>(parameter);
}
template <class A>
auto* valueOf(A* parameter) {
  return bytesOf(parameter) + kHeaderSize;
}

template <class T, class A>
T load(const A* parameter, std::size_t offset = 0) {
  T field;
  std::memcpy(&field, valueOf(parameter) + offset, sizeof field);
  return field;
}
template <class T, class A>
void store(A* parameter, const T& field, std::size_t offset = 0) {
  std::memcpy(valueOf(parameter) + offset, &field, sizeof field);
}

template <class A>
PFormat formatOf(const A* parameter) {
  PFormat format;
  std::memcpy(&format, bytesOf(parameter), sizeof format);
  return format;
}
template <class A>
Kind kindOf(const A* parameter) {
  return kindOfFormat(formatOf(parameter));
}

inline void storeFormat(DskParam* parameter, PFormat format) {
  std::memcpy(bytesOf(parameter), &format, sizeof format);
}
inline void clearMore(DskParam* parameter) {
  bytesOf(parameter)[offsetof(DskParamHeader, more)] = 0;
}

// Blocks: the 20 bytes that are theirs, not the padding behind them. They are read field by field,
// as they were written, so that the processor can forward fresh ones.
inline constexpr std::size_t kBlockSize = 20;
template <class Block, class A>
Block loadBlock(const A* parameter) {
  static_assert(offsetof(Block, capacity) + 4 == kBlockSize);
  Block block{};
  block.data = load<decltype(block.data)>(parameter);
  block.offset = load<std::uint32_t>(parameter, offsetof(Block, offset));
  block.length = load<std::uint32_t>(parameter, offsetof(Block, length));
  block.capacity = load<std::uint32_t>(parameter, offsetof(Block, capacity));
  return block;
}
template <class A>
StringUtf8Info loadUtf8Block(const A* parameter) {
  const auto block = loadBlock<DskBinaryBlock>(parameter);
  return {block.data, block.offset, block.length, block.capacity};
}

constexpr bool isString(Kind kind) {
  return kind == Kind::CString || kind == Kind::InlineString || kind == Kind::StringBlock ||
         kind == Kind::HeldString;
}
constexpr bool isBinary(Kind kind) {
  return kind == Kind::InlineBinary || kind == Kind::BinaryBlock || kind == Kind::HeldBinary;
}
constexpr bool isUtf8(Kind kind) {
  return kind == Kind::Utf8Block || kind == Kind::HeldUtf8;
}

// The length and the place of an inline value. A length that the room has not is cut to it, so that
// nothing is read behind the record.
inline std::uint32_t inlineLength(const DskParam* parameter) {
  return std::min<std::uint32_t>(load<std::uint16_t>(parameter), kInlineRoom);
}
inline const unsigned char* inlineData(const DskParam* parameter) {
  return valueOf(parameter) + offsetof(DskString, data);
}
inline unsigned char* inlineData(DskParam* parameter) {
  return valueOf(parameter) + offsetof(DskString, data);
}

// The data bytes of a buffer: room for a copy to it, content for a copy from it.
inline std::uint32_t bufferRoom(const DskBuffer& buffer) {
  constexpr std::uint32_t kCountedBesides = 22;
  return buffer.length > kCountedBesides ? buffer.length - kCountedBesides : 0;
}

// The codes of a data handler that the library itself uses.
enum HandlerCode : std::uint8_t {
  kCharacters = 16,
  kCopyCharactersOut = 17,
  kSetCharacters = 18,
  kCharacterCount = 20,
  kCopyCharactersOutBare = 22,
  kCharactersAndCount = 24,
  kReleaseCharacters = 25,
  kBytes = 32,
  kCopyBytesOut = 33,
  kSetBytes = 34,
  kByteCount = 36,
  kBytesAndCount = 39,
  kReleaseBytes = 40,
  kUtf8 = 64,
  kCopyUtf8Out = 65,
  kSetUtf8 = 66,
  kUtf8ByteCount = 68,
  kUtf8CharacterCount = 69,
  kReleaseUtf8 = 72,
};

// Calls a parameter's handler with the parameter itself as its subject: the pointer that its value
// holds may be that of a record it was copied from. A handler may change what it is called for,
// though not the value that a read asks for, so a const parameter is let through.
template <class A>
int callHandler(const A* parameter, std::uint8_t code, StringUtf8Info& argument,
                std::uint32_t& count) {
  const auto handler = load<DskDataHandler>(parameter);
  if (handler == nullptr) return kInvalidParameterType;
  auto* const subject = const_cast<A*>(parameter);
  return handler(code, reinterpret_cast<DskParam*>(subject), &argument, &count);
}

// Hands bytes, or characters, to a handler. The handler only reads the source.
template <class A>
int setHeld(A* parameter, HandlerCode code, const void* source, std::uint32_t length,
            std::uint32_t characterLength = 0) {
  StringUtf8Info argument{static_cast<unsigned char*>(const_cast<void*>(source)), length,
                          characterLength, 0};
  return callHandler(parameter, code, argument, length);
}

// Asks for the text and its length, codes 24 and 39; argument.byteLength receives the length.
template <class A>
int viewHeld(const A* parameter, HandlerCode code, StringUtf8Info& argument) {
  return callHandler(parameter, code, argument, argument.byteLength);
}

// Asks for a length, codes 20, 36, 68 and 69.
template <class A>
int measureHeld(const A* parameter, HandlerCode code, std::uint32_t& length) {
  StringUtf8Info argument{};
  return callHandler(parameter, code, argument, length);
}

// Codes 16, 32 and 64.
template <class A>
int describeHeld(const A* parameter, HandlerCode code, StringUtf8Info& argument) {
  std::uint32_t count = 0;
  return callHandler(parameter, code, argument, count);
}

// Logs "<operation>: invalid parameter type (<format>)" and returns the status.
int refuseFormat(const char* operation, unsigned format);

}  // namespace nomutil::params

#endif  // NOMUTIL_PARAMS_RECORD_H
