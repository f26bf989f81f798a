// Copies out of a parameter: to memory whole, to memory cut, to a KoraString, to a DskBuffer.
// Sums of offsets and lengths are taken in 64 bits: either may be 0xFFFFFFFF.

#include "record.h"
#include "text.h"

#include "nomos/exception.h"
#include "nomos/korastring.h"
#include "nomos/log.h"
#include "sys/messages.h"
#include "sys/params.h"

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <new>

namespace nomutil::params {
namespace {

// Content that is not held, and its place in the whole value.
struct Content {
  const void* data;
  std::uint32_t length;
  std::uint32_t offset;
};

// The target's memory.
struct Room {
  unsigned char* data;
  std::uint32_t size;
};

// Characters at their place, with a NUL behind them.
int putString(const Content& content, Room room) {
  const std::uint64_t end = std::uint64_t{content.offset} + content.length;
  if (end >= room.size) return kStringTooLong;
  copyBytes(room.data + content.offset, content.data, content.length);
  room.data[end] = '\0';
  return kNoError;
}

// Bytes, or characters without a NUL, at their place.
int putBytes(const Content& content, Room room, int tooLong) {
  if (std::uint64_t{content.offset} + content.length > room.size) return tooLong;
  if (content.length != 0) copyBytes(room.data + content.offset, content.data, content.length);
  return kNoError;
}

// As much as fits of characters that are the whole value. REQUIRES: room for the NUL.
int putStringStart(const Content& content, Room room) {
  const std::uint32_t copied = std::min(room.size - 1, content.length);
  copyBytes(room.data, content.data, copied);
  room.data[copied] = '\0';
  return content.length > copied ? kStringTooLong : kNoError;
}

// The same of a piece. Where it lies behind the room only the NUL at the room's end is written.
int putPieceStart(const Content& content, Room room) {
  const std::uint32_t last = room.size - 1;
  const std::uint64_t end = std::uint64_t{content.offset} + content.length;
  const std::uint64_t cut = std::min<std::uint64_t>(last, end);
  if (cut <= content.offset && last == 0) return kStringTooLong;
  if (cut >= content.offset) {
    copyBytes(room.data + content.offset, content.data, cut - content.offset);
    room.data[cut] = '\0';
  }
  if (end <= last) return kNoError;
  room.data[last] = '\0';
  return kStringTooLong;
}

int putBytesStart(const Content& content, Room room, int tooLong) {
  if (room.size > content.offset) {
    copyBytes(room.data + content.offset, content.data,
              std::min(content.length, room.size - content.offset));
  }
  return std::uint64_t{content.offset} + content.length > room.size ? tooLong : kNoError;
}

Content stringContent(const DskParam* source) {
  const auto text = load<const char*>(source);
  return {text, lengthOf(text), 0};
}
Content inlineContent(const DskParam* source) {
  return {inlineData(source), inlineLength(source), 0};
}
template <class Block>
Content blockContent(const DskParam* source) {
  const auto block = loadBlock<Block>(source);
  return {block.data, block.length, block.offset};
}
Content utf8Content(const StringUtf8Info& text) {
  return {text.data, text.byteLength, 0};
}

// Held characters or bytes by their handler; it puts a NUL behind characters by itself.
int putHeld(const DskParam* source, HandlerCode code, unsigned char* target, std::uint32_t count) {
  StringUtf8Info argument{target, 0, 0, 0};
  return callHandler(source, code, argument, count);
}

int copyOut(const DskParam* source, Room room, unsigned& byteLength, unsigned& characterLength) {
  const auto report = [&](std::uint32_t bytes, std::uint32_t characters) {
    byteLength = bytes;
    characterLength = characters;
  };
  const auto reported = [&](const Content& content) -> const Content& {
    report(content.length, content.length);
    return content;
  };

  const Kind kind = kindOf(source);
  switch (kind) {
    case Kind::CString:
      return putString(reported(stringContent(source)), room);
    case Kind::InlineString:
      return putString(reported(inlineContent(source)), room);
    case Kind::StringBlock:
      return putString(reported(blockContent<DskStringBlock>(source)), room);
    case Kind::Character:
      return putString(reported({valueOf(source), 1, 0}), room);
    case Kind::InlineBinary:
      return putBytes(reported(inlineContent(source)), room, kBinaryTooLong);
    case Kind::BinaryBlock:
      return putBytes(reported(blockContent<DskBinaryBlock>(source)), room, kBinaryTooLong);
    case Kind::Null:
      report(0, 0);
      return kNoError;
    case Kind::HeldString: {
      std::uint32_t length = 0;
      const int status = measureHeld(source, kCharacterCount, length);
      if (status != kNoError) return status;
      report(length, length);
      if (length >= room.size) return kStringTooLong;
      return putHeld(source, kCopyCharactersOut, room.data, length);
    }
    case Kind::HeldBinary: {
      std::uint32_t length = 0;
      const int status = measureHeld(source, kByteCount, length);
      if (status != kNoError) return status;
      report(length, length);
      if (length > room.size) return kBinaryTooLong;
      return putHeld(source, kCopyBytesOut, room.data, length);
    }
    case Kind::Utf8Block:
    case Kind::HeldUtf8: {
      StringUtf8Info text{};
      if (kind == Kind::Utf8Block) {
        text = loadUtf8Block(source);
      } else if (const int status = describeHeld(source, kUtf8, text); status != kNoError) {
        return status;
      }
      report(text.byteLength, text.charLength);
      return putBytes(utf8Content(text), room, kStringUtf8TooLong);
    }
    default:
      return refuseFormat("paramcpy", formatOf(source));
  }
}

int copyOutCut(const DskParam* source, Room room) {
  const Kind kind = kindOf(source);
  switch (kind) {
    case Kind::CString:
    case Kind::InlineString:
    case Kind::StringBlock:
    case Kind::Character:
    case Kind::HeldString:
      if (room.size == 0) return kStringTooLong;
      break;
    default:
      break;
  }

  switch (kind) {
    case Kind::CString:
      return putStringStart(stringContent(source), room);
    case Kind::InlineString:
      return putStringStart(inlineContent(source), room);
    case Kind::StringBlock:
      return putPieceStart(blockContent<DskStringBlock>(source), room);
    case Kind::Character:
      return putString({valueOf(source), 1, 0}, room);
    case Kind::InlineBinary:
      return putBytesStart(inlineContent(source), room, kBinaryTooLong);
    case Kind::BinaryBlock:
      return putBytesStart(blockContent<DskBinaryBlock>(source), room, kBinaryTooLong);
    case Kind::Null:
      return kNoError;
    case Kind::HeldString: {
      std::uint32_t length = 0;
      int status = measureHeld(source, kCharacterCount, length);
      if (status != kNoError) return status;
      status = putHeld(source, kCopyCharactersOut, room.data, std::min(room.size - 1, length));
      return status == kNoError && length > room.size - 1 ? kStringTooLong : status;
    }
    case Kind::HeldBinary: {
      std::uint32_t length = 0;
      int status = measureHeld(source, kByteCount, length);
      if (status != kNoError) return status;
      status = putHeld(source, kCopyBytesOut, room.data, std::min(room.size, length));
      return status == kNoError && length > room.size ? kBinaryTooLong : status;
    }
    case Kind::Utf8Block:
      return putBytesStart(utf8Content(loadUtf8Block(source)), room, kStringUtf8TooLong);
    case Kind::HeldUtf8: {
      StringUtf8Info text{};
      const int status = describeHeld(source, kUtf8, text);
      return status == kNoError ? putBytesStart(utf8Content(text), room, kStringUtf8TooLong)
                                : status;
    }
    default:
      return refuseFormat("paramcpyTruncate", formatOf(source));
  }
}

// UTF-8 in a buffer: both lengths, then the bytes.
constexpr std::uint32_t kUtf8Lengths = 8;

void putUtf8Lengths(unsigned char* data, const StringUtf8Info& text) {
  std::memcpy(data, &text.byteLength, 4);
  std::memcpy(data + 4, &text.charLength, 4);
}

bool fitsWithLengths(const StringUtf8Info& text, Room room) {
  return std::uint64_t{text.byteLength} + kUtf8Lengths <= room.size;
}

int copyToBuffer(const DskParam* source, Room room) {
  switch (kindOf(source)) {
    case Kind::CString:
      return putBytes(stringContent(source), room, kStringTooLong);
    case Kind::InlineString:
      return putBytes(inlineContent(source), room, kStringTooLong);
    case Kind::StringBlock:
      return putBytes(blockContent<DskStringBlock>(source), room, kStringTooLong);
    case Kind::InlineBinary:
      return putBytes(inlineContent(source), room, kBinaryTooLong);
    case Kind::BinaryBlock:
      return putBytes(blockContent<DskBinaryBlock>(source), room, kBinaryTooLong);
    case Kind::Null:
      return kNoError;
    case Kind::HeldString: {
      std::uint32_t length = 0;
      const int status = measureHeld(source, kCharacterCount, length);
      if (status != kNoError) return status;
      if (length > room.size) return kStringTooLong;
      return putHeld(source, kCopyCharactersOutBare, room.data, length);
    }
    case Kind::HeldBinary: {
      std::uint32_t length = 0;
      const int status = measureHeld(source, kByteCount, length);
      if (status != kNoError) return status;
      if (length > room.size) return kBinaryTooLong;
      return putHeld(source, kCopyBytesOut, room.data, length);
    }
    case Kind::Utf8Block: {
      const StringUtf8Info text = loadUtf8Block(source);
      if (!fitsWithLengths(text, room)) return kStringUtf8TooLong;
      copyBytes(room.data + kUtf8Lengths, text.data, text.byteLength);
      putUtf8Lengths(room.data, text);
      return kNoError;
    }
    case Kind::HeldUtf8: {
      StringUtf8Info text{};
      int status = describeHeld(source, kUtf8, text);
      if (status != kNoError) return status;
      if (!fitsWithLengths(text, room)) return kStringUtf8TooLong;
      std::uint32_t count = room.size - kUtf8Lengths;
      StringUtf8Info target{room.data + kUtf8Lengths, 0, 0, 0};
      status = callHandler(source, kCopyUtf8Out, target, count);
      if (status == kNoError) putUtf8Lengths(room.data, text);
      return status;
    }
    default:
      return refuseFormat("paramcpy", formatOf(source));
  }
}

// Replaces the text of a string, whose exceptions become their number.
int setString(KoraBytes& target, const void* data, std::uint32_t length) {
  try {
    target.setBytes(data, length);
    return kNoError;
  } catch (const NomException& failure) {
    return failure.number();
  } catch (const std::bad_alloc&) {
    return kMemoryAllocationFailed;
  }
}

int setHeldString(KoraBytes& target, const DskParam* source, HandlerCode code) {
  StringUtf8Info text{};
  const int status = viewHeld(source, code, text);
  return status == kNoError ? setString(target, text.data, text.byteLength) : status;
}

int setContent(KoraBytes& target, const Content& content) {
  return setString(target, content.data, content.length);
}

}  // namespace

int refuseFormat(const char* operation, unsigned format) {
  nomLog("%s: invalid parameter type (%u)", operation, format);
  return kInvalidParameterType;
}

}  // namespace nomutil::params

using namespace nomutil::params;

int paramcpy(void* target, const DskParam* source, unsigned targetSize, unsigned& byteLength,
             unsigned& characterLength) {
  if (source == nullptr) return kInvalidParameterType;
  return copyOut(source, {static_cast<unsigned char*>(target), targetSize}, byteLength,
                 characterLength);
}

int paramcpyTruncate(void* target, const DskParam* source, unsigned targetSize) {
  if (source == nullptr) return kInvalidParameterType;
  return copyOutCut(source, {static_cast<unsigned char*>(target), targetSize});
}

int paramcpy(KoraString<char>& target, const DskParam* source) {
  if (source == nullptr) return kInvalidParameterType;
  switch (kindOf(source)) {
    case Kind::CString:
      return setContent(target, stringContent(source));
    case Kind::InlineString:
      return setContent(target, inlineContent(source));
    case Kind::Character:
      return setString(target, valueOf(source), 1);
    case Kind::StringBlock:
      return setContent(target, blockContent<DskStringBlock>(source));
    case Kind::HeldString:
      return setHeldString(target, source, kCharactersAndCount);
    case Kind::Null:
      return setString(target, nullptr, 0);
    default:
      return refuseFormat("paramcpy(KoraString <-- DskParam)", formatOf(source));
  }
}

int paramcpy(KoraString<unsigned char>& target, const DskParam* source) {
  if (source == nullptr) return kInvalidParameterType;
  switch (kindOf(source)) {
    case Kind::InlineBinary:
      return setContent(target, inlineContent(source));
    case Kind::BinaryBlock:
      return setContent(target, blockContent<DskBinaryBlock>(source));
    case Kind::HeldBinary:
      return setHeldString(target, source, kBytesAndCount);
    case Kind::Null:
      return setString(target, nullptr, 0);
    default:
      return refuseFormat("paramcpy(KoraBinary <-- DskParam)", formatOf(source));
  }
}

int paramcpy(DskBuffer* target, const DskParam* source) {
  if (target == nullptr || source == nullptr) return kInvalidParameterType;
  return copyToBuffer(source, {target->data(), bufferRoom(*target)});
}
